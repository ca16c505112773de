// Shortcuts right after a sheet or window of the application closes: each
// is opened from the main menu (or, for the consent sheet, by presenting),
// closed as a person would, and then keys are typed with no help: they go
// to whichever window the X server gives them to, as a person's would.
#include <gtest/gtest.h>

#include <adwaita.h>

#include "editor/platform/deck_window.h"
#include "editor/platform/editor_layout.h"
#include "editor/platform/inspector_column.h"
#include "web/platform/web_check_sheet.h"
#include "gui_harness.h"

namespace lectern {
namespace {

using testing::app;
using testing::pumpFor;
using testing::pumpUntil;

GtkWidget* find(GtkWidget* root, const std::function<bool(GtkWidget*)>& match) {
    auto found = testing::findWidgets(root, match);
    return found.empty() ? nullptr : found.front();
}

// Types keys into whatever window has the keyboard focus now.
void typeKeys(const std::vector<std::string>& keys) {
    std::vector<std::string> argv{"xdotool", "key", "--delay", "40"};
    argv.insert(argv.end(), keys.begin(), keys.end());
    testing::runProgram(argv);
    pumpFor(0.3);
}

class KeysAfterSheetsTest : public testing::WindowTest {
protected:
    DeckWindow& openWithAction() {
        Deck deck;
        for (int n = 0; n < 6; ++n) deck.slides.push_back(Slide::make(SlideLayout::regular));
        SlideAction action;
        action.name = "Reset";
        action.request.method = "POST";
        action.request.urlString = "http://127.0.0.1:1/reset";
        deck.slides[1].actions.push_back(action);  // made elsewhere: presenting asks first
        DeckWindow& window = open(std::move(deck));
        testing::focus(window);
        return window;
    }

    // Opens the main menu as its button does, walks to `submenu` (if any)
    // and picks `item`, as a person does with the pointer.
    void chooseFromMenu(DeckWindow& window, const std::string& submenu, const std::string& item) {
        auto* button = find(GTK_WIDGET(window.gobj()), [](GtkWidget* widget) {
            const char* tooltip = gtk_widget_get_tooltip_text(widget);
            return GTK_IS_MENU_BUTTON(widget) && tooltip && std::string(tooltip) == "Main Menu";
        });
        ASSERT_NE(button, nullptr);
        gtk_menu_button_popup(GTK_MENU_BUTTON(button));
        GtkPopover* popover = gtk_menu_button_get_popover(GTK_MENU_BUTTON(button));
        ASSERT_TRUE(pumpUntil([&] { return popover && gtk_widget_get_mapped(GTK_WIDGET(popover)); }));
        auto labelled = [](const std::string& text) {
            return [text](GtkWidget* widget) {
                if (!gtk_widget_get_mapped(widget) || !gtk_widget_get_sensitive(widget)) return false;
                if (std::string(G_OBJECT_TYPE_NAME(widget)) != "GtkModelButton") return false;
                char* label = nullptr;
                g_object_get(widget, "text", &label, nullptr);
                bool same = label && text == label;
                g_free(label);
                return same;
            };
        };
        if (!submenu.empty()) {
            GtkWidget* opener = nullptr;
            ASSERT_TRUE(pumpUntil([&] { return (opener = find(GTK_WIDGET(popover), labelled(submenu))); }));
            gtk_widget_activate(opener);
            pumpFor(0.3);
        }
        GtkWidget* entry = nullptr;
        ASSERT_TRUE(pumpUntil([&] { return (entry = find(GTK_WIDGET(popover), labelled(item))); })) << item;
        gtk_widget_activate(entry);
        pumpFor(0.3);
    }

    // The deck window hears Ctrl+Right and Ctrl+Left at once.
    void expectShortcutsWork(DeckWindow& window, const std::string& after) {
        ASSERT_TRUE(pumpUntil([&] { return window.is_active(); }, 3)) << "the deck window has the focus after " << after;
        std::int64_t before = window.state().current();
        typeKeys({"ctrl+Right"});
        EXPECT_EQ(window.state().current(), before + 1) << "Ctrl+Right after " << after;
        typeKeys({"ctrl+Left"});
        EXPECT_EQ(window.state().current(), before) << "Ctrl+Left after " << after;
    }
};

TEST_F(KeysAfterSheetsTest, EveryShortcutWorksAtOnceAfterASheetCloses) {
    DeckWindow& window = openWithAction();

    chooseFromMenu(window, "Presentation", "Check Web Slides…");
    ASSERT_TRUE(pumpUntil([&] { return window.webCheck() && window.webCheck()->get_mapped(); }));
    testing::click(window.webCheck()->doneButton(), 5, 5);
    ASSERT_TRUE(pumpUntil([&] { return window.webCheck() == nullptr; }));
    expectShortcutsWork(window, "the web check's Done");

    // "Browser Profiles…" shows the inspector's deck page, in the window.
    chooseFromMenu(window, "Presentation", "Browser Profiles…");
    EXPECT_EQ(window.layout().inspector().focus(), InspectorColumn::Focus::deck);
    expectShortcutsWork(window, "Browser Profiles");

    for (const char* item : {"Keyboard Shortcuts", "About Lectern"}) {
        chooseFromMenu(window, "", item);
        Gtk::Window* opened = nullptr;
        ASSERT_TRUE(pumpUntil([&] {
            for (auto* toplevel : Gtk::Window::list_toplevels()) {
                if (toplevel != &window && toplevel->get_mapped()) opened = toplevel;
            }
            return opened != nullptr;
        })) << item;
        testing::focus(*opened);  // as a person's click on it would
        typeKeys({"Escape"});
        expectShortcutsWork(window, item);
    }

    // Presenting asks about the deck's actions; declining goes back to the
    // talk, whose keys work at once.
    typeKeys({"ctrl+shift+p"});
    ASSERT_TRUE(pumpUntil([&] { return window.trustReview() != nullptr; }));
    pumpFor(0.3);
    typeKeys({"Escape"});
    ASSERT_TRUE(pumpUntil([&] { return window.trustReview() == nullptr; }));
    ASSERT_TRUE(pumpUntil([&] { return window.is_active(); }, 3));
    typeKeys({"Right"});
    EXPECT_EQ(window.state().current(), 1) << "Right advances while presenting";
    typeKeys({"ctrl+shift+p"});
    EXPECT_FALSE(window.state().presenting());
    typeKeys({"ctrl+w"});
    EXPECT_TRUE(pumpUntil([] { return app().get_windows().empty(); })) << "Ctrl+W closes the window";
}

TEST_F(KeysAfterSheetsTest, CtrlQQuitsFromASheet) {
    DeckWindow& window = openWithAction();
    chooseFromMenu(window, "Presentation", "Check Web Slides…");
    ASSERT_TRUE(pumpUntil([&] { return window.webCheck() && window.webCheck()->is_active(); }));
    typeKeys({"ctrl+q"});
    EXPECT_TRUE(pumpUntil([] { return app().get_windows().empty(); }));
}

}  // namespace
}  // namespace lectern
