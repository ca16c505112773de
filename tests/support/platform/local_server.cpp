#include "support/platform/local_server.h"

#include <algorithm>

namespace lectern::testing {

bool iterateUntil(const std::function<bool()>& finished, unsigned boundMs) {
    bool expired = false;
    auto expire = [](gpointer flag) { return *static_cast<bool*>(flag) = true, G_SOURCE_REMOVE; };
    guint bound = g_timeout_add(boundMs, expire, &expired);
    while (!finished() && !expired) g_main_context_iteration(nullptr, TRUE);
    if (!expired) g_source_remove(bound);
    return !expired;
}

void iterateFor(unsigned ms) {
    iterateUntil([] { return false; }, ms);
}

LocalServer::LocalServer() : LocalServer(std::filesystem::path()) {}

LocalServer::LocalServer(const std::filesystem::path& tlsCertificate) : server_(soup_server_new(nullptr, nullptr)) {
    if (!tlsCertificate.empty()) {
        GError* error = nullptr;
        GTlsCertificate* certificate = g_tls_certificate_new_from_file(tlsCertificate.c_str(), &error);
        if (!certificate) g_error("no certificate: %s", error ? error->message : "unknown error");
        soup_server_set_tls_certificate(server_, certificate);
        g_object_unref(certificate);
        scheme_ = "https";
    }
    soup_server_add_handler(server_, nullptr, &LocalServer::handle, this, nullptr);
    GError* error = nullptr;
    // Also used by the benchmarks, so no test macros here: a server that
    // cannot listen is a broken machine.
    auto options = SoupServerListenOptions(SOUP_SERVER_LISTEN_IPV4_ONLY | (scheme_ == "https" ? SOUP_SERVER_LISTEN_HTTPS : 0));
    if (!soup_server_listen_local(server_, 0, options, &error)) {
        g_error("no local server: %s", error ? error->message : "unknown error");
    }
    GSList* uris = soup_server_get_uris(server_);
    port_ = g_uri_get_port(static_cast<GUri*>(uris->data));
    g_slist_free_full(uris, reinterpret_cast<GDestroyNotify>(g_uri_unref));
}

LocalServer::~LocalServer() {
    for (guint timer : timers_) g_source_remove(timer);
    soup_server_disconnect(server_);
    for (auto* message : held_) g_object_unref(message);
    g_object_unref(server_);
}

void LocalServer::stop() { soup_server_disconnect(server_); }

void LocalServer::restart() {
    GError* error = nullptr;
    if (!soup_server_listen_local(server_, static_cast<guint>(port_), SOUP_SERVER_LISTEN_IPV4_ONLY, &error)) {
        g_error("the local server cannot listen again: %s", error ? error->message : "unknown error");
    }
}

std::string LocalServer::url(const std::string& path) const {
    return scheme_ + "://127.0.0.1:" + std::to_string(port_) + path;
}

std::string LocalServer::localhostUrl(const std::string& path) const {
    return scheme_ + "://localhost:" + std::to_string(port_) + path;
}

void LocalServer::route(const std::string& path, Route route) { routes_[path] = std::move(route); }

void LocalServer::page(const std::string& path, const std::string& title, unsigned delayMs) {
    route(path, [title, delayMs](const Request&) {
        Answer answer;
        answer.body = "<!doctype html><html><head><title>" + title + "</title></head><body><h1>" + title +
                      "</h1></body></html>";
        answer.delayMs = delayMs;
        return answer;
    });
}

int LocalServer::requests(const std::string& path) const {
    int count = 0;
    for (const auto& request : seen_) count += request.path == path;
    return count;
}

void LocalServer::handle(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer data) {
    auto* self = static_cast<LocalServer*>(data);
    Request request{soup_server_message_get_method(message), path, {}};
    soup_message_headers_foreach(
        soup_server_message_get_request_headers(message),
        [](const char* name, const char* value, gpointer headers) {
            std::string lower = name;
            for (char& c : lower) c = g_ascii_tolower(c);
            (*static_cast<std::map<std::string, std::string>*>(headers))[lower] = value;
        },
        &request.headers);
    self->seen_.push_back(request);

    Answer answer;
    auto it = self->routes_.find(path);
    if (it != self->routes_.end()) {
        answer = it->second(request);
    } else {
        answer.status = 404;
        answer.body = "<!doctype html><title>Not here</title><p>Nothing here.</p>";
    }

    // A request is open from its arrival until its answer goes out.
    ++self->open_;
    self->mostOpen_ = std::max(self->mostOpen_, self->open_);
    if (answer.never) {
        soup_server_message_pause(message);
        self->held_.push_back(static_cast<SoupServerMessage*>(g_object_ref(message)));
        // Closing the connection from the other side ends it as open.
        g_signal_connect_swapped(message, "disconnected", G_CALLBACK(+[](gpointer server) {
                                     --static_cast<LocalServer*>(server)->open_;
                                 }),
                                 self);
        return;
    }
    if (answer.delayMs == 0) {
        self->respond(message, answer);
        return;
    }
    soup_server_message_pause(message);
    struct Later {
        LocalServer* server;
        SoupServerMessage* message;
        Answer answer;
        guint id = 0;
    };
    auto* later = new Later{self, static_cast<SoupServerMessage*>(g_object_ref(message)), answer};
    later->id = g_timeout_add_full(
        G_PRIORITY_DEFAULT, answer.delayMs,
        [](gpointer data) {
            auto* later = static_cast<Later*>(data);
            auto& timers = later->server->timers_;
            timers.erase(std::remove(timers.begin(), timers.end(), later->id), timers.end());
            later->server->respond(later->message, later->answer);
            soup_server_message_unpause(later->message);
            return G_SOURCE_REMOVE;
        },
        later,
        [](gpointer data) {
            auto* later = static_cast<Later*>(data);
            g_object_unref(later->message);
            delete later;
        });
    self->timers_.push_back(later->id);
}

void LocalServer::respond(SoupServerMessage* message, const Answer& answer) {
    --open_;
    soup_server_message_set_status(message, answer.status, nullptr);
    auto* headers = soup_server_message_get_response_headers(message);
    for (const auto& [name, value] : answer.headers) soup_message_headers_append(headers, name.c_str(), value.c_str());
    soup_server_message_set_response(message, answer.contentType.c_str(), SOUP_MEMORY_COPY, answer.body.data(),
                                     answer.body.size());
}

}  // namespace lectern::testing
