// Web slides on stage, in the application's deck window with the real web
// engine and a page that takes 300 ms to answer from a server on 127.0.0.1:
// - from the advance key to the first frame that shows the page's pixels,
//   when the page was loaded ahead while presenting (prefetched), against
//   loading it only when the slide appears (the editor loads nothing ahead);
// - going back: requests the server sees for the page left behind (0: no
//   reload);
// - memory of the hidden pages of one window (two neighbours and two
//   decision targets), as the growth of this process and its web engine
//   processes (proportional set size).
// It needs a display: run it under `xvfb-run -a`.

#include <benchmark/benchmark.h>

#include <gtkmm.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <thread>
#include <vector>

#include "editor/platform/deck_window.h"
#include "base/platform/gobject_ref.h"
#include "app/platform/lectern_application.h"
#include "bench_application.h"
#include "bench_decks.h"
#include "main_loop.h"
#include "support/platform/local_server.h"
#include "web/platform/web_card.h"
#include "web/platform/web_services.h"

namespace {

using lectern::bench::Clock;
using lectern::bench::pumpFor;
using lectern::bench::pumpUntil;
using lectern::testing::LocalServer;

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

lectern::LecternApplication& application() { return lectern::bench::application("lectern-bench-web", true); }

// A page of one strong colour, 300 ms in coming.
constexpr unsigned pageDelayMs = 300;
LocalServer& server() {
    static LocalServer* local = [] {
        auto* created = new LocalServer;
        created->route("/page", [](const LocalServer::Request&) {
            LocalServer::Answer answer;
            answer.body = "<!doctype html><title>Stage</title><body style='margin:0;background:rgb(20,120,220)'>";
            answer.delayMs = pageDelayMs;
            return answer;
        });
        return created;
    }();
    return *local;
}

// Whether the web card shows the page now: its middle pixel, rendered as
// the window renders it.
bool cardShowsPage(lectern::DeckWindow& window) {
    lectern::WebCard& card = window.webCard();
    int width = card.get_width(), height = card.get_height();
    if (width < 4 || height < 4 || !card.get_mapped()) return false;
    GdkPaintable* paintable = gtk_widget_paintable_new(GTK_WIDGET(card.gobj()));
    GtkSnapshot* snapshot = gtk_snapshot_new();
    gdk_paintable_snapshot(paintable, snapshot, width, height);
    GskRenderNode* node = gtk_snapshot_free_to_node(snapshot);
    g_object_unref(paintable);
    if (!node) return false;
    graphene_rect_t bounds = GRAPHENE_RECT_INIT(static_cast<float>(width / 2), static_cast<float>(height / 2), 1, 1);
    GskRenderer* renderer = gtk_native_get_renderer(GTK_NATIVE(window.gobj()));
    GdkTexture* texture = gsk_renderer_render_texture(renderer, node, &bounds);
    gsk_render_node_unref(node);
    guchar pixel[4] = {};
    gdk_texture_download(texture, pixel, 4);
    g_object_unref(texture);
    // Memory order B, G, R, A.
    return std::abs(pixel[2] - 20) < 12 && std::abs(pixel[1] - 120) < 12 && std::abs(pixel[0] - 220) < 12;
}

lectern::Deck stageDeck(const std::string& url) {
    lectern::Deck deck;
    lectern::Slide intro = lectern::Slide::make(lectern::SlideLayout::regular);
    intro.title = "Before the demo";
    lectern::Slide web = lectern::Slide::make(lectern::SlideLayout::web);
    web.title = "The product";
    web.url = url;
    deck.slides = {intro, web};
    return deck;
}

// From the key to the first painted frame that shows the page.
void advanceToPage(benchmark::State& state, bool prefetched) {
    if (!g_getenv("DISPLAY")) {
        state.SkipWithError("needs a display: run under xvfb-run -a");
        return;
    }
    auto& app = application();
    lectern::DeckWindow* window = app.openDeck(stageDeck(server().url("/page?warm-up")), std::nullopt);
    pumpUntil([&] { return window->get_mapped(); }, 10);
    if (prefetched) window->state().toggleEditor();  // presenting: pages are loaded ahead
    pumpFor(1.0);

    bool armed = false, seen = false;
    Clock::time_point seenAt;
    auto paintConnection = lectern::SignalConnection::connect<>(window->get_frame_clock()->gobj(), "after-paint", [&] {
        if (!armed || seen) return;
        if (cardShowsPage(*window)) {
            seen = true;
            seenAt = Clock::now();
        }
    });

    std::vector<double> toPage;
    std::vector<double> backRequests;
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        // A fresh address every round: nothing comes from a cache.
        std::string path = "/page?round=" + std::to_string(++round) + (prefetched ? "-warm" : "-cold");
        window->state().goTo(0, false);
        window->editor().edit("Change Address", [&](lectern::Deck) { return stageDeck(server().url(path)); });
        // Time for a prefetched page to arrive (300 ms) and settle.
        pumpFor(0.8);
        armed = seen = false;
        state.ResumeTiming();

        auto pressed = Clock::now();
        armed = true;
        window->handleKey(GDK_KEY_Right, Gdk::ModifierType{});
        if (prefetched) {
            if (!pumpUntil([&] { return seen; }, 5)) {
                state.SkipWithError("the page never showed");
                break;
            }
        } else {
            window->state().nextSlideDirect(window->deck().slides);
            if (!pumpUntil([&] { return seen; }, 5)) {
                state.SkipWithError("the page never showed");
                break;
            }
        }
        double seconds = std::chrono::duration<double>(seenAt - pressed).count();
        state.SetIterationTime(seconds);
        toPage.push_back(seconds * 1e3);

        state.PauseTiming();
        // Back to the first slide and forward again: the page left behind
        // should come back without asking the server.
        int before = server().requests("/page");
        window->state().previousSlideDirect(window->deck().slides);
        pumpFor(0.3);
        window->state().nextSlideDirect(window->deck().slides);
        pumpFor(0.6);
        backRequests.push_back(server().requests("/page") - before);
        state.ResumeTiming();
    }
    paintConnection.disconnect();
    if (!toPage.empty()) {
        state.counters["median_ms"] = median(toPage);
        state.counters["max_ms"] = *std::max_element(toPage.begin(), toPage.end());
        state.counters["requests_going_back_and_forth"] = median(backRequests);
    }
    window->close();
    pumpUntil([&] { return app.get_windows().empty(); }, 5);
}

