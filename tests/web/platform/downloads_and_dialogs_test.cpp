// Downloads and script dialogs of live pages in the real web engine, against
// a server on 127.0.0.1 in this process: a page shown in a window downloads
// into the user's downloads folder under a name of its own, while pages in
// no window never download and have their dialogs answered at once.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/platform/local_server.h"
#include "support/platform/page_outcome.h"
#include "support/temp_dir.h"
#include "web/platform/web_downloads.h"
#include "web/platform/web_sessions.h"
#include "web/platform/webkit_page.h"

namespace lectern {
namespace {

using testing::iterateFor;
using testing::iterateUntil;
using testing::LocalServer;
using Outcome = testing::PageOutcome;
using testing::TempDir;

std::string contentsOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class DownloadsAndDialogsTest : public ::testing::Test {
protected:
    DownloadsAndDialogsTest() {
        // The desktop's user folders name a downloads folder of this test's own.
        std::filesystem::path config = g_get_user_config_dir();
        std::filesystem::create_directories(config);
        std::ofstream(config / "user-dirs.dirs") << "XDG_DOWNLOAD_DIR=\"" << (dir / "Fetched").string() << "\"\n";
        g_reload_user_special_dirs_cache();
        listener = WebDownloads::shared().listen([this](const DownloadReport& report) { reports.push_back(report); });

        server.route("/report", [](const LocalServer::Request&) {
            LocalServer::Answer answer;
            answer.contentType = "application/pdf";
            answer.headers.push_back({"Content-Disposition", "attachment; filename=\"report.pdf\""});
            answer.body = std::string("%PDF-1.4\0\x01\x02 bytes", 17);
            return answer;
        });
        server.route("/offer", [](const LocalServer::Request&) {
            LocalServer::Answer answer;
            answer.body = "<!doctype html><title>Offer</title><a id=get href=/report>Report</a>";
            return answer;
        });
        server.route("/dialogs", [](const LocalServer::Request&) {
            LocalServer::Answer answer;
            answer.body = "<!doctype html><title>Dialogs</title><script>alert('Hello');"
                          "window.answers = JSON.stringify([confirm('Sure?'), prompt('Name?', 'Ada')]);</script>";
            return answer;
        });
    }
    ~DownloadsAndDialogsTest() override {
        WebDownloads::shared().stopListening(listener);
        if (window) gtk_window_destroy(window);
    }

    // The page shown in a window of its own.
    void show(WebKitPage& page) {
        window = GTK_WINDOW(gtk_window_new());
        gtk_window_set_default_size(window, 800, 600);
        // In a box, which the page leaves by itself when it goes.
        GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
        gtk_box_append(GTK_BOX(box), page.widget());
        gtk_window_set_child(window, box);
        gtk_window_present(window);
    }

    std::string evaluate(WebKitPage& page, const std::string& body) {
        std::optional<std::string> value;
        page.evaluateAsyncFunction(body, [&](Result<std::optional<std::string>> result) {
            value = result.ok() ? result.value().value_or("") : "failed";
        });
        EXPECT_TRUE(iterateUntil([&] { return value.has_value(); }));
        return value.value_or("");
    }

    TempDir dir;
    WebSessions sessions{dir / "data", dir / "cache"};
    LocalServer server;
    std::vector<DownloadReport> reports;
    int listener = 0;
    GtkWindow* window = nullptr;
};

TEST_F(DownloadsAndDialogsTest, AShownPageDownloadsIntoTheDownloadsFolderWithoutOverwriting) {
    WebKitPage page(sessions.session(std::nullopt));
    show(page);
    Outcome outcome(page);
    page.load(server.url("/offer"));
    ASSERT_TRUE(iterateUntil([&] { return outcome.finished == 1; }));

    for (std::size_t round = 1; round <= 2; ++round) {
        evaluate(page, "document.getElementById('get').click()");
        ASSERT_TRUE(iterateUntil([&] { return reports.size() == round; }));
    }
    auto folder = dir / "Fetched";
    EXPECT_EQ(reports[0].file, folder / "report.pdf");
    EXPECT_EQ(reports[1].file, folder / "report (1).pdf");
    for (const auto& report : reports) {
        EXPECT_FALSE(report.failure) << *report.failure;
        EXPECT_EQ(report.window, GTK_ROOT(window));
        EXPECT_EQ(contentsOf(report.file), std::string("%PDF-1.4\0\x01\x02 bytes", 17));
    }
    EXPECT_EQ(reports[1].name, "report (1).pdf");
    // The page that offered the file is still the one shown, with no failure.
    EXPECT_EQ(page.currentUrl(), server.url("/offer"));
    EXPECT_TRUE(outcome.failures.empty());
    EXPECT_FALSE(page.lastLoadFailed());
}

TEST_F(DownloadsAndDialogsTest, APageInNoWindowNeverDownloadsAndItsDialogsDoNotStopIt) {
    WebKitPage page(sessions.session(std::nullopt));
    Outcome outcome(page);
    page.load(server.url("/dialogs"));
    ASSERT_TRUE(iterateUntil([&] { return outcome.finished == 1; }, 10000)) << "an alert held the load up";
    EXPECT_EQ(evaluate(page, "return window.answers"), "[false,null]");

    page.load(server.url("/report"));
    ASSERT_TRUE(iterateUntil([&] { return !page.isLoading(); }));
    iterateFor(300);
    EXPECT_TRUE(reports.empty());
    EXPECT_FALSE(std::filesystem::exists(dir / "Fetched"));
}

TEST_F(DownloadsAndDialogsTest, AShownPageDrawsItsDialogsInsideItself) {
    WebKitPage page(sessions.session(std::nullopt));
    show(page);
    int dialogs = 0;
    g_signal_connect(page.view(), "script-dialog", G_CALLBACK(+[](WebKitWebView*, WebKitScriptDialog*, gpointer data) {
                         ++*static_cast<int*>(data);
                         return gboolean(FALSE);  // the engine shows it
                     }),
                     &dialogs);
    GListModel* toplevels = gtk_window_get_toplevels();
    guint windows = g_list_model_get_n_items(toplevels);
    page.load(server.url("/dialogs"));
    ASSERT_TRUE(iterateUntil([&] { return dialogs == 1; }));
    iterateFor(300);
    EXPECT_EQ(g_list_model_get_n_items(toplevels), windows) << "a dialog opened a window of its own";
}

}  // namespace
}  // namespace lectern
