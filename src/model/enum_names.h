#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace lectern {

// Each stored enumeration specialises EnumNames with its case names in
// declaration order; the stored (JSON) form of a case is its name.
template <class E>
struct EnumNames;

template <class E>
constexpr std::string_view enumName(E value) {
    return EnumNames<E>::names[static_cast<std::size_t>(value)];
}

template <class E>
constexpr std::optional<E> enumFromName(std::string_view name) {
    const auto& names = EnumNames<E>::names;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i] == name) return static_cast<E>(i);
    }
    return std::nullopt;
}

template <class E>
constexpr auto allCases() {
    constexpr std::size_t n = EnumNames<E>::names.size();
    std::array<E, n> cases{};
    for (std::size_t i = 0; i < n; ++i) cases[i] = static_cast<E>(i);
    return cases;
}

}  // namespace lectern
