#include "model/package_location.h"

#include <gtest/gtest.h>

#include "support/deck_fixtures.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

namespace fs = std::filesystem;

TEST(PackageLocation, FoldersAndTheirDeckJsonNameTheDeck) {
    testing::TempDir dir;
    const fs::path package = dir / "Talk.lectern";
    fs::create_directories(package);
    testing::writeText(package / "deck.json", "{}");
    testing::writeText(dir / "notes.txt", "hello");
    fs::create_directory(dir / "deck.json.d");

    EXPECT_EQ(deckPackageFor(package), package);
    EXPECT_EQ(deckPackageFor(package.string() + "/"), package);
    EXPECT_EQ(deckPackageFor(package / "deck.json"), package);
    EXPECT_EQ(deckPackageFor(dir / "deck.json.d"), dir / "deck.json.d");

    EXPECT_EQ(deckPackageFor(dir / "notes.txt"), std::nullopt);
    EXPECT_EQ(deckPackageFor(package / "media" / "deck.json"), std::nullopt) << "missing";
    EXPECT_EQ(deckPackageFor(dir / "Missing.lectern"), std::nullopt);
    EXPECT_EQ(deckPackageFor(""), std::nullopt);
}

}  // namespace
}  // namespace lectern
