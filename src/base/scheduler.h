#pragma once

#include <cstdint>
#include <functional>

namespace lectern {

// Time and one-shot timers on the main loop. The logic that schedules (timer
// ticks, automatic runs, retries) takes this interface, so tests run it on a
// ManualScheduler in microseconds and the program on GLib timeouts.
class Scheduler {
public:
    using TimerId = std::uint64_t;  // never 0

    virtual ~Scheduler() = default;
    // Seconds on a monotonic clock (never jumps with the wall clock).
    virtual double now() const = 0;
    // Calls `callback` once, on the main loop, after `seconds` (0 or less:
    // on the next turn, never from inside this call).
    virtual TimerId after(double seconds, std::function<void()> callback) = 0;
    // Cancels a pending call; unknown or already fired ids are ignored.
    virtual void cancel(TimerId id) = 0;
};

}  // namespace lectern
