#include "slides/body_formatting.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>

#include "model/color.h"

namespace lectern {
namespace {

using MarkerKind = ListMarker::Kind;

std::string_view lineText(std::string_view text, const BodyLine& line) {
    return text.substr(line.begin, line.length());
}

// Only the last paragraph can be without characters (no text, no newline).
bool hasCharacters(const BodyLine& line) { return line.paragraphEnd() > line.begin; }

void copyParagraphAttributes(SlideBodyAttributes& to, const SlideBodyAttributes& from) {
    to.alignment = from.alignment;
    to.block = from.block;
}

// The attributes that decide a paragraph's alignment and block kind: its
// first character's, or the typing attributes for an empty last paragraph
// (where a chosen alignment waits for the first typed character).
SlideBodyAttributes paragraphAttributes(const EditableSlideBody& body, const BodyLine& line) {
    return hasCharacters(line) ? body.text.attributesAt(line.begin) : body.typingAttributes;
}

// What text typed into the paragraph holding offset carries: the typing
// attributes, with that paragraph's alignment and block kind so that typing
// never changes how a paragraph is laid out.
SlideBodyAttributes landingAttributes(const EditableSlideBody& body, std::size_t offset) {
    auto lines = splitLines(body.text.string());
    SlideBodyAttributes attributes = body.typingAttributes;
    copyParagraphAttributes(attributes, paragraphAttributes(body, lines[lineAt(lines, offset)]));
    return attributes;
}

// Attributes for a marker or tab put at offset in line: those of the
// character it goes in front of, else of the one before it in the
// paragraph, else (an empty last paragraph) the typing attributes.
SlideBodyAttributes insertionAttributes(const EditableSlideBody& body, const BodyLine& line, std::size_t offset) {
    if (offset < line.paragraphEnd()) return body.text.attributesAt(offset);
    if (offset > line.begin) return body.text.attributesAt(offset - 1);
    return body.typingAttributes;
}

// Where an offset goes when [begin, end) is replaced by `length` bytes. An
// offset inside the replaced text goes to the end of the new text. An
// offset exactly at a pure insertion goes after the inserted text when
// `afterInsertion` (a caret stays before the character it was before) and
// stays in front of it otherwise (a range starting there takes the inserted
// marker in, so a selection of whole lines stays whole lines).
std::size_t mapOffset(std::size_t offset, std::size_t begin, std::size_t end, std::size_t length, bool afterInsertion) {
    if (offset < begin) return offset;
    if (offset == begin) return begin == end && afterInsertion ? begin + length : begin;
    if (offset < end) return begin + length;
    return offset - (end - begin) + length;
}

// A run of edits on a body that carries the selection along with every
// replacement. Callers edit from the end of the text backwards, so offsets
// they computed before the first edit stay valid for the text before it.
class BodyEdit {
public:
    explicit BodyEdit(EditableSlideBody& body) : body_(body) {
        body_.selection = normalizedSelection(body_.selection, body_.text.string());
    }

    // Takes the attributes by value: they are often read from the text being
    // changed, and a reference into it would not survive the edit.
    void replace(std::size_t begin, std::size_t end, std::string_view text, SlideBodyAttributes attributes) {
        if (begin == end && text.empty()) return;
        body_.text.replace(begin, end, text, attributes);
        for (auto& range : body_.selection.ranges) {
            bool caret = range.empty();
            range.begin = mapOffset(range.begin, begin, end, text.size(), caret);
            range.end = mapOffset(range.end, begin, end, text.size(), true);
        }
        edited_ = true;
    }

