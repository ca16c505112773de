#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "web/web_page.h"

namespace lectern::testing {

// A page that records what is asked of it; the test plays the engine's part
// by calling finish(), fail() and the like.
class FakeWebPage : public WebPage {
public:
    explicit FakeWebPage(std::optional<Uuid> profileId) : profileId(std::move(profileId)) {}

    void load(const std::string& url) override {
        loads.push_back(url);
        url_ = url;
        loading_ = true;
        failed_ = false;
        if (refuseWith) fail(*refuseWith);
    }
    void stopLoading() override {
        ++stops;
        loading_ = false;
    }
    std::string currentUrl() const override { return url_; }
    bool isLoading() const override { return loading_; }
    bool lastLoadFailed() const override { return failed_; }
    double zoom() const override { return zoom_; }
    void setZoom(double zoom) override { zoom_ = zoom; }
    void setDelegate(WebPageDelegate* delegate) override { delegate_ = delegate; }
    void evaluateAsyncFunction(const std::string& body,
                               std::function<void(Result<std::optional<std::string>>)> done) override {
        scripts.push_back(body);
        if (holdScripts) heldScripts.push_back(std::move(done));
        else done(scriptAnswer);
    }
    void reload() override {
        ++reloads;
        loading_ = true;
    }
    void snapshot(std::function<void(std::optional<std::string>)> done) override {
        ++snapshots;
        done(picture);
    }

    // The engine's side.
    void finish(int status = 200) {
        loading_ = false;
        if (delegate_) delegate_->responseReceived(status);
        if (delegate_) delegate_->loadFinished();
    }
    void fail(const std::string& message, bool cancelled = false) {
        loading_ = false;
        failed_ = !cancelled;
        if (delegate_) delegate_->loadFailed(message, cancelled);
    }
    void redirect(const std::string& url) { url_ = url; }
    WebPageDelegate* delegate() const { return delegate_; }

    std::optional<Uuid> profileId;
    std::optional<std::string> refuseWith;  // load() fails at once with this
    std::vector<std::string> loads;
    std::vector<std::string> scripts;
    // Scripts answer at once with this, unless held: then they wait in
    // heldScripts for the test to answer them (or never).
    Result<std::optional<std::string>> scriptAnswer{std::optional<std::string>("ran")};
    bool holdScripts = false;
    std::vector<std::function<void(Result<std::optional<std::string>>)>> heldScripts;
    int stops = 0;
    int reloads = 0;
    std::optional<std::string> picture = std::string("PNG of the page");  // what snapshot() gives
    int snapshots = 0;

private:
    std::string url_;
    bool loading_ = false;
    bool failed_ = false;
    double zoom_ = 1.0;
    WebPageDelegate* delegate_ = nullptr;
};

// Makes fake pages and keeps every one it made, in order.
class FakeWebPageFactory : public WebPageFactory {
public:
    std::shared_ptr<WebPage> makePage(const std::optional<Uuid>& profileId) override {
        auto page = std::make_shared<FakeWebPage>(profileId);
        made.push_back(page);
        return page;
    }
    std::vector<std::shared_ptr<FakeWebPage>> made;
};

}  // namespace lectern::testing
