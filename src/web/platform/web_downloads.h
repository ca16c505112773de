#pragma once

#include <webkit/webkit.h>

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace lectern {

// How a download from a live page ended, for the window the page was in.
struct DownloadReport {
    // The window that showed the page when the download began; compare
    // only, it may be gone.
    const GtkRoot* window = nullptr;
    // Where the file went (empty when it failed before it had a place).
    std::filesystem::path file;
    // The file's name as saved, or as the site suggested when it failed early.
    std::string name;
    // Why it failed; none when the file is complete.
    std::optional<std::string> failure;
};

// The downloads of the web engine's sessions. A download from a page shown
// in a window goes to the user's downloads folder under a name of its own
// (nothing is overwritten), and the windows hear how it ended. Pages in no
// window (loaded ahead, checked) never download: theirs are cancelled.
// Main thread only.
class WebDownloads {
public:
    static WebDownloads& shared();

    // Takes charge of the downloads that start in `session`.
    void follow(WebKitNetworkSession* session);

    using Listener = std::function<void(const DownloadReport&)>;
    // Every report goes to every listener until it stops listening.
    int listen(Listener listener);
    void stopListening(int id);

    // Where downloads go now: $XDG_DOWNLOAD_DIR, or ~/Downloads.
    static std::filesystem::path folder();

private:
    WebDownloads() = default;
    void started(WebKitDownload* download);
    void report(const DownloadReport& report);

    std::map<int, Listener> listeners_;
    int nextId_ = 1;
};

// Shows a downloaded file in the file manager (its folder, where the file
// manager cannot point at the file).
void showDownloadedFile(GtkWindow* parent, const std::filesystem::path& file);

}  // namespace lectern
