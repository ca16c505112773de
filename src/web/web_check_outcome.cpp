#include "web/web_check_outcome.h"

#include <glib/gi18n.h>

#include <glib.h>

#include <memory>
#include <string_view>
#include <utility>

#include "base/translation.h"

namespace lectern {

namespace {

// Reason phrases of the usual error statuses, in lower case to follow "HTTP
// 404 — ".
constexpr std::pair<int, std::string_view> reasonPhrases[] = {
    {400, N_("bad request")},
    {401, N_("unauthorized")},
    {402, N_("payment required")},
    {403, N_("forbidden")},
    {404, N_("not found")},
    {405, N_("method not allowed")},
    {406, N_("unacceptable")},
    {407, N_("proxy authentication required")},
    {408, N_("request timed out")},
    {409, N_("conflict")},
    {410, N_("no longer exists")},
    {411, N_("length required")},
    {412, N_("precondition failed")},
    {413, N_("request too large")},
    {414, N_("requested URL too long")},
    {415, N_("unsupported media type")},
    {416, N_("requested range not satisfiable")},
    {417, N_("expectation failed")},
    {421, N_("misdirected request")},
    {422, N_("unprocessable content")},
    {423, N_("locked")},
    {424, N_("failed dependency")},
    {425, N_("too early")},
    {426, N_("upgrade required")},
    {428, N_("precondition required")},
    {429, N_("too many requests")},
    {431, N_("request header fields too large")},
    {451, N_("unavailable for legal reasons")},
    {500, N_("internal server error")},
    {501, N_("unimplemented")},
    {502, N_("bad gateway")},
    {503, N_("service unavailable")},
    {504, N_("gateway timed out")},
    {505, N_("HTTP version not supported")},
    {507, N_("insufficient storage")},
    {508, N_("loop detected")},
    {511, N_("network authentication required")},
};

struct UriDeleter {
    void operator()(GUri* uri) const { g_uri_unref(uri); }
};
using UriPtr = std::unique_ptr<GUri, UriDeleter>;

// The path keeps its escapes, so a note shows it as the address has it.
UriPtr parse(const std::string& text) {
    return UriPtr(g_uri_parse(text.c_str(), GUriFlags(G_URI_FLAGS_HAS_PASSWORD | G_URI_FLAGS_ENCODED_PATH), nullptr));
}

std::string lower(std::string_view text) {
    std::string result(text);
    for (char& c : result) c = g_ascii_tolower(c);
    return result;
}

// The host as compared between two addresses: "www.Example.com" and
// "example.com" are the same site.
std::string siteOf(GUri* uri) {
    const char* host = g_uri_get_host(uri);
    std::string site = lower(host ? host : "");
    if (site.starts_with("www.")) site.erase(0, 4);
    return site;
}

bool looksLikeSignIn(GUri* uri) {
    std::string path = lower(g_uri_get_path(uri));
    for (std::string_view word : {"login", "signin", "sign-in", "sso", "auth"}) {
        if (path.find(word) != std::string::npos) return true;
    }
    return false;
}

}  // namespace

std::string httpStatusText(int status) {
    for (const auto& [code, phrase] : reasonPhrases) {
        if (code == status) return _(phrase.data());
    }
    if (status >= 400 && status < 500) return _("client error");
    if (status >= 500 && status < 600) return _("server error");
    return _("error");
}

std::string httpFailureMessage(int status) {
    return formatText(_("HTTP %d \u2014 %s"), status, httpStatusText(status).c_str());
}

std::string untrustedCertificateMessage(const std::string& place) {
    return formatText(_("Untrusted certificate for %s \u2014 open the slide and choose Trust This Certificate\u2026"),
                      place.c_str());
}

bool looksLikeSignIn(const std::string& url) {
    UriPtr uri = parse(url);
    return uri && looksLikeSignIn(uri.get());
}

std::optional<std::string> redirectNote(const std::string& requested, const std::string& finalUrl) {
    if (finalUrl.empty()) return std::nullopt;
    UriPtr to = parse(finalUrl);
    if (!to) return std::nullopt;
    UriPtr from = parse(requested);
    bool sameSite = from && siteOf(from.get()) == siteOf(to.get());
    bool newlyOnSignIn = looksLikeSignIn(to.get()) && !(from && looksLikeSignIn(from.get()));
    if (sameSite && !newlyOnSignIn) return std::nullopt;

    std::string place;
    if (const char* host = g_uri_get_host(to.get()); host && *host) {
        place = host;
        place += g_uri_get_path(to.get());
    } else {
        place = finalUrl;  // an address without a host (about:blank)
    }
    return formatText(_("Redirected to %s"), place.c_str());
}

}  // namespace lectern