    // Restores the paragraph rule after the edits and tidies the selection.
    void finish() {
        if (edited_) normalizeParagraphAttributes(body_.text);
        body_.selection = normalizedSelection(body_.selection, body_.text.string());
    }

private:
    EditableSlideBody& body_;
    bool edited_ = false;
};

// ---- Character styles ----

enum class CharacterStyle { bold, italic, underline, strikethrough };

bool hasStyle(const SlideBodyAttributes& a, CharacterStyle style) {
    switch (style) {
        case CharacterStyle::bold: return a.isBold();
        case CharacterStyle::italic: return a.isItalic();
        case CharacterStyle::underline: return a.underline;
        // Stored bodies may also mark strikethrough with the intent bit.
        case CharacterStyle::strikethrough: return a.strikethrough || (a.inlineIntent & inline_intent::strikethrough);
    }
    return false;
}

void setStyle(SlideBodyAttributes& a, CharacterStyle style, bool on) {
    auto setBit = [&](std::uint32_t bit) { a.inlineIntent = on ? a.inlineIntent | bit : a.inlineIntent & ~bit; };
    switch (style) {
        case CharacterStyle::bold: setBit(inline_intent::stronglyEmphasized); break;
        case CharacterStyle::italic: setBit(inline_intent::emphasized); break;
        case CharacterStyle::underline: a.underline = on; break;
        case CharacterStyle::strikethrough:
            a.strikethrough = on;
            if (!on) a.inlineIntent &= ~inline_intent::strikethrough;
            break;
    }
}

// Whether the selection has the style: every selected character but the
// newlines, which show nothing, has it (and there is one), or with only
// carets, the typing attributes have it.
bool selectionHasStyle(const EditableSlideBody& body, const TextSelection& selection, CharacterStyle style) {
    if (selection.isCaretOnly()) return hasStyle(body.typingAttributes, style);
    const std::string& s = body.text.string();
    bool any = false;
    bool all = true;
    body.text.forEachRun([&](std::size_t begin, std::size_t end, const SlideBodyAttributes& attributes) {
        for (const auto& range : selection.ranges) {
            std::size_t from = std::max(begin, range.begin);
            std::size_t to = std::min(end, range.end);
            if (from >= to || s.find_first_not_of('\n', from) >= to) continue;
            any = true;
            if (!hasStyle(attributes, style)) all = false;
        }
    });
    return any && all;
}

// Applies change to every selected character and to the typing attributes.
EditableSlideBody changeCharacters(EditableSlideBody body, const std::function<void(SlideBodyAttributes&)>& change) {
    body.selection = normalizedSelection(body.selection, body.text.string());
    for (const auto& range : body.selection.ranges) body.text.modifyAttributes(range.begin, range.end, change);
    change(body.typingAttributes);
    return body;
}

EditableSlideBody toggleStyle(EditableSlideBody body, CharacterStyle style) {
    bool on = !selectionHasStyle(body, normalizedSelection(body.selection, body.text.string()), style);
    return changeCharacters(std::move(body), [&](SlideBodyAttributes& a) { setStyle(a, style, on); });
}

// ---- Paragraphs ----

// Applies change to every touched paragraph, newline included, and to the
// typing attributes (which stand for an empty last paragraph).
EditableSlideBody changeParagraphs(EditableSlideBody body, const std::function<void(SlideBodyAttributes&)>& change) {
    body.selection = normalizedSelection(body.selection, body.text.string());
    for (const auto& line : touchedParagraphs(body.text, body.selection)) {
        body.text.modifyAttributes(line.begin, line.paragraphEnd(), change);
    }
    change(body.typingAttributes);
    return body;
}

struct TouchedParagraph {
    BodyLine line;
    ListMarker marker;
    std::size_t markerBegin() const { return line.begin + marker.tabs; }
    std::size_t markerEnd() const { return markerBegin() + marker.length; }
};

std::vector<TouchedParagraph> touchedListParagraphs(const EditableSlideBody& body) {
    std::vector<TouchedParagraph> out;
    for (const auto& line : touchedParagraphs(body.text, body.selection)) {
        out.push_back({line, listMarkerOf(lineText(body.text.string(), line))});
    }
    return out;
}

bool allOfKind(const std::vector<TouchedParagraph>& paragraphs, MarkerKind kind) {
    return std::all_of(paragraphs.begin(), paragraphs.end(),
                       [&](const TouchedParagraph& p) { return p.marker.kind == kind; });
}

// Makes each touched paragraph an item with the given marker (markers[i] for
// paragraphs[i]), or removes the markers when every one already is an item
// of this kind.
EditableSlideBody toggleList(EditableSlideBody body, MarkerKind kind,
                             const std::function<std::string(std::size_t, const TouchedParagraph&)>& markerFor) {
    BodyEdit edit(body);
    auto paragraphs = touchedListParagraphs(body);
    bool remove = allOfKind(paragraphs, kind);
    std::vector<std::string> markers(paragraphs.size());
    if (!remove) {
        for (std::size_t i = 0; i < paragraphs.size(); ++i) markers[i] = markerFor(i, paragraphs[i]);
    }
    for (std::size_t i = paragraphs.size(); i-- > 0;) {
        const auto& p = paragraphs[i];
        std::size_t at = p.markerBegin();
        if (remove) {
            edit.replace(at, p.markerEnd(), "", {});
        } else if (p.marker.isListItem()) {
            if (body.text.string().compare(at, p.marker.length, markers[i]) != 0) {
                edit.replace(at, p.markerEnd(), markers[i], body.text.attributesAt(at));
            }
        } else {
            edit.replace(at, at, markers[i], insertionAttributes(body, p.line, at));
        }
    }
    edit.finish();
    return body;
}

std::string nextMarker(const ListMarker& marker) {
    if (marker.kind == MarkerKind::bullet) return std::string(bulletMarker);
    std::int64_t next = marker.number == std::numeric_limits<std::int64_t>::max() ? marker.number : marker.number + 1;
    return std::to_string(next) + ". ";
}

// "- " or "* " just typed at the start of a paragraph (after its tabs), the
// caret right after it, becomes a bullet, unless the paragraph already went
// on with a list marker.
void applyAutoBullet(BodyEdit& edit, const EditableSlideBody& body, std::size_t caret) {
    std::string_view s = body.text.string();
    auto lines = splitLines(s);
    const BodyLine& line = lines[lineAt(lines, caret)];
    std::size_t start = line.begin;
    while (start < line.end && s[start] == '\t') ++start;
    if (caret != start + 2) return;
    std::string_view typed = s.substr(start, 2);
    if (typed != "- " && typed != "* ") return;
    ListMarker following = listMarkerOf(s.substr(caret, line.end - caret));
    if (following.isListItem() && following.tabs == 0) return;
    edit.replace(start, caret, bulletMarker, body.text.attributesAt(start));
}

std::string withUnixNewlines(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r') {
            out += text[i];
        } else {
            out += '\n';
            if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
        }
    }
    return out;
}

}  // namespace

