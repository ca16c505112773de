#include "web/trusted_certificates.h"

#include <glib.h>

#include <algorithm>

#include <nlohmann/json.hpp>

#include "model/file_io.h"

namespace lectern {

using nlohmann::json;

namespace {

// Far more than anyone trusts by hand; a larger file is not ours.
constexpr std::uint64_t fileSizeLimit = 1024 * 1024;

}  // namespace

std::string HostCertificate::place() const {
    if (port == 443 || port <= 0) return host;
    // An IPv6 literal keeps its brackets before a port.
    bool ipv6 = host.find(':') != std::string::npos;
    return (ipv6 ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

std::vector<HostCertificate> TrustedCertificates::read(const std::filesystem::path& file) {
    std::vector<HostCertificate> trusted;
    auto bytes = readRegularFile(file, fileSizeLimit);
    if (!bytes) return trusted;
    json stored = json::parse(bytes->begin(), bytes->end(), nullptr, false);
    if (!stored.is_object()) return trusted;
    auto list = stored.find("certificates");
    if (list == stored.end() || !list->is_array()) return trusted;
    for (const auto& entry : *list) {
        if (!entry.is_object()) continue;
        auto host = entry.find("host");
        auto pem = entry.find("pem");
        if (host == entry.end() || pem == entry.end() || !host->is_string() || !pem->is_string()) continue;
        if (host->get_ref<const std::string&>().empty() || pem->get_ref<const std::string&>().empty()) continue;
        trusted.push_back({host->get<std::string>(), 443, pem->get<std::string>()});
    }
    return trusted;
}

Status TrustedCertificates::add(const std::filesystem::path& file, const std::string& host, const std::string& pem) {
    std::vector<HostCertificate> trusted = read(file);
    bool known = std::any_of(trusted.begin(), trusted.end(),
                             [&](const HostCertificate& entry) { return entry.host == host && entry.pem == pem; });
    if (known) return Done{};
    trusted.push_back({host, 443, pem});
    json list = json::array();
    for (const auto& entry : trusted) list.push_back({{"host", entry.host}, {"pem", entry.pem}});
    std::string text = json{{"certificates", list}}.dump(1, '\t');
    // Written beside and renamed over, flushed, and readable by the user
    // only from the start: the list decides which servers pages believe.
    return replaceFileAtomically(file, text, 0600);
}

}  // namespace lectern
