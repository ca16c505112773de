// Live pages in the real web engine, against a server on 127.0.0.1 in this
// process: which pages share cookies, what survives a restart, what clearing
// erases, and that the pane and the prefetcher never fetch a page twice.
#include <gtest/gtest.h>

#include <filesystem>

#include "base/glib_scheduler.h"
#include "support/platform/local_server.h"
#include "web/platform/web_sessions.h"
#include "web/platform/webkit_page.h"
#include "web/profile_stores.h"
#include "web/web_pane_controller.h"
#include "web/web_prefetcher.h"

namespace lectern {
namespace {

using testing::iterateFor;
using testing::iterateUntil;
using testing::LocalServer;

// Waits for a page's load to end, as its owner would see it.
class LoadWatcher : public WebPageDelegate {
public:
    explicit LoadWatcher(WebPage& page) : page_(page) { page_.setDelegate(this); }
    ~LoadWatcher() override { page_.setDelegate(nullptr); }
    bool load(const std::string& url) {
        done_ = false;
        page_.load(url);
        return iterateUntil([this] { return done_; });
    }
    void loadFinished() override { done_ = true; }
    void loadFailed(const std::string& message, bool cancelled) override {
        if (!cancelled) ADD_FAILURE() << message;
        done_ = !cancelled;
    }

private:
    WebPage& page_;
    bool done_ = false;
};

std::vector<HttpCookie> cookiesOf(WebSessions& sessions, const std::optional<Uuid>& profile) {
    std::optional<std::vector<HttpCookie>> cookies;
    sessions.allCookies(profile, [&](std::vector<HttpCookie> all) { cookies = std::move(all); });
    EXPECT_TRUE(iterateUntil([&] { return cookies.has_value(); }));
    return cookies.value_or(std::vector<HttpCookie>{});
}

class LivePagesTest : public ::testing::Test {
protected:
    LivePagesTest() {
        // Signing in sets a cookie that lasts a day; /whoami tells who the
        // browser says it is.
        server.route("/signin", [](const LocalServer::Request&) {
            LocalServer::Answer answer;
            answer.headers.push_back({"Set-Cookie", "session=ada; Path=/; Max-Age=86400"});
            answer.body = "<title>Signed in</title>";
            return answer;
        });
        server.route("/whoami", [](const LocalServer::Request& request) {
            LocalServer::Answer answer;
            auto cookie = request.headers.find("cookie");
            answer.body = "<title>" + (cookie == request.headers.end() ? std::string("nobody") : cookie->second) + "</title>";
            return answer;
        });
        server.page("/a", "Page A", 50);
        server.page("/b", "Page B", 50);
    }
    ~LivePagesTest() override {
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
    }

    std::string lastCookieHeader() const {
        for (auto it = server.seen().rbegin(); it != server.seen().rend(); ++it) {
            if (it->path == "/whoami") return it->headers.count("cookie") ? it->headers.at("cookie") : "";
        }
        return "<no request>";
    }
    std::string whoami(WebSessions& sessions, const std::optional<Uuid>& profile) {
        WebKitPage page(sessions.session(profile));
        LoadWatcher watcher(page);
        EXPECT_TRUE(watcher.load(server.url("/whoami")));
        return lastCookieHeader();
    }
    void signIn(WebSessions& sessions, const std::optional<Uuid>& profile) {
        WebKitPage page(sessions.session(profile));
        LoadWatcher watcher(page);
        EXPECT_TRUE(watcher.load(server.url("/signin")));
    }

