#include "web/profile_stores.h"

#include <gtest/gtest.h>

#include <map>

#include "base/manual_scheduler.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

using Strings = std::vector<std::string>;

// Logs every call with the profiles' short names. Removals fail as often as
// told (-1: for ever); erasing finishes at once unless held.
struct FakeStores : WebsiteDataStores {
    void erase(const std::optional<Uuid>& id, std::function<void()> done) override {
        record("erase ", id);
        if (holdErases) {
            held.push_back(std::move(done));
        } else {
            done();
        }
    }
    void dropCached(const Uuid& id) override { record("drop ", id); }
    Status removeStore(const Uuid& id) override {
        record("remove ", id);
        if (onRemove) onRemove(id);
        if (int& left = failures[id]; left != 0) {
            left -= left > 0;
            return Error{"busy"};
        }
        return Done{};
    }
    void record(std::string entry, const std::optional<Uuid>& id) {
        entry += id ? names[*id] : "shared";
        log.push_back(entry);
    }

    Strings log;
    std::map<Uuid, std::string> names;
    std::map<Uuid, int> failures;
    std::function<void(const Uuid&)> onRemove;
    bool holdErases = false;
    std::vector<std::function<void()>> held;
};

class ProfileStoresTest : public ::testing::Test {
protected:
    ProfileStoresTest() { stores.names = {{a, "a"}, {b, "b"}, {c, "c"}}; }
    std::unique_ptr<ProfileStores> make() {
        return std::make_unique<ProfileStores>(stores, scheduler, preferences, inUse,
                                               [this] { stores.log.push_back("discard"); });
    }

    FakeStores stores;
    ManualScheduler scheduler;
    testing::TempDir folder;
    PreferencesStore preferences{folder / "preferences.json"};
    ProfilesInUse inUse;
    Uuid a = Uuid::random(), b = Uuid::random(), c = Uuid::random(), window = Uuid::random();
    std::unique_ptr<ProfileStores> profiles = make();
};

TEST_F(ProfileStoresTest, ClearingSessions) {
    std::vector<std::optional<Uuid>> shown;
    auto connection = profiles->recentlyClearedChanged().connect([&](const auto& id) { shown.push_back(id); });
    stores.holdErases = true;
    bool done = false;
    profiles->clearSharedSession([&] { done = true; });
    profiles->clearProfileSession(a);
    EXPECT_EQ(stores.log, (Strings{"discard", "erase shared", "erase a"}));
    EXPECT_FALSE(done);
    EXPECT_EQ(profiles->recentlyClearedProfileId(), std::nullopt);  // not before the data is gone
    stores.held.at(0)();
    stores.held.at(1)();
    EXPECT_TRUE(done);

    // b cleared within a's 1.5 s keeps its own feedback for its full time.
    scheduler.advance(1.0);
    stores.holdErases = false;
    profiles->clearProfileSession(b);
    scheduler.advance(1.4);
    EXPECT_EQ(profiles->recentlyClearedProfileId(), b);
    scheduler.advance(0.1);
    EXPECT_EQ(shown, (std::vector<std::optional<Uuid>>{a, b, std::nullopt}));

    profiles->clearProfileSession(a);
    profiles.reset();  // no timer outlives the object
    EXPECT_EQ(scheduler.pendingCount(), 0u);
}

TEST_F(ProfileStoresTest, AProfileAnotherWindowUsesKeepsItsData) {
    Deck deck;
    deck.browserProfiles = {{a, "Work"}, {b, ""}};
    inUse.publish(window, deck);
    inUse.publish(Uuid::random(), std::set<Uuid>{a});
    int done = 0;
    profiles->deleteProfileStore(a, window, [&] { ++done; });
    profiles->deleteProfileStore(c, std::nullopt, [&] { ++done; });  // no deck window
    scheduler.advance(10);
    EXPECT_EQ(stores.log, (Strings{"drop a", "drop c"}));
    EXPECT_EQ(done, 2);

    // Its own window does not count.
    stores.log.clear();
    profiles->deleteProfileStore(b, window);
    EXPECT_EQ(stores.log, (Strings{"discard", "erase b", "drop b", "remove b"}));
    EXPECT_TRUE(profiles->pendingRemovals().empty());
}

TEST_F(ProfileStoresTest, RemovalAttemptsHalfASecondApart) {
    stores.failures[a] = 2;
    stores.failures[b] = -1;
    std::vector<double> doneAt;
    profiles->deleteProfileStore(a, window, [&] { doneAt.push_back(scheduler.now()); });
    profiles->deleteProfileStore(b, window, [&] { doneAt.push_back(scheduler.now()); });
    scheduler.advance(10);
    EXPECT_EQ(std::count(stores.log.begin(), stores.log.end(), "remove a"), 3);
    EXPECT_EQ(std::count(stores.log.begin(), stores.log.end(), "remove b"), 5);
    EXPECT_EQ(doneAt, (std::vector<double>{1.0, 2.0}));

    // A copy of the deck listed b too and deletes it later: still one entry,
    // in upper-case text.
    profiles->deleteProfileStore(b, window);
    scheduler.advance(10);
    EXPECT_EQ(std::count(stores.log.begin(), stores.log.end(), "remove b"), 10);
    std::string upper = b.string();
    for (auto& ch : upper) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    EXPECT_EQ(PreferencesStore(preferences.path()).value(ProfileStores::pendingRemovalsKey)->dump(),
              nlohmann::json::array({upper}).dump());

    // Gone while erasing or between attempts: nothing more happens.
    stores.holdErases = true;
    profiles->deleteProfileStore(c, window, [&] { doneAt.push_back(0); });
    profiles->deleteProfileStore(b, window);
    stores.holdErases = false;
    stores.held.at(1)();
    profiles.reset();
    stores.held.at(0)();
    EXPECT_EQ(stores.log.back(), "remove b");
    EXPECT_EQ(scheduler.pendingCount(), 0u);
    EXPECT_EQ(doneAt.size(), 2u);
}

TEST_F(ProfileStoresTest, RetryPassRemovesWhatGoesAndKeepsWhatFails) {
    Uuid late = Uuid::random();
    ASSERT_TRUE(preferences.setValue(ProfileStores::pendingRemovalsKey,
                                     nlohmann::json::array({a.string(), b.string(), "not an id", c.string()})));
    stores.failures[b] = -1;
    // A removal recorded while the pass runs must survive it.
    stores.onRemove = [&](const Uuid& id) {
        if (id != a) return;
        auto ids = profiles->pendingRemovals();
        ids.push_back(late.string());
        ASSERT_TRUE(preferences.setValue(ProfileStores::pendingRemovalsKey, ids));
    };
    profiles->retryPendingRemovals();
    profiles->retryPendingRemovals();  // once only
    EXPECT_EQ(stores.log, (Strings{"remove a", "remove b", "remove c"}));
    EXPECT_EQ(profiles->pendingRemovals(), (Strings{b.string(), late.string()}));

    stores.failures[b] = 0;
    ASSERT_TRUE(preferences.setValue(ProfileStores::pendingRemovalsKey, nlohmann::json::array({b.string()})));
    make()->retryPendingRemovals();
    EXPECT_EQ(preferences.value(ProfileStores::pendingRemovalsKey), nullptr);
}

}  // namespace
}  // namespace lectern
