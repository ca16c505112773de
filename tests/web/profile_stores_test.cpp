#include "web/profile_stores.h"

#include <gtest/gtest.h>

#include <map>

#include "present/manual_scheduler.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

using Strings = std::vector<std::string>;

// Records every call, by the short names the test gives the profiles.
// Removals fail as often as told; erasing finishes at once unless held.
class FakeStores : public WebsiteDataStores {
public:
    explicit FakeStores(Strings& log) : log_(log) {}

    void name(const Uuid& id, std::string shortName) { names_[id] = std::move(shortName); }

    void erase(const std::optional<Uuid>& profileId, std::function<void()> done) override {
        std::string entry = "erase ";
        entry += profileId ? names_[*profileId] : "shared";
        log_.push_back(entry);
        if (holdErases) {
            heldErases.push_back(std::move(done));
        } else {
            done();
        }
    }
    void dropCached(const Uuid& profileId) override { record("drop ", profileId); }
    Status removeStore(const Uuid& profileId) override {
        record("remove ", profileId);
        if (onRemove) onRemove(profileId);
        if (int& left = failures[profileId]; left != 0) {
            if (left > 0) --left;
            return Error{"busy"};
        }
        return Done{};
    }

    std::map<Uuid, int> failures;  // per profile; -1 fails for ever
    std::function<void(const Uuid&)> onRemove;
    bool holdErases = false;
    std::vector<std::function<void()>> heldErases;

private:
    void record(std::string entry, const Uuid& profileId) {
        entry += names_[profileId];
        log_.push_back(entry);
    }

    Strings& log_;
    std::map<Uuid, std::string> names_;
};

class ProfileStoresTest : public ::testing::Test {
protected:
    ProfileStoresTest() {
        stores.name(a, "a");
        stores.name(b, "b");
        stores.name(c, "c");
    }

    std::unique_ptr<ProfileStores> make() {
        return std::make_unique<ProfileStores>(stores, scheduler, preferences, inUse,
                                               [this] { log.push_back("discard"); });
    }

    Strings log;
    FakeStores stores{log};
    ManualScheduler scheduler;
    testing::TempDir folder;
    PreferencesStore preferences{folder / "preferences.json"};
    ProfilesInUse inUse;
    Uuid a = Uuid::random(), b = Uuid::random(), c = Uuid::random();
    Uuid window = Uuid::random(), otherWindow = Uuid::random();
    std::unique_ptr<ProfileStores> profiles = make();
};

TEST(ProfilesInUse, OnlyOtherWindowsCount) {
    ProfilesInUse inUse;
    Uuid a = Uuid::random(), b = Uuid::random(), w1 = Uuid::random(), w2 = Uuid::random();
    Deck deck;
    deck.browserProfiles = {{a, "Work"}, {b, ""}};
    inUse.publish(w1, deck);
    inUse.publish(w2, std::set<Uuid>{a});
    EXPECT_TRUE(inUse.inUseElsewhere(a, w1));
    EXPECT_FALSE(inUse.inUseElsewhere(b, w1));  // only its own window lists it
    EXPECT_TRUE(inUse.inUseElsewhere(b, w2));

    inUse.publish(w2, std::set<Uuid>{});  // the other deck dropped the profile
    EXPECT_FALSE(inUse.inUseElsewhere(a, w1));
    inUse.publish(w2, std::set<Uuid>{a});
    inUse.remove(w2);  // the other window closed
    EXPECT_FALSE(inUse.inUseElsewhere(a, w1));
    EXPECT_TRUE(inUse.inUseElsewhere(a, Uuid::random()));
}

TEST_F(ProfileStoresTest, ClearingTheSharedSessionDiscardsPrefetchedPagesFirst) {
    stores.holdErases = true;
    bool done = false;
    profiles->clearSharedSession([&] { done = true; });
    EXPECT_EQ(log, (Strings{"discard", "erase shared"}));
    EXPECT_FALSE(done);
    stores.heldErases.at(0)();
    EXPECT_TRUE(done);
}

TEST_F(ProfileStoresTest, ClearedFeedbackOfTheLatestProfileStaysItsFullTime) {
    std::vector<std::optional<Uuid>> shown;
    auto connection = profiles->recentlyClearedChanged().connect([&](const auto& id) { shown.push_back(id); });

    stores.holdErases = true;
    profiles->clearProfileSession(a);
    EXPECT_EQ(profiles->recentlyClearedProfileId(), std::nullopt);  // not before the data is gone
    stores.heldErases.at(0)();
    EXPECT_EQ(profiles->recentlyClearedProfileId(), a);

    scheduler.advance(1.0);
    stores.holdErases = false;
    profiles->clearProfileSession(b);
    scheduler.advance(0.6);  // a's time is up, b's is not
    EXPECT_EQ(profiles->recentlyClearedProfileId(), b);
    scheduler.advance(0.8);
    EXPECT_EQ(profiles->recentlyClearedProfileId(), b);
    scheduler.advance(0.1);
    EXPECT_EQ(profiles->recentlyClearedProfileId(), std::nullopt);
    EXPECT_EQ(shown, (std::vector<std::optional<Uuid>>{a, b, std::nullopt}));
    EXPECT_EQ(log, (Strings{"erase a", "erase b"}));  // prefetched pages stay

    // Gone before its time: the feedback is left as it is, and no timer
    // outlives the object.
    profiles->clearProfileSession(a);
    profiles.reset();
    EXPECT_EQ(scheduler.pendingCount(), 0u);
}

