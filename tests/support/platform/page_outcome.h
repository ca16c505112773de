#pragma once

#include <string>
#include <vector>

#include "web/web_page.h"

namespace lectern::testing {

// What a page's owner hears: finished loads and real failures. As a slide's
// pane does, a new window a page asks for loads in the same view.
class PageOutcome : public WebPageDelegate {
public:
    explicit PageOutcome(WebPage& page) : page_(page) { page_.setDelegate(this); }
    ~PageOutcome() override { page_.setDelegate(nullptr); }
    void loadFinished() override { ++finished; }
    void newWindowRequested(const std::string& url) override { page_.load(url); }
    void loadFailed(const std::string& message, bool cancelled) override {
        if (!cancelled) failures.push_back(message);
    }
    int finished = 0;
    std::vector<std::string> failures;

private:
    WebPage& page_;
};

}  // namespace lectern::testing
