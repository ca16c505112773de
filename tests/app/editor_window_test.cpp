// Making a deck in the window as a person does: keys, clicks, the window's
// actions over D-Bus, and the package read back from disk.

#include <gtest/gtest.h>

#include <adwaita.h>

#include <chrono>
#include <future>

#include "editor/platform/deck_window.h"
#include "gui_harness.h"
#include "model/deck_package.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

using testing::app;
using testing::click;
using testing::pressKeys;
using testing::pumpFor;
using testing::pumpUntil;

Deck deckOf(std::initializer_list<const char*> titles) {
    Deck deck;
    for (const char* title : titles) {
        Slide slide = Slide::make(SlideLayout::regular);
        slide.title = title;
        deck.slides.push_back(slide);
    }
    return deck;
}

std::vector<std::string> titles(const Deck& deck) {
    std::vector<std::string> out;
    for (const auto& slide : deck.slides) out.push_back(slide.title);
    return out;
}

// Activates one of the window's actions through the session bus, as a
// remote-control script does; the main loop runs meanwhile to answer it.
int callOverDBus(DeckWindow& window, const std::string& action, const std::string& parameter) {
    std::string bus = g_dbus_connection_get_unique_name(g_application_get_dbus_connection(G_APPLICATION(app().gobj())));
    std::string path = "/com/corvane/Lectern/window/" + std::to_string(window.get_id());
    auto call = std::async(std::launch::async, [=] {
        return testing::runProgram({"gdbus", "call", "--session", "--dest", bus, "--object-path", path, "--method",
                                    "org.gtk.Actions.Activate", action, parameter, "{}"});
    });
    pumpUntil([&] { return call.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }, 20);
    return call.get();
}

GtkWidget* buttonLabelled(GtkWidget* root, const std::string& label) {
    auto found = testing::findWidgets(root, [&](GtkWidget* widget) {
        return GTK_IS_BUTTON(widget) && gtk_button_get_label(GTK_BUTTON(widget)) &&
               label == gtk_button_get_label(GTK_BUTTON(widget));
    });
    return found.empty() ? nullptr : found.front();
}

class EditorWindowTest : public testing::WindowTest {};

