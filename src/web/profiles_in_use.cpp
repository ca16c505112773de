#include "web/profiles_in_use.h"

namespace lectern {

ProfilesInUse& ProfilesInUse::shared() {
    static ProfilesInUse profiles;
    return profiles;
}

void ProfilesInUse::publish(const Uuid& windowId, std::set<Uuid> profileIds) {
    byWindow_[windowId] = std::move(profileIds);
}

void ProfilesInUse::publish(const Uuid& windowId, const Deck& deck) {
    std::set<Uuid> ids;
    for (const auto& profile : deck.browserProfiles) ids.insert(profile.id);
    publish(windowId, std::move(ids));
}

void ProfilesInUse::remove(const Uuid& windowId) { byWindow_.erase(windowId); }

bool ProfilesInUse::inUseElsewhere(const Uuid& profileId, const Uuid& windowId) const {
    for (const auto& [window, ids] : byWindow_) {
        if (window != windowId && ids.count(profileId)) return true;
    }
    return false;
}

}  // namespace lectern
