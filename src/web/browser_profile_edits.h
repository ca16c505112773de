#pragma once

#include <glib/gi18n.h>

#include <optional>
#include <string>

#include "model/browser_profile.h"
#include "model/deck.h"
#include "model/uuid.h"

namespace lectern {

// The changes the deck inspector makes to a deck's browser profiles, and the
// texts it shows for them. A profile's stored name may be empty; it is then
// shown and titled as "Untitled profile" everywhere.
namespace BrowserProfileEdits {

inline constexpr const char* untitledName = N_("Untitled profile");
inline constexpr const char* rowHelp = N_("Click to select — double-click to edit");
inline constexpr const char* deletionMessage = N_("Its saved logins and site data will be erased.");

// Appends a profile with a fresh id and an empty name; returns its id.
Uuid add(Deck& deck);
// Writes the name as typed. False when the deck has no such profile.
bool rename(Deck& deck, const Uuid& profileId, std::string name);
// Removes the profile and points every slide that used it back at the
// shared session. Returns the removed profile, or nothing when the deck has
// no such profile (the slides are left as they are then).
std::optional<BrowserProfile> remove(Deck& deck, const Uuid& profileId);

std::string displayName(const BrowserProfile& profile);
// “Delete profile “Work”?”
std::string deletionTitle(const BrowserProfile& profile);

}  // namespace BrowserProfileEdits

}  // namespace lectern
