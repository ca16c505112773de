// The slide navigator in a window of its own, driven with real pointer and
// key events through the X server: the deck order and titles it leaves in
// the document, and how it copes with a long deck.

#include "editor/platform/slide_navigator.h"

#include <gtest/gtest.h>

#include <chrono>

#include "base/glib_scheduler.h"
#include "editor/deck_edits.h"
#include "gui_harness.h"
#include "present/platform/soup_http_transport.h"

namespace lectern {
namespace {

using testing::app;
using testing::pumpFor;
using testing::pumpUntil;
using testing::screenshot;

Slide titled(std::string title) {
    Slide slide = Slide::make(SlideLayout::regular);
    slide.title = std::move(title);
    return slide;
}

std::vector<std::string> titles(const Deck& deck) {
    std::vector<std::string> found;
    for (const auto& slide : deck.slides) found.push_back(slide.title);
    return found;
}

// A navigator in a plain window, over a document of its own, with the
// window commands it calls played by simple actions.
struct NavigatorWindow {
    explicit NavigatorWindow(Deck deck)
        : document(std::move(deck), std::nullopt, [] { return double(g_get_monotonic_time()) / G_USEC_PER_SEC; }),
          state(scheduler, testing::preferences(), makeActionRunner(nullptr)),
          editor(document, state, testing::preferences(), nullptr, nullptr) {
        navigator = Gtk::make_managed<SlideNavigator>(editor, [] { return SlidePaintOptions{}; });
        auto actions = Gio::SimpleActionGroup::create();
        actions->add_action("move-slide-down", [this] {
            auto current = static_cast<std::size_t>(state.current());
            editor.edit("Move Slide", [&](Deck d) { return edits::moveSlide(std::move(d), current, current + 1); });
        });
        actions->add_action_with_parameter("add-slide", Glib::Variant<Glib::ustring>::variant_type(),
                                           [this](const Glib::VariantBase& layout) {
                                               addedLayout = Glib::VariantBase::cast_dynamic<
                                                   Glib::Variant<Glib::ustring>>(layout).get();
                                           });
        window.insert_action_group("win", actions);
        window.set_child(*navigator);
        window.set_default_size(300, 640);
        app().add_window(window);
        window.present();
        EXPECT_TRUE(pumpUntil([&] { return window.get_mapped(); }));
        pumpFor(0.3);
    }
    ~NavigatorWindow() { app().remove_window(window); }

    // The cells of the rows on screen, top to bottom, in the list's coordinates.
    std::vector<graphene_rect_t> rowFrames() {
        auto rows = testing::findWidgets(GTK_WIDGET(navigator->list().gobj()), [](GtkWidget* widget) {
            return gtk_widget_has_css_class(widget, "navigator-row") && gtk_widget_get_mapped(widget);
        });
        std::vector<graphene_rect_t> frames;
        for (auto* row : rows) {
            graphene_rect_t bounds;
            if (gtk_widget_compute_bounds(gtk_widget_get_parent(row), GTK_WIDGET(navigator->list().gobj()), &bounds)) {
                frames.push_back(bounds);
            }
        }
        std::sort(frames.begin(), frames.end(),
                  [](const auto& a, const auto& b) { return a.origin.y < b.origin.y; });
        return frames;
    }

    // The title field of a row has the keyboard (its text part, inside it).
    bool renameFieldFocused() {
        auto* focus = window.get_focus();
        return focus && focus->get_parent() && GTK_IS_ENTRY(focus->get_parent()->gobj());
    }

    GLibScheduler scheduler;
    DeckDocument document;
    PresentationState state;
    DeckEditor editor;
    Gtk::Window window;
    SlideNavigator* navigator = nullptr;
    std::string addedLayout;
};

class SlideNavigatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!testing::haveDisplay()) GTEST_SKIP() << "needs a display (run under xvfb-run)";
        app();
    }
};

