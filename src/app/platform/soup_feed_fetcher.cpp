#include "app/platform/soup_feed_fetcher.h"

#include <glib/gi18n.h>
#include <libsoup/soup.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "app/build_info.h"

namespace lectern {
namespace {

constexpr gsize readChunk = 64 * 1024;

struct ErrorFree {
    void operator()(GError* error) const { g_error_free(error); }
};
using GErrorPtr = std::unique_ptr<GError, ErrorFree>;

struct BytesUnref {
    void operator()(GBytes* bytes) const { g_bytes_unref(bytes); }
};

// The flags libsoup itself parses HTTP addresses with.
constexpr auto httpUriFlags = GUriFlags(G_URI_FLAGS_HAS_PASSWORD | G_URI_FLAGS_ENCODED_PATH |
                                        G_URI_FLAGS_ENCODED_QUERY | G_URI_FLAGS_ENCODED_FRAGMENT |
                                        G_URI_FLAGS_SCHEME_NORMALIZE);

bool isHttps(GUri* uri) { return uri && g_ascii_strcasecmp(g_uri_get_scheme(uri), "https") == 0; }

}  // namespace

struct SoupFeedFetcher::Pending {
    SoupFeedFetcher* owner = nullptr;  // null once abandoned
    std::function<void(Result<std::string>)> done;
    GObjectRef<SoupMessage> message;
    GObjectRef<GCancellable> cancellable = GObjectRef<GCancellable>::take(g_cancellable_new());
    GObjectRef<GInputStream> stream;
    bool https = false;
    std::string body;
    std::size_t sizeLimit = 0;
    GSource* source = nullptr;  // the time limit, or the answer to a refused address
    bool timedOut = false;

    ~Pending() {
        removeSource();
        if (stream) {
            // Dropped unclosed, the stream would close itself by reading the
            // rest of the body, blocking; cancelled first, it closes at once.
            g_cancellable_cancel(cancellable.get());
            g_input_stream_close(stream.get(), cancellable.get(), nullptr);
        }
    }

    void removeSource() {
        if (!source) return;
        g_source_destroy(source);
        g_source_unref(std::exchange(source, nullptr));
    }

    // Ends the fetch: tells the caller unless it was abandoned, and frees it.
    static void finish(Pending* pending, Result<std::string> result) {
        std::unique_ptr<Pending> owned(pending);
        owned->removeSource();
        if (!owned->owner) return;
        owned->owner->pending_ = nullptr;
        // The callback may destroy the fetcher; it runs from a local copy.
        auto done = std::move(owned->done);
        owned.reset();
        done(std::move(result));
    }

    // Ends the fetch with the operation's error; a cancellation because of
    // the time limit says so.
    static void fail(Pending* pending, const GError* error) {
        if (pending->timedOut) {
            finish(pending, Error{_("The update feed didn’t answer in time")});
        } else {
            finish(pending, Error{error->message});
        }
    }

    void readMore() {
        g_input_stream_read_bytes_async(stream.get(), readChunk, G_PRIORITY_DEFAULT, cancellable.get(),
                                        &Pending::onRead, this);
    }

    static void onSent(GObject* source, GAsyncResult* result, gpointer data) {
        auto* pending = static_cast<Pending*>(data);
        GError* rawError = nullptr;
        GInputStream* stream = soup_session_send_finish(SOUP_SESSION(source), result, &rawError);
        GErrorPtr error(rawError);
        if (error) return fail(pending, error.get());
        pending->stream = GObjectRef<GInputStream>::take(stream);
        if (!pending->owner) return finish(pending, Error{""});

        SoupMessage* message = pending->message.get();
        guint status = soup_message_get_status(message);
        if (status >= 400) return finish(pending, Error{"HTTP " + std::to_string(status)});
        // A redirect may not take the feed off https, where it could be changed on the way.
        if (pending->https && !isHttps(soup_message_get_uri(message))) {
            return finish(pending, Error{_("The update feed was redirected to an address that isn’t secure")});
        }
        goffset length = soup_message_headers_get_content_length(soup_message_get_response_headers(message));
        if (length > goffset(pending->sizeLimit)) return finish(pending, Error{_("The update feed is too large")});
        pending->readMore();
    }

    static void onRead(GObject* source, GAsyncResult* result, gpointer data) {
        auto* pending = static_cast<Pending*>(data);
        GError* rawError = nullptr;
        std::unique_ptr<GBytes, BytesUnref> bytes(
            g_input_stream_read_bytes_finish(G_INPUT_STREAM(source), result, &rawError));
        GErrorPtr error(rawError);
        if (error) return fail(pending, error.get());
        gsize size = 0;
        const auto* chunk = static_cast<const char*>(g_bytes_get_data(bytes.get(), &size));
        if (size == 0) return finish(pending, std::move(pending->body));
        if (pending->body.size() + size > pending->sizeLimit) {
            return finish(pending, Error{_("The update feed is too large")});
        }
        pending->body.append(chunk, size);
        if (!pending->owner) return finish(pending, Error{""});
        pending->readMore();
    }

