// The live page of a web slide: which pages a stage wants ahead, how the
// prefetcher keeps them, and how a pane takes, loads and hands them back.
#include <gtest/gtest.h>

#include "base/manual_scheduler.h"
#include "support/fake_web_page.h"
#include "web/refused_address.h"
#include "web/page_probe.h"
#include "web/web_pane_controller.h"
#include "web/web_prefetcher.h"
#include "web/web_zoom.h"

namespace lectern {
namespace {

using testing::FakeWebPage;
using testing::FakeWebPageFactory;

Slide webSlide(const std::string& url, std::optional<Uuid> profile = std::nullopt) {
    Slide slide;
    slide.layout = SlideLayout::web;
    slide.url = url;
    slide.browserProfileId = profile;
    return slide;
}

Slide textSlide() {
    Slide slide;
    slide.layout = SlideLayout::regular;
    return slide;
}

FakeWebPage& fake(const std::shared_ptr<WebPage>& page) { return static_cast<FakeWebPage&>(*page); }

TEST(WebPrefetchWanted, NeighboursThenDecisionTargetsWithoutRepeatsOrTheCurrentPage) {
    Uuid profile = Uuid::random();
    std::vector<Slide> slides{webSlide("https://a.test/"), textSlide(), webSlide("https://b.test/"),
                              webSlide("https://c.test/", profile), webSlide("https://b.test/"),
                              webSlide("https://d.test/"), Slide{}};
    slides[6].layout = SlideLayout::web;  // a web slide without an address
    Slide decisions = textSlide();
    decisions.layout = SlideLayout::decisions;
    for (std::size_t target : {5u, 0u, 4u, 6u}) {
        SlideLink link;
        link.targetId = slides[target].id.string();
        decisions.links.push_back(link);
    }
    SlideLink missing;
    missing.targetId = Uuid::random().string();
    decisions.links.push_back(missing);
    slides[1] = decisions;

    // On the decisions slide: the next page, the previous one, then the
    // cards' targets in card order; slide 4 repeats slide 2's key.
    std::vector<PrefetchKey> expected{{"https://b.test/", {}}, {"https://a.test/", {}}, {"https://d.test/", {}}};
    EXPECT_EQ(WebPrefetcher::wantedKeys(slides, 1, false), expected);

    // Slide 3 (profile c) sits between two slides of the same page: one key.
    expected = {{"https://b.test/", {}}};
    EXPECT_EQ(WebPrefetcher::wantedKeys(slides, 3, false), expected);
    // Same address in another profile is another page.
    expected = {{"https://d.test/", {}}, {"https://c.test/", profile}};
    EXPECT_EQ(WebPrefetcher::wantedKeys(slides, 4, false), expected);
    // The current page is never wanted, even as a card's target.
    slides[2].links = {SlideLink{}};
    slides[2].links[0].targetId = slides[4].id.string();
    expected = {{"https://c.test/", profile}};
    EXPECT_EQ(WebPrefetcher::wantedKeys(slides, 2, false), expected);

    EXPECT_TRUE(WebPrefetcher::wantedKeys(slides, 1, true).empty()) << "the editor wants nothing";
    EXPECT_TRUE(WebPrefetcher::wantedKeys(slides, 7, false).empty());
    EXPECT_TRUE(WebPrefetcher::wantedKeys(slides, -1, false).empty());
}

class WebPrefetcherTest : public ::testing::Test {
protected:
    PrefetchKey key(const std::string& host) { return {"https://" + host + "/", std::nullopt}; }

