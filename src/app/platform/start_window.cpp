#include "app/platform/start_window.h"

#include <glib.h>
#include <glib/gi18n.h>

#include <algorithm>
#include <tuple>

#include "base/translation.h"
#include "editor/platform/deck_drop_target.h"

namespace lectern {

namespace fs = std::filesystem;

namespace {

void nameFor(GtkWidget* widget, const std::string& name) {
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL, name.c_str(), -1);
}

void setTarget(GtkWidget* actionable, const char* action, const std::string& parameter) {
    gtk_actionable_set_action_name(GTK_ACTIONABLE(actionable), action);
    gtk_actionable_set_action_target_value(GTK_ACTIONABLE(actionable), g_variant_new_string(parameter.c_str()));
}

GtkWidget* plainRow(const std::string& title, const std::string& subtitle) {
    GtkWidget* row = adw_action_row_new();
    // Titles come from decks and folder names: shown as they are, never as markup.
    adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row), false);
    adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), title.c_str());
    adw_action_row_set_subtitle(ADW_ACTION_ROW(row), subtitle.c_str());
    return row;
}

// "Today at 14:05", "Yesterday at 09:30", "3 March at 18:00", "3 March 2025".
std::string whenText(std::int64_t unix) {
    GDateTime* then = g_date_time_new_from_unix_local(unix);
    GDateTime* now = g_date_time_new_now_local();
    if (!then || !now) {
        if (then) g_date_time_unref(then);
        if (now) g_date_time_unref(now);
        return {};
    }
    auto dayOf = [](GDateTime* time) {
        return std::tuple{g_date_time_get_year(time), g_date_time_get_day_of_year(time)};
    };
    GDateTime* yesterday = g_date_time_add_days(now, -1);
    // TRANSLATORS: when a recovered deck was last saved (see g_date_time_format).
    const char* format = _("%-d %B %Y");
    if (dayOf(then) == dayOf(now)) {
        // TRANSLATORS: see g_date_time_format.
        format = _("Today at %H:%M");
    } else if (dayOf(then) == dayOf(yesterday)) {
        // TRANSLATORS: see g_date_time_format.
        format = _("Yesterday at %H:%M");
    } else if (g_date_time_get_year(then) == g_date_time_get_year(now)) {
        // TRANSLATORS: see g_date_time_format.
        format = _("%-d %B at %H:%M");
    }
    char* formatted = g_date_time_format(then, format);
    std::string text = formatted ? formatted : "";
    g_free(formatted);
    g_date_time_unref(yesterday);
    g_date_time_unref(now);
    g_date_time_unref(then);
    return text;
}

GtkWidget* pillButton(const char* label, const char* action, bool suggested) {
    GtkWidget* button = gtk_button_new_with_mnemonic(label);
    gtk_actionable_set_action_name(GTK_ACTIONABLE(button), action);
    gtk_widget_add_css_class(button, "pill");
    if (suggested) gtk_widget_add_css_class(button, "suggested-action");
    return button;
}

}  // namespace

Glib::RefPtr<Gio::Menu> startMenu() {
    auto menu = Gio::Menu::create();
    auto open = Gio::Menu::create();
    open->append(_("New Deck"), "app.new-deck");
    open->append(_("Open…"), "app.open");
    open->append(_("Open the Example Deck"), "app.open-example");
    menu->append_section(open);
    auto app = Gio::Menu::create();
    app->append(_("Preferences"), "app.preferences");
    app->append(_("Check for Updates…"), "app.check-for-updates");
    app->append(_("About Lectern"), "app.about");
    menu->append_section(app);
    return menu;
}

std::string displayFolder(const fs::path& folder) {
    const fs::path home = g_get_home_dir();
    auto relative = folder.lexically_relative(home);
    if (home.empty() || relative.empty() || *relative.begin() == "..") return folder.string();
    return relative == "." ? std::string("~") : "~/" + relative.string();
}

