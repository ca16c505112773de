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
    if (status >= 400) finish(WebCheckOutcome::failed(httpFailureMessage(status)));
}

void PageProbe::loadFinished() {
    std::string finalUrl = page_ ? page_->currentUrl() : std::string();
    auto note = redirectNote(requested_, finalUrl);
    finish(note ? WebCheckOutcome::redirected(*note) : WebCheckOutcome::ok());
}

void PageProbe::loadFailed(const std::string& message, bool cancelled) {
    // A load that another one replaced (the page sent itself on) is no
    // outcome: the new load reports in its turn.
    if (cancelled) return;
    finish(WebCheckOutcome::failed(message));
}

void PageProbe::processTerminated() {
    finish(WebCheckOutcome::failed(_("The page’s web process stopped unexpectedly")));
}

bool PageProbe::authenticationRequested() {
    finish(WebCheckOutcome::failed(httpFailureMessage(401)));
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
    release();
    done(std::move(outcome));
}

void PageProbe::release() {
    if (timer_) scheduler_.cancel(std::exchange(timer_, 0));
    if (auto page = std::move(page_)) {
        page->setDelegate(nullptr);
        page->stopLoading();
        scheduler_.after(0, [page] {});
    }
}

}  // namespace lectern
