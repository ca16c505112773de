#include "model/theme_style.h"

#include <glib/gi18n.h>

namespace lectern {

namespace {

constexpr Color rgb(double r, double g, double b) { return {r, g, b, 1}; }
constexpr FontSpec font(double size, FontWeight weight, FontDesign design = FontDesign::standard) {
    return {size, weight, design};
}
constexpr FontSpec code(double size) { return {size, FontWeight::regular, FontDesign::monospaced}; }

}  // namespace

ThemeStyle ThemeStyle::of(Theme theme) {
    using W = FontWeight;
    using D = FontDesign;
    switch (theme) {
        case Theme::editorial:
            return {theme, font(12, W::medium, D::serif), font(44, W::regular, D::serif), font(16, W::regular, D::serif),
                    code(14), D::serif, false, 0.4, rgb(0.97, 0.96, 0.93), rgb(0.1, 0.08, 0.06), rgb(0.42, 0.38, 0.33),
                    true, rgb(0.13, 0.12, 0.1), rgb(0.94, 0.93, 0.9)};
        case Theme::monochrome:
            return {theme, font(10, W::semibold, D::monospaced), font(32, W::bold), font(13, W::regular), code(12),
                    D::standard, true, 2.0, Color::grey(0.94), Color::grey(0.1), Color::grey(0.55),
                    false, Color::grey(0.15), Color::grey(0.94)};
        case Theme::dark:
            return {theme, font(11, W::medium), font(34, W::semibold), font(14, W::regular), code(13),
                    D::standard, true, 1.5, Color::grey(0.08), Color::grey(0.96), Color::grey(0.68),
                    true, Color::grey(0.16), Color::grey(0.94)};
        case Theme::clinical:
            break;
    }
    return {Theme::clinical, font(11, W::medium), font(34, W::semibold), font(14, W::regular), code(13),
            D::standard, true, 1.5, Color::grey(0.98), Color::grey(0.08), Color::grey(0.45),
            true, Color::grey(0.12), Color::grey(0.92)};
}

std::optional<Color> ThemeStyle::resolvedAccent(const std::optional<std::string>& deckAccentHex,
                                                const std::optional<std::string>& slideAccentHex) const {
    if (!usesAccent) return std::nullopt;
    for (const auto* hex : {&slideAccentHex, &deckAccentHex}) {
        if (*hex) {
            if (auto color = Color::fromHex(**hex)) return color;
        }
    }
    return Color::fromHex(defaultAccentHex);
}

std::string_view themeDescription(Theme theme) {
    switch (theme) {
        case Theme::clinical: return _("Sans-serif, neutral");
        case Theme::editorial: return _("Serif, warm");
        case Theme::monochrome: return _("Bold, no accent");
        case Theme::dark: return _("Bold, dark canvas");
    }
    return {};
}

std::string themeDisplayName(Theme theme) {
    std::string name(enumName(theme));
    if (!name.empty()) name[0] = static_cast<char>(name[0] - 'a' + 'A');
    return name;
}

}  // namespace lectern
