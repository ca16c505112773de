#include "base/glib_scheduler.h"

#include <cmath>
#include <utility>

namespace lectern {

// What a source carries to its dispatch; freed by GLib when the source is
// destroyed (fired or cancelled).
struct GLibScheduler::Pending {
    GLibScheduler* owner;
    TimerId id;
    std::function<void()> callback;
};

GLibScheduler::GLibScheduler() : context_(g_main_context_ref_thread_default()) {}

GLibScheduler::~GLibScheduler() {
    for (auto& [id, source] : sources_) {
        g_source_destroy(source);
        g_source_unref(source);
    }
    g_main_context_unref(context_);
}

double GLibScheduler::now() const {
    return static_cast<double>(g_get_monotonic_time()) / G_USEC_PER_SEC;
}

Scheduler::TimerId GLibScheduler::after(double seconds, std::function<void()> callback) {
    // Rounded up to whole milliseconds so a call never comes early; zero,
    // negative and NaN mean the next turn; anything beyond the range of a
    // GLib interval (about 49 days, or infinity) waits that long.
    guint interval = 0;
    if (seconds > 0) {
        double milliseconds = std::ceil(seconds * 1000);
        interval = milliseconds >= static_cast<double>(G_MAXUINT) ? G_MAXUINT : static_cast<guint>(milliseconds);
    }
    TimerId id = nextId_++;
    GSource* source = g_timeout_source_new(interval);
    g_source_set_callback(
        source, &GLibScheduler::fire, new Pending{this, id, std::move(callback)},
        [](gpointer data) { delete static_cast<Pending*>(data); });
    g_source_attach(source, context_);
    sources_.emplace(id, source);  // keeps the reference from g_timeout_source_new
    return id;
}

void GLibScheduler::cancel(TimerId id) {
    auto it = sources_.find(id);
    if (it == sources_.end()) return;
    GSource* source = it->second;
    sources_.erase(it);
    g_source_destroy(source);
    g_source_unref(source);
}

gboolean GLibScheduler::fire(gpointer data) {
    auto* pending = static_cast<Pending*>(data);
    GLibScheduler* owner = pending->owner;
    // Forget the source before calling out: the callback may schedule, cancel
    // (its own id is then unknown) or destroy the scheduler. The context holds
    // the source until this dispatch returns.
    auto it = owner->sources_.find(pending->id);
    if (it != owner->sources_.end()) {
        g_source_unref(it->second);
        owner->sources_.erase(it);
    }
    auto callback = std::move(pending->callback);
    callback();
    return G_SOURCE_REMOVE;
}

}  // namespace lectern
