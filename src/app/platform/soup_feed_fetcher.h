#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "app/app_updater.h"
#include "base/platform/gobject_ref.h"

typedef struct _SoupSession SoupSession;

namespace lectern {

class PreferencesStore;
class Scheduler;

// Fetches the update feed with libsoup: a session of its own with no cookie
// jar and no cache, that says it is Lectern of this version. A certificate
// that does not verify fails the fetch (there is no way to accept one), as
// does a redirect from https to anything else, an HTTP status of 400 or more
// ("HTTP 404"), a body past the size limit, or no answer within the time
// limit. One fetch at a time: a new one abandons the one under way. Runs on
// the thread-default main context of the caller.
class SoupFeedFetcher : public FeedFetcher {
public:
    static constexpr double defaultTimeoutSeconds = 20;
    static constexpr std::size_t defaultSizeLimit = std::size_t{1} << 20;

    SoupFeedFetcher() : SoupFeedFetcher(defaultTimeoutSeconds, defaultSizeLimit) {}
    // `timeoutSeconds` bounds the whole fetch; `sizeLimit` the body, in bytes.
    SoupFeedFetcher(double timeoutSeconds, std::size_t sizeLimit);
    ~SoupFeedFetcher() override;
    SoupFeedFetcher(const SoupFeedFetcher&) = delete;
    SoupFeedFetcher& operator=(const SoupFeedFetcher&) = delete;

    void fetch(const std::string& url, std::function<void(Result<std::string>)> done) override;
    void cancel() override;

private:
    struct Pending;
    GObjectRef<SoupSession> session_;
    double timeoutSeconds_;
    std::size_t sizeLimit_;
    Pending* pending_ = nullptr;  // owned by its async call
};

// The application's updater: this build's feed (or the one LECTERN_UPDATE_FEED
// names) and version, checked with a SoupFeedFetcher.
std::unique_ptr<AppUpdater> makeAppUpdater(PreferencesStore& preferences, Scheduler& scheduler);

}  // namespace lectern
