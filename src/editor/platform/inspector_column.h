#pragma once

#include <gtkmm.h>

#include "base/signal.h"

namespace lectern {

// The editor's right-hand column: the inspector of the current slide and
// that of the deck, one at a time, chosen with the switcher at its top. The
// pages are filled by their own widgets; the column only holds them and
// remembers which one is shown (per window).
class InspectorColumn : public Gtk::Box {
public:
    enum class Focus { slide, deck };

    InspectorColumn();

    // Where the pages' widgets go (each scrolls on its own).
    Gtk::Box& slidePage() { return slidePage_; }
    Gtk::Box& deckPage() { return deckPage_; }

    Focus focus() const { return focus_; }
    void setFocus(Focus focus);
    Signal<Focus>& focusChanged() { return focusChanged_; }

private:
    Gtk::StackSwitcher switcher_;
    Gtk::Stack stack_;
    Gtk::Box slidePage_{Gtk::Orientation::VERTICAL, 12};
    Gtk::Box deckPage_{Gtk::Orientation::VERTICAL, 12};
    Focus focus_ = Focus::slide;
    Signal<Focus> focusChanged_;
};

}  // namespace lectern
