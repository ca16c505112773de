#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/result.h"
#include "base/scheduler.h"
#include "base/signal.h"

namespace lectern {

class PreferencesStore;

// Fetches the body of an address; the platform does it with libsoup.
class FeedFetcher {
public:
    virtual ~FeedFetcher() = default;
    // Calls `done` once, on the main loop, with the body or a short reason.
    virtual void fetch(const std::string& url, std::function<void(Result<std::string>)> done) = 0;
    // Abandons a fetch under way: its `done` is never called.
    virtual void cancel() = 0;
};

// What one update check found.
struct UpdateResult {
    enum class Outcome { upToDate, available, failed };
    Outcome outcome = Outcome::failed;
    std::string version;       // the newest version offered, when available
    std::string downloadPage;  // where to get it (Lectern never installs anything itself)
    std::string message;       // one line for the user: "Lectern 0.1.0 is up to date", the failure's reason
};

// Checks an appcast for a newer version: once at start when automatic checks
// are on and the last check is a day old or more, then once a day while they
// stay on, and whenever asked. A build without a feed has no checks at all.
// Keeps "Last checked" and the automatic-check setting in the preferences.
class AppUpdater {
public:
    using Clock = std::function<std::chrono::system_clock::time_point()>;

    // The preference keys: a bool, on when absent; seconds since the epoch
    // (UTC) of the last check that reached the feed.
    static constexpr const char* automaticallyCheckKey = "updates.automaticallyCheck.v1";
    static constexpr const char* lastCheckedKey = "updates.lastChecked.v1";
    static constexpr std::chrono::hours checkInterval{24};

    // `feed` empty: this build has no update checks. It must be an https
    // address (plain http only to this machine); any other is refused at
    // every check, without a request. `currentVersion` is compared with the
    // feed's versions. `clock` is the wall clock that "Last checked" and the
    // day between checks are measured on.
    AppUpdater(std::string feed, std::string currentVersion, PreferencesStore& preferences, Scheduler& scheduler,
               std::unique_ptr<FeedFetcher> fetcher, Clock clock = [] { return std::chrono::system_clock::now(); });
    ~AppUpdater();

    bool hasFeed() const;
    // The feed's host name, as the privacy statement names it; empty without a feed.
    std::string feedHost() const;

    // At launch (never when LECTERN_TEST_HOST is set: the caller decides).
    void start();
    // False while a check runs and in a build without a feed.
    bool canCheckForUpdates() const;
    Signal<bool>& canCheckForUpdatesChanged();
    void checkForUpdates();

    bool automaticallyChecksForUpdates() const;  // on unless turned off
    void setAutomaticallyChecksForUpdates(bool on);
    std::optional<std::chrono::system_clock::time_point> lastChecked() const;

    const std::optional<UpdateResult>& lastResult() const;
    // After every check, automatic or asked for.
    Signal<const UpdateResult&>& finished();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace lectern
