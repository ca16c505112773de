#include "app/app_updater.h"

#include <glib.h>
#include <glib/gi18n.h>

#include <algorithm>
#include <utility>

#include "app/appcast.h"
#include "model/preferences_store.h"

namespace lectern {
namespace {

using std::chrono::system_clock;

std::string printed(const char* format, const std::string& value) {
    char* text = g_strdup_printf(format, value.c_str());
    std::string result = text;
    g_free(text);
    return result;
}

// "Could not connect" reads as "could not connect" after the colon; names
// and abbreviations ("HTTP 500", "TLS") keep their capitals.
std::string afterColon(std::string reason) {
    if (reason.size() > 1 && g_ascii_isupper(reason[0]) && g_ascii_islower(reason[1])) {
        reason[0] = g_ascii_tolower(reason[0]);
    }
    return reason;
}

struct Address {
    std::string host;
    std::optional<std::string> refusal;  // why no request may go there
};

// Update checks go over https only; plain http is for a feed on this machine.
Address checkAddress(const std::string& feed) {
    Address address;
    GUri* uri = g_uri_parse(feed.c_str(), G_URI_FLAGS_NONE, nullptr);
    const char* scheme = uri ? g_uri_get_scheme(uri) : nullptr;
    const char* host = uri ? g_uri_get_host(uri) : nullptr;
    if (host) address.host = host;
    const bool local = host && (g_ascii_strcasecmp(host, "localhost") == 0 || g_strcmp0(host, "127.0.0.1") == 0 ||
                                g_strcmp0(host, "::1") == 0);
    if (!host || !*host) {
        address.refusal = _("the update address isn’t a web address");
    } else if (g_ascii_strcasecmp(scheme, "https") != 0 && !(local && g_ascii_strcasecmp(scheme, "http") == 0)) {
        address.refusal = _("the update address isn’t a secure (https) address");
    }
    if (uri) g_uri_unref(uri);
    return address;
}

}  // namespace

struct AppUpdater::State {
    AppUpdater& owner;
    std::string feed;
    std::string currentVersion;
    PreferencesStore& preferences;
    Scheduler& scheduler;
    std::unique_ptr<FeedFetcher> fetcher;
    Clock clock;
    Address address;

    bool started = false;
    bool checking = false;
    Scheduler::TimerId timer = 0;    // the next automatic check
    Scheduler::TimerId refused = 0;  // delivers a refused address's failure
    // When the last check ended, even a failed one, so that a failing feed
    // is asked once a day and not in a loop.
    std::optional<system_clock::time_point> lastAttempt;
    std::optional<UpdateResult> lastResult;
    Signal<bool> canCheckChanged;
    Signal<const UpdateResult&> finished;

    State(AppUpdater& owner, std::string feed, std::string currentVersion, PreferencesStore& preferences,
          Scheduler& scheduler, std::unique_ptr<FeedFetcher> fetcher, Clock clock)
        : owner(owner), feed(std::move(feed)), currentVersion(std::move(currentVersion)), preferences(preferences),
          scheduler(scheduler), fetcher(std::move(fetcher)), clock(std::move(clock)) {
        if (!this->feed.empty()) address = checkAddress(this->feed);
    }

    std::optional<system_clock::time_point> due() const {
        auto last = owner.lastChecked();
        if (lastAttempt && (!last || *lastAttempt > *last)) last = lastAttempt;
        if (!last) return std::nullopt;
        return *last + checkInterval;
    }

    void cancelTimer() {
        scheduler.cancel(std::exchange(timer, 0));
    }

    // Arms the timer for the next automatic check, when they are on.
    void scheduleNext() {
        cancelTimer();
        if (!started || feed.empty() || checking || !owner.automaticallyChecksForUpdates()) return;
        double wait = 0;
        if (auto when = due()) {
            wait = std::chrono::duration<double>(*when - clock()).count();
            // A clock set back must not put the next check off for longer.
            wait = std::clamp(wait, 0.0, std::chrono::duration<double>(checkInterval).count());
        }
        timer = scheduler.after(wait, [this] {
            timer = 0;
            // The timer runs on the monotonic clock; "a day since the last
            // check" is on the wall clock, which may have been set back.
            auto when = due();
            if (!when || clock() + std::chrono::seconds(1) >= *when) {
                owner.checkForUpdates();
            } else {
                scheduleNext();
            }
        });
    }

