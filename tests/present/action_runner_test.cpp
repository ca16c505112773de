#include "present/action_runner.h"

#include <gtest/gtest.h>

namespace lectern {
namespace {

using State = ActionRunner::RunState;
using Headers = std::vector<std::pair<std::string, std::string>>;

APIRequestSpec spec(std::string method, std::string url, Headers headers = {}, std::string body = {}) {
    APIRequestSpec s{std::move(method), std::move(url), {}, std::move(body), false};
    for (auto& [name, value] : headers) s.headers.push_back({Uuid::random(), name, value});
    return s;
}

std::string excerpt(std::string_view bytes) {
    return ActionRunner::bodyExcerpt({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

TEST(ActionRunnerBuildRequest, UrlIsTrimmedAndMustBeHttp) {
    auto ok = ActionRunner::buildRequest(spec("get", " \n https://example.com/api?q=1\t\r\n"), {});
    ASSERT_TRUE(ok);
    EXPECT_EQ(ok->url, "https://example.com/api?q=1");
    EXPECT_EQ(ok->method, "GET");
    EXPECT_TRUE(ActionRunner::buildRequest(spec("GET", "HTTP://Example.com/"), {}));

    auto error = [](std::string url) { return ActionRunner::buildRequest(spec("GET", url), {}).error().message; };
    EXPECT_EQ(error(" \n\t\u2028"), "URL is empty");
    EXPECT_EQ(error(" ftp://example.com/file\n"), "\"ftp://example.com/file\" isn't a valid http(s) URL");
    EXPECT_EQ(error("localhost:8080"), "\"localhost:8080\" isn't a valid http(s) URL");
    EXPECT_EQ(error("example.com/api"), "\"example.com/api\" isn't a valid http(s) URL");
    EXPECT_EQ(error("http://example.com/%zz"), "\"http://example.com/%zz\" isn't a valid http(s) URL");
}

TEST(ActionRunnerBuildRequest, HeadersCookiesAndBody) {
    std::vector<HttpCookie> cookies{{"a", "1", "example.com", "/", false}, {"b", "2", "example.com", "/", false}};
    auto request = ActionRunner::buildRequest(
        spec("patch", "https://example.com", {{"", "x"}, {"X-A", "1"}, {"X-B", "2"}, {"X-A", "3"}, {"x-a", "4"}}, "{}"),
        cookies);
    EXPECT_EQ(request->method, "PATCH");
    EXPECT_EQ(request->headers, (Headers{{"X-A", "3"},
                                         {"X-B", "2"},
                                         {"x-a", "4"},
                                         {"Cookie", "a=1; b=2"},
                                         {"Content-Type", "application/json"}}));
    EXPECT_EQ(request->body, "{}");

    // A typed Cookie header (any case) wins over the profile's cookies; a
    // typed content type is kept with no second one; the body is as typed.
    request = ActionRunner::buildRequest(
        spec("POST", "https://example.com", {{"cOOKIE", "mine=1"}, {"content-type", "text/plain"}}, " "), cookies);
    EXPECT_EQ(request->headers, (Headers{{"cOOKIE", "mine=1"}, {"content-type", "text/plain"}}));
    EXPECT_EQ(request->body, " ");

    for (auto [method, body] : {std::pair("GET", "x"), std::pair("head", "x"), std::pair("POST", "")}) {
        request = ActionRunner::buildRequest(spec(method, "https://example.com", {}, body), {});
        EXPECT_EQ(request->body, std::nullopt) << method;
        EXPECT_TRUE(request->headers.empty()) << method;
    }
}

TEST(ActionRunnerCookieMatches, DomainPathAndSecure) {
    const std::tuple<const char*, const char*, bool, const char*, bool> cases[] = {
        // domain, path, secure, URL, matches
        {".example.com", "", false, "https://example.com/", true},
        {".Example.com", "", false, "https://api.EXAMPLE.com/x", true},
        {".example.com", "", false, "https://badexample.com/", false},
        {"example.com", "", false, "https://api.example.com/", false},
        {"example.com", "/api", false, "https://example.com/api", true},
        {"example.com", "/api", false, "https://example.com/api/x", true},
        {"example.com", "/api", false, "https://example.com/apix", false},
        {"example.com", "/api/", false, "https://example.com/api/x", true},
        {"example.com", "/api", false, "https://example.com", false},
        {"example.com", "/", true, "https://example.com/", true},
        {"example.com", "/", true, "http://example.com/", false},
    };
    for (auto [domain, path, secure, url, matches] : cases) {
        EXPECT_EQ(ActionRunner::cookieMatches({"n", "v", domain, path, secure}, url), matches)
            << domain << " " << path << " " << url;
    }
}

TEST(ActionRunnerBodyExcerpt, ClustersWhiteSpaceAndLatin1) {
    EXPECT_EQ(excerpt(" \r\n\t "), "");
    // \r\n is one cluster but two line-ending characters; runs stay.
    EXPECT_EQ(excerpt("\t a\r\nb\u2028c\u00A0\vd\u0085e \n"), "a  b c  d e");
    EXPECT_EQ(excerpt("caf\xE9 cr\xE8me \xA0"), "caf\u00E9 cr\u00E8me");  // not UTF-8: Latin-1
    EXPECT_EQ(excerpt(std::string_view("a\0b", 3)), "a\uFFFDb");
    std::string accents;
    for (int i = 0; i < 300; ++i) accents += "\u00E9";
    EXPECT_EQ(excerpt(std::string(400, '\xE9')), accents);

    // 300 clusters: a letter with a combining mark and a family emoji count
    // as one each, whatever their length in code points.
    std::string body;
    for (int i = 0; i < 150; ++i) body += "e\u0301\U0001F468\u200D\U0001F469\u200D\U0001F467";
    EXPECT_EQ(excerpt(body + "tail"), body);
    // The 300th cluster with a long run of marks is kept whole, however far
    // it reaches past the first few hundred characters.
    std::string last = "y";
    for (int marks = 1; marks < 1300; ++marks) {
        last += "\u0301";
        std::string expected = std::string(299, 'x') + last;
        ASSERT_EQ(excerpt(expected + "z"), expected) << marks;
    }
}

// A transport and a page that keep their callbacks for the test to answer.
struct FakeTransport : HttpTransport {
    using Answer = std::function<void(Result<HttpResponse>)>;
    std::shared_ptr<std::vector<Answer>> answers = std::make_shared<std::vector<Answer>>();
    void send(const HttpRequest&, Answer done) override { answers->push_back(std::move(done)); }
};

struct FakeView : LiveWebView {
    std::function<void(Result<std::optional<std::string>>)> answer;
    int reloads = 0;
    void evaluateAsyncFunction(const std::string&, decltype(answer) done) override { answer = std::move(done); }
    void reload() override { ++reloads; }
};

class ActionRunnerRun : public ::testing::Test {
protected:
    FakeTransport* transport = new FakeTransport;
    std::shared_ptr<std::vector<FakeTransport::Answer>> answers = transport->answers;
    double now = 100;
    double wall = 1700000000;  // 2023-11-14 22:13:20 UTC
    std::unique_ptr<ActionRunner> runner = std::make_unique<ActionRunner>(
        std::unique_ptr<HttpTransport>(transport), nullptr, [this] { return now; }, [this] { return wall; });
    Slide slide = Slide::make(SlideLayout::web);
    std::shared_ptr<FakeView> view = std::make_shared<FakeView>();
    LiveWebViewRegistry views;
    int doneCount = 0;

    void run(const SlideAction& action) { runner->run(action, slide, &views, [this] { ++doneCount; }); }
    void respond(std::size_t call, double seconds, Result<HttpResponse> response) {
        now += seconds;
        (*answers)[call](std::move(response));
    }
    static SlideAction request(std::string url, bool reloads = false) {
        SlideAction action;
        action.request = spec("GET", std::move(url));
        action.reloadsLiveView = reloads;
        return action;
    }
};

TEST_F(ActionRunnerRun, RequestOutcomes) {
    SlideAction action = request("https://example.com", true);
    action.name = "Fetch";
    EXPECT_EQ(runner->state(action.id), State::idle());
    run(action);
    EXPECT_EQ(runner->state(action.id), State::running());
    respond(0, 0.0129999, HttpResponse{404, {'N', 'o', '\n', 'p', 'e'}});
    EXPECT_EQ(runner->state(action.id), State::failure("HTTP 404 \u00B7 12 ms\nNo pe"));
    EXPECT_EQ(runner->lastCompleted(), (ActionRunner::Completed{"Fetch", runner->state(action.id)}));

    action.name = "";
    run(action);
    respond(1, 0.008, HttpResponse{204, {}});
    State noPage = State::success("HTTP 204 \u00B7 8 ms \u00B7 no live view to reload");
    EXPECT_EQ(runner->lastCompleted(), (ActionRunner::Completed{"Untitled action", noPage}));

    views.registerView(slide.id, view);
    run(action);
    respond(2, 0.001, HttpResponse{200, {}});
    EXPECT_EQ(runner->state(action.id), State::success("HTTP 200 \u00B7 1 ms"));
    EXPECT_EQ(view->reloads, 1);
    run(action);
    respond(3, 1, Error{"Could not connect"});  // failures reload nothing
    EXPECT_EQ(runner->state(action.id), State::failure("Could not connect"));
    EXPECT_EQ(view->reloads, 1);

    // A request that cannot be built fails at once, without being sent.
    run(request("ftp://x"));
    EXPECT_EQ(runner->lastCompleted()->state, State::failure("\"ftp://x\" isn't a valid http(s) URL"));
    EXPECT_EQ(answers->size(), 4u);
    EXPECT_EQ(doneCount, 5);
}

TEST_F(ActionRunnerRun, PageScripts) {
    SlideAction action;
    action.kindCase = SlideActionKindCase::pageScript;
    run(action);
    EXPECT_EQ(runner->state(action.id), State::failure("No live browser view for this slide"));

    views.registerView(slide.id, view);
    action.reloadsLiveView = true;
    using Answer = Result<std::optional<std::string>>;
    const std::pair<Answer, State> cases[] = {
        {Answer(std::optional<std::string>("42")), State::success("42")},
        {Answer(std::optional<std::string>()), State::success("Done")},
        {Answer(Error{"TypeError: x is undefined"}), State::failure("TypeError: x is undefined")},
    };
    for (const auto& [answer, outcome] : cases) {
        run(action);
        EXPECT_EQ(runner->state(action.id), State::running());
        view->answer(answer);
        EXPECT_EQ(runner->state(action.id), outcome);
    }
    EXPECT_EQ(view->reloads, 2);
    EXPECT_EQ(doneCount, 4);
}

TEST_F(ActionRunnerRun, OverlappingRunsAndTeardown) {
    SlideAction action = request("https://example.com");
    run(action);
    run(action);  // not queued or merged: both are sent, the later finish wins
    respond(1, 0.002, HttpResponse{200, {}});
    respond(0, 0.003, HttpResponse{503, {}});
    EXPECT_EQ(runner->state(action.id), State::failure("HTTP 503 \u00B7 5 ms"));

    // An answer that arrives after the runner is gone is dropped quietly.
    run(action);
    runner.reset();
    respond(2, 0.001, HttpResponse{200, {}});
    EXPECT_EQ(doneCount, 2);
}

TEST_F(ActionRunnerRun, DetailsKeepTheWholeResult) {
    SlideAction action = request("https://example.com");
    EXPECT_EQ(runner->details(action.id), std::nullopt);
    run(action);
    respond(0, 0.0125, HttpResponse{500, {'B', 'r', 'o', 'k', 'e', '\n', 'n', 'o', 'w'}});
    auto details = runner->details(action.id);
    ASSERT_TRUE(details);
    EXPECT_EQ(details->status, "HTTP 500");
    EXPECT_EQ(details->excerpt, "Broke now");
    EXPECT_EQ(details->startedAt, 1700000000);
    EXPECT_NEAR(details->seconds, 0.0125, 1e-9);
    // Local time: the tests run in UTC.
    EXPECT_EQ(ActionRunner::describe(*details), "Status: HTTP 500\nTook: 12 ms\nRan at: 22:13:20\nBroke now");

    // A new run keeps the last result readable until it ends.
    wall += 60;
    run(action);
    EXPECT_EQ(runner->details(action.id), details);
    respond(1, 1.5, Error{"Could not connect"});
    EXPECT_EQ(ActionRunner::describe(*runner->details(action.id)),
              "Status: Could not connect\nTook: 1.5 s\nRan at: 22:14:20");

    // A script's value is its excerpt; a page that is missing is the status.
    SlideAction script;
    script.kindCase = SlideActionKindCase::pageScript;
    script.reloadsLiveView = true;
    run(script);
    EXPECT_EQ(runner->details(script.id)->status, "No live browser view for this slide");
    views.registerView(slide.id, view);
    run(script);
    view->answer(std::optional<std::string>("42"));
    EXPECT_EQ(runner->details(script.id)->status, "Script finished");
    EXPECT_EQ(runner->details(script.id)->excerpt, "42");
}

}  // namespace
}  // namespace lectern
