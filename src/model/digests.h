#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lectern {

// SHA-256 of the bytes as 64 lower-case hexadecimal digits.
std::string sha256Hex(std::span<const std::uint8_t> bytes);
std::string sha256Hex(std::string_view bytes);

std::string base64Encode(std::span<const std::uint8_t> bytes);
// Standard Base64 with padding; nullopt for text that is not Base64.
std::optional<std::vector<std::uint8_t>> base64Decode(std::string_view text);

}  // namespace lectern
