#include "slides/slide_painter.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <list>
#include <memory>

#include "model/theme_style.h"
#include "slides/body_font.h"
#include "slides/body_layout.h"
#include "slides/decision_cards.h"
#include "slides/quick_look_theme.h"

namespace lectern {

namespace {

// The theme's font sizes describe a 960 × 540 slide seen at about half size
// in an editor; on the design canvas every size is scaled by this one factor
// so slides read like presentation slides.
constexpr double typeScale = 1.4;
// Body and code text get a little more on top, so a slide's text reads from
// the back of a room.
constexpr double bodyScale = 1.2;

constexpr double marginX = 64;
constexpr double marginTop = 56;
constexpr double marginBottom = 48;
constexpr double mediaInset = 24;
constexpr double besideFraction = 0.62;  // media share beside the text
constexpr double aboveFraction = 0.6;    // media share above the text
constexpr double stepRise = 6;
constexpr double cardRise = 8;

const char* familyFor(FontDesign design) {
    switch (design) {
        case FontDesign::serif: return "DejaVu Serif, Liberation Serif, serif";
        case FontDesign::monospaced: return "DejaVu Sans Mono, Liberation Mono, monospace";
        case FontDesign::standard: break;
    }
    return "Cantarell, DejaVu Sans, sans-serif";
}

PangoWeight weightFor(FontWeight weight) {
    switch (weight) {
        case FontWeight::medium: return PANGO_WEIGHT_MEDIUM;
        case FontWeight::semibold: return PANGO_WEIGHT_SEMIBOLD;
        case FontWeight::bold: return PANGO_WEIGHT_BOLD;
        case FontWeight::regular: break;
    }
    return PANGO_WEIGHT_NORMAL;
}

struct FontDescription {
    PangoFontDescription* description;
    explicit FontDescription(const FontSpec& spec, double factor = 1) : description(pango_font_description_new()) {
        pango_font_description_set_family(description, familyFor(spec.design));
        pango_font_description_set_weight(description, weightFor(spec.weight));
        pango_font_description_set_absolute_size(description, spec.size * typeScale * factor * PANGO_SCALE);
    }
    ~FontDescription() { pango_font_description_free(description); }
    FontDescription(const FontDescription&) = delete;
    FontDescription& operator=(const FontDescription&) = delete;
};

struct Layout {
    PangoLayout* layout;
    explicit Layout(cairo_t* cr) : layout(pango_cairo_create_layout(cr)) {}
    ~Layout() { g_object_unref(layout); }
    Layout(const Layout&) = delete;
    Layout& operator=(const Layout&) = delete;
    double height() const {
        int w = 0, h = 0;
        pango_layout_get_size(layout, &w, &h);
        return static_cast<double>(h) / PANGO_SCALE;
    }
};

void setSource(cairo_t* cr, const Color& c, double alpha = 1) {
    cairo_set_source_rgba(cr, c.red, c.green, c.blue, c.alpha * alpha);
}

void roundedRect(cairo_t* cr, const Rect& r, double radius) {
    radius = std::min({radius, r.width / 2, r.height / 2});
    cairo_new_sub_path(cr);
    cairo_arc(cr, r.x + r.width - radius, r.y + radius, radius, -M_PI / 2, 0);
    cairo_arc(cr, r.x + r.width - radius, r.y + r.height - radius, radius, 0, M_PI / 2);
    cairo_arc(cr, r.x + radius, r.y + r.height - radius, radius, M_PI / 2, M_PI);
    cairo_arc(cr, r.x + radius, r.y + radius, radius, M_PI, 3 * M_PI / 2);
    cairo_close_path(cr);
}

// Everything a layout draws with, resolved once per slide.
struct Painting {
    cairo_t* cr;
    const Slide& slide;
    const SlidePaintOptions& options;
    ThemeStyle style;
    QuickLookTheme colours;
    std::optional<Color> accent;  // none in a theme without accents

    Color accentOr(const Color& fallback) const { return accent.value_or(fallback); }

