#include "present/platform/trust_review.h"

#include <glib/gi18n.h>

#include <string>

namespace lectern {

namespace {

// Closes the sheet as its own close button would, which also ends its
// hold on the other windows of the application.
void dismiss(GtkWindow* sheet) {
    gtk_window_close(sheet);
    gtk_window_destroy(sheet);  // in case a close handler kept it open
}

}  // namespace

void TrustReview::show(Gtk::Window& parent, const std::vector<ActionTrust::Request>& requests,
                       std::function<void()> allow, std::function<void()> decline) {
    if (dialog_) {
        setRequests(requests);
        return;
    }
    GtkWidget* widget = adw_message_dialog_new(parent.gobj(), _(title), _(text));
    dialog_ = GObjectRef<AdwMessageDialog>::retain(ADW_MESSAGE_DIALOG(widget));
    AdwMessageDialog* dialog = dialog_.get();
    adw_message_dialog_add_response(dialog, declineResponse, _("Present Without Them"));
    adw_message_dialog_add_response(dialog, allowResponse, _("Allow Actions"));
    adw_message_dialog_set_response_appearance(dialog, allowResponse, ADW_RESPONSE_SUGGESTED);
    // Escape or closing the window must never allow anything.
    adw_message_dialog_set_close_response(dialog, declineResponse);

    list_ = Gtk::make_managed<Gtk::ListBox>();
    list_->add_css_class("boxed-list");
    list_->set_selection_mode(Gtk::SelectionMode::NONE);
    list_->set_focusable(false);  // the buttons take the focus, not the list
    // The sheet scrolls its own content when the list is long.
    adw_message_dialog_set_extra_child(dialog, GTK_WIDGET(list_->gobj()));
    setRequests(requests);

    response_ = SignalConnection::connect<const char*>(
        dialog, "response", [this, allow = std::move(allow), decline = std::move(decline)](const char* response) {
            // Let go of the sheet first, so that the state change the answer
            // makes finds no sheet to close.
            bool allowed = response && std::string(response) == allowResponse;
            auto onAllow = allow;
            auto onDecline = decline;
            list_ = nullptr;
            auto answered = std::exchange(dialog_, {});
            response_.disconnect();  // destroys this lambda: only locals from here on
            // A button closes the sheet by itself; an answer given any other
            // way does not. Either way it goes once the answer is out.
            Glib::signal_idle().connect_once([answered] { dismiss(GTK_WINDOW(answered.get())); });
            if (allowed) onAllow(); else onDecline();
        });
    gtk_window_present(GTK_WINDOW(dialog));
}

void TrustReview::setRequests(const std::vector<ActionTrust::Request>& requests) {
    if (!list_) return;
    while (auto* row = list_->get_row_at_index(0)) list_->remove(*row);
    for (const auto& request : requests) {
        auto* label = Gtk::make_managed<Gtk::Label>(request.summary);
        label->set_wrap(true);
        label->set_xalign(0);
        label->set_margin(12);
        auto* row = Gtk::make_managed<Gtk::ListBoxRow>();
        row->set_activatable(false);
        row->set_focusable(false);
        row->set_child(*label);
        list_->append(*row);
    }
}

void TrustReview::close() {
    response_.disconnect();
    list_ = nullptr;
    if (auto dialog = std::exchange(dialog_, {})) dismiss(GTK_WINDOW(dialog.get()));
}

}  // namespace lectern
