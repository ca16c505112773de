// The real `lectern` program, started as a person starts it, driven with
// real keys through the X server.

#include <gtest/gtest.h>

#include <glib.h>
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <thread>

#include "editor/autosaver.h"
#include "editor/recovery_store.h"
#include "gui_harness.h"
#include "support/temp_dir.h"

namespace lectern {
namespace {

using testing::runProgram;

// The program, ended for sure when the test ends.
class Program {
public:
    // Its preferences, data and recovery copies all go under `configHome`.
    Program(const std::vector<std::string>& argv, const std::filesystem::path& configHome) {
        std::vector<char*> args;
        for (const auto& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
        args.push_back(nullptr);
        gchar** env = g_get_environ();
        env = g_environ_setenv(env, "XDG_CONFIG_HOME", configHome.c_str(), true);
        env = g_environ_setenv(env, "XDG_DATA_HOME", (configHome / "data").c_str(), true);
        env = g_environ_setenv(env, "XDG_STATE_HOME", (configHome / "state").c_str(), true);
        env = g_environ_setenv(env, "GDK_BACKEND", "x11", true);
        g_spawn_async(nullptr, args.data(), env, G_SPAWN_DO_NOT_REAP_CHILD, nullptr, nullptr, &pid_, nullptr);
        g_strfreev(env);
    }
    ~Program() {
        if (pid_ > 0 && !exited_) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
    }
    bool started() const { return pid_ > 0; }
    GPid pid() const { return pid_; }
    // Ends it the hard way, as a crash would.
    void crash() {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        exited_ = true;
    }
    // The exit status, or -1 if it is still running after `seconds`.
    int waitForExit(double seconds) {
        auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
        while (std::chrono::steady_clock::now() < deadline) {
            int status = 0;
            if (::waitpid(pid_, &status, WNOHANG) == pid_) {
                exited_ = true;
                return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return -1;
    }

private:
    GPid pid_ = 0;
    bool exited_ = false;
};

// The X window of the program with this exact title, waiting for it. Only
// the program's own: the test process may have windows of the same name.
std::string findWindow(const Program& program, const std::string& title) {
    std::string output;
    runProgram({"timeout", "20", "xdotool", "search", "--sync", "--all", "--onlyvisible", "--pid", std::to_string(program.pid()),
                "--name", "^" + title + "$"},
               &output);
    return output.substr(0, output.find('\n'));
}

// Keys to whichever window has the focus.
void type(const std::vector<std::string>& keys) {
    std::vector<std::string> argv{"xdotool", "key", "--delay", "60"};
    argv.insert(argv.end(), keys.begin(), keys.end());
    runProgram(argv);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
}

// Keys to the window, focusing it first.
void keys(const std::string& window, const std::vector<std::string>& keys) {
    runProgram({"xdotool", "windowfocus", window});
    std::vector<std::string> argv{"xdotool", "key", "--delay", "60"};
    argv.insert(argv.end(), keys.begin(), keys.end());
    runProgram(argv);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
}

TEST(LecternProgram, OpensTheExampleDeckPresentsItAndQuits) {
    if (!testing::haveDisplay()) GTEST_SKIP() << "needs a display (run under xvfb-run)";
    testing::TempDir config;
    // Given as the deck.json inside the package, as a file manager may hand it over.
    Program program({LECTERN_APP_PATH, (testing::examplesDir() / "Welcome.lectern" / "deck.json").string()},
                    config.path());
    ASSERT_TRUE(program.started());
    std::string window = findWindow(program, "Welcome to Lectern");
    ASSERT_FALSE(window.empty());
    testing::screenshot("program-01-opened");

    // Present; the consent sheet comes up with the focus, and Escape there
    // declines it.
    keys(window, {"ctrl+shift+p"});
    type({"Escape"});
    keys(window, {"Right", "Right", "Right"});
    testing::screenshot("program-02-presenting");
    keys(window, {"ctrl+shift+p", "ctrl+q"});
    EXPECT_EQ(program.waitForExit(10), 0);
}

TEST(LecternProgram, ShowsTheStartWindowWhenADeckDoesNotOpen) {
    if (!testing::haveDisplay()) GTEST_SKIP() << "needs a display (run under xvfb-run)";
    testing::TempDir config;
    Program program({LECTERN_APP_PATH, (config.path() / "Missing.lectern").string()}, config.path());
    ASSERT_TRUE(program.started());
    std::string window = findWindow(program, "Lectern");
    ASSERT_FALSE(window.empty());
    testing::screenshot("program-03-missing-deck");
    keys(window, {"ctrl+q"});
    EXPECT_EQ(program.waitForExit(10), 0);
}

TEST(LecternProgram, ACrashWhileEditingADraftLosesNothing) {
    if (!testing::haveDisplay()) GTEST_SKIP() << "needs a display (run under xvfb-run)";
    testing::TempDir home;
    auto deck = home.path() / "Talk.lectern";
    std::filesystem::copy(testing::examplesDir() / "Welcome.lectern", deck, std::filesystem::copy_options::recursive);
    Program program({LECTERN_APP_PATH, deck.string()}, home.path());
    ASSERT_TRUE(program.started());
    std::string window = findWindow(program, "Welcome to Lectern");
    ASSERT_FALSE(window.empty());

    // A new deck, its slide renamed, never saved; then the program dies.
    keys(window, {"ctrl+n"});
    std::string draft = findWindow(program, "Untitled Deck");
    ASSERT_FALSE(draft.empty());
    keys(draft, {"F2", "ctrl+a", "I", "d", "e", "a", "Return"});
    std::this_thread::sleep_for(std::chrono::duration<double>(Autosaver::recoverySeconds + 2));
    program.crash();

    RecoveryStore recovery(home.path() / "state" / "lectern" / "recovery");
    auto entries = recovery.list();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_FALSE(entries[0].package);
    auto recovered = recovery.read(entries[0]);
    ASSERT_TRUE(recovered);
    ASSERT_EQ(recovered->slides.size(), 1u);
    EXPECT_EQ(recovered->slides[0].title, "Idea");

    // Started again, the start window offers it.
    Program again({LECTERN_APP_PATH}, home.path());
    std::string start = findWindow(again, "Lectern");
    ASSERT_FALSE(start.empty());
    testing::screenshot("program-04-recover");
    keys(start, {"ctrl+q"});
    EXPECT_EQ(again.waitForExit(10), 0);
    EXPECT_EQ(RecoveryStore(home.path() / "state" / "lectern" / "recovery").list().size(), 1u) << "kept until recovered";
}

}  // namespace
}  // namespace lectern
