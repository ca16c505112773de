#include <gtest/gtest.h>

#include <glib.h>

#include <string>
#include <vector>

#include "base/glib_scheduler.h"
#include "base/manual_scheduler.h"

namespace lectern {
namespace {

TEST(ManualScheduler, RunsInTimeOrderThenSchedulingOrderWithTheClockAtEachDueTime) {
    ManualScheduler clock(10);
    std::vector<std::string> log;
    auto record = [&](std::string name) { return [&, name] { log.push_back(name + "@" + std::to_string(clock.now())); }; };
    clock.after(2, record("b"));
    clock.after(1, record("a1"));
    clock.after(1, record("a2"));
    auto cancelled = clock.after(1.5, record("never"));
    clock.after(0.5, [&] {
        log.push_back("chain");
        clock.cancel(cancelled);
        clock.after(0, record("next-turn"));  // same time, after the others due then
        clock.after(1.2, record("inside"));   // 11.7: still within the window
        clock.after(5, record("outside"));
    });
    clock.after(-1, record("now"));
    EXPECT_TRUE(log.empty()) << "never from inside after()";
    EXPECT_EQ(clock.pendingCount(), 6u);
    clock.runPending();
    clock.advance(2);
    EXPECT_EQ(log, (std::vector<std::string>{"now@10.000000", "chain", "next-turn@10.500000", "a1@11.000000",
                                             "a2@11.000000", "inside@11.700000", "b@12.000000"}));
    EXPECT_EQ(clock.now(), 12);
    EXPECT_EQ(clock.pendingCount(), 1u);
    clock.cancel(cancelled);  // already gone: ignored
    clock.cancel(12345);
    EXPECT_EQ(clock.pendingCount(), 1u);
}

// Runs a private main context as the thread default until `done` or 2 s.
struct Loop {
    GMainContext* context = g_main_context_new();
    Loop() { g_main_context_push_thread_default(context); }
    ~Loop() {
        g_main_context_pop_thread_default(context);
        g_main_context_unref(context);
    }
    void runUntil(const bool& done, double seconds = 2) {
        gint64 deadline = g_get_monotonic_time() + static_cast<gint64>(seconds * G_USEC_PER_SEC);
        while (!done && g_get_monotonic_time() < deadline) g_main_context_iteration(context, FALSE), g_usleep(200);
    }
};

TEST(GLibScheduler, FiresOnItsContextNoEarlierThanAskedAndNotOnceCancelled) {
    Loop loop;
    GLibScheduler scheduler;
    double start = scheduler.now();
    double firedAt = 0;
    bool fired = false, cancelledFired = false, zeroFired = false;
    scheduler.after(0.020, [&] { firedAt = scheduler.now(), fired = true; });
    auto cancelled = scheduler.after(0.010, [&] { cancelledFired = true; });
    scheduler.after(0, [&] { zeroFired = true; });
    EXPECT_FALSE(zeroFired);
    scheduler.cancel(cancelled);
    EXPECT_EQ(scheduler.pendingCount(), 2u);
    loop.runUntil(fired);
    ASSERT_TRUE(fired);
    EXPECT_GE(firedAt - start, 0.020);
    EXPECT_TRUE(zeroFired);
    EXPECT_FALSE(cancelledFired);
    EXPECT_EQ(scheduler.pendingCount(), 0u);
}

TEST(GLibScheduler, DestroyingItRemovesWhatIsPending) {
    Loop loop;
    bool fired = false;
    {
        GLibScheduler scheduler;
        scheduler.after(0, [&] { fired = true; });
    }
    loop.runUntil(fired, 0.05);
    EXPECT_FALSE(fired);
}

}  // namespace
}  // namespace lectern