    LocalServer server;
    std::filesystem::path root = std::filesystem::temp_directory_path() / ("lectern-web-" + Uuid::random().string());
    std::unique_ptr<WebSessions> sessions = std::make_unique<WebSessions>(root / "data", root / "cache");
};

TEST_F(LivePagesTest, ProfilesKeepTheirOwnCookiesAndTheSharedSessionIsShared) {
    Uuid alice = Uuid::random(), bob = Uuid::random();
    signIn(*sessions, alice);
    EXPECT_EQ(whoami(*sessions, alice), "session=ada") << "a second slide of the same profile is signed in";
    EXPECT_EQ(whoami(*sessions, bob), "") << "another profile is not";
    EXPECT_EQ(whoami(*sessions, std::nullopt), "") << "nor is the shared session";

    signIn(*sessions, std::nullopt);
    EXPECT_EQ(whoami(*sessions, std::nullopt), "session=ada") << "every profile-less slide, of any deck, shares it";
    EXPECT_EQ(whoami(*sessions, bob), "");

    auto cookies = cookiesOf(*sessions, alice);
    ASSERT_EQ(cookies.size(), 1u);
    EXPECT_EQ(cookies[0].name, "session");
    EXPECT_EQ(cookies[0].value, "ada");
    EXPECT_TRUE(cookiesOf(*sessions, bob).empty());
}

TEST_F(LivePagesTest, ASignInOutlivesTheSessionsAndClearingErasesIt) {
    Uuid alice = Uuid::random();
    signIn(*sessions, alice);
    // The web engine writes cookies to disk on its own time.
    iterateFor(500);
    sessions = std::make_unique<WebSessions>(root / "data", root / "cache");
    EXPECT_EQ(whoami(*sessions, alice), "session=ada") << "still signed in after a restart";
    EXPECT_TRUE(std::filesystem::exists(sessions->dataFolder(alice) / "cookies.sqlite"));

    bool erased = false;
    sessions->erase(alice, [&] { erased = true; });
    ASSERT_TRUE(iterateUntil([&] { return erased; }));
    EXPECT_TRUE(cookiesOf(*sessions, alice).empty());
    EXPECT_EQ(whoami(*sessions, alice), "") << "clearing signs the profile out";
}

TEST_F(LivePagesTest, AStoreIsRemovedOnlyOnceNothingHoldsIt) {
    Uuid alice = Uuid::random();
    signIn(*sessions, alice);
    auto page = std::make_unique<WebKitPage>(sessions->session(alice));
    EXPECT_FALSE(sessions->removeStore(alice).ok()) << "the cache holds it";
    sessions->dropCached(alice);
    EXPECT_FALSE(sessions->removeStore(alice).ok()) << "a page holds it";
    EXPECT_TRUE(std::filesystem::exists(sessions->dataFolder(alice)));
    page.reset();
    iterateFor(100);
    EXPECT_TRUE(sessions->removeStore(alice).ok());
    EXPECT_FALSE(std::filesystem::exists(sessions->dataFolder(alice)));
    EXPECT_FALSE(std::filesystem::exists(sessions->cacheFolder(alice)));
}

TEST_F(LivePagesTest, DeletingAProfileAnotherOpenDeckUsesErasesNothing) {
    GLibScheduler scheduler;
    PreferencesStore preferences(root / "preferences.json");
    ProfilesInUse inUse;
    ProfileStores stores(*sessions, scheduler, preferences, inUse, [] {});
    Uuid alice = Uuid::random(), deleting = Uuid::random(), other = Uuid::random();
    inUse.publish(deleting, std::set<Uuid>{alice});
    inUse.publish(other, std::set<Uuid>{alice});
    signIn(*sessions, alice);

    bool done = false;
    stores.deleteProfileStore(alice, deleting, [&] { done = true; });
    ASSERT_TRUE(iterateUntil([&] { return done; }));
    EXPECT_EQ(whoami(*sessions, alice), "session=ada") << "the other deck is still signed in";
    EXPECT_TRUE(std::filesystem::exists(sessions->dataFolder(alice)));

    // Once no other deck uses it, deleting erases and removes the store.
    inUse.remove(other);
    done = false;
    stores.deleteProfileStore(alice, deleting, [&] { done = true; });
    ASSERT_TRUE(iterateUntil([&] { return done; }));
    EXPECT_FALSE(std::filesystem::exists(sessions->dataFolder(alice)));
    EXPECT_TRUE(stores.pendingRemovals().empty());
}

TEST_F(LivePagesTest, PrefetchedPagesComeOnStageWithoutASecondRequestAndZoomNeverReloads) {
    GLibScheduler scheduler;
    WebKitPageFactory pages(*sessions);
    WebPrefetcher prefetcher(pages, scheduler);
    auto registry = std::make_shared<LiveWebViewRegistry>();
    Uuid window = Uuid::random();
    std::vector<Slide> slides(2);
    for (std::size_t i = 0; i < slides.size(); ++i) {
        slides[i].layout = SlideLayout::web;
        slides[i].url = server.url(i == 0 ? "/a" : "/b");
    }

    std::unique_ptr<WebPaneController> pane;
    auto show = [&](std::size_t index) {
        prefetcher.setWanted(window, WebPrefetcher::wantedKeys(slides, static_cast<std::int64_t>(index), false));
        pane.reset();
        const Slide& slide = slides[index];
        pane = std::make_unique<WebPaneController>(
            WebPaneController::Inputs{*slide.url, std::nullopt, slide.id, slide.webZoom}, pages, scheduler,
            &prefetcher, window, registry);
        return iterateUntil([&] { return pane->status().kind == WebLoadStatus::Kind::loaded; });
    };

    ASSERT_TRUE(show(0));
    // B loads hidden meanwhile.
    ASSERT_TRUE(iterateUntil([&] { return server.requests("/b") == 1; }));
    iterateFor(300);
    ASSERT_TRUE(show(1));
    EXPECT_TRUE(pane->adopted());
    ASSERT_TRUE(show(0));
    EXPECT_TRUE(pane->adopted()) << "A was kept while B was on stage";
    EXPECT_EQ(server.requests("/a"), 1);
    EXPECT_EQ(server.requests("/b"), 1);

    auto inputs = pane->inputs();
    inputs.zoom = 1.5;
    pane->update(inputs);
    iterateFor(300);
    EXPECT_DOUBLE_EQ(pane->page()->zoom(), 1.5);
    EXPECT_EQ(server.requests("/a"), 1) << "zooming makes no request";
    EXPECT_EQ(registry->lookup(slides[0].id), pane->page());
    pane.reset();
    prefetcher.terminate();
}

TEST_F(LivePagesTest, APaneShowsAFailureAndAnswersPageScripts) {
    GLibScheduler scheduler;
    WebKitPageFactory pages(*sessions);
    auto registry = std::make_shared<LiveWebViewRegistry>();
    Uuid slide = Uuid::random();
    WebPaneController pane({server.url("/a"), std::nullopt, slide, 1.0}, pages, scheduler, nullptr, std::nullopt,
                           registry);
    ASSERT_TRUE(iterateUntil([&] { return pane.status().kind == WebLoadStatus::Kind::loaded; }, 5000))
        << int(pane.status().kind) << " " << pane.status().message << " " << server.requests("/a");

    auto run = [&](const std::string& body) {
        std::optional<Result<std::optional<std::string>>> result;
        registry->lookup(slide)->evaluateAsyncFunction(body, [&](auto answer) { result = std::move(answer); });
        EXPECT_TRUE(iterateUntil([&] { return result.has_value(); }));
        return result.value_or(Error{"no answer"});
    };
    auto answer = run("return 40 + 2;");
    ASSERT_TRUE(answer.ok());
    EXPECT_EQ(*answer, std::optional<std::string>("42"));
    answer = run("document.title = 'Changed';");
    ASSERT_TRUE(answer.ok());
    EXPECT_EQ(*answer, std::nullopt);
    answer = run("return await new Promise(done => setTimeout(() => done(document.title), 20));");
    ASSERT_TRUE(answer.ok()) << "promises are awaited, in the page's own world";
    EXPECT_EQ(*answer, std::optional<std::string>("Changed"));
    answer = run("throw new Error('No such button');");
    ASSERT_FALSE(answer.ok());
    EXPECT_NE(answer.error().message.find("No such button"), std::string::npos) << answer.error().message;

    // A server that is gone: the failure is shown, not thrown.
    std::string closed = std::make_unique<LocalServer>()->url("/");
    WebPaneController failing({closed, std::nullopt, Uuid::random(), 1.0}, pages, scheduler, nullptr,
                              std::nullopt, registry);
    ASSERT_TRUE(iterateUntil([&] { return failing.status().kind == WebLoadStatus::Kind::failed; }));
    EXPECT_FALSE(failing.status().message.empty());
}

}  // namespace
}  // namespace lectern
