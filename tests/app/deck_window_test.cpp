// The deck window under a real display: real key presses and clicks through
// the X server (xdotool), the state they change, and screenshots under
// build/artifacts/ to look at.

#include <gtest/gtest.h>

#include <adwaita.h>

#include "editor/platform/deck_window.h"
#include "present/platform/hud_bar.h"
#include "slides/platform/overview_grid.h"
#include "editor/platform/presenter_panel.h"
#include "slides/platform/stage_view.h"
#include "gui_harness.h"
#include "model/deck_package.h"
#include "slides/slide_painter.h"
#include "support/deck_fixtures.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

using testing::app;
using testing::click;
using testing::closeAllWindows;
using testing::movePointer;
using testing::pressKeys;
using testing::pumpFor;
using testing::pumpUntil;
using testing::screenshot;

Slide textSlide(std::string title, std::string body = "One line", RevealMode reveal = RevealMode::all) {
    Slide slide = Slide::make(SlideLayout::regular);
    slide.title = std::move(title);
    slide.body = AttributedText(std::move(body));
    slide.reveal = reveal;
    return slide;
}

// An action that fails at once: nothing listens on port 1.
SlideAction refusedRequest(std::string name, bool autoRun) {
    SlideAction action;
    action.name = std::move(name);
    action.request.method = "POST";
    action.request.urlString = "http://127.0.0.1:1/reset";
    action.autoRun = autoRun;
    return action;
}

// A deck of one text slide with these actions.
Deck oneSlide(std::string title, std::vector<SlideAction> actions = {}) {
    Deck deck;
    deck.slides.push_back(textSlide(std::move(title)));
    deck.slides[0].actions = std::move(actions);
    return deck;
}

// The consent sheet has left the screen (it goes shortly after its answer).
bool noSheetOnScreen() {
    for (auto* toplevel : Gtk::Window::list_toplevels()) {
        if (ADW_IS_MESSAGE_DIALOG(toplevel->gobj())) return false;
    }
    return true;
}

class DeckWindowTest : public testing::WindowTest {
protected:
    // Answers the consent sheet "Present Without Them" if it came up.
    static void declineIfAsked(DeckWindow& window) {
        if (window.trustReview()) adw_message_dialog_response(window.trustReview(), "decline");
        EXPECT_TRUE(pumpUntil(noSheetOnScreen));
    }
    // A window presenting the deck, its actions declined.
    DeckWindow& present(Deck deck) {
        DeckWindow& window = open(std::move(deck));
        window.activate_action("win.present");
        declineIfAsked(window);
        EXPECT_TRUE(pumpUntil([&] { return window.state().presenting(); }));
        return window;
    }
};