std::vector<BodyLine> touchedParagraphs(const AttributedText& text, const TextSelection& selection) {
    TextSelection normalized = normalizedSelection(selection, text.string());
    auto lines = splitLines(text.string());
    std::vector<bool> touched(lines.size(), false);
    for (const auto& range : normalized.ranges) {
        std::size_t first = lineAt(lines, range.begin);
        std::size_t last = range.empty() ? first : lineAt(lines, range.end - 1);
        for (std::size_t i = first; i <= last; ++i) touched[i] = true;
    }
    std::vector<BodyLine> out;
    for (const auto& line : lines) {
        if (touched[line.index]) out.push_back(line);
    }
    return out;
}

SlideBodyAttributes typingAttributesAt(const AttributedText& text, std::size_t offset) {
    if (text.empty()) return {};
    offset = std::min(offset, text.size());
    auto lines = splitLines(text.string());
    const BodyLine& line = lines[lineAt(lines, offset)];
    // Before the first character of a paragraph, that character's look
    // continues; elsewhere the look of the character just typed over. An empty
    // last paragraph carries on from the newline before it.
    SlideBodyAttributes attributes =
        offset > line.begin || offset == text.size() ? text.attributesAt(offset - 1) : text.attributesAt(offset);
    if (hasCharacters(line)) copyParagraphAttributes(attributes, text.attributesAt(line.begin));
    return attributes;
}