    // How far step k has appeared.
    double appearance(std::size_t k) const {
        if (k < options.stepAppearance.size()) return std::clamp(options.stepAppearance[k], 0.0, 1.0);
        if (options.reveal.mode == RevealMode::all) return 1;
        return static_cast<std::int64_t>(k) <= options.reveal.index ? 1 : 0;
    }
};

// Draws plain text in a box; returns its height.
double drawText(Painting& p, const std::string& text, const FontSpec& font, double factor, const Color& colour,
                double x, double y, double width, PangoAlignment alignment = PANGO_ALIGN_LEFT, double tracking = 0,
                double alpha = 1, bool draw = true) {
    if (text.empty()) return 0;
    Layout layout(p.cr);
    FontDescription description(font, factor);
    pango_layout_set_font_description(layout.layout, description.description);
    pango_layout_set_width(layout.layout, static_cast<int>(width * PANGO_SCALE));
    pango_layout_set_wrap(layout.layout, PANGO_WRAP_WORD_CHAR);
    pango_layout_set_alignment(layout.layout, alignment);
    pango_layout_set_text(layout.layout, text.c_str(), -1);
    if (tracking != 0) {
        PangoAttrList* attributes = pango_attr_list_new();
        pango_attr_list_insert(attributes, pango_attr_letter_spacing_new(static_cast<int>(tracking * typeScale * PANGO_SCALE)));
        pango_layout_set_attributes(layout.layout, attributes);
        pango_attr_list_unref(attributes);
    }
    if (draw) {
        setSource(p.cr, colour, alpha);
        cairo_move_to(p.cr, x, y);
        pango_cairo_show_layout(p.cr, layout.layout);
    }
    return layout.height();
}

// ------------------------------------------------------------------ body text

// One line of the body with its character attributes.
void fillLayout(PangoLayout* layout, const AttributedText& text, bool command) {
    pango_layout_set_text(layout, text.string().c_str(), static_cast<int>(text.size()));
    PangoAttrList* list = pango_attr_list_new();
    text.forEachRun([&](std::size_t begin, std::size_t end, const SlideBodyAttributes& a) {
        auto add = [&](PangoAttribute* attribute) {
            attribute->start_index = static_cast<guint>(begin);
            attribute->end_index = static_cast<guint>(end);
            pango_attr_list_insert(list, attribute);
        };
        SlideBodyAttributes effective = a;
        if (command) effective.block = SlideBodyBlockKind::command;
        switch (bodyFontFor(effective)) {
            case BodyFont::bold: add(pango_attr_weight_new(PANGO_WEIGHT_BOLD)); break;
            case BodyFont::italic: add(pango_attr_style_new(PANGO_STYLE_ITALIC)); break;
            case BodyFont::boldItalic:
                add(pango_attr_weight_new(PANGO_WEIGHT_BOLD));
                add(pango_attr_style_new(PANGO_STYLE_ITALIC));
                break;
            case BodyFont::monospaced:
            case BodyFont::regular: break;
        }
        if (a.underline) add(pango_attr_underline_new(PANGO_UNDERLINE_SINGLE));
        if (a.strikethrough || (a.inlineIntent & inline_intent::strikethrough)) add(pango_attr_strikethrough_new(TRUE));
        if (a.foregroundColor) {
            if (auto c = Color::fromHex(*a.foregroundColor)) {
                add(pango_attr_foreground_new(static_cast<guint16>(c->red * 65535), static_cast<guint16>(c->green * 65535),
                                              static_cast<guint16>(c->blue * 65535)));
            }
        }
    });
    pango_layout_set_attributes(layout, list);
    pango_attr_list_unref(list);
}

PangoAlignment pangoAlignment(SlideBodyAlignment alignment) {
    switch (alignment) {
        case SlideBodyAlignment::center: return PANGO_ALIGN_CENTER;
        case SlideBodyAlignment::trailing: return PANGO_ALIGN_RIGHT;
        case SlideBodyAlignment::leading: break;
    }
    return PANGO_ALIGN_LEFT;
}

// Draws (or only measures) render items from y; returns the height used.
// Blank lines between items become spacing, as the author left them.
double drawItems(Painting& p, const std::vector<BodyRenderItem>& items, double x, double y, double width,
                 double alpha, bool draw) {
    FontSpec bodyFont = p.style.bodyFont;
    FontSpec codeFont = p.style.codeFont;
    bodyFont.size *= bodyScale;
    codeFont.size *= bodyScale;
    const double blankLine = bodyFont.size * typeScale * 0.9;
    const double paragraphGap = bodyFont.size * typeScale * 0.45;
    double top = y;
    std::optional<std::size_t> previousId;
    auto spacingBefore = [&](std::size_t id) {
        double space = 0;
        if (previousId) space = paragraphGap + blankLine * static_cast<double>(id - *previousId - 1);
        return space;
    };
    PangoTabArray* tabs = pango_tab_array_new_with_positions(1, FALSE, PANGO_TAB_LEFT,
                                                             static_cast<int>(bodyFont.size * typeScale * 2 * PANGO_SCALE));
    for (const auto& item : items) {
        y += spacingBefore(item.lines.front().id);
        bool command = item.kind == BodyRenderItem::Kind::commandBlock;
        FontDescription description(command ? codeFont : bodyFont);
        const double padding = command ? 12 : 0;
        // Measure the lines first: a command block's box wraps all of them.
        std::vector<std::unique_ptr<Layout>> layouts;
        double height = 0;
        for (const auto& line : item.lines) {
            auto layout = std::make_unique<Layout>(p.cr);
            pango_layout_set_font_description(layout->layout, description.description);
            pango_layout_set_width(layout->layout, static_cast<int>((width - 2 * padding) * PANGO_SCALE));
            pango_layout_set_wrap(layout->layout, PANGO_WRAP_WORD_CHAR);
            pango_layout_set_alignment(layout->layout, pangoAlignment(line.alignment));
            pango_layout_set_tabs(layout->layout, tabs);
            fillLayout(layout->layout, line.text, command);
            height += layout->height();
            layouts.push_back(std::move(layout));
        }
        if (draw && command) {
            setSource(p.cr, p.style.codeBlockBackground, alpha);
            roundedRect(p.cr, {x, y, width, height + 2 * padding}, 10);
            cairo_fill(p.cr);
        }
        double lineY = y + padding;
        for (std::size_t i = 0; i < layouts.size(); ++i) {
            if (draw) {
                setSource(p.cr, command ? p.style.codeBlockText : p.style.primaryText, alpha);
                cairo_move_to(p.cr, x + padding, lineY);
                pango_cairo_show_layout(p.cr, layouts[i]->layout);
            }
            lineY += layouts[i]->height();
        }
        y += height + 2 * padding;
        previousId = item.lines.back().id;
    }
    pango_tab_array_free(tabs);
    return y - top;
}

// The body in its reveal steps: a step not yet shown keeps its place,
// transparent and lower, so the slide does not move while text appears.
void drawBody(Painting& p, double x, double y, double width) {
    const Slide& slide = p.slide;
    if (slide.reveal != RevealMode::reveal || p.options.reveal.mode != RevealMode::reveal) {
        drawItems(p, renderItems(slide.body), x, y, width, 1, true);
        return;
    }
    auto steps = RevealPlan::stepTexts(slide);
    const double blankLine = p.style.bodyFont.size * bodyScale * typeScale * 0.9;
    const double stepGap = p.style.bodyFont.size * bodyScale * typeScale * 0.45;
    for (std::size_t k = 0; k < steps.size(); ++k) {
        // Leading newlines of a step text are the author's blank lines.
        const std::string& text = steps[k].string();
        std::size_t newlines = text.find_first_not_of('\n');
        newlines = newlines == std::string::npos ? text.size() : newlines;
        if (k > 0) y += stepGap + blankLine * static_cast<double>(newlines);
        auto items = renderItems(steps[k].slice(newlines, steps[k].size()));
        double shown = p.appearance(k);
        double height = drawItems(p, items, x, y + stepRise * (1 - shown), width, shown, shown > 0);
        y += height;
    }
}

// ------------------------------------------------------------------- headings

std::string eyebrowText(const Painting& p) {
    std::string text = p.slide.eyebrow.empty() ? p.options.deckTitle : p.slide.eyebrow;
    if (p.style.eyebrowUppercase && !text.empty()) {
        gchar* upper = g_utf8_strup(text.c_str(), -1);
        text = upper;
        g_free(upper);
    }
    return text;
}

// Eyebrow, title and subtitle from y; returns the height used.
double drawHeading(Painting& p, double x, double y, double width, PangoAlignment alignment, double titleFactor,
                   bool draw = true) {
    double top = y;
    double eyebrow = drawText(p, eyebrowText(p), p.style.eyebrowFont, 1, p.accentOr(p.style.mutedText), x, y, width,
                              alignment, p.style.eyebrowTracking, 1, draw);
    if (eyebrow > 0) y += eyebrow + 8;
    FontSpec title = p.style.titleFont;
    title.design = p.style.titleDesign;
    y += drawText(p, p.slide.title, title, titleFactor, p.style.primaryText, x, y, width, alignment, 0, 1, draw);
    if (!p.slide.subtitle.empty()) {
        y += 8;
        y += drawText(p, p.slide.subtitle, p.style.bodyFont, 1.15, p.style.mutedText, x, y, width, alignment, 0, 1, draw);
    }
    return y - top;
}

// ----------------------------------------------------------------- media

struct PixbufSurface {
    cairo_surface_t* surface = nullptr;
    ~PixbufSurface() {
        if (surface) cairo_surface_destroy(surface);
    }
};

// Decoded pictures, by their bytes: decoding a large PNG every frame would
// cost more than drawing the slide. A few recent ones are kept.
std::shared_ptr<PixbufSurface> decodedImage(const SharedBytes& bytes) {
    struct Entry {
        SharedBytes bytes;
        std::shared_ptr<PixbufSurface> image;
    };
    static std::list<Entry> recent;
    for (auto it = recent.begin(); it != recent.end(); ++it) {
        if (it->bytes.sharesBufferWith(bytes) || (it->bytes.size() == bytes.size() && it->bytes == bytes)) {
            recent.splice(recent.begin(), recent, it);
            return it->image;
        }
    }
    auto image = std::make_shared<PixbufSurface>();
    GdkPixbufLoader* loader = gdk_pixbuf_loader_new();
    bool ok = gdk_pixbuf_loader_write(loader, bytes.data(), bytes.size(), nullptr);
    ok = gdk_pixbuf_loader_close(loader, nullptr) && ok;
    GdkPixbuf* pixbuf = ok ? gdk_pixbuf_loader_get_pixbuf(loader) : nullptr;
    if (pixbuf) {
        int w = gdk_pixbuf_get_width(pixbuf), h = gdk_pixbuf_get_height(pixbuf);
        int channels = gdk_pixbuf_get_n_channels(pixbuf), stride = gdk_pixbuf_get_rowstride(pixbuf);
        bool alpha = gdk_pixbuf_get_has_alpha(pixbuf);
        const guchar* pixels = gdk_pixbuf_read_pixels(pixbuf);
        cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, w, h);
        unsigned char* out = cairo_image_surface_get_data(surface);
        int outStride = cairo_image_surface_get_stride(surface);
        for (int row = 0; row < h; ++row) {
            auto* target = reinterpret_cast<std::uint32_t*>(out + row * outStride);
            const guchar* source = pixels + row * stride;
            for (int col = 0; col < w; ++col, source += channels) {
                std::uint32_t a = alpha ? source[3] : 255;
                auto premultiply = [a](std::uint32_t c) { return (c * a + 127) / 255; };
                target[col] = (a << 24) | (premultiply(source[0]) << 16) | (premultiply(source[1]) << 8) | premultiply(source[2]);
            }
        }
        cairo_surface_mark_dirty(surface);
        image->surface = surface;
    }
    g_object_unref(loader);
    recent.push_front({bytes, image});
    if (recent.size() > 12) recent.pop_back();
    return image;
}

// The "picture cannot be shown" symbol: two offset frames and a slash.
void drawBrokenImage(Painting& p, const Rect& area) {
    double size = std::min(area.width, area.height) * 0.22;
    double cx = area.x + area.width / 2, cy = area.y + area.height / 2;
    cairo_save(p.cr);
    setSource(p.cr, p.style.mutedText);
    cairo_set_line_width(p.cr, std::max(2.0, size * 0.06));
    roundedRect(p.cr, {cx - size * 0.6, cy - size * 0.45, size, size * 0.75}, size * 0.08);
    cairo_stroke(p.cr);
    roundedRect(p.cr, {cx - size * 0.4, cy - size * 0.3, size, size * 0.75}, size * 0.08);
    cairo_stroke(p.cr);
    cairo_move_to(p.cr, cx - size * 0.75, cy - size * 0.65);
    cairo_line_to(p.cr, cx + size * 0.75, cy + size * 0.65);
    cairo_stroke(p.cr);
    cairo_restore(p.cr);
}

void drawImage(Painting& p, const Rect& area, double radius) {
    cairo_save(p.cr);
    roundedRect(p.cr, area, radius);
    cairo_clip(p.cr);
    setSource(p.cr, p.colours.mediaBackground);
    cairo_paint(p.cr);
    std::shared_ptr<PixbufSurface> image = p.slide.imageData ? decodedImage(*p.slide.imageData) : nullptr;
    if (image && image->surface) {
        double w = cairo_image_surface_get_width(image->surface);
        double h = cairo_image_surface_get_height(image->surface);
        double scale = p.slide.imageFill ? std::max(area.width / w, area.height / h) : std::min(area.width / w, area.height / h);
        cairo_translate(p.cr, area.x + (area.width - w * scale) / 2, area.y + (area.height - h * scale) / 2);
        cairo_scale(p.cr, scale, scale);
        cairo_set_source_surface(p.cr, image->surface, 0, 0);
        cairo_pattern_set_filter(cairo_get_source(p.cr), CAIRO_FILTER_GOOD);
        cairo_paint_with_alpha(p.cr, p.colours.imageOpacity);
        cairo_identity_matrix(p.cr);
        if (p.colours.monochromeOverlay.alpha > 0) {
            cairo_restore(p.cr);
            cairo_save(p.cr);
            roundedRect(p.cr, area, radius);
            setSource(p.cr, p.colours.monochromeOverlay);
            cairo_fill(p.cr);
        }
    } else if (p.slide.imageData) {
        drawBrokenImage(p, area);
    } else {
        drawText(p, "No image", p.style.bodyFont, 1, p.style.mutedText, area.x, area.y + area.height / 2 - 14, area.width,
                 PANGO_ALIGN_CENTER);
    }
    cairo_restore(p.cr);
}

// Where a live page will be: a quiet browser-like frame with the address.
void drawWebPlaceholder(Painting& p, const Rect& area, double radius) {
    cairo_save(p.cr);
    roundedRect(p.cr, area, radius);
    cairo_clip_preserve(p.cr);
    setSource(p.cr, p.colours.mediaBackground);
    cairo_fill(p.cr);
    double bar = std::min(34.0, area.height * 0.16);
    setSource(p.cr, p.colours.placeholderStroke);
    cairo_rectangle(p.cr, area.x, area.y + bar, area.width, 1);
    cairo_fill(p.cr);
    for (int i = 0; i < 3; ++i) {
        cairo_arc(p.cr, area.x + 16 + i * 14, area.y + bar / 2, 4, 0, 2 * M_PI);
        cairo_fill(p.cr);
    }
    FontSpec small = p.style.bodyFont;
    std::string address = p.slide.url.value_or("No URL set");
    drawText(p, address, small, 0.75, p.style.mutedText, area.x + 64, area.y + bar / 2 - small.size * typeScale * 0.5,
             area.width - 80);
    drawText(p, p.slide.url ? "Live page" : "Set a URL to show a live page", small, 1, p.style.mutedText, area.x,
             area.y + bar + (area.height - bar) / 2 - small.size * typeScale * 0.7, area.width, PANGO_ALIGN_CENTER);
    cairo_restore(p.cr);
    cairo_save(p.cr);
    roundedRect(p.cr, area, radius);
    setSource(p.cr, p.colours.placeholderStroke);
    cairo_set_line_width(p.cr, 1.5);
    cairo_stroke(p.cr);
    cairo_restore(p.cr);
}

void drawMedia(Painting& p, const Rect& area, bool fullBleed) {
    double radius = fullBleed ? 0 : 14;
    if (p.slide.layout == SlideLayout::web) {
        if (p.options.drawWebPlaceholder) drawWebPlaceholder(p, area, radius);
    } else {
        drawImage(p, area, radius);
    }
}

// ------------------------------------------------------------------ geometry

struct MediaLayout {
    Rect media;
    std::optional<Rect> text;  // the text column beside, below or around it
};

MediaLayout mediaLayout(const Slide& slide) {
    const double w = SlidePainter::designWidth, h = SlidePainter::designHeight;
    switch (slide.position) {
        case SlidePosition::full: return {{0, 0, w, h}, std::nullopt};
        case SlidePosition::left: {
            double share = w * besideFraction;
            return {{mediaInset, mediaInset, share - 1.5 * mediaInset, h - 2 * mediaInset},
                    Rect{share + 16, marginTop, w - share - 16 - 40, h - marginTop - marginBottom}};
        }
        case SlidePosition::right: {
            double share = w * besideFraction;
            return {{w - share + mediaInset / 2, mediaInset, share - 1.5 * mediaInset, h - 2 * mediaInset},
                    Rect{40, marginTop, w - share - 16 - 40, h - marginTop - marginBottom}};
        }
        case SlidePosition::topBottom: {
            double share = h * aboveFraction;
            return {{mediaInset, mediaInset, w - 2 * mediaInset, share - 1.5 * mediaInset},
                    Rect{marginX, share + 12, w - 2 * marginX, h - share - 12 - 24}};
        }
        case SlidePosition::inText:
            return {{marginX, 176, w - 2 * marginX, 210}, Rect{marginX, marginTop, w - 2 * marginX, h - marginTop - marginBottom}};
    }
    return {{0, 0, w, h}, std::nullopt};
}

std::vector<std::pair<Uuid, Rect>> cardRects(const Slide& slide) {
    std::vector<std::pair<Uuid, Rect>> cards;
    std::size_t n = std::min(slide.links.size(), DecisionCards::maxOptions);
    if (n == 0) return cards;
    std::size_t columns = n <= 3 ? n : (n == 4 ? 2 : 3);
    std::size_t rows = (n + columns - 1) / columns;
    const double top = 236, bottom = SlidePainter::designHeight - marginBottom, gap = 16;
    const double width = (SlidePainter::designWidth - 2 * marginX - gap * static_cast<double>(columns - 1)) /
                         static_cast<double>(columns);
    const double height = std::min(120.0, (bottom - top - gap * static_cast<double>(rows - 1)) / static_cast<double>(rows));
    for (std::size_t i = 0; i < n; ++i) {
        double x = marginX + static_cast<double>(i % columns) * (width + gap);
        double y = top + static_cast<double>(i / columns) * (height + gap);
        cards.push_back({slide.links[i].id, {x, y, width, height}});
    }
    return cards;
}

// ------------------------------------------------------------------- layouts

void drawTitleLayout(Painting& p) {
    const double width = SlidePainter::designWidth - 2 * marginX;
    double y = marginTop + drawHeading(p, marginX, marginTop, width, PANGO_ALIGN_LEFT, 1);
    drawBody(p, marginX, y + 28, width);
}

void drawCalloutLayout(Painting& p) {
    const double width = SlidePainter::designWidth - 2 * 96;
    const double titleFactor = 1.45;
    // Centre heading and body together on the slide.
    double heading = drawHeading(p, 96, 0, width, PANGO_ALIGN_CENTER, titleFactor, false);
    double body = drawItems(p, renderItems(p.slide.body), 0, 0, width, 1, false);
    double total = heading + (body > 0 ? 32 + body : 0);
    double y = std::max(marginTop, (SlidePainter::designHeight - total) / 2);
    y += drawHeading(p, 96, y, width, PANGO_ALIGN_CENTER, titleFactor);
    if (body > 0) drawBody(p, 96, y + 32, width);
}

void drawDecisionsLayout(Painting& p) {
    const double width = SlidePainter::designWidth - 2 * marginX;
    drawHeading(p, marginX, marginTop, width, PANGO_ALIGN_LEFT, 1);
    auto cards = cardRects(p.slide);
    Color accent = p.accentOr(p.style.primaryText);
    for (std::size_t i = 0; i < cards.size(); ++i) {
        const SlideLink& link = p.slide.links[i];
        double shown = p.options.reveal.mode == RevealMode::reveal && p.slide.reveal == RevealMode::reveal
                           ? p.appearance(i)
                           : 1;
        if (shown <= 0) continue;
        Rect r = cards[i].second;
        r.y += cardRise * (1 - shown);
        Color fill = accent;
        if (link.fillHex && p.accent) {
            if (auto c = Color::fromHex(*link.fillHex)) fill = *c;
        }
        roundedRect(p.cr, r, 16);
        if (link.filled) {
            setSource(p.cr, fill, shown);
            cairo_fill(p.cr);
        } else {
            setSource(p.cr, p.colours.card, shown);
            cairo_fill_preserve(p.cr);
            setSource(p.cr, accent, shown);
            cairo_set_line_width(p.cr, 2);
            cairo_stroke(p.cr);
        }
        // Label (and subtitle) centred vertically in the card.
        bool darkFill = link.filled && (0.299 * fill.red + 0.587 * fill.green + 0.114 * fill.blue) < 0.6;
        Color label = link.filled ? (darkFill ? Color::grey(1) : Color::grey(0.08)) : p.style.primaryText;
        Color sub = link.filled ? Color{label.red, label.green, label.blue, 0.8} : p.style.mutedText;
        FontSpec labelFont = p.style.bodyFont;
        labelFont.weight = FontWeight::semibold;
        const double pad = 18;
        std::string title = link.label.empty() ? "Untitled option" : link.label;
        bool subtitle = p.slide.showLinkSubtitles && !link.subtitle.empty();
        double lh = drawText(p, title, labelFont, 1.15, label, 0, 0, r.width - 2 * pad, PANGO_ALIGN_LEFT, 0, 1, false);
        double sh = subtitle ? drawText(p, link.subtitle, p.style.bodyFont, 0.9, sub, 0, 0, r.width - 2 * pad,
                                        PANGO_ALIGN_LEFT, 0, 1, false)
                             : 0;
        double total = lh + (subtitle ? 4 + sh : 0);
        double y = r.y + std::max(pad * 0.6, (r.height - total) / 2);
        cairo_save(p.cr);
        roundedRect(p.cr, r, 16);
        cairo_clip(p.cr);
        drawText(p, title, labelFont, 1.15, label, r.x + pad, y, r.width - 2 * pad, PANGO_ALIGN_LEFT, 0, shown);
        if (subtitle) {
            drawText(p, link.subtitle, p.style.bodyFont, 0.9, sub, r.x + pad, y + lh + 4, r.width - 2 * pad,
                     PANGO_ALIGN_LEFT, 0, shown);
        }
        cairo_restore(p.cr);
    }
}

void drawMediaLayout(Painting& p) {
    MediaLayout layout = mediaLayout(p.slide);
    if (p.slide.position == SlidePosition::inText) {
        const Rect& column = *layout.text;
        drawHeading(p, column.x, column.y, column.width, PANGO_ALIGN_LEFT, 0.85);
        drawMedia(p, layout.media, false);
        drawBody(p, column.x, layout.media.y + layout.media.height + 20, column.width);
        return;
    }
    drawMedia(p, layout.media, !layout.text);
    if (!layout.text) return;  // the media fills the slide
    const Rect& column = *layout.text;
    bool beside = p.slide.position == SlidePosition::left || p.slide.position == SlidePosition::right;
    double heading = drawHeading(p, column.x, column.y, column.width, PANGO_ALIGN_LEFT, beside ? 0.8 : 0.75);
    drawBody(p, column.x, column.y + heading + 16, column.width);
}

}  // namespace

