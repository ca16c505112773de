#pragma once

#include <gtkmm.h>

#include <set>

namespace lectern {

// Adds a widget family's style sheet to the default display, once: the
// first widget of the family that is made installs it, the others find it
// there. `css` is a string literal, so its address names the sheet.
inline void installStyleOnce(const char* css) {
    static std::set<const char*> installed;
    auto display = Gdk::Display::get_default();
    if (!display || installed.count(css)) return;
    auto provider = Gtk::CssProvider::create();
    provider->load_from_data(css);
    Gtk::StyleContext::add_provider_for_display(display, provider, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    installed.insert(css);
}

}  // namespace lectern
