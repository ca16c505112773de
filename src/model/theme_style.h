#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "model/color.h"
#include "model/deck_enums.h"

namespace lectern {

enum class FontWeight { regular, medium, semibold, bold };
enum class FontDesign { standard, serif, monospaced };

// A system font by size in points, weight and design.
struct FontSpec {
    double size = 14;
    FontWeight weight = FontWeight::regular;
    FontDesign design = FontDesign::standard;
    friend bool operator==(const FontSpec&, const FontSpec&) = default;
};

// The resolved fonts and colours of a theme, handed to every layout.
struct ThemeStyle {
    Theme theme = Theme::clinical;
    FontSpec eyebrowFont;
    FontSpec titleFont;
    FontSpec bodyFont;
    FontSpec codeFont;
    FontDesign titleDesign = FontDesign::standard;
    bool eyebrowUppercase = true;
    double eyebrowTracking = 1.5;  // letter spacing in points
    Color stageBackground;
    Color primaryText;
    Color mutedText;
    bool usesAccent = true;
    Color codeBlockBackground;
    Color codeBlockText;

    static ThemeStyle of(Theme theme);

    // The accent a slide shows: its own, else the deck's, else the built-in
    // default; none at all for a theme without accents. Text that is not a
    // colour is passed over.
    std::optional<Color> resolvedAccent(const std::optional<std::string>& deckAccentHex,
                                        const std::optional<std::string>& slideAccentHex = std::nullopt) const;

    friend bool operator==(const ThemeStyle&, const ThemeStyle&) = default;
};

// The one line the theme picker shows under each theme.
std::string_view themeDescription(Theme theme);
// The theme's name as the picker shows it ("Clinical").
std::string themeDisplayName(Theme theme);

}  // namespace lectern
