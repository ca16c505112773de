#include "web/platform/web_sessions.h"

#include <glib/gi18n.h>

#include <glib.h>

#include <system_error>

#include "base/translation.h"
#include "web/trusted_certificates.h"

namespace lectern {

namespace {

std::filesystem::path userFolder(const char* base) { return std::filesystem::path(base) / "lectern" / "web"; }

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

GObjectRef<WebKitNetworkSession> WebSessions::makeSession(const std::optional<Uuid>& profileId) const {
    std::string data = dataFolder(profileId).string();
    std::string cache = cacheFolder(profileId).string();
    auto session = GObjectRef<WebKitNetworkSession>::take(webkit_network_session_new(data.c_str(), cache.c_str()));
    // Sign-ins outlive the process: cookies go to an SQLite file in the
    // store's own data folder.
    std::error_code ignored;
    std::filesystem::create_directories(data, ignored);
    std::string cookies = (dataFolder(profileId) / "cookies.sqlite").string();
    webkit_cookie_manager_set_persistent_storage(webkit_network_session_get_cookie_manager(session.get()),
                                                 cookies.c_str(), WEBKIT_COOKIE_PERSISTENT_STORAGE_SQLITE);
    // Certificates the user trusted in this store, before any page loads.
    for (const auto& trusted : TrustedCertificates::read(dataFolder(profileId) / TrustedCertificates::fileName)) {
        allowCertificate(session.get(), trusted.host, trusted.pem);
    }
    return session;
}

WebKitNetworkSession* WebSessions::session(const std::optional<Uuid>& profileId) {
    if (!profileId) {
        if (!shared_) shared_ = makeSession(std::nullopt);
        return shared_.get();
    }
    auto it = profiles_.find(*profileId);
    if (it == profiles_.end()) it = profiles_.emplace(*profileId, makeSession(profileId)).first;
    return it->second.get();
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
    auto* callback = new std::function<void()>(std::move(done));
    webkit_website_data_manager_clear(
        manager, WEBKIT_WEBSITE_DATA_ALL, 0, nullptr,
        [](GObject* source, GAsyncResult* result, gpointer data) {
            std::unique_ptr<std::function<void()>> done(static_cast<std::function<void()>*>(data));
            // Failures to erase are not reported: the flow goes on.
            webkit_website_data_manager_clear_finish(WEBKIT_WEBSITE_DATA_MANAGER(source), result, nullptr);
            if (*done) (*done)();
        },
        callback);
}

void WebSessions::dropCached(const Uuid& profileId) {
    auto it = profiles_.find(profileId);
    if (it == profiles_.end()) return;
    // Watch the session as it goes, so that removing the store can tell
    // whether a view still holds it.
    auto watched = dropped_.find(profileId);
    if (watched == dropped_.end()) {
        auto* weak = new GWeakRef;
        g_weak_ref_init(weak, it->second.get());
        dropped_.emplace(profileId, weak);
    } else {
        g_weak_ref_set(watched->second, it->second.get());
    }
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
