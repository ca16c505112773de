#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "model/uuid.h"

namespace lectern {

// Where a deck was left: the slide on the stage and the window's size.
struct DeckPlace {
    std::optional<Uuid> slideId;
    int width = 0;   // 0: not known (the window's own default)
    int height = 0;
    bool maximized = false;
    // "Present On": the connector of the monitor chosen for the stage;
    // empty for "Automatic".
    std::string presentOn;

    friend bool operator==(const DeckPlace&, const DeckPlace&) = default;
};

// The places of the decks opened lately, so that a deck opens again where it
// was left. Kept in the user's state folder ($XDG_STATE_HOME/lectern/
// places.json), never in the deck: the package stays the same wherever it
// is opened and by whom. Decks are known by their package's canonical path;
// the most recently left come first and at most `capacity` are kept.
//
// The file is read once, leniently: a missing or damaged file is an empty
// list, and entries that do not make sense are left out. Main loop only.
class DeckPlaces {
public:
    static constexpr std::size_t capacity = 100;
    // Sizes outside these bounds are not a window's.
    static constexpr int minimumSide = 200;
    static constexpr int maximumSide = 32768;

    explicit DeckPlaces(std::filesystem::path file);
    static std::filesystem::path defaultFile();
    // The user's own list, shared by every window of the process.
    static std::shared_ptr<DeckPlaces> perUser();

    std::optional<DeckPlace> find(const std::filesystem::path& package) const;
    // Records where the deck is now; it becomes the most recent one. Only
    // in memory: save() writes it.
    void remember(const std::filesystem::path& package, const DeckPlace& place);
    // Writes the list (atomically) when it changed since the last write.
    Status save();

    // The packages known, most recent first.
    std::vector<std::filesystem::path> packages() const;

private:
    struct Entry {
        std::string key;  // the canonical path
        DeckPlace place;
    };
    static std::string keyFor(const std::filesystem::path& package);
    void load();

    std::filesystem::path file_;
    std::vector<Entry> entries_;  // most recent first
    bool changed_ = false;
};

}  // namespace lectern
