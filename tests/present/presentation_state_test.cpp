#include "present/presentation_state.h"

#include <gtest/gtest.h>

#include "base/manual_scheduler.h"
#include "support/fake_http.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

using testing::TempDir;

struct Window : PresentationWindow {
    int fullScreenToggles = 0;
    void toggleFullScreen() override { ++fullScreenToggles; }
};

// A state on a manual clock; automatic runs are recorded instead of run.
struct Fixture {
    TempDir dir;
    ManualScheduler scheduler{100};
    PreferencesStore preferences{dir / "preferences.json"};
    std::vector<std::string> ran;
    PresentationState state{scheduler, preferences,
                            std::make_unique<ActionRunner>(std::make_unique<testing::FakeHttpTransport>(), nullptr,
                                                           [this] { return scheduler.now(); }),
                            [this](const SlideAction& action, const Slide&, std::function<void()> finished) {
                                ran.push_back(action.name);
                                finished();
                            }};
};

std::vector<Slide> slides(std::size_t count) {
    std::vector<Slide> out;
    for (std::size_t i = 0; i < count; ++i) {
        out.push_back(Slide::make(SlideLayout::regular));
        out.back().title = std::to_string(i);
    }
    return out;
}

// A one-slide deck with one demo action, "Received", made elsewhere.
Deck deckWithAction(bool autoRun) {
    Deck deck;
    deck.slides = slides(1);
    SlideAction action;
    action.name = "Received";
    action.autoRun = autoRun;
    deck.slides[0].actions = {action};
    return deck;
}

Slide revealing(std::size_t steps) {
    Slide slide = Slide::make(SlideLayout::regular);
    slide.reveal = RevealMode::reveal;
    for (std::size_t i = 0; i < steps; ++i) slide.body.append(i ? "\nline" : "line");
    return slide;
}

TEST(PresentationStateNavigation, RevealStepsThenSlidesWithAHardStop) {
    Fixture f;
    auto deck = slides(2);
    deck[1] = revealing(3);
    f.state.next(deck);
    EXPECT_EQ(f.state.current(), 1);
    f.state.next(deck);
    f.state.next(deck);
    EXPECT_EQ(f.state.revealIndex(), 2);
    f.state.next(deck);  // last slide, no steps left: nothing
    EXPECT_EQ(f.state.current(), 1);
    EXPECT_EQ(f.state.revealIndex(), 2);
    f.state.previous(deck);
    EXPECT_EQ(f.state.revealIndex(), 1);
    f.state.previous(deck);
    f.state.previous(deck);
    EXPECT_EQ(f.state.current(), 0);
    f.state.next(deck);
    EXPECT_EQ(f.state.revealIndex(), 0);  // entered at the first step, not the last

    Fixture empty;
    std::vector<Slide> none;
    empty.state.next(none);
    empty.state.previous(none);
    empty.state.clampCurrent(0);
    EXPECT_EQ(empty.state.current(), 0);
}

TEST(PresentationStateNavigation, SkippedSlidesOnlyWhilePresenting) {
    Fixture f;
    auto deck = slides(4);
    deck[1].isSkipped = true;
    deck[3].isSkipped = true;
    f.state.next(deck);
    EXPECT_EQ(f.state.current(), 1);  // the editor visits skipped slides
    f.state.togglePresenting();
    f.state.goTo(0, false);
    f.state.next(deck);
    EXPECT_EQ(f.state.current(), 2);
    f.state.next(deck);  // every later slide is skipped: nothing
    EXPECT_EQ(f.state.current(), 2);
    f.state.previous(deck);
    EXPECT_EQ(f.state.current(), 0);
    f.state.nextSlideDirect(deck);
    EXPECT_EQ(f.state.current(), 2);
}

