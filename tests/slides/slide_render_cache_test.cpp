#include "slides/slide_render_cache.h"

#include <gtest/gtest.h>

#include <regex>

#include "model/deck_package.h"
#include "slides/deck_previews.h"
#include "support/deck_fixtures.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

namespace fs = std::filesystem;
using testing::listFolder;
using testing::readText;
using testing::TempDir;

Deck threeSlides() {
    Deck deck;
    deck.title = "Cache";
    for (int i = 0; i < 3; ++i) {
        deck.slides.push_back(Slide::make(SlideLayout::regular));
        deck.slides.back().title = "Slide " + std::to_string(i + 1);
    }
    return deck;
}

TEST(SlideRenderCache, RedrawsOnlyWhatChanged) {
    auto& cache = SlideRenderCache::shared();
    cache.clear();
    Deck deck = threeSlides();
    auto draws = [&] { return cache.drawCount(); };
    std::size_t start = draws();
    makeDeckPreviews(deck);
    makeDeckPreviews(deck);
    EXPECT_EQ(draws() - start, 1u);  // saving twice draws the first slide once

    deck.accentHex = "#B91C1C";
    makeDeckPreviews(deck);
    EXPECT_EQ(draws() - start, 2u);  // same key text, different key
    deck.slides[0].notes = "any field of the first slide";
    makeDeckPreviews(deck);
    EXPECT_EQ(draws() - start, 3u);
    deck.slides.push_back(Slide::make(SlideLayout::callout));  // the total is part of the key
    makeDeckPreviews(deck);
    EXPECT_EQ(draws() - start, 4u);
    deck.slides.insert(deck.slides.begin() + 1, Slide::make(SlideLayout::regular));  // anywhere
    makeDeckPreviews(deck);
    EXPECT_EQ(draws() - start, 5u);
    deck.title = "Renamed";  // an empty eyebrow shows the deck title
    makeDeckPreviews(deck);
    EXPECT_EQ(draws() - start, 6u);
    makeDeckPreviews(deck);
    EXPECT_EQ(draws() - start, 6u);
    EXPECT_EQ(cache.count(), 1u);  // one entry per key text
    EXPECT_EQ(cache.totalCost(), 8294400u);

    SlideRenderCache::RenderKey key{deck.slides[0], Theme::dark, std::nullopt, 0, 4, 960, 540, ""};
    EXPECT_TRUE(std::regex_match(key.text(), std::regex("[0-9A-F-]{36}-960\\.0x540\\.0")));
}

TEST(SlideRenderCache, CostLimitEvictsTheOldest) {
    SlideRenderCache cache;
    Deck deck;
    for (int i = 0; i < 34; ++i) deck.slides.push_back(Slide::make(SlideLayout::regular));
    for (const auto& slide : deck.slides) cache.image({slide, Theme::clinical, std::nullopt, 0, 34, 960, 540, ""});
    EXPECT_LE(cache.totalCost(), SlideRenderCache::costLimit);
    EXPECT_EQ(cache.totalCost(), 32u * 8294400u);  // 32 thumbnails fit
    std::size_t before = cache.drawCount();
    cache.image({deck.slides.back(), Theme::clinical, std::nullopt, 0, 34, 960, 540, ""});
    EXPECT_EQ(cache.drawCount(), before);  // the newest stayed
    cache.image({deck.slides.front(), Theme::clinical, std::nullopt, 0, 34, 960, 540, ""});
    EXPECT_EQ(cache.drawCount(), before + 1);  // the oldest went
}

TEST(DeckPreviews, QuickLookFolderAndPdf) {
    TempDir dir;
    Deck deck = threeSlides();
    ASSERT_TRUE(DeckPackage::write(deck, dir / "P.lectern", std::nullopt, makeDeckPreviews).ok());
    EXPECT_EQ(listFolder(dir / "P.lectern" / "QuickLook"), (std::vector<std::string>{"Preview.pdf", "Thumbnail.png"}));
    std::string png = readText(dir / "P.lectern" / "QuickLook" / "Thumbnail.png");
    ASSERT_GT(png.size(), 24u);
    EXPECT_EQ(png.substr(1, 3), "PNG");
    // 1920 x 1080 pixels: width and height in the IHDR chunk.
    auto be32 = [&](std::size_t at) {
        return (std::uint32_t(std::uint8_t(png[at])) << 24) | (std::uint32_t(std::uint8_t(png[at + 1])) << 16) |
               (std::uint32_t(std::uint8_t(png[at + 2])) << 8) | std::uint32_t(std::uint8_t(png[at + 3]));
    };
    EXPECT_EQ(be32(16), 1920u);
    EXPECT_EQ(be32(20), 1080u);

    std::string pdf = readText(dir / "P.lectern" / "QuickLook" / "Preview.pdf");
    EXPECT_EQ(pdf.rfind("%PDF", 0), 0u);
    std::regex page("/Type /Page\\b");
    EXPECT_EQ(std::distance(std::sregex_iterator(pdf.begin(), pdf.end(), page), std::sregex_iterator()), 3);
    std::regex box("/MediaBox \\[ ?0 0 960 540 ?\\]");
    EXPECT_EQ(std::distance(std::sregex_iterator(pdf.begin(), pdf.end(), box), std::sregex_iterator()), 3);

    Deck empty;
    ASSERT_TRUE(DeckPackage::write(empty, dir / "E.lectern", std::nullopt, makeDeckPreviews).ok());
    EXPECT_TRUE(fs::is_directory(dir / "E.lectern" / "QuickLook"));
    EXPECT_EQ(listFolder(dir / "E.lectern" / "QuickLook"), std::vector<std::string>{});
    EXPECT_FALSE(exportPdf(empty, dir / "empty.pdf").ok());
}

}  // namespace
}  // namespace lectern
