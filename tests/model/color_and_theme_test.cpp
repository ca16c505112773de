#include <gtest/gtest.h>

#include "model/color.h"
#include "model/theme_style.h"

namespace lectern {
namespace {

TEST(Color, HexReading) {
    EXPECT_EQ(Color::fromHex("#FF8000"), (Color{1.0, 128 / 255.0, 0.0, 1.0}));
    EXPECT_EQ(Color::fromHex("  3b5a7a\n"), Color::fromHex("#3B5A7A"));
    EXPECT_EQ(Color::fromHex("\t#abcdef "), (Color{0xAB / 255.0, 0xCD / 255.0, 0xEF / 255.0, 1}));
    for (const char* bad : {"", "#", "#FFF", "##FFFFFF", "#FFFFFFFF", "#GG0000", "FF 000", "# FF0000", "0xFF0000"}) {
        EXPECT_FALSE(Color::fromHex(bad)) << bad;
    }
}

TEST(Color, HexWritingRoundsAndClamps) {
    EXPECT_EQ((Color{1, 0.5, 0, 1}).hex(), "#FF8000");
    EXPECT_EQ(Color::grey(0.08).hex(), "#141414");
    EXPECT_EQ((Color{1.4, -0.2, 0.999, 0.3}).hex(), "#FF00FF");
    for (const char* hex : {"#000000", "#3B5A7A", "#FFFFFF", "#0A0B0C"}) EXPECT_EQ(Color::fromHex(hex)->hex(), hex);
    EXPECT_EQ(canonicalHex(" ff00aa"), "#FF00AA");
    EXPECT_FALSE(canonicalHex("red"));
}

TEST(Color, ContrastAndReadableText) {
    const Color black = Color::grey(0), white = Color::grey(1);
    EXPECT_NEAR(contrastRatio(black, white), 21, 1e-9);
    EXPECT_NEAR(contrastRatio(white, black), 21, 1e-9);
    EXPECT_NEAR(contrastRatio(*Color::fromHex("#767676"), white), 4.54, 0.01);
    // White on a light grey (the stage's failed-page card) is unreadable:
    // it turns dark enough to read; a colour that reads is kept as it is.
    const Color lightGrey = Color::grey(0.93);
    EXPECT_LT(contrastRatio(white, lightGrey), 1.3);
    EXPECT_GE(contrastRatio(readableOn(white, lightGrey), lightGrey), 4.5);
    EXPECT_LT(contrastRatio(readableOn(white, lightGrey), lightGrey), 6) << "no darker than it needs";
    EXPECT_EQ(readableOn(white, Color::grey(0.13)), white);
    // Half-transparent text is judged as it is painted.
    EXPECT_EQ(readableOn(Color::grey(0.2, 0.5), white, 2.0), Color::grey(0.6));
    EXPECT_EQ(readableOn(Color::grey(0.5), Color::grey(0.5), 21), black) << "out of reach: the best there is";
}

TEST(ThemeStyle, AccentResolution) {
    auto clinical = ThemeStyle::of(Theme::clinical);
    EXPECT_EQ(clinical.resolvedAccent(std::nullopt)->hex(), "#3B5A7A");
    EXPECT_EQ(clinical.resolvedAccent("#112233")->hex(), "#112233");
    EXPECT_EQ(clinical.resolvedAccent("#112233", "#445566")->hex(), "#445566");
    EXPECT_EQ(clinical.resolvedAccent("#112233", "garbage")->hex(), "#112233");
    EXPECT_FALSE(ThemeStyle::of(Theme::monochrome).resolvedAccent("#112233", "#445566"));
}

}  // namespace
}  // namespace lectern