TEST_F(DeckWindowTest, PresentingTheWelcomeDeckWithRealKeys) {
    DeckWindow* opened = app().openDeck(testing::examplesDir() / "Welcome.lectern");
    ASSERT_NE(opened, nullptr);
    DeckWindow& window = *opened;
    PresentationState& state = window.state();
    ASSERT_TRUE(pumpUntil([&] { return window.get_mapped(); }));
    EXPECT_EQ(window.get_title(), "Welcome to Lectern");
    EXPECT_TRUE(state.editorOpen());
    EXPECT_TRUE(state.notesHidden());
    screenshot("welcome-01-editor");

    // In the editor the bare arrows are not the talk's.
    pressKeys(window, {"Right"});
    EXPECT_EQ(state.current(), 0);

    // The deck comes from elsewhere and carries an action: the sheet asks
    // in the editor, before presenting, and Escape there means "Present
    // Without Them".
    pressKeys(window, {"ctrl+shift+p"});
    ASSERT_TRUE(pumpUntil([&] { return window.trustReview() != nullptr; }));
    EXPECT_FALSE(state.presenting());
    screenshot("welcome-02-consent");
    auto* sheet = window.trustReview();
    auto* sheetWindow = dynamic_cast<Gtk::Window*>(Glib::wrap(GTK_WIDGET(sheet)));
    ASSERT_NE(sheetWindow, nullptr);
    pressKeys(*sheetWindow, {"Escape"});
    ASSERT_TRUE(pumpUntil([&] { return !window.trustReview(); }));
    EXPECT_TRUE(state.hasDeclinedUntrustedActions());
    ASSERT_TRUE(pumpUntil([&] { return state.presenting(); }));
    EXPECT_FALSE(state.editorOpen());

    // Slide 1 shows all at once; slide 2 reveals in three steps.
    pressKeys(window, {"Right"});
    EXPECT_EQ(state.current(), 1);
    EXPECT_EQ(state.revealIndex(), 0);
    pressKeys(window, {"Right"});
    EXPECT_EQ(state.current(), 1);
    EXPECT_EQ(state.revealIndex(), 1);
    // The step fades in over a fifth of a second, then stands still.
    EXPECT_TRUE(window.stage().isAnimating());
    ASSERT_TRUE(pumpUntil([&] { return !window.stage().isAnimating(); }, 2));
    EXPECT_EQ(window.stage().appearance(), (std::vector<double>{1, 1, 0}));
    screenshot("welcome-03-second-step");
    pressKeys(window, {"Right", "Right"});
    EXPECT_EQ(state.current(), 2);

    // A presenter remote's Space, Page Up and Page Down; Alt+arrow passes
    // on; Ctrl+arrows move by whole slides.
    for (auto [key, slide] : std::initializer_list<std::pair<const char*, int>>{
             {"space", 3}, {"Prior", 2}, {"Next", 3}, {"alt+Right", 3}, {"ctrl+Right", 4}, {"Left", 3}}) {
        pressKeys(window, {key});
        EXPECT_EQ(state.current(), slide) << key;
    }

    // The overview, and back.
    pressKeys(window, {"Escape"});
    EXPECT_TRUE(state.overview());
    EXPECT_EQ(window.overview().tileCount(), 11u);
    screenshot("welcome-04-overview");
    pressKeys(window, {"Escape"});
    EXPECT_FALSE(state.overview());

    // The HUD, by its shortcut.
    pressKeys(window, {"ctrl+j"});
    EXPECT_TRUE(state.hudVisible());
    screenshot("welcome-05-hud");

    pressKeys(window, {"ctrl+shift+p"});
    EXPECT_FALSE(state.presenting());
    EXPECT_TRUE(state.editorOpen());
}

TEST_F(DeckWindowTest, OverviewTilesAndChoosingOneWithTheMouse) {
    Deck deck;
    deck.title = "Tiles";
    for (int i = 0; i < 5; ++i) deck.slides.push_back(textSlide("Slide " + std::to_string(i + 1)));
    deck.slides[1].layout = SlideLayout::web;
    deck.slides[1].url = "https://example.com/";
    deck.slides[3].isSkipped = true;
    DeckWindow& window = present(deck);
    PresentationState& state = window.state();
    state.toggleOverview();
    pumpFor(0.4);

    OverviewGrid& grid = window.overview();
    ASSERT_EQ(grid.tileCount(), 5u);
    // Numbers, the LIVE badge and the skipped mark, as the tiles show them.
    auto tileTexts = [&](int index) {
        std::vector<std::string> texts;
        for (GtkWidget* widget : testing::findWidgets(GTK_WIDGET(grid.tiles().get_child_at_index(index)->gobj()),
                                                      [](GtkWidget* w) { return GTK_IS_LABEL(w) || GTK_IS_IMAGE(w); })) {
            texts.push_back(GTK_IS_LABEL(widget) ? std::string(gtk_label_get_text(GTK_LABEL(widget)))
                                                 : "image:" + std::string(Glib::wrap(widget)->get_tooltip_text()));
        }
        return texts;
    };
    EXPECT_EQ(tileTexts(0), (std::vector<std::string>{"01", "Slide 1"}));
    EXPECT_EQ(tileTexts(1), (std::vector<std::string>{"LIVE", "02", "Slide 2"}));
    EXPECT_EQ(tileTexts(3), (std::vector<std::string>{"image:Skipped in presentation", "04", "Slide 4"}));
    screenshot("overview-tiles");

    // A single click on the skipped tile goes there, without history.
    auto* tile = grid.tiles().get_child_at_index(3);
    click(*tile, tile->get_width() / 2.0, tile->get_height() / 3.0);
    ASSERT_TRUE(pumpUntil([&] { return !state.overview(); }));
    EXPECT_EQ(state.current(), 3);
    EXPECT_TRUE(state.history().empty());
}