void normalizeParagraphAttributes(AttributedText& text) {
    const std::string& s = text.string();
    auto lines = splitLines(s);
    AttributedText out;
    std::size_t lineIndex = 0;
    SlideBodyAttributes paragraph;
    text.forEachRun([&](std::size_t begin, std::size_t end, const SlideBodyAttributes& attributes) {
        for (std::size_t at = begin; at < end;) {
            while (lines[lineIndex].paragraphEnd() <= at) ++lineIndex;
            const BodyLine& line = lines[lineIndex];
            if (at == line.begin) paragraph = attributes;
            std::size_t pieceEnd = std::min(end, line.paragraphEnd());
            SlideBodyAttributes piece = attributes;
            copyParagraphAttributes(piece, paragraph);
            out.append(std::string_view(s).substr(at, pieceEnd - at), piece);
            at = pieceEnd;
        }
    });
    text = std::move(out);
}

FormatState formatStateOf(const EditableSlideBody& body) {
    TextSelection selection = normalizedSelection(body.selection, body.text.string());
    FormatState state;
    state.bold = selectionHasStyle(body, selection, CharacterStyle::bold);
    state.italic = selectionHasStyle(body, selection, CharacterStyle::italic);
    state.underline = selectionHasStyle(body, selection, CharacterStyle::underline);
    state.strikethrough = selectionHasStyle(body, selection, CharacterStyle::strikethrough);

    auto paragraphs = touchedListParagraphs(body);
    state.bulletList = allOfKind(paragraphs, MarkerKind::bullet);
    state.numberedList = allOfKind(paragraphs, MarkerKind::numbered);
    state.commandBlock = true;
    bool firstParagraph = true;
    for (const auto& p : paragraphs) {
        SlideBodyAttributes attributes = paragraphAttributes(body, p.line);
        state.commandBlock = state.commandBlock && attributes.isCommand();
        SlideBodyAlignment alignment = attributes.alignment.value_or(SlideBodyAlignment::leading);
        if (firstParagraph) {
            state.alignment = alignment;
        } else if (state.alignment != alignment) {
            state.alignment.reset();
        }
        firstParagraph = false;
        if (p.marker.isListItem()) {
            state.canIndent = true;
            state.canOutdent = state.canOutdent || p.marker.tabs > 0;
        }
    }
    return state;
}

EditableSlideBody toggleBold(EditableSlideBody body) { return toggleStyle(std::move(body), CharacterStyle::bold); }
EditableSlideBody toggleItalic(EditableSlideBody body) { return toggleStyle(std::move(body), CharacterStyle::italic); }
EditableSlideBody toggleUnderline(EditableSlideBody body) {
    return toggleStyle(std::move(body), CharacterStyle::underline);
}
EditableSlideBody toggleStrikethrough(EditableSlideBody body) {
    return toggleStyle(std::move(body), CharacterStyle::strikethrough);
}

EditableSlideBody setTextColor(EditableSlideBody body, std::optional<std::string_view> hex) {
    std::optional<std::string> color;
    if (hex) {
        color = canonicalHex(*hex);
        if (!color) return body;
    }
    return changeCharacters(std::move(body), [&](SlideBodyAttributes& a) { a.foregroundColor = color; });
}

EditableSlideBody setAlignment(EditableSlideBody body, SlideBodyAlignment alignment) {
    std::optional<SlideBodyAlignment> value;
    if (alignment != SlideBodyAlignment::leading) value = alignment;
    return changeParagraphs(std::move(body), [&](SlideBodyAttributes& a) { a.alignment = value; });
}

EditableSlideBody toggleCommandBlock(EditableSlideBody body) {
    bool on = !formatStateOf(body).commandBlock;
    std::optional<SlideBodyBlockKind> value;
    if (on) value = SlideBodyBlockKind::command;
    return changeParagraphs(std::move(body), [&](SlideBodyAttributes& a) { a.block = value; });
}

EditableSlideBody toggleBulletList(EditableSlideBody body) {
    return toggleList(std::move(body), MarkerKind::bullet,
                      [](std::size_t, const TouchedParagraph&) { return std::string(bulletMarker); });
}

