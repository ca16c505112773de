#pragma once

#include <gtkmm.h>

#include <string>

namespace lectern {

// The name a screen reader reads for a widget (an icon button reads its
// icon's name otherwise).
inline void setAccessibleLabel(Gtk::Widget& widget, const std::string& label) {
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget.gobj()), GTK_ACCESSIBLE_PROPERTY_LABEL, label.c_str(), -1);
}

}  // namespace lectern
