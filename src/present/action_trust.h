#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "model/deck.h"
#include "model/preferences_store.h"

namespace lectern {

// Which demo actions may run on this computer. Actions send requests with
// the sign-ins of the deck's browser profiles and run scripts in its pages,
// so an action from a deck made elsewhere waits for the presenter's consent.
// Allowed actions are remembered by a fingerprint of what they do and where.
class ActionTrust {
public:
    static constexpr const char* preferencesKey = "trustedActionFingerprints.v1";

    // An action that waits for consent, as the review sheet lists it.
    struct Request {
        std::string id;  // the fingerprint
        std::string summary;
        friend bool operator==(const Request&, const Request&) = default;
    };

    // SHA-256 (64 lower-case hex digits) of the action with its slide's page
    // and profile, as JSON with sorted keys: editing the action, moving it,
    // or pointing its slide elsewhere changes it.
    static std::optional<std::string> fingerprint(const SlideAction& action, const Slide& slide);

    static std::set<std::string> trustedFingerprints(const PreferencesStore& store);
    // Appends the fingerprints not yet stored, keeping the stored order.
    static void trust(const std::vector<std::string>& fingerprints, PreferencesStore& store);
    // A copy of the slide keeping only its trusted actions.
    static Slide trustedSlide(const Slide& slide, const PreferencesStore& store);
    // The deck's untrusted actions, in slide order and action order.
    static std::vector<Request> requests(const Deck& deck, const PreferencesStore& store);
    // "“Reset” sends POST to api.example.com with the profile's cookies (runs by itself)"
    static std::string summary(const SlideAction& action, const Slide& slide);
};

// Per deck window: what the deck held when the window opened was made
// elsewhere and waits for consent; what the presenter creates or edits while
// the window is open is trusted at once.
//
// An action is told apart by its own content (its JSON without ids). Content
// the deck held at opening stays received content for the window's life, so
// pointing its slide at another page or profile, moving it to another slide,
// duplicating it, or bringing it back by undo never trusts it: a new
// fingerprint of received content is trusted only while every fingerprint
// that content has had in this window is trusted (an allowed action stays
// allowed when its slide is re-pointed). Any other content is the
// presenter's own work: an added action, or an edit of the action itself.
class MadeElsewhereTracker {
public:
    explicit MadeElsewhereTracker(const Deck& opened);
    // Call on every change of the deck: trusts the untrusted fingerprints
    // that the rule above allows.
    void deckChanged(const Deck& deck, PreferencesStore& store);

private:
    // Received content (a digest of it) -> every fingerprint it has had.
    std::map<std::string, std::set<std::string>> received_;
};

}  // namespace lectern
