// Starting the `lectern` program, as a person does from the desktop, to its
// first window on screen: the start window, and the example deck's window
// when the deck is named on the command line. Each start has folders of its
// own (no recent decks, no remembered places) and ends the program after.
// Needs a display (run it under xvfb-run -a) and xdotool.

#include <benchmark/benchmark.h>
#include <glib.h>
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "bench_decks.h"

namespace {

// Whether the program has a visible window with exactly this title.
bool shows(GPid pid, const std::string& title) {
    std::string pidText = std::to_string(pid);
    std::string pattern = "^" + title + "$";
    const char* argv[] = {"xdotool", "search", "--all", "--onlyvisible", "--pid", pidText.c_str(),
                          "--name", pattern.c_str(), nullptr};
    int status = 0;
    auto flags = GSpawnFlags(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL);
    g_spawn_sync(nullptr, const_cast<char**>(argv), nullptr, flags, nullptr, nullptr, nullptr, nullptr, &status,
                 nullptr);
    return g_spawn_check_wait_status(status, nullptr);
}

void start(benchmark::State& state, const std::vector<std::string>& arguments, const std::string& title) {
    for (auto _ : state) {
        state.PauseTiming();
        lectern::bench::TempFolder home("lectern-bench-start");
        gchar** env = g_get_environ();
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"}) {
            env = g_environ_setenv(env, name, (home.path() / name).c_str(), TRUE);
        }
        env = g_environ_setenv(env, "LECTERN_TEST_HOST", "1", TRUE);
        env = g_environ_setenv(env, "GDK_BACKEND", "x11", TRUE);
        std::vector<char*> argv{const_cast<char*>(LECTERN_APP_PATH)};
        for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        GPid pid = 0;
        state.ResumeTiming();

        auto began = std::chrono::steady_clock::now();
        g_spawn_async(nullptr, argv.data(), env, G_SPAWN_DO_NOT_REAP_CHILD, nullptr, nullptr, &pid, nullptr);
        bool shown = false;
        while (!shown && std::chrono::steady_clock::now() - began < std::chrono::seconds(20)) {
            shown = shows(pid, title);
        }

        state.PauseTiming();
        ::kill(pid, SIGTERM);
        ::waitpid(pid, nullptr, 0);
        g_strfreev(env);
        if (!shown) {
            state.SkipWithError("the window did not come up within 20 s");
            break;
        }
        state.ResumeTiming();
    }
}

void BM_StartToTheStartWindow(benchmark::State& state) { start(state, {}, "Lectern"); }

void BM_StartWithTheExampleDeckToItsWindow(benchmark::State& state) {
    start(state, {LECTERN_EXAMPLE_PATH}, "Welcome to Lectern");
}

}  // namespace

BENCHMARK(BM_StartToTheStartWindow)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(BM_StartWithTheExampleDeckToItsWindow)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK_MAIN();
