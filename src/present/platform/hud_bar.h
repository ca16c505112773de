#pragma once

#include <gtkmm.h>

#include <functional>

#include "present/platform/timer_readout.h"
#include "model/deck.h"
#include "present/presentation_state.h"

namespace lectern {

// The presenter HUD at the bottom of the stage: the presenter's controls,
// the slide counter, the timer, the notice of automatic actions and the
// mark of those that failed. It slides in while the state's hudVisible is
// set, never by itself.
class HudBar : public Gtk::Revealer {
public:
    HudBar(PresentationState& state, std::function<const Deck&()> deck);

    // Re-reads what depends on the deck or the current slide.
    void refresh();
    // The pointer entered (true) or left (false) the bar itself.
    Signal<bool>& hovering() { return hovering_; }

    const Gtk::Label& notice() const { return notice_; }
    // The mark of failed automatic actions ("1 action failed", each failure
    // in its tooltip); part of the bar, so only seen while the bar is.
    const Gtk::Box& failureMark() const { return failureMark_; }
    const Gtk::Label& failureText() const { return failureText_; }
    TimerReadout& timer() { return timer_; }

private:
    Gtk::Button& addButton(Gtk::Box& box, const char* icon, const char* action, const char* name, const char* tooltip);

    PresentationState& state_;
    std::function<const Deck&()> deck_;
    Gtk::Box bar_{Gtk::Orientation::HORIZONTAL, 4};
    Gtk::Button* present_ = nullptr;
    Gtk::Button* notes_ = nullptr;
    Gtk::Label counter_;
    Gtk::Label notice_;
    Gtk::Box failureMark_{Gtk::Orientation::HORIZONTAL, 4};
    Gtk::Label failureText_;
    TimerReadout timer_;
    Signal<bool> hovering_;
    Signal<PresentationField>::Connection stateConnection_;
    Signal<>::Connection runnerConnection_;
};

}  // namespace lectern
