#include "app/cli.h"

#include <filesystem>
#include <ostream>

#include "model/deck_package.h"

namespace lectern {

namespace {

constexpr int exitError = 2;

const char* const usage = "Usage: lectern-cli dump DECK";

// Prints the deck.json that saving the deck would write; touches nothing.
int dump(const std::filesystem::path& package, std::ostream& out, std::ostream& err) {
    auto deck = DeckPackage::read(package);
    if (!deck) {
        err << package.string() << ": " << deck.error().message << "\n";
        return exitError;
    }
    out << DeckPackage::encodeForSaving(*deck, package);
    return 0;
}

}  // namespace

int runCli(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
    if (arguments.size() == 2 && arguments[0] == "dump") return dump(arguments[1], out, err);
    err << usage << "\n";
    return exitError;
}

}  // namespace lectern
