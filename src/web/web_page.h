#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "model/uuid.h"
#include "web/live_web_view.h"
#include "web/trusted_certificates.h"

namespace lectern {

// What a web page reports while it loads. The owner of a page (a web pane,
// a check's probe) attaches one; hidden pages have none and are not watched.
class WebPageDelegate {
public:
    virtual ~WebPageDelegate() = default;
    // The main frame's HTTP response arrived (status 0: not HTTP, such as a
    // file or data address). Called before the page finishes.
    virtual void responseReceived(int /*status*/) {}
    // The page and its resources finished loading.
    virtual void loadFinished() = 0;
    // A load failed. `cancelled` is true when another load replaced it.
    virtual void loadFailed(const std::string& message, bool cancelled) = 0;
    // The engine rejected the main frame's server certificate; loadFailed
    // follows at once with the reason. The user may trust exactly this
    // certificate for its host in the page's store (WebSessions).
    virtual void certificateRejected(const HostCertificate& /*certificate*/) {}
    // The page's web process crashed or was killed.
    virtual void processTerminated() {}
    // The page asked for a new window (a link with a target) for `url`.
    // Only web addresses reach here: the page refuses every other scheme.
    virtual void newWindowRequested(const std::string& /*url*/) {}
    // The site asks for a user name and password (HTTP authentication).
    // True: the owner has dealt with it and the request is refused; false
    // leaves it to the engine, which asks the user.
    virtual bool authenticationRequested() { return false; }
};

// A web page in a browser view of the web engine, on screen or hidden. The
// logic (panes, the prefetcher, the check) works on this interface; the web
// layer implements it over the engine and tests use fakes. Main thread only.
class WebPage : public LiveWebView {
public:
    // Loads `url` with the protocol's default cache rules and a 60-second
    // time-out; any load in progress is replaced. Only http and https ever
    // load, however a navigation starts (this call, a link, a new window,
    // a redirect); any other address fails or is refused.
    virtual void load(const std::string& url) = 0;
    virtual void stopLoading() = 0;
    // The address the page shows or is loading ("" before the first load).
    virtual std::string currentUrl() const = 0;
    virtual bool isLoading() const = 0;
    // The last load failed or timed out: what the page shows is not
    // `currentUrl()`, so whoever takes the page on loads it again.
    virtual bool lastLoadFailed() const = 0;
    // Page zoom, 1.0 = actual size. Changing it never reloads.
    virtual double zoom() const = 0;
    virtual void setZoom(double zoom) = 0;
    // The one delegate of the page; null detaches it. The page never owns it.
    virtual void setDelegate(WebPageDelegate* delegate) = 0;
    // A picture of what the page shows (its visible area) as PNG bytes, or
    // none when the engine has none to give. `done` may be called at once.
    virtual void snapshot(std::function<void(std::optional<std::string>)> done) { done(std::nullopt); }
};

// Makes pages in the website data store of a browser profile (none: the
// shared session), with JavaScript on and no address loaded.
class WebPageFactory {
public:
    virtual ~WebPageFactory() = default;
    virtual std::shared_ptr<WebPage> makePage(const std::optional<Uuid>& profileId) = 0;
};

}  // namespace lectern
