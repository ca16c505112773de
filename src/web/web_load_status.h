#pragma once

#include <optional>
#include <string>

#include "web/trusted_certificates.h"

namespace lectern {

// Where the live page of a web pane is: not asked for yet, loading, shown,
// or failed with the engine's message. Every new load goes back to loading.
// A page whose server certificate the engine rejected failed with the
// reason, and with the certificate the user could choose to trust.
struct WebLoadStatus {
    enum class Kind { idle, loading, loaded, failed };
    Kind kind = Kind::idle;
    std::string message;  // failed only
    std::optional<HostCertificate> untrustedCertificate;  // failed only

    static WebLoadStatus idle() { return {}; }
    static WebLoadStatus loading() { return {Kind::loading, {}, {}}; }
    static WebLoadStatus loaded() { return {Kind::loaded, {}, {}}; }
    static WebLoadStatus failed(std::string message, std::optional<HostCertificate> certificate = std::nullopt) {
        return {Kind::failed, std::move(message), std::move(certificate)};
    }
    friend bool operator==(const WebLoadStatus&, const WebLoadStatus&) = default;
};

}  // namespace lectern
