#include "web/platform/web_sessions.h"

#include <glib/gi18n.h>

#include <glib.h>

#include <system_error>

#include "base/translation.h"
#include "web/platform/web_downloads.h"
#include "web/session_cookie_file.h"
#include "web/trusted_certificates.h"

namespace lectern {

namespace {

std::filesystem::path userFolder(const char* base) { return std::filesystem::path(base) / "lectern" / "web"; }

// How long cookie changes settle before the copy is read again and written:
// a page that signs in sets several at once.
constexpr guint rereadDelayMs = 250;

SessionCookie::SameSite sameSiteOf(SoupCookie* cookie) {
    switch (soup_cookie_get_same_site_policy(cookie)) {
        case SOUP_SAME_SITE_POLICY_NONE: return SessionCookie::SameSite::none;
        case SOUP_SAME_SITE_POLICY_STRICT: return SessionCookie::SameSite::strict;
        case SOUP_SAME_SITE_POLICY_LAX: break;
    }
    return SessionCookie::SameSite::lax;
}

SoupSameSitePolicy soupPolicy(SessionCookie::SameSite policy) {
    switch (policy) {
        case SessionCookie::SameSite::none: return SOUP_SAME_SITE_POLICY_NONE;
        case SessionCookie::SameSite::strict: return SOUP_SAME_SITE_POLICY_STRICT;
        case SessionCookie::SameSite::lax: break;
    }
    return SOUP_SAME_SITE_POLICY_LAX;
}

// Lets the session accept one certificate for one host; false when the PEM
// is no certificate.
bool allowCertificate(WebKitNetworkSession* session, const std::string& host, const std::string& pem) {
    GTlsCertificate* certificate = g_tls_certificate_new_from_pem(pem.c_str(), static_cast<gssize>(pem.size()), nullptr);
    if (!certificate) return false;
    webkit_network_session_allow_tls_certificate_for_host(session, certificate, host.c_str());
    g_object_unref(certificate);
    return true;
}

}  // namespace

struct WebSessions::Store {
    GObjectRef<WebKitNetworkSession> session;
    std::filesystem::path cookieFile;
    // The store's session cookies as last read from the engine, and whether
    // the file holds them.
    std::vector<SessionCookie> sessionCookies;
    bool saved = true;
    SignalConnection changed;
    guint rereadSource = 0;
    // The read in flight; a newer read or an erase cancels it, so that a
    // list read before an erase never comes back.
    GObjectRef<GCancellable> reading;

    ~Store() {
        if (rereadSource) g_source_remove(rereadSource);
        if (reading) g_cancellable_cancel(reading.get());
    }

    WebKitCookieManager* cookies() const { return webkit_network_session_get_cookie_manager(session.get()); }

    // Every change the engine reports is read back and, when the session
    // cookies differ, written at once, so that a crash keeps the sign-in.
    void follow() {
        changed = SignalConnection::connect<>(cookies(), "changed", [this] { scheduleReread(); });
    }

    void scheduleReread() {
        if (rereadSource) return;
        rereadSource = g_timeout_add(
            rereadDelayMs,
            [](gpointer data) {
                auto* store = static_cast<Store*>(data);
                store->rereadSource = 0;
                store->reread();
                return G_SOURCE_REMOVE;
            },
            this);
    }

    void reread() {
        if (reading) g_cancellable_cancel(reading.get());
        reading = GObjectRef<GCancellable>::take(g_cancellable_new());
        // A cancelled read still calls back, so the callback finds the store
        // through its cancellable: `this` is valid only if that was not cancelled.
        struct Read {
            Store* store;
            GObjectRef<GCancellable> cancellable;
        };
        webkit_cookie_manager_get_all_cookies(
            cookies(), reading.get(),
            [](GObject* source, GAsyncResult* result, gpointer data) {
                std::unique_ptr<Read> read(static_cast<Read*>(data));
                GError* failure = nullptr;
                GList* list = webkit_cookie_manager_get_all_cookies_finish(WEBKIT_COOKIE_MANAGER(source), result,
                                                                           &failure);
                if (!g_cancellable_is_cancelled(read->cancellable.get())) {
                    read->store->reading.reset();
                    // A read that failed says nothing about the cookies: the
                    // copy stays as it was until the next one.
                    if (!failure) read->store->take(sessionCookiesIn(list));
                }
                if (failure) g_error_free(failure);
                g_list_free_full(list, reinterpret_cast<GDestroyNotify>(soup_cookie_free));
            },
            new Read{this, reading});
    }

    void take(std::vector<SessionCookie> found) {
        if (found == sessionCookies && saved) return;
        sessionCookies = std::move(found);
        saved = false;
        save();
    }

