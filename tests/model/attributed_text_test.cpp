#include "model/attributed_text.h"

#include <gtest/gtest.h>

#include "model/attributed_text_json.h"
#include "model/json_reader.h"

namespace lectern {
namespace {

using nlohmann::json;

SlideBodyAttributes bold() {
    SlideBodyAttributes a;
    a.inlineIntent = inline_intent::stronglyEmphasized;
    return a;
}

SlideBodyAttributes centered() {
    SlideBodyAttributes a;
    a.alignment = SlideBodyAlignment::center;
    return a;
}

AttributedText read(const json& value) { return attributedTextFromJson(value, "body"); }

TEST(AttributedText, RunsStayMaximal) {
    AttributedText text;
    text.append("one ", bold());
    text.append("two", bold());
    text.append("");
    text.append(" three");
    ASSERT_EQ(text.runs().size(), 2u);
    EXPECT_EQ(text.runs()[0], (AttributedRun{"one two", bold()}));
    // The same text built another way compares equal.
    EXPECT_EQ(text, AttributedText::fromRuns({{"one", bold()}, {" two", bold()}, {" thr", {}}, {"ee", {}}}));
}

TEST(AttributedText, ModifyAttributesSplitsAndMerges) {
    AttributedText text("Hello brave world");
    text.modifyAttributes(6, 11, [](SlideBodyAttributes& a) { a.underline = true; });
    auto runs = text.runs();
    ASSERT_EQ(runs.size(), 3u);
    EXPECT_EQ(runs[1].text, "brave");
    EXPECT_TRUE(runs[1].attributes.underline);
    EXPECT_TRUE(text.attributesAt(6).underline);
    EXPECT_FALSE(text.attributesAt(5).underline);
    text.modifyAttributes(0, text.size(), [](SlideBodyAttributes& a) { a.underline = false; });
    EXPECT_EQ(text, AttributedText("Hello brave world"));
    text.modifyAttributes(4, 4, [](SlideBodyAttributes& a) { a.underline = true; });  // empty range
    EXPECT_EQ(text.runs().size(), 1u);
}

TEST(AttributedText, ReplaceAndSliceKeepNeighbouringRuns) {
    AttributedText text;
    text.append("ab", bold());
    text.append("cd");
    text.replace(1, 3, "XYZ", centered());  // "a" bold, "XYZ" centred, "d"
    EXPECT_EQ(text.string(), "aXYZd");
    auto runs = text.runs();
    ASSERT_EQ(runs.size(), 3u);
    EXPECT_EQ(runs[0], (AttributedRun{"a", bold()}));
    EXPECT_EQ(runs[1], (AttributedRun{"XYZ", centered()}));
    EXPECT_EQ(runs[2], (AttributedRun{"d", {}}));
    text.replace(1, 4, "");
    EXPECT_EQ(text.runs(), (std::vector<AttributedRun>{{"a", bold()}, {"d", {}}}));
    EXPECT_EQ(text.slice(0, 1), AttributedText("a", bold()));
    // Attributes of the text itself may be passed in, though the edit moves them.
    text.replace(0, 0, "b", text.attributesAt(0));
    EXPECT_EQ(text.runs(), (std::vector<AttributedRun>{{"ba", bold()}, {"d", {}}}));
    text.replace(0, 1, "");
    text.replace(2, 2, "\u00e9!");  // insert at the end
    EXPECT_EQ(text.string(), "ad\u00e9!");
    EXPECT_EQ(text.slice(1, text.size()), AttributedText("d\u00e9!"));
}

TEST(AttributedTextJson, AlternatingArrayRoundTrip) {
    AttributedText text;
    SlideBodyAttributes everything;
    everything.inlineIntent = inline_intent::emphasized | inline_intent::stronglyEmphasized | inline_intent::code;
    everything.underline = true;
    everything.strikethrough = true;
    everything.foregroundColor = "#A1B2C3";
    everything.alignment = SlideBodyAlignment::trailing;
    text.append("Intro\n");
    text.append("all of it\n", everything);
    SlideBodyAttributes command;
    command.block = SlideBodyBlockKind::command;
    text.append("npm run demo", command);

    json stored = attributedTextToJson(text);
    ASSERT_EQ(stored.size(), 6u);
    EXPECT_EQ(stored[0], "Intro\n");
    EXPECT_EQ(stored[1], json::object());
    EXPECT_EQ(stored[3][body_keys::inlineIntent], 7);
    EXPECT_EQ(stored[3][body_keys::underline], 1);
    EXPECT_EQ(stored[3][body_keys::color], "#A1B2C3");
    EXPECT_EQ(stored[3][body_keys::alignment], "trailing");
    EXPECT_EQ(stored[5][body_keys::block], "command");
    EXPECT_EQ(read(stored), text);
}

TEST(AttributedTextJson, OtherFormsAndForeignAttributes) {
    EXPECT_EQ(read("Just text"), AttributedText("Just text"));
    EXPECT_EQ(read(json::array()), AttributedText());

    json table = {{"runs", {"Left ", 0, "middle", 1, " left", 0}},
                  {"attributeTable",
                   {{{"NSFont", {{"name", "Helvetica"}}}},
                    {{"com.corvane.lectern.SlideBodyAlignmentAttribute", "center"}, {"NSLink", "https://x"}}}}};
    EXPECT_EQ(read(table), AttributedText::fromRuns({{"Left ", {}}, {"middle", centered()}, {" left", {}}}));

    // Links, fonts and unknown keys go; an unknown value drops only itself.
    json foreign = {"See ",
                    {{"NSLink", "file:///etc/passwd"}, {"NSInlinePresentationIntent", 2}},
                    "docs",
                    {{"com.corvane.lectern.SlideBodyAlignmentAttribute", "justified"},
                     {"com.corvane.lectern.SlideBodyBlockAttribute", "quote"},
                     {"NSColor", "not a colour"},
                     {"NSUnderline", "thick"},
                     {"NSStrikethrough", 1},
                     {"NSInlinePresentationIntent", 1 | 64}}};
    SlideBodyAttributes docs;
    docs.strikethrough = true;
    docs.inlineIntent = inline_intent::emphasized;
    EXPECT_EQ(read(foreign), AttributedText::fromRuns({{"See ", bold()}, {"docs", docs}}));

    SlideBodyAttributes coloured;
    coloured.foregroundColor = "#0A0B0C";
    EXPECT_EQ(read(json{"x", {{"NSColor", " 0a0b0c\n"}}}), AttributedText("x", coloured));
}

TEST(AttributedTextJson, MalformedShapesFailWithTheirPlace) {
    auto failure = [](const json& value) {
        try {
            read(value);
        } catch (const JsonReadFailure& f) {
            return f.message();
        }
        return std::string("no failure");
    };
    EXPECT_EQ(failure(json{"odd"}), "body: expected text and attributes in pairs");
    EXPECT_EQ(failure(json{1, json::object()}), "body[0]: expected text");
    EXPECT_EQ(failure(json{"a", "b"}), "body[1]: expected an object of attributes");
    EXPECT_EQ(failure(json{{"runs", {"a", 3}}, {"attributeTable", json::array()}}),
              "body.runs[1]: not an index of the attribute table");
    EXPECT_EQ(failure(42), "body: expected rich text");
}

}  // namespace
}  // namespace lectern
