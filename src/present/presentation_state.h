#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "model/deck.h"
#include "model/preferences_store.h"
#include "base/signal.h"
#include "model/uuid.h"
#include "present/action_trust.h"
#include "present/auto_run_coordinator.h"
#include "base/scheduler.h"
#include "present/ticker_box.h"
#include "web/live_web_view_registry.h"

namespace lectern {

// What the state needs of the window that shows it.
class PresentationWindow {
public:
    virtual ~PresentationWindow() = default;
    virtual void toggleFullScreen() = 0;
};

// The observable fields of a PresentationState.
enum class PresentationField {
    current, revealIndex, overview, presenting, editorOpen, hudVisible, notesHidden, urlBarVisible,
    presenterPanelVisible, timerStart, now, pendingSlideDeletion, isWebCheckPresented, history,
    actionsAwaitingTrust, hasDeclinedUntrustedActions,
};

// The per-window state of an open deck: the current slide and its reveal
// step, editor or stage, the presenter aids, the timer, the jump history and
// the actions waiting for consent. It does not own the deck: operations that
// need the slides take them as an argument. Main loop only.
class PresentationState {
public:
    static constexpr std::int64_t maxHistory = 50;
    static constexpr double tickInterval = 0.25;

    // `runner` becomes the auto-run coordinator's; `execute`, when given,
    // replaces its default (running through `runner`).
    PresentationState(Scheduler& scheduler, PreferencesStore& preferences, std::unique_ptr<ActionRunner> runner,
                      AutoRunCoordinator::Execute execute = {});
    ~PresentationState();
    PresentationState(const PresentationState&) = delete;
    PresentationState& operator=(const PresentationState&) = delete;

    // Fields, read-only from outside; every change is announced by changed().
    std::int64_t current() const { return current_; }
    std::int64_t revealIndex() const { return revealIndex_; }
    bool overview() const { return overview_; }
    bool presenting() const { return presenting_; }
    bool editorOpen() const { return editorOpen_; }
    bool hudVisible() const { return hudVisible_; }
    bool notesHidden() const { return notesHidden_; }
    bool urlBarVisible() const { return urlBarVisible_; }
    bool presenterPanelVisible() const { return presenterPanelVisible_; }
    std::optional<double> timerStart() const { return timerStart_; }
    double now() const { return now_; }
    bool pendingSlideDeletion() const { return pendingSlideDeletion_; }
    bool isWebCheckPresented() const { return isWebCheckPresented_; }
    const std::vector<std::int64_t>& history() const { return history_; }
    const std::vector<ActionTrust::Request>& actionsAwaitingTrust() const { return actionsAwaitingTrust_; }
    bool hasDeclinedUntrustedActions() const { return hasDeclinedUntrustedActions_; }
    const Uuid& windowId() const { return windowId_; }
    const std::shared_ptr<LiveWebViewRegistry>& liveWebViews() const { return liveWebViews_; }
    AutoRunCoordinator& autoRun() { return *autoRun_; }

    Signal<PresentationField>& changed() { return changed_; }

    // The window showing this state; it clears this when it goes away.
    void setWindow(PresentationWindow* window) { window_ = window; }

    // Navigation.
    const Slide* currentSlide(const std::vector<Slide>& slides) const;
    void next(const std::vector<Slide>& slides);
    void previous(const std::vector<Slide>& slides);
    void goTo(std::int64_t index, bool pushHistory);
    bool route(const std::string& target, const std::vector<Slide>& slides);
    void clampCurrent(std::int64_t count);
    void pushHistory();
    std::optional<std::int64_t> popHistory(const std::vector<Slide>& slides);
    // Ctrl+Right: the next slide directly, past reveal steps and routes.
    void nextSlideDirect(const std::vector<Slide>& slides);
    // Ctrl+Left: back through the jump history, else the previous slide.
    void previousSlideDirect(const std::vector<Slide>& slides);
    // A tile of the overview grid chosen.
    void select(std::int64_t index, std::int64_t count);

