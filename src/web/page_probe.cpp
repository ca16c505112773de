#include "web/page_probe.h"

#include <glib/gi18n.h>

#include <cmath>
#include <utility>

#include "base/translation.h"

namespace lectern {

std::shared_ptr<PageProbe> PageProbe::start(WebPageFactory& pages, Scheduler& scheduler, std::string url,
                                            const std::optional<Uuid>& profileId, Done done,
                                            double timeLimitSeconds) {
    std::shared_ptr<PageProbe> probe(new PageProbe(scheduler, std::move(url), std::move(done)));
    std::weak_ptr<PageProbe> weak = probe;
    probe->timer_ = scheduler.after(timeLimitSeconds, [weak, timeLimitSeconds] {
        if (auto probe = weak.lock()) {
            probe->timer_ = 0;
            probe->finish(WebCheckOutcome::failed(timeoutMessage(timeLimitSeconds)));
        }
    });
    probe->page_ = pages.makePage(profileId);
    probe->page_->setDelegate(probe.get());
    // The page may report at once; the probe stays alive through that.
    probe->page_->load(probe->requested_);
    return probe;
}

PageProbe::PageProbe(Scheduler& scheduler, std::string url, Done done)
    : scheduler_(scheduler), requested_(std::move(url)), done_(std::move(done)) {}

PageProbe::~PageProbe() { release(); }

std::string PageProbe::timeoutMessage(double seconds) {
    return formatText(_("Timed out after %lld s"), static_cast<long long>(std::lround(seconds)));
}

void PageProbe::responseReceived(int status) {
    if (checkingForm_) return;
    if (status >= 400) finish(WebCheckOutcome::failed(httpFailureMessage(status)));
}

void PageProbe::loadFinished() {
    if (checkingForm_) return;
    std::string finalUrl = page_ ? page_->currentUrl() : std::string();
    if (auto note = redirectNote(requested_, finalUrl)) {
        finish(WebCheckOutcome::redirected(*note));
    } else if (!page_ || looksLikeSignIn(requested_)) {
        // A sign-in page that was asked for is expected to show its form.
        finish(WebCheckOutcome::ok());
    } else {
        checkForSignInForm();
    }
}

void PageProbe::checkForSignInForm() {
    checkingForm_ = true;
    if (timer_) scheduler_.cancel(std::exchange(timer_, 0));
    std::weak_ptr<PageProbe> weak = weak_from_this();
    timer_ = scheduler_.after(formCheckSeconds, [weak] {
        if (auto probe = weak.lock()) {
            probe->timer_ = 0;
            probe->finish(WebCheckOutcome::ok());
        }
    });
    askForForm(0);
}

void PageProbe::askForForm(double askedAt) {
    std::weak_ptr<PageProbe> weak = weak_from_this();
    // The page may answer at once; whoever is told may drop the probe.
    auto self = shared_from_this();
    askForSignInForm(*page_, [weak, askedAt](std::optional<bool> showsForm) {
        auto probe = weak.lock();
        if (!probe || probe->isFinished()) return;
        if (showsForm == true) {
            probe->finish(WebCheckOutcome::redirected(_(signInFormNote)));
        } else if (!showsForm || askedAt + formRetrySeconds > formSettleSeconds) {
            // A script that failed says nothing about the page: no form seen.
            probe->finish(WebCheckOutcome::ok());
        } else if (!probe->retry_) {
            probe->retry_ = probe->scheduler_.after(formRetrySeconds, [weak, askedAt] {
                if (auto again = weak.lock()) {
                    again->retry_ = 0;
                    if (again->page_ && !again->isFinished()) again->askForForm(askedAt + formRetrySeconds);
                }
            });
        }
    });
}

void PageProbe::askForSignInForm(LiveWebView& page, std::function<void(std::optional<bool>)> answer) {
    auto reply = [answer = std::move(answer)](Result<std::optional<std::string>> result) {
        const std::optional<std::string> said = result.ok() ? *result : std::nullopt;
        if (said == "true") answer(true);
        else if (said == "false") answer(false);
        else answer(std::nullopt);
    };
    page.evaluateAsyncFunction(signInFormScript, std::move(reply));
}

void PageProbe::loadFailed(const std::string& message, bool cancelled) {
    // A load that another one replaced (the page sent itself on) is no
    // outcome: the new load reports in its turn.
    if (cancelled || checkingForm_) return;
    finish(WebCheckOutcome::failed(message));
}

void PageProbe::processTerminated() {
    if (checkingForm_) return;  // the script fails, and the page counts as loaded
    finish(WebCheckOutcome::failed(_("The page’s web process stopped unexpectedly")));
}

void PageProbe::certificateRejected(const HostCertificate& certificate) {
    if (!checkingForm_) finish(WebCheckOutcome::failed(untrustedCertificateMessage(certificate.place())));
}

bool PageProbe::authenticationRequested() {
    if (!checkingForm_) finish(WebCheckOutcome::failed(httpFailureMessage(401)));
    return true;
}

void PageProbe::cancel() {
    done_ = nullptr;
    release();
}

void PageProbe::finish(WebCheckOutcome outcome) {
    if (!done_) return;
    auto self = shared_from_this();  // whoever is told may drop the probe
    Done done = std::exchange(done_, nullptr);
    if (outcome.kind == WebCheckOutcome::Kind::ok && page_ && loadedWell_) loadedWell_(page_);
    release();
    done(std::move(outcome));
}

void PageProbe::release() {
    if (timer_) scheduler_.cancel(std::exchange(timer_, 0));
    if (retry_) scheduler_.cancel(std::exchange(retry_, 0));
    if (auto page = std::move(page_)) {
        page->setDelegate(nullptr);
        page->stopLoading();
        scheduler_.after(0, [page] {});
    }
}

}  // namespace lectern
