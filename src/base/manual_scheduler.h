#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <unordered_map>
#include <utility>

#include "base/scheduler.h"

namespace lectern {

// A scheduler whose clock moves only when told, for tests and benchmarks.
// Callbacks due at the same time run in the order they were scheduled.
class ManualScheduler : public Scheduler {
public:
    explicit ManualScheduler(double start = 0) : now_(start) {}

    double now() const override { return now_; }
    TimerId after(double seconds, std::function<void()> callback) override;
    void cancel(TimerId id) override;

    // Moves the clock forward by `seconds`, running every callback that falls
    // due on the way, in time order, with now() set to its due time. Callbacks
    // scheduled meanwhile for a time inside the window run too.
    void advance(double seconds);
    // Runs what is due now, including after(0) callbacks scheduled by those
    // callbacks (a callback that keeps rescheduling itself with after(0)
    // never lets this return, as it would keep a main loop busy).
    void runPending() { advance(0); }

    std::size_t pendingCount() const { return queue_.size(); }

private:
    using Key = std::pair<double, TimerId>;  // due time, then scheduling order

    double now_;
    TimerId nextId_ = 1;
    std::map<Key, std::function<void()>> queue_;
    std::unordered_map<TimerId, double> dueTimes_;
};

}  // namespace lectern
