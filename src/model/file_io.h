#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "model/result.h"

namespace lectern {

// The contents of a regular file; nullopt when the path is missing, is not a
// regular file (a symbolic link is not followed), or cannot be read.
std::optional<std::vector<std::uint8_t>> readRegularFile(const std::filesystem::path& path);

// Creates a new file (it must not exist), writes the bytes and flushes them
// to the disk before returning.
Status writeNewFileDurably(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);
Status writeNewFileDurably(const std::filesystem::path& path, std::string_view bytes);

// Replaces a file atomically: a temporary file beside it is written and
// flushed, then renamed over it. A crash leaves the old file or the new one.
Status replaceFileAtomically(const std::filesystem::path& path, std::string_view bytes);

// Flushes a directory's entries (new names, renames) to the disk.
Status syncDirectory(const std::filesystem::path& path);

// "Could not write “name”: <reason>." from errno.
Error writeError(const std::filesystem::path& path, int error);

}  // namespace lectern
