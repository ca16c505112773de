#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace lectern {

// The headless companion's commands. Writes results to `out`, one-line errors
// to `err`, and returns the exit status: 0 on success, 2 on an error.
int runCli(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

}  // namespace lectern
