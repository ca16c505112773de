// Sign-ins made with session cookies (no expiry) in the real web engine: they
// outlive a restart once saved, the engine's own cookie file keeps the rest,
// and clearing a store signs it out for good.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "support/platform/local_server.h"
#include "web/platform/web_sessions.h"
#include "web/platform/webkit_page.h"
#include "web/session_cookie_file.h"

namespace lectern {
namespace {

using testing::iterateUntil;
using testing::LocalServer;

class LoadWaiter : public WebPageDelegate {
public:
    void loadFinished() override { done = true; }
    void loadFailed(const std::string& message, bool cancelled) override {
        if (!cancelled) ADD_FAILURE() << message;
        done = !cancelled;
    }
    bool done = false;
};

class SessionCookiesTest : public ::testing::Test {
protected:
    SessionCookiesTest() {
        // The site signs in with a session cookie, and remembers a setting
        // for a day.
        server.route("/signin", [](const LocalServer::Request&) {
            LocalServer::Answer answer;
            answer.headers.push_back({"Set-Cookie", "sid=ada; Path=/; HttpOnly; SameSite=Strict"});
            answer.headers.push_back({"Set-Cookie", "theme=dark; Path=/; Max-Age=86400"});
            answer.body = "<title>Signed in</title>";
            return answer;
        });
        server.page("/whoami", "Who");
    }
    ~SessionCookiesTest() override {
        sessions.reset();
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
    }

    void load(const std::optional<Uuid>& profile, const std::string& path) {
        WebKitPage page(sessions->session(profile));
        LoadWaiter waiter;
        page.setDelegate(&waiter);
        page.load(server.url(path));
        EXPECT_TRUE(iterateUntil([&] { return waiter.done; })) << path;
        page.setDelegate(nullptr);
    }
    // The cookies the server saw on a new page of the profile, sorted.
    std::string cookiesSent(const std::optional<Uuid>& profile) {
        load(profile, "/whoami");
        const auto& last = server.seen().back();
        std::string header = last.headers.count("cookie") ? last.headers.at("cookie") : "";
        std::vector<std::string> parts;
        for (std::size_t start = 0; start < header.size();) {
            std::size_t end = std::min(header.find("; ", start), header.size());
            parts.push_back(header.substr(start, end - start));
            start = end + 2;
        }
        std::sort(parts.begin(), parts.end());
        std::string sorted;
        for (const auto& part : parts) sorted += (sorted.empty() ? "" : " ") + part;
        return sorted;
    }
    // Ends the process as the application does, and starts it again.
    void restart() {
        sessions->saveSessionCookies();
        sessions = std::make_unique<WebSessions>(root / "data", root / "cache");
    }

    LocalServer server;
    std::filesystem::path root = std::filesystem::temp_directory_path() / ("lectern-web-" + Uuid::random().string());
    std::unique_ptr<WebSessions> sessions = std::make_unique<WebSessions>(root / "data", root / "cache");
};

TEST_F(SessionCookiesTest, ASessionCookieSignInOutlivesARestartUntilTheStoreIsCleared) {
    Uuid alice = Uuid::random();
    load(alice, "/signin");
    load(std::nullopt, "/signin");
    ASSERT_EQ(cookiesSent(alice), "sid=ada theme=dark");
    // The sign-in is on disk soon after it happens, without waiting for the end.
    for (const auto& profile : {std::optional<Uuid>(alice), std::optional<Uuid>()}) {
        EXPECT_TRUE(iterateUntil(
            [&] { return std::filesystem::exists(sessions->dataFolder(profile) / sessionCookieFileName); }));
    }

    restart();
    EXPECT_EQ(cookiesSent(alice), "sid=ada theme=dark") << "the first page after a restart is signed in";
    EXPECT_EQ(cookiesSent(std::nullopt), "sid=ada theme=dark") << "the shared session too";
    // Only the session cookie is ours to keep; the engine keeps the other.
    auto saved = readSessionCookies(sessions->dataFolder(alice) / sessionCookieFileName);
    ASSERT_EQ(saved.size(), 1u);
    EXPECT_EQ(saved[0], (SessionCookie{"sid", "ada", "127.0.0.1", "/", false, true, SessionCookie::SameSite::strict}));

    bool erased = false;
    sessions->erase(alice, [&] { erased = true; });
    ASSERT_TRUE(iterateUntil([&] { return erased; }));
    EXPECT_FALSE(std::filesystem::exists(sessions->dataFolder(alice) / sessionCookieFileName));
    restart();
    EXPECT_EQ(cookiesSent(alice), "") << "cleared stays signed out after a restart";
    EXPECT_EQ(cookiesSent(std::nullopt), "sid=ada theme=dark") << "clearing a profile leaves the shared session";
}

}  // namespace
}  // namespace lectern
