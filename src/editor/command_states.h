#pragma once

#include <map>
#include <string>

#include "editor/deck_document.h"
#include "present/presentation_state.h"

namespace lectern {

// What the window knows beyond the deck, its history and its state.
struct CommandFacts {
    bool hasLivePage = false;  // the current web slide's page is on the stage
    // A text field has the keyboard: the keys that move and leave text
    // (Ctrl+Left/Right, Escape) are its own, not the window's.
    bool typing = false;
};

// Which of the window's commands can act now, by action name without its
// "win." prefix ("undo", "move-slide-up", ...). Commands not listed are
// always enabled. The one place that decides it.
std::map<std::string, bool> enabledCommands(const DeckDocument& document, const PresentationState& state,
                                            const CommandFacts& facts);

}  // namespace lectern
