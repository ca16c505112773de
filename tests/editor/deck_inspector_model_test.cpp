#include "editor/deck_inspector_model.h"

#include <gtest/gtest.h>

namespace lectern {
namespace {

using namespace DeckInspectorModel;
using Minutes = std::optional<std::int64_t>;
const std::optional<Minutes> noLength = std::make_optional(Minutes());  // parsed: the deck has no talk length

TEST(DeckInspectorModelTest, TalkLengthIsNoneAtLeastOneOrNotALength) {
    EXPECT_EQ(parseTalkLength(""), noLength);
    EXPECT_EQ(parseTalkLength("  \n"), noLength) << "a cleared field removes the length";
    EXPECT_EQ(parseTalkLength(" 45 "), Minutes(45));
    EXPECT_EQ(parseTalkLength("0"), Minutes(1));
    EXPECT_EQ(parseTalkLength("-20"), Minutes(1));
    EXPECT_EQ(parseTalkLength("99999999999999999999999"), Minutes(maxTalkMinutes));
    for (const char* text : {"abc", "12.5", "45 min", "-", "1e3"}) {
        EXPECT_EQ(parseTalkLength(text), std::nullopt) << text;
    }
    EXPECT_EQ(talkLengthText(parseTalkLength("007").value()), "7");
    EXPECT_EQ(talkLengthText(std::nullopt), "");
}

TEST(DeckInspectorModelTest, AccentChoicesAreCanonicalAndEachOnce) {
    DeckPalette palette({std::nullopt, "#3b5a7a", "not a colour", " 112233 ", std::nullopt});
    auto choices = accentChoices({"#3B5A7A", "#b91c1c", "oops", "#B91C1C"}, palette);
    EXPECT_EQ(choices, (std::vector<std::string>{"#3B5A7A", "#B91C1C", "#112233"}));
    EXPECT_TRUE(sameColour("3b5a7a", "#3B5A7A"));
    EXPECT_FALSE(sameColour(std::nullopt, "#3B5A7A")) << "no accent is the theme's default, not a colour";
    EXPECT_FALSE(sameColour("junk", "junk"));
}

}  // namespace
}  // namespace lectern
