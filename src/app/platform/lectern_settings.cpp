#include "app/platform/lectern_settings.h"

#include <glib/gi18n.h>

#include <string>

#include "app/build_info.h"

namespace lectern {

namespace {

void nameFor(GtkWidget* widget, const std::string& name) {
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL, name.c_str(), -1);
}

// A row of plain text whose second line wraps in full: statements are read,
// not skimmed, and must never be cut off.
GtkWidget* textRow(const std::string& title, const std::string& detail) {
    GtkWidget* row = adw_action_row_new();
    adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row), FALSE);
    adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), title.c_str());
    adw_action_row_set_subtitle(ADW_ACTION_ROW(row), detail.c_str());
    adw_action_row_set_subtitle_lines(ADW_ACTION_ROW(row), 0);
    adw_action_row_set_title_lines(ADW_ACTION_ROW(row), 0);
    // Read as the title, then the statement itself.
    gtk_accessible_update_property(GTK_ACCESSIBLE(row), GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, detail.c_str(), -1);
    return row;
}

GtkWidget* page(SettingsArea area, const char* icon) {
    GtkWidget* page = adw_preferences_page_new();
    std::string title = settingsAreaTitle(area);
    adw_preferences_page_set_title(ADW_PREFERENCES_PAGE(page), title.c_str());
    adw_preferences_page_set_icon_name(ADW_PREFERENCES_PAGE(page), icon);
    return page;
}

// A row that opens an address with the desktop's default handler.
GtkWidget* linkRow(const std::string& title, const std::string& shown, const std::string& uri) {
    GtkWidget* row = adw_action_row_new();
    adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row), FALSE);
    adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), title.c_str());
    adw_action_row_set_subtitle(ADW_ACTION_ROW(row), shown.c_str());
    adw_action_row_add_suffix(ADW_ACTION_ROW(row), gtk_image_new_from_icon_name("adw-external-link-symbolic"));
    gtk_list_box_row_set_activatable(GTK_LIST_BOX_ROW(row), TRUE);
    gtk_accessible_update_property(GTK_ACCESSIBLE(row), GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, shown.c_str(), -1);
    g_object_set_data_full(G_OBJECT(row), "lectern-uri", g_strdup(uri.c_str()), g_free);
    g_signal_connect(row, "activated", G_CALLBACK(+[](AdwActionRow* row, gpointer) {
                         const char* uri = static_cast<const char*>(g_object_get_data(G_OBJECT(row), "lectern-uri"));
                         auto* root = GTK_WINDOW(gtk_widget_get_root(GTK_WIDGET(row)));
                         gtk_show_uri(root, uri, GDK_CURRENT_TIME);
                     }),
                     nullptr);
    return row;
}

std::string hostOf(const std::string& address) {
    auto start = address.find("://");
    std::string rest = start == std::string::npos ? address : address.substr(start + 3);
    return rest.substr(0, rest.find('/'));
}

}  // namespace

LecternSettings::LecternSettings(AppUpdater* updater)
    : updater_(updater && updater->hasFeed() ? updater : nullptr),
      window_(GObjectRef<AdwPreferencesWindow>::retain(ADW_PREFERENCES_WINDOW(adw_preferences_window_new()))) {
    GtkWindow* window = GTK_WINDOW(window_.get());
    gtk_window_set_title(window, _("Preferences"));
    gtk_window_set_hide_on_close(window, TRUE);
    gtk_window_set_default_size(window, 640, 640);
    adw_preferences_window_set_search_enabled(window_.get(), FALSE);

    pages_[0] = generalPage();
    pages_[1] = statementsPage(SettingsArea::privacy, privacyStatements(updater_ ? updater_->feedHost() : ""),
                               "security-high-symbolic");
    pages_[2] = statementsPage(SettingsArea::disclaimer, disclaimerStatements(), "dialog-information-symbolic");
    pages_[3] = aboutPage();
    for (GtkWidget* page : pages_) adw_preferences_window_add(window_.get(), ADW_PREFERENCES_PAGE(page));

    if (updater_) {
        canCheck_ = updater_->canCheckForUpdatesChanged().connect([this](bool) { showUpdaterState(); });
        finished_ = updater_->finished().connect([this](const UpdateResult&) { showUpdaterState(); });
        showUpdaterState();
    }
}

