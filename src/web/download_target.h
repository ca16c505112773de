#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace lectern {

// Where files that live pages download go.

// The folder downloads go to: the user's configured downloads folder, or
// <home>/Downloads when none is configured or the configured one is the
// home folder itself (files never land loose in the home folder).
// `configured` is what the desktop's user folders say (may be null).
std::filesystem::path downloadFolder(const char* configured, const std::filesystem::path& home);

// A file name made safe from what a site suggests: the last path part only,
// without control characters, and never empty, "." or "..".
std::string safeDownloadName(const std::string& suggested);

// Makes the folder if missing and creates a new, empty file in it for the
// download, named `name` or, when that is taken, "name (1).ext",
// "name (2).ext" and so on. Creating the file claims the name, so two
// downloads never pick the same one and nothing is overwritten. None when
// the folder cannot be made or written.
std::optional<std::filesystem::path> claimDownloadFile(const std::filesystem::path& folder, const std::string& name);

}  // namespace lectern
