#include "slides/body_layout.h"

#include <gtest/gtest.h>

#include "model/body_lines.h"

namespace lectern {
namespace {

SlideBodyAttributes command() {
    SlideBodyAttributes a;
    a.block = SlideBodyBlockKind::command;
    return a;
}

std::vector<std::string> texts(const std::vector<RevealUnit>& units) {
    std::vector<std::string> out;
    for (const auto& u : units) out.push_back(u.text.string());
    return out;
}

TEST(BodyLines, SplitBlankAndMarkers) {
    auto lines = splitLines("a\n\nb\n");
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], (BodyLine{0, 0, 1, true}));
    EXPECT_EQ(lines[2], (BodyLine{2, 3, 4, true}));
    EXPECT_EQ(lines[3], (BodyLine{3, 5, 5, false}));
    EXPECT_EQ(splitLines("").size(), 1u);
    EXPECT_EQ(lineAt(lines, 1), 0u);  // on the newline: still line 0
    EXPECT_EQ(lineAt(lines, 2), 1u);  // just after it: the next line

    EXPECT_TRUE(isBlankLine(" \t "));
    EXPECT_TRUE(isBlankLine(""));
    EXPECT_FALSE(isBlankLine("\u00a0"));  // a no-break space is text
    EXPECT_FALSE(isBlankLine(" x "));

    EXPECT_EQ(listMarkerOf("\t\t\u2022 item"), (ListMarker{ListMarker::Kind::bullet, 2, 4, 0}));
    EXPECT_EQ(listMarkerOf("12. twelve"), (ListMarker{ListMarker::Kind::numbered, 0, 4, 12}));
    EXPECT_EQ(listMarkerOf("\t3.\tthree").kind, ListMarker::Kind::numbered);
    for (const char* plain : {"\u2022item", "1.x", "1.", ". x", "a. x", " \u2022 x", "3 . x"}) {
        EXPECT_FALSE(listMarkerOf(plain).isListItem()) << plain;
    }
}

TEST(RevealUnits, NonBlankLinesWithTheBlankLinesBeforeThem) {
    auto units = revealUnits(AttributedText("First\n\nSecond\n \t\n\nThird"));
    EXPECT_EQ(texts(units), (std::vector<std::string>{"First", "Second", "Third"}));
    EXPECT_EQ(units[0].precedingBlankLines, 0u);
    EXPECT_EQ(units[1].precedingBlankLines, 1u);
    EXPECT_EQ(units[2].precedingBlankLines, 2u);
    EXPECT_EQ(units[2].index, 2u);

    EXPECT_TRUE(revealUnits(AttributedText("   \n\t")).empty());
    EXPECT_TRUE(revealUnits(AttributedText()).empty());
    EXPECT_EQ(texts(revealUnits(AttributedText("\n\nOnly\n\n"))), std::vector<std::string>{"Only"});

    // A unit keeps its character attributes.
    SlideBodyAttributes bold;
    bold.inlineIntent = inline_intent::stronglyEmphasized;
    AttributedText body("Caf\u00e9 ");
    body.append("\U0001F680 launch", bold);
    body.append("\n\u2022 next");
    auto rich = revealUnits(body);
    ASSERT_EQ(rich.size(), 2u);
    EXPECT_EQ(rich[0].text.runs().size(), 2u);
    EXPECT_EQ(rich[0].text.runs()[1], (AttributedRun{"\U0001F680 launch", bold}));
    EXPECT_EQ(rich[1].text.string(), "\u2022 next");
}

TEST(RenderItems, CommandLinesGatherIntoBlocks) {
    AttributedText body;
    body.append("npm install\nnpm start\n", command());
    body.append("Then open the page\n");
    body.append("curl localhost", command());
    auto items = renderItems(body);
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[0].kind, BodyRenderItem::Kind::commandBlock);
    ASSERT_EQ(items[0].lines.size(), 2u);
    EXPECT_EQ(items[0].lines[1].text.string(), "npm start");
    EXPECT_TRUE(items[0].lines[1].isCommand);
    EXPECT_EQ(items[1].kind, BodyRenderItem::Kind::paragraph);
    EXPECT_EQ(items[2].kind, BodyRenderItem::Kind::commandBlock);
    EXPECT_EQ(items[2].lines[0].id, 3u);
}

TEST(RenderItems, AlignmentIdsAndBlankLines) {
    SlideBodyAttributes centred;
    centred.alignment = SlideBodyAlignment::center;
    AttributedText body("Left\n\n");
    body.append("Middle\n", centred);
    body.append("   \n");
    body.append("End", command());
    auto items = renderItems(body);
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[0].lines[0].alignment, SlideBodyAlignment::leading);
    EXPECT_EQ(items[1].lines[0].alignment, SlideBodyAlignment::center);
    // Ids are positions among all lines, so the gaps show the blank lines.
    EXPECT_EQ(items[0].lines[0].id, 0u);
    EXPECT_EQ(items[1].lines[0].id, 2u);
    EXPECT_EQ(items[2].lines[0].id, 4u);
}

TEST(TrimmedBlankLines, OnlyTheEdgesGo) {
    EXPECT_EQ(trimmedBlankLines(AttributedText("\n\nText\n\n")), AttributedText("Text"));
    EXPECT_EQ(trimmedBlankLines(AttributedText(" \n  Indented\n\nmore\t\n \t")), AttributedText("  Indented\n\nmore\t"));
    EXPECT_EQ(trimmedBlankLines(AttributedText("\n \n")), AttributedText());
    EXPECT_EQ(trimmedBlankLines(AttributedText("As is")), AttributedText("As is"));
}

}  // namespace
}  // namespace lectern
