#include "slides/slide_painter.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <list>
#include <memory>
#include <mutex>

#include "model/body_lines.h"
#include "model/theme_style.h"
#include "slides/body_font.h"
#include "slides/body_layout.h"
#include "slides/decision_cards.h"
#include "slides/quick_look_theme.h"

namespace lectern {

namespace {

// The theme's font sizes describe a 960 × 540 slide seen at about half size
// in an editor. On the design canvas every size (and the eyebrow's letter
// spacing) is multiplied by this one factor, so that a slide reads like a
// presentation slide from the back of a room: a 34-point title becomes 51
// points on the 960-point-wide slide, a 14-point body 21 points.
constexpr double typeScale = 1.5;

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
constexpr double stepRise = 6;           // a hidden body step sits this much lower
constexpr double cardRise = 8;           // ... and a hidden card this much
constexpr double minBodyFit = 0.6;       // a long body shrinks to no less than this

// Title sizes per layout, relative to the theme's title font.
constexpr double calloutTitle = 1.25;
constexpr double besideTitle = 0.8;
constexpr double belowTitle = 0.75;
constexpr double inTextTitle = 0.85;

// ----------------------------------------------------------------- plumbing

struct GObjectUnref {
    void operator()(gpointer object) const {
        if (object) g_object_unref(object);
    }
};
using LayoutPtr = std::shared_ptr<PangoLayout>;

// One Pango context per thread, with unhinted metrics and unrounded glyph
// positions: text then measures the same at every scale, so a slide wraps
// identically on the stage, in a thumbnail and in the PDF.
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

// Faces installed by scripts/setup, each with a fallback that any desktop has.
const char* familyFor(FontDesign design) {
    switch (design) {
        case FontDesign::serif: return "Liberation Serif, DejaVu Serif, serif";
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

// A theme font at `factor` times its scaled size.
struct Font {
    FontSpec spec;
    double factor = 1;
    double size() const { return spec.size * typeScale * factor; }
};

struct LayoutOptions {
    double width = W;
    PangoAlignment alignment = PANGO_ALIGN_LEFT;
    double tracking = 0;     // letter spacing in design points
    double lineSpacing = 0;  // 0: the font's own
};

LayoutPtr makeLayout(const Font& font, const LayoutOptions& o) {
    LayoutPtr layout(pango_layout_new(typesetting()), GObjectUnref{});
    PangoFontDescription* description = pango_font_description_new();
    pango_font_description_set_family(description, familyFor(font.spec.design));
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

void setSource(cairo_t* cr, const Color& c) { cairo_set_source_rgba(cr, c.red, c.green, c.blue, c.alpha); }

Color withAlpha(const Color& c, double alpha) { return {c.red, c.green, c.blue, c.alpha * alpha}; }

Color mix(const Color& a, const Color& b, double t) {
    return {a.red + (b.red - a.red) * t, a.green + (b.green - a.green) * t, a.blue + (b.blue - a.blue) * t, 1};
}

double relativeLuminance(const Color& c) {
    auto linear = [](double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(c.red) + 0.7152 * linear(c.green) + 0.0722 * linear(c.blue);
}

double contrast(const Color& a, const Color& b) {
    double la = relativeLuminance(a), lb = relativeLuminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

// The accent as text or a thin line on the background: moved toward the
// text colour just enough to be read (a dark blue eyebrow on the dark
// canvas would vanish). Filled cards keep the accent as it is.
Color readableOn(const Color& accent, const Color& background, const Color& text) {
    for (double t = 0; t < 1; t += 0.1) {
        Color candidate = mix(accent, text, t);
        if (contrast(candidate, background) >= 3.5) return candidate;
    }
    return text;
}

void roundedRect(cairo_t* cr, const Rect& r, double radius) {
    radius = std::max(0.0, std::min({radius, r.width / 2, r.height / 2}));
    cairo_new_sub_path(cr);
    cairo_arc(cr, r.x + r.width - radius, r.y + radius, radius, -M_PI / 2, 0);
    cairo_arc(cr, r.x + r.width - radius, r.y + r.height - radius, radius, 0, M_PI / 2);
    cairo_arc(cr, r.x + radius, r.y + r.height - radius, radius, M_PI / 2, M_PI);
    cairo_arc(cr, r.x + radius, r.y + radius, radius, M_PI, 3 * M_PI / 2);
    cairo_close_path(cr);
}

// --------------------------------------------------------------- the plan

// One thing to draw. Pieces of a reveal step (a body step, or a card) fade
// and rise together; everything is laid out before anything is drawn, so the
// stage's hit-testing and the drawing agree.
struct Piece {
    std::optional<std::size_t> step;
    double rise = 0;
    double dy = 0;             // moves the piece down (blocks are laid out from 0)
    std::optional<Rect> clip;  // keeps overflowing text out of the media
    std::function<void(cairo_t*)> draw;
};

// A vertical run of pieces laid out from y = 0, placed later.
struct Block {
    double height = 0;
    std::vector<Piece> pieces;

    void add(Block other, double at) {
        for (auto& piece : other.pieces) {
            piece.dy += at;
            pieces.push_back(std::move(piece));
        }
    }
};

Piece textPiece(LayoutPtr layout, double x, double y, Color colour) {
    return {std::nullopt, 0, 0, std::nullopt, [layout, x, y, colour](cairo_t* cr) {
                setSource(cr, colour);
                cairo_move_to(cr, x, y);
                pango_cairo_show_layout(cr, layout.get());
            }};
}

struct Plan {
    std::vector<Piece> pieces;
    std::optional<Rect> media;
    double mediaRadius = 0;
    std::vector<std::pair<Uuid, Rect>> cards;
};

// What every layout reads: the slide, the options, the theme resolved.
struct Context {
    const Slide& slide;
    const SlidePaintOptions& options;
    ThemeStyle style;
    QuickLookTheme colours;
    std::optional<Color> accent;  // none in a theme without accents

    Context(const Slide& s, const SlidePaintOptions& o)
        : slide(s), options(o), style(ThemeStyle::of(o.theme)), colours(QuickLookTheme::of(o.theme)),
          accent(style.resolvedAccent(o.deckAccentHex, s.accentHex)) {}

    bool revealing() const { return options.reveal.mode == RevealMode::reveal; }
    // The accent for text and outlines, or `fallback` in a theme without one.
    Color readableAccent(const Color& fallback) const {
        return accent ? readableOn(*accent, style.stageBackground, style.primaryText) : fallback;
    }
};

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

// Eyebrow, title and subtitle in one column. An empty subtitle takes no
// space; an empty title neither (there is nothing to edit here).
Block headingBlock(const Context& c, double x, double width, PangoAlignment alignment, double titleFactor) {
    Block block;
    double y = 0;
    std::string eyebrow = eyebrowFor(c.slide, c.options);
    if (!eyebrow.empty()) {
        LayoutPtr layout = plainText(eyebrow, {c.style.eyebrowFont},
                                     {width, alignment, c.style.eyebrowTracking * typeScale});
        block.pieces.push_back(textPiece(layout, x, y, c.readableAccent(c.style.mutedText)));
        y += heightOf(layout.get()) + 10 * titleFactor;
    }
    if (!c.slide.title.empty()) {
        FontSpec title = c.style.titleFont;
        title.design = c.style.titleDesign;
        LayoutPtr layout = plainText(c.slide.title, {title, titleFactor}, {width, alignment, 0, 0.92});
        block.pieces.push_back(textPiece(layout, x, y, c.style.primaryText));
        y += heightOf(layout.get());
    }
    if (!c.slide.subtitle.empty()) {
        y += 8 * titleFactor;
        LayoutPtr layout = plainText(c.slide.subtitle, {c.style.bodyFont, 1.15 * std::min(1.0, titleFactor + 0.1)},
                                     {width, alignment});
        block.pieces.push_back(textPiece(layout, x, y, c.style.mutedText));
        y += heightOf(layout.get());
    }
    block.height = y;
    return block;
}

// --------------------------------------------------------------------- body

void applyRunAttributes(PangoLayout* layout, const AttributedText& text, bool command) {
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
            case BodyFont::monospaced:  // the block's code font already
            case BodyFont::regular: break;
        }
        if (a.underline) add(pango_attr_underline_new(PANGO_UNDERLINE_SINGLE));
        if (a.strikethrough || (a.inlineIntent & inline_intent::strikethrough)) add(pango_attr_strikethrough_new(TRUE));
        if (a.foregroundColor) {
            if (auto colour = Color::fromHex(*a.foregroundColor)) {
                auto channel = [](double v) { return static_cast<guint16>(std::lround(v * 65535)); };
                add(pango_attr_foreground_new(channel(colour->red), channel(colour->green), channel(colour->blue)));
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

struct BodyStyle {
    double fit = 1;               // shrink factor for a body that does not fit
    bool centreLeading = false;   // callouts centre ordinary lines
};

// One line of the body: leading tabs become indentation, and a bullet or
// number hangs, so wrapped lines of a list item line up with its text.
struct LineLayout {
    LayoutPtr layout;
    double indent = 0;
};

LineLayout lineLayout(const AlignedParagraph& line, const Font& font, double width, PangoAlignment alignment,
                      bool command) {
    const std::string& text = line.text.string();
    ListMarker marker = command ? ListMarker{} : listMarkerOf(text);
    std::size_t tabs = command ? text.find_first_not_of('\t') : marker.tabs;
    if (tabs == std::string::npos) tabs = text.size();
    double indent = static_cast<double>(tabs) * font.size() * 1.6;
    AttributedText shown = line.text.slice(tabs, text.size());
    LayoutPtr layout = makeLayout(font, {width - indent, alignment});
    pango_layout_set_text(layout.get(), shown.string().c_str(), static_cast<int>(shown.size()));
    applyRunAttributes(layout.get(), shown, command);
    if (marker.isListItem() && alignment == PANGO_ALIGN_LEFT) {
        // The marker's width, as laid out with the line's own attributes.
        PangoRectangle from{}, to{};
        pango_layout_index_to_pos(layout.get(), 0, &from);
        pango_layout_index_to_pos(layout.get(), static_cast<int>(marker.length), &to);
        if (to.y == from.y && to.x > from.x) pango_layout_set_indent(layout.get(), -(to.x - from.x));
    }
    return {layout, indent};
}

// Render items from y = 0. Blank lines the author left between lines become
// space; a run of command lines is one rounded box in the code colours.
Block itemsBlock(const Context& c, const std::vector<BodyRenderItem>& items, double x, double width,
                 const BodyStyle& bodyStyle) {
    Font body{c.style.bodyFont, bodyStyle.fit};
    Font code{c.style.codeFont, bodyStyle.fit};
    const double paragraphGap = body.size() * 0.45;
    const double blankLine = body.size() * 0.9;
    const double padX = 16 * bodyStyle.fit, padY = 11 * bodyStyle.fit;
    Block block;
    double y = 0;
    std::optional<std::size_t> previous;
    for (const auto& item : items) {
        std::size_t first = item.lines.front().id;
        if (previous) y += paragraphGap + blankLine * static_cast<double>(first - *previous - 1);
        previous = item.lines.back().id;
        if (item.kind == BodyRenderItem::Kind::paragraph) {
            const auto& line = item.lines.front();
            PangoAlignment alignment = pangoAlignment(line.alignment);
            if (bodyStyle.centreLeading && line.alignment == SlideBodyAlignment::leading) alignment = PANGO_ALIGN_CENTER;
            LineLayout laid = lineLayout(line, body, width, alignment, false);
            block.pieces.push_back(textPiece(laid.layout, x + laid.indent, y, c.style.primaryText));
            y += heightOf(laid.layout.get());
            continue;
        }
        std::vector<LineLayout> lines;
        double height = 0, widest = 0;
        for (const auto& line : item.lines) {
            lines.push_back(lineLayout(line, code, width - 2 * padX, pangoAlignment(line.alignment), true));
            PangoLayout* layout = lines.back().layout.get();
            height += heightOf(layout);
            for (GSList* l = pango_layout_get_lines_readonly(layout); l; l = l->next) {
                PangoRectangle logical{};
                pango_layout_line_get_extents(static_cast<PangoLayoutLine*>(l->data), nullptr, &logical);
                widest = std::max(widest, lines.back().indent + static_cast<double>(logical.width) / PANGO_SCALE);
            }
        }
        Rect box{x, y, width, height + 2 * padY};
        double shift = 0;  // where the lines move when the box hugs them
        if (bodyStyle.centreLeading) {
            // On a centred slide the box fits its code and sits in the middle.
            box.width = std::min(width, widest + 2 * padX + 2);
            box.x = x + (width - box.width) / 2;
            for (auto& line : lines) pango_layout_set_width(line.layout.get(), static_cast<int>((box.width - 2 * padX - line.indent + 2) * PANGO_SCALE));
            shift = box.x - x;
        }
        Color fill = c.style.codeBlockBackground;
        block.pieces.push_back({std::nullopt, 0, 0, std::nullopt, [box, fill, r = 10 * bodyStyle.fit](cairo_t* cr) {
                                    roundedRect(cr, box, r);
                                    setSource(cr, fill);
                                    cairo_fill(cr);
                                }});
        double lineY = y + padY;
        for (const auto& line : lines) {
            block.pieces.push_back(textPiece(line.layout, x + shift + padX + line.indent, lineY, c.style.codeBlockText));
            lineY += heightOf(line.layout.get());
        }
        y += box.height;
    }
    block.height = y;
    return block;
}

// The body. Mode all: its render items. Mode reveal: one block per step of
// the normalised plan, each step keeping its place while hidden so the slide
// does not move as text appears.
Block bodyBlock(const Context& c, double x, double width, const BodyStyle& bodyStyle) {
    if (!c.revealing()) return itemsBlock(c, renderItems(c.slide.body), x, width, bodyStyle);
    Font body{c.style.bodyFont, bodyStyle.fit};
    Block block;
    double y = 0;
    auto steps = RevealPlan::stepTexts(c.slide);
    for (std::size_t k = 0; k < steps.size(); ++k) {
        // A step text opens with one newline per blank line before it.
        const std::string& text = steps[k].string();
        std::size_t newlines = std::min(text.find_first_not_of('\n'), text.size());
        if (k > 0) y += body.size() * 0.45 + body.size() * 0.9 * static_cast<double>(newlines);
        Block step = itemsBlock(c, renderItems(steps[k].slice(newlines, text.size())), x, width, bodyStyle);
        for (auto& piece : step.pieces) {
            piece.step = k;
            piece.rise = stepRise;
        }
        const double height = step.height;
        block.add(std::move(step), y);
        y += height;
    }
    block.height = y;
    return block;
}

// The body at the largest size (up to the theme's) that fits the height.
Block fittedBody(const Context& c, double x, double width, double available, bool centreLeading = false) {
    BodyStyle bodyStyle{1, centreLeading};
    Block block = bodyBlock(c, x, width, bodyStyle);
    for (int attempt = 0; attempt < 4 && block.height > available && bodyStyle.fit > minBodyFit; ++attempt) {
        // Height grows a little faster than the size (lines rewrap), so aim low.
        bodyStyle.fit = std::max(minBodyFit, bodyStyle.fit * std::sqrt(std::max(0.0, available) / block.height) * 0.98);
        block = bodyBlock(c, x, width, bodyStyle);
    }
    return block;
}

void place(Plan& plan, Block block, double y, std::optional<Rect> clip = std::nullopt) {
    for (auto& piece : block.pieces) {
        piece.dy += y;
        if (clip) piece.clip = clip;
        plan.pieces.push_back(std::move(piece));
    }
}

// -------------------------------------------------------------------- media

// A decoded picture as a Cairo surface, or none when the bytes do not decode,
// with halved copies made on demand: a picture shrunk below half its size is
// drawn from the copy nearest above the target size, so bilinear filtering
// stays sharp and cheap from the stage down to the overview's small tiles.
class Picture {
public:
    explicit Picture(cairo_surface_t* surface) : levels_{surface} {}
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;
    ~Picture() {
        for (cairo_surface_t* level : levels_) {
            if (level) cairo_surface_destroy(level);
        }
    }

    cairo_surface_t* full() const { return levels_.front(); }

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

    mutable std::mutex mutex_;
    mutable std::vector<cairo_surface_t*> levels_;
};

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

// "rectangle.on.rectangle.slash": a frame behind a frame, struck through,
// for bytes that are not a picture.
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

// An image slide without a picture yet: a dashed frame and a picture glyph.
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
                    const double w = cairo_image_surface_get_width(picture->full());
                    const double h = cairo_image_surface_get_height(picture->full());
                    const double scale = fill ? std::max(area.width / w, area.height / h)
                                              : std::min(area.width / w, area.height / h);
                    cairo_save(cr);
                    cairo_translate(cr, area.x + (area.width - w * scale) / 2, area.y + (area.height - h * scale) / 2);
                    cairo_scale(cr, scale, scale);
                    cairo_rectangle(cr, 0, 0, w, h);
                    cairo_clip(cr);
                    if (cairo_surface_get_type(cairo_get_target(cr)) == CAIRO_SURFACE_TYPE_IMAGE) {
                        // On screen and in thumbnails: the halved copy nearest the
                        // size drawn, filtered bilinearly, its edges padded.
                        double dx = 1, dy = 0;
                        cairo_user_to_device_distance(cr, &dx, &dy);
                        cairo_surface_t* copy = picture->forScale(std::hypot(dx, dy));
                        cairo_scale(cr, w / cairo_image_surface_get_width(copy), h / cairo_image_surface_get_height(copy));
                        cairo_set_source_surface(cr, copy, 0, 0);
                        cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_BILINEAR);
                        cairo_pattern_set_extend(cairo_get_source(cr), CAIRO_EXTEND_PAD);
                    } else {
                        // A PDF keeps the picture whole; the viewer scales it.
                        cairo_set_source_surface(cr, picture->full(), 0, 0);
                    }
                    cairo_paint_with_alpha(cr, colours.imageOpacity);
                    cairo_restore(cr);
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
    if (placeholder) {
        const double fieldX = area.x + bar * 0.55 + bar * 0.13 * 10;
        const double fieldWidth = area.x + area.width - bar * 0.5 - fieldX;
        Font font{c.style.bodyFont, bar * 0.36 / (c.style.bodyFont.size * typeScale)};
        font.spec.design = FontDesign::standard;
        LayoutPtr address = plainText(hasAddress ? *c.slide.url : "No URL set", font,
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

void placeMedia(Plan& plan, const Context& c, const Rect& area, bool fullBleed) {
    plan.media = area;
    const double radius = fullBleed ? 0 : mediaRadius;
    plan.mediaRadius = radius;
    if (c.slide.layout == SlideLayout::web) {
        for (auto& piece : webPieces(c, area, radius)) plan.pieces.push_back(std::move(piece));
    } else {
        plan.pieces.push_back(imagePiece(c, area, radius));
    }
}

// ------------------------------------------------------------------ layouts

// Regular slides: eyebrow, title, subtitle and body in one left-aligned column.
void titleLayout(Plan& plan, const Context& c) {
    const double width = W - 2 * marginX;
    Block heading = headingBlock(c, marginX, width, PANGO_ALIGN_LEFT, 1);
    const double bodyTop = marginTop + heading.height + (heading.height > 0 ? 28 : 0);
    place(plan, std::move(heading), marginTop);
    Rect area{0, bodyTop - stepRise, W, H - marginBottom / 2 - bodyTop + stepRise};
    place(plan, fittedBody(c, marginX, width, H - marginBottom - bodyTop), bodyTop, area);
}

// Callouts: a large title centred on the slide, the subtitle and any body
// under it, the whole group centred vertically.
void calloutLayout(Plan& plan, const Context& c) {
    const double width = W - 2 * marginX;
    Block heading = headingBlock(c, marginX, width, PANGO_ALIGN_CENTER, calloutTitle);
    const double gap = heading.height > 0 ? 32 : 0;
    const double available = H - marginTop - marginBottom - heading.height - gap;
    Block body = fittedBody(c, marginX, width, available, true);
    const double total = heading.height + (body.height > 0 ? gap + body.height : 0);
    const double top = std::max(marginTop, (H - total) / 2);
    const double bodyTop = top + heading.height + gap;
    place(plan, std::move(heading), top);
    place(plan, std::move(body), bodyTop, Rect{0, bodyTop - stepRise, W, H - bodyTop + stepRise});
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
    const Color ink = !link.filled ? c.style.primaryText : contrast(colour, light) >= contrast(colour, dark) * 0.6 ? light : dark;
    const Color quiet = link.filled ? withAlpha(ink, 0.78) : c.style.mutedText;
    const bool filled = link.filled;
    const Color card = c.colours.card;
    const Color outline = readableOn(colour, c.style.stageBackground, c.style.primaryText);
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
    LayoutPtr label = plainText(link.label, {labelFont, 1.1 * scale}, {textWidth, PANGO_ALIGN_LEFT, 0, 0.95});
    pango_layout_set_ellipsize(label.get(), PANGO_ELLIPSIZE_END);
    LayoutPtr subtitle;
    if (c.slide.showLinkSubtitles && !link.subtitle.empty()) {
        subtitle = plainText(link.subtitle, {c.style.bodyFont, 0.85 * scale}, {textWidth, PANGO_ALIGN_LEFT});
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
    const double labelHeight = link.label.empty() ? 0 : heightOf(label.get());
    const double total = labelHeight + (subtitle ? subtitleHeight : 0);
    double y = r.y + std::max(pad, (r.height - total) / 2);
    if (!link.label.empty()) pieces.push_back(textPiece(label, r.x + pad, y, ink));
    if (subtitle) pieces.push_back(textPiece(subtitle, r.x + pad, y + labelHeight + 4, quiet));
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
    for (auto& piece : pieces) {
        piece.step = index;
        piece.rise = cardRise;
        piece.clip = Rect{r.x - 2, r.y - 2, r.width + 4, r.height + cardRise + 4};
        plan.pieces.push_back(std::move(piece));
    }
}

// Decisions: the heading, then the cards in a grid in link order, left to
// right and top to bottom, filling the space under the heading.
void decisionsLayout(Plan& plan, const Context& c) {
    const double width = W - 2 * marginX;
    Block heading = headingBlock(c, marginX, width, PANGO_ALIGN_LEFT, 1);
    const double top = marginTop + heading.height + (heading.height > 0 ? 36 : 0);
    place(plan, std::move(heading), marginTop);
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
            placeMedia(plan, c, {0, 0, W, H}, true);
            return;
        case SlidePosition::left:
        case SlidePosition::right: {
            const double share = W * besideFraction;
            const bool mediaLeft = c.slide.position == SlidePosition::left;
            const Rect media{mediaLeft ? mediaInset : W - share + mediaInset / 2, mediaInset,
                             share - 1.5 * mediaInset, H - 2 * mediaInset};
            const Rect column{mediaLeft ? share + 16 : 40, marginTop, W - share - 56, H - marginTop - marginBottom};
            placeMedia(plan, c, media, false);
            // The text sits in the middle of its column, or from the top when long.
            Block heading = headingBlock(c, column.x, column.width, PANGO_ALIGN_LEFT, besideTitle);
            const double gap = heading.height > 0 ? 18 : 0;
            Block body = fittedBody(c, column.x, column.width, column.height - heading.height - gap);
            const double total = heading.height + (body.height > 0 ? gap + body.height : 0);
            const double top = column.y + std::max(0.0, (column.height - total) / 2);
            const double bodyTop = top + heading.height + gap;
            const Rect clip{column.x - 4, 0, column.width + 8, H};
            place(plan, std::move(heading), top, clip);
            place(plan, std::move(body), bodyTop, clip);
            return;
        }
        case SlidePosition::topBottom: {
            const double share = H * aboveFraction;
            const Rect media{mediaInset, mediaInset, W - 2 * mediaInset, share - 1.5 * mediaInset};
            placeMedia(plan, c, media, false);
            const double top = share + 14;
            const double width = W - 2 * marginX;
            Block heading = headingBlock(c, marginX, width, PANGO_ALIGN_LEFT, belowTitle);
            const double gap = heading.height > 0 ? 14 : 0;
            const double bodyTop = top + heading.height + gap;
            place(plan, std::move(heading), top);
            const Rect clip{0, media.y + media.height + 1, W, H - media.y - media.height - 1};
            place(plan, fittedBody(c, marginX, width, H - mediaInset - bodyTop), bodyTop, clip);
            return;
        }
        case SlidePosition::inText: {
            // Heading, body, then the media filling the rest of the column: the
            // text stays where it is on a regular slide.
            const double width = W - 2 * marginX;
            const double bottom = H - marginBottom;
            Block heading = headingBlock(c, marginX, width, PANGO_ALIGN_LEFT, inTextTitle);
            const double bodyTop = marginTop + heading.height + (heading.height > 0 ? 22 : 0);
            const double minMedia = (bottom - marginTop) * 0.35;
            const double mediaGap = 22;
            Block body = fittedBody(c, marginX, width, bottom - minMedia - mediaGap - bodyTop);
            double mediaTop = body.height > 0 ? bodyTop + body.height + mediaGap : bodyTop;
            mediaTop = std::min(mediaTop, bottom - minMedia);
            place(plan, std::move(heading), marginTop);
            place(plan, std::move(body), bodyTop, Rect{0, 0, W, mediaTop - 4});
            placeMedia(plan, c, {marginX, mediaTop, width, bottom - mediaTop}, false);
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
    SlideGeometry geometry;
    if (slide.layout != SlideLayout::web && slide.layout != SlideLayout::image && slide.layout != SlideLayout::decisions) {
        return geometry;
    }
    Plan plan = planSlide(slide, options);
    geometry.mediaArea = plan.media;
    geometry.mediaIsWeb = plan.media && slide.layout == SlideLayout::web;
    geometry.mediaRadius = plan.mediaRadius;
    geometry.cards = std::move(plan.cards);
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
    for (const auto& piece : plan.pieces) {
        const double shown = piece.step ? appearance(*piece.step) : 1.0;
        if (shown <= 0) continue;
        cairo_save(cr);
        if (piece.clip) {
            cairo_rectangle(cr, piece.clip->x, piece.clip->y, piece.clip->width, piece.clip->height);
            cairo_clip(cr);
        }
        cairo_translate(cr, 0, piece.dy + piece.rise * (1 - shown));
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
