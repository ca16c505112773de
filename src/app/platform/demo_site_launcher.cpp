#include "app/platform/demo_site_launcher.h"

#include <signal.h>
#include <sys/prctl.h>

#include <string>

namespace lectern {

namespace {

// In the child before it runs the site: the site ends when Lectern does.
void endWithParent(gpointer) { ::prctl(PR_SET_PDEATHSIG, SIGTERM); }

}  // namespace

DemoSiteLauncher::~DemoSiteLauncher() {
    if (isRunning()) g_subprocess_send_signal(site_.get(), SIGTERM);
}

std::filesystem::path DemoSiteLauncher::program() {
    if (const char* chosen = g_getenv("LECTERN_DEMO_SITE"); chosen && *chosen) return chosen;
    std::error_code error;
    auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return {};
    for (const auto& candidate : {self.parent_path() / "lectern-demo-site",
                                  self.parent_path().parent_path() / "examples" / "lectern-demo-site"}) {
        if (std::filesystem::is_regular_file(candidate, error)) return candidate;
    }
    return {};
}

bool DemoSiteLauncher::isRunning() const { return site_ && ended_ && !*ended_; }

bool DemoSiteLauncher::ensureStarted() {
    if (isRunning()) return true;
    const auto path = program();
    if (path.empty()) return false;
    // Its one line of output and its messages are of no use to anyone here.
    GSubprocessLauncher* launcher = g_subprocess_launcher_new(
        GSubprocessFlags(G_SUBPROCESS_FLAGS_STDOUT_SILENCE | G_SUBPROCESS_FLAGS_STDERR_SILENCE));
    g_subprocess_launcher_set_child_setup(launcher, endWithParent, nullptr, nullptr);
    const std::string portText = std::to_string(port);
    GSubprocess* site =
        g_subprocess_launcher_spawn(launcher, nullptr, path.c_str(), "--port", portText.c_str(), nullptr);
    g_object_unref(launcher);
    if (!site) return false;
    site_ = GObjectRef<GSubprocess>::take(site);
    ended_ = std::make_shared<bool>(false);
    // Reaped when it ends (a port in use ends it at once), so that no zombie stays.
    g_subprocess_wait_async(
        site, nullptr,
        +[](GObject* source, GAsyncResult* result, gpointer data) {
            auto* ended = static_cast<std::shared_ptr<bool>*>(data);
            g_subprocess_wait_finish(G_SUBPROCESS(source), result, nullptr);
            **ended = true;
            delete ended;
        },
        new std::shared_ptr<bool>(ended_));
    return true;
}

}  // namespace lectern
