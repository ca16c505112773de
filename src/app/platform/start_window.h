#pragma once

#include <adwaita.h>
#include <gtkmm.h>

#include <string>

#include "base/platform/gobject_ref.h"

namespace lectern {

// The window shown while no deck is open: an invitation to open one, and the
// place where a deck that did not open says why.
class StartWindow : public Gtk::ApplicationWindow {
public:
    StartWindow();

    void showToast(const std::string& message);

private:
    GObjectRef<AdwToastOverlay> toasts_;
};

// The application's primary menu, shared by the start window.
Glib::RefPtr<Gio::Menu> startMenu();

}  // namespace lectern
