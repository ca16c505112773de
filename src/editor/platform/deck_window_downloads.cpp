// Files downloaded from live pages in the window: a toast names each one
// where it went, with a button that shows it in the file manager, or says
// that it failed. Toasts never take the keyboard, so the stage keeps it.

#include <glib/gi18n.h>

#include "base/translation.h"
#include "editor/platform/deck_window.h"
#include "web/platform/web_downloads.h"

namespace lectern {

void DeckWindow::downloadEnded(const DownloadReport& report) {
    if (report.failure) {
        showToast(formatText(_("Couldn’t download “%s”: %s"), report.name.c_str(), report.failure->c_str()));
        return;
    }
    std::string text = formatText(_("Downloaded “%s” to %s"), report.name.c_str(),
                                  report.file.parent_path().filename().c_str());
    // The toast's title is markup.
    char* escaped = g_markup_escape_text(text.c_str(), -1);
    AdwToast* toast = adw_toast_new(escaped);
    g_free(escaped);
    adw_toast_set_button_label(toast, _("Show in Files"));
    auto* file = new std::filesystem::path(report.file);
    g_signal_connect_data(
        toast, "button-clicked", G_CALLBACK(+[](AdwToast*, gpointer data) {
            auto* file = static_cast<std::filesystem::path*>(data);
            showDownloadedFile(nullptr, *file);
        }),
        file, [](gpointer data, GClosure*) { delete static_cast<std::filesystem::path*>(data); },
        GConnectFlags(0));
    adw_toast_overlay_add_toast(toasts_.get(), toast);
}

}  // namespace lectern
