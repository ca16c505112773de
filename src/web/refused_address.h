#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lectern {

// Why a page may not load an address, if it may not: live views, pages
// loaded ahead and the check's probes show http and https pages only, and
// never a port that browsers keep for other services (the engine refuses
// those without a word, leaving a blank page). The reason is a short line
// for the web card and the check.
std::optional<std::string> refusalReason(std::string_view url);

}  // namespace lectern
