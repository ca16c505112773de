#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "model/attributed_text.h"
#include "model/body_lines.h"
#include "slides/text_selection.h"

namespace lectern {

// A slide body while it is being edited: the text, what is selected in it,
// and the attributes that typed text receives. Every formatting control and
// typing aid is a function from one value of this type to the next, so the
// editor only has to call them and undo can keep whole copies.
//
// Paragraph-wide attributes (alignment, block kind) always cover whole
// paragraphs, newline included; every operation below keeps that true. An
// empty last paragraph has no character to carry them, so there they live in
// typingAttributes until text is typed.
struct EditableSlideBody {
    AttributedText text;
    TextSelection selection;
    SlideBodyAttributes typingAttributes;

    friend bool operator==(const EditableSlideBody&, const EditableSlideBody&) = default;
};

// The paragraphs a selection touches, in order: those holding a character of
// a non-empty range (a range ending just after a "\n" does not reach the next
// paragraph) and those holding a caret.
std::vector<BodyLine> touchedParagraphs(const AttributedText& text, const TextSelection& selection);

// What text typed at offset should carry: the attributes of the character
// before it in its paragraph (or of the paragraph's first character at its
// start), with the paragraph-wide attributes of the paragraph holding offset.
// The editor sets typingAttributes from this whenever the caret moves.
SlideBodyAttributes typingAttributesAt(const AttributedText& text, std::size_t offset);

// Makes each paragraph's alignment and block kind those of its first
// character, over the whole paragraph including its newline.
void normalizeParagraphAttributes(AttributedText& text);

// How the format bar shows the selection: which toggles are on and which
// controls can act. A toggle is on exactly when pressing it would remove.
struct FormatState {
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strikethrough = false;
    std::optional<SlideBodyAlignment> alignment;  // shared by every touched paragraph
    bool bulletList = false;
    bool numberedList = false;
    bool commandBlock = false;
    bool canIndent = false;   // a touched paragraph is a list item
    bool canOutdent = false;  // ... and one of them has a leading tab

    friend bool operator==(const FormatState&, const FormatState&) = default;
};
FormatState formatStateOf(const EditableSlideBody& body);

// Character styles. If every character of the selected ranges (newlines
// aside) has the style it is removed, otherwise it is set on all of them.
// With only a caret the typing attributes change instead, so that the next
// typed text gets the style.
[[nodiscard]] EditableSlideBody toggleBold(EditableSlideBody body);
[[nodiscard]] EditableSlideBody toggleItalic(EditableSlideBody body);
[[nodiscard]] EditableSlideBody toggleUnderline(EditableSlideBody body);
[[nodiscard]] EditableSlideBody toggleStrikethrough(EditableSlideBody body);
// Sets the colour ("#RRGGBB" or "RRGGBB", any case; stored upper-case) on the
// selection; nullopt removes it so the theme's colour shows again. Text that
// is not a colour changes nothing.
[[nodiscard]] EditableSlideBody setTextColor(EditableSlideBody body, std::optional<std::string_view> hex);

// Paragraph formatting, on every touched paragraph. Leading alignment is
// stored as no alignment at all, the default.
[[nodiscard]] EditableSlideBody setAlignment(EditableSlideBody body, SlideBodyAlignment alignment);
[[nodiscard]] EditableSlideBody toggleCommandBlock(EditableSlideBody body);

// Lists. A toggle removes its markers when every touched paragraph already is
// such an item; otherwise it makes each touched paragraph one, replacing the
// other kind of marker. Numbers are rewritten from "1. " in order across all
// touched paragraphs, whatever their indentation. The selection keeps covering the
// same text; a caret stays before the character it was before.
[[nodiscard]] EditableSlideBody toggleBulletList(EditableSlideBody body);
[[nodiscard]] EditableSlideBody toggleNumberedList(EditableSlideBody body);
// One more, or one less, leading tab on each touched list item; paragraphs
// that are not list items are left as they are.
[[nodiscard]] EditableSlideBody indentListItems(EditableSlideBody body);
[[nodiscard]] EditableSlideBody outdentListItems(EditableSlideBody body);

// Typing. insertText replaces each selected range by text ("\r\n" and "\r"
// become "\n") carrying the typing attributes and the paragraph-wide
// attributes of the paragraph it lands in, and leaves a caret after it. When
// what was just typed makes a paragraph start with "- " or "* " after its
// tabs, that becomes "• " with the caret after it, unless the paragraph
// already went on with a list marker.
[[nodiscard]] EditableSlideBody insertText(EditableSlideBody body, std::string_view text);
// Return. In a list item the new paragraph gets the same tabs and the next
// marker; on an item holding only its marker the marker and tabs are removed
// instead, ending the list. The new paragraph keeps the paragraph-wide
// attributes of the one it splits.
[[nodiscard]] EditableSlideBody insertNewline(EditableSlideBody body);

}  // namespace lectern
