#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/result.h"
#include "base/signal.h"
#include "model/slide.h"
#include "present/http_transport.h"
#include "web/live_web_view_registry.h"

namespace lectern {

// Runs demo actions and keeps each one's outcome for display: HTTP requests
// to an endpoint the presenter names, or scripts in the slide's live page.
// All on the main loop; every failure ends as a failure text, nothing throws.
class ActionRunner {
public:
    struct RunState {
        enum class Kind { idle, running, success, failure };
        Kind kind = Kind::idle;
        std::string text;  // of success and failure
        static RunState idle() { return {}; }
        static RunState running() { return {Kind::running, {}}; }
        static RunState success(std::string text) { return {Kind::success, std::move(text)}; }
        static RunState failure(std::string text) { return {Kind::failure, std::move(text)}; }
        friend bool operator==(const RunState&, const RunState&) = default;
    };
    struct Completed {
        std::string name;  // the action's name, or "Untitled action"
        RunState state;
        friend bool operator==(const Completed&, const Completed&) = default;
    };
    // All that is known of an action's last finished run, for the presenter
    // to read in full: what came back, how long it took, when it ran.
    struct RunDetails {
        std::string status;    // "HTTP 500", "Script finished", or why the run failed
        std::string excerpt;   // the response body's excerpt, or what the script returned
        double startedAt = 0;  // wall-clock seconds since the epoch
        double seconds = 0;    // from the start of the run to its outcome
        friend bool operator==(const RunDetails&, const RunDetails&) = default;
    };

    static constexpr double requestTimeoutSeconds = 15;

    // `transport` is this runner's own ephemeral session; `cookies` gives the
    // profile cookies that requests may carry (may be null: no cookies).
    // `clock` gives monotonic seconds for the elapsed time of a request;
    // `wallClock` seconds since the epoch for when a run started (none: the
    // system's real time).
    ActionRunner(std::unique_ptr<HttpTransport> transport, std::shared_ptr<CookieSource> cookies,
                 std::function<double()> clock, std::function<double()> wallClock = {});
    ~ActionRunner();
    ActionRunner(const ActionRunner&) = delete;
    ActionRunner& operator=(const ActionRunner&) = delete;

    RunState state(const Uuid& actionId) const;
    const std::map<Uuid, RunState>& states() const { return states_; }
    const std::optional<Completed>& lastCompleted() const { return lastCompleted_; }
    // The last finished run of the action; none before its first outcome.
    // A run under way leaves the previous run's details in place.
    std::optional<RunDetails> details(const Uuid& actionId) const;
    // The details as lines to read: status, duration, time of day (local
    // time), then the excerpt when there is one.
    static std::string describe(const RunDetails& details);

    // Runs the action of the slide; `done` is called after the outcome is
    // recorded (never if the runner goes away first). `views` may be null;
    // the slide's page is looked up in it when the run starts, so it need
    // not outlive the call.
    void run(const SlideAction& action, const Slide& slide, const LiveWebViewRegistry* views,
             std::function<void()> done = {});
    void finish(const SlideAction& action, std::string text, bool isFailure);

    // Emitted after `states` or `lastCompleted` change.
    Signal<>& changed() { return changed_; }

    // The request an action sends, or the text of why it cannot be sent
    // ("URL is empty", "\"ftp://x\" isn't a valid http(s) URL").
    static Result<HttpRequest> buildRequest(const APIRequestSpec& spec, const std::vector<HttpCookie>& cookies);
    static bool cookieMatches(const HttpCookie& cookie, const std::string& url);
    // The "Cookie" header value for cookies: "name=value; name2=value2".
    static std::string cookieHeader(const std::vector<HttpCookie>& cookies);
    // The first 300 characters of a response body on one line (UTF-8, else
    // Latin-1; line ends and white space become spaces; trimmed).
    static std::string bodyExcerpt(std::span<const std::uint8_t> body);
    static std::string displayName(const SlideAction& action);

private:
    // Sets the state and lastCompleted, and tells who listens.
    void record(const SlideAction& action, std::string text, bool isFailure);

    std::unique_ptr<HttpTransport> transport_;
    std::shared_ptr<CookieSource> cookies_;
    std::function<double()> clock_;
    std::function<double()> wallClock_;
    std::map<Uuid, RunState> states_;
    std::map<Uuid, RunDetails> details_;
    std::optional<Completed> lastCompleted_;
    Signal<> changed_;
    // Outlives nothing: callbacks check it to know the runner still exists.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace lectern
