// The settings window under a real display: its areas in order, the
// statements this build makes, and an update check against a local feed.

#include <gtest/gtest.h>

#include <adwaita.h>

#include "app/platform/lectern_application.h"
#include "app/platform/lectern_settings.h"
#include "app/platform/soup_feed_fetcher.h"
#include "gui_harness.h"
#include "support/platform/local_server.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

using testing::app;
using testing::pumpUntil;
using testing::showsText;

Gtk::Window& wrapped(GtkWindow* window) { return *Glib::wrap(window); }

std::vector<std::string> pageTitles(GtkWindow* window) {
    std::vector<std::string> titles;
    for (GtkWidget* page : testing::findWidgets(GTK_WIDGET(window), [](GtkWidget* widget) {
             return ADW_IS_PREFERENCES_PAGE(widget);
         })) {
        std::string title = adw_preferences_page_get_title(ADW_PREFERENCES_PAGE(page));
        if (!title.empty()) titles.push_back(title);  // the window's own search results have none
    }
    return titles;
}

TEST(SettingsWindow, ShowsItsAreasAndWhatThisBuildDoes) {
    if (!testing::haveDisplay()) GTEST_SKIP() << "no display";
    // A build without an update feed: no checks, and it says so.
    ASSERT_FALSE(app().updater().hasFeed());
    EXPECT_FALSE(app().lookup_action("check-for-updates")->get_enabled());

    app().activate_action("preferences");
    GtkWindow* window = app().settings().window();
    ASSERT_TRUE(pumpUntil([&] { return gtk_widget_get_mapped(GTK_WIDGET(window)); }));
    EXPECT_EQ(pageTitles(window), (std::vector<std::string>{"General", "Privacy", "Disclaimer", "About"}));
    EXPECT_EQ(app().settings().selectedArea(), SettingsArea::general);

    auto& shown = wrapped(window);
    EXPECT_TRUE(showsText(shown, "No update checks"));
    app().showSettings(SettingsArea::privacy);
    testing::pumpFor(0.3);
    for (const auto& statement : privacyStatements("")) {
        EXPECT_TRUE(showsText(shown, statement.title));
        EXPECT_TRUE(showsText(shown, statement.detail));
    }

    app().showSettings(SettingsArea::about);
    EXPECT_EQ(app().settings().selectedArea(), SettingsArea::about);
    testing::screenshot("settings-about");
    gtk_window_close(window);
    ASSERT_TRUE(pumpUntil([&] { return !gtk_widget_get_visible(GTK_WIDGET(window)); }));
    // Opened again, it is where it was left.
    app().showSettings();
    EXPECT_EQ(app().settings().selectedArea(), SettingsArea::about);
    gtk_window_close(window);
}

TEST(SettingsWindow, CheckNowShowsWhatALocalFeedOffers) {
    if (!testing::haveDisplay()) GTEST_SKIP() << "no display";
    lectern::testing::LocalServer feed;
    feed.route("/appcast.xml", [&](const auto&) {
        lectern::testing::LocalServer::Answer answer;
        answer.contentType = "application/rss+xml";
        answer.delayMs = 300;  // long enough to see the check under way
        answer.body = R"(<?xml version="1.0"?>
<rss version="2.0" xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle"><channel><title>Lectern</title>
<item><title>Lectern 9.1</title><link>)" + feed.url("/download") + R"(</link>
<enclosure url=")" + feed.url("/lectern-9.1.deb") + R"(" sparkle:version="9.1" length="1" type="application/octet-stream"/></item>
</channel></rss>)";
        return answer;
    });
    testing::TempDir home;
    PreferencesStore preferences(home.path() / "preferences.json");
    AppUpdater updater(feed.url("/appcast.xml"), "0.1.0", preferences, app().scheduler(),
                       std::make_unique<SoupFeedFetcher>());
    LecternSettings settings(&updater);
    settings.present(nullptr, SettingsArea::general);
    auto& shown = wrapped(settings.window());
    ASSERT_TRUE(pumpUntil([&] { return gtk_widget_get_mapped(GTK_WIDGET(settings.window())); }));
    testing::pumpFor(0.3);  // laid out, so that the click lands on the button
    EXPECT_TRUE(showsText(shown, "Not yet"));
    EXPECT_FALSE(showsText(shown, "No update checks"));

    auto checkNow = testing::named(shown, "Check Now");
    ASSERT_EQ(checkNow.size(), 1u);
    testing::clickMiddle(*checkNow.front());
    ASSERT_TRUE(pumpUntil([&] { return !updater.canCheckForUpdates(); }));
    EXPECT_FALSE(checkNow.front()->get_sensitive());  // no second check while one runs
    ASSERT_TRUE(pumpUntil([&] { return updater.canCheckForUpdates(); }, 10));
    EXPECT_TRUE(checkNow.front()->get_sensitive());
    EXPECT_TRUE(showsText(shown, "Lectern 9.1 is available."));
    EXPECT_FALSE(showsText(shown, "Not yet"));
    auto links = testing::findWidgets(GTK_WIDGET(settings.window()), [](GtkWidget* widget) {
        return GTK_IS_LINK_BUTTON(widget) && gtk_widget_get_visible(widget);
    });
    ASSERT_EQ(links.size(), 1u);
    EXPECT_EQ(std::string(gtk_link_button_get_uri(GTK_LINK_BUTTON(links.front()))), feed.url("/download"));
    // The privacy statement names the host that is asked.
    settings.present(nullptr, SettingsArea::privacy);
    testing::pumpFor(0.3);
    EXPECT_TRUE(showsText(shown, "Asks 127.0.0.1 for a new version, which sees your IP address. Nothing about you or "
                                 "your decks is sent. You can turn it off in Preferences."));
}

}  // namespace
}  // namespace lectern
