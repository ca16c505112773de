// Writing slides on the stage as a person does: a click where the text is
// drawn, real keys, undo, and the package read back.

#include <gtest/gtest.h>

#include "editor/platform/body_editor.h"
#include "editor/platform/body_field.h"
#include "editor/platform/deck_window.h"
#include "editor/platform/format_bar.h"
#include "editor/platform/heading_fields.h"
#include "editor/platform/presenting_stage.h"
#include "editor/platform/slide_navigator.h"
#include "editor/platform/stage_editing.h"
#include "gui_harness.h"
#include "model/deck_package.h"
#include "slides/platform/stage_view.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

using testing::app;
using testing::pressKeys;
using testing::pumpFor;
using testing::pumpUntil;
using Part = HeadingFields::Part;

class StageEditingTest : public testing::WindowTest {
protected:
    // Clicks the middle of where the painter draws a heading line.
    void clickLine(DeckWindow& window, const std::optional<TextBox>& box) {
        ASSERT_TRUE(box);
        StageView& stage = window.stage();
        Gdk::Rectangle place = toView(box->rect, stage.slideArea());
        testing::click(stage, place.get_x() + 12, place.get_y() + place.get_height() / 2.0);
    }
    SlideGeometry geometry(DeckWindow& window) {
        return SlidePainter::geometry(*window.editor().currentSlide(), window.presentingStage().editing().paintOptions());
    }
};

TEST_F(StageEditingTest, HeadingsAreTypedWhereTheyAreDrawnAndUndoneAsOneStep) {
    testing::TempDir dir;
    auto package = dir / "Talk.lectern";
    Deck deck;
    deck.title = "Field notes";
    deck.slides.push_back(Slide::make(SlideLayout::regular));
    ASSERT_TRUE(DeckPackage::write(deck, package, package, {}));
    DeckWindow* opened = app().openDeck(package);
    ASSERT_NE(opened, nullptr);
    DeckWindow& window = *opened;
    ASSERT_TRUE(pumpUntil([&] { return window.get_mapped(); }));
    pumpFor(0.3);
    HeadingFields& headings = window.presentingStage().editing().headings();

    // The invisible field over the drawn placeholder takes the click.
    clickLine(window, geometry(window).title);
    ASSERT_TRUE(pumpUntil([&] { return headings.field(Part::title).has_focus(); }));
    testing::typeText(window, "Launch plan");
    ASSERT_TRUE(pumpUntil([&] { return window.deck().slides[0].title == "Launch plan"; }));
    // While it is typed the painter leaves the title to the field.
    EXPECT_TRUE(window.presentingStage().editing().paintOptions().hidden.title);
    EXPECT_EQ(headings.field(Part::title).get_opacity(), 1.0);

    // The eyebrow keeps what was typed; the theme only shows it in capitals.
    pressKeys(window, {"Escape"});
    ASSERT_TRUE(pumpUntil([&] { return !headings.focused(); }));
    EXPECT_EQ(headings.field(Part::title).get_opacity(), 0.0);
    clickLine(window, geometry(window).eyebrow);
    ASSERT_TRUE(pumpUntil([&] { return headings.field(Part::eyebrow).has_focus(); }));
    testing::typeText(window, "q3 review");
    ASSERT_TRUE(pumpUntil([&] { return window.deck().slides[0].eyebrow == "q3 review"; }));
    EXPECT_EQ(SlidePainter::displayedEyebrow(window.deck().slides[0], window.paintOptions()), "Q3 REVIEW");
    testing::screenshot("stage-editing-eyebrow");

    // Return goes on from the eyebrow to the title, and from the title to the body.
    pressKeys(window, {"Return"});
    ASSERT_TRUE(pumpUntil([&] { return headings.field(Part::title).has_focus(); }));
    // Editing the heading of a regular slide gives its subtitle a line.
    ASSERT_TRUE(pumpUntil([&] { return geometry(window).subtitle.has_value(); }));
    pressKeys(window, {"Return"});
    BodyEditor& body = window.presentingStage().editing().body().editor();
    ASSERT_TRUE(pumpUntil([&] { return body.has_focus(); }));
    testing::typeText(window, "- Ship it");
    pressKeys(window, {"Return"});
    pressKeys(window, {"ctrl+b"});
    testing::typeText(window, "Loudly");
    ASSERT_TRUE(pumpUntil([&] { return window.deck().slides[0].body.string() == "• Ship it\n• Loudly"; }));
    EXPECT_TRUE(window.deck().slides[0].body.attributesAt(std::string("• Ship it\n• L").size()).isBold());
    EXPECT_TRUE(window.presentingStage().editing().paintOptions().hidden.body);
    EXPECT_TRUE(window.presentingStage().editing().body().bar().get_visible());
    testing::screenshot("stage-editing-body");
    pressKeys(window, {"Escape"});
    ASSERT_TRUE(pumpUntil([&] { return !window.presentingStage().editing().body().active(); }));
    // Escape left the field, and did not open the overview.
    EXPECT_FALSE(window.state().overview());
    // The body's typing is undone in bursts (how many depends on the pauses
    // between keys), before anything typed earlier.
    for (int press = 0; press < 12 && !window.deck().slides[0].body.empty(); ++press) pressKeys(window, {"ctrl+z"});
    ASSERT_TRUE(window.deck().slides[0].body.empty());
    ASSERT_EQ(window.deck().slides[0].eyebrow, "q3 review");

    // A burst of typing is one undo step; undo gives the slide back as it was.
    pressKeys(window, {"ctrl+z"});
    ASSERT_TRUE(pumpUntil([&] { return window.deck().slides[0].eyebrow.empty(); }));
    EXPECT_EQ(window.deck().slides[0].title, "Launch plan");
    pressKeys(window, {"ctrl+z"});
    ASSERT_TRUE(pumpUntil([&] { return window.deck().slides[0].title.empty(); }));
    EXPECT_EQ(std::string(headings.field(Part::title).get_text()), "");
    pressKeys(window, {"ctrl+shift+z"});
    ASSERT_TRUE(pumpUntil([&] { return window.deck().slides[0].title == "Launch plan"; }));

    pressKeys(window, {"ctrl+s"});
    ASSERT_TRUE(pumpUntil([&] {
        auto saved = DeckPackage::read(package);
        return saved && saved->slides[0].title == "Launch plan" && !window.document().isDirty();
    }));
}

