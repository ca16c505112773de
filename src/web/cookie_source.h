#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "model/uuid.h"

namespace lectern {

// A cookie of a browser profile's website data store.
struct HttpCookie {
    std::string name;
    std::string value;
    std::string domain;  // ".example.com" matches subdomains too
    std::string path;
    bool secure = false;
    friend bool operator==(const HttpCookie&, const HttpCookie&) = default;
};

// The cookies of a profile's store (none: the shared session), delivered on
// the main loop. The web layer implements it over the web engine's stores.
class CookieSource {
public:
    virtual ~CookieSource() = default;
    virtual void allCookies(const std::optional<Uuid>& profileId,
                            std::function<void(std::vector<HttpCookie>)> done) = 0;
};

}  // namespace lectern