TEST_F(DeckWindowTest, ClickOnAShownCardJumpsAndBackReturns) {
    Deck deck;
    deck.slides = {textSlide("Start"), Slide::make(SlideLayout::decisions), textSlide("Middle"), textSlide("Far away")};
    Slide& question = deck.slides[1];
    question.title = "Which way?";
    question.reveal = RevealMode::reveal;
    question.links.resize(2);
    question.links[0].label = "Far";
    question.links[0].targetId = deck.slides[3].id.string();
    question.links[1].label = "Near";
    question.links[1].targetId = deck.slides[2].id.string();
    DeckWindow& window = present(deck);
    PresentationState& state = window.state();
    pressKeys(window, {"Right"});
    ASSERT_EQ(state.current(), 1);
    pumpFor(0.3);

    StageView& stage = window.stage();
    auto cardCentre = [&](std::size_t index) {
        Rect area = stage.slideArea();
        auto fit = SlidePainter::fit(area.width, area.height);
        SlidePaintOptions options;
        options.reveal = {RevealMode::reveal, state.revealIndex()};
        Rect card = SlidePainter::geometry(deck.slides[1], options).cards.at(index).second;
        return std::pair{area.x + fit.offsetX + (card.x + card.width / 2) * fit.scale,
                         area.y + fit.offsetY + (card.y + card.height / 2) * fit.scale};
    };
    // The second card has not appeared yet: a click there does nothing.
    auto [hiddenX, hiddenY] = cardCentre(1);
    click(stage, hiddenX, hiddenY);
    EXPECT_EQ(state.current(), 1);
    // The first card leads to the far slide; back returns to the question.
    auto [farX, farY] = cardCentre(0);
    click(stage, farX, farY);
    EXPECT_EQ(state.current(), 3);
    EXPECT_EQ(state.history(), (std::vector<std::int64_t>{1}));
    pressKeys(window, {"Left"});
    EXPECT_EQ(state.current(), 1);
}

TEST_F(DeckWindowTest, HudComesUpAtTheBottomEdgeAndHidesAfterTwoSeconds) {
    Deck deck = oneSlide("Automatic", {refusedRequest("Ping", true), refusedRequest("By hand", false)});
    deck.targetMinutes = 20;
    DeckWindow& window = open(deck);
    PresentationState& state = window.state();
    state.toggleEditor();  // the stage alone, in the window
    declineIfAsked(window);
    pumpFor(0.3);

    StageView& stage = window.stage();
    movePointer(stage, stage.get_width() / 2.0, stage.get_height() - 30.0);
    ASSERT_TRUE(pumpUntil([&] { return state.hudVisible(); }, 2));
    EXPECT_EQ(window.hud().notice().get_text(), "This slide runs 1 action(s) automatically");
    // The timer counts down from the talk's length until started.
    EXPECT_EQ(window.hud().timer().get_tooltip_text(), "Time left of 20 min — click to toggle timer");
    screenshot("hud-shown");
    movePointer(stage, stage.get_width() / 2.0, stage.get_height() / 3.0);
    pumpFor(1.0);
    EXPECT_TRUE(state.hudVisible());  // not before two seconds
    EXPECT_TRUE(pumpUntil([&] { return !state.hudVisible(); }, 3));
}

