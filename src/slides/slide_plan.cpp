#include "slides/slide_plan.h"

#include <deque>

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>

#include "model/body_lines.h"
#include "slides/body_font.h"
#include "slides/body_layout.h"
#include "slides/slide_pictures.h"

namespace lectern::paint {

namespace {

constexpr double minBodyFit = 0.6;  // a long body shrinks to no less than this

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
        std::vector<double> gaps;  // blank lines between command lines stay in the box
        const double blankCodeLine = heightOf(plainText(" ", code, {width}).get());
        double height = 0, widest = 0;
        for (std::size_t i = 0; i < item.lines.size(); ++i) {
            const auto& line = item.lines[i];
            gaps.push_back(i == 0 ? 0 : blankCodeLine * static_cast<double>(line.id - item.lines[i - 1].id - 1));
            height += gaps.back();
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
        for (std::size_t i = 0; i < lines.size(); ++i) {
            lineY += gaps[i];
            block.pieces.push_back(
                textPiece(lines[i].layout, x + shift + padX + lines[i].indent, lineY, c.style.codeBlockText));
            lineY += heightOf(lines[i].layout.get());
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

}  // namespace

Color accentOn(const Color& accent, const Color& background, const Color& text) {
    for (double t = 0; t < 1; t += 0.1) {
        Color candidate = mix(accent, text, t);
        if (contrastRatio(candidate, background) >= 3.5) return candidate;
    }
    return text;
}

Piece textPiece(LayoutPtr layout, double x, double y, Color colour) {
    return {std::nullopt, 0, 0, std::nullopt, [layout, x, y, colour](cairo_t* cr) {
                setSource(cr, colour);
                cairo_move_to(cr, x, y);
                pango_cairo_show_layout(cr, layout.get());
            }};
}

void place(Plan& plan, Block block, double y, std::optional<Rect> clip) {
    for (auto& piece : block.pieces) {
        piece.dy += y;
        if (clip) piece.clip = clip;
        plan.pieces.push_back(std::move(piece));
    }
}

namespace {

// A body shown whole, typeset for a place on the slide.
struct FittedKey {
    AttributedText body;
    Theme theme = Theme::clinical;
    double x = 0, width = 0, available = 0;
    bool centreLeading = false;
    friend bool operator==(const FittedKey&, const FittedKey&) = default;
};
struct Fitted {
    FittedKey key;
    Block block;
    double fit = 1;
};

}  // namespace

Block fittedBody(const Context& c, double x, double width, double available, bool centreLeading, double* fit) {
    // Typesetting a long body is the painter's dearest work, and the stage,
    // the editor's fields and the thumbnails lay out the same body in turn
    // (a key typed in a title typesets an unchanged body three times). The
    // last few bodies shown whole are kept, per thread: their layouts stay
    // on the thread that made them.
    thread_local std::deque<Fitted> recent;
    std::optional<FittedKey> key;
    if (!c.revealing()) {
        key = FittedKey{c.slide.body, c.options.theme, x, width, available, centreLeading};
        for (const auto& kept : recent) {
            if (kept.key != *key) continue;
            if (fit) *fit = kept.fit;
            return kept.block;
        }
    }
    BodyStyle bodyStyle{1, centreLeading};
    Block block = bodyBlock(c, x, width, bodyStyle);
    for (int attempt = 0; attempt < 4 && block.height > available && bodyStyle.fit > minBodyFit; ++attempt) {
        // Height grows a little faster than the size (lines rewrap), so aim low.
        bodyStyle.fit = std::max(minBodyFit, bodyStyle.fit * std::sqrt(std::max(0.0, available) / block.height) * 0.98);
        block = bodyBlock(c, x, width, bodyStyle);
    }
    if (fit) *fit = bodyStyle.fit;
    if (key) {
        recent.push_front({std::move(*key), block, bodyStyle.fit});
        if (recent.size() > 4) recent.pop_back();
    }
    return block;
}

}  // namespace lectern::paint
