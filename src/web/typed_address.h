#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"

namespace lectern {

// What a person typed into a web slide's address field, as the slide's new
// address: none for an empty field, an http or https address kept as typed,
// and an address without a scheme ("example.com/app", "localhost:8080")
// taken as https, as a browser's address bar does. Any other scheme (file,
// ftp, javascript, mailto, data...) is refused with a short message.
Result<std::optional<std::string>> typedAddress(std::string_view typed);

}  // namespace lectern