TEST_F(DeckWindowTest, ConsentSheetAllowsAndAutomaticRunsStart) {
    Deck deck = oneSlide("Demo", {refusedRequest("Reset", true)});
    DeckWindow& window = open(deck);
    PresentationState& state = window.state();
    window.activate_action("win.present");
    // Asked in the editor: the stage and full screen come after the answer.
    ASSERT_TRUE(pumpUntil([&] { return window.trustReview() != nullptr; }));
    EXPECT_TRUE(state.editorOpen());
    EXPECT_FALSE(state.presenting());
    EXPECT_FALSE(window.is_fullscreen());
    AdwMessageDialog* sheet = window.trustReview();
    EXPECT_EQ(gtk_window_get_transient_for(GTK_WINDOW(sheet)), GTK_WINDOW(window.gobj()));
    EXPECT_STREQ(adw_message_dialog_get_heading(sheet), "Allow this deck's demo actions?");
    EXPECT_STREQ(adw_message_dialog_get_body(sheet),
                 "They act with the sign-ins of this deck's web pages and browser profiles. Allow them only if you "
                 "trust whoever made the deck.");
    EXPECT_STREQ(adw_message_dialog_get_response_label(sheet, "decline"), "Present Without Them");
    // Nothing runs while the sheet asks.
    pumpFor(0.3);
    const Uuid actionId = deck.slides[0].actions[0].id;
    EXPECT_EQ(state.autoRun().runner().state(actionId).kind, ActionRunner::RunState::Kind::idle);

    adw_message_dialog_response(sheet, "allow");
    ASSERT_TRUE(pumpUntil(noSheetOnScreen));
    EXPECT_EQ(window.trustReview(), nullptr);
    ASSERT_TRUE(pumpUntil([&] { return state.presenting(); }));
    EXPECT_FALSE(state.editorOpen());
    EXPECT_EQ(ActionTrust::trustedFingerprints(testing::preferences()).size(), 1u);
    // The hand-off ran again: the automatic action runs now, and fails.
    EXPECT_TRUE(pumpUntil(
        [&] { return state.autoRun().runner().state(actionId).kind == ActionRunner::RunState::Kind::failure; }, 10));

    // A second window of the same deck shares the trust: no sheet.
    DeckWindow& second = open(deck);
    second.state().togglePresenting();
    pumpFor(0.3);
    EXPECT_EQ(second.trustReview(), nullptr);
}

TEST_F(DeckWindowTest, DeclinedActionsStayQuietUntilRunFromThePanel) {
    Deck deck = oneSlide("Demo", {refusedRequest("Reset", false)});
    deck.slides[0].notes = "Say hello first.";
    deck.slides.push_back(textSlide("Last"));
    DeckWindow& window = open(deck);
    PresentationState& state = window.state();
    window.activate_action("win.present");
    ASSERT_TRUE(pumpUntil([&] { return window.trustReview() != nullptr; }));
    adw_message_dialog_response(window.trustReview(), "decline");
    ASSERT_TRUE(pumpUntil(noSheetOnScreen));
    ASSERT_TRUE(pumpUntil([&] { return state.presenting(); }));
    // Presenting again does not ask again.
    state.togglePresenting();
    state.togglePresenting();
    pumpFor(0.3);
    EXPECT_EQ(window.trustReview(), nullptr);

    // The panel: its own window of 340 × 480, the notes, what comes next.
    pressKeys(window, {"alt+ctrl+p"});
    ASSERT_TRUE(pumpUntil([&] { return window.presenterPanel() && window.presenterPanel()->get_mapped(); }));
    PresenterPanel& panel = *window.presenterPanel();
    int width = 0, height = 0;
    panel.get_default_size(width, height);
    EXPECT_EQ(std::pair(width, height), std::pair(PresenterPanel::width, PresenterPanel::height));
    EXPECT_NE(panel.get_surface(), window.get_surface());
    EXPECT_EQ(panel.notes().get_text(), "Say hello first.");
    EXPECT_EQ(panel.nextCaption().get_text(), "Last");
    screenshot("presenter-panel");

    // Its run button asks again for an action not allowed.
    auto* row = panel.actions().get_row_at_index(0);
    ASSERT_NE(row, nullptr);
    auto buttons = testing::findWidgets(GTK_WIDGET(row->gobj()), [](GtkWidget* w) { return GTK_IS_BUTTON(w); });
    ASSERT_FALSE(buttons.empty());
    testing::clickMiddle(*Glib::wrap(buttons.back()));
    ASSERT_TRUE(pumpUntil([&] { return window.trustReview() != nullptr; }));
    EXPECT_EQ(gtk_window_get_transient_for(GTK_WINDOW(window.trustReview())), GTK_WINDOW(panel.gobj()))
        << "asked in the presenter's window, never over the stage";
    adw_message_dialog_response(window.trustReview(), "decline");
    ASSERT_TRUE(pumpUntil(noSheetOnScreen));

    // Keys typed into the panel still drive the talk.
    pressKeys(panel, {"Right"});
    EXPECT_EQ(state.current(), 1);
    EXPECT_EQ(panel.notes().get_text(), "No presenter notes for this slide.");
    EXPECT_EQ(panel.nextCaption().get_text(), "End of Deck");

    // Closing the panel's window is the same as toggling it off.
    panel.close();
    EXPECT_TRUE(pumpUntil([&] { return !state.presenterPanelVisible(); }));
    EXPECT_FALSE(panel.get_visible());
}

