#include "app/cli.h"

#include <glib/gi18n.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <ostream>

#include "app/build_info.h"
#include "model/deck_package.h"
#include "present/deck_outline.h"
#include "slides/deck_previews.h"
#include "web/page_pictures.h"
#include "web/web_slide_checker.h"

namespace lectern {

namespace {

constexpr int exitError = 2;

constexpr int exitNeedsAttention = 1;

const char* usage() {
    return _("Usage: lectern-cli dump DECK | outline DECK [--json] | export DECK OUT.pdf [--notes] | check DECK");
}

// --help: the usage line, then each command and option.
void printHelp(std::ostream& out) {
    out << usage() << "\n\n"
        << _("Reads, exports and checks Lectern decks without opening a window.\n"
             "\n"
             "Commands:\n"
             "  dump DECK               print the deck.json that saving DECK would write\n"
             "  outline DECK [--json]   print the talk as the presenter will step through it\n"
             "  export DECK OUT.pdf     write every slide as a page of OUT.pdf\n"
             "    --notes               instead, A4 handout pages: each slide with its\n"
             "                          presenter notes under it\n"
             "  check DECK              load every web slide's page and report the ones that fail\n"
             "\n"
             "Options:\n"
             "  -h, --help              print this and exit\n"
             "  --version               print the version and exit\n"
             "\n"
             "Exit status: 0 on success, 1 when check finds a page that needs attention,\n"
             "2 on an error.\n");
}

std::optional<Deck> open(const std::filesystem::path& package, std::ostream& err) {
    auto deck = DeckPackage::read(package);
    if (!deck) {
        err << package.string() << ": " << deck.error().message << "\n";
        return std::nullopt;
    }
    return std::move(deck).value();
}

// Prints the deck.json that saving the deck would write; touches nothing.
int dump(const std::filesystem::path& package, std::ostream& out, std::ostream& err) {
    auto deck = open(package, err);
    if (!deck) return exitError;
    out << DeckPackage::encodeForSaving(*deck, package);
    return 0;
}

// Prints the talk as the presenter will step through it.
int outline(const std::filesystem::path& package, bool asJson, std::ostream& out, std::ostream& err) {
    auto deck = open(package, err);
    if (!deck) return exitError;
    if (asJson) {
        out << DeckOutline::json(*deck).dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
    } else {
        out << DeckOutline::text(*deck);
    }
    return 0;
}

// Writes every slide as a 960 x 540 point PDF page, as Preview.pdf, or
// with `withNotes` as handout pages: the window's "Export as PDF…" pages.
int exportDeck(const std::filesystem::path& package, const std::filesystem::path& pdf, bool withNotes,
               std::ostream& err) {
    auto deck = open(package, err);
    if (!deck) return exitError;
    PdfExportOptions options;
    options.withNotes = withNotes;
    auto status = exportPdf(*deck, pdf, options);
    if (!status) {
        err << pdf.string() << ": " << status.error().message << "\n";
        return exitError;
    }
    return 0;
}

// "04  Pricing  redirected  Redirected to example.com/login"
std::string reportLine(const WebSlideChecker::Entry& entry) {
    std::string line = WebSlideChecker::rowTitle(entry);
    if (!entry.outcome) return line + "  " + C_("web check", "not checked");
    switch (entry.outcome->kind) {
        case WebCheckOutcome::Kind::ok: line += "  " + std::string(C_("web check", "ok")); break;
        case WebCheckOutcome::Kind::redirected:
            line += "  " + std::string(C_("web check", "redirected")) + "  ";
            break;
        case WebCheckOutcome::Kind::failed: line += "  " + std::string(C_("web check", "failed")) + "  "; break;
    }
    line += entry.outcome->text;
    return line;
}

// Loads every web slide of the deck as the app's check does and prints a
// line per slide and the summary. Exit status 1 when any needs attention.
int check(const std::filesystem::path& package, const CliWebEngineStarter& startWebEngine, std::ostream& out,
          std::ostream& err) {
    auto deck = open(package, err);
    if (!deck) return exitError;
    bool anyToLoad = std::any_of(deck->slides.begin(), deck->slides.end(), [](const Slide& slide) {
        return slide.layout == SlideLayout::web && slide.url && !slide.url->empty();
    });

    std::unique_ptr<CliWebEngine> engine;
    if (anyToLoad) {
        if (!startWebEngine) {
            err << "lectern-cli: " << _("no web engine to load pages with") << "\n";
            return exitError;
        }
        auto started = startWebEngine();
        if (!started) {
            err << "lectern-cli: " << started.error().message << "\n";
            return exitError;
        }
        engine = std::move(started).value();
    }

    // With nothing to load, the check asks for no page and sets no timer.
    struct NoPages : WebPageFactory {
        std::shared_ptr<WebPage> makePage(const std::optional<Uuid>&) override { return nullptr; }
    } noPages;
    struct NoTime : Scheduler {
        double now() const override { return 0; }
        TimerId after(double, std::function<void()>) override { return 1; }
        void cancel(TimerId) override {}
    } noTime;

    WebSlideChecker checker(engine ? engine->pages() : noPages, engine ? engine->scheduler() : noTime);
    PagePictures* pictures = engine ? engine->pictures() : nullptr;
    checker.setPictures(pictures);
    checker.run(*deck);
    if (engine) engine->runUntil([&] { return !checker.isRunning(); });
    // Pages that loaded well are pictured for the stage: a talk that starts
    // without network still shows them.
    if (pictures) engine->runUntil([&] { return pictures->pending() == 0; });

    for (const auto& entry : checker.entries()) out << reportLine(entry) << "\n";
    out << checker.summary() << "\n";
    return checker.attentionCount() > 0 ? exitNeedsAttention : 0;
}

}  // namespace

int runCli(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
           const CliWebEngineStarter& startWebEngine) {
    if (arguments.size() == 1 && (arguments[0] == "--help" || arguments[0] == "-h")) {
        printHelp(out);
        return 0;
    }
    if (arguments.size() == 1 && arguments[0] == "--version") {
        out << "lectern-cli " << build::version << "\n";
        return 0;
    }
    if (arguments.size() == 2 && arguments[0] == "check") return check(arguments[1], startWebEngine, out, err);
    if (arguments.size() == 2 && arguments[0] == "dump") return dump(arguments[1], out, err);
    if (!arguments.empty() && arguments[0] == "export") {
        // --notes may come anywhere after the command.
        std::vector<std::string> paths(arguments.begin() + 1, arguments.end());
        auto notes = std::remove(paths.begin(), paths.end(), std::string("--notes"));
        bool withNotes = notes != paths.end();
        paths.erase(notes, paths.end());
        if (paths.size() == 2 && arguments.size() <= 4) return exportDeck(paths[0], paths[1], withNotes, err);
    }
    if (arguments.size() == 2 && arguments[0] == "outline") return outline(arguments[1], false, out, err);
    if (arguments.size() == 3 && arguments[0] == "outline") {
        if (arguments[1] == "--json") return outline(arguments[2], true, out, err);
        if (arguments[2] == "--json") return outline(arguments[1], true, out, err);
    }
    err << usage() << "\n";
    return exitError;
}

}  // namespace lectern
