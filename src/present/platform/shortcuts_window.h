#pragma once

#include <gtkmm.h>

namespace lectern {

// The "Keyboard Shortcuts" window of the main menu (Ctrl+?), listing the
// keys of a talk and of the application.
Gtk::ShortcutsWindow* makeShortcutsWindow();

}  // namespace lectern
