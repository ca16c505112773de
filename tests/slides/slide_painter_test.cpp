// The painter is checked by reading pixels of slides drawn at 2 pixels per
// point; every picture is also saved under build/artifacts/slides/ for a
// person to look at.
#include "slides/slide_painter.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>

#include "model/deck_package.h"
#include "model/theme_style.h"
#include "slides/quick_look_theme.h"

namespace lectern {
namespace {

namespace fs = std::filesystem;

constexpr double W = SlidePainter::designWidth;
constexpr double H = SlidePainter::designHeight;

bool near(const Color& a, const Color& b, double tolerance = 0.03) {
    return std::abs(a.red - b.red) <= tolerance && std::abs(a.green - b.green) <= tolerance &&
           std::abs(a.blue - b.blue) <= tolerance;
}

// `top` seen through at `top.alpha` over `ground`.
Color over(const Color& top, const Color& ground) {
    auto mix = [&](double t, double g) { return t * top.alpha + g * (1 - top.alpha); };
    return {mix(top.red, ground.red), mix(top.green, ground.green), mix(top.blue, ground.blue), 1};
}

// A slide drawn at 1920 × 1080 pixels (or `pixelsPerPoint` times the
// design size), read back in design points, and saved as `saveAs`.png
// when given a name.
class Drawn {
public:
    Drawn(const Slide& slide, const SlidePaintOptions& options, const std::string& saveAs = "", double pixelsPerPoint = 2)
        : scale_(pixelsPerPoint),
          surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, int(W * scale_), int(H * scale_))) {
        cairo_t* cr = cairo_create(surface_);
        SlidePainter::paint(cr, slide, options, W * scale_, H * scale_);
        cairo_destroy(cr);
        cairo_surface_flush(surface_);
        if (saveAs.empty()) return;
        fs::path folder = fs::path(LECTERN_ARTIFACTS_DIR) / "slides";
        fs::create_directories(folder);
        cairo_surface_write_to_png(surface_, (folder / (saveAs + ".png")).c_str());
    }
    ~Drawn() { cairo_surface_destroy(surface_); }
    Drawn(const Drawn&) = delete;
    Drawn& operator=(const Drawn&) = delete;

    Color at(double x, double y) const { return pixel(static_cast<int>(x * scale_), static_cast<int>(y * scale_)); }
    // Pixels within a design rectangle that match.
    std::size_t count(const Rect& r, const std::function<bool(const Color&)>& match) const {
        std::size_t n = 0;
        for (int y = std::max(0, int(r.y * scale_)); y < std::min(int(H * scale_), int((r.y + r.height) * scale_)); ++y) {
            for (int x = std::max(0, int(r.x * scale_)); x < std::min(int(W * scale_), int((r.x + r.width) * scale_)); ++x) {
                if (match(pixel(x, y))) ++n;
            }
        }
        return n;
    }
    std::size_t count(const Rect& r, const Color& colour, double tolerance = 0.03) const {
        return count(r, [&](const Color& c) { return near(c, colour, tolerance); });
    }
    bool samePixels(const Drawn& other) const {
        return std::memcmp(cairo_image_surface_get_data(surface_), cairo_image_surface_get_data(other.surface_),
                           static_cast<std::size_t>(cairo_image_surface_get_stride(surface_)) * int(H * scale_)) == 0;
    }

private:
    Color pixel(int x, int y) const {
        const unsigned char* row = cairo_image_surface_get_data(surface_) + y * cairo_image_surface_get_stride(surface_);
        std::uint32_t v = reinterpret_cast<const std::uint32_t*>(row)[x];
        return {((v >> 16) & 255) / 255.0, ((v >> 8) & 255) / 255.0, (v & 255) / 255.0, 1};
    }
    double scale_;
    cairo_surface_t* surface_;
};

// A picture of one flat colour, encoded as PNG or JPEG by gdk-pixbuf.
SharedBytes pictureBytes(int width, int height, std::uint32_t rgb, const char* type = "png") {
    GdkPixbuf* pixbuf = gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, width, height);
    gdk_pixbuf_fill(pixbuf, (rgb << 8) | 0xFF);
    gchar* buffer = nullptr;
    gsize size = 0;
    EXPECT_TRUE(gdk_pixbuf_save_to_buffer(pixbuf, &buffer, &size, type, nullptr, nullptr));
    SharedBytes bytes(std::vector<std::uint8_t>(buffer, buffer + size));
    g_free(buffer);
    g_object_unref(pixbuf);
    return bytes;
}

