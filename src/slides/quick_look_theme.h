#pragma once

#include <string_view>

#include "model/color.h"
#include "model/deck_enums.h"

namespace lectern {

// The colours slides are drawn with, beyond the theme's text colours: card
// and media backgrounds, the placeholder stroke and the overlay that keeps
// pictures quiet in the monochrome theme.
struct QuickLookTheme {
    Theme theme = Theme::clinical;
    Color background;
    Color primary;
    Color muted;
    Color card;
    Color mediaBackground;
    Color placeholderStroke;
    Color monochromeOverlay;
    // Messages on a web area ("Couldn’t load page", "No URL set") and their
    // detail line, readable on `mediaBackground` (at least 4.5:1).
    Color webMessage;
    Color webMessageDetail;
    std::string_view defaultAccent;
    bool usesAccent = true;
    bool uppercaseEyebrow = true;
    double eyebrowTracking = 1.5;
    double imageOpacity = 1;

    static QuickLookTheme of(Theme theme);
};

}  // namespace lectern
