#pragma once

#include <functional>
#include <optional>
#include <string>

#include "model/uuid.h"

namespace lectern {

// A page worth keeping loaded: its address in one website data store (the
// profile's, or the shared session's when there is none). Two web slides
// with the same address and profile share one key.
struct PrefetchKey {
    std::string url;
    std::optional<Uuid> profileId;
    friend bool operator==(const PrefetchKey&, const PrefetchKey&) = default;
};

}  // namespace lectern

template <>
struct std::hash<lectern::PrefetchKey> {
    std::size_t operator()(const lectern::PrefetchKey& key) const noexcept {
        std::size_t h = std::hash<std::string>()(key.url);
        if (key.profileId) h ^= std::hash<lectern::Uuid>()(*key.profileId) + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2);
        return h;
    }
};