const Color pictureColour{0x22 / 255.0, 0xAA / 255.0, 0x55 / 255.0, 1};

SlideBodyAttributes bold() {
    SlideBodyAttributes attributes;
    attributes.inlineIntent = inline_intent::stronglyEmphasized;
    return attributes;
}

Slide textSlide(SlideLayout layout) {
    Slide slide = Slide::make(layout);
    slide.eyebrow = "the eyebrow";
    slide.title = "A title for " + std::string(enumName(layout));
    slide.subtitle = "And a subtitle under it";
    SlideBodyAttributes command;
    command.block = SlideBodyBlockKind::command;
    slide.body.append("A first line of body text with ");
    slide.body.append("bold words", bold());
    slide.body.append("\n\u2022 a bullet item\n\t\u2022 an indented item\n");
    slide.body.append("npm run demo\n", command);
    slide.body.append("A closing line");
    return slide;
}

Slide mediaSlide(SlideLayout layout, SlidePosition position) {
    Slide slide = textSlide(layout);
    slide.position = position;
    slide.title = "Media " + std::string(enumName(position));
    slide.body = AttributedText("A line of text with ");
    slide.body.append("bold words", bold());
    slide.body.append("\n\u2022 and a bullet item");
    if (layout == SlideLayout::web) slide.url = "https://example.com/dashboard";
    if (layout == SlideLayout::image) slide.setImage(pictureBytes(400, 400, 0x22AA55), "square.png");
    return slide;
}

Slide cardsSlide(std::size_t count) {
    Slide slide = Slide::make(SlideLayout::decisions);
    slide.title = "Which way?";
    slide.showLinkSubtitles = true;
    for (std::size_t i = 0; i < count; ++i) {
        SlideLink link;
        link.label = "Option " + std::to_string(i + 1);
        link.subtitle = "Goes somewhere";
        link.filled = i % 2 == 0;
        link.targetId = "A1B2C3D4-E5F6-4789-ABCD-EF0123456789";
        slide.links.push_back(link);
    }
    return slide;
}

std::string name(Theme theme, const Slide& slide) {
    std::string text = std::string(enumName(theme)) + "-" + std::string(enumName(slide.layout));
    if (slide.layout == SlideLayout::web || slide.layout == SlideLayout::image) text += "-" + std::string(enumName(slide.position));
    return text;
}

TEST(SlidePainter, FitLetterboxesTheDesignSize) {
    auto wide = SlidePainter::fit(2000, 540);
    EXPECT_DOUBLE_EQ(wide.scale, 1);
    EXPECT_DOUBLE_EQ(wide.offsetX, 520);
    EXPECT_DOUBLE_EQ(wide.offsetY, 0);
    auto square = SlidePainter::fit(480, 480);
    EXPECT_DOUBLE_EQ(square.scale, 0.5);
    EXPECT_DOUBLE_EQ(square.offsetY, (480 - 270) / 2.0);
    EXPECT_DOUBLE_EQ(SlidePainter::fit(0, 100).scale, 0);
}

TEST(SlidePainter, EyebrowFallsBackToTheDeckTitleAndIsOnlyShownInCapitals) {
    Slide slide = Slide::make(SlideLayout::regular);
    SlidePaintOptions options;
    options.deckTitle = "Quarterly review";
    EXPECT_EQ(SlidePainter::displayedEyebrow(slide, options), "QUARTERLY REVIEW");
    slide.eyebrow = "why \u00e9t\u00e9 matters";
    EXPECT_EQ(SlidePainter::displayedEyebrow(slide, options), "WHY \u00c9T\u00c9 MATTERS");
    options.theme = Theme::editorial;  // the one theme with a mixed-case eyebrow
    EXPECT_EQ(SlidePainter::displayedEyebrow(slide, options), "why \u00e9t\u00e9 matters");
}

