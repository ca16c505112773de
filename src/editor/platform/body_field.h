#pragma once

#include <gtkmm.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/signal.h"
#include "editor/deck_editor.h"
#include "model/app_accent_palette.h"
#include "slides/slide_painter.h"

namespace lectern {

class BodyEditor;
class FormatBar;

// The slide body edited where it is drawn: the rich-text editor over the
// painted body, with its format bar above it while the body has the
// keyboard. Typing is written to the slide through the document, a burst of
// typing one undo step; a format control is a step of its own.
class BodyField {
public:
    BodyField(DeckEditor& editor, PreferencesStore& preferences);
    ~BodyField();

    BodyEditor& editor() { return *body_; }
    FormatBar& bar() { return *bar_; }

    // Follows the current slide: text, place and look, from the geometry of
    // the slide as the stage paints it and the slide's rectangle there.
    void update(bool editing, const SlideGeometry& geometry, const Rect& slideArea, Theme theme);
    std::optional<Gdk::Rectangle> placeOf(const Gtk::Widget* widget) const;
    // The body has the keyboard (or one of its bar's menus does): the painter
    // leaves it to the editor.
    bool active() const { return active_; }
    // Puts the keyboard in the body, the caret at its end.
    void focus();

    Signal<>& activeChanged() { return activeChanged_; }

private:
    void settle();

    DeckEditor& editor_;
    AppAccentPalette appPalette_;
    BodyEditor* body_ = nullptr;
    FormatBar* bar_ = nullptr;
    std::optional<Gdk::Rectangle> bodyPlace_;
    std::optional<Gdk::Rectangle> barPlace_;
    bool active_ = false;
    // The body the slide had at the last update.
    std::optional<Uuid> modelSlide_;
    std::optional<AttributedText> modelBody_;
    // What the editor was last given, so that typing does not rebuild it.
    struct LookKey {
        Theme theme = Theme::clinical;
        double fit = 0;
        double scale = 0;
        bool centreLeading = false;
        friend bool operator==(const LookKey&, const LookKey&) = default;
    } look_;
    std::vector<std::string> deckHexes_;
    std::vector<std::string> appHexes_;
    sigc::connection settling_;
    Signal<> activeChanged_;
    Signal<const AttributedText&, const std::string&, bool>::Connection editedConnection_;
};

}  // namespace lectern
