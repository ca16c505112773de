#include "editor/slide_inspector_model.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace lectern {
namespace {

Slide slideOf(SlideLayout layout, const char* title = "") {
    Slide slide = Slide::make(layout);
    slide.title = title;
    return slide;
}

std::size_t positionRows(const std::vector<LayoutPickerRow>& rows) {
    return static_cast<std::size_t>(std::count_if(rows.begin(), rows.end(), [](auto& row) { return row.position; }));
}

TEST(LayoutPickerState, MediaRowsOpenForTheirSlideAndOnChoice) {
    Slide web = slideOf(SlideLayout::web);
    web.position = SlidePosition::right;
    LayoutPickerState picker;
    picker.showSlide(web);
    auto rows = picker.rows(web);
    // Regular, callout, decisions, web and its five positions, image.
    ASSERT_EQ(rows.size(), 10u);
    EXPECT_TRUE(rows[3].isSelected && rows[3].isExpanded && rows[3].showsChevron);
    EXPECT_EQ(rows[9].layout, SlideLayout::image);
    EXPECT_FALSE(rows[9].isExpanded);
    auto selected = std::count_if(rows.begin(), rows.end(), [](auto& row) { return row.isSelected; });
    EXPECT_EQ(selected, 2) << "the web row and its right position";
    EXPECT_TRUE(rows[6].isSelected);
    EXPECT_EQ(rows[6].action, (LayoutChange{SlideLayout::web, SlidePosition::right}));

    // The image row opened by its chevron: its positions are offered but
    // none is selected while the slide is a web slide.
    picker.toggle(SlideLayout::image);
    rows = picker.rows(web);
    EXPECT_EQ(positionRows(rows), 10u);
    EXPECT_FALSE(std::any_of(rows.begin() + 10, rows.end(), [](auto& row) { return row.isSelected; }));
    picker.toggle(SlideLayout::web);
    picker.toggle(SlideLayout::regular);  // no positions: nothing to open
    EXPECT_EQ(picker.rows(web).size(), 10u);

    // The same slide again keeps what was opened; another slide starts over.
    picker.showSlide(web);
    EXPECT_TRUE(picker.isExpanded(SlideLayout::image));
    Slide plain = slideOf(SlideLayout::regular);
    picker.showSlide(plain);
    EXPECT_EQ(picker.rows(plain).size(), 5u);
    picker.chose(SlideLayout::image);
    EXPECT_TRUE(picker.isExpanded(SlideLayout::image));
}

TEST(LayoutPickerState, ChangingLayoutKeepsTheSlidesContent) {
    Slide slide = slideOf(SlideLayout::web, "Demo");
    slide.url = "https://example.test/";
    slide.position = SlidePosition::left;
    Slide before = slide;
    applyLayoutChange(slide, {SlideLayout::callout, std::nullopt});
    EXPECT_EQ(slide.layout, SlideLayout::callout);
    EXPECT_EQ(slide.position, SlidePosition::left) << "kept for switching back";
    applyLayoutChange(slide, {SlideLayout::web, std::nullopt});
    EXPECT_EQ(slide, before);
    applyLayoutChange(slide, {SlideLayout::image, SlidePosition::topBottom});
    EXPECT_EQ(slide.position, SlidePosition::topBottom);
    EXPECT_EQ(slide.url, before.url);
    EXPECT_EQ(slide.title, "Demo");
}

TEST(NextRouteChoices, LinearThenOtherSlidesAndAnUnlistedRouteKept) {
    Deck deck;
    deck.slides = {slideOf(SlideLayout::regular, "Intro"), slideOf(SlideLayout::regular),
                   slideOf(SlideLayout::regular, "End")};
    Slide& first = deck.slides[0];
    auto choices = nextRouteChoices(deck, first);
    ASSERT_EQ(choices.size(), 3u) << "the slide itself is not offered";
    EXPECT_EQ(choices[0], (NextRouteChoice{"Linear (default)", std::nullopt}));
    EXPECT_EQ(choices[1], (NextRouteChoice{"02 Untitled slide", deck.slides[1].id.string()}));
    EXPECT_EQ(selectedNextRoute(choices, first), 0u);
    first.nextSlideAction = deck.slides[2].id.string();
    EXPECT_EQ(selectedNextRoute(choices, first), 2u);

    // A route to a slide since deleted, or a navigation word, stays as it
    // is and shows as an entry of its own.
    first.nextSlideAction = Uuid::random().string();
    choices = nextRouteChoices(deck, first);
    ASSERT_EQ(choices.size(), 4u);
    EXPECT_EQ(choices[3].title, "Target slide was deleted");
    EXPECT_EQ(choices[3].value, first.nextSlideAction);
    EXPECT_EQ(selectedNextRoute(choices, first), 3u);
    first.nextSlideAction = "$home";
    choices = nextRouteChoices(deck, first);
    EXPECT_EQ(choices.back().title, "First slide");
    EXPECT_EQ(selectedNextRoute(choices, first), 3u);
}

TEST(ProfileChoices, SharedSessionFirstAndADanglingReferenceShowsIt) {
    Deck deck;
    deck.browserProfiles = {BrowserProfile{Uuid::random(), "Work"}, BrowserProfile{Uuid::random(), ""}};
    Slide web = slideOf(SlideLayout::web);
    auto choices = profileChoices(deck);
    ASSERT_EQ(choices.size(), 3u);
    EXPECT_EQ(choices[0], (ProfileChoice{"Shared session", std::nullopt}));
    EXPECT_EQ(choices[2].title, "Untitled profile");
    web.browserProfileId = deck.browserProfiles[1].id;
    EXPECT_EQ(selectedProfile(choices, web), 2u);
    web.browserProfileId = Uuid::random();
    EXPECT_EQ(selectedProfile(choices, web), 0u);
}

TEST(AccentSwatches, CanonicalColoursOnlyAndTheSlidesOwnAccent) {
    Deck deck;
    deck.palette = DeckPalette({std::string("#abcdef"), std::nullopt, std::string("blue"), std::string(" 112233 ")});
    auto swatches = accentSwatches(deck, {"#3B5A7A", "nonsense"});
    EXPECT_EQ(swatches.deck, (std::vector<std::string>{"#ABCDEF", "#112233"}));
    EXPECT_EQ(swatches.app, (std::vector<std::string>{"#3B5A7A"}));

    Slide slide = slideOf(SlideLayout::regular);
    EXPECT_EQ(slideAccent(slide), std::nullopt);
    slide.accentHex = "abcdef";
    EXPECT_EQ(slideAccent(slide), "#ABCDEF") << "matches the deck swatch it was chosen from";
    slide.accentHex = "red";
    EXPECT_EQ(slideAccent(slide), std::nullopt) << "no colour: the deck's accent shows";
}

}  // namespace
}  // namespace lectern