// Every layout, every position and every theme: the stage background in the
// corner, the theme's title colour, the media where the position puts it
// and the text beside, below or around it, never inside it.
TEST(SlidePainter, EveryLayoutPositionAndTheme) {
    for (Theme theme : allCases<Theme>()) {
        const ThemeStyle style = ThemeStyle::of(theme);
        SlidePaintOptions options;
        options.theme = theme;
        options.deckTitle = "Deck";
        for (SlideLayout layout : {SlideLayout::regular, SlideLayout::callout}) {
            Slide slide = textSlide(layout);
            const std::string what = name(theme, slide);
            Drawn drawn(slide, options, what);
            EXPECT_TRUE(near(drawn.at(2, 2), style.stageBackground)) << what;
            EXPECT_GT(drawn.count({0, 0, W, H}, style.primaryText), 500u) << what;
            EXPECT_GT(drawn.count({0, 0, W, H}, style.codeBlockBackground), 2000u) << what;
            EXPECT_EQ(drawn.count({0, H - 24, W, 24}, style.stageBackground), 1920u * 48) << what << ": bottom margin";
        }
        for (SlideLayout layout : {SlideLayout::web, SlideLayout::image}) {
            for (SlidePosition position : allCases<SlidePosition>()) {
                Slide slide = mediaSlide(layout, position);
                const std::string what = name(theme, slide);
                Drawn drawn(slide, options, what);
                auto geometry = SlidePainter::geometry(slide, options);
                ASSERT_TRUE(geometry.mediaArea) << what;
                EXPECT_EQ(geometry.mediaIsWeb, layout == SlideLayout::web);
                const Rect media = *geometry.mediaArea;
                auto ink = [&](const Rect& r) { return drawn.count(r, style.primaryText, 0.05); };
                EXPECT_EQ(ink(media), 0u) << what << ": text over the media";
                if (layout == SlideLayout::image) {
                    const Color veil = QuickLookTheme::of(theme).monochromeOverlay;
                    const Color seen = veil.alpha > 0 ? over(veil, pictureColour) : pictureColour;
                    EXPECT_TRUE(near(drawn.at(media.x + media.width / 2, media.y + media.height / 2), seen)) << what;
                }
                // The media's edge within 24 points short of its split, and the text on the other side.
                switch (position) {
                    case SlidePosition::full:
                        EXPECT_EQ(media, (Rect{0, 0, W, H}));
                        EXPECT_EQ(ink({0, 0, W, H}), 0u) << what;
                        break;
                    case SlidePosition::left:
                        EXPECT_NEAR(media.x + media.width, 0.62 * W - 12, 12) << what;
                        EXPECT_GT(media.width, 0.55 * W);
                        EXPECT_GT(ink({0.62 * W, 0, 0.38 * W, H}), 500u) << what;
                        break;
                    case SlidePosition::right:
                        EXPECT_NEAR(media.x, 0.38 * W + 12, 12) << what;
                        EXPECT_GT(media.width, 0.55 * W);
                        EXPECT_GT(ink({0, 0, 0.38 * W, H}), 500u) << what;
                        break;
                    case SlidePosition::topBottom:
                        EXPECT_NEAR(media.y + media.height, 0.6 * H - 12, 12) << what;
                        EXPECT_GT(media.width, 0.9 * W);
                        EXPECT_GT(ink({0, 0.6 * H, W, 0.4 * H}), 500u) << what;
                        break;
                    case SlidePosition::inText:  // in the text column, under the title and the body
                        EXPECT_GT(ink({0, 0, W, media.y}), 500u) << what;
                        EXPECT_TRUE(media.x >= 48 && media.x + media.width <= W - 48) << what;
                        EXPECT_LE(media.y + media.height, H - 24);
                        EXPECT_GT(media.height, 150);
                        break;
                }
                if (position != SlidePosition::full) {
                    EXPECT_TRUE(near(drawn.at(2, H - 2), style.stageBackground)) << what;
                }
            }
        }
    }
}

TEST(SlidePainter, PicturesFitFillOrShowTheBrokenSymbol) {
    const QuickLookTheme colours = QuickLookTheme::of(Theme::clinical);
    SlidePaintOptions options;
    Slide slide = mediaSlide(SlideLayout::image, SlidePosition::left);  // a square in a tall area
    const Rect media = *SlidePainter::geometry(slide, options).mediaArea;
    const double edgeX = media.x + 6, middleY = media.y + media.height / 2;
    EXPECT_TRUE(near(Drawn(slide, options).at(edgeX, middleY), colours.mediaBackground)) << "fit leaves bars beside it";
    slide.imageFill = true;
    EXPECT_TRUE(near(Drawn(slide, options).at(edgeX, middleY), pictureColour)) << "fill covers the area";
    slide.imageData = pictureBytes(300, 200, 0x22AA55, "jpeg");
    EXPECT_TRUE(near(Drawn(slide, options).at(media.x + media.width / 2, middleY), pictureColour, 0.05));

    // Bytes that are not a picture: the frames-and-slash symbol in the muted
    // colour, in the middle of the media, and nothing of a picture.
    Slide broken = Slide::make(SlideLayout::image);
    broken.imageData = SharedBytes::fromString("\x89PNG\r\n\x1a\n but not really");
    Drawn symbol(broken, options, "image-broken");
    const Color muted = ThemeStyle::of(Theme::clinical).mutedText;
    EXPECT_GT(symbol.count({W / 2 - 80, H / 2 - 80, 160, 160}, muted, 0.06), 400u);
    EXPECT_EQ(symbol.count({0, 0, W, H / 2 - 90}, muted, 0.06), 0u);
    // A slide with no picture at all shows a quieter placeholder, not the symbol.
    broken.removeImage();
    Drawn empty(broken, options, "image-empty");
    EXPECT_EQ(empty.count({W / 2 - 80, H / 2 - 80, 160, 160}, muted, 0.06), 0u);
}

