// The demo site that the example deck shows, as scripts/run starts it: the
// built lectern-demo-site program on a free port of 127.0.0.1, driven over
// HTTP and in a web view, with the deck's own actions sent to it. Every wait
// is bounded; the program is stopped with SIGTERM at the end of each test.
#include <gtest/gtest.h>
#include <libsoup/soup.h>
#include <webkit/webkit.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "model/deck_package.h"
#include "present/action_runner.h"
#include "present/platform/soup_http_transport.h"
#include "support/platform/local_server.h"
#include "support/platform/page_outcome.h"
#include "web/platform/webkit_page.h"

namespace lectern {
namespace {

using nlohmann::json;
using testing::iterateFor;
using testing::iterateUntil;

std::filesystem::path welcomeDeck() { return std::filesystem::path(LECTERN_EXAMPLES_DIR) / "Welcome.lectern"; }

// A port of 127.0.0.1 that nothing listens on right now.
int freePort() {
    GSocket* socket = g_socket_new(G_SOCKET_FAMILY_IPV4, G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_TCP, nullptr);
    GInetAddress* loopback = g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV4);
    GSocketAddress* any = g_inet_socket_address_new(loopback, 0);
    EXPECT_TRUE(g_socket_bind(socket, any, FALSE, nullptr));
    GSocketAddress* bound = g_socket_get_local_address(socket, nullptr);
    const int port = g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(bound));
    g_object_unref(bound);
    g_object_unref(any);
    g_object_unref(loopback);
    g_socket_close(socket, nullptr);
    g_object_unref(socket);
    return port;
}

// The server program, started with --port; its first line on stdout says it
// is ready.
class DemoSiteProcess {
public:
    explicit DemoSiteProcess(int port) : port_(port) {
        const std::string portText = std::to_string(port);
        GError* error = nullptr;
        process_ = g_subprocess_new(GSubprocessFlags(G_SUBPROCESS_FLAGS_STDOUT_PIPE | G_SUBPROCESS_FLAGS_STDERR_PIPE),
                                    &error, LECTERN_DEMO_SITE_PATH, "--port", portText.c_str(), nullptr);
        EXPECT_TRUE(process_) << (error ? error->message : "");
        if (error) g_error_free(error);
    }
    ~DemoSiteProcess() {
        if (!process_) return;
        if (!exited()) {
            stop();
            if (!exited()) g_subprocess_force_exit(process_);
        }
        g_object_unref(process_);
    }

    // The first line on stdout, or nothing when none came within 10 seconds.
    std::optional<std::string> readyLine() {
        GDataInputStream* lines = g_data_input_stream_new(g_subprocess_get_stdout_pipe(process_));
        struct Reading {
            std::optional<std::string> line;
            bool done = false;
        } reading;
        g_data_input_stream_read_line_async(
            lines, G_PRIORITY_DEFAULT, nullptr,
            [](GObject* source, GAsyncResult* result, gpointer data) {
                auto* reading = static_cast<Reading*>(data);
                char* text = g_data_input_stream_read_line_finish(G_DATA_INPUT_STREAM(source), result, nullptr, nullptr);
                if (text) reading->line = text;
                g_free(text);
                reading->done = true;
            },
            &reading);
        // The pending read must not outlive `reading`: a second, short wait.
        if (!iterateUntil([&] { return reading.done; }, 10000)) iterateUntil([&] { return reading.done; }, 1000);
        g_object_unref(lines);
        return reading.line;
    }

    // Everything on stderr until the program ends (at most 10 seconds).
    std::string stderrToEnd() {
        struct Reading {
            std::string text;
            bool done = false;
        } reading;
        g_subprocess_communicate_utf8_async(
            process_, nullptr, nullptr,
            [](GObject* source, GAsyncResult* result, gpointer data) {
                auto* reading = static_cast<Reading*>(data);
                char* err = nullptr;
                g_subprocess_communicate_utf8_finish(G_SUBPROCESS(source), result, nullptr, &err, nullptr);
                if (err) reading->text = err;
                g_free(err);
                reading->done = true;
            },
            &reading);
        if (!iterateUntil([&] { return reading.done; }, 10000)) g_subprocess_force_exit(process_);
        iterateUntil([&] { return reading.done; }, 2000);
        return reading.text;
    }

