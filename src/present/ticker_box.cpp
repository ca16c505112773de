#include "present/ticker_box.h"

namespace lectern {

void TickerBox::start(double interval, std::function<void()> tick) {
    stop();
    interval_ = interval;
    tick_ = std::move(tick);
    arm();
}

void TickerBox::stop() {
    if (pending_ != 0) scheduler_.cancel(pending_);
    pending_ = 0;
    tick_ = nullptr;
}

void TickerBox::arm() {
    // The box cancels its pending timer before it is destroyed, so the
    // callback never sees a dead box.
    pending_ = scheduler_.after(interval_, [this] {
        pending_ = 0;
        auto tick = tick_;
        arm();
        if (tick) tick();
    });
}

}  // namespace lectern
