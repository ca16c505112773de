#pragma once

#include <cairo.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model/color.h"
#include "model/deck_enums.h"
#include "model/slide.h"
#include "model/theme_style.h"
#include "model/uuid.h"
#include "slides/reveal_plan.h"

namespace lectern {

// A rectangle in design points (the slide is 960 × 540 of them).
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    bool contains(double px, double py) const { return px >= x && py >= y && px < x + width && py < y + height; }
    friend bool operator==(const Rect&, const Rect&) = default;
};

// What a slide is drawn with besides the slide itself.
struct SlidePaintOptions {
    Theme theme = Theme::clinical;
    std::optional<std::string> deckAccentHex;
    std::string deckTitle;  // shown in the eyebrow when the slide has none
    RevealState reveal;     // mode all shows everything
    // How far reveal step k (card k on a decisions slide) has appeared, from
    // 0 (transparent, 6 points lower; 8 for cards) to 1 (opaque, in place).
    // The stage animates these; when empty they follow `reveal` directly.
    std::vector<double> stepAppearance;
    // Off when a live page will be placed over the web area.
    bool drawWebPlaceholder = true;
    // A picture of the slide's live page (PNG bytes) drawn in the web area
    // instead of the placeholder: the presenter display shows the page as
    // it last looked.
    std::optional<SharedBytes> webPicture;

    // The editor's stage. Empty headings keep their lines and show their
    // placeholders in a faint colour, an empty image slide says how to add a
    // picture; a slide drawn for the talk never shows any of it.
    bool editing = false;
    // While the heading of a regular slide is being edited, its empty
    // subtitle keeps a line too (callouts and decisions always keep it in
    // the editor).
    bool showEmptySubtitle = false;
    // Text an editing field shows instead while it has the focus: left out
    // of the picture, its place kept.
    struct Hidden {
        bool eyebrow = false;
        bool title = false;
        bool subtitle = false;
        bool body = false;
        std::optional<Uuid> cardText;  // the label and subtitle of this card
    } hidden;
    // A card being dragged to another place in the editor: drawn moved by
    // (dx, dy) design points above the others, the card it would take the
    // place of outlined.
    struct CardDrag {
        Uuid id;
        double dx = 0;
        double dy = 0;
        std::optional<Uuid> target;
    };
    std::optional<CardDrag> cardDrag;
};

enum class TextAlign { left, centre };

// How a line of slide text is set, so that an editing field can look
// exactly like it. Sizes in design points.
struct TextLook {
    FontDesign design = FontDesign::standard;
    FontWeight weight = FontWeight::regular;
    double size = 14;
    Color colour;
    TextAlign align = TextAlign::left;
    double tracking = 0;     // letter spacing
    bool uppercase = false;  // shown in capitals, stored as typed
};

// A single-line text of the slide: where it is drawn (its box is one line
// high even when empty), how, and what an empty field says.
struct TextBox {
    Rect rect;
    TextLook look;
    std::string placeholder;
};

// Where the body is drawn: its column from the top of its first line to the
// bottom of the room it has, and the factor its type was shrunk by to fit.
struct BodyBox {
    Rect rect;
    double fit = 1;
    bool centreLeading = false;  // ordinary lines centred (callouts)
};

// One decision card and the lines of text on it.
struct CardBox {
    Uuid id;
    Rect frame;
    TextBox label;
    std::optional<TextBox> subtitle;  // when the slide shows link subtitles
};

// The family list Pango (and the editing fields' CSS) sets a design in.
std::string fontFamily(FontDesign design);

// Where the interactive parts of a slide are, in design points.
struct SlideGeometry {
    std::optional<Rect> mediaArea;
    bool mediaIsWeb = false;
    double mediaRadius = 0;  // its corners' radius; 0 when it fills the slide's edge
    std::vector<std::pair<Uuid, Rect>> cards;  // in link order
    // The editable texts, from the same layout as the drawing.
    std::optional<TextBox> eyebrow;
    std::optional<TextBox> title;
    std::optional<TextBox> subtitle;
    std::optional<BodyBox> body;
    std::vector<CardBox> cardBoxes;  // in link order
};

// The one painter of slides: the stage, the overview tiles, the presenter
// panel, Thumbnail.png and Preview.pdf all draw through it, so a slide looks
// the same everywhere. Slides are laid out at a fixed design size and scaled
// uniformly.
class SlidePainter {
public:
    static constexpr double designWidth = 960;
    static constexpr double designHeight = 540;

    // Fills the target with the theme's stage background and draws the slide
    // centred in it, scaled uniformly.
    static void paint(cairo_t* cr, const Slide& slide, const SlidePaintOptions& options, double targetWidth,
                      double targetHeight);
    // Where the media and the cards are, in design points; the stage maps the
    // pointer back with `fit` to hit-test cards and to place the live page.
    static SlideGeometry geometry(const Slide& slide, const SlidePaintOptions& options);

    // The eyebrow as it is shown: the slide's own, else the deck title; in
    // capitals where the theme asks for them (the stored text is untouched).
    static std::string displayedEyebrow(const Slide& slide, const SlidePaintOptions& options);

    // How the design size sits in a target: design point p is at
    // offset + p × scale.
    struct Fit {
        double scale = 1;
        double offsetX = 0;
        double offsetY = 0;
    };
    static Fit fit(double targetWidth, double targetHeight);
};

}  // namespace lectern