    // SIGTERM, then at most 5 seconds for the program to end.
    void stop() {
        g_subprocess_send_signal(process_, SIGTERM);
        waitForExit(5000);
    }
    bool waitForExit(unsigned boundMs) {
        if (exited()) return true;
        // The callback wakes the main loop; it may come after this returns.
        auto* flag = new std::shared_ptr<bool>(done_);
        g_subprocess_wait_async(
            process_, nullptr,
            [](GObject*, GAsyncResult*, gpointer data) {
                auto* flag = static_cast<std::shared_ptr<bool>*>(data);
                **flag = true;
                delete flag;
            },
            flag);
        return iterateUntil([this] { return *done_ || exited(); }, boundMs);
    }
    bool exited() const { return g_subprocess_get_identifier(process_) == nullptr; }
    int exitStatus() const { return g_subprocess_get_if_exited(process_) ? g_subprocess_get_exit_status(process_) : -1; }

    std::string url(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(port_) + path;
    }

private:
    int port_;
    GSubprocess* process_ = nullptr;
    std::shared_ptr<bool> done_ = std::make_shared<bool>(false);
};

// One HTTP exchange with libsoup, redirects not followed, no cookie jar.
struct Reply {
    int status = 0;
    std::string body;
    std::string contentType;
    std::string location;
    std::string setCookie;
    json data() const { return json::parse(body, nullptr, false); }
};

class Client {
public:
    Client() : session_(soup_session_new_with_options("timeout", 10, nullptr)) {}
    ~Client() { g_object_unref(session_); }

    Reply fetch(const std::string& method, const std::string& url, const std::string& body = "",
                const std::string& contentType = "", const std::string& cookie = "") {
        SoupMessage* message = soup_message_new(method.c_str(), url.c_str());
        EXPECT_TRUE(message) << url;
        if (!message) return {};
        soup_message_add_flags(message, SOUP_MESSAGE_NO_REDIRECT);
        if (!cookie.empty())
            soup_message_headers_replace(soup_message_get_request_headers(message), "Cookie", cookie.c_str());
        if (!body.empty()) {
            GBytes* bytes = g_bytes_new(body.data(), body.size());
            soup_message_set_request_body_from_bytes(message, contentType.c_str(), bytes);
            g_bytes_unref(bytes);
        }
        struct Exchange {
            GBytes* bytes = nullptr;
            bool done = false;
        } exchange;
        soup_session_send_and_read_async(
            session_, message, G_PRIORITY_DEFAULT, nullptr,
            [](GObject* session, GAsyncResult* result, gpointer data) {
                auto* exchange = static_cast<Exchange*>(data);
                exchange->bytes = soup_session_send_and_read_finish(SOUP_SESSION(session), result, nullptr);
                exchange->done = true;
            },
            &exchange);
        EXPECT_TRUE(iterateUntil([&] { return exchange.done; }, 15000)) << method << " " << url;
        Reply reply;
        reply.status = int(soup_message_get_status(message));
        if (exchange.bytes) {
            gsize size = 0;
            const auto* data = static_cast<const char*>(g_bytes_get_data(exchange.bytes, &size));
            reply.body.assign(data ? data : "", size);
            g_bytes_unref(exchange.bytes);
        }
        auto* headers = soup_message_get_response_headers(message);
        auto header = [headers](const char* name) {
            const char* value = soup_message_headers_get_one(headers, name);
            return std::string(value ? value : "");
        };
        reply.contentType = header("Content-Type");
        reply.location = header("Location");
        reply.setCookie = header("Set-Cookie");
        g_object_unref(message);
        return reply;
    }
    Reply get(const std::string& url, const std::string& cookie = "") { return fetch("GET", url, "", "", cookie); }
    Reply postForm(const std::string& url, const std::string& form) {
        return fetch("POST", url, form, "application/x-www-form-urlencoded");
    }

private:
    SoupSession* session_;
};