TEST_F(ProfileStoresTest, AProfileAnotherWindowUsesKeepsItsData) {
    inUse.publish(window, std::set<Uuid>{a, b});
    inUse.publish(otherWindow, std::set<Uuid>{a});
    int done = 0;
    profiles->deleteProfileStore(a, window, [&] { ++done; });
    profiles->deleteProfileStore(b, std::nullopt, [&] { ++done; });  // no deck window
    scheduler.advance(10);
    EXPECT_EQ(log, (Strings{"drop a", "drop b"}));
    EXPECT_EQ(done, 2);
    EXPECT_TRUE(profiles->pendingRemovals().empty());
}

TEST_F(ProfileStoresTest, DeletionErasesThenRemovesOnTheThirdAttempt) {
    inUse.publish(window, std::set<Uuid>{a});  // the deleting window itself does not count
    stores.failures[a] = 2;
    bool done = false;
    profiles->deleteProfileStore(a, window, [&] { done = true; });
    EXPECT_EQ(log, (Strings{"discard", "erase a", "drop a", "remove a"}));
    scheduler.advance(0.49);
    EXPECT_EQ(log.size(), 4u);
    scheduler.advance(0.01);
    EXPECT_EQ(log.size(), 5u);
    EXPECT_FALSE(done);
    scheduler.advance(0.5);
    EXPECT_EQ(log, (Strings{"discard", "erase a", "drop a", "remove a", "remove a", "remove a"}));
    EXPECT_TRUE(done);
    EXPECT_EQ(scheduler.pendingCount(), 0u);
    EXPECT_EQ(preferences.value(ProfileStores::pendingRemovalsKey), nullptr);
}

TEST_F(ProfileStoresTest, AStoreThatWillNotGoIsRecordedOnce) {
    stores.failures[a] = -1;
    std::vector<double> doneAt;
    profiles->deleteProfileStore(a, window, [&] { doneAt.push_back(scheduler.now()); });
    scheduler.advance(10);
    EXPECT_EQ(std::count(log.begin(), log.end(), "remove a"), 5);
    EXPECT_EQ(doneAt, (std::vector<double>{2.0}));  // attempts at 0, 0.5, 1, 1.5 and 2 s

    // A copy of the deck listed it too and deletes it later: still one entry.
    profiles->deleteProfileStore(a, window, [&] { doneAt.push_back(scheduler.now()); });
    scheduler.advance(10);
    EXPECT_EQ(std::count(log.begin(), log.end(), "remove a"), 10);
    EXPECT_EQ(doneAt.size(), 2u);

    PreferencesStore reread(preferences.path());
    ASSERT_NE(reread.value(ProfileStores::pendingRemovalsKey), nullptr);
    EXPECT_EQ(*reread.value(ProfileStores::pendingRemovalsKey), nlohmann::json::array({a.string()}));
    std::string stored = a.string();
    for (auto& ch : stored) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    EXPECT_EQ(profiles->pendingRemovals(), (Strings{stored}));  // upper-case text
}

TEST_F(ProfileStoresTest, NothingGoesOnOnceTheObjectIsGone) {
    stores.holdErases = true;
    bool done = false;
    profiles->deleteProfileStore(a, window, [&] { done = true; });
    profiles.reset();
    stores.heldErases.at(0)();
    EXPECT_EQ(log, (Strings{"discard", "erase a"}));
    EXPECT_FALSE(done);

    // Gone between two attempts.
    stores.holdErases = false;
    stores.failures[b] = -1;
    profiles = make();
    profiles->deleteProfileStore(b, window, [&] { done = true; });
    scheduler.advance(0.5);
    profiles.reset();
    EXPECT_EQ(scheduler.pendingCount(), 0u);
    EXPECT_FALSE(done);
}

TEST_F(ProfileStoresTest, RetryPassRemovesWhatGoesAndKeepsWhatFails) {
    Uuid late = Uuid::random();
    std::string lowerB = b.string();
    for (auto& ch : lowerB) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    ASSERT_TRUE(preferences.setValue(ProfileStores::pendingRemovalsKey,
                                     nlohmann::json::array({a.string(), lowerB, "not an id", c.string()})));
    stores.failures[b] = -1;
    // Something else records a removal while the pass runs: it must survive.
    stores.onRemove = [&](const Uuid& id) {
        if (id != a) return;
        auto ids = profiles->pendingRemovals();
        ids.push_back(late.string());
        ASSERT_TRUE(preferences.setValue(ProfileStores::pendingRemovalsKey, ids));
    };

    profiles->retryPendingRemovals();
    EXPECT_EQ(log, (Strings{"remove a", "remove b", "remove c"}));
    EXPECT_EQ(profiles->pendingRemovals(), (Strings{lowerB, late.string()}));

    profiles->retryPendingRemovals();  // once only
    EXPECT_EQ(log.size(), 3u);

    // Everything removed: the key goes.
    stores.failures[b] = 0;
    ASSERT_TRUE(preferences.setValue(ProfileStores::pendingRemovalsKey, nlohmann::json::array({b.string()})));
    make()->retryPendingRemovals();
    EXPECT_EQ(preferences.value(ProfileStores::pendingRemovalsKey), nullptr);
}

}  // namespace
}  // namespace lectern
