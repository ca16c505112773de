#include "slides/decision_cards.h"

#include <gtest/gtest.h>

namespace lectern {
namespace {

std::vector<SlideLink> cards(std::initializer_list<const char*> labels) {
    std::vector<SlideLink> links;
    for (const char* label : labels) {
        SlideLink link;
        link.label = label;
        links.push_back(link);
    }
    return links;
}

std::string labels(const std::vector<SlideLink>& links) {
    std::string out;
    for (const auto& link : links) out += link.label;
    return out;
}

TEST(DecisionCards, AddAndRemove) {
    auto links = DecisionCards::addOption({});
    ASSERT_EQ(links.size(), 1u);
    EXPECT_EQ(links[0].label, "New option");
    EXPECT_EQ(links[0].targetId, "");
    EXPECT_FALSE(links[0].filled);

    auto nine = cards({"1", "2", "3", "4", "5", "6", "7", "8"});
    EXPECT_TRUE(DecisionCards::canAddOption(nine));
    nine = DecisionCards::addOption(nine);
    EXPECT_FALSE(DecisionCards::canAddOption(nine));
    EXPECT_EQ(DecisionCards::addOption(nine).size(), 9u);

    auto abc = cards({"a", "b", "c"});
    EXPECT_EQ(labels(DecisionCards::removeCard(abc, abc[1].id)), "ac");
    EXPECT_EQ(labels(DecisionCards::removeCard(abc, Uuid::random())), "abc");
}

TEST(DecisionCards, DraggingOnTheStage) {
    auto abcd = cards({"a", "b", "c", "d"});
    EXPECT_EQ(labels(DecisionCards::moveCard(abcd, abcd[0].id, abcd[2].id)), "bcad");
    EXPECT_EQ(labels(DecisionCards::moveCard(abcd, abcd[3].id, abcd[1].id)), "adbc");
    EXPECT_EQ(labels(DecisionCards::moveCard(abcd, abcd[1].id, abcd[1].id)), "abcd");
    EXPECT_EQ(labels(DecisionCards::moveCard(abcd, abcd[1].id, std::nullopt)), "abcd");
}

TEST(DecisionCards, RevealOrderListDropsBeforeOrAfter) {
    auto abcd = cards({"a", "b", "c", "d"});
    EXPECT_EQ(labels(DecisionCards::moveLink(abcd, abcd[0].id, {abcd[2].id, false})), "bacd");
    EXPECT_EQ(labels(DecisionCards::moveLink(abcd, abcd[0].id, {abcd[2].id, true})), "bcad");
    EXPECT_EQ(labels(DecisionCards::moveLink(abcd, abcd[3].id, {abcd[0].id, false})), "dabc");
    EXPECT_EQ(labels(DecisionCards::moveLink(abcd, abcd[2].id, {abcd[3].id, true})), "abdc");
    EXPECT_EQ(labels(DecisionCards::moveLink(abcd, abcd[1].id, {abcd[1].id, true})), "abcd");
    EXPECT_EQ(labels(DecisionCards::moveLink(abcd, abcd[1].id, {Uuid::random(), true})), "abcd");
}

TEST(DecisionCards, RevealShowsCardsUpToTheIndex) {
    RevealState first{RevealMode::reveal, 0};
    EXPECT_TRUE(DecisionCards::isRevealed(0, first));
    EXPECT_FALSE(DecisionCards::isRevealed(1, first));
    EXPECT_TRUE(DecisionCards::isRevealed(2, {RevealMode::reveal, 2}));
    EXPECT_TRUE(DecisionCards::isRevealed(8, RevealState{}));
}

}  // namespace
}  // namespace lectern
