#include "present/screen_placement.h"

#include <algorithm>

namespace lectern {

namespace {

bool connected(const std::vector<Screen>& screens, const std::string& connector) {
    return !connector.empty() && std::any_of(screens.begin(), screens.end(), [&](const Screen& screen) {
        return screen.connector == connector;
    });
}

// The deck window's monitor, or the first one when it is not known (or no
// longer connected).
std::string home(const std::vector<Screen>& screens, const std::string& deckWindow) {
    if (connected(screens, deckWindow)) return deckWindow;
    return screens.empty() ? std::string() : screens.front().connector;
}

// The presenter display takes the home monitor unless the stage is there.
ScreenPlan withPresenter(const std::vector<Screen>& screens, const std::string& home, std::string stage) {
    ScreenPlan plan;
    if (screens.size() < 2) return plan;
    plan.stage = std::move(stage);
    if (plan.stage != home) {
        plan.presenter = home;
    } else {
        // The stage was chosen onto the deck window's monitor: the presenter
        // display takes the first other one.
        for (const auto& screen : screens) {
            if (screen.connector != plan.stage) {
                plan.presenter = screen.connector;
                break;
            }
        }
    }
    return plan;
}

}  // namespace

ScreenPlan ScreenPlacement::start(const std::vector<Screen>& screens, const std::string& deckWindow,
                                  const std::string& chosen) {
    if (screens.size() < 2) return {};
    std::string own = home(screens, deckWindow);
    if (connected(screens, chosen)) return withPresenter(screens, own, chosen);
    for (const auto& screen : screens) {
        if (screen.connector != own) return withPresenter(screens, own, screen.connector);
    }
    return {};
}

ScreenPlan ScreenPlacement::afterChange(const ScreenPlan& current, const std::vector<Screen>& screens,
                                        const std::string& deckWindow, const std::string& chosen) {
    if (screens.size() < 2) return {};
    std::string own = home(screens, deckWindow);
    if (connected(screens, chosen) && current.stage != chosen) return withPresenter(screens, own, chosen);
    // A talk on one monitor that gets another (plugged in mid-talk, or back
    // after a loose cable) is placed as Present would place it now.
    if (current.stage.empty()) return start(screens, own, chosen);
    if (connected(screens, current.stage)) {
        // The stage stays; the presenter display keeps its monitor if it
        // still has one, else takes another.
        if (connected(screens, current.presenter)) return current;
        return withPresenter(screens, own, current.stage);
    }
    // The stage's monitor went: placed again as at the start.
    return start(screens, own, chosen);
}

}  // namespace lectern
