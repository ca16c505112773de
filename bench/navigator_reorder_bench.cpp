// A reorder in the editor of a 1,000-slide deck: from "Move Down" (Alt+Down
// in the slide list) to the end of the first frame that shows it, and the
// part of that spent in the window's handlers (the edit, the slide list's
// splice, the stage and the other views following the deck). It needs a
// display: run it under `xvfb-run -a`.

#include <benchmark/benchmark.h>

#include <gtkmm.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "app/platform/lectern_application.h"
#include "base/platform/gobject_ref.h"
#include "bench_application.h"
#include "bench_decks.h"
#include "editor/platform/deck_window.h"
#include "main_loop.h"

namespace {

using lectern::bench::Clock;
using lectern::bench::pumpFor;
using lectern::bench::pumpUntil;

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void BM_MoveSlideInTheEditor1000(benchmark::State& state) {
    const char* display = g_getenv("DISPLAY");
    if (!display || !*display) {
        state.SkipWithError("needs a display: run under xvfb-run -a");
        return;
    }
    auto* app = &lectern::bench::application("lectern-bench-navigator");
    lectern::Deck deck = lectern::bench::makeTalkDeck(1000, 11);
    for (auto& slide : deck.slides) slide.actions.clear();
    lectern::DeckWindow* window = app->openDeck(deck, std::nullopt);
    pumpUntil([&] { return window->get_mapped(); }, 10);
    window->state().goTo(10, false);
    pumpFor(1.0);

    bool painted = false;
    Clock::time_point paintedAt;
    auto paintConnection = lectern::SignalConnection::connect<>(window->get_frame_clock()->gobj(), "after-paint", [&] {
        if (!painted) {
            painted = true;
            paintedAt = Clock::now();
        }
    });
    std::vector<double> handlers;
    bool down = true;
    for (auto _ : state) {
        state.PauseTiming();
        pumpFor(0.1);
        painted = false;
        state.ResumeTiming();

        auto pressed = Clock::now();
        // There and back, so the deck keeps its order over the iterations.
        window->activate_action(down ? "win.move-slide-down" : "win.move-slide-up");
        down = !down;
        auto handled = Clock::now();
        window->queue_draw();
        if (!pumpUntil([&] { return painted; }, 2)) {
            state.SkipWithError("no frame was painted");
            break;
        }
        state.SetIterationTime(std::chrono::duration<double>(paintedAt - pressed).count());
        handlers.push_back(std::chrono::duration<double>(handled - pressed).count() * 1e3);
    }
    paintConnection.disconnect();
    if (!handlers.empty()) state.counters["handlers_median_ms"] = median(handlers);
    window->close();
    pumpUntil([&] { return app->get_windows().empty(); }, 5);
}
BENCHMARK(BM_MoveSlideInTheEditor1000)->UseManualTime()->Iterations(30)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
