#pragma once

#include "present/glib_scheduler.h"
#include "web/platform/web_sessions.h"
#include "web/platform/webkit_page.h"
#include "web/web_prefetcher.h"

namespace lectern {

// The process's web machinery, shared by every deck window: the website
// data stores, the page factory over them, and the one prefetcher.
class WebServices {
public:
    static WebServices& shared();

    WebSessions& sessions() { return sessions_; }
    WebKitPageFactory& pages() { return pages_; }
    WebPrefetcher& prefetcher() { return prefetcher_; }
    Scheduler& scheduler() { return scheduler_; }

private:
    WebServices();

    GLibScheduler scheduler_;
    WebSessions& sessions_;
    WebKitPageFactory pages_;
    WebPrefetcher prefetcher_;
};

}  // namespace lectern
