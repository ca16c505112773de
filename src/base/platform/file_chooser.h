#pragma once

#include <gtkmm.h>

namespace lectern {

// A file chooser whose answer is being read, returned as it is and held a
// second longer than its caller holds it: it is never torn down inside its
// own response while work it started is still in flight (the location
// entry reading a folder to complete a typed path, the recent files list
// being written).
inline Glib::RefPtr<Gtk::FileChooserNative> heldPastResponse(Glib::RefPtr<Gtk::FileChooserNative> chooser) {
    Glib::signal_timeout().connect_once([chooser] {}, 1000);
    return chooser;
}

}  // namespace lectern
