#pragma once

#include <glib/gi18n.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "model/slide_link.h"
#include "slides/reveal_plan.h"

namespace lectern {

// A drop position before or after a card row of the link reveal-order list.
struct LinkRevealDropTarget {
    Uuid id;
    bool after = false;
    friend bool operator==(const LinkRevealDropTarget&, const LinkRevealDropTarget&) = default;
};

// The cards of a decisions slide: editing their list and revealing them.
// Every edit returns the links to store as one document edit.
class DecisionCards {
public:
    static constexpr std::size_t maxOptions = 9;
    static constexpr const char* newOptionLabel = N_("New option");

    // "Add option" is offered only below nine cards.
    static bool canAddOption(const std::vector<SlideLink>& links) { return links.size() < maxOptions; }
    // Appends a card labelled "New option" with no target (nothing at nine).
    static std::vector<SlideLink> addOption(std::vector<SlideLink> links);
    static std::vector<SlideLink> removeCard(std::vector<SlideLink> links, const Uuid& id);
    // A card dragged on the stage and released over another takes that card's
    // place; the others shift. Dropped on itself or on nothing: unchanged.
    static std::vector<SlideLink> moveCard(std::vector<SlideLink> links, const Uuid& dragged,
                                           const std::optional<Uuid>& target);
    // A row of the reveal-order list dropped before or after another row.
    static std::vector<SlideLink> moveLink(std::vector<SlideLink> links, const Uuid& dragged,
                                           const LinkRevealDropTarget& target);

    // Whether card `index` shows: in reveal mode once the reveal index reaches
    // it; in mode all always.
    static bool isRevealed(std::size_t index, const RevealState& state);
};

}  // namespace lectern
