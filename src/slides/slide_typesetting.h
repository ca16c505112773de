#pragma once

#include <pango/pangocairo.h>

#include <memory>
#include <string>

#include "model/theme_style.h"
#include "slides/slide_painter.h"

// Text for the slide painter: one Pango context with unhinted metrics, the
// theme's fonts at the design canvas's scale, and layouts made from them.
namespace lectern::paint {

struct GObjectUnref {
    void operator()(gpointer object) const {
        if (object) g_object_unref(object);
    }
};
using LayoutPtr = std::shared_ptr<PangoLayout>;

// The theme's font sizes describe a 960 × 540 slide seen at about half size
// in an editor. On the design canvas every size (and the eyebrow's letter
// spacing) is multiplied by this one factor, so that a slide reads like a
// presentation slide from the back of a room: a 34-point title becomes 51
// points on the 960-point-wide slide, a 14-point body 21 points.
inline constexpr double typeScale = 1.5;

// One Pango context per thread, with unhinted metrics and unrounded glyph
// positions: text then measures the same at every scale, so a slide wraps
// identically on the stage, in a thumbnail and in the PDF.
PangoContext* typesetting();

// A theme font at `factor` times its scaled size.
struct Font {
    FontSpec spec;
    double factor = 1;
    double size() const { return spec.size * typeScale * factor; }
};

struct LayoutOptions {
    double width = SlidePainter::designWidth;
    PangoAlignment alignment = PANGO_ALIGN_LEFT;
    double tracking = 0;     // letter spacing in design points
    double lineSpacing = 0;  // 0: the font's own
};

LayoutPtr makeLayout(const Font& font, const LayoutOptions& o);
LayoutPtr plainText(const std::string& text, const Font& font, const LayoutOptions& o);
double heightOf(PangoLayout* layout);

}  // namespace lectern::paint
