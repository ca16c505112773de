#include "app/cli.h"

#include <filesystem>
#include <ostream>

#include "model/deck_package.h"
#include "present/deck_outline.h"
#include "slides/deck_previews.h"

namespace lectern {

namespace {

constexpr int exitError = 2;

const char* const usage = "Usage: lectern-cli dump DECK | outline DECK [--json] | export DECK OUT.pdf";

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

// Writes every slide as a 960 x 540 point PDF page, as Preview.pdf.
int exportDeck(const std::filesystem::path& package, const std::filesystem::path& pdf, std::ostream& err) {
    auto deck = open(package, err);
    if (!deck) return exitError;
    auto status = exportPdf(*deck, pdf);
    if (!status) {
        err << pdf.string() << ": " << status.error().message << "\n";
        return exitError;
    }
    return 0;
}

}  // namespace

int runCli(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
    if (arguments.size() == 2 && arguments[0] == "dump") return dump(arguments[1], out, err);
    if (arguments.size() == 3 && arguments[0] == "export") return exportDeck(arguments[1], arguments[2], err);
    if (arguments.size() == 2 && arguments[0] == "outline") return outline(arguments[1], false, out, err);
    if (arguments.size() == 3 && arguments[0] == "outline") {
        if (arguments[1] == "--json") return outline(arguments[2], true, out, err);
        if (arguments[2] == "--json") return outline(arguments[1], true, out, err);
    }
    err << usage << "\n";
    return exitError;
}

}  // namespace lectern
