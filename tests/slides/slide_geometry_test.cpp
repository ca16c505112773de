// The editor's fields lie where the painter draws the texts they edit: these
// tests draw a slide with and without one text and check that what changed
// lies in the box the geometry gives for it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

#include "slides/slide_painter.h"

namespace lectern {
namespace {

constexpr double scale = 2;  // pixels per design point

std::vector<std::uint32_t> pixels(const Slide& slide, const SlidePaintOptions& options) {
    const int w = int(SlidePainter::designWidth * scale), h = int(SlidePainter::designHeight * scale);
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h);
    cairo_t* cr = cairo_create(surface);
    SlidePainter::paint(cr, slide, options, w, h);
    cairo_destroy(cr);
    cairo_surface_flush(surface);
    std::vector<std::uint32_t> out(std::size_t(w) * h);
    const int stride = cairo_image_surface_get_stride(surface);
    for (int y = 0; y < h; ++y) {
        std::memcpy(&out[std::size_t(y) * w], cairo_image_surface_get_data(surface) + y * stride, std::size_t(w) * 4);
    }
    cairo_surface_destroy(surface);
    return out;
}

// The design-point rectangle around every pixel that differs; none when the
// two pictures are the same.
std::optional<Rect> difference(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b) {
    const int w = int(SlidePainter::designWidth * scale);
    int left = w, top = -1, right = -1, bottom = -1;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] == b[i]) continue;
        int x = int(i % w), y = int(i / w);
        if (top < 0) top = y;
        bottom = y;
        left = std::min(left, x);
        right = std::max(right, x);
    }
    if (top < 0) return std::nullopt;
    return Rect{left / scale, top / scale, (right - left + 1) / scale, (bottom - top + 1) / scale};
}

bool inside(const Rect& inner, const Rect& outer, double slack = 3) {
    return inner.x >= outer.x - slack && inner.y >= outer.y - slack &&
           inner.x + inner.width <= outer.x + outer.width + slack &&
           inner.y + inner.height <= outer.y + outer.height + slack;
}

Slide written(SlideLayout layout, SlidePosition position = SlidePosition::full) {
    Slide slide = Slide::make(layout);
    slide.position = position;
    slide.eyebrow = "chapter two";
    slide.title = "What you edit is what is shown";
    slide.subtitle = "A subtitle under it";
    slide.body = AttributedText("• First point\n• Second point, a little longer\nA closing line");
    if (layout == SlideLayout::decisions) {
        slide.showLinkSubtitles = true;
        for (const char* label : {"Left", "Right", "Straight on"}) {
            SlideLink link;
            link.label = label;
            link.subtitle = "why";
            slide.links.push_back(link);
        }
    }
    return slide;
}

struct Case {
    SlideLayout layout;
    SlidePosition position;
};
const Case cases[] = {{SlideLayout::regular, SlidePosition::full},  {SlideLayout::callout, SlidePosition::full},
                      {SlideLayout::decisions, SlidePosition::full}, {SlideLayout::web, SlidePosition::left},
                      {SlideLayout::web, SlidePosition::right},     {SlideLayout::image, SlidePosition::topBottom},
                      {SlideLayout::image, SlidePosition::inText}};

TEST(SlideGeometry, EveryEditableTextIsDrawnInsideItsBox) {
    for (Theme theme : {Theme::clinical, Theme::editorial}) {
        for (const Case& c : cases) {
            SCOPED_TRACE(std::string(enumName(c.layout)) + " " + std::string(enumName(c.position)));
            Slide slide = written(c.layout, c.position);
            SlidePaintOptions options;
            options.theme = theme;
            options.editing = true;
            const auto whole = pixels(slide, options);
            const SlideGeometry geometry = SlidePainter::geometry(slide, options);
            auto check = [&](const std::optional<Rect>& box, const std::function<void(SlidePaintOptions&)>& hide) {
                ASSERT_TRUE(box);
                SlidePaintOptions without = options;
                hide(without);
                auto changed = difference(whole, pixels(slide, without));
                ASSERT_TRUE(changed) << "hiding the text changed nothing";
                EXPECT_TRUE(inside(*changed, *box)) << changed->x << "," << changed->y << " " << changed->width << "x"
                                                    << changed->height << " outside " << box->x << "," << box->y
                                                    << " " << box->width << "x" << box->height;
                // Hiding a text never moves anything else: the painter keeps its place.
                EXPECT_EQ(SlidePainter::geometry(slide, without).body->rect, geometry.body->rect);
            };
            auto rectOf = [](const std::optional<TextBox>& box) { return box ? std::optional(box->rect) : std::nullopt; };
            check(rectOf(geometry.eyebrow), [](SlidePaintOptions& o) { o.hidden.eyebrow = true; });
            check(rectOf(geometry.title), [](SlidePaintOptions& o) { o.hidden.title = true; });
            check(rectOf(geometry.subtitle), [](SlidePaintOptions& o) { o.hidden.subtitle = true; });
            if (c.layout == SlideLayout::decisions) {
                ASSERT_EQ(geometry.cardBoxes.size(), 3u);
                const CardBox& card = geometry.cardBoxes[1];
                Rect texts = card.label.rect;
                texts.height = card.subtitle->rect.y + card.subtitle->rect.height - texts.y;
                check(texts, [&](SlidePaintOptions& o) { o.hidden.cardText = card.id; });
            } else {
                check(geometry.body->rect, [](SlidePaintOptions& o) { o.hidden.body = true; });
            }
        }
    }
}