    static std::vector<SessionCookie> sessionCookiesIn(GList* list) {
        std::vector<SessionCookie> found;
        for (GList* item = list; item; item = item->next) {
            auto* cookie = static_cast<SoupCookie*>(item->data);
            // Cookies with an expiry are the engine's to keep on disk.
            if (soup_cookie_get_expires(cookie) || !soup_cookie_get_name(cookie) || !soup_cookie_get_domain(cookie)) {
                continue;
            }
            SessionCookie copy;
            copy.name = soup_cookie_get_name(cookie);
            copy.value = soup_cookie_get_value(cookie) ? soup_cookie_get_value(cookie) : "";
            copy.domain = soup_cookie_get_domain(cookie);
            copy.path = soup_cookie_get_path(cookie) ? soup_cookie_get_path(cookie) : "/";
            copy.secure = soup_cookie_get_secure(cookie);
            copy.httpOnly = soup_cookie_get_http_only(cookie);
            copy.sameSite = sameSiteOf(cookie);
            found.push_back(std::move(copy));
        }
        return found;
    }

    // Gives the session the cookies saved at the last end. The calls go to
    // the engine's network process in order, ahead of anything a page of
    // this new session can ask of it, so the first load already sends them.
    void restore() {
        sessionCookies = readSessionCookies(cookieFile);
        for (const auto& saved : sessionCookies) {
            SoupCookie* cookie =
                soup_cookie_new(saved.name.c_str(), saved.value.c_str(), saved.domain.c_str(), saved.path.c_str(), -1);
            soup_cookie_set_secure(cookie, saved.secure);
            soup_cookie_set_http_only(cookie, saved.httpOnly);
            soup_cookie_set_same_site_policy(cookie, soupPolicy(saved.sameSite));
            webkit_cookie_manager_add_cookie(
                cookies(), cookie, nullptr,
                [](GObject* source, GAsyncResult* result, gpointer) {
                    // A cookie the engine refuses is one sign-in less, nothing more.
                    webkit_cookie_manager_add_cookie_finish(WEBKIT_COOKIE_MANAGER(source), result, nullptr);
                },
                nullptr);
            soup_cookie_free(cookie);
        }
    }

    // Signed out: neither the copy nor the file keeps anything, and a read
    // begun before cannot bring it back.
    void forgetSessionCookies() {
        if (reading) g_cancellable_cancel(reading.get());
        reading.reset();
        sessionCookies.clear();
        saved = false;
        save();
    }