    void finish(UpdateResult result) {
        checking = false;
        auto now = clock();
        lastAttempt = now;
        if (result.outcome != UpdateResult::Outcome::failed) {
            auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now.time_since_epoch()).count();
            // A failed write keeps the value for this session; nothing more to do.
            (void)preferences.setValue(lastCheckedKey, std::int64_t(seconds));
        }
        lastResult = std::move(result);
        scheduleNext();
        canCheckChanged.emit(true);
        finished.emit(*lastResult);
    }

    UpdateResult failure(const std::string& reason) const {
        UpdateResult result;
        result.outcome = UpdateResult::Outcome::failed;
        result.message = printed(_("Couldn’t check for updates: %s"), afterColon(reason));
        return result;
    }

    UpdateResult read(const std::string& body) const {
        auto items = parseAppcast(body);
        if (!items) return failure(items.error().message);
        const AppcastItem* newest = nullptr;
        for (const auto& item : *items) {
            if (!item.channel.empty()) continue;  // offered only to those who chose that channel
            if (!newest || compareVersions(item.version, newest->version) > 0) newest = &item;
        }
        UpdateResult result;
        if (newest && compareVersions(newest->version, currentVersion) > 0) {
            result.outcome = UpdateResult::Outcome::available;
            result.version = newest->displayVersion();
            result.downloadPage = newest->downloadPage();
            result.message = printed(_("Lectern %s is available."), result.version);
        } else {
            result.outcome = UpdateResult::Outcome::upToDate;
            result.message = printed(_("Lectern %s is up to date."), currentVersion);
        }
        return result;
    }
};

AppUpdater::AppUpdater(std::string feed, std::string currentVersion, PreferencesStore& preferences,
                       Scheduler& scheduler, std::unique_ptr<FeedFetcher> fetcher, Clock clock)
    : state_(std::make_unique<State>(*this, std::move(feed), std::move(currentVersion), preferences, scheduler,
                                     std::move(fetcher), std::move(clock))) {}

AppUpdater::~AppUpdater() {
    state_->cancelTimer();
    state_->scheduler.cancel(state_->refused);
    if (state_->checking && state_->fetcher) state_->fetcher->cancel();
}

bool AppUpdater::hasFeed() const { return !state_->feed.empty(); }

std::string AppUpdater::feedHost() const { return state_->address.host; }

void AppUpdater::start() {
    state_->started = true;
    state_->scheduleNext();
}

bool AppUpdater::canCheckForUpdates() const { return hasFeed() && !state_->checking; }

Signal<bool>& AppUpdater::canCheckForUpdatesChanged() { return state_->canCheckChanged; }

void AppUpdater::checkForUpdates() {
    State& s = *state_;
    if (!canCheckForUpdates()) return;
    s.checking = true;
    s.cancelTimer();
    s.canCheckChanged.emit(false);
    if (s.address.refusal || !s.fetcher) {
        // Answered from the main loop, as a fetch would be, and never sent.
        std::string reason = s.address.refusal.value_or(_("no way to reach the feed"));
        s.refused = s.scheduler.after(0, [&s, reason] {
            s.refused = 0;
            s.finish(s.failure(reason));
        });
        return;
    }
    s.fetcher->fetch(s.feed, [&s](Result<std::string> body) {
        s.finish(body ? s.read(*body) : s.failure(body.error().message));
    });
}

bool AppUpdater::automaticallyChecksForUpdates() const {
    const auto* value = state_->preferences.value(automaticallyCheckKey);
    return !value || !value->is_boolean() || value->get<bool>();
}

void AppUpdater::setAutomaticallyChecksForUpdates(bool on) {
    // A failed write keeps the setting for this session.
    (void)state_->preferences.setValue(automaticallyCheckKey, on);
    if (on) {
        state_->scheduleNext();
    } else {
        state_->cancelTimer();
    }
}

std::optional<system_clock::time_point> AppUpdater::lastChecked() const {
    const auto* value = state_->preferences.value(lastCheckedKey);
    if (!value || !value->is_number()) return std::nullopt;
    auto seconds = value->is_number_float() ? std::int64_t(value->get<double>()) : value->get<std::int64_t>();
    return system_clock::time_point(std::chrono::seconds(seconds));
}

const std::optional<UpdateResult>& AppUpdater::lastResult() const { return state_->lastResult; }

Signal<const UpdateResult&>& AppUpdater::finished() { return state_->finished; }

}  // namespace lectern
