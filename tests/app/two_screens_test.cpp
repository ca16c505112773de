// Presenting on the monitors there are. Under the virtual display of the
// test runs there is one monitor (GTK's X11 backend lists only RandR
// monitors backed by an output, and Xvfb has one): the two-monitor part
// runs on displays with two, the choice of monitors is tested without a
// display in tests/present/screen_placement_test.cpp.

#include <gtest/gtest.h>

#include "editor/platform/deck_window.h"
#include "editor/platform/presenter_panel.h"
#include "gui_harness.h"
#include "support/deck_fixtures.h"

namespace lectern {
namespace {

using testing::pumpUntil;

class TwoScreensTest : public testing::WindowTest {
protected:
    DeckWindow& openDeck() {
        Deck deck;
        deck.title = "Screens";
        deck.slides.push_back(Slide::make(SlideLayout::regular));
        return open(deck);
    }
    static void present(DeckWindow& window) {
        window.activate_action("win.present");
        EXPECT_TRUE(pumpUntil([&] { return window.state().presenting(); }));
    }
    static void stop(DeckWindow& window) {
        window.state().togglePresenting();
        EXPECT_TRUE(pumpUntil([&] { return !window.state().presenting(); }));
    }
    static std::string presentOn(DeckWindow& window) {
        Glib::ustring value;
        window.get_action_state("present-on", value);
        return value;
    }
};

TEST_F(TwoScreensTest, OneMonitorPresentsAsAlwaysWhateverWasChosen) {
    DeckWindow& window = openDeck();
    if (window.screens().size() != 1) GTEST_SKIP() << "the display has more than one monitor";
    EXPECT_EQ(presentOn(window), "") << "\"Automatic\" until a monitor is chosen";
    window.activate_action("win.present-on", Glib::Variant<Glib::ustring>::create("HDMI-9"));
    EXPECT_EQ(presentOn(window), "HDMI-9") << "a monitor not connected now can still be the choice";

    present(window);
    EXPECT_EQ(window.screenPlan(), ScreenPlan{});
    EXPECT_FALSE(window.state().presenterPanelVisible()) << "no presenter display opened on a single monitor";
    stop(window);
}

TEST_F(TwoScreensTest, TwoMonitorsPutTheStageOnOneAndThePresenterDisplayOnTheOther) {
    DeckWindow& window = openDeck();
    if (window.screens().size() < 2) GTEST_SKIP() << "the display has a single monitor";

    present(window);
    const ScreenPlan automatic = window.screenPlan();
    EXPECT_FALSE(automatic.stage.empty());
    EXPECT_NE(automatic.stage, automatic.presenter);
    EXPECT_TRUE(window.state().presenterPanelVisible());
    stop(window);
    EXPECT_EQ(window.screenPlan(), ScreenPlan{});
    EXPECT_FALSE(window.state().presenterPanelVisible()) << "opened for the talk, closed with it";

    window.activate_action("win.present-on", Glib::Variant<Glib::ustring>::create(automatic.presenter));
    present(window);
    EXPECT_EQ(window.screenPlan(), (ScreenPlan{automatic.presenter, automatic.stage}));
    stop(window);
}

}  // namespace
}  // namespace lectern