TEST_F(SlideNavigatorTest, DragRenameMoveAndUndoWithRealInput) {
    Deck deck;
    deck.title = "Quarterly demo";
    for (const char* title : {"One", "Two", "Three", "Four", "Five", "Six"}) deck.slides.push_back(titled(title));
    deck.slides[2].isSkipped = true;
    deck.slides[4].isSection = true;
    deck.slides[4].sectionTitle = "Live demo";
    deck.slides[5].sectionId = deck.slides[4].id;
    NavigatorWindow w(deck);
    Gtk::ListView& list = w.navigator->list();
    auto frames = w.rowFrames();
    ASSERT_EQ(frames.size(), 6u);
    screenshot("navigator-01-deck");

    // A click chooses the slide.
    testing::click(list, frames[1].origin.x + 150, frames[1].origin.y + frames[1].size.height / 2);
    EXPECT_EQ(w.state.current(), 1);

    // "One" dragged onto the lower edge of "Three" goes after it, and shows.
    testing::drag(list, frames[0].origin.x + 60, frames[0].origin.y + frames[0].size.height / 2,
                  frames[2].origin.x + 12, frames[2].origin.y + frames[2].size.height * 0.9);
    ASSERT_TRUE(pumpUntil([&] { return w.document.deck().slides[2].title == "One"; }, 3));
    EXPECT_EQ(titles(w.document.deck()), (std::vector<std::string>{"Two", "Three", "One", "Four", "Five", "Six"}));
    EXPECT_EQ(w.document.undoLabel(), "Move Slide");
    EXPECT_EQ(w.state.current(), 2);

    // A double click on "Four" puts a field in its row; Return keeps the new title.
    pumpFor(0.5);  // the drop's click is no half of a double click
    frames = w.rowFrames();
    testing::doubleClick(list, frames[3].origin.x + 150, frames[3].origin.y + frames[3].size.height / 2);
    ASSERT_TRUE(pumpUntil([&] { return w.renameFieldFocused(); }, 2));
    EXPECT_EQ(w.state.current(), 3);
    testing::typeText(w.window, "Pricing");
    screenshot("navigator-02-renaming");
    testing::pressKeys(w.window, {"Return"});
    EXPECT_EQ(w.document.deck().slides[3].title, "Pricing");
    EXPECT_EQ(w.document.undoLabel(), "Rename Slide");

    // The keyboard stays on the list: Alt+Down moves the slide, Up chooses
    // the one above.
    testing::pressKeys(w.window, {"alt+Down"});
    EXPECT_EQ(titles(w.document.deck()), (std::vector<std::string>{"Two", "Three", "One", "Five", "Pricing", "Six"}));
    EXPECT_EQ(w.state.current(), 4);
    testing::pressKeys(w.window, {"Up"});
    EXPECT_EQ(w.state.current(), 3);
    EXPECT_EQ(list.get_model()->get_selection()->get_minimum(), 3u);

    // A right click makes its row current before the menu of slide commands opens.
    frames = w.rowFrames();
    testing::movePointer(list, frames[0].origin.x + 150, frames[0].origin.y + frames[0].size.height / 2);
    testing::runProgram({"xdotool", "click", "3"});
    auto menuShown = [] {
        for (auto* toplevel : Gtk::Window::list_toplevels()) {
            auto menus = testing::findWidgets(GTK_WIDGET(toplevel->gobj()), [](GtkWidget* widget) {
                return GTK_IS_POPOVER_MENU(widget) && gtk_widget_get_mapped(widget);
            });
            if (!menus.empty()) return true;
        }
        return false;
    };
    ASSERT_TRUE(pumpUntil(menuShown, 2));
    EXPECT_EQ(w.state.current(), 0);
    screenshot("navigator-03-menu");
    testing::pressKeys(w.window, {"Escape"});
    EXPECT_TRUE(pumpUntil([&] { return !menuShown(); }, 2));

    // The new slide picker hands the chosen layout to the window.
    w.navigator->showNewSlidePicker();
    pumpFor(0.3);
    screenshot("navigator-04-new-slide");
    testing::pressKeys(w.window, {"Down", "Down", "Down", "Return"});
    EXPECT_EQ(w.addedLayout, "web");

    // Undo takes back the move, the rename and the drop, in that order.
    for (int step = 0; step < 3; ++step) w.document.undo();
    pumpFor(0.2);
    EXPECT_EQ(w.document.deck(), deck);
    EXPECT_EQ(w.rowFrames().size(), 6u);
}

TEST_F(SlideNavigatorTest, ThousandSlidesScrollAndChangeRowByRow) {
    Deck deck;
    for (int i = 0; i < 1000; ++i) deck.slides.push_back(titled("Slide " + std::to_string(i + 1)));
    auto start = std::chrono::steady_clock::now();
    NavigatorWindow w(deck);
    auto model = std::dynamic_pointer_cast<Gio::ListModel>(w.navigator->list().get_model());
    ASSERT_TRUE(model);
    ASSERT_EQ(model->get_n_items(), 1000u);

    // Going to the last slide scrolls it into view.
    w.state.goTo(999, false);
    ASSERT_TRUE(pumpUntil([&] {
        auto rows = testing::findWidgets(GTK_WIDGET(w.navigator->list().gobj()), [](GtkWidget* widget) {
            return GTK_IS_LABEL(widget) && gtk_widget_get_mapped(widget) &&
                   std::string(gtk_label_get_text(GTK_LABEL(widget))) == "Slide 1000";
        });
        return !rows.empty();
    }));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_LE(w.rowFrames().size(), 40u);  // rows are made for the screen, not the deck
    screenshot("navigator-05-long-deck");

    // A move from the top to the bottom changes two rows, not a thousand.
    std::size_t changedRows = 0;
    model->signal_items_changed().connect(
        [&](guint, guint removed, guint added) { changedRows += removed + added; });
    w.editor.edit("Move Slide", [](Deck d) { return edits::moveSlide(std::move(d), 0, 999); });
    EXPECT_EQ(changedRows, 2u);
    auto last = std::dynamic_pointer_cast<Gtk::StringObject>(model->get_object(999));
    ASSERT_TRUE(last);
    EXPECT_EQ(last->get_string().raw(), deck.slides[0].id.string());
}

}  // namespace
}  // namespace lectern
