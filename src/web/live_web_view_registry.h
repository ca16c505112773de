#pragma once

#include <memory>
#include <unordered_map>

#include "model/uuid.h"
#include "web/live_web_view.h"

namespace lectern {

// The live web page of each slide on a window's stage, by slide id. It holds
// the views weakly: the pane that shows a page owns it, and the registry
// never keeps one alive.
class LiveWebViewRegistry {
public:
    void registerView(const Uuid& slideId, const std::shared_ptr<LiveWebView>& view) { views_[slideId] = view; }
    void unregisterView(const Uuid& slideId) { views_.erase(slideId); }
    std::shared_ptr<LiveWebView> lookup(const Uuid& slideId) const {
        auto it = views_.find(slideId);
        return it == views_.end() ? nullptr : it->second.lock();
    }

private:
    std::unordered_map<Uuid, std::weak_ptr<LiveWebView>> views_;
};

}  // namespace lectern
