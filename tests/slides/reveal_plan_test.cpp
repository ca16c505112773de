#include "slides/reveal_plan.h"

#include <gtest/gtest.h>

namespace lectern {
namespace {

Slide revealing(std::string body, std::optional<RevealSteps> plan = std::nullopt) {
    Slide slide = Slide::make(SlideLayout::regular);
    slide.reveal = RevealMode::reveal;
    slide.body = AttributedText(std::move(body));
    slide.revealPlan = std::move(plan);
    return slide;
}

TEST(RevealPlanNormalized, StoredPlansAreRepairedAgainstTheText) {
    EXPECT_EQ(RevealPlan::normalized(3, std::nullopt), (RevealSteps{{0}, {1}, {2}}));
    EXPECT_EQ(RevealPlan::normalized(3, RevealSteps{{2, 0}, {5}}), (RevealSteps{{2, 0}, {1}}));
    EXPECT_EQ(RevealPlan::normalized(0, RevealSteps{{0}, {1}}), RevealSteps{});
    // Duplicates are kept; negative and out-of-range indexes go with their empty steps.
    EXPECT_EQ(RevealPlan::normalized(3, RevealSteps{{1, 1}, {-1, 7}, {}, {0}}), (RevealSteps{{1, 1}, {0}, {2}}));
    // New text appears as single steps at the end, in ascending order.
    EXPECT_EQ(RevealPlan::normalized(5, RevealSteps{{3}, {0, 1}}), (RevealSteps{{3}, {0, 1}, {2}, {4}}));
    EXPECT_EQ(RevealPlan::normalized(2, RevealSteps{{9}}), (RevealSteps{{0}, {1}}));
}

TEST(RevealPlanSteps, CountsPerModeAndLayout) {
    Slide three = revealing("a\nb\nc");
    EXPECT_EQ(RevealPlan::stepCount(three), 3u);
    EXPECT_EQ(RevealPlan::highestRevealIndex(three), 2);
    three.revealPlan = RevealSteps{{0, 1, 2}};
    EXPECT_EQ(RevealPlan::stepCount(three), 1u);
    EXPECT_EQ(RevealPlan::highestRevealIndex(three), 0);

    Slide all = three;
    all.reveal = RevealMode::all;
    EXPECT_EQ(RevealPlan::stepCount(all), 0u);
    EXPECT_EQ(RevealPlan::highestRevealIndex(all), 0);

    EXPECT_EQ(RevealPlan::stepCount(revealing("")), 0u);
    EXPECT_EQ(RevealPlan::stepCount(revealing(" \n\t")), 0u);

    Slide cards = revealing("body lines do not count\nhere");
    cards.layout = SlideLayout::decisions;
    cards.links.resize(4);
    EXPECT_EQ(RevealPlan::stepCount(cards), 4u);
    EXPECT_EQ(RevealPlan::highestRevealIndex(cards), 3);
    cards.links.clear();
    EXPECT_EQ(RevealPlan::highestRevealIndex(cards), 0);
}

TEST(RevealPlanSteps, StepTextsKeepTheAuthorsSpacing) {
    auto texts = [](const Slide& slide) {
        std::vector<std::string> out;
        for (const auto& t : RevealPlan::stepTexts(slide)) out.push_back(t.string());
        return out;
    };
    EXPECT_EQ(texts(revealing("One\n\nTwo")), (std::vector<std::string>{"One", "\nTwo"}));
    EXPECT_EQ(texts(revealing("\n\nFirst\n\n\nSecond\nThird", RevealSteps{{0}, {1, 2}})),
              (std::vector<std::string>{"First", "\n\nSecond\nThird"}));
    // The spacing is that before the step's first unit, wherever it stands.
    EXPECT_EQ(texts(revealing("A\n\nB\nC", RevealSteps{{2, 0}, {1}})), (std::vector<std::string>{"C\nA", "\nB"}));
    EXPECT_TRUE(texts(revealing("")).empty());
}

TEST(RevealPlanEdits, MergeAndBreak) {
    Slide slide = revealing("0\n1\n2\n3", RevealSteps{{0}, {1}, {2, 3}});
    EXPECT_EQ(RevealPlan::mergeWithStepAbove(slide, 2), (RevealSteps{{0}, {1, 2, 3}}));
    EXPECT_EQ(RevealPlan::mergeWithStepAbove(slide, 0), (RevealSteps{{0}, {1}, {2, 3}}));
    EXPECT_EQ(RevealPlan::mergeWithStepAbove(slide, 3), (RevealSteps{{0}, {1}, {2, 3}}));
    EXPECT_FALSE(RevealPlan::canMergeWithStepAbove(RevealPlan::normalized(slide), 0));

    Slide one = revealing("0\n1\n2", RevealSteps{{0, 1, 2}});
    EXPECT_EQ(RevealPlan::breakIntoOwnStep(one, {0, 1}), (RevealSteps{{0}, {1}, {2}}));
    EXPECT_EQ(RevealPlan::breakIntoOwnStep(one, {0, 0}), (RevealSteps{{0}, {1, 2}}));
    EXPECT_EQ(RevealPlan::breakIntoOwnStep(one, {0, 2}), (RevealSteps{{0, 1}, {2}}));
    EXPECT_EQ(RevealPlan::breakIntoOwnStep(revealing("0\n1", RevealSteps{{0, 1}}), {0, 0}), (RevealSteps{{0}, {1}}));
    EXPECT_FALSE(RevealPlan::canBreakIntoOwnStep(RevealPlan::normalized(revealing("a\nb")), {0, 0}));
    EXPECT_EQ(RevealPlan::breakIntoOwnStep(one, {4, 0}), (RevealSteps{{0, 1, 2}}));

    // Edits start from the repaired plan, not the stored one.
    Slide stale = revealing("0\n1", RevealSteps{{7}, {1, 0}, {1}});
    EXPECT_EQ(RevealPlan::mergeWithStepAbove(stale, 1), (RevealSteps{{1, 0, 1}}));
}

TEST(RevealPlanEdits, DragAndDrop) {
    Slide slide = revealing("0\n1\n2", RevealSteps{{0}, {1, 2}});
    EXPECT_EQ(RevealPlan::dropRowOnStep(slide, {0, 0}, 1), (RevealSteps{{1, 2, 0}}));
    EXPECT_EQ(RevealPlan::dropRowInGap(slide, {0, 0}, 2), (RevealSteps{{1, 2}, {0}}));
    EXPECT_EQ(RevealPlan::dropRowOnStep(slide, {1, 0}, 1), (RevealSteps{{0}, {1, 2}}));  // own step
    EXPECT_EQ(RevealPlan::dropRowOnStep(slide, {1, 1}, 0), (RevealSteps{{0, 2}, {1}}));
    EXPECT_EQ(RevealPlan::dropRowInGap(slide, {1, 1}, 0), (RevealSteps{{2}, {0}, {1}}));
    EXPECT_EQ(RevealPlan::dropRowInGap(slide, {1, 0}, 1), (RevealSteps{{0}, {1}, {2}}));
    EXPECT_EQ(RevealPlan::dropRowInGap(slide, {0, 0}, 0), (RevealSteps{{0}, {1, 2}}));  // back where it was
    EXPECT_EQ(RevealPlan::dropRowInGap(slide, {1, 0}, 99), (RevealSteps{{0}, {2}, {1}}));  // clamped to the end
    EXPECT_EQ(RevealPlan::dropRowOnStep(slide, {5, 0}, 0), (RevealSteps{{0}, {1, 2}}));   // no such row
    EXPECT_EQ(RevealPlan::dropRowOnStep(slide, {0, 0}, 9), (RevealSteps{{0}, {1, 2}}));   // no such step
}

}  // namespace
}  // namespace lectern
