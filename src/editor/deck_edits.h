#pragma once

#include <glib/gi18n.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "model/deck.h"

namespace lectern::edits {

// Pure changes of a deck: each takes the deck by value and returns the
// changed one, so that DeckDocument::edit can call them and keep the old
// value for undo. An operation that does not apply (an index outside the
// deck, an unknown id) returns the deck unchanged. Every operation that moves
// slides or changes their sections leaves the sections contiguous (see
// normalizeSections).

// The title of a section opened by grouping two slides.
inline constexpr const char* newSectionTitle = N_("New Section");

// Section members stay together after their opening slide: a slide whose
// `sectionId` does not continue the run of the slide above it (the opener or
// a member of the same section), or names no opening slide, leaves its
// section. An opener keeps `isSection`.
Deck normalizeSections(Deck deck);

// A brand-new deck: a fresh id, the reading defaults, one regular slide with
// an empty title.
Deck newDeck();

// Where "New Slide" puts a slide: right after `current` when it names a
// slide, else at the end.
std::size_t insertionIndex(const Deck& deck, std::int64_t current);

// Inserts `slide` at `index` (clamped to the end). It joins no section,
// unless it lands between two slides of one section (the one below a member,
// not an opener): then it joins that section, which would otherwise be cut.
Deck insertSlide(Deck deck, std::size_t index, Slide slide);

// Moves the slide at `from` to `to` (clamped to the last index). It keeps its
// section while it stays in that section's run; a slide other than an opener
// landing between two slides of one section joins it, as inserted ones do.
// A member moved out of its run leaves its section, and so do members that
// no longer follow their opener.
Deck moveSlide(Deck deck, std::size_t from, std::size_t to);

// A copy of the slide at `index` right after it, with new ids for the slide,
// its actions, their header rows and its decision links. A copied opener
// becomes a plain member of the section it copied.
// The duplicate is the slide at `index + 1` of the result.
Deck duplicateSlide(Deck deck, std::size_t index);

// Removes the slide at `index`. An opener hands its section to its first
// member first (see removeFromSection).
Deck deleteSlide(Deck deck, std::size_t index);

Deck renameSlide(Deck deck, const Uuid& slide, std::string title);
Deck toggleSkip(Deck deck, const Uuid& slide);
Deck setLayout(Deck deck, const Uuid& slide, SlideLayout layout);

// The opener stops opening a section: it and its members are in none.
Deck removeSection(Deck deck, const Uuid& opener);
// The slide leaves its section. An opener keeps its section for the others:
// the next member (if any) opens it instead, with the section's title. A
// member from the middle of its section moves to just after the section's
// last member, so the members below it stay in the section.
Deck removeFromSection(Deck deck, const Uuid& slide);

// Changes one slide in place: the way every field edit reaches the deck.
Deck updateSlide(Deck deck, const Uuid& slide, const std::function<void(Slide&)>& change);

// Where a dragged row lands: before or after the row `target`; `indented`
// puts it into the section of the slide it then follows, otherwise into no
// section.
struct SlideDropEdge {
    enum class Side { top, bottom };
    Side side = Side::top;
    Uuid target;
    bool indented = false;
    friend bool operator==(const SlideDropEdge&, const SlideDropEdge&) = default;
};

// The destination index of a drop at `edge` of the dragged slide at `from`,
// or nothing when the drop would not move it.
std::optional<std::size_t> dropDestination(const Deck& deck, std::size_t from, const SlideDropEdge& edge);

// A dragged slide dropped at an edge: moved (see dropDestination), then into
// the section of the slide above it when indented and that slide is in one
// (an opener hands its own section on first, see removeFromSection), out of
// sections otherwise, where an opener keeps opening its own. The section
// changes apply even when the drop does not move the slide.
Deck dropSlide(Deck deck, const Uuid& dragged, const SlideDropEdge& edge);

// A dragged slide dropped on the middle of another row: it goes right after
// that row, in that row's section; a row in no section opens a new one
// ("New Section") holding both. A dragged opener hands its section on first.
Deck groupSlides(Deck deck, const Uuid& dragged, const Uuid& target);

}  // namespace lectern::edits
