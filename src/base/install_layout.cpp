#include "base/install_layout.h"

#include <glib.h>

namespace lectern {

std::filesystem::path sharedDataDir() {
    if (const char* chosen = g_getenv("LECTERN_DATA_DIR"); chosen && *chosen) return chosen;
    std::error_code error;
    auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return "/usr/share";
    return program.parent_path().parent_path() / "share";
}

std::filesystem::path lecternDataDir() { return sharedDataDir() / "lectern"; }

std::filesystem::path localeDir() { return sharedDataDir() / "locale"; }

}  // namespace lectern
