// Slide changes with automatic repeating actions on screen: every change
// cancels the previous slide's tasks and schedules the new slide's. Measures
// the time of one change and checks that 10,000 of them leave nothing behind:
// no task, no timer, no growth of the resident set.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <memory>

#include "present/auto_run_coordinator.h"
#include "base/manual_scheduler.h"

namespace {

using namespace lectern;

// The runs never reach it: the benchmark supplies its own `execute`.
struct UnusedTransport : HttpTransport {
    void send(const HttpRequest&, std::function<void(Result<HttpResponse>)>) override {}
};

SlideAction automatic(double delay, bool repeats, double interval, std::int64_t maxRuns) {
    SlideAction action;
    action.name = "Refresh";
    action.request.urlString = "http://127.0.0.1:8080/api/status";
    action.autoRun = true;
    action.autoRunDelaySeconds = delay;
    action.repeats = repeats;
    action.repeatIntervalSeconds = interval;
    action.repeatMaxRuns = maxRuns;
    return action;
}

// Resident memory of this process in bytes (second field of /proc/self/statm).
double residentBytes() {
    long pages = 0, resident = 0;
    if (FILE* file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%ld %ld", &pages, &resident) != 2) resident = 0;
        std::fclose(file);
    }
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

void SlideChangeCancelsAutomaticRuns(benchmark::State& state) {
    constexpr int changes = 10'000;
    ManualScheduler clock;
    std::size_t runs = 0;
    AutoRunCoordinator coordinator(
        clock,
        std::make_unique<ActionRunner>(std::make_unique<UnusedTransport>(), nullptr, [&] { return clock.now(); }),
        {}, [&](const SlideAction&, const Slide&, std::function<void()> finished) {
            ++runs;
            finished();
        });
    // Two slides that keep something scheduled at every moment: a run at
    // once repeating at the floor, a bounded repeat after a short delay, a
    // single run after a long delay; a manual action that never runs.
    Slide first, second;
    first.title = "Live metrics";
    first.actions = {automatic(0, true, 0, 0), automatic(0.1, true, 1, 3), automatic(2, false, 5, 0)};
    SlideAction manual = automatic(0, false, 5, 0);
    manual.autoRun = false;
    first.actions.push_back(manual);
    second.title = "Dashboard";
    second.actions = {automatic(-1, true, 0.5, 0), automatic(0.2, true, 0.25, 5)};

    // Each change: slide on, 0.3 s pass (the tasks sleep and run), slide off.
    auto cycle = [&](int count) {
        std::size_t leftover = 0;
        for (int i = 0; i < count; ++i) {
            const Slide& slide = i % 2 == 0 ? first : second;
            coordinator.slideChanged(slide, true);
            clock.advance(0.3);
            // Every live task has exactly one timer pending.
            if (clock.pendingCount() > coordinator.pendingTaskCount()) ++leftover;
        }
        return leftover;
    };
    cycle(changes);  // warm-up: the allocator reaches its working size
    double before = residentBytes();
    std::size_t leftover = 0;
    runs = 0;
    for (auto _ : state) leftover += cycle(changes);
    double after = residentBytes();
    coordinator.slideChanged(std::nullopt, true);

    if (leftover != 0) state.SkipWithError("timers left behind by cancelled tasks");
    if (coordinator.pendingTaskCount() != 0 || clock.pendingCount() != 0) {
        state.SkipWithError("tasks or timers left after the last slide change");
    }
    using benchmark::Counter;
    state.counters["per_change"] =
        Counter(changes, Counter::kIsIterationInvariantRate | Counter::kInvert);
    state.counters["runs_per_change"] =
        Counter(static_cast<double>(runs) / changes, Counter::kAvgIterations);
    state.counters["rss_growth_KiB"] = (after - before) / 1024;
    state.counters["pending_timers_after"] = static_cast<double>(clock.pendingCount());
    state.counters["pending_tasks_after"] = static_cast<double>(coordinator.pendingTaskCount());
}
BENCHMARK(SlideChangeCancelsAutomaticRuns)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
