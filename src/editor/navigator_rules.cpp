#include "editor/navigator_rules.h"

#include <glib/gi18n.h>

#include <algorithm>

#include "base/translation.h"

namespace lectern {
namespace {

// Share of a row's height above and below its group band.
constexpr double bandInset = 0.35;
// How far right of a row's left edge the pointer must be to drop into the
// row's section.
constexpr double indentPoints = 30;

bool contains(const NavigatorRowFrame& row, double x, double y) {
    // Half-open, so a point on the line between two rows belongs to one.
    return x >= row.x && x < row.x + row.width && y >= row.y && y < row.y + row.height;
}

bool isUntitled(const Slide& slide) {
    return std::all_of(slide.title.begin(), slide.title.end(),
                       [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
}

}  // namespace

NavigatorDropTarget navigatorDropTarget(const std::vector<NavigatorRowFrame>& rows, const Uuid& dragged, double x,
                                        double y) {
    auto row = std::find_if(rows.begin(), rows.end(), [&](const NavigatorRowFrame& frame) {
        return frame.slide != dragged && contains(frame, x, y);
    });
    if (row == rows.end()) return std::monostate{};
    double inset = row->height * bandInset;
    if (y >= row->y + inset && y <= row->y + row->height - inset) return NavigatorGroupTarget{row->slide};
    bool indented = x > row->x + indentPoints;
    auto side = y < row->y + row->height / 2 ? edits::SlideDropEdge::Side::top : edits::SlideDropEdge::Side::bottom;
    return edits::SlideDropEdge{side, row->slide, indented};
}

Deck applyDrop(Deck deck, const Uuid& dragged, const NavigatorDropTarget& target) {
    if (const auto* edge = std::get_if<edits::SlideDropEdge>(&target)) {
        return edits::dropSlide(std::move(deck), dragged, *edge);
    }
    if (const auto* group = std::get_if<NavigatorGroupTarget>(&target)) {
        return edits::groupSlides(std::move(deck), dragged, group->target);
    }
    return deck;
}

bool RenameTaps::tap(const Uuid& slide, double time) {
    auto [it, first] = lastTap_.try_emplace(slide, time);
    if (first) return false;
    double since = time - it->second;
    it->second = time;
    return since >= 0 && since < doubleTapSeconds;
}

std::string navigatorRowNumber(std::size_t index) {
    std::string number = std::to_string(index + 1);
    if (number.size() < 2) number.insert(0, 2 - number.size(), '0');
    return number;
}

std::string navigatorRowTitle(const Slide& slide) { return isUntitled(slide) ? _("Untitled slide") : slide.title; }

std::string navigatorRowAccessibleName(std::size_t index, const Slide& slide) {
    std::string name = navigatorRowNumber(index) + " " + navigatorRowTitle(slide);
    if (slide.isSkipped) name += _(", skipped in presentation");
    return name;
}

std::string deleteSlideMessage(const Slide* current) {
    if (!current) return _("This can't be undone from the main menu.");
    if (isUntitled(*current)) return _("This untitled slide will be removed from the deck. This can't be undone.");
    return formatText(_("“%s” will be removed from the deck. This can't be undone."), current->title.c_str());
}

const std::vector<LayoutChoice>& layoutChoices() {
    static const std::vector<LayoutChoice> choices{
        {SlideLayout::regular, _("Regular"), _("Title, eyebrow, body")},
        {SlideLayout::callout, _("Callout"), _("Big centred title")},
        {SlideLayout::decisions, _("Decisions"), _("Branching decision cards")},
        {SlideLayout::web, _("Web"), _("Live webpage, any position")},
        {SlideLayout::image, _("Image"), _("Embedded image, any position")},
    };
    return choices;
}

}  // namespace lectern
