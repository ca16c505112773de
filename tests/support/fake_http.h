#pragma once

#include <functional>
#include <vector>

#include "present/http_transport.h"

namespace lectern::testing {

// A transport that keeps every request and answers only when told to.
class FakeHttpTransport : public HttpTransport {
public:
    struct Sent {
        HttpRequest request;
        std::function<void(Result<HttpResponse>)> done;
    };
    void send(const HttpRequest& request, std::function<void(Result<HttpResponse>)> done) override {
        sent->push_back({request, std::move(done)});
    }
    // Shared so a test can still answer after the runner took ownership.
    std::shared_ptr<std::vector<Sent>> sent = std::make_shared<std::vector<Sent>>();
};

}  // namespace lectern::testing
