// The slide's demo actions in the inspector and the action editor sheet,
// driven with the pointer and real keys against a server on 127.0.0.1.

#include <gtest/gtest.h>

#include "editor/platform/action_editor.h"
#include "editor/platform/action_list.h"
#include "editor/platform/deck_window.h"
#include "editor/platform/editor_layout.h"
#include "editor/platform/inspector_column.h"
#include "gui_harness.h"
#include "model/deck_package.h"
#include "present/action_trust.h"
#include "support/platform/local_server.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

using testing::app;
using testing::click;
using testing::pressKeys;
using testing::pumpFor;
using testing::pumpUntil;
using testing::typeText;

ActionList& actionList(DeckWindow& window) {
    auto found = testing::findWidgets(GTK_WIDGET(window.layout().inspector().slidePage().gobj()), [](GtkWidget* w) {
        return dynamic_cast<ActionList*>(Glib::wrap(w)) != nullptr;
    });
    EXPECT_EQ(found.size(), 1u);
    return *dynamic_cast<ActionList*>(Glib::wrap(found.front()));
}

// Clicks the middle of a widget, scrolled into view first (the sheet's
// scroller follows the focus).
void clickMiddle(Gtk::Widget& widget) {
    if (widget.get_focusable() && !widget.has_focus()) {
        widget.grab_focus();
        pumpFor(0.3);
    }
    click(widget, widget.get_width() / 2.0, widget.get_height() / 2.0);
}

const SlideAction& onlyAction(DeckWindow& window) {
    EXPECT_EQ(window.deck().slides[0].actions.size(), 1u);
    return window.deck().slides[0].actions.at(0);
}

class ActionEditorTest : public testing::WindowTest {};

