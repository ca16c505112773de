// A file that the live page on stage downloads: it lands in the user's
// downloads folder, a toast names it, and the talk stays where it was.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "editor/platform/deck_window.h"
#include "gui_harness.h"
#include "support/deck_fixtures.h"
#include "support/platform/local_server.h"
#include "support/temp_dir.h"
#include "web/platform/web_card.h"

namespace lectern {
namespace {

using testing::LocalServer;
using testing::pumpUntil;

class PageDownloadWindowTest : public testing::WindowTest {
protected:
    LocalServer server;
    testing::TempDir dir;
};

TEST_F(PageDownloadWindowTest, AFileFromThePageOnStageIsNamedInAToastAndTheTalkStays) {
    server.route("/report", [](const LocalServer::Request&) {
        LocalServer::Answer answer;
        answer.contentType = "application/pdf";
        answer.headers.push_back({"Content-Disposition", "attachment; filename=\"report.pdf\""});
        answer.body = "%PDF-1.4 report";
        return answer;
    });
    server.route("/offer", [](const LocalServer::Request&) {
        LocalServer::Answer answer;
        answer.body = "<!doctype html><title>Offer</title><a id=get href=/report>Report</a>";
        return answer;
    });
    // The desktop's user folders name a downloads folder of this test's own.
    const std::filesystem::path config = g_get_user_config_dir();
    ASSERT_NE(config, std::filesystem::path(g_get_home_dir()) / ".config") << "the tests' own settings folder";
    std::filesystem::create_directories(config);
    std::ofstream(config / "user-dirs.dirs") << "XDG_DOWNLOAD_DIR=\"" << (dir / "Fetched").string() << "\"\n";
    g_reload_user_special_dirs_cache();

    Deck deck;
    Slide page = Slide::make(SlideLayout::web);
    page.url = server.url("/offer");
    deck.slides = {page, Slide::make(SlideLayout::regular)};
    DeckWindow& window = open(deck);
    window.state().toggleEditor();
    auto loaded = [&] {
        const WebPaneController* pane = window.webCard().pane();
        return pane && pane->status().kind == WebLoadStatus::Kind::loaded;
    };
    ASSERT_TRUE(pumpUntil(loaded, 10));

    window.webCard().pane()->page()->evaluateAsyncFunction("document.getElementById('get').click()", [](auto) {});
    const auto file = dir / "Fetched" / "report.pdf";
    ASSERT_TRUE(pumpUntil([&] { return std::filesystem::exists(file); }, 10));
    EXPECT_TRUE(pumpUntil([&] { return testing::showsText(window, "Downloaded “report.pdf” to Fetched"); }));
    EXPECT_EQ(testing::readText(file), "%PDF-1.4 report");
    EXPECT_EQ(window.state().current(), 0);
    EXPECT_TRUE(loaded());
    EXPECT_EQ(window.webCard().pane()->page()->currentUrl(), server.url("/offer")) << "the page offering it stays";
    testing::screenshot("page-download-toast");
}

}  // namespace
}  // namespace lectern
