#include "present/auto_run_coordinator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "base/manual_scheduler.h"
#include "support/fake_http.h"

namespace lectern {
namespace {

SlideAction automatic(std::string name, double delay, bool repeats = false, double interval = 5, std::int64_t maxRuns = 0) {
    SlideAction action;
    action.name = std::move(name);
    action.autoRun = true;
    action.autoRunDelaySeconds = delay;
    action.repeats = repeats;
    action.repeatIntervalSeconds = interval;
    action.repeatMaxRuns = maxRuns;
    return action;
}

Slide slideWith(std::vector<SlideAction> actions) {
    Slide slide;
    slide.actions = std::move(actions);
    return slide;
}

// A coordinator on a fake clock whose runs are recorded (name, start time).
// A run lasts `duration` seconds of the fake clock (0: it finishes inside the
// call), unless `hold` keeps it open until the test finishes it.
struct Harness {
    ManualScheduler clock;
    double duration = 0;
    bool hold = false;
    std::vector<std::pair<std::string, double>> runs;
    std::vector<std::function<void()>> held;
    std::function<void(const SlideAction&)> onRun;
    std::unique_ptr<AutoRunCoordinator> coordinator = std::make_unique<AutoRunCoordinator>(
        clock, std::make_unique<ActionRunner>(std::make_unique<testing::FakeHttpTransport>(), nullptr, [this] { return clock.now(); }),
        std::weak_ptr<LiveWebViewRegistry>(),
        [this](const SlideAction& action, const Slide&, std::function<void()> finished) {
            runs.emplace_back(action.name, clock.now());
            if (onRun) onRun(action);
            if (hold) {
                held.push_back(std::move(finished));
            } else if (duration > 0) {
                clock.after(duration, std::move(finished));
            } else {
                finished();
            }
        });

