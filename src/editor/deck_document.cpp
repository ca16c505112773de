#include "editor/deck_document.h"

#include <unordered_map>
#include <utility>

namespace lectern {

namespace {

std::unordered_map<Uuid, const Slide*> slidesById(const Deck& deck) {
    std::unordered_map<Uuid, const Slide*> byId;
    byId.reserve(deck.slides.size());
    for (const auto& slide : deck.slides) byId[slide.id] = &slide;
    return byId;
}

}  // namespace

DeckDocument::Snapshot DeckDocument::snapshot(Deck deck, const Deck& neighbour) {
    Snapshot kept;
    std::vector<Slide> slides = std::move(deck.slides);
    deck.slides.clear();
    kept.shell = std::move(deck);
    auto byId = slidesById(neighbour);
    kept.slideIds.reserve(slides.size());
    kept.slides.reserve(slides.size());
    for (auto& slide : slides) {
        kept.slideIds.push_back(slide.id);
        auto same = byId.find(slide.id);
        if (same != byId.end() && *same->second == slide) {
            kept.slides.emplace_back(std::nullopt);
        } else {
            kept.slides.emplace_back(std::move(slide));
        }
    }
    return kept;
}

Deck DeckDocument::restore(const Snapshot& kept, const Deck& neighbour) {
    Deck deck = kept.shell;
    auto byId = slidesById(neighbour);
    deck.slides.reserve(kept.slides.size());
    for (std::size_t i = 0; i < kept.slides.size(); ++i) {
        deck.slides.push_back(kept.slides[i] ? *kept.slides[i] : *byId.at(kept.slideIds[i]));
    }
    return deck;
}

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
        // Its deck is told against the deck after it, which changes now.
        Step& top = undo_.back();
        top.deck = snapshot(restore(top.deck, deck_), changed);
        top.time = now;
        top.focus.after = focus.after;
    } else {
        undo_.push_back(Step{std::move(label), snapshot(std::move(deck_), changed), focus, std::move(mergeKey), now});
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
    Deck before = restore(step.deck, deck_);
    step.deck = snapshot(std::move(deck_), before);  // the deck after it, for redo
    deck_ = std::move(before);
    step.mergeKey.clear();  // an undone step never takes more typing
    DeckChange change{DeckChange::Kind::undo, step.label, step.focus.before};
    redo_.push_back(std::move(step));
    changed_.emit(change);
}

void DeckDocument::redo() {
    if (redo_.empty()) return;
    Step step = std::move(redo_.back());
    redo_.pop_back();
    Deck after = restore(step.deck, deck_);
    step.deck = snapshot(std::move(deck_), after);
    deck_ = std::move(after);
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
