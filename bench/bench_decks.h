#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

#include "model/deck.h"
#include "model/shared_bytes.h"

namespace lectern::bench {

// A small, fast, deterministic generator (SplitMix64), so every run builds
// the same decks and the figures compare across runs.
class Random {
public:
    explicit Random(std::uint64_t salt) : state_(salt) {}
    std::uint64_t next();
    // A value in [0, bound).
    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(next() % bound); }
    bool chance(unsigned percent) { return below(100) < percent; }

private:
    std::uint64_t state_;
};

// A talk-shaped deck: section openers, regular, callout, web, decisions and
// image slides, bodies of a few paragraphs with attributed runs
// (bold, italic, code, colour, centred lines, command blocks), speaker
// notes, link cards on decisions slides, demo actions on some web slides.
// Image slides name a media file but carry no bytes.
Deck makeTalkDeck(std::size_t slideCount, std::uint64_t salt);

// `size` bytes starting with the PNG signature, the rest pseudo-random, so
// every salt gives a distinct image that does not compress.
SharedBytes makeImageBytes(std::size_t size, std::uint64_t salt);

// A fresh folder made with mkdtemp in the temporary folder ($TMPDIR, else
// /tmp), removed with its contents
// when the object goes away.
class TempFolder {
public:
    explicit TempFolder(const std::string& prefix);
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    bool ok() const { return !path_.empty(); }
    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

}  // namespace lectern::bench