    std::vector<double> times() const {
        std::vector<double> result;
        for (auto& run : runs) result.push_back(run.second);
        return result;
    }
};

TEST(AutoRunCoordinator, DelayCountsFromTheSlideChangeAndNegativeMeansNextTurn) {
    Harness h;
    h.coordinator->slideChanged(slideWith({automatic("now", -5), automatic("later", 2)}), true);
    EXPECT_TRUE(h.runs.empty()) << "never from inside slideChanged";
    EXPECT_EQ(h.coordinator->pendingTaskCount(), 2u);
    h.clock.runPending();
    h.clock.advance(1.999);
    EXPECT_EQ(h.runs, (std::vector<std::pair<std::string, double>>{{"now", 0}}));
    h.clock.advance(0.001);
    EXPECT_EQ(h.times(), (std::vector<double>{0, 2}));
    EXPECT_EQ(h.coordinator->pendingTaskCount(), 0u);
    EXPECT_EQ(h.clock.pendingCount(), 0u);
}

TEST(AutoRunCoordinator, IntervalHasAQuarterSecondFloor) {
    for (double interval : {0.0, -3.0, 0.1, std::numeric_limits<double>::quiet_NaN()}) {
        Harness h;
        h.coordinator->slideChanged(slideWith({automatic("tick", 0, true, interval)}), true);
        h.clock.advance(1.1);
        EXPECT_EQ(h.times(), (std::vector<double>{0, 0.25, 0.5, 0.75, 1.0})) << interval;
    }
}

TEST(AutoRunCoordinator, RepeatMaxRunsCountsTheFirstRun) {
    struct Case { bool repeats; std::int64_t maxRuns; std::size_t runs; };
    for (Case c : {Case{true, 1, 1}, Case{true, 3, 3}, Case{true, -2, 1}, Case{false, 5, 1}}) {
        Harness h;
        h.coordinator->slideChanged(slideWith({automatic("a", 1, c.repeats, 2, c.maxRuns)}), true);
        h.clock.advance(100);
        EXPECT_EQ(h.runs.size(), c.runs) << c.repeats << " " << c.maxRuns;
        EXPECT_EQ(h.coordinator->pendingTaskCount(), 0u);
        EXPECT_EQ(h.clock.pendingCount(), 0u);
    }
    Harness h;
    h.coordinator->slideChanged(slideWith({automatic("a", 1, true, 2, 3)}), true);
    h.clock.advance(100);
    EXPECT_EQ(h.times(), (std::vector<double>{1, 3, 5}));
}

TEST(AutoRunCoordinator, EverySlideChangeCancelsWhatWasScheduled) {
    Slide slide = slideWith({automatic("forever", 3, true, 1, 0)});
    Harness h;
    // Leaving during the delay: the action never runs.
    h.coordinator->slideChanged(slide, true);
    h.clock.advance(2);
    h.coordinator->slideChanged(std::nullopt, true);
    EXPECT_EQ(h.coordinator->pendingTaskCount(), 0u);
    EXPECT_EQ(h.clock.pendingCount(), 0u);
    h.clock.advance(10);
    EXPECT_TRUE(h.runs.empty());

    // Unlimited repeats until the editor opens on the same slide.
    h.coordinator->slideChanged(slide, true);
    h.clock.advance(5.5);
    EXPECT_EQ(h.times(), (std::vector<double>{15, 16, 17}));
    h.coordinator->slideChanged(slide, false);
    h.clock.advance(10);
    EXPECT_EQ(h.runs.size(), 3u);

    // Back on stage: a fresh task, delay first.
    h.coordinator->slideChanged(slide, true);
    h.clock.advance(3);
    EXPECT_EQ(h.times().back(), 30.5);
}

TEST(AutoRunCoordinator, EachAutomaticActionHasItsOwnTask) {
    SlideAction manual = automatic("manual", 0);
    manual.autoRun = false;
    Harness h;
    h.coordinator->slideChanged(slideWith({automatic("a", 1), manual, automatic("c", 0, true, 0.5, 2)}), true);
    EXPECT_EQ(h.coordinator->pendingTaskCount(), 2u);
    h.clock.advance(0.5);
    EXPECT_EQ(h.coordinator->pendingTaskCount(), 1u);
    h.clock.advance(1);
    EXPECT_EQ(h.runs, (std::vector<std::pair<std::string, double>>{{"c", 0}, {"c", 0.5}, {"a", 1}}));
    EXPECT_EQ(h.coordinator->pendingTaskCount(), 0u);
}

TEST(AutoRunCoordinator, IntervalCountsFromTheEndOfASlowRun) {
    Harness h;
    h.duration = 2;
    h.coordinator->slideChanged(slideWith({automatic("slow", 0, true, 1, 0)}), true);
    h.clock.advance(7);
    EXPECT_EQ(h.times(), (std::vector<double>{0, 3, 6}));
    // Leaving during a run: the run completes, nothing follows it.
    h.coordinator->slideChanged(std::nullopt, true);
    EXPECT_EQ(h.coordinator->pendingTaskCount(), 0u);
    h.clock.advance(20);
    EXPECT_EQ(h.runs.size(), 3u);
    EXPECT_EQ(h.clock.pendingCount(), 0u);
}

TEST(AutoRunCoordinator, LateOrRepeatedContinuationsAreHarmless) {
    Harness h;
    h.hold = true;
    h.coordinator->slideChanged(slideWith({automatic("r", 0, true, 1, 0)}), true);
    h.clock.runPending();
    ASSERT_EQ(h.held.size(), 1u);
    h.held[0]();
    h.held[0]();  // a second call must not schedule a second series
    EXPECT_EQ(h.clock.pendingCount(), 1u);
    h.clock.advance(1);
    ASSERT_EQ(h.held.size(), 2u);
    // The window closes with a run in flight; the run finishes afterwards.
    h.coordinator.reset();
    EXPECT_EQ(h.clock.pendingCount(), 0u);
    h.held[1]();
    h.clock.advance(10);
    EXPECT_EQ(h.runs.size(), 2u);
}

TEST(AutoRunCoordinator, ARunMayChangeTheSlideFromInsideExecute) {
    Harness h;
    h.onRun = [&](const SlideAction&) { h.coordinator->slideChanged(std::nullopt, true); };
    h.coordinator->slideChanged(slideWith({automatic("leaves", 0, true, 1, 0), automatic("other", 0)}), true);
    h.clock.advance(5);
    EXPECT_EQ(h.runs.size(), 1u);
    EXPECT_EQ(h.coordinator->pendingTaskCount(), 0u);
    EXPECT_EQ(h.clock.pendingCount(), 0u);
}

TEST(AutoRunCoordinator, DefaultExecuteGoesToTheRunnerAndFailuresKeepRepeating) {
    ManualScheduler clock;
    auto transport = std::make_unique<testing::FakeHttpTransport>();
    auto sent = transport->sent;
    AutoRunCoordinator coordinator(
        clock, std::make_unique<ActionRunner>(std::move(transport), nullptr, [&] { return clock.now(); }), {});
    SlideAction action = automatic("ping", 0, true, 1, 0);
    action.request.urlString = "http://127.0.0.1:9/ping";
    coordinator.slideChanged(slideWith({action}), true);
    clock.runPending();
    ASSERT_EQ(sent->size(), 1u);
    EXPECT_EQ(coordinator.runner().state(action.id), ActionRunner::RunState::running());
    clock.advance(5);
    EXPECT_EQ(sent->size(), 1u) << "the next run waits for this one";
    (*sent)[0].done(HttpResponse{500, {}});
    EXPECT_EQ(coordinator.runner().state(action.id).kind, ActionRunner::RunState::Kind::failure);
    clock.advance(1);
    EXPECT_EQ(sent->size(), 2u);
}

}  // namespace
}  // namespace lectern
