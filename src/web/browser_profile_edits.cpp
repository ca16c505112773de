#include "web/browser_profile_edits.h"

#include <glib/gi18n.h>

#include <algorithm>

#include "base/translation.h"

namespace lectern::BrowserProfileEdits {

Uuid add(Deck& deck) {
    BrowserProfile profile;
    profile.id = Uuid::random();
    deck.browserProfiles.push_back(profile);
    return profile.id;
}

bool rename(Deck& deck, const Uuid& profileId, std::string name) {
    auto it = std::find_if(deck.browserProfiles.begin(), deck.browserProfiles.end(),
                           [&](const BrowserProfile& p) { return p.id == profileId; });
    if (it == deck.browserProfiles.end()) return false;
    it->name = std::move(name);
    return true;
}

std::optional<BrowserProfile> remove(Deck& deck, const Uuid& profileId) {
    auto it = std::find_if(deck.browserProfiles.begin(), deck.browserProfiles.end(),
                           [&](const BrowserProfile& p) { return p.id == profileId; });
    if (it == deck.browserProfiles.end()) return std::nullopt;
    BrowserProfile removed = *it;
    deck.browserProfiles.erase(it);
    for (auto& slide : deck.slides) {
        if (slide.browserProfileId == profileId) slide.browserProfileId.reset();
    }
    return removed;
}

std::string displayName(const BrowserProfile& profile) {
    return profile.name.empty() ? std::string(_(untitledName)) : profile.name;
}

std::string deletionTitle(const BrowserProfile& profile) {
    return formatText(_("Delete profile “%s”?"), displayName(profile).c_str());
}

}  // namespace lectern::BrowserProfileEdits
