// The presenter's aids: the timer readout, the HUD's reveal and hide, and
// the keys of the deck window.
#include <gtest/gtest.h>

#include "present/key_monitor.h"
#include "base/manual_scheduler.h"
#include "present/presenter_hud.h"
#include "present/presenter_timer.h"
#include "support/fake_http.h"

namespace lectern {
namespace {

using State = PresenterTimer::ReadoutState;

TEST(PresenterTimer, TextCountsUpOrDown) {
    EXPECT_EQ(PresenterTimer::text(0, std::nullopt), "00:00");
    EXPECT_EQ(PresenterTimer::text(59.99, std::nullopt), "00:59");
    EXPECT_EQ(PresenterTimer::text(3599.5, std::nullopt), "59:59");
    EXPECT_EQ(PresenterTimer::text(3600, std::nullopt), "1:00:00");
    EXPECT_EQ(PresenterTimer::text(3725, std::nullopt), "1:02:05");
    EXPECT_EQ(PresenterTimer::text(0, 20), "20:00");
    EXPECT_EQ(PresenterTimer::text(19 * 60 + 30, 20), "00:30");
    EXPECT_EQ(PresenterTimer::text(20 * 60, 20), "00:00");
    EXPECT_EQ(PresenterTimer::text(20 * 60 + 5, 20), "+00:05");
    EXPECT_EQ(PresenterTimer::text(0, 90), "1:30:00");
    EXPECT_EQ(PresenterTimer::text(2 * 3600 + 1, 60), "+1:00:01");
}

TEST(PresenterTimer, ReadoutColourAndHelp) {
    EXPECT_EQ(PresenterTimer::readoutState(false, 5000, 20), State::stopped);
    EXPECT_EQ(PresenterTimer::readoutState(true, 5000, std::nullopt), State::normal);
    EXPECT_EQ(PresenterTimer::readoutState(true, 60, 20), State::normal);
    EXPECT_EQ(PresenterTimer::readoutState(true, 20 * 60 - 121, 20), State::normal);
    EXPECT_EQ(PresenterTimer::readoutState(true, 20 * 60 - 120, 20), State::warning);
    EXPECT_EQ(PresenterTimer::readoutState(true, 20 * 60, 20), State::warning);
    EXPECT_EQ(PresenterTimer::readoutState(true, 20 * 60 + 0.5, 20), State::overtime);
    EXPECT_EQ(PresenterTimer::helpText(20), "Time left of 20 min \u2014 click to toggle timer");
    EXPECT_EQ(PresenterTimer::helpText(std::nullopt), "Click to toggle timer");
}

TEST(PresenterHud, RevealsNearTheBottomAndHidesLater) {
    EXPECT_EQ(PresenterHud::decide(0), PresenterHud::Decision::show);
    EXPECT_EQ(PresenterHud::decide(80), PresenterHud::Decision::show);
    EXPECT_EQ(PresenterHud::decide(80.5), PresenterHud::Decision::leaveAlone);
    EXPECT_EQ(PresenterHud::decide(140), PresenterHud::Decision::leaveAlone);
    EXPECT_EQ(PresenterHud::decide(141), PresenterHud::Decision::scheduleHide);
    EXPECT_EQ(PresenterHud::decide(-1), PresenterHud::Decision::scheduleHide);

    ManualScheduler scheduler;
    bool visible = false;
    PresenterHud hud(scheduler, [&](bool v) { visible = v; });
    hud.pointerMoved(20);
    EXPECT_TRUE(visible);
    hud.pointerMoved(400);
    scheduler.advance(1.5);
    hud.pointerMoved(500);  // a new hide replaces the pending one
    scheduler.advance(1.5);
    EXPECT_TRUE(visible);
    scheduler.advance(0.5);
    EXPECT_FALSE(visible);

    hud.pointerMoved(10);
    hud.pointerMoved(300);
    hud.pointerMoved(30);  // back near the edge: the hide is cancelled
    scheduler.advance(5);
    EXPECT_TRUE(visible);
    hud.setHovering(true);
    hud.pointerMoved(300);
    scheduler.advance(5);
    EXPECT_TRUE(visible);  // the pointer is on the HUD itself
}

TEST(PresenterHud, AutoRunNotice) {
    Slide slide = Slide::make(SlideLayout::web);
    EXPECT_EQ(PresenterHud::autoRunNotice(slide), "");
    slide.actions.resize(3);
    slide.actions[0].autoRun = true;
    slide.actions[2].autoRun = true;
    EXPECT_EQ(PresenterHud::autoRunNotice(slide), "This slide runs 2 action(s) automatically");
}

TEST(PresenterHud, FailureMarkCountsFailedAutomaticActions) {
    ActionRunner runner(std::make_unique<testing::FakeHttpTransport>(), nullptr, [] { return 0.0; });
    Slide slide = Slide::make(SlideLayout::web);
    slide.actions.resize(4);
    for (auto& action : slide.actions) action.autoRun = true;
    slide.actions[0].name = "Reset";
    slide.actions[2].autoRun = false;
    EXPECT_EQ(PresenterHud::failureMark(slide, runner), std::nullopt);
    runner.finish(slide.actions[0], "HTTP 500 \u00B7 3 ms\nBroken", true);
    runner.finish(slide.actions[1], "HTTP 200 \u00B7 3 ms", false);  // succeeded
    runner.finish(slide.actions[2], "HTTP 500 \u00B7 3 ms", true);   // run by hand
    auto mark = PresenterHud::failureMark(slide, runner);
    ASSERT_TRUE(mark);
    EXPECT_EQ(mark->text, "1 action failed");
    EXPECT_EQ(mark->details, "Reset: HTTP 500 \u00B7 3 ms\nBroken");
    runner.finish(slide.actions[3], "Timed out", true);
    EXPECT_EQ(PresenterHud::failureMark(slide, runner)->text, "2 actions failed");
}

TEST(KeyMonitor, DecisionsByKeyModifiersAndEditor) {
    KeyModifiers none;
    EXPECT_EQ(keyCommand(keys::right, none, false), KeyCommand::next);
    EXPECT_EQ(keyCommand(keys::down, none, false), KeyCommand::next);
    EXPECT_EQ(keyCommand(keys::left, none, false), KeyCommand::previous);
    EXPECT_EQ(keyCommand(keys::up, none, false), KeyCommand::previous);
    EXPECT_EQ(keyCommand(keys::escape, none, false), KeyCommand::toggleOverview);
    EXPECT_EQ(keyCommand('a', none, false), KeyCommand::passOn);
    // In the editor bare arrows move the text cursor.
    EXPECT_EQ(keyCommand(keys::right, none, true), KeyCommand::passOn);
    EXPECT_EQ(keyCommand(keys::escape, none, true), KeyCommand::passOn);
    // Alt, Shift or Super with an arrow pass on while presenting.
    EXPECT_EQ(keyCommand(keys::right, {.alt = true}, false), KeyCommand::passOn);
    EXPECT_EQ(keyCommand(keys::left, {.shift = true}, false), KeyCommand::passOn);
    EXPECT_EQ(keyCommand(keys::left, {.super = true}, false), KeyCommand::passOn);
    // Ctrl+arrows move by whole slides, in the editor too.
    EXPECT_EQ(keyCommand(keys::right, {.control = true}, true), KeyCommand::nextSlideDirect);
    EXPECT_EQ(keyCommand(keys::left, {.control = true}, false), KeyCommand::previousSlideDirect);
    EXPECT_EQ(keyCommand(keys::up, {.control = true}, false), KeyCommand::passOn);
    EXPECT_EQ(keyCommand(keys::right, {.shift = true, .control = true}, false), KeyCommand::passOn);
}

}  // namespace
}  // namespace lectern
