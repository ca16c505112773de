#include "web/web_check_outcome.h"

#include <glib.h>

#include <memory>
#include <string_view>
#include <utility>

namespace lectern {

namespace {

// Reason phrases of the usual error statuses, in lower case to follow "HTTP
// 404 — ".
constexpr std::pair<int, std::string_view> reasonPhrases[] = {
    {400, "bad request"},
    {401, "unauthorized"},
    {402, "payment required"},
    {403, "forbidden"},
    {404, "not found"},
    {405, "method not allowed"},
    {406, "unacceptable"},
    {407, "proxy authentication required"},
    {408, "request timed out"},
    {409, "conflict"},
    {410, "no longer exists"},
    {411, "length required"},
    {412, "precondition failed"},
    {413, "request too large"},
    {414, "requested URL too long"},
    {415, "unsupported media type"},
    {416, "requested range not satisfiable"},
    {417, "expectation failed"},
    {421, "misdirected request"},
    {422, "unprocessable content"},
    {423, "locked"},
    {424, "failed dependency"},
    {425, "too early"},
    {426, "upgrade required"},
    {428, "precondition required"},
    {429, "too many requests"},
    {431, "request header fields too large"},
    {451, "unavailable for legal reasons"},
    {500, "internal server error"},
    {501, "unimplemented"},
    {502, "bad gateway"},
    {503, "service unavailable"},
    {504, "gateway timed out"},
    {505, "HTTP version not supported"},
    {507, "insufficient storage"},
    {508, "loop detected"},
    {511, "network authentication required"},
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
        if (code == status) return std::string(phrase);
    }
    if (status >= 400 && status < 500) return "client error";
    if (status >= 500 && status < 600) return "server error";
    return "error";
}

std::string httpFailureMessage(int status) {
    std::string message = "HTTP ";
    message += std::to_string(status);
    message += " \u2014 ";
    message += httpStatusText(status);
    return message;
}

std::optional<std::string> redirectNote(const std::string& requested, const std::string& finalUrl) {
    if (finalUrl.empty()) return std::nullopt;
    UriPtr to = parse(finalUrl);
    if (!to) return std::nullopt;
    UriPtr from = parse(requested);
    bool sameSite = from && siteOf(from.get()) == siteOf(to.get());
    bool newlyOnSignIn = looksLikeSignIn(to.get()) && !(from && looksLikeSignIn(from.get()));
    if (sameSite && !newlyOnSignIn) return std::nullopt;

    std::string note = "Redirected to ";
    if (const char* host = g_uri_get_host(to.get()); host && *host) {
        note += host;
        note += g_uri_get_path(to.get());
    } else {
        note += finalUrl;  // an address without a host (about:blank)
    }
    return note;
}

}  // namespace lectern
