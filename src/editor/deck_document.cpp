#include "editor/deck_document.h"

#include <utility>

namespace lectern {

DeckDocument::DeckDocument(Deck deck, std::optional<std::filesystem::path> package, std::function<double()> clock)
    : deck_(std::move(deck)), package_(std::move(package)), clock_(std::move(clock)), saved_(deck_) {}

bool DeckDocument::edit(std::string label, const std::function<Deck(Deck)>& change, std::string mergeKey,
                        EditFocus focus) {
    Deck changed = change(deck_);
    if (changed == deck_) return false;
    double now = clock_ ? clock_() : 0;
    // Typing in one field: the step already on top keeps the deck from
    // before the first keystroke and takes the newest time.
    bool merges = !mergeKey.empty() && !undo_.empty() && undo_.back().mergeKey == mergeKey &&
                  now - undo_.back().time < mergeSeconds;
    if (merges) {
        undo_.back().time = now;
        undo_.back().focus.after = focus.after;
    } else {
        undo_.push_back(Step{std::move(label), std::move(deck_), focus, std::move(mergeKey), now});
        if (undo_.size() > maxUndoSteps) undo_.pop_front();
    }
    deck_ = std::move(changed);
    redo_.clear();
    changed_.emit(DeckChange{DeckChange::Kind::edit, undo_.back().label, focus.after});
    return true;
}

std::string DeckDocument::undoLabel() const { return undo_.empty() ? std::string() : undo_.back().label; }
std::string DeckDocument::redoLabel() const { return redo_.empty() ? std::string() : redo_.back().label; }

void DeckDocument::undo() {
    if (undo_.empty()) return;
    Step step = std::move(undo_.back());
    undo_.pop_back();
    std::swap(step.deck, deck_);  // the step now holds the deck after it, for redo
    step.mergeKey.clear();        // an undone step never takes more typing
    DeckChange change{DeckChange::Kind::undo, step.label, step.focus.before};
    redo_.push_back(std::move(step));
    changed_.emit(change);
}

void DeckDocument::redo() {
    if (redo_.empty()) return;
    Step step = std::move(redo_.back());
    redo_.pop_back();
    std::swap(step.deck, deck_);
    DeckChange change{DeckChange::Kind::redo, step.label, step.focus.after};
    undo_.push_back(std::move(step));
    changed_.emit(change);
}

bool DeckDocument::isDirty() const { return !saved_ || *saved_ != deck_; }

void DeckDocument::markSaved(const Deck& written, std::filesystem::path package) {
    saved_ = written;
    package_ = std::move(package);
    // Nothing that was typed meanwhile merges into a step that is on disk.
    if (!undo_.empty()) undo_.back().mergeKey.clear();
    changed_.emit(DeckChange{DeckChange::Kind::saved, {}, std::nullopt});
}

void DeckDocument::setSavedDeck(std::optional<Deck> saved) { saved_ = std::move(saved); }

}  // namespace lectern