TEST_F(EditorWindowTest, AddRenameUndoDeleteAndSaveAreOnDisk) {
    testing::TempDir dir;
    auto package = dir / "Talk.lectern";
    ASSERT_TRUE(DeckPackage::write(deckOf({"Hello", "Demo", "Thanks"}), package, package, {}));
    DeckWindow* opened = app().openDeck(package);
    ASSERT_NE(opened, nullptr);
    DeckWindow& window = *opened;
    ASSERT_TRUE(pumpUntil([&] { return window.get_mapped(); }));
    pumpFor(0.3);

    // A callout after the current slide, over D-Bus; the window shows it.
    ASSERT_EQ(callOverDBus(window, "add-slide", "[<'callout'>]"), 0);
    ASSERT_TRUE(pumpUntil([&] { return window.deck().slides.size() == 4; }));
    EXPECT_EQ(window.deck().slides[1].layout, SlideLayout::callout);
    EXPECT_EQ(window.state().current(), 1);

    // Renamed in the navigator with F2, typed and Return.
    pressKeys(window, {"F2"});
    pressKeys(window, {"ctrl+a", "I", "n", "t", "r", "o", "Return"});
    ASSERT_TRUE(pumpUntil([&] { return window.deck().slides[1].title == "Intro"; }));

    // Moved down with the keyboard, then the move undone with Ctrl+Z: the
    // slide stays the current one throughout.
    pressKeys(window, {"alt+Down"});
    EXPECT_EQ(titles(window.deck()), (std::vector<std::string>{"Hello", "Demo", "Intro", "Thanks"}));
    EXPECT_EQ(window.state().current(), 2);
    pressKeys(window, {"ctrl+z"});
    EXPECT_EQ(titles(window.deck()), (std::vector<std::string>{"Hello", "Intro", "Demo", "Thanks"}));
    EXPECT_EQ(window.state().current(), 1);

    // Deleting asks first, with the slide's title.
    pressKeys(window, {"ctrl+shift+Delete"});
    ASSERT_TRUE(pumpUntil([&] { return window.deleteConfirmation() != nullptr; }));
    EXPECT_NE(std::string(adw_message_dialog_get_body(window.deleteConfirmation())).find("“Intro”"), std::string::npos);
    testing::screenshot("editor-delete-slide");
    GtkWidget* remove = buttonLabelled(GTK_WIDGET(window.deleteConfirmation()), "Delete Slide");
    ASSERT_NE(remove, nullptr);
    click(*Glib::wrap(remove), 10, 10);
    ASSERT_TRUE(pumpUntil([&] { return window.deck().slides.size() == 3; }));
    EXPECT_EQ(titles(window.deck()), (std::vector<std::string>{"Hello", "Demo", "Thanks"}));

    // Ctrl+G groups the current slide with the one above into a section.
    ASSERT_EQ(window.state().current(), 1);
    pressKeys(window, {"ctrl+g"});
    ASSERT_TRUE(window.deck().slides[0].isSection);
    EXPECT_EQ(window.deck().slides[1].sectionId, window.deck().slides[0].id);

    // Saved elsewhere over D-Bus: the window follows the new package.
    auto copy = dir / "Copy.lectern";
    ASSERT_EQ(callOverDBus(window, "save-to", "[<'" + copy.string() + "'>]"), 0);
    ASSERT_TRUE(pumpUntil([&] { return window.package() == copy; }));
    auto written = DeckPackage::read(copy);
    ASSERT_TRUE(written);
    EXPECT_EQ(titles(*written), titles(window.deck()));
    EXPECT_EQ(written->slides[1].sectionId, window.deck().slides[0].id);
    package = copy;

    // Ctrl+S: what is on disk is what the window shows.
    pressKeys(window, {"ctrl+s"});
    ASSERT_TRUE(pumpUntil([&] {
        auto saved = DeckPackage::read(package);
        return saved && titles(*saved) == titles(window.deck()) && !window.document().isDirty();
    }));
    testing::screenshot("editor-window");
}

TEST_F(EditorWindowTest, ADraftAsksWhereOnItsFirstSaveAndFollowsThePackage) {
    testing::TempDir dir;
    app().activate_action("new-deck");
    DeckWindow* window = nullptr;
    ASSERT_TRUE(pumpUntil([&] {
        for (auto* candidate : app().get_windows()) {
            if (auto* deckWindow = dynamic_cast<DeckWindow*>(candidate); deckWindow && deckWindow->get_mapped()) {
                window = deckWindow;
            }
        }
        return window != nullptr;
    }));
    ASSERT_FALSE(window->package());
    ASSERT_EQ(window->deck().slides.size(), 1u);
    window->editor().editCurrentSlide("Typing", [](Slide& slide) { slide.title = "Draft"; });

    // Save As… offers "Untitled Deck.lectern"; a whole path typed over it.
    auto target = dir / "Mine.lectern";
    pressKeys(*window, {"ctrl+shift+s"});
    pumpFor(1.0);
    Gtk::Window* chooser = nullptr;
    ASSERT_TRUE(pumpUntil([&] {
        for (auto* candidate : app().get_windows()) {
            if (dynamic_cast<DeckWindow*>(candidate) == nullptr && candidate->get_mapped()) chooser = candidate;
        }
        return chooser != nullptr;
    }));
    pressKeys(*chooser, {"ctrl+a"});
    testing::runProgram({"xdotool", "type", "--delay", "15", target.string()});
    pressKeys(*chooser, {"Return"});
    ASSERT_TRUE(pumpUntil([&] { return window->package() == target; }, 10));
    auto saved = DeckPackage::read(target);
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->slides[0].title, "Draft");
    EXPECT_FALSE(window->document().isDirty());
}

}  // namespace
}  // namespace lectern
