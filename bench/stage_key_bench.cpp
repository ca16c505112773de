// How long a key press takes to bring the next slide on screen while
// presenting: from the window's key handler to the end of the first frame
// that paints the new slide (the frame clock's after-paint). Target: within
// one frame (17 ms). It needs a display: run it under `xvfb-run -a`.

#include <benchmark/benchmark.h>

#include <gtkmm.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

#include "editor/platform/deck_window.h"
#include "base/platform/gobject_ref.h"
#include "app/platform/lectern_application.h"
#include "slides/platform/stage_view.h"
#include "bench_application.h"
#include "bench_decks.h"
#include "main_loop.h"

namespace {

using lectern::bench::Clock;
using lectern::bench::percentile;
using lectern::bench::pumpFor;
using lectern::bench::pumpUntil;

// The talk deck without its web slides and actions, everything shown at
// once, so every press moves to another slide drawn by the painter.
lectern::Deck keyDeck() {
    lectern::Deck deck = lectern::bench::makeTalkDeck(120, 7);
    std::erase_if(deck.slides, [](const lectern::Slide& slide) { return slide.layout == lectern::SlideLayout::web; });
    for (auto& slide : deck.slides) {
        slide.actions.clear();
        slide.reveal = lectern::RevealMode::all;
        slide.isSkipped = false;
        slide.nextSlideAction.reset();
    }
    return deck;
}

void BM_KeyPressToNextSlideOnScreen(benchmark::State& state) {
    const char* display = g_getenv("DISPLAY");
    if (!display || !*display) {
        state.SkipWithError("needs a display: run under xvfb-run -a");
        return;
    }
    auto* app = &lectern::bench::application("lectern-bench-key");
    lectern::Deck deck = keyDeck();
    lectern::DeckWindow* window = app->openDeck(deck, std::nullopt);
    pumpUntil([&] { return window->get_mapped(); }, 10);
    window->state().togglePresenting();
    pumpFor(0.5);

    // Frames: the stage's draw, then the end of that frame.
    bool drawn = false, painted = false;
    Clock::time_point drawnAt, paintedAt;
    auto drawConnection = window->stage().drawn().connect([&] {
        drawn = true;
        drawnAt = Clock::now();
    });
    auto paintConnection = lectern::SignalConnection::connect<>(window->get_frame_clock()->gobj(), "after-paint", [&] {
        if (drawn && !painted) {
            painted = true;
            paintedAt = Clock::now();
        }
    });

    std::vector<double> toScreen, toDraw;
    for (auto _ : state) {
        state.PauseTiming();
        if (window->state().current() + 1 >= static_cast<std::int64_t>(deck.slides.size())) {
            window->state().goTo(0, false);
        }
        // Presses come seconds apart: the frame clock is idle when one arrives.
        pumpFor(0.1);
        drawn = painted = false;
        state.ResumeTiming();

        auto pressed = Clock::now();
        window->handleKey(GDK_KEY_Right, Gdk::ModifierType{});
        if (!pumpUntil([&] { return painted; }, 2)) {
            state.SkipWithError("no frame painted the new slide");
            break;
        }
        double seconds = std::chrono::duration<double>(paintedAt - pressed).count();
        state.SetIterationTime(seconds);
        toScreen.push_back(seconds * 1e3);
        toDraw.push_back(std::chrono::duration<double>(drawnAt - pressed).count() * 1e3);
    }
    paintConnection.disconnect();
    if (!toScreen.empty()) {
        state.counters["median_ms"] = percentile(toScreen, 0.5);
        state.counters["p90_ms"] = percentile(toScreen, 0.9);
        state.counters["max_ms"] = percentile(toScreen, 1.0);
        state.counters["draw_done_median_ms"] = percentile(toDraw, 0.5);
        state.counters["stage_px"] = window->stage().get_width() * window->stage().get_height();
    }
    window->close();
    pumpUntil([&] { return app->get_windows().empty(); }, 5);
}
BENCHMARK(BM_KeyPressToNextSlideOnScreen)->UseManualTime()->Iterations(50)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
