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

}  // namespace

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
