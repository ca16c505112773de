#include "slides/slide_typesetting.h"

#include <algorithm>

namespace lectern::paint {

namespace {

PangoWeight weightFor(FontWeight weight) {
    switch (weight) {
        case FontWeight::medium: return PANGO_WEIGHT_MEDIUM;
        case FontWeight::semibold: return PANGO_WEIGHT_SEMIBOLD;
        case FontWeight::bold: return PANGO_WEIGHT_BOLD;
        case FontWeight::regular: break;
    }
    return PANGO_WEIGHT_NORMAL;
}

}  // namespace

PangoContext* typesetting() {
    thread_local std::unique_ptr<PangoContext, GObjectUnref> context = [] {
        PangoContext* created = pango_font_map_create_context(pango_cairo_font_map_get_default());
        cairo_font_options_t* options = cairo_font_options_create();
        cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
        cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
        cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
        pango_cairo_context_set_font_options(created, options);
        cairo_font_options_destroy(options);
        pango_context_set_round_glyph_positions(created, FALSE);
        return std::unique_ptr<PangoContext, GObjectUnref>(created);
    }();
    return context.get();
}

LayoutPtr makeLayout(const Font& font, const LayoutOptions& o) {
    LayoutPtr layout(pango_layout_new(typesetting()), GObjectUnref{});
    PangoFontDescription* description = pango_font_description_new();
    pango_font_description_set_family(description, fontFamily(font.spec.design).c_str());
    pango_font_description_set_weight(description, weightFor(font.spec.weight));
    pango_font_description_set_absolute_size(description, font.size() * PANGO_SCALE);
    pango_layout_set_font_description(layout.get(), description);
    pango_font_description_free(description);
    pango_layout_set_width(layout.get(), static_cast<int>(std::max(1.0, o.width) * PANGO_SCALE));
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
    pango_layout_set_alignment(layout.get(), o.alignment);
    if (o.lineSpacing > 0) pango_layout_set_line_spacing(layout.get(), static_cast<float>(o.lineSpacing));
    return layout;
}

LayoutPtr plainText(const std::string& text, const Font& font, const LayoutOptions& o) {
    LayoutPtr layout = makeLayout(font, o);
    pango_layout_set_text(layout.get(), text.c_str(), static_cast<int>(text.size()));
    if (o.tracking != 0) {
        PangoAttrList* attributes = pango_attr_list_new();
        pango_attr_list_insert(attributes, pango_attr_letter_spacing_new(static_cast<int>(o.tracking * PANGO_SCALE)));
        pango_layout_set_attributes(layout.get(), attributes);
        pango_attr_list_unref(attributes);
    }
    return layout;
}

double heightOf(PangoLayout* layout) {
    int width = 0, height = 0;
    pango_layout_get_size(layout, &width, &height);
    return static_cast<double>(height) / PANGO_SCALE;
}

}  // namespace lectern::paint

namespace lectern {

// Faces installed by scripts/setup, each with a fallback that any desktop has.
std::string fontFamily(FontDesign design) {
    switch (design) {
        case FontDesign::serif: return "Liberation Serif, DejaVu Serif, serif";
        case FontDesign::monospaced: return "DejaVu Sans Mono, Liberation Mono, monospace";
        case FontDesign::standard: break;
    }
    return "Cantarell, DejaVu Sans, sans-serif";
}

}  // namespace lectern
