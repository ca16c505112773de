#include "present/platform/timer_readout.h"

#include <glib/gi18n.h>

#include "base/platform/accessible.h"
#include "present/presenter_timer.h"

namespace lectern {

TimerReadout::TimerReadout(PresentationState& state, std::function<std::optional<std::int64_t>()> targetMinutes)
    : state_(state), targetMinutes_(std::move(targetMinutes)) {
    add_css_class("flat");
    add_css_class("timer-readout");
    label_.add_css_class("numeric");
    set_child(label_);
    setAccessibleLabel(*this, _("Timer"));
    signal_clicked().connect([this] { state_.toggleTimer(); });
    stateConnection_ = state_.changed().connect([this](PresentationField field) {
        if (field == PresentationField::now || field == PresentationField::timerStart) refresh();
    });
    refresh();
}

void TimerReadout::refresh() {
    auto target = targetMinutes_();
    label_.set_text(PresenterTimer::text(state_.elapsed(), target));
    set_tooltip_text(PresenterTimer::helpText(target));
    static constexpr const char* classes[] = {"timer-stopped", "timer-running", "timer-warning", "timer-overtime"};
    auto readout = PresenterTimer::readoutState(state_.timerStart().has_value(), state_.elapsed(), target);
    const char* wanted = classes[static_cast<int>(readout)];
    for (const char* name : classes) {
        if (name == wanted) add_css_class(name); else remove_css_class(name);
    }
}

}  // namespace lectern
