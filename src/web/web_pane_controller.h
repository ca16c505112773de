#pragma once

#include <memory>
#include <optional>
#include <string>

#include "base/signal.h"
#include "model/uuid.h"
#include "base/scheduler.h"
#include "web/live_web_view_registry.h"
#include "web/prefetch_key.h"
#include "web/web_load_status.h"
#include "web/web_page.h"

namespace lectern {

class PagePictures;
class WebPrefetcher;

// The live page of a web slide on a window's stage: takes the prefetched
// page or makes one in the slide's browser profile, loads by fixed rules
// (an address change reloads, a zoom change never does), reports its load
// status, and registers the page under the slide's id for demo actions and
// Reset Web Page. Going away, it hands a still-wanted page back to the
// prefetcher so that coming back shows it at once. Main thread only.
class WebPaneController : private WebPageDelegate {
public:
    struct Inputs {
        std::string url;  // never empty: a slide without an address shows no pane
        std::optional<Uuid> profileId;
        std::optional<Uuid> slideId;
        double zoom = 1.0;
        friend bool operator==(const Inputs&, const Inputs&) = default;
    };
    // `prefetcher` and `windowId` may be absent (no prefetching then);
    // `registry` may be null.
    WebPaneController(Inputs inputs, WebPageFactory& pages, Scheduler& scheduler, WebPrefetcher* prefetcher,
                      std::optional<Uuid> windowId, std::shared_ptr<LiveWebViewRegistry> registry);
    ~WebPaneController() override;
    WebPaneController(const WebPaneController&) = delete;
    WebPaneController& operator=(const WebPaneController&) = delete;

    void update(const Inputs& inputs);
    // Loads the slide's address again (status loading): a page that failed,
    // tried anew, or after the user trusted the certificate that failed it.
    void retry();
    // Where each good load of the page leaves its picture (null: nowhere).
    void setPictures(PagePictures* pictures) { pictures_ = pictures; }

    const std::shared_ptr<WebPage>& page() const { return page_; }
    const WebLoadStatus& status() const { return status_; }
    const Inputs& inputs() const { return inputs_; }
    // True when the page came from the prefetcher.
    bool adopted() const { return adopted_; }
    // Emitted on the main-loop turn after the status changed.
    Signal<>& statusChanged() { return statusChanged_; }
    // Whether the page shows a sign-in form (its session has ended): asked,
    // as the web check asks, whenever a load (a reload too) finishes at an
    // address that is not itself a sign-in page; a new load clears it.
    bool showsSignInForm() const { return showsSignInForm_; }
    Signal<>& signInFormChanged() { return signInFormChanged_; }

private:
    void loadCurrent();
    void postStatus(WebLoadStatus status);
    void registerPage();
    void checkForSignInForm();
    // Asks the page of load number `load`, `askedAt` seconds after it loaded.
    void askForSignInForm(unsigned load, double askedAt);
    void setShowsSignInForm(bool shows);

    void loadFinished() override;
    void loadFailed(const std::string& message, bool cancelled) override;
    void certificateRejected(const HostCertificate& certificate) override;
    void processTerminated() override;
    void newWindowRequested(const std::string& url) override;

    Inputs inputs_;
    Scheduler& scheduler_;
    WebPrefetcher* prefetcher_;
    PagePictures* pictures_ = nullptr;
    std::optional<Uuid> windowId_;
    std::shared_ptr<LiveWebViewRegistry> registry_;
    std::shared_ptr<WebPage> page_;
    std::optional<PrefetchKey> prefetchKey_;
    std::optional<std::string> lastLoadedUrl_;
    WebLoadStatus status_;
    // Told by the page just before the failure it belongs to.
    std::optional<HostCertificate> rejectedCertificate_;
    bool adopted_ = false;
    Signal<> statusChanged_;
    bool showsSignInForm_ = false;
    unsigned loads_ = 0;  // finished loads: an answer about an older one is stale
    Signal<> signInFormChanged_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace lectern
