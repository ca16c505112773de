#pragma once

#include <gtkmm.h>

#include "app/platform/lectern_application.h"
#include "bench_decks.h"

namespace lectern::bench {

// The application for benchmarks that open deck windows: one per program,
// with preferences in a temporary folder of its own.
inline LecternApplication& application(const char* folder) {
    static TempFolder config(folder);
    static PreferencesStore preferences(config.path() / "preferences.json");
    static auto app = [] {
        auto created = LecternApplication::create(Gio::Application::Flags::NON_UNIQUE, &preferences);
        created->register_application();
        created->hold();
        return created;
    }();
    return *app;
}

}  // namespace lectern::bench
