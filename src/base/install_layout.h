#pragma once

#include <filesystem>

namespace lectern {

// Where the files that come with Lectern are, found from where the running
// program is, so that no path of the machine that built it is compiled in.
// Installed, the programs are in <prefix>/bin and their files in
// <prefix>/share; in a build folder, the programs are one folder below it and
// the configuration puts a share/ folder there that points into the sources.
// LECTERN_DATA_DIR in the environment names another share folder (tests).
std::filesystem::path sharedDataDir();

// <sharedDataDir>/lectern: the example deck and the demo site's files.
std::filesystem::path lecternDataDir();
// <sharedDataDir>/locale: the translations.
std::filesystem::path localeDir();

}  // namespace lectern
