#pragma once

#include <gtkmm.h>

#include <array>
#include <memory>
#include <optional>
#include <string>

#include "base/signal.h"
#include "editor/deck_editor.h"
#include "editor/platform/stage_field.h"
#include "slides/slide_painter.h"

namespace lectern {

// The eyebrow, title and subtitle of the current slide, edited where they
// are drawn: single-line fields over the painted heading. Typing writes the
// slide through the document, a burst of typing in one field one undo step.
// The eyebrow keeps what was typed and only shows it in capitals.
class HeadingFields {
public:
    enum class Part { eyebrow, title, subtitle };

    explicit HeadingFields(DeckEditor& editor);
    ~HeadingFields();

    Gtk::Text& field(Part part) { return *fields_[static_cast<std::size_t>(part)].text; }

    // Follows the current slide: texts, places (in the stage's view
    // coordinates, from `geometry` and the slide's rectangle there) and looks.
    void update(bool editing, const SlideGeometry& geometry, const Rect& slideArea);
    // Where a field goes, if it is one of these.
    std::optional<Gdk::Rectangle> placeOf(const Gtk::Widget* widget) const;
    // The texts shown by a focused field, which the painter leaves out.
    void hide(SlidePaintOptions::Hidden& hidden) const;
    bool focused() const;

    // A field gained or lost the focus (after the focus has settled).
    Signal<>& focusChanged() { return focusChanged_; }
    // Return in the title or subtitle: the body comes next.
    Signal<>& bodyWanted() { return bodyWanted_; }

private:
    struct Field {
        Gtk::Text* text = nullptr;
        std::unique_ptr<StageFieldLook> look;
        std::optional<Gdk::Rectangle> place;
        bool focused = false;
    };
    void build(Part part, const std::string& name);
    void typed(Part part);
    void leave();
    void settleFocus();

    DeckEditor& editor_;
    std::array<Field, 3> fields_;
    bool syncing_ = false;
    sigc::connection settling_;
    Signal<> focusChanged_;
    Signal<> bodyWanted_;
};

}  // namespace lectern
