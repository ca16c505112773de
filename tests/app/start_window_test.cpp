// The start window under a real display: what it lists, and what its
// buttons and rows do when clicked.

#include <gtest/gtest.h>

#include <adwaita.h>

#include <map>

#include "app/platform/start_window.h"
#include "editor/platform/deck_window.h"
#include "gui_harness.h"
#include "model/deck_package.h"
#include "support/deck_fixtures.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

namespace fs = std::filesystem;
using testing::app;
using testing::click;
using testing::findWidgets;
using testing::pumpUntil;
using testing::screenshot;

// The start window as the application makes it, listing the application's
// recovery copies.
StartWindow& showStartWindow() {
    auto* window = Gtk::make_managed<StartWindow>([] { return app().recoveryStore().list(); });
    app().add_window(*window);
    window->present();
    EXPECT_TRUE(pumpUntil([&] { return window->get_mapped(); }));
    testing::pumpFor(0.3);  // laid out, so that clicks land where its widgets are
    return *window;
}

GtkWidget* buttonLabelled(Gtk::Window& window, const std::string& label, GtkWidget* within = nullptr) {
    auto found = findWidgets(within ? within : GTK_WIDGET(window.gobj()), [&](GtkWidget* widget) {
        return GTK_IS_BUTTON(widget) && gtk_button_get_label(GTK_BUTTON(widget)) &&
               label == gtk_button_get_label(GTK_BUTTON(widget));
    });
    return found.empty() ? nullptr : found.front();
}

GtkWidget* rowTitled(Gtk::Window& window, const std::string& title) {
    auto found = findWidgets(GTK_WIDGET(window.gobj()), [&](GtkWidget* widget) {
        return ADW_IS_ACTION_ROW(widget) && title == adw_preferences_row_get_title(ADW_PREFERENCES_ROW(widget));
    });
    return found.empty() ? nullptr : found.front();
}

// Clicks a widget, first scrolled into view by taking the focus.
void clickCentre(GtkWidget* widget) {
    gtk_widget_grab_focus(widget);
    testing::pumpFor(0.3);
    Gtk::Widget& wrapped = *Glib::wrap(widget);
    click(wrapped, wrapped.get_width() / 2.0, wrapped.get_height() / 2.0);
}

DeckWindow* deckWindowFor(const fs::path& package) {
    for (auto* window : app().get_windows()) {
        auto* deckWindow = dynamic_cast<DeckWindow*>(window);
        if (deckWindow && deckWindow->package() && fs::equivalent(*deckWindow->package(), package)) return deckWindow;
    }
    return nullptr;
}

// Every file under a folder with its size and modification time.
std::map<std::string, std::pair<std::uintmax_t, fs::file_time_type>> snapshot(const fs::path& folder) {
    std::map<std::string, std::pair<std::uintmax_t, fs::file_time_type>> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        auto size = entry.is_regular_file() ? entry.file_size() : 0;
        files[entry.path().lexically_relative(folder).string()] = {size, entry.last_write_time()};
    }
    return files;
}

using StartWindowTest = testing::WindowTest;

TEST_F(StartWindowTest, ListsRecoveredAndRecentDecksAndActsOnThem) {
    testing::TempDir dir;
    // The application's copies go to a folder of this test's, until it ends.
    struct Restore {
        RecoveryStore before = app().recoveryStore();
        ~Restore() { app().recoveryStore() = before; }
    } restore;
    app().recoveryStore() = RecoveryStore(dir / "recovery");
    Deck crashed;
    crashed.title = "Crashed Talk";
    ASSERT_TRUE(app().recoveryStore().write(crashed, dir / "Crashed.lectern"));

    const fs::path recent = dir / "Recent Talk.lectern";
    Deck recentDeck;
    recentDeck.slides.push_back(Slide::make(SlideLayout::regular));
    ASSERT_TRUE(DeckPackage::write(recentDeck, recent, std::nullopt));
    testing::writeText(dir / "notes.txt", "not a deck");
    for (const auto& path : {recent, dir / "notes.txt"}) {
        Gtk::RecentManager::Data data;
        data.mime_type = fs::is_directory(path) ? "inode/directory" : "text/plain";
        data.app_name = "Lectern";
        data.app_exec = "lectern %u";
        data.is_private = false;
        Gtk::RecentManager::get_default()->add_item(Glib::filename_to_uri(path.string()), data);
    }

    StartWindow& window = showStartWindow();
    // The recent-files list tells of new items a moment later; the window follows it.
    ASSERT_TRUE(pumpUntil([&] { return rowTitled(window, "Recent Talk") != nullptr; }));
    EXPECT_EQ(rowTitled(window, "notes.txt"), nullptr);
    GtkWidget* recovered = rowTitled(window, "Crashed Talk");
    ASSERT_NE(recovered, nullptr);
    ASSERT_NE(buttonLabelled(window, "Recover", recovered), nullptr);
    GtkWidget* discard = buttonLabelled(window, "Discard", recovered);
    ASSERT_NE(discard, nullptr);
    screenshot("start-01-recovered-and-recent");

    clickCentre(discard);
    ASSERT_TRUE(pumpUntil([&] { return rowTitled(window, "Crashed Talk") == nullptr; }));
    EXPECT_TRUE(app().recoveryStore().list().empty());

    clickCentre(rowTitled(window, "Recent Talk"));
    ASSERT_TRUE(pumpUntil([&] { return deckWindowFor(recent) != nullptr; }));
}

TEST_F(StartWindowTest, TheExampleDeckOpensAsTheUsersOwnCopy) {
    const fs::path source = testing::examplesDir() / "Welcome.lectern";
    const fs::path copy = fs::path(g_get_user_data_dir()) / "lectern" / "Welcome.lectern";
    fs::remove_all(copy);
    const auto before = snapshot(source);

    StartWindow& window = showStartWindow();
    clickCentre(buttonLabelled(window, "Open the _Example Deck"));
    ASSERT_TRUE(pumpUntil([&] { return deckWindowFor(copy) != nullptr; }));
    EXPECT_EQ(testing::readText(copy / "deck.json"), testing::readText(source / "deck.json"));
    // The demo site that its web slide shows runs on this computer now.
    EXPECT_TRUE(pumpUntil([] {
        GSocketClient* client = g_socket_client_new();
        GSocketConnection* connection = g_socket_client_connect_to_host(client, "127.0.0.1", 8765, nullptr, nullptr);
        g_object_unref(client);
        if (connection) g_object_unref(connection);
        return connection != nullptr;
    }));
    testing::closeAllWindows();
    EXPECT_EQ(snapshot(source), before);

    // A copy that is there already is the user's: opened as it is.
    testing::writeText(copy / "mine.txt", "kept");
    app().activate_action("open-example");
    ASSERT_TRUE(pumpUntil([&] { return deckWindowFor(copy) != nullptr; }));
    EXPECT_TRUE(fs::exists(copy / "mine.txt"));
    EXPECT_FALSE(fs::exists(source / "mine.txt"));
}

}  // namespace
}  // namespace lectern
