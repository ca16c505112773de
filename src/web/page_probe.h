#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "model/uuid.h"
#include "base/scheduler.h"
#include "web/web_check_outcome.h"
#include "web/web_page.h"

namespace lectern {

// Loads one address in a hidden page of a browser profile's store and tells
// how that went, once: the first of a time-out, an HTTP error status of the
// main frame, a failed load or a finished load counts. A page that finished
// at its own address, not asked for as a sign-in page, is asked whether it
// shows a password field: one that does is `redirected` with "Shows a
// sign-in form". Finishing stops the page and lets it go. Main thread only;
// always held by a shared_ptr.
class PageProbe : public WebPageDelegate, public std::enable_shared_from_this<PageProbe> {
public:
    static constexpr double defaultTimeLimitSeconds = 20;
    // How long the page may take to answer whether it shows a sign-in form;
    // no answer in time counts as none.
    static constexpr double formCheckSeconds = 2;
    // A page that draws its form with scripts after it loaded (an app that
    // asks its server who is signed in first) shows it late: a page without
    // a form is asked again every `formRetrySeconds` until
    // `formSettleSeconds` after its load.
    static constexpr double formRetrySeconds = 0.5;
    static constexpr double formSettleSeconds = 1.5;
    // Run in the loaded page's main frame: "true" when it shows a password
    // field that is rendered (a box of its own, not hidden by itself or an
    // ancestor), "false" otherwise.
    static constexpr const char* signInFormScript = R"js(
for (const field of document.querySelectorAll('input[type="password" i]')) {
  const style = getComputedStyle(field);
  if (style.display === 'none' || style.visibility !== 'visible') continue;
  if (field.getClientRects().length === 0) continue;
  const box = field.getBoundingClientRect();
  if (box.width > 0 && box.height > 0) return true;
}
return false;
)js";

    using Done = std::function<void(WebCheckOutcome)>;

    // Runs signInFormScript in `page` and answers whether it shows a
    // sign-in form: true or false as the page said, none when it could not
    // say (the script failed). The answer may come before this returns, or
    // never (a page that goes away).
    static void askForSignInForm(LiveWebView& page, std::function<void(std::optional<bool>)> answer);

    // Makes the page and starts loading `url`. `done` may be called before
    // this returns (a page that fails at once) and never after cancel().
    static std::shared_ptr<PageProbe> start(WebPageFactory& pages, Scheduler& scheduler, std::string url,
                                            const std::optional<Uuid>& profileId, Done done,
                                            double timeLimitSeconds = defaultTimeLimitSeconds);
    ~PageProbe() override;
    PageProbe(const PageProbe&) = delete;
    PageProbe& operator=(const PageProbe&) = delete;

    // Stops loading and lets the page go without an outcome.
    void cancel();
    // Called with the page, just before it is let go, when the outcome is ok
    // (whoever wants it may keep it a while, for a picture).
    void whenLoadedWell(std::function<void(const std::shared_ptr<WebPage>&)> use) { loadedWell_ = std::move(use); }
    bool isFinished() const { return !done_; }
    const std::string& requested() const { return requested_; }

    // "Timed out after 20 s".
    static std::string timeoutMessage(double seconds);

    void responseReceived(int status) override;
    void loadFinished() override;
    void loadFailed(const std::string& message, bool cancelled) override;
    void processTerminated() override;
    // A server certificate nobody trusted yet fails with the way to trust it.
    void certificateRejected(const HostCertificate& certificate) override;
    // A page behind HTTP authentication fails at once: nobody is there to
    // sign in to a hidden page.
    bool authenticationRequested() override;

private:
    PageProbe(Scheduler& scheduler, std::string url, Done done);
    void finish(WebCheckOutcome outcome);
    // The load finished at its own address: asks the page for a sign-in
    // form in place of the load's time limit.
    void checkForSignInForm();
    // Stops the page, detaches from it and drops it on the next turn of the
    // main loop, as this may run inside one of the page's own callbacks.
    void release();

    Scheduler& scheduler_;
    std::string requested_;
    Done done_;
    std::shared_ptr<WebPage> page_;
    std::function<void(const std::shared_ptr<WebPage>&)> loadedWell_;
    void askForForm(double askedAt);

    Scheduler::TimerId timer_ = 0;
    Scheduler::TimerId retry_ = 0;
    bool checkingForm_ = false;  // the load is over; only the form check's answer counts
};

}  // namespace lectern
