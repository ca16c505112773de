#include "web/web_pane_controller.h"

#include <utility>

#include "base/translation.h"
#include "web/page_pictures.h"
#include "web/page_probe.h"
#include "web/refused_address.h"
#include "web/web_check_outcome.h"
#include "web/web_prefetcher.h"

namespace lectern {

WebPaneController::WebPaneController(Inputs inputs, WebPageFactory& pages, Scheduler& scheduler,
                                     WebPrefetcher* prefetcher, std::optional<Uuid> windowId,
                                     std::shared_ptr<LiveWebViewRegistry> registry)
    : inputs_(std::move(inputs)),
      scheduler_(scheduler),
      prefetcher_(windowId ? prefetcher : nullptr),
      windowId_(std::move(windowId)),
      registry_(std::move(registry)) {
    PrefetchKey key{inputs_.url, inputs_.profileId};
    if (prefetcher_) {
        page_ = prefetcher_->adopt(*windowId_, key);
        prefetchKey_ = key;
        adopted_ = page_ != nullptr;
    }
    if (!page_) page_ = pages.makePage(inputs_.profileId);
    page_->setDelegate(this);
    if (page_->zoom() != inputs_.zoom) page_->setZoom(inputs_.zoom);
    registerPage();

    if (page_->isLoading()) {
        // A prefetched page still on its way: it finishes under our eyes.
        postStatus(WebLoadStatus::loading());
    } else if (page_->currentUrl().empty() || page_->currentUrl() != inputs_.url || page_->lastLoadFailed()) {
        // A page loaded ahead that failed or timed out gets a fresh try.
        loadCurrent();
    } else {
        // A prefetched page that is already there: shown as it is.
        postStatus(WebLoadStatus::loaded());
        checkForSignInForm();
    }
}

WebPaneController::~WebPaneController() {
    *alive_ = false;
    page_->setDelegate(nullptr);
    // The registry forgets the page unless a later pane took the entry.
    if (registry_ && inputs_.slideId && registry_->lookup(*inputs_.slideId) == page_) {
        registry_->unregisterView(*inputs_.slideId);
    }
    if (prefetcher_ && prefetchKey_) {
        if (prefetcher_->takeBack(page_, *windowId_, *prefetchKey_)) return;  // lives on, hidden
    }
    page_->stopLoading();
}

void WebPaneController::update(const Inputs& inputs) {
    bool urlChanged = inputs.url != inputs_.url;
    inputs_ = inputs;
    if (page_->zoom() != inputs_.zoom) page_->setZoom(inputs_.zoom);  // never reloads
    if (lastLoadedUrl_ && inputs_.url == *lastLoadedUrl_) return;
    if (!lastLoadedUrl_ && !urlChanged) return;  // an adopted page of this address
    PrefetchKey key{inputs_.url, inputs_.profileId};
    if (prefetcher_) {
        if (prefetchKey_) prefetcher_->release(*windowId_, *prefetchKey_);
        prefetchKey_ = key;
    }
    registerPage();
    loadCurrent();
}

void WebPaneController::retry() {
    registerPage();
    loadCurrent();
}

void WebPaneController::registerPage() {
    if (registry_ && inputs_.slideId) registry_->registerView(*inputs_.slideId, page_);
}

void WebPaneController::loadCurrent() {
    lastLoadedUrl_ = inputs_.url;
    rejectedCertificate_.reset();
    // Loading first: a page may refuse the address at once, and its
    // failure must be the status that stays.
    postStatus(WebLoadStatus::loading());
    ++loads_;
    setShowsSignInForm(false);
    page_->load(inputs_.url);
}

void WebPaneController::checkForSignInForm() {
    unsigned load = ++loads_;
    if (looksLikeSignIn(page_->currentUrl())) {
        setShowsSignInForm(false);  // a sign-in page is expected to show its form
        return;
    }
    askForSignInForm(load, 0);
}

void WebPaneController::askForSignInForm(unsigned load, double askedAt) {
    PageProbe::askForSignInForm(*page_, [this, alive = alive_, load, askedAt](std::optional<bool> shows) {
        if (!*alive || load != loads_) return;
        setShowsSignInForm(shows == true);
        // A form that scripts draw after the load shows late: a page that
        // said it has none is asked again for a moment, as the check does.
        if (shows != false || askedAt + PageProbe::formRetrySeconds > PageProbe::formSettleSeconds) return;
        scheduler_.after(PageProbe::formRetrySeconds, [this, alive, load, askedAt] {
            if (*alive && load == loads_) askForSignInForm(load, askedAt + PageProbe::formRetrySeconds);
        });
    });
}

void WebPaneController::setShowsSignInForm(bool shows) {
    if (showsSignInForm_ == shows) return;
    showsSignInForm_ = shows;
    signInFormChanged_.emit();
}

void WebPaneController::postStatus(WebLoadStatus status) {
    // Written on the next turn, never while the caller is still building or
    // updating the view.
    scheduler_.after(0, [this, alive = alive_, status = std::move(status)] {
        if (!*alive || status_ == status) return;
        status_ = status;
        if (status_.kind == WebLoadStatus::Kind::loaded && pictures_ && inputs_.slideId) {
            pictures_->takeSoon(page_, *inputs_.slideId, inputs_.url, scheduler_);
        }
        statusChanged_.emit();
    });
}

void WebPaneController::loadFinished() {
    postStatus(WebLoadStatus::loaded());
    checkForSignInForm();
}

void WebPaneController::loadFailed(const std::string& message, bool cancelled) {
    // A load replaced by another is not a failure.
    if (cancelled) return;
    postStatus(WebLoadStatus::failed(message, std::exchange(rejectedCertificate_, std::nullopt)));
}

void WebPaneController::certificateRejected(const HostCertificate& certificate) { rejectedCertificate_ = certificate; }

void WebPaneController::processTerminated() {
    // The page is gone until the reload brings it back (or fails again).
    postStatus(WebLoadStatus::failed(_("The page’s web process stopped unexpectedly")));
    page_->reload();
}

void WebPaneController::newWindowRequested(const std::string& url) {
    // A page never gets a local file (or any other scheme) onto the stage.
    if (!refusalReason(url)) page_->load(url);
}

}  // namespace lectern
