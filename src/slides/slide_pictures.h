#pragma once

#include <cairo.h>

#include <memory>
#include <mutex>
#include <vector>

#include "model/color.h"
#include "model/shared_bytes.h"
#include "slides/slide_painter.h"

// Pictures for the slide painter, and the drawing primitives that every
// part of a slide uses.
namespace lectern::paint {

inline void setSource(cairo_t* cr, const Color& c) { cairo_set_source_rgba(cr, c.red, c.green, c.blue, c.alpha); }
inline Color withAlpha(const Color& c, double alpha) { return {c.red, c.green, c.blue, c.alpha * alpha}; }
inline Color mix(const Color& a, const Color& b, double t) {
    return {a.red + (b.red - a.red) * t, a.green + (b.green - a.green) * t, a.blue + (b.blue - a.blue) * t, 1};
}
void roundedRect(cairo_t* cr, const Rect& r, double radius);

// A decoded picture as a Cairo surface, or none when the bytes do not decode,
// with halved copies made on demand: a picture shrunk below half its size is
// drawn from the copy nearest above the target size, so bilinear filtering
// stays sharp and cheap from the stage down to the overview's small tiles.
class Picture {
public:
    explicit Picture(cairo_surface_t* surface) : full_(surface), levels_{surface} {}
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;
    ~Picture() {
        for (cairo_surface_t* level : levels_) {
            if (level) cairo_surface_destroy(level);
        }
    }

    // Safe from any thread: pictures are shared by the stage, the previews
    // drawn off the main thread and imports that decode ahead.
    cairo_surface_t* full() const { return full_; }

    // The copy to draw at `scale` (device pixels per picture pixel): the
    // smallest that is still at least half as large as what is drawn.
    cairo_surface_t* forScale(double scale) const {
        std::lock_guard lock(mutex_);
        std::size_t level = 0;
        while (scale < 0.5 && cairo_image_surface_get_width(levels_[level]) > 1 &&
               cairo_image_surface_get_height(levels_[level]) > 1) {
            if (level + 1 == levels_.size()) levels_.push_back(halve(levels_[level]));
            ++level;
            scale *= 2;
        }
        return levels_[level];
    }

private:
    static cairo_surface_t* halve(cairo_surface_t* source) {
        const int w = std::max(1, cairo_image_surface_get_width(source) / 2);
        const int h = std::max(1, cairo_image_surface_get_height(source) / 2);
        cairo_surface_t* half = cairo_image_surface_create(cairo_image_surface_get_format(source), w, h);
        cairo_t* cr = cairo_create(half);
        cairo_scale(cr, static_cast<double>(w) / cairo_image_surface_get_width(source),
                    static_cast<double>(h) / cairo_image_surface_get_height(source));
        cairo_set_source_surface(cr, source, 0, 0);
        cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
        cairo_pattern_set_extend(cairo_get_source(cr), CAIRO_EXTEND_PAD);
        cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
        cairo_paint(cr);
        cairo_destroy(cr);
        cairo_surface_flush(half);
        return half;
    }

    cairo_surface_t* const full_;  // levels_ grows under the lock; this never changes
    mutable std::mutex mutex_;
    mutable std::vector<cairo_surface_t*> levels_;
};

// The picture of these bytes, decoded once and kept a while; none when
// they are not a picture.
std::shared_ptr<const Picture> decodedPicture(const SharedBytes& bytes);
// "rectangle.on.rectangle.slash": a frame behind a frame, struck through,
// for bytes that are not a picture.
void drawBrokenPicture(cairo_t* cr, const Rect& area, const Color& ink, const Color& ground);
// An image slide without a picture yet: a dashed frame and a picture glyph.
void drawEmptyPicture(cairo_t* cr, const Rect& area, double radius, const Color& stroke, const Color& ink);

}  // namespace lectern::paint
