#include "editor/navigator_rules.h"

#include <gtest/gtest.h>

namespace lectern {
namespace {

using edits::SlideDropEdge;
using Side = SlideDropEdge::Side;

// Three rows of 40 points, stacked from y = 0, starting at x = 10.
struct Rows {
    Uuid a = Uuid::random(), b = Uuid::random(), c = Uuid::random();
    std::vector<NavigatorRowFrame> frames{{a, 10, 0, 200, 40}, {b, 10, 40, 200, 40}, {c, 10, 80, 200, 40}};
};

TEST(NavigatorRules, DropTargetFollowsThePointer) {
    Rows rows;
    using Target = NavigatorDropTarget;
    // Over the dragged row itself, or outside every row: nothing.
    EXPECT_EQ(navigatorDropTarget(rows.frames, rows.b, 100, 45), Target{});
    EXPECT_EQ(navigatorDropTarget(rows.frames, rows.a, 100, 130), Target{});
    // Upper part: 31 points in is indented, 29 is not.
    EXPECT_EQ(navigatorDropTarget(rows.frames, rows.a, 10 + 31, 44), Target(SlideDropEdge{Side::top, rows.b, true}));
    EXPECT_EQ(navigatorDropTarget(rows.frames, rows.a, 10 + 29, 44), Target(SlideDropEdge{Side::top, rows.b, false}));
    // Lower part, and the central 30% (from 14 to 26 points down the row).
    EXPECT_EQ(navigatorDropTarget(rows.frames, rows.a, 100, 40 + 27), Target(SlideDropEdge{Side::bottom, rows.b, true}));
    EXPECT_EQ(navigatorDropTarget(rows.frames, rows.a, 100, 40 + 13.5), Target(SlideDropEdge{Side::top, rows.b, true}));
    EXPECT_EQ(navigatorDropTarget(rows.frames, rows.a, 100, 40 + 14.5), Target(NavigatorGroupTarget{rows.b}));
    EXPECT_EQ(navigatorDropTarget(rows.frames, rows.a, 100, 40 + 25.5), Target(NavigatorGroupTarget{rows.b}));
    // The boundary between two rows belongs to the lower one.
    EXPECT_EQ(navigatorDropTarget(rows.frames, rows.c, 100, 40), Target(SlideDropEdge{Side::top, rows.b, true}));
}

TEST(NavigatorRules, RenameNeedsTwoQuickTapsOnOneRow) {
    RenameTaps taps;
    Uuid a = Uuid::random(), b = Uuid::random();
    EXPECT_FALSE(taps.tap(a, 10.0));
    EXPECT_FALSE(taps.tap(a, 10.5));
    EXPECT_TRUE(taps.tap(a, 10.8));
    EXPECT_FALSE(taps.tap(b, 10.9));  // another row's tap does not count
}

TEST(NavigatorRules, RowTextsAndDeleteMessage) {
    Slide slide = Slide::make(SlideLayout::regular);
    slide.title = "Launch plan";
    EXPECT_EQ(navigatorRowAccessibleName(2, slide), "03 Launch plan");
    EXPECT_EQ(navigatorRowNumber(99), "100");
    slide.title = " ";
    slide.isSkipped = true;
    EXPECT_EQ(navigatorRowAccessibleName(11, slide), "12 Untitled slide, skipped in presentation");
    // A blank title is an untitled slide in the question too.
    EXPECT_EQ(deleteSlideMessage(&slide), "This untitled slide will be removed from the deck. This can't be undone.");
}

}  // namespace
}  // namespace lectern
