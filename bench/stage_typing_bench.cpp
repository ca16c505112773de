// How long a key typed on the stage takes to show: a character typed into
// the body of a slide with a 200-line body, and into its title, from the
// insertion (as the text widget makes it for a key) through the document
// edit to the end of the first frame that paints the updated stage (the
// frame clock's after-paint). Target: within one frame (16.7 ms) with the
// renderer the application picks. It needs a display: run it under
// `xvfb-run -a`.

#include <benchmark/benchmark.h>

#include <gtkmm.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "app/platform/lectern_application.h"
#include "base/platform/gobject_ref.h"
#include "bench_application.h"
#include "bench_decks.h"
#include "editor/platform/body_editor.h"
#include "editor/platform/body_field.h"
#include "editor/platform/deck_window.h"
#include "editor/platform/heading_fields.h"
#include "editor/platform/presenting_stage.h"
#include "editor/platform/stage_editing.h"
#include "main_loop.h"
#include "slides/platform/stage_view.h"

namespace {

using lectern::bench::Clock;
using lectern::bench::percentile;
using lectern::bench::pumpFor;
using lectern::bench::pumpUntil;

// One regular slide whose body has 200 lines: bullets, numbers, a command
// block and plain lines.
lectern::Deck longBodyDeck() {
    lectern::Deck deck;
    lectern::Slide slide = lectern::Slide::make(lectern::SlideLayout::regular);
    slide.title = "Two hundred lines";
    std::string text;
    for (int i = 0; i < 200; ++i) {
        if (i) text += "\n";
        text += (i % 3 == 0 ? "• Point " : i % 3 == 1 ? "Line of text number " : "\tDetail ") + std::to_string(i);
    }
    slide.body = lectern::AttributedText(text);
    deck.slides.push_back(slide);
    return deck;
}

enum class Field { body, title };

void typeAndTime(benchmark::State& state, Field field) {
    const char* display = g_getenv("DISPLAY");
    if (!display || !*display) {
        state.SkipWithError("needs a display: run under xvfb-run -a");
        return;
    }
    auto& app = lectern::bench::application("lectern-bench-typing");
    lectern::DeckWindow* window = app.openDeck(longBodyDeck(), std::nullopt);
    pumpUntil([&] { return window->get_mapped(); }, 10);
    pumpFor(0.5);
    auto& editing = window->presentingStage().editing();
    lectern::BodyEditor& body = editing.body().editor();
    Gtk::Text& title = editing.headings().field(lectern::HeadingFields::Part::title);
    if (field == Field::body) {
        editing.body().focus();
    } else {
        title.grab_focus();
        title.set_position(-1);
    }
    pumpFor(0.5);

    bool drawn = false, painted = false;
    Clock::time_point paintedAt;
    auto drawConnection = window->stage().drawn().connect([&] { drawn = true; });
    auto paintConnection = lectern::SignalConnection::connect<>(window->get_frame_clock()->gobj(), "after-paint", [&] {
        if (drawn && !painted) {
            painted = true;
            paintedAt = Clock::now();
        }
    });

    std::vector<double> toScreen;
    int typed = 0;
    for (auto _ : state) {
        state.PauseTiming();
        pumpFor(0.05);  // keys come apart: the frame clock is idle when one arrives
        drawn = painted = false;
        state.ResumeTiming();

        auto pressed = Clock::now();
        // What the text widgets do with a typed character.
        if (field == Field::body) {
            auto buffer = body.get_buffer();
            buffer->begin_user_action();
            buffer->insert_interactive_at_cursor("x", true);
            buffer->end_user_action();
        } else {
            int position = title.get_position();
            title.insert_text("x", 1, position);
            title.set_position(position);
        }
        if (!pumpUntil([&] { return painted; }, 2)) {
            state.SkipWithError("no frame painted the typed key");
            break;
        }
        ++typed;
        double seconds = std::chrono::duration<double>(paintedAt - pressed).count();
        state.SetIterationTime(seconds);
        toScreen.push_back(seconds * 1e3);
    }
    paintConnection.disconnect();
    const auto& slide = window->deck().slides.front();
    const std::string& stored = field == Field::body ? slide.body.string() : slide.title;
    if (std::count(stored.begin(), stored.end(), 'x') < typed) state.SkipWithError("typing did not reach the deck");
    if (!toScreen.empty()) {
        state.counters["median_ms"] = percentile(toScreen, 0.5);
        state.counters["p90_ms"] = percentile(toScreen, 0.9);
        state.counters["max_ms"] = percentile(toScreen, 1.0);
    }
    window->close();
    pumpUntil([&] { return app.get_windows().empty(); }, 5);
}

void BM_KeyInALongBodyToScreen(benchmark::State& state) { typeAndTime(state, Field::body); }
void BM_KeyInATitleToScreen(benchmark::State& state) { typeAndTime(state, Field::title); }
BENCHMARK(BM_KeyInALongBodyToScreen)->UseManualTime()->Iterations(60)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KeyInATitleToScreen)->UseManualTime()->Iterations(60)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
