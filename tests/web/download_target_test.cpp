#include "web/download_target.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/temp_dir.h"

namespace lectern {
namespace {

TEST(DownloadTargetTest, DownloadsNeverLandLooseInTheHomeFolder) {
    EXPECT_EQ(downloadFolder("/home/ada/Fetched", "/home/ada"), "/home/ada/Fetched");
    EXPECT_EQ(downloadFolder(nullptr, "/home/ada"), "/home/ada/Downloads");
    EXPECT_EQ(downloadFolder("", "/home/ada"), "/home/ada/Downloads");
    // Desktops without a downloads folder name the home folder itself.
    EXPECT_EQ(downloadFolder("/home/ada/", "/home/ada"), "/home/ada/Downloads");
    EXPECT_EQ(downloadFolder("/home/ada", "/home/ada/"), "/home/ada/Downloads");
}

TEST(DownloadTargetTest, SuggestedNamesCannotLeaveTheFolder) {
    EXPECT_EQ(safeDownloadName("../../.bashrc"), ".bashrc");
    EXPECT_EQ(safeDownloadName("C:\\temp\\report.pdf"), "report.pdf");
    EXPECT_EQ(safeDownloadName("a\nb\x7f.txt"), "ab.txt");
    EXPECT_EQ(safeDownloadName(".."), "download");
    EXPECT_EQ(safeDownloadName("dir/"), "download");
}

TEST(DownloadTargetTest, ATakenNameGetsTheNextFreeNumberAndNothingIsOverwritten) {
    testing::TempDir temp;
    auto folder = temp / "Downloads";  // made when missing
    ASSERT_EQ(claimDownloadFile(folder, "report.pdf"), folder / "report.pdf");
    std::ofstream(folder / "report.pdf") << "first";
    EXPECT_EQ(claimDownloadFile(folder, "report.pdf"), folder / "report (1).pdf");
    EXPECT_EQ(claimDownloadFile(folder, "report.pdf"), folder / "report (2).pdf");
    std::ifstream kept(folder / "report.pdf");
    std::string text((std::istreambuf_iterator<char>(kept)), {});
    EXPECT_EQ(text, "first");

    ASSERT_TRUE(claimDownloadFile(folder, "backup.tar.gz"));
    EXPECT_EQ(claimDownloadFile(folder, "backup.tar.gz"), folder / "backup (1).tar.gz");
    ASSERT_TRUE(claimDownloadFile(folder, ".profile"));
    EXPECT_EQ(claimDownloadFile(folder, ".profile"), folder / ".profile (1)");
    ASSERT_TRUE(claimDownloadFile(folder, "README"));
    EXPECT_EQ(claimDownloadFile(folder, "README"), folder / "README (1)");
}

}  // namespace
}  // namespace lectern