SlidePainter::Fit SlidePainter::fit(double targetWidth, double targetHeight) {
    double scale = std::max(0.0, std::min(targetWidth / designWidth, targetHeight / designHeight));
    return {scale, (targetWidth - designWidth * scale) / 2, (targetHeight - designHeight * scale) / 2};
}

SlideGeometry SlidePainter::geometry(const Slide& slide, const SlidePaintOptions&) {
    SlideGeometry geometry;
    if (slide.layout == SlideLayout::web || slide.layout == SlideLayout::image) {
        geometry.mediaArea = mediaLayout(slide).media;
        geometry.mediaIsWeb = slide.layout == SlideLayout::web;
    }
    if (slide.layout == SlideLayout::decisions) geometry.cards = cardRects(slide);
    return geometry;
}

void SlidePainter::paint(cairo_t* cr, const Slide& slide, const SlidePaintOptions& options, double targetWidth,
                         double targetHeight) {
    Painting p{cr, slide, options, ThemeStyle::of(options.theme), QuickLookTheme::of(options.theme), std::nullopt};
    p.accent = p.style.resolvedAccent(options.deckAccentHex, slide.accentHex);

    cairo_save(cr);
    setSource(cr, p.style.stageBackground);
    cairo_paint(cr);
    Fit f = fit(targetWidth, targetHeight);
    cairo_translate(cr, f.offsetX, f.offsetY);
    cairo_scale(cr, f.scale, f.scale);
    cairo_rectangle(cr, 0, 0, designWidth, designHeight);
    cairo_clip(cr);
    switch (slide.layout) {
        case SlideLayout::regular: drawTitleLayout(p); break;
        case SlideLayout::callout: drawCalloutLayout(p); break;
        case SlideLayout::decisions: drawDecisionsLayout(p); break;
        case SlideLayout::web:
        case SlideLayout::image: drawMediaLayout(p); break;
    }
    cairo_restore(cr);
}

}  // namespace lectern
