#include "present/presenter_hud.h"

#include <glib/gi18n.h>

#include <algorithm>

#include "base/translation.h"

namespace lectern {

PresenterHud::Decision PresenterHud::decide(double height) {
    if (height >= 0 && height <= bottomRevealZone) return Decision::show;
    if (height > bottomRevealZone && height <= hudHitZone) return Decision::leaveAlone;
    return Decision::scheduleHide;
}

PresenterHud::PresenterHud(Scheduler& scheduler, std::function<void(bool)> setVisible)
    : scheduler_(scheduler), setVisible_(std::move(setVisible)) {}

PresenterHud::~PresenterHud() { cancelHide(); }

void PresenterHud::cancelHide() {
    if (pendingHide_ != 0) scheduler_.cancel(pendingHide_);
    pendingHide_ = 0;
}

void PresenterHud::pointerMoved(double heightAboveBottom) {
    switch (decide(heightAboveBottom)) {
        case Decision::show:
            setVisible_(true);
            cancelHide();
            break;
        case Decision::leaveAlone:
            break;
        case Decision::scheduleHide:
            cancelHide();  // the new job replaces the pending one
            pendingHide_ = scheduler_.after(autoHideDelay, [this] {
                pendingHide_ = 0;
                if (!hovering_) setVisible_(false);
            });
            break;
    }
}

std::string PresenterHud::autoRunNotice(const Slide& slide) {
    auto count = std::count_if(slide.actions.begin(), slide.actions.end(), [](const SlideAction& a) { return a.autoRun; });
    if (count == 0) return {};
    return formatText(ngettext("This slide runs %s action(s) automatically", "This slide runs %s action(s) automatically",
                               static_cast<unsigned long>(count)),
                      std::to_string(count).c_str());
}

std::optional<PresenterHud::FailureMark> PresenterHud::failureMark(const Slide& slide, const ActionRunner& runner) {
    unsigned long failed = 0;
    std::string details;
    for (const SlideAction& action : slide.actions) {
        if (!action.autoRun) continue;
        auto state = runner.state(action.id);
        if (state.kind != ActionRunner::RunState::Kind::failure) continue;
        ++failed;
        if (!details.empty()) details += "\n";
        details += formatText(_("%s: %s"), ActionRunner::displayName(action).c_str(), state.text.c_str());
    }
    if (failed == 0) return std::nullopt;
    std::string text =
        formatText(ngettext("%s action failed", "%s actions failed", failed), std::to_string(failed).c_str());
    return FailureMark{std::move(text), std::move(details)};
}

}  // namespace lectern
