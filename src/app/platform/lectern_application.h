#pragma once

#include <gtkmm.h>

#include <filesystem>
#include <memory>
#include <optional>

#include "editor/recovery_store.h"
#include "app/about_statements.h"
#include "app/app_updater.h"
#include "model/deck.h"
#include "model/preferences_store.h"
#include "base/result.h"
#include "base/glib_scheduler.h"

namespace lectern {

class DeckWindow;
class DemoSiteLauncher;
class LecternSettings;
class StartWindow;
class WindowKeeper;

// The application: one window per open deck, each with its own
// presentation state. Started with deck folders it opens them; otherwise it
// offers the Open dialog over a start window.
class LecternApplication : public Gtk::Application {
public:
    static constexpr const char* applicationId = "com.corvane.Lectern";

    // `preferences` null: the per-user store. Tests pass NON_UNIQUE so that
    // they never meet a running instance.
    static Glib::RefPtr<LecternApplication> create(Gio::Application::Flags flags = Gio::Application::Flags::NONE,
                                                   PreferencesStore* preferences = nullptr);
    ~LecternApplication() override;

    // Opens the deck folder in a window of its own, or brings its window
    // forward when it is open already. A deck that does not open leaves the
    // folder untouched and says why in a toast; the result is then null.
    DeckWindow* openDeck(const std::filesystem::path& package);
    // A window for a deck in memory (tests and benchmarks).
    // `recovered`: the deck is a recovery copy, with changes the package
    // (if any) does not have yet.
    DeckWindow* openDeck(Deck deck, std::optional<std::filesystem::path> package, bool recovered = false);
    // A window on a new draft deck.
    DeckWindow* newDeck();
    // Opens what a crash left of the deck with this id.
    DeckWindow* recover(const std::string& deckId);
    void showOpenDialog();
    // Opens the user's own copy of the example deck, made from the one that
    // comes with Lectern the first time, so that the original is never
    // written and the user's changes to the copy stay.
    DeckWindow* openExampleDeck();

    // What a toast says when a deck does not open: short enough to read at a
    // glance, "Couldn’t open “Talk.lectern”: there is no such deck".
    static std::string openErrorMessage(const std::filesystem::path& package, const Error& error);

    GLibScheduler& scheduler() { return scheduler_; }
    PreferencesStore& preferences() { return *preferences_; }
    // Copies of unsaved decks ($XDG_STATE_HOME/lectern/recovery/); tests
    // put one of their own in its place.
    RecoveryStore& recoveryStore() { return recoveryStore_; }
    // The update checker: present in every run, without checks in a build
    // that has no update feed.
    AppUpdater& updater() { return *updater_; }
    // The settings window, made on first use and kept for the session.
    LecternSettings& settings();
    void showSettings(std::optional<SettingsArea> area = {});

protected:
    explicit LecternApplication(Gio::Application::Flags flags, PreferencesStore* preferences);
    void on_startup() override;
    void on_activate() override;
    void on_shutdown() override;
    void on_open(const type_vec_files& files, const Glib::ustring& hint) override;

private:
    void showError(const std::string& message);
    StartWindow& startWindow();
    void showAbout();
    // Decks dragged onto a window open as if chosen with Open….
    void openDropped(const std::vector<std::filesystem::path>& decks);
    void startUpdater();
    void updateFound(const UpdateResult& result);

    GLibScheduler scheduler_;
    PreferencesStore* preferences_;
    StartWindow* startWindow_ = nullptr;
    Glib::RefPtr<Gtk::FileChooserNative> openDialog_;
    std::unique_ptr<WindowKeeper> windowKeeper_;
    RecoveryStore recoveryStore_{RecoveryStore::defaultRoot()};
    std::unique_ptr<AppUpdater> updater_;
    std::unique_ptr<DemoSiteLauncher> demoSite_;
    std::unique_ptr<LecternSettings> settings_;
    Signal<bool>::Connection updaterCanCheck_;
    Signal<const UpdateResult&>::Connection updaterFinished_;
    // The check under way was asked for: its result is shown in the settings
    // window, not announced.
    bool checkAsked_ = false;
};

}  // namespace lectern
