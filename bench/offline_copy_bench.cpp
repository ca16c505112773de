// A web page that fails on stage while presenting: the time from the web
// engine reporting the failure (the server on 127.0.0.1 stopped, the page
// reloaded) to the first painted frame that shows the page's offline copy
// with its mark, in the application's deck window with the real web engine.
// It needs a display: run it under `xvfb-run -a`.

#include <benchmark/benchmark.h>

#include <gtkmm.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <vector>

#include "app/platform/lectern_application.h"
#include "base/platform/gobject_ref.h"
#include "bench_application.h"
#include "bench_decks.h"
#include "editor/platform/deck_window.h"
#include "main_loop.h"
#include "support/platform/local_server.h"
#include "web/platform/web_card.h"
#include "web/platform/web_services.h"

namespace {

using lectern::bench::Clock;
using lectern::bench::pumpFor;
using lectern::bench::pumpUntil;
using lectern::testing::LocalServer;

lectern::LecternApplication& application() { return lectern::bench::application("lectern-bench-offline", true); }

// The rendered colour of one point of the card, as the window renders it.
std::array<int, 3> pixelAt(lectern::DeckWindow& window, double x, double y) {
    lectern::WebCard& card = window.webCard();
    GdkPaintable* paintable = gtk_widget_paintable_new(GTK_WIDGET(card.gobj()));
    GtkSnapshot* snapshot = gtk_snapshot_new();
    gdk_paintable_snapshot(paintable, snapshot, card.get_width(), card.get_height());
    GskRenderNode* node = gtk_snapshot_free_to_node(snapshot);
    g_object_unref(paintable);
    if (!node) return {0, 0, 0};
    graphene_rect_t bounds = GRAPHENE_RECT_INIT(static_cast<float>(x), static_cast<float>(y), 1, 1);
    GdkTexture* texture = gsk_renderer_render_texture(gtk_native_get_renderer(GTK_NATIVE(window.gobj())), node, &bounds);
    gsk_render_node_unref(node);
    guchar pixel[4] = {};
    gdk_texture_download(texture, pixel, 4);
    g_object_unref(texture);
    return {pixel[2], pixel[1], pixel[0]};  // memory order B, G, R, A
}

// The mark's pill is drawn dark over the page's blue: the copy is on screen.
bool markDrawn(lectern::DeckWindow& window) {
    auto& mark = const_cast<Gtk::Label&>(window.webCard().copyMark());
    if (!mark.get_mapped()) return false;
    double x = 0, y = 0;
    mark.translate_coordinates(window.webCard(), 4, mark.get_height() / 2.0, x, y);
    auto [red, green, blue] = pixelAt(window, x, y);
    return blue < 160 && red < 60;
}

Clock::time_point failedAt;

void BM_FailureToOfflineCopy(benchmark::State& state) {
    if (!g_getenv("DISPLAY")) {
        state.SkipWithError("needs a display: run under xvfb-run -a");
        return;
    }
    LocalServer server;
    server.route("/page", [](const LocalServer::Request&) {
        LocalServer::Answer answer;
        answer.body = "<!doctype html><title>Stage</title><body style='margin:0;background:rgb(20,120,220)'>";
        return answer;
    });
    lectern::Deck deck;
    lectern::Slide web = lectern::Slide::make(lectern::SlideLayout::web);
    web.url = server.url("/page");
    deck.slides = {web};
    auto& app = application();
    lectern::DeckWindow* window = app.openDeck(deck, std::nullopt);
    pumpUntil([&] { return window->get_mapped(); }, 10);
    window->state().toggleEditor();  // presenting
    auto& pictures = lectern::WebServices::shared().pictures();
    auto loaded = [&] {
        auto* pane = window->webCard().pane();
        return pane && pane->status().kind == lectern::WebLoadStatus::Kind::loaded;
    };
    if (!pumpUntil([&] { return loaded() && pictures.find(web.id, *web.url); }, 10)) {
        state.SkipWithError("no picture of the page was taken");
        return;
    }
    pumpFor(0.5);  // the card has decoded the picture

    bool armed = false, seen = false;
    Clock::time_point seenAt;
    auto paintConnection = lectern::SignalConnection::connect<>(window->get_frame_clock()->gobj(), "after-paint", [&] {
        if (armed && !seen && markDrawn(*window)) {
            seen = true;
            seenAt = Clock::now();
        }
    });
    std::vector<double> times;
    for (auto _ : state) {
        state.PauseTiming();
        auto page = std::dynamic_pointer_cast<lectern::WebKitPage>(window->webCard().pane()->page());
        armed = seen = false;
        bool failed = false;
        // An emission hook sees the engine's report before any handler of
        // the page can stop it.
        guint signalId = g_signal_lookup("load-failed", WEBKIT_TYPE_WEB_VIEW);
        gulong hook = g_signal_add_emission_hook(
            signalId, 0,
            +[](GSignalInvocationHint*, guint, const GValue*, gpointer data) {
                auto* flag = static_cast<bool*>(data);
                if (!*flag) {
                    *flag = true;
                    failedAt = Clock::now();
                }
                return gboolean(TRUE);
            },
            &failed, nullptr);
        server.stop();
        page->reload();
        // The engine's report is the start; it comes within the same turn.
        armed = true;
        pumpUntil([&] { return failed; }, 5);
        state.ResumeTiming();
        if (!pumpUntil([&] { return seen; }, 5)) {
            state.SkipWithError("the offline copy never showed");
            g_signal_remove_emission_hook(signalId, hook);
            break;
        }
        double seconds = std::chrono::duration<double>(seenAt - failedAt).count();
        state.SetIterationTime(seconds);
        times.push_back(seconds * 1e3);

        state.PauseTiming();
        g_signal_remove_emission_hook(signalId, hook);
        server.restart();
        page->reload();
        pumpUntil([&] { return loaded() && !window->webCard().showingCopy(); }, 10);
        pumpFor(0.3);
        state.ResumeTiming();
    }
    paintConnection.disconnect();
    if (!times.empty()) {
        std::sort(times.begin(), times.end());
        state.counters["median_ms"] = times[times.size() / 2];
        state.counters["max_ms"] = times.back();
    }
    window->close();
    pumpUntil([&] { return app.get_windows().empty(); }, 5);
}
BENCHMARK(BM_FailureToOfflineCopy)->UseManualTime()->Iterations(15)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
