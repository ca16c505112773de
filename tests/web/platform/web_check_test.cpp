// The web slide check in the real web engine against a server on 127.0.0.1
// in this process: how real answers become outcomes, how many pages load at
// once, and lectern-cli check as a program, on the test display and on a
// private one.
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "base/platform/gobject_ref.h"
#include "model/deck_package.h"
#include "base/glib_scheduler.h"
#include "support/platform/local_server.h"
#include "support/temp_dir.h"
#include "web/platform/web_sessions.h"
#include "web/platform/webkit_page.h"
#include "web/page_pictures.h"
#include "web/web_slide_checker.h"

namespace lectern {
namespace {

using testing::iterateUntil;
using testing::LocalServer;
using testing::TempDir;
using Kind = WebCheckOutcome::Kind;

}  // namespace

void PrintTo(const WebCheckOutcome& outcome, std::ostream* out) {
    const char* kinds[] = {"ok", "redirected", "failed"};
    *out << kinds[static_cast<int>(outcome.kind)] << "(" << outcome.text << ")";
}

namespace {

Slide webSlide(const std::string& title, std::optional<std::string> url) {
    Slide slide = Slide::make(SlideLayout::web);
    slide.title = title;
    slide.url = std::move(url);
    return slide;
}

LocalServer::Answer redirectTo(const std::string& location) {
    LocalServer::Answer answer;
    answer.status = 302;
    answer.headers.push_back({"Location", location});
    return answer;
}

// A port on 127.0.0.1 where nothing listens.
int closedPort() {
    int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ::bind(fd, reinterpret_cast<sockaddr*>(&address), size);
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
    ::close(fd);
    return ntohs(address.sin_port);
}

// The engine's pages, watched to see that none outlives its check.
class WatchedPages : public WebPageFactory {
public:
    explicit WatchedPages(WebPageFactory& pages) : pages_(pages) {}
    std::shared_ptr<WebPage> makePage(const std::optional<Uuid>& profileId) override {
        auto page = pages_.makePage(profileId);
        made.push_back(page);
        return page;
    }
    bool allGone() const {
        return std::all_of(made.begin(), made.end(), [](const auto& page) { return page.expired(); });
    }
    std::vector<std::weak_ptr<WebPage>> made;

private:
    WebPageFactory& pages_;
};

class WebCheckTest : public ::testing::Test {
protected:
    WebCheckTest() {
        server.page("/dashboard", "Dashboard");
        server.route("/broken", [](const LocalServer::Request&) {
            LocalServer::Answer answer;
            answer.status = 500;
            answer.body = "<!doctype html><title>Oops</title><p>Something broke, but here is a page.</p>";
            return answer;
        });
        server.route("/app", [](const LocalServer::Request&) { return redirectTo("/login?next=/app"); });
        server.page("/login", "Sign in");
        // Pages that stay at their own address: one asks for a password,
        // as a site whose session ended does; the other only holds
        // password fields that are not shown.
        server.route("/console", [](const LocalServer::Request&) {
            LocalServer::Answer answer;
            answer.body = "<!doctype html><title>Console</title><form method=post>"
                          "<input name=user><input type=password name=password><button>Sign in</button></form>";
            return answer;
        });
        // An app that asks its server who is signed in before it draws
        // anything: its form comes after the load.
        server.route("/spa", [](const LocalServer::Request&) {
            LocalServer::Answer answer;
            answer.body = "<!doctype html><title>Admin</title><div id=app></div><script>"
                          "setTimeout(() => { document.getElementById('app').innerHTML ="
                          " '<form><input name=user><input type=password></form>'; }, 600);</script>";
            return answer;
        });
        server.route("/settings", [](const LocalServer::Request&) {
            LocalServer::Answer answer;
            answer.body = "<!doctype html><title>Settings</title><h1>Settings</h1>"
                          "<input type=password style=\"display:none\">"
                          "<div style=\"display:none\"><input type=password></div>"
                          "<div style=\"visibility:hidden\"><input type=password></div>"
                          "<input type=password style=\"width:0;height:0;border:0;padding:0\">";
            return answer;
        });
        server.route("/stuck", [](const LocalServer::Request&) {
            LocalServer::Answer answer;
            answer.never = true;
            return answer;
        });
    }

