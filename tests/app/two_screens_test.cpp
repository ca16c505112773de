// Presenting on the monitors there are. The ordinary test display (Xvfb)
// has one monitor; tests/support/with-two-screens runs this file again on
// a display with two (LECTERN_TEST_TWO_SCREENS set), where a monitor is
// also unplugged and plugged in again mid-talk with xrandr. The choice of
// monitors is tested without a display in
// tests/present/screen_placement_test.cpp.

#include <gtest/gtest.h>

#include "editor/platform/deck_window.h"
#include "editor/platform/presenter_panel.h"
#include "gui_harness.h"
#include "support/deck_fixtures.h"

namespace lectern {
namespace {

using testing::pumpUntil;

bool twoScreensExpected() { return g_getenv("LECTERN_TEST_TWO_SCREENS") != nullptr; }

// The connector of the monitor a shown window is on.
std::string monitorOf(Gtk::Window& window) {
    auto surface = window.get_surface();
    auto monitor = surface ? window.get_display()->get_monitor_at_surface(surface) : nullptr;
    return monitor ? std::string(monitor->get_connector()) : std::string();
}

// Full screen on the named monitor, as the window manager placed it.
bool fullscreenOn(Gtk::Window& window, const std::string& connector) {
    return window.get_mapped() && window.is_fullscreen() && monitorOf(window) == connector;
}

class TwoScreensTest : public testing::WindowTest {
protected:
    DeckWindow& openDeck() {
        Deck deck;
        deck.title = "Screens";
        for (const char* title : {"First", "Second"}) {
            deck.slides.push_back(Slide::make(SlideLayout::regular));
            deck.slides.back().title = title;
        }
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
    if (window.screens().size() < 2) {
        if (twoScreensExpected()) FAIL() << "the two-screen display shows " << window.screens().size() << " monitor";
        GTEST_SKIP() << "the display has a single monitor";
    }
    const std::string home = monitorOf(window);
    ASSERT_FALSE(home.empty());

    // The stage goes full screen on the other monitor and the presenter
    // display full screen where the deck window was.
    present(window);
    const ScreenPlan automatic = window.screenPlan();
    EXPECT_FALSE(automatic.stage.empty());
    EXPECT_EQ(automatic.presenter, home);
    ASSERT_TRUE(window.presenterPanel());
    PresenterPanel& panel = *window.presenterPanel();
    EXPECT_TRUE(pumpUntil([&] { return fullscreenOn(window, automatic.stage); }))
        << "the stage is on " << monitorOf(window);
    EXPECT_TRUE(pumpUntil([&] { return fullscreenOn(panel, home); })) << "the presenter display is on " << monitorOf(panel);
    testing::screenshot("two-screens-presenting");
    stop(window);
    EXPECT_EQ(window.screenPlan(), ScreenPlan{});
    EXPECT_FALSE(window.state().presenterPanelVisible()) << "opened for the talk, closed with it";

    window.activate_action("win.present-on", Glib::Variant<Glib::ustring>::create(automatic.presenter));
    present(window);
    EXPECT_EQ(window.screenPlan(), (ScreenPlan{automatic.presenter, automatic.stage}));
    EXPECT_TRUE(pumpUntil([&] { return fullscreenOn(window, home); })) << "the stage is on " << monitorOf(window);
    stop(window);
}

// The stage's monitor unplugged mid-talk: the talk goes on, full screen on
// the monitor that is left, and the keys still move it; plugged in again,
// it takes the stage back. Then the presenter's monitor goes and comes
// back.
TEST_F(TwoScreensTest, UnpluggingTheProjectorMidTalkKeepsTheTalkGoing) {
    if (!twoScreensExpected()) GTEST_SKIP() << "runs on the two-screen display only";
    DeckWindow& window = openDeck();
    ASSERT_EQ(window.screens().size(), 2u);
    present(window);
    const ScreenPlan plan = window.screenPlan();
    ASSERT_TRUE(pumpUntil([&] { return fullscreenOn(window, plan.stage); }));
    auto screenNamed = [&](const std::string& connector) {
        for (const auto& screen : window.screens())
            if (screen.connector == connector) return screen;
        return Screen{};
    };
    const Screen projector = screenNamed(plan.stage), laptop = screenNamed(plan.presenter);
    auto plugIn = [](const Screen& screen) {
        return testing::runProgram({"xrandr", "--output", screen.connector, "--mode",
                                    std::to_string(screen.width) + "x" + std::to_string(screen.height), "--pos",
                                    std::to_string(screen.x) + "x" + std::to_string(screen.y)});
    };

    ASSERT_EQ(testing::runProgram({"xrandr", "--output", projector.connector, "--off"}), 0);
    EXPECT_TRUE(pumpUntil([&] { return window.screens().size() == 1; }));
    EXPECT_TRUE(pumpUntil([&] { return fullscreenOn(window, plan.presenter); }, 10))
        << "the stage is on " << monitorOf(window);
    EXPECT_TRUE(window.state().presenting());
    ASSERT_TRUE(window.presenterPanel());
    EXPECT_TRUE(pumpUntil([&] { return !window.presenterPanel()->is_fullscreen(); }))
        << "the presenter display is a window over the stage again";
    testing::pressKeys(window, {"Right"});
    EXPECT_TRUE(pumpUntil([&] { return window.state().current() == 1; }));
    testing::screenshot("two-screens-unplugged");

    // Plugged in again (a loose cable), the projector takes the stage back.
    ASSERT_EQ(plugIn(projector), 0);
    EXPECT_TRUE(pumpUntil([&] { return window.screens().size() == 2; }));
    EXPECT_TRUE(pumpUntil([&] { return fullscreenOn(window, projector.connector); }, 10))
        << "the stage is on " << monitorOf(window);
    EXPECT_TRUE(pumpUntil([&] { return window.presenterPanel()->is_fullscreen(); }));
    EXPECT_TRUE(window.state().presenting());
    EXPECT_EQ(window.state().current(), 1);

    // The presenter's own monitor unplugged: the stage stays on the
    // projector and the presenter display goes over it as a window.
    ASSERT_EQ(testing::runProgram({"xrandr", "--output", laptop.connector, "--off"}), 0);
    EXPECT_TRUE(pumpUntil([&] { return window.screens().size() == 1; }));
    EXPECT_TRUE(pumpUntil([&] { return !window.presenterPanel()->is_fullscreen(); }));
    EXPECT_TRUE(pumpUntil([&] { return fullscreenOn(window, projector.connector); }));
    EXPECT_TRUE(window.state().presenting());
    ASSERT_EQ(plugIn(laptop), 0);
    EXPECT_EQ(plugIn(projector), 0) << "back where it was, beside the laptop";
    EXPECT_TRUE(pumpUntil([&] { return window.screens().size() == 2; }));
    EXPECT_TRUE(pumpUntil([&] { return fullscreenOn(*window.presenterPanel(), laptop.connector); }, 10))
        << "the presenter display is on " << monitorOf(*window.presenterPanel());
    EXPECT_TRUE(fullscreenOn(window, projector.connector));
    stop(window);
}

}  // namespace
}  // namespace lectern