LecternSettings::~LecternSettings() {
    // The window belongs to GTK's list of toplevels too: take it off the screen.
    if (window_) gtk_window_destroy(GTK_WINDOW(window_.get()));
}

void LecternSettings::present(GtkWindow* parent, std::optional<SettingsArea> area) {
    GtkWindow* window = GTK_WINDOW(window_.get());
    gtk_window_set_transient_for(window, parent);
    if (parent) {
        if (GtkApplication* app = gtk_window_get_application(parent)) gtk_window_set_application(window, app);
    }
    if (area) adw_preferences_window_set_visible_page(window_.get(), ADW_PREFERENCES_PAGE(pages_[int(*area)]));
    gtk_window_present(window);
}

SettingsArea LecternSettings::selectedArea() const {
    AdwPreferencesPage* shown = adw_preferences_window_get_visible_page(window_.get());
    for (int i = 0; i < 4; ++i) {
        if (ADW_PREFERENCES_PAGE(pages_[i]) == shown) return settingsAreas[i];
    }
    return SettingsArea::general;
}

GtkWidget* LecternSettings::generalPage() {
    GtkWidget* general = page(SettingsArea::general, "emblem-system-symbolic");
    GtkWidget* group = adw_preferences_group_new();
    adw_preferences_group_set_title(ADW_PREFERENCES_GROUP(group), _("Updates"));
    adw_preferences_page_add(ADW_PREFERENCES_PAGE(general), ADW_PREFERENCES_GROUP(group));

    if (!updater_) {
        adw_preferences_group_add(
            ADW_PREFERENCES_GROUP(group),
            textRow(_("No update checks"),
                    _("This build of Lectern never checks for new versions. Get new versions where you got this "
                      "one.")));
        return general;
    }

    automatic_ = gtk_switch_new();
    gtk_widget_set_valign(automatic_, GTK_ALIGN_CENTER);
    gtk_switch_set_active(GTK_SWITCH(automatic_), updater_->automaticallyChecksForUpdates());
    nameFor(automatic_, _("Check for updates automatically"));
    g_signal_connect(automatic_, "notify::active", G_CALLBACK(+[](GtkSwitch* toggle, GParamSpec*, gpointer data) {
                         static_cast<AppUpdater*>(data)->setAutomaticallyChecksForUpdates(
                             gtk_switch_get_active(toggle));
                     }),
                     updater_);
    GtkWidget* automaticRow = adw_action_row_new();
    adw_preferences_row_set_title(ADW_PREFERENCES_ROW(automaticRow), _("Check for updates automatically"));
    std::string once = std::string(_("Once a day, from ")) + updater_->feedHost();
    adw_action_row_set_subtitle(ADW_ACTION_ROW(automaticRow), once.c_str());
    adw_action_row_add_suffix(ADW_ACTION_ROW(automaticRow), automatic_);
    adw_action_row_set_activatable_widget(ADW_ACTION_ROW(automaticRow), automatic_);
    adw_preferences_group_add(ADW_PREFERENCES_GROUP(group), automaticRow);

    lastChecked_ = adw_action_row_new();
    adw_preferences_row_set_title(ADW_PREFERENCES_ROW(lastChecked_), _("Last checked"));
    spinner_ = gtk_spinner_new();
    adw_action_row_add_suffix(ADW_ACTION_ROW(lastChecked_), spinner_);
    checkNow_ = gtk_button_new_with_mnemonic(_("Check _Now"));
    gtk_widget_set_valign(checkNow_, GTK_ALIGN_CENTER);
    nameFor(checkNow_, _("Check Now"));
    g_signal_connect(checkNow_, "clicked", G_CALLBACK(+[](GtkButton*, gpointer data) {
                         static_cast<AppUpdater*>(data)->checkForUpdates();
                     }),
                     updater_);
    adw_action_row_add_suffix(ADW_ACTION_ROW(lastChecked_), checkNow_);
    adw_preferences_group_add(ADW_PREFERENCES_GROUP(group), lastChecked_);

    // What the last check found, once there has been one in this run.
    result_ = adw_action_row_new();
    adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(result_), FALSE);
    adw_action_row_set_title_lines(ADW_ACTION_ROW(result_), 0);
    download_ = gtk_link_button_new_with_label("", _("Download Page"));
    gtk_widget_set_valign(download_, GTK_ALIGN_CENTER);
    adw_action_row_add_suffix(ADW_ACTION_ROW(result_), download_);
    gtk_widget_set_visible(result_, FALSE);
    adw_preferences_group_add(ADW_PREFERENCES_GROUP(group), result_);
    return general;
}

