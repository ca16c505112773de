#include "web/platform/web_services.h"

#include <glib.h>

namespace lectern {

WebServices::WebServices()
    : sessions_(WebSessions::shared()),
      pages_(sessions_),
      prefetcher_(pages_, scheduler_),
      pictures_(picturesFolder(), pictureWriter_) {
    prefetcher_.setPictures(&pictures_);
}

std::filesystem::path WebServices::picturesFolder() {
    return std::filesystem::path(g_get_user_cache_dir()) / "lectern" / "pictures";
}

ProfileStores& WebServices::profileStores(PreferencesStore& preferences) {
    if (!profileStores_) {
        profileStores_ = std::make_unique<ProfileStores>(sessions_, scheduler_, preferences, ProfilesInUse::shared(),
                                                         [this] { prefetcher_.discardAll(); });
    }
    return *profileStores_;
}

WebServices& WebServices::shared() {
    // Lives for the process; the application discards its pages as it ends.
    static auto* services = new WebServices;
    return *services;
}

}  // namespace lectern
