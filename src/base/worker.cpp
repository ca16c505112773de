#include "base/worker.h"

#include <glib.h>

#include <list>
#include <memory>
#include <mutex>
#include <thread>

namespace lectern {

namespace {

struct Job {
    std::function<void()> done;
    std::thread thread;
    std::mutex mutex;
    bool settled = false;  // `done` ran, or will never run
};

// Takes `done` out of the job unless it was taken already; whoever gets it
// runs it.
std::function<void()> takeDone(Job& job) {
    std::lock_guard lock(job.mutex);
    if (job.settled) return {};
    job.settled = true;
    return std::move(job.done);
}

}  // namespace

struct ThreadWorker::Jobs {
    GMainContext* context = nullptr;
    std::list<std::shared_ptr<Job>> running;

    // Forgets jobs whose thread has ended and whose `done` has run.
    void prune() {
        running.remove_if([](const std::shared_ptr<Job>& job) {
            std::lock_guard lock(job->mutex);
            if (!job->settled) return false;
            if (job->thread.joinable()) job->thread.join();
            return true;
        });
    }
};

ThreadWorker::ThreadWorker() : jobs_(new Jobs) {
    jobs_->context = g_main_context_ref_thread_default();
}

ThreadWorker::~ThreadWorker() {
    for (auto& job : jobs_->running) {
        (void)takeDone(*job);
        if (job->thread.joinable()) job->thread.join();
    }
    g_main_context_unref(jobs_->context);
    delete jobs_;
}

void ThreadWorker::run(std::function<void()> work, std::function<void()> done) {
    jobs_->prune();
    auto job = std::make_shared<Job>();
    job->done = std::move(done);
    GMainContext* context = jobs_->context;
    job->thread = std::thread([job, work = std::move(work), context] {
        work();
        // Back on the main loop; the reference keeps the job until then.
        g_main_context_invoke_full(
            context, G_PRIORITY_DEFAULT,
            [](gpointer data) -> gboolean {
                auto& job = *static_cast<std::shared_ptr<Job>*>(data);
                if (auto done = takeDone(*job)) done();
                return G_SOURCE_REMOVE;
            },
            new std::shared_ptr<Job>(job), [](gpointer data) { delete static_cast<std::shared_ptr<Job>*>(data); });
    });
    jobs_->running.push_back(std::move(job));
}

void ThreadWorker::finish() {
    // A `done` may hand over another job: run until none is left.
    while (!jobs_->running.empty()) {
        auto job = jobs_->running.front();
        jobs_->running.pop_front();
        if (job->thread.joinable()) job->thread.join();
        if (auto done = takeDone(*job)) done();
    }
}

}  // namespace lectern
