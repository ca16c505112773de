#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/browser_profile.h"
#include "model/deck_enums.h"
#include "model/deck_palette.h"
#include "model/slide.h"
#include "model/uuid.h"

namespace lectern {

// The whole document, as plain values: copying a deck copies all of it
// (image bytes are shared, never copied).
struct Deck {
    static constexpr std::int64_t currentSchemaVersion = 3;

    std::int64_t schemaVersion = currentSchemaVersion;
    Uuid id = Uuid::random();
    std::optional<std::string> title;
    Theme theme = Theme::clinical;
    std::optional<std::string> accentHex;  // absent: the theme's default accent
    DeckPalette palette;
    std::vector<BrowserProfile> browserProfiles;
    std::vector<Slide> slides;
    std::optional<std::int64_t> targetMinutes;  // at least 1 when present

    // The profile with this id, or null; a dangling id counts as absent.
    const BrowserProfile* profile(const std::optional<Uuid>& id) const;
    // Index of the slide with this id.
    std::optional<std::size_t> indexOfSlide(const Uuid& id) const;
    // Clears every slide's browserProfileId that names no profile of the deck.
    void dropDanglingProfileReferences();
    // Whether the navigator draws the end of a section after slide `index`.
    bool closesSection(std::size_t index) const;

    friend bool operator==(const Deck&, const Deck&) = default;
};

}  // namespace lectern
