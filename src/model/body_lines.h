#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "model/attributed_text.h"

namespace lectern {

// One line (paragraph) of a body: the text between two newline characters.
// Offsets are UTF-8 byte offsets into the body; `end` excludes the newline.
struct BodyLine {
    std::size_t index = 0;  // position among the body's lines
    std::size_t begin = 0;
    std::size_t end = 0;
    bool hasNewline = false;  // a "\n" follows at `end`

    std::size_t length() const { return end - begin; }
    // The line with its newline, the span a paragraph-wide attribute covers.
    std::size_t paragraphEnd() const { return hasNewline ? end + 1 : end; }
    friend bool operator==(const BodyLine&, const BodyLine&) = default;
};

// Cuts the text at every "\n". An empty text is one empty line; a text ending
// in "\n" ends with an empty line.
std::vector<BodyLine> splitLines(std::string_view text);

// Index of the line holding offset (an offset just after a "\n" belongs to the
// next line).
std::size_t lineAt(const std::vector<BodyLine>& lines, std::size_t offset);

// A line holding nothing but spaces and tabs.
bool isBlankLine(std::string_view line);

// The list marker at the start of a line, after its leading tabs: "• " for a
// bullet item, digits, a full stop and one white-space character for a
// numbered item.
struct ListMarker {
    enum class Kind { none, bullet, numbered };
    Kind kind = Kind::none;
    std::size_t tabs = 0;    // leading tabs: the indentation level
    std::size_t length = 0;  // bytes of the marker after the tabs
    std::int64_t number = 0; // of a numbered item

    bool isListItem() const { return kind != Kind::none; }
    friend bool operator==(const ListMarker&, const ListMarker&) = default;
};
ListMarker listMarkerOf(std::string_view line);

// The body without its leading and trailing blank lines, as it is saved (a
// body of blank lines only becomes empty).
AttributedText trimmedBlankLines(const AttributedText& body);

inline constexpr std::string_view bulletMarker = "\u2022 ";

}  // namespace lectern
