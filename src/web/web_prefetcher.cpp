#include "web/web_prefetcher.h"

#include <algorithm>

namespace lectern {

// The delegate of a page loading in a hidden view: a good load leaves the
// page's pictures, as one on stage does.
class WebPrefetcher::AheadWatcher : public WebPageDelegate {
public:
    AheadWatcher(WebPrefetcher& owner, Uuid window, PrefetchKey key, std::weak_ptr<WebPage> page)
        : owner_(owner), window_(std::move(window)), key_(std::move(key)), page_(std::move(page)) {}
    void loadFinished() override {
        if (auto page = page_.lock()) owner_.loadedAhead(window_, key_, page);
    }
    void loadFailed(const std::string&, bool) override {}

private:
    WebPrefetcher& owner_;
    Uuid window_;
    PrefetchKey key_;
    std::weak_ptr<WebPage> page_;
};

WebPrefetcher::WebPrefetcher(WebPageFactory& pages, Scheduler& scheduler) : pages_(pages), scheduler_(scheduler) {}

WebPrefetcher::~WebPrefetcher() {
    *alive_ = false;
    for (const auto& [window, timer] : pendingReconciles_) scheduler_.cancel(timer);
    discardAll();
}

std::optional<PrefetchKey> WebPrefetcher::keyOf(const Slide& slide) {
    if (slide.layout != SlideLayout::web || !slide.url || slide.url->empty()) return std::nullopt;
    return PrefetchKey{*slide.url, slide.browserProfileId};
}

std::vector<PrefetchKey> WebPrefetcher::wantedKeys(const std::vector<Slide>& slides, std::int64_t current,
                                                   bool editorOpen) {
    auto count = static_cast<std::int64_t>(slides.size());
    if (editorOpen || current < 0 || current >= count) return {};
    const Slide& here = slides[static_cast<std::size_t>(current)];

    std::vector<const Slide*> candidates;
    for (std::int64_t index : {current + 1, current - 1}) {
        if (index >= 0 && index < count) candidates.push_back(&slides[static_cast<std::size_t>(index)]);
    }
    for (const auto& link : here.links) {
        auto id = Uuid::parse(link.targetId);  // none for "", "$back" and the like
        if (!id) continue;
        auto target = std::find_if(slides.begin(), slides.end(), [&](const Slide& slide) { return slide.id == *id; });
        if (target != slides.end()) candidates.push_back(&*target);
    }

    std::optional<PrefetchKey> own = keyOf(here);
    std::vector<PrefetchKey> keys;
    for (const Slide* slide : candidates) {
        auto key = keyOf(*slide);
        if (!key || key == own || std::find(keys.begin(), keys.end(), *key) != keys.end()) continue;
        keys.push_back(std::move(*key));
    }
    return keys;
}

WebPrefetcher::SlidesByKey WebPrefetcher::slidesShowing(const std::vector<Slide>& slides,
                                                        const std::vector<PrefetchKey>& keys) {
    SlidesByKey found;
    for (const auto& slide : slides) {
        auto key = keyOf(slide);
        if (key && std::find(keys.begin(), keys.end(), *key) != keys.end()) found[*key].push_back(slide.id);
    }
    return found;
}

void WebPrefetcher::loadedAhead(const Uuid& window, const PrefetchKey& key, const std::shared_ptr<WebPage>& page) {
    auto slides = slides_.find(window);
    if (!pictures_ || slides == slides_.end()) return;
    auto ids = slides->second.find(key);
    if (ids == slides->second.end()) return;
    for (const auto& id : ids->second) pictures_->takeSoon(page, id, key.url, scheduler_);
}

void WebPrefetcher::setWanted(const Uuid& window, const std::vector<PrefetchKey>& keys, SlidesByKey slides) {
    if (keys.empty()) {
        wanted_.erase(window);
        slides_.erase(window);
    } else {
        wanted_[window] = keys;
        slides_[window] = std::move(slides);
    }
    scheduleReconcile(window);
}

std::shared_ptr<WebPage> WebPrefetcher::adopt(const Uuid& window, const PrefetchKey& key) {
    ++onStage_[window][key];
    auto windowPages = cache_.find(window);
    if (windowPages == cache_.end()) return nullptr;
    auto it = windowPages->second.find(key);
    if (it == windowPages->second.end()) return nullptr;
    auto page = std::move(it->second);
    windowPages->second.erase(it);
    if (windowPages->second.empty()) cache_.erase(windowPages);
    // The pane watches it from now on.
    page->setDelegate(nullptr);
    watchers_.erase(page.get());
    return page;
}

void WebPrefetcher::release(const Uuid& window, const PrefetchKey& key) {
    auto windowCounts = onStage_.find(window);
    if (windowCounts != onStage_.end()) {
        auto it = windowCounts->second.find(key);
        if (it != windowCounts->second.end()) {
            if (it->second < 2) windowCounts->second.erase(it); else --it->second;
        }
        if (windowCounts->second.empty()) onStage_.erase(windowCounts);
    }
    scheduleReconcile(window);
}

bool WebPrefetcher::takeBack(std::shared_ptr<WebPage> page, const Uuid& window, const PrefetchKey& key) {
    release(window, key);
    if (isTerminating_ || !page) return false;
    auto wanted = wanted_.find(window);
    if (wanted == wanted_.end() || std::find(wanted->second.begin(), wanted->second.end(), key) == wanted->second.end()) {
        return false;
    }
    page->setDelegate(nullptr);
    auto& slot = cache_[window][key];
    if (slot && slot != page) retire(*slot);
    slot = std::move(page);
    return true;
}

void WebPrefetcher::retire(WebPage& page) {
    page.stopLoading();
    page.setDelegate(nullptr);
    watchers_.erase(&page);
}

void WebPrefetcher::discardAll() {
    auto cache = std::move(cache_);
    cache_.clear();
    for (auto& [window, pages] : cache) {
        for (auto& [key, page] : pages) retire(*page);
    }
}

void WebPrefetcher::terminate() {
    isTerminating_ = true;
    discardAll();
}

void WebPrefetcher::scheduleReconcile(const Uuid& window) {
    // One pending reconcile per window; it runs after the change that asked
    // for it has finished, and never after the prefetcher is gone.
    if (pendingReconciles_.count(window)) return;
    pendingReconciles_[window] = scheduler_.after(0, [this, alive = alive_, window] {
        if (!*alive) return;
        pendingReconciles_.erase(window);
        reconcile(window);
    });
}

void WebPrefetcher::reconcile(const Uuid& window) {
    if (isTerminating_) return;
    static const std::vector<PrefetchKey> none;
    auto wantedIt = wanted_.find(window);
    const auto& wanted = wantedIt == wanted_.end() ? none : wantedIt->second;
    auto isWanted = [&](const PrefetchKey& key) { return std::find(wanted.begin(), wanted.end(), key) != wanted.end(); };

    // Evict what is no longer wanted.
    if (auto pages = cache_.find(window); pages != cache_.end()) {
        for (auto it = pages->second.begin(); it != pages->second.end();) {
            if (isWanted(it->first)) {
                ++it;
                continue;
            }
            retire(*it->second);
            it = pages->second.erase(it);
        }
        if (pages->second.empty()) cache_.erase(pages);
    }

    // Fill: load what is wanted and neither hidden nor on stage.
    for (const auto& key : wanted) {
        if (isHidden(window, key) || onStageCount(window, key) > 0) continue;
        auto page = pages_.makePage(key.profileId);
        if (!page) continue;
        auto watcher = std::make_unique<AheadWatcher>(*this, window, key, page);
        page->setDelegate(watcher.get());
        watchers_[page.get()] = std::move(watcher);
        page->load(key.url);
        cache_[window][key] = std::move(page);
    }
}

std::size_t WebPrefetcher::hiddenCount() const {
    std::size_t count = 0;
    for (const auto& [window, pages] : cache_) count += pages.size();
    return count;
}

std::size_t WebPrefetcher::hiddenCount(const Uuid& window) const {
    auto it = cache_.find(window);
    return it == cache_.end() ? 0 : it->second.size();
}

bool WebPrefetcher::isHidden(const Uuid& window, const PrefetchKey& key) const {
    auto it = cache_.find(window);
    return it != cache_.end() && it->second.count(key);
}

int WebPrefetcher::onStageCount(const Uuid& window, const PrefetchKey& key) const {
    auto it = onStage_.find(window);
    if (it == onStage_.end()) return 0;
    auto count = it->second.find(key);
    return count == it->second.end() ? 0 : count->second;
}

}  // namespace lectern
