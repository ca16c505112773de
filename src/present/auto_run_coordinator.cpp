#include "present/auto_run_coordinator.h"

#include <cstdint>
#include <utility>

namespace lectern {

namespace {

// One automatic action while its slide is on screen: a small state machine
// driven by scheduler callbacks and the run's `finished` continuation.
//
//   sleep(delay) → run → [repeats and limit allows] sleep(interval) → run → ...
//
// Every sleep counts from the moment the previous step ended, so a slow run
// pushes the next one back by its own duration. The box owns the task;
// scheduler callbacks and continuations hold it weakly, so once the box lets
// go of it (cancelled, or the window closed) nothing of it runs again.
class AutoRunTask : public std::enable_shared_from_this<AutoRunTask> {
public:
    AutoRunTask(Scheduler& scheduler, const AutoRunCoordinator::Execute& execute, Uuid key, SlideAction action,
                std::shared_ptr<const Slide> slide, std::weak_ptr<AutoRunTaskBox> box)
        : scheduler_(scheduler),
          execute_(execute),
          key_(key),
          action_(std::move(action)),
          slide_(std::move(slide)),
          box_(std::move(box)) {}

    ~AutoRunTask() { cancel(); }

    void start() {
        // A negative (or NaN) delay means at once: on the next turn.
        double delay = action_.autoRunDelaySeconds > 0 ? action_.autoRunDelaySeconds : 0;
        sleep(delay);
    }

    // Nothing of the task runs after this; a run already under way finishes
    // on its own, and its continuation then finds the task cancelled.
    void cancel() {
        cancelled_ = true;
        if (timer_ != 0) {
            scheduler_.cancel(timer_);
            timer_ = 0;
        }
    }

private:
    void sleep(double seconds) {
        std::weak_ptr<AutoRunTask> weak = weak_from_this();
        timer_ = scheduler_.after(seconds, [weak] {
            if (auto task = weak.lock()) task->wake();
        });
    }

    void wake() {
        timer_ = 0;
        if (cancelled_) return end();
        run();
    }

    void run() {
        // Held for the call: `execute` may cancel this task (by changing the
        // slide) or finish synchronously, and it reads our action and slide.
        auto self = shared_from_this();
        std::uint64_t run = ++runs_;
        running_ = true;
        std::weak_ptr<AutoRunTask> weak = weak_from_this();
        execute_(action_, *slide_, [weak, run] {
            if (auto task = weak.lock()) task->finished(run);
        });
    }

    void finished(std::uint64_t run) {
        // A continuation called twice, or late for an older run, is ignored.
        if (!running_ || run != runs_) return;
        running_ = false;
        if (cancelled_ || !action_.repeats) return end();
        // The limit counts every run including the first: 1 is the run just
        // made, 0 is no limit, and a negative limit means no repeats.
        std::int64_t limit = action_.repeatMaxRuns;
        if (limit < 0 || (limit > 0 && runs_ >= static_cast<std::uint64_t>(limit))) return end();
        double interval = action_.repeatIntervalSeconds > AutoRunCoordinator::minimumRepeatInterval
                              ? action_.repeatIntervalSeconds
                              : AutoRunCoordinator::minimumRepeatInterval;
        sleep(interval);
    }

    // Removes the task from its box, which releases it; a box that is gone
    // (its window closed) has nothing left to remove.
    void end();

    Scheduler& scheduler_;
    // The coordinator's; only called while the task is not cancelled, and the
    // coordinator cancels every task before it goes away.
    const AutoRunCoordinator::Execute& execute_;
    Uuid key_;
    SlideAction action_;
    std::shared_ptr<const Slide> slide_;
    std::weak_ptr<AutoRunTaskBox> box_;
    Scheduler::TimerId timer_ = 0;
    std::uint64_t runs_ = 0;
    bool running_ = false;
    bool cancelled_ = false;
};

}  // namespace

struct AutoRunTaskBox {
    std::map<Uuid, std::shared_ptr<AutoRunTask>> tasks;
};

namespace {

void AutoRunTask::end() {
    cancelled_ = true;
    auto box = box_.lock();
    if (!box) return;
    auto it = box->tasks.find(key_);
    // The key may already belong to nothing: the box is emptied on cancel.
    if (it == box->tasks.end() || it->second.get() != this) return;
    // Keep this object alive until the function returns.
    auto self = std::move(it->second);
    box->tasks.erase(it);
}

}  // namespace

AutoRunCoordinator::AutoRunCoordinator(Scheduler& scheduler, std::unique_ptr<ActionRunner> runner,
                                       std::weak_ptr<LiveWebViewRegistry> views, Execute execute)
    : scheduler_(scheduler),
      runner_(std::move(runner)),
      views_(std::move(views)),
      execute_(std::move(execute)),
      pendingBox_(std::make_shared<AutoRunTaskBox>()) {
    if (!execute_) {
        // The runner records the outcome and calls `finished` afterwards (and
        // never once it is gone). A window whose pages are gone runs scripts
        // with no page to run in, which the runner reports as a failure.
        execute_ = [this](const SlideAction& action, const Slide& slide, std::function<void()> finished) {
            auto views = views_.lock();
            runner_->run(action, slide, views.get(), std::move(finished));
        };
    }
}

AutoRunCoordinator::~AutoRunCoordinator() { cancelAll(); }

void AutoRunCoordinator::slideChanged(const std::optional<Slide>& slide, bool active) {
    cancelAll();
    if (!active || !slide) return;
    std::shared_ptr<const Slide> shared;  // one copy for all the slide's tasks
    for (const SlideAction& action : slide->actions) {
        if (!action.autoRun) continue;
        if (!shared) shared = std::make_shared<const Slide>(*slide);
        Uuid key = Uuid::random();
        auto task = std::make_shared<AutoRunTask>(scheduler_, execute_, key, action, shared, pendingBox_);
        pendingBox_->tasks.emplace(key, task);
        task->start();
    }
}

void AutoRunCoordinator::cancelAll() {
    // Emptied first, so that whatever a cancellation sets off finds an empty
    // box; the tasks are released when `tasks` goes out of scope.
    auto tasks = std::move(pendingBox_->tasks);
    pendingBox_->tasks.clear();
    for (auto& [key, task] : tasks) task->cancel();
}

std::size_t AutoRunCoordinator::pendingTaskCount() const { return pendingBox_->tasks.size(); }

}  // namespace lectern
