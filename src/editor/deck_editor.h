#pragma once

#include <functional>
#include <optional>
#include <string>

#include "base/signal.h"
#include "editor/deck_document.h"
#include "model/preferences_store.h"
#include "present/action_trust.h"
#include "present/presentation_state.h"

namespace lectern {

class ProfilesInUse;
class WebPrefetcher;

// The window's side of its document: everything a change of the deck or of
// the current slide needs, done once per change. It keeps the current slide
// by id (an insertion above it, a move or an undo never changes which slide
// shows), trusts the presenter's own actions, publishes the browser profiles
// in use, hands the current slide to auto-run and tells the prefetcher which
// pages to load ahead. Widgets listen to deckChanged(), which comes after
// all of that. Main loop only.
class DeckEditor {
public:
    // `profiles` and `prefetcher` may be null (tests without web pages).
    DeckEditor(DeckDocument& document, PresentationState& state, PreferencesStore& preferences,
               ProfilesInUse* profiles, WebPrefetcher* prefetcher);
    ~DeckEditor();
    DeckEditor(const DeckEditor&) = delete;
    DeckEditor& operator=(const DeckEditor&) = delete;

    DeckDocument& document() { return document_; }
    const Deck& deck() const { return document_.deck(); }
    PresentationState& state() { return state_; }
    PreferencesStore& preferences() { return preferences_; }
    // The slide on the stage, if the current index names one.
    const Slide* currentSlide() const;
    std::optional<Uuid> currentSlideId() const;

    // Changes the deck. The current slide is remembered with the step, so
    // undoing shows it again; `show` is the slide to show afterwards (by
    // default the current one).
    bool edit(std::string label, const std::function<Deck(Deck)>& change, std::string mergeKey = {},
              std::optional<Uuid> show = std::nullopt);
    // Changes one field of the current slide (nothing without one).
    bool editCurrentSlide(std::string label, const std::function<void(Slide&)>& change, std::string mergeKey = {});
    void undo() { document_.undo(); }
    void redo() { document_.redo(); }

    Signal<const DeckChange&>& deckChanged() { return deckChanged_; }

private:
    void documentChanged(const DeckChange& change);
    void stateChanged(PresentationField field);
    void publishWantedPages();

    DeckDocument& document_;
    PresentationState& state_;
    PreferencesStore& preferences_;
    ProfilesInUse* profiles_;
    WebPrefetcher* prefetcher_;
    MadeElsewhereTracker madeElsewhere_;
    std::optional<Uuid> currentId_;
    bool applying_ = false;  // inside documentChanged: state changes are part of it
    Signal<const DeckChange&> deckChanged_;
    Signal<const DeckChange&>::Connection documentConnection_;
    Signal<PresentationField>::Connection stateConnection_;
};

}  // namespace lectern
