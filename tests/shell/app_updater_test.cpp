#include "app/app_updater.h"

#include <gtest/gtest.h>

#include <vector>

#include "base/manual_scheduler.h"
#include "model/preferences_store.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

using namespace std::chrono_literals;
using Outcome = UpdateResult::Outcome;

constexpr double day = 24 * 3600;

// Holds each fetch until the test answers it.
class FakeFetcher : public FeedFetcher {
public:
    struct Log {
        std::vector<std::string> urls;
        std::function<void(Result<std::string>)> pending;
        int cancelled = 0;
    };
    explicit FakeFetcher(Log& log) : log_(log) {}
    void fetch(const std::string& url, std::function<void(Result<std::string>)> done) override {
        log_.urls.push_back(url);
        log_.pending = std::move(done);
    }
    void cancel() override {
        log_.pending = nullptr;
        ++log_.cancelled;
    }

private:
    Log& log_;
};

std::string feedOffering(const std::string& version) {
    return R"(<rss version="2.0" xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle"><channel>
      <item><link>https://example.org/old</link><enclosure url="https://example.org/a" sparkle:version="0.0.9"/></item>
      <item><link>https://example.org/)" +
           version + R"(</link><enclosure url="https://example.org/b" sparkle:version=")" + version +
           R"("/></item></channel></rss>)";
}

class AppUpdaterTest : public ::testing::Test {
protected:
    // The wall clock moves with the scheduler, from a fixed day.
    std::chrono::system_clock::time_point wallClock() const {
        return epoch + std::chrono::duration_cast<std::chrono::system_clock::duration>(
                           std::chrono::duration<double>(scheduler.now()));
    }

    std::unique_ptr<AppUpdater> make(std::string feed = "https://updates.example.org/appcast.xml") {
        auto updater = std::make_unique<AppUpdater>(std::move(feed), "0.1.0", preferences, scheduler,
                                                    std::make_unique<FakeFetcher>(log), [this] { return wallClock(); });
        results = updater->finished().connect([this](const UpdateResult& result) { seen.push_back(result); });
        return updater;
    }

    void answer(Result<std::string> body) {
        ASSERT_TRUE(log.pending) << "no fetch under way";
        auto done = std::exchange(log.pending, nullptr);
        done(std::move(body));
    }

    void setLastChecked(std::chrono::system_clock::time_point when) {
        auto seconds = std::chrono::duration_cast<std::chrono::seconds>(when.time_since_epoch()).count();
        ASSERT_TRUE(preferences.setValue(AppUpdater::lastCheckedKey, seconds));
    }

    const std::chrono::system_clock::time_point epoch{std::chrono::seconds(1'700'000'000)};
    testing::TempDir dir;
    PreferencesStore preferences{dir / "preferences.json"};
    ManualScheduler scheduler;
    FakeFetcher::Log log;
    std::vector<UpdateResult> seen;
    Signal<const UpdateResult&>::Connection results;
};

TEST_F(AppUpdaterTest, TellsWhatTheFeedOffers) {
    auto updater = make();
    EXPECT_EQ(updater->feedHost(), "updates.example.org");

    updater->checkForUpdates();
    ASSERT_EQ(log.urls, std::vector<std::string>{"https://updates.example.org/appcast.xml"});
    answer(feedOffering("0.10.0"));
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].outcome, Outcome::available);
    EXPECT_EQ(seen[0].version, "0.10.0");
    EXPECT_EQ(seen[0].downloadPage, "https://example.org/0.10.0");
    EXPECT_EQ(seen[0].message, "Lectern 0.10.0 is available.");
    EXPECT_EQ(updater->lastChecked(), wallClock());
    ASSERT_TRUE(updater->lastResult());
    EXPECT_EQ(updater->lastResult()->outcome, Outcome::available);

    // The same version, older ones and failures are read over real HTTP
    // in the platform tests.
}

TEST_F(AppUpdaterTest, CannotCheckWhileACheckRuns) {
    auto updater = make();
    std::vector<bool> changes;
    auto connection = updater->canCheckForUpdatesChanged().connect([&](bool can) { changes.push_back(can); });
    EXPECT_TRUE(updater->canCheckForUpdates());

    updater->checkForUpdates();
    EXPECT_FALSE(updater->canCheckForUpdates());
    updater->checkForUpdates();  // ignored: one is under way
    EXPECT_EQ(log.urls.size(), 1u);
    answer(feedOffering("0.1.0"));
    EXPECT_TRUE(updater->canCheckForUpdates());
    EXPECT_EQ(changes, (std::vector<bool>{false, true}));

    // Going away during a check abandons it.
    updater->checkForUpdates();
    updater.reset();
    EXPECT_EQ(log.cancelled, 1);
}

