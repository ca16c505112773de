#pragma once

#include <memory>

#include "base/glib_scheduler.h"
#include "base/worker.h"
#include "web/page_pictures.h"
#include "web/platform/web_sessions.h"
#include "web/platform/webkit_page.h"
#include "web/profile_stores.h"
#include "web/web_prefetcher.h"

namespace lectern {

// The process's web machinery, shared by every deck window: the website
// data stores, the page factory over them, the one prefetcher, and the
// profile operations that erase data.
class WebServices {
public:
    static WebServices& shared();

    WebSessions& sessions() { return sessions_; }
    WebKitPageFactory& pages() { return pages_; }
    WebPrefetcher& prefetcher() { return prefetcher_; }
    Scheduler& scheduler() { return scheduler_; }
    // The last good picture of each slide's live page, in the user's cache.
    PagePictures& pictures() { return pictures_; }
    // Their folder: $XDG_CACHE_HOME/lectern/pictures.
    static std::filesystem::path picturesFolder();
    // Clearing and deleting browser profiles' data, with the pending
    // removals kept in the application's preferences (made on first use).
    ProfileStores& profileStores(PreferencesStore& preferences);

private:
    WebServices();

    GLibScheduler scheduler_;
    WebSessions& sessions_;
    WebKitPageFactory pages_;
    WebPrefetcher prefetcher_;
    ThreadWorker pictureWriter_;
    PagePictures pictures_;
    std::unique_ptr<ProfileStores> profileStores_;
};

}  // namespace lectern
