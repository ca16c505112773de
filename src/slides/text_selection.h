#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace lectern {

// A span of a body: UTF-8 byte offsets on character boundaries. An empty
// range is an insertion point (a caret).
struct TextRange {
    std::size_t begin = 0;
    std::size_t end = 0;

    bool empty() const { return begin == end; }
    std::size_t length() const { return end - begin; }
    friend bool operator==(const TextRange&, const TextRange&) = default;
};

// The selected ranges of a body: at least one range; a caret alone is one
// empty range.
struct TextSelection {
    std::vector<TextRange> ranges{TextRange{}};

    static TextSelection caret(std::size_t offset) { return {{{offset, offset}}}; }
    static TextSelection range(std::size_t begin, std::size_t end) { return {{{begin, end}}}; }

    // Every range is empty (nothing is selected, only insertion points).
    bool isCaretOnly() const;
    friend bool operator==(const TextSelection&, const TextSelection&) = default;
};

// The selection made safe to use on text: begin and end put in order, clamped
// to the text and moved back onto UTF-8 character boundaries; ranges sorted,
// overlapping ones merged (a caret touching a range joins it), and a selection
// without ranges turned into a caret at the end of the text.
TextSelection normalizedSelection(const TextSelection& selection, std::string_view text);

}  // namespace lectern
