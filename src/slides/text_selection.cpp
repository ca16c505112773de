#include "slides/text_selection.h"

#include <algorithm>

namespace lectern {

bool TextSelection::isCaretOnly() const {
    return std::all_of(ranges.begin(), ranges.end(), [](const TextRange& r) { return r.empty(); });
}

namespace {

// Moves offset back to the first byte of the character it falls in.
std::size_t characterBoundary(std::string_view text, std::size_t offset) {
    offset = std::min(offset, text.size());
    while (offset > 0 && offset < text.size() && (static_cast<unsigned char>(text[offset]) & 0xC0) == 0x80) --offset;
    return offset;
}

}  // namespace

TextSelection normalizedSelection(const TextSelection& selection, std::string_view text) {
    std::vector<TextRange> ranges;
    ranges.reserve(selection.ranges.size());
    for (const auto& r : selection.ranges) {
        std::size_t begin = characterBoundary(text, std::min(r.begin, r.end));
        std::size_t end = characterBoundary(text, std::max(r.begin, r.end));
        ranges.push_back({begin, end});
    }
    if (ranges.empty()) return TextSelection::caret(text.size());
    std::sort(ranges.begin(), ranges.end(), [](const TextRange& a, const TextRange& b) {
        return a.begin != b.begin ? a.begin < b.begin : a.end < b.end;
    });
    TextSelection out;
    out.ranges.clear();
    for (const auto& r : ranges) {
        if (!out.ranges.empty()) {
            TextRange& last = out.ranges.back();
            bool overlaps = r.begin < last.end || (r.begin == last.end && (r.empty() || last.empty()));
            if (overlaps || r == last) {
                last.end = std::max(last.end, r.end);
                continue;
            }
        }
        out.ranges.push_back(r);
    }
    return out;
}

}  // namespace lectern
