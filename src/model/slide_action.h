#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "model/deck_enums.h"
#include "model/uuid.h"

namespace lectern {

struct HTTPHeaderField {
    Uuid id = Uuid::random();
    std::string name;
    std::string value;  // stored as plain text, tokens included
    friend bool operator==(const HTTPHeaderField&, const HTTPHeaderField&) = default;
};

struct APIRequestSpec {
    std::string method = "GET";
    std::string urlString;  // as typed
    std::vector<HTTPHeaderField> headers;
    std::string body;  // as typed
    bool useProfileCookies = false;
    friend bool operator==(const APIRequestSpec&, const APIRequestSpec&) = default;
};

// The kind-with-payload form of an action, met only in the older stored key
// `kind`: either a request or a page script.
using SlideActionKind = std::variant<APIRequestSpec, std::string>;

// A demo action attached to a slide. Both `request` and `script` are always
// kept, whatever the kind, so switching kinds in the editor loses nothing.
struct SlideAction {
    Uuid id = Uuid::random();
    std::string name;
    SlideActionKindCase kindCase = SlideActionKindCase::apiRequest;
    APIRequestSpec request;
    std::string script;
    bool reloadsLiveView = false;
    bool autoRun = false;
    double autoRunDelaySeconds = 0;
    bool repeats = false;
    double repeatIntervalSeconds = 5.0;
    std::int64_t repeatMaxRuns = 0;  // 0: no bound

    friend bool operator==(const SlideAction&, const SlideAction&) = default;
};

}  // namespace lectern
