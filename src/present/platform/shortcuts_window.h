#pragma once

#include <gtkmm.h>

#include <string>

namespace lectern {

// The "Keyboard Shortcuts" window of the main menu (Ctrl+?), listing the
// keys of a talk and of the application.
// Every shortcut shows its keys by readable names ("Page Down") and reads
// out as its title and its keys in words.
Gtk::ShortcutsWindow* makeShortcutsWindow();

// Accelerators as the shortcuts window takes them ("Left Page_Up",
// "0...9+Return") in words: "Left or Page Up", "0 to 9, then Return".
std::string keysInWords(const std::string& accelerators);

}  // namespace lectern
