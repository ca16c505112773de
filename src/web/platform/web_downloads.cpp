#include "web/platform/web_downloads.h"

#include <glib/gi18n.h>

#include <memory>
#include <system_error>

#include "web/download_target.h"

namespace lectern {

namespace {

// What is known of one download while it runs, kept on the download.
struct Running {
    const GtkRoot* window = nullptr;
    std::filesystem::path file;
    std::string name;
    std::optional<std::string> failure;
    bool cancelledHidden = false;
};

constexpr const char* runningKey = "lectern-download";

Running* runningOf(WebKitDownload* download) {
    return static_cast<Running*>(g_object_get_data(G_OBJECT(download), runningKey));
}

}  // namespace

WebDownloads& WebDownloads::shared() {
    static auto* downloads = new WebDownloads;
    return *downloads;
}

std::filesystem::path WebDownloads::folder() {
    return downloadFolder(g_get_user_special_dir(G_USER_DIRECTORY_DOWNLOAD), g_get_home_dir());
}

void WebDownloads::follow(WebKitNetworkSession* session) {
    g_signal_connect(session, "download-started", G_CALLBACK(+[](WebKitNetworkSession*, WebKitDownload* download,
                                                                  gpointer data) {
                         static_cast<WebDownloads*>(data)->started(download);
                     }),
                     this);
}

int WebDownloads::listen(Listener listener) {
    int id = nextId_++;
    listeners_.emplace(id, std::move(listener));
    return id;
}

void WebDownloads::stopListening(int id) { listeners_.erase(id); }

void WebDownloads::report(const DownloadReport& report) {
    // A listener may stop listening while it hears.
    auto listeners = listeners_;
    for (auto& [id, listener] : listeners) listener(report);
}

void WebDownloads::started(WebKitDownload* download) {
    auto* running = new Running;
    g_object_set_data_full(G_OBJECT(download), runningKey, running,
                           [](gpointer data) { delete static_cast<Running*>(data); });
    WebKitWebView* view = webkit_download_get_web_view(download);
    running->window = view ? gtk_widget_get_root(GTK_WIDGET(view)) : nullptr;
    if (!running->window) {
        // Nobody would see it: a page loaded ahead or checked downloads nothing.
        running->cancelledHidden = true;
        webkit_download_cancel(download);
        return;
    }
    g_signal_connect(download, "decide-destination",
                     G_CALLBACK(+[](WebKitDownload* download, const char* suggested, gpointer) -> gboolean {
                         Running* running = runningOf(download);
                         running->name = safeDownloadName(suggested ? suggested : "");
                         auto file = claimDownloadFile(WebDownloads::folder(), running->name);
                         if (!file) {
                             running->failure = _("The downloads folder can’t be written to.");
                             webkit_download_cancel(download);
                             return TRUE;
                         }
                         running->file = *file;
                         running->name = file->filename().string();
                         // The claimed, empty file is ours to replace.
                         webkit_download_set_allow_overwrite(download, TRUE);
                         webkit_download_set_destination(download, file->c_str());
                         return TRUE;
                     }),
                     nullptr);
    g_signal_connect(download, "failed", G_CALLBACK(+[](WebKitDownload* download, GError* error, gpointer) {
                         Running* running = runningOf(download);
                         if (!running->failure) running->failure = error ? error->message : _("The download failed.");
                     }),
                     nullptr);
    g_signal_connect(download, "finished", G_CALLBACK(+[](WebKitDownload* download, gpointer data) {
                         Running* running = runningOf(download);
                         if (running->cancelledHidden) return;
                         if (running->failure && !running->file.empty()) {
                             // The claimed name is free again unless something was kept.
                             std::error_code error;
                             if (std::filesystem::file_size(running->file, error) == 0 && !error) {
                                 std::filesystem::remove(running->file, error);
                             }
                         }
                         if (running->name.empty()) {
                             WebKitURIRequest* request = webkit_download_get_request(download);
                             const char* uri = request ? webkit_uri_request_get_uri(request) : nullptr;
                             running->name = safeDownloadName(uri ? uri : "");
                         }
                         static_cast<WebDownloads*>(data)->report(
                             DownloadReport{running->window, running->file, running->name, running->failure});
                     }),
                     this);
}

void showDownloadedFile(GtkWindow* parent, const std::filesystem::path& file) {
    // The file manager's own interface selects the file in its folder;
    // without one, the folder opens.
    std::string uri = "file://" + file.string();
    if (char* escaped = g_filename_to_uri(file.c_str(), nullptr, nullptr)) {
        uri = escaped;
        g_free(escaped);
    }
    struct Fallback {
        GtkWindow* parent;
        std::string folder;
    };
    std::string folder = "file://" + file.parent_path().string();
    if (char* escaped = g_filename_to_uri(file.parent_path().c_str(), nullptr, nullptr)) {
        folder = escaped;
        g_free(escaped);
    }
    GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (!bus) {
        gtk_show_uri(parent, folder.c_str(), GDK_CURRENT_TIME);
        return;
    }
    const char* uris[] = {uri.c_str(), nullptr};
    auto* fallback = new Fallback{parent, folder};
    if (parent) g_object_add_weak_pointer(G_OBJECT(parent), reinterpret_cast<gpointer*>(&fallback->parent));
    g_dbus_connection_call(
        bus, "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1", "org.freedesktop.FileManager1",
        "ShowItems", g_variant_new("(^ass)", uris, ""), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
        [](GObject* source, GAsyncResult* result, gpointer data) {
            std::unique_ptr<Fallback> fallback(static_cast<Fallback*>(data));
            GError* error = nullptr;
            GVariant* answer = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
            if (answer) g_variant_unref(answer);
            if (fallback->parent) {
                g_object_remove_weak_pointer(G_OBJECT(fallback->parent), reinterpret_cast<gpointer*>(&fallback->parent));
            }
            if (!error) return;
            g_error_free(error);
            gtk_show_uri(fallback->parent, fallback->folder.c_str(), GDK_CURRENT_TIME);
        },
        fallback);
    g_object_unref(bus);
}

}  // namespace lectern
