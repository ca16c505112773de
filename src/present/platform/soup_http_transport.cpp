#include "present/platform/soup_http_transport.h"

#include <glib/gi18n.h>

#include <libsoup/soup.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>

#include "base/translation.h"

namespace lectern {
namespace {

template <class T>
struct Unref {
    void operator()(T* object) const { g_object_unref(object); }
};
template <class T>
using GObjectPtr = std::unique_ptr<T, Unref<T>>;

struct ErrorFree {
    void operator()(GError* error) const { g_error_free(error); }
};
using GErrorPtr = std::unique_ptr<GError, ErrorFree>;

struct UriUnref {
    void operator()(GUri* uri) const { g_uri_unref(uri); }
};

struct BytesUnref {
    void operator()(GBytes* bytes) const { g_bytes_unref(bytes); }
};
using BytesPtr = std::unique_ptr<GBytes, BytesUnref>;

// libsoup refuses (with a critical warning) names and values that would
// break the request apart, so they are checked here and reported instead.
bool isToken(std::string_view text) {
    if (text.empty()) return false;
    return std::all_of(text.begin(), text.end(), [](char c) {
        return g_ascii_isalnum(c) || std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
    });
}

bool isHeaderValue(std::string_view text) { return text.find_first_of(std::string_view("\r\n\0", 3)) == text.npos; }

// The flags libsoup itself parses HTTP URLs with.
constexpr auto httpUriFlags = GUriFlags(G_URI_FLAGS_HAS_PASSWORD | G_URI_FLAGS_ENCODED_PATH |
                                        G_URI_FLAGS_ENCODED_QUERY | G_URI_FLAGS_ENCODED_FRAGMENT |
                                        G_URI_FLAGS_SCHEME_NORMALIZE);

// The message for a request, or why it cannot be sent.
Result<GObjectPtr<SoupMessage>> makeMessage(const HttpRequest& request) {
    if (!isToken(request.method)) return Error{formatText(_("\"%s\" isn't a valid HTTP method"), request.method.c_str())};
    std::unique_ptr<GUri, UriUnref> uri(g_uri_parse(request.url.c_str(), httpUriFlags, nullptr));
    const char* scheme = uri ? g_uri_get_scheme(uri.get()) : nullptr;
    const char* host = uri ? g_uri_get_host(uri.get()) : nullptr;
    if (!scheme || (g_strcmp0(scheme, "http") != 0 && g_strcmp0(scheme, "https") != 0) || !host || !*host) {
        return Error{_("Unsupported URL")};
    }
    for (const auto& [name, value] : request.headers) {
        if (!isToken(name) || !isHeaderValue(value)) return Error{formatText(_("The header \"%s\" can't be sent"), name.c_str())};
    }

    GObjectPtr<SoupMessage> message(soup_message_new_from_uri(request.method.c_str(), uri.get()));
    SoupMessageHeaders* headers = soup_message_get_request_headers(message.get());
    // Many APIs refuse requests without a User-Agent; a typed one replaces it.
    soup_message_headers_replace(headers, "User-Agent", "Lectern");
    // Header names are case-insensitive on the wire, so a row whose name
    // differs from an earlier one only in case replaces it.
    for (const auto& [name, value] : request.headers) {
        soup_message_headers_replace(headers, name.c_str(), value.c_str());
    }
    if (request.body) {
        // No content type here: the request's own headers already carry it.
        BytesPtr bytes(g_bytes_new(request.body->data(), request.body->size()));
        soup_message_set_request_body_from_bytes(message.get(), nullptr, bytes.get());
    }
    return message;
}

}  // namespace

struct SoupHttpTransport::Pending {
    SoupHttpTransport* owner = nullptr;  // null once the transport is gone
    GObjectPtr<SoupMessage> message;
    GObjectPtr<GCancellable> cancellable{g_cancellable_new()};
    std::function<void(Result<HttpResponse>)> done;
    std::optional<Error> refusal;  // why the request was not sent
    GSource* source = nullptr;     // the time limit, or the refusal's answer
    bool timedOut = false;

