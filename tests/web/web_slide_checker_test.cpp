// The web slide check over fake pages and a fake clock: which pages load
// when, how each load ends up as an outcome, and the texts the sheet and
// lectern-cli show.
#include <gtest/gtest.h>

#include "base/manual_scheduler.h"
#include "support/fake_web_page.h"
#include "web/web_slide_checker.h"

namespace lectern {
namespace {

using testing::FakeWebPage;
using testing::FakeWebPageFactory;

}  // namespace

void PrintTo(const WebCheckOutcome& outcome, std::ostream* out) {
    const char* kinds[] = {"ok", "redirected", "failed"};
    *out << kinds[static_cast<int>(outcome.kind)] << "(" << outcome.text << ")";
}

namespace {

Slide webSlide(const std::string& title, std::optional<std::string> url,
               std::optional<Uuid> profile = std::nullopt) {
    Slide slide = Slide::make(SlideLayout::web);
    slide.title = title;
    slide.url = std::move(url);
    slide.browserProfileId = profile;
    return slide;
}

// A deck of web slides at https://site.test/<n> for n = 1...count.
Deck webDeck(int count) {
    Deck deck;
    for (int n = 1; n <= count; ++n) deck.slides.push_back(webSlide("Page " + std::to_string(n), "https://site.test/" + std::to_string(n)));
    return deck;
}

struct Fixture {
    FakeWebPageFactory pages;
    ManualScheduler clock;
    WebSlideChecker checker{pages, clock};
    int changes = 0;
    Signal<>::Connection watch = checker.changed.connect([this] { ++changes; });

