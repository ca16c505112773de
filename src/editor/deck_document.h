#pragma once

#include <cstddef>
#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/signal.h"
#include "model/deck.h"

namespace lectern {

// What happened to the document, as its change signal tells it.
struct DeckChange {
    enum class Kind { edit, undo, redo, saved };
    Kind kind = Kind::edit;
    std::string label;           // "Move Slide": what was done, undone or redone
    std::optional<Uuid> slide;   // the slide to show: after an edit or redo, the edit's
                                 // slide; after an undo, the slide current before the edit
};

// The slides an edit is seen on: the one current before it (shown again
// when it is undone) and the one to show after it (and when it is redone).
struct EditFocus {
    std::optional<Uuid> before;
    std::optional<Uuid> after;
};

// One open deck: its value, its package (none for a draft never saved), its
// undo history as whole-deck snapshots (each kept as its difference from the
// next, so a long history of a long deck stays small) and whether it is
// saved. Every change
// of a deck in the program goes through edit(). Main loop only.
class DeckDocument {
public:
    static constexpr std::size_t maxUndoSteps = 200;
    static constexpr double mergeSeconds = 1.0;

    // A deck as its package holds it (a draft: as it was made), so it starts
    // clean. `clock` gives seconds on a monotonic clock, for merging.
    DeckDocument(Deck deck, std::optional<std::filesystem::path> package, std::function<double()> clock);

    const Deck& deck() const { return deck_; }
    const std::optional<std::filesystem::path>& package() const { return package_; }
    bool isDraft() const { return !package_; }

    // The one way in. `change` is a pure Deck -> Deck function; `focus`
    // names the slides the edit is seen on. Edits with the same non-empty mergeKey
    // within mergeSeconds of the previous one make one undo step. Returns
    // false (and records nothing) when the deck did not change.
    bool edit(std::string label, const std::function<Deck(Deck)>& change, std::string mergeKey = {},
              EditFocus focus = {});

    bool canUndo() const { return !undo_.empty(); }
    bool canRedo() const { return !redo_.empty(); }
    // The label of the step undo() or redo() would take back ("Move Slide").
    std::string undoLabel() const;
    std::string redoLabel() const;
    void undo();
    void redo();

    // The deck differs from the one last written (a draft: from the one it
    // was made with, so a new untouched deck is not dirty).
    bool isDirty() const;
    // `written` went to `package`: the document follows the package (Save
    // As) and is clean unless it changed since `written` was copied.
    void markSaved(const Deck& written, std::filesystem::path package);
    // The package holds `saved` (nothing: the deck was never written), not
    // deck(): a deck recovered after a crash opens changed.
    void setSavedDeck(std::optional<Deck> saved);

    Signal<const DeckChange&>& changed() { return changed_; }

private:
    // A whole deck told by its difference from a neighbour (the deck after
    // it on the undo stack, before it on the redo stack): its own fields,
    // and of its slides only those the neighbour does not have as they
    // are. A step keeps what one edit changed, not the whole deck again.
    struct Snapshot {
        Deck shell;                               // every field but the slides
        std::vector<Uuid> slideIds;               // in order
        std::vector<std::optional<Slide>> slides;  // none: the neighbour's slide with that id
    };
    static Snapshot snapshot(Deck deck, const Deck& neighbour);
    static Deck restore(const Snapshot& snapshot, const Deck& neighbour);

    struct Step {
        std::string label;
        Snapshot deck;  // the deck before (undo stack) or after (redo stack) the step
        EditFocus focus;
        std::string mergeKey;
        double time = 0;
    };

    Deck deck_;
    std::optional<std::filesystem::path> package_;
    std::function<double()> clock_;
    std::optional<Deck> saved_;
    std::deque<Step> undo_;
    std::deque<Step> redo_;
    Signal<const DeckChange&> changed_;
};

}  // namespace lectern
