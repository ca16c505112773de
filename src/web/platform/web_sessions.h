#pragma once

#include <webkit/webkit.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "base/platform/gobject_ref.h"
#include "base/result.h"
#include "model/uuid.h"
#include "web/cookie_source.h"
#include "web/website_data_stores.h"

namespace lectern {

// The website data stores of the web engine: one network session for the
// shared browser session and one per browser profile, each with its own
// data and cache folders and its cookies kept on disk, so that a sign-in
// survives a restart. Sessions are made on first use and kept for the
// process (the store cache). Main thread only.
//
// The engine keeps only cookies with an expiry on disk. Session cookies
// (many sign-ins use them) are read back whenever the engine reports a
// cookie change, written to the store's session-cookies.json when they
// differ from what it holds (and by saveSessionCookies() when the
// application ends), and given back to the store's session when it is made,
// before it loads anything.
class WebSessions : public WebsiteDataStores, public CookieSource {
public:
    // Stores under <dataRoot>/shared and <dataRoot>/profiles/<UUID>, and the
    // same under cacheRoot.
    WebSessions(std::filesystem::path dataRoot, std::filesystem::path cacheRoot);
    ~WebSessions() override;
    WebSessions(const WebSessions&) = delete;
    WebSessions& operator=(const WebSessions&) = delete;

    // The process's stores, under $XDG_DATA_HOME/lectern/web and
    // $XDG_CACHE_HOME/lectern/web.
    static WebSessions& shared();

    // The session of a profile (none: the shared session), made on first
    // use. The pointer stays valid while the entry is cached.
    WebKitNetworkSession* session(const std::optional<Uuid>& profileId);
    std::filesystem::path dataFolder(const std::optional<Uuid>& profileId) const;
    std::filesystem::path cacheFolder(const std::optional<Uuid>& profileId) const;

    void erase(const std::optional<Uuid>& profileId, std::function<void()> done) override;
    void dropCached(const Uuid& profileId) override;
    // Removing fails while anything (the cache, a view) still holds the
    // profile's session, or when a folder cannot be deleted.
    Status removeStore(const Uuid& profileId) override;

    // Writes the session cookies last seen in every store opened in this
    // process to its data folder where the file does not hold them yet (a
    // store without any has no file). Quick and synchronous: nothing is
    // asked of the engine.
    void saveSessionCookies();

    // Lets pages of a store (none: the shared session) accept exactly this
    // certificate (PEM) for `host`, which the engine rejected; any other
    // certificate for the host is still rejected. Remembered in the store's
    // data folder: a session made later (after a restart) accepts it again
    // before its first load. Erasing or removing the store forgets it; a
    // session already made keeps accepting it until the process ends, as
    // the engine cannot take an exception back.
    Status trustCertificate(const std::optional<Uuid>& profileId, const std::string& host, const std::string& pem);

    // The cookies of a profile's store, for demo requests that send them.
    void allCookies(const std::optional<Uuid>& profileId,
                    std::function<void(std::vector<HttpCookie>)> done) override;

private:
    // A store's session and the copy of its session cookies.
    struct Store;

    std::shared_ptr<Store> makeStore(const std::optional<Uuid>& profileId) const;

    std::filesystem::path dataRoot_;
    std::filesystem::path cacheRoot_;
    std::shared_ptr<Store> shared_;
    std::unordered_map<Uuid, std::shared_ptr<Store>> profiles_;
    // Sessions dropped from the cache, watched so that a removal can tell
    // whether something still holds one.
    std::unordered_map<Uuid, GWeakRef*> dropped_;
};

}  // namespace lectern
