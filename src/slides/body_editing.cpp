#include "slides/body_editing.h"

#include <glib/gi18n.h>

#include <algorithm>

#include "model/body_lines.h"

namespace lectern {
namespace {

bool isContinuationByte(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

}  // namespace

TextSplice spliceBetween(std::string_view from, std::string_view to) {
    std::size_t limit = std::min(from.size(), to.size());
    std::size_t prefix = 0;
    while (prefix < limit && from[prefix] == to[prefix]) ++prefix;
    // Back onto a character boundary (the texts agree before it, so a
    // boundary of one is a boundary of the other).
    while (prefix > 0 && prefix < from.size() && isContinuationByte(from[prefix])) --prefix;
    std::size_t suffix = 0;
    while (suffix < limit - prefix && from[from.size() - 1 - suffix] == to[to.size() - 1 - suffix]) ++suffix;
    while (suffix > 0 && isContinuationByte(from[from.size() - suffix])) --suffix;
    return {prefix, from.size() - suffix, std::string(to.substr(prefix, to.size() - suffix - prefix))};
}

std::size_t offsetThrough(const TextSplice& splice, std::size_t offset) {
    if (offset <= splice.begin) return offset;
    if (offset < splice.end) return splice.begin + splice.text.size();
    return offset - (splice.end - splice.begin) + splice.text.size();
}

EditableSlideBody replayBufferEdits(EditableSlideBody body, const std::vector<TextSplice>& edits) {
    for (const auto& edit : edits) {
        if (edit.empty()) continue;
        // Typed over a selection or at a caret alike: the typing attributes
        // stay what the user chose (a style toggled at the caret).
        body.selection = TextSelection::range(edit.begin, edit.end);
        body = insertText(std::move(body), edit.text);
    }
    return body;
}

TextRange differingRange(const AttributedText& before, const AttributedText& after) {
    // Equal texts may differ in attributes anywhere: start from all of it in
    // common, else from the common start and end of the two strings.
    std::size_t prefix = after.size(), suffix = after.size();
    if (before.string() != after.string()) {
        TextSplice text = spliceBetween(before.string(), after.string());
        prefix = text.begin;
        suffix = after.size() - (text.begin + text.text.size());
    }
    // Shorten the common parts to where the attributes first differ: walk the
    // runs of both from the start, then from the end.
    auto runs = [](const AttributedText& t) {
        std::vector<std::pair<std::size_t, const SlideBodyAttributes*>> ends;
        t.forEachRun([&](std::size_t, std::size_t end, const SlideBodyAttributes& a) { ends.emplace_back(end, &a); });
        return ends;
    };
    auto a = runs(before);
    auto b = runs(after);
    // From the start: the first offset below prefix where the runs disagree.
    {
        std::size_t i = 0, j = 0, at = 0;
        while (at < prefix && i < a.size() && j < b.size()) {
            if (!(*a[i].second == *b[j].second)) {
                prefix = at;
                break;
            }
            at = std::min(a[i].first, b[j].first);
            if (a[i].first == at) ++i;
            if (b[j].first == at) ++j;
        }
    }
    // From the end, in distances from each text's end.
    {
        std::size_t i = a.size(), j = b.size(), back = 0;
        while (back < suffix && i > 0 && j > 0) {
            if (!(*a[i - 1].second == *b[j - 1].second)) {
                suffix = back;
                break;
            }
            std::size_t aStart = i > 1 ? a[i - 2].first : 0;
            std::size_t bStart = j > 1 ? b[j - 2].first : 0;
            back = std::min(before.size() - aStart, after.size() - bStart);
            if (before.size() - aStart == back) --i;
            if (after.size() - bStart == back) --j;
        }
    }
    std::size_t end = after.size() - std::min(suffix, after.size());
    return {prefix, std::max(prefix, end)};
}

TextRange paragraphsAround(std::string_view text, TextRange range) {
    auto lines = splitLines(text);
    std::size_t first = lineAt(lines, std::min(range.begin, text.size()));
    std::size_t last = lineAt(lines, std::min(range.end, text.size()));
    if (first > 0) --first;
    if (last + 1 < lines.size()) ++last;
    return {lines[first].begin, lines[last].paragraphEnd()};
}

std::string editLabelOf(const FormatControl& control) {
    std::string_view label = _(control.label.data());
    for (std::string_view cut : {" (", " \u2014"}) {
        if (auto at = label.find(cut); at != std::string_view::npos) label = label.substr(0, at);
    }
    return std::string(label);
}

}  // namespace lectern
