#include "present/deck_outline.h"

#include <gtest/gtest.h>

#include "slides/reveal_plan.h"

namespace lectern {
namespace {

using nlohmann::json;

struct OutlineDeck {
    Deck deck;
    void add(SlideLayout layout, std::string title) {
        Slide slide = Slide::make(layout);
        slide.title = std::move(title);
        deck.slides.push_back(slide);
    }
};

TEST(DeckOutlineJson, RevealStepsFromBodyAndStoredPlan) {
    OutlineDeck d;
    d.add(SlideLayout::regular, "Steps");
    d.add(SlideLayout::regular, "");
    Slide& slide = d.deck.slides[0];
    SlideBodyAttributes command;
    command.block = SlideBodyBlockKind::command;
    slide.body = AttributedText("\nIntro\n\n");
    slide.body.append("make demo\nmake clean\n", command);
    slide.body.append("Outro");
    slide.reveal = RevealMode::reveal;
    slide.revealPlan = RevealSteps{{3, 3}, {9, -2}, {0}};

    json outline = DeckOutline::json(d.deck);
    const json& s = outline["slides"][0];
    EXPECT_EQ(s["number"], 1);
    EXPECT_EQ(s["id"], slide.id.string());
    EXPECT_EQ(s["revealMode"], "reveal");
    EXPECT_EQ(s["units"], json({"Intro", "make demo", "make clean", "Outro"}));
    EXPECT_EQ(s["plan"], json({{3, 3}, {0}, {1}, {2}}));
    EXPECT_EQ(s["stepCount"], 4);
    EXPECT_EQ(s["stepTexts"], json({"Outro\nOutro", "\nIntro", "\nmake demo", "make clean"}));
    EXPECT_EQ(s["renderItems"], json({{{"kind", "paragraph"}, {"lines", {"Intro"}}},
                                      {{"kind", "commandBlock"}, {"lines", {"make demo", "make clean"}}},
                                      {{"kind", "paragraph"}, {"lines", {"Outro"}}}}));
    EXPECT_EQ(outline["slides"][1]["title"], "");
    EXPECT_EQ(outline["slides"][1]["stepCount"], 0);  // mode all: no steps
    EXPECT_EQ(outline["slides"][1]["plan"], json::array());

    slide.reveal = RevealMode::all;
    json all = DeckOutline::json(d.deck)["slides"][0];
    EXPECT_EQ(all["stepCount"], 0);
    EXPECT_EQ(all["plan"], s["plan"]);  // the plan is shown in either mode
}

TEST(DeckOutlineJson, CardsRoutesPagesAndActions) {
    OutlineDeck d;
    d.deck.browserProfiles.push_back({Uuid::random(), ""});
    d.add(SlideLayout::decisions, "Choose");
    d.add(SlideLayout::web, "Live");
    d.add(SlideLayout::regular, "End");
    Slide& choice = d.deck.slides[0];
    choice.reveal = RevealMode::reveal;
    Slide& web = d.deck.slides[1];
    web.url = "https://example.com/app";
    web.browserProfileId = d.deck.browserProfiles[0].id;
    web.nextSlideAction = "back";
    web.isSkipped = true;
    SlideAction action;
    action.autoRun = true;
    web.actions.push_back(action);
    Slide& last = d.deck.slides[2];
    last.nextSlideAction = Uuid::random().string();
    d.deck.slides[0].links = {{Uuid::random(), "Go live", "", std::nullopt, false, d.deck.slides[1].id.string()},
                              {Uuid::random(), "Gone", "", std::nullopt, false, Uuid::random().string()},
                              {Uuid::random(), "Nowhere", "", std::nullopt, false, ""}};

    json slides = DeckOutline::json(d.deck)["slides"];
    EXPECT_EQ(slides[0]["stepCount"], 3);  // one step per card
    EXPECT_EQ(slides[0]["cards"][0]["label"], "Go live");
    EXPECT_EQ(slides[0]["cards"][0]["targetId"], d.deck.slides[1].id.string());
    EXPECT_EQ(slides[0]["cards"][0]["targetNumber"], 2);
    EXPECT_TRUE(slides[0]["cards"][1]["targetNumber"].is_null());
    EXPECT_EQ(slides[0]["next"], nullptr);
    EXPECT_EQ(slides[1]["isSkipped"], true);
    EXPECT_EQ(slides[1]["profile"], "Untitled profile");
    EXPECT_EQ(slides[1]["url"], "https://example.com/app");
    EXPECT_EQ(slides[1]["next"]["kind"], "back");
    EXPECT_EQ(slides[1]["actions"][0]["name"], "Untitled action");
    EXPECT_EQ(slides[1]["actions"][0]["autoRun"], true);
    EXPECT_EQ(slides[2]["next"]["kind"], "missing");
    EXPECT_EQ(slides[1]["actions"][0]["summary"], "\u201CUntitled action\u201D sends GET to  (runs by itself)");
    EXPECT_EQ(slides[1]["actions"][0]["schedule"], "Runs by itself as soon as the slide is shown, once");

    std::string text = DeckOutline::text(d.deck);
    for (const char* expected : {"01  Choose  [decisions, reveals 3 cards]", "Card 1: Go live -> 02 Live",
                                 "Card 2: Gone -> missing slide", "Card 3: Nowhere -> no target",
                                 "02  Live  [web, skipped]", "Page: https://example.com/app (Untitled profile)",
                                 "Action: \u201CUntitled action\u201D sends GET to  (runs by itself)\n"
                                 "            Runs by itself as soon as the slide is shown, once\n",
                                 "Next: back to where the presenter came from",
                                 "Next: a slide that no longer exists, so on to the next slide"}) {
        EXPECT_NE(text.find(expected), std::string::npos) << expected << "\n" << text;
    }
}

TEST(DeckOutlineJson, ActionSchedulesInWords) {
    OutlineDeck d;
    d.add(SlideLayout::web, "Live");
    Slide& slide = d.deck.slides[0];
    slide.url = "https://app.example.com/board";
    auto action = [&](std::string name, double delay, bool repeats, double interval, std::int64_t runs) {
        SlideAction a;
        a.name = std::move(name);
        a.kindCase = SlideActionKindCase::pageScript;
        a.autoRun = true;
        a.autoRunDelaySeconds = delay;
        a.repeats = repeats;
        a.repeatIntervalSeconds = interval;
        a.repeatMaxRuns = runs;
        slide.actions.push_back(a);
    };
    action("Late", 2.5, false, 5, 0);
    action("Poll", -5, true, 0, 0);
    action("Thrice", 1, true, 5, 3);
    action("Once", 0, true, 5, 1);
    SlideAction manual;
    manual.name = "Prepare";
    manual.request.method = "post";
    manual.request.urlString = "  https://API.example.com:8443/prepare \n";
    manual.request.useProfileCookies = true;
    slide.actions.push_back(manual);

    json actions = DeckOutline::json(d.deck)["slides"][0]["actions"];
    EXPECT_EQ(actions[0]["summary"], "\u201CLate\u201D runs a script in app.example.com (runs by itself)");
    EXPECT_EQ(actions[0]["schedule"], "Runs by itself 2.5 s after the slide is shown, once");
    EXPECT_EQ(actions[1]["schedule"], "Runs by itself as soon as the slide is shown, then every 0.25 s while the slide is shown");
    EXPECT_EQ(actions[2]["schedule"], "Runs by itself 1 s after the slide is shown, then every 5 s, 3 runs in all");
    EXPECT_EQ(actions[3]["schedule"], "Runs by itself as soon as the slide is shown, once");
    EXPECT_EQ(actions[4]["summary"], "\u201CPrepare\u201D sends POST to API.example.com with the profile's cookies");
    EXPECT_TRUE(actions[4]["schedule"].is_null());
}

TEST(DeckOutlineText, SectionsAndStepsOfTheWholeTalk) {
    OutlineDeck d;
    d.deck.title = "Launch";
    d.add(SlideLayout::regular, "");
    d.add(SlideLayout::callout, "Inside");
    Slide& opener = d.deck.slides[0];
    opener.isSection = true;
    opener.sectionTitle = "Setup";
    opener.body = AttributedText("One\n\nTwo\nThree");
    opener.reveal = RevealMode::reveal;
    opener.revealPlan = RevealSteps{{1, 2}};
    Slide& member = d.deck.slides[1];
    member.sectionId = d.deck.slides[0].id;

    std::string text = DeckOutline::text(d.deck);
    EXPECT_NE(text.find("Launch\n2 slides\n"), std::string::npos) << text;
    EXPECT_NE(text.find("01  Untitled slide  [regular, reveals 2 steps]\n    Opens section: Setup\n"
                        "    Step 1: Two\n            Three\n    Step 2: One\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("02  Inside  [callout]\n    Section: Setup\n"), std::string::npos) << text;
}

}  // namespace
}  // namespace lectern