    ManualScheduler scheduler;
    FakeWebPageFactory pages;
    WebPrefetcher prefetcher{pages, scheduler};
    Uuid window = Uuid::random();
    Uuid otherWindow = Uuid::random();
};

TEST_F(WebPrefetcherTest, LoadsWhatIsWantedAfterTheTurnAndEvictsWhatIsNot) {
    prefetcher.setWanted(window, {key("a.test"), key("b.test")});
    EXPECT_EQ(pages.made.size(), 0u) << "reconciling waits for the next turn";
    scheduler.runPending();
    ASSERT_EQ(pages.made.size(), 2u);
    EXPECT_EQ(pages.made[0]->loads, std::vector<std::string>{"https://a.test/"});

    prefetcher.setWanted(window, {key("b.test"), key("c.test")});
    scheduler.runPending();
    EXPECT_EQ(pages.made.size(), 3u) << "b is kept, c is new";
    EXPECT_EQ(pages.made[0]->stops, 1) << "a is stopped when evicted";
    EXPECT_FALSE(prefetcher.isHidden(window, key("a.test")));
    EXPECT_EQ(pages.made[1]->loads.size(), 1u);

    // Windows are apart; an empty set forgets a window (it closed).
    prefetcher.setWanted(otherWindow, {key("b.test")});
    prefetcher.setWanted(window, {});
    scheduler.runPending();
    EXPECT_EQ(prefetcher.hiddenCount(window), 0u);
    EXPECT_EQ(prefetcher.hiddenCount(otherWindow), 1u);
}

TEST_F(WebPrefetcherTest, AdoptTakeBackAndWhatIsOnStageIsNeverLoadedTwice) {
    prefetcher.setWanted(window, {key("a.test")});
    scheduler.runPending();
    auto page = prefetcher.adopt(window, key("a.test"));
    ASSERT_EQ(page, pages.made[0]);
    EXPECT_EQ(prefetcher.onStageCount(window, key("a.test")), 1);
    scheduler.runPending();
    EXPECT_EQ(pages.made.size(), 1u) << "a page on stage is not loaded again hidden";

    // Still wanted: it goes back hidden, page and all.
    EXPECT_TRUE(prefetcher.takeBack(page, window, key("a.test")));
    EXPECT_TRUE(prefetcher.isHidden(window, key("a.test")));
    EXPECT_EQ(prefetcher.onStageCount(window, key("a.test")), 0);
    scheduler.runPending();
    EXPECT_EQ(pages.made.size(), 1u);
    EXPECT_EQ(fake(page).loads.size(), 1u);

    // Not wanted: the pane must drop it.
    auto other = pages.makePage(std::nullopt);
    prefetcher.adopt(window, key("z.test"));
    EXPECT_FALSE(prefetcher.takeBack(other, window, key("z.test")));
    EXPECT_FALSE(prefetcher.isHidden(window, key("z.test")));
}

TEST_F(WebPrefetcherTest, DiscardAndTerminationLeaveNothingAndMakeNothing) {
    prefetcher.setWanted(window, {key("a.test")});
    prefetcher.setWanted(otherWindow, {key("b.test")});
    scheduler.runPending();
    prefetcher.discardAll();
    EXPECT_EQ(prefetcher.hiddenCount(), 0u);
    EXPECT_EQ(pages.made[0]->stops, 1);
    EXPECT_EQ(pages.made[1]->stops, 1);

    prefetcher.terminate();
    prefetcher.setWanted(window, {key("c.test")});
    scheduler.runPending();
    EXPECT_EQ(pages.made.size(), 2u);
    auto page = pages.makePage(std::nullopt);
    EXPECT_FALSE(prefetcher.takeBack(page, window, key("c.test")));
}

class WebPaneTest : public WebPrefetcherTest {
protected:
    std::unique_ptr<WebPaneController> pane(const Slide& slide) {
        WebPaneController::Inputs inputs{*slide.url, slide.browserProfileId, slide.id, slide.webZoom};
        return std::make_unique<WebPaneController>(inputs, pages, scheduler, &prefetcher, window, registry);
    }
    int loadsOf(const std::string& url) const {
        int count = 0;
        for (const auto& page : pages.made) count += static_cast<int>(std::count(page->loads.begin(), page->loads.end(), url));
        return count;
    }

