#include "model/uuid.h"

#include <glib.h>

#include <algorithm>

namespace lectern {

namespace {

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

Uuid Uuid::random() {
    // g_uuid_string_random gives a version 4 UUID from a good random source.
    gchar* text = g_uuid_string_random();
    auto parsed = parse(text);
    g_free(text);
    return *parsed;
}

Uuid Uuid::nameBased(const Uuid& space, std::string_view name) {
    GChecksum* sha1 = g_checksum_new(G_CHECKSUM_SHA1);
    g_checksum_update(sha1, space.bytes_.data(), static_cast<gssize>(space.bytes_.size()));
    g_checksum_update(sha1, reinterpret_cast<const guchar*>(name.data()), static_cast<gssize>(name.size()));
    std::array<std::uint8_t, 20> digest{};
    gsize length = digest.size();
    g_checksum_get_digest(sha1, digest.data(), &length);
    g_checksum_free(sha1);
    Uuid id;
    std::copy_n(digest.begin(), id.bytes_.size(), id.bytes_.begin());
    id.bytes_[6] = static_cast<std::uint8_t>((id.bytes_[6] & 0x0F) | 0x50);  // version 5
    id.bytes_[8] = static_cast<std::uint8_t>((id.bytes_[8] & 0x3F) | 0x80);  // RFC 4122 variant
    return id;
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    // 8-4-4-4-12 hexadecimal digits, hyphens at fixed places.
    if (text.size() != 36) return std::nullopt;
    Uuid id;
    std::size_t byte = 0;
    for (std::size_t i = 0; i < text.size();) {
        if (i == 8 || i == 13 || i == 18 || i == 23) {
            if (text[i] != '-') return std::nullopt;
            ++i;
            continue;
        }
        int high = hexValue(text[i]);
        int low = hexValue(text[i + 1]);
        if (high < 0 || low < 0) return std::nullopt;
        id.bytes_[byte++] = static_cast<std::uint8_t>(high * 16 + low);
        i += 2;
    }
    return id;
}

std::string Uuid::string() const {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(36);
    for (std::size_t i = 0; i < bytes_.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) out.push_back('-');
        out.push_back(digits[bytes_[i] >> 4]);
        out.push_back(digits[bytes_[i] & 0xF]);
    }
    return out;
}

bool Uuid::isNil() const { return *this == Uuid{}; }

}  // namespace lectern

std::size_t std::hash<lectern::Uuid>::operator()(const lectern::Uuid& id) const noexcept {
    std::size_t h = 0;
    for (auto b : id.bytes()) h = h * 131 + b;
    return h;
}
