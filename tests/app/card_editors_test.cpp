// Decision cards edited on the stage with real keys and pointer: adding,
// typing, routing, dragging, undoing, and the saved package read back.

#include <gtest/gtest.h>

#include <algorithm>

#include "editor/platform/deck_window.h"
#include "editor/platform/presenting_stage.h"
#include "gui_harness.h"
#include "model/deck_package.h"
#include "slides/platform/stage_view.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

using testing::app;
using testing::named;
using testing::clickMiddle;
using testing::click;
using testing::pressKeys;
using testing::pumpFor;
using testing::pumpUntil;



std::vector<std::string> labels(const Deck& deck) {
    std::vector<std::string> out;
    for (const auto& link : deck.slides[0].links) out.push_back(link.label);
    return out;
}

SlideLink card(const char* label, std::string target = {}) {
    SlideLink link;
    link.label = label;
    link.targetId = std::move(target);
    return link;
}

class CardEditorsTest : public testing::WindowTest {};

TEST_F(CardEditorsTest, AddTypeRouteDragUndoAndSave) {
    Deck deck;
    Slide question = Slide::make(SlideLayout::decisions);
    question.title = "Where next?";
    Slide left = Slide::make(SlideLayout::regular);
    left.title = "Left";
    Slide untitled = Slide::make(SlideLayout::regular);
    question.links = {card("Alpha", left.id.string()), card("Beta")};
    deck.slides = {question, left, untitled};
    testing::TempDir dir;
    auto package = dir / "Cards.lectern";
    ASSERT_TRUE(DeckPackage::write(deck, package, package, {}));
    DeckWindow* opened = app().openDeck(package);
    ASSERT_NE(opened, nullptr);
    DeckWindow& window = *opened;
    ASSERT_TRUE(pumpUntil([&] { return window.get_mapped(); }));
    StageView& stage = window.stage();
    auto links = [&] { return window.deck().slides[0].links; };

    // "Add option": a new card, selected, its label field focused with the
    // text selected, so typing replaces "New option" in one undo step.
    ASSERT_TRUE(pumpUntil([&] {
        auto add = named(window, "Add option");
        return add.size() == 1 && add.front()->get_width() > 0;
    }));
    clickMiddle(*named(window, "Add option").front());
    ASSERT_TRUE(pumpUntil([&] { return links().size() == 3; }));
    EXPECT_EQ(links()[2].label, "New option");
    EXPECT_EQ(stage.selectedCard(), links()[2].id);
    ASSERT_TRUE(pumpUntil([&] {
        auto titles = named(window, "Option title");
        return std::any_of(titles.begin(), titles.end(), [](Gtk::Widget* field) { return field->has_focus(); });
    }));
    testing::typeText(window, "Gamma");
    ASSERT_TRUE(pumpUntil([&] { return links()[2].label == "Gamma"; })) << links()[2].label;
    pressKeys(window, {"Return"});
    EXPECT_EQ(window.document().undoLabel(), "Typing");
    window.editor().undo();
    EXPECT_EQ(links()[2].label, "New option");
    window.editor().redo();
    EXPECT_EQ(links()[2].label, "Gamma");

    // Beta and Gamma lead nowhere and say so.
    ASSERT_TRUE(pumpUntil([&] { return named(window, "No target").size() == 2; }));

    // Beta routed through its menu with the pointer.
    auto fields = named(window, "Option title");
    auto beta = std::find_if(fields.begin(), fields.end(), [](Gtk::Widget* field) {
        return dynamic_cast<Gtk::Text*>(field) && dynamic_cast<Gtk::Text*>(field)->get_text() == "Beta";
    });
    ASSERT_NE(beta, fields.end());
    clickMiddle(**beta);
    ASSERT_TRUE(pumpUntil([&] { return stage.selectedCard() == links()[1].id; }));
    pressKeys(window, {"Return"});
    auto routes = named(window, "Route to");
    ASSERT_EQ(routes.size(), 1u);
    auto* route = dynamic_cast<Gtk::MenuButton*>(routes.front());
    ASSERT_NE(route, nullptr);
    EXPECT_EQ(route->get_label(), "Set target…");
    clickMiddle(*route);
    Gtk::Widget* entry = nullptr;
    ASSERT_TRUE(pumpUntil([&] {
        auto found = testing::findWidgets(GTK_WIDGET(route->gobj()), [](GtkWidget* widget) {
            return GTK_IS_LABEL(widget) && gtk_widget_is_drawable(widget) &&
                   std::string(gtk_label_get_text(GTK_LABEL(widget))) == "Left";
        });
        entry = found.empty() ? nullptr : Glib::wrap(found.front());
        return entry && entry->get_width() > 0;
    }));
    pumpFor(0.5);  // the menu slides in
    // The menu is a surface of its own: its entry's point in the window's
    // coordinates goes through the popup's position.
    auto* popover = route->get_popover();
    graphene_point_t middle{entry->get_width() / 2.0f, entry->get_height() / 2.0f}, inPopover{};
    ASSERT_TRUE(gtk_widget_compute_point(entry->gobj(), GTK_WIDGET(popover->gobj()), &middle, &inPopover));
    double popoverX = 0, popoverY = 0, windowX = 0, windowY = 0;
    gtk_native_get_surface_transform(GTK_NATIVE(popover->gobj()), &popoverX, &popoverY);
    gtk_native_get_surface_transform(GTK_NATIVE(window.gobj()), &windowX, &windowY);
    GdkPopup* popup = GDK_POPUP(gtk_native_get_surface(GTK_NATIVE(popover->gobj())));
    click(window, gdk_popup_get_position_x(popup) + popoverX + inPopover.x - windowX,
          gdk_popup_get_position_y(popup) + popoverY + inPopover.y - windowY);
    ASSERT_TRUE(pumpUntil([&] { return links()[1].targetId == left.id.string(); }));
    EXPECT_EQ(window.document().undoLabel(), "Route Option");
    ASSERT_TRUE(pumpUntil([&] { return route->get_label() == "Left"; }));
    EXPECT_EQ(named(window, "No target").size(), 1u);

    // Alpha dragged onto Gamma, from a point of its card outside its text:
    // Alpha takes Gamma's place and the drag selects nothing.
    auto options = window.presentingStage().paintOptions();
    options.editing = true;
    auto geometry = SlidePainter::geometry(window.deck().slides[0], options);
    ASSERT_EQ(geometry.cardBoxes.size(), 3u);
    Rect area = stage.slideArea();
    auto fit = SlidePainter::fit(area.width, area.height);
    auto view = [&](double x, double y) {
        return std::pair{area.x + fit.offsetX + x * fit.scale, area.y + fit.offsetY + y * fit.scale};
    };
    // A point of a card under its label line, where no field lies.
    auto grip = [&](const CardBox& box) {
        double y = box.label.rect.y + box.label.rect.height + 4;
        EXPECT_LT(y, box.frame.y + box.frame.height);
        return view(box.frame.x + box.frame.width / 2, y);
    };
    auto [x0, y0] = grip(geometry.cardBoxes[0]);
    auto [x1, y1] = grip(geometry.cardBoxes[2]);
    testing::drag(stage, x0, y0, x1, y1);
    ASSERT_TRUE(pumpUntil([&] { return labels(window.deck()) == std::vector<std::string>{"Beta", "Gamma", "Alpha"}; }))
        << ::testing::PrintToString(labels(window.deck()));
    EXPECT_EQ(window.document().undoLabel(), "Move Option");
    EXPECT_EQ(stage.selectedCard(), links()[0].id) << "the drag is not a click";
    testing::screenshot("card-editors");

    // A drop outside every card changes nothing.
    testing::drag(stage, x1, y1, area.x + 4, area.y + area.height - 4);
    EXPECT_EQ(labels(window.deck()), (std::vector<std::string>{"Beta", "Gamma", "Alpha"}));

    window.editor().undo();
    EXPECT_EQ(labels(window.deck()), (std::vector<std::string>{"Alpha", "Beta", "Gamma"}));

    // Saved and read back: labels, order and targets.
    window.activate_action("win.save");
    ASSERT_TRUE(pumpUntil([&] { return !window.document().isDirty(); }, 10));
    auto saved = DeckPackage::read(package);
    ASSERT_TRUE(saved);
    EXPECT_EQ(labels(*saved), (std::vector<std::string>{"Alpha", "Beta", "Gamma"}));
    EXPECT_EQ(saved->slides[0].links[0].targetId, left.id.string());
    EXPECT_EQ(saved->slides[0].links[1].targetId, left.id.string());
    EXPECT_EQ(saved->slides[0].links[2].targetId, "");
}