TEST_F(ActionEditorTest, AddTypeTestRunAutomateUndoAndSave) {
    testing::LocalServer server;
    server.route("/hook", [](const testing::LocalServer::Request&) {
        testing::LocalServer::Answer answer;
        answer.contentType = "application/json";
        answer.body = "{\"ok\": true}";
        return answer;
    });
    testing::TempDir dir;
    auto package = dir / "Demo.lectern";
    Deck deck;
    deck.slides.push_back(Slide::make(SlideLayout::regular));
    ASSERT_TRUE(DeckPackage::write(deck, package, package, {}));
    DeckWindow* opened = app().openDeck(package);
    ASSERT_NE(opened, nullptr);
    DeckWindow& window = *opened;
    ASSERT_TRUE(pumpUntil([&] { return window.get_mapped(); }));
    pumpFor(0.4);  // the inspector slides in

    // Added from the inspector with the pointer: the sheet opens on it with
    // the URL field ready for typing.
    ActionList& list = actionList(window);
    clickMiddle(list.addRequestButton());
    ASSERT_TRUE(pumpUntil([&] { return list.actionEditor() && list.actionEditor()->get_mapped(); }));
    ActionEditor& sheet = *list.actionEditor();
    ASSERT_TRUE(pumpUntil([&] {
        Gtk::Widget* focus = sheet.get_focus();
        return focus && (focus == &sheet.urlField() || focus->is_ancestor(sheet.urlField()));
    }));
    EXPECT_EQ(onlyAction(window).kindCase, SlideActionKindCase::apiRequest);
    EXPECT_EQ(sheet.get_title(), "Untitled Action");

    typeText(sheet, server.url("/hook"));
    ASSERT_TRUE(pumpUntil([&] { return onlyAction(window).request.urlString == server.url("/hook"); }));
    clickMiddle(sheet.nameField());
    typeText(sheet, "Refresh");
    ASSERT_TRUE(pumpUntil([&] { return onlyAction(window).name == "Refresh"; }));
    EXPECT_EQ(sheet.get_title(), "Refresh");
    // The presenter's own action is trusted as it is edited.
    auto trusted = [&] {
        auto fingerprint = ActionTrust::fingerprint(onlyAction(window), window.deck().slides[0]);
        return fingerprint && ActionTrust::trustedFingerprints(testing::preferences()).contains(*fingerprint);
    };
    EXPECT_TRUE(trusted());

    // Switching to a page script and back keeps the request.
    clickMiddle(sheet.scriptKind());
    ASSERT_TRUE(pumpUntil([&] { return onlyAction(window).kindCase == SlideActionKindCase::pageScript; }));
    EXPECT_FALSE(sheet.urlField().get_mapped());
    clickMiddle(sheet.requestKind());
    ASSERT_TRUE(pumpUntil([&] { return sheet.urlField().get_mapped(); }));
    EXPECT_EQ(std::string(sheet.urlField().get_text()), server.url("/hook"));

    // Test run: the server sees it and the result line says so.
    clickMiddle(sheet.testButton());
    ASSERT_TRUE(pumpUntil([&] { return sheet.runner().state(onlyAction(window).id).kind ==
                                        ActionRunner::RunState::Kind::success; }, 10));
    EXPECT_EQ(server.requests("/hook"), 1);
    EXPECT_EQ(std::string(sheet.resultLine().get_text()).rfind("HTTP 200 · ", 0), 0u);
    testing::screenshot("action-editor-tested");

    // Automatic, a step up, then a typed delay beyond the range is clamped
    // and one that is not a number reverts.
    clickMiddle(sheet.autoRunSwitch());
    ASSERT_TRUE(pumpUntil([&] { return onlyAction(window).autoRun; }));
    clickMiddle(sheet.delayField().plus());
    ASSERT_TRUE(pumpUntil([&] { return onlyAction(window).autoRunDelaySeconds == 0.5; }));
    clickMiddle(sheet.delayField().entry());
    pressKeys(sheet, {"ctrl+a"});
    typeText(sheet, "500");
    pressKeys(sheet, {"Return"});
    ASSERT_TRUE(pumpUntil([&] { return onlyAction(window).autoRunDelaySeconds == 120; }));
    EXPECT_EQ(std::string(sheet.delayField().entry().get_text()), "120.0");
    pressKeys(sheet, {"ctrl+a"});
    typeText(sheet, "soon");
    pressKeys(sheet, {"Return"});
    ASSERT_TRUE(pumpUntil([&] { return std::string(sheet.delayField().entry().get_text()) == "120.0"; }));
    EXPECT_TRUE(trusted());

    // Undo from the sheet: the typed delay goes, the step stays.
    pressKeys(sheet, {"ctrl+z"});
    ASSERT_TRUE(pumpUntil([&] { return onlyAction(window).autoRunDelaySeconds == 0.5; }));
    EXPECT_EQ(std::string(sheet.delayField().entry().get_text()), "0.5");

    // The inspector marks the automatic action; the sheet closes with Escape.
    pressKeys(sheet, {"Escape"});
    ASSERT_TRUE(pumpUntil([&] { return list.actionEditor() == nullptr; }));
    ASSERT_TRUE(pumpUntil([&] {
        return !testing::findWidgets(GTK_WIDGET(list.gobj()), [](GtkWidget* w) {
                    return GTK_IS_LABEL(w) &&
                           std::string(gtk_label_get_text(GTK_LABEL(w))) == "Runs automatically while presenting";
                }).empty();
    }));

    window.activate_action("win.save");
    ASSERT_TRUE(pumpUntil([&] { return !window.document().isDirty(); }, 10));
    auto saved = DeckPackage::read(package);
    ASSERT_TRUE(saved);
    ASSERT_EQ(saved->slides[0].actions.size(), 1u);
    EXPECT_EQ(saved->slides[0].actions[0], onlyAction(window));
    EXPECT_EQ(saved->slides[0].actions[0].name, "Refresh");

    // Presented, the slide's automatic action runs on its own after its delay.
    window.activate_action("win.present");
    ASSERT_TRUE(pumpUntil([&] { return server.requests("/hook") == 2; }, 10));
    window.activate_action("win.present");
    pumpFor(0.3);
}

TEST_F(ActionEditorTest, SheetGoesInertWhenItsSlideIsDeleted) {
    Deck deck;
    Slide slide = Slide::make(SlideLayout::regular);
    SlideAction script;
    script.kindCase = SlideActionKindCase::pageScript;
    script.script = "return 42";
    slide.actions.push_back(script);
    deck.slides = {slide, Slide::make(SlideLayout::regular)};
    DeckWindow& window = open(deck);
    ActionList& list = actionList(window);
    pumpFor(0.4);  // the inspector slides in
    testing::doubleClick(*list.rows().get_row_at_index(0), 40, 12);
    ASSERT_TRUE(pumpUntil([&] { return list.actionEditor() && list.actionEditor()->get_mapped(); }));
    ActionEditor& sheet = *list.actionEditor();

    // No live page on a plain slide: the script cannot run.
    clickMiddle(sheet.testButton());

    ASSERT_TRUE(pumpUntil([&] { return std::string(sheet.resultLine().get_text()) ==
                                        "No live browser view for this slide"; }));

    window.editor().edit("Delete Slide", [](Deck d) {
        d.slides.erase(d.slides.begin());
        return d;
    });
    EXPECT_FALSE(sheet.form().get_visible());
    EXPECT_EQ(sheet.action(), nullptr);
    // It edits nothing any more, and a test run does not start.
    Deck before = window.deck();
    sheet.nameField().set_text("Gone");
    sheet.test();
    EXPECT_TRUE(window.deck() == before);
    EXPECT_EQ(sheet.runner().state(script.id).kind, ActionRunner::RunState::Kind::failure);
}

}  // namespace
}  // namespace lectern
