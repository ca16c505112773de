#include "app/platform/lectern_application.h"

#include <adwaita.h>
#include <glib/gi18n.h>
#include <stdlib.h>

#include "app/app_updater.h"
#include "app/platform/about_window.h"
#include "app/platform/app_style.h"
#include "app/platform/demo_site_launcher.h"
#include "app/platform/lectern_settings.h"
#include "app/platform/soup_feed_fetcher.h"
#include "base/install_layout.h"
#include "base/platform/file_chooser.h"
#include "base/translation.h"
#include "present/platform/deck_commands.h"
#include "editor/platform/deck_window.h"
#include "base/platform/gobject_ref.h"
#include "app/platform/renderer_choice.h"
#include "web/platform/web_services.h"
#include "app/platform/start_window.h"
#include "app/platform/window_keeper.h"
#include "editor/deck_edits.h"
#include "model/deck_package.h"
#include "model/file_io.h"
#include "model/package_location.h"

namespace lectern {

namespace {

std::filesystem::path comparable(const std::filesystem::path& path) {
    std::error_code error;
    auto canonical = std::filesystem::weakly_canonical(path, error);
    return error ? path.lexically_normal() : canonical;
}

// Adds an opened deck to the desktop's recent files, where the start window
// and file choosers find it. Described in full, so that it is listed at once
// rather than after its type is looked up, and under Lectern's own name
// whatever the program was started as.
void rememberRecent(const std::filesystem::path& package) {
    char* uri = g_filename_to_uri(std::filesystem::absolute(package).c_str(), nullptr, nullptr);
    if (!uri) return;
    Gtk::RecentManager::Data data;
    data.display_name = package.stem().string();
    data.mime_type = "inode/directory";
    data.app_name = "Lectern";
    data.app_exec = "lectern %u";
    data.is_private = false;
    Gtk::RecentManager::get_default()->add_item(uri, data);
    g_free(uri);
}

// The example deck that comes with Lectern: the one installed with it (in a
// build folder, a link to the source tree's), or the one LECTERN_EXAMPLE_DECK
// names.
std::filesystem::path exampleDeck() {
    const char* chosen = g_getenv("LECTERN_EXAMPLE_DECK");
    std::filesystem::path source = chosen && *chosen ? std::filesystem::path(chosen)
                                                     : lecternDataDir() / "Welcome.lectern";
    source = source.lexically_normal();
    return source.has_filename() ? source : source.parent_path();  // "Welcome.lectern/"
}

// The user's copy of the example in $XDG_DATA_HOME/lectern/, made when there
// is none yet. The copy is put together under a hidden temporary name and
// renamed into place, so that one cut short never passes for the user's.
Result<std::filesystem::path> exampleCopy(const std::filesystem::path& source) {
    namespace fs = std::filesystem;
    const fs::path copy = fs::path(g_get_user_data_dir()) / "lectern" / source.filename();
    std::error_code ec;
    if (fs::exists(fs::symlink_status(copy, ec))) return copy;  // kept as it is, with the user's changes
    if (!fs::is_directory(source, ec)) return Error{"no example deck", ErrorKind::fileReadNoSuchFile};
    fs::create_directories(copy.parent_path(), ec);
    std::string partial = (copy.parent_path() / ("." + source.filename().string() + ".copying-XXXXXX")).string();
    if (!::mkdtemp(partial.data())) return writeError(copy, errno);
    fs::copy(source, partial, fs::copy_options::recursive, ec);
    if (!ec) fs::rename(partial, copy, ec);
    if (ec) {
        std::error_code ignored;
        fs::remove_all(partial, ignored);
        return writeError(copy, ec.value());
    }
    return copy;
}

}  // namespace

Glib::RefPtr<LecternApplication> LecternApplication::create(Gio::Application::Flags flags,
                                                            PreferencesStore* preferences) {
    return Glib::make_refptr_for_instance(new LecternApplication(flags, preferences));
}

LecternApplication::LecternApplication(Gio::Application::Flags flags, PreferencesStore* preferences)
    : Gtk::Application(applicationId, flags | Gio::Application::Flags::HANDLES_OPEN),
      preferences_(preferences ? preferences : &PreferencesStore::shared()) {
    Glib::set_application_name("Lectern");
}

LecternApplication::~LecternApplication() = default;

void LecternApplication::on_startup() {
    Gtk::Application::on_startup();
    adw_init();
    bool hardwareOpenGl = chooseRenderer();
    WebServices::shared().pages().setHardwareAcceleration(hardwareOpenGl);
    // Lectern's own icon, also where it is not installed in a folder the
    // desktop searches (a build folder, an unusual prefix).
    auto icons = Gtk::IconTheme::get_for_display(Gdk::Display::get_default());
    icons->add_search_path((sharedDataDir() / "icons").string());
    Gtk::Window::set_default_icon_name(applicationId);

    auto css = Gtk::CssProvider::create();
    css->load_from_data(appStyleSheet);
    Gtk::StyleContext::add_provider_for_display(Gdk::Display::get_default(), css,
                                                GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);

    windowKeeper_ = std::make_unique<WindowKeeper>(gobj());
    add_action("open", [this] { showOpenDialog(); });
    add_action("about", [this] { showAbout(); });
    add_action("preferences", [this] { showSettings(); });
    add_action("open-example", [this] { openExampleDeck(); });
    add_action("new-deck", [this] { newDeck(); });
    add_action_with_parameter("recover", Glib::VARIANT_TYPE_STRING, [this](const Glib::VariantBase& id) {
        recover(Glib::VariantBase::cast_dynamic<Glib::Variant<Glib::ustring>>(id).get());
    });
    add_action_with_parameter("open-recent", Glib::VARIANT_TYPE_STRING, [this](const Glib::VariantBase& path) {
        openDeck(std::filesystem::path(Glib::VariantBase::cast_dynamic<Glib::Variant<std::string>>(path).get()));
    });
    add_action_with_parameter("discard-recovery", Glib::VARIANT_TYPE_STRING, [this](const Glib::VariantBase& id) {
        auto deckId = Uuid::parse(Glib::VariantBase::cast_dynamic<Glib::Variant<std::string>>(id).get());
        if (!deckId) return;
        recoveryStore_.remove(*deckId);
        for (auto* window : get_windows()) {
            if (auto* start = dynamic_cast<StartWindow*>(window)) start->refresh();
        }
    });
    add_action("quit", [this] {
        // The deck windows and the start window close; each takes its own
        // panels, sheets and dialogs down with it. Held meanwhile, as
        // closing one may destroy another.
        std::vector<GObjectRef<GtkWindow>> windows;
        for (auto* window : get_windows()) {
            if (dynamic_cast<DeckWindow*>(window) || dynamic_cast<StartWindow*>(window)) {
                windows.push_back(GObjectRef<GtkWindow>::retain(window->gobj()));
            }
        }
        for (const auto& window : windows) gtk_window_close(window.get());
    });
    // Browser profile stores that could not be removed last time: one more
    // try, once per run.
    WebServices::shared().profileStores(*preferences_).retryPendingRemovals();

    startUpdater();

    for (const auto* commands : {&fileCommands(), &editCommands(), &slideCommands(), &presentationCommands(),
                                  &applicationCommands()}) {
        for (const auto& command : *commands) {
            if (command.accelerators.empty()) continue;
            set_accels_for_action(command.action, std::vector<Glib::ustring>(command.accelerators.begin(),
                                                                             command.accelerators.end()));
        }
    }
}

void LecternApplication::startUpdater() {
    updater_ = makeAppUpdater(*preferences_, scheduler_);
    // Asked for, a check shows its progress and result in the settings'
    // General area.
    auto check = add_action("check-for-updates", [this] {
        if (!updater_->canCheckForUpdates()) return;
        checkAsked_ = true;
        showSettings(SettingsArea::general);
        updater_->checkForUpdates();
    });
    check->set_enabled(updater_->canCheckForUpdates());
    updaterCanCheck_ = updater_->canCheckForUpdatesChanged().connect([check](bool can) { check->set_enabled(can); });
    add_action("show-update", [this] {
        const auto& result = updater_->lastResult();
        if (result && !result->downloadPage.empty()) gtk_show_uri(nullptr, result->downloadPage.c_str(), GDK_CURRENT_TIME);
    });
    updaterFinished_ = updater_->finished().connect([this](const UpdateResult& result) {
        if (!std::exchange(checkAsked_, false)) updateFound(result);
    });
    // A test host never checks by itself.
    if (!g_getenv("LECTERN_TEST_HOST")) updater_->start();
}

// A new version found by an automatic check is announced once, on the
// desktop; up to date and failures are only shown in the settings.
void LecternApplication::updateFound(const UpdateResult& result) {
    if (result.outcome != UpdateResult::Outcome::available) return;
    auto notification = Gio::Notification::create(result.message);
    notification->set_body(_("Open its download page to get it. Lectern never installs anything by itself."));
    notification->set_default_action("app.show-update");
    notification->add_button(_("Download Page"), "app.show-update");
    send_notification("update-available", notification);
}

LecternSettings& LecternApplication::settings() {
    if (!settings_) settings_ = std::make_unique<LecternSettings>(updater_.get());
    return *settings_;
}

void LecternApplication::showSettings(std::optional<SettingsArea> area) {
    Gtk::Window* parent = get_active_window();
    if (parent && parent->gobj() == settings().window()) parent = nullptr;
    if (!parent) {
        for (auto* window : get_windows()) {
            if (dynamic_cast<DeckWindow*>(window) || dynamic_cast<StartWindow*>(window)) parent = window;
        }
    }
    settings().present(parent ? parent->gobj() : nullptr, area);
}

void LecternApplication::on_shutdown() {
    // Sign-ins kept in session cookies are there again at the next start.
    WebServices::shared().sessions().saveSessionCookies();
    // Hidden pages stop with the application; nothing is loaded any more.
    WebServices::shared().prefetcher().terminate();
    windowKeeper_.reset();
    settings_.reset();
    demoSite_.reset();
    Gtk::Application::on_shutdown();
}

void LecternApplication::on_activate() {
    for (auto* window : get_windows()) {
        if (dynamic_cast<DeckWindow*>(window) || dynamic_cast<StartWindow*>(window)) {
            window->present();
            return;
        }
    }
    // The start window: new, open, the example, recent decks and what a
    // crash left to recover.
    startWindow().present();
}

void LecternApplication::on_open(const type_vec_files& files, const Glib::ustring&) {
    for (const auto& file : files) {
        std::string path = file->get_path();
        if (path.empty()) {
            showError(_("Only decks on this computer can be opened."));
            continue;
        }
        // A deck's folder, or the deck.json inside it.
        openDeck(deckPackageFor(path).value_or(std::filesystem::path(path)));
    }
}

DeckWindow* LecternApplication::openDeck(const std::filesystem::path& package) {
    auto wanted = comparable(package);
    for (auto* window : get_windows()) {
        auto* deckWindow = dynamic_cast<DeckWindow*>(window);
        if (deckWindow && deckWindow->package() && comparable(*deckWindow->package()) == wanted) {
            deckWindow->present();
            return deckWindow;
        }
    }
    auto deck = DeckPackage::read(package);
    if (!deck) {
        showError(openErrorMessage(package, deck.error()));
        return nullptr;
    }
    rememberRecent(wanted);
    return openDeck(std::move(deck).value(), wanted);
}

void LecternApplication::openDropped(const std::vector<std::filesystem::path>& decks) {
    for (const auto& deck : decks) openDeck(deck);
}

DeckWindow* LecternApplication::openExampleDeck() {
    // Its web slide and demo actions need the demo site on this computer.
    if (!demoSite_) demoSite_ = std::make_unique<DemoSiteLauncher>();
    demoSite_->ensureStarted();
    const auto source = exampleDeck();
    auto copy = exampleCopy(source);
    if (!copy) {
        // A failed copy says so in its own words; a missing example as any deck would.
        showError(copy.error().kind == ErrorKind::fileWrite ? copy.error().message
                                                            : openErrorMessage(source, copy.error()));
        return nullptr;
    }
    return openDeck(*copy);
}

DeckWindow* LecternApplication::newDeck() { return openDeck(edits::newDeck(), std::nullopt); }

DeckWindow* LecternApplication::recover(const std::string& deckId) {
    for (const auto& entry : recoveryStore_.list()) {
        if (entry.deckId.string() != deckId) continue;
        auto deck = recoveryStore_.read(entry);
        if (!deck) {
            showError(formatText(_("Couldn\u2019t recover \u201c%s\u201d: %s"), entry.title.c_str(),
                                 deck.error().message.c_str()));
            return nullptr;
        }
        // A deck that is open already keeps its window; the copy stays.
        for (auto* window : get_windows()) {
            auto* deckWindow = dynamic_cast<DeckWindow*>(window);
            if (deckWindow && deckWindow->deck().id == deck->id) {
                deckWindow->present();
                return deckWindow;
            }
        }
        return openDeck(std::move(deck).value(), entry.package, true);
    }
    showError(_("There is nothing left to recover for this deck."));
    return nullptr;
}

DeckWindow* LecternApplication::openDeck(Deck deck, std::optional<std::filesystem::path> package, bool recovered) {
    // The window deletes itself when it is closed.
    auto* window = Gtk::make_managed<DeckWindow>(
        scheduler_, *preferences_, std::shared_ptr<RecoveryStore>(&recoveryStore_, [](RecoveryStore*) {}),
        std::move(deck), std::move(package), recovered);
    add_window(*window);
    window->signal_decks_dropped().connect([this](const std::vector<std::filesystem::path>& decks) { openDropped(decks); });
    window->present();
    if (startWindow_) {
        startWindow_->close();
        startWindow_ = nullptr;
    }
    return window;
}

std::string LecternApplication::openErrorMessage(const std::filesystem::path& package, const Error& error) {
    std::string name = package.filename().string();
    if (name.empty()) name = package.parent_path().filename().string();  // "Talk.lectern/"
    std::string reason;
    switch (error.kind) {
    case ErrorKind::fileReadNoSuchFile: {
        std::error_code ignored;
        reason = std::filesystem::exists(package, ignored) ? _("it has no readable deck.json") : _("there is no such deck");
        break;
    }
    case ErrorKind::fileReadCorruptFile: reason = _("it isn\u2019t a deck folder"); break;
    case ErrorKind::decoding: reason = _("its deck.json can\u2019t be read"); break;
    default: reason = error.message; break;
    }
    // TRANSLATORS: the deck's folder name, then why it could not be opened.
    return formatText(_("Couldn\u2019t open \u201c%s\u201d: %s"), name.c_str(), reason.c_str());
}

void LecternApplication::showOpenDialog() {
    if (openDialog_) {
        openDialog_->show();
        return;
    }
    Gtk::Window* parent = get_active_window();
    if (!parent) parent = &startWindow();
    openDialog_ = Gtk::FileChooserNative::create(_("Open Deck"), *parent, Gtk::FileChooser::Action::SELECT_FOLDER,
                                                 _("_Open"), _("_Cancel"));
    openDialog_->set_modal(true);
    openDialog_->signal_response().connect([this](int response) {
        auto dialog = heldPastResponse(std::exchange(openDialog_, {}));
        if (response != Gtk::ResponseType::ACCEPT) return;
        if (auto file = dialog->get_file()) {
            std::string path = file->get_path();
            if (path.empty()) {
                showError(_("Only decks on this computer can be opened."));
            } else {
                openDeck(std::filesystem::path(path));
            }
        }
    });
    openDialog_->show();
}

void LecternApplication::showError(const std::string& message) {
    if (auto* deckWindow = dynamic_cast<DeckWindow*>(get_active_window())) {
        deckWindow->showToast(message);
        return;
    }
    for (auto* window : get_windows()) {
        if (auto* deckWindow = dynamic_cast<DeckWindow*>(window)) {
            deckWindow->showToast(message);
            return;
        }
    }
    auto& start = startWindow();
    start.present();
    start.showToast(message);
}

StartWindow& LecternApplication::startWindow() {
    if (!startWindow_) {
        // Copies of decks open in a window now are that window's business.
        startWindow_ = Gtk::make_managed<StartWindow>([this] {
            auto entries = recoveryStore_.list();
            std::erase_if(entries, [this](const RecoveryEntry& entry) {
                for (auto* window : get_windows()) {
                    auto* deckWindow = dynamic_cast<DeckWindow*>(window);
                    if (deckWindow && deckWindow->deck().id == entry.deckId) return true;
                }
                return false;
            });
            return entries;
        });
        add_window(*startWindow_);
        startWindow_->signal_decks_dropped().connect(
            [this](const std::vector<std::filesystem::path>& decks) { openDropped(decks); });
        startWindow_->signal_destroy().connect([this] { startWindow_ = nullptr; });
    }
    return *startWindow_;
}

void LecternApplication::showAbout() {
    Gtk::Window* parent = get_active_window();
    showAboutWindow(parent ? parent->gobj() : nullptr);
}

}  // namespace lectern
