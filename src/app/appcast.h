#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"

namespace lectern {

// The namespace of the appcast's own elements and attributes (version,
// shortVersionString, releaseNotesLink, channel).
inline constexpr const char* appcastNamespace = "http://www.andymatuschak.org/xml-namespaces/sparkle";

// One release offered by an appcast: an <item> of its RSS channel.
struct AppcastItem {
    std::string title;
    std::string version;       // compared with the running version
    std::string shortVersion;  // shown to the user; may be empty
    std::string link;          // the release's page: <link>, else the release notes
    std::string enclosureUrl;  // the file itself
    std::string channel;       // empty: the default channel everybody gets

    // The version as the user reads it.
    const std::string& displayVersion() const { return shortVersion.empty() ? version : shortVersion; }
    // Where the user goes to get it: the release's page, else the file.
    const std::string& downloadPage() const { return link.empty() ? enclosureUrl : link; }
};

// Reads an RSS 2.0 appcast. The version of an item comes from its enclosure's
// version attribute or a version element (the short version string stands in
// when there is no version). A document that is not XML, has no channel, or
// has an item without any version is an Error with a short reason.
Result<std::vector<AppcastItem>> parseAppcast(std::string_view xml);

// Orders two version strings: negative when `a` is older than `b`, 0 when
// they are the same version, positive when `a` is newer. Runs of digits
// compare as numbers ("0.10" > "0.9"), missing numbers count as zero
// ("1.0" == "1.0.0"), text after a number marks a pre-release of it
// ("1.0b1" < "1.0" < "1.0.1"), and texts compare case-insensitively
// ("1.0a" < "1.0b" < "1.0rc1"). Dots and other punctuation only separate.
int compareVersions(std::string_view a, std::string_view b);

}  // namespace lectern