EditableSlideBody toggleNumberedList(EditableSlideBody body) {
    // The touched paragraphs are one run, whatever their indentation: the
    // i-th of them is numbered i + 1.
    return toggleList(std::move(body), MarkerKind::numbered,
                      [](std::size_t i, const TouchedParagraph&) { return std::to_string(i + 1) + ". "; });
}

EditableSlideBody indentListItems(EditableSlideBody body) {
    BodyEdit edit(body);
    auto paragraphs = touchedListParagraphs(body);
    for (auto p = paragraphs.rbegin(); p != paragraphs.rend(); ++p) {
        if (!p->marker.isListItem()) continue;
        edit.replace(p->line.begin, p->line.begin, "\t", body.text.attributesAt(p->line.begin));
    }
    edit.finish();
    return body;
}

EditableSlideBody outdentListItems(EditableSlideBody body) {
    BodyEdit edit(body);
    auto paragraphs = touchedListParagraphs(body);
    for (auto p = paragraphs.rbegin(); p != paragraphs.rend(); ++p) {
        if (!p->marker.isListItem() || p->marker.tabs == 0) continue;
        edit.replace(p->line.begin, p->line.begin + 1, "", {});
    }
    edit.finish();
    return body;
}

EditableSlideBody insertText(EditableSlideBody body, std::string_view typed) {
    std::string text = withUnixNewlines(typed);
    BodyEdit edit(body);
    SlideBodyAttributes landing = body.typingAttributes;
    // From the last range to the first, so the ranges not yet handled keep
    // their offsets (the edit moves them along anyway).
    for (std::size_t i = body.selection.ranges.size(); i-- > 0;) {
        TextRange range = body.selection.ranges[i];
        landing = landingAttributes(body, range.begin);
        edit.replace(range.begin, range.end, text, landing);
        std::size_t caret = range.begin + text.size();
        body.selection.ranges[i] = {caret, caret};
        if (!text.empty() && text.find('\n') == std::string::npos) applyAutoBullet(edit, body, caret);
    }
    copyParagraphAttributes(body.typingAttributes, landing);
    edit.finish();
    return body;
}

EditableSlideBody insertNewline(EditableSlideBody body) {
    BodyEdit edit(body);
    SlideBodyAttributes landing = body.typingAttributes;
    for (std::size_t i = body.selection.ranges.size(); i-- > 0;) {
        TextRange range = body.selection.ranges[i];
        landing = landingAttributes(body, range.begin);
        edit.replace(range.begin, range.end, "", {});
        std::size_t caret = range.begin;

        std::string_view s = body.text.string();
        auto lines = splitLines(s);
        const BodyLine line = lines[lineAt(lines, caret)];
        ListMarker marker = listMarkerOf(lineText(s, line));
        std::size_t markerEnd = line.begin + marker.tabs + marker.length;
        if (marker.isListItem() && isBlankLine(s.substr(markerEnd, line.end - markerEnd))) {
            // Return on an item holding only its marker ends the list: the
            // paragraph becomes an empty ordinary one.
            edit.replace(line.begin, line.end, "", {});
            caret = line.begin;
        } else if (marker.isListItem() && caret > line.begin) {
            // A caret inside the tabs or the marker splits after the marker,
            // so neither is cut in two.
            std::size_t at = std::max(caret, markerEnd);
            // Built in place: g++ 12 warns falsely on "\n" + string in Release builds.
            std::string continuation("\n");
            continuation.append(marker.tabs, '\t');
            continuation += nextMarker(marker);
            edit.replace(at, at, continuation, body.text.attributesAt(line.begin + marker.tabs));
            caret = at + continuation.size();
        } else {
            // An ordinary paragraph, or a caret before an item's tabs: the
            // item moves down whole.
            edit.replace(caret, caret, "\n", landing);
            caret += 1;
        }
        body.selection.ranges[i] = {caret, caret};
    }
    copyParagraphAttributes(body.typingAttributes, landing);
    edit.finish();
    return body;
}

}  // namespace lectern
