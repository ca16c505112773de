#include "editor/recovery_store.h"

#include <glib/gi18n.h>

#include <glib.h>

#include <algorithm>
#include <ctime>

#include <nlohmann/json.hpp>

#include "model/deck_json.h"
#include "model/deck_package.h"
#include "model/file_io.h"

namespace lectern {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

constexpr std::string_view originMember = "origin.json";
constexpr std::string_view folderSuffix = ".lectern";
// origin.json holds a path and a title: anything larger is not ours.
constexpr std::uint64_t originSizeLimit = 64 * 1024;

std::string titleOf(const Deck& deck, const std::optional<fs::path>& package) {
    if (deck.title && !deck.title->empty()) return *deck.title;
    if (package) return package->stem().string();
    return _("Untitled Deck");
}

std::optional<std::string> readText(const fs::path& path, std::uint64_t limit) {
    auto bytes = readRegularFile(path, limit);
    if (!bytes) return std::nullopt;
    return std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size());
}

// The entry a copy's folder describes, or nothing when any part of it is
// missing or unreadable: a copy cut short by a crash during its first
// write, or one changed by hand.
std::optional<RecoveryEntry> readEntry(const fs::path& folder) {
    std::string name = folder.filename().string();
    if (!name.ends_with(folderSuffix)) return std::nullopt;
    auto id = Uuid::parse(std::string_view(name).substr(0, name.size() - folderSuffix.size()));
    if (!id) return std::nullopt;

    auto originText = readText(folder / originMember, originSizeLimit);
    if (!originText) return std::nullopt;
    json origin = json::parse(*originText, nullptr, false);
    if (!origin.is_object()) return std::nullopt;
    auto package = origin.find("package");
    auto title = origin.find("title");
    auto savedAt = origin.find("savedAt");
    if (package == origin.end() || !(package->is_null() || package->is_string())) return std::nullopt;
    if (title == origin.end() || !title->is_string()) return std::nullopt;
    if (savedAt == origin.end() || !savedAt->is_number_integer()) return std::nullopt;

    // The deck itself must decode and be the one the folder is named after.
    // Images are left out here; they are read when the copy is recovered.
    auto deckText = readText(folder / DeckPackage::deckMember, DeckPackage::deckSizeLimit);
    if (!deckText) return std::nullopt;
    auto deck = DeckJson::decode(*deckText);
    if (!deck || deck->id != *id) return std::nullopt;

    RecoveryEntry entry;
    entry.deckId = *id;
    entry.folder = folder;
    if (package->is_string()) entry.package = fs::path(package->get<std::string>());
    entry.title = title->get<std::string>();
    entry.savedAtUnix = savedAt->get<std::int64_t>();
    return entry;
}

}  // namespace

RecoveryStore::RecoveryStore(fs::path root) : root_(std::move(root)) {}

fs::path RecoveryStore::defaultRoot() { return fs::path(g_get_user_state_dir()) / "lectern" / "recovery"; }

Status RecoveryStore::write(const Deck& deck, const std::optional<fs::path>& package) {
    std::error_code ec;
    fs::create_directories(root_, ec);
    if (ec) return writeError(root_, ec.value());
    const fs::path folder = root_ / (deck.id.string() + std::string(folderSuffix));

    // A copy is for reading back the deck, never for showing it: no previews.
    auto noPreviews = [](const Deck&) { return DeckPreviews{}; };
    if (auto status = DeckPackage::write(deck, folder, folder, noPreviews); !status) return status;

    // Written after the deck: a crash in between leaves the new deck with the
    // previous origin (the same deck, an older title), or, on the first
    // write, a copy without one, which list() leaves out.
    json origin = {
        {"package", package ? json(package->string()) : json(nullptr)},
        {"title", titleOf(deck, package)},
        {"savedAt", static_cast<std::int64_t>(std::time(nullptr))},
    };
    return replaceFileAtomically(folder / originMember,
                                 origin.dump(2, ' ', false, json::error_handler_t::replace) + "\n");
}

void RecoveryStore::remove(const Uuid& deckId) {
    std::error_code ignored;
    fs::remove_all(root_ / (deckId.string() + std::string(folderSuffix)), ignored);
}

std::vector<RecoveryEntry> RecoveryStore::list() const {
    std::vector<RecoveryEntry> entries;
    std::error_code ec;
    for (fs::directory_iterator it(root_, ec), end; !ec && it != end; it.increment(ec)) {
        // Real folders only: a link could point anywhere, and a save's
        // leftovers (".<name>.saving-…") are not named after a deck.
        if (!it->is_directory(ec) || it->is_symlink(ec)) continue;
        if (auto entry = readEntry(it->path())) entries.push_back(std::move(*entry));
    }
    std::stable_sort(entries.begin(), entries.end(), [](const RecoveryEntry& a, const RecoveryEntry& b) {
        return a.savedAtUnix > b.savedAtUnix;
    });
    return entries;
}

Result<Deck> RecoveryStore::read(const RecoveryEntry& entry) const { return DeckPackage::read(entry.folder); }

}  // namespace lectern
