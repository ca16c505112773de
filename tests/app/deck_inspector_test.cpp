// The Deck page of the inspector, used as a person does: the title typed,
// a theme, an accent and a palette colour picked with the pointer, the talk
// length typed, a browser profile added, renamed in place and deleted; each
// change undoable and saved into the package.

#include <gtest/gtest.h>

#include <adwaita.h>

#include "editor/platform/deck_inspector.h"
#include "editor/platform/deck_window.h"
#include "editor/platform/editor_layout.h"
#include "editor/platform/inspector_column.h"
#include "editor/platform/profiles_section.h"
#include "gui_harness.h"
#include "model/deck_package.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

using testing::click;
using testing::pressKeys;
using testing::pumpFor;
using testing::clickMiddle;
using testing::pumpUntil;

Gtk::Widget* withTooltip(Gtk::Widget& root, const std::string& tooltip) {
    auto found = testing::findWidgets(root.gobj(), [&](GtkWidget* widget) {
        const char* text = gtk_widget_get_tooltip_text(widget);
        return text && tooltip == text && gtk_widget_get_mapped(widget);
    });
    return found.empty() ? nullptr : Glib::wrap(found.front());
}


class DeckInspectorTest : public testing::WindowTest {};

TEST_F(DeckInspectorTest, EveryDeckSettingIsAnUndoableEditThatIsSaved) {
    testing::TempDir dir;
    auto package = dir / "Talk.lectern";
    Deck start;
    start.slides = {Slide::make(SlideLayout::regular)};
    ASSERT_TRUE(DeckPackage::write(start, package, package, {}));
    DeckWindow* opened = testing::app().openDeck(package);
    ASSERT_NE(opened, nullptr);
    DeckWindow& window = *opened;
    ASSERT_TRUE(pumpUntil([&] { return window.get_mapped(); }));
    testing::focus(window);

    // "Browser Profiles…" shows the deck's page.
    window.activate_action("win.browser-profiles");
    InspectorColumn& column = window.layout().inspector();
    ASSERT_EQ(column.focus(), InspectorColumn::Focus::deck);
    auto* inspector = dynamic_cast<DeckInspector*>(column.deckPage().get_first_child());
    ASSERT_NE(inspector, nullptr);
    ASSERT_TRUE(pumpUntil([&] { return inspector->get_mapped(); }));
    pumpFor(0.3);

    // The title, typed: one undo step for the whole word.
    clickMiddle(inspector->titleEntry());
    testing::typeText(window, "Q3 Review");
    ASSERT_TRUE(pumpUntil([&] { return window.deck().title == "Q3 Review"; }));
    window.editor().undo();
    EXPECT_EQ(window.deck().title, std::nullopt);
    EXPECT_EQ(inspector->titleEntry().get_text(), "") << "the field follows an undo";
    window.editor().redo();
    EXPECT_EQ(inspector->titleEntry().get_text(), "Q3 Review");

    // The theme, by its row.
    clickMiddle(*inspector->themeList().get_row_at_index(3));
    EXPECT_EQ(window.deck().theme, Theme::dark);
    window.editor().undo();
    EXPECT_EQ(window.deck().theme, Theme::clinical);
    EXPECT_EQ(inspector->themeList().get_selected_row()->get_index(), 0);
    clickMiddle(*inspector->themeList().get_row_at_index(1));
    EXPECT_EQ(window.deck().theme, Theme::editorial);

    // A palette swatch from its menu (the menu's colour chosen as the
    // keyboard does: the pointer helper cannot reach into a popover).
    clickMiddle(inspector->swatch(2));
    Gtk::Widget* green = nullptr;
    ASSERT_TRUE(pumpUntil([&] { return (green = withTooltip(inspector->swatch(2), "#047857")); }));
    gtk_widget_activate(green->gobj());
    EXPECT_TRUE(pumpUntil([&] { return window.deck().palette.swatches()[2] == std::optional<std::string>("#047857"); }));
    ASSERT_TRUE(pumpUntil([&] { return !withTooltip(inspector->swatch(2), "#047857"); })) << "the menu closes";

    // The accent from the application's palette, then back to the theme's.
    Gtk::Widget* red = withTooltip(*inspector, "#B91C1C");
    ASSERT_NE(red, nullptr);
    clickMiddle(*red);
    EXPECT_EQ(window.deck().accentHex, std::optional<std::string>("#B91C1C"));
    EXPECT_EQ(inspector->accentValue().get_text(), "#B91C1C");

    // The talk length: 0 means at least 1; text that is no number reverts.
    Gtk::Entry& talk = inspector->talkLengthEntry();
    clickMiddle(talk);
    testing::typeText(window, "0");
    pressKeys(window, {"Return"});
    EXPECT_EQ(window.deck().targetMinutes, std::optional<std::int64_t>(1));
    EXPECT_EQ(talk.get_text(), "1");
    pressKeys(window, {"ctrl+a"});
    testing::typeText(window, "soon");
    pressKeys(window, {"Return"});
    EXPECT_EQ(talk.get_text(), "1");
    pressKeys(window, {"ctrl+a"});
    testing::typeText(window, "25");
    pressKeys(window, {"Tab"});  // leaving the field commits it too
    EXPECT_EQ(window.deck().targetMinutes, std::optional<std::int64_t>(25));

    // A profile: added, renamed in place with a double click.
    ProfilesSection& profiles = inspector->profiles();
    Gtk::Widget* add = withTooltip(profiles, "Add Profile");
    ASSERT_NE(add, nullptr);
    clickMiddle(*add);
    ASSERT_EQ(window.deck().browserProfiles.size(), 1u);
    Gtk::ListBoxRow* row = profiles.list().get_row_at_index(0);
    ASSERT_NE(row, nullptr);
    pumpFor(0.2);
    EXPECT_EQ(row->get_tooltip_text(), "Click to select — double-click to edit");
    testing::doubleClick(*row, 30, row->get_height() / 2.0);
    ASSERT_TRUE(pumpUntil([&] { return dynamic_cast<Gtk::Text*>(window.get_focus()) != nullptr; }));
    testing::typeText(window, "Work");
    pressKeys(window, {"Return"});
    ASSERT_EQ(window.deck().browserProfiles.at(0).name, "Work");
    testing::screenshot("deck-inspector");

    // Deleting asks first; the undo brings the profile back.
    Gtk::Widget* remove = withTooltip(profiles, "Delete Profile…");
    ASSERT_NE(remove, nullptr);
    clickMiddle(*remove);
    ASSERT_TRUE(pumpUntil([&] { return profiles.confirmation() != nullptr; }));
    EXPECT_STREQ(adw_message_dialog_get_heading(profiles.confirmation()), "Delete profile “Work”?");
    EXPECT_STREQ(adw_message_dialog_get_body(profiles.confirmation()), "Its saved logins and site data will be erased.");
    adw_message_dialog_response(profiles.confirmation(), "delete");
    EXPECT_TRUE(window.deck().browserProfiles.empty());
    EXPECT_EQ(profiles.list().get_row_at_index(0), nullptr);
    window.editor().undo();
    ASSERT_EQ(window.deck().browserProfiles.size(), 1u);
    EXPECT_NE(withTooltip(profiles, "Delete Profile…"), nullptr) << "its row is back";

    // Saved: the package holds every setting.
    window.activate_action("win.save");
    std::optional<Deck> saved;
    ASSERT_TRUE(pumpUntil([&] {
        auto read = DeckPackage::read(package);
        if (read) saved = *read;
        return saved && !window.document().isDirty();
    }));
    EXPECT_EQ(saved->title, std::optional<std::string>("Q3 Review"));
    EXPECT_EQ(saved->theme, Theme::editorial);
    EXPECT_EQ(saved->accentHex, std::optional<std::string>("#B91C1C"));
    EXPECT_EQ(saved->palette.swatches()[2], std::optional<std::string>("#047857"));
    EXPECT_EQ(saved->targetMinutes, std::optional<std::int64_t>(25));
    ASSERT_EQ(saved->browserProfiles.size(), 1u);
    EXPECT_EQ(saved->browserProfiles[0].name, "Work");
}

}  // namespace
}  // namespace lectern
