#include "editor/recovery_store.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <nlohmann/json.hpp>

#include "model/deck_package.h"
#include "support/deck_fixtures.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

namespace fs = std::filesystem;
using testing::fakePng;
using testing::imageSlide;
using testing::listFolder;
using testing::readText;
using testing::TempDir;
using testing::writeText;

Deck deckWithPicture(std::optional<std::string> title) {
    Deck deck;
    deck.title = std::move(title);
    deck.slides.push_back(imageSlide(fakePng(7)));
    return deck;
}

// Moves a copy's time back, as if it had been written that long ago.
void backdate(const RecoveryEntry& entry, std::int64_t seconds) {
    auto origin = nlohmann::json::parse(readText(entry.folder / "origin.json"));
    origin["savedAt"] = origin["savedAt"].get<std::int64_t>() - seconds;
    writeText(entry.folder / "origin.json", origin.dump());
}

TEST(RecoveryStore, CopiesOfSavedDecksAndDraftsComeBackNewestFirst) {
    TempDir dir;
    RecoveryStore store(dir / "state" / "recovery");  // made on the first write
    EXPECT_TRUE(store.list().empty());

    Deck saved = deckWithPicture("Quarterly Demo");
    Deck draft = deckWithPicture(std::nullopt);
    const fs::path package = dir / "Talks" / "Demo.lectern";
    ASSERT_TRUE(store.write(saved, package));
    ASSERT_TRUE(store.write(draft, std::nullopt));

    auto entries = store.list();
    ASSERT_EQ(entries.size(), 2u);
    backdate(entries[0].deckId == saved.id ? entries[0] : entries[1], 3600);
    entries = store.list();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].deckId, draft.id);
    EXPECT_EQ(entries[0].package, std::nullopt);
    EXPECT_EQ(entries[0].title, "Untitled Deck");
    EXPECT_EQ(entries[1].deckId, saved.id);
    EXPECT_EQ(entries[1].package, package);
    EXPECT_EQ(entries[1].title, "Quarterly Demo");
    EXPECT_GT(entries[0].savedAtUnix, entries[1].savedAtUnix);
    EXPECT_EQ(entries[1].folder, dir / "state" / "recovery" / (saved.id.string() + ".lectern"));
    // A copy is read back, never shown: it carries no previews.
    EXPECT_TRUE(listFolder(entries[1].folder / "QuickLook").empty());

    auto read = store.read(entries[1]);
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(read->id, saved.id);
    EXPECT_EQ(read->title, saved.title);
    ASSERT_EQ(read->slides.size(), 1u);
    ASSERT_TRUE(read->slides[0].imageData);
    EXPECT_EQ(*read->slides[0].imageData, *saved.slides[0].imageData);

    // Writing again replaces the copy: the later title, still one entry.
    saved.title = "Quarterly Demo, revised";
    ASSERT_TRUE(store.write(saved, package));
    entries = store.list();
    ASSERT_EQ(entries.size(), 2u);
    auto rewritten = std::find_if(entries.begin(), entries.end(), [&](auto& e) { return e.deckId == saved.id; });
    ASSERT_NE(rewritten, entries.end());
    EXPECT_EQ(rewritten->title, "Quarterly Demo, revised");

    store.remove(saved.id);
    store.remove(saved.id);  // already gone: nothing happens
    entries = store.list();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].deckId, draft.id);
    EXPECT_FALSE(fs::exists(dir / "state" / "recovery" / (saved.id.string() + ".lectern")));
}

TEST(RecoveryStore, DamagedCopiesAreLeftOutAndLeftAlone) {
    TempDir dir;
    RecoveryStore store(dir.path());
    Deck good = deckWithPicture("Good");
    ASSERT_TRUE(store.write(good, std::nullopt));

    auto copyAs = [&](const Deck& deck) {
        EXPECT_TRUE(store.write(deck, std::nullopt));
        return dir / (deck.id.string() + ".lectern");
    };
    // Cut short before its origin was written.
    fs::remove(copyAs(Deck{}) / "origin.json");
    // An origin that is not ours.
    writeText(copyAs(Deck{}) / "origin.json", "{\"title\": 3}");
    // A deck that does not decode.
    writeText(copyAs(Deck{}) / "deck.json", "{ not json");
    // A folder whose name is not the deck's id.
    fs::path renamed = copyAs(Deck{});
    fs::rename(renamed, dir / (Uuid::random().string() + ".lectern"));
    fs::create_directories(dir / "notes.lectern");
    writeText(dir / "stray.txt", "hello");

    auto entries = store.list();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].deckId, good.id);
    EXPECT_EQ(listFolder(dir.path()).size(), 7u);  // nothing removed
}

}  // namespace
}  // namespace lectern
