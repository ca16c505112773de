#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "base/result.h"
#include "base/signal.h"

namespace lectern {

// The per-user preferences: one JSON object in one file, by default
// $XDG_CONFIG_HOME/lectern/preferences.json. Reading is lenient: a missing
// file is empty, and a damaged one reads as empty after a copy of it is kept
// beside it as preferences.json.damaged, so nothing is overwritten silently.
// A file larger than sizeLimit (far more than any preferences need) is moved
// to preferences.json.damaged unread; one that is not a regular file reads as
// empty. Every change is written at once, atomically.
class PreferencesStore {
public:
    static constexpr std::uint64_t sizeLimit = std::uint64_t{16} << 20;

    explicit PreferencesStore(std::filesystem::path file);
    PreferencesStore(const PreferencesStore&) = delete;
    PreferencesStore& operator=(const PreferencesStore&) = delete;

    static std::filesystem::path defaultPath();
    // The process-wide store at defaultPath(), created on first use.
    static PreferencesStore& shared();

    const std::filesystem::path& path() const { return path_; }
    // The value under key, or null when there is none.
    const nlohmann::json* value(std::string_view key) const;
    // Stores the value and writes the file; a failed write keeps the value
    // in memory for this session and reports the error.
    Status setValue(const std::string& key, nlohmann::json value);
    Status removeValue(const std::string& key);

    // Emitted with the key after every change.
    Signal<const std::string&>& changed() { return changed_; }

private:
    Status save() const;

    std::filesystem::path path_;
    nlohmann::json values_ = nlohmann::json::object();
    Signal<const std::string&> changed_;
};

}  // namespace lectern
