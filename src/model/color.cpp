#include "model/color.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace lectern {

namespace {

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

int toByte(double component) {
    return static_cast<int>(std::lround(std::clamp(component, 0.0, 1.0) * 255.0));
}

double relativeLuminance(const Color& color) {
    auto linear = [](double component) {
        component = std::clamp(component, 0.0, 1.0);
        return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

}  // namespace

Color composite(const Color& over, const Color& under) {
    double a = std::clamp(over.alpha, 0.0, 1.0);
    return {over.red * a + under.red * (1 - a), over.green * a + under.green * (1 - a),
            over.blue * a + under.blue * (1 - a), under.alpha};
}

double contrastRatio(const Color& a, const Color& b) {
    double first = relativeLuminance(a), second = relativeLuminance(b);
    if (first < second) std::swap(first, second);
    return (first + 0.05) / (second + 0.05);
}

Color readableOn(const Color& preferred, const Color& background, double minimum) {
    // The preferred colour, taken towards black or white (whichever
    // contrasts more) just as far as it must go: text keeps its tone.
    const Color opaque = composite(preferred, background);
    const Color black = Color::grey(0), white = Color::grey(1);
    const Color target = contrastRatio(black, background) >= contrastRatio(white, background) ? black : white;
    for (int step = 0; step <= 20; ++step) {
        const double t = step / 20.0;
        const Color candidate{opaque.red + (target.red - opaque.red) * t, opaque.green + (target.green - opaque.green) * t,
                              opaque.blue + (target.blue - opaque.blue) * t, 1};
        if (contrastRatio(candidate, background) >= minimum) return candidate;
    }
    return target;
}

std::optional<Color> Color::fromHex(std::string_view text) {
    while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
    if (!text.empty() && text.front() == '#') text.remove_prefix(1);
    if (text.size() != 6) return std::nullopt;
    int bytes[3];
    for (int i = 0; i < 3; ++i) {
        int high = hexDigit(text[2 * i]);
        int low = hexDigit(text[2 * i + 1]);
        if (high < 0 || low < 0) return std::nullopt;
        bytes[i] = high * 16 + low;
    }
    return Color{bytes[0] / 255.0, bytes[1] / 255.0, bytes[2] / 255.0, 1.0};
}

std::string Color::hex() const {
    char text[8];
    std::snprintf(text, sizeof text, "#%02X%02X%02X", toByte(red), toByte(green), toByte(blue));
    return text;
}

std::optional<std::string> canonicalHex(std::string_view text) {
    auto color = Color::fromHex(text);
    if (!color) return std::nullopt;
    return color->hex();
}

}  // namespace lectern