TEST_F(StageEditingTest, EveryLayoutOffersItsHeadingFieldsByName) {
    Deck deck;
    for (auto layout : {SlideLayout::regular, SlideLayout::callout, SlideLayout::decisions}) {
        deck.slides.push_back(Slide::make(layout));
    }
    for (auto layout : {SlideLayout::web, SlideLayout::image}) {
        for (auto position : {SlidePosition::left, SlidePosition::right, SlidePosition::topBottom,
                              SlidePosition::inText, SlidePosition::full}) {
            Slide media = Slide::make(layout);
            media.position = position;
            deck.slides.push_back(media);
        }
    }
    DeckWindow& window = open(deck);
    HeadingFields& headings = window.presentingStage().editing().headings();
    BodyEditor& body = window.presentingStage().editing().body().editor();
    for (std::size_t i = 0; i < deck.slides.size(); ++i) {
        window.state().select(static_cast<std::int64_t>(i), static_cast<std::int64_t>(deck.slides.size()));
        pumpFor(0.1);
        const Slide& slide = deck.slides[i];
        SCOPED_TRACE(std::string(enumName(slide.layout)) + " " + std::string(enumName(slide.position)));
        // A media slide in full position is all media: nothing to type there.
        const bool text = (slide.layout != SlideLayout::web && slide.layout != SlideLayout::image) ||
                          slide.position != SlidePosition::full;
        EXPECT_EQ(headings.field(Part::title).get_visible(), text);
        EXPECT_EQ(headings.field(Part::eyebrow).get_visible(), text);
        EXPECT_EQ(body.get_visible(), text && slide.layout != SlideLayout::decisions);
        // Callouts and decisions always keep a subtitle line in the editor.
        bool subtitle = slide.layout == SlideLayout::callout || slide.layout == SlideLayout::decisions;
        EXPECT_EQ(headings.field(Part::subtitle).get_visible(), subtitle);
    }
    window.state().select(0, static_cast<std::int64_t>(deck.slides.size()));
    pumpFor(0.1);
    EXPECT_EQ(std::string(headings.field(Part::title).get_placeholder_text()), "Slide title");
    // A screen reader lists the fields as text boxes.
    EXPECT_EQ(gtk_accessible_get_accessible_role(GTK_ACCESSIBLE(headings.field(Part::title).gobj())),
              GTK_ACCESSIBLE_ROLE_TEXT_BOX);
    window.state().select(2, static_cast<std::int64_t>(deck.slides.size()));
    pumpFor(0.1);
    EXPECT_EQ(std::string(headings.field(Part::title).get_placeholder_text()), "Decision point");
    EXPECT_EQ(std::string(headings.field(Part::subtitle).get_placeholder_text()), "Optional subtitle");
    // Presenting: no field at all.
    window.activate_action("win.toggle-editor");
    pumpFor(0.2);
    EXPECT_FALSE(headings.field(Part::title).get_visible());
}

TEST_F(StageEditingTest, F6TakesTheKeyboardFromTheSlideListToTheSlideAndBack) {
    Deck deck;
    deck.slides.push_back(Slide::make(SlideLayout::regular));
    DeckWindow& window = open(deck);
    HeadingFields& headings = window.presentingStage().editing().headings();
    window.navigator().focusCurrentRow();
    pumpFor(0.2);
    pressKeys(window, {"F6"});
    ASSERT_TRUE(pumpUntil([&] { return headings.field(Part::title).has_focus(); }));
    testing::typeText(window, "Typed without a pointer");
    ASSERT_TRUE(pumpUntil([&] { return window.deck().slides[0].title == "Typed without a pointer"; }));
    pressKeys(window, {"F6"});
    ASSERT_TRUE(pumpUntil([&] {
        auto* focus = window.get_focus();
        return focus && isWithin(focus, window.navigator());
    }));
}

}  // namespace
}  // namespace lectern
