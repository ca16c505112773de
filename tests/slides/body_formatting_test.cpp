#include "slides/body_formatting.h"

#include <gtest/gtest.h>

#include "slides/body_font.h"
#include "slides/format_control.h"

namespace lectern {
namespace {

// Bodies are written with their selection marked: "|" a caret, "[" and "]"
// a selected range.
EditableSlideBody body(std::string_view markup, const AttributedText* attributed = nullptr) {
    EditableSlideBody out;
    std::string text;
    out.selection.ranges.clear();
    for (char c : markup) {
        if (c == '|' || c == '[') {
            out.selection.ranges.push_back({text.size(), text.size()});
        } else if (c == ']') {
            out.selection.ranges.back().end = text.size();
        } else {
            text += c;
        }
    }
    out.text = attributed ? *attributed : AttributedText(text);
    return out;
}

std::string show(const EditableSlideBody& b) {
    std::string out = b.text.string();
    for (auto r = b.selection.ranges.rbegin(); r != b.selection.ranges.rend(); ++r) {
        if (r->empty()) {
            out.insert(r->begin, "|");
        } else {
            out.insert(r->end, "]");
            out.insert(r->begin, "[");
        }
    }
    return out;
}

SlideBodyAttributes attributes(std::uint32_t intent, std::optional<SlideBodyAlignment> alignment = std::nullopt,
                               std::optional<SlideBodyBlockKind> block = std::nullopt) {
    SlideBodyAttributes a;
    a.inlineIntent = intent;
    a.alignment = alignment;
    a.block = block;
    return a;
}
const SlideBodyAttributes bold = attributes(inline_intent::stronglyEmphasized);
const SlideBodyAttributes centered = attributes(0, SlideBodyAlignment::center);
const SlideBodyAttributes command = attributes(0, std::nullopt, SlideBodyBlockKind::command);

TEST(BodyFormattingSelection, NormalizedSelectionIsSafeToUse) {
    std::string_view text = "aé\nb";  // "é" is bytes 1 and 2
    // Reversed and ending inside "é", a caret past the end, a caret touching.
    TextSelection messy{{{5, 2}, {99, 99}, {1, 1}}};
    EXPECT_EQ(normalizedSelection(messy, text), (TextSelection{{{1, 5}}}));
    EXPECT_EQ(normalizedSelection(TextSelection{{{2, 2}, {4, 4}, {4, 4}}}, text),
              (TextSelection{{{1, 1}, {4, 4}}}));
    EXPECT_EQ(normalizedSelection(TextSelection{{}}, text), TextSelection::caret(5));
}

// ---- Character styles ----

TEST(BodyFormattingCharacterStyles, ToggleSetsUnlessEverySelectedCharacterHasIt) {
    // "bc" bold, "de" plain: mixed, so bold is set on the whole selection.
    auto text = AttributedText::fromRuns({{"abc", {}}, {"\n", {}}, {"def", {}}});
    text.modifyAttributes(1, 3, [](SlideBodyAttributes& a) { a.inlineIntent = inline_intent::stronglyEmphasized; });
    auto b = toggleBold(body("a[bc\nde]f", &text));
    EXPECT_EQ(b.text.slice(1, 6), AttributedText("bc\nde", bold));
    EXPECT_FALSE(b.text.attributesAt(0).isBold());
    EXPECT_FALSE(b.text.attributesAt(6).isBold());
    EXPECT_TRUE(formatStateOf(b).bold);

    // A newline left plain does not keep the selection from counting as bold.
    b.text.modifyAttributes(3, 4, [](SlideBodyAttributes& a) { a.inlineIntent = 0; });
    b = toggleBold(std::move(b));
    EXPECT_EQ(b.text, AttributedText("abc\ndef"));
    EXPECT_EQ(show(b), "a[bc\nde]f");
}

TEST(BodyFormattingCharacterStyles, CaretChangesWhatIsTypedNext) {
    auto b = toggleBold(body("ab|c"));
    EXPECT_EQ(b.text, AttributedText("abc"));
    EXPECT_TRUE(formatStateOf(b).bold);
    b = insertText(toggleItalic(std::move(b)), "X");
    EXPECT_EQ(show(b), "abX|c");
    EXPECT_EQ(bodyFontFor(b.text.attributesAt(2)), BodyFont::boldItalic);
    EXPECT_EQ(bodyFontFor(b.text.attributesAt(3)), BodyFont::regular);

    // Underline on a selection also applies to what replaces it.
    b = insertText(toggleUnderline(body("[ab]c")), "é");
    EXPECT_TRUE(b.text.attributesAt(0).underline);
    EXPECT_TRUE(b.text.attributesAt(1).underline);  // second byte of "é"
    EXPECT_FALSE(b.text.attributesAt(2).underline);
}

TEST(BodyFormattingCharacterStyles, StrikethroughAlsoReadsTheIntentBit) {
    SlideBodyAttributes struck;
    struck.inlineIntent = inline_intent::strikethrough | inline_intent::emphasized;
    AttributedText text("gone", struck);
    auto b = toggleStrikethrough(body("[gone]", &text));
    EXPECT_FALSE(b.text.attributesAt(0).strikethrough);
    EXPECT_EQ(b.text.attributesAt(0).inlineIntent, inline_intent::emphasized);
    b = toggleStrikethrough(std::move(b));
    EXPECT_TRUE(b.text.attributesAt(0).strikethrough);
}

TEST(BodyFormattingCharacterStyles, TextColorCoversMultiByteSelection) {
    auto b = setTextColor(body("a[é🙂]b"), "ff00aa");
    ASSERT_EQ(b.text.runs().size(), 3u);
    EXPECT_EQ(b.text.runs()[1].text, "é🙂");
    EXPECT_EQ(b.text.runs()[1].attributes.foregroundColor, "#FF00AA");
    EXPECT_EQ(setTextColor(b, "not a colour"), b);
    EXPECT_EQ(setTextColor(b, std::nullopt).text, AttributedText("aé🙂b"));
}

// ---- Paragraphs ----

TEST(BodyFormattingParagraphs, CentreWithCaretMidLineCentresExactlyThatLine) {
    auto b = setAlignment(body("one\ntw|o\nthree"), SlideBodyAlignment::center);
    EXPECT_EQ(b.text, AttributedText::fromRuns({{"one\n", {}}, {"two\n", centered}, {"three", {}}}));
    EXPECT_EQ(formatStateOf(b).alignment, SlideBodyAlignment::center);
    // Align left goes back to no attribute at all.
    EXPECT_EQ(setAlignment(b, SlideBodyAlignment::leading).text, AttributedText("one\ntwo\nthree"));
}

TEST(BodyFormattingParagraphs, RangesTouchTheParagraphsOfTheirCharacters) {
    // Ending just after a newline does not reach the next paragraph; starting
    // on the last character of a line does.
    auto b = setAlignment(body("on[e\ntwo\n]three\nfour"), SlideBodyAlignment::trailing);
    auto lines = splitLines(b.text.string());
    EXPECT_EQ(b.text.attributesAt(lines[0].begin).alignment, SlideBodyAlignment::trailing);
    EXPECT_EQ(b.text.attributesAt(lines[1].end).alignment, SlideBodyAlignment::trailing);
    EXPECT_EQ(b.text.attributesAt(lines[2].begin).alignment, std::nullopt);
    EXPECT_EQ(formatStateOf(body("[one\ntwo]", &b.text)).alignment, SlideBodyAlignment::trailing);
    EXPECT_EQ(formatStateOf(body("[one\ntwo\nthree]", &b.text)).alignment, std::nullopt);
}

TEST(BodyFormattingParagraphs, CommandBlockTogglesTouchedParagraphs) {
    auto text = AttributedText::fromRuns({{"a\n", command}, {"b\nc", {}}});
    // Mixed: all become command paragraphs; then all are, so all go back.
    auto b = toggleCommandBlock(body("[a\nb]\nc", &text));
    EXPECT_EQ(b.text, AttributedText::fromRuns({{"a\nb\n", command}, {"c", {}}}));
    EXPECT_EQ(toggleCommandBlock(b).text, AttributedText("a\nb\nc"));

    // An empty last paragraph keeps the choice for the text typed into it,
    // and typing in bold there still draws monospaced.
    b = insertText(toggleBold(toggleCommandBlock(body("a\n|"))), "ls");
    EXPECT_TRUE(b.text.attributesAt(2).isCommand());
    EXPECT_EQ(bodyFontFor(b.text.attributesAt(2)), BodyFont::monospaced);
    EXPECT_FALSE(b.text.attributesAt(0).isCommand());
}

TEST(BodyFormattingParagraphs, FirstCharacterDecidesTheParagraph) {
    auto text = AttributedText::fromRuns({{"ab", centered}, {"c\nd", {}}, {"e", command}});
    normalizeParagraphAttributes(text);
    EXPECT_EQ(text, AttributedText::fromRuns({{"abc\n", centered}, {"de", {}}}));
}

TEST(BodyFormattingParagraphs, TypingAttributesFollowTheCaret) {
    auto centeredBold = attributes(inline_intent::stronglyEmphasized, SlideBodyAlignment::center);
    auto text = AttributedText::fromRuns({{"ab", bold}, {"c\n", {}}, {"d", centeredBold}, {"e\n", centered}});
    EXPECT_EQ(typingAttributesAt(text, 2), bold);            // after "b"
    EXPECT_EQ(typingAttributesAt(text, 3), SlideBodyAttributes{});
    EXPECT_EQ(typingAttributesAt(text, 4), centeredBold);    // start of "de": its first character
    EXPECT_EQ(typingAttributesAt(text, 6), centered);        // before its newline
    EXPECT_EQ(typingAttributesAt(text, 7), centered);        // empty last line carries on
}

TEST(BodyFormattingFont, FourMembersAndCommandWins) {
    SlideBodyAttributes a;
    EXPECT_EQ(bodyFontFor(a), BodyFont::regular);
    a.inlineIntent = inline_intent::emphasized;
    EXPECT_EQ(bodyFontFor(a), BodyFont::italic);
    a.inlineIntent = inline_intent::stronglyEmphasized;
    EXPECT_EQ(bodyFontFor(a), BodyFont::bold);
    a.inlineIntent |= inline_intent::emphasized;
    EXPECT_EQ(bodyFontFor(a), BodyFont::boldItalic);
    a.block = SlideBodyBlockKind::command;
    EXPECT_EQ(bodyFontFor(a), BodyFont::monospaced);
}

// ---- Lists ----

TEST(BodyFormattingLists, BulletsGoAfterTabsAndTheSelectionFollowsTheText) {
    auto b = toggleBulletList(body("[one\n\ttwo]\nthree|"));
    EXPECT_EQ(show(b), "[• one\n\t• two]\n• three|");
    EXPECT_TRUE(formatStateOf(b).bulletList);
    // Every touched paragraph is an item: the markers go, the caret stays
    // before the same character.
    b = toggleBulletList(body("• one\n\t• t|wo"));
    EXPECT_EQ(show(b), "• one\n\tt|wo");
    // A caret on an empty last line lands after the new marker.
    EXPECT_EQ(show(toggleBulletList(body("x\n|"))), "x\n• |");
}

TEST(BodyFormattingLists, NumberingReplacesBulletsAndCountsAcrossLevels) {
    auto b = toggleNumberedList(body("[• a\n7. b\nc\n\td\n\te\nf]"));
    EXPECT_EQ(show(b), "[1. a\n2. b\n3. c\n\t4. d\n\t5. e\n6. f]");
    EXPECT_TRUE(formatStateOf(b).numberedList);
    EXPECT_EQ(b.text.string(), toggleNumberedList(body("[1. a\n2. b\n3. c\n\td\n\te\nf]")).text.string());
    // All numbered: the numbers go. Bullets replace numbers the other way.
    EXPECT_EQ(show(toggleNumberedList(body("[1. a\n2.\tb]"))), "[a\nb]");
    EXPECT_EQ(show(toggleNumberedList(body("1. a\n2.\tb|"))), "1. a\nb|");
    EXPECT_EQ(show(toggleBulletList(body("[12. é\nx]"))), "[• é\n• x]");
}

TEST(BodyFormattingLists, IndentAndOutdentOnlyListItems) {
    auto b = indentListItems(body("[• a\nplain\n\t1. b]"));
    EXPECT_EQ(show(b), "[\t• a\nplain\n\t\t1. b]");
    b = outdentListItems(body("[• a\nplain\n\t\t1. b]"));
    EXPECT_EQ(show(b), "[• a\nplain\n\t1. b]");
    auto unchanged = body("• a|");
    EXPECT_EQ(outdentListItems(unchanged), unchanged);
    EXPECT_FALSE(formatStateOf(unchanged).canOutdent);
    EXPECT_TRUE(formatStateOf(unchanged).canIndent);
}

TEST(BodyFormattingLists, MarkersTakeTheLookOfTheirParagraph) {
    auto text = AttributedText::fromRuns({{"one\n", centered}, {"two", bold}});
    auto b = toggleBulletList(body("[one\ntwo]", &text));
    EXPECT_EQ(b.text, AttributedText::fromRuns({{"• one\n", centered}, {"• two", bold}}));
}

TEST(BodyFormattingControls, EachButtonRunsItsOperation) {
    EXPECT_EQ(applyFormatControl(body("a|"), FormatControlId::alignRight).typingAttributes.alignment,
              SlideBodyAlignment::trailing);
    EXPECT_EQ(show(applyFormatControl(body("a|"), FormatControlId::numberedList)), "1. a|");
    EXPECT_EQ(show(applyFormatControl(body("\t• a|"), FormatControlId::outdent)), "• a|");
}

// ---- Typing ----

TEST(BodyTyping, DashAtTheStartOfAParagraphBecomesABullet) {
    EXPECT_EQ(show(insertText(insertText(body("a\n|"), "-"), " ")), "a\n• |");
    EXPECT_EQ(show(insertText(body("\t*|"), " ")), "\t• |");
    EXPECT_EQ(show(insertText(body("|rest"), "- ")), "• |rest");
    // In the middle of a line, or before an existing marker: as typed.
    EXPECT_EQ(show(insertText(body("a|"), "- ")), "a- |");
    EXPECT_EQ(show(insertText(body("|• x"), "- ")), "- |• x");
    EXPECT_EQ(show(insertText(body("|2. x"), "* ")), "* |2. x");
    EXPECT_EQ(show(insertText(body("• |"), "- ")), "• - |");
}

TEST(BodyTyping, TypedTextKeepsTheParagraphItLandsIn) {
    auto text = AttributedText::fromRuns({{"ab\n", centered}, {"cd", {}}});
    // Replacing from the start of a centred line into the next keeps it centred.
    auto b = insertText(body("[ab\nc]d", &text), "x\r\ny");
    EXPECT_EQ(show(b), "x\ny|d");
    EXPECT_EQ(b.text, AttributedText("x\nyd", centered));
}

TEST(BodyTyping, ReturnContinuesTheList) {
    EXPECT_EQ(show(insertNewline(body("\t• one|"))), "\t• one\n\t• |");
    EXPECT_EQ(show(insertNewline(body("1. a\n\t9. b|c"))), "1. a\n\t9. b\n\t10. |c");
    // A caret inside the marker splits after it; one before the item moves it down.
    EXPECT_EQ(show(insertNewline(body("•| x"))), "• \n• |x");
    EXPECT_EQ(show(insertNewline(body("|• x"))), "\n|• x");
    EXPECT_EQ(show(insertNewline(body("plain|"))), "plain\n|");
}

TEST(BodyTyping, ReturnOnAnItemHoldingOnlyItsMarkerEndsTheList) {
    EXPECT_EQ(show(insertNewline(body("• a\n\t• |"))), "• a\n|");
    EXPECT_EQ(show(insertNewline(body("1. a\n2. |\nnext"))), "1. a\n|\nnext");
}

TEST(BodyTyping, NewParagraphKeepsTheSplitParagraphsAttributes) {
    AttributedText text("title", centered);
    auto b = insertText(insertNewline(body("title|", &text)), "more");
    EXPECT_EQ(b.text, AttributedText("title\nmore", centered));
}

TEST(BodyTyping, EveryRangeIsReplaced) {
    auto b = insertText(body("|x\nq[abc]\n|"), "- ");
    EXPECT_EQ(show(b), "• |x\nq- |\n• |");
}

}  // namespace
}  // namespace lectern