TEST(SlidePainter, WebAreaIsAPlaceholderThePagesPictureOrLeftForTheLivePage) {
    Slide slide = mediaSlide(SlideLayout::web, SlidePosition::right);
    SlidePaintOptions options;
    const Rect media = *SlidePainter::geometry(slide, options).mediaArea;
    const Color background = QuickLookTheme::of(Theme::clinical).mediaBackground;
    const Rect inside{media.x + 16, media.y + 16, media.width - 32, media.height - 32};
    const std::size_t pixels = static_cast<std::size_t>(inside.width * 2) * static_cast<std::size_t>(inside.height * 2);
    Drawn placeholder(slide, options);
    EXPECT_LT(placeholder.count(inside, background, 0.01), pixels * 9 / 10) << "a browser bar and a page outline";
    // With a picture of the page, the page fills the area, cropped.
    options.webPicture = pictureBytes(400, 300, 0x22AA55, "png");
    EXPECT_GE(Drawn(slide, options).count(inside, pictureColour, 0.02), pixels - 8);
    options.drawWebPlaceholder = false;
    Drawn bare(slide, options);
    EXPECT_GE(bare.count(inside, background, 0.01), pixels - 8) << "only the media background under a live page";
}

TEST(SlidePainter, WebMessagesReadOnTheirBackgroundInEveryTheme) {
    for (Theme theme : allCases<Theme>()) {
        const QuickLookTheme colours = QuickLookTheme::of(theme);
        EXPECT_GE(contrastRatio(colours.webMessage, colours.mediaBackground), 4.5) << enumName(theme);
        EXPECT_GE(contrastRatio(colours.webMessageDetail, colours.mediaBackground), 4.5) << enumName(theme);
    }
}

TEST(SlidePainter, CardsInAGridInLinkOrder) {
    Slide slide = cardsSlide(9);
    slide.links[2].fillHex = "#047857";
    for (Theme theme : allCases<Theme>()) {
        SlidePaintOptions options;
        options.theme = theme;
        options.deckAccentHex = "#B91C1C";
        Drawn drawn(slide, options, std::string(enumName(theme)) + "-cards-9");
        auto cards = SlidePainter::geometry(slide, options).cards;
        ASSERT_EQ(cards.size(), 9u);
        for (std::size_t i = 0; i < 9; ++i) {
            EXPECT_EQ(cards[i].first, slide.links[i].id);
            const Rect& r = cards[i].second;
            if (i % 3 > 0) {
                EXPECT_GT(r.x, cards[i - 1].second.x + cards[i - 1].second.width) << i;
                EXPECT_EQ(r.y, cards[i - 1].second.y) << i;
            }
            if (i >= 3) { EXPECT_GT(r.y, cards[i - 3].second.y + cards[i - 3].second.height) << i; }
            EXPECT_LE(r.y + r.height, H - 24);
        }
        const Color accent = *Color::fromHex("#B91C1C");
        const Rect& first = cards[0].second;
        const Color inFirst = drawn.at(first.x + first.width - 8, first.y + first.height - 8);
        if (theme == Theme::monochrome) {
            EXPECT_TRUE(near(inFirst, ThemeStyle::of(theme).primaryText)) << "filled in the text colour";
            // No accent anywhere: not the deck's, nor a card's own colour.
            EXPECT_EQ(drawn.count({0, 0, W, H}, [&](const Color& c) { return c.red > c.green + 0.15; }), 0u);
            EXPECT_EQ(drawn.count({0, 0, W, H}, [&](const Color& c) { return c.green > c.red + 0.15; }), 0u);
        } else {
            EXPECT_TRUE(near(inFirst, accent)) << enumName(theme);
            const Rect& third = cards[2].second;
            EXPECT_TRUE(near(drawn.at(third.x + third.width - 8, third.y + third.height - 8), *Color::fromHex("#047857")));
            // An outlined card: the card colour over the stage inside, its rim in the accent.
            const Rect& second = cards[1].second;
            const Color card = over(QuickLookTheme::of(theme).card, ThemeStyle::of(theme).stageBackground);
            EXPECT_TRUE(near(drawn.at(second.x + second.width - 8, second.y + second.height - 8), card, 0.02));
        }
    }
}

