#include "app/platform/start_window.h"

namespace lectern {

Glib::RefPtr<Gio::Menu> startMenu() {
    auto menu = Gio::Menu::create();
    auto open = Gio::Menu::create();
    open->append("Open…", "app.open");
    menu->append_section(open);
    auto app = Gio::Menu::create();
    app->append("Check for Updates…", "app.check-for-updates");
    app->append("About Lectern", "app.about");
    menu->append_section(app);
    return menu;
}

StartWindow::StartWindow() {
    set_title("Lectern");
    set_default_size(720, 560);
    auto* hiddenTitlebar = Gtk::make_managed<Gtk::Box>();
    hiddenTitlebar->set_visible(false);
    set_titlebar(*hiddenTitlebar);

    GtkWidget* header = adw_header_bar_new();
    auto* menuButton = Gtk::make_managed<Gtk::MenuButton>();
    menuButton->set_icon_name("open-menu-symbolic");
    menuButton->set_menu_model(startMenu());
    menuButton->set_primary(true);
    menuButton->set_tooltip_text("Main Menu");
    adw_header_bar_pack_end(ADW_HEADER_BAR(header), GTK_WIDGET(menuButton->gobj()));
    adw_header_bar_set_title_widget(ADW_HEADER_BAR(header), adw_window_title_new("Lectern", ""));

    auto* open = Gtk::make_managed<Gtk::Button>("_Open Deck…", true);
    open->set_action_name("app.open");
    open->set_halign(Gtk::Align::CENTER);
    open->add_css_class("pill");
    open->add_css_class("suggested-action");

    GtkWidget* status = adw_status_page_new();
    adw_status_page_set_icon_name(ADW_STATUS_PAGE(status), "x-office-presentation-symbolic");
    adw_status_page_set_title(ADW_STATUS_PAGE(status), "Open a Deck");
    adw_status_page_set_description(ADW_STATUS_PAGE(status),
                                    "A deck is a folder whose name ends in .lectern, "
                                    "holding its slides, notes and pictures.");
    adw_status_page_set_child(ADW_STATUS_PAGE(status), GTK_WIDGET(open->gobj()));
    gtk_widget_set_vexpand(status, true);

    toasts_ = GObjectRef<AdwToastOverlay>::take(ADW_TOAST_OVERLAY(adw_toast_overlay_new()));
    adw_toast_overlay_set_child(toasts_.get(), status);
    gtk_widget_set_vexpand(GTK_WIDGET(toasts_.get()), true);

    auto* content = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL);
    gtk_box_append(content->gobj(), header);
    gtk_box_append(content->gobj(), GTK_WIDGET(toasts_.get()));
    set_child(*content);
}

void StartWindow::showToast(const std::string& message) {
    char* escaped = g_markup_escape_text(message.c_str(), -1);
    AdwToast* toast = adw_toast_new(escaped);
    g_free(escaped);
    adw_toast_set_timeout(toast, 10);  // nothing else is on screen: leave time to read it
    adw_toast_overlay_add_toast(toasts_.get(), toast);
}

}  // namespace lectern
