// Feeds arbitrary bytes to the deck.json decoder. Whatever decodes must come
// back unchanged through encode and decode, and encoding that result again
// must give the very same text; anything else aborts with a description.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "model/deck_json.h"

namespace {

using lectern::Deck;
using lectern::DeckJson;

// Prints the first line where the two encodings part, so a finding is
// readable without a debugger.
void printFirstDifference(const std::string& first, const std::string& second) {
    std::size_t at = 0;
    while (at < first.size() && at < second.size() && first[at] == second[at]) ++at;
    std::size_t lineStart = first.rfind('\n', at == 0 ? 0 : at - 1);
    lineStart = lineStart == std::string::npos ? 0 : lineStart + 1;
    auto line = [&](const std::string& text) {
        std::size_t end = text.find('\n', lineStart);
        return text.substr(lineStart, end == std::string::npos ? std::string::npos : end - lineStart);
    };
    std::fprintf(stderr, "first encoding:  %s\nsecond encoding: %s\n", line(first).c_str(), line(second).c_str());
}

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "deck_json_fuzzer: %s\n", what);
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto decoded = DeckJson::decode(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!decoded) return 0;

    const std::string encoded = DeckJson::encode(*decoded);
    auto again = DeckJson::decode(std::string_view(encoded));
    if (!again) {
        std::fprintf(stderr, "%s\n", again.error().message.c_str());
        fail("the encoding of a decoded deck does not decode");
    }
    const std::string reencoded = DeckJson::encode(*again);
    if (!(*again == *decoded)) {
        printFirstDifference(encoded, reencoded);
        fail("the deck changed across encode and decode");
    }
    if (reencoded != encoded) {
        printFirstDifference(encoded, reencoded);
        fail("equal decks encode differently");
    }
    return 0;
}
