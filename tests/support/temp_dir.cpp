#include "support/temp_dir.h"

#include <stdlib.h>

#include <string>
#include <system_error>

namespace lectern::testing {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "lectern-test-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw std::system_error(errno, std::generic_category(), "mkdtemp");
    path_ = pattern;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace lectern::testing