    void save() {
        if (saved) return;
        // An unwritable folder loses the sign-ins kept in memory, as a crash
        // would; the next change tries again.
        saved = static_cast<bool>(writeSessionCookies(cookieFile, sessionCookies));
    }
};

WebSessions::WebSessions(std::filesystem::path dataRoot, std::filesystem::path cacheRoot)
    : dataRoot_(std::move(dataRoot)), cacheRoot_(std::move(cacheRoot)) {}

WebSessions::~WebSessions() {
    for (auto& [id, weak] : dropped_) {
        g_weak_ref_clear(weak);
        delete weak;
    }
}

WebSessions& WebSessions::shared() {
    static auto* sessions = new WebSessions(userFolder(g_get_user_data_dir()), userFolder(g_get_user_cache_dir()));
    return *sessions;
}

std::filesystem::path WebSessions::dataFolder(const std::optional<Uuid>& profileId) const {
    return profileId ? dataRoot_ / "profiles" / profileId->string() : dataRoot_ / "shared";
}

std::filesystem::path WebSessions::cacheFolder(const std::optional<Uuid>& profileId) const {
    return profileId ? cacheRoot_ / "profiles" / profileId->string() : cacheRoot_ / "shared";
}

std::shared_ptr<WebSessions::Store> WebSessions::makeStore(const std::optional<Uuid>& profileId) const {
    std::string data = dataFolder(profileId).string();
    std::string cache = cacheFolder(profileId).string();
    auto store = std::make_shared<Store>();
    store->session = GObjectRef<WebKitNetworkSession>::take(webkit_network_session_new(data.c_str(), cache.c_str()));
    store->cookieFile = dataFolder(profileId) / sessionCookieFileName;
    // Sign-ins outlive the process: cookies go to an SQLite file in the
    // store's own data folder, session cookies to a file of ours beside it.
    std::error_code ignored;
    std::filesystem::create_directories(data, ignored);
    std::string cookies = (dataFolder(profileId) / "cookies.sqlite").string();
    webkit_cookie_manager_set_persistent_storage(store->cookies(), cookies.c_str(),
                                                 WEBKIT_COOKIE_PERSISTENT_STORAGE_SQLITE);
    // Certificates the user trusted in this store, before any page loads.
    for (const auto& trusted : TrustedCertificates::read(dataFolder(profileId) / TrustedCertificates::fileName)) {
        allowCertificate(store->session.get(), trusted.host, trusted.pem);
    }
    store->restore();
    store->follow();
    WebDownloads::shared().follow(store->session.get());
    return store;
}

WebKitNetworkSession* WebSessions::session(const std::optional<Uuid>& profileId) {
    if (!profileId) {
        if (!shared_) shared_ = makeStore(std::nullopt);
        return shared_->session.get();
    }
    auto it = profiles_.find(*profileId);
    if (it == profiles_.end()) it = profiles_.emplace(*profileId, makeStore(profileId)).first;
    return it->second->session.get();
}

void WebSessions::saveSessionCookies() {
    if (shared_) shared_->save();
    for (const auto& [id, store] : profiles_) store->save();
}

Status WebSessions::trustCertificate(const std::optional<Uuid>& profileId, const std::string& host,
                                     const std::string& pem) {
    if (!allowCertificate(session(profileId), host, pem)) return Error{_("The certificate could not be read.")};
    std::error_code ignored;
    std::filesystem::create_directories(dataFolder(profileId), ignored);
    return TrustedCertificates::add(dataFolder(profileId) / TrustedCertificates::fileName, host, pem);
}

void WebSessions::erase(const std::optional<Uuid>& profileId, std::function<void()> done) {
    // The engine's data clearing does not know our list of trusted
    // certificates: it goes with the rest.
    std::error_code ignored;
    std::filesystem::remove(dataFolder(profileId) / TrustedCertificates::fileName, ignored);
    WebKitWebsiteDataManager* manager = webkit_network_session_get_website_data_manager(session(profileId));
    // The saved session cookies go at once, so that even a process that
    // ends before the engine is done has signed out.
    std::shared_ptr<Store> store = profileId ? profiles_.at(*profileId) : shared_;
    store->forgetSessionCookies();
    struct Erase {
        std::weak_ptr<Store> store;
        std::function<void()> done;
    };
    auto* erase = new Erase{store, std::move(done)};
    webkit_website_data_manager_clear(
        manager, WEBKIT_WEBSITE_DATA_ALL, 0, nullptr,
        [](GObject* source, GAsyncResult* result, gpointer data) {
            std::unique_ptr<Erase> erase(static_cast<Erase*>(data));
            // Failures to erase are not reported: the flow goes on.
            webkit_website_data_manager_clear_finish(WEBKIT_WEBSITE_DATA_MANAGER(source), result, nullptr);
            // What was read while the engine erased is gone now too.
            if (auto store = erase->store.lock()) store->forgetSessionCookies();
            if (erase->done) erase->done();
        },
        erase);
}

void WebSessions::dropCached(const Uuid& profileId) {
    auto it = profiles_.find(profileId);
    if (it == profiles_.end()) return;
    // Watch the session as it goes, so that removing the store can tell
    // whether a view still holds it.
    auto watched = dropped_.find(profileId);
    if (watched == dropped_.end()) {
        auto* weak = new GWeakRef;
        g_weak_ref_init(weak, it->second->session.get());
        dropped_.emplace(profileId, weak);
    } else {
        g_weak_ref_set(watched->second, it->second->session.get());
    }
    // A session made later for the same profile starts from what is known
    // now; what a page still open changes after this is not followed.
    it->second->save();
    profiles_.erase(it);
}

Status WebSessions::removeStore(const Uuid& profileId) {
    if (profiles_.count(profileId)) return Error{_("The profile’s website data store is still in use.")};
    if (auto watched = dropped_.find(profileId); watched != dropped_.end()) {
        if (GObject* alive = static_cast<GObject*>(g_weak_ref_get(watched->second))) {
            g_object_unref(alive);
            return Error{_("The profile’s website data store is still in use.")};
        }
        g_weak_ref_clear(watched->second);
        delete watched->second;
        dropped_.erase(watched);
    }
    for (const auto& folder : {dataFolder(profileId), cacheFolder(profileId)}) {
        std::error_code error;
        std::filesystem::remove_all(folder, error);
        if (error) return Error{formatText(_("Couldn’t remove %s: %s"), folder.c_str(), error.message().c_str())};
    }
    return Done{};
}

void WebSessions::allCookies(const std::optional<Uuid>& profileId,
                             std::function<void(std::vector<HttpCookie>)> done) {
    WebKitCookieManager* manager = webkit_network_session_get_cookie_manager(session(profileId));
    auto* callback = new std::function<void(std::vector<HttpCookie>)>(std::move(done));
    webkit_cookie_manager_get_all_cookies(
        manager, nullptr,
        [](GObject* source, GAsyncResult* result, gpointer data) {
            std::unique_ptr<std::function<void(std::vector<HttpCookie>)>> done(
                static_cast<std::function<void(std::vector<HttpCookie>)>*>(data));
            GList* list = webkit_cookie_manager_get_all_cookies_finish(WEBKIT_COOKIE_MANAGER(source), result, nullptr);
            std::vector<HttpCookie> cookies;
            for (GList* item = list; item; item = item->next) {
                auto* cookie = static_cast<SoupCookie*>(item->data);
                HttpCookie copy;
                copy.name = soup_cookie_get_name(cookie);
                copy.value = soup_cookie_get_value(cookie);
                copy.domain = soup_cookie_get_domain(cookie) ? soup_cookie_get_domain(cookie) : "";
                copy.path = soup_cookie_get_path(cookie) ? soup_cookie_get_path(cookie) : "/";
                copy.secure = soup_cookie_get_secure(cookie);
                cookies.push_back(std::move(copy));
            }
            g_list_free_full(list, reinterpret_cast<GDestroyNotify>(soup_cookie_free));
            (*done)(std::move(cookies));
        },
        callback);
}

}  // namespace lectern
