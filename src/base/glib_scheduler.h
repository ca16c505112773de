#pragma once

#include <cstddef>
#include <functional>
#include <unordered_map>

#include <glib.h>

#include "base/scheduler.h"

namespace lectern {

// The program's scheduler: GLib timeout sources on the main context that is
// the thread default when it is made, timed on the monotonic clock with
// millisecond precision. Destroying it removes every call still pending.
class GLibScheduler : public Scheduler {
public:
    GLibScheduler();
    ~GLibScheduler() override;
    GLibScheduler(const GLibScheduler&) = delete;
    GLibScheduler& operator=(const GLibScheduler&) = delete;

    double now() const override;
    TimerId after(double seconds, std::function<void()> callback) override;
    void cancel(TimerId id) override;

    std::size_t pendingCount() const { return sources_.size(); }

private:
    struct Pending;
    static gboolean fire(gpointer data);

    GMainContext* context_;
    TimerId nextId_ = 1;
    // Our own reference to each attached source, until it fires or is cancelled.
    std::unordered_map<TimerId, GSource*> sources_;
};

}  // namespace lectern
