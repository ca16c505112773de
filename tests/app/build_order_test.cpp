// The build order and the card reveal order in the slide inspector, with the
// real pointer: merging, breaking, dragging rows onto steps and into gaps,
// reordering cards, undo, and the saved package read back.

#include <gtest/gtest.h>

#include <stdexcept>

#include "editor/platform/deck_window.h"
#include "gui_harness.h"
#include "model/deck_package.h"
#include "slides/reveal_plan.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

using testing::app;
using testing::named;
using testing::clickMiddle;
using testing::showsText;
using testing::pumpFor;
using testing::pumpUntil;


Gtk::Widget& one(Gtk::Window& window, const std::string& name) {
    Gtk::Widget* found = nullptr;
    EXPECT_TRUE(pumpUntil([&] {
        auto all = named(window, name);
        found = all.size() == 1 && all.front()->get_width() > 0 ? all.front() : nullptr;
        return found != nullptr;
    })) << name;
    if (!found) throw std::runtime_error("no widget named " + name);
    return *found;
}


// A point of `widget`, at fractions of its size, in the window's coordinates.
std::pair<double, double> pointOf(Gtk::Window& window, Gtk::Widget& widget, double fx, double fy) {
    graphene_point_t in{static_cast<float>(widget.get_width() * fx), static_cast<float>(widget.get_height() * fy)};
    graphene_point_t out{};
    EXPECT_TRUE(gtk_widget_compute_point(widget.gobj(), GTK_WIDGET(window.gobj()), &in, &out));
    return {out.x, out.y};
}

void dragBetween(Gtk::Window& window, std::pair<double, double> from, std::pair<double, double> to) {
    testing::drag(window, from.first, from.second, to.first, to.second);
}

// Scrolls the inspector so that `widget` is near the top of what it shows.
void scrollToTop(Gtk::Widget& widget) {
    auto* scroller = dynamic_cast<Gtk::ScrolledWindow*>(Glib::wrap(
        gtk_widget_get_ancestor(widget.gobj(), GTK_TYPE_SCROLLED_WINDOW)));
    ASSERT_NE(scroller, nullptr);
    graphene_point_t origin{0, 0}, at{};
    ASSERT_TRUE(gtk_widget_compute_point(widget.gobj(), GTK_WIDGET(scroller->gobj()), &origin, &at));
    auto adjustment = scroller->get_vadjustment();
    adjustment->set_value(adjustment->get_value() + at.y - 8);
    pumpFor(0.2);
}


SlideLink card(const char* label) {
    SlideLink link;
    link.label = label;
    return link;
}

std::vector<std::string> labels(const Slide& slide) {
    std::vector<std::string> out;
    for (const auto& link : slide.links) out.push_back(link.label);
    return out;
}

class BuildOrderTest : public testing::WindowTest {};