TEST(SlidePainter, CardsMakeRoomForTheHeadingAndShowSubtitlesOnlyWhenAsked) {
    SlidePaintOptions options;
    const Color muted = ThemeStyle::of(Theme::clinical).mutedText;
    const Color primary = ThemeStyle::of(Theme::clinical).primaryText;
    Slide slide = cardsSlide(4);
    for (auto& link : slide.links) link.filled = false;
    const double shortTop = SlidePainter::geometry(slide, options).cards[0].second.y;
    slide.title = "A much longer question that the audience has to read before it picks a card";
    slide.subtitle = "With a subtitle as well";
    Drawn drawn(slide, options, "clinical-cards-long-title");
    auto cards = SlidePainter::geometry(slide, options).cards;
    EXPECT_GT(cards[0].second.y, shortTop + 40);
    EXPECT_GT(drawn.count({0, 0, W, cards[0].second.y}, primary), 2000u) << "the title above the cards";
    EXPECT_LE(cards[3].second.y + cards[3].second.height, H - 24);

    auto subtitleInk = [&](const Drawn& d) {
        std::size_t n = 0;
        for (const auto& [id, r] : cards) n += d.count(r, muted, 0.04);
        return n;
    };
    // In reveal mode at index 0 only the first card shows; the others keep
    // their places, invisible.
    Slide revealing = cardsSlide(4);
    revealing.reveal = RevealMode::reveal;
    SlidePaintOptions step0;
    step0.reveal = {RevealMode::reveal, 0};
    Drawn first(revealing, step0, "clinical-cards-reveal-first");
    auto places = SlidePainter::geometry(revealing, step0).cards;
    EXPECT_EQ(places, SlidePainter::geometry(revealing, options).cards);
    const Color stage = ThemeStyle::of(Theme::clinical).stageBackground;
    const Rect& one = places[0].second;
    EXPECT_FALSE(near(first.at(one.x + one.width / 2, one.y + one.height - 6), stage));
    for (std::size_t i = 1; i < 4; ++i) {
        const Rect& r = places[i].second;
        const Rect around{r.x - 2, r.y - 2, r.width + 4, r.height + 12};
        EXPECT_EQ(first.count(around, stage, 0.005), first.count(around, [](const Color&) { return true; }))
            << "card " << i;
    }

    const std::size_t shown = subtitleInk(drawn);
    slide.showLinkSubtitles = false;
    Drawn hidden(slide, options);
    EXPECT_LT(subtitleInk(hidden) * 4, shown) << "only the edges of labels and arrows are grey";
}

TEST(SlidePainter, RevealedStepsKeepTheirPlaces) {
    Slide slide = Slide::make(SlideLayout::regular);
    slide.title = "Three steps";
    slide.body = AttributedText("First point\nSecond point\n\nThird point after a gap");
    slide.reveal = RevealMode::reveal;
    SlidePaintOptions options;
    Drawn whole(slide, options);
    options.reveal = {RevealMode::reveal, 2};
    EXPECT_TRUE(Drawn(slide, options).samePixels(whole)) << "the last step shows the slide as in mode all";

    options.reveal.index = 0;
    Drawn firstOnly(slide, options, "clinical-reveal-first-step");
    const Color background = ThemeStyle::of(Theme::clinical).stageBackground;
    // Rows that hold anything but the background.
    auto inkRows = [&](const Drawn& d) {
        std::vector<bool> rows;
        for (int y = 0; y < 540; ++y) {
            rows.push_back(d.count({0, double(y), W, 1}, [&](const Color& c) { return !near(c, background, 0.02); }) > 0);
        }
        return rows;
    };
    auto wholeRows = inkRows(whole), firstRows = inkRows(firstOnly);
    for (int y = 0; y < 540; ++y) EXPECT_TRUE(!firstRows[y] || wholeRows[y]) << "row " << y << " moved";
    EXPECT_LT(std::count(firstRows.begin(), firstRows.end(), true), std::count(wholeRows.begin(), wholeRows.end(), true) - 20);

    // Half way through its animation a step is drawn, lighter and lower.
    options.stepAppearance = {1, 0.5, 0};
    EXPECT_NE(inkRows(Drawn(slide, options)), firstRows);
}

