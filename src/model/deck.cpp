#include "model/deck.h"

#include <algorithm>

namespace lectern {

const BrowserProfile* Deck::profile(const std::optional<Uuid>& id) const {
    if (!id) return nullptr;
    auto it = std::find_if(browserProfiles.begin(), browserProfiles.end(),
                           [&](const BrowserProfile& p) { return p.id == *id; });
    return it == browserProfiles.end() ? nullptr : &*it;
}

std::optional<std::size_t> Deck::indexOfSlide(const Uuid& id) const {
    for (std::size_t i = 0; i < slides.size(); ++i) {
        if (slides[i].id == id) return i;
    }
    return std::nullopt;
}

void Deck::dropDanglingProfileReferences() {
    for (auto& slide : slides) {
        if (slide.browserProfileId && !profile(slide.browserProfileId)) slide.browserProfileId.reset();
    }
}

bool Deck::closesSection(std::size_t index) const {
    if (index >= slides.size()) return false;
    auto key = slides[index].sectionKey();
    if (!key) return false;
    if (index + 1 == slides.size()) return true;
    const Slide& next = slides[index + 1];
    if (next.isSection) return false;
    return next.sectionId != key;
}

}  // namespace lectern
