// Coming back to a deck: the deck window opens at the slide and in the size
// it was left at, and writes them to the user's list of places.

#include <algorithm>

#include "editor/platform/deck_window.h"

namespace lectern {

namespace {

// Long enough that stepping through slides (or holding an arrow key) writes
// once, short enough that a crash loses little.
constexpr double placeWriteDelaySeconds = 2.0;

}  // namespace

void DeckWindow::restorePlace() {
    if (!places_ || !package()) return;
    auto place = places_->find(*package());
    placedPackage_ = package();
    if (!place) return;
    place_ = *place;

    if (place->width > 0 && place->height > 0) {
        // A size left on a larger screen is cut down to this one.
        int width = place->width, height = place->height;
        auto monitors = get_display()->get_monitors();
        if (monitors && monitors->get_n_items() > 0) {
            if (auto monitor = std::dynamic_pointer_cast<Gdk::Monitor>(monitors->get_object(0))) {
                Gdk::Rectangle screen;
                monitor->get_geometry(screen);
                if (screen.get_width() > 0) width = std::min(width, screen.get_width());
                if (screen.get_height() > 0) height = std::min(height, screen.get_height());
            }
        }
        set_default_size(width, height);
    }
    if (place->maximized) maximize();

    // A slide that has gone since leaves the deck at its first one.
    const auto& slides = deck().slides;
    auto found = std::find_if(slides.begin(), slides.end(),
                              [&](const Slide& slide) { return place->slideId && slide.id == *place->slideId; });
    if (found != slides.end() && found != slides.begin()) state_->goTo(found - slides.begin(), false);
}

void DeckWindow::placeChangedSoon() {
    if (!places_ || !package()) return;
    if (placeTimer_) scheduler_.cancel(placeTimer_);
    placeTimer_ = scheduler_.after(placeWriteDelaySeconds, [this] {
        placeTimer_ = 0;
        rememberPlace();
    });
}

void DeckWindow::rememberPlace() {
    if (placeTimer_) {
        scheduler_.cancel(placeTimer_);
        placeTimer_ = 0;
    }
    // A draft has no place of its own: it is not found again by a path.
    if (!places_ || !package()) return;
    if (editor_) place_.slideId = editor_->currentSlideId();
    // Only a window on screen has a size to tell; once it is closed, the
    // size it was seen at last stays.
    if (gobj() && get_mapped()) {
        // GTK keeps the default size up to date as the window is resized by
        // hand, and leaves it alone while the window is maximized or full
        // screen: it is the size to come back to, in the units it is set in.
        int width = 0, height = 0;
        get_default_size(width, height);
        if (width <= 0 || height <= 0) {
            width = get_width();
            height = get_height();
        }
        if (width >= DeckPlaces::minimumSide && height >= DeckPlaces::minimumSide) {
            place_.width = width;
            place_.height = height;
        }
        place_.maximized = is_maximized();
    }
    places_->remember(*package(), place_);
    placedPackage_ = package();
    // A place that cannot be written is not worth a word: the deck is fine.
    (void)places_->save();
}

}  // namespace lectern
