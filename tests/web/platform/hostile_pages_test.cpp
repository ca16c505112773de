// Pages that try to leave the web, or that never report back, in the real
// web engine against a server on 127.0.0.1 in this process: a live page
// never shows a local file, a refused port or a redirect to a file fails
// with a reason at once, and HTTP authentication ends a check at once.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "base/glib_scheduler.h"
#include "support/platform/local_server.h"
#include "support/platform/page_outcome.h"
#include "support/temp_dir.h"
#include "web/page_probe.h"
#include "web/platform/web_sessions.h"
#include "web/platform/webkit_page.h"

namespace lectern {
namespace {

using testing::iterateFor;
using testing::iterateUntil;
using testing::LocalServer;
using Outcome = testing::PageOutcome;
using testing::TempDir;

class HostilePagesTest : public ::testing::Test {
protected:
    HostilePagesTest() {
        std::ofstream(secret) << "<title>Secret</title>top secret";
        server.route("/to-file", [this](const LocalServer::Request&) {
            LocalServer::Answer answer;
            answer.status = 302;
            answer.headers.push_back({"Location", "file://" + secret.string()});
            return answer;
        });
        // A page whose links and scripts try to put a local file on stage.
        server.route("/opener", [this](const LocalServer::Request&) {
            LocalServer::Answer answer;
            answer.body = "<!doctype html><title>Opener</title><a id=blank target=_blank href='file://" +
                          secret.string() + "'>new window</a><a id=same href='file://" + secret.string() +
                          "'>same window</a>";
            return answer;
        });
        server.route("/private", [](const LocalServer::Request&) {
            LocalServer::Answer answer;
            answer.status = 401;
            answer.headers.push_back({"WWW-Authenticate", "Basic realm=\"Staff\""});
            answer.body = "<title>Unauthorized</title>";
            return answer;
        });
    }

    std::string uriOf(WebKitPage& page) { return page.currentUrl(); }

    TempDir dir;
    std::filesystem::path secret = dir / "secret.html";
    WebSessions sessions{dir / "data", dir / "cache"};
    WebKitPageFactory pages{sessions};
    GLibScheduler scheduler;
    LocalServer server;
};

TEST_F(HostilePagesTest, ALocalFileNeverLoadsWhicheverWayTheNavigationStarts) {
    WebKitPage page(sessions.session(std::nullopt));
    // Scripts here stand in for a person's click: windows may open without one.
    webkit_settings_set_javascript_can_open_windows_automatically(webkit_web_view_get_settings(page.view()), TRUE);
    Outcome outcome(page);
    page.load(server.url("/opener"));
    ASSERT_TRUE(iterateUntil([&] { return outcome.finished == 1; }));

    // A new window, by a script and by a link with a target, and a plain
    // link: each is refused and the page stays as it was.
    for (const char* script : {"window.open('file://SECRET')", "document.getElementById('blank').click()",
                               "document.getElementById('same').click()", "location.href = 'file://SECRET'"}) {
        std::string body = script;
        if (auto at = body.find("SECRET"); at != std::string::npos) body.replace(at, 6, secret.string());
        bool ran = false;
        page.evaluateAsyncFunction(body, [&](Result<std::optional<std::string>>) { ran = true; });
        ASSERT_TRUE(iterateUntil([&] { return ran; }));
        iterateFor(300);
        EXPECT_EQ(page.currentUrl(), server.url("/opener")) << script;
    }
    EXPECT_TRUE(outcome.failures.empty());

    // A redirect to a file ends the load with the reason.
    page.load(server.url("/to-file"));
    ASSERT_TRUE(iterateUntil([&] { return !outcome.failures.empty(); }, 5000));
    EXPECT_EQ(outcome.failures[0], "Refused to open “file://" + secret.string() + "”: only http and https pages are shown");
    EXPECT_TRUE(page.lastLoadFailed());
    EXPECT_FALSE(page.currentUrl().starts_with("file:"));

    // Asked directly, the page refuses too.
    outcome.failures.clear();
    page.load("file://" + secret.string());
    ASSERT_EQ(outcome.failures.size(), 1u);
    EXPECT_TRUE(outcome.failures[0].starts_with("Refused to open “file:"));
}

TEST_F(HostilePagesTest, RefusedPortsFailAtOnceWithAReason) {
    for (const char* port : {"1", "9"}) {
        WebKitPage page(sessions.session(std::nullopt));
        Outcome outcome(page);
        auto started = std::chrono::steady_clock::now();
        page.load(std::string("http://127.0.0.1:") + port + "/");
        ASSERT_TRUE(iterateUntil([&] { return !outcome.failures.empty() || outcome.finished; }, 10000)) << port;
        EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(5));
        ASSERT_EQ(outcome.failures.size(), 1u) << port;
        EXPECT_FALSE(outcome.failures[0].empty());
        EXPECT_TRUE(page.lastLoadFailed());
    }
}

TEST_F(HostilePagesTest, ProbesOfRefusedPagesFailAndAuthenticationEndsAtOnce) {
    std::vector<std::pair<std::string, std::optional<WebCheckOutcome>>> probes{
        {server.url("/private"), std::nullopt},
        {server.url("/to-file"), std::nullopt},
        {"http://127.0.0.1:9/", std::nullopt}};
    std::vector<std::shared_ptr<PageProbe>> running;
    for (auto& [url, result] : probes) {
        running.push_back(PageProbe::start(pages, scheduler, url, std::nullopt,
                                           [&result](WebCheckOutcome outcome) { result = std::move(outcome); }));
    }
    auto started = std::chrono::steady_clock::now();
    ASSERT_TRUE(iterateUntil([&] {
        return std::all_of(probes.begin(), probes.end(), [](const auto& probe) { return probe.second.has_value(); });
    }));
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10)) << "none waits for its time limit";
    EXPECT_EQ(probes[0].second, WebCheckOutcome::failed("HTTP 401 \u2014 unauthorized"));
    EXPECT_EQ(probes[1].second->kind, WebCheckOutcome::Kind::failed);
    EXPECT_TRUE(probes[1].second->text.starts_with("Refused to open “file:")) << probes[1].second->text;
    EXPECT_EQ(probes[2].second->kind, WebCheckOutcome::Kind::failed) << probes[2].second->text;
}

}  // namespace
}  // namespace lectern
