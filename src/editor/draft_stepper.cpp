#include "editor/draft_stepper.h"

#include <algorithm>
#include <cmath>
#include <charconv>

namespace lectern {

namespace {

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
    return text;
}

double roundTo(double value, int decimals) {
    double scale = std::pow(10.0, decimals);
    return std::round(value * scale) / scale;
}

}  // namespace

double DraftStepper::clamp(double value) const {
    if (std::isnan(value)) return minimum;
    return std::clamp(value, minimum, maximum);
}

std::string DraftStepper::format(double value) const {
    // Written the same in every locale, as it is parsed.
    double shown = roundTo(value, decimals);
    if (shown == 0) shown = 0;  // no "-0.0"
    char buffer[64];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, shown, std::chars_format::fixed, std::max(decimals, 0));
    return std::string(buffer, result.ptr);
}

std::optional<double> DraftStepper::parse(std::string_view text) const {
    text = trimmed(text);
    // The unit may be typed after the number, as the field shows it.
    if (!unit.empty() && text.size() >= unit.size() && text.substr(text.size() - unit.size()) == unit) {
        text = trimmed(text.substr(0, text.size() - unit.size()));
    }
    if (text.empty()) return std::nullopt;
    // Plain decimal notation only, with a point or a comma: no exponents,
    // hexadecimal, infinities or group separators.
    std::string number;
    bool digits = false, separator = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if ((c == '-' || c == '+') && i == 0) {
            number += c;
        } else if (c >= '0' && c <= '9') {
            number += c;
            digits = true;
        } else if ((c == '.' || c == ',') && !separator) {
            number += '.';
            separator = true;
        } else {
            return std::nullopt;
        }
    }
    if (!digits) return std::nullopt;
    if (number.front() == '+') number.erase(0, 1);
    double value = 0;
    auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec != std::errc() || result.ptr != number.data() + number.size()) return std::nullopt;
    return roundTo(value, decimals);
}

double DraftStepper::commit(std::string_view text, double current) const {
    auto value = parse(text);
    return value ? clamp(*value) : current;
}

}  // namespace lectern
