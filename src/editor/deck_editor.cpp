#include "editor/deck_editor.h"

#include "editor/deck_edits.h"
#include "web/profiles_in_use.h"
#include "web/web_prefetcher.h"

namespace lectern {

DeckEditor::DeckEditor(DeckDocument& document, PresentationState& state, PreferencesStore& preferences,
                       ProfilesInUse* profiles, WebPrefetcher* prefetcher)
    : document_(document),
      state_(state),
      preferences_(preferences),
      profiles_(profiles),
      prefetcher_(prefetcher),
      madeElsewhere_(document.deck()) {
    state_.clampCurrent(static_cast<std::int64_t>(deck().slides.size()));
    currentId_ = currentSlideId();
    documentConnection_ = document_.changed().connect([this](const DeckChange& change) { documentChanged(change); });
    stateConnection_ = state_.changed().connect([this](PresentationField field) { stateChanged(field); });
    // Other windows must not erase the browser profiles this deck uses.
    if (profiles_) profiles_->publish(state_.windowId(), deck());
    state_.syncAutoRun(deck());
    publishWantedPages();
}

DeckEditor::~DeckEditor() {
    if (prefetcher_) prefetcher_->setWanted(state_.windowId(), {});
    if (profiles_) profiles_->remove(state_.windowId());
}

const Slide* DeckEditor::currentSlide() const { return state_.currentSlide(deck().slides); }

std::optional<Uuid> DeckEditor::currentSlideId() const {
    const Slide* slide = currentSlide();
    return slide ? std::optional(slide->id) : std::nullopt;
}

bool DeckEditor::edit(std::string label, const std::function<Deck(Deck)>& change, std::string mergeKey,
                      std::optional<Uuid> show) {
    auto current = currentSlideId();
    return document_.edit(std::move(label), change, std::move(mergeKey), EditFocus{current, show ? show : current});
}

bool DeckEditor::editCurrentSlide(std::string label, const std::function<void(Slide&)>& change, std::string mergeKey) {
    auto current = currentSlideId();
    if (!current) return false;
    return edit(
        std::move(label), [&](Deck deck) { return edits::updateSlide(std::move(deck), *current, change); },
        std::move(mergeKey));
}

void DeckEditor::documentChanged(const DeckChange& change) {
    if (change.kind != DeckChange::Kind::saved) {
        applying_ = true;
        const auto& slides = deck().slides;
        // The slide to show: the edit's own, else the one that was current,
        // wherever it went; a deleted current slide leaves its place to the
        // next one.
        std::optional<std::size_t> index;
        if (change.slide) index = deck().indexOfSlide(*change.slide);
        if (!index && currentId_) index = deck().indexOfSlide(*currentId_);
        if (index && static_cast<std::int64_t>(*index) != state_.current()) {
            state_.goTo(static_cast<std::int64_t>(*index), false);
        } else if (!index) {
            state_.clampCurrent(static_cast<std::int64_t>(slides.size()));
        }
        currentId_ = currentSlideId();
        madeElsewhere_.deckChanged(deck(), preferences_);
        if (profiles_) profiles_->publish(state_.windowId(), deck());
        state_.syncAutoRun(deck());
        publishWantedPages();
        applying_ = false;
    }
    deckChanged_.emit(change);
}

void DeckEditor::stateChanged(PresentationField field) {
    if (applying_) return;
    switch (field) {
    case PresentationField::current:
        currentId_ = currentSlideId();
        state_.syncAutoRun(deck());
        publishWantedPages();
        break;
    case PresentationField::editorOpen:
        publishWantedPages();
        // Leaving the editor asks about actions made elsewhere first; both
        // ways, automatic runs follow what is now on screen.
        if (state_.editorOpen()) state_.syncAutoRun(deck()); else state_.leftEditor(deck());
        break;
    default: break;
    }
}

void DeckEditor::publishWantedPages() {
    if (!prefetcher_) return;
    auto keys = WebPrefetcher::wantedKeys(deck().slides, state_.current(), state_.editorOpen());
    auto slides = WebPrefetcher::slidesShowing(deck().slides, keys);
    prefetcher_->setWanted(state_.windowId(), keys, std::move(slides));
}

}  // namespace lectern
