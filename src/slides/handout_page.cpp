#include "slides/handout_page.h"

#include <pango/pangocairo.h>

namespace lectern {

namespace {

constexpr double slideWidth = HandoutPage::pageWidth - 2 * HandoutPage::margin;
constexpr double slideHeight = slideWidth * SlidePainter::designHeight / SlidePainter::designWidth;
constexpr double notesGap = 24;  // between the slide and its notes

PangoLayout* notesLayout(cairo_t* cr, const std::string& notes) {
    PangoLayout* layout = pango_cairo_create_layout(cr);
    PangoFontDescription* font = pango_font_description_new();
    pango_font_description_set_family(font, fontFamily(FontDesign::standard).c_str());
    pango_font_description_set_size(font, static_cast<int>(HandoutPage::notesFontSize * PANGO_SCALE));
    pango_layout_set_font_description(layout, font);
    pango_font_description_free(font);
    pango_layout_set_width(layout, static_cast<int>(slideWidth * PANGO_SCALE));
    pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
    pango_layout_set_text(layout, notes.c_str(), -1);
    return layout;
}

}  // namespace

int HandoutPage::paint(cairo_t* cr, const Slide& slide, const SlidePaintOptions& options) {
    cairo_save(cr);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    cairo_translate(cr, margin, margin);
    // The painter fills all it may with the theme's background: only the slide.
    cairo_rectangle(cr, 0, 0, slideWidth, slideHeight);
    cairo_clip(cr);
    SlidePainter::paint(cr, slide, options, slideWidth, slideHeight);
    cairo_restore(cr);
    // A hairline round the slide, so a light slide keeps its edge on paper.
    cairo_save(cr);
    cairo_set_source_rgb(cr, 0.75, 0.75, 0.75);
    cairo_set_line_width(cr, 0.5);
    cairo_rectangle(cr, margin, margin, slideWidth, slideHeight);
    cairo_stroke(cr);
    cairo_restore(cr);

    int pages = 1;
    if (!slide.notes.empty()) {
        PangoLayout* layout = notesLayout(cr, slide.notes);
        cairo_save(cr);
        cairo_set_source_rgb(cr, 0.1, 0.1, 0.1);
        // Lines go down the page from `top`; a line that would cross the
        // bottom margin starts the next page, the layout's `shift` (in
        // Pango units) moving the rest of the text up to that page's top.
        double top = margin + slideHeight + notesGap;
        int shift = 0;
        PangoLayoutIter* lines = pango_layout_get_iter(layout);
        do {
            PangoRectangle extent;
            pango_layout_iter_get_line_extents(lines, nullptr, &extent);
            double bottom = top + (extent.y + extent.height - shift) / double(PANGO_SCALE);
            if (bottom > pageHeight - margin && extent.y > shift) {
                cairo_show_page(cr);
                ++pages;
                top = margin;
                shift = extent.y;
            }
            double baseline = top + (pango_layout_iter_get_baseline(lines) - shift) / double(PANGO_SCALE);
            cairo_move_to(cr, margin + extent.x / double(PANGO_SCALE), baseline);
            pango_cairo_show_layout_line(cr, pango_layout_iter_get_line_readonly(lines));
        } while (pango_layout_iter_next_line(lines));
        pango_layout_iter_free(lines);
        cairo_restore(cr);
        g_object_unref(layout);
    }
    cairo_show_page(cr);
    return pages;
}

}  // namespace lectern