TEST_F(BuildOrderTest, StepsAndCardsReorderedWithThePointerUndoneAndSaved) {
    Deck deck;
    Slide body = Slide::make(SlideLayout::regular);
    body.title = "Plan";
    body.body = AttributedText("One\nTwo\n\nThree\nFour");  // the blank line is no row
    body.reveal = RevealMode::reveal;
    Slide question = Slide::make(SlideLayout::decisions);
    question.reveal = RevealMode::reveal;
    question.links = {card("Alpha"), card("Beta"), card("Gamma")};
    deck.slides = {body, question};
    testing::TempDir dir;
    auto package = dir / "Build.lectern";
    ASSERT_TRUE(DeckPackage::write(deck, package, package, {}));
    DeckWindow* opened = app().openDeck(package);
    ASSERT_NE(opened, nullptr);
    DeckWindow& window = *opened;
    ASSERT_TRUE(pumpUntil([&] { return window.get_mapped(); }));
    auto plan = [&] { return RevealPlan::normalized(window.deck().slides[0]); };
    auto settled = [&](const RevealSteps& want, const std::string& count) {
        return pumpUntil([&] { return plan() == want && showsText(window, count); });
    };

    one(window, "Step 4: Four");
    pumpFor(0.4);  // the inspector slides in
    scrollToTop(one(window, "Build Order"));
    ASSERT_TRUE(showsText(window, "4 steps"));
    ASSERT_EQ(named(window, "Break into its own step").size(), 0u);

    // Merging: steps 2 and then 3 join step 1. The first step has no button.
    auto merges = named(window, "Merge with step above");
    ASSERT_EQ(merges.size(), 3u);
    clickMiddle(*merges[0]);
    ASSERT_TRUE(settled({{0, 1}, {2}, {3}}, "3 steps")) << ::testing::PrintToString(plan());
    EXPECT_EQ(window.document().undoLabel(), "Change Build Order");
    clickMiddle(*named(window, "Merge with step above")[0]);
    ASSERT_TRUE(settled({{0, 1, 2}, {3}}, "2 steps")) << ::testing::PrintToString(plan());

    // Breaking the last row of step 1 off.
    Gtk::Widget& three = one(window, "Step 1: Three");
    auto breakers = named(three, "Break into its own step");
    ASSERT_EQ(breakers.size(), 1u);
    clickMiddle(*breakers.front());
    ASSERT_TRUE(settled({{0, 1}, {2}, {3}}, "3 steps")) << ::testing::PrintToString(plan());

    // "Four" dragged onto step 1 joins it; its own step goes.
    pumpFor(0.3);
    dragBetween(window, pointOf(window, one(window, "Step 3: Four"), 0.4, 0.5),
                pointOf(window, one(window, "Step 1"), 0.4, 0.1));
    ASSERT_TRUE(settled({{0, 1, 3}, {2}}, "2 steps")) << ::testing::PrintToString(plan());

    // "One" dragged into the gap below the last step becomes a step there.
    pumpFor(0.3);
    auto [gapX, gapY] = pointOf(window, one(window, "Step 2"), 0.4, 1.0);
    dragBetween(window, pointOf(window, one(window, "Step 1: One"), 0.4, 0.5), {gapX, gapY + 5});
    ASSERT_TRUE(settled({{1, 3}, {2}, {0}}, "3 steps")) << ::testing::PrintToString(plan());
    EXPECT_TRUE(showsText(window, "One"));

    window.editor().undo();
    ASSERT_TRUE(settled({{0, 1, 3}, {2}}, "2 steps")) << ::testing::PrintToString(plan());
    testing::screenshot("build-order-steps");

    // The list follows the body: a new line is a new step at the end.
    window.editor().editCurrentSlide("Typing", [](Slide& slide) { slide.body.append("\nFive"); });
    one(window, "Step 3: Five");
    EXPECT_TRUE(showsText(window, "3 steps"));
    window.editor().undo();
    ASSERT_TRUE(pumpUntil([&] { return named(window, "Step 3: Five").empty() && showsText(window, "2 steps"); }));

    // The decisions slide shows its cards instead of steps.
    window.editor().state().goTo(1, false);
    one(window, "Card 3: Gamma");
    EXPECT_TRUE(named(window, "Step 1: One").empty());
    EXPECT_TRUE(showsText(window, "3 cards"));
    scrollToTop(one(window, "Card Reveal Order"));
    pumpFor(0.3);
    dragBetween(window, pointOf(window, one(window, "Card 1: Alpha"), 0.4, 0.5),
                pointOf(window, one(window, "Card 3: Gamma"), 0.4, 0.85));
    ASSERT_TRUE(pumpUntil([&] {
        return labels(window.deck().slides[1]) == std::vector<std::string>{"Beta", "Gamma", "Alpha"};
    })) << ::testing::PrintToString(labels(window.deck().slides[1]));
    one(window, "Card 3: Alpha");
    testing::screenshot("build-order-cards");

    window.activate_action("win.save");
    ASSERT_TRUE(pumpUntil([&] { return !window.document().isDirty(); }, 10));
    auto saved = DeckPackage::read(package);
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->slides[0].revealPlan, (RevealSteps{{0, 1, 3}, {2}}));
    EXPECT_EQ(labels(saved->slides[1]), (std::vector<std::string>{"Beta", "Gamma", "Alpha"}));
}

}  // namespace
}  // namespace lectern
