#pragma once

#include <gtkmm.h>

#include <cstdint>
#include <functional>
#include <optional>

#include "base/signal.h"
#include "present/presentation_state.h"

namespace lectern {

// The presentation timer as the presenter reads it: counting up, or down
// against the talk length, in one of four colours (stopped, running,
// two minutes or less left, overtime). A click starts or stops the timer.
class TimerReadout : public Gtk::Button {
public:
    // `targetMinutes` gives the deck's talk length whenever it is needed.
    TimerReadout(PresentationState& state, std::function<std::optional<std::int64_t>()> targetMinutes);

    void refresh();

private:
    PresentationState& state_;
    std::function<std::optional<std::int64_t>()> targetMinutes_;
    Gtk::Label label_;
    Signal<PresentationField>::Connection stateConnection_;
};

}  // namespace lectern
