#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "model/slide.h"
#include "model/uuid.h"
#include "base/scheduler.h"
#include "web/page_pictures.h"
#include "web/prefetch_key.h"
#include "web/web_page.h"

namespace lectern {

// Keeps the pages a presenter is likely to show next loaded in hidden
// views, so that a web slide's page is there, signed in, the moment it
// comes on stage. One per process, shared by all deck windows: each
// window's stage says which pages it wants; panes adopt a hidden page when
// their slide comes on stage and hand it back when it leaves, if it is
// still wanted. Main thread only.
class WebPrefetcher {
public:
    WebPrefetcher(WebPageFactory& pages, Scheduler& scheduler);
    ~WebPrefetcher();
    WebPrefetcher(const WebPrefetcher&) = delete;
    WebPrefetcher& operator=(const WebPrefetcher&) = delete;

    // What a window's stage wants loaded: the next slide, the previous one,
    // then the targets of the current slide's decision cards, keeping web
    // slides with an address, without repeats and without the current
    // slide's own page. Nothing while the editor is open.
    static std::vector<PrefetchKey> wantedKeys(const std::vector<Slide>& slides, std::int64_t current,
                                               bool editorOpen);
    // The key of a web slide with an address.
    static std::optional<PrefetchKey> keyOf(const Slide& slide);
    // The slides that show each of `keys`.
    using SlidesByKey = std::unordered_map<PrefetchKey, std::vector<Uuid>>;
    static SlidesByKey slidesShowing(const std::vector<Slide>& slides, const std::vector<PrefetchKey>& keys);

    // Where hidden pages that load well leave their pictures, one for each
    // slide that shows them (none: no pictures).
    void setPictures(PagePictures* pictures) { pictures_ = pictures; }

    // Records what a window wants (empty: forget the window), with the
    // slides that show each page, and reconciles that window on the next
    // main-loop turn.
    void setWanted(const Uuid& window, const std::vector<PrefetchKey>& keys, SlidesByKey slides = {});
    // A pane comes on stage for `key`: counts it and hands over the hidden
    // page for it, if there is one.
    std::shared_ptr<WebPage> adopt(const Uuid& window, const PrefetchKey& key);
    // A pane stops showing `key` (its address changed, or it went).
    void release(const Uuid& window, const PrefetchKey& key);
    // A pane goes: releases the key, and keeps its page hidden when the key
    // is still wanted (true) so that coming back needs no reload.
    bool takeBack(std::shared_ptr<WebPage> page, const Uuid& window, const PrefetchKey& key);
    // Stops and drops every hidden page of every window (before website
    // data is erased, and at the end).
    void discardAll();
    // The application is ending: discard everything, create and keep
    // nothing from now on.
    void terminate();

    // What is held now, for the stage's tests and the benchmarks.
    std::size_t hiddenCount() const;
    std::size_t hiddenCount(const Uuid& window) const;
    bool isHidden(const Uuid& window, const PrefetchKey& key) const;
    int onStageCount(const Uuid& window, const PrefetchKey& key) const;

private:
    class AheadWatcher;
    using Pages = std::unordered_map<PrefetchKey, std::shared_ptr<WebPage>>;
    void scheduleReconcile(const Uuid& window);
    void reconcile(const Uuid& window);
    void retire(WebPage& page);
    // A hidden page finished loading: pictured for the slides that show it.
    void loadedAhead(const Uuid& window, const PrefetchKey& key, const std::shared_ptr<WebPage>& page);

    WebPageFactory& pages_;
    Scheduler& scheduler_;
    std::unordered_map<Uuid, Pages> cache_;
    std::unordered_map<Uuid, std::vector<PrefetchKey>> wanted_;
    std::unordered_map<Uuid, SlidesByKey> slides_;
    // The delegates of hidden pages loaded here, until adopted or retired.
    std::unordered_map<const WebPage*, std::unique_ptr<AheadWatcher>> watchers_;
    PagePictures* pictures_ = nullptr;
    std::unordered_map<Uuid, std::unordered_map<PrefetchKey, int>> onStage_;
    std::unordered_map<Uuid, Scheduler::TimerId> pendingReconciles_;
    bool isTerminating_ = false;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace lectern
