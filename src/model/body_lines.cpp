#include "model/body_lines.h"

#include <algorithm>
#include <limits>

namespace lectern {

std::vector<BodyLine> splitLines(std::string_view text) {
    std::vector<BodyLine> lines;
    std::size_t begin = 0;
    for (;;) {
        std::size_t newline = text.find('\n', begin);
        if (newline == std::string_view::npos) {
            lines.push_back({lines.size(), begin, text.size(), false});
            return lines;
        }
        lines.push_back({lines.size(), begin, newline, true});
        begin = newline + 1;
    }
}

std::size_t lineAt(const std::vector<BodyLine>& lines, std::size_t offset) {
    for (const auto& line : lines) {
        if (offset <= line.end) return line.index;
    }
    return lines.empty() ? 0 : lines.back().index;
}

bool isBlankLine(std::string_view line) {
    return line.find_first_not_of(" \t") == std::string_view::npos;
}

ListMarker listMarkerOf(std::string_view line) {
    ListMarker marker;
    while (marker.tabs < line.size() && line[marker.tabs] == '\t') ++marker.tabs;
    std::string_view rest = line.substr(marker.tabs);
    if (rest.substr(0, bulletMarker.size()) == bulletMarker) {
        marker.kind = ListMarker::Kind::bullet;
        marker.length = bulletMarker.size();
        return marker;
    }
    std::size_t digits = 0;
    std::int64_t number = 0;
    while (digits < rest.size() && rest[digits] >= '0' && rest[digits] <= '9') {
        int digit = rest[digits] - '0';
        number = number > (std::numeric_limits<std::int64_t>::max() - digit) / 10 ? std::numeric_limits<std::int64_t>::max()
                                                                                 : number * 10 + digit;
        ++digits;
    }
    // One white-space character after the full stop: space, tab, or the
    // other ASCII spaces (a line holds no newline).
    auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\f' || c == '\r'; };
    if (digits > 0 && digits + 1 < rest.size() && rest[digits] == '.' && isSpace(rest[digits + 1])) {
        marker.kind = ListMarker::Kind::numbered;
        marker.length = digits + 2;
        marker.number = number;
    }
    return marker;
}

AttributedText trimmedBlankLines(const AttributedText& body) {
    std::string_view text = body.string();
    auto lines = splitLines(text);
    auto blank = [&](const BodyLine& line) { return isBlankLine(text.substr(line.begin, line.length())); };
    auto first = std::find_if_not(lines.begin(), lines.end(), blank);
    if (first == lines.end()) return {};
    auto last = std::find_if_not(lines.rbegin(), lines.rend(), blank);
    return body.slice(first->begin, last->end);
}

}  // namespace lectern
