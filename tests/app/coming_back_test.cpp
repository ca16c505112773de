// Coming back to a deck: it opens again at the slide and in the size it was
// left at. And decks dragged in from another program's window open.

#include <gtest/gtest.h>

#include <cstdlib>

#include "app/platform/start_window.h"
#include "editor/deck_places.h"
#include "editor/platform/deck_window.h"
#include "editor/recovery_store.h"
#include "gui_harness.h"
#include "model/deck_package.h"
#include "support/deck_fixtures.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

namespace fs = std::filesystem;
using testing::app;
using testing::pumpFor;
using testing::pumpUntil;

class ComingBackTest : public testing::WindowTest {
protected:
    testing::TempDir dir;

    // The window the application would open for the package, with the
    // places list given.
    DeckWindow& openPackage(const fs::path& package, std::shared_ptr<DeckPlaces> places) {
        auto deck = DeckPackage::read(package);
        EXPECT_TRUE(deck);
        auto* window = Gtk::make_managed<DeckWindow>(app().scheduler(), testing::preferences(),
                                                     std::make_shared<RecoveryStore>(dir / "recovery"),
                                                     std::move(deck).value(), package, false, std::move(places));
        app().add_window(*window);
        window->present();
        EXPECT_TRUE(pumpUntil([&] { return window->get_mapped(); }));
        pumpFor(0.2);
        return *window;
    }
};

TEST_F(ComingBackTest, ADeckOpensAgainAtItsSlideAndSize) {
    Deck deck;
    deck.title = "Coming Back";
    for (int n = 1; n <= 4; ++n) {
        Slide slide = Slide::make(SlideLayout::regular);
        slide.title = "Slide " + std::to_string(n);
        deck.slides.push_back(slide);
    }
    const fs::path package = dir / "Talk.lectern";
    ASSERT_TRUE(DeckPackage::write(deck, package, std::nullopt));
    const fs::path placesFile = dir / "state" / "places.json";
    int width = 0, height = 0;

    {
        DeckWindow& window = openPackage(package, std::make_shared<DeckPlaces>(placesFile));
        EXPECT_EQ(window.state().current(), 0);
        window.state().goTo(2, true);
        // Resized from outside, as a person does by the window's edge.
        testing::runProgram({"xdotool", "search", "--name", "^Coming Back$", "windowsize", "1000", "700"});
        // The window's own size leaves out the frame around it (a few points).
        ASSERT_TRUE(pumpUntil([&] { return std::abs(window.get_width() - 1000) <= 20; }));
        ASSERT_TRUE(pumpUntil([&] { return std::abs(window.get_height() - 700) <= 20; }));
        width = window.get_width();
        height = window.get_height();
        window.close();
        ASSERT_TRUE(pumpUntil([&] { return app().get_windows().empty(); }));
    }

    // Read back from the file, as the next start of the program would.
    DeckWindow& window = openPackage(package, std::make_shared<DeckPlaces>(placesFile));
    EXPECT_EQ(window.state().current(), 2);
    EXPECT_TRUE(testing::showsText(window, "3 / 4"));
    EXPECT_EQ(window.get_width(), width);
    EXPECT_EQ(window.get_height(), height);
}

TEST_F(ComingBackTest, ADeckFolderDroppedOnTheStartWindowIsHandedOnAndOtherFilesAreNot) {
    const fs::path package = dir / "Dropped.lectern";
    fs::create_directories(package);
    testing::writeText(dir / "notes.txt", "not a deck");

    auto* window = Gtk::make_managed<StartWindow>(StartWindow::RecoveriesSource{});
    app().add_window(*window);
    std::vector<std::vector<fs::path>> dropped;
    window->signal_decks_dropped().connect([&](const std::vector<fs::path>& decks) { dropped.push_back(decks); });
    window->present();
    ASSERT_TRUE(pumpUntil([&] { return window->get_mapped(); }));
    pumpFor(0.3);

    testing::dragFileOnto(dir / "notes.txt", *window);
    pumpFor(0.5);
    EXPECT_TRUE(dropped.empty()) << "a file that is no deck is refused";

    testing::dragFileOnto(package, *window);
    ASSERT_TRUE(pumpUntil([&] { return !dropped.empty(); }, 10));
    EXPECT_EQ(dropped, (std::vector<std::vector<fs::path>>{{package}}));
}

}  // namespace
}  // namespace lectern
