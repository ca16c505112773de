#pragma once

#include <filesystem>
#include <optional>

namespace lectern {

// The deck package a path given by the user stands for: a folder is itself
// (whether it holds a readable deck is for opening it to say); a file named
// deck.json stands for the folder around it; anything else (another file, a
// path that does not exist) is no deck.
std::optional<std::filesystem::path> deckPackageFor(const std::filesystem::path& given);

}  // namespace lectern
