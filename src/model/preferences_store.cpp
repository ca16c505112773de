#include "model/preferences_store.h"

#include <glib.h>

#include "model/file_io.h"

namespace lectern {

namespace fs = std::filesystem;
using nlohmann::json;

PreferencesStore::PreferencesStore(fs::path file) : path_(std::move(file)) {
    auto bytes = readRegularFile(path_, sizeLimit);
    if (!bytes) {
        // Too large to be ours: move it aside whole rather than overwrite it
        // later. Anything else unreadable means no preferences yet.
        if (bytes.error().kind == ErrorKind::fileTooLarge) {
            fs::path aside = path_;
            aside += ".damaged";
            std::error_code ignored;
            fs::rename(path_, aside, ignored);
        }
        return;
    }
    std::string_view text(reinterpret_cast<const char*>(bytes->data()), bytes->size());
    json parsed = json::parse(text, nullptr, false);
    if (parsed.is_object()) {
        values_ = std::move(parsed);
        return;
    }
    // Damaged: start empty, but keep the old bytes where a person can find them.
    fs::path damaged = path_;
    damaged += ".damaged";
    (void)replaceFileAtomically(damaged, text);
}

fs::path PreferencesStore::defaultPath() {
    return fs::path(g_get_user_config_dir()) / "lectern" / "preferences.json";
}

PreferencesStore& PreferencesStore::shared() {
    static PreferencesStore store(defaultPath());
    return store;
}

const json* PreferencesStore::value(std::string_view key) const {
    auto it = values_.find(key);
    return it == values_.end() ? nullptr : &*it;
}

Status PreferencesStore::save() const {
    std::error_code ec;
    fs::create_directories(path_.parent_path(), ec);  // the first save makes $XDG_CONFIG_HOME/lectern
    return replaceFileAtomically(path_, values_.dump(2, ' ', false, json::error_handler_t::replace) + "\n");
}

Status PreferencesStore::setValue(const std::string& key, json value) {
    values_[key] = std::move(value);
    Status status = save();
    changed_.emit(key);
    return status;
}

Status PreferencesStore::removeValue(const std::string& key) {
    if (values_.erase(key) == 0) return Done{};
    Status status = save();
    changed_.emit(key);
    return status;
}

}  // namespace lectern
