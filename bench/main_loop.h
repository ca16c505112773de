#pragma once

#include <glib.h>

#include <algorithm>
#include <chrono>
#include <vector>
#include <thread>

namespace lectern::bench {

using Clock = std::chrono::steady_clock;

// The value below which `fraction` of the values lie (0.5: the median).
inline double percentile(std::vector<double> values, double fraction) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1) + 0.5)];
}

// Turns the GLib main loop for `seconds`, sleeping briefly when it is idle.
inline void pumpFor(double seconds) {
    auto end = Clock::now() + std::chrono::duration<double>(seconds);
    while (Clock::now() < end) {
        if (!g_main_context_iteration(nullptr, false)) std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
}

// Turns the main loop until `done` holds, at most `seconds`; whether it held.
// When the loop is idle it sleeps 0.1 ms, so that other processes (the web
// engine's) get the CPU, and the moment `done` holds is seen within that.
template <class Done>
bool pumpUntil(Done done, double seconds) {
    auto end = Clock::now() + std::chrono::duration<double>(seconds);
    while (!done()) {
        if (Clock::now() >= end) return false;
        if (!g_main_context_iteration(nullptr, false)) std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    return true;
}

}  // namespace lectern::bench