    void removeSource() {
        if (!source) return;
        g_source_destroy(source);
        g_source_unref(source);
        source = nullptr;
    }
};

void SoupHttpTransport::SessionUnref::operator()(SoupSession* session) const { g_object_unref(session); }

SoupHttpTransport::SoupHttpTransport(double timeoutSeconds) : session_(soup_session_new()) {
    guint seconds = guint(std::clamp(std::ceil(timeoutSeconds), 1.0, double(G_MAXUINT)));
    g_object_set(session_.get(), "timeout", seconds, "idle-timeout", seconds, nullptr);
}

SoupHttpTransport::~SoupHttpTransport() {
    for (Pending* pending : pending_) {
        pending->removeSource();
        if (!pending->message) {
            delete pending;  // a refusal not yet delivered
            continue;
        }
        // The call still reports to onSent (as cancelled), which frees it.
        pending->owner = nullptr;
        pending->done = nullptr;
        g_cancellable_cancel(pending->cancellable.get());
    }
}

void SoupHttpTransport::send(const HttpRequest& request, std::function<void(Result<HttpResponse>)> done) {
    auto* pending = new Pending;
    pending->owner = this;
    pending->done = std::move(done);
    pending_.insert(pending);

    auto message = makeMessage(request);
    if (!message) {
        // Answered from the main loop like every other request, never from
        // inside send().
        pending->refusal = message.error();
        pending->source = g_idle_source_new();
        g_source_set_callback(pending->source, &SoupHttpTransport::onRefused, pending, nullptr);
        g_source_attach(pending->source, g_main_context_get_thread_default());
        return;
    }
    pending->message = std::move(*message);

    // The session's timeout only bounds each wait; this bounds the whole
    // request, so a server that trickles its answer cannot hold it forever.
    if (request.timeoutSeconds > 0) {
        double milliseconds = std::min(request.timeoutSeconds * 1000, double(G_MAXUINT));
        pending->source = g_timeout_source_new(guint(milliseconds));
        g_source_set_callback(pending->source, &SoupHttpTransport::onDeadline, pending, nullptr);
        g_source_attach(pending->source, g_main_context_get_thread_default());
    }
    soup_session_send_and_read_async(session_.get(), pending->message.get(), G_PRIORITY_DEFAULT,
                                     pending->cancellable.get(), &SoupHttpTransport::onSent, pending);
}

gboolean SoupHttpTransport::onRefused(gpointer data) {
    std::unique_ptr<Pending> pending(static_cast<Pending*>(data));
    pending->removeSource();
    pending->owner->pending_.erase(pending.get());
    auto done = std::move(pending->done);
    done(*pending->refusal);
    return G_SOURCE_REMOVE;
}

gboolean SoupHttpTransport::onDeadline(gpointer data) {
    auto* pending = static_cast<Pending*>(data);
    pending->timedOut = true;
    g_cancellable_cancel(pending->cancellable.get());
    return G_SOURCE_CONTINUE;  // removed by onSent, which owns the source
}

void SoupHttpTransport::onSent(GObject* source, GAsyncResult* result, gpointer data) {
    std::unique_ptr<Pending> pending(static_cast<Pending*>(data));
    GError* rawError = nullptr;
    BytesPtr body(soup_session_send_and_read_finish(SOUP_SESSION(source), result, &rawError));
    GErrorPtr error(rawError);
    pending->removeSource();
    if (!pending->owner) return;
    pending->owner->pending_.erase(pending.get());

    // The callback may destroy the transport; it runs from a local copy.
    auto done = std::move(pending->done);
    if (error) {
        done(Error{pending->timedOut ? _("The request timed out") : error->message});
    } else {
        HttpResponse response;
        response.status = int(soup_message_get_status(pending->message.get()));
        gsize size = 0;
        auto* bytes = static_cast<const std::uint8_t*>(g_bytes_get_data(body.get(), &size));
        if (size > 0) response.body.assign(bytes, bytes + size);
        done(std::move(response));
    }
}

std::unique_ptr<ActionRunner> makeActionRunner(std::shared_ptr<CookieSource> cookies) {
    return std::make_unique<ActionRunner>(std::make_unique<SoupHttpTransport>(), std::move(cookies),
                                          [] { return double(g_get_monotonic_time()) / G_USEC_PER_SEC; });
}

}  // namespace lectern
