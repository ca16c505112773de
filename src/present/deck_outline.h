#pragma once

#include <glib/gi18n.h>

#include <string>

#include <nlohmann/json.hpp>

#include "model/deck.h"

namespace lectern {

// The talk as the presenter will step through it: per slide its number,
// title, layout, section, reveal steps, cards and their targets, where "Next"
// goes, the web page and the demo actions. For rehearsing and for scripts.
class DeckOutline {
public:
    static std::string text(const Deck& deck);
    // {"slides": [...]}, one object per slide.
    static nlohmann::json json(const Deck& deck);

    // Display fallbacks for empty names.
    static constexpr const char* untitledSlide = N_("Untitled slide");
    static constexpr const char* untitledProfile = N_("Untitled profile");
    static constexpr const char* untitledAction = N_("Untitled action");
};

}  // namespace lectern
