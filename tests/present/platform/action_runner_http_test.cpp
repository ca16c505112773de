// The runner over real HTTP: a SoupServer on 127.0.0.1 in this process,
// the GLib main loop turned until each run ends (never longer than 20 s).
#include <gtest/gtest.h>
#include <libsoup/soup.h>

#include <regex>

#include "present/platform/soup_http_transport.h"
#include "support/platform/local_server.h"

namespace lectern {
namespace {

using testing::iterateUntil;

// /missing answers 404 after 30 ms with a Latin-1 body, /silent never
// answers, anything else 204. Each request's headers and body are kept.
class LocalServer {
public:
    LocalServer() {
        soup_server_add_handler(server_, nullptr, &LocalServer::handle, this, nullptr);
        EXPECT_TRUE(soup_server_listen_local(server_, 0, SOUP_SERVER_LISTEN_IPV4_ONLY, nullptr));
        GSList* uris = soup_server_get_uris(server_);
        port_ = g_uri_get_port(static_cast<GUri*>(uris->data));
        g_slist_free_full(uris, reinterpret_cast<GDestroyNotify>(g_uri_unref));
    }
    ~LocalServer() {
        soup_server_disconnect(server_);
        g_object_unref(server_);
    }
    std::string url(const std::string& path) const { return "http://127.0.0.1:" + std::to_string(port_) + path; }

    std::vector<std::map<std::string, std::string>> seen;  // lower-case names, "body"

private:
    static void handle(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer self) {
        std::map<std::string, std::string> seen{{"method", soup_server_message_get_method(message)}};
        soup_message_headers_foreach(
            soup_server_message_get_request_headers(message),
            [](const char* name, const char* value, gpointer seen) {
                auto& headers = *static_cast<std::map<std::string, std::string>*>(seen);
                std::string lower = name;
                for (char& c : lower) c = g_ascii_tolower(c);
                headers[lower] += headers.count(lower) ? std::string("|") + value : value;
            },
            &seen);
        GBytes* body = soup_message_body_flatten(soup_server_message_get_request_body(message));
        gsize size = 0;
        auto* data = static_cast<const char*>(g_bytes_get_data(body, &size));
        seen["body"] = std::string(data ? data : "", size);
        g_bytes_unref(body);
        static_cast<LocalServer*>(self)->seen.push_back(seen);

        if (std::string_view(path) == "/silent") {
            soup_server_message_pause(message);
        } else if (std::string_view(path) == "/missing") {
            soup_server_message_pause(message);
            auto answer = [](gpointer data) {
                auto* message = static_cast<SoupServerMessage*>(data);
                const char text[] = "  Caf\xE9 not found\r\nTry /items\t";
                soup_server_message_set_status(message, 404, nullptr);
                soup_server_message_set_response(message, "text/plain", SOUP_MEMORY_COPY, text, sizeof text - 1);
                soup_server_message_unpause(message);
                return G_SOURCE_REMOVE;
            };
            g_timeout_add_full(G_PRIORITY_DEFAULT, 30, answer, g_object_ref(message), g_object_unref);
        } else {
            soup_server_message_set_status(message, 204, nullptr);
        }
    }

    SoupServer* server_ = soup_server_new(nullptr, nullptr);
    int port_ = 0;
};

struct FakeCookies : CookieSource {
    std::vector<HttpCookie> cookies;
    std::optional<Uuid> askedFor;
    void allCookies(const std::optional<Uuid>& profileId, std::function<void(std::vector<HttpCookie>)> done) override {
        askedFor = profileId;
        done(cookies);
    }
};

class ActionRunnerHttp : public ::testing::Test {
protected:
    LocalServer server;
    std::shared_ptr<FakeCookies> cookies = std::make_shared<FakeCookies>();
    Slide slide = Slide::make(SlideLayout::web);

