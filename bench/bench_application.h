#pragma once

#include <gtkmm.h>

#include "app/platform/lectern_application.h"
#include "bench_decks.h"

namespace lectern::bench {

// The application for benchmarks that open deck windows: one per program,
// with preferences in a temporary folder of its own; `ownWebData`: the web
// engine's data and cache (and page pictures) there too.
inline LecternApplication& application(const char* folder, bool ownWebData = false) {
    static TempFolder config(folder);
    static PreferencesStore preferences(config.path() / "preferences.json");
    static auto app = [ownWebData] {
        if (ownWebData) {
            g_setenv("XDG_DATA_HOME", (config.path() / "data").c_str(), true);
            g_setenv("XDG_CACHE_HOME", (config.path() / "cache").c_str(), true);
        }
        auto created = LecternApplication::create(Gio::Application::Flags::NON_UNIQUE, &preferences);
        created->register_application();
        created->hold();
        return created;
    }();
    return *app;
}

}  // namespace lectern::bench
