#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>
#include <vector>

#include "base/result.h"

namespace lectern {

// The contents of a regular file of at most `sizeLimit` bytes. Fails with
// kind fileReadNoSuchFile when the path is missing, is not a regular file (a
// symbolic link is not followed; a pipe or a device is refused at once, never
// waited on) or cannot be read, and with kind fileTooLarge ("<name> is larger
// than <N> MiB") when it holds more than `sizeLimit` bytes, before anything is
// allocated, so a huge or sparse file costs no memory.
Result<std::vector<std::uint8_t>> readRegularFile(const std::filesystem::path& path, std::uint64_t sizeLimit);

// Copies a regular file, opened as readRegularFile opens it, to a new file
// (it must not exist) in chunks, flushing it to the disk. Any size.
Status copyRegularFileDurably(const std::filesystem::path& from, const std::filesystem::path& to);

// Creates a new file (it must not exist), writes the bytes and flushes them
// to the disk before returning.
Status writeNewFileDurably(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);
Status writeNewFileDurably(const std::filesystem::path& path, std::string_view bytes);

// Replaces a file atomically: a temporary file beside it is written and
// flushed, then renamed over it. A crash leaves the old file or the new one.
// The folder must exist: nothing is created on the way. `mode` is the new
// file's permissions from the start (0600: readable by the user only).
Status replaceFileAtomically(const std::filesystem::path& path, std::string_view bytes, unsigned mode = 0644);

// Flushes a directory's entries (new names, renames) to the disk.
Status syncDirectory(const std::filesystem::path& path);

// "Could not write “name”: <reason>." from errno.
Error writeError(const std::filesystem::path& path, int error);

}  // namespace lectern
