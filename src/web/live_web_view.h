#pragma once

#include <functional>
#include <optional>
#include <string>

#include "base/result.h"

namespace lectern {

// A live web page on the stage, as demo actions reach it. The web layer
// implements it over the web engine; tests use fakes.
class LiveWebView {
public:
    virtual ~LiveWebView() = default;
    // Evaluates `body` as the body of an async function in the page's own
    // world and calls back with the returned value's text (nullopt when the
    // script returned nothing: undefined or null), or the thrown error's
    // description.
    virtual void evaluateAsyncFunction(const std::string& body,
                                       std::function<void(Result<std::optional<std::string>>)> done) = 0;
    virtual void reload() = 0;
};

}  // namespace lectern
