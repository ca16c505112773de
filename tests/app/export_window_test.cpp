// "Export as PDF…" from the window, by its key and by its action, with the
// file named by the test instead of the dialog: the window's pages are
// compared picture by picture with those of `lectern-cli export`.

#include <gtest/gtest.h>

#include "editor/platform/deck_window.h"
#include "gui_harness.h"
#include "model/deck_package.h"
#include "support/pdf_pages.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

namespace fs = std::filesystem;
using testing::app;
using testing::pressKeys;
using testing::pumpUntil;
using testing::readPdf;
using testing::runProgram;
using testing::TempDir;

class ExportWindowTest : public testing::WindowTest {};

// Writes the window's export to `pdf` and waits for it to end.
bool exportFromWindow(DeckWindow& window, const fs::path& pdf, bool withNotes, const std::function<void()>& trigger) {
    window.answerNextExportForTesting(pdf, withNotes);
    trigger();
    return pumpUntil([&] { return fs::exists(pdf) && !window.isExporting(); }, 30);
}

void expectSamePages(const fs::path& fromWindow, const fs::path& fromCli) {
    auto windowPages = readPdf(fromWindow, true), cliPages = readPdf(fromCli, true);
    ASSERT_FALSE(cliPages.empty());
    ASSERT_EQ(windowPages.size(), cliPages.size());
    for (std::size_t i = 0; i < cliPages.size(); ++i) {
        EXPECT_EQ(windowPages[i].width, cliPages[i].width) << "page " << i + 1;
        EXPECT_EQ(windowPages[i].text, cliPages[i].text) << "page " << i + 1;
        EXPECT_TRUE(windowPages[i].pixels == cliPages[i].pixels) << "page " << i + 1 << " looks different";
    }
}

TEST_F(ExportWindowTest, KeyAndActionWriteTheCommandLinesPages) {
    TempDir dir;
    fs::path package = dir / "Welcome.lectern";
    auto deck = DeckPackage::read(fs::path(LECTERN_EXAMPLES_DIR) / "Welcome.lectern");
    ASSERT_TRUE(deck.ok());
    ASSERT_TRUE(DeckPackage::write(*deck, package, std::nullopt).ok());
    DeckWindow* window = app().openDeck(package);
    ASSERT_TRUE(window);
    ASSERT_TRUE(pumpUntil([&] { return window->get_mapped(); }));

    // Ctrl+Shift+E with the notes: handout pages.
    ASSERT_TRUE(exportFromWindow(*window, dir / "window-notes.pdf", true,
                                 [&] { pressKeys(*window, {"ctrl+shift+e"}); }));
    ASSERT_EQ(runProgram({LECTERN_CLI_PATH, "export", package.string(), (dir / "cli-notes.pdf").string(), "--notes"}),
              0);
    expectSamePages(dir / "window-notes.pdf", dir / "cli-notes.pdf");

    // The action, as a menu or D-Bus starts it, without the notes.
    ASSERT_TRUE(exportFromWindow(*window, dir / "window.pdf", false,
                                 [&] { window->activate_action("win.export-pdf"); }));
    ASSERT_EQ(runProgram({LECTERN_CLI_PATH, "export", package.string(), (dir / "cli.pdf").string()}), 0);
    expectSamePages(dir / "window.pdf", dir / "cli.pdf");
    EXPECT_NE(readPdf(dir / "window.pdf").size(), 0u);
    EXPECT_GT(readPdf(dir / "window.pdf")[0].width, readPdf(dir / "window-notes.pdf")[0].width);
}

}  // namespace
}  // namespace lectern
