// Dragging rows of the slide navigator: a drag source on every row carries
// the slide's id; the list's drop target works out, from the frames of the
// rows on screen, whether the pointer is at the edge between two rows (a
// line shows where the slide will go, indented when it joins a section) or
// on the middle of a row (the row lights up: the two slides group), and
// applies the drop as one undoable edit.

#include <cmath>

#include <glib/gi18n.h>

#include "editor/platform/navigator_row.h"
#include "editor/platform/slide_navigator.h"

namespace lectern {

namespace {

// Near the list's top or bottom edge a drag scrolls the list, faster the
// closer it gets.
constexpr double scrollZone = 40;
constexpr double maxScrollStep = 18;  // points per tick
constexpr unsigned scrollTickMs = 30;
// The drop line's inset from the row's edges, and its thickness.
constexpr int lineInset = 6;
constexpr int lineThickness = 2;

}  // namespace

void SlideNavigator::setupDrag(NavigatorRow& row) {
    auto source = Gtk::DragSource::create();
    source->set_actions(Gdk::DragAction::MOVE);
    source->signal_prepare().connect(
        [this, &row](double, double) -> Glib::RefPtr<Gdk::ContentProvider> {
            if (!row.slideId() || row.renaming()) return {};
            dragging_ = row.slideId();
            Glib::Value<Glib::ustring> value;
            value.init(Glib::Value<Glib::ustring>::value_type());
            value.set(row.slideId()->string());
            return Gdk::ContentProvider::create(value);
        },
        false);
    source->signal_drag_begin().connect([&row, source](const Glib::RefPtr<Gdk::Drag>&) {
        // The slide's picture follows the pointer.
        source->set_icon(Gtk::WidgetPaintable::create(row.thumbnail()), NavigatorRow::thumbnailWidth / 2, 12);
    });
    source->signal_drag_end().connect([this](const Glib::RefPtr<Gdk::Drag>&, bool) {
        dragging_.reset();
        clearDropTarget();
    });
    row.add_controller(source);
}

void SlideNavigator::setupDrop() {
    auto target = Gtk::DropTarget::create(G_TYPE_STRING, Gdk::DragAction::MOVE);
    target->signal_enter().connect([this](double x, double y) { return dragMoved(x, y); }, false);
    target->signal_motion().connect([this](double x, double y) { return dragMoved(x, y); }, false);
    target->signal_leave().connect([this] { clearDropTarget(); });
    target->signal_drop().connect(
        [this](const Glib::ValueBase& value, double x, double y) { return dropped(value, x, y); }, false);
    list_.add_controller(target);
}

void SlideNavigator::refreshFrames() {
    // The rows on screen, in the list's coordinates: the list's own cell
    // around each row, so that the frames meet without gaps.
    frames_.clear();
    for (auto* row : bound_) {
        if (!row->slideId() || !row->get_mapped()) continue;
        graphene_rect_t bounds;
        if (!gtk_widget_compute_bounds(row->cell().gobj(), GTK_WIDGET(list_.gobj()), &bounds)) continue;
        frames_.push_back(NavigatorRowFrame{*row->slideId(), bounds.origin.x, bounds.origin.y, bounds.size.width,
                                            bounds.size.height});
    }
}

Gdk::DragAction SlideNavigator::dragMoved(double x, double y) {
    // Only rows of this list move; anything else dragged in is refused.
    if (!dragging_) return Gdk::DragAction(0);

    double height = list_.get_height();
    if (y < scrollZone) scrollSpeed_ = -maxScrollStep * (scrollZone - y) / scrollZone;
    else if (y > height - scrollZone) scrollSpeed_ = maxScrollStep * (y - (height - scrollZone)) / scrollZone;
    else scrollSpeed_ = 0;
    if (scrollSpeed_ != 0 && !scrollTimer_.connected()) {
        scrollTimer_ = Glib::signal_timeout().connect([this] { return autoscroll(); }, scrollTickMs);
    }

    refreshFrames();
    dropPoint_ = {x, y};
    NavigatorDropTarget target = navigatorDropTarget(frames_, *dragging_, x, y);
    showDropTarget(target);
    return std::holds_alternative<std::monostate>(target) ? Gdk::DragAction(0) : Gdk::DragAction::MOVE;
}

bool SlideNavigator::autoscroll() {
    if (!dragging_ || scrollSpeed_ == 0) return false;
    auto adjustment = list_.get_vadjustment();
    double top = adjustment->get_lower();
    double bottom = adjustment->get_upper() - adjustment->get_page_size();
    adjustment->set_value(std::clamp(adjustment->get_value() + scrollSpeed_, top, std::max(top, bottom)));
    // The rows moved under a pointer that stood still.
    refreshFrames();
    showDropTarget(navigatorDropTarget(frames_, *dragging_, dropPoint_.first, dropPoint_.second));
    return true;
}

bool SlideNavigator::dropped(const Glib::ValueBase& value, double x, double y) {
    if (!dragging_ || !G_VALUE_HOLDS_STRING(value.gobj())) return false;
    const char* text = g_value_get_string(value.gobj());
    auto dragged = text ? Uuid::parse(text) : std::nullopt;
    if (dragged != dragging_) return false;
    refreshFrames();
    NavigatorDropTarget target = navigatorDropTarget(frames_, *dragged, x, y);
    clearDropTarget();
    if (std::holds_alternative<std::monostate>(target)) return false;
    bool group = std::holds_alternative<NavigatorGroupTarget>(target);
    Uuid slide = *dragged;
    editor_.edit(
        group ? _("Group Slides") : _("Move Slide"),
        [&](Deck deck) { return applyDrop(std::move(deck), slide, target); }, {}, slide);
    return true;
}

void SlideNavigator::showDropTarget(const NavigatorDropTarget& target) {
    std::optional<Uuid> group;
    if (const auto* onto = std::get_if<NavigatorGroupTarget>(&target)) group = onto->target;
    if (group != groupTarget_) {
        if (groupTarget_) {
            if (auto* row = boundRow(*groupTarget_)) row->setGroupTarget(false);
        }
        groupTarget_ = group;
        if (groupTarget_) {
            if (auto* row = boundRow(*groupTarget_)) row->setGroupTarget(true);
        }
    }

    const auto* edge = std::get_if<edits::SlideDropEdge>(&target);
    auto frame = edge ? std::find_if(frames_.begin(), frames_.end(),
                                     [&](const NavigatorRowFrame& row) { return row.slide == edge->target; })
                      : frames_.end();
    if (frame == frames_.end()) {
        dropLine_.set_visible(false);
        return;
    }
    // The line sits on the row's edge, in the overlay's coordinates; a drop
    // into a section starts it at the members' indent.
    double edgeY = edge->side == edits::SlideDropEdge::Side::top ? frame->y : frame->y + frame->height;
    double left = frame->x + lineInset + (edge->indented ? NavigatorRow::memberIndent * 2 : 0);
    double right = frame->x + frame->width - lineInset;
    double ox = left, oy = edgeY;
    list_.translate_coordinates(overlay_, left, edgeY, ox, oy);
    dropLineFrame_ = Gdk::Rectangle(static_cast<int>(std::lround(ox)),
                                    static_cast<int>(std::lround(oy)) - lineThickness / 2,
                                    std::max(1, static_cast<int>(right - left)), lineThickness);
    dropLine_.set_visible(true);
    dropLine_.queue_resize();
}

void SlideNavigator::clearDropTarget() {
    scrollTimer_.disconnect();
    scrollSpeed_ = 0;
    showDropTarget(std::monostate{});
}

}  // namespace lectern
