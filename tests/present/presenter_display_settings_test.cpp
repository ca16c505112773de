#include "present/presenter_display_settings.h"

#include <gtest/gtest.h>

#include "support/temp_dir.h"

namespace lectern {

using Settings = PresenterDisplaySettings;

// Stepping and stored values, hand-edited or damaged, never leave the
// notes unreadable or the window off any screen.
TEST(PresenterDisplaySettings, NotesAndWindowSizesStayInRange) {
    testing::TempDir folder;
    PreferencesStore preferences(folder / "preferences.json");
    Settings settings(preferences);
    for (int i = 0; i < 100; ++i) settings.stepNotesPoints(1);
    EXPECT_EQ(settings.notesPoints(), Settings::maxNotesPoints);
    for (int i = 0; i < 100; ++i) settings.stepNotesPoints(-1);
    EXPECT_EQ(settings.notesPoints(), Settings::minNotesPoints);
    EXPECT_EQ(settings.stepNotesPoints(0), Settings::defaultNotesPoints);
    settings.setWindowSize({1200, 800});
    settings.setWindowSize({0, 0});  // a window never laid out changes nothing
    EXPECT_EQ(settings.windowSize(), (Settings::Size{1200, 800}));

    (void)preferences.setValue(Settings::notesSizeKey, 1000);
    (void)preferences.setValue(Settings::windowSizeKey, {{"width", 10}, {"height", 1e12}});
    EXPECT_EQ(settings.notesPoints(), Settings::maxNotesPoints);
    EXPECT_EQ(settings.windowSize(), std::nullopt) << "a height past any screen is not a size";
    (void)preferences.setValue(Settings::windowSizeKey, {{"width", 10}, {"height", 99999}});
    EXPECT_EQ(settings.windowSize(), (Settings::Size{Settings::minWidth, Settings::maxSide}));
    (void)preferences.setValue(Settings::notesSizeKey, "huge");
    (void)preferences.setValue(Settings::windowSizeKey, nlohmann::json::array({800, 600}));
    EXPECT_EQ(settings.notesPoints(), Settings::defaultNotesPoints);
    EXPECT_EQ(settings.windowSize(), std::nullopt);
}

}  // namespace lectern