TEST(SlidePainter, BodyListsHangAndLongBodiesShrinkToFit) {
    Slide slide = Slide::make(SlideLayout::regular);
    slide.body = AttributedText(
        "\u2022 A bullet item long enough to wrap onto a second line of the slide, and then on a little further\n"
        "\t\u2022 An indented item");
    SlidePaintOptions options;
    Drawn drawn(slide, options, "clinical-hanging-bullets");
    const Color primary = ThemeStyle::of(Theme::clinical).primaryText;
    // Lines of ink from top to bottom, each with its leftmost inked point.
    std::vector<double> lefts;
    bool inLine = false;
    for (double y = 0; y < H; y += 0.5) {
        bool ink = drawn.count({0, y, W, 0.5}, primary, 0.2) > 0;
        if (ink && !inLine) lefts.push_back(W);
        for (double x = 0; ink && x < lefts.back(); x += 0.5) {
            if (near(drawn.at(x, y), primary, 0.2)) lefts.back() = x;  // which also ends the loop
        }
        inLine = ink;
    }
    ASSERT_EQ(lefts.size(), 3u);
    EXPECT_GT(lefts[1], lefts[0] + 6) << "the wrapped line lines up after the bullet";
    EXPECT_GT(lefts[2], lefts[0] + 20) << "a leading tab indents";

    Slide crowded = Slide::make(SlideLayout::regular);
    crowded.title = "Everything at once";
    for (int i = 0; i < 13; ++i) crowded.body.append("\u2022 Line " + std::to_string(i + 1) + " of a long body\n");
    crowded.body.append("The very last line");
    Drawn shrunk(crowded, options, "clinical-crowded-body");
    EXPECT_EQ(shrunk.count({0, H - 40, W, 40}, primary, 0.3), 0u) << "the body stays above the bottom margin";
    EXPECT_GT(shrunk.count({0, H - 110, W, 70}, primary, 0.3), 50u) << "down to its last line";
}

// The example deck in every theme; in the first, an overview tile is the
// stage slide made small: text wraps at the same words at every size, so a
// quarter-size drawing matches the full-size one averaged down, up to
// anti-aliasing.
TEST(SlidePainter, WelcomeDeckInEveryThemeAndAsSmallTiles) {
    auto deck = DeckPackage::read(fs::path(LECTERN_EXAMPLES_DIR) / "Welcome.lectern");
    ASSERT_TRUE(deck.ok());
    for (Theme theme : allCases<Theme>()) {
        SlidePaintOptions options;
        options.theme = theme;
        options.deckTitle = deck->title.value_or("");
        for (std::size_t i = 0; i < deck->slides.size(); ++i) {
            const Slide& slide = deck->slides[i];
            Drawn large(slide, options, std::string(enumName(theme)) + "-welcome-" + std::to_string(i + 1));
            if (slide.position != SlidePosition::full || (slide.layout != SlideLayout::image && slide.layout != SlideLayout::web)) {
                EXPECT_TRUE(near(large.at(2, H - 2), ThemeStyle::of(theme).stageBackground)) << i + 1;
            }
            if (theme != Theme::clinical) continue;
            Drawn small(slide, options, "", 0.5);
            double difference = 0;
            for (double y = 0; y < H; y += 2) {
                for (double x = 0; x < W; x += 2) {
                    Color mine = small.at(x, y), sum{0, 0, 0, 1};
                    for (double dy = 0; dy < 2; dy += 0.5) {
                        for (double dx = 0; dx < 2; dx += 0.5) {
                            Color c = large.at(x + dx, y + dy);
                            sum = {sum.red + c.red / 16, sum.green + c.green / 16, sum.blue + c.blue / 16, 1};
                        }
                    }
                    difference += std::abs(mine.red - sum.red) + std::abs(mine.green - sum.green) + std::abs(mine.blue - sum.blue);
                }
            }
            EXPECT_LT(difference / (480 * 270 * 3), 0.01) << slide.title;
        }
    }
}

}  // namespace
}  // namespace lectern
