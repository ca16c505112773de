#pragma once

#include <string>

namespace lectern {

// Where the live page of a web pane is: not asked for yet, loading, shown,
// or failed with the engine's message. Every new load goes back to loading.
struct WebLoadStatus {
    enum class Kind { idle, loading, loaded, failed };
    Kind kind = Kind::idle;
    std::string message;  // failed only

    static WebLoadStatus idle() { return {}; }
    static WebLoadStatus loading() { return {Kind::loading, {}}; }
    static WebLoadStatus loaded() { return {Kind::loaded, {}}; }
    static WebLoadStatus failed(std::string message) { return {Kind::failed, std::move(message)}; }
    friend bool operator==(const WebLoadStatus&, const WebLoadStatus&) = default;
};

}  // namespace lectern
