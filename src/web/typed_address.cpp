#include "web/typed_address.h"

#include <glib/gi18n.h>

#include "model/deck_json.h"

namespace lectern {

namespace {

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The scheme the text starts with, if it has one. "localhost:3000" and
// "example.com:8080/x" name a host and a port, not a scheme: a colon followed
// only by digits up to the end of the authority is a port.
std::optional<std::string_view> schemeOf(std::string_view text) {
    const auto colon = text.find(':');
    if (colon == std::string_view::npos || colon == 0 || !isLetter(text[0])) return std::nullopt;
    for (std::size_t i = 1; i < colon; ++i) {
        const char c = text[i];
        if (!isLetter(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') return std::nullopt;
    }
    std::size_t end = colon + 1;
    while (end < text.size() && isDigit(text[end])) ++end;
    const bool port = end > colon + 1 && (end == text.size() || text[end] == '/' || text[end] == '?' || text[end] == '#');
    if (port) return std::nullopt;
    return text.substr(0, colon);
}

}  // namespace

Result<std::optional<std::string>> typedAddress(std::string_view typed) {
    while (!typed.empty() && isSpace(typed.front())) typed.remove_prefix(1);
    while (!typed.empty() && isSpace(typed.back())) typed.remove_suffix(1);
    if (typed.empty()) return std::optional<std::string>();
    if (schemeOf(typed)) {
        if (DeckJson::isWebAddress(typed)) return std::optional<std::string>(std::string(typed));
        return Error{_("Only web addresses (http or https) can be shown.")};
    }
    // "//host/path" is an address without its scheme, too.
    if (typed.starts_with("//")) typed.remove_prefix(2);
    return std::optional<std::string>("https://" + std::string(typed));
}

}  // namespace lectern
