// lectern: the desktop application. Its arguments are deck folders to open.
//
// The options are answered here, before the application is made: making a
// Gtk::Application starts GTK, which ends the program where there is no
// display, and --help and --version must work without one. --help is
// GApplication's own, printed by a bare GApplication with the same options;
// an option that neither knows is refused with a usage line on standard
// error and status 2 (GApplication itself would fail with status 1).

#include <giomm.h>
#include <glib/gi18n.h>

#include <cstdio>
#include <string_view>

#include "app/build_info.h"
#include "app/platform/lectern_application.h"
#include "base/translation.h"

namespace {

enum class Request { run, help, version, unknownOption };

bool isHelpOption(std::string_view argument) {
    for (std::string_view help : {"-h", "-?", "--help", "--help-all", "--help-gapplication"}) {
        if (argument == help) return true;
    }
    return false;
}

// What the command line asks for. Deck folders are every argument that does
// not start with "-", a lone "-", and everything after "--". `unknown` is
// set to the first option that is not ours.
Request request(int argc, char* argv[], const char*& unknown) {
    bool help = false, version = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--") break;
        if (argument.size() < 2 || argument[0] != '-') continue;
        if (isHelpOption(argument)) {
            help = true;
        } else if (argument == "--version") {
            version = true;
        } else if (argument != "--gapplication-service") {
            unknown = argv[i];
            return Request::unknownOption;
        }
    }
    return help ? Request::help : version ? Request::version : Request::run;
}

// GApplication's help for the options `lectern` takes; it prints the help
// and ends the program.
int printHelp(int argc, char* argv[]) {
    Gio::init();
    auto helper = Gio::Application::create(lectern::LecternApplication::applicationId,
                                           Gio::Application::Flags::HANDLES_OPEN |
                                               Gio::Application::Flags::NON_UNIQUE);
    helper->set_option_context_parameter_string(_("[DECK.lectern…]"));
    helper->set_option_context_summary(_("Opens each deck folder in a window of its own; without one, the start window."));
    helper->add_main_option_entry(Gio::Application::OptionType::BOOL, "version", '\0',
                                  _("Print the version and exit"));
    return helper->run(argc, argv);
}

}  // namespace

int main(int argc, char* argv[]) {
    lectern::initTranslations();
    const char* unknown = nullptr;
    switch (request(argc, argv, unknown)) {
        case Request::unknownOption:
            std::fprintf(stderr, _("lectern: unknown option %s\n"), unknown);
            std::fprintf(stderr, "%s\n", _("Usage: lectern [OPTION…] [DECK.lectern…]"));
            return 2;
        case Request::help:
            return printHelp(argc, argv);
        case Request::version:
            std::printf("lectern %s\n", lectern::build::version);
            return 0;
        case Request::run:
            break;
    }
    auto app = lectern::LecternApplication::create();
    return app->run(argc, argv);
}
