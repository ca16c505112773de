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

// `over` painted on `under` with its alpha; the result has `under`'s alpha.
Color composite(const Color& over, const Color& under);
// The contrast ratio of two opaque colours, from 1 (the same) to 21 (black
// on white), by their relative luminance in sRGB.
double contrastRatio(const Color& a, const Color& b);
// `preferred` as painted on `background`, darkened or lightened just enough
// to reach `minimum` contrast on it: text that stays readable and keeps its
// tone. Black or white when no shade of it reaches the minimum.
Color readableOn(const Color& preferred, const Color& background, double minimum = 4.5);

// The built-in accent colour, used when neither slide nor deck names one.
inline constexpr std::string_view defaultAccentHex = "#3B5A7A";

// Rewrites hex colour text in its canonical "#RRGGBB" form; nullopt when the
// text is not a colour.
std::optional<std::string> canonicalHex(std::string_view text);

}  // namespace lectern
