#include "web/platform/stopped_load_reason.h"

#include <glib/gi18n.h>

#include <libsoup/soup.h>

#include <memory>
#include <utility>

#include "web/refused_address.h"

namespace lectern {

namespace {

constexpr int mostHops = 5;
constexpr const char* stoppedMessage = N_("The page’s web process stopped while loading it");

struct Search {
    std::function<void(const std::string&)> done;
    GCancellable* cancellable;
    int hops = 0;
    SoupMessage* message = nullptr;  // the request on its way
};

SoupSession* plainSession() {
    // No cookie jar, no cache: only the answers' redirects matter.
    static SoupSession* session = soup_session_new_with_options("timeout", 5u, "idle-timeout", 5u, nullptr);
    return session;
}

void ask(std::unique_ptr<Search> search, const std::string& url);

void answered(GObject* source, GAsyncResult* result, gpointer data) {
    std::unique_ptr<Search> search(static_cast<Search*>(data));
    SoupMessage* message = std::exchange(search->message, nullptr);
    GInputStream* body = soup_session_send_finish(SOUP_SESSION(source), result, nullptr);
    if (body) g_object_unref(body);
    if (g_cancellable_is_cancelled(search->cancellable)) {
        g_object_unref(message);
        return;
    }
    std::string next;
    if (body && SOUP_STATUS_IS_REDIRECTION(soup_message_get_status(message))) {
        const char* location = soup_message_headers_get_one(soup_message_get_response_headers(message), "Location");
        if (location) {
            char* base = g_uri_to_string(soup_message_get_uri(message));
            char* resolved = g_uri_resolve_relative(base, location, G_URI_FLAGS_NONE, nullptr);
            if (resolved) next = resolved;
            g_free(resolved);
            g_free(base);
        }
    }
    g_object_unref(message);
    if (next.empty()) {
        search->done(_(stoppedMessage));
        return;
    }
    if (auto reason = refusalReason(next)) {
        search->done(*reason);
        return;
    }
    if (++search->hops >= mostHops) {
        search->done(_(stoppedMessage));
        return;
    }
    ask(std::move(search), next);
}

void ask(std::unique_ptr<Search> search, const std::string& url) {
    SoupMessage* message = soup_message_new(SOUP_METHOD_GET, url.c_str());
    if (!message) {
        search->done(_(stoppedMessage));
        return;
    }
    soup_message_add_flags(message, SOUP_MESSAGE_NO_REDIRECT);
    search->message = message;
    GCancellable* cancellable = search->cancellable;
    soup_session_send_async(plainSession(), message, G_PRIORITY_DEFAULT, cancellable, answered, search.release());
}

}  // namespace

void findStoppedLoadReason(const std::string& url, GCancellable* cancellable,
                           std::function<void(const std::string&)> done) {
    auto search = std::make_unique<Search>();
    search->done = std::move(done);
    search->cancellable = cancellable;
    ask(std::move(search), url);
}

}  // namespace lectern
