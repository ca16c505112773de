// The deck window's saving and its two questions: where a draft goes,
// "Save changes to …?" when a window cannot close with everything saved,
// and "Delete this slide?".

#include <utility>

#include <glib/gi18n.h>

#include "base/platform/file_chooser.h"
#include "base/translation.h"
#include "editor/deck_edits.h"
#include "editor/navigator_rules.h"
#include "editor/platform/deck_window.h"

namespace lectern {

namespace {

std::string packageFileName(const Deck& deck) {
    std::string name = deck.title && !deck.title->empty() ? *deck.title : _("Untitled Deck");
    // A title may hold characters a file name cannot.
    for (char& c : name) {
        if (c == '/' || c == '\0') c = '-';
    }
    return name + ".lectern";
}

GObjectRef<AdwMessageDialog> messageDialog(Gtk::Window& parent, const std::string& heading, const std::string& body) {
    auto dialog = GObjectRef<AdwMessageDialog>::retain(
        ADW_MESSAGE_DIALOG(adw_message_dialog_new(parent.gobj(), heading.c_str(), body.c_str())));
    return dialog;
}

}  // namespace

void DeckWindow::save() {
    if (document_->isDraft()) {
        askWhereToSave({});
        return;
    }
    autosaver_->saveNow();
}

void DeckWindow::saveAs() { askWhereToSave({}); }

bool DeckWindow::saveNow() {
    if (document_->isDraft()) return !document_->isDirty();
    Status saved = autosaver_->flush();
    return static_cast<bool>(saved);
}

void DeckWindow::askWhereToSave(std::function<void(bool saved)> then) {
    saveDialog_ = Gtk::FileChooserNative::create(_("Save Deck"), *this, Gtk::FileChooser::Action::SAVE, _("_Save"),
                                                 _("_Cancel"));
    saveDialog_->set_modal(true);
    saveDialog_->set_current_name(package() ? package()->filename().string() : packageFileName(deck()));
    if (package()) saveDialog_->set_current_folder(Gio::File::create_for_path(package()->parent_path().string()));
    saveDialog_->signal_response().connect([this, then = std::move(then)](int response) {
        auto dialog = heldPastResponse(std::exchange(saveDialog_, {}));
        auto file = response == Gtk::ResponseType::ACCEPT ? dialog->get_file() : Glib::RefPtr<Gio::File>();
        if (!file || file->get_path().empty()) {
            if (then) then(false);
            return;
        }
        std::filesystem::path chosen = file->get_path();
        if (chosen.extension() != ".lectern") chosen += ".lectern";
        autosaver_->saveAs(chosen, [this, chosen, then](const Status& status) {
            if (status) Gtk::RecentManager::get_default()->add_item(Gio::File::create_for_path(chosen)->get_uri());
            if (then) then(static_cast<bool>(status));
        });
    });
    saveDialog_->show();
}

bool DeckWindow::on_close_request() {
    if (closing_) return Gtk::ApplicationWindow::on_close_request();
    // A saved deck writes what is waiting and goes; a draft with nothing in
    // it goes too.
    if (document_->isDraft() ? !document_->isDirty() : saveNow()) {
        if (document_->isDraft()) autosaver_->discard();
        closing_ = true;
        return Gtk::ApplicationWindow::on_close_request();
    }
    confirmClose();
    return true;
}

void DeckWindow::confirmClose() {
    if (closeDialog_) {
        gtk_window_present(GTK_WINDOW(closeDialog_.get()));
        return;
    }
    std::string body = document_->isDraft()
                           ? _("This deck has never been saved. If you don’t save it, it will be lost.")
                           : _("The deck couldn’t be saved. If you don’t save it now, your changes will be lost.");
    closeDialog_ = messageDialog(*this, formatText(_("Save changes to “%s”?"), windowTitle().c_str()), body);
    AdwMessageDialog* dialog = closeDialog_.get();
    adw_message_dialog_add_responses(dialog, "discard", _("_Discard"), "cancel", _("_Cancel"), "save", _("_Save"),
                                     nullptr);
    adw_message_dialog_set_response_appearance(dialog, "discard", ADW_RESPONSE_DESTRUCTIVE);
    adw_message_dialog_set_response_appearance(dialog, "save", ADW_RESPONSE_SUGGESTED);
    adw_message_dialog_set_default_response(dialog, "save");
    adw_message_dialog_set_close_response(dialog, "cancel");
    g_signal_connect(dialog, "response", G_CALLBACK(+[](AdwMessageDialog*, const char* response, gpointer data) {
                         auto* window = static_cast<DeckWindow*>(data);
                         window->closeDialog_.reset();
                         std::string answer = response;
                         if (answer == "discard") {
                             window->autosaver_->discard();
                             window->closing_ = true;
                             window->close();
                         } else if (answer == "save") {
                             window->askWhereToSave([window](bool saved) {
                                 if (!saved) return;
                                 window->closing_ = true;
                                 window->close();
                             });
                         }
                     }),
                     this);
    gtk_window_present(GTK_WINDOW(dialog));
}

void DeckWindow::refreshDeleteConfirmation() {
    if (!state_->pendingSlideDeletion()) {
        if (deleteDialog_) gtk_window_close(GTK_WINDOW(deleteDialog_.get()));
        deleteDialog_.reset();
        return;
    }
    if (deleteDialog_) {
        adw_message_dialog_set_body(deleteDialog_.get(), deleteSlideMessage(editor_->currentSlide()).c_str());
        return;
    }
    deleteDialog_ = messageDialog(*this, _("Delete this slide?"), deleteSlideMessage(editor_->currentSlide()));
    AdwMessageDialog* dialog = deleteDialog_.get();
    adw_message_dialog_add_responses(dialog, "cancel", _("Cancel"), "delete", _("Delete Slide"), nullptr);
    adw_message_dialog_set_response_appearance(dialog, "delete", ADW_RESPONSE_DESTRUCTIVE);
    adw_message_dialog_set_default_response(dialog, "cancel");
    adw_message_dialog_set_close_response(dialog, "cancel");
    g_signal_connect(dialog, "response", G_CALLBACK(+[](AdwMessageDialog*, const char* response, gpointer data) {
                         auto* window = static_cast<DeckWindow*>(data);
                         window->deleteDialog_.reset();
                         if (std::string(response) == "delete") window->deleteCurrentSlide();
                         window->state_->setPendingSlideDeletion(false);
                     }),
                     this);
    gtk_window_present(GTK_WINDOW(dialog));
}

void DeckWindow::deleteCurrentSlide() {
    auto index = static_cast<std::size_t>(state_->current());
    if (index >= deck().slides.size()) return;
    editor_->edit(_("Delete Slide"), [index](Deck deck) { return edits::deleteSlide(std::move(deck), index); });
}

}  // namespace lectern
