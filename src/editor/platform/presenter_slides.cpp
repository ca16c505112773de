#include "editor/platform/presenter_slides.h"

#include <algorithm>
#include <cmath>

namespace lectern {

PresenterSlides::PresenterSlides(Gtk::Widget& current, Gtk::Widget& next) : current_(current), next_(next) {
    current_.set_parent(*this);
    next_.set_parent(*this);
    // The children go with the widget, also when it is destroyed from C.
    signal_destroy().connect([this] { releaseChildren(); });
}

PresenterSlides::~PresenterSlides() {
    remeasure_.disconnect();
    releaseChildren();
}

void PresenterSlides::releaseChildren() {
    // Unparenting lets the children go: they are never touched after.
    if (released_) return;
    released_ = true;
    current_.unparent();
    next_.unparent();
}

Gtk::SizeRequestMode PresenterSlides::get_request_mode_vfunc() const {
    return Gtk::SizeRequestMode::HEIGHT_FOR_WIDTH;
}

int PresenterSlides::columnHeight(Gtk::Widget& column, int width) const {
    int minimum = 0, natural = 0, ignored = 0;
    column.measure(Gtk::Orientation::VERTICAL, width, minimum, natural, ignored, ignored);
    return natural;
}

int PresenterSlides::minimumWidth(Gtk::Widget& column) const {
    int minimum = 0, natural = 0, ignored = 0;
    column.measure(Gtk::Orientation::HORIZONTAL, -1, minimum, natural, ignored, ignored);
    return minimum;
}

int PresenterSlides::nextWidth(int currentWidth) const {
    return std::max(minimumWidth(next_), static_cast<int>(std::lround(currentWidth * nextScale)));
}

PresenterSlides::Fit PresenterSlides::fit(int width, int height) const {
    const int lowest = std::max(minimumWidth(current_), 1);
    // Each layout's fit grows with the current column's width, so a binary
    // search finds the widest that fits.
    auto widest = [&](auto&& fits, int upper) {
        int low = lowest, high = std::max(upper, lowest);
        if (!fits(low)) return 0;
        while (low < high) {
            int middle = low + (high - low + 1) / 2;
            if (fits(middle)) low = middle; else high = middle - 1;
        }
        return low;
    };
    auto besideFits = [&](int w) {
        int n = nextWidth(w);
        return w + gap + n <= width && std::max(columnHeight(current_, w), columnHeight(next_, n)) <= height;
    };
    auto belowFits = [&](int w) {
        return std::max(w, nextWidth(w)) <= width && columnHeight(current_, w) + gap + columnHeight(next_, nextWidth(w)) <= height;
    };
    int beside = widest(besideFits, width);
    int below = widest(belowFits, width);
    if (beside == 0 && below == 0) return {lowest, false};  // too small either way: clipped
    // Below only when it makes the current slide clearly larger.
    if (below > beside * 11 / 10) return {below, true};
    return {beside, false};
}

void PresenterSlides::measure_vfunc(Gtk::Orientation orientation, int forSize, int& minimum, int& natural,
                                    int& minimumBaseline, int& naturalBaseline) const {
    minimumBaseline = naturalBaseline = -1;
    minimum = natural = 0;
    if (released_) return;
    const int lowest = minimumWidth(current_);
    if (orientation == Gtk::Orientation::HORIZONTAL) {
        minimum = lowest + gap + nextWidth(lowest);
        natural = std::max(minimum, 2 * lowest + gap + nextWidth(2 * lowest));
        return;
    }
    minimum = std::max(columnHeight(current_, lowest), columnHeight(next_, nextWidth(lowest)));
    if (forSize < 0) forSize = 2 * lowest + gap + nextWidth(2 * lowest);
    // Asks for what the best layout takes in a share of the window's
    // height: the rest goes to the notes and the actions.
    measuredRootHeight_ = rootHeight();
    int budget = measuredRootHeight_ > 0 ? static_cast<int>(measuredRootHeight_ * heightShare)
                                         : columnHeight(current_, std::max(lowest, forSize / 2));
    natural = std::max(minimum, usedHeight(fit(forSize, std::max(budget, minimum))));
}

int PresenterSlides::rootHeight() const {
    const auto* window = dynamic_cast<const Gtk::Widget*>(get_root());
    return window ? window->get_height() : 0;
}

int PresenterSlides::usedHeight(Fit chosen) const {
    const int currentHeight = columnHeight(current_, chosen.width);
    const int nextHeight = columnHeight(next_, nextWidth(chosen.width));
    return chosen.stacked ? currentHeight + gap + nextHeight : std::max(currentHeight, nextHeight);
}

void PresenterSlides::size_allocate_vfunc(int width, int height, int) {
    if (released_) return;
    // The natural height follows the window's: measured again once the
    // window has its new height (a change of height alone is not measured).
    if (rootHeight() != measuredRootHeight_ && !remeasure_.connected()) {
        remeasure_ = Glib::signal_idle().connect([this] {
            queue_resize();
            return false;
        });
    }
    Fit chosen = fit(width, height);
    stacked_ = chosen.stacked;
    currentWidth_ = chosen.width;
    const int w = chosen.width;
    const int n = nextWidth(w);
    const int currentHeight = columnHeight(current_, w);
    const int nextHeight = columnHeight(next_, n);
    if (!chosen.stacked) {
        int x = std::max(0, (width - (w + gap + n)) / 2);
        current_.size_allocate(Gtk::Allocation(x, 0, w, currentHeight), -1);
        next_.size_allocate(Gtk::Allocation(x + w + gap, 0, n, nextHeight), -1);
    } else {
        int x = std::max(0, (width - w) / 2);
        current_.size_allocate(Gtk::Allocation(x, 0, w, currentHeight), -1);
        next_.size_allocate(Gtk::Allocation(x, currentHeight + gap, n, nextHeight), -1);
    }
}

}  // namespace lectern
