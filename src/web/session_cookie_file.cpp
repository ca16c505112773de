#include "web/session_cookie_file.h"

#include <glib.h>

#include <system_error>

#include <nlohmann/json.hpp>

#include "model/file_io.h"

namespace lectern {

using nlohmann::json;

namespace {

// Far more than any browser keeps; a larger file is not ours.
constexpr std::uint64_t fileSizeLimit = 4 * 1024 * 1024;

const char* sameSiteText(SessionCookie::SameSite policy) {
    switch (policy) {
        case SessionCookie::SameSite::none: return "none";
        case SessionCookie::SameSite::strict: return "strict";
        case SessionCookie::SameSite::lax: break;
    }
    return "lax";
}

SessionCookie::SameSite sameSiteFrom(const json& text) {
    if (text == "none") return SessionCookie::SameSite::none;
    if (text == "strict") return SessionCookie::SameSite::strict;
    return SessionCookie::SameSite::lax;  // what browsers assume when a site says nothing
}

std::optional<SessionCookie> cookieFrom(const json& entry) {
    if (!entry.is_object()) return std::nullopt;
    auto text = [&](const char* key) -> std::optional<std::string> {
        auto it = entry.find(key);
        if (it == entry.end() || it->is_null()) return std::string();
        if (!it->is_string()) return std::nullopt;
        return it->get<std::string>();
    };
    auto flag = [&](const char* key) -> std::optional<bool> {
        auto it = entry.find(key);
        if (it == entry.end() || it->is_null()) return false;
        if (!it->is_boolean()) return std::nullopt;
        return it->get<bool>();
    };
    auto name = text("name"), value = text("value"), domain = text("domain"), path = text("path");
    auto secure = flag("secure"), httpOnly = flag("httpOnly");
    if (!name || !value || !domain || !path || !secure || !httpOnly) return std::nullopt;
    if (name->empty() || domain->empty()) return std::nullopt;
    SessionCookie cookie{*name, *value, *domain, path->empty() ? "/" : *path, *secure, *httpOnly,
                         sameSiteFrom(entry.value("sameSite", json()))};
    return cookie;
}

}  // namespace

std::vector<SessionCookie> readSessionCookies(const std::filesystem::path& file) {
    std::vector<SessionCookie> cookies;
    auto bytes = readRegularFile(file, fileSizeLimit);
    if (!bytes) return cookies;
    json stored = json::parse(bytes->begin(), bytes->end(), nullptr, false);
    if (!stored.is_object()) return cookies;
    auto list = stored.find("cookies");
    if (list == stored.end() || !list->is_array()) return cookies;
    for (const auto& entry : *list) {
        if (auto cookie = cookieFrom(entry)) cookies.push_back(std::move(*cookie));
    }
    return cookies;
}

Status writeSessionCookies(const std::filesystem::path& file, const std::vector<SessionCookie>& cookies) {
    if (cookies.empty()) {
        std::error_code error;
        std::filesystem::remove(file, error);
        if (error) return writeError(file, error.value());
        return Done{};
    }
    json list = json::array();
    for (const auto& cookie : cookies) {
        list.push_back({{"name", cookie.name},
                        {"value", cookie.value},
                        {"domain", cookie.domain},
                        {"path", cookie.path},
                        {"secure", cookie.secure},
                        {"httpOnly", cookie.httpOnly},
                        {"sameSite", sameSiteText(cookie.sameSite)}});
    }
    // Cookie values are not always UTF-8: replace what is not, rather than fail.
    std::string text = json{{"cookies", list}}.dump(1, '\t', false, json::error_handler_t::replace);
    // Written beside and renamed over, flushed, and readable by the user only
    // from the start: the values are sign-ins.
    return replaceFileAtomically(file, text, 0600);
}

}  // namespace lectern
