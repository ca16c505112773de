#pragma once

#include <gio/gio.h>

#include <filesystem>
#include <memory>

#include "base/platform/gobject_ref.h"

namespace lectern {

// The demo site that the example deck's web slide and demo actions use
// (http://127.0.0.1:8765/), started when the example deck is opened so that
// it works out of the box, also where no script started the site first.
// A site already answering on that port (started by scripts/run, or by an
// earlier Lectern) is left to answer: the new one cannot listen there and
// ends at once. The site that Lectern started ends with Lectern, even when
// Lectern is killed.
class DemoSiteLauncher {
public:
    static constexpr int port = 8765;

    DemoSiteLauncher() = default;
    ~DemoSiteLauncher();
    DemoSiteLauncher(const DemoSiteLauncher&) = delete;
    DemoSiteLauncher& operator=(const DemoSiteLauncher&) = delete;

    // Starts the site unless this launcher's is running already. False when
    // the program is not found (a build without it).
    bool ensureStarted();
    bool isRunning() const;

    // `lectern-demo-site` beside the running program (installed), or in the
    // build folder's examples/ (a build folder); LECTERN_DEMO_SITE names
    // another.
    static std::filesystem::path program();

private:
    GObjectRef<GSubprocess> site_;
    // Set when the site has ended (shared with the wait that reaps it).
    std::shared_ptr<bool> ended_;
};

}  // namespace lectern
