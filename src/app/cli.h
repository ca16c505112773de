#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "base/result.h"

namespace lectern {

class PagePictures;

class Scheduler;
class WebPageFactory;

// What `check` loads pages with: the web engine, made only when a deck has
// web slides to check, as it needs a display.
class CliWebEngine {
public:
    virtual ~CliWebEngine() = default;
    // Pages in the store of each slide's browser profile, the same stores
    // as the application's.
    virtual WebPageFactory& pages() = 0;
    virtual Scheduler& scheduler() = 0;
    // Turns the main loop until `finished` holds.
    virtual void runUntil(const std::function<bool()>& finished) = 0;
    // Where pages that load well leave their pictures (none: nowhere).
    virtual PagePictures* pictures() { return nullptr; }
};
// Starts the web engine, or says in one line why it cannot.
using CliWebEngineStarter = std::function<Result<std::unique_ptr<CliWebEngine>>()>;

// The headless companion's commands. Writes results to `out`, one-line errors
// to `err`, and returns the exit status: 0 on success, 2 on an error (the
// usage line on `err` for arguments it does not understand), and 1 when
// `check` finds a web slide that needs attention. `--help` and `--version`
// alone print to `out`. Without a web engine starter, `check` of a deck with
// web slides is an error.
int runCli(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
           const CliWebEngineStarter& startWebEngine = {});

}  // namespace lectern
