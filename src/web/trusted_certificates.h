#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "base/result.h"

namespace lectern {

// A server certificate for one host: one the web engine rejected for a page
// (it could be trusted), or one the user trusted for that host in a store.
struct HostCertificate {
    std::string host;  // as in the page's address
    int port = 443;    // where the page was asked for; trust is per host
    std::string pem;   // the certificate itself, PEM-encoded
    // "127.0.0.1", or "127.0.0.1:8443" when the port is not the usual one.
    std::string place() const;
    friend bool operator==(const HostCertificate&, const HostCertificate&) = default;
};

// The certificates the user trusted in one website data store, kept in a
// file in the store's data folder so that a new session of the store
// (after a restart) trusts them again before its first load.
namespace TrustedCertificates {

inline constexpr const char* fileName = "trusted-certificates.json";

// The host and certificate pairs in the file. A missing, unreadable or
// damaged file reads as none; entries of the wrong shape are skipped.
std::vector<HostCertificate> read(const std::filesystem::path& file);

// Adds the pair to the file unless it is there already, replacing the file
// atomically, readable by the user only. The folder must exist.
Status add(const std::filesystem::path& file, const std::string& host, const std::string& pem);

}  // namespace TrustedCertificates

}  // namespace lectern
