#pragma once

#include <glib/gi18n.h>

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "model/deck.h"

namespace lectern {

// What choosing a row of the layout picker does to the slide: its layout,
// and on a position row its position too. Everything else of the slide
// stays as it is, so a slide switched back finds its text, page and image.
struct LayoutChange {
    SlideLayout layout = SlideLayout::regular;
    std::optional<SlidePosition> position;
    friend bool operator==(const LayoutChange&, const LayoutChange&) = default;
};
void applyLayoutChange(Slide& slide, const LayoutChange& change);

// One row of the layout picker: a layout row, or (with `position`) one of
// the position choices that an expanded web or image row shows below it.
struct LayoutPickerRow {
    SlideLayout layout = SlideLayout::regular;
    std::optional<SlidePosition> position;
    bool isSelected = false;
    bool showsChevron = false;  // web and image rows: they expand into positions
    bool isExpanded = false;
    LayoutChange action;
    friend bool operator==(const LayoutPickerRow&, const LayoutPickerRow&) = default;
};

// Web and image slides place their media: they have positions.
bool hasPositions(SlideLayout layout);
// "Full", "Left", "Right", "Top and bottom", "In text".
std::string positionName(SlidePosition position);

// Which media rows of the picker are open. A slide coming onto the stage
// opens its own media row (if it has one) and closes the others; choosing
// a media layout opens its row; the chevron opens and closes a row.
class LayoutPickerState {
public:
    void showSlide(const Slide& slide);
    void chose(SlideLayout layout);
    void toggle(SlideLayout layout);
    bool isExpanded(SlideLayout layout) const { return expanded_.count(layout) > 0; }

    // The five layout rows in order, each expanded media row followed by
    // its five position choices.
    std::vector<LayoutPickerRow> rows(const Slide& slide) const;

private:
    std::optional<Uuid> slide_;
    std::set<SlideLayout> expanded_;
};

// An entry of a choice list: what it says and the value choosing it stores
// (nothing: the field is cleared).
template <class Value>
struct InspectorChoice {
    std::string title;
    std::optional<Value> value;
    friend bool operator==(const InspectorChoice&, const InspectorChoice&) = default;
};
using NextRouteChoice = InspectorChoice<std::string>;
using ProfileChoice = InspectorChoice<Uuid>;

inline constexpr const char* linearRoute = N_("Linear (default)");
inline constexpr const char* sharedSession = N_("Shared session");

// Where "Next" may go from `slide`: "Linear (default)", then every other
// slide of the deck by number and title. A stored route the list does not
// hold (a navigation word, a slide since deleted) gets an entry of its own
// at the end, so showing the list never changes the route.
std::vector<NextRouteChoice> nextRouteChoices(const Deck& deck, const Slide& slide);
std::size_t selectedNextRoute(const std::vector<NextRouteChoice>& choices, const Slide& slide);

// The session of a web slide: "Shared session", then the deck's profiles by
// name ("Untitled profile" for an empty one). A reference to no profile of
// the deck selects the shared session, as it loads there.
std::vector<ProfileChoice> profileChoices(const Deck& deck);
std::size_t selectedProfile(const std::vector<ProfileChoice>& choices, const Slide& slide);

// The accent swatches offered: the deck palette's filled swatches and the
// app's accent palette, in canonical "#RRGGBB" form, text that is no colour
// left out.
struct AccentSwatches {
    std::vector<std::string> deck;
    std::vector<std::string> app;
    friend bool operator==(const AccentSwatches&, const AccentSwatches&) = default;
};
AccentSwatches accentSwatches(const Deck& deck, const std::vector<std::string>& appHexes);
// The slide's own accent in canonical form; nothing when it uses the deck's
// (absent, or text that is no colour).
std::optional<std::string> slideAccent(const Slide& slide);

}  // namespace lectern
