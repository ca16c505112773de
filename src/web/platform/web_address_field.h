#pragma once

#include <gtkmm.h>

#include <optional>
#include <string>

#include "base/signal.h"

namespace lectern {

// The address field of a web slide in the editor. Return commits what was
// typed: a web address (or an empty field, which clears the address) is
// reported by committed() and the field lets go of the focus; anything else
// shows why beside the field and keeps the draft and the focus. Escape puts
// the slide's address back and lets go. While the field has the focus the
// draft is the person's: the slide changing meanwhile does not replace it.
class WebAddressField : public Gtk::Box {
public:
    WebAddressField();

    // The slide's address, shown whenever the field is not being typed in.
    void setAddress(const std::optional<std::string>& url);
    Signal<std::optional<std::string>>& committed() { return committed_; }

    Gtk::Entry& entry() { return entry_; }
    // Why the last commit was refused (empty when it was not).
    std::string refusal() const { return refusal_.get_visible() ? std::string(refusal_.get_text()) : std::string(); }

private:
    void commit();
    void leave();
    void showAddress();

    std::string address_;
    bool focused_ = false;
    Gtk::Entry entry_;
    Gtk::Label refusal_;
    Glib::RefPtr<Gtk::CssProvider> style_ = Gtk::CssProvider::create();
    Signal<std::optional<std::string>> committed_;
};

}  // namespace lectern
