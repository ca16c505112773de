#include "web/platform/browser_profiles_window.h"

#include <utility>

#include "web/browser_profile_edits.h"
#include "web/web_slide_checker.h"

namespace lectern {

namespace {

GtkWidget* flatButton(const char* icon, const char* tooltip) {
    GtkWidget* button = gtk_button_new_from_icon_name(icon);
    gtk_widget_set_tooltip_text(button, tooltip);
    gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
    gtk_widget_add_css_class(button, "flat");
    return button;
}

// "08  The product", as the web slide check lists slides.
std::string slideLabel(std::size_t index, const Slide& slide) {
    WebSlideChecker::Entry entry;
    entry.index = index;
    entry.title = slide.title;
    return WebSlideChecker::rowTitle(entry);
}

}  // namespace

BrowserProfilesWindow::~BrowserProfilesWindow() { close(); }

void BrowserProfilesWindow::update(const Deck& deck, const std::optional<Uuid>& recentlyCleared) {
    if (!window_ || !gtk_widget_get_visible(GTK_WIDGET(window_.get()))) return;
    pendingDeck_ = deck;
    pendingCleared_ = recentlyCleared;
    if (pendingRebuild_) return;
    pendingRebuild_ = g_idle_add(
        [](gpointer data) {
            auto* self = static_cast<BrowserProfilesWindow*>(data);
            self->pendingRebuild_ = 0;
            self->rebuild(self->pendingDeck_, self->pendingCleared_);
            return G_SOURCE_REMOVE;
        },
        this);
}

void BrowserProfilesWindow::close() {
    if (pendingRebuild_) g_source_remove(std::exchange(pendingRebuild_, 0));
    if (confirmation_) gtk_window_destroy(GTK_WINDOW(confirmation_.get()));
    confirmation_.reset();
    connections_.clear();
    if (window_) gtk_window_destroy(GTK_WINDOW(window_.get()));
    window_.reset();
    page_.reset();
}

void BrowserProfilesWindow::show(Gtk::Window& parent, const Deck& deck, const std::optional<Uuid>& recentlyCleared) {
    if (!window_) {
        window_ = GObjectRef<AdwPreferencesWindow>::retain(ADW_PREFERENCES_WINDOW(adw_preferences_window_new()));
        gtk_window_set_title(GTK_WINDOW(window_.get()), "Browser Profiles");
        gtk_window_set_transient_for(GTK_WINDOW(window_.get()), parent.gobj());
        gtk_window_set_modal(GTK_WINDOW(window_.get()), TRUE);
        gtk_window_set_default_size(GTK_WINDOW(window_.get()), 620, 640);
        adw_preferences_window_set_search_enabled(window_.get(), FALSE);
        gtk_window_set_hide_on_close(GTK_WINDOW(window_.get()), TRUE);
    }
    if (pendingRebuild_) g_source_remove(std::exchange(pendingRebuild_, 0));
    rebuild(deck, recentlyCleared);
    gtk_window_present(GTK_WINDOW(window_.get()));
}

void BrowserProfilesWindow::rebuild(const Deck& deck, const std::optional<Uuid>& recentlyCleared) {
    connections_.clear();
    if (page_) adw_preferences_window_remove(window_.get(), page_.get());
    page_ = GObjectRef<AdwPreferencesPage>::retain(ADW_PREFERENCES_PAGE(adw_preferences_page_new()));
    auto connect = [this](gpointer instance, const char* signal, std::function<void()> handler) {
        connections_.push_back(SignalConnection::connect<>(instance, signal, std::move(handler)));
    };

    // The deck's profiles.
    GtkWidget* profiles = adw_preferences_group_new();
    adw_preferences_group_set_title(ADW_PREFERENCES_GROUP(profiles), "Profiles of This Deck");
    adw_preferences_group_set_description(
        ADW_PREFERENCES_GROUP(profiles),
        "Each profile keeps its own sign-ins, cookies and site data, so slides can show the same site as "
        "different people.");
    GtkWidget* add = gtk_button_new_from_icon_name("list-add-symbolic");
    gtk_widget_set_tooltip_text(add, "Add Profile");
    gtk_widget_add_css_class(add, "flat");
    adw_preferences_group_set_header_suffix(ADW_PREFERENCES_GROUP(profiles), add);
    connect(add, "clicked", [this] { requests_.add(); });

    for (const BrowserProfile& profile : deck.browserProfiles) {
        GtkWidget* row = adw_entry_row_new();
        adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), "Name");
        gtk_editable_set_text(GTK_EDITABLE(row), profile.name.c_str());
        adw_entry_row_set_show_apply_button(ADW_ENTRY_ROW(row), TRUE);
        if (profile.name.empty()) {
            adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), BrowserProfileEdits::untitledName);
        }
        Uuid id = profile.id;
        connect(row, "apply", [this, row, id] { requests_.rename(id, gtk_editable_get_text(GTK_EDITABLE(row))); });

        if (recentlyCleared == profile.id) {
            GtkWidget* cleared = gtk_label_new("Signed out");
            gtk_widget_add_css_class(cleared, "success");
            adw_entry_row_add_suffix(ADW_ENTRY_ROW(row), cleared);
        }
        GtkWidget* clear = flatButton("system-log-out-symbolic", "Clear session (log out)");
        connect(clear, "clicked", [this, id] { requests_.clearSession(id); });
        adw_entry_row_add_suffix(ADW_ENTRY_ROW(row), clear);
        GtkWidget* remove = flatButton("user-trash-symbolic", "Delete Profile…");
        connect(remove, "clicked", [this, profile] { confirmDeletion(profile); });
        adw_entry_row_add_suffix(ADW_ENTRY_ROW(row), remove);
        adw_preferences_group_add(ADW_PREFERENCES_GROUP(profiles), row);
    }
    if (deck.browserProfiles.empty()) {
        GtkWidget* none = adw_action_row_new();
        adw_preferences_row_set_title(ADW_PREFERENCES_ROW(none), "No profiles yet");
        adw_action_row_set_subtitle(ADW_ACTION_ROW(none), "Every web slide uses the shared session.");
        adw_preferences_group_add(ADW_PREFERENCES_GROUP(profiles), none);
    }
    adw_preferences_page_add(page_.get(), ADW_PREFERENCES_GROUP(profiles));

    // Which profile each web slide signs in with.
    GtkWidget* slides = adw_preferences_group_new();
    adw_preferences_group_set_title(ADW_PREFERENCES_GROUP(slides), "Web Slides");
    std::vector<const char*> names{"Shared session"};
    std::vector<std::string> profileNames;
    for (const auto& profile : deck.browserProfiles) profileNames.push_back(BrowserProfileEdits::displayName(profile));
    for (const auto& name : profileNames) names.push_back(name.c_str());
    names.push_back(nullptr);
    bool anyWebSlide = false;
    for (std::size_t index = 0; index < deck.slides.size(); ++index) {
        const Slide& slide = deck.slides[index];
        if (slide.layout != SlideLayout::web) continue;
        anyWebSlide = true;
        GtkWidget* row = adw_combo_row_new();
        adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row), FALSE);
        adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), slideLabel(index, slide).c_str());
        adw_action_row_set_subtitle(ADW_ACTION_ROW(row), slide.url ? slide.url->c_str() : "No URL set");
        GtkStringList* model = gtk_string_list_new(names.data());
        adw_combo_row_set_model(ADW_COMBO_ROW(row), G_LIST_MODEL(model));
        g_object_unref(model);
        guint selected = 0;
        for (std::size_t k = 0; k < deck.browserProfiles.size(); ++k) {
            if (slide.browserProfileId == deck.browserProfiles[k].id) selected = static_cast<guint>(k + 1);
        }
        adw_combo_row_set_selected(ADW_COMBO_ROW(row), selected);
        std::vector<Uuid> ids;
        for (const auto& profile : deck.browserProfiles) ids.push_back(profile.id);
        connect(row, "notify::selected", [this, row, index, ids] {
            guint chosen = adw_combo_row_get_selected(ADW_COMBO_ROW(row));
            std::optional<Uuid> profile;
            if (chosen > 0 && chosen <= ids.size()) profile = ids[chosen - 1];
            requests_.useProfile(index, profile);
        });
        adw_preferences_group_add(ADW_PREFERENCES_GROUP(slides), row);
    }
    if (anyWebSlide) adw_preferences_page_add(page_.get(), ADW_PREFERENCES_GROUP(slides));

    // The session every slide without a profile shares, in every deck.
    GtkWidget* shared = adw_preferences_group_new();
    adw_preferences_group_set_title(ADW_PREFERENCES_GROUP(shared), "Shared Session");
    GtkWidget* sharedRow = adw_action_row_new();
    adw_preferences_row_set_title(ADW_PREFERENCES_ROW(sharedRow), "Clear Shared Web Session");
    adw_action_row_set_subtitle(ADW_ACTION_ROW(sharedRow),
                                "Signs out of every site that slides without a profile show, in every deck.");
    GtkWidget* clearShared = gtk_button_new_with_label("Clear");
    gtk_widget_set_valign(clearShared, GTK_ALIGN_CENTER);
    connect(clearShared, "clicked", [this] { requests_.clearSharedSession(); });
    adw_action_row_add_suffix(ADW_ACTION_ROW(sharedRow), clearShared);
    adw_preferences_group_add(ADW_PREFERENCES_GROUP(shared), sharedRow);
    adw_preferences_page_add(page_.get(), ADW_PREFERENCES_GROUP(shared));

    adw_preferences_window_add(window_.get(), page_.get());
}

void BrowserProfilesWindow::confirmDeletion(const BrowserProfile& profile) {
    if (confirmation_) return;
    std::string title = BrowserProfileEdits::deletionTitle(profile);
    auto* dialog = ADW_MESSAGE_DIALOG(
        adw_message_dialog_new(GTK_WINDOW(window_.get()), title.c_str(), BrowserProfileEdits::deletionMessage));
    adw_message_dialog_add_responses(dialog, "cancel", "Cancel", "delete", "Delete", nullptr);
    adw_message_dialog_set_response_appearance(dialog, "delete", ADW_RESPONSE_DESTRUCTIVE);
    adw_message_dialog_set_default_response(dialog, "cancel");
    adw_message_dialog_set_close_response(dialog, "cancel");
    confirmation_ = GObjectRef<AdwMessageDialog>::retain(dialog);
    Uuid id = profile.id;
    connections_.push_back(SignalConnection::connect<const char*>(dialog, "response", [this, id](const char* response) {
        confirmation_.reset();
        if (std::string_view(response) == "delete") requests_.remove(id);
    }));
    gtk_window_present(GTK_WINDOW(dialog));
}

}  // namespace lectern