TEST(PresentationStateNavigation, RoutesAndTheJumpHistory) {
    Fixture f;
    auto deck = slides(5);
    f.state.togglePresenting();
    deck[0].nextSlideAction = deck[3].id.string();
    f.state.next(deck);
    EXPECT_EQ(f.state.current(), 3);
    EXPECT_EQ(f.state.history(), std::vector<std::int64_t>{0});
    deck[3].nextSlideAction = "back";
    f.state.next(deck);  // back to where the jump came from
    EXPECT_EQ(f.state.current(), 0);
    EXPECT_TRUE(f.state.history().empty());

    deck[2].nextSlideAction = "back";  // with an empty history: the previous slide
    f.state.goTo(2, false);
    f.state.next(deck);
    EXPECT_EQ(f.state.current(), 1);

    deck[1].nextSlideAction = Uuid::random().string();  // a deleted slide: on to the next
    f.state.next(deck);
    EXPECT_EQ(f.state.current(), 2);
    deck[2].nextSlideAction = "$overview";
    f.state.next(deck);
    EXPECT_TRUE(f.state.overview());
    EXPECT_EQ(f.state.current(), 2);
    deck[2].nextSlideAction = "someday";  // unknown text: linear
    f.state.next(deck);
    EXPECT_EQ(f.state.current(), 3);
    deck[0].isSkipped = true;
    EXPECT_TRUE(f.state.route("home", deck));
    EXPECT_EQ(f.state.current(), 1);  // the first slide not skipped
    EXPECT_TRUE(f.state.route(deck[1].id.string(), deck));  // already there
    EXPECT_FALSE(f.state.route(deck[1].id.string().substr(1), deck));
}

TEST(PresentationStateNavigation, HistoryIsBoundedAndDropsStaleEntries) {
    Fixture f;
    auto deck = slides(61);
    for (int i = 1; i <= 60; ++i) f.state.route(deck[static_cast<std::size_t>(i)].id.string(), deck);
    ASSERT_EQ(f.state.history().size(), 50u);
    EXPECT_EQ(f.state.history().front(), 10);
    EXPECT_EQ(f.state.history().back(), 59);

    f.state.goTo(3, false);
    f.state.pushHistory();
    f.state.pushHistory();  // no two equal entries at the top
    EXPECT_EQ(f.state.history().back(), 3);
    EXPECT_EQ(f.state.history()[f.state.history().size() - 2], 59);

    auto fewer = slides(10);
    EXPECT_EQ(f.state.popHistory(fewer), 3);
    EXPECT_EQ(f.state.popHistory(fewer), std::nullopt);  // 59 ... 10 no longer name slides
    EXPECT_TRUE(f.state.history().empty());

    f.state.togglePresenting();
    f.state.route(deck[5].id.string(), deck);
    f.state.togglePresenting();
    f.state.togglePresenting();  // starting a presentation empties the history
    EXPECT_TRUE(f.state.history().empty());
}

TEST(PresentationStateNavigation, DirectMovesIgnoreStepsAndRoutes) {
    Fixture f;
    auto deck = slides(3);
    deck[0] = revealing(4);
    deck[0].nextSlideAction = deck[2].id.string();
    f.state.next(deck);
    EXPECT_EQ(f.state.revealIndex(), 1);
    f.state.nextSlideDirect(deck);
    EXPECT_EQ(f.state.current(), 1);
    EXPECT_EQ(f.state.revealIndex(), 0);
    f.state.goTo(2, true);
    f.state.previousSlideDirect(deck);  // the history first
    EXPECT_EQ(f.state.current(), 1);
    f.state.previousSlideDirect(deck);
    EXPECT_EQ(f.state.current(), 0);
    f.state.previousSlideDirect(deck);
    EXPECT_EQ(f.state.current(), 0);
}

TEST(PresentationStateNavigation, OverviewSelectAndClamp) {
    Fixture f;
    auto deck = slides(4);
    f.state.toggleOverview();
    f.state.select(9, 4);
    EXPECT_EQ(f.state.current(), 3);
    EXPECT_FALSE(f.state.overview());
    EXPECT_TRUE(f.state.history().empty());  // the grid never pushes history
    f.state.next(deck);
    f.state.clampCurrent(2);
    EXPECT_EQ(f.state.current(), 1);
}

TEST(PresentationStateChanges, NotifiedOnlyWhenAValueChanges) {
    Fixture f;
    Window window;
    f.state.setWindow(&window);
    std::vector<PresentationField> seen;
    auto connection = f.state.changed().connect([&](PresentationField field) { seen.push_back(field); });
    f.state.goTo(0, false);
    EXPECT_TRUE(seen.empty());
    f.state.togglePresenting();
    EXPECT_EQ(seen, (std::vector<PresentationField>{PresentationField::presenting, PresentationField::editorOpen}));
    EXPECT_EQ(window.fullScreenToggles, 1);
    f.state.togglePresenting();
    EXPECT_TRUE(f.state.editorOpen());
    EXPECT_EQ(window.fullScreenToggles, 2);
}

