#include "slides/platform/reveal_animation.h"

#include <gtest/gtest.h>

namespace lectern {
namespace {

TEST(RevealAnimation, EaseInOutStartsAndEndsSlowlyAndIsSymmetric) {
    EXPECT_DOUBLE_EQ(RevealAnimation::easeInOut(0), 0);
    EXPECT_DOUBLE_EQ(RevealAnimation::easeInOut(1), 1);
    EXPECT_NEAR(RevealAnimation::easeInOut(0.5), 0.5, 1e-9);
    EXPECT_LT(RevealAnimation::easeInOut(0.1), 0.05);  // slow start
    double previous = 0;
    for (int i = 1; i <= 100; ++i) {
        double t = i / 100.0;
        double value = RevealAnimation::easeInOut(t);
        EXPECT_GE(value, previous);
        EXPECT_NEAR(value, 1 - RevealAnimation::easeInOut(1 - t), 1e-9);
        previous = value;
    }
}

TEST(RevealAnimation, TargetsFollowTheRevealIndexOnlyInRevealMode) {
    Slide slide = Slide::make(SlideLayout::regular);
    slide.body = AttributedText("one\ntwo\nthree");
    EXPECT_TRUE(RevealAnimation::targets(slide, 0).empty());  // mode all: everything, no animation
    slide.reveal = RevealMode::reveal;
    EXPECT_EQ(RevealAnimation::targets(slide, 1), (std::vector<double>{1, 1, 0}));

    Slide cards = Slide::make(SlideLayout::decisions);
    cards.reveal = RevealMode::reveal;
    cards.links.resize(4);
    EXPECT_EQ(RevealAnimation::targets(cards, 0), (std::vector<double>{1, 0, 0, 0}));
}

TEST(RevealAnimation, AStepFadesInOverTheDurationFromWhereItStands) {
    RevealAnimation animation;
    animation.reset({1, 0, 0});
    EXPECT_FALSE(animation.isRunning(0));
    animation.retarget({1, 1, 0}, 10.0);
    EXPECT_TRUE(animation.isRunning(10.1));
    EXPECT_NEAR(animation.values(10.0 + RevealAnimation::duration / 2)[1], 0.5, 1e-6);
    EXPECT_EQ(animation.values(10.0 + RevealAnimation::duration), (std::vector<double>{1, 1, 0}));
    EXPECT_FALSE(animation.isRunning(10.0 + RevealAnimation::duration));

    // Going back halfway through: the step turns round where it is, no jump.
    animation.retarget({1, 1, 1}, 20.0);
    double halfway = animation.values(20.0 + RevealAnimation::duration / 2)[2];
    animation.retarget({1, 1, 0}, 20.0 + RevealAnimation::duration / 2);
    EXPECT_NEAR(animation.values(20.0 + RevealAnimation::duration / 2)[2], halfway, 1e-9);
    EXPECT_EQ(animation.values(30.0)[2], 0);
}

TEST(RevealAnimation, ADifferentStepCountIsANewSlideShownAtOnce) {
    RevealAnimation animation;
    animation.reset({1, 0});
    animation.retarget({1, 1, 0}, 5.0);
    EXPECT_FALSE(animation.isRunning(5.0));
    EXPECT_EQ(animation.values(5.0), (std::vector<double>{1, 1, 0}));
}

}  // namespace
}  // namespace lectern
