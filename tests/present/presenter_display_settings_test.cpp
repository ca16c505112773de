#include "present/presenter_display_settings.h"

#include <gtest/gtest.h>

#include "support/temp_dir.h"

namespace lectern {

using Settings = PresenterDisplaySettings;

TEST(PresenterDisplaySettings, NotesSizeStepsWithinItsRangeAndSurvivesARestart) {
    testing::TempDir folder;
    {
        PreferencesStore preferences(folder / "preferences.json");
        Settings settings(preferences);
        EXPECT_EQ(settings.notesPoints(), Settings::defaultNotesPoints);
        EXPECT_EQ(settings.stepNotesPoints(2), Settings::defaultNotesPoints + 2 * Settings::notesStep);
        for (int i = 0; i < 100; ++i) settings.stepNotesPoints(1);
        EXPECT_EQ(settings.notesPoints(), Settings::maxNotesPoints);
        EXPECT_EQ(settings.stepNotesPoints(0), Settings::defaultNotesPoints);
        for (int i = 0; i < 100; ++i) settings.stepNotesPoints(-1);
        EXPECT_EQ(settings.notesPoints(), Settings::minNotesPoints);
        settings.setWindowSize({1200, 800});
        settings.setWindowSize({0, 0});  // a window never laid out changes nothing
    }
    PreferencesStore reopened(folder / "preferences.json");
    Settings settings(reopened);
    EXPECT_EQ(settings.notesPoints(), Settings::minNotesPoints);
    EXPECT_EQ(settings.windowSize(), (Settings::Size{1200, 800}));
}

TEST(PresenterDisplaySettings, StoredValuesOutOfRangeOrOfTheWrongKindAreTamed) {
    testing::TempDir folder;
    PreferencesStore preferences(folder / "preferences.json");
    Settings settings(preferences);
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
