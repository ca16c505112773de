#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lectern {

// The rules of a numeric field with a stepper: a closed range, a step, a
// number of decimal digits shown (0: whole numbers) and a unit that follows
// the number. The field edits a draft text; what it writes back is always a
// value in range, shown the way it is stored.
struct DraftStepper {
    double minimum = 0;
    double maximum = 0;
    double step = 1;
    int decimals = 0;
    std::string unit;  // "sec"; empty for none

    // The steppers of an action's automation settings.
    static DraftStepper delay() { return {0, 120, 0.5, 1, "sec"}; }
    static DraftStepper interval() { return {0.5, 3600, 0.5, 1, "sec"}; }
    static DraftStepper maxRuns() { return {0, 999, 1, 0, {}}; }

    double clamp(double value) const;
    // One step up or down from `value`, kept in range (a value loaded from
    // outside the range comes back into it on the first step).
    double stepUp(double value) const { return clamp(value + step); }
    double stepDown(double value) const { return clamp(value - step); }
    // The number as the field shows it: "2.5", "0.0", "12" (no unit).
    std::string format(double value) const;
    // The number of a typed text ("2.5", " 3,5 sec", "7"), rounded to the
    // digits shown but not clamped; none when it is not a number.
    std::optional<double> parse(std::string_view text) const;
    // What the field writes when it commits `text`: the parsed value clamped
    // to the range, or `current` unchanged when the text is not a number.
    double commit(std::string_view text, double current) const;
};

}  // namespace lectern
