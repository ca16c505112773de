#include "slides/slide_pictures.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <cmath>
#include <list>

#include "slides/slide_typesetting.h"

namespace lectern::paint {

namespace {

cairo_surface_t* decode(const SharedBytes& bytes) {
    std::unique_ptr<GdkPixbufLoader, GObjectUnref> loader(gdk_pixbuf_loader_new());
    bool ok = gdk_pixbuf_loader_write(loader.get(), bytes.data(), bytes.size(), nullptr);
    ok = gdk_pixbuf_loader_close(loader.get(), nullptr) && ok;
    GdkPixbuf* pixbuf = ok ? gdk_pixbuf_loader_get_pixbuf(loader.get()) : nullptr;
    if (!pixbuf || gdk_pixbuf_get_bits_per_sample(pixbuf) != 8) return nullptr;
    const int width = gdk_pixbuf_get_width(pixbuf), height = gdk_pixbuf_get_height(pixbuf);
    const int channels = gdk_pixbuf_get_n_channels(pixbuf), stride = gdk_pixbuf_get_rowstride(pixbuf);
    const bool alpha = gdk_pixbuf_get_has_alpha(pixbuf);
    if (channels < (alpha ? 4 : 3)) return nullptr;
    const guchar* pixels = gdk_pixbuf_read_pixels(pixbuf);
    cairo_surface_t* surface = cairo_image_surface_create(alpha ? CAIRO_FORMAT_ARGB32 : CAIRO_FORMAT_RGB24, width, height);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(surface);
        return nullptr;
    }
    cairo_surface_flush(surface);
    unsigned char* out = cairo_image_surface_get_data(surface);
    const int outStride = cairo_image_surface_get_stride(surface);
    // gdk-pixbuf rows are RGB(A) bytes; Cairo wants native-endian words with
    // premultiplied alpha.
    for (int row = 0; row < height; ++row) {
        auto* target = reinterpret_cast<std::uint32_t*>(out + static_cast<std::ptrdiff_t>(row) * outStride);
        const guchar* source = pixels + static_cast<std::ptrdiff_t>(row) * stride;
        for (int col = 0; col < width; ++col, source += channels) {
            std::uint32_t a = alpha ? source[3] : 255;
            auto premultiply = [a](std::uint32_t v) { return (v * a + 127) / 255; };
            target[col] = (a << 24) | (premultiply(source[0]) << 16) | (premultiply(source[1]) << 8) | premultiply(source[2]);
        }
    }
    cairo_surface_mark_dirty(surface);
    return surface;
}

}  // namespace

void roundedRect(cairo_t* cr, const Rect& r, double radius) {
    radius = std::max(0.0, std::min({radius, r.width / 2, r.height / 2}));
    cairo_new_sub_path(cr);
    cairo_arc(cr, r.x + r.width - radius, r.y + radius, radius, -M_PI / 2, 0);
    cairo_arc(cr, r.x + r.width - radius, r.y + r.height - radius, radius, 0, M_PI / 2);
    cairo_arc(cr, r.x + radius, r.y + r.height - radius, radius, M_PI / 2, M_PI);
    cairo_arc(cr, r.x + radius, r.y + radius, radius, M_PI, 3 * M_PI / 2);
    cairo_close_path(cr);
}

// Recently decoded pictures, by their bytes: decoding a large PNG on every
// frame would cost more than drawing the rest of the slide. Holding the bytes
// keeps their buffer alive, so a shared buffer is a reliable match.
std::shared_ptr<const Picture> decodedPicture(const SharedBytes& bytes) {
    struct Entry {
        SharedBytes bytes;
        std::shared_ptr<const Picture> picture;
    };
    static std::mutex mutex;
    static std::list<Entry> recent;  // most recent first
    constexpr std::size_t keep = 12;
    {
        std::lock_guard lock(mutex);
        for (auto it = recent.begin(); it != recent.end(); ++it) {
            if (it->bytes == bytes) {
                recent.splice(recent.begin(), recent, it);
                return it->picture;
            }
        }
    }
    auto picture = std::make_shared<Picture>(decode(bytes));
    std::lock_guard lock(mutex);
    recent.push_front({bytes, picture});
    if (recent.size() > keep) recent.pop_back();
    return picture;
}

void drawBrokenPicture(cairo_t* cr, const Rect& area, const Color& ink, const Color& ground) {
    const double size = std::clamp(std::min(area.width, area.height) * 0.2, 24.0, 96.0);
    const double cx = area.x + area.width / 2, cy = area.y + area.height / 2;
    const double line = std::max(1.5, size * 0.055);
    const Rect back{cx - size * 0.38, cy - size * 0.44, size * 0.86, size * 0.62};
    const Rect front{cx - size * 0.48, cy - size * 0.24, size * 0.86, size * 0.62};
    cairo_save(cr);
    cairo_set_line_width(cr, line);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    setSource(cr, ink);
    roundedRect(cr, back, size * 0.1);
    cairo_stroke(cr);
    roundedRect(cr, front, size * 0.1);  // the front frame hides the back one
    setSource(cr, ground);
    cairo_fill_preserve(cr);
    setSource(cr, ink);
    cairo_stroke(cr);
    // The slash, cut free of the frames by a band of the ground colour.
    const double x0 = cx - size * 0.56, y0 = cy - size * 0.56, x1 = cx + size * 0.56, y1 = cy + size * 0.56;
    cairo_move_to(cr, x0, y0);
    cairo_line_to(cr, x1, y1);
    setSource(cr, ground);
    cairo_set_line_width(cr, line * 3);
    cairo_stroke_preserve(cr);
    setSource(cr, ink);
    cairo_set_line_width(cr, line);
    cairo_stroke(cr);
    cairo_restore(cr);
}

void drawEmptyPicture(cairo_t* cr, const Rect& area, double radius, const Color& stroke, const Color& ink) {
    cairo_save(cr);
    const double inset = std::min(14.0, std::min(area.width, area.height) * 0.05);
    roundedRect(cr, {area.x + inset, area.y + inset, area.width - 2 * inset, area.height - 2 * inset},
                std::max(0.0, radius - inset / 2));
    const double dash[] = {8, 6};
    cairo_set_dash(cr, dash, 2, 0);
    cairo_set_line_width(cr, 1.5);
    setSource(cr, stroke);
    cairo_stroke(cr);
    cairo_set_dash(cr, nullptr, 0, 0);
    const double size = std::clamp(std::min(area.width, area.height) * 0.18, 20.0, 80.0);
    const double cx = area.x + area.width / 2, cy = area.y + area.height / 2;
    const Rect frame{cx - size / 2, cy - size * 0.38, size, size * 0.76};
    setSource(cr, ink);
    cairo_set_line_width(cr, std::max(1.5, size * 0.05));
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    roundedRect(cr, frame, size * 0.1);
    cairo_stroke(cr);
    cairo_arc(cr, frame.x + frame.width * 0.7, frame.y + frame.height * 0.32, size * 0.08, 0, 2 * M_PI);
    cairo_fill(cr);
    cairo_move_to(cr, frame.x + frame.width * 0.12, frame.y + frame.height * 0.82);
    cairo_line_to(cr, frame.x + frame.width * 0.4, frame.y + frame.height * 0.45);
    cairo_line_to(cr, frame.x + frame.width * 0.62, frame.y + frame.height * 0.7);
    cairo_line_to(cr, frame.x + frame.width * 0.74, frame.y + frame.height * 0.58);
    cairo_line_to(cr, frame.x + frame.width * 0.88, frame.y + frame.height * 0.82);
    cairo_stroke(cr);
    cairo_restore(cr);
}

}  // namespace lectern::paint
