#include "model/digests.h"

#include <glib.h>

namespace lectern {

std::string sha256Hex(std::span<const std::uint8_t> bytes) {
    GChecksum* checksum = g_checksum_new(G_CHECKSUM_SHA256);
    // g_checksum_update takes a gssize; feed very large buffers in pieces.
    constexpr std::size_t chunk = std::size_t{1} << 30;
    for (std::size_t at = 0; at < bytes.size(); at += chunk) {
        std::size_t n = std::min(chunk, bytes.size() - at);
        g_checksum_update(checksum, bytes.data() + at, static_cast<gssize>(n));
    }
    std::string hex = g_checksum_get_string(checksum);  // lower-case digits
    g_checksum_free(checksum);
    return hex;
}

std::string sha256Hex(std::string_view bytes) {
    return sha256Hex(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
}

std::string base64Encode(std::span<const std::uint8_t> bytes) {
    gchar* text = g_base64_encode(bytes.data(), bytes.size());
    std::string out(text);
    g_free(text);
    return out;
}

std::optional<std::vector<std::uint8_t>> base64Decode(std::string_view text) {
    // GLib's decoder skips invalid characters silently, so validate first:
    // groups of four from the Base64 alphabet, '=' only as trailing padding.
    if (text.size() % 4 != 0) return std::nullopt;
    std::size_t padding = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        bool alphabet = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                        (c >= '0' && c <= '9') || c == '+' || c == '/';
        if (c == '=') {
            if (i + 2 < text.size()) return std::nullopt;
            ++padding;
        } else if (!alphabet || padding > 0) {
            return std::nullopt;
        }
    }
    std::vector<std::uint8_t> out(text.size() / 4 * 3);
    gint state = 0;
    guint save = 0;
    gsize written = g_base64_decode_step(text.data(), text.size(), out.data(), &state, &save);
    out.resize(written);
    return out;
}

}  // namespace lectern