TEST(PresentationStateTimer, TicksWhileRunningAndStopsWithTheState) {
    Fixture f;
    f.state.toggleTimer();
    EXPECT_EQ(f.state.timerStart(), 100);
    f.scheduler.advance(1.1);
    EXPECT_DOUBLE_EQ(f.state.elapsed(), 1.0);  // ticks every quarter second
    f.scheduler.advance(0.2);
    EXPECT_DOUBLE_EQ(f.state.elapsed(), 1.25);
    f.state.toggleTimer();
    EXPECT_EQ(f.state.elapsed(), 0);
    EXPECT_EQ(f.scheduler.pendingCount(), 0u);

    // A state that goes away takes its running timer with it.
    ManualScheduler scheduler;
    auto state = std::make_unique<PresentationState>(
        scheduler, f.preferences,
        std::make_unique<ActionRunner>(std::make_unique<testing::FakeHttpTransport>(), nullptr, [] { return 0.0; }));
    state->toggleTimer();
    EXPECT_EQ(scheduler.pendingCount(), 1u);
    state.reset();
    EXPECT_EQ(scheduler.pendingCount(), 0u);
    scheduler.advance(5);
}

TEST(PresentationStateTrust, ConsentThenAutomaticRuns) {
    Fixture f;
    Deck deck = deckWithAction(true);

    f.state.togglePresenting();
    f.state.leftEditor(deck);
    ASSERT_EQ(f.state.actionsAwaitingTrust().size(), 1u);
    f.scheduler.advance(1);
    EXPECT_TRUE(f.ran.empty());  // untrusted: never reaches the coordinator

    f.state.allowAwaitingActions(deck);
    EXPECT_TRUE(f.state.actionsAwaitingTrust().empty());
    f.scheduler.advance(1);
    EXPECT_EQ(f.ran, std::vector<std::string>{"Received"});

    // Opening the editor stops automatic runs.
    f.state.toggleEditor();
    f.state.syncAutoRun(deck);
    f.scheduler.advance(1);
    EXPECT_EQ(f.ran.size(), 1u);
}

TEST(PresentationStateTrust, DecliningHoldsUntilAManualRun) {
    Fixture f;
    Deck deck = deckWithAction(false);
    const SlideAction& action = deck.slides[0].actions[0];
    f.state.togglePresenting();
    f.state.leftEditor(deck);
    f.state.declineAwaitingActions();
    EXPECT_TRUE(f.state.hasDeclinedUntrustedActions());
    f.state.toggleEditor();
    f.state.toggleEditor();
    f.state.leftEditor(deck);
    EXPECT_TRUE(f.state.actionsAwaitingTrust().empty());
    f.state.runManually(deck.slides[0].actions[0], deck.slides[0], deck);
    EXPECT_EQ(f.state.actionsAwaitingTrust().size(), 1u);
    EXPECT_EQ(f.state.autoRun().runner().state(action.id), ActionRunner::RunState::idle());
}

TEST(PresentationStateTrust, PresentingAsksFirstAndStartsOnceAnswered) {
    for (bool allow : {true, false}) {
        Fixture f;
        Window window;
        f.state.setWindow(&window);
        Deck deck = deckWithAction(true);

        // The question comes while the editor is still on screen.
        f.state.togglePresentingAsking(deck);
        EXPECT_FALSE(f.state.presenting());
        EXPECT_TRUE(f.state.editorOpen());
        EXPECT_EQ(window.fullScreenToggles, 0);
        ASSERT_EQ(f.state.actionsAwaitingTrust().size(), 1u);
        f.state.togglePresentingAsking(deck);  // pressed again while asked: still asking
        EXPECT_FALSE(f.state.presenting());

        if (allow) f.state.allowAwaitingActions(deck); else f.state.declineAwaitingActions();
        EXPECT_TRUE(f.state.presenting()) << allow;
        EXPECT_FALSE(f.state.editorOpen());
        EXPECT_EQ(window.fullScreenToggles, 1);
        EXPECT_FALSE(f.state.leavesEditorAfterConsent());

        // Answered once: ending and presenting again asks nothing.
        f.state.togglePresentingAsking(deck);
        f.state.togglePresentingAsking(deck);
        EXPECT_TRUE(f.state.presenting());
        EXPECT_TRUE(f.state.actionsAwaitingTrust().empty());
        f.state.setWindow(nullptr);
    }
}

TEST(PresentationStateTrust, ClosingTheEditorAsksFirstToo) {
    Fixture f;
    Deck deck;
    deck.slides = slides(1);
    deck.slides[0].actions.resize(1);
    f.state.toggleEditorAsking(deck);
    EXPECT_TRUE(f.state.editorOpen());
    f.state.declineAwaitingActions();
    EXPECT_FALSE(f.state.editorOpen());
    EXPECT_FALSE(f.state.presenting());
}

}  // namespace
}  // namespace lectern
