#include "slides/slide_painter.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "model/deck_package.h"
#include "model/theme_style.h"
#include "slides/quick_look_theme.h"

namespace lectern {
namespace {

namespace fs = std::filesystem;

// A drawn slide at 2 pixels per point, kept for a person to look at.
struct Picture {
    cairo_surface_t* surface;
    Picture(const Slide& slide, const SlidePaintOptions& options, double width = 1920, double height = 1080)
        : surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(width), static_cast<int>(height))) {
        cairo_t* cr = cairo_create(surface);
        SlidePainter::paint(cr, slide, options, width, height);
        cairo_destroy(cr);
        cairo_surface_flush(surface);
    }
    ~Picture() { cairo_surface_destroy(surface); }
    void save(const std::string& name) const {
        // build/artifacts/slides, beside the folder of the test program.
        fs::path folder = fs::read_symlink("/proc/self/exe").parent_path().parent_path() / "artifacts" / "slides";
        fs::create_directories(folder);
        cairo_surface_write_to_png(surface, (folder / (name + ".png")).c_str());
    }
    // The colour at a design point.
    Color at(double x, double y) const {
        int px = static_cast<int>(x * 2), py = static_cast<int>(y * 2);
        auto* row = cairo_image_surface_get_data(surface) + py * cairo_image_surface_get_stride(surface);
        std::uint32_t v = reinterpret_cast<std::uint32_t*>(row)[px];
        return {((v >> 16) & 255) / 255.0, ((v >> 8) & 255) / 255.0, (v & 255) / 255.0, 1};
    }
};

bool near(const Color& a, const Color& b, double tolerance = 0.02) {
    return std::abs(a.red - b.red) <= tolerance && std::abs(a.green - b.green) <= tolerance &&
           std::abs(a.blue - b.blue) <= tolerance;
}

TEST(SlidePainter, WelcomeDeckInEveryTheme) {
    auto deck = DeckPackage::read(fs::path(LECTERN_EXAMPLES_DIR) / "Welcome.lectern");
    ASSERT_TRUE(deck.ok());
    for (Theme theme : allCases<Theme>()) {
        SlidePaintOptions options;
        options.theme = theme;
        options.deckTitle = deck->title.value_or("");
        for (std::size_t i = 0; i < deck->slides.size(); ++i) {
            Picture picture(deck->slides[i], options);
            picture.save(std::string(enumName(theme)) + "-welcome-" + std::to_string(i + 1));
            EXPECT_TRUE(near(picture.at(2, 2), ThemeStyle::of(theme).stageBackground) || deck->slides[i].position == SlidePosition::full)
                << enumName(theme) << " slide " << i + 1;
        }
    }
}

}  // namespace
}  // namespace lectern

namespace lectern {
namespace {

Slide mediaSlide(SlideLayout layout, SlidePosition position) {
    Slide slide = Slide::make(layout);
    slide.position = position;
    slide.title = "Media " + std::string(enumName(position));
    slide.body = AttributedText("A line beside the media\n\u2022 and an item");
    if (layout == SlideLayout::web) slide.url = "https://example.com/dashboard";
    return slide;
}

TEST(SlidePainter, MediaSitsWhereItsPositionSays) {
    SlidePaintOptions options;
    for (SlideLayout layout : {SlideLayout::web, SlideLayout::image}) {
        for (SlidePosition position : allCases<SlidePosition>()) {
            Slide slide = mediaSlide(layout, position);
            Picture picture(slide, options);
            picture.save(std::string(enumName(layout)) + "-" + std::string(enumName(position)));
            auto area = SlidePainter::geometry(slide, options).mediaArea;
            ASSERT_TRUE(area);
            Color media = QuickLookTheme::of(options.theme).mediaBackground;
            // The middle of the media area shows the media background.
            EXPECT_TRUE(near(picture.at(area->x + area->width / 2, area->y + area->height * 0.75), media, 0.03))
                << enumName(layout) << " " << enumName(position);
            switch (position) {
                case SlidePosition::full: EXPECT_EQ(*area, (Rect{0, 0, 960, 540})); break;
                case SlidePosition::left: EXPECT_LT(area->x + area->width, 960 * 0.62); break;
                case SlidePosition::right: EXPECT_GT(area->x, 960 * 0.38); break;
                case SlidePosition::topBottom: EXPECT_LT(area->y + area->height, 540 * 0.6); break;
                case SlidePosition::inText: EXPECT_GT(area->y, 100); break;
            }
            if (position == SlidePosition::left || position == SlidePosition::right) {
                EXPECT_GT(area->width, 960 * 0.55);
            }
        }
    }
}

TEST(SlidePainter, ThemesCardsCodeAndPictures) {
    Slide cards = Slide::make(SlideLayout::decisions);
    cards.title = "Which way?";
    cards.showLinkSubtitles = true;
    for (int i = 0; i < 9; ++i) {
        SlideLink link;
        link.label = "Option " + std::to_string(i + 1);
        link.subtitle = "Goes somewhere";
        link.filled = i % 2 == 0;
        cards.links.push_back(link);
    }
    for (Theme theme : allCases<Theme>()) {
        SlidePaintOptions options;
        options.theme = theme;
        options.deckAccentHex = "#B91C1C";
        Picture picture(cards, options);
        picture.save(std::string(enumName(theme)) + "-cards");
        auto geometry = SlidePainter::geometry(cards, options);
        ASSERT_EQ(geometry.cards.size(), 9u);
        const Rect& first = geometry.cards[0].second;  // filled
        Color inside = picture.at(first.x + first.width - 6, first.y + first.height - 6);
        if (theme == Theme::monochrome) {
            EXPECT_FALSE(near(inside, *Color::fromHex("#B91C1C"), 0.1)) << "monochrome never shows the accent";
        } else {
            EXPECT_TRUE(near(inside, *Color::fromHex("#B91C1C"), 0.03)) << enumName(theme);
        }
    }

    // In reveal mode at index 0 only the first card shows; the others keep their place.
    SlidePaintOptions reveal;
    cards.reveal = RevealMode::reveal;
    reveal.reveal = {RevealMode::reveal, 0};
    Picture first(cards, reveal);
    auto geometry = SlidePainter::geometry(cards, reveal);
    const Rect& second = geometry.cards[2].second;  // filled, not yet revealed
    EXPECT_TRUE(near(first.at(second.x + second.width - 6, second.y + second.height - 6),
                     ThemeStyle::of(Theme::clinical).stageBackground));

    Slide code = Slide::make(SlideLayout::regular);
    SlideBodyAttributes command;
    command.block = SlideBodyBlockKind::command;
    code.body.append("npm run demo", command);
    for (Theme theme : {Theme::clinical, Theme::dark}) {
        SlidePaintOptions options;
        options.theme = theme;
        Picture picture(code, options);
        EXPECT_TRUE(near(picture.at(64 + 700, 100), ThemeStyle::of(theme).codeBlockBackground)) << enumName(theme);
    }

    Slide broken = Slide::make(SlideLayout::image);
    broken.imageData = SharedBytes::fromString("not an image at all");
    SlidePaintOptions options;
    Picture picture(broken, options);
    picture.save("image-broken");
    // The symbol's slash crosses the middle of the slide in the muted colour.
    bool symbol = false;
    for (double d = -6; d <= 6 && !symbol; d += 0.5) symbol = near(picture.at(480 + d, 270), ThemeStyle::of(Theme::clinical).mutedText, 0.08);
    EXPECT_TRUE(symbol);
}

}  // namespace
}  // namespace lectern
