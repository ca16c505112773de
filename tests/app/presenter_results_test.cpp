// What the presenter sees and the audience must not: a demo action's whole
// result in the presenter panel, the HUD's mark of a failed automatic
// action, and the note of a page on stage that dropped to its sign-in form.
// Pages and endpoints come from a web server on 127.0.0.1 in this process.
#include <gtest/gtest.h>

#include "editor/platform/deck_window.h"
#include "editor/platform/presenter_panel.h"
#include "gui_harness.h"
#include "present/action_trust.h"
#include "present/platform/hud_bar.h"
#include "support/platform/local_server.h"
#include "web/platform/web_card.h"

namespace lectern {
namespace {

using testing::LocalServer;
using testing::pressKeys;
using testing::pumpFor;
using testing::pumpUntil;

LocalServer::Answer answer(int status, std::string body, std::string type = "text/plain") {
    LocalServer::Answer answer;
    answer.status = status;
    answer.contentType = std::move(type);
    answer.body = std::move(body);
    return answer;
}

class PresenterResultsTest : public testing::WindowTest {
protected:
    LocalServer server;
};

TEST_F(PresenterResultsTest, AFailedAutomaticActionIsReadableInThePanelAndMarkedInTheHud) {
    server.route("/reset", [](const LocalServer::Request&) {
        return answer(500, "Database is locked\nTry again later");
    });
    Deck deck;
    deck.slides.push_back(Slide::make(SlideLayout::regular));
    SlideAction action;
    action.name = "Reset demo";
    action.request.method = "POST";
    action.request.urlString = server.url("/reset");
    action.autoRun = true;
    deck.slides[0].actions = {action};
    ActionTrust::trust({*ActionTrust::fingerprint(action, deck.slides[0])}, testing::preferences());

    DeckWindow& window = open(deck);
    PresentationState& state = window.state();
    window.activate_action("win.present");
    ASSERT_TRUE(pumpUntil(
        [&] { return state.autoRun().runner().state(action.id).kind == ActionRunner::RunState::Kind::failure; }, 10));

    // The HUD carries the mark, but only appears when the presenter asks.
    pumpFor(0.3);
    HudBar& hud = window.hud();
    EXPECT_FALSE(state.hudVisible());
    EXPECT_FALSE(hud.get_reveal_child());
    EXPECT_TRUE(hud.failureMark().get_visible());
    EXPECT_EQ(hud.failureText().get_text(), "1 action failed");
    std::string tooltip = hud.failureMark().get_tooltip_text();
    EXPECT_EQ(tooltip.rfind("Reset demo: HTTP 500", 0), 0u) << tooltip;

    // The panel's row expands to the whole result, selectable.
    state.togglePresenterPanel();
    ASSERT_TRUE(pumpUntil([&] { return window.presenterPanel() && window.presenterPanel()->get_mapped(); }));
    PresenterPanel& panel = *window.presenterPanel();
    Gtk::Expander* expander = panel.actionExpander(0);
    ASSERT_NE(expander, nullptr);
    EXPECT_FALSE(expander->get_expanded());
    const Gtk::Label& details = *panel.actionDetails(0);
    std::string text = details.get_text();
    EXPECT_EQ(text.rfind("Status: HTTP 500\nTook: ", 0), 0u) << text;
    EXPECT_NE(text.find("\nRan at: "), std::string::npos) << text;
    EXPECT_NE(text.find("\nDatabase is locked Try again later"), std::string::npos) << text;
    EXPECT_TRUE(details.get_selectable());
    expander->set_expanded(true);
    EXPECT_TRUE(pumpUntil([&] { return details.get_mapped(); }));
    testing::screenshot("presenter-panel-action-result");

    // Once the action runs fine, the mark goes.
    server.route("/reset", [](const LocalServer::Request&) { return answer(204, ""); });
    state.runManually(window.deck().slides[0].actions[0], window.deck().slides[0], window.deck());
    ASSERT_TRUE(pumpUntil(
        [&] { return state.autoRun().runner().state(action.id).kind == ActionRunner::RunState::Kind::success; }, 10));
    EXPECT_FALSE(hud.failureMark().get_visible());
    EXPECT_EQ(panel.actionDetails(0)->get_text().rfind("Status: HTTP 204", 0), 0u);
}

TEST_F(PresenterResultsTest, APageOnStageThatShowsASignInFormIsSaidInThePanel) {
    // The session "ends" after the first visit: the page shows a password
    // field from then on, at the same address.
    int visits = 0;
    server.route("/app", [&](const LocalServer::Request&) {
        std::string form = ++visits > 1 ? "<form><input type=password name=p></form>" : "<p>Dashboard</p>";
        return answer(200, "<title>App</title>" + form, "text/html; charset=utf-8");
    });
    Deck deck;
    deck.slides.push_back(Slide::make(SlideLayout::regular));
    Slide web = Slide::make(SlideLayout::web);
    web.url = server.url("/app");
    deck.slides.push_back(web);

    DeckWindow& window = open(deck);
    PresentationState& state = window.state();
    state.togglePresenting();
    state.togglePresenterPanel();
    ASSERT_TRUE(pumpUntil([&] { return window.presenterPanel() && window.presenterPanel()->get_mapped(); }));
    PresenterPanel& panel = *window.presenterPanel();
    pressKeys(window, {"Right"});
    auto loaded = [&] {
        auto* pane = window.webCard().pane();
        return pane && pane->status().kind == WebLoadStatus::Kind::loaded;
    };
    ASSERT_TRUE(pumpUntil(loaded, 10));
    pumpFor(0.5);
    EXPECT_FALSE(panel.signInNote().get_visible()) << "signed in: nothing to say";

    // Reset Web Page reloads it, now with the form.
    pressKeys(window, {"ctrl+r"});
    ASSERT_TRUE(pumpUntil([&] { return panel.signInNote().get_visible(); }, 10));
    EXPECT_EQ(panel.signInNote().get_text(), "Slide 2’s page shows a sign-in form");
    EXPECT_EQ(visits, 2);
}

}  // namespace
}  // namespace lectern
