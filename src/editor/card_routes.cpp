#include "editor/card_routes.h"

#include <glib/gi18n.h>

#include <algorithm>

#include "editor/navigator_rules.h"

namespace lectern {

namespace {

const Slide* targetSlide(const std::string& targetId, const std::vector<Slide>& slides) {
    auto id = Uuid::parse(targetId);
    if (!id) return nullptr;
    auto it = std::find_if(slides.begin(), slides.end(), [&](const Slide& slide) { return slide.id == *id; });
    return it == slides.end() ? nullptr : &*it;
}

// The words navigation takes in place of a slide id, and what they mean.
const char* specialTitle(const std::string& targetId) {
    if (targetId == "$back" || targetId == "back") return _("Previous slide");
    if (targetId == "$home" || targetId == "home") return _("First slide");
    if (targetId == "$overview") return _("Overview");
    return nullptr;
}

}  // namespace

std::vector<RouteEntry> CardRoutes::entries(const std::vector<Slide>& slides) {
    std::vector<RouteEntry> entries;
    entries.reserve(slides.size() + 1);
    entries.push_back({_(noTarget), ""});
    for (const Slide& slide : slides) entries.push_back({navigatorRowTitle(slide), slide.id.string()});
    return entries;
}

RouteStatus CardRoutes::status(const std::string& targetId, const std::vector<Slide>& slides) {
    if (targetId.empty()) return RouteStatus::none;
    if (specialTitle(targetId)) return RouteStatus::special;
    return targetSlide(targetId, slides) ? RouteStatus::slide : RouteStatus::missing;
}

std::string CardRoutes::controlLabel(const std::string& targetId, const std::vector<Slide>& slides) {
    if (const char* special = specialTitle(targetId)) return special;
    const Slide* slide = targetSlide(targetId, slides);
    return slide ? navigatorRowTitle(*slide) : _(setTarget);
}

std::optional<std::string> CardRoutes::warning(const std::string& targetId, const std::vector<Slide>& slides) {
    switch (status(targetId, slides)) {
        case RouteStatus::none: return _(noTarget);
        case RouteStatus::missing: return _(deletedTarget);
        default: return std::nullopt;
    }
}

}  // namespace lectern
