#pragma once

#include <cairo.h>

#include "model/slide.h"
#include "slides/slide_painter.h"

namespace lectern {

// A handout page: the slide across the top of an A4 portrait page, its
// presenter notes set below it in a plain face. Notes longer than the room
// left under the slide continue at the top of further pages of the same
// size (notes only), so no word is lost and the type never shrinks.
class HandoutPage {
public:
    static constexpr double pageWidth = 595.276;  // A4, in points
    static constexpr double pageHeight = 841.89;
    static constexpr double margin = 48;
    static constexpr double notesFontSize = 11;

    // Draws the slide's page and the continuation pages of its notes onto a
    // surface of pageWidth × pageHeight (a PDF surface), ending each page
    // with cairo_show_page. Returns the number of pages drawn.
    static int paint(cairo_t* cr, const Slide& slide, const SlidePaintOptions& options);
};

}  // namespace lectern
