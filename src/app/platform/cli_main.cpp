// lectern-cli. Most commands only read and write files; `check` loads web
// pages in the web engine, whose views need GTK on a display. Without one
// (a CI machine, a session over ssh) it starts a private Xvfb server for the
// length of the run.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <glib/gi18n.h>
#include <gtk/gtk.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "app/cli.h"
#include "base/glib_scheduler.h"
#include "base/translation.h"
#include "base/worker.h"
#include "web/page_pictures.h"
#include "web/platform/web_services.h"
#include "web/platform/web_sessions.h"
#include "web/platform/webkit_page.h"

namespace lectern {
namespace {

// An Xvfb server of our own on a free display number, stopped when the
// program ends (and by the kernel, should the program die first).
class PrivateDisplay {
public:
    ~PrivateDisplay() { stop(); }

    bool isRunning() const { return pid_ > 0; }

    // Starts the server and returns its display name (":5").
    Result<std::string> start(const std::string& program) {
        int ready[2];
        if (::pipe2(ready, O_CLOEXEC) != 0) return Error{_("Could not start Xvfb")};
        // Everything the child needs is made before fork: it only calls
        // what is safe after forking a process that may have threads.
        std::string fd = std::to_string(ready[1]);
        std::vector<const char*> argv{program.c_str(), "-displayfd", fd.c_str(), "-nolisten", "tcp",
                                      "-screen", "0", "1280x800x24", nullptr};
        pid_t parent = ::getpid();
        pid_t child = ::fork();
        if (child < 0) {
            ::close(ready[0]);
            ::close(ready[1]);
            return Error{_("Could not start Xvfb")};
        }
        if (child == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGTERM);
            if (::getppid() != parent) ::_exit(127);
            ::fcntl(ready[1], F_SETFD, 0);  // the server writes its display number here
            int null = ::open("/dev/null", O_RDWR);
            if (null >= 0) {
                ::dup2(null, 0);
                ::dup2(null, 1);
                ::dup2(null, 2);
            }
            ::execv(program.c_str(), const_cast<char* const*>(argv.data()));
            ::_exit(127);
        }
        pid_ = child;
        ::close(ready[1]);

        // The server writes the number once it accepts connections.
        std::string number;
        auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(15);
        while (number.empty() || number.back() != '\n') {
            auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
            pollfd wait{ready[0], POLLIN, 0};
            if (left.count() <= 0 || ::poll(&wait, 1, static_cast<int>(left.count())) <= 0) break;
            char buffer[16];
            ssize_t got = ::read(ready[0], buffer, sizeof buffer);
            if (got <= 0) break;
            number.append(buffer, static_cast<std::size_t>(got));
        }
        ::close(ready[0]);
        if (number.size() < 2 || number.back() != '\n') {
            stop();
            return Error{_("Xvfb did not start")};
        }
        number.pop_back();
        std::string name = ":";
        name += number;
        return name;
    }

    void stop() {
        if (pid_ <= 0) return;
        ::kill(pid_, SIGTERM);
        for (int tries = 0; tries < 40; ++tries) {
            if (::waitpid(pid_, nullptr, WNOHANG) != 0) {
                pid_ = 0;
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        pid_ = 0;
    }

private:
    pid_t pid_ = 0;
};

// Pages in the application's own website data stores, on GLib's main loop.
class WebKitCliEngine : public CliWebEngine {
public:
    WebKitCliEngine() : pages_(WebSessions::shared()), pictures_(WebServices::picturesFolder(), pictureWriter_) {
        // No stage to measure: pages are laid out, and pictured, at the web
        // area of a full-HD stage.
        pages_.setHiddenSize(1280, 720);
    }

    WebPageFactory& pages() override { return pages_; }
    Scheduler& scheduler() override { return scheduler_; }
    PagePictures* pictures() override { return &pictures_; }
    void runUntil(const std::function<bool()>& finished) override {
        // The check's own timers bound every page, so this always ends.
        while (!finished()) g_main_context_iteration(nullptr, TRUE);
    }

private:
    GLibScheduler scheduler_;
    WebKitPageFactory pages_;
    ThreadWorker pictureWriter_;
    PagePictures pictures_;
};

PrivateDisplay privateDisplay;

// Starts GTK on the display the environment names, if it opens. The display
// is tried on its own first: GTK cannot start again after a failed start.
bool startOnOwnDisplay() {
    bool named = false;
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY"}) {
        const char* value = g_getenv(name);
        named = named || (value && *value);
    }
    // Once open, the display is the one GTK starts on.
    return named && gdk_display_open(nullptr) && gtk_init_check();
}

Result<std::unique_ptr<CliWebEngine>> startWebEngine() {
    // Pages are never shown: nothing for assistive technologies to read.
    g_setenv("GTK_A11Y", "none", FALSE);
    if (startOnOwnDisplay()) return std::unique_ptr<CliWebEngine>(std::make_unique<WebKitCliEngine>());

    char* found = g_find_program_in_path("Xvfb");
    if (!found) return Error{_("No display to load web pages on: set DISPLAY, or install Xvfb")};
    std::string program = found;
    g_free(found);
    auto display = privateDisplay.start(program);
    if (!display) return display.error();
    g_setenv("DISPLAY", display->c_str(), TRUE);
    g_unsetenv("WAYLAND_DISPLAY");
    g_setenv("GDK_BACKEND", "x11", TRUE);
    // Xvfb has no GPU for the web engine to composite with.
    g_setenv("WEBKIT_DISABLE_COMPOSITING_MODE", "1", TRUE);
    if (!gtk_init_check()) {
        privateDisplay.stop();
        return Error{formatText(_("Could not open the private display %s"), display->c_str())};
    }
    return std::unique_ptr<CliWebEngine>(std::make_unique<WebKitCliEngine>());
}

}  // namespace
}  // namespace lectern

int main(int argc, char** argv) {
    lectern::initTranslations();
    std::vector<std::string> arguments(argv + 1, argv + argc);
    int status = lectern::runCli(arguments, std::cout, std::cerr, lectern::startWebEngine);
    if (lectern::privateDisplay.isRunning()) {
        // GTK still holds a connection to the private display: leave before
        // anything can notice it going away.
        std::cout.flush();
        std::cerr.flush();
        lectern::privateDisplay.stop();
        std::_Exit(status);
    }
    return status;
}
