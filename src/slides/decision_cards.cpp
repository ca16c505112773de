#include "slides/decision_cards.h"

#include <glib/gi18n.h>

#include <algorithm>

namespace lectern {

namespace {

std::optional<std::size_t> indexOf(const std::vector<SlideLink>& links, const Uuid& id) {
    auto it = std::find_if(links.begin(), links.end(), [&](const SlideLink& link) { return link.id == id; });
    if (it == links.end()) return std::nullopt;
    return static_cast<std::size_t>(it - links.begin());
}

}  // namespace

std::vector<SlideLink> DecisionCards::addOption(std::vector<SlideLink> links) {
    if (!canAddOption(links)) return links;
    SlideLink link;
    link.label = _(newOptionLabel);
    links.push_back(std::move(link));
    return links;
}

std::vector<SlideLink> DecisionCards::removeCard(std::vector<SlideLink> links, const Uuid& id) {
    if (auto index = indexOf(links, id)) links.erase(links.begin() + static_cast<std::ptrdiff_t>(*index));
    return links;
}

std::vector<SlideLink> DecisionCards::moveCard(std::vector<SlideLink> links, const Uuid& dragged,
                                               const std::optional<Uuid>& target) {
    if (!target || *target == dragged) return links;
    auto from = indexOf(links, dragged);
    auto to = indexOf(links, *target);
    if (!from || !to) return links;
    SlideLink link = std::move(links[*from]);
    links.erase(links.begin() + static_cast<std::ptrdiff_t>(*from));
    links.insert(links.begin() + static_cast<std::ptrdiff_t>(*to), std::move(link));
    return links;
}

std::vector<SlideLink> DecisionCards::moveLink(std::vector<SlideLink> links, const Uuid& dragged,
                                               const LinkRevealDropTarget& target) {
    if (target.id == dragged) return links;
    auto from = indexOf(links, dragged);
    if (!from || !indexOf(links, target.id)) return links;
    SlideLink link = std::move(links[*from]);
    links.erase(links.begin() + static_cast<std::ptrdiff_t>(*from));
    std::size_t to = *indexOf(links, target.id) + (target.after ? 1 : 0);
    links.insert(links.begin() + static_cast<std::ptrdiff_t>(to), std::move(link));
    return links;
}

bool DecisionCards::isRevealed(std::size_t index, const RevealState& state) {
    return state.mode == RevealMode::all || static_cast<std::int64_t>(index) <= state.index;
}

}  // namespace lectern
