#include "model/app_accent_palette.h"

#include <gtest/gtest.h>

#include "support/temp_dir.h"

namespace lectern {
namespace {

using nlohmann::json;
using testing::TempDir;

TEST(AppAccentPalette, LoadingKeepsStringsOrFallsBackToDefaults) {
    TempDir dir;
    PreferencesStore store(dir / "preferences.json");
    const std::vector<std::string> defaults{"#3B5A7A", "#B91C1C", "#047857", "#A16207", "#6D28D9", "#BE185D"};
    EXPECT_EQ(AppAccentPalette(store).hexes(), defaults);

    for (json stored : {json::array({1, 2, 3}), json("#FFFFFF"), json::array(), json::object()}) {
        (void)store.setValue(AppAccentPalette::preferencesKey, stored);
        EXPECT_EQ(AppAccentPalette(store).hexes(), defaults) << stored.dump();
    }
    (void)store.setValue(AppAccentPalette::preferencesKey, json::array({1, "#111111", nullptr, "#222222"}));
    EXPECT_EQ(AppAccentPalette(store).hexes(), (std::vector<std::string>{"#111111", "#222222"}));
}

TEST(AppAccentPalette, ReplacingWritesTheWholeListAndReachesEveryWindow) {
    TempDir dir;
    PreferencesStore store(dir / "preferences.json");
    AppAccentPalette first(store);
    AppAccentPalette second(store);
    int secondChanges = 0;
    auto connection = second.changed().connect([&] { ++secondChanges; });

    first.replace(1, "#123456");
    EXPECT_EQ(first.hexes()[1], "#123456");
    EXPECT_EQ(second.hexes()[1], "#123456");
    EXPECT_EQ(secondChanges, 1);
    ASSERT_NE(store.value(AppAccentPalette::preferencesKey), nullptr);
    EXPECT_EQ(store.value(AppAccentPalette::preferencesKey)->size(), 6u);

    first.replace(6, "#FFFFFF");  // outside the list: nothing changes
    EXPECT_EQ(secondChanges, 1);
    EXPECT_EQ(first.hexes().size(), 6u);

    PreferencesStore reread(dir / "preferences.json");
    EXPECT_EQ(AppAccentPalette(reread).hexes()[1], "#123456");
}

}  // namespace
}  // namespace lectern
