// The slide inspector driven as a presenter does: layout and position with
// the pointer, the "Next" route, skipping, the web page's profile; undo, and
// the saved package read back.

#include <gtest/gtest.h>

#include "editor/platform/deck_window.h"
#include "editor/platform/slide_inspector.h"
#include "gui_harness.h"
#include "model/deck_package.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

using testing::app;
using testing::named;
using testing::clickMiddle;
using testing::pumpUntil;


template <class Widget>
Widget* one(Gtk::Widget& root, const std::string& name) {
    auto found = named(root, name);
    return found.size() == 1 ? dynamic_cast<Widget*>(found.front()) : nullptr;
}


// Chooses the entry titled `title` of a drop-down, as picking it from its list does.
void choose(Gtk::DropDown& dropDown, const std::string& title) {
    auto list = std::dynamic_pointer_cast<Gtk::StringList>(dropDown.get_model());
    ASSERT_TRUE(list);
    for (guint i = 0; i < list->get_n_items(); ++i) {
        if (list->get_string(i).raw() == title) {
            dropDown.set_selected(i);
            return;
        }
    }
    ADD_FAILURE() << "no entry " << title;
}

std::string shown(Gtk::DropDown& dropDown) {
    auto list = std::dynamic_pointer_cast<Gtk::StringList>(dropDown.get_model());
    return list && dropDown.get_selected() < list->get_n_items() ? list->get_string(dropDown.get_selected()).raw() : "";
}

class SlideInspectorTest : public testing::WindowTest {};