    void togglePresenting();
    // Ctrl+Shift+P and Ctrl+E as the window's commands: leaving the editor
    // for a deck whose actions wait for consent asks first, while the
    // editor is still on screen, and leaves it once the question is
    // answered, either way. Anything else toggles at once.
    void togglePresentingAsking(const Deck& deck);
    void toggleEditorAsking(const Deck& deck);
    // The question is out and presenting (or the stage alone) follows it.
    bool leavesEditorAfterConsent() const { return afterConsent_ != AfterConsent::nothing; }
    void toggleOverview() { set(PresentationField::overview, overview_, !overview_); }
    void toggleHud() { set(PresentationField::hudVisible, hudVisible_, !hudVisible_); }
    void toggleNotes() { set(PresentationField::notesHidden, notesHidden_, !notesHidden_); }
    void toggleUrlBar() { set(PresentationField::urlBarVisible, urlBarVisible_, !urlBarVisible_); }
    void togglePresenterPanel() { set(PresentationField::presenterPanelVisible, presenterPanelVisible_, !presenterPanelVisible_); }
    void toggleEditor() { set(PresentationField::editorOpen, editorOpen_, !editorOpen_); }
    void setHudVisible(bool visible) { set(PresentationField::hudVisible, hudVisible_, visible); }
    void setOverview(bool shown) { set(PresentationField::overview, overview_, shown); }
    void setPendingSlideDeletion(bool pending) { set(PresentationField::pendingSlideDeletion, pendingSlideDeletion_, pending); }
    void setWebCheckPresented(bool shown) { set(PresentationField::isWebCheckPresented, isWebCheckPresented_, shown); }

    // The presentation timer.
    void toggleTimer();
    double elapsed() const { return timerStart_ ? now_ - *timerStart_ : 0; }

    // Hands the current slide, reduced to its trusted actions, to the
    // auto-run coordinator; automatic runs happen only while the editor is
    // closed. Call whenever the current slide, editorOpen or the deck change.
    void syncAutoRun(const Deck& deck);

    // Consent for actions made elsewhere.
    void setActionsAwaitingTrust(std::vector<ActionTrust::Request> requests);
    // The window left the editor: ask about untrusted actions unless the
    // presenter declined before, then hand over to the coordinator.
    void leftEditor(const Deck& deck);
    // "Allow": trusts every listed action and starts the current slide's runs.
    void allowAwaitingActions(const Deck& deck);
    // "Present Without Them".
    void declineAwaitingActions();
    // A run from the presenter panel: runs a trusted action through the
    // coordinator's runner, or brings up the consent sheet for the deck.
    void runManually(const SlideAction& action, const Slide& slide, const Deck& deck);

private:
    template <class T>
    void set(PresentationField field, T& member, T value) {
        if (member == value) return;
        member = std::move(value);
        changed_.emit(field);
    }

    enum class AfterConsent { nothing, present, closeEditor };
    // Whether leaving the editor now would ask about untrusted actions;
    // if so, asks and remembers what follows the answer.
    bool askBeforeLeavingEditor(const Deck& deck, AfterConsent then);
    void leaveEditorAfterConsent();

    Scheduler& scheduler_;
    PreferencesStore& preferences_;
    AfterConsent afterConsent_ = AfterConsent::nothing;
    std::int64_t current_ = 0;
    std::int64_t revealIndex_ = 0;
    bool overview_ = false;
    bool presenting_ = false;
    bool editorOpen_ = true;
    bool hudVisible_ = false;
    bool notesHidden_ = true;
    bool urlBarVisible_ = false;
    bool presenterPanelVisible_ = false;
    std::optional<double> timerStart_;
    double now_ = 0;
    bool pendingSlideDeletion_ = false;
    bool isWebCheckPresented_ = false;
    std::vector<std::int64_t> history_;
    TickerBox ticker_;
    Uuid windowId_ = Uuid::random();
    std::shared_ptr<LiveWebViewRegistry> liveWebViews_ = std::make_shared<LiveWebViewRegistry>();
    std::vector<ActionTrust::Request> actionsAwaitingTrust_;
    bool hasDeclinedUntrustedActions_ = false;
    PresentationWindow* window_ = nullptr;
    Signal<PresentationField> changed_;
    std::unique_ptr<AutoRunCoordinator> autoRun_;  // made last, sharing liveWebViews
};

}  // namespace lectern
