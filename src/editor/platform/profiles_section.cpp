#include "editor/platform/profiles_section.h"

#include <glib/gi18n.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/platform/accessible.h"
#include "web/browser_profile_edits.h"
#include "web/profile_stores.h"

namespace lectern {

namespace {

Gtk::Button* iconButton(const char* icon, const std::string& label) {
    auto* button = Gtk::make_managed<Gtk::Button>();
    button->set_icon_name(icon);
    button->set_tooltip_text(label);
    button->set_has_frame(false);
    button->set_valign(Gtk::Align::CENTER);
    setAccessibleLabel(*button, label);
    return button;
}

}  // namespace

ProfilesSection::ProfilesSection(DeckEditor& editor, ProfileStores& stores, Uuid windowId)
    : Gtk::Box(Gtk::Orientation::VERTICAL, 6), editor_(editor), stores_(stores), windowId_(windowId) {
    auto* header = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
    auto* heading = Gtk::make_managed<Gtk::Label>(_("Browser Profiles"));
    heading->add_css_class("heading");
    heading->set_xalign(0);
    heading->set_hexpand(true);
    header->append(*heading);
    auto* add = iconButton("list-add-symbolic", _("Add Profile"));
    add->signal_clicked().connect([this] {
        std::optional<Uuid> added;
        editor_.edit(_("Add Profile"), [&](Deck deck) {
            added = BrowserProfileEdits::add(deck);
            return deck;
        });
        for (auto& row : rows_) {
            if (added && row->id == *added) list_.select_row(*row->row);
        }
    });
    header->append(*add);
    append(*header);

    auto* about = Gtk::make_managed<Gtk::Label>(
        _("Each profile keeps its own sign-ins, cookies and site data, so slides can show the same site as "
          "different people."));
    about->set_wrap(true);
    about->set_xalign(0);
    about->add_css_class("dim-label");
    about->add_css_class("caption");
    append(*about);

    list_.add_css_class("boxed-list");
    list_.set_selection_mode(Gtk::SelectionMode::SINGLE);
    setAccessibleLabel(list_, _("Browser profiles"));
    auto* none = Gtk::make_managed<Gtk::Label>(_("No profiles yet: every web slide uses the shared session."));
    none->set_wrap(true);
    none->set_margin(12);
    none->add_css_class("dim-label");
    list_.set_placeholder(*none);
    append(list_);

    auto* clearShared = Gtk::make_managed<Gtk::Button>(_("Clear Shared Web Session"));
    clearShared->set_tooltip_text(_("Signs out of every site that slides without a profile show, in every deck."));
    clearShared->set_halign(Gtk::Align::START);
    clearShared->signal_clicked().connect([this] { activate_action("win.clear-shared-web-session"); });
    append(*clearShared);

    clearedConnection_ = stores_.recentlyClearedChanged().connect([this](const std::optional<Uuid>& id) {
        showCleared(id);
    });
    rebuild();
}

ProfilesSection::~ProfilesSection() {
    rebuilding_ = true;
    closeConfirmation();
}

void ProfilesSection::deckChanged() {
    const auto& profiles = editor_.deck().browserProfiles;
    bool same = profiles.size() == rows_.size() &&
                std::equal(profiles.begin(), profiles.end(), rows_.begin(),
                           [](const BrowserProfile& profile, const auto& row) { return profile.id == row->id; });
    if (!same) {
        rebuild();
    } else {
        for (std::size_t k = 0; k < rows_.size(); ++k) {
            if (!rows_[k]->editing) showName(*rows_[k], profiles[k]);
        }
    }
    // The profile asked about went (an undo): so does the question.
    if (pendingDeletion_ && !editor_.deck().profile(pendingDeletion_->id)) closeConfirmation();
}

void ProfilesSection::rebuild() {
    rebuilding_ = true;
    std::optional<Uuid> selected;
    if (auto* row = list_.get_selected_row()) {
        for (auto& r : rows_) {
            if (r->row == row) selected = r->id;
        }
    }
    for (auto& row : rows_) list_.remove(*row->row);
    rows_.clear();
    rebuilding_ = false;
    for (const auto& profile : editor_.deck().browserProfiles) {
        Row& row = makeRow(profile);
        list_.append(*row.row);
        if (selected == profile.id) list_.select_row(*row.row);
    }
    showCleared(stores_.recentlyClearedProfileId());
}

ProfilesSection::Row& ProfilesSection::makeRow(const BrowserProfile& profile) {
    auto owned = std::make_unique<Row>();
    Row& row = *owned;
    rows_.push_back(std::move(owned));
    row.id = profile.id;
    row.row = Gtk::make_managed<Gtk::ListBoxRow>();
    row.row->set_tooltip_text(_(BrowserProfileEdits::rowHelp));

    auto* box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 4);
    box->set_margin_start(10);
    box->set_margin_end(4);
    box->set_margin_top(4);
    box->set_margin_bottom(4);
    row.stack = Gtk::make_managed<Gtk::Stack>();
    row.stack->set_hexpand(true);
    row.name = Gtk::make_managed<Gtk::Label>();
    row.name->set_xalign(0);
    row.name->set_ellipsize(Pango::EllipsizeMode::END);
    row.entry = Gtk::make_managed<Gtk::Entry>();
    setAccessibleLabel(*row.entry, _("Profile name"));
    row.stack->add(*row.name, "name");
    row.stack->add(*row.entry, "entry");
    box->append(*row.stack);

