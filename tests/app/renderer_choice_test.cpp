// The renderer the application picks on the test display: Xvfb has only
// Mesa's software OpenGL, where GTK's Cairo renderer is the faster one.
#include <gtest/gtest.h>

#include "gui_harness.h"

namespace lectern {
namespace {

// Whether whoever runs the tests chose a renderer (read before any test
// starts the application).
const bool rendererChosenOutside = g_getenv("GSK_RENDERER") != nullptr;

TEST(RendererChoice, SoftwareOpenGlDrawsWithCairo) {
    if (!testing::haveDisplay()) GTEST_SKIP() << "needs a display (run under xvfb-run)";
    if (rendererChosenOutside) GTEST_SKIP() << "GSK_RENDERER is set in the environment; the application keeps it";
    testing::app();  // starting the application makes the choice
    ASSERT_NE(g_getenv("GSK_RENDERER"), nullptr);
    EXPECT_STREQ(g_getenv("GSK_RENDERER"), "cairo");
}

}  // namespace
}  // namespace lectern