    std::shared_ptr<LiveWebViewRegistry> registry = std::make_shared<LiveWebViewRegistry>();
};

TEST_F(WebPaneTest, GoingToAnotherSlideAndBackShowsThePageWithoutReloading) {
    std::vector<Slide> slides{webSlide("https://a.test/"), webSlide("https://b.test/")};
    // As the stage does it: the new wanted set first, then the old pane
    // goes (and is kept if the new set wants it), then the new one comes.
    std::unique_ptr<WebPaneController> onStage;
    auto show = [&](std::int64_t current) {
        prefetcher.setWanted(window, WebPrefetcher::wantedKeys(slides, current, false));
        onStage.reset();
        onStage = pane(slides[static_cast<std::size_t>(current)]);
        scheduler.runPending();
    };

    show(0);
    EXPECT_EQ(onStage->status(), WebLoadStatus::loading());
    fake(onStage->page()).finish();
    for (auto& page : pages.made) if (page->isLoading()) page->finish();
    scheduler.runPending();
    EXPECT_EQ(onStage->status(), WebLoadStatus::loaded());
    EXPECT_EQ(registry->lookup(slides[0].id), onStage->page());
    auto pageA = onStage->page();

    show(1);
    EXPECT_TRUE(onStage->adopted()) << "B was loaded ahead while A was on stage";
    EXPECT_EQ(onStage->status(), WebLoadStatus::loaded());
    EXPECT_EQ(registry->lookup(slides[0].id), nullptr);
    EXPECT_TRUE(prefetcher.isHidden(window, {"https://a.test/", {}})) << "A is kept hidden as B's neighbour";

    show(0);
    EXPECT_EQ(onStage->page(), pageA) << "the same page, with its state";
    EXPECT_EQ(onStage->status(), WebLoadStatus::loaded());
    EXPECT_EQ(loadsOf("https://a.test/"), 1);
    EXPECT_EQ(loadsOf("https://b.test/"), 1);
}

TEST_F(WebPaneTest, ZoomNeverReloadsANewAddressDoesAndCancelledLoadsAreNotFailures) {
    Slide slide = webSlide("https://a.test/");
    auto shown = pane(slide);
    auto& page = fake(shown->page());
    page.finish();
    scheduler.runPending();

    WebPaneController::Inputs inputs = shown->inputs();
    inputs.zoom = 1.5;
    shown->update(inputs);
    scheduler.runPending();
    EXPECT_EQ(page.zoom(), 1.5);
    EXPECT_EQ(page.loads.size(), 1u);
    EXPECT_EQ(shown->status(), WebLoadStatus::loaded());

    inputs.url = "https://b.test/";
    shown->update(inputs);
    scheduler.runPending();
    EXPECT_EQ(page.loads.back(), "https://b.test/");
    EXPECT_EQ(shown->status(), WebLoadStatus::loading());
    EXPECT_EQ(prefetcher.onStageCount(window, {"https://a.test/", {}}), 0) << "the old key is released";

    page.fail("Operation was cancelled", true);
    scheduler.runPending();
    EXPECT_EQ(shown->status(), WebLoadStatus::loading());
    page.fail("Could not connect: Connection refused");
    scheduler.runPending();
    EXPECT_EQ(shown->status(), WebLoadStatus::failed("Could not connect: Connection refused"));

    // A crashed page comes back by itself; links for new windows stay here.
    page.delegate()->processTerminated();
    EXPECT_EQ(page.reloads, 1);
    page.delegate()->newWindowRequested("https://c.test/");
    EXPECT_EQ(page.loads.back(), "https://c.test/");
    // A new window for a local file (or any other scheme) is refused.
    for (const char* url : {"file:///etc/passwd", "FILE:///home", "data:text/html,hi", "about:blank", ""}) {
        page.delegate()->newWindowRequested(url);
        EXPECT_EQ(page.loads.back(), "https://c.test/") << url;
    }
    EXPECT_EQ(pages.made.size(), 1u);
}

TEST_F(WebPaneTest, APageThatFailedWhileLoadedAheadLoadsAgainOnStage) {
    std::vector<Slide> slides{webSlide("https://a.test/"), webSlide("https://b.test/")};
    prefetcher.setWanted(window, WebPrefetcher::wantedKeys(slides, 0, false));
    scheduler.runPending();
    ASSERT_EQ(pages.made.size(), 1u);
    pages.made[0]->fail("Could not connect: Connection refused");

    auto shown = pane(slides[1]);
    scheduler.runPending();
    EXPECT_TRUE(shown->adopted());
    EXPECT_EQ(loadsOf("https://b.test/"), 2) << "loaded again, not shown as loaded";
    EXPECT_EQ(shown->status(), WebLoadStatus::loading());

    // A page that refuses the address at once ends failed, not loading.
    pages.made[0]->refuseWith = "Port 9 belongs to another service";
    WebPaneController::Inputs inputs = shown->inputs();
    inputs.url = "http://127.0.0.1:9/";
    shown->update(inputs);
    scheduler.runPending();
    EXPECT_EQ(shown->status(), WebLoadStatus::failed("Port 9 belongs to another service"));
}

TEST_F(WebPaneTest, AFinishedLoadAsksForASignInFormAndANewLoadForgetsTheAnswer) {
    Slide slide = webSlide("https://a.test/app");
    auto shown = pane(slide);
    FakeWebPage& page = fake(shown->page());
    page.holdScripts = true;
    page.finish();
    ASSERT_EQ(page.heldScripts.size(), 1u);
    EXPECT_EQ(page.scripts.back(), PageProbe::signInFormScript);

    // An answer about a load that another replaced says nothing.
    slide.url = "https://a.test/other";
    shown->update({*slide.url, slide.browserProfileId, slide.id, slide.webZoom});
    page.heldScripts[0](std::optional<std::string>("true"));
    EXPECT_FALSE(shown->showsSignInForm());

    page.finish();
    page.heldScripts[1](std::optional<std::string>("true"));
    EXPECT_TRUE(shown->showsSignInForm());
    // A reload that shows the page again clears it.
    page.reload();
    page.finish();
    page.heldScripts[2](std::optional<std::string>("false"));
    EXPECT_FALSE(shown->showsSignInForm());

    // A page that went to a sign-in address is expected to show its form.
    page.redirect("https://a.test/login?next=/other");
    page.finish();
    EXPECT_EQ(page.heldScripts.size(), 3u);
    EXPECT_FALSE(shown->showsSignInForm());
}

TEST_F(WebPaneTest, TheLaterPaneOfASlideOwnsTheRegistryEntry) {
    Slide slide = webSlide("https://a.test/");
    auto first = pane(slide);
    auto second = pane(slide);
    EXPECT_EQ(registry->lookup(slide.id), second->page());
    first.reset();
    EXPECT_EQ(registry->lookup(slide.id), second->page()) << "the earlier pane leaves the entry alone";
    second.reset();
    EXPECT_EQ(registry->lookup(slide.id), nullptr);
}

TEST(RefusedAddress, OnlyWebPagesOnPortsBrowsersAllow) {
    for (const char* url : {"https://a.test/", "HTTP://a.test:8080/x", "http://127.0.0.1:8765/", "http://[::1]:3000/"}) {
        EXPECT_EQ(refusalReason(url), std::nullopt) << url;
    }
    EXPECT_EQ(refusalReason("file:///etc/passwd"),
              "Refused to open “file:///etc/passwd”: only http and https pages are shown");
    EXPECT_TRUE(refusalReason("javascript:alert(1)"));
    EXPECT_TRUE(refusalReason("webkit://gpu"));
    EXPECT_EQ(refusalReason("http://127.0.0.1:9/"), "Port 9 belongs to another service: browsers never load pages from it");
    EXPECT_TRUE(refusalReason("https://mail.test:25/"));
    EXPECT_TRUE(refusalReason("http://a.test:10080/"));
    // Long addresses are cut in the message.
    std::string longAddress = "file:///" + std::string(200, 'x');
    EXPECT_LT(refusalReason(longAddress)->size(), 150u);
}

TEST(WebZoom, StepsAlongTheLevelsAndStopsAtTheEnds) {
    EXPECT_EQ(WebZoom::zoomIn(2.0), 2.0);
    EXPECT_EQ(WebZoom::zoomOut(0.75), 0.75);
    EXPECT_EQ(WebZoom::zoomIn(1.05), 1.1);
    EXPECT_EQ(WebZoom::zoomOut(1.05), 1.0);
    EXPECT_EQ(WebZoom::zoomIn(1.0999), 1.25) << "a hair below a level counts as the level";
    EXPECT_EQ(WebZoom::zoomOut(3.0), 2.0);
    EXPECT_EQ(WebZoom::percentText(1.25), "125%");
    EXPECT_EQ(WebZoom::percentText(0.9), "90%");
    EXPECT_FALSE(WebZoom::isActualSize(1.1));
}

}  // namespace
}  // namespace lectern
