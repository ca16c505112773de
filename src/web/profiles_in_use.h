#pragma once

#include <set>
#include <unordered_map>

#include "model/deck.h"
#include "model/uuid.h"

namespace lectern {

// Which browser profiles each open deck window uses, so that deleting a
// profile in one deck leaves alone the data of a profile that another open
// deck lists too (a copy of the deck, say). A window publishes its set when
// it opens and whenever its deck's profiles change, and removes it when it
// closes. Main thread only.
class ProfilesInUse {
public:
    // The register of this process.
    static ProfilesInUse& shared();

    // Replaces the window's set.
    void publish(const Uuid& windowId, std::set<Uuid> profileIds);
    // The ids of the deck's profiles.
    void publish(const Uuid& windowId, const Deck& deck);
    void remove(const Uuid& windowId);

    // Whether a window other than `windowId` uses the profile.
    bool inUseElsewhere(const Uuid& profileId, const Uuid& windowId) const;

private:
    std::unordered_map<Uuid, std::set<Uuid>> byWindow_;
};

}  // namespace lectern