// "name=value" of a Set-Cookie header.
std::string cookiePair(const std::string& setCookie) { return setCookie.substr(0, setCookie.find(';')); }

// The deck's action of that name, with its address moved to `port`.
SlideAction deckAction(const Deck& deck, const std::string& name, int port) {
    for (const auto& slide : deck.slides)
        for (const auto& action : slide.actions)
            if (action.name == name) {
                SlideAction moved = action;
                const std::string from = "127.0.0.1:8765";
                auto& url = moved.request.urlString;
                if (auto at = url.find(from); at != std::string::npos) {
                    url.replace(at, from.size(), "127.0.0.1:" + std::to_string(port));
                }
                return moved;
            }
    ADD_FAILURE() << "no action named " << name;
    return {};
}

// The example deck reaches nothing but the demo site on this computer.
TEST(DemoSite, ExampleDeckUsesOnlyTheLocalDemoSite) {
    auto deck = DeckPackage::read(welcomeDeck());
    ASSERT_TRUE(deck.ok());
    int requests = 0, scripts = 0, profiledWebSlides = 0;
    auto isDemoSite = [](const std::string& address) {
        GUri* uri = g_uri_parse(address.c_str(), G_URI_FLAGS_NONE, nullptr);
        const bool local = uri && std::string(g_uri_get_scheme(uri)) == "http" && g_uri_get_host(uri) &&
                           std::string(g_uri_get_host(uri)) == "127.0.0.1" && g_uri_get_port(uri) == 8765;
        if (uri) g_uri_unref(uri);
        return local;
    };
    for (const auto& slide : deck->slides) {
        if (slide.layout == SlideLayout::web) {
            ASSERT_TRUE(slide.url) << slide.title;
            EXPECT_TRUE(isDemoSite(*slide.url)) << slide.title << ": " << *slide.url;
            profiledWebSlides += slide.browserProfileId && deck->profile(*slide.browserProfileId) != nullptr;
        }
        for (const auto& action : slide.actions) {
            if (action.kindCase == SlideActionKindCase::apiRequest) {
                ++requests;
                EXPECT_TRUE(isDemoSite(action.request.urlString)) << action.name << ": " << action.request.urlString;
            } else {
                ++scripts;
                // A script runs in the slide's own page, so that page must be the demo site.
                EXPECT_EQ(slide.layout, SlideLayout::web) << action.name;
                EXPECT_TRUE(slide.url && isDemoSite(*slide.url)) << action.name;
            }
        }
    }
    EXPECT_GE(requests, 1);
    EXPECT_GE(scripts, 1);
    EXPECT_GE(profiledWebSlides, 1);
}

