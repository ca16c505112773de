#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lectern {

// An sRGB colour, components in 0...1.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    static constexpr Color grey(double white, double alpha = 1) { return {white, white, white, alpha}; }

    // Reads "#RRGGBB" or "RRGGBB" (white space around it ignored); any other
    // text is not a colour.
    static std::optional<Color> fromHex(std::string_view text);
    // "#RRGGBB" with upper-case digits; alpha is not written.
    std::string hex() const;

    friend bool operator==(const Color&, const Color&) = default;
};

// The built-in accent colour, used when neither slide nor deck names one.
inline constexpr std::string_view defaultAccentHex = "#3B5A7A";

// Rewrites hex colour text in its canonical "#RRGGBB" form; nullopt when the
// text is not a colour.
std::optional<std::string> canonicalHex(std::string_view text);

}  // namespace lectern
