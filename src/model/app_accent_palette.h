#pragma once

#include <string>
#include <vector>

#include "model/preferences_store.h"
#include "base/signal.h"

namespace lectern {

// The accent colours offered in the colour pickers, kept in the preferences.
// Every deck window has one; they all read and write the same key, and each
// follows changes made through the others.
class AppAccentPalette {
public:
    static constexpr const char* preferencesKey = "app.accent.palette.v1.hexes";
    static const std::vector<std::string>& defaultHexes();

    explicit AppAccentPalette(PreferencesStore& store);

    const std::vector<std::string>& hexes() const { return hexes_; }
    // Replaces the colour at index; an index outside the list changes nothing.
    void replace(std::size_t index, std::string hex);

    Signal<>& changed() { return changed_; }

private:
    void load();

    PreferencesStore& store_;
    std::vector<std::string> hexes_;
    Signal<> changed_;
    Signal<const std::string&>::Connection storeConnection_;
};

}  // namespace lectern
