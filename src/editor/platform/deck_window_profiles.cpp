// The deck window's browser profiles and its saving: the Browser Profiles
// window's requests become deck edits and profile-store operations, and
// edits are written to the deck's package a moment after they are made.

#include <utility>

#include "web/platform/browser_profiles_window.h"
#include "editor/platform/deck_window.h"
#include "slides/deck_previews.h"
#include "model/deck_package.h"
#include "web/browser_profile_edits.h"
#include "web/platform/web_services.h"

namespace lectern {

namespace {

// Edits that come together (typing a name, choosing profiles) save once.
constexpr double saveDelaySeconds = 1.0;

}  // namespace

void DeckWindow::editDeck(Deck deck) {
    setDeck(std::move(deck));
    if (!package_) return;
    unsaved_ = true;
    warnedOfFailedSave_ = false;
    if (saveTimer_) scheduler_.cancel(saveTimer_);
    saveTimer_ = scheduler_.after(saveDelaySeconds, [this] {
        saveTimer_ = 0;
        saveNow();
    });
}

bool DeckWindow::saveNow() {
    if (saveTimer_) scheduler_.cancel(std::exchange(saveTimer_, 0));
    if (!unsaved_) return true;
    Status saved = writePackage();
    if (saved) return true;
    // The old package stays whole when a save fails; the change stays here,
    // and the next save or closing tries again.
    showToast("Couldn’t save the deck: " + saved.error().message);
    return false;
}

Status DeckWindow::writePackage() {
    Status saved = DeckPackage::write(deck_, *package_, *package_, makeDeckPreviews);
    if (saved) unsaved_ = false;
    return saved;
}

bool DeckWindow::on_close_request() {
    if (saveNow() || warnedOfFailedSave_) return Gtk::ApplicationWindow::on_close_request();
    // The first close after a failed save stays open, so the change is not
    // lost without a word; closing again lets it go.
    warnedOfFailedSave_ = true;
    showToast("The deck could not be saved. Close again to discard the change.");
    return true;
}

void DeckWindow::showBrowserProfiles() {
    auto& stores = WebServices::shared().profileStores(preferences_);
    if (!profilesWindow_) {
        BrowserProfilesWindow::Requests requests;
        requests.add = [this] {
            Deck changed = deck_;
            BrowserProfileEdits::add(changed);
            editDeck(std::move(changed));
        };
        requests.rename = [this](const Uuid& id, const std::string& name) {
            Deck changed = deck_;
            if (BrowserProfileEdits::rename(changed, id, name)) editDeck(std::move(changed));
        };
        requests.clearSession = [this](const Uuid& id) {
            WebServices::shared().profileStores(preferences_).clearProfileSession(id);
        };
        requests.remove = [this](const Uuid& id) {
            Deck changed = deck_;
            if (!BrowserProfileEdits::remove(changed, id)) return;
            // The deck lets go of the profile first (its slides move to the
            // shared session and this window stops listing it), then the
            // store goes unless another open deck still uses it.
            editDeck(std::move(changed));
            WebServices::shared().profileStores(preferences_).deleteProfileStore(id, windowId_);
        };
        requests.clearSharedSession = [this] { activate_action("clear-shared-web-session"); };
        requests.useProfile = [this](std::size_t index, std::optional<Uuid> profile) {
            if (index >= deck_.slides.size() || deck_.slides[index].browserProfileId == profile) return;
            Deck changed = deck_;
            changed.slides[index].browserProfileId = profile;
            editDeck(std::move(changed));
        };
        profilesWindow_ = std::make_unique<BrowserProfilesWindow>(std::move(requests));
        clearedConnection_ = stores.recentlyClearedChanged().connect([this](const std::optional<Uuid>&) {
            refreshBrowserProfiles();
        });
    }
    profilesWindow_->show(*this, deck_, stores.recentlyClearedProfileId());
}

void DeckWindow::refreshBrowserProfiles() {
    if (!profilesWindow_) return;
    profilesWindow_->update(deck_, WebServices::shared().profileStores(preferences_).recentlyClearedProfileId());
}

}  // namespace lectern
