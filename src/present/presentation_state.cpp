#include "present/presentation_state.h"

#include <algorithm>
#include <utility>

#include "slides/reveal_plan.h"

namespace lectern {

namespace {

std::int64_t count(const std::vector<Slide>& slides) { return static_cast<std::int64_t>(slides.size()); }

bool skipped(const std::vector<Slide>& slides, std::int64_t index) {
    return slides[static_cast<std::size_t>(index)].isSkipped;
}

}  // namespace

PresentationState::PresentationState(Scheduler& scheduler, PreferencesStore& preferences,
                                     std::unique_ptr<ActionRunner> runner, AutoRunCoordinator::Execute execute)
    : scheduler_(scheduler), preferences_(preferences), now_(scheduler.now()), ticker_(scheduler) {
    autoRun_ = std::make_unique<AutoRunCoordinator>(scheduler, std::move(runner), liveWebViews_, std::move(execute));
}

PresentationState::~PresentationState() = default;

const Slide* PresentationState::currentSlide(const std::vector<Slide>& slides) const {
    if (current_ < 0 || current_ >= count(slides)) return nullptr;
    return &slides[static_cast<std::size_t>(current_)];
}

void PresentationState::goTo(std::int64_t index, bool push) {
    if (push && index != current_) pushHistory();
    set(PresentationField::current, current_, index);
    set(PresentationField::revealIndex, revealIndex_, std::int64_t{0});
}

void PresentationState::next(const std::vector<Slide>& slides) {
    if (const Slide* slide = currentSlide(slides)) {
        if (slide->reveal == RevealMode::reveal && revealIndex_ < RevealPlan::highestRevealIndex(*slide)) {
            set(PresentationField::revealIndex, revealIndex_, revealIndex_ + 1);
            return;
        }
        if (slide->nextSlideAction && route(*slide->nextSlideAction, slides)) return;
    }
    nextSlideDirect(slides);
}

void PresentationState::previous(const std::vector<Slide>& slides) {
    if (const Slide* slide = currentSlide(slides)) {
        if (slide->reveal == RevealMode::reveal && revealIndex_ >= 1) {
            set(PresentationField::revealIndex, revealIndex_, revealIndex_ - 1);
            return;
        }
    }
    previousSlideDirect(slides);
}

bool PresentationState::route(const std::string& target, const std::vector<Slide>& slides) {
    if (target == "$back" || target == "back") {
        previous(slides);
        return true;
    }
    if (target == "$overview") {
        toggleOverview();
        return true;
    }
    if (target == "$home" || target == "home") {
        std::int64_t home = 0;
        if (!editorOpen_) {
            auto first = std::find_if(slides.begin(), slides.end(), [](const Slide& s) { return !s.isSkipped; });
            home = first == slides.end() ? 0 : first - slides.begin();
        }
        if (home != current_) {
            pushHistory();
            goTo(home, false);
        }
        return true;
    }
    auto id = Uuid::parse(target);
    if (!id) return false;
    auto it = std::find_if(slides.begin(), slides.end(), [&](const Slide& s) { return s.id == *id; });
    if (it == slides.end()) return false;
    std::int64_t index = it - slides.begin();
    if (index != current_) {
        pushHistory();
        goTo(index, false);
    }
    return true;
}

void PresentationState::clampCurrent(std::int64_t slideCount) {
    std::int64_t clamped = current_ < 0 ? 0 : std::min(std::max<std::int64_t>(slideCount - 1, 0), current_);
    set(PresentationField::current, current_, clamped);
    set(PresentationField::revealIndex, revealIndex_, std::int64_t{0});
}

void PresentationState::pushHistory() {
    if (!history_.empty() && history_.back() == current_) return;
    history_.push_back(current_);
    if (static_cast<std::int64_t>(history_.size()) > maxHistory) history_.erase(history_.begin());
    changed_.emit(PresentationField::history);
}

std::optional<std::int64_t> PresentationState::popHistory(const std::vector<Slide>& slides) {
    std::optional<std::int64_t> found;
    bool popped = false;
    while (!history_.empty() && !found) {
        std::int64_t index = history_.back();
        history_.pop_back();
        popped = true;
        if (index >= 0 && index < count(slides)) found = index;  // stale entries are dropped
    }
    if (popped) changed_.emit(PresentationField::history);
    return found;
}

void PresentationState::nextSlideDirect(const std::vector<Slide>& slides) {
    std::int64_t candidate = current_ + 1;
    if (candidate >= count(slides)) return;  // the last slide is a hard stop
    while (!editorOpen_ && skipped(slides, candidate)) {
        if (++candidate >= count(slides)) return;
    }
    goTo(candidate, false);
}

void PresentationState::previousSlideDirect(const std::vector<Slide>& slides) {
    // Going back after a jump returns to where the jump came from.
    if (auto origin = popHistory(slides)) {
        goTo(*origin, false);
        return;
    }
    if (current_ < 1 || slides.empty()) return;
    std::int64_t candidate = std::min(count(slides), current_) - 1;
    while (!editorOpen_ && skipped(slides, candidate)) {
        if (--candidate < 0) return;
    }
    goTo(candidate, false);
}

void PresentationState::select(std::int64_t index, std::int64_t slideCount) {
    index = slideCount <= 0 ? 0 : std::clamp<std::int64_t>(index, 0, slideCount - 1);
    if (index != current_) goTo(index, false);
    setOverview(false);
}

void PresentationState::togglePresenting() {
    set(PresentationField::presenting, presenting_, !presenting_);
    if (presenting_) {
        set(PresentationField::editorOpen, editorOpen_, false);
        if (!history_.empty()) {
            history_.clear();
            changed_.emit(PresentationField::history);
        }
    } else {
        set(PresentationField::editorOpen, editorOpen_, true);
    }
    if (window_) window_->toggleFullScreen();
}

bool PresentationState::askBeforeLeavingEditor(const Deck& deck, AfterConsent then) {
    if (!editorOpen_ || hasDeclinedUntrustedActions_) return false;
    auto requests = ActionTrust::requests(deck, preferences_);
    if (requests.empty()) return false;
    afterConsent_ = then;
    setActionsAwaitingTrust(std::move(requests));
    return true;
}

void PresentationState::leaveEditorAfterConsent() {
    switch (std::exchange(afterConsent_, AfterConsent::nothing)) {
    case AfterConsent::present:
        if (!presenting_) togglePresenting();
        break;
    case AfterConsent::closeEditor:
        if (editorOpen_) toggleEditor();
        break;
    case AfterConsent::nothing: break;
    }
}

void PresentationState::togglePresentingAsking(const Deck& deck) {
    if (leavesEditorAfterConsent()) return;  // already asking
    if (!presenting_ && askBeforeLeavingEditor(deck, AfterConsent::present)) return;
    togglePresenting();
}

void PresentationState::toggleEditorAsking(const Deck& deck) {
    if (leavesEditorAfterConsent()) return;
    if (askBeforeLeavingEditor(deck, AfterConsent::closeEditor)) return;
    toggleEditor();
}

void PresentationState::toggleTimer() {
    if (timerStart_) {
        set(PresentationField::timerStart, timerStart_, std::optional<double>{});
        ticker_.stop();
        return;
    }
    double start = scheduler_.now();
    set(PresentationField::timerStart, timerStart_, std::optional<double>{start});
    set(PresentationField::now, now_, start);
    ticker_.start(tickInterval, [this] { set(PresentationField::now, now_, scheduler_.now()); });
}

void PresentationState::syncAutoRun(const Deck& deck) {
    std::optional<Slide> slide;
    if (const Slide* current = currentSlide(deck.slides)) slide = ActionTrust::trustedSlide(*current, preferences_);
    autoRun_->slideChanged(slide, !editorOpen_);
}

void PresentationState::setActionsAwaitingTrust(std::vector<ActionTrust::Request> requests) {
    set(PresentationField::actionsAwaitingTrust, actionsAwaitingTrust_, std::move(requests));
}

void PresentationState::leftEditor(const Deck& deck) {
    if (!hasDeclinedUntrustedActions_) setActionsAwaitingTrust(ActionTrust::requests(deck, preferences_));
    syncAutoRun(deck);
}

void PresentationState::allowAwaitingActions(const Deck& deck) {
    std::vector<std::string> ids;
    for (const auto& request : actionsAwaitingTrust_) {
        if (!request.id.empty()) ids.push_back(request.id);
    }
    ActionTrust::trust(ids, preferences_);
    setActionsAwaitingTrust({});
    syncAutoRun(deck);
    leaveEditorAfterConsent();
}

void PresentationState::declineAwaitingActions() {
    set(PresentationField::hasDeclinedUntrustedActions, hasDeclinedUntrustedActions_, true);
    setActionsAwaitingTrust({});
    leaveEditorAfterConsent();
}

void PresentationState::runManually(const SlideAction& action, const Slide& slide, const Deck& deck) {
    auto fp = ActionTrust::fingerprint(action, slide);
    if (fp && ActionTrust::trustedFingerprints(preferences_).contains(*fp)) {
        autoRun_->runner().run(action, slide, liveWebViews_.get());
    } else {
        setActionsAwaitingTrust(ActionTrust::requests(deck, preferences_));
    }
}

}  // namespace lectern