TEST_F(DeckWindowTest, ActionsMadeInTheWindowAreTrustedAtOnce) {
    DeckWindow& window = open(oneSlide("Demo"));
    Deck edited = window.deck();
    edited.slides[0].actions.push_back(refusedRequest("Mine", true));
    window.editor().edit("Add Action", [&](Deck) { return edited; });
    window.state().togglePresenting();
    pumpFor(0.3);
    EXPECT_EQ(window.trustReview(), nullptr);
    const Uuid actionId = edited.slides[0].actions[0].id;
    EXPECT_TRUE(pumpUntil(
        [&] { return window.state().autoRun().runner().state(actionId).kind != ActionRunner::RunState::Kind::idle; },
        5));
}

TEST_F(DeckWindowTest, ClosingTheWindowEndsTheTimerThePanelAndAutomaticRuns) {
    SlideAction looping = refusedRequest("Poll", true);
    looping.repeats = true;
    looping.repeatIntervalSeconds = 30;
    Deck deck = oneSlide("Looping", {looping});
    ActionTrust::trust({*ActionTrust::fingerprint(looping, deck.slides[0])}, testing::preferences());
    auto& scheduler = app().scheduler();
    std::size_t before = scheduler.pendingCount();

    DeckWindow& window = open(deck);
    window.state().togglePresenting();
    window.state().toggleTimer();
    window.state().togglePresenterPanel();
    pumpFor(0.5);
    EXPECT_GT(scheduler.pendingCount(), before);
    EXPECT_EQ(window.trustReview(), nullptr);

    window.close();
    ASSERT_TRUE(pumpUntil([] { return app().get_windows().empty(); }));
    pumpFor(0.2);
    EXPECT_EQ(scheduler.pendingCount(), before);
    // No window of the deck is left anywhere, the panel included.
    for (auto* toplevel : Gtk::Window::list_toplevels()) {
        EXPECT_EQ(dynamic_cast<PresenterPanel*>(toplevel), nullptr);
    }
}

TEST_F(DeckWindowTest, ADeckThatDoesNotOpenIsLeftAsItWas) {
    testing::TempDir folder;
    auto broken = folder / "Broken.lectern";
    std::filesystem::create_directories(broken);
    testing::writeText(broken / "deck.json", "{\"slides\": [");
    EXPECT_EQ(app().openDeck(broken), nullptr);
    EXPECT_EQ(testing::readText(broken / "deck.json"), "{\"slides\": [");
    EXPECT_EQ(testing::listFolder(broken), (std::vector<std::string>{"deck.json"}));
    // With no deck open, the start window carries the message.
    ASSERT_EQ(app().get_windows().size(), 1u);
    EXPECT_EQ(app().get_windows().front()->get_title(), "Lectern");
    screenshot("open-failed");

    EXPECT_EQ(LecternApplication::openErrorMessage(broken, {"", ErrorKind::decoding}),
              "Couldn\u2019t open \u201cBroken.lectern\u201d: its deck.json can\u2019t be read");
    EXPECT_EQ(LecternApplication::openErrorMessage(folder / "Gone.lectern/", {"", ErrorKind::fileReadNoSuchFile}),
              "Couldn\u2019t open \u201cGone.lectern\u201d: there is no such deck");
}

TEST(PresenterPanelUpcoming, FollowsRoutesAndPassesOverSkippedSlidesWhilePresenting) {
    std::vector<Slide> slides(4);
    slides[2].isSkipped = true;
    EXPECT_EQ(PresenterPanel::upcomingSlide(slides, 1, false), 3);
    EXPECT_EQ(PresenterPanel::upcomingSlide(slides, 1, true), 2);
    EXPECT_EQ(PresenterPanel::upcomingSlide(slides, 3, false), std::nullopt);
    slides[0].nextSlideAction = slides[2].id.string();
    EXPECT_EQ(PresenterPanel::upcomingSlide(slides, 0, false), 2);
    slides[0].nextSlideAction = Uuid::random().string();  // a deleted slide: the ordinary next
    EXPECT_EQ(PresenterPanel::upcomingSlide(slides, 0, false), 1);
    slides[3].isSkipped = true;
    EXPECT_EQ(PresenterPanel::upcomingSlide(slides, 1, false), std::nullopt);
}

}  // namespace
}  // namespace lectern
