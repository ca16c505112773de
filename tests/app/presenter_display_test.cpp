// The presenter display as the presenter uses it: its times, the notes'
// size set with the keyboard, and its size, kept for the next display.
#include <gtest/gtest.h>

#include "editor/platform/deck_window.h"
#include "editor/platform/presenter_panel.h"
#include "editor/platform/presenter_slides.h"
#include "gui_harness.h"
#include "present/presenter_display_settings.h"

// After gtkmm, whose names Xlib's macros would clash with.
#include <gdk/x11/gdkx.h>

namespace lectern {
namespace {

using testing::pressKeys;
using testing::pumpFor;
using testing::pumpUntil;

class PresenterDisplayTest : public testing::WindowTest {
protected:
    // A deck of two slides with notes and a talk of 20 minutes, its display open.
    PresenterPanel& openDisplay() {
        Deck deck;
        for (const char* title : {"Welcome", "Roadmap"}) {
            Slide slide = Slide::make(SlideLayout::regular);
            slide.title = title;
            slide.notes = std::string("Notes for ") + title + ": greet the room, then show the numbers.";
            deck.slides.push_back(std::move(slide));
        }
        deck.targetMinutes = 20;
        DeckWindow& window = open(deck);
        window.state().togglePresenterPanel();
        EXPECT_TRUE(pumpUntil([&] { return window.presenterPanel() && window.presenterPanel()->get_mapped(); }));
        return *window.presenterPanel();
    }

    static int naturalHeight(const Gtk::Widget& widget, int width) {
        int minimum = 0, natural = 0, ignored = 0;
        widget.measure(Gtk::Orientation::VERTICAL, width, minimum, natural, ignored, ignored);
        return natural;
    }
};

TEST_F(PresenterDisplayTest, ShowsTheTimesAndKeepsItsNotesSizeAndWindowSizeForTheNextDisplay) {
    PresenterPanel& panel = openDisplay();
    using Settings = PresenterDisplaySettings;

    // Elapsed, the time left of the 20 minutes, and the wall clock.
    EXPECT_EQ(panel.elapsed().get_text(), "Elapsed 00:00");
    EXPECT_TRUE(panel.remaining().get_visible());
    EXPECT_EQ(panel.remaining().get_text(), "Remaining 20:00");
    auto clockNow = []() -> std::string { return "Clock " + Glib::DateTime::create_now_local().format("%H:%M"); };
    std::string before = clockNow();
    std::string shown = panel.clock().get_text();
    EXPECT_TRUE(shown == before || shown == clockNow()) << shown;

    // Ctrl+plus twice: larger notes, also in the preferences.
    EXPECT_EQ(panel.notesPoints(), Settings::defaultNotesPoints);
    const int smallHeight = naturalHeight(panel.notes(), 300);
    pressKeys(panel, {"ctrl+plus", "ctrl+plus"});
    ASSERT_TRUE(pumpUntil([&] { return panel.notesPoints() == Settings::defaultNotesPoints + 2 * Settings::notesStep; }));
    EXPECT_GT(naturalHeight(panel.notes(), 300), smallHeight) << "the text itself is larger";
    EXPECT_EQ(Settings(testing::preferences()).notesPoints(), panel.notesPoints());

    // Resized as a person does, through the window manager's side. On a
    // tall display the next slide goes below the current one.
    auto xid = gdk_x11_surface_get_xid(panel.get_surface()->gobj());
    ASSERT_EQ(testing::runProgram({"xdotool", "windowsize", std::to_string(xid), "760", "1060"}), 0);
    ASSERT_TRUE(pumpUntil([&] { return panel.get_width() < 800 && panel.slides().stacked(); }))
        << panel.get_width() << "x" << panel.get_height();
    testing::screenshot("presenter-display-tall");
    // Large, the slides grow with the window; the notes stay on screen.
    ASSERT_EQ(testing::runProgram({"xdotool", "windowsize", std::to_string(xid), "1600", "900"}), 0);
    // (the X window holds the frame's shadow too)
    ASSERT_TRUE(pumpUntil([&] { return panel.get_width() > 1500 && panel.get_height() < 1000; }));
    pumpFor(0.3);
    const std::pair size(panel.get_width(), panel.get_height());
    int width = 0, height = 0;
    panel.get_default_size(width, height);
    const std::pair defaultSize(width, height);
    EXPECT_GT(panel.slides().currentWidth(), 600);
    EXPECT_TRUE(panel.notes().get_mapped());
    EXPECT_GT(panel.notes().get_height(), 60);
    testing::screenshot("presenter-display-large");
    EXPECT_FALSE(panel.slides().stacked());

    // Closed, it opens at that size with those notes in another deck's window.
    panel.close();
    ASSERT_TRUE(pumpUntil([&] { return !panel.get_visible(); }));
    PresenterPanel& second = openDisplay();
    ASSERT_NE(&second, &panel);
    second.get_default_size(width, height);
    EXPECT_EQ(std::pair(width, height), defaultSize);
    EXPECT_TRUE(pumpUntil([&] { return std::pair(second.get_width(), second.get_height()) == size; }));
    EXPECT_EQ(second.notesPoints(), Settings::defaultNotesPoints + 2 * Settings::notesStep);
    // Ctrl+0 brings the notes back to their first size.
    pressKeys(second, {"ctrl+0"});
    EXPECT_TRUE(pumpUntil([&] { return second.notesPoints() == Settings::defaultNotesPoints; }));
}

}  // namespace
}  // namespace lectern
