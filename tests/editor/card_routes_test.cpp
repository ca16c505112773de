#include "editor/card_routes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

namespace lectern {
namespace {

std::vector<Slide> slides(std::initializer_list<const char*> titles) {
    std::vector<Slide> out;
    for (const char* title : titles) {
        Slide slide = Slide::make(SlideLayout::regular);
        slide.title = title;
        out.push_back(slide);
    }
    return out;
}

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

TEST(CardRoutes, MenuListsNoTargetThenEverySlideByTitle) {
    auto deck = slides({"Intro", "", "  ", "Intro"});
    auto entries = CardRoutes::entries(deck);
    ASSERT_EQ(entries.size(), 5u);
    EXPECT_EQ(entries[0], (RouteEntry{"No target", ""}));
    EXPECT_EQ(entries[1], (RouteEntry{"Intro", deck[0].id.string()}));
    // Empty and blank titles; a repeated title keeps its own slide.
    EXPECT_EQ(entries[2].title, "Untitled slide");
    EXPECT_EQ(entries[3].title, "Untitled slide");
    EXPECT_EQ(entries[4], (RouteEntry{"Intro", deck[3].id.string()}));
}

TEST(CardRoutes, TargetsAreFoundMarkedOrMissing) {
    auto deck = slides({"Intro", ""});
    std::string intro = deck[0].id.string();

    EXPECT_EQ(CardRoutes::status("", deck), RouteStatus::none);
    EXPECT_EQ(CardRoutes::warning("", deck), "No target");
    EXPECT_EQ(CardRoutes::controlLabel("", deck), "Set target…");

    // Id text in either case names the slide.
    EXPECT_EQ(CardRoutes::status(lower(intro), deck), RouteStatus::slide);
    EXPECT_EQ(CardRoutes::controlLabel(lower(intro), deck), "Intro");
    EXPECT_EQ(CardRoutes::controlLabel(deck[1].id.string(), deck), "Untitled slide");
    EXPECT_EQ(CardRoutes::warning(intro, deck), std::nullopt);

    // Navigation words lead somewhere without a slide of their own.
    EXPECT_EQ(CardRoutes::status("$back", deck), RouteStatus::special);
    EXPECT_EQ(CardRoutes::warning("$home", deck), std::nullopt);

    // The target slide deleted, or text that names no slide at all.
    deck.erase(deck.begin());
    EXPECT_EQ(CardRoutes::status(intro, deck), RouteStatus::missing);
    EXPECT_EQ(CardRoutes::warning(intro, deck), "Target slide was deleted");
    EXPECT_EQ(CardRoutes::controlLabel(intro, deck), "Set target…");
    EXPECT_EQ(CardRoutes::status("not an id", deck), RouteStatus::missing);
}

}  // namespace
}  // namespace lectern
