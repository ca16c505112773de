#include "editor/deck_edits.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <sstream>

namespace lectern {
namespace {

using edits::SlideDropEdge;
using Side = SlideDropEdge::Side;

// Decks written as words: "A*" opens a section, "b>A" is a member of the
// section opened by A, "c" is in none. Titles are the words' first letters.
Deck deckOf(const std::string& shape) {
    Deck deck;
    std::istringstream words(shape);
    for (std::string word; words >> word;) {
        Slide slide = Slide::make(SlideLayout::regular);
        slide.title = word.substr(0, 1);
        slide.isSection = word.size() > 1 && word[1] == '*';
        if (slide.isSection) slide.sectionTitle = "Part " + slide.title;
        for (const Slide& s : deck.slides) {
            if (word.size() > 2 && s.title == word.substr(2)) slide.sectionId = s.id;
        }
        deck.slides.push_back(slide);
    }
    return deck;
}

std::string shapeOf(const Deck& deck) {
    std::string out;
    for (const Slide& slide : deck.slides) {
        out += (out.empty() ? "" : " ") + slide.title + (slide.isSection ? "*" : "");
        auto opener = slide.sectionId ? deck.indexOfSlide(*slide.sectionId) : std::nullopt;
        if (slide.sectionId) out += ">" + (opener ? deck.slides[*opener].title : "?");
    }
    return out;
}

Uuid idOf(const Deck& deck, const std::string& title) {
    for (const Slide& slide : deck.slides) {
        if (slide.title == title) return slide.id;
    }
    return {};
}

// Every member directly follows its opener or another member of its section.
::testing::AssertionResult sectionsContiguous(const Deck& deck) {
    std::optional<Uuid> above;
    for (const Slide& slide : deck.slides) {
        if (!slide.isSection && slide.sectionId && slide.sectionId != above) {
            return ::testing::AssertionFailure() << "section cut in " << shapeOf(deck);
        }
        above = slide.sectionKey();
    }
    return ::testing::AssertionSuccess();
}

TEST(DeckEdits, DropPutsTheSlideBeforeOrAfterItsTargetFromEitherDirection) {
    Deck deck = deckOf("a b c d e f");
    for (std::size_t from = 0; from < 6; ++from) {
        for (std::size_t target = 0; target < 6; ++target) {
            for (Side side : {Side::top, Side::bottom}) {
                SlideDropEdge edge{side, deck.slides[target].id, false};
                Deck dropped = edits::dropSlide(deck, deck.slides[from].id, edge);
                auto at = *dropped.indexOfSlide(deck.slides[from].id);
                auto targetAt = *dropped.indexOfSlide(edge.target);
                if (from != target) {
                    EXPECT_EQ(at, side == Side::top ? targetAt - 1 : targetAt + 1);
                }
                auto destination = edits::dropDestination(deck, from, edge);
                EXPECT_EQ(destination.value_or(from), at) << from << " onto " << target;
                EXPECT_NE(destination, std::optional(from));
            }
        }
    }
}

TEST(DeckEdits, DropsJoinOrLeaveSections) {
    Deck deck = deckOf("A* b>A c d");
    // Indented onto the row right above: no move, but it joins.
    EXPECT_EQ(shapeOf(edits::dropSlide(deck, idOf(deck, "c"), {Side::bottom, idOf(deck, "b"), true})), "A* b>A c>A d");
    EXPECT_EQ(shapeOf(edits::dropSlide(deck, idOf(deck, "b"), {Side::bottom, idOf(deck, "A"), false})), "A* b c d");
    // An opener dragged out keeps its section; members left behind leave.
    EXPECT_EQ(shapeOf(edits::dropSlide(deck, idOf(deck, "A"), {Side::bottom, idOf(deck, "d")})), "b c d A*");
    // An opener dropped into its own section hands it to its first member.
    Deck handed = edits::dropSlide(deck, idOf(deck, "A"), {Side::bottom, idOf(deck, "b"), true});
    EXPECT_EQ(shapeOf(handed), "b* A>b c d");
    EXPECT_EQ(handed.slides[0].sectionTitle, "Part A");
    // Into another section further down: the section it opened stays.
    Deck two = deckOf("A* b>A c D* e>D");
    EXPECT_EQ(shapeOf(edits::dropSlide(two, idOf(two, "A"), {Side::bottom, idOf(two, "D"), true})), "b* c D* A>D e>D");
}

TEST(DeckEdits, GroupingJoinsTheTargetsSectionOrOpensOne) {
    Deck deck = deckOf("a b c D* e>D");
    Deck grouped = edits::groupSlides(deck, idOf(deck, "c"), idOf(deck, "a"));
    EXPECT_EQ(shapeOf(grouped), "a* c>a b D* e>D");
    EXPECT_EQ(grouped.slides[0].sectionTitle, edits::newSectionTitle);
    EXPECT_EQ(shapeOf(edits::groupSlides(deck, idOf(deck, "a"), idOf(deck, "D"))), "b c D* a>D e>D");
    EXPECT_EQ(shapeOf(edits::groupSlides(deck, idOf(deck, "D"), idOf(deck, "e"))), "a b c e* D>e");
}

TEST(DeckEdits, MovesAndInsertsKeepSectionsWhole) {
    Deck deck = deckOf("a B* c>B d>B e");
    EXPECT_EQ(shapeOf(edits::moveSlide(deck, 0, 2)), "B* c>B a>B d>B e");
    EXPECT_EQ(shapeOf(edits::moveSlide(deck, 3, 99)), "a B* c>B e d");
    EXPECT_EQ(edits::moveSlide(deck, 5, 0), deck);

    Slide fresh = Slide::make(SlideLayout::web);
    fresh.title = "n";
    EXPECT_EQ(shapeOf(edits::insertSlide(deck, edits::insertionIndex(deck, 3), fresh)), "a B* c>B d>B n e");
    EXPECT_EQ(shapeOf(edits::insertSlide(deck, edits::insertionIndex(deck, 2), fresh)), "a B* c>B n>B d>B e");
    EXPECT_EQ(edits::insertionIndex(deck, -1), 5u);
    EXPECT_EQ(edits::insertionIndex(deck, 5), 5u);
}

TEST(DeckEdits, SectionRemovalAndDeletion) {
    Deck deck = deckOf("A* b>A c>A d>A e");
    EXPECT_EQ(shapeOf(edits::removeSection(deck, idOf(deck, "A"))), "A b c d e");
    EXPECT_EQ(shapeOf(edits::removeFromSection(deck, idOf(deck, "c"))), "A* b>A d>A c e");
    Deck handed = edits::removeFromSection(deck, idOf(deck, "A"));
    EXPECT_EQ(shapeOf(handed), "A b* c>b d>b e");
    EXPECT_EQ(handed.slides[1].sectionTitle, "Part A");
    EXPECT_EQ(shapeOf(edits::deleteSlide(deck, 0)), "b* c>b d>b e");
}

TEST(DeckEdits, DuplicateGetsFreshIdsAndKeepsLinkTargets) {
    Deck deck = deckOf("A* b>A");
    Slide& opener = deck.slides[0];
    opener.links.emplace_back().targetId = deck.slides[1].id.string();
    opener.actions.emplace_back().request.headers.emplace_back();
    Deck copied = edits::duplicateSlide(deck, 0);
    EXPECT_EQ(shapeOf(copied), "A* A>A b>A");
    const Slide &original = copied.slides[0], &copy = copied.slides[1];
    EXPECT_NE(copy.id, original.id);
    EXPECT_FALSE(copy.sectionTitle);
    EXPECT_NE(copy.links[0].id, original.links[0].id);
    EXPECT_EQ(copy.links[0].targetId, original.links[0].targetId);
    EXPECT_NE(copy.actions[0].id, original.actions[0].id);
    EXPECT_NE(copy.actions[0].request.headers[0].id, original.actions[0].request.headers[0].id);
}

// Random drags, groupings and commands on a small sectioned deck never leave
// a section in pieces, and only inserts and deletes change the slides held.
TEST(DeckEdits, RandomEditsKeepSectionsContiguous) {
    std::mt19937 random(7);
    Deck deck = deckOf("A* b>A c>A d E* f>E g h I* j>I");
    auto any = [&](const Deck& d) { return d.slides[random() % d.slides.size()].id; };
    auto ids = [](const Deck& d) {
        std::set<Uuid> held;
        for (const Slide& slide : d.slides) held.insert(slide.id);
        return held;
    };
    for (int step = 0; step < 2000; ++step) {
        std::size_t count = deck.slides.size();
        std::size_t i = random() % count;
        Deck next;
        switch (random() % 8) {
            case 0: next = edits::moveSlide(deck, i, random() % (count + 2)); break;
            case 1: next = edits::dropSlide(deck, any(deck), {Side(random() % 2), any(deck), random() % 2 == 0}); break;
            case 2: next = edits::groupSlides(deck, any(deck), any(deck)); break;
            case 3: next = edits::removeFromSection(deck, any(deck)); break;
            case 4: next = count > 4 ? edits::deleteSlide(deck, i) : deck; break;
            case 5: next = count < 14 ? edits::duplicateSlide(deck, i) : deck; break;
            case 6: next = count < 14 ? edits::insertSlide(deck, i, Slide::make(SlideLayout::regular)) : deck; break;
            default: next = random() % 4 == 0 ? edits::removeSection(deck, any(deck)) : deck; break;
        }
        ASSERT_TRUE(sectionsContiguous(next)) << "step " << step;
        if (next.slides.size() == count) {
            ASSERT_EQ(ids(next), ids(deck)) << "step " << step;
        }
        deck = std::move(next);
    }
}

}  // namespace
}  // namespace lectern
