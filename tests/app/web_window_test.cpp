// Live pages in a deck window: pages loaded ahead while presenting, none
// while editing, and demo actions on the page on stage. Pages come from a
// web server on 127.0.0.1 in this process.
#include <gtest/gtest.h>

#include <adwaita.h>

#include "app/platform/deck_window.h"
#include "app/platform/web_check_sheet.h"
#include "gui_harness.h"
#include "support/platform/local_server.h"
#include "web/platform/web_card.h"
#include "web/platform/web_services.h"

namespace lectern {
namespace {

using testing::app;
using testing::LocalServer;
using testing::pressKeys;
using testing::pumpFor;
using testing::pumpUntil;

Slide webSlide(const std::string& url, const std::string& title) {
    Slide slide = Slide::make(SlideLayout::web);
    slide.title = title;
    slide.url = url;
    return slide;
}

bool onStageLoaded(DeckWindow& window) {
    const WebPaneController* pane = window.webCard().pane();
    return pane && pane->status().kind == WebLoadStatus::Kind::loaded;
}

class WebWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!testing::haveDisplay()) GTEST_SKIP() << "needs a display (run under xvfb-run)";
        app();
        (void)testing::preferences().removeValue(ActionTrust::preferencesKey);
        for (const char* path : {"/a", "/b", "/c"}) server.page(path, std::string("Page ") + (path + 1), 100);
    }
    void TearDown() override {
        if (testing::haveDisplay()) testing::closeAllWindows();
    }
    DeckWindow& open(Deck deck) {
        DeckWindow* window = app().openDeck(std::move(deck), std::nullopt);
        EXPECT_TRUE(pumpUntil([&] { return window->get_mapped(); }));
        return *window;
    }

    LocalServer server;
};

TEST_F(WebWindowTest, PresentingLoadsNeighboursAheadAndTheEditorKeepsNone) {
    Deck deck;
    deck.slides = {webSlide(server.url("/a"), "A"), webSlide(server.url("/b"), "B"), webSlide(server.url("/c"), "C")};
    DeckWindow& window = open(deck);
    WebPrefetcher& prefetcher = WebServices::shared().prefetcher();
    ASSERT_TRUE(pumpUntil([&] { return onStageLoaded(window); }, 10));
    EXPECT_EQ(prefetcher.hiddenCount(window.windowId()), 0u) << "the editor loads nothing ahead";

    window.state().toggleEditor();
    ASSERT_TRUE(pumpUntil([&] { return server.requests("/b") == 1; }, 10)) << "B is loaded ahead";
    EXPECT_EQ(prefetcher.hiddenCount(window.windowId()), 1u);
    pumpFor(0.4);

    pressKeys(window, {"Right"});
    ASSERT_TRUE(pumpUntil([&] { return window.state().current() == 1 && onStageLoaded(window); }, 10));
    EXPECT_TRUE(window.webCard().pane()->adopted());
    ASSERT_TRUE(pumpUntil([&] { return server.requests("/c") == 1; }, 10));
    pressKeys(window, {"Left"});
    ASSERT_TRUE(pumpUntil([&] { return window.state().current() == 0 && onStageLoaded(window); }, 10));
    EXPECT_TRUE(window.webCard().pane()->adopted()) << "A was kept while B was on stage";
    EXPECT_EQ(server.requests("/a"), 1);
    EXPECT_EQ(server.requests("/b"), 1);
    testing::screenshot("web-slide-presenting");

    // Zooming the page on stage asks the server for nothing.
    pressKeys(window, {"ctrl+equal"});
    ASSERT_TRUE(pumpUntil([&] { return window.deck().slides[0].webZoom == 1.1; }));
    pumpFor(0.3);
    EXPECT_DOUBLE_EQ(window.webCard().pane()->page()->zoom(), 1.1);
    EXPECT_EQ(server.requests("/a"), 1);

    window.state().toggleEditor();
    ASSERT_TRUE(pumpUntil([&] { return prefetcher.hiddenCount(window.windowId()) == 0; }))
        << "opening the editor evicts every hidden page";
}

TEST_F(WebWindowTest, AnAutomaticPageScriptRunsOnThePresentedPageAndResetReloads) {
    Deck deck;
    deck.slides = {webSlide(server.url("/a"), "A")};
    SlideAction script;
    script.name = "Read the title";
    script.kindCase = SlideActionKindCase::pageScript;
    script.script = "return document.title;";
    script.autoRun = true;
    script.autoRunDelaySeconds = 2;  // the page is there by then
    deck.slides[0].actions.push_back(script);

    DeckWindow& window = open(deck);
    PresentationState& state = window.state();
    state.togglePresenting();
    ASSERT_TRUE(pumpUntil([&] { return window.trustReview() != nullptr; }));
    adw_message_dialog_response(window.trustReview(), "allow");
    ASSERT_TRUE(pumpUntil(
        [&] { return state.autoRun().runner().state(script.id).kind == ActionRunner::RunState::Kind::success; }, 10));
    EXPECT_EQ(state.autoRun().runner().state(script.id).text, "Page a");

    // Reset Web Page reloads the page on stage.
    ASSERT_TRUE(pumpUntil([&] { return onStageLoaded(window); }));
    pressKeys(window, {"ctrl+r"});
    ASSERT_TRUE(pumpUntil([&] { return server.requests("/a") == 2; }, 10));
    state.togglePresenting();
}

TEST_F(WebWindowTest, CheckWebSlidesFromTheMenuGoesToASlideAndDoneCloses) {
    Deck deck;
    deck.slides = {webSlide(server.url("/a"), "A"), Slide::make(SlideLayout::regular), webSlide(server.url("/gone"), "Gone")};
    DeckWindow& window = open(deck);
    window.activate_action("win.check-web-slides");
    ASSERT_TRUE(pumpUntil([&] { return window.webCheck() != nullptr; }));
    EXPECT_TRUE(window.state().isWebCheckPresented());
    WebCheckSheet& sheet = *window.webCheck();
    ASSERT_TRUE(pumpUntil([&] { return !sheet.checker().isRunning(); }, 30));
    EXPECT_EQ(sheet.summaryLabel().get_text(), "1 of 2 need attention");

    sheet.goToButton(1)->activate();
    ASSERT_TRUE(pumpUntil([&] { return window.state().current() == 2; }));
    sheet.doneButton().activate();
    ASSERT_TRUE(pumpUntil([&] { return window.webCheck() == nullptr; }));
    EXPECT_FALSE(window.state().isWebCheckPresented());
}

}  // namespace
}  // namespace lectern
