#include "slides/body_editing.h"

#include <gtest/gtest.h>

#include <map>

namespace lectern {
namespace {

SlideBodyAttributes boldAttributes() {
    SlideBodyAttributes a;
    a.inlineIntent = inline_intent::stronglyEmphasized;
    return a;
}

TEST(BodyEditing, SpliceKeepsCommonEndsOnCharacterBoundaries) {
    // "é" and "ê" share their first byte; the splice must not cut there.
    EXPECT_EQ(spliceBetween("aé b", "aê b"), (TextSplice{1, 3, "ê"}));
    EXPECT_EQ(spliceBetween("- x", "• x"), (TextSplice{0, 1, "•"}));
    EXPECT_TRUE(spliceBetween("same", "same").empty());
    TextSplice insertion = spliceBetween("ab", "aXb");
    EXPECT_EQ(offsetThrough(insertion, 1), 1u);
    EXPECT_EQ(offsetThrough(insertion, 2), 3u);
}

TEST(BodyEditing, ReplayedTypingLandsWhereTheBufferPutIt) {
    // "a" bold then "a" plain, the caret between them with bold typing: an
    // "a" typed there is bold, though a plain diff of the strings could not
    // tell which "a" is new.
    EditableSlideBody body;
    body.text = AttributedText::fromRuns({{"a", boldAttributes()}, {"a", {}}});
    body.typingAttributes = boldAttributes();
    auto next = replayBufferEdits(body, {{1, 1, "a"}});
    EXPECT_EQ(next.text, AttributedText::fromRuns({{"aa", boldAttributes()}, {"a", {}}}));
    EXPECT_EQ(next.selection, TextSelection::caret(2));

    // A selection deleted, then text inserted in its place (one user action),
    // with the auto-bullet of the core.
    body = {};
    body.text = AttributedText("x\nold");
    next = replayBufferEdits(body, {{2, 5, ""}, {2, 2, "- "}});
    EXPECT_EQ(next.text.string(), "x\n• ");
    EXPECT_EQ(next.selection, TextSelection::caret(next.text.size()));
}

TEST(BodyEditing, DifferingRangeCoversTextAndAttributeChanges) {
    AttributedText plain("one two three");
    AttributedText bolded = plain;
    bolded.modifyAttributes(4, 7, [](SlideBodyAttributes& a) { a = boldAttributes(); });
    EXPECT_EQ(differingRange(plain, bolded), (TextRange{4, 7}));
    EXPECT_TRUE(differingRange(plain, plain).empty());
    EXPECT_EQ(differingRange(plain, AttributedText("one 2 three")), (TextRange{4, 5}));
    // A changed attribute before an inserted word widens the range to it.
    AttributedText longer = bolded;
    longer.replace(8, 8, "big ");
    EXPECT_EQ(differingRange(plain, longer), (TextRange{4, 12}));

    // Paragraphs around a range: whole lines and one neighbour either side.
    EXPECT_EQ(paragraphsAround("a\nb\nc\nd", {4, 4}), (TextRange{2, 7}));
    EXPECT_EQ(paragraphsAround("a\nb", {0, 0}), (TextRange{0, 3}));
}

TEST(BodyEditing, ControlLabelsLoseShortcutAndHelp) {
    std::map<FormatControlId, std::string> labels;
    for (const auto& control : formatControls()) labels[control.id] = editLabelOf(control);
    EXPECT_EQ(labels[FormatControlId::bold], "Bold");
    EXPECT_EQ(labels[FormatControlId::textColor], "Text color");
    EXPECT_EQ(labels[FormatControlId::commandBlock], "Command block");
}

}  // namespace
}  // namespace lectern
