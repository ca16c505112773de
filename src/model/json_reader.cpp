#include "model/json_reader.h"

#include <glib/gi18n.h>

#include <cmath>
#include <limits>

namespace lectern {

using nlohmann::json;

JsonReadFailure::JsonReadFailure(std::string p, std::string w)
    : std::runtime_error(p.empty() ? w : p + ": " + w), path(std::move(p)), what_(std::move(w)) {}

std::optional<std::int64_t> jsonInteger(const json& value) {
    if (value.is_number_integer()) {
        if (value.is_number_unsigned() &&
            value.get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
            return std::nullopt;
        }
        return value.get<std::int64_t>();
    }
    if (value.is_number_float()) {
        // 3.0 is an integer; 3.5 and out-of-range values are not.
        double d = value.get<double>();
        if (std::isfinite(d) && d == std::trunc(d) && d >= -9.2233720368547758e18 && d < 9.2233720368547758e18) {
            return static_cast<std::int64_t>(d);
        }
    }
    return std::nullopt;
}

std::optional<double> jsonDouble(const json& value) {
    if (value.is_number()) return value.get<double>();
    return std::nullopt;
}

std::string indexedPath(const std::string& path, std::size_t index) {
    return path + "[" + std::to_string(index) + "]";
}

JsonObjectReader::JsonObjectReader(const json& value, std::string path) : object_(value), path_(std::move(path)) {
    if (!object_.is_object()) throw JsonReadFailure(path_, _("expected an object"));
}

std::string JsonObjectReader::pathOf(std::string_view key) const {
    return path_.empty() ? std::string(key) : path_ + "." + std::string(key);
}

void JsonObjectReader::fail(std::string_view key, std::string what) const {
    throw JsonReadFailure(pathOf(key), std::move(what));
}

const json* JsonObjectReader::find(std::string_view key) const {
    auto it = object_.find(key);
    if (it == object_.end() || it->is_null()) return nullptr;
    return &*it;
}

std::optional<std::string> JsonObjectReader::optionalString(std::string_view key) const {
    const json* v = find(key);
    if (!v) return std::nullopt;
    if (!v->is_string()) fail(key, _("expected a string"));
    return v->get<std::string>();
}

std::string JsonObjectReader::string(std::string_view key, std::string fallback) const {
    auto v = optionalString(key);
    return v ? std::move(*v) : std::move(fallback);
}

std::optional<bool> JsonObjectReader::optionalBool(std::string_view key) const {
    const json* v = find(key);
    if (!v) return std::nullopt;
    if (!v->is_boolean()) fail(key, _("expected true or false"));
    return v->get<bool>();
}

bool JsonObjectReader::boolean(std::string_view key, bool fallback) const {
    return optionalBool(key).value_or(fallback);
}

std::optional<double> JsonObjectReader::optionalDouble(std::string_view key) const {
    const json* v = find(key);
    if (!v) return std::nullopt;
    auto d = jsonDouble(*v);
    if (!d) fail(key, _("expected a number"));
    return d;
}

double JsonObjectReader::number(std::string_view key, double fallback) const {
    return optionalDouble(key).value_or(fallback);
}

std::optional<std::int64_t> JsonObjectReader::optionalInteger(std::string_view key) const {
    const json* v = find(key);
    if (!v) return std::nullopt;
    auto i = jsonInteger(*v);
    if (!i) fail(key, _("expected a whole number"));
    return i;
}

std::int64_t JsonObjectReader::integer(std::string_view key, std::int64_t fallback) const {
    return optionalInteger(key).value_or(fallback);
}

std::optional<Uuid> JsonObjectReader::optionalUuid(std::string_view key) const {
    const json* v = find(key);
    if (!v) return std::nullopt;
    if (!v->is_string()) fail(key, _("not a UUID"));
    auto id = Uuid::parse(v->get_ref<const std::string&>());
    if (!id) fail(key, _("not a UUID"));
    return id;
}

Uuid JsonObjectReader::requiredUuid(std::string_view key) const {
    auto id = optionalUuid(key);
    if (!id) fail(key, _("missing"));
    return *id;
}

const json* JsonObjectReader::optionalArray(std::string_view key) const {
    const json* v = find(key);
    if (v && !v->is_array()) fail(key, _("expected an array"));
    return v;
}

const json& JsonObjectReader::requiredArray(std::string_view key) const {
    const json* v = optionalArray(key);
    if (!v) fail(key, _("missing"));
    return *v;
}

}  // namespace lectern
