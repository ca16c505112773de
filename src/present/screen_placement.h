#pragma once

#include <string>
#include <vector>

namespace lectern {

// One monitor as the placement sees it: known by its connector ("HDMI-1"),
// which stays the same across sessions where an index does not.
struct Screen {
    std::string connector;
    std::string model;
    int x = 0, y = 0, width = 0, height = 0;

    friend bool operator==(const Screen&, const Screen&) = default;
};

// Where the talk goes: the stage full screen on `stage` (empty: on the
// monitor the deck window is on, as with a single monitor) and the
// presenter display full screen on `presenter` (empty: a normal window,
// or none).
struct ScreenPlan {
    std::string stage;
    std::string presenter;

    bool twoScreens() const { return !presenter.empty(); }
    friend bool operator==(const ScreenPlan&, const ScreenPlan&) = default;
};

// Chooses the monitors for presenting. With one monitor the stage fills
// the deck window's monitor and nothing else changes; with more, the stage
// goes to the chosen monitor when it is connected (else the first one the
// deck window is not on) and the presenter display fills the deck window's
// monitor. `chosen` is a connector, empty for "Automatic"; `deckWindow` is
// the connector of the monitor the deck window is on (empty: not known,
// the first monitor is taken).
class ScreenPlacement {
public:
    static ScreenPlan start(const std::vector<Screen>& screens, const std::string& deckWindow,
                            const std::string& chosen);
    // Monitors came or went while presenting under `current`. The stage
    // stays where it is unless its monitor went (it moves to a remaining
    // one), the chosen monitor came (it moves there), or the talk was on
    // one monitor and now has two (placed as at the start: a projector
    // plugged in mid-talk, or back after a loose cable, takes the stage);
    // the presenter display is full screen only while it and the stage
    // have a monitor each. Presenting never stops here.
    static ScreenPlan afterChange(const ScreenPlan& current, const std::vector<Screen>& screens,
                                  const std::string& deckWindow, const std::string& chosen);
};

}  // namespace lectern
