#include "present/screen_placement.h"

#include <gtest/gtest.h>

namespace lectern {
namespace {

const Screen laptop{"eDP-1", "Built-in", 0, 0, 1920, 1080};
const Screen projector{"HDMI-1", "Beamer", 1920, 0, 1280, 720};
const Screen tv{"DP-2", "TV", 3200, 0, 3840, 2160};

TEST(ScreenPlacement, OneMonitorKeepsTheStageOnTheDeckWindowsMonitor) {
    EXPECT_EQ(ScreenPlacement::start({}, "", ""), ScreenPlan{});
    EXPECT_EQ(ScreenPlacement::start({laptop}, "eDP-1", "HDMI-1"), ScreenPlan{})
        << "a chosen monitor that is not connected changes nothing";
}

TEST(ScreenPlacement, TwoMonitorsPutTheStageAwayFromTheDeckWindowUnlessChosen) {
    EXPECT_EQ(ScreenPlacement::start({laptop, projector}, "eDP-1", ""), (ScreenPlan{"HDMI-1", "eDP-1"}));
    EXPECT_EQ(ScreenPlacement::start({laptop, projector}, "HDMI-1", ""), (ScreenPlan{"eDP-1", "HDMI-1"}));
    EXPECT_EQ(ScreenPlacement::start({laptop, projector, tv}, "eDP-1", "DP-2"), (ScreenPlan{"DP-2", "eDP-1"}));
    EXPECT_EQ(ScreenPlacement::start({laptop, projector}, "", ""), (ScreenPlan{"HDMI-1", "eDP-1"}))
        << "an unknown deck window monitor counts as the first";
    // The stage chosen onto the deck window's own monitor: the presenter
    // display moves out of its way.
    EXPECT_EQ(ScreenPlacement::start({laptop, projector}, "eDP-1", "eDP-1"), (ScreenPlan{"eDP-1", "HDMI-1"}));
}

TEST(ScreenPlacement, UnpluggingMovesTheStageToAMonitorThatIsLeft) {
    const ScreenPlan twoScreens{"HDMI-1", "eDP-1"};
    EXPECT_EQ(ScreenPlacement::afterChange(twoScreens, {laptop}, "eDP-1", ""), ScreenPlan{})
        << "back to one monitor: the stage there, the presenter display a normal window";
    EXPECT_EQ(ScreenPlacement::afterChange(twoScreens, {projector}, "eDP-1", ""), ScreenPlan{});
    EXPECT_EQ(ScreenPlacement::afterChange(ScreenPlan{"HDMI-1", "eDP-1"}, {laptop, tv}, "eDP-1", "HDMI-1"),
              (ScreenPlan{"DP-2", "eDP-1"}));
    // The presenter display's monitor went but two are left: the stage stays.
    EXPECT_EQ(ScreenPlacement::afterChange(ScreenPlan{"HDMI-1", "eDP-1"}, {projector, tv}, "eDP-1", ""),
              (ScreenPlan{"HDMI-1", "DP-2"}));
}

TEST(ScreenPlacement, PluggingInGivesATalkOnOneMonitorItsProjector) {
    EXPECT_EQ(ScreenPlacement::afterChange(ScreenPlan{}, {laptop, projector}, "eDP-1", ""),
              (ScreenPlan{"HDMI-1", "eDP-1"}))
        << "a talk on one monitor that gets a second is placed as Present would";
    EXPECT_EQ(ScreenPlacement::afterChange(ScreenPlan{}, {laptop, projector}, "eDP-1", "HDMI-1"),
              (ScreenPlan{"HDMI-1", "eDP-1"}));
    // A talk on two monitors keeps its stage when a third comes, unless
    // that one is chosen.
    const ScreenPlan onTv{"DP-2", "eDP-1"};
    EXPECT_EQ(ScreenPlacement::afterChange(onTv, {laptop, tv, projector}, "eDP-1", ""), onTv);
    EXPECT_EQ(ScreenPlacement::afterChange(onTv, {laptop, tv, projector}, "eDP-1", "HDMI-1"),
              (ScreenPlan{"HDMI-1", "eDP-1"}));
}

}  // namespace
}  // namespace lectern
