#include "model/package_location.h"

#include "model/deck_package.h"

namespace lectern {

namespace fs = std::filesystem;

std::optional<fs::path> deckPackageFor(const fs::path& given) {
    if (given.empty()) return std::nullopt;
    // "Talk.lectern/" names the same folder as "Talk.lectern".
    fs::path path = given.lexically_normal();
    if (!path.has_filename() && path.has_parent_path()) path = path.parent_path();
    std::error_code ec;
    if (fs::is_directory(path, ec)) return path;
    if (path.filename() == DeckPackage::deckMember && fs::is_regular_file(path, ec)) {
        fs::path folder = path.parent_path();
        if (folder.empty()) folder = ".";
        if (fs::is_directory(folder, ec)) return folder;
    }
    return std::nullopt;
}

}  // namespace lectern
