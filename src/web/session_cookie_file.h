#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "base/result.h"

namespace lectern {

// A cookie that lasts only as long as the browser session (it has no
// expiry). The web engine keeps such cookies in memory only; a store keeps
// its own in a file so that a sign-in made with one survives a restart.
struct SessionCookie {
    enum class SameSite { none, lax, strict };

    std::string name;
    std::string value;
    std::string domain;  // as the engine gives it: "host" or ".example.com"
    std::string path = "/";
    bool secure = false;
    bool httpOnly = false;
    SameSite sameSite = SameSite::lax;
    friend bool operator==(const SessionCookie&, const SessionCookie&) = default;
};

// The file in a store's data folder that holds its session cookies.
inline constexpr const char* sessionCookieFileName = "session-cookies.json";

// The cookies in a file. A missing, unreadable or damaged file reads as no
// cookies; an entry without a name or domain, or with values of the wrong
// type, is skipped.
std::vector<SessionCookie> readSessionCookies(const std::filesystem::path& file);

// Replaces the file atomically with these cookies, readable by the user
// only (they are sign-ins); no cookies removes the file. The folder must
// exist.
Status writeSessionCookies(const std::filesystem::path& file, const std::vector<SessionCookie>& cookies);

}  // namespace lectern
