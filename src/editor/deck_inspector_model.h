#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/deck_palette.h"

namespace lectern {

// What the deck inspector's fields mean, without the widgets.
namespace DeckInspectorModel {

// The longest talk the length field takes, in minutes (a full day).
inline constexpr std::int64_t maxTalkMinutes = 24 * 60;

// The deck title as typed: an empty field means no title.
std::optional<std::string> titleFromText(std::string_view text);

// Typed talk-length text. The outer nullopt: the text is not a length at
// all, and the field shows the deck's value again. Otherwise the deck's new
// `targetMinutes`: none for an empty field, else the whole number of
// minutes, brought up to at least 1 (and down to maxTalkMinutes).
std::optional<std::optional<std::int64_t>> parseTalkLength(std::string_view text);
// The field's text for a deck's talk length ("" for none).
std::string talkLengthText(const std::optional<std::int64_t>& minutes);

// The accent colours the inspector offers, in canonical "#RRGGBB" form:
// the application's accent palette, then the deck palette's filled
// swatches, each colour once; text that is not a colour is left out.
std::vector<std::string> accentChoices(const std::vector<std::string>& appHexes, const DeckPalette& palette);

// Whether a deck's accent text names the same colour as `hex` (case and
// a missing "#" aside).
bool sameColour(const std::optional<std::string>& accentHex, std::string_view hex);

}  // namespace DeckInspectorModel

}  // namespace lectern
