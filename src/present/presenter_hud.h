#pragma once

#include <functional>
#include <optional>
#include <string>

#include "model/slide.h"
#include "present/action_runner.h"
#include "base/scheduler.h"

namespace lectern {

// The presenter HUD at the bottom of the stage: it appears when the pointer
// comes near the bottom edge and hides 2 seconds after it leaves.
class PresenterHud {
public:
    static constexpr double autoHideDelay = 2.0;
    static constexpr double bottomRevealZone = 80;
    static constexpr double hudHitZone = 140;

    enum class Decision { show, leaveAlone, scheduleHide };
    // From the pointer's height above the window's bottom edge.
    static Decision decide(double heightAboveBottom);

    // `setVisible` shows or hides the HUD (the state's hudVisible).
    PresenterHud(Scheduler& scheduler, std::function<void(bool)> setVisible);
    ~PresenterHud();
    PresenterHud(const PresenterHud&) = delete;
    PresenterHud& operator=(const PresenterHud&) = delete;

    // A pointer motion inside the HUD's own window.
    void pointerMoved(double heightAboveBottom);
    // The pointer is over the HUD itself: a pending hide leaves it shown.
    void setHovering(bool hovering) { hovering_ = hovering; }
    bool hidePending() const { return pendingHide_ != 0; }

    // "This slide runs 2 action(s) automatically", or empty when none do.
    static std::string autoRunNotice(const Slide& slide);

    // The HUD's mark for automatic actions of the slide whose last run
    // failed: "1 action failed", and each failure as "Name: what went wrong"
    // on a line of its own for the tooltip. None when nothing failed.
    struct FailureMark {
        std::string text;
        std::string details;
        friend bool operator==(const FailureMark&, const FailureMark&) = default;
    };
    static std::optional<FailureMark> failureMark(const Slide& slide, const ActionRunner& runner);

private:
    void cancelHide();

    Scheduler& scheduler_;
    std::function<void(bool)> setVisible_;
    bool hovering_ = false;
    Scheduler::TimerId pendingHide_ = 0;
};

}  // namespace lectern
