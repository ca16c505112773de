#pragma once

#include <string>
#include <vector>

namespace lectern {

// The areas of the settings window, in the order they are shown.
enum class SettingsArea { general, privacy, disclaimer, about };
inline constexpr SettingsArea settingsAreas[] = {SettingsArea::general, SettingsArea::privacy,
                                                 SettingsArea::disclaimer, SettingsArea::about};
// "General", "Privacy", "Disclaimer", "About".
std::string settingsAreaTitle(SettingsArea area);

// One thing Lectern says about itself: what it does with the user's data,
// what it promises and what it does not.
struct AboutStatement {
    std::string title;
    std::string detail;
    bool operator==(const AboutStatement&) const = default;
};

// The privacy area's five statements, true of this build: `updateHost` is
// the host update checks ask, empty in a build that never checks.
std::vector<AboutStatement> privacyStatements(const std::string& updateHost);
// The disclaimer area's four statements.
std::vector<AboutStatement> disclaimerStatements();

// The about area's one-line description of Lectern.
std::string lecternDescription();

// "Not yet", or the day and time of the last update check in local time.
std::string lastCheckedText(long long secondsSinceEpoch, bool checked);

}  // namespace lectern
