#pragma once

#include <functional>

namespace lectern {

// Work that must not stall the main loop (writing a package, drawing its
// previews): `work` runs on another thread, then `done` on the main loop.
class Worker {
public:
    virtual ~Worker() = default;
    virtual void run(std::function<void()> work, std::function<void()> done) = 0;
    // Waits for every job handed over and runs the `done` of each that has
    // not run yet, now: for the moment a window closes.
    virtual void finish() = 0;
};

// Runs each job on a thread of its own (jobs are rare: a save, a copy) and
// its `done` on the main context that was the thread default when the
// worker was made. Destroying it waits for running jobs and drops their
// `done`.
class ThreadWorker : public Worker {
public:
    ThreadWorker();
    ~ThreadWorker() override;
    ThreadWorker(const ThreadWorker&) = delete;
    ThreadWorker& operator=(const ThreadWorker&) = delete;

    void run(std::function<void()> work, std::function<void()> done) override;
    void finish() override;

private:
    struct Jobs;
    Jobs* jobs_;
};

// Runs both at once, in the caller: for tests.
class InlineWorker : public Worker {
public:
    void run(std::function<void()> work, std::function<void()> done) override {
        work();
        done();
    }
    void finish() override {}
};

}  // namespace lectern
