#include "web/profile_stores.h"

#include <algorithm>
#include <utility>

#include <nlohmann/json.hpp>

namespace lectern {

using nlohmann::json;

ProfileStores::ProfileStores(WebsiteDataStores& stores, Scheduler& scheduler, PreferencesStore& preferences,
                             ProfilesInUse& profilesInUse, std::function<void()> discardPrefetched)
    : stores_(stores),
      scheduler_(scheduler),
      preferences_(preferences),
      profilesInUse_(profilesInUse),
      discardPrefetched_(std::move(discardPrefetched)) {}

ProfileStores::~ProfileStores() {
    // Leaves the feedback as it is and gives up removals still to be tried:
    // the store stays on disk, as after a crash.
    if (feedbackTimer_) scheduler_.cancel(feedbackTimer_);
    for (auto id : retryTimers_) scheduler_.cancel(id);
}

std::function<void()> ProfileStores::whileAlive(std::function<void()> next) {
    return [alive = std::weak_ptr<char>(alive_), next = std::move(next)] {
        if (alive.lock()) next();
    };
}

void ProfileStores::clearSharedSession(std::function<void()> done) {
    if (discardPrefetched_) discardPrefetched_();
    stores_.erase(std::nullopt, whileAlive([done = std::move(done)] {
                      if (done) done();
                  }));
}

void ProfileStores::clearProfileSession(const Uuid& profileId, std::function<void()> done) {
    stores_.erase(profileId, whileAlive([this, profileId, done = std::move(done)] {
                      setRecentlyCleared(profileId);
                      // A later clear of any profile replaces this feedback and
                      // its timer, so the latest one stays for the full time.
                      if (feedbackTimer_) scheduler_.cancel(feedbackTimer_);
                      feedbackTimer_ = scheduler_.after(clearedFeedbackDuration, [this, profileId] {
                          feedbackTimer_ = 0;
                          if (recentlyCleared_ == profileId) setRecentlyCleared(std::nullopt);
                      });
                      if (done) done();
                  }));
}

void ProfileStores::setRecentlyCleared(const std::optional<Uuid>& profileId) {
    if (recentlyCleared_ == profileId) return;
    recentlyCleared_ = profileId;
    recentlyClearedChanged_.emit(recentlyCleared_);
}

void ProfileStores::deleteProfileStore(const Uuid& profileId, const std::optional<Uuid>& windowId,
                                       std::function<void()> done) {
    if (!windowId || profilesInUse_.inUseElsewhere(profileId, *windowId)) {
        // Another open deck still signs in through this profile: its data
        // stays. Only our cached store goes, so it is opened afresh if used.
        stores_.dropCached(profileId);
        if (done) done();
        return;
    }
    if (discardPrefetched_) discardPrefetched_();
    stores_.erase(profileId, whileAlive([this, profileId, done = std::move(done)]() mutable {
                      // The engine removes no store that something still holds.
                      stores_.dropCached(profileId);
                      attemptRemoval(profileId, 1, std::move(done));
                  }));
}

void ProfileStores::attemptRemoval(const Uuid& profileId, int attempt, std::function<void()> done) {
    if (!stores_.removeStore(profileId).ok()) {
        if (attempt < removalAttempts) {
            auto timer = std::make_shared<Scheduler::TimerId>(0);
            *timer = scheduler_.after(removalRetryDelay, [this, timer, profileId, attempt, done = std::move(done)] {
                retryTimers_.erase(*timer);
                attemptRemoval(profileId, attempt + 1, done);
            });
            retryTimers_.insert(*timer);
            return;
        }
        // Left for the next start, without a word to the presenter.
        recordPendingRemoval(profileId);
    }
    if (done) done();
}

std::vector<std::string> ProfileStores::pendingRemovals() const {
    std::vector<std::string> ids;
    const json* stored = preferences_.value(pendingRemovalsKey);
    if (!stored || !stored->is_array()) return ids;
    for (const auto& entry : *stored) {
        if (entry.is_string()) ids.push_back(entry.get<std::string>());
    }
    return ids;
}

void ProfileStores::recordPendingRemoval(const Uuid& profileId) {
    auto ids = pendingRemovals();
    bool recorded = std::any_of(ids.begin(), ids.end(), [&](const std::string& text) {
        return Uuid::parse(text) == std::optional<Uuid>(profileId);
    });
    if (recorded) return;
    ids.push_back(profileId.string());
    (void)preferences_.setValue(pendingRemovalsKey, ids);  // an unwritable file keeps it for this session
}

void ProfileStores::retryPendingRemovals() {
    if (retriedPending_) return;
    retriedPending_ = true;
    // The engine's stores are folders that can be removed without opening
    // the shared session first, so nothing is touched before the pass.
    for (const auto& text : pendingRemovals()) {
        auto id = Uuid::parse(text);
        if (id && !stores_.removeStore(*id).ok()) continue;  // tried again at the next start
        // Removed, or not an id that could ever be removed: off the record,
        // as it stands now.
        auto ids = pendingRemovals();
        ids.erase(std::remove(ids.begin(), ids.end(), text), ids.end());
        if (ids.empty()) {
            (void)preferences_.removeValue(pendingRemovalsKey);
        } else {
            (void)preferences_.setValue(pendingRemovalsKey, ids);
        }
    }
}

}  // namespace lectern
