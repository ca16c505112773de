#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "model/uuid.h"

namespace lectern {

// Thrown inside decoders and turned into an Error value at their boundary.
// `path` says where ("slides[3].id"), `what` what went wrong ("not a UUID").
struct JsonReadFailure : std::runtime_error {
    JsonReadFailure(std::string path, std::string what);
    std::string path;
    std::string what_;
    std::string message() const { return path.empty() ? what_ : path + ": " + what_; }
};

// Reads the keys of one JSON object with the lenient rules of stored data: a
// missing key or a null reads as absent, a value of the wrong type fails.
class JsonObjectReader {
public:
    // Fails unless `value` is an object.
    JsonObjectReader(const nlohmann::json& value, std::string path);

    const nlohmann::json& object() const { return object_; }
    const std::string& path() const { return path_; }
    std::string pathOf(std::string_view key) const;
    [[noreturn]] void fail(std::string_view key, std::string what) const;

    // The value under key, or null when the key is missing or null.
    const nlohmann::json* find(std::string_view key) const;

    std::optional<std::string> optionalString(std::string_view key) const;
    std::string string(std::string_view key, std::string fallback = {}) const;
    std::optional<bool> optionalBool(std::string_view key) const;
    bool boolean(std::string_view key, bool fallback = false) const;
    std::optional<double> optionalDouble(std::string_view key) const;
    double number(std::string_view key, double fallback) const;
    std::optional<std::int64_t> optionalInteger(std::string_view key) const;
    std::int64_t integer(std::string_view key, std::int64_t fallback) const;
    std::optional<Uuid> optionalUuid(std::string_view key) const;
    Uuid requiredUuid(std::string_view key) const;
    // The array under key, or null when missing; fails when not an array.
    const nlohmann::json* optionalArray(std::string_view key) const;
    const nlohmann::json& requiredArray(std::string_view key) const;

private:
    const nlohmann::json& object_;
    std::string path_;
};

// Conversions of single JSON values; nullopt when the value has another type.
std::optional<std::int64_t> jsonInteger(const nlohmann::json& value);
std::optional<double> jsonDouble(const nlohmann::json& value);

std::string indexedPath(const std::string& path, std::size_t index);

}  // namespace lectern
