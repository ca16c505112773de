#include "slides/slide_painter.h"

#include <glib/gi18n.h>

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>

#include "model/body_lines.h"
#include "model/theme_style.h"
#include "slides/body_font.h"
#include "slides/body_layout.h"
#include "slides/decision_cards.h"
#include "slides/quick_look_theme.h"
#include "slides/slide_pictures.h"
#include "slides/slide_plan.h"
#include "slides/slide_typesetting.h"

namespace lectern {

namespace {

using namespace paint;

// Layout of the design canvas, in points.
constexpr double W = SlidePainter::designWidth;
constexpr double H = SlidePainter::designHeight;
constexpr double marginX = 64;
constexpr double marginTop = 56;
constexpr double marginBottom = 48;
constexpr double mediaInset = 24;        // media beside or above text keeps clear of the edge
constexpr double mediaRadius = 14;
constexpr double besideFraction = 0.62;  // media share of the width beside the text
constexpr double aboveFraction = 0.6;    // media share of the height above the text
constexpr double cardRise = 8;           // ... and a hidden card this much

// Title sizes per layout, relative to the theme's title font.
constexpr double calloutTitle = 1.25;
constexpr double besideTitle = 0.8;
constexpr double belowTitle = 0.75;
constexpr double inTextTitle = 0.85;

// ------------------------------------------------------------------ heading

std::string eyebrowFor(const Slide& slide, const SlidePaintOptions& options) {
    std::string text = slide.eyebrow.empty() ? options.deckTitle : slide.eyebrow;
    if (ThemeStyle::of(options.theme).eyebrowUppercase && !text.empty()) {
        gchar* upper = g_utf8_strup(text.c_str(), -1);
        text = upper;
        g_free(upper);
    }
    return text;
}

// The heading's three lines, and where each was set relative to the top
// of its block.
struct Heading {
    Block block;
    std::optional<TextBox> eyebrow;
    std::optional<TextBox> title;
    std::optional<TextBox> subtitle;
};

std::string titlePlaceholder(SlideLayout layout) {
    switch (layout) {
        case SlideLayout::decisions: return _("Decision point");
        case SlideLayout::callout: return _("Big idea");
        default: break;
    }
    return _("Slide title");
}

// Eyebrow, title and subtitle in one column. Away from the editor an empty
// line takes no space. In the editor the eyebrow and title always keep
// their lines, and so does the subtitle where it has a place of its own
// (callouts, decisions, or a heading being edited); empty lines show their
// placeholders in a faint colour so there is something to click.
Heading headingBlock(const Context& c, double x, double width, PangoAlignment alignment, double titleFactor) {
    Heading heading;
    Block& block = heading.block;
    const auto& options = c.options;
    const TextAlign align = alignment == PANGO_ALIGN_CENTER ? TextAlign::centre : TextAlign::left;
    const Color faint = withAlpha(c.style.mutedText, 0.5);
    double y = 0;
    // One line: its text (or placeholder) drawn unless a field shows it.
    auto line = [&](const std::string& text, const std::string& placeholder, const Font& font, const LayoutOptions& o,
                    const TextLook& look, bool hidden) {
        LayoutPtr layout = plainText(text.empty() ? placeholder : text, font, o);
        if (!hidden) block.pieces.push_back(textPiece(layout, x, y, text.empty() ? faint : look.colour));
        TextBox box{{x, y, width, heightOf(layout.get())}, look, placeholder};
        y += box.rect.height;
        return box;
    };

    const std::string eyebrow = eyebrowFor(c.slide, options);
    if (!eyebrow.empty() || options.editing) {
        TextLook look{c.style.eyebrowFont.design, c.style.eyebrowFont.weight, c.style.eyebrowFont.size * typeScale,
                      c.readableAccent(c.style.mutedText), align, c.style.eyebrowTracking * typeScale,
                      c.style.eyebrowUppercase};
        std::string placeholder = c.slide.layout == SlideLayout::decisions || options.deckTitle.empty()
                                      ? std::string(_("Eyebrow"))
                                      : options.deckTitle;
        std::string shownPlaceholder = c.style.eyebrowUppercase ? std::string(_("EYEBROW")) : std::string(_("Eyebrow"));
        heading.eyebrow = line(eyebrow, shownPlaceholder, {c.style.eyebrowFont},
                               {width, alignment, c.style.eyebrowTracking * typeScale}, look, options.hidden.eyebrow);
        heading.eyebrow->placeholder = placeholder;
        y += 10 * titleFactor;
    }
    if (!c.slide.title.empty() || options.editing) {
        FontSpec title = c.style.titleFont;
        title.design = c.style.titleDesign;
        Font font{title, titleFactor};
        TextLook look{title.design, title.weight, font.size(), c.style.primaryText, align};
        heading.title = line(c.slide.title, titlePlaceholder(c.slide.layout), font, {width, alignment, 0, 0.92}, look,
                             options.hidden.title);
    }
    const bool subtitleHasPlace = c.slide.layout == SlideLayout::callout ||
                                  c.slide.layout == SlideLayout::decisions || options.showEmptySubtitle;
    if (!c.slide.subtitle.empty() || (options.editing && subtitleHasPlace)) {
        y += 8 * titleFactor;
        Font font{c.style.bodyFont, 1.15 * std::min(1.0, titleFactor + 0.1)};
        TextLook look{c.style.bodyFont.design, c.style.bodyFont.weight, font.size(), c.style.mutedText, align};
        std::string placeholder =
            c.slide.layout == SlideLayout::decisions ? _("Optional subtitle") : _("Subtitle (optional)");
        heading.subtitle = line(c.slide.subtitle, placeholder, font, {width, alignment}, look, options.hidden.subtitle);
    }
    block.height = y;
    return heading;
}

// Moves the heading to `top` of the slide, its boxes with it.
void placeHeading(Plan& plan, Heading heading, double top, std::optional<Rect> clip = std::nullopt) {
    for (auto* box : {&heading.eyebrow, &heading.title, &heading.subtitle}) {
        if (*box) (*box)->rect.y += top;
    }
    plan.eyebrow = heading.eyebrow;
    plan.title = heading.title;
    plan.subtitle = heading.subtitle;
    place(plan, std::move(heading.block), top, clip);
}

// The body typeset (by fittedBody, shrunk by `fit`) placed at the top of
// `room`, its column down to the bottom of the space it has. In the editor
// an empty body says where to type; a body that a field shows is left out.
void putBody(Plan& plan, const Context& c, Block body, double fit, const Rect& room, std::optional<Rect> clip,
             bool centreLeading = false) {
    plan.body = BodyBox{room, fit, centreLeading};
    if (c.options.hidden.body) return;
    if (c.slide.body.empty() && c.options.editing) {
        LayoutPtr hint = plainText(_("Add text"), {c.style.bodyFont},
                                   {room.width, centreLeading ? PANGO_ALIGN_CENTER : PANGO_ALIGN_LEFT});
        plan.pieces.push_back(textPiece(hint, room.x, room.y, withAlpha(c.style.mutedText, 0.5)));
        return;
    }
    place(plan, std::move(body), room.y, clip);
}

// ------------------------------------------------------------------ layouts

// Regular slides: eyebrow, title, subtitle and body in one left-aligned column.
void titleLayout(Plan& plan, const Context& c) {
    const double width = W - 2 * marginX;
    Heading heading = headingBlock(c, marginX, width, PANGO_ALIGN_LEFT, 1);
    const double bodyTop = marginTop + heading.block.height + (heading.block.height > 0 ? 28 : 0);
    placeHeading(plan, std::move(heading), marginTop);
    Rect area{0, bodyTop - stepRise, W, H - marginBottom / 2 - bodyTop + stepRise};
    double fit = 1;
    Block body = fittedBody(c, marginX, width, H - marginBottom - bodyTop, false, &fit);
    putBody(plan, c, std::move(body), fit, {marginX, bodyTop, width, H - marginBottom - bodyTop}, area);
}

// Callouts: a large title centred on the slide, the subtitle and any body
// under it, the whole group centred vertically.
void calloutLayout(Plan& plan, const Context& c) {
    const double width = W - 2 * marginX;
    Heading heading = headingBlock(c, marginX, width, PANGO_ALIGN_CENTER, calloutTitle);
    const double headingHeight = heading.block.height;
    const double gap = headingHeight > 0 ? 32 : 0;
    const double available = H - marginTop - marginBottom - headingHeight - gap;
    double fit = 1;
    Block body = fittedBody(c, marginX, width, available, true, &fit);
    const double total = headingHeight + (body.height > 0 ? gap + body.height : 0);
    const double top = std::max(marginTop, (H - total) / 2);
    const double bodyTop = top + headingHeight + gap;
    placeHeading(plan, std::move(heading), top);
    putBody(plan, c, std::move(body), fit, {marginX, bodyTop, width, H - marginBottom - bodyTop},
            Rect{0, bodyTop - stepRise, W, H - bodyTop + stepRise}, true);
}

// Columns and rows of the card grid: three across at most, two by two for four.
std::pair<std::size_t, std::size_t> gridOf(std::size_t count) {
    std::size_t columns = count <= 3 ? count : (count == 4 ? 2 : 3);
    return {columns, (count + columns - 1) / columns};
}

// One card: a rounded tile, solid in its colour or outlined, its label and
// (when the slide shows them) its subtitle; an arrow when it leads somewhere.
void placeCard(Plan& plan, const Context& c, const SlideLink& link, std::size_t index, const Rect& r) {
    // The card's colour: its own fill, else the slide's accent; the primary
    // text colour in a theme without accents.
    Color colour = c.accent.value_or(c.style.primaryText);
    if (c.accent && link.fillHex) {
        if (auto own = Color::fromHex(*link.fillHex)) colour = *own;
    }
    // Text on a filled card: white or near-black, whichever reads better.
    const Color light = Color::grey(1), dark = Color::grey(0.08);
    const Color ink = !link.filled ? c.style.primaryText : contrastRatio(colour, light) >= contrastRatio(colour, dark) * 0.6 ? light : dark;
    const Color quiet = link.filled ? withAlpha(ink, 0.78) : c.style.mutedText;
    const bool filled = link.filled;
    const Color card = c.colours.card;
    const Color outline = accentOn(colour, c.style.stageBackground, c.style.primaryText);
    const double radius = std::min(16.0, r.height * 0.2);

    std::vector<Piece> pieces;
    pieces.push_back({std::nullopt, 0, 0, std::nullopt, [=](cairo_t* cr) {
                          roundedRect(cr, r, radius);
                          if (filled) {
                              setSource(cr, colour);
                              cairo_fill(cr);
                              return;
                          }
                          setSource(cr, card);
                          cairo_fill_preserve(cr);
                          setSource(cr, outline);
                          cairo_set_line_width(cr, 2);
                          cairo_stroke(cr);
                      }});

    const bool arrow = !link.targetId.empty();
    const double pad = std::min(20.0, r.height * 0.18);
    const double arrowSpace = arrow ? 28 : 0;
    const double textWidth = r.width - 2 * pad - arrowSpace;
    // Labels shrink a little on small cards so that they still fit.
    const double scale = std::clamp(r.height / 110, 0.75, 1.0);
    FontSpec labelFont = c.style.bodyFont;
    labelFont.weight = FontWeight::semibold;
    // In the editor empty texts keep their lines and show what they are for.
    const bool editing = c.options.editing;
    const bool hideText = c.options.hidden.cardText == link.id;
    const Font labelSize{labelFont, 1.1 * scale}, subtitleSize{c.style.bodyFont, 0.85 * scale};
    const bool labelShown = !link.label.empty() || editing;
    LayoutPtr label = plainText(link.label.empty() ? _("Option title") : link.label, labelSize,
                                {textWidth, PANGO_ALIGN_LEFT, 0, 0.95});
    pango_layout_set_ellipsize(label.get(), PANGO_ELLIPSIZE_END);
    LayoutPtr subtitle;
    if (c.slide.showLinkSubtitles && (!link.subtitle.empty() || editing)) {
        subtitle = plainText(link.subtitle.empty() ? _("Option subtitle") : link.subtitle, subtitleSize,
                             {textWidth, PANGO_ALIGN_LEFT});
        pango_layout_set_ellipsize(subtitle.get(), PANGO_ELLIPSIZE_END);
    }
    // Keep the text inside the card: at most as many lines as fit.
    const double inner = r.height - 2 * pad;
    double subtitleHeight = 0;
    if (subtitle) {
        pango_layout_set_height(subtitle.get(), -1);
        subtitleHeight = heightOf(subtitle.get()) + 4;
    }
    pango_layout_set_height(label.get(), static_cast<int>(std::max(1.0, inner - subtitleHeight) * PANGO_SCALE));
    const double labelHeight = labelShown ? heightOf(label.get()) : 0;
    const double total = labelHeight + (subtitle ? subtitleHeight : 0);
    double y = r.y + std::max(pad, (r.height - total) / 2);
    const Color placeholder = withAlpha(quiet, 0.6);
    if (labelShown && !hideText) pieces.push_back(textPiece(label, r.x + pad, y, link.label.empty() ? placeholder : ink));
    if (subtitle && !hideText) {
        pieces.push_back(textPiece(subtitle, r.x + pad, y + labelHeight + 4, link.subtitle.empty() ? placeholder : quiet));
    }
    CardBox box{link.id, r, {{r.x + pad, y, textWidth, labelHeight}, {labelFont.design, labelFont.weight, labelSize.size(), ink},
                _("Option title")}, std::nullopt};
    if (subtitle) {
        box.subtitle = TextBox{{r.x + pad, y + labelHeight + 4, textWidth, subtitleHeight - 4},
                               {c.style.bodyFont.design, c.style.bodyFont.weight, subtitleSize.size(), quiet},
                               _("Option subtitle")};
    }
    if (arrow) {
        const double ax = r.x + r.width - pad - 10, ay = r.y + r.height / 2, s = 6 * scale;
        pieces.push_back({std::nullopt, 0, 0, std::nullopt, [=](cairo_t* cr) {
                              cairo_save(cr);
                              setSource(cr, withAlpha(ink, filled ? 0.85 : 0.5));
                              cairo_set_line_width(cr, 2);
                              cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
                              cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
                              cairo_move_to(cr, ax - 2.2 * s, ay);
                              cairo_line_to(cr, ax + s, ay);
                              cairo_move_to(cr, ax - 0.2 * s, ay - 1.2 * s);
                              cairo_line_to(cr, ax + s, ay);
                              cairo_line_to(cr, ax - 0.2 * s, ay + 1.2 * s);
                              cairo_stroke(cr);
                              cairo_restore(cr);
                          }});
    }
    // A card being dragged follows the pointer, over the others.
    const auto& drag = c.options.cardDrag;
    const bool dragged = drag && drag->id == link.id;
    const double dx = dragged ? drag->dx : 0, dy = dragged ? drag->dy : 0;
    if (dragged) {
        box.frame.x += dx;
        box.frame.y += dy;
    }
    for (auto& piece : pieces) {
        piece.step = index;
        piece.rise = cardRise;
        piece.dx = dx;
        piece.dy += dy;
        piece.clip = Rect{r.x - 2 + dx, r.y - 2 + dy, r.width + 4, r.height + cardRise + 4};
        (dragged ? plan.onTop : plan.pieces).push_back(std::move(piece));
    }
    if (drag && drag->target == link.id) {
        const Color mark = c.readableAccent(c.style.primaryText);
        plan.onTop.push_back({std::nullopt, 0, 0, std::nullopt, [=](cairo_t* cr) {
                                  roundedRect(cr, {r.x - 5, r.y - 5, r.width + 10, r.height + 10}, radius + 4);
                                  setSource(cr, mark);
                                  cairo_set_line_width(cr, 3);
                                  cairo_stroke(cr);
                              }});
    }
    plan.cardBoxes.push_back(std::move(box));
}

// Decisions: the heading, then the cards in a grid in link order, left to
// right and top to bottom, filling the space under the heading.
void decisionsLayout(Plan& plan, const Context& c) {
    const double width = W - 2 * marginX;
    Heading heading = headingBlock(c, marginX, width, PANGO_ALIGN_LEFT, 1);
    const double top = marginTop + heading.block.height + (heading.block.height > 0 ? 36 : 0);
    placeHeading(plan, std::move(heading), marginTop);
    const std::size_t count = std::min(c.slide.links.size(), DecisionCards::maxOptions);
    if (count == 0) return;
    auto [columns, rows] = gridOf(count);
    const double gap = 16;
    const double cardWidth = std::min(408.0, (width - gap * static_cast<double>(columns - 1)) / static_cast<double>(columns));
    const double tallest = rows == 1 ? 170 : 140;
    const double cardHeight = std::clamp(
        (H - marginBottom - top - gap * static_cast<double>(rows - 1)) / static_cast<double>(rows), 52.0, tallest);
    for (std::size_t i = 0; i < count; ++i) {
        Rect r{marginX + static_cast<double>(i % columns) * (cardWidth + gap),
               top + static_cast<double>(i / columns) * (cardHeight + gap), cardWidth, cardHeight};
        plan.cards.push_back({c.slide.links[i].id, r});
        placeCard(plan, c, c.slide.links[i], i, r);
    }
}

// Web and image slides: the media by the slide's position, the text beside,
// below or around it.
void mediaLayout(Plan& plan, const Context& c) {
    switch (c.slide.position) {
        case SlidePosition::full:
            // The media is the slide; text would only cover it.
            placeMedia(plan, c, {0, 0, W, H}, 0);
            return;
        case SlidePosition::left:
        case SlidePosition::right: {
            const double share = W * besideFraction;
            const bool mediaLeft = c.slide.position == SlidePosition::left;
            const Rect media{mediaLeft ? mediaInset : W - share + mediaInset / 2, mediaInset,
                             share - 1.5 * mediaInset, H - 2 * mediaInset};
            const Rect column{mediaLeft ? share + 16 : 40, marginTop, W - share - 56, H - marginTop - marginBottom};
            placeMedia(plan, c, media, mediaRadius);
            // The text sits in the middle of its column, or from the top when long.
            Heading heading = headingBlock(c, column.x, column.width, PANGO_ALIGN_LEFT, besideTitle);
            const double headingHeight = heading.block.height;
            const double gap = headingHeight > 0 ? 18 : 0;
            double fit = 1;
            Block body = fittedBody(c, column.x, column.width, column.height - headingHeight - gap, false, &fit);
            const double total = headingHeight + (body.height > 0 ? gap + body.height : 0);
            const double top = column.y + std::max(0.0, (column.height - total) / 2);
            const double bodyTop = top + headingHeight + gap;
            const Rect clip{column.x - 4, 0, column.width + 8, H};
            placeHeading(plan, std::move(heading), top, clip);
            putBody(plan, c, std::move(body), fit,
                    {column.x, bodyTop, column.width, column.y + column.height - bodyTop}, clip);
            return;
        }
        case SlidePosition::topBottom: {
            const double share = H * aboveFraction;
            const Rect media{mediaInset, mediaInset, W - 2 * mediaInset, share - 1.5 * mediaInset};
            placeMedia(plan, c, media, mediaRadius);
            const double top = share + 14;
            const double width = W - 2 * marginX;
            Heading heading = headingBlock(c, marginX, width, PANGO_ALIGN_LEFT, belowTitle);
            const double gap = heading.block.height > 0 ? 14 : 0;
            const double bodyTop = top + heading.block.height + gap;
            placeHeading(plan, std::move(heading), top);
            const Rect clip{0, media.y + media.height + 1, W, H - media.y - media.height - 1};
            double fit = 1;
            Block body = fittedBody(c, marginX, width, H - mediaInset - bodyTop, false, &fit);
            putBody(plan, c, std::move(body), fit, {marginX, bodyTop, width, H - bodyTop}, clip);
            return;
        }
        case SlidePosition::inText: {
            // Heading, body, then the media filling the rest of the column: the
            // text stays where it is on a regular slide.
            const double width = W - 2 * marginX;
            const double bottom = H - marginBottom;
            Heading heading = headingBlock(c, marginX, width, PANGO_ALIGN_LEFT, inTextTitle);
            const double bodyTop = marginTop + heading.block.height + (heading.block.height > 0 ? 22 : 0);
            const double minMedia = (bottom - marginTop) * 0.35;
            const double mediaGap = 22;
            double fit = 1;
            Block body = fittedBody(c, marginX, width, bottom - minMedia - mediaGap - bodyTop, false, &fit);
            double bodyHeight = body.height;
            // In the editor an empty body keeps a line to click into.
            if (c.options.editing && bodyHeight <= 0) bodyHeight = c.style.bodyFont.size * typeScale * 1.4;
            double mediaTop = bodyHeight > 0 ? bodyTop + bodyHeight + mediaGap : bodyTop;
            mediaTop = std::min(mediaTop, bottom - minMedia);
            placeHeading(plan, std::move(heading), marginTop);
            putBody(plan, c, std::move(body), fit, {marginX, bodyTop, width, mediaTop - mediaGap - bodyTop},
                    Rect{0, 0, W, mediaTop - 4});
            placeMedia(plan, c, {marginX, mediaTop, width, bottom - mediaTop}, mediaRadius);
            return;
        }
    }
}

Plan planSlide(const Slide& slide, const SlidePaintOptions& options) {
    Context c(slide, options);
    Plan plan;
    switch (slide.layout) {
        case SlideLayout::regular: titleLayout(plan, c); break;
        case SlideLayout::callout: calloutLayout(plan, c); break;
        case SlideLayout::decisions: decisionsLayout(plan, c); break;
        case SlideLayout::web:
        case SlideLayout::image: mediaLayout(plan, c); break;
    }
    return plan;
}

}  // namespace

SlidePainter::Fit SlidePainter::fit(double targetWidth, double targetHeight) {
    double scale = std::max(0.0, std::min(targetWidth / designWidth, targetHeight / designHeight));
    return {scale, (targetWidth - designWidth * scale) / 2, (targetHeight - designHeight * scale) / 2};
}

std::string SlidePainter::displayedEyebrow(const Slide& slide, const SlidePaintOptions& options) {
    return eyebrowFor(slide, options);
}

SlideGeometry SlidePainter::geometry(const Slide& slide, const SlidePaintOptions& options) {
    Plan plan = planSlide(slide, options);
    SlideGeometry geometry;
    geometry.mediaArea = plan.media;
    geometry.mediaIsWeb = plan.media && slide.layout == SlideLayout::web;
    geometry.mediaRadius = plan.mediaRadius;
    geometry.cards = std::move(plan.cards);
    geometry.eyebrow = std::move(plan.eyebrow);
    geometry.title = std::move(plan.title);
    geometry.subtitle = std::move(plan.subtitle);
    geometry.body = plan.body;
    geometry.cardBoxes = std::move(plan.cardBoxes);
    return geometry;
}

void SlidePainter::paint(cairo_t* cr, const Slide& slide, const SlidePaintOptions& options, double targetWidth,
                         double targetHeight) {
    const ThemeStyle style = ThemeStyle::of(options.theme);
    cairo_save(cr);
    setSource(cr, style.stageBackground);
    cairo_paint(cr);
    const Fit f = fit(targetWidth, targetHeight);
    if (f.scale <= 0) {
        cairo_restore(cr);
        return;
    }
    cairo_translate(cr, f.offsetX, f.offsetY);
    cairo_scale(cr, f.scale, f.scale);
    cairo_rectangle(cr, 0, 0, designWidth, designHeight);
    cairo_clip(cr);

    // How far step k has appeared: as the stage animates it, else from the
    // reveal state (mode all shows everything).
    auto appearance = [&](std::size_t k) {
        if (k < options.stepAppearance.size()) return std::clamp(options.stepAppearance[k], 0.0, 1.0);
        if (options.reveal.mode == RevealMode::all) return 1.0;
        return static_cast<std::int64_t>(k) <= options.reveal.index ? 1.0 : 0.0;
    };
    Plan plan = planSlide(slide, options);
    for (auto& piece : plan.onTop) plan.pieces.push_back(std::move(piece));
    for (const auto& piece : plan.pieces) {
        const double shown = piece.step ? appearance(*piece.step) : 1.0;
        if (shown <= 0) continue;
        cairo_save(cr);
        if (piece.clip) {
            cairo_rectangle(cr, piece.clip->x, piece.clip->y, piece.clip->width, piece.clip->height);
            cairo_clip(cr);
        }
        cairo_translate(cr, piece.dx, piece.dy + piece.rise * (1 - shown));
        if (shown < 1) {
            // A group, so that text with colours of its own fades too.
            cairo_push_group(cr);
            piece.draw(cr);
            cairo_pop_group_to_source(cr);
            cairo_paint_with_alpha(cr, shown);
        } else {
            piece.draw(cr);
        }
        cairo_restore(cr);
    }
    cairo_restore(cr);
}

}  // namespace lectern
