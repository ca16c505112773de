// The deck window's browser profiles: the Browser Profiles window's
// requests become deck edits and profile-store operations.

#include <utility>

#include "editor/platform/deck_window.h"
#include "web/browser_profile_edits.h"
#include "web/platform/browser_profiles_window.h"
#include "web/platform/web_services.h"

namespace lectern {

void DeckWindow::showBrowserProfiles() {
    auto& stores = WebServices::shared().profileStores(preferences_);
    if (!profilesWindow_) {
        BrowserProfilesWindow::Requests requests;
        requests.add = [this] {
            editor_->edit("Add Profile", [](Deck deck) {
                BrowserProfileEdits::add(deck);
                return deck;
            });
        };
        requests.rename = [this](const Uuid& id, const std::string& name) {
            editor_->edit("Rename Profile", [&](Deck deck) {
                BrowserProfileEdits::rename(deck, id, name);
                return deck;
            });
        };
        requests.clearSession = [this](const Uuid& id) {
            WebServices::shared().profileStores(preferences_).clearProfileSession(id);
        };
        requests.remove = [this](const Uuid& id) {
            // The deck lets go of the profile first (its slides move to the
            // shared session and this window stops listing it), then the
            // store goes unless another open deck still uses it.
            bool removed = editor_->edit("Delete Profile", [&](Deck deck) {
                BrowserProfileEdits::remove(deck, id);
                return deck;
            });
            if (removed) WebServices::shared().profileStores(preferences_).deleteProfileStore(id, windowId());
        };
        requests.clearSharedSession = [this] { activate_action("clear-shared-web-session"); };
        requests.useProfile = [this](std::size_t index, std::optional<Uuid> profile) {
            if (index >= deck().slides.size()) return;
            editor_->edit("Change Profile", [&](Deck deck) {
                deck.slides[index].browserProfileId = profile;
                return deck;
            });
        };
        profilesWindow_ = std::make_unique<BrowserProfilesWindow>(std::move(requests));
        clearedConnection_ = stores.recentlyClearedChanged().connect([this](const std::optional<Uuid>&) {
            refreshBrowserProfiles();
        });
    }
    profilesWindow_->show(*this, deck(), stores.recentlyClearedProfileId());
}

void DeckWindow::refreshBrowserProfiles() {
    if (!profilesWindow_) return;
    profilesWindow_->update(deck(), WebServices::shared().profileStores(preferences_).recentlyClearedProfileId());
}

}  // namespace lectern
