#pragma once

#include <adwaita.h>
#include <gtkmm.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <utility>
#include <string>
#include <vector>

#include "base/platform/gobject_ref.h"
#include "editor/recovery_store.h"

namespace lectern {

// A deck the recent-files list remembers, as the start window shows it.
struct RecentDeck {
    std::filesystem::path package;
    std::int64_t modifiedUnix = 0;

    friend bool operator==(const RecentDeck&, const RecentDeck&) = default;
};

// The window shown while no deck is open: new, open and the example deck;
// the copies of decks that a crash left unsaved, to recover or discard; the
// decks opened lately; and the place where a deck that did not open says why.
// Its buttons and rows fire application actions (app.new-deck, app.open,
// app.open-example, app.open-recent, app.recover, app.discard-recovery), so
// the window decides nothing itself. Its lists are read again whenever it
// comes on screen and when the recent-files list changes. Deck folders
// dragged onto it are handed to signal_decks_dropped(), for the
// application to open as Open… does.
class StartWindow : public Gtk::ApplicationWindow {
public:
    using RecoveriesSource = std::function<std::vector<RecoveryEntry>()>;

    explicit StartWindow(RecoveriesSource recoveries);
    ~StartWindow() override;

    void showToast(const std::string& message);
    // The decks (package folders) dropped onto the window.
    sigc::signal<void(const std::vector<std::filesystem::path>&)>& signal_decks_dropped() { return decksDropped_; }
    // Reads the recovered and recent decks again.
    void refresh();

    // Decks from the recent-files list: local .lectern folders that exist,
    // newest first, at most `limit`.
    static std::vector<RecentDeck> recentDecks(std::size_t limit = 10);

private:
    GtkWidget* recoveredGroup(const std::vector<RecoveryEntry>& entries);
    GtkWidget* recentGroup(const std::vector<RecentDeck>& decks);

    RecoveriesSource recoveries_;
    GObjectRef<AdwToastOverlay> toasts_;
    Gtk::Box* lists_ = nullptr;
    // What the lists show now, so that a refresh that finds the same leaves
    // the rows (and the pointer's and keyboard's place on them) alone.
    std::optional<std::pair<std::vector<RecoveryEntry>, std::vector<RecentDeck>>> shown_;
    sigc::connection recentChanged_;
    sigc::signal<void(const std::vector<std::filesystem::path>&)> decksDropped_;
};

// The application's primary menu, shared by the start window.
Glib::RefPtr<Gio::Menu> startMenu();

// "~/Talks" for a folder inside the home folder, the path itself otherwise.
std::string displayFolder(const std::filesystem::path& folder);

}  // namespace lectern
