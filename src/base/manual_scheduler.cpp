#include "base/manual_scheduler.h"

#include <algorithm>

namespace lectern {

Scheduler::TimerId ManualScheduler::after(double seconds, std::function<void()> callback) {
    // Zero, negative and NaN all mean "the next turn".
    double due = now_ + (seconds > 0 ? seconds : 0);
    TimerId id = nextId_++;
    queue_.emplace(Key{due, id}, std::move(callback));
    dueTimes_.emplace(id, due);
    return id;
}

void ManualScheduler::cancel(TimerId id) {
    auto it = dueTimes_.find(id);
    if (it == dueTimes_.end()) return;
    queue_.erase(Key{it->second, id});
    dueTimes_.erase(it);
}

void ManualScheduler::advance(double seconds) {
    double target = now_ + (seconds > 0 ? seconds : 0);
    // Take the earliest entry each time round: a callback may schedule or
    // cancel others, so no iterator survives a call.
    while (!queue_.empty() && queue_.begin()->first.first <= target) {
        auto node = queue_.extract(queue_.begin());
        dueTimes_.erase(node.key().second);
        now_ = std::max(now_, node.key().first);
        node.mapped()();
    }
    now_ = std::max(now_, target);
}

}  // namespace lectern
