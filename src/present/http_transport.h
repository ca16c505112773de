#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model/result.h"
#include "model/uuid.h"

namespace lectern {

// A request as the runner built it. Headers keep their order.
struct HttpRequest {
    std::string method;
    std::string url;
    std::vector<std::pair<std::string, std::string>> headers;
    std::optional<std::string> body;
    double timeoutSeconds = 60;
    friend bool operator==(const HttpRequest&, const HttpRequest&) = default;
};

struct HttpResponse {
    int status = 0;  // 0 when the response was not HTTP
    std::vector<std::uint8_t> body;
};

// Sends requests and calls back on the main loop with the response, or with
// the transport error's description (time-out, refused connection, ...).
// Destroying the transport cancels what is in flight without calling back.
class HttpTransport {
public:
    virtual ~HttpTransport() = default;
    virtual void send(const HttpRequest& request, std::function<void(Result<HttpResponse>)> done) = 0;
};

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