TEST_F(AppUpdaterTest, ChecksAtStartWhenADayHasPassedAndThenDaily) {
    auto updater = make();
    updater->start();
    EXPECT_TRUE(log.urls.empty());  // never from inside start()
    scheduler.runPending();
    ASSERT_EQ(log.urls.size(), 1u);  // never checked before
    answer(feedOffering("0.1.0"));

    scheduler.advance(day - 60);
    EXPECT_EQ(log.urls.size(), 1u);
    scheduler.advance(60);
    ASSERT_EQ(log.urls.size(), 2u);
    // A failing feed is asked again a day later, not in a loop.
    answer(Error{"HTTP 503"});
    scheduler.advance(day - 60);
    EXPECT_EQ(log.urls.size(), 2u);
    scheduler.advance(60);
    EXPECT_EQ(log.urls.size(), 3u);
}

TEST_F(AppUpdaterTest, StartWaitsForTheRestOfTheDay) {
    setLastChecked(epoch - 20h);
    auto updater = make();
    updater->start();
    scheduler.advance(4 * 3600 - 60);
    EXPECT_TRUE(log.urls.empty());
    scheduler.advance(60);
    ASSERT_EQ(log.urls.size(), 1u);
    answer(feedOffering("0.1.0"));

    // A check asked for in between moves the next automatic one.
    scheduler.advance(day / 2);
    updater->checkForUpdates();
    answer(feedOffering("0.1.0"));
    scheduler.advance(day - 60);
    EXPECT_EQ(log.urls.size(), 2u);
    scheduler.advance(60);
    EXPECT_EQ(log.urls.size(), 3u);
}

TEST_F(AppUpdaterTest, AutomaticChecksCanBeTurnedOffAndOn) {
    auto updater = make();
    EXPECT_TRUE(updater->automaticallyChecksForUpdates());
    updater->setAutomaticallyChecksForUpdates(false);
    EXPECT_FALSE(preferences.value(AppUpdater::automaticallyCheckKey)->get<bool>());
    updater->start();
    scheduler.advance(3 * day);
    EXPECT_TRUE(log.urls.empty());

    updater->setAutomaticallyChecksForUpdates(true);
    scheduler.runPending();
    ASSERT_EQ(log.urls.size(), 1u);
    answer(feedOffering("0.1.0"));
    updater->setAutomaticallyChecksForUpdates(false);  // cancels the next one
    scheduler.advance(2 * day);
    EXPECT_EQ(log.urls.size(), 1u);
    EXPECT_EQ(scheduler.pendingCount(), 0u);
}

TEST_F(AppUpdaterTest, ABuildWithoutAFeedNeverChecks) {
    auto updater = make("");
    EXPECT_FALSE(updater->hasFeed());
    EXPECT_EQ(updater->feedHost(), "");
    EXPECT_FALSE(updater->canCheckForUpdates());
    updater->start();
    updater->checkForUpdates();
    scheduler.advance(2 * day);
    EXPECT_TRUE(log.urls.empty());
    EXPECT_TRUE(seen.empty());
}

TEST_F(AppUpdaterTest, RefusesAFeedThatIsNotHttps) {
    auto updater = make("http://updates.example.org/appcast.xml");
    EXPECT_TRUE(updater->hasFeed());
    updater->checkForUpdates();
    EXPECT_FALSE(updater->canCheckForUpdates());
    scheduler.runPending();
    EXPECT_TRUE(log.urls.empty());
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].outcome, Outcome::failed);
    EXPECT_EQ(seen[0].message, "Couldn’t check for updates: the update address isn’t a secure (https) address");
    EXPECT_TRUE(updater->canCheckForUpdates());

    // Plain http is fine for a feed on this machine.
    for (std::string local : {"http://127.0.0.1:8080/a.xml", "http://localhost/a.xml", "http://[::1]:80/a.xml"}) {
        auto here = make(local);
        here->checkForUpdates();
        EXPECT_EQ(log.urls.back(), local);
        answer(feedOffering("0.1.0"));
    }
}

}  // namespace
}  // namespace lectern
