#pragma once

#include <gtest/gtest.h>
#include <gtkmm.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "app/platform/lectern_application.h"
#include "model/preferences_store.h"

namespace lectern {
class DeckWindow;
}

namespace lectern::testing {

// The display the tests draw on (xvfb-run gives one); tests skip without it.
bool haveDisplay();

// One application for the whole test program (a process registers only
// one), with a preferences file of its own in a temporary folder.
LecternApplication& app();
PreferencesStore& preferences();
// Closes every window of the application and lets them go.
void closeAllWindows();

// Runs the main loop until `done` holds or `seconds` have passed; whether
// it holds.
bool pumpUntil(const std::function<bool()>& done, double seconds = 5);
void pumpFor(double seconds);

// Real input through the X server, with xdotool: keys go to the window
// that has the focus, as when a person types.
void focus(Gtk::Window& window);
void pressKeys(Gtk::Window& window, const std::vector<std::string>& keys);
// Moves the pointer to a point of a widget (its own coordinates), and clicks.
void movePointer(Gtk::Widget& widget, double x, double y);
void click(Gtk::Widget& widget, double x, double y);
// Two clicks `seconds` apart at a point of a widget, as a double click.
void doubleClick(Gtk::Widget& widget, double x, double y, double seconds = 0.1);
// Presses the first button at one point of a widget, moves to another in
// small steps as a hand does, and releases it there: a drag and drop.
void drag(Gtk::Widget& widget, double fromX, double fromY, double toX, double toY);
// Drags `file` from a small window of its own, as a file manager does, and
// drops it in the middle of `target`; `hovering` runs while it is over the
// target, before the button is released. Returns once the drag is over.
void dragFileOnto(const std::filesystem::path& file, Gtk::Widget& target,
                  const std::function<void()>& hovering = {});
// Types text into the window that has the focus.
void typeText(Gtk::Window& window, const std::string& text);

// Runs a program to its end and returns its exit status (-1 if it could not
// start); its output goes to `output` when given.
int runProgram(const std::vector<std::string>& argv, std::string* output = nullptr);
// Saves the whole screen as build/artifacts/<name>.png, for a person to look at.
void screenshot(const std::string& name);

std::filesystem::path examplesDir();

// Every widget under `root` (itself included) that `match` accepts, in
// tree order.
std::vector<GtkWidget*> findWidgets(GtkWidget* root, const std::function<bool(GtkWidget*)>& match);

// Shown controls under `root` that a screen reader reads as `name`
// (labels, which read their own text, are left out).
std::vector<Gtk::Widget*> named(Gtk::Widget& root, const std::string& name);
// A click in the middle of a widget.
void clickMiddle(Gtk::Widget& widget);
// Whether a shown label under `root` reads exactly `text`.
bool showsText(Gtk::Widget& root, const std::string& text);

// Tests of the application's windows: skipped without a display, with no
// remembered consent at the start and no window left at the end.
class WindowTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    // A window for the deck, once it is on screen.
    DeckWindow& open(Deck deck);
};

}  // namespace lectern::testing
