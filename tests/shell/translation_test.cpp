// lectern-cli speaks the language of a catalogue installed in its share
// folder: a made-up language "xx", compiled from a .po at test time.
#include <glib.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "support/temp_dir.h"

namespace lectern {
namespace {

namespace fs = std::filesystem;

struct Output {
    std::string out;
    std::string err;
};

Output spawn(const std::vector<std::string>& argv, const std::vector<std::pair<std::string, std::string>>& setenv = {}) {
    std::vector<char*> args;
    for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    char** env = g_get_environ();
    env = g_environ_unsetenv(env, "LANGUAGE");
    for (const auto& [name, value] : setenv) env = g_environ_setenv(env, name.c_str(), value.c_str(), TRUE);
    char* out = nullptr;
    char* err = nullptr;
    GError* error = nullptr;
    g_spawn_sync(nullptr, args.data(), env, G_SPAWN_DEFAULT, nullptr, nullptr, &out, &err, nullptr, &error);
    g_strfreev(env);
    Output run{out ? out : "", err ? err : (error ? error->message : "")};
    g_free(out);
    g_free(err);
    g_clear_error(&error);
    return run;
}

TEST(Translation, TheCliReadsTheCatalogueOfTheUsersLanguage) {
    char* msgfmt = g_find_program_in_path("msgfmt");
    std::string msgfmtPath = msgfmt ? msgfmt : "";
    g_free(msgfmt);
    if (msgfmtPath.empty()) GTEST_SKIP() << "msgfmt (gettext) is not installed";

    // glibc translates only under a locale other than C, and a bare machine
    // may have no other: its C.UTF-8 data under another name is one.
    fs::path cLocale;
    for (const char* candidate : {"/usr/lib/locale/C.utf8", "/usr/lib/locale/C.UTF-8"}) {
        if (fs::is_directory(candidate)) cLocale = candidate;
    }
    if (cLocale.empty()) GTEST_SKIP() << "no C.UTF-8 locale data to make a test locale from";

    testing::TempDir temp;
    fs::create_directories(temp / "locales");
    fs::copy(cLocale, temp / "locales" / "xx_XX.UTF-8", fs::copy_options::recursive);
    fs::path messages = temp / "share" / "locale" / "xx" / "LC_MESSAGES";
    fs::create_directories(messages);
    std::ofstream(temp / "xx.po")
        << "msgid \"\"\n"
           "msgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n\n"
           "msgid \"Usage: lectern-cli dump DECK | outline DECK [--json] | export DECK OUT.pdf [--notes] | check DECK\"\n"
           "msgstr \"Xxusage: lectern-cli dump DEKK\"\n\n"
           // The file's name moves: a translation may reorder the placeholders.
           "msgid \"The file %s couldn\u2019t be opened because there is no such file.\"\n"
           "msgstr \"Xx no such file \u201exx\u201c: %1$s.\"\n";
    Output compiled = spawn({msgfmtPath, "-o", (messages / "lectern.mo").string(), (temp / "xx.po").string()});
    ASSERT_TRUE(fs::exists(messages / "lectern.mo")) << compiled.err;

    std::vector<std::pair<std::string, std::string>> inXx{{"LC_ALL", "xx_XX.UTF-8"},
                                                         {"LOCPATH", (temp / "locales").string()},
                                                         {"LECTERN_DATA_DIR", (temp / "share").string()}};
    Output usage = spawn({LECTERN_CLI_PATH}, inXx);
    EXPECT_NE(usage.err.find("Xxusage: lectern-cli dump DEKK"), std::string::npos) << usage.err;

    Output missing = spawn({LECTERN_CLI_PATH, "dump", (temp / "Gone.lectern").string()}, inXx);
    EXPECT_NE(missing.err.find("Xx no such file \u201exx\u201c: \u201cGone.lectern\u201d."), std::string::npos) << missing.err;

    // Texts without a translation stay as they are.
    Output help = spawn({LECTERN_CLI_PATH, "--help"}, inXx);
    EXPECT_NE(help.out.find("Reads, exports and checks Lectern decks"), std::string::npos) << help.out;
}

}  // namespace
}  // namespace lectern
