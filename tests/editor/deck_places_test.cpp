#include "editor/deck_places.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support/deck_fixtures.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

namespace fs = std::filesystem;
using testing::readText;
using testing::TempDir;
using testing::writeText;

DeckPlace place(int width, int height, std::optional<Uuid> slide = Uuid::random(), bool maximized = false) {
    return DeckPlace{slide, width, height, maximized, {}};
}

TEST(DeckPlaces, PlacesComeBackFromTheFileUnderTheDecksRealPath) {
    TempDir dir;
    fs::create_directories(dir / "Talks" / "Intro.lectern");
    fs::create_directory_symlink(dir / "Talks", dir / "Linked");
    const fs::path file = dir / "state" / "lectern" / "places.json";

    DeckPlaces places(file);
    EXPECT_TRUE(places.save());
    EXPECT_FALSE(fs::exists(file)) << "nothing to write, nothing written";

    DeckPlace intro = place(1200, 800);
    intro.presentOn = "HDMI-1";  // the monitor chosen with "Present On"
    const DeckPlace draftLike = place(900, 700, std::nullopt, true);
    places.remember(dir / "Talks" / "Intro.lectern", intro);
    places.remember(dir / "Gone.lectern", draftLike);  // a deck need not exist to be remembered
    ASSERT_TRUE(places.save());

    DeckPlaces again(file);
    EXPECT_EQ(again.find(dir / "Talks" / "Intro.lectern"), intro);
    EXPECT_EQ(again.find(dir / "Linked" / "Intro.lectern/"), intro) << "a link and a trailing slash name the same deck";
    EXPECT_EQ(again.find(dir / "Talks" / ".." / "Talks" / "Intro.lectern"), intro);
    EXPECT_EQ(again.find(dir / "Gone.lectern"), draftLike);
    EXPECT_EQ(again.find(dir / "Other.lectern"), std::nullopt);
    EXPECT_EQ(again.packages().front(), dir / "Gone.lectern") << "the last one left comes first";
}

TEST(DeckPlaces, KeepsTheHundredDecksLeftMostRecently) {
    TempDir dir;
    DeckPlaces places(dir / "places.json");
    auto deck = [&](int n) { return dir / ("Deck " + std::to_string(n) + ".lectern"); };
    for (int n = 0; n < 101; ++n) {
        places.remember(deck(n), place(800 + n, 600));
        if (n == 50) places.remember(deck(0), place(640, 480));  // left again: the oldest is now deck 1
    }
    ASSERT_TRUE(places.save());

    DeckPlaces again(dir / "places.json");
    EXPECT_EQ(again.packages().size(), DeckPlaces::capacity);
    EXPECT_EQ(again.find(deck(1)), std::nullopt);
    EXPECT_EQ(again.find(deck(0))->width, 640);
    EXPECT_EQ(again.find(deck(100))->width, 900);
    EXPECT_EQ(again.packages().front(), deck(100));
}

TEST(DeckPlaces, ADamagedFileLosesOnlyWhatCannotBeRead) {
    TempDir dir;
    const fs::path file = dir / "places.json";
    for (const char* text : {"", "{", "[1, 2]", "{\"decks\": 7}", "\x01\x02\xff"}) {
        writeText(file, text);
        EXPECT_TRUE(DeckPlaces(file).packages().empty()) << text;
    }

    const Uuid slide = Uuid::random();
    nlohmann::json decks = nlohmann::json::array({
        "not an entry",
        {{"width", 800}, {"height", 600}},                                   // no package
        {{"package", "relative/Deck.lectern"}},                              // not written by us
        {{"package", "/talks/Sizes.lectern"}, {"width", 5}, {"height", 600}, {"slide", "nonsense"}},
        {{"package", "/talks/Good.lectern"}, {"width", 1000}, {"height", 700}, {"slide", slide.string()},
         {"maximized", "yes"}},
        {{"package", "/talks/Good.lectern"}, {"width", 300}, {"height", 300}},  // the first one counts
    });
    writeText(file, nlohmann::json{{"version", 99}, {"decks", decks}}.dump());
    DeckPlaces places(file);
    EXPECT_EQ(places.packages(), (std::vector<fs::path>{"/talks/Sizes.lectern", "/talks/Good.lectern"}));
    EXPECT_EQ(places.find("/talks/Sizes.lectern"), (DeckPlace{std::nullopt, 0, 0, false, {}}));
    EXPECT_EQ(places.find("/talks/Good.lectern"), (DeckPlace{slide, 1000, 700, false, {}}));

    // Remembering writes a whole new file over the damaged one.
    places.remember("/talks/New.lectern", place(1024, 768));
    ASSERT_TRUE(places.save());
    EXPECT_EQ(DeckPlaces(file).packages().size(), 3u);
    EXPECT_NE(readText(file).find("/talks/New.lectern"), std::string::npos);
}

}  // namespace
}  // namespace lectern
