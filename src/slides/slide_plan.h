#pragma once

#include <cairo.h>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "model/theme_style.h"
#include "slides/quick_look_theme.h"
#include "slides/slide_painter.h"
#include "slides/slide_typesetting.h"

// What the slide painter lays out before it draws anything: pieces placed
// on the design canvas, so that the stage's hit-testing and the drawing
// agree; and the slide body, typeset into such pieces.
namespace lectern::paint {

// A hidden body step sits this much lower than where it appears.
inline constexpr double stepRise = 6;

// The accent as text or a thin line on the background: moved toward the
// text colour just enough to be read (a dark blue eyebrow on the dark
// canvas would vanish). Filled cards keep the accent as it is.
Color accentOn(const Color& accent, const Color& background, const Color& text);

// One thing to draw. Pieces of a reveal step (a body step, or a card) fade
// and rise together; everything is laid out before anything is drawn, so the
// stage's hit-testing and the drawing agree.
struct Piece {
    std::optional<std::size_t> step;
    double rise = 0;
    double dy = 0;             // moves the piece down (blocks are laid out from 0)
    std::optional<Rect> clip;  // keeps overflowing text out of the media
    std::function<void(cairo_t*)> draw;
    double dx = 0;  // moves the piece right (a dragged card)
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

Piece textPiece(LayoutPtr layout, double x, double y, Color colour);

struct Plan {
    std::vector<Piece> pieces;
    std::optional<Rect> media;
    double mediaRadius = 0;
    std::vector<std::pair<Uuid, Rect>> cards;
    // Where the editable texts are, for the editor's fields.
    std::optional<TextBox> eyebrow;
    std::optional<TextBox> title;
    std::optional<TextBox> subtitle;
    std::optional<BodyBox> body;
    std::vector<CardBox> cardBoxes;
    std::vector<Piece> onTop;  // drawn after all the others (a dragged card)
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
        return accent ? accentOn(*accent, style.stageBackground, style.primaryText) : fallback;
    }
};

// Moves the block's pieces down to `y` and adds them to the plan, clipped
// to `clip` when given.
void place(Plan& plan, Block block, double y, std::optional<Rect> clip = std::nullopt);

// The slide's media (its picture, or where its live page goes) in `area`,
// with corners of `radius` (0 where it fills the slide's edge).
void placeMedia(Plan& plan, const Context& c, const Rect& area, double radius);

// The slide's body at the largest size (up to the theme's) that fits
// `available` points of height, from y = 0. Mode all: its render items.
// Mode reveal: one block per step of the normalised plan, each keeping its
// place while hidden so that the slide does not move as text appears.
// `fit`, when given, receives the factor the type was shrunk by.
Block fittedBody(const Context& c, double x, double width, double available, bool centreLeading = false,
                 double* fit = nullptr);

}  // namespace lectern::paint
