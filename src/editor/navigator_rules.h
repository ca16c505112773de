#pragma once

#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "editor/deck_edits.h"
#include "model/deck.h"

namespace lectern {

// A row of the navigator as laid out: its slide and its frame in the list's
// coordinates (points).
struct NavigatorRowFrame {
    Uuid slide;
    double x = 0, y = 0, width = 0, height = 0;
};

// What lies under the pointer during a drag: nothing, an edge between rows,
// or the middle band of a row (grouping onto it).
struct NavigatorGroupTarget {
    Uuid target;
    friend bool operator==(const NavigatorGroupTarget&, const NavigatorGroupTarget&) = default;
};
using NavigatorDropTarget = std::variant<std::monostate, edits::SlideDropEdge, NavigatorGroupTarget>;

// The drop target for a pointer at (x, y): the row containing the point
// (never the dragged row itself); its central 30% is the group band; outside
// it, more than 30 points right of the row's left edge is indented, and the
// upper half is the row's top edge.
NavigatorDropTarget navigatorDropTarget(const std::vector<NavigatorRowFrame>& rows, const Uuid& dragged,
                                        double x, double y);

// Applies a drop target to the deck (nothing for no target).
Deck applyDrop(Deck deck, const Uuid& dragged, const NavigatorDropTarget& target);

// Two taps on the same row less than 0.4 s apart start renaming it.
class RenameTaps {
public:
    static constexpr double doubleTapSeconds = 0.4;
    // Records a tap at `time` (seconds); true when it completes a double tap.
    bool tap(const Uuid& slide, double time);

private:
    std::map<Uuid, double> lastTap_;
};

// What a row shows and reads: "03 Title" (the number 1-based, two digits at
// least, "Untitled slide" for an empty or blank title) and, for a skipped
// slide, ", skipped in presentation" for a screen reader.
std::string navigatorRowNumber(std::size_t index);
std::string navigatorRowTitle(const Slide& slide);
std::string navigatorRowAccessibleName(std::size_t index, const Slide& slide);

// The message of the "Delete this slide?" confirmation for the current
// slide (null when there is none).
std::string deleteSlideMessage(const Slide* current);

// The five layouts of the new-slide picker, in order, with their names
// ("Regular", "Callout", "Decisions", "Web", "Image") and descriptions
// ("Title, eyebrow, body", "Big centred title", "Branching decision cards",
// "Live webpage, any position", "Embedded image, any position").
struct LayoutChoice {
    SlideLayout layout;
    std::string name;
    std::string description;
};
const std::vector<LayoutChoice>& layoutChoices();

}  // namespace lectern
