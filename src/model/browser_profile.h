#pragma once

#include <string>

#include "model/uuid.h"

namespace lectern {

// A named browser session; its id names a persistent website data store.
struct BrowserProfile {
    Uuid id = Uuid::random();
    std::string name;
    friend bool operator==(const BrowserProfile&, const BrowserProfile&) = default;
};

}  // namespace lectern