TEST_F(CardEditorsTest, NineCardsOfferNoAddingAndADeletedTargetIsMarkedAndKept) {
    Deck deck;
    Slide question = Slide::make(SlideLayout::decisions);
    std::string deleted = Uuid::random().string();
    for (int k = 0; k < 9; ++k) question.links.push_back(card("Option", k == 0 ? deleted : std::string{}));
    question.links[0].label = "Gone";
    deck.slides = {question};
    DeckWindow& window = open(deck);
    StageView& stage = window.stage();
    auto links = [&] { return window.deck().slides[0].links; };

    ASSERT_TRUE(pumpUntil([&] { return named(window, "Target slide was deleted").size() == 1; }));
    EXPECT_EQ(named(window, "No target").size(), 8u);
    EXPECT_TRUE(named(window, "Add option").empty());

    // The marked card selected and removed with its own button: room for
    // another card again, and the other cards keep their data.
    auto fields = named(window, "Option title");
    auto gone = std::find_if(fields.begin(), fields.end(), [](Gtk::Widget* field) {
        return dynamic_cast<Gtk::Text*>(field) && dynamic_cast<Gtk::Text*>(field)->get_text() == "Gone";
    });
    ASSERT_NE(gone, fields.end());
    clickMiddle(**gone);
    ASSERT_TRUE(pumpUntil([&] { return stage.selectedCard() == links()[0].id; }));
    EXPECT_EQ(links()[0].targetId, deleted) << "a deleted target stays in the data";
    auto remove = named(window, "Remove option");
    ASSERT_EQ(remove.size(), 1u);
    clickMiddle(*remove.front());
    ASSERT_TRUE(pumpUntil([&] { return links().size() == 8; }));
    EXPECT_EQ(window.document().undoLabel(), "Remove Option");
    EXPECT_TRUE(named(window, "Target slide was deleted").empty());
    EXPECT_TRUE(pumpUntil([&] { return named(window, "Add option").size() == 1; }));
    EXPECT_TRUE(named(window, "Remove option").empty()) << "nothing is selected after the removal";
}

}  // namespace
}  // namespace lectern