    FakeWebPage& page(std::size_t n) { return *pages.made.at(n); }
    std::vector<std::string> loadedUrls() const {
        std::vector<std::string> urls;
        for (const auto& page : pages.made) urls.push_back(page->loads.at(0));
        return urls;
    }
    std::size_t loadingCount() const {
        std::size_t count = 0;
        for (const auto& page : pages.made) count += page->delegate() != nullptr;
        return count;
    }
};

TEST(WebCheckTexts, HttpStatusMessages) {
    EXPECT_EQ(httpFailureMessage(404), "HTTP 404 \u2014 not found");
    EXPECT_EQ(httpFailureMessage(500), "HTTP 500 \u2014 internal server error");
    EXPECT_EQ(httpFailureMessage(410), "HTTP 410 \u2014 no longer exists");
    EXPECT_EQ(httpFailureMessage(504), "HTTP 504 \u2014 gateway timed out");
    // Codes without a phrase of their own take their class's.
    EXPECT_EQ(httpFailureMessage(499), "HTTP 499 \u2014 client error");
    EXPECT_EQ(httpFailureMessage(599), "HTTP 599 \u2014 server error");
}

TEST(WebCheckTexts, RedirectNotes) {
    // The same site, whatever the case of its host or a leading "www.".
    EXPECT_EQ(redirectNote("https://example.com/x", "https://www.example.com/x"), std::nullopt);
    EXPECT_EQ(redirectNote("https://WWW.Example.com/x", "https://example.com/other?q=1"), std::nullopt);
    // Newly on a sign-in page of the same site.
    EXPECT_EQ(redirectNote("https://example.com/app", "https://example.com/login"), "Redirected to example.com/login");
    for (const char* path : {"/SignIn", "/account/sign-in", "/sso/start", "/oauth2/authorize"}) {
        EXPECT_EQ(redirectNote("https://example.com/app", std::string("https://example.com") + path),
                  std::string("Redirected to example.com") + path);
    }
    // Asked for a sign-in page and still on one.
    EXPECT_EQ(redirectNote("https://example.com/login", "https://example.com/login?next=%2F"), std::nullopt);
    // Another site: its host as written, its path, no port or query.
    EXPECT_EQ(redirectNote("https://example.com/app", "https://Accounts.Example.org:8443/start?from=app"),
              "Redirected to Accounts.Example.org/start");
    EXPECT_EQ(redirectNote("https://example.com/app", "https://cdn.example.com/app"), "Redirected to cdn.example.com/app");
    // No final address: nothing to say.
    EXPECT_EQ(redirectNote("https://example.com/app", ""), std::nullopt);
}

TEST(WebCheckTexts, RowTitlesAndSummaries) {
    WebSlideChecker::Entry entry;
    entry.index = 3;
    entry.title = "Pricing";
    EXPECT_EQ(WebSlideChecker::rowTitle(entry), "04  Pricing");
    entry.index = 11;
    entry.title = "";
    EXPECT_EQ(WebSlideChecker::rowTitle(entry), "12  Untitled");

    Fixture one;
    one.checker.run(webDeck(1));
    EXPECT_EQ(one.checker.summary(), "Checking\u2026 0 of 1 done");
    one.page(0).finish();
    EXPECT_EQ(one.checker.summary(), "All 1 web slide loaded");

    Fixture five;
    five.checker.run(webDeck(5));
    five.page(0).finish();
    five.page(1).fail("Could not connect");
    five.page(2).finish(403);
    EXPECT_EQ(five.checker.summary(), "Checking\u2026 3 of 5 done");
    five.page(3).finish();
    five.page(4).finish();
    EXPECT_FALSE(five.checker.isRunning());
    EXPECT_EQ(five.checker.summary(), "2 of 5 need attention");

    Fixture allGood;
    allGood.checker.run(webDeck(3));
    for (std::size_t n = 0; n < 3; ++n) allGood.page(n).finish();
    EXPECT_EQ(allGood.checker.summary(), "All 3 web slides loaded");

    Fixture none;
    Deck textOnly;
    textOnly.slides.push_back(Slide::make(SlideLayout::regular));
    none.checker.run(textOnly);
    EXPECT_FALSE(none.checker.isRunning());
    EXPECT_TRUE(none.checker.entries().empty());
    EXPECT_EQ(none.checker.summary(), "This deck has no web slides");
}

TEST(WebSlideChecker, ListsWebSlidesAndLoadsThreeAtATimeInDeckOrder) {
    Fixture f;
    BrowserProfile profile;
    Deck deck = webDeck(6);
    deck.browserProfiles.push_back(profile);
    deck.slides.insert(deck.slides.begin() + 1, Slide::make(SlideLayout::regular));
    deck.slides.insert(deck.slides.begin() + 3, webSlide("", std::nullopt));  // no address
    deck.slides[2].browserProfileId = profile.id;                              // "Page 2"
    deck.slides[4].browserProfileId = Uuid::random();                          // a profile the deck lost

    f.checker.run(deck);
    ASSERT_EQ(f.checker.entries().size(), 7u);
    std::vector<std::size_t> indexes;
    for (const auto& entry : f.checker.entries()) indexes.push_back(entry.index);
    EXPECT_EQ(indexes, (std::vector<std::size_t>{0, 2, 3, 4, 5, 6, 7}));
    const auto& noUrl = f.checker.entries()[2];
    EXPECT_EQ(noUrl.id, deck.slides[3].id);
    EXPECT_EQ(noUrl.outcome, WebCheckOutcome::failed("No URL set"));

    // The slide without an address takes no place among the three.
    EXPECT_TRUE(f.checker.isRunning());
    EXPECT_EQ(f.loadedUrls(), (std::vector<std::string>{"https://site.test/1", "https://site.test/2", "https://site.test/3"}));
    EXPECT_EQ(f.page(0).profileId, std::nullopt);
    EXPECT_EQ(f.page(1).profileId, profile.id);
    EXPECT_EQ(f.page(2).profileId, std::nullopt);

    // Whichever finishes first, the next one in deck order takes its place.
    f.page(1).finish();
    EXPECT_EQ(f.pages.made.size(), 4u);
    EXPECT_EQ(f.page(3).loads.at(0), "https://site.test/4");
    EXPECT_EQ(f.loadingCount(), 3u);
    f.page(2).fail("A server with the specified hostname could not be found.");
    f.page(0).finish();
    EXPECT_EQ(f.pages.made.size(), 6u);
    EXPECT_EQ(f.loadingCount(), 3u);
    for (std::size_t n = 3; n < 6; ++n) f.page(n).finish();
    EXPECT_FALSE(f.checker.isRunning());
    EXPECT_EQ(f.pages.made.size(), 6u);

    std::vector<std::optional<WebCheckOutcome>> outcomes;
    for (const auto& entry : f.checker.entries()) outcomes.push_back(entry.outcome);
    auto ok = WebCheckOutcome::ok();
    EXPECT_EQ(outcomes, (std::vector<std::optional<WebCheckOutcome>>{
                            ok, ok, WebCheckOutcome::failed("No URL set"),
                            WebCheckOutcome::failed("A server with the specified hostname could not be found."), ok,
                            ok, ok}));
    EXPECT_EQ(f.checker.attentionCount(), 2u);
}

TEST(PageProbe, FirstEndCountsAndThePageIsLetGo) {
    Fixture f;
    f.checker.run(webDeck(4));

    // An error status wins over the body that loads after it.
    f.page(0).finish(500);
    EXPECT_EQ(f.checker.entries()[0].outcome, WebCheckOutcome::failed("HTTP 500 \u2014 internal server error"));
    EXPECT_EQ(f.page(0).delegate(), nullptr);
    EXPECT_GE(f.page(0).stops, 1);

    // A load that another replaced is no outcome; the one that replaced it is.
    f.page(1).fail("Load cancelled", true);
    EXPECT_EQ(f.checker.entries()[1].outcome, std::nullopt);
    f.page(1).redirect("https://site.test/login");
    f.page(1).finish();
    EXPECT_EQ(f.checker.entries()[1].outcome, WebCheckOutcome::redirected("Redirected to site.test/login"));
    EXPECT_TRUE(f.page(1).scripts.empty()) << "a redirected page needs no look for a sign-in form";

    // Nothing happens after the page let go of, not even the time limit.
    f.clock.runPending();
    EXPECT_EQ(f.pages.made[0].use_count(), 1) << "the probe still holds the page";
    EXPECT_EQ(f.pages.made[1].use_count(), 1);
    f.clock.advance(60);
    EXPECT_EQ(f.checker.entries()[0].outcome, WebCheckOutcome::failed("HTTP 500 \u2014 internal server error"));
    EXPECT_EQ(f.checker.entries()[1].outcome, WebCheckOutcome::redirected("Redirected to site.test/login"));
}

TEST(PageProbe, APageAtItsOwnAddressShowingASignInFormIsRedirected) {
    Fixture f;
    Deck deck = webDeck(6);
    deck.slides[2].url = "https://site.test/account/login";
    f.checker.run(deck);
    const auto& entries = f.checker.entries();
    using Answer = Result<std::optional<std::string>>;

    f.page(0).scriptAnswer = Answer(std::optional<std::string>("true"));
    f.page(0).finish();
    EXPECT_EQ(entries[0].outcome, WebCheckOutcome::redirected("Shows a sign-in form"));
    EXPECT_EQ(f.page(0).scripts, std::vector<std::string>{PageProbe::signInFormScript});
    EXPECT_EQ(f.page(0).delegate(), nullptr);

    // No form yet: asked again every half second for a second and a half,
    // as an app that draws its form after the load shows it late.
    f.page(1).scriptAnswer = Answer(std::optional<std::string>("false"));
    f.page(1).finish();
    EXPECT_EQ(entries[1].outcome, std::nullopt);

    // A sign-in page that was asked for is expected to show its form.
    f.page(2).scriptAnswer = Answer(std::optional<std::string>("true"));
    f.page(2).finish();
    EXPECT_EQ(entries[2].outcome, WebCheckOutcome::ok());
    EXPECT_TRUE(f.page(2).scripts.empty());

    f.page(3).scriptAnswer = Answer(std::optional<std::string>("false"));
    f.page(3).finish();
    f.clock.advance(PageProbe::formRetrySeconds);
    f.page(1).scriptAnswer = Answer(std::optional<std::string>("true"));
    f.clock.advance(PageProbe::formRetrySeconds);
    EXPECT_EQ(entries[1].outcome, WebCheckOutcome::redirected("Shows a sign-in form")) << "drawn after the load";
    EXPECT_EQ(f.page(1).scripts.size(), 3u);
    EXPECT_EQ(entries[3].outcome, std::nullopt);
    f.clock.advance(PageProbe::formRetrySeconds);
    EXPECT_EQ(entries[3].outcome, WebCheckOutcome::ok());
    EXPECT_EQ(f.page(3).scripts.size(), 4u) << "asked at 0, 0.5, 1 and 1.5 seconds";

    // A script that fails says nothing against the page, at once.
    f.page(5).scriptAnswer = Answer(Error{"ReferenceError: Can't find variable: document"});
    f.page(5).finish();
    EXPECT_EQ(entries[5].outcome, WebCheckOutcome::ok());

    // A page that never answers counts as loaded after two seconds; the
    // load's own time limit no longer runs once the load finished.
    f.page(4).holdScripts = true;
    f.clock.advance(18);  // 19.5 s after it started
    f.page(4).finish();
    f.clock.advance(1.9);
    EXPECT_EQ(entries[4].outcome, std::nullopt);
    EXPECT_TRUE(f.checker.isRunning());
    // Load events while it is asked are not the load's outcome.
    f.page(4).finish(500);
    f.page(4).fail("Load failed");
    EXPECT_EQ(entries[4].outcome, std::nullopt);
    f.clock.advance(0.1);
    EXPECT_EQ(entries[4].outcome, WebCheckOutcome::ok());
    EXPECT_FALSE(f.checker.isRunning());
    // A late answer changes nothing.
    for (auto& answer : f.page(4).heldScripts) answer(std::optional<std::string>("true"));
    EXPECT_EQ(entries[4].outcome, WebCheckOutcome::ok());
    EXPECT_EQ(f.checker.summary(), "2 of 6 need attention");
}

TEST(PageProbe, TimesOutAfterTwentySeconds) {
    Fixture f;
    f.checker.run(webDeck(4));
    f.page(0).finish();
    f.clock.advance(19.5);
    EXPECT_EQ(f.checker.entries()[1].outcome, std::nullopt);
    // Pages 2 and 3 started at 0 s, page 4 when page 1 finished, also at 0 s.
    f.clock.advance(0.5);
    for (std::size_t n = 1; n < 4; ++n) {
        EXPECT_EQ(f.checker.entries()[n].outcome, WebCheckOutcome::failed("Timed out after 20 s")) << n;
        EXPECT_EQ(f.page(n).delegate(), nullptr);
        EXPECT_FALSE(f.page(n).isLoading());
    }
    EXPECT_FALSE(f.checker.isRunning());
    EXPECT_EQ(f.checker.summary(), "3 of 4 need attention");
}

// A page that reports while it is being asked to load, as an engine may do
// for an address it refuses outright.
class FailingAtOnce : public FakeWebPageFactory {
public:
    std::shared_ptr<WebPage> makePage(const std::optional<Uuid>& profileId) override {
        auto page = std::make_shared<Page>(profileId);
        made.push_back(page);
        return page;
    }

private:
    struct Page : FakeWebPage {
        using FakeWebPage::FakeWebPage;
        void load(const std::string& url) override {
            FakeWebPage::load(url);
            fail("Unsupported address");
        }
    };
};

TEST(WebSlideChecker, PagesThatFailAtOnceStillRunThroughTheDeck) {
    FailingAtOnce pages;
    ManualScheduler clock;
    WebSlideChecker checker(pages, clock);
    int changes = 0;
    auto watch = checker.changed.connect([&] { ++changes; });
    checker.run(webDeck(7));
    EXPECT_EQ(pages.made.size(), 7u);
    EXPECT_FALSE(checker.isRunning());
    EXPECT_EQ(checker.attentionCount(), 7u);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(checker.summary(), "7 of 7 need attention");
}

TEST(WebSlideChecker, CancelAndRunAgain) {
    Fixture f;
    f.checker.run(webDeck(5));
    f.page(0).finish();
    int before = f.changes;
    f.checker.cancel();
    EXPECT_EQ(f.changes, before + 1);
    EXPECT_FALSE(f.checker.isRunning());
    // Pages still loading are stopped and no more start.
    EXPECT_EQ(f.loadingCount(), 0u);
    EXPECT_EQ(f.pages.made.size(), 4u);
    f.clock.advance(60);
    EXPECT_EQ(f.checker.entries()[0].outcome, WebCheckOutcome::ok());
    for (std::size_t n = 1; n < 5; ++n) EXPECT_EQ(f.checker.entries()[n].outcome, std::nullopt);
    EXPECT_EQ(f.checker.summary(), "Stopped after 1 of 5");

    // A new run while one is going drops the old pages and starts afresh.
    f.checker.run(webDeck(2));
    auto& old = f.page(4);
    f.checker.run(webDeck(2));
    EXPECT_EQ(old.delegate(), nullptr);
    EXPECT_EQ(f.checker.entries().size(), 2u);
    EXPECT_EQ(f.pages.made.size(), 8u);
    f.page(6).finish();
    f.page(7).finish();
    EXPECT_EQ(f.checker.summary(), "All 2 web slides loaded");
}

}  // namespace
}  // namespace lectern
