#pragma once

#include <gtkmm.h>

#include <string>

#include "slides/slide_painter.h"

namespace lectern {

// The editor's fields lie over the painted slide. A field without the focus
// is fully transparent, so the stage shows the painter's text and the
// screen matches what the audience will see; with the focus it shows its own
// text in the same font, size and colour at the stage's scale, and the
// painter leaves that text out.
class StageFieldLook {
public:
    explicit StageFieldLook(Gtk::Widget& field);
    // The look of the text at `scale` view pixels per design point.
    void apply(const TextLook& look, double scale);
    // Seen (it has the focus) or see-through.
    void setShown(bool shown);

private:
    Gtk::Widget& field_;
    Glib::RefPtr<Gtk::CssProvider> css_ = Gtk::CssProvider::create();
    std::string applied_;
};

// A single-line field for the stage, that a screen reader lists as a text
// box (a bare Gtk::Text is otherwise left out of the accessibility tree).
Gtk::Text* makeStageText();

// A design-point rectangle in the stage's view coordinates, given the
// slide's rectangle there.
Gdk::Rectangle toView(const Rect& design, const Rect& slideArea);

// Whether `widget` is `ancestor` or inside it (popovers count as inside the
// button they belong to).
bool isWithin(const Gtk::Widget* widget, const Gtk::Widget& ancestor);

}  // namespace lectern