TEST_F(SlideInspectorTest, LayoutPositionRouteSkipAndProfileUndoneAndSaved) {
    Deck deck;
    Slide intro = Slide::make(SlideLayout::regular);
    intro.title = "Intro";
    Slide web = Slide::make(SlideLayout::web);
    web.title = "Demo";
    web.url = "http://127.0.0.1:9/";
    Slide end = Slide::make(SlideLayout::regular);
    end.title = "End";
    BrowserProfile work{Uuid::random(), "Work"};
    deck.browserProfiles = {work};
    deck.slides = {intro, web, end};
    testing::TempDir dir;
    auto package = dir / "Inspector.lectern";
    ASSERT_TRUE(DeckPackage::write(deck, package, package, {}));
    DeckWindow* opened = app().openDeck(package);
    ASSERT_NE(opened, nullptr);
    DeckWindow& window = *opened;
    ASSERT_TRUE(pumpUntil([&] { return window.get_mapped(); }));
    auto slide = [&](std::size_t i) { return window.deck().slides[i]; };

    SlideInspector* inspector = nullptr;
    ASSERT_TRUE(pumpUntil([&] {
        auto found = testing::findWidgets(GTK_WIDGET(window.gobj()), [](GtkWidget* widget) {
            return dynamic_cast<SlideInspector*>(Glib::wrap(widget)) != nullptr && gtk_widget_is_drawable(widget);
        });
        inspector = found.empty() ? nullptr : dynamic_cast<SlideInspector*>(Glib::wrap(found.front()));
        return inspector && inspector->get_width() > 0;
    }));

    // The layout switched with the pointer keeps the slide's text.
    Gtk::Widget* callout = nullptr;
    ASSERT_TRUE(pumpUntil([&] { return (callout = one<Gtk::ToggleButton>(*inspector, "Callout: Big centred title")); }));
    testing::pumpFor(0.4);  // the column slides in
    clickMiddle(*callout);
    ASSERT_TRUE(pumpUntil([&] { return slide(0).layout == SlideLayout::callout; }));
    EXPECT_EQ(window.document().undoLabel(), "Change Layout");
    EXPECT_EQ(slide(0).title, "Intro");
    EXPECT_EQ(one<Gtk::Widget>(*inspector, "Left"), nullptr) << "a callout has no positions";

    // An accent from the app's palette, then the deck's again.
    clickMiddle(*one<Gtk::ToggleButton>(*inspector, "Accent #B91C1C"));
    ASSERT_TRUE(pumpUntil([&] { return slide(0).accentHex == "#B91C1C"; }));
    EXPECT_EQ(window.document().undoLabel(), "Change Accent");
    auto* deckAccent = one<Gtk::ToggleButton>(*inspector, "Deck accent");
    EXPECT_FALSE(deckAccent->get_active());
    clickMiddle(*deckAccent);
    ASSERT_TRUE(pumpUntil([&] { return !slide(0).accentHex; }));
    EXPECT_TRUE(deckAccent->get_active());

    // On the web slide its row is open: a position chosen with the pointer.
    window.editor().state().goTo(1, false);
    Gtk::Widget* left = nullptr;
    ASSERT_TRUE(pumpUntil([&] { return (left = one<Gtk::ToggleButton>(*inspector, "Left")) && left->get_width() > 0; }));
    clickMiddle(*left);
    ASSERT_TRUE(pumpUntil([&] { return slide(1).position == SlidePosition::left; }));
    EXPECT_EQ(slide(1).layout, SlideLayout::web);
    EXPECT_EQ(slide(1).url, web.url);
    ASSERT_TRUE(pumpUntil([&] { return dynamic_cast<Gtk::ToggleButton*>(one<Gtk::Widget>(*inspector, "Left")); }));
    EXPECT_TRUE(one<Gtk::ToggleButton>(*inspector, "Left")->get_active());
    EXPECT_FALSE(one<Gtk::ToggleButton>(*inspector, "Full")->get_active());
    testing::screenshot("slide-inspector");

    // "Next" routed to the last slide, which the list names by number.
    auto* next = one<Gtk::DropDown>(*inspector, "Where \u201cNext\u201d goes from this slide");
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(shown(*next), "Linear (default)");
    choose(*next, "03 End");
    EXPECT_EQ(slide(1).nextSlideAction, end.id.string());
    EXPECT_EQ(window.document().undoLabel(), "Route Next");

    auto* skip = one<Gtk::CheckButton>(*inspector, "Skip in presentation");
    ASSERT_NE(skip, nullptr);
    skip->activate();
    EXPECT_TRUE(slide(1).isSkipped);
    EXPECT_EQ(window.document().undoLabel(), "Skip in Presentation");

    // The web page's session: the deck's profile, then a new one.
    auto* profile = one<Gtk::DropDown>(*inspector, "Browser profile");
    ASSERT_NE(profile, nullptr);
    EXPECT_EQ(shown(*profile), "Shared session");
    choose(*profile, "Work");
    EXPECT_EQ(slide(1).browserProfileId, work.id);
    EXPECT_EQ(window.document().undoLabel(), "Choose Profile");
    clickMiddle(*one<Gtk::Button>(*inspector, "Add profile"));
    ASSERT_TRUE(pumpUntil([&] { return window.deck().browserProfiles.size() == 2; }));
    EXPECT_EQ(slide(1).browserProfileId, window.deck().browserProfiles[1].id);
    EXPECT_EQ(shown(*profile), "Untitled profile");

    // Undo: the controls follow the deck.
    window.editor().undo();
    EXPECT_EQ(window.deck().browserProfiles.size(), 1u);
    EXPECT_EQ(shown(*profile), "Work");
    window.editor().undo();
    EXPECT_EQ(shown(*profile), "Shared session");
    window.editor().undo();
    EXPECT_FALSE(skip->get_active());
    window.editor().redo();
    window.editor().redo();
    EXPECT_TRUE(skip->get_active());
    EXPECT_EQ(slide(1).browserProfileId, work.id);

    // The route shown for another slide is that slide's own.
    window.editor().state().goTo(2, false);
    ASSERT_TRUE(pumpUntil([&] { return shown(*next) == "Linear (default)"; }));
    EXPECT_FALSE(profile->get_parent()->get_parent()->is_visible()) << "no profile for a regular slide";

    window.activate_action("win.save");
    ASSERT_TRUE(pumpUntil([&] { return !window.document().isDirty(); }, 10));
    auto saved = DeckPackage::read(package);
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->slides[0].layout, SlideLayout::callout);
    EXPECT_EQ(saved->slides[1].position, SlidePosition::left);
    EXPECT_EQ(saved->slides[1].nextSlideAction, end.id.string());
    EXPECT_TRUE(saved->slides[1].isSkipped);
    EXPECT_EQ(saved->slides[1].browserProfileId, work.id);
    EXPECT_EQ(saved->browserProfiles.size(), 1u);
}

}  // namespace
}  // namespace lectern