std::vector<RecentDeck> StartWindow::recentDecks(std::size_t limit) {
    std::vector<RecentDeck> decks;
    for (const auto& info : Gtk::RecentManager::get_default()->get_items()) {
        char* filename = g_filename_from_uri(info->get_uri().c_str(), nullptr, nullptr);
        if (!filename) continue;  // not a local file
        fs::path package = fs::path(filename).lexically_normal();
        g_free(filename);
        if (!package.has_filename()) package = package.parent_path();  // "Talk.lectern/"
        std::error_code ec;
        if (!package.filename().string().ends_with(".lectern") || !fs::is_directory(package, ec)) continue;
        // Through the C API: the date belongs to the item, and gtkmm's
        // get_modified() lets go of a reference it never took.
        GDateTime* modified = gtk_recent_info_get_modified(info->gobj());
        decks.push_back({package, modified ? g_date_time_to_unix(modified) : 0});
    }
    std::stable_sort(decks.begin(), decks.end(),
                     [](const RecentDeck& a, const RecentDeck& b) { return a.modifiedUnix > b.modifiedUnix; });
    if (decks.size() > limit) decks.resize(limit);
    return decks;
}

StartWindow::StartWindow(RecoveriesSource recoveries) : recoveries_(std::move(recoveries)) {
    set_title("Lectern");
    set_default_size(720, 780);
    auto* hiddenTitlebar = Gtk::make_managed<Gtk::Box>();
    hiddenTitlebar->set_visible(false);
    set_titlebar(*hiddenTitlebar);

    GtkWidget* header = adw_header_bar_new();
    auto* menuButton = Gtk::make_managed<Gtk::MenuButton>();
    menuButton->set_icon_name("open-menu-symbolic");
    menuButton->set_menu_model(startMenu());
    menuButton->set_primary(true);
    menuButton->set_tooltip_text(_("Main Menu"));
    nameFor(GTK_WIDGET(menuButton->gobj()), _("Main Menu"));
    adw_header_bar_pack_end(ADW_HEADER_BAR(header), GTK_WIDGET(menuButton->gobj()));
    adw_header_bar_set_title_widget(ADW_HEADER_BAR(header), adw_window_title_new("Lectern", ""));

    // One column of equally wide buttons, the first one suggested.
    GtkWidget* buttons = gtk_box_new(GTK_ORIENTATION_VERTICAL, 12);
    gtk_box_set_homogeneous(GTK_BOX(buttons), true);
    gtk_widget_set_halign(buttons, GTK_ALIGN_CENTER);
    gtk_box_append(GTK_BOX(buttons), pillButton(_("_New Deck"), "app.new-deck", true));
    gtk_box_append(GTK_BOX(buttons), pillButton(_("_Open…"), "app.open", false));
    gtk_box_append(GTK_BOX(buttons), pillButton(_("Open the _Example Deck"), "app.open-example", false));

    lists_ = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 24);
    GtkWidget* clamp = adw_clamp_new();
    adw_clamp_set_maximum_size(ADW_CLAMP(clamp), 560);
    adw_clamp_set_child(ADW_CLAMP(clamp), GTK_WIDGET(lists_->gobj()));

    GtkWidget* body = gtk_box_new(GTK_ORIENTATION_VERTICAL, 36);
    gtk_box_append(GTK_BOX(body), buttons);
    gtk_box_append(GTK_BOX(body), clamp);

    GtkWidget* status = adw_status_page_new();
    adw_status_page_set_icon_name(ADW_STATUS_PAGE(status), "com.corvane.Lectern");
    adw_status_page_set_title(ADW_STATUS_PAGE(status), "Lectern");
    adw_status_page_set_description(ADW_STATUS_PAGE(status),
                                    _("A deck is a folder whose name ends in .lectern, "
                                      "holding its slides, notes and pictures."));
    adw_status_page_set_child(ADW_STATUS_PAGE(status), body);
    // A smaller picture, so that the lists below start within sight.
    gtk_widget_add_css_class(status, "compact");
    gtk_widget_set_vexpand(status, true);

    toasts_ = GObjectRef<AdwToastOverlay>::take(ADW_TOAST_OVERLAY(adw_toast_overlay_new()));
    adw_toast_overlay_set_child(toasts_.get(), status);
    gtk_widget_set_vexpand(GTK_WIDGET(toasts_.get()), true);

    auto* content = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL);
    gtk_box_append(content->gobj(), header);
    gtk_box_append(content->gobj(), GTK_WIDGET(toasts_.get()));
    set_child(*content);

    // Copies are written and discarded, and decks opened, while the window
    // is away: what it lists is read again each time it comes back.
    signal_show().connect([this] { refresh(); });
    // A deck folder dragged in from the file manager opens like one chosen
    // with Open…; the whole window takes it.
    add_controller(makeDeckDropTarget(decksDropped_.make_slot()));
    recentChanged_ = Gtk::RecentManager::get_default()->signal_changed().connect([this] {
        if (get_visible()) refresh();
    });
}

