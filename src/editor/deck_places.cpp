#include "editor/deck_places.h"

#include <glib.h>

#include <algorithm>

#include <nlohmann/json.hpp>

#include "model/file_io.h"

namespace lectern {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

// A hundred paths and sizes fit in a few tens of kilobytes: a larger file
// is not ours.
constexpr std::uint64_t fileSizeLimit = 1024 * 1024;
constexpr int formatVersion = 1;

std::optional<int> side(const json& object, const char* name) {
    auto found = object.find(name);
    if (found == object.end() || !found->is_number_integer()) return std::nullopt;
    auto value = found->get<std::int64_t>();
    if (value < DeckPlaces::minimumSide || value > DeckPlaces::maximumSide) return std::nullopt;
    return static_cast<int>(value);
}

}  // namespace

DeckPlaces::DeckPlaces(fs::path file) : file_(std::move(file)) { load(); }

fs::path DeckPlaces::defaultFile() { return fs::path(g_get_user_state_dir()) / "lectern" / "places.json"; }

std::shared_ptr<DeckPlaces> DeckPlaces::perUser() {
    static std::shared_ptr<DeckPlaces> places = std::make_shared<DeckPlaces>(defaultFile());
    return places;
}

std::string DeckPlaces::keyFor(const fs::path& package) {
    // The same deck reached through a link or with "a/../" is one deck.
    std::error_code ec;
    fs::path canonical = fs::weakly_canonical(package, ec);
    if (ec) canonical = fs::absolute(package, ec).lexically_normal();
    std::string key = canonical.string();
    while (key.size() > 1 && key.ends_with('/')) key.pop_back();
    return key;
}

void DeckPlaces::load() {
    auto bytes = readRegularFile(file_, fileSizeLimit);
    if (!bytes) return;
    json root = json::parse(bytes->begin(), bytes->end(), nullptr, false);
    if (!root.is_object()) return;
    auto decks = root.find("decks");
    if (decks == root.end() || !decks->is_array()) return;
    for (const auto& item : *decks) {
        if (entries_.size() == capacity) break;
        if (!item.is_object()) continue;
        auto package = item.find("package");
        if (package == item.end() || !package->is_string() || package->get<std::string>().empty()) continue;
        std::string key = package->get<std::string>();
        // Only absolute paths are written; anything else was changed by hand.
        if (key.front() != '/') continue;
        if (std::any_of(entries_.begin(), entries_.end(), [&](const Entry& e) { return e.key == key; })) continue;
        Entry entry{key, {}};
        if (auto slide = item.find("slide"); slide != item.end() && slide->is_string()) {
            entry.place.slideId = Uuid::parse(slide->get<std::string>());
        }
        auto width = side(item, "width");
        auto height = side(item, "height");
        if (width && height) {
            entry.place.width = *width;
            entry.place.height = *height;
        }
        if (auto maximized = item.find("maximized"); maximized != item.end() && maximized->is_boolean()) {
            entry.place.maximized = maximized->get<bool>();
        }
        if (auto screen = item.find("presentOn"); screen != item.end() && screen->is_string()) {
            entry.place.presentOn = screen->get<std::string>();
        }
        entries_.push_back(std::move(entry));
    }
}

std::optional<DeckPlace> DeckPlaces::find(const fs::path& package) const {
    const std::string key = keyFor(package);
    auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& e) { return e.key == key; });
    if (found == entries_.end()) return std::nullopt;
    return found->place;
}

void DeckPlaces::remember(const fs::path& package, const DeckPlace& place) {
    const std::string key = keyFor(package);
    auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& e) { return e.key == key; });
    if (found != entries_.end() && found == entries_.begin() && found->place == place) return;
    if (found != entries_.end()) entries_.erase(found);
    entries_.insert(entries_.begin(), Entry{key, place});
    if (entries_.size() > capacity) entries_.resize(capacity);
    changed_ = true;
}

Status DeckPlaces::save() {
    if (!changed_) return Done{};
    json decks = json::array();
    for (const auto& entry : entries_) {
        json item = {{"package", entry.key}};
        if (entry.place.slideId) item["slide"] = entry.place.slideId->string();
        if (entry.place.width > 0 && entry.place.height > 0) {
            item["width"] = entry.place.width;
            item["height"] = entry.place.height;
        }
        item["maximized"] = entry.place.maximized;
        if (!entry.place.presentOn.empty()) item["presentOn"] = entry.place.presentOn;
        decks.push_back(std::move(item));
    }
    json root = {{"version", formatVersion}, {"decks", std::move(decks)}};
    std::error_code ec;
    fs::create_directories(file_.parent_path(), ec);
    if (ec) return writeError(file_.parent_path(), ec.value());
    // Paths that are not UTF-8 are written with replacement characters; such a
    // deck is simply not found again.
    Status written = replaceFileAtomically(file_, root.dump(1, '\t', false, json::error_handler_t::replace) + "\n");
    if (written) changed_ = false;
    return written;
}

std::vector<fs::path> DeckPlaces::packages() const {
    std::vector<fs::path> paths;
    paths.reserve(entries_.size());
    for (const auto& entry : entries_) paths.emplace_back(entry.key);
    return paths;
}

}  // namespace lectern
