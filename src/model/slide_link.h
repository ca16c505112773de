#pragma once

#include <optional>
#include <string>

#include "model/uuid.h"

namespace lectern {

// A card of a decisions slide.
struct SlideLink {
    Uuid id = Uuid::random();
    std::string label;
    std::string subtitle;
    std::optional<std::string> fillHex;
    bool filled = false;
    std::string targetId;  // id text of the target slide; empty: no target
    friend bool operator==(const SlideLink&, const SlideLink&) = default;
};

}  // namespace lectern
