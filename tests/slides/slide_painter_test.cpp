#include "slides/slide_painter.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "model/deck_package.h"
#include "model/theme_style.h"

namespace lectern {
namespace {

namespace fs = std::filesystem;

// A drawn slide at 2 pixels per point, kept for a person to look at.
struct Picture {
    cairo_surface_t* surface;
    Picture(const Slide& slide, const SlidePaintOptions& options, double width = 1920, double height = 1080)
        : surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(width), static_cast<int>(height))) {
        cairo_t* cr = cairo_create(surface);
        SlidePainter::paint(cr, slide, options, width, height);
        cairo_destroy(cr);
        cairo_surface_flush(surface);
    }
    ~Picture() { cairo_surface_destroy(surface); }
    void save(const std::string& name) const {
        // build/artifacts/slides, beside the folder of the test program.
        fs::path folder = fs::read_symlink("/proc/self/exe").parent_path().parent_path() / "artifacts" / "slides";
        fs::create_directories(folder);
        cairo_surface_write_to_png(surface, (folder / (name + ".png")).c_str());
    }
    // The colour at a design point.
    Color at(double x, double y) const {
        int px = static_cast<int>(x * 2), py = static_cast<int>(y * 2);
        auto* row = cairo_image_surface_get_data(surface) + py * cairo_image_surface_get_stride(surface);
        std::uint32_t v = reinterpret_cast<std::uint32_t*>(row)[px];
        return {((v >> 16) & 255) / 255.0, ((v >> 8) & 255) / 255.0, (v & 255) / 255.0, 1};
    }
};

bool near(const Color& a, const Color& b, double tolerance = 0.02) {
    return std::abs(a.red - b.red) <= tolerance && std::abs(a.green - b.green) <= tolerance &&
           std::abs(a.blue - b.blue) <= tolerance;
}

TEST(SlidePainter, WelcomeDeckInEveryTheme) {
    auto deck = DeckPackage::read(fs::path(LECTERN_EXAMPLES_DIR) / "Welcome.lectern");
    ASSERT_TRUE(deck.ok());
    for (Theme theme : allCases<Theme>()) {
        SlidePaintOptions options;
        options.theme = theme;
        options.deckTitle = deck->title.value_or("");
        for (std::size_t i = 0; i < deck->slides.size(); ++i) {
            Picture picture(deck->slides[i], options);
            picture.save(std::string(enumName(theme)) + "-welcome-" + std::to_string(i + 1));
            EXPECT_TRUE(near(picture.at(2, 2), ThemeStyle::of(theme).stageBackground) || deck->slides[i].position == SlidePosition::full)
                << enumName(theme) << " slide " << i + 1;
        }
    }
}

}  // namespace
}  // namespace lectern
