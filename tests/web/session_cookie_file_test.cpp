// The file that keeps a store's session cookies between runs: what goes in
// comes back, only its owner can read it, and a damaged one costs nothing.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <fstream>

#include "support/temp_dir.h"
#include "web/session_cookie_file.h"

namespace lectern {
namespace {

using testing::TempDir;

TEST(SessionCookieFileTest, CookiesComeBackAsWrittenInAFileOnlyItsOwnerReads) {
    TempDir folder;
    auto file = folder / sessionCookieFileName;
    std::vector<SessionCookie> cookies{
        {"sid", "a=b; \"c\"", "127.0.0.1", "/app", false, true, SessionCookie::SameSite::strict},
        {"pref", "", ".example.com", "/", true, false, SessionCookie::SameSite::none},
    };
    ASSERT_TRUE(writeSessionCookies(file, cookies).ok());
    EXPECT_EQ(readSessionCookies(file), cookies);

    struct stat info {};
    ASSERT_EQ(::stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);

    // Signed out everywhere: no file is left behind.
    ASSERT_TRUE(writeSessionCookies(file, {}).ok());
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_TRUE(readSessionCookies(file).empty());
    EXPECT_TRUE(writeSessionCookies(file, {}).ok()) << "nothing to remove is no failure";
}

TEST(SessionCookieFileTest, ADamagedFileReadsAsNoCookiesAndBadEntriesAreSkipped) {
    TempDir folder;
    auto file = folder / sessionCookieFileName;
    auto readText = [&](const std::string& text) {
        std::ofstream(file, std::ios::binary | std::ios::trunc) << text;
        return readSessionCookies(file);
    };
    EXPECT_TRUE(readText("").empty());
    EXPECT_TRUE(readText("{\"cookies\": [{\"name\": \"sid\", ").empty());
    EXPECT_TRUE(readText("[1, 2]").empty());
    EXPECT_TRUE(readText("{\"cookies\": 7}").empty());

    auto kept = readText(R"({"cookies": [
        3, {"value": "no name", "domain": "a.test"}, {"name": "sid", "value": 5, "domain": "a.test"},
        {"name": "nodomain", "value": "x"}, {"name": "flag", "domain": "a.test", "secure": "yes"},
        {"name": "sid", "value": "ok", "domain": "a.test", "sameSite": "sideways"}]})");
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(kept[0], (SessionCookie{"sid", "ok", "a.test", "/", false, false, SessionCookie::SameSite::lax}));

    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    EXPECT_TRUE(readSessionCookies(file).empty()) << "a folder in its place";
}

}  // namespace
}  // namespace lectern