TEST(SlideGeometry, AWrittenSlideLooksTheSameInTheEditorAndOnStage) {
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(enumName(c.layout)) + " " + std::string(enumName(c.position)));
        Slide slide = written(c.layout, c.position);
        SlidePaintOptions talk;
        SlidePaintOptions editor;
        editor.editing = true;
        EXPECT_FALSE(difference(pixels(slide, talk), pixels(slide, editor)));
    }
}

TEST(SlideGeometry, EmptyHeadingsKeepTheirLinesWithPlaceholdersOnlyInTheEditor) {
    SlidePaintOptions talk, editor;
    editor.editing = true;
    Slide regular = Slide::make(SlideLayout::regular);
    EXPECT_FALSE(SlidePainter::geometry(regular, talk).title);
    auto boxes = SlidePainter::geometry(regular, editor);
    ASSERT_TRUE(boxes.title && boxes.eyebrow);
    EXPECT_GT(boxes.title->rect.height, 20);
    EXPECT_EQ(boxes.eyebrow->placeholder, "Eyebrow");
    // A regular slide's empty subtitle takes no space until its heading is edited.
    EXPECT_FALSE(boxes.subtitle);
    editor.showEmptySubtitle = true;
    auto editingHeading = SlidePainter::geometry(regular, editor);
    ASSERT_TRUE(editingHeading.subtitle);
    EXPECT_GT(editingHeading.body->rect.y, boxes.body->rect.y);
    editor.showEmptySubtitle = false;

    Slide callout = Slide::make(SlideLayout::callout);
    EXPECT_EQ(SlidePainter::geometry(callout, editor).subtitle->placeholder, "Subtitle (optional)");
    Slide decisions = Slide::make(SlideLayout::decisions);
    editor.deckTitle = "The deck";
    auto decision = SlidePainter::geometry(decisions, editor);
    EXPECT_EQ(decision.title->placeholder, "Decision point");
    EXPECT_EQ(decision.subtitle->placeholder, "Optional subtitle");
    EXPECT_EQ(decision.eyebrow->placeholder, "Eyebrow");
    // Elsewhere an empty eyebrow shows the deck title, and so does its field.
    EXPECT_EQ(SlidePainter::geometry(regular, editor).eyebrow->placeholder, "The deck");
}

TEST(SlideGeometry, ADraggedCardFollowsThePointerAndItsTargetIsMarked) {
    Slide slide = written(SlideLayout::decisions);
    SlidePaintOptions options;
    options.editing = true;
    const auto still = SlidePainter::geometry(slide, options);
    options.cardDrag = SlidePaintOptions::CardDrag{slide.links[0].id, 40, 25, slide.links[2].id};
    const auto dragged = SlidePainter::geometry(slide, options);
    EXPECT_EQ(dragged.cardBoxes[0].frame.x, still.cardBoxes[0].frame.x + 40);
    EXPECT_EQ(dragged.cardBoxes[0].frame.y, still.cardBoxes[0].frame.y + 25);
    // Hit-testing keeps the grid where it was.
    EXPECT_EQ(dragged.cards, still.cards);
    SlidePaintOptions plain;
    plain.editing = true;
    auto changed = difference(pixels(slide, plain), pixels(slide, options));
    ASSERT_TRUE(changed);
    // The target's outline is drawn around its frame.
    const Rect target = still.cardBoxes[2].frame;
    EXPECT_LE(changed->x + changed->width, target.x + target.width + 8);
}

}  // namespace
}  // namespace lectern

namespace lectern {
namespace {

// Rows (in design points) below the title where the left edge of the body
// shows something other than the stage: the code block's box.
double codeBoxHeight(const AttributedText& body) {
    Slide slide = Slide::make(SlideLayout::regular);
    slide.title = "Commands";
    slide.body = body;
    const auto drawn = pixels(slide, SlidePaintOptions{});
    const int w = int(SlidePainter::designWidth * scale), x = int((64 + 6) * scale);
    const std::uint32_t stage = drawn[std::size_t(w) * 2 + 2] & 0xFFFFFF;
    int rows = 0;
    for (std::size_t y = std::size_t(150 * scale); y < drawn.size() / w; ++y) rows += (drawn[y * w + x] & 0xFFFFFF) != stage;
    return rows / scale;
}

TEST(SlideGeometry, ABlankLineBetweenCommandLinesStaysInTheBox) {
    SlideBodyAttributes command;
    command.block = SlideBodyBlockKind::command;
    const double packed = codeBoxHeight(AttributedText("npm install\nnpm start", command));
    const double spaced = codeBoxHeight(AttributedText("npm install\n\nnpm start", command));
    EXPECT_GT(packed, 30);
    EXPECT_GT(spaced, packed + 15);
}

}  // namespace
}  // namespace lectern
