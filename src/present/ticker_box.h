#pragma once

#include <functional>
#include <memory>

#include "base/scheduler.h"

namespace lectern {

// Owns one repeating timer on a scheduler and stops it when the box goes
// away, so the presentation timer never outlives the window's state.
class TickerBox {
public:
    explicit TickerBox(Scheduler& scheduler) : scheduler_(scheduler) {}
    ~TickerBox() { stop(); }
    TickerBox(const TickerBox&) = delete;
    TickerBox& operator=(const TickerBox&) = delete;

    // Calls tick every `interval` seconds until stop(); replaces any timer.
    void start(double interval, std::function<void()> tick);
    void stop();
    bool running() const { return pending_ != 0; }

private:
    void arm();

    Scheduler& scheduler_;
    double interval_ = 0;
    std::function<void()> tick_;
    Scheduler::TimerId pending_ = 0;
};

}  // namespace lectern
