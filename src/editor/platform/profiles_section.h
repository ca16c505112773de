#pragma once

#include <adwaita.h>
#include <gtkmm.h>

#include <memory>
#include <optional>
#include <vector>

#include "base/platform/gobject_ref.h"
#include "base/signal.h"
#include "editor/deck_editor.h"
#include "model/browser_profile.h"

namespace lectern {

class ProfileStores;

// The deck's browser profiles in the deck inspector: add one, select a row
// with a click and rename it in place with a double click, sign a profile
// out of every site ("Clear session (log out)", shown as "Signed out" for a
// moment) and delete it after a confirmation, which also erases its
// website data unless another open deck uses it.
class ProfilesSection : public Gtk::Box {
public:
    // `stores` erases and removes the profiles' data; `windowId` names the
    // deck's window to it.
    ProfilesSection(DeckEditor& editor, ProfileStores& stores, Uuid windowId);
    ~ProfilesSection() override;

    // Follows the deck: the rows are updated in place while the deck has
    // the same profiles in the same order, and made again otherwise.
    void deckChanged();

    // The confirmation of a deletion while it is asked.
    AdwMessageDialog* confirmation() const { return confirmation_.get(); }
    Gtk::ListBox& list() { return list_; }

private:
    struct Row {
        Uuid id;
        Gtk::ListBoxRow* row = nullptr;
        Gtk::Stack* stack = nullptr;
        Gtk::Label* name = nullptr;
        Gtk::Entry* entry = nullptr;
        Gtk::Label* cleared = nullptr;
        bool editing = false;
    };

    void rebuild();
    Row& makeRow(const BrowserProfile& profile);
    void showName(Row& row, const BrowserProfile& profile);
    void startRename(Row& row);
    void finishRename(Row& row, bool commit);
    void askToDelete(const Uuid& id);
    void closeConfirmation();
    void showCleared(const std::optional<Uuid>& id);

    DeckEditor& editor_;
    ProfileStores& stores_;
    Uuid windowId_;
    Gtk::ListBox list_;
    std::vector<std::unique_ptr<Row>> rows_;
    bool rebuilding_ = false;  // rows going away: their focus-out commits nothing
    std::optional<BrowserProfile> pendingDeletion_;
    GObjectRef<AdwMessageDialog> confirmation_;
    SignalConnection responseConnection_;
    Signal<const std::optional<Uuid>&>::Connection clearedConnection_;
};

}  // namespace lectern
