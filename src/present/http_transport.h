#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/result.h"
#include "model/uuid.h"
#include "web/cookie_source.h"

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

}  // namespace lectern