    row.cleared = Gtk::make_managed<Gtk::Label>(_("Signed out"));
    row.cleared->add_css_class("success");
    row.cleared->add_css_class("caption");
    row.cleared->set_visible(false);
    box->append(*row.cleared);

    Uuid id = profile.id;
    auto* clear = iconButton("system-log-out-symbolic", _("Clear session (log out)"));
    clear->signal_clicked().connect([this, id] { stores_.clearProfileSession(id); });
    box->append(*clear);
    auto* remove = iconButton("user-trash-symbolic", _("Delete Profile…"));
    remove->signal_clicked().connect([this, id] { askToDelete(id); });
    box->append(*remove);
    row.row->set_child(*box);
    showName(row, profile);

    // A click selects (the list does that); a double click renames.
    auto clicks = Gtk::GestureClick::create();
    clicks->signal_pressed().connect([this, &row](int presses, double, double) {
        if (presses == 2 && !row.editing) startRename(row);
    });
    row.stack->add_controller(clicks);

    row.entry->signal_activate().connect([this, &row] { finishRename(row, true); });
    auto keys = Gtk::EventControllerKey::create();
    keys->signal_key_pressed().connect(
        [this, &row](guint keyval, guint, Gdk::ModifierType) {
            if (keyval != GDK_KEY_Escape) return false;
            finishRename(row, false);
            return true;
        },
        false);
    row.entry->add_controller(keys);
    auto focus = Gtk::EventControllerFocus::create();
    focus->signal_leave().connect([this, &row] {
        if (!rebuilding_) finishRename(row, true);
    });
    row.entry->add_controller(focus);
    return row;
}

void ProfilesSection::showName(Row& row, const BrowserProfile& profile) {
    std::string shown = BrowserProfileEdits::displayName(profile);
    row.name->set_text(shown);
    if (profile.name.empty()) {
        row.name->add_css_class("dim-label");
    } else {
        row.name->remove_css_class("dim-label");
    }
    setAccessibleLabel(*row.row, shown);
}

void ProfilesSection::startRename(Row& row) {
    const BrowserProfile* profile = editor_.deck().profile(row.id);
    if (!profile) return;
    row.editing = true;
    list_.select_row(*row.row);
    row.entry->set_text(profile->name);
    row.stack->set_visible_child("entry");
    row.entry->grab_focus();
    row.entry->select_region(0, -1);
}

void ProfilesSection::finishRename(Row& row, bool commit) {
    if (rebuilding_ || !row.editing) return;
    row.editing = false;
    std::string name = row.entry->get_text();
    row.stack->set_visible_child("name");
    row.row->grab_focus();  // the keyboard stays on the row, not the hidden entry
    Uuid id = row.id;
    if (commit) {
        editor_.edit(_("Rename Profile"), [&](Deck deck) {
            BrowserProfileEdits::rename(deck, id, name);
            return deck;
        });
    }
}

void ProfilesSection::askToDelete(const Uuid& id) {
    const BrowserProfile* profile = editor_.deck().profile(id);
    if (!profile || confirmation_) return;
    pendingDeletion_ = *profile;
    std::string title = BrowserProfileEdits::deletionTitle(*profile);
    auto* window = dynamic_cast<Gtk::Window*>(get_root());
    auto* dialog = ADW_MESSAGE_DIALOG(adw_message_dialog_new(window ? window->gobj() : nullptr, title.c_str(),
                                                             _(BrowserProfileEdits::deletionMessage)));
    adw_message_dialog_add_responses(dialog, "cancel", _("Cancel"), "delete", _("Delete"), nullptr);
    adw_message_dialog_set_response_appearance(dialog, "delete", ADW_RESPONSE_DESTRUCTIVE);
    adw_message_dialog_set_default_response(dialog, "cancel");
    adw_message_dialog_set_close_response(dialog, "cancel");
    confirmation_ = GObjectRef<AdwMessageDialog>::retain(dialog);
    responseConnection_ = SignalConnection::connect<const char*>(dialog, "response", [this](const char* response) {
        std::optional<BrowserProfile> profile = std::exchange(pendingDeletion_, std::nullopt);
        confirmation_.reset();
        if (!profile || std::string_view(response) != "delete") return;
        // The deck lets go first (its slides fall back to the shared
        // session); then the store goes, unless another deck still uses it.
        Uuid id = profile->id;
        bool removed = editor_.edit(_("Delete Profile"), [&](Deck deck) {
            BrowserProfileEdits::remove(deck, id);
            return deck;
        });
        if (removed) stores_.deleteProfileStore(id, windowId_);
    });
    gtk_window_present(GTK_WINDOW(dialog));
}

void ProfilesSection::closeConfirmation() {
    pendingDeletion_.reset();
    if (!confirmation_) return;
    GObjectRef<AdwMessageDialog> dialog = std::move(confirmation_);
    responseConnection_.disconnect();
    gtk_window_destroy(GTK_WINDOW(dialog.get()));
}

void ProfilesSection::showCleared(const std::optional<Uuid>& id) {
    for (auto& row : rows_) row->cleared->set_visible(id == row->id);
}

}  // namespace lectern
