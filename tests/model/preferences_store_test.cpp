#include "model/preferences_store.h"

#include <gtest/gtest.h>

#include "support/deck_fixtures.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::listFolder;
using testing::readText;
using testing::TempDir;
using testing::writeText;

TEST(PreferencesStore, ValuesPersistAcrossStores) {
    TempDir dir;
    fs::path file = dir / "config" / "lectern" / "preferences.json";
    {
        PreferencesStore store(file);
        EXPECT_EQ(store.value("trustedActionFingerprints.v1"), nullptr);
        std::vector<std::string> seen;
        auto connection = store.changed().connect([&](const std::string& key) { seen.push_back(key); });
        ASSERT_TRUE(store.setValue("trustedActionFingerprints.v1", json::array({"abc"})).ok());
        ASSERT_TRUE(store.setValue("other", 3).ok());
        ASSERT_TRUE(store.removeValue("other").ok());
        EXPECT_EQ(seen, (std::vector<std::string>{"trustedActionFingerprints.v1", "other", "other"}));
    }
    PreferencesStore again(file);
    ASSERT_NE(again.value("trustedActionFingerprints.v1"), nullptr);
    EXPECT_EQ(*again.value("trustedActionFingerprints.v1"), json::array({"abc"}));
    EXPECT_EQ(again.value("other"), nullptr);
    EXPECT_EQ(listFolder(file.parent_path()), std::vector<std::string>{"preferences.json"});  // no temp files left
}

TEST(PreferencesStore, DamagedFileIsKeptAsideNotOverwritten) {
    TempDir dir;
    for (const char* damaged : {"{\"half\": ", "[1, 2]", "\x01\x02 binary"}) {
        fs::path file = dir / "preferences.json";
        writeText(file, damaged);
        PreferencesStore store(file);
        EXPECT_EQ(store.value("half"), nullptr);
        EXPECT_EQ(readText(dir / "preferences.json.damaged"), damaged);
        ASSERT_TRUE(store.setValue("fresh", true).ok());
        EXPECT_EQ(json::parse(readText(file)), (json{{"fresh", true}}));
        EXPECT_EQ(readText(dir / "preferences.json.damaged"), damaged);
    }

    // Too large to read: moved aside whole, unread.
    fs::path file = dir / "preferences.json";
    const std::uint64_t huge = std::uint64_t{64} << 30;
    fs::resize_file(file, huge);  // sparse: no disk is used
    PreferencesStore store(file);
    EXPECT_EQ(store.value("fresh"), nullptr);
    ASSERT_TRUE(store.setValue("fresh", false).ok());
    EXPECT_EQ(fs::file_size(dir / "preferences.json.damaged"), huge);
}

TEST(PreferencesStore, DefaultPathFollowsTheUserConfigFolder) {
    fs::path path = PreferencesStore::defaultPath();
    EXPECT_EQ(path.filename(), "preferences.json");
    EXPECT_EQ(path.parent_path().filename(), "lectern");
}

}  // namespace
}  // namespace lectern
