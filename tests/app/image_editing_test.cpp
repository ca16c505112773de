// Pictures brought onto an image slide in the editor: through the file
// chooser driven with real keys, refused when they do not decode, and a
// large photograph read and decoded without stalling the window.
#include <gtest/gtest.h>

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <glib.h>

#include <chrono>

#include "editor/platform/deck_window.h"
#include "gui_harness.h"
#include "model/deck_package.h"
#include "slides/platform/stage_view.h"
#include "support/deck_fixtures.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

using testing::app;
using testing::showsText;
using testing::pressKeys;
using testing::pumpFor;
using testing::pumpUntil;

// A picture file of the given size, made with gdk-pixbuf.
void writePicture(const std::filesystem::path& path, int width, int height, const char* type) {
    GdkPixbuf* pixbuf = gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, width, height);
    gdk_pixbuf_fill(pixbuf, 0x3366ccff);
    ASSERT_TRUE(gdk_pixbuf_save(pixbuf, path.c_str(), type, nullptr, nullptr));
    g_object_unref(pixbuf);
}

std::string sha256Hex(const std::string& bytes) {
    char* hex = g_compute_checksum_for_data(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(bytes.data()), bytes.size());
    std::string out = hex;
    g_free(hex);
    return out;
}

// Labels and areas of the window, found as a person sees them.
GtkWidget* widgetWithClass(DeckWindow& window, const char* cssClass) {
    auto found = testing::findWidgets(GTK_WIDGET(window.gobj()),
                                      [&](GtkWidget* widget) { return gtk_widget_has_css_class(widget, cssClass); });
    return found.empty() ? nullptr : found.front();
}

class ImageEditingTest : public testing::WindowTest {
protected:
    DeckWindow& openEmptyImageSlide() {
        Deck deck;
        Slide picture = Slide::make(SlideLayout::image);
        picture.title = "Picture";
        deck.slides = {picture, Slide::make(SlideLayout::regular)};
        DeckWindow& window = open(deck);
        auto* area = widgetWithClass(window, "image-drop-area");
        EXPECT_TRUE(area);
        if (area) this->area = Glib::wrap(area);
        EXPECT_TRUE(pumpUntil([&] { return area && gtk_widget_get_mapped(area) && gtk_widget_get_width(area) > 100; }));
        return window;
    }

    // Opens the chooser from the image area (a click, or a double-click over
    // a picture) and types the file's path into it; Return is sent last,
    // without waiting, so that the main loop turns from then on.
    void chooseThroughTheArea(const std::filesystem::path& file, bool doubleClick) {
        if (doubleClick) testing::doubleClick(*area, area->get_width() / 2.0, area->get_height() / 2.0);
        else testing::click(*area, area->get_width() / 2.0, area->get_height() / 2.0);
        Gtk::Window* chooser = nullptr;
        ASSERT_TRUE(pumpUntil([&] {
            for (auto* candidate : app().get_windows()) {
                if (dynamic_cast<DeckWindow*>(candidate) == nullptr && candidate->get_mapped()) chooser = candidate;
            }
            return chooser != nullptr;
        }));
        pumpFor(0.5);
        pressKeys(*chooser, {"ctrl+l"});
        testing::typeText(*chooser, file.string());
        Glib::spawn_async("", std::vector<std::string>{"xdotool", "key", "Return"}, Glib::SpawnFlags::SEARCH_PATH);
    }

    testing::TempDir dir;
    Gtk::Widget* area = nullptr;
};

TEST_F(ImageEditingTest, AClickImportsThroughTheChooserAndTheImageIsStoredOnceUndoably) {
    auto file = dir / "photo.png";
    writePicture(file, 320, 200, "png");
    DeckWindow& window = openEmptyImageSlide();
    EXPECT_TRUE(showsText(window, "Drop an image here or click to import"));
    EXPECT_FALSE(area->get_has_tooltip());
    testing::screenshot("image-slide-empty");

    chooseThroughTheArea(file, false);
    ASSERT_TRUE(pumpUntil([&] { return window.deck().slides[0].imageData.has_value(); }, 10));
    const Slide& slide = window.deck().slides[0];
    const std::string bytes = testing::readText(file);
    EXPECT_EQ(slide.imageData->view(), bytes);
    EXPECT_EQ(slide.imageName, "photo.png");
    EXPECT_EQ(area->get_tooltip_text(), "Double-click to replace");
    EXPECT_FALSE(showsText(window, "Drop an image here or click to import"));
    testing::screenshot("image-slide-imported");

    // Saved with a second slide of the same picture, it is one media file
    // named by its hash.
    auto package = dir / "Pictures.lectern";
    Deck twice = window.deck();
    twice.slides[1] = twice.slides[0];
    twice.slides[1].id = Uuid::random();
    ASSERT_TRUE(DeckPackage::write(twice, package, std::nullopt));
    EXPECT_EQ(testing::listFolder(package / "media"), std::vector<std::string>{sha256Hex(bytes) + ".png"});

    // A file that is not a picture replaces nothing, and the area says so.
    auto broken = dir / "broken.png";
    testing::writeText(broken, "not a picture");
    chooseThroughTheArea(broken, true);
    ASSERT_TRUE(pumpUntil([&] { return showsText(window, "Couldn’t read this image"); }, 10));
    EXPECT_EQ(window.deck().slides[0].imageData->view(), bytes);

    window.editor().undo();
    EXPECT_FALSE(window.deck().slides[0].imageData);
}

TEST_F(ImageEditingTest, AFileDraggedFromAnotherWindowIsDroppedOnTheSlide) {
    auto file = dir / "dropped.jpg";
    writePicture(file, 400, 300, "jpeg");
    DeckWindow& window = openEmptyImageSlide();

    // Dragged in from another window, as from a file manager.
    testing::dragFileOnto(file, *area, [] { testing::screenshot("image-slide-drop-hover"); });
    ASSERT_TRUE(pumpUntil([&] { return window.deck().slides[0].imageData.has_value(); }, 10));
    EXPECT_EQ(window.deck().slides[0].imageData->view(), testing::readText(file));
}

TEST_F(ImageEditingTest, ALargePhotographImportsWhileTheWindowKeepsTurning) {
    auto file = dir / "large.jpg";
    writePicture(file, 6000, 4000, "jpeg");
    DeckWindow& window = openEmptyImageSlide();

    // The longest time the main loop went without running a 5 ms timer,
    // from Return in the chooser to the first frames drawn with the picture.
    using Clock = std::chrono::steady_clock;
    Clock::time_point start, last;
    Clock::duration longest{};
    int turns = 0;
    sigc::connection ticker;
    chooseThroughTheArea(file, false);
    start = last = Clock::now();
    ticker = Glib::signal_timeout().connect(
        [&] {
            auto now = Clock::now();
            longest = std::max(longest, now - last);
            last = now;
            ++turns;
            return true;
        },
        5);
    ASSERT_TRUE(pumpUntil([&] { return window.deck().slides[0].imageData.has_value(); }, 30));
    const auto imported = Clock::now();
    pumpFor(0.5);
    ticker.disconnect();
    auto ms = [](Clock::duration d) { return std::chrono::duration_cast<std::chrono::milliseconds>(d).count(); };
    std::cout << "[ info ] 6000 x 4000 JPEG imported in " << ms(imported - start) << " ms; longest main-loop stall "
              << ms(longest) << " ms over " << turns << " turns\n";
    EXPECT_GT(turns, 10) << "the main loop kept turning";
}

}  // namespace
}  // namespace lectern