    static gboolean onDeadline(gpointer data) {
        auto* pending = static_cast<Pending*>(data);
        pending->timedOut = true;
        g_cancellable_cancel(pending->cancellable.get());
        return G_SOURCE_CONTINUE;  // removed when the fetch ends
    }

    static gboolean onRefused(gpointer data) {
        finish(static_cast<Pending*>(data), Error{_("The update address isn’t a web address")});
        return G_SOURCE_REMOVE;
    }
};

SoupFeedFetcher::SoupFeedFetcher(double timeoutSeconds, std::size_t sizeLimit)
    : timeoutSeconds_(std::max(timeoutSeconds, 0.001)), sizeLimit_(sizeLimit) {
    std::string agent = std::string("Lectern/") + build::version;
    guint seconds = guint(std::clamp(std::ceil(timeoutSeconds_), 1.0, double(G_MAXUINT)));
    // A plain session has neither a cookie jar nor a cache; nothing is kept.
    session_ = GObjectRef<SoupSession>::take(soup_session_new_with_options(
        "user-agent", agent.c_str(), "timeout", seconds, "idle-timeout", seconds, nullptr));
}

SoupFeedFetcher::~SoupFeedFetcher() { cancel(); }

void SoupFeedFetcher::cancel() {
    Pending* pending = std::exchange(pending_, nullptr);
    if (!pending) return;
    pending->owner = nullptr;
    pending->done = nullptr;
    if (!pending->message) {
        delete pending;  // a refusal not yet delivered: its idle source goes with it
        return;
    }
    // The call under way still reports, as cancelled, and frees it then.
    pending->removeSource();
    g_cancellable_cancel(pending->cancellable.get());
}

void SoupFeedFetcher::fetch(const std::string& url, std::function<void(Result<std::string>)> done) {
    cancel();
    auto* pending = new Pending;
    pending->owner = this;
    pending->done = std::move(done);
    pending->sizeLimit = sizeLimit_;
    pending_ = pending;

    GUri* uri = g_uri_parse(url.c_str(), httpUriFlags, nullptr);
    const char* scheme = uri ? g_uri_get_scheme(uri) : nullptr;
    const char* host = uri ? g_uri_get_host(uri) : nullptr;
    if (!scheme || (g_strcmp0(scheme, "http") != 0 && g_strcmp0(scheme, "https") != 0) || !host || !*host) {
        if (uri) g_uri_unref(uri);
        // Answered from the main loop like every fetch, never from inside fetch().
        pending->source = g_idle_source_new();
        g_source_set_callback(pending->source, &Pending::onRefused, pending, nullptr);
        g_source_attach(pending->source, g_main_context_get_thread_default());
        return;
    }
    pending->https = isHttps(uri);
    pending->message = GObjectRef<SoupMessage>::take(soup_message_new_from_uri(SOUP_METHOD_GET, uri));
    g_uri_unref(uri);
    soup_message_headers_replace(soup_message_get_request_headers(pending->message.get()), "Accept",
                                 "application/rss+xml, application/xml;q=0.9, text/xml;q=0.8, */*;q=0.1");

    // The session's timeout bounds each wait; this bounds the whole fetch,
    // so a server that trickles its answer cannot hold it forever.
    pending->source = g_timeout_source_new(guint(std::min(timeoutSeconds_ * 1000, double(G_MAXUINT))));
    g_source_set_callback(pending->source, &Pending::onDeadline, pending, nullptr);
    g_source_attach(pending->source, g_main_context_get_thread_default());
    soup_session_send_async(session_.get(), pending->message.get(), G_PRIORITY_DEFAULT, pending->cancellable.get(),
                            &Pending::onSent, pending);
}

std::unique_ptr<AppUpdater> makeAppUpdater(PreferencesStore& preferences, Scheduler& scheduler) {
    // The build's feed; LECTERN_UPDATE_FEED in the environment names another
    // (a local feed to try a release with).
    std::string feed = build::updateFeed;
    if (const char* chosen = g_getenv("LECTERN_UPDATE_FEED"); chosen && *chosen) feed = chosen;
    return std::make_unique<AppUpdater>(feed, build::version, preferences, scheduler,
                                        std::make_unique<SoupFeedFetcher>());
}

}  // namespace lectern
