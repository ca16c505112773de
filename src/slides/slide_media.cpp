#include <pango/pangocairo.h>

#include <glib/gi18n.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "slides/slide_pictures.h"
#include "slides/slide_plan.h"
#include "slides/slide_typesetting.h"

// The media of web and image slides: the picture, or the quiet browser
// window that stands for a live page.
namespace lectern::paint {

namespace {

// Draws `picture` into `area`, filling it (cropped) or fitting it whole.
void drawPicture(cairo_t* cr, const Picture& picture, const Rect& area, bool fill, double opacity) {
    const double w = cairo_image_surface_get_width(picture.full());
    const double h = cairo_image_surface_get_height(picture.full());
    const double scale = fill ? std::max(area.width / w, area.height / h) : std::min(area.width / w, area.height / h);
    cairo_save(cr);
    cairo_translate(cr, area.x + (area.width - w * scale) / 2, area.y + (area.height - h * scale) / 2);
    cairo_scale(cr, scale, scale);
    cairo_rectangle(cr, 0, 0, w, h);
    cairo_clip(cr);
    if (cairo_surface_get_type(cairo_get_target(cr)) == CAIRO_SURFACE_TYPE_IMAGE) {
        // On screen and in thumbnails: the halved copy nearest the size
        // drawn, filtered bilinearly, its edges padded.
        double dx = 1, dy = 0;
        cairo_user_to_device_distance(cr, &dx, &dy);
        cairo_surface_t* copy = picture.forScale(std::hypot(dx, dy));
        cairo_scale(cr, w / cairo_image_surface_get_width(copy), h / cairo_image_surface_get_height(copy));
        cairo_set_source_surface(cr, copy, 0, 0);
        cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_BILINEAR);
        cairo_pattern_set_extend(cairo_get_source(cr), CAIRO_EXTEND_PAD);
    } else {
        // A PDF keeps the picture whole; the viewer scales it.
        cairo_set_source_surface(cr, picture.full(), 0, 0);
    }
    cairo_paint_with_alpha(cr, opacity);
    cairo_restore(cr);
}

Piece imagePiece(const Context& c, const Rect& area, double radius) {
    std::shared_ptr<const Picture> picture = c.slide.imageData ? decodedPicture(*c.slide.imageData) : nullptr;
    const bool fill = c.slide.imageFill, hasBytes = c.slide.imageData.has_value();
    const QuickLookTheme colours = c.colours;
    const Color muted = c.style.mutedText;
    return {std::nullopt, 0, 0, std::nullopt, [=](cairo_t* cr) {
                cairo_save(cr);
                roundedRect(cr, area, radius);
                cairo_clip(cr);
                setSource(cr, colours.mediaBackground);
                cairo_paint(cr);
                if (picture && picture->full()) {
                    drawPicture(cr, *picture, area, fill, colours.imageOpacity);
                    if (colours.monochromeOverlay.alpha > 0) {
                        setSource(cr, colours.monochromeOverlay);
                        cairo_paint(cr);
                    }
                } else if (hasBytes) {
                    drawBrokenPicture(cr, area, muted, colours.mediaBackground);
                } else {
                    drawEmptyPicture(cr, area, radius, colours.placeholderStroke, withAlpha(muted, 0.7));
                }
                cairo_restore(cr);
            }};
}

// Where a live page will be: a quiet browser window with the slide's
// address and the outline of a page, so a thumbnail reads as a web page.
std::vector<Piece> webPieces(const Context& c, const Rect& area, double radius) {
    std::vector<Piece> pieces;
    const QuickLookTheme colours = c.colours;
    const bool placeholder = c.options.drawWebPlaceholder;
    const bool hasAddress = c.slide.url && !c.slide.url->empty();
    std::shared_ptr<const Picture> page =
        placeholder && c.options.webPicture ? decodedPicture(*c.options.webPicture) : nullptr;
    if (page && !page->full()) page.reset();
    const double bar = std::clamp(area.height * 0.11, 18.0, 34.0);
    pieces.push_back({std::nullopt, 0, 0, std::nullopt, [=](cairo_t* cr) {
                          cairo_save(cr);
                          roundedRect(cr, area, radius);
                          cairo_clip(cr);
                          setSource(cr, colours.mediaBackground);
                          cairo_paint(cr);
                          if (!placeholder) {
                              cairo_restore(cr);
                              return;
                          }
                          if (page) {
                              // The page as it last looked.
                              drawPicture(cr, *page, area, true, 1.0);
                              cairo_restore(cr);
                              return;
                          }
                          Color faint = withAlpha(colours.placeholderStroke, 0.45);
                          setSource(cr, faint);
                          cairo_rectangle(cr, area.x, area.y, area.width, bar);
                          cairo_fill(cr);
                          setSource(cr, colours.placeholderStroke);
                          cairo_rectangle(cr, area.x, area.y + bar - 1, area.width, 1);
                          cairo_fill(cr);
                          const double dot = bar * 0.13;
                          for (int i = 0; i < 3; ++i) {
                              cairo_arc(cr, area.x + bar * 0.55 + i * dot * 3.4, area.y + bar / 2, dot, 0, 2 * M_PI);
                              cairo_fill(cr);
                          }
                          // The address field.
                          Rect field{area.x + bar * 0.55 + dot * 10, area.y + bar * 0.2, 0, bar * 0.6};
                          field.width = area.x + area.width - bar * 0.5 - field.x;
                          roundedRect(cr, field, field.height / 2);
                          setSource(cr, withAlpha(colours.background, 0.9));
                          cairo_fill(cr);
                          if (hasAddress) {
                              // The outline of a page: a heading, lines of text and three tiles.
                              const double left = area.x + area.width * 0.07, width = area.width * 0.86;
                              double y = area.y + bar + (area.height - bar) * 0.1;
                              const double unit = std::clamp((area.height - bar) * 0.045, 4.0, 14.0);
                              setSource(cr, faint);
                              roundedRect(cr, {left, y, width * 0.45, unit * 1.6}, unit * 0.5);
                              cairo_fill(cr);
                              y += unit * 3.2;
                              for (double share : {0.9, 0.8, 0.55}) {
                                  roundedRect(cr, {left, y, width * share, unit * 0.75}, unit * 0.35);
                                  cairo_fill(cr);
                                  y += unit * 1.7;
                              }
                              y += unit * 1.2;
                              const double tileGap = width * 0.03, tile = (width - 2 * tileGap) / 3;
                              const double tileHeight = std::clamp(area.y + area.height - y - (area.height - bar) * 0.1, 0.0,
                                                                   (area.height - bar) * 0.3);
                              for (int i = 0; i < 3; ++i) {
                                  roundedRect(cr, {left + i * (tile + tileGap), y, tile, tileHeight}, unit * 0.6);
                                  cairo_fill(cr);
                              }
                          }
                          cairo_restore(cr);
                          cairo_save(cr);
                          roundedRect(cr, area, radius);
                          setSource(cr, colours.placeholderStroke);
                          cairo_set_line_width(cr, 1.5);
                          cairo_stroke(cr);
                          cairo_restore(cr);
                      }});
    if (placeholder && !page) {
        const double fieldX = area.x + bar * 0.55 + bar * 0.13 * 10;
        const double fieldWidth = area.x + area.width - bar * 0.5 - fieldX;
        Font font{c.style.bodyFont, bar * 0.36 / (c.style.bodyFont.size * typeScale)};
        font.spec.design = FontDesign::standard;
        LayoutPtr address = plainText(hasAddress ? *c.slide.url : _("No URL set"), font,
                                      {fieldWidth - bar * 0.8, PANGO_ALIGN_LEFT});
        pango_layout_set_ellipsize(address.get(), PANGO_ELLIPSIZE_END);
        pango_layout_set_wrap(address.get(), PANGO_WRAP_CHAR);
        pango_layout_set_height(address.get(), -1);
        // The address reads at 4.5:1 or better on its field, on every theme.
        const Color field = composite(withAlpha(colours.background, 0.9),
                                      composite(withAlpha(colours.placeholderStroke, 0.45), colours.mediaBackground));
        pieces.push_back(textPiece(address, fieldX + bar * 0.4, area.y + (bar - heightOf(address.get())) / 2,
                                   readableOn(c.style.mutedText, field)));
    }
    return pieces;
}

}  // namespace

void placeMedia(Plan& plan, const Context& c, const Rect& area, double radius) {
    plan.media = area;
    plan.mediaRadius = radius;
    if (c.slide.layout == SlideLayout::web) {
        for (auto& piece : webPieces(c, area, radius)) plan.pieces.push_back(std::move(piece));
    } else {
        plan.pieces.push_back(imagePiece(c, area, radius));
    }
}

}  // namespace lectern::paint
