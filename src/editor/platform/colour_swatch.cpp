#include "editor/platform/colour_swatch.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace lectern {

Gtk::DrawingArea* makeColourSwatch(std::function<std::optional<Color>()> colour, int size) {
    auto* area = Gtk::make_managed<Gtk::DrawingArea>();
    area->set_content_width(size);
    area->set_content_height(size);
    area->set_draw_func([colour = std::move(colour)](const Cairo::RefPtr<Cairo::Context>& cr, int width, int height) {
        cr->arc(width / 2.0, height / 2.0, std::min(width, height) / 2.0 - 1, 0, 2 * M_PI);
        if (auto c = colour()) {
            cr->set_source_rgba(c->red, c->green, c->blue, 1);
            cr->fill_preserve();
            cr->set_source_rgba(0, 0, 0, 0.2);
        } else {
            cr->set_source_rgba(0.5, 0.5, 0.5, 0.8);
            cr->set_dash(std::vector<double>{3, 2}, 0);
        }
        cr->set_line_width(1);
        cr->stroke();
    });
    return area;
}

Gtk::DrawingArea* makeColourSwatch(const Color& colour, int size) {
    return makeColourSwatch([colour] { return std::optional<Color>(colour); }, size);
}

}  // namespace lectern
