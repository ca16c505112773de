#include "web/platform/web_address_field.h"

#include <glib/gi18n.h>

#include "base/platform/accessible.h"
#include "web/typed_address.h"

namespace lectern {

WebAddressField::WebAddressField() : Gtk::Box(Gtk::Orientation::HORIZONTAL, 8) {
    // Its own background, so that it reads over any page.
    add_css_class("web-address-field");
    style_->load_from_data(
        ".web-address-field { background-color: alpha(@window_bg_color, 0.94); border-radius: 10px; padding: 4px; "
        "box-shadow: 0 1px 4px alpha(black, 0.25); }\n"
        ".web-address-field label { color: @error_color; margin-right: 6px; }");
    get_style_context()->add_provider(style_, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    refusal_.get_style_context()->add_provider(style_, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);

    entry_.set_placeholder_text("https://example.com");
    entry_.set_hexpand(true);
    entry_.set_input_purpose(Gtk::InputPurpose::URL);
    setAccessibleLabel(entry_, _("Web address"));
    append(entry_);
    refusal_.set_visible(false);
    refusal_.set_ellipsize(Pango::EllipsizeMode::END);
    append(refusal_);

    entry_.signal_activate().connect([this] { commit(); });
    entry_.signal_changed().connect([this] { refusal_.set_visible(false); });

    auto keys = Gtk::EventControllerKey::create();
    keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    keys->signal_key_pressed().connect(
        [this](guint key, guint, Gdk::ModifierType) {
            if (key != GDK_KEY_Escape) return false;
            showAddress();
            leave();
            return true;
        },
        false);
    entry_.add_controller(keys);

    auto focus = Gtk::EventControllerFocus::create();
    focus->signal_enter().connect([this] { focused_ = true; });
    focus->signal_leave().connect([this] {
        // A draft left without Return is dropped, as a browser's address bar does.
        focused_ = false;
        showAddress();
    });
    entry_.add_controller(focus);
}

void WebAddressField::setAddress(const std::optional<std::string>& url) {
    address_ = url.value_or("");
    if (!focused_) showAddress();
}

void WebAddressField::showAddress() {
    if (entry_.get_text().raw() != address_) entry_.set_text(address_);
    refusal_.set_visible(false);
}

void WebAddressField::commit() {
    auto result = typedAddress(std::string(entry_.get_text()));
    if (!result) {
        refusal_.set_text(result.error().message);
        refusal_.set_visible(true);
        entry_.grab_focus();
        return;
    }
    // The field lets go first, so the address it shows is the slide's once
    // the edit comes back.
    leave();
    committed_.emit(*result);
}

void WebAddressField::leave() {
    if (auto* root = get_root()) gtk_root_set_focus(root->gobj(), nullptr);
    focused_ = false;
    showAddress();
}

}  // namespace lectern
