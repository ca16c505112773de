#include "web/browser_profile_edits.h"

#include <gtest/gtest.h>

namespace lectern {
namespace {

TEST(BrowserProfileEdits, AddRenameDeleteAndTitles) {
    Deck deck;
    Uuid work = BrowserProfileEdits::add(deck);
    Uuid home = BrowserProfileEdits::add(deck);
    EXPECT_EQ(deck.browserProfiles, (std::vector<BrowserProfile>{{work, ""}, {home, ""}}));
    EXPECT_NE(work, home);
    // An empty name is shown as untitled but stays empty in the deck.
    EXPECT_EQ(BrowserProfileEdits::deletionTitle(deck.browserProfiles[1]),
              "Delete profile \u201cUntitled profile\u201d?");
    EXPECT_TRUE(BrowserProfileEdits::rename(deck, work, "Work"));
    EXPECT_FALSE(BrowserProfileEdits::rename(deck, Uuid::random(), "x"));
    EXPECT_EQ(BrowserProfileEdits::deletionTitle(deck.browserProfiles[0]), "Delete profile \u201cWork\u201d?");

    deck.slides.resize(3);
    deck.slides[0].browserProfileId = work;
    deck.slides[1].browserProfileId = home;
    deck.slides[2].browserProfileId = work;
    EXPECT_EQ(BrowserProfileEdits::remove(deck, work), (BrowserProfile{work, "Work"}));
    EXPECT_EQ(deck.browserProfiles, (std::vector<BrowserProfile>{{home, ""}}));
    EXPECT_EQ(deck.slides[0].browserProfileId, std::nullopt);
    EXPECT_EQ(deck.slides[1].browserProfileId, home);
    EXPECT_EQ(deck.slides[2].browserProfileId, std::nullopt);

    Deck before = deck;
    EXPECT_EQ(BrowserProfileEdits::remove(deck, work), std::nullopt);
    EXPECT_EQ(deck, before);
}

}  // namespace
}  // namespace lectern
