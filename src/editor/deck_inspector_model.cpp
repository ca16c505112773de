#include "editor/deck_inspector_model.h"

#include <algorithm>
#include <charconv>

#include "model/color.h"

namespace lectern::DeckInspectorModel {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view space = " \t\r\n";
    std::size_t first = text.find_first_not_of(space);
    if (first == std::string_view::npos) return {};
    std::size_t last = text.find_last_not_of(space);
    return text.substr(first, last - first + 1);
}

}  // namespace

std::optional<std::string> titleFromText(std::string_view text) {
    if (text.empty()) return std::nullopt;
    return std::string(text);
}

std::optional<std::optional<std::int64_t>> parseTalkLength(std::string_view text) {
    text = trimmed(text);
    if (text.empty()) return std::optional<std::int64_t>();
    bool negative = false;
    if (text.front() == '-' || text.front() == '+') {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    if (text.empty() || !std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        return std::nullopt;
    }
    std::int64_t minutes = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), minutes);
    if (error == std::errc::result_out_of_range) minutes = maxTalkMinutes;  // all digits: only too many of them
    if (negative) return std::optional<std::int64_t>(1);
    return std::optional<std::int64_t>(std::clamp<std::int64_t>(minutes, 1, maxTalkMinutes));
}

std::string talkLengthText(const std::optional<std::int64_t>& minutes) {
    return minutes ? std::to_string(*minutes) : std::string();
}

std::vector<std::string> accentChoices(const std::vector<std::string>& appHexes, const DeckPalette& palette) {
    std::vector<std::string> choices;
    auto offer = [&](std::string_view text) {
        auto hex = canonicalHex(text);
        if (hex && std::find(choices.begin(), choices.end(), *hex) == choices.end()) choices.push_back(*hex);
    };
    for (const auto& hex : appHexes) offer(hex);
    for (const auto& swatch : palette.swatches()) {
        if (swatch) offer(*swatch);
    }
    return choices;
}

bool sameColour(const std::optional<std::string>& accentHex, std::string_view hex) {
    if (!accentHex) return false;
    auto a = canonicalHex(*accentHex);
    auto b = canonicalHex(hex);
    return a && b && *a == *b;
}

}  // namespace lectern::DeckInspectorModel