// Pages, sign-in with its cookie, the orders API and a clean stop.
TEST(DemoSite, ServesPagesSignsInAndTakesOrders) {
    DemoSiteProcess site(freePort());
    auto ready = site.readyLine();
    ASSERT_TRUE(ready) << "no ready line: " << site.stderrToEnd();
    EXPECT_EQ(*ready, "Demo site ready at " + site.url("/"));
    Client client;

    // The pages, and nothing they load comes from elsewhere.
    EXPECT_NE(client.get(site.url("/")).body.find("<table id=\"orders\">"), std::string::npos);
    for (auto [path, type] : std::initializer_list<std::pair<const char*, const char*>>{
             {"/", "text/html; charset=utf-8"}, {"/login", "text/html; charset=utf-8"}, {"/style.css", nullptr},
             {"/app.js", "text/javascript; charset=utf-8"}, {"/login.js", nullptr}}) {
        Reply page = client.get(site.url(path));
        EXPECT_EQ(page.status, 200) << path;
        if (type) { EXPECT_EQ(page.contentType, type) << path; }
        EXPECT_EQ(page.body.find("http:"), std::string::npos) << path;
        EXPECT_EQ(page.body.find("https:"), std::string::npos) << path;
    }
    // Nothing outside its folder: not the server's own source beside it, not the system's files.
    EXPECT_EQ(client.get(site.url("/%2e%2e/demo_site_server.cpp")).body.find("#include"), std::string::npos);
    for (const char* missing : {"//etc/hostname", "/.hidden", "/api/nothing"}) {
        EXPECT_EQ(client.get(site.url(missing)).status, 404) << missing;
    }

    // Signing in: a cookie, and back to where the form said.
    Reply nobody = client.get(site.url("/api/me"));
    EXPECT_EQ(nobody.status, 401);
    EXPECT_EQ(nobody.data()["signedIn"], false);
    Reply signIn = client.postForm(site.url("/login"), "email=ada.park%40juniper.test&password=x&next=%2F%3Fview%3Dtoday");
    EXPECT_EQ(signIn.status, 303);
    EXPECT_EQ(signIn.location, "/?view=today");
    ASSERT_EQ(signIn.setCookie.rfind("larkspur_session=", 0), 0u) << signIn.setCookie;
    EXPECT_NE(signIn.setCookie.find("Max-Age="), std::string::npos) << "a sign-in must outlive the browser session";
    const std::string cookie = cookiePair(signIn.setCookie);
    Reply me = client.get(site.url("/api/me"), cookie);
    EXPECT_EQ(me.status, 200);
    EXPECT_EQ(me.data()["name"], "Ada Park");
    EXPECT_EQ(me.data()["email"], "ada.park@juniper.test");
    EXPECT_EQ(client.get(site.url("/api/me"), cookie + "0").status, 401) << "a changed cookie is no sign-in";
    // Only back to this site; an incomplete form signs nobody in.
    EXPECT_EQ(client.postForm(site.url("/login"), "email=a%40b.test&password=x&next=%2F%2Felsewhere.test").location, "/");
    Reply empty = client.postForm(site.url("/login"), "email=a%40b.test&password=&next=%2F");
    EXPECT_EQ(empty.location.rfind("/login?error=1", 0), 0u) << empty.location;
    EXPECT_EQ(empty.setCookie, "");

    // Orders: one created with the cookie names the person and comes first.
    Reply before = client.get(site.url("/api/orders"));
    ASSERT_EQ(before.status, 200);
    const auto seeded = before.data()["orders"].size();
    ASSERT_GT(seeded, 0u);
    Reply created = client.fetch("POST", site.url("/api/orders"), R"({"customer": "Mara Lind", "item": "Pour-over kit", "quantity": 2})",
                                 "application/json", cookie);
    EXPECT_EQ(created.status, 201);
    EXPECT_EQ(created.contentType, "application/json");
    const json order = created.data()["order"];
    EXPECT_EQ(order["customer"], "Mara Lind");
    EXPECT_EQ(order["quantity"], 2);
    EXPECT_EQ(order["total"], "€84.00");
    EXPECT_EQ(order["channel"], "Ada Park");
    const json listed = client.get(site.url("/api/orders")).data();
    ASSERT_EQ(listed["orders"].size(), seeded + 1);
    EXPECT_EQ(listed["orders"][0], order);
    EXPECT_EQ(listed["totals"]["orders"], seeded + 1);
    EXPECT_EQ(client.fetch("POST", site.url("/api/orders"), "{}", "application/json").data()["order"]["channel"], "API");

    // Bad bodies change nothing; a reset puts the demo orders back.
    for (const char* body : {"not json", "[1, 2]", R"({"quantity": 0})", R"({"quantity": 2.5})", R"({"customer": ""})"}) {
        Reply refused = client.fetch("POST", site.url("/api/orders"), body, "application/json");
        EXPECT_EQ(refused.status, 400) << body;
        EXPECT_TRUE(refused.data().contains("error")) << body;
    }
    EXPECT_EQ(client.get(site.url("/api/orders")).data()["orders"].size(), seeded + 2);
    EXPECT_EQ(client.fetch("DELETE", site.url("/api/orders")).status, 405);
    EXPECT_EQ(client.fetch("POST", site.url("/api/reset")).status, 200);
    EXPECT_EQ(client.get(site.url("/api/orders")).data()["orders"].size(), seeded);

    site.stop();
    EXPECT_TRUE(site.exited()) << "SIGTERM did not stop it";
    EXPECT_EQ(site.exitStatus(), 0);
}

