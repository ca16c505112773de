#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace lectern {

// A 128-bit RFC 4122 identifier. Written as upper-case hyphenated text;
// parsed from either case.
class Uuid {
public:
    Uuid() = default;  // the nil UUID

    static Uuid random();
    // The name-based (version 5, SHA-1) UUID of `name` within `space`: the
    // same pair always gives the same UUID.
    static Uuid nameBased(const Uuid& space, std::string_view name);
    static std::optional<Uuid> parse(std::string_view text);

    std::string string() const;
    bool isNil() const;
    const std::array<std::uint8_t, 16>& bytes() const { return bytes_; }

    friend bool operator==(const Uuid&, const Uuid&) = default;
    friend auto operator<=>(const Uuid&, const Uuid&) = default;

private:
    std::array<std::uint8_t, 16> bytes_{};
};

}  // namespace lectern

template <>
struct std::hash<lectern::Uuid> {
    std::size_t operator()(const lectern::Uuid& id) const noexcept;
};
