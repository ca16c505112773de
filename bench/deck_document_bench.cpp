// The document on a 1,000-slide talk: undo and redo of a rename (whole-deck
// snapshots), and the main loop's share of an autosave: copying the deck for
// the worker when the save starts, and taking the written deck back as the
// saved one (with the dirty check) when it ends. The writing itself happens
// on the worker and is not timed here.

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <functional>
#include <utility>
#include <vector>

#include "base/manual_scheduler.h"
#include "bench_decks.h"
#include "editor/autosaver.h"
#include "editor/deck_document.h"

namespace lectern::bench {
namespace {

const Deck& talk() {
    static const Deck shared = makeTalkDeck(1000, 20261123);
    return shared;
}

void BM_UndoRedo1000(benchmark::State& state) {
    DeckDocument document(talk(), std::nullopt, [] { return 0.0; });
    document.edit("Rename Slide", [](Deck deck) {
        deck.slides[500].title += " (edited)";
        return deck;
    });
    for (auto _ : state) {
        document.undo();
        document.redo();
    }
}
BENCHMARK(BM_UndoRedo1000)->Unit(benchmark::kMicrosecond);

void BM_Compare1000(benchmark::State& state) {
    Deck a = talk(), b = talk();
    for (auto _ : state) benchmark::DoNotOptimize(a == b);
}
BENCHMARK(BM_Compare1000)->Unit(benchmark::kMillisecond);

void BM_Copy1000(benchmark::State& state) {
    for (auto _ : state) { Deck copy = talk(); benchmark::DoNotOptimize(copy); }
}
BENCHMARK(BM_Copy1000)->Unit(benchmark::kMillisecond);

// One keystroke in a slide's title: merged into the typing step.
void BM_Keystroke1000(benchmark::State& state) {
    DeckDocument document(talk(), std::nullopt, [] { return 0.0; });
    int round = 0;
    for (auto _ : state) {
        document.edit("Typing", [&](Deck deck) {
            deck.slides[500].title = std::to_string(++round);
            return deck;
        }, "title");
    }
}
BENCHMARK(BM_Keystroke1000)->Unit(benchmark::kMillisecond);

// An edit that makes a new undo step (the history keeps a whole deck more).
void BM_Edit1000(benchmark::State& state) {
    DeckDocument document(talk(), std::nullopt, [] { return 0.0; });
    int round = 0;
    for (auto _ : state) {
        document.edit("Rename Slide", [&](Deck deck) {
            deck.slides[500].title = std::to_string(++round);
            return deck;
        });
    }
}
BENCHMARK(BM_Edit1000)->Unit(benchmark::kMillisecond);

// Resident memory of this process, in MiB.
double residentMiB() {
    long pages = 0, resident = 0;
    if (FILE* statm = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(statm, "%ld %ld", &pages, &resident) != 2) resident = 0;
        std::fclose(statm);
    }
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1 << 20);
}

// What a full history costs: 200 renames, each its own undo step.
void BM_FullHistoryMemory1000(benchmark::State& state) {
    for (auto _ : state) {
        double before = residentMiB();
        DeckDocument document(talk(), std::nullopt, [] { return 0.0; });
        for (int i = 0; i < static_cast<int>(DeckDocument::maxUndoSteps); ++i) {
            document.edit("Rename Slide", [&](Deck deck) {
                deck.slides[500].title = std::to_string(i);
                return deck;
            });
        }
        state.counters["history_MiB"] = residentMiB() - before;
    }
}
BENCHMARK(BM_FullHistoryMemory1000)->Iterations(1)->Unit(benchmark::kMillisecond);

// Keeps each job instead of running it, so that only the main loop's part
// of a save is timed; `done` runs on request.
class HeldWorker : public Worker {
public:
    void run(std::function<void()>, std::function<void()> done) override { held_.push_back(std::move(done)); }
    void finish() override {}
    void finishHeld() {
        for (auto& done : std::exchange(held_, {})) done();
    }

private:
    std::vector<std::function<void()>> held_;
};

void BM_AutosaveMainThread1000(benchmark::State& state) {
    ManualScheduler scheduler;
    HeldWorker worker;
    DeckDocument document(talk(), std::filesystem::path("/nonexistent/Talk.lectern"),
                          [&] { return scheduler.now(); });
    Autosaver saver(document, scheduler, worker, [](const Deck&, const std::filesystem::path&) { return Status(Done{}); },
                    nullptr);
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        document.edit("Rename Slide", [&](Deck deck) {
            deck.slides[500].title = std::to_string(++round);
            return deck;
        });
        state.ResumeTiming();
        saver.saveNow();        // the copy handed to the worker
        worker.finishHeld();    // the written deck becomes the saved one
    }
}
BENCHMARK(BM_AutosaveMainThread1000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lectern::bench

BENCHMARK_MAIN();