// A second server on a port in use says so and ends, instead of waiting.
TEST(DemoSite, RefusesAPortInUse) {
    const int port = freePort();
    DemoSiteProcess first(port);
    ASSERT_TRUE(first.readyLine());
    DemoSiteProcess second(port);
    const std::string err = second.stderrToEnd();
    EXPECT_TRUE(second.waitForExit(5000));
    EXPECT_NE(second.exitStatus(), 0);
    EXPECT_NE(err.find("cannot listen on 127.0.0.1:" + std::to_string(port)), std::string::npos) << err;
}

// The deck's two actions on the live page, as on stage: the request (built
// as Lectern builds it, with the profile's cookie) creates an order, the
// reload shows it, and the page script marks it; the mark survives the
// dashboard's updates every second.
TEST(DemoSite, DeckActionsChangeTheLivePage) {
    const int port = freePort();
    DemoSiteProcess site(port);
    ASSERT_TRUE(site.readyLine());
    auto deck = DeckPackage::read(welcomeDeck());
    ASSERT_TRUE(deck.ok());
    Client client;
    const std::string cookie = cookiePair(client.postForm(site.url("/login"), "email=ada.park%40juniper.test&password=x").setCookie);
    const auto equals = cookie.find('=');
    ASSERT_NE(equals, std::string::npos);

    std::unique_ptr<WebKitNetworkSession, void (*)(gpointer)> session(webkit_network_session_new_ephemeral(),
                                                                       g_object_unref);
    auto page = std::make_unique<WebKitPage>(session.get());
    testing::PageOutcome outcome(*page);
    auto evaluate = [&](const std::string& body) {
        std::optional<std::string> value;
        page->evaluateAsyncFunction(body, [&](Result<std::optional<std::string>> result) {
            value = result.ok() ? result->value_or("") : "error: " + result.error().message;
        });
        EXPECT_TRUE(iterateUntil([&] { return value.has_value(); }, 10000)) << body;
        return value.value_or("");
    };

    page->load(site.url("/"));
    ASSERT_TRUE(iterateUntil([&] { return outcome.finished == 1; }, 20000)) << "the dashboard did not load";

    SlideAction request = deckAction(*deck, "Create an order", port);
    ASSERT_TRUE(request.request.useProfileCookies);
    auto built = ActionRunner::buildRequest(
        request.request, {HttpCookie{cookie.substr(0, equals), cookie.substr(equals + 1), "127.0.0.1", "/", false}});
    ASSERT_TRUE(built.ok());
    SoupHttpTransport transport(10);
    std::optional<Result<HttpResponse>> response;
    transport.send(*built, [&](Result<HttpResponse> answer) { response = std::move(answer); });
    ASSERT_TRUE(iterateUntil([&] { return response.has_value(); }, 15000));
    ASSERT_TRUE(response->ok());
    EXPECT_EQ((*response)->status, 201);
    const json answer = json::parse(std::string((*response)->body.begin(), (*response)->body.end()));
    EXPECT_EQ(answer["order"]["channel"], "Ada Park") << "the profile's cookie was not taken into account";
    const std::string orderId = answer["order"]["id"];

    if (request.reloadsLiveView) {
        page->reload();
        ASSERT_TRUE(iterateUntil([&] { return outcome.finished == 2; }, 20000));
    }
    SlideAction script = deckAction(*deck, "Spotlight the newest order", port);
    EXPECT_EQ(evaluate(script.script), "Spotlight on order " + orderId + " for Mara Lind");
    iterateFor(2500);  // two or three updates of the table
    EXPECT_EQ(evaluate("return document.querySelector('#orders tr.spotlight')?.cells[0].textContent"), orderId);
    EXPECT_EQ(evaluate("return document.querySelectorAll('#orders tbody tr').length"),
              std::to_string(client.get(site.url("/api/orders")).data()["orders"].size()));
}

}  // namespace
}  // namespace lectern
