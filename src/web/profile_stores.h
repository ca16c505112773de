#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "model/preferences_store.h"
#include "base/signal.h"
#include "model/uuid.h"
#include "base/scheduler.h"
#include "web/profiles_in_use.h"
#include "web/website_data_stores.h"

namespace lectern {

// What happens to the website data of the shared browser session and of the
// browser profiles: clearing a session (signing out of every site), deleting
// a deleted profile's store, and removing later the stores whose removal
// failed. One per process; main thread only.
//
// Every operation is asynchronous and calls `done` (when given) at its end,
// on the main loop, or at once when there is nothing to wait for. Nothing is
// called back after the object is gone.
class ProfileStores {
public:
    // Profile store ids (upper-case UUID text) whose removal failed and is
    // tried again at the next start.
    static constexpr const char* pendingRemovalsKey = "PendingProfileStoreRemovals";
    static constexpr int removalAttempts = 5;
    static constexpr double removalRetryDelay = 0.5;  // seconds between attempts
    static constexpr double clearedFeedbackDuration = 1.5;

    // `discardPrefetched` throws away every page preloaded off-screen in any
    // window: a live page holds its store, which could then not be removed,
    // and would keep what was just erased.
    ProfileStores(WebsiteDataStores& stores, Scheduler& scheduler, PreferencesStore& preferences,
                  ProfilesInUse& profilesInUse, std::function<void()> discardPrefetched);
    ~ProfileStores();
    ProfileStores(const ProfileStores&) = delete;
    ProfileStores& operator=(const ProfileStores&) = delete;

    // Discards the preloaded pages, then erases all data of the shared session.
    void clearSharedSession(std::function<void()> done = {});
    // Erases all data of a profile's store, then shows the profile as
    // recently cleared for a moment.
    void clearProfileSession(const Uuid& profileId, std::function<void()> done = {});
    // After a profile was removed from the deck in window `windowId`: erases
    // and removes its store, unless another open window uses the profile or
    // no window is named, in which case only the cached store is let go.
    // A removal that keeps failing is recorded under pendingRemovalsKey.
    void deleteProfileStore(const Uuid& profileId, const std::optional<Uuid>& windowId,
                            std::function<void()> done = {});
    // Tries once more to remove each recorded store, in order, dropping from
    // the record those that go. Runs one pass, the first time it is called;
    // later calls do nothing.
    void retryPendingRemovals();

    // The recorded ids, as stored.
    std::vector<std::string> pendingRemovals() const;

    // The profile whose session was just cleared, for the inspector's
    // feedback; none after clearedFeedbackDuration.
    const std::optional<Uuid>& recentlyClearedProfileId() const { return recentlyCleared_; }
    Signal<const std::optional<Uuid>&>& recentlyClearedChanged() { return recentlyClearedChanged_; }

private:
    void attemptRemoval(const Uuid& profileId, int attempt, std::function<void()> done);
    void recordPendingRemoval(const Uuid& profileId);
    void setRecentlyCleared(const std::optional<Uuid>& profileId);
    // Calls `next` once the erase is done, unless this object is gone by then.
    std::function<void()> whileAlive(std::function<void()> next);

    WebsiteDataStores& stores_;
    Scheduler& scheduler_;
    PreferencesStore& preferences_;
    ProfilesInUse& profilesInUse_;
    std::function<void()> discardPrefetched_;

    std::optional<Uuid> recentlyCleared_;
    Signal<const std::optional<Uuid>&> recentlyClearedChanged_;
    Scheduler::TimerId feedbackTimer_ = 0;
    std::set<Scheduler::TimerId> retryTimers_;
    bool retriedPending_ = false;
    std::shared_ptr<char> alive_ = std::make_shared<char>();
};

}  // namespace lectern
