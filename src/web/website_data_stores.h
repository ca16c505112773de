#pragma once

#include <functional>
#include <optional>

#include "base/result.h"
#include "model/uuid.h"

namespace lectern {

// The operations on browser profiles' website data stores that the profile
// logic needs from the web engine. A store is named by a profile's id; none
// names the shared session. Main thread only; callbacks on the main loop.
class WebsiteDataStores {
public:
    virtual ~WebsiteDataStores() = default;
    // Erases every kind of website data of a store (made if needed), then
    // calls back. Errors are not reported.
    virtual void erase(const std::optional<Uuid>& profileId, std::function<void()> done) = 0;
    // Forgets the cached store of a profile, so that nothing of ours holds it.
    virtual void dropCached(const Uuid& profileId) = 0;
    // Removes a profile's store for good; fails while it is still in use or
    // when its files cannot be deleted.
    virtual Status removeStore(const Uuid& profileId) = 0;
};

}  // namespace lectern