    TempDir stores;
    WebSessions sessions{stores / "data", stores / "cache"};
    WebKitPageFactory pages{sessions};
    GLibScheduler scheduler;
    LocalServer server;
};

TEST_F(WebCheckTest, RealAnswersBecomeOutcomes) {
    Deck deck;
    deck.slides = {webSlide("Dashboard", server.url("/dashboard")),
                   webSlide("Missing", server.url("/missing")),
                   webSlide("Broken", server.url("/broken")),
                   webSlide("App", server.url("/app")),
                   webSlide("Other host", server.localhostUrl("/dashboard")),
                   webSlide("Stuck", server.url("/stuck")),
                   webSlide("Closed", "http://127.0.0.1:" + std::to_string(closedPort()) + "/")};
    WatchedPages watched(pages);
    WebSlideChecker checker(watched, scheduler);
    checker.run(deck);
    ASSERT_TRUE(iterateUntil([&] { return !checker.isRunning(); }, 40000));

    const auto& entries = checker.entries();
    EXPECT_EQ(entries[0].outcome, WebCheckOutcome::ok());
    EXPECT_EQ(entries[1].outcome, WebCheckOutcome::failed("HTTP 404 \u2014 not found"));
    // The body of an error page loads, yet the status decides.
    EXPECT_EQ(entries[2].outcome, WebCheckOutcome::failed("HTTP 500 \u2014 internal server error"));
    EXPECT_EQ(entries[3].outcome, WebCheckOutcome::redirected("Redirected to 127.0.0.1/login"));
    EXPECT_EQ(entries[4].outcome, WebCheckOutcome::ok());
    EXPECT_EQ(entries[5].outcome, WebCheckOutcome::failed("Timed out after 20 s"));
    ASSERT_TRUE(entries[6].outcome);
    EXPECT_EQ(entries[6].outcome->kind, Kind::failed);
    EXPECT_FALSE(entries[6].outcome->text.empty());
    EXPECT_EQ(checker.summary(), "5 of 7 need attention");
    // Every page, the one that never answered too, went with its probe.
    EXPECT_EQ(watched.made.size(), 7u);
    EXPECT_TRUE(iterateUntil([&] { return watched.allGone(); }, 2000));
}

TEST_F(WebCheckTest, APasswordFieldOnShowIsASignInForm) {
    Deck deck;
    deck.slides = {webSlide("Console", server.url("/console")), webSlide("Settings", server.url("/settings")),
                   webSlide("Admin", server.url("/spa"))};
    WebSlideChecker checker(pages, scheduler);
    checker.run(deck);
    ASSERT_TRUE(iterateUntil([&] { return !checker.isRunning(); }, 30000));
    EXPECT_EQ(checker.entries()[0].outcome, WebCheckOutcome::redirected("Shows a sign-in form"));
    EXPECT_EQ(checker.entries()[1].outcome, WebCheckOutcome::ok());
    EXPECT_EQ(checker.entries()[2].outcome, WebCheckOutcome::redirected("Shows a sign-in form")) << "drawn late";
}

TEST_F(WebCheckTest, PagesThatLoadWellLeaveAPictureOfTheStageSize) {
    // The check's pages are in no window, laid out at the stage's size.
    pages.setHiddenSize(640, 360);
    InlineWorker worker;
    PagePictures pictures(stores / "pictures", worker);
    Deck deck;
    deck.slides = {webSlide("Dashboard", server.url("/dashboard")), webSlide("Missing", server.url("/missing"))};
    WebSlideChecker checker(pages, scheduler);
    checker.setPictures(&pictures);
    checker.run(deck);
    ASSERT_TRUE(iterateUntil([&] { return !checker.isRunning(); }, 30000));
    ASSERT_TRUE(iterateUntil([&] { return pictures.find(deck.slides[0].id, *deck.slides[0].url).has_value(); }, 10000));
    auto picture = pictures.find(deck.slides[0].id, *deck.slides[0].url);
    GdkTexture* texture = gdk_texture_new_from_filename(picture->file.c_str(), nullptr);
    ASSERT_NE(texture, nullptr) << "a PNG the stage can show";
    EXPECT_EQ(gdk_texture_get_width(texture), 640);
    EXPECT_EQ(gdk_texture_get_height(texture), 360);
    g_object_unref(texture);
    EXPECT_FALSE(pictures.find(deck.slides[1].id, *deck.slides[1].url)) << "a page that failed leaves none";
}

TEST_F(WebCheckTest, NeverMoreThanThreePagesAtOnce) {
    Deck deck;
    for (int n = 1; n <= 8; ++n) {
        std::string path = "/slow" + std::to_string(n);
        server.page(path, "Slow " + std::to_string(n), 400 + 100 * n);
        deck.slides.push_back(webSlide("Slow", server.url(path)));
    }
    WebSlideChecker checker(pages, scheduler);
    checker.run(deck);
    ASSERT_TRUE(iterateUntil([&] { return !checker.isRunning(); }, 30000));

    EXPECT_EQ(checker.summary(), "All 8 web slides loaded");
    // Requests are open from their arrival to their answer. Which of the
    // pages started together arrives first is the engine's affair.
    EXPECT_LE(server.mostOpenAtOnce(), 3);
    EXPECT_GE(server.mostOpenAtOnce(), 2);
    for (int n = 1; n <= 8; ++n) EXPECT_EQ(server.requests("/slow" + std::to_string(n)), 1) << n;
}

TEST_F(WebCheckTest, SameSiteWithOrWithoutWwwThroughAProxy) {
    // The server stands in as the proxy of the session, so other host names
    // reach it without any name lookup, and nothing leaves the machine.
    server.route("/start", [](const LocalServer::Request&) { return redirectTo("http://www.example.test/landing"); });
    server.page("/landing", "Landing");
    server.page("/sso/login", "Sign in");
    server.route("/expired", [](const LocalServer::Request&) { return redirectTo("http://www.example.test/sso/login"); });
    auto* proxy = webkit_network_proxy_settings_new(server.url("").c_str(), nullptr);
    webkit_network_session_set_proxy_settings(sessions.session(std::nullopt), WEBKIT_NETWORK_PROXY_MODE_CUSTOM, proxy);
    webkit_network_proxy_settings_free(proxy);

    Deck deck;
    deck.slides = {webSlide("Start", "http://example.test/start"), webSlide("Expired", "http://example.test/expired")};
    WebSlideChecker checker(pages, scheduler);
    checker.run(deck);
    ASSERT_TRUE(iterateUntil([&] { return !checker.isRunning(); }, 30000));
    EXPECT_EQ(checker.entries()[0].outcome, WebCheckOutcome::ok());
    EXPECT_EQ(checker.entries()[1].outcome, WebCheckOutcome::redirected("Redirected to www.example.test/sso/login"));
    // Every request went through the proxy with its own host name.
    ASSERT_EQ(server.seen().size(), 4u);
    for (const auto& request : server.seen()) EXPECT_TRUE(request.headers.at("host").ends_with("example.test"));
}

struct ProgramRun {
    int status = -1;
    std::string out;
    std::string err;
};

// Runs lectern-cli with the given changes to this process's environment
// (an empty value removes the variable), turning the main loop meanwhile so
// that the server answers.
ProgramRun runCli(const std::vector<std::string>& arguments,
                  const std::vector<std::pair<std::string, std::string>>& environment = {}) {
    auto launcher = GObjectRef<GSubprocessLauncher>::take(
        g_subprocess_launcher_new(GSubprocessFlags(G_SUBPROCESS_FLAGS_STDOUT_PIPE | G_SUBPROCESS_FLAGS_STDERR_PIPE)));
    for (const auto& [name, value] : environment) {
        if (value.empty()) g_subprocess_launcher_unsetenv(launcher.get(), name.c_str());
        else g_subprocess_launcher_setenv(launcher.get(), name.c_str(), value.c_str(), TRUE);
    }
    std::vector<const char*> argv{LECTERN_CLI_PATH};
    for (const auto& argument : arguments) argv.push_back(argument.c_str());
    argv.push_back(nullptr);
    GError* error = nullptr;
    auto process = GObjectRef<GSubprocess>::take(g_subprocess_launcher_spawnv(launcher.get(), argv.data(), &error));
    ProgramRun run;
    if (!process) {
        ADD_FAILURE() << error->message;
        g_error_free(error);
        return run;
    }
    struct Output {
        bool done = false;
        char* out = nullptr;
        char* err = nullptr;
    } output;
    g_subprocess_communicate_utf8_async(
        process.get(), nullptr, nullptr,
        [](GObject* source, GAsyncResult* result, gpointer data) {
            auto* output = static_cast<Output*>(data);
            g_subprocess_communicate_utf8_finish(G_SUBPROCESS(source), result, &output->out, &output->err, nullptr);
            output->done = true;
        },
        &output);
    if (!iterateUntil([&] { return output.done; }, 60000)) {
        g_subprocess_force_exit(process.get());
        iterateUntil([&] { return output.done; }, 5000);
        ADD_FAILURE() << "lectern-cli did not end";
    }
    g_subprocess_wait(process.get(), nullptr, nullptr);
    run.status = g_subprocess_get_if_exited(process.get()) ? g_subprocess_get_exit_status(process.get()) : -1;
    run.out = output.out ? output.out : "";
    run.err = output.err ? output.err : "";
    g_free(output.out);
    g_free(output.err);
    return run;
}

TEST_F(WebCheckTest, LecternCliCheckReportsAndExits) {
    TempDir dir;
    Deck deck;
    deck.slides = {webSlide("Dashboard", server.url("/dashboard")), Slide::make(SlideLayout::regular),
                   webSlide("", server.url("/app")), webSlide("Missing", server.url("/missing")),
                   webSlide("No address", std::nullopt), webSlide("Console", server.url("/console"))};
    ASSERT_TRUE(DeckPackage::write(deck, dir / "Talk.lectern", std::nullopt).ok());
    const std::string report =
        "01  Dashboard  ok\n"
        "03  Untitled  redirected  Redirected to 127.0.0.1/login\n"
        "04  Missing  failed  HTTP 404 \u2014 not found\n"
        "05  No address  failed  No URL set\n"
        "06  Console  redirected  Shows a sign-in form\n"
        "4 of 5 need attention\n";

    // On the test's display.
    ProgramRun run = runCli({"check", (dir / "Talk.lectern").string()});
    EXPECT_EQ(run.status, 1) << run.err;
    EXPECT_EQ(run.out, report);

    // Without one: on a private Xvfb of its own.
    run = runCli({"check", (dir / "Talk.lectern").string()}, {{"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}});
    EXPECT_EQ(run.status, 1) << run.err;
    EXPECT_EQ(run.out, report);

    deck.slides = {webSlide("Dashboard", server.url("/dashboard"))};
    ASSERT_TRUE(DeckPackage::write(deck, dir / "Good.lectern", std::nullopt).ok());
    // The page that loaded is pictured for the stage before the program ends.
    TempDir cache;
    run = runCli({"check", (dir / "Good.lectern").string()}, {{"XDG_CACHE_HOME", cache.path().string()}});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "01  Dashboard  ok\nAll 1 web slide loaded\n");
    EXPECT_TRUE(std::filesystem::exists(cache / "lectern" / "pictures" / (deck.slides[0].id.string() + ".png")));

    // Neither a display nor Xvfb to start one.
    TempDir emptyPath;
    run = runCli({"check", (dir / "Good.lectern").string()},
                 {{"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}, {"PATH", emptyPath.path().string()}});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "lectern-cli: No display to load web pages on: set DISPLAY, or install Xvfb\n");

    run = runCli({"check", (dir / "Missing.lectern").string()});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");

    // The other commands need no display at all.
    run = runCli({"outline", (dir / "Good.lectern").string()}, {{"DISPLAY", ""}, {"PATH", emptyPath.path().string()}});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
}

}  // namespace
}  // namespace lectern
