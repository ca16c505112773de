// Builds a package folder from arbitrary bytes, opens it, saves it to a second
// package, saves that one over itself, and opens each result.
//
// Input layout: chunks separated by NUL bytes. The first chunk is deck.json;
// each further chunk (at most eight) is one member: its first byte, modulo 8,
// chooses what the member is (the digits 0-7 choose kinds 0-7), the rest is
// its content.
//   0-3  media/<name k>, a regular file; name k is 64 times the digit k with
//        .png for even k and .jpg for odd k, so deck.json can refer to it
//   4    media/notes.txt, a file in media/ that is not an image
//   5    Extras/readme.txt, a member the deck does not own
//   6    media/<name 0> as a symbolic link to ../deck.json
//   7    media/<name 1> as a folder holding one file
//
// What must hold: opening succeeds exactly when deck.json decodes; a deck
// that opened saves; the saved package opens to the same deck (its image
// file names aside, since inline images get names on saving); every image
// then comes from media/, which holds no unreferenced image; members the
// deck does not own are carried over; and saving over itself changes nothing.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <stdlib.h>
#include <unistd.h>

#include "model/deck_json.h"
#include "model/deck_package.h"
#include "model/file_io.h"

namespace {

namespace fs = std::filesystem;
using lectern::Deck;
using lectern::DeckJson;
using lectern::DeckPackage;

constexpr std::size_t maxMembers = 8;

std::string mediaName(int k) {
    return std::string(64, static_cast<char>('0' + k)) + (k % 2 ? ".jpg" : ".png");
}

// One folder per process, preferably in memory (saving flushes every file to
// the disk, which would make each run slow), removed at exit.
struct Workspace {
    fs::path root;
    Workspace() {
        const char* tmpdir = std::getenv("TMPDIR");
        fs::path base = tmpdir && *tmpdir ? fs::path(tmpdir) : fs::is_directory("/dev/shm") ? "/dev/shm" : "/tmp";
        std::string pattern = (base / "lectern-fuzz-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) {
            std::perror("mkdtemp");
            std::abort();
        }
        root = pattern;
    }
    ~Workspace() {
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }
};

const Workspace& workspace() {
    static const Workspace shared;
    return shared;
}

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "deck_package_fuzzer: %s\n", what.c_str());
    std::abort();
}

void writeFile(const fs::path& path, std::string_view bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::optional<std::string> fileText(const fs::path& path) {
    auto bytes = lectern::readRegularFile(path, lectern::DeckPackage::deckSizeLimit);
    if (!bytes) return std::nullopt;
    return std::string(bytes->begin(), bytes->end());
}

void buildPackage(const fs::path& package, std::string_view input) {
    std::vector<std::string_view> chunks;
    for (std::size_t at = 0; chunks.size() <= maxMembers;) {
        std::size_t end = input.find('\0', at);
        chunks.push_back(input.substr(at, end == std::string_view::npos ? std::string_view::npos : end - at));
        if (end == std::string_view::npos) break;
        at = end + 1;
    }
    std::error_code ec;
    fs::create_directories(package / DeckPackage::mediaMember, ec);
    writeFile(package / DeckPackage::deckMember, chunks[0]);
    for (std::size_t i = 1; i < chunks.size(); ++i) {
        if (chunks[i].empty()) continue;
        int kind = static_cast<unsigned char>(chunks[i][0]) % 8;
        std::string_view content = chunks[i].substr(1);
        const fs::path media = package / DeckPackage::mediaMember;
        // A member that already exists under the chosen name is left as it is.
        if (kind <= 3) {
            if (!fs::exists(fs::symlink_status(media / mediaName(kind), ec))) writeFile(media / mediaName(kind), content);
        } else if (kind == 4) {
            writeFile(media / "notes.txt", content);
        } else if (kind == 5) {
            fs::create_directories(package / "Extras", ec);
            writeFile(package / "Extras" / "readme.txt", content);
        } else if (kind == 6) {
            fs::create_symlink("../deck.json", media / mediaName(0), ec);
        } else {
            fs::create_directories(media / mediaName(1), ec);
            writeFile(media / mediaName(1) / "inside.png", content);
        }
    }
}

Deck withoutImageFileNames(Deck deck) {
    for (auto& slide : deck.slides) slide.imageFile.reset();
    return deck;
}

void checkSavedPackage(const fs::path& package, const Deck& deck) {
    std::set<std::string> referenced;
    for (std::size_t i = 0; i < deck.slides.size(); ++i) {
        const auto& slide = deck.slides[i];
        if (slide.imageData.has_value() != slide.imageFile.has_value()) {
            fail("slide " + std::to_string(i) + " has an image that does not come from media/");
        }
        if (slide.imageFile) referenced.insert(*slide.imageFile);
    }
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(package / DeckPackage::mediaMember, ec)) {
        std::string name = entry.path().filename().string();
        if (DeckPackage::isValidMediaName(name) && !referenced.contains(name)) {
            fail("media/" + name + " was kept though no slide uses it");
        }
    }
}

void checkCarriedOver(const fs::path& from, const fs::path& to, const fs::path& member) {
    auto original = fileText(from / member);
    if (original && fileText(to / member) != original) fail(member.string() + " was not carried over unchanged");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const fs::path first = workspace().root / "First.lectern";
    const fs::path second = workspace().root / "Second.lectern";
    std::error_code ec;
    fs::remove_all(first, ec);
    fs::remove_all(second, ec);
    buildPackage(first, input);

    auto opened = DeckPackage::read(first);
    auto json = fileText(first / DeckPackage::deckMember);
    bool decodes = json && DeckJson::decode(std::string_view(*json)).ok();
    if (opened.ok() != decodes) fail(opened.ok() ? "opened though deck.json does not decode" : opened.error().message);
    if (!opened) return 0;

    // Save as: a new package next to the one the deck came from.
    if (auto status = DeckPackage::write(*opened, second, first); !status) fail("saving failed: " + status.error().message);
    auto saved = DeckPackage::read(second);
    if (!saved) fail("the saved package does not open: " + saved.error().message);
    if (!(withoutImageFileNames(*saved) == withoutImageFileNames(*opened))) fail("the saved deck differs from the opened one");
    checkSavedPackage(second, *saved);
    checkCarriedOver(first, second, fs::path("Extras") / "readme.txt");
    checkCarriedOver(first, second, fs::path(DeckPackage::mediaMember) / "notes.txt");

    // Save in place with nothing changed.
    if (auto status = DeckPackage::write(*saved, second, second); !status) {
        fail("saving in place failed: " + status.error().message);
    }
    auto reopened = DeckPackage::read(second);
    if (!reopened) fail("the package saved in place does not open: " + reopened.error().message);
    if (!(*reopened == *saved)) fail("saving in place changed the deck");
    checkSavedPackage(second, *reopened);
    return 0;
}
