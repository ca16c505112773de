#include "editor/deck_edits.h"

#include <glib/gi18n.h>

#include <algorithm>
#include <utility>

namespace lectern::edits {
namespace {

// Moves one slide without looking at sections; `to` is already within the
// deck.
void relocate(Deck& deck, std::size_t from, std::size_t to) {
    if (from == to) return;
    auto& slides = deck.slides;
    if (from < to) {
        std::rotate(slides.begin() + static_cast<std::ptrdiff_t>(from),
                    slides.begin() + static_cast<std::ptrdiff_t>(from) + 1,
                    slides.begin() + static_cast<std::ptrdiff_t>(to) + 1);
    } else {
        std::rotate(slides.begin() + static_cast<std::ptrdiff_t>(to), slides.begin() + static_cast<std::ptrdiff_t>(from),
                    slides.begin() + static_cast<std::ptrdiff_t>(from) + 1);
    }
}

// The section whose run the slide at `index` sits inside: the slide below it
// is a member (not an opener) of the section of the slide above it. A plain
// slide left there would cut the section in two.
std::optional<Uuid> enclosingSection(const Deck& deck, std::size_t index) {
    const auto& slides = deck.slides;
    if (index == 0 || index + 1 >= slides.size()) return std::nullopt;
    auto above = slides[index - 1].sectionKey();
    const Slide& below = slides[index + 1];
    if (!above || below.isSection || below.sectionId != above) return std::nullopt;
    return above;
}

// A non-opening slide at `index` inside another section's run joins it, so
// moving or inserting a slide never splits a section.
void adoptEnclosingSection(Deck& deck, std::size_t index) {
    Slide& slide = deck.slides[index];
    if (slide.isSection) return;
    if (auto section = enclosingSection(deck, index)) slide.sectionId = section;
}

// The slide at `index` leaves its section. An opener hands its section to
// its first member, which opens it with the same title; the other members
// follow the new opener.
void leaveSection(Deck& deck, std::size_t index) {
    Slide& slide = deck.slides[index];
    if (slide.isSection) {
        const Uuid old = slide.id;
        std::optional<Uuid> heir;
        for (std::size_t i = index + 1; i < deck.slides.size(); ++i) {
            Slide& other = deck.slides[i];
            if (other.isSection || other.sectionId != old) continue;
            if (!heir) {
                heir = other.id;
                other.isSection = true;
                other.sectionTitle = slide.sectionTitle;
                other.sectionId.reset();
            } else {
                other.sectionId = heir;
            }
        }
        slide.isSection = false;
        slide.sectionTitle.reset();
    }
    slide.sectionId.reset();
}

}  // namespace

Deck normalizeSections(Deck deck) {
    // The section key of the slide above, as already normalised: a member
    // continues the run only when it names that key.
    std::optional<Uuid> above;
    for (Slide& slide : deck.slides) {
        if (slide.isSection) {
            above = slide.id;
            continue;
        }
        if (slide.sectionId && slide.sectionId != above) slide.sectionId.reset();
        above = slide.sectionId;
    }
    return deck;
}

Deck newDeck() {
    Deck deck;
    deck.id = Uuid::random();
    deck.slides.push_back(Slide::make(SlideLayout::regular));
    return deck;
}

std::size_t insertionIndex(const Deck& deck, std::int64_t current) {
    if (current >= 0 && static_cast<std::size_t>(current) < deck.slides.size()) {
        return static_cast<std::size_t>(current) + 1;
    }
    return deck.slides.size();
}

Deck insertSlide(Deck deck, std::size_t index, Slide slide) {
    index = std::min(index, deck.slides.size());
    slide.sectionId.reset();
    deck.slides.insert(deck.slides.begin() + static_cast<std::ptrdiff_t>(index), std::move(slide));
    adoptEnclosingSection(deck, index);
    return normalizeSections(std::move(deck));
}

Deck moveSlide(Deck deck, std::size_t from, std::size_t to) {
    if (from >= deck.slides.size()) return deck;
    to = std::min(to, deck.slides.size() - 1);
    if (from == to) return deck;
    relocate(deck, from, to);
    adoptEnclosingSection(deck, to);
    return normalizeSections(std::move(deck));
}

Deck duplicateSlide(Deck deck, std::size_t index) {
    if (index >= deck.slides.size()) return deck;
    Slide copy = deck.slides[index];
    copy.id = Uuid::random();
    for (SlideAction& action : copy.actions) {
        action.id = Uuid::random();
        for (HTTPHeaderField& header : action.request.headers) header.id = Uuid::random();
    }
    // The cards keep their targets: they point at other slides.
    for (SlideLink& link : copy.links) link.id = Uuid::random();
    if (copy.isSection) {
        // A second opener would start a second, empty section; the copy
        // belongs to the section of the slide it copies instead.
        copy.isSection = false;
        copy.sectionTitle.reset();
        copy.sectionId = deck.slides[index].id;
    }
    deck.slides.insert(deck.slides.begin() + static_cast<std::ptrdiff_t>(index) + 1, std::move(copy));
    return normalizeSections(std::move(deck));
}

Deck deleteSlide(Deck deck, std::size_t index) {
    if (index >= deck.slides.size()) return deck;
    // Deleting an opener keeps its section for the members that remain.
    leaveSection(deck, index);
    deck.slides.erase(deck.slides.begin() + static_cast<std::ptrdiff_t>(index));
    return normalizeSections(std::move(deck));
}

Deck renameSlide(Deck deck, const Uuid& slide, std::string title) {
    return updateSlide(std::move(deck), slide, [&](Slide& s) {
        if (s.title != title) s.title = std::move(title);
    });
}

Deck toggleSkip(Deck deck, const Uuid& slide) {
    return updateSlide(std::move(deck), slide, [](Slide& s) { s.isSkipped = !s.isSkipped; });
}

Deck setLayout(Deck deck, const Uuid& slide, SlideLayout layout) {
    return updateSlide(std::move(deck), slide, [layout](Slide& s) { s.layout = layout; });
}

Deck removeSection(Deck deck, const Uuid& opener) {
    auto index = deck.indexOfSlide(opener);
    if (!index || !deck.slides[*index].isSection) return deck;
    for (Slide& slide : deck.slides) {
        if (slide.sectionId == opener) slide.sectionId.reset();
    }
    Slide& slide = deck.slides[*index];
    slide.isSection = false;
    slide.sectionTitle.reset();
    slide.sectionId.reset();
    return normalizeSections(std::move(deck));
}

Deck removeFromSection(Deck deck, const Uuid& slide) {
    auto index = deck.indexOfSlide(slide);
    if (!index) return deck;
    auto section = deck.slides[*index].sectionKey();
    if (!section) return deck;
    leaveSection(deck, *index);
    // A member from the middle of its section goes to just after the
    // section's last slide, so the members below it stay in the section.
    std::size_t last = *index;
    for (std::size_t i = *index + 1; i < deck.slides.size(); ++i) {
        const Slide& next = deck.slides[i];
        if (next.isSection || next.sectionId != section) break;
        last = i;
    }
    relocate(deck, *index, last);
    return normalizeSections(std::move(deck));
}

Deck updateSlide(Deck deck, const Uuid& slide, const std::function<void(Slide&)>& change) {
    auto index = deck.indexOfSlide(slide);
    if (index) change(deck.slides[*index]);
    return deck;
}

std::optional<std::size_t> dropDestination(const Deck& deck, std::size_t from, const SlideDropEdge& edge) {
    if (from >= deck.slides.size()) return std::nullopt;
    auto target = deck.indexOfSlide(edge.target);
    if (!target) return std::nullopt;
    std::size_t destination;
    if (edge.side == SlideDropEdge::Side::bottom) {
        destination = from <= *target ? *target : *target + 1;
    } else {
        destination = from < *target ? *target - 1 : *target;
    }
    if (destination == from) return std::nullopt;
    return destination;
}

Deck dropSlide(Deck deck, const Uuid& dragged, const SlideDropEdge& edge) {
    auto from = deck.indexOfSlide(dragged);
    if (!from || edge.target == dragged || !deck.indexOfSlide(edge.target)) return deck;
    std::size_t to = dropDestination(deck, *from, edge).value_or(*from);

    // Whether the slide that will be right above the dropped one is in a
    // section, looked up before the move so that an opener can hand its own
    // section on first. Moving down shifts the slides in between up by one.
    bool joins = false;
    if (edge.indented && to > 0) {
        std::size_t above = to > *from ? to : to - 1;
        joins = deck.slides[above].sectionKey().has_value();
    }
    if (joins) {
        leaveSection(deck, *from);
        relocate(deck, *from, to);
        // Read after the hand-over: an opener dropped into its own section
        // joins the member that now opens it.
        auto key = deck.slides[to - 1].sectionKey();
        deck.slides[to].sectionId = key;
    } else {
        // Out of sections; an opener keeps opening its own.
        relocate(deck, *from, to);
        deck.slides[to].sectionId.reset();
    }
    return normalizeSections(std::move(deck));
}

Deck groupSlides(Deck deck, const Uuid& dragged, const Uuid& target) {
    auto from = deck.indexOfSlide(dragged);
    auto at = deck.indexOfSlide(target);
    if (dragged == target || !from || !at) return deck;
    leaveSection(deck, *from);
    std::size_t to = *from <= *at ? *at : *at + 1;
    relocate(deck, *from, to);

    // Read after the hand-over: grouping an opener onto its own member
    // joins the section that member now opens.
    Slide& host = deck.slides[to - 1];
    auto key = host.sectionKey();
    if (!key) {
        host.isSection = true;
        host.sectionTitle = _(newSectionTitle);
        host.sectionId.reset();
        key = host.id;
    }
    deck.slides[to].sectionId = key;
    return normalizeSections(std::move(deck));
}

}  // namespace lectern::edits
