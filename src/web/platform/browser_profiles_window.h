#pragma once

#include <adwaita.h>
#include <gtkmm.h>

#include <functional>
#include <optional>
#include <vector>

#include "base/platform/gobject_ref.h"
#include "model/deck.h"

namespace lectern {

// The deck's browser profiles: add, rename, sign out of ("Clear session
// (log out)") and delete them, the shared session's clear, and which
// profile each web slide signs in with. Every change goes to the owner as a
// request; the owner edits the deck and calls show() again.
class BrowserProfilesWindow {
public:
    struct Requests {
        std::function<void()> add;
        std::function<void(const Uuid&, const std::string&)> rename;
        std::function<void(const Uuid&)> clearSession;
        std::function<void(const Uuid&)> remove;  // confirmed already
        std::function<void()> clearSharedSession;
        std::function<void(std::size_t slideIndex, std::optional<Uuid>)> useProfile;
    };

    explicit BrowserProfilesWindow(Requests requests) : requests_(std::move(requests)) {}
    ~BrowserProfilesWindow();

    // Shows the window over `parent` with the deck as it is now; called
    // again after every change. Closing it only hides it. `recentlyCleared` is the profile whose
    // session was just cleared, shown as signed out for a moment.
    void show(Gtk::Window& parent, const Deck& deck, const std::optional<Uuid>& recentlyCleared);
    // The same while it is shown, on the next main-loop turn (a row's own
    // handler may be what changed the deck); nothing while it is hidden.
    void update(const Deck& deck, const std::optional<Uuid>& recentlyCleared);
    void close();
    AdwPreferencesWindow* window() const { return window_.get(); }
    // The confirmation of a deletion while it is asked.
    AdwMessageDialog* confirmation() const { return confirmation_.get(); }

private:
    void rebuild(const Deck& deck, const std::optional<Uuid>& recentlyCleared);
    void confirmDeletion(const BrowserProfile& profile);

    Requests requests_;
    GObjectRef<AdwPreferencesWindow> window_;
    GObjectRef<AdwPreferencesPage> page_;
    GObjectRef<AdwMessageDialog> confirmation_;
    std::vector<SignalConnection> connections_;
    // A rebuild waiting for the next turn, with what it will show.
    guint pendingRebuild_ = 0;
    Deck pendingDeck_;
    std::optional<Uuid> pendingCleared_;
};

}  // namespace lectern
