#include "editor/draft_stepper.h"

#include <gtest/gtest.h>

namespace lectern {
namespace {

TEST(DraftStepperTest, StepsStayInRangeEvenFromAValueLoadedOutsideIt) {
    auto delay = DraftStepper::delay();
    EXPECT_DOUBLE_EQ(delay.stepDown(0), 0);
    EXPECT_DOUBLE_EQ(delay.stepDown(0.3), 0);
    EXPECT_DOUBLE_EQ(delay.stepUp(119.8), 120);
    EXPECT_DOUBLE_EQ(delay.stepUp(500), 120);  // from a deck written elsewhere
    auto interval = DraftStepper::interval();
    EXPECT_DOUBLE_EQ(interval.stepDown(0.5), 0.5);
    EXPECT_DOUBLE_EQ(interval.stepUp(0.1), 0.6);
    EXPECT_DOUBLE_EQ(DraftStepper::maxRuns().stepUp(998), 999);
}

TEST(DraftStepperTest, ShowsOneDecimalDigitOrWholeNumbersInAnyLocale) {
    auto delay = DraftStepper::delay();
    EXPECT_EQ(delay.format(2.5), "2.5");
    EXPECT_EQ(delay.format(0), "0.0");
    EXPECT_EQ(delay.format(-0.01), "0.0");
    EXPECT_EQ(delay.format(3600), "3600.0");
    EXPECT_EQ(DraftStepper::maxRuns().format(12), "12");
}

TEST(DraftStepperTest, TypedValuesAreClampedOnCommitAndGarbageReverts) {
    auto delay = DraftStepper::delay();
    EXPECT_DOUBLE_EQ(delay.commit("7.5", 1), 7.5);
    EXPECT_DOUBLE_EQ(delay.commit(" 3,5 sec ", 1), 3.5);
    EXPECT_DOUBLE_EQ(delay.commit("2.25", 1), 2.3);  // stored as it is shown
    EXPECT_DOUBLE_EQ(delay.commit("500", 1), 120);
    EXPECT_DOUBLE_EQ(delay.commit("-4", 1), 0);
    EXPECT_DOUBLE_EQ(DraftStepper::interval().commit("0", 5), 0.5);
    for (const char* text : {"", "sec", "abc", "1.2.3", "1e3", "inf", "nan", "0x10", "5 min", "-"}) {
        EXPECT_DOUBLE_EQ(delay.commit(text, 4.5), 4.5) << text;
    }
}

TEST(DraftStepperTest, WholeNumberFieldsRoundTypedFractions) {
    auto runs = DraftStepper::maxRuns();
    EXPECT_DOUBLE_EQ(runs.commit("3", 0), 3);
    EXPECT_DOUBLE_EQ(runs.commit("2.6", 0), 3);
    EXPECT_DOUBLE_EQ(runs.commit("1000", 0), 999);
    EXPECT_DOUBLE_EQ(runs.commit("3 sec", 7), 7);  // no unit here
}

}  // namespace
}  // namespace lectern
