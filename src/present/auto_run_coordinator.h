#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "model/slide.h"
#include "present/action_runner.h"
#include "base/scheduler.h"
#include "web/live_web_view_registry.h"

namespace lectern {

// The pending automatic-run tasks of one window, by task key. Shared between
// the coordinator and its tasks; tasks hold it weakly, so the tasks of a
// closed window end quietly.
struct AutoRunTaskBox;

// Runs a window's automatic demo actions while their slide is on screen:
// after a delay, once or repeated at an interval. Every slide change cancels
// everything scheduled first, so automatic runs never outlive their slide.
class AutoRunCoordinator {
public:
    // Runs one action and calls the continuation when it has finished.
    using Execute = std::function<void(const SlideAction&, const Slide&, std::function<void()> finished)>;

    static constexpr double minimumRepeatInterval = 0.25;

    // With no `execute`, runs go to `runner` with the window's registry of
    // live pages (held weakly).
    AutoRunCoordinator(Scheduler& scheduler, std::unique_ptr<ActionRunner> runner,
                       std::weak_ptr<LiveWebViewRegistry> views, Execute execute = {});
    ~AutoRunCoordinator();
    AutoRunCoordinator(const AutoRunCoordinator&) = delete;
    AutoRunCoordinator& operator=(const AutoRunCoordinator&) = delete;

    // The slide now on screen, already reduced to its trusted actions, and
    // whether the stage alone is shown (the editor is closed).
    void slideChanged(const std::optional<Slide>& slide, bool active);
    void cancelAll();

    ActionRunner& runner() { return *runner_; }
    // Tasks scheduled and not yet finished.
    std::size_t pendingTaskCount() const;

private:
    Scheduler& scheduler_;
    std::unique_ptr<ActionRunner> runner_;
    std::weak_ptr<LiveWebViewRegistry> views_;
    Execute execute_;
    std::shared_ptr<AutoRunTaskBox> pendingBox_;
};

}  // namespace lectern
