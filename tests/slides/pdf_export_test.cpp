// The deck as a PDF read back as a reader sees it: handout pages carry each
// slide's notes under it, long notes run on to further pages without losing
// or repeating a line, and a stopped or failed export leaves the file that
// was there.

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>

#include "slides/deck_previews.h"
#include "slides/handout_page.h"
#include "support/deck_fixtures.h"
#include "support/pdf_pages.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

using testing::readPdf;
using testing::readText;
using testing::TempDir;

// Slide one has short notes, two none, three notes of several pages, its
// words numbered so that each can be found once.
Deck handoutDeck() {
    Deck deck;
    deck.title = "Handouts";
    for (const char* title : {"Opening", "Pricing", "Questions"}) {
        deck.slides.push_back(Slide::make(SlideLayout::regular));
        deck.slides.back().title = title;
    }
    deck.slides[0].notes = "Greet the room\nthen mention the pricing page";
    std::ostringstream longNotes;
    for (int i = 1; i <= 1500; ++i) longNotes << "w" << i << (i % 40 == 0 ? "\n" : " ");
    deck.slides[2].notes = longNotes.str();
    return deck;
}

// How many times each whole word "w<n>" occurs in `text`.
std::map<int, int> numberedWords(const std::string& text) {
    std::map<int, int> seen;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (word.size() > 1 && word[0] == 'w' && word.find_first_not_of("0123456789", 1) == std::string::npos) {
            ++seen[std::stoi(word.substr(1))];
        }
    }
    return seen;
}

TEST(PdfExport, HandoutPagesCarryEachSlidesNotesBelowIt) {
    TempDir dir;
    Deck deck = handoutDeck();
    ASSERT_TRUE(exportPdf(deck, dir / "slides.pdf").ok());
    PdfExportOptions withNotes;
    withNotes.withNotes = true;
    ASSERT_TRUE(exportPdf(deck, dir / "handout.pdf", withNotes).ok());

    // Without notes: a slide page each, and no note on any of them.
    auto slides = readPdf(dir / "slides.pdf");
    ASSERT_EQ(slides.size(), 3u);
    EXPECT_DOUBLE_EQ(slides[0].width, 960);
    for (const auto& page : slides) EXPECT_EQ(page.text.find("Greet the room"), std::string::npos);

    auto pages = readPdf(dir / "handout.pdf");
    ASSERT_GE(pages.size(), 5u) << "the long notes need more than one page";
    for (const auto& page : pages) {
        EXPECT_NEAR(page.width, HandoutPage::pageWidth, 0.5);
        EXPECT_NEAR(page.height, HandoutPage::pageHeight, 0.5);
    }
    // The slide is on its page, its notes after it in reading order.
    const std::string& first = pages[0].text;
    ASSERT_NE(first.find("Opening"), std::string::npos) << first;
    ASSERT_NE(first.find("Greet the room"), std::string::npos) << first;
    EXPECT_LT(first.find("Opening"), first.find("Greet the room"));
    EXPECT_NE(first.find("then mention the pricing page"), std::string::npos);
    // A slide without notes is a page of its own with nothing of another's.
    EXPECT_NE(pages[1].text.find("Pricing"), std::string::npos);
    EXPECT_EQ(pages[1].text.find("Greet"), std::string::npos);
    EXPECT_TRUE(numberedWords(pages[1].text).empty());

    // The long notes start under their slide and run on: every word once,
    // in order, over the third page and those after it.
    EXPECT_NE(pages[2].text.find("Questions"), std::string::npos);
    std::string rest;
    for (std::size_t i = 2; i < pages.size(); ++i) {
        EXPECT_FALSE(numberedWords(pages[i].text).empty()) << "page " << i + 1 << " has none of the notes";
        rest += pages[i].text + "\n";
    }
    auto seen = numberedWords(rest);
    ASSERT_EQ(seen.size(), 1500u);
    for (const auto& [number, count] : seen) EXPECT_EQ(count, 1) << "w" << number;
    EXPECT_LT(rest.find("w1499 "), rest.find("w1500"));
}

TEST(PdfExport, StoppedOrFailedExportLeavesTheFileThatWasThere) {
    TempDir dir;
    Deck deck = handoutDeck();
    std::ofstream(dir / "talk.pdf") << "the old file";

    std::vector<std::size_t> told;
    PdfExportOptions stopAfterOne;
    stopAfterOne.withNotes = true;
    stopAfterOne.progress = [&](std::size_t done, std::size_t total) {
        EXPECT_EQ(total, 3u);
        told.push_back(done);
        return done < 1;
    };
    EXPECT_FALSE(exportPdf(deck, dir / "talk.pdf", stopAfterOne).ok());
    EXPECT_EQ(told, std::vector<std::size_t>{1});
    EXPECT_EQ(readText(dir / "talk.pdf"), "the old file");

    // A folder in the way of the file: the write fails, nothing is replaced.
    std::filesystem::create_directory(dir / "taken.pdf");
    EXPECT_FALSE(exportPdf(deck, dir / "taken.pdf").ok());
    EXPECT_TRUE(std::filesystem::is_directory(dir / "taken.pdf"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 2) << "no temporary file left";

    told.clear();
    stopAfterOne.progress = [&](std::size_t done, std::size_t) {
        told.push_back(done);
        return true;
    };
    ASSERT_TRUE(exportPdf(deck, dir / "talk.pdf", stopAfterOne).ok());
    EXPECT_EQ(told, (std::vector<std::size_t>{1, 2, 3}));
    EXPECT_EQ(readText(dir / "talk.pdf").rfind("%PDF", 0), 0u);
}

}  // namespace
}  // namespace lectern
