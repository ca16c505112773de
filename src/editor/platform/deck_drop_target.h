#pragma once

#include <gtkmm.h>

#include <filesystem>
#include <vector>

namespace lectern {

// Called with the deck packages of a drop (deckPackageFor of each file).
using DecksDropped = sigc::slot<void(const std::vector<std::filesystem::path>&)>;

// A drop target for files dragged in from a file manager that takes only
// decks: folders, or a deck.json inside one. The files are read as the drag
// comes in, so that a drag holding no deck is refused while it hovers (the
// pointer shows that it cannot drop) instead of failing when it lands. GTK
// highlights the widget while an accepted drag is over it. `dropped` is
// called once the drop is over, from the main loop, so that it may open and
// close windows (the one dropped on too); a slot of an object that is gone by
// then is not called.
Glib::RefPtr<Gtk::DropTarget> makeDeckDropTarget(DecksDropped dropped);

// The deck packages among the files a drag holds (a GdkFileList value).
std::vector<std::filesystem::path> deckPackagesIn(const GValue* files);

}  // namespace lectern
