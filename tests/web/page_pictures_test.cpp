// Last good pictures of live pages: the store on disk, which loads leave
// one (the stage's pane, pages loaded ahead and the check, over fake
// pages), and the mark's text.
#include <gtest/gtest.h>

#include <glib.h>

#include <fstream>

#include "base/manual_scheduler.h"
#include "support/fake_web_page.h"
#include "support/temp_dir.h"
#include "web/page_pictures.h"
#include "web/web_pane_controller.h"
#include "web/web_prefetcher.h"
#include "web/web_slide_checker.h"

namespace lectern {
namespace {

using testing::FakeWebPageFactory;

std::string contents(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class PagePicturesTest : public ::testing::Test {
protected:
    testing::TempDir dir;
    InlineWorker worker;
    PagePictures pictures{dir / "cache" / "pictures", worker};
    Uuid slide = Uuid::random();
};

TEST_F(PagePicturesTest, APictureIsFoundForItsOwnAddressOnlyAndDamageMeansNone) {
    int saved = 0;
    auto connection = pictures.saved().connect([&](const Uuid& id) { saved += id == slide; });
    pictures.save(slide, "https://site.test/a", "first", 100);
    pictures.save(slide, "https://site.test/a", "second", 200);  // replaces the first
    EXPECT_EQ(saved, 2);

    auto found = pictures.find(slide, "https://site.test/a");
    ASSERT_TRUE(found);
    EXPECT_EQ(contents(found->file), "second");
    EXPECT_EQ(found->takenAt, 200);
    EXPECT_FALSE(pictures.find(slide, "https://site.test/b")) << "the slide shows another address now";
    EXPECT_FALSE(pictures.find(Uuid::random(), "https://site.test/a"));
    // Its bytes, for the presenter display, follow the picture taken last.
    EXPECT_EQ(pictures.bytes(slide, "https://site.test/a")->view(), "second");
    pictures.save(slide, "https://site.test/a", "newer", 250);
    EXPECT_EQ(pictures.bytes(slide, "https://site.test/a")->view(), "newer");
    EXPECT_FALSE(pictures.bytes(slide, "https://site.test/b"));

    const auto sidecar = pictures.folder() / (slide.string() + ".json");
    for (const char* damaged : {"{\"url\": \"https://site.test/a\"", "[]", "{\"url\": 3, \"takenAt\": 1}",
                                "{\"url\": \"https://site.test/a\"}"}) {
        std::ofstream(sidecar, std::ios::trunc) << damaged;
        EXPECT_FALSE(pictures.find(slide, "https://site.test/a")) << damaged;
    }
    pictures.save(slide, "https://site.test/a", "third", 300);
    std::filesystem::remove(found->file);
    EXPECT_FALSE(pictures.find(slide, "https://site.test/a")) << "a sidecar without its picture";
}

TEST_F(PagePicturesTest, GoodLoadsOnStageAndInTheCheckLeavePicturesFailuresDoNot) {
    ManualScheduler scheduler;
    FakeWebPageFactory pages;

    // On stage: a picture a moment after the page loaded; none of a page
    // that is loading again by then.
    WebPaneController pane({"https://site.test/a", std::nullopt, slide, 1.0}, pages, scheduler, nullptr, std::nullopt,
                           nullptr);
    pane.setPictures(&pictures);
    scheduler.runPending();
    pages.made[0]->finish();
    scheduler.runPending();
    pane.retry();
    scheduler.advance(PagePictures::settleSeconds);
    EXPECT_EQ(pages.made[0]->snapshots, 0);
    pages.made[0]->finish();
    scheduler.advance(PagePictures::settleSeconds);
    EXPECT_EQ(pages.made[0]->snapshots, 1);
    EXPECT_TRUE(pictures.find(slide, "https://site.test/a"));

    // The check: the page that loaded is pictured after its probe let it
    // go; the one that failed is not.
    Deck deck;
    for (const char* url : {"https://site.test/ok", "https://site.test/down"}) {
        Slide web = Slide::make(SlideLayout::web);
        web.url = url;
        deck.slides.push_back(web);
    }
    WebSlideChecker checker(pages, scheduler);
    checker.setPictures(&pictures);
    checker.run(deck);
    pages.made[1]->finish();
    pages.made[2]->fail("Could not connect");
    scheduler.advance(PagePictures::settleSeconds + PageProbe::formCheckSeconds);
    EXPECT_FALSE(checker.isRunning());
    EXPECT_TRUE(pictures.find(deck.slides[0].id, "https://site.test/ok"));
    EXPECT_FALSE(pictures.find(deck.slides[1].id, "https://site.test/down"));
    EXPECT_EQ(pages.made[2]->snapshots, 0);
}

TEST_F(PagePicturesTest, APageLoadedAheadLeavesAPictureForEachSlideThatShowsIt) {
    ManualScheduler scheduler;
    FakeWebPageFactory pages;
    WebPrefetcher prefetcher(pages, scheduler);
    prefetcher.setPictures(&pictures);
    std::vector<Slide> slides;
    for (const char* url : {"https://site.test/a", "https://site.test/down", "https://site.test/a"}) {
        slides.push_back(Slide::make(SlideLayout::web));
        slides.back().url = url;
    }
    const std::vector<PrefetchKey> keys{{"https://site.test/a", std::nullopt}, {"https://site.test/down", std::nullopt}};
    const Uuid window = Uuid::random();
    prefetcher.setWanted(window, keys, WebPrefetcher::slidesShowing(slides, keys));
    scheduler.runPending();
    ASSERT_EQ(pages.made.size(), 2u);
    pages.made[0]->finish();
    pages.made[1]->fail("Could not connect");
    scheduler.advance(PagePictures::settleSeconds);
    EXPECT_TRUE(pictures.find(slides[0].id, "https://site.test/a"));
    EXPECT_TRUE(pictures.find(slides[2].id, "https://site.test/a")) << "two slides of one page: a picture each";
    EXPECT_FALSE(pictures.find(slides[1].id, "https://site.test/down"));

    // Adopted by a pane, the page is the pane's to picture.
    EXPECT_EQ(prefetcher.adopt(window, keys[0]), pages.made[0]);
    EXPECT_EQ(pages.made[0]->delegate(), nullptr);
}

TEST(PagePictureMark, SaysTheTimeAndTheDayWhenItIsNotToday) {
    GDateTime* taken = g_date_time_new_local(2026, 11, 23, 14, 32, 10);
    const std::int64_t at = g_date_time_to_unix(taken);
    g_date_time_unref(taken);
    EXPECT_EQ(PagePictures::markText(at, at + 3600), "Offline copy from 14:32 — Ctrl+R to try again");
    EXPECT_EQ(PagePictures::markText(at, at + 2 * 86400), "Offline copy from 23 Nov, 14:32 — Ctrl+R to try again");
}

}  // namespace
}  // namespace lectern
