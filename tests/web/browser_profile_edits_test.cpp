#include "web/browser_profile_edits.h"

#include <gtest/gtest.h>

namespace lectern {
namespace {

TEST(BrowserProfileEdits, AddRenameAndTitles) {
    Deck deck;
    Uuid first = BrowserProfileEdits::add(deck);
    Uuid second = BrowserProfileEdits::add(deck);
    ASSERT_EQ(deck.browserProfiles.size(), 2u);
    EXPECT_EQ(deck.browserProfiles[0].id, first);  // in the order of creation
    EXPECT_EQ(deck.browserProfiles[1].id, second);
    EXPECT_NE(first, second);
    EXPECT_EQ(deck.browserProfiles[1].name, "");

    // An empty name is shown as untitled but stays empty in the deck.
    EXPECT_EQ(BrowserProfileEdits::displayName(deck.browserProfiles[1]), "Untitled profile");
    EXPECT_EQ(BrowserProfileEdits::deletionTitle(deck.browserProfiles[1]),
              "Delete profile \u201cUntitled profile\u201d?");

    EXPECT_TRUE(BrowserProfileEdits::rename(deck, second, " Sales "));
    EXPECT_FALSE(BrowserProfileEdits::rename(deck, Uuid::random(), "x"));
    EXPECT_EQ(deck.browserProfiles[1].name, " Sales ");
    EXPECT_EQ(deck.browserProfiles[0].name, "");
    EXPECT_EQ(BrowserProfileEdits::deletionTitle(deck.browserProfiles[1]), "Delete profile \u201c Sales \u201d?");
    EXPECT_STREQ(BrowserProfileEdits::deletionMessage, "Its saved logins and site data will be erased.");
}

TEST(BrowserProfileEdits, DeletingAProfileSendsItsSlidesToTheSharedSession) {
    Deck deck;
    Uuid work = BrowserProfileEdits::add(deck);
    Uuid home = BrowserProfileEdits::add(deck);
    BrowserProfileEdits::rename(deck, work, "Work");
    deck.slides.resize(4);
    deck.slides[0].browserProfileId = work;
    deck.slides[1].browserProfileId = home;
    deck.slides[3].browserProfileId = work;

    auto removed = BrowserProfileEdits::remove(deck, work);
    ASSERT_TRUE(removed);
    EXPECT_EQ(*removed, (BrowserProfile{work, "Work"}));
    EXPECT_EQ(deck.browserProfiles, (std::vector<BrowserProfile>{{home, ""}}));
    EXPECT_EQ(deck.slides[0].browserProfileId, std::nullopt);
    EXPECT_EQ(deck.slides[1].browserProfileId, home);
    EXPECT_EQ(deck.slides[2].browserProfileId, std::nullopt);
    EXPECT_EQ(deck.slides[3].browserProfileId, std::nullopt);

    // An id the deck no longer has changes nothing.
    Deck before = deck;
    EXPECT_EQ(BrowserProfileEdits::remove(deck, work), std::nullopt);
    EXPECT_EQ(deck, before);
}

}  // namespace
}  // namespace lectern
