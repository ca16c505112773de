#pragma once

#include <string>
#include <vector>

namespace lectern {

// A menu command of the deck window: its action ("win.present"), its menu
// title and its keyboard shortcuts in GTK's accelerator syntax.
struct DeckCommand {
    std::string action;
    std::string title;
    std::vector<std::string> accelerators;
};

// New, open and save, in menu order.
const std::vector<DeckCommand>& fileCommands();
// Undo, redo and the sidebar (the menu labels undo and redo with what they
// take back).
const std::vector<DeckCommand>& editCommands();
// The "Slide" menu, in menu order.
const std::vector<DeckCommand>& slideCommands();
// The "Presentation" menu, in menu order.
const std::vector<DeckCommand>& presentationCommands();
// Commands of the application: open, about, updates, quit, close window.
const std::vector<DeckCommand>& applicationCommands();

}  // namespace lectern
