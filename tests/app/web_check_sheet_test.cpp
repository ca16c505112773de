// The Check Web Slides sheet under a real display, over fake pages and a
// fake clock: what each row shows as the check goes, the buttons, and
// Escape, with real clicks and key presses.
#include <gtest/gtest.h>

#include <adwaita.h>

#include "web/platform/web_check_sheet.h"
#include "gui_harness.h"
#include "base/manual_scheduler.h"
#include "support/fake_web_page.h"

namespace lectern {
namespace {

using testing::FakeWebPageFactory;
using testing::pressKeys;
using testing::pumpFor;
using testing::pumpUntil;

Slide webSlide(const std::string& title, std::optional<std::string> url) {
    Slide slide = Slide::make(SlideLayout::web);
    slide.title = title;
    slide.url = std::move(url);
    return slide;
}

class WebCheckSheetTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!testing::haveDisplay()) GTEST_SKIP() << "needs a display (run under xvfb-run)";
        testing::app();
        parent = std::make_unique<Gtk::Window>();
        parent->set_default_size(800, 600);
        parent->present();
        ASSERT_TRUE(pumpUntil([&] { return parent->get_mapped(); }));

        deck.slides = {webSlide("Dashboard", "https://site.test/app"), Slide::make(SlideLayout::regular),
                       webSlide("R&D <beta>", "https://site.test/missing"), webSlide("", "https://site.test/expired"),
                       webSlide("Blank", std::nullopt), webSlide("Billing", "https://site.test/billing")};
    }
    void TearDown() override {
        sheet.reset();
        parent.reset();
        if (testing::haveDisplay()) pumpFor(0.1);
    }

    WebCheckSheet& open() {
        sheet = std::make_unique<WebCheckSheet>(
            *parent, pages, clock, deck, [this](std::size_t index) { wentTo.push_back(index); },
            [this] { ++closings; });
        sheet->present();
        EXPECT_TRUE(pumpUntil([&] { return sheet->get_mapped(); }));
        pumpFor(0.2);
        return *sheet;
    }

    static std::string subtitle(AdwActionRow* row) { return adw_action_row_get_subtitle(row); }
    static std::string title(AdwActionRow* row) { return adw_preferences_row_get_title(ADW_PREFERENCES_ROW(row)); }

    std::unique_ptr<Gtk::Window> parent;
    FakeWebPageFactory pages;
    ManualScheduler clock;
    Deck deck;
    std::unique_ptr<WebCheckSheet> sheet;
    std::vector<std::size_t> wentTo;
    int closings = 0;
};

TEST_F(WebCheckSheetTest, RowsFollowTheCheckAndEscapeStopsIt) {
    WebCheckSheet& sheet = open();
    EXPECT_EQ(sheet.get_transient_for(), parent.get());
    // Titles are shown as written, never read as markup.
    EXPECT_EQ(title(sheet.row(1)), "03  R&D <beta>");
    EXPECT_EQ(title(sheet.row(2)), "04  Untitled");
    EXPECT_EQ(subtitle(sheet.row(0)), "Loading…");
    EXPECT_EQ(subtitle(sheet.row(3)), "No URL set");
    EXPECT_EQ(subtitle(sheet.row(4)), "Waiting");
    EXPECT_EQ(sheet.summaryLabel().get_text(), "Checking… 1 of 5 done");

    pages.made[0]->finish();
    pages.made[1]->finish(404);
    pages.made[2]->redirect("https://site.test/login");
    pages.made[2]->finish();
    EXPECT_EQ(subtitle(sheet.row(0)), "Loaded");
    EXPECT_EQ(subtitle(sheet.row(1)), "HTTP 404 — not found");
    EXPECT_EQ(subtitle(sheet.row(2)), "Redirected to site.test/login");
    EXPECT_EQ(subtitle(sheet.row(4)), "Loading…");
    pages.made[3]->finish();
    EXPECT_EQ(sheet.summaryLabel().get_text(), "3 of 5 need attention");
    pumpFor(0.1);
    testing::screenshot("web-check-sheet");

    // "Go to slide 4" goes to the slide at index 3 and leaves the sheet up.
    Gtk::Button* goTo = sheet.goToButton(2);
    ASSERT_NE(goTo, nullptr);
    EXPECT_EQ(goTo->get_label(), "Go to slide 4");
    testing::click(*goTo, goTo->get_width() / 2.0, goTo->get_height() / 2.0);
    ASSERT_TRUE(pumpUntil([&] { return !wentTo.empty(); }));
    EXPECT_EQ(wentTo, std::vector<std::size_t>{3});

    // Checking again, then Escape: the sheet goes, its pages stop, and the
    // owner hears of it once, on a later turn, so it may let go of the sheet.
    sheet.checkAgain();
    ASSERT_EQ(pages.made.size(), 7u);
    pressKeys(sheet, {"Escape"});
    ASSERT_TRUE(pumpUntil([&] { return closings == 1; }));
    EXPECT_FALSE(sheet.get_visible());
    EXPECT_FALSE(sheet.checker().isRunning());
    for (const auto& page : pages.made) EXPECT_EQ(page->delegate(), nullptr);
    this->sheet.reset();
    pumpFor(0.1);
    EXPECT_EQ(closings, 1);
}

}  // namespace
}  // namespace lectern
