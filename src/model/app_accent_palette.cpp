#include "model/app_accent_palette.h"

namespace lectern {

const std::vector<std::string>& AppAccentPalette::defaultHexes() {
    static const std::vector<std::string> hexes{"#3B5A7A", "#B91C1C", "#047857", "#A16207", "#6D28D9", "#BE185D"};
    return hexes;
}

AppAccentPalette::AppAccentPalette(PreferencesStore& store) : store_(store) {
    load();
    storeConnection_ = store_.changed().connect([this](const std::string& key) {
        if (key != preferencesKey) return;
        load();
        changed_.emit();
    });
}

void AppAccentPalette::load() {
    hexes_.clear();
    if (const auto* stored = store_.value(preferencesKey); stored && stored->is_array()) {
        for (const auto& entry : *stored) {
            if (entry.is_string()) hexes_.push_back(entry.get<std::string>());
        }
    }
    if (hexes_.empty()) hexes_ = defaultHexes();
}

void AppAccentPalette::replace(std::size_t index, std::string hex) {
    if (index >= hexes_.size()) return;
    std::vector<std::string> updated = hexes_;
    updated[index] = std::move(hex);
    (void)store_.setValue(preferencesKey, updated);  // reloads every palette through changed()
}

}  // namespace lectern
