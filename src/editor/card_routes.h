#pragma once

#include <glib/gi18n.h>

#include <optional>
#include <string>
#include <vector>

#include "model/slide.h"

namespace lectern {

// One entry of a card's route menu: what it says and the target id text
// that choosing it stores (empty for "No target").
struct RouteEntry {
    std::string title;
    std::string targetId;
    friend bool operator==(const RouteEntry&, const RouteEntry&) = default;
};

// Where a card's target id leads in a deck.
enum class RouteStatus {
    none,     // no target
    slide,    // a slide of the deck
    special,  // a navigation word (back, home, overview)
    missing,  // a slide that is no longer in the deck
};

// The editor's side of routing decision cards: the route menu, what the
// route control says, and which cards are marked for lacking a target.
class CardRoutes {
public:
    static constexpr const char* noTarget = N_("No target");
    static constexpr const char* setTarget = N_("Set target…");
    static constexpr const char* deletedTarget = N_("Target slide was deleted");

    // "No target" first, then every slide of the deck by title, in order.
    static std::vector<RouteEntry> entries(const std::vector<Slide>& slides);
    static RouteStatus status(const std::string& targetId, const std::vector<Slide>& slides);
    // The route control's text: the target slide's title, else "Set target…".
    static std::string controlLabel(const std::string& targetId, const std::vector<Slide>& slides);
    // The mark a card carries in the editor, if any: "No target" or
    // "Target slide was deleted". The target id itself is never touched.
    static std::optional<std::string> warning(const std::string& targetId, const std::vector<Slide>& slides);
};

}  // namespace lectern
