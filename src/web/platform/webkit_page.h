#pragma once

#include <webkit/webkit.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/platform/gobject_ref.h"
#include "web/web_page.h"

namespace lectern {

class WebSessions;

// A WebPage over a WebKitWebView of the web engine. The view is a widget:
// put widget() into a container to show the page; a page in no window still
// loads (hidden pages of the prefetcher and the check).
class WebKitPage : public WebPage {
public:
    // A new view in `session` with JavaScript on; `accelerated`: pages may
    // composite with OpenGL (off where OpenGL is software only).
    explicit WebKitPage(WebKitNetworkSession* session, bool accelerated = true);
    ~WebKitPage() override;

    GtkWidget* widget() const { return GTK_WIDGET(view_.get()); }
    WebKitWebView* view() const { return view_.get(); }

    void load(const std::string& url) override;
    void stopLoading() override;
    std::string currentUrl() const override;
    bool isLoading() const override;
    bool lastLoadFailed() const override;
    double zoom() const override;
    void setZoom(double zoom) override;
    void setDelegate(WebPageDelegate* delegate) override;
    // The engine draws the visible area, also of a view in no window (laid
    // out by the factory); the pixels are encoded as PNG on another thread.
    void snapshot(std::function<void(std::optional<std::string>)> done) override;

    void evaluateAsyncFunction(const std::string& body,
                               std::function<void(Result<std::optional<std::string>>)> done) override;
    void reload() override;

private:
    // Tells the owner of the main page's answer; true when the response was
    // decided here (downloaded, or refused in a page in no window).
    bool responseArrived(WebKitResponsePolicyDecision* response);
    // Whether a navigation may go ahead: web addresses only, for the page
    // itself, new windows and redirects alike.
    bool mayNavigate(WebKitNavigationAction* action, bool newWindow);
    // Ends the running load as failed and tells the owner.
    void fail(const std::string& message);
    void armTimeout();
    void disarmTimeout();

    GObjectRef<WebKitWebView> view_;
    WebPageDelegate* delegate_ = nullptr;
    std::vector<gulong> handlers_;
    guint timeout_ = 0;    // the running load's time-out
    bool failed_ = false;  // the running load failed already
    std::string requested_;    // the address last asked for
    std::uint64_t loads_ = 0;  // counts load() calls: a late answer about an older load is dropped
    bool lastFailed_ = false;  // the last load ended in failure or timed out
    bool downloading_ = false;  // the running load became a download
    std::optional<std::string> refusedRedirect_;  // why the running load's redirect was refused
    // Script calls in flight hold this; the page going away cancels them.
    GObjectRef<GCancellable> cancellable_;
};

// Pages in the store of a profile, from a set of sessions.
class WebKitPageFactory : public WebPageFactory {
public:
    explicit WebKitPageFactory(WebSessions& sessions) : sessions_(sessions) {}
    std::shared_ptr<WebPage> makePage(const std::optional<Uuid>& profileId) override;
    WebSessions& sessions() const { return sessions_; }

    // The size of the stage's web area: new pages are laid out at it even
    // while no window shows them (pages loaded ahead).
    void setHiddenSize(int width, int height) { hiddenWidth_ = width; hiddenHeight_ = height; }
    // Whether new pages may use hardware acceleration.
    void setHardwareAcceleration(bool on) { accelerated_ = on; }

private:
    WebSessions& sessions_;
    int hiddenWidth_ = 0, hiddenHeight_ = 0;
    bool accelerated_ = true;
};

}  // namespace lectern