void LecternSettings::showUpdaterState() {
    const bool checking = !updater_->canCheckForUpdates();
    gtk_widget_set_sensitive(checkNow_, !checking);
    gtk_spinner_set_spinning(GTK_SPINNER(spinner_), checking);
    gtk_widget_set_visible(spinner_, checking);

    auto last = updater_->lastChecked();
    std::string when = checking ? _("Checking…")
                                : lastCheckedText(last ? std::chrono::duration_cast<std::chrono::seconds>(
                                                             last->time_since_epoch())
                                                             .count()
                                                       : 0,
                                                  last.has_value());
    adw_action_row_set_subtitle(ADW_ACTION_ROW(lastChecked_), when.c_str());
    nameFor(lastChecked_, std::string(_("Last checked")) + ": " + when);

    const auto& result = updater_->lastResult();
    gtk_widget_set_visible(result_, result.has_value() && !checking);
    if (!result) return;
    adw_preferences_row_set_title(ADW_PREFERENCES_ROW(result_), result->message.c_str());
    nameFor(result_, result->message);
    const bool offered = result->outcome == UpdateResult::Outcome::available && !result->downloadPage.empty();
    gtk_widget_set_visible(download_, offered);
    if (offered) gtk_link_button_set_uri(GTK_LINK_BUTTON(download_), result->downloadPage.c_str());
    gtk_switch_set_active(GTK_SWITCH(automatic_), updater_->automaticallyChecksForUpdates());
}

GtkWidget* LecternSettings::statementsPage(SettingsArea area, const std::vector<AboutStatement>& statements,
                                           const char* icon) {
    GtkWidget* statementsPage = page(area, icon);
    GtkWidget* group = adw_preferences_group_new();
    for (const auto& statement : statements) {
        adw_preferences_group_add(ADW_PREFERENCES_GROUP(group), textRow(statement.title, statement.detail));
    }
    adw_preferences_page_add(ADW_PREFERENCES_PAGE(statementsPage), ADW_PREFERENCES_GROUP(group));
    return statementsPage;
}

GtkWidget* LecternSettings::aboutPage() {
    GtkWidget* about = page(SettingsArea::about, "help-about-symbolic");

    GtkWidget* heading = adw_preferences_group_new();
    GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 6);
    GtkWidget* icon = gtk_image_new_from_icon_name("com.corvane.Lectern");
    gtk_image_set_pixel_size(GTK_IMAGE(icon), 96);
    gtk_accessible_update_property(GTK_ACCESSIBLE(icon), GTK_ACCESSIBLE_PROPERTY_LABEL, _("Lectern"), -1);
    gtk_box_append(GTK_BOX(box), icon);
    GtkWidget* name = gtk_label_new("Lectern");
    gtk_widget_add_css_class(name, "title-1");
    gtk_box_append(GTK_BOX(box), name);
    std::string versionText = std::string(_("Version")) + " " + build::version;
    GtkWidget* version = gtk_label_new(versionText.c_str());
    gtk_widget_add_css_class(version, "dim-label");
    gtk_box_append(GTK_BOX(box), version);
    GtkWidget* description = gtk_label_new(lecternDescription().c_str());
    gtk_label_set_wrap(GTK_LABEL(description), TRUE);
    gtk_label_set_justify(GTK_LABEL(description), GTK_JUSTIFY_CENTER);
    gtk_label_set_max_width_chars(GTK_LABEL(description), 48);
    gtk_widget_set_margin_top(description, 6);
    gtk_box_append(GTK_BOX(box), description);
    adw_preferences_group_add(ADW_PREFERENCES_GROUP(heading), box);
    adw_preferences_page_add(ADW_PREFERENCES_PAGE(about), ADW_PREFERENCES_GROUP(heading));

    GtkWidget* links = adw_preferences_group_new();
    std::string contact = build::contact;
    adw_preferences_group_add(ADW_PREFERENCES_GROUP(links), linkRow(_("Contact"), contact, "mailto:" + contact));
    adw_preferences_group_add(ADW_PREFERENCES_GROUP(links),
                              linkRow(_("Website"), hostOf(build::website), build::website));
    adw_preferences_page_add(ADW_PREFERENCES_PAGE(about), ADW_PREFERENCES_GROUP(links));
    return about;
}

}  // namespace lectern
