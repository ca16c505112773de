#include "app/platform/about_window.h"

#include <adwaita.h>
#include <glib/gi18n.h>
#include <webkit/webkit.h>

#include <string>

#include "app/about_statements.h"
#include "app/build_info.h"

namespace lectern {

namespace {

// What a bug report needs to know about this copy: its version and those of
// the libraries that draw it and show web pages.
std::string debugInfo() {
    auto version = [](unsigned major, unsigned minor, unsigned micro) {
        return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(micro);
    };
    std::string info = std::string("Lectern ") + build::version + "\n";
    info += "GTK " + version(gtk_get_major_version(), gtk_get_minor_version(), gtk_get_micro_version()) + "\n";
    info += "libadwaita " + version(adw_get_major_version(), adw_get_minor_version(), adw_get_micro_version()) + "\n";
    info += "WebKitGTK " +
            version(webkit_get_major_version(), webkit_get_minor_version(), webkit_get_micro_version()) + "\n";
    return info;
}

}  // namespace

GtkWindow* showAboutWindow(GtkWindow* parent) {
    GtkWidget* about = adw_about_window_new();
    AdwAboutWindow* window = ADW_ABOUT_WINDOW(about);
    if (parent) gtk_window_set_transient_for(GTK_WINDOW(about), parent);
    adw_about_window_set_application_name(window, "Lectern");
    adw_about_window_set_application_icon(window, "com.corvane.Lectern");
    // An early version whose look and files may still change: it says so
    // instead of a number (the number is in the debugging information).
    adw_about_window_set_version(window, _("Alpha"));
    adw_about_window_set_developer_name(window, "Corvane");
    adw_about_window_set_comments(window, lecternDescription().c_str());
    adw_about_window_set_website(window, build::website);
    adw_about_window_set_issue_url(window, build::issues);
    adw_about_window_set_copyright(window, "© 2026 Corvane");
    adw_about_window_set_license_type(window, GTK_LICENSE_MIT_X11);
    const char* developers[] = {"Corvane", nullptr};
    adw_about_window_set_developers(window, developers);
    const char* builtWith[] = {"GTK https://gtk.org", "libadwaita https://gnome.pages.gitlab.gnome.org/libadwaita/",
                               "WebKitGTK https://webkitgtk.org", "libsoup https://libsoup.org",
                               "Cairo https://cairographics.org", "Pango https://pango.gnome.org",
                               "JSON for Modern C++ https://json.nlohmann.me", nullptr};
    adw_about_window_add_acknowledgement_section(window, _("Built with"), builtWith);
    std::string info = debugInfo();
    adw_about_window_set_debug_info(window, info.c_str());
    adw_about_window_set_debug_info_filename(window, "lectern-debug-info.txt");
    gtk_window_present(GTK_WINDOW(about));
    return GTK_WINDOW(about);
}

}  // namespace lectern
