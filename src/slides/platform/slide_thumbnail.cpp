#include "slides/platform/slide_thumbnail.h"

#include <cmath>

namespace lectern {

namespace {

int heightFor(int width) { return static_cast<int>(std::round(width * SlidePainter::designHeight / SlidePainter::designWidth)); }

}  // namespace

SlideThumbnail::SlideThumbnail(int width) : naturalWidth_(width) {
    add_css_class("slide-thumbnail");
    set_draw_func(sigc::mem_fun(*this, &SlideThumbnail::draw));
}

Gtk::SizeRequestMode SlideThumbnail::get_request_mode_vfunc() const { return Gtk::SizeRequestMode::HEIGHT_FOR_WIDTH; }

void SlideThumbnail::measure_vfunc(Gtk::Orientation orientation, int forSize, int& minimum, int& natural,
                                   int& minimumBaseline, int& naturalBaseline) const {
    minimumBaseline = naturalBaseline = -1;
    if (orientation == Gtk::Orientation::HORIZONTAL) {
        minimum = naturalWidth_ / 2;
        natural = naturalWidth_;
    } else {
        minimum = natural = heightFor(forSize > 0 ? forSize : naturalWidth_);
    }
}

void SlideThumbnail::setSlide(const Slide* slide, const SlidePaintOptions& options) {
    // The same slide changed (a key typed on the stage): the picture
    // follows a moment later, so that typing never waits for thumbnails.
    const bool sameSlide = slide && slide_ && slide->id == slide_->id;
    if (slide) slide_ = *slide; else slide_.reset();
    options_ = options;
    options_.reveal = {};  // everything shown
    options_.stepAppearance.clear();
    if (!sameSlide) {
        redraw_.disconnect();
        queue_draw();
        return;
    }
    if (redraw_.connected()) return;
    redraw_ = Glib::signal_timeout().connect(
        [this] {
            queue_draw();
            return false;
        },
        250);
}

SlideThumbnail::~SlideThumbnail() { redraw_.disconnect(); }

void SlideThumbnail::draw(const Cairo::RefPtr<Cairo::Context>& cr, int width, int height) {
    const double radius = 6;
    cr->begin_new_sub_path();
    cr->arc(width - radius, radius, radius, -M_PI / 2, 0);
    cr->arc(width - radius, height - radius, radius, 0, M_PI / 2);
    cr->arc(radius, height - radius, radius, M_PI / 2, M_PI);
    cr->arc(radius, radius, radius, M_PI, 3 * M_PI / 2);
    cr->close_path();
    cr->clip();
    if (!slide_) {
        // Nowhere to go: a quiet empty frame.
        cr->set_source_rgba(0.5, 0.5, 0.5, 0.15);
        cr->paint();
        return;
    }
    SlidePainter::paint(cr->cobj(), *slide_, options_, width, height);
}

}  // namespace lectern