StartWindow::~StartWindow() { recentChanged_.disconnect(); }

void StartWindow::refresh() {
    auto recovered = recoveries_ ? recoveries_() : std::vector<RecoveryEntry>{};
    auto recent = recentDecks();
    if (shown_ && shown_->first == recovered && shown_->second == recent) return;
    shown_.emplace(recovered, recent);
    while (GtkWidget* child = gtk_widget_get_first_child(GTK_WIDGET(lists_->gobj()))) {
        gtk_box_remove(lists_->gobj(), child);
    }
    if (!recovered.empty()) gtk_box_append(lists_->gobj(), recoveredGroup(recovered));
    if (!recent.empty()) gtk_box_append(lists_->gobj(), recentGroup(recent));
    lists_->set_visible(!recovered.empty() || !recent.empty());
}

GtkWidget* StartWindow::recoveredGroup(const std::vector<RecoveryEntry>& entries) {
    GtkWidget* group = adw_preferences_group_new();
    adw_preferences_group_set_title(ADW_PREFERENCES_GROUP(group), _("Recovered Decks"));
    adw_preferences_group_set_description(ADW_PREFERENCES_GROUP(group),
                                          _("Changes that were not saved when Lectern last stopped."));
    for (const auto& entry : entries) {
        std::string where = entry.package ? displayFolder(*entry.package) : _("never saved");
        GtkWidget* row = plainRow(entry.title, whenText(entry.savedAtUnix) + " \u00b7 " + where);
        nameFor(row, entry.title + ", " + whenText(entry.savedAtUnix) + ", " + where);

        const std::string id = entry.deckId.string();
        GtkWidget* discard = gtk_button_new_with_label(_("Discard"));
        setTarget(discard, "app.discard-recovery", id);
        gtk_widget_add_css_class(discard, "flat");
        gtk_widget_set_valign(discard, GTK_ALIGN_CENTER);
        nameFor(discard, formatText(_("Discard \u201c%s\u201d"), entry.title.c_str()));
        GtkWidget* recover = gtk_button_new_with_label(_("Recover"));
        setTarget(recover, "app.recover", id);
        gtk_widget_add_css_class(recover, "suggested-action");
        gtk_widget_set_valign(recover, GTK_ALIGN_CENTER);
        nameFor(recover, formatText(_("Recover \u201c%s\u201d"), entry.title.c_str()));
        adw_action_row_add_suffix(ADW_ACTION_ROW(row), discard);
        adw_action_row_add_suffix(ADW_ACTION_ROW(row), recover);
        adw_preferences_group_add(ADW_PREFERENCES_GROUP(group), row);
    }
    return group;
}

GtkWidget* StartWindow::recentGroup(const std::vector<RecentDeck>& decks) {
    GtkWidget* group = adw_preferences_group_new();
    adw_preferences_group_set_title(ADW_PREFERENCES_GROUP(group), _("Recent Decks"));
    for (const auto& deck : decks) {
        std::string name = deck.package.stem().string();
        std::string folder = displayFolder(deck.package.parent_path());
        GtkWidget* row = plainRow(name, folder);
        nameFor(row, name + ", " + folder);
        gtk_list_box_row_set_activatable(GTK_LIST_BOX_ROW(row), true);
        setTarget(row, "app.open-recent", deck.package.string());
        adw_action_row_add_suffix(ADW_ACTION_ROW(row), gtk_image_new_from_icon_name("go-next-symbolic"));
        adw_preferences_group_add(ADW_PREFERENCES_GROUP(group), row);
    }
    return group;
}

void StartWindow::showToast(const std::string& message) {
    char* escaped = g_markup_escape_text(message.c_str(), -1);
    AdwToast* toast = adw_toast_new(escaped);
    g_free(escaped);
    adw_toast_set_timeout(toast, 10);  // nothing else is on screen: leave time to read it
    adw_toast_overlay_add_toast(toasts_.get(), toast);
}

}  // namespace lectern
