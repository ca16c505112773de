#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "slides/body_formatting.h"
#include "slides/format_control.h"

namespace lectern {

// Glue between a plain text buffer, which the user edits directly, and the
// formatting core, which decides what the body becomes. Offsets are UTF-8
// byte offsets, as everywhere in the body.

// One replacement of bytes [begin, end) of a text by `text`.
struct TextSplice {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::string text;

    bool empty() const { return begin == end && text.empty(); }
    friend bool operator==(const TextSplice&, const TextSplice&) = default;
};

// The one splice that turns `from` into `to`, keeping their common start and
// end (an empty splice when they are equal). Cuts fall on character
// boundaries.
TextSplice spliceBetween(std::string_view from, std::string_view to);

// Where an offset of the text before the splice lands after it: offsets in
// the replaced bytes go to the end of the new text.
std::size_t offsetThrough(const TextSplice& splice, std::size_t offset);

// The edits a user made in the buffer (typing, deleting, pasting, dropping),
// in the order they happened, each in the text as it stood then, made again
// through the core: every piece of text lands as insertText would put it
// (typing attributes, auto-bullets) and every deletion keeps the paragraph
// rule. The selection ends as a caret after the last edit.
[[nodiscard]] EditableSlideBody replayBufferEdits(EditableSlideBody body, const std::vector<TextSplice>& edits);

// The smallest range of `after` outside which it equals `before`, text and
// attributes alike (its start and end kept in common). Empty when equal.
TextRange differingRange(const AttributedText& before, const AttributedText& after);

// The whole paragraphs of text that range touches (newlines included), with
// one more paragraph on either side: how a paragraph looks depends on its
// neighbours (the first paragraph, the edges of a command block).
TextRange paragraphsAround(std::string_view text, TextRange range);

// The name of a control's step in the undo history: its label without the
// shortcut or the help ("Bold (Ctrl+B)" is "Bold").
std::string editLabelOf(const FormatControl& control);

}  // namespace lectern
