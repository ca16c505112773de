#include "present/presenter_timer.h"

#include <glib/gi18n.h>

#include <cmath>
#include <cstdio>

#include "base/translation.h"

namespace lectern {

std::string PresenterTimer::format(double seconds) {
    auto s = static_cast<std::int64_t>(std::max(std::floor(seconds), 0.0));
    char text[32];
    if (s >= 3600) {
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", static_cast<long long>(s / 3600),
                      static_cast<long long>(s % 3600 / 60), static_cast<long long>(s % 60));
    } else {
        std::snprintf(text, sizeof text, "%02lld:%02lld", static_cast<long long>(s / 60), static_cast<long long>(s % 60));
    }
    return text;
}

std::string PresenterTimer::text(double elapsedSeconds, std::optional<std::int64_t> targetMinutes) {
    if (!targetMinutes) return format(elapsedSeconds);
    double left = static_cast<double>(*targetMinutes) * 60 - elapsedSeconds;
    if (left >= 0) return format(left);
    std::string overtime("+");  // built in place: g++ 12 warns falsely on "+" + string
    overtime += format(-left);
    return overtime;
}

PresenterTimer::ReadoutState PresenterTimer::readoutState(bool running, double elapsedSeconds,
                                                          std::optional<std::int64_t> targetMinutes) {
    if (!running) return ReadoutState::stopped;
    if (!targetMinutes) return ReadoutState::normal;
    double left = static_cast<double>(*targetMinutes) * 60 - elapsedSeconds;
    if (left < 0) return ReadoutState::overtime;
    if (left <= warningSeconds) return ReadoutState::warning;
    return ReadoutState::normal;
}

std::string PresenterTimer::helpText(std::optional<std::int64_t> targetMinutes) {
    if (!targetMinutes) return _("Click to toggle timer");
    return formatText(_("Time left of %s min \u2014 click to toggle timer"), std::to_string(*targetMinutes).c_str());
}

}  // namespace lectern
