#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "model/deck.h"

namespace lectern {

// A deck's unsaved state kept for after a crash.
struct RecoveryEntry {
    Uuid deckId;
    std::filesystem::path folder;                  // <root>/<deck id>.lectern
    std::optional<std::filesystem::path> package;  // where the deck lives; none for a draft
    std::string title;                             // what the start window shows
    std::int64_t savedAtUnix = 0;                  // when the copy was written

    friend bool operator==(const RecoveryEntry&, const RecoveryEntry&) = default;
};

// Copies of drafts and unsaved changes, one package per deck under `root`
// ($XDG_STATE_HOME/lectern/recovery/ by default) with a small origin.json
// beside deck.json saying where the deck belongs. Written a few seconds after
// edits and removed once the deck is saved or closed on purpose, so what is
// left at start is what a crash would otherwise have lost.
class RecoveryStore {
public:
    explicit RecoveryStore(std::filesystem::path root);
    static std::filesystem::path defaultRoot();

    // Writes the deck's copy (crash-safe, without previews).
    Status write(const Deck& deck, const std::optional<std::filesystem::path>& package);
    // Removes the deck's copy; a missing one is fine.
    void remove(const Uuid& deckId);
    // Every readable copy, newest first; damaged ones are skipped, not removed.
    std::vector<RecoveryEntry> list() const;
    Result<Deck> read(const RecoveryEntry& entry) const;

private:
    std::filesystem::path root_;
};

}  // namespace lectern
