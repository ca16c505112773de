// What a demo action's request costs on top of the HTTP itself: a bare
// libsoup GET to a SoupServer on 127.0.0.1 in this process, against the same
// GET run through ActionRunner (URL checks, request building, the excerpt
// of the body, the outcome recorded). Both keep one session, and so one
// kept-alive connection, across iterations, as a runner does between runs.
#include <benchmark/benchmark.h>
#include <libsoup/soup.h>

#include <string>

#include "present/action_runner.h"
#include "present/platform/soup_http_transport.h"

namespace {

using namespace lectern;

// Answers /small with a 1 KiB JSON document and /large with 1 MiB of it.
class LocalServer {
public:
    LocalServer() : server_(soup_server_new(nullptr, nullptr)) {
        std::string item = R"({"id": 1234, "name": "Caf\u00e9 \u2615", "tags": ["demo", "beta"], "ok": true},)";
        while (small_.size() < 1024) small_ += item;
        while (large_.size() < 1024 * 1024) large_ += item;
        soup_server_add_handler(server_, nullptr, &LocalServer::handle, this, nullptr);
        soup_server_listen_local(server_, 0, SOUP_SERVER_LISTEN_IPV4_ONLY, nullptr);
        GSList* uris = soup_server_get_uris(server_);
        port_ = g_uri_get_port(static_cast<GUri*>(uris->data));
        g_slist_free_full(uris, reinterpret_cast<GDestroyNotify>(g_uri_unref));
    }
    std::string url(const char* path) const { return "http://127.0.0.1:" + std::to_string(port_) + path; }

private:
    static void handle(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer data) {
        auto* self = static_cast<LocalServer*>(data);
        const std::string& body = std::string_view(path) == "/large" ? self->large_ : self->small_;
        soup_server_message_set_status(message, 200, nullptr);
        soup_server_message_set_response(message, "application/json", SOUP_MEMORY_STATIC, body.data(), body.size());
    }
    SoupServer* server_;
    int port_ = 0;
    std::string small_, large_;
};

LocalServer& server() {
    static LocalServer instance;
    return instance;
}

const char* pathFor(const benchmark::State& state) { return state.range(0) == 0 ? "/small" : "/large"; }

void iterateUntil(const bool& finished) {
    while (!finished) g_main_context_iteration(nullptr, TRUE);
}

void BareLibsoupGet(benchmark::State& state) {
    std::string url = server().url(pathFor(state));
    SoupSession* session = soup_session_new();
    for (auto _ : state) {
        SoupMessage* message = soup_message_new("GET", url.c_str());
        struct Call {
            bool finished = false;
            GBytes* body = nullptr;
        } call;
        soup_session_send_and_read_async(
            session, message, G_PRIORITY_DEFAULT, nullptr,
            [](GObject* source, GAsyncResult* result, gpointer data) {
                auto* call = static_cast<Call*>(data);
                call->body = soup_session_send_and_read_finish(SOUP_SESSION(source), result, nullptr);
                call->finished = true;
            },
            &call);
        iterateUntil(call.finished);
        if (!call.body || soup_message_get_status(message) != 200) state.SkipWithError("request failed");
        benchmark::DoNotOptimize(g_bytes_get_size(call.body));
        g_bytes_unref(call.body);
        g_object_unref(message);
    }
    g_object_unref(session);
}

void ActionRunnerGet(benchmark::State& state) {
    auto runner = makeActionRunner(nullptr);
    SlideAction action;
    action.request.urlString = server().url(pathFor(state));
    Slide slide = Slide::make(SlideLayout::web);
    for (auto _ : state) {
        bool finished = false;
        runner->run(action, slide, nullptr, [&] { finished = true; });
        iterateUntil(finished);
        if (runner->state(action.id).kind != ActionRunner::RunState::Kind::success) state.SkipWithError("run failed");
    }
}

// The excerpt alone, for the 1 MiB body: decoding checks every byte, but
// only the start is segmented into characters.
void BodyExcerptOfLargeBody(benchmark::State& state) {
    std::string body;
    while (body.size() < 1024 * 1024) body += R"({"id": 1234, "name": "Caf\u00e9 \u2615"}, )";
    std::span<const std::uint8_t> bytes(reinterpret_cast<const std::uint8_t*>(body.data()), body.size());
    for (auto _ : state) benchmark::DoNotOptimize(ActionRunner::bodyExcerpt(bytes));
}

BENCHMARK(BareLibsoupGet)->Arg(0)->Arg(1)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(ActionRunnerGet)->Arg(0)->Arg(1)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BodyExcerptOfLargeBody)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
