#pragma once

#include <gio/gio.h>

#include <memory>
#include <set>

#include "present/action_runner.h"
#include "present/http_transport.h"

typedef struct _SoupSession SoupSession;

namespace lectern {

// Sends demo-action requests with libsoup: one session per transport, made
// fresh, so it has no cookie jar and no cache and keeps nothing between
// runs. Requests run on the thread-default main context of the caller.
class SoupHttpTransport : public HttpTransport {
public:
    // `timeoutSeconds` bounds every wait for the network (connecting,
    // sending, each read of the response) and how long an unused
    // connection stays open; whole seconds, at least one.
    explicit SoupHttpTransport(double timeoutSeconds = ActionRunner::requestTimeoutSeconds);
    // Cancels every request in flight; none of them calls back.
    ~SoupHttpTransport() override;
    SoupHttpTransport(const SoupHttpTransport&) = delete;
    SoupHttpTransport& operator=(const SoupHttpTransport&) = delete;

    void send(const HttpRequest& request, std::function<void(Result<HttpResponse>)> done) override;

private:
    struct Pending;
    static void onSent(GObject* source, GAsyncResult* result, gpointer data);
    static gboolean onDeadline(gpointer data);
    static gboolean onRefused(gpointer data);

    struct SessionUnref {
        void operator()(SoupSession* session) const;
    };
    std::unique_ptr<SoupSession, SessionUnref> session_;
    std::set<Pending*> pending_;  // each owned by its async call
};

// A runner as the application uses it: its own SoupHttpTransport with the
// 15-second timeout, the monotonic clock, and the profile cookies of `cookies`.
std::unique_ptr<ActionRunner> makeActionRunner(std::shared_ptr<CookieSource> cookies);

}  // namespace lectern
