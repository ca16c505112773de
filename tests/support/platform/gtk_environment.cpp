// Every platform test runs with GTK started on the test display (Xvfb), as
// web views are widgets, and with the web engine kept off compositing, which
// Xvfb cannot do. User folders point into a fresh temporary folder, so no
// test reads or writes the real browser profiles or preferences.
#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <filesystem>
#include <string>

namespace {

class GtkEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        g_setenv("WEBKIT_DISABLE_COMPOSITING_MODE", "1", TRUE);
        home_ = g_dir_make_tmp("lectern-web-test-XXXXXX", nullptr);
        ASSERT_NE(home_, nullptr);
        for (const char* name : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"}) {
            g_setenv(name, (std::string(home_) + "/" + name).c_str(), TRUE);
        }
        ASSERT_TRUE(gtk_init_check()) << "no display: run the web tests under xvfb-run";
    }
    void TearDown() override {
        if (!home_) return;
        std::error_code ignored;
        std::filesystem::remove_all(home_, ignored);
        g_free(home_);
    }

private:
    char* home_ = nullptr;
};

const auto* environment = ::testing::AddGlobalTestEnvironment(new GtkEnvironment);

}  // namespace
