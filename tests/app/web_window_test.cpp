// Live pages in a deck window: pages loaded ahead while presenting, none
// while editing, and demo actions on the page on stage. Pages come from a
// web server on 127.0.0.1 in this process.
#include <gtest/gtest.h>

#include <adwaita.h>

#include <filesystem>

#include "editor/platform/deck_inspector.h"
#include "editor/platform/deck_window.h"
#include "editor/platform/editor_layout.h"
#include "editor/platform/inspector_column.h"
#include "editor/platform/profiles_section.h"
#include "slides/platform/stage_view.h"
#include "web/platform/web_check_sheet.h"
#include "gui_harness.h"
#include "model/deck_package.h"
#include "support/temp_dir.h"
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

class WebWindowTest : public testing::WindowTest {
protected:
    void SetUp() override {
        WindowTest::SetUp();
        for (const char* path : {"/a", "/b", "/c"}) server.page(path, std::string("Page ") + (path + 1), 100);
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
    auto& pictures = WebServices::shared().pictures();
    EXPECT_TRUE(pumpUntil([&] { return pictures.find(window.deck().slides[1].id, server.url("/b")).has_value(); }))
        << "B, loaded ahead and never shown, leaves its picture";

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
    window.activate_action("win.present");
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

namespace lectern {
namespace {

using testing::findWidgets;

std::vector<GtkWidget*> buttonsWithTooltip(GtkWidget* root, const std::string& tooltip) {
    return findWidgets(root, [&](GtkWidget* widget) {
        const char* text = gtk_widget_get_tooltip_text(widget);
        return GTK_IS_BUTTON(widget) && text && tooltip == text && gtk_widget_get_mapped(widget);
    });
}

TEST_F(WebWindowTest, BrowserProfilesSignOutDeleteAndLeaveAnotherDecksProfileAlone) {
    Deck deck;
    BrowserProfile work{Uuid::random(), "Work"}, unnamed{Uuid::random(), ""};
    deck.browserProfiles = {work, unnamed};
    deck.slides = {webSlide(server.url("/a"), "Work page"), webSlide(server.url("/b"), "Other page")};
    deck.slides[0].browserProfileId = unnamed.id;
    deck.slides[1].browserProfileId = work.id;
    DeckWindow& other = open(deck);  // another open deck lists the same profiles
    DeckWindow& window = open(deck);
    ASSERT_TRUE(pumpUntil([&] { return onStageLoaded(window); }, 10));
    auto& sessions = WebServices::shared().sessions();
    ASSERT_TRUE(std::filesystem::exists(sessions.dataFolder(unnamed.id)));

    window.activate_action("win.browser-profiles");
    auto* inspector = dynamic_cast<DeckInspector*>(window.layout().inspector().deckPage().get_first_child());
    ASSERT_NE(inspector, nullptr);
    ProfilesSection& section = inspector->profiles();
    GtkWidget* profiles = GTK_WIDGET(section.gobj());
    ASSERT_TRUE(pumpUntil([&] { return gtk_widget_get_mapped(profiles); }));
    pumpFor(0.3);
    testing::screenshot("browser-profiles");

    // Signing Work out shows it for a moment.
    auto signOut = buttonsWithTooltip(profiles, "Clear session (log out)");
    ASSERT_EQ(signOut.size(), 2u);
    gtk_widget_activate(signOut[0]);
    auto signedOut = [&] {
        return !findWidgets(profiles, [](GtkWidget* widget) {
                    return GTK_IS_LABEL(widget) && gtk_widget_get_visible(widget) &&
                           std::string(gtk_label_get_text(GTK_LABEL(widget))) == "Signed out";
                }).empty();
    };
    ASSERT_TRUE(pumpUntil(signedOut, 5));
    EXPECT_TRUE(pumpUntil([&] { return !signedOut(); }, 3)) << "the feedback goes after 1.5 s";

    // Deleting the unnamed profile asks first, with its title.
    auto remove = buttonsWithTooltip(profiles, "Delete Profile…");
    ASSERT_EQ(remove.size(), 2u);
    gtk_widget_activate(remove[1]);
    ASSERT_TRUE(pumpUntil([&] { return section.confirmation() != nullptr; }));
    AdwMessageDialog* confirmation = section.confirmation();
    EXPECT_STREQ(adw_message_dialog_get_heading(confirmation), "Delete profile “Untitled profile”?");
    EXPECT_STREQ(adw_message_dialog_get_body(confirmation), "Its saved logins and site data will be erased.");
    adw_message_dialog_response(confirmation, "delete");
    ASSERT_TRUE(pumpUntil([&] { return window.deck().browserProfiles.size() == 1; }));
    EXPECT_EQ(window.deck().slides[0].browserProfileId, std::nullopt) << "its slide falls back to the shared session";
    EXPECT_EQ(window.deck().slides[1].browserProfileId, work.id);
    pumpFor(1.0);
    EXPECT_TRUE(std::filesystem::exists(sessions.dataFolder(unnamed.id))) << "the other deck still uses it";
    EXPECT_EQ(other.deck().browserProfiles.size(), 2u);
}

TEST_F(WebWindowTest, TypingInTheLivePageWhilePresentingStaysInThePage) {
    server.route("/form", [](const LocalServer::Request&) {
        LocalServer::Answer answer;
        answer.body = "<!doctype html><title>Form</title><body style='margin:0'>"
                      "<input id=name style='width:100%;height:100vh;font-size:40px'>";
        return answer;
    });
    Deck deck;
    deck.slides = {webSlide(server.url("/form"), "Sign in"), Slide::make(SlideLayout::regular)};
    DeckWindow& window = open(deck);
    window.state().toggleEditor();
    ASSERT_TRUE(pumpUntil([&] { return onStageLoaded(window); }, 10));
    pumpFor(0.3);
    WebCard& card = window.webCard();
    testing::click(card, card.get_width() / 2.0, card.get_height() / 2.0);
    pumpFor(0.3);
    pressKeys(window, {"a", "space", "b"});
    pumpFor(0.3);
    EXPECT_EQ(window.state().current(), 0) << "a space typed into the page is not a presenter remote";

    std::optional<Result<std::optional<std::string>>> typed;
    card.pane()->page()->evaluateAsyncFunction("return document.getElementById('name').value;",
                                               [&](auto value) { typed = std::move(value); });
    ASSERT_TRUE(pumpUntil([&] { return typed.has_value(); }));
    ASSERT_TRUE(typed->ok());
    EXPECT_EQ(**typed, std::optional<std::string>("a b"));

    // Back on the stage itself, Space steps the talk again.
    window.stage().grab_focus();
    pressKeys(window, {"space"});
    EXPECT_TRUE(pumpUntil([&] { return window.state().current() == 1; }));
}

TEST_F(WebWindowTest, APageZoomIsSavedToTheDecksPackage) {
    testing::TempDir folder;
    std::filesystem::path package = folder / "Talk.lectern";
    Deck deck;
    deck.slides = {webSlide(server.url("/a"), "A")};
    ASSERT_TRUE(DeckPackage::write(deck, package, std::nullopt).ok());
    DeckWindow* window = app().openDeck(package);
    ASSERT_NE(window, nullptr);
    ASSERT_TRUE(pumpUntil([&] { return window->get_mapped(); }));
    window->activate_action("win.zoom-in");
    window->activate_action("win.zoom-in");
    EXPECT_EQ(DeckPackage::read(package)->slides[0].webZoom, 1.0) << "saved a moment later, once";
    EXPECT_EQ(window->deck().slides[0].webZoom, 1.25);
    ASSERT_TRUE(window->package().has_value());
    ASSERT_TRUE(pumpUntil([&] { return DeckPackage::read(package)->slides[0].webZoom == 1.25; }, 5));
    window->activate_action("win.actual-size");
    window->close();  // a change still waiting is saved on closing
    EXPECT_EQ(DeckPackage::read(package)->slides[0].webZoom, 1.0);

    // A save that fails keeps the window open and asks, so the change is
    // not lost without a word; "Discard" lets it go.
    window = app().openDeck(package);
    ASSERT_NE(window, nullptr);
    ASSERT_TRUE(pumpUntil([&] { return window->get_mapped(); }));
    std::filesystem::remove_all(folder.path());
    window->activate_action("win.zoom-in");
    EXPECT_FALSE(window->saveNow());
    window->close();
    ASSERT_TRUE(pumpUntil([&] { return window->closeConfirmation() != nullptr; }));
    EXPECT_TRUE(window->get_visible());
    adw_message_dialog_response(window->closeConfirmation(), "discard");
    EXPECT_TRUE(pumpUntil([&] { return app().get_windows().empty(); }));
}

}  // namespace
}  // namespace lectern
