#include "slides/quick_look_theme.h"

#include "model/theme_style.h"

namespace lectern {

QuickLookTheme QuickLookTheme::of(Theme theme) {
    ThemeStyle style = ThemeStyle::of(theme);
    QuickLookTheme q;
    q.theme = theme;
    // Background and text colours are the stage's, so a thumbnail looks like
    // the slide on stage.
    q.background = style.stageBackground;
    q.primary = style.primaryText;
    q.muted = style.mutedText;
    q.defaultAccent = defaultAccentHex;
    q.usesAccent = style.usesAccent;
    q.uppercaseEyebrow = style.eyebrowUppercase;
    q.eyebrowTracking = style.eyebrowTracking;
    q.monochromeOverlay = Color{0, 0, 0, 0};
    switch (theme) {
        case Theme::clinical:
            q.card = Color::grey(1, 0.92);
            q.mediaBackground = Color::grey(0.93);
            q.placeholderStroke = Color{q.primary.red, q.primary.green, q.primary.blue, 0.18};
            break;
        case Theme::editorial:
            q.card = Color::grey(1, 0.72);
            q.mediaBackground = Color{0.9, 0.88, 0.82, 1};
            q.placeholderStroke = Color{q.primary.red, q.primary.green, q.primary.blue, 0.17};
            break;
        case Theme::monochrome:
            q.card = Color::grey(1, 0.7);
            q.mediaBackground = Color::grey(0.86);
            q.placeholderStroke = Color{q.primary.red, q.primary.green, q.primary.blue, 0.2};
            q.monochromeOverlay = Color::grey(0.5, 0.28);
            break;
        case Theme::dark:
            q.card = Color::grey(0.18, 0.92);
            q.mediaBackground = Color::grey(0.13);
            q.placeholderStroke = Color::grey(1, 0.2);
            break;
    }
    q.webMessage = readableOn(q.primary, q.mediaBackground);
    q.webMessageDetail = readableOn(q.muted, q.mediaBackground);
    return q;
}

}  // namespace lectern
