#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace lectern {

// The presenter's clock: counting up, or down against the talk length.
class PresenterTimer {
public:
    static constexpr double warningSeconds = 120;

    // The readout's colour, chosen from the theme by the view.
    enum class ReadoutState { stopped, normal, warning, overtime };

    // Counting up without a target; down from the target otherwise, with
    // "+" and the time past it once it is over. "%02d:%02d", or "%d:%02d:%02d"
    // from an hour on.
    static std::string text(double elapsedSeconds, std::optional<std::int64_t> targetMinutes);
    static std::string format(double seconds);
    static ReadoutState readoutState(bool running, double elapsedSeconds, std::optional<std::int64_t> targetMinutes);
    // The readout's help text (it is clickable and toggles the timer).
    static std::string helpText(std::optional<std::int64_t> targetMinutes);
};

}  // namespace lectern
