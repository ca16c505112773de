// Saves are interrupted by killing the saving process at random instants; the
// deck on disk must always open whole, as one of the versions that were saved.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <random>
#include <thread>

#include "model/deck_package.h"
#include "support/deck_fixtures.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

namespace fs = std::filesystem;
using testing::fakePng;
using testing::imageSlide;
using testing::listFolder;
using testing::TempDir;

constexpr std::size_t imageSize = 200 * 1024;

// Version n of the deck: its title says n, and its pictures change with n so
// that saves keep adding and removing media files.
Deck version(const Deck& base, int n) {
    Deck deck = base;
    deck.title = "v" + std::to_string(n);
    for (std::size_t i = 0; i < deck.slides.size(); ++i) {
        deck.slides[i] = imageSlide(fakePng(static_cast<std::uint32_t>(n % 3 + i * 10), imageSize),
                                    "slide " + std::to_string(i) + " of v" + std::to_string(n));
        deck.slides[i].id = base.slides[i].id;
    }
    return deck;
}

// Whether the deck is exactly version n for some n.
::testing::AssertionResult isWholeVersion(const Deck& base, const Deck& opened) {
    if (!opened.title || opened.title->rfind("v", 0) != 0) return ::testing::AssertionFailure() << "no version title";
    int n = std::stoi(opened.title->substr(1));
    Deck expected = version(base, n);
    for (std::size_t i = 0; i < expected.slides.size(); ++i) {
        if (i >= opened.slides.size()) return ::testing::AssertionFailure() << "slide " << i << " missing";
        if (opened.slides[i].title != expected.slides[i].title) return ::testing::AssertionFailure() << "mixed titles";
        if (opened.slides[i].imageData != expected.slides[i].imageData) {
            return ::testing::AssertionFailure() << "v" << n << " slide " << i << " lost its picture";
        }
    }
    return ::testing::AssertionSuccess();
}

TEST(DeckSaveCrash, KilledSavesAlwaysLeaveAWholeDeck) {
    TempDir dir;
    fs::path path = dir / "Crash.lectern";
    Deck base;
    for (int i = 0; i < 4; ++i) base.slides.push_back(Slide::make(SlideLayout::image));
    ASSERT_TRUE(DeckPackage::write(version(base, 0), path, std::nullopt).ok());

    std::mt19937 random(12345);
    std::uniform_int_distribution<int> delayMicros(0, 40000);
    int next = 1;
    int interrupted = 0;  // rounds killed while a save was under way
    for (int round = 0; round < 40; ++round) {
        pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            // Save new versions back to back until killed.
            for (int n = next;; ++n) {
                if (!DeckPackage::write(version(base, n), path, path).ok()) ::_exit(3);
            }
        }
        std::this_thread::sleep_for(std::chrono::microseconds(delayMicros(random)));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the saving process failed on its own, status " << status;

        if (listFolder(dir.path()).size() > 1) ++interrupted;
        auto opened = DeckPackage::read(path);
        ASSERT_TRUE(opened.ok()) << "round " << round << ": " << opened.error().message;
        ASSERT_TRUE(isWholeVersion(base, *opened)) << "round " << round;
        next = std::stoi(opened->title->substr(1)) + 1;
    }

    EXPECT_GT(interrupted, 5) << "the kills should land in the middle of saves";

    // The next save clears what the interrupted ones left beside the deck.
    auto opened = DeckPackage::read(path);
    ASSERT_TRUE(DeckPackage::write(*opened, path, path).ok());
    EXPECT_EQ(listFolder(dir.path()), std::vector<std::string>{"Crash.lectern"});
    EXPECT_EQ(listFolder(path / "media").size(), 4u);
}

TEST(DeckSaveCrash, AWriteErrorKeepsThePreviousDeck) {
    TempDir dir;
    fs::path path = dir / "Full.lectern";
    Deck small;
    small.title = "before";
    small.slides = {imageSlide(fakePng(1))};
    ASSERT_TRUE(DeckPackage::write(small, path, std::nullopt).ok());

    // A child process whose file size limit makes the new picture unwritable,
    // as a full disk would.
    pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{64 * 1024, 64 * 1024};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        Deck big = small;
        big.title = "after";
        big.slides.push_back(imageSlide(fakePng(2, 1024 * 1024)));
        auto status = DeckPackage::write(big, path, path);
        ::_exit(status.ok() ? 1 : status.error().kind == ErrorKind::fileWrite ? 0 : 2);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << "the save should have failed with a write error";

    auto opened = DeckPackage::read(path);
    ASSERT_TRUE(opened.ok());
    EXPECT_EQ(opened->title, "before");
    EXPECT_EQ(opened->slides.size(), 1u);
    EXPECT_EQ(opened->slides[0].imageData, fakePng(1));
    EXPECT_EQ(listFolder(dir.path()), std::vector<std::string>{"Full.lectern"});
}

}  // namespace
}  // namespace lectern