void BM_AdvanceToPrefetchedPage(benchmark::State& state) { advanceToPage(state, true); }
void BM_AdvanceToPageLoadedOnArrival(benchmark::State& state) { advanceToPage(state, false); }
BENCHMARK(BM_AdvanceToPrefetchedPage)->UseManualTime()->Iterations(15)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AdvanceToPageLoadedOnArrival)->UseManualTime()->Iterations(15)->Unit(benchmark::kMillisecond);

// Proportional memory (PSS: shared pages split between their users) of this
// process and every process below it (the web engine's network and web
// processes), in KiB.
long treeResidentKiB() {
    std::vector<std::pair<int, int>> parents;  // pid, parent
    long total = 0;
    std::vector<int> tree{getpid()};
    GDir* proc = g_dir_open("/proc", 0, nullptr);
    while (const char* name = g_dir_read_name(proc)) {
        int pid = atoi(name);
        if (pid <= 0) continue;
        std::ifstream stat("/proc/" + std::string(name) + "/stat");
        std::string line;
        std::getline(stat, line);
        auto close = line.rfind(')');
        if (close == std::string::npos) continue;
        int parent = 0;
        char kind = 0;
        std::sscanf(line.c_str() + close + 2, "%c %d", &kind, &parent);
        parents.push_back({pid, parent});
    }
    g_dir_close(proc);
    for (std::size_t i = 0; i < tree.size(); ++i) {
        for (auto [pid, parent] : parents) if (parent == tree[i]) tree.push_back(pid);
    }
    for (int pid : tree) {
        std::ifstream rollup("/proc/" + std::to_string(pid) + "/smaps_rollup");
        std::string line;
        while (std::getline(rollup, line)) {
            if (line.rfind("Pss:", 0) == 0) total += std::atol(line.c_str() + 4);
        }
    }
    return total;
}

void BM_HiddenPagesMemory(benchmark::State& state) {
    if (!g_getenv("DISPLAY")) {
        state.SkipWithError("needs a display: run under xvfb-run -a");
        return;
    }
    auto& app = application();
    // A decisions slide with two targets between two web slides: four pages
    // wanted ahead, the most one window keeps.
    lectern::Deck deck;
    for (const char* title : {"Before", "Choose", "After", "Target one", "Target two"}) {
        lectern::Slide slide = lectern::Slide::make(lectern::SlideLayout::web);
        slide.title = title;
        slide.url = server().url(std::string("/page?memory=") + title);
        deck.slides.push_back(slide);
    }
    deck.slides[1].layout = lectern::SlideLayout::decisions;
    deck.slides[1].url.reset();
    for (std::size_t target : {3u, 4u}) {
        lectern::SlideLink link;
        link.label = deck.slides[target].title;
        link.targetId = deck.slides[target].id.string();
        deck.slides[1].links.push_back(link);
    }
    auto& prefetcher = lectern::WebServices::shared().prefetcher();
    for (auto _ : state) {
        lectern::DeckWindow* window = app.openDeck(deck, std::nullopt);
        pumpUntil([&] { return window->get_mapped(); }, 10);
        window->state().goTo(1, false);
        pumpFor(2.0);
        long without = treeResidentKiB();
        window->state().toggleEditor();  // presenting: four pages load hidden
        pumpUntil([&] { return prefetcher.hiddenCount(window->windowId()) == 4; }, 5);
        pumpFor(3.0);
        long with = treeResidentKiB();
        state.counters["hidden_pages"] = static_cast<double>(prefetcher.hiddenCount(window->windowId()));
        state.counters["growth_MiB"] = static_cast<double>(with - without) / 1024.0;
        state.counters["per_page_MiB"] = static_cast<double>(with - without) / 1024.0 / 4;
        state.counters["total_MiB"] = static_cast<double>(with) / 1024.0;
        window->close();
        pumpUntil([&] { return app.get_windows().empty(); }, 5);
    }
}
BENCHMARK(BM_HiddenPagesMemory)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