    std::unique_ptr<ActionRunner> makeRunner(double timeoutSeconds = 15) {
        return std::make_unique<ActionRunner>(std::make_unique<SoupHttpTransport>(timeoutSeconds), cookies,
                                              [] { return double(g_get_monotonic_time()) / G_USEC_PER_SEC; });
    }
    std::string run(APIRequestSpec spec, double timeoutSeconds = 15) {
        auto runner = makeRunner(timeoutSeconds);
        SlideAction action;
        action.request = std::move(spec);
        bool finished = false;
        runner->run(action, slide, nullptr, [&] { finished = true; });
        EXPECT_TRUE(iterateUntil([&] { return finished; })) << "the run did not end within 20 s";
        auto state = runner->state(action.id);
        return (state.kind == ActionRunner::RunState::Kind::failure ? "failure: " : "success: ") + state.text;
    }
    APIRequestSpec spec(std::string method, std::string path, std::vector<HTTPHeaderField> headers = {},
                        std::string body = {}) {
        return {std::move(method), server.url(path), std::move(headers), std::move(body), false};
    }
};

TEST_F(ActionRunnerHttp, StatusLineAndExcerpt) {
    std::string text = run(spec("GET", "/missing"));
    std::smatch match;
    std::regex expected("failure: HTTP 404 \u00B7 (\\d+) ms\nCaf\u00E9 not found  Try /items");
    ASSERT_TRUE(std::regex_match(text, match, expected)) << text;
    EXPECT_GE(std::stoi(match[1]), 30);
    text = run(spec("GET", "/empty"));
    EXPECT_TRUE(std::regex_match(text, std::regex("success: HTTP 204 \u00B7 \\d+ ms"))) << text;
}

TEST_F(ActionRunnerHttp, SendsHeadersCookiesAndBody) {
    slide.browserProfileId = Uuid::random();
    cookies->cookies = {{"root", "r", "127.0.0.1", "", false}, {"api", "a", "127.0.0.1", "/api", false},
                        {"apix", "x", "127.0.0.1", "/apix", false}, {"secure", "s", "127.0.0.1", "/", true},
                        {"elsewhere", "e", "example.com", "/", false}};
    APIRequestSpec post = spec("post", "/api/items", {{Uuid(), "X-Demo", "1"}, {Uuid(), "x-demo", "2"}}, R"({"a":1})");
    post.useProfileCookies = true;
    run(post);
    run(spec("PUT", "/", {{Uuid(), "content-type", "text/plain"}, {Uuid(), "Cookie", "typed=1"}}, "plain"));
    ASSERT_EQ(server.seen.size(), 2u);
    EXPECT_EQ(cookies->askedFor, slide.browserProfileId);
    auto expect = [](const std::map<std::string, std::string>& seen, const char* name, const char* value) {
        EXPECT_EQ(seen.count(name) ? seen.at(name) : "(none)", value) << name;
    };
    expect(server.seen[0], "method", "POST");
    expect(server.seen[0], "x-demo", "2");  // names differing only in case are one header on the wire
    expect(server.seen[0], "cookie", "root=r; api=a");
    expect(server.seen[0], "content-type", "application/json");
    expect(server.seen[0], "body", R"({"a":1})");
    expect(server.seen[1], "cookie", "typed=1");
    expect(server.seen[1], "content-type", "text/plain");
    expect(server.seen[1], "body", "plain");
}

TEST_F(ActionRunnerHttp, TransportFailuresAndTeardown) {
    // A port that was just bound and closed again: nothing listens there.
    GSocketListener* listener = g_socket_listener_new();
    guint16 closedPort = g_socket_listener_add_any_inet_port(listener, nullptr, nullptr);
    g_socket_listener_close(listener);
    g_object_unref(listener);
    EXPECT_NE(run({"GET", "http://127.0.0.1:" + std::to_string(closedPort) + "/", {}, {}, false}).find("refused"),
              std::string::npos);

    // A server that never answers: the session's timeout (1 s here) ends it.
    gint64 start = g_get_monotonic_time();
    EXPECT_EQ(run(spec("GET", "/silent"), 1), "failure: Socket I/O timed out");
    EXPECT_GE(g_get_monotonic_time() - start, 900'000);

    // What libsoup would refuse with a critical warning is reported instead.
    EXPECT_EQ(run({"GET", "http:///nohost", {}, {}, false}), "failure: Unsupported URL");
    EXPECT_EQ(run(spec("GET", "/", {{Uuid(), "X-A", "line\nbreak"}})), "failure: The header \"X-A\" can't be sent");

    // The request's own time limit holds even while the session would wait.
    SoupHttpTransport transport;
    std::optional<Result<HttpResponse>> answer;
    transport.send({"GET", server.url("/silent"), {}, std::nullopt, 0.2}, [&](auto response) { answer = response; });
    ASSERT_TRUE(iterateUntil([&] { return answer.has_value(); }));
    EXPECT_EQ(answer->error().message, "The request timed out");

    // A runner that goes away mid-request never calls back.
    bool calledBack = false, paused = false;
    {
        auto runner = makeRunner();
        SlideAction silent, refused;
        silent.request = spec("GET", "/silent");
        refused.request = spec("GET", "/", {{Uuid(), "Bad Name", "v"}});  // answered on the next turn
        std::size_t requests = server.seen.size();
        runner->run(silent, slide, nullptr, [&] { calledBack = true; });
        iterateUntil([&] { return server.seen.size() > requests; });
        runner->run(refused, slide, nullptr, [&] { calledBack = true; });
    }
    g_timeout_add(100, [](gpointer flag) { return *static_cast<bool*>(flag) = true, G_SOURCE_REMOVE; }, &paused);
    iterateUntil([&] { return paused; });
    EXPECT_FALSE(calledBack);
}

}  // namespace
}  // namespace lectern
