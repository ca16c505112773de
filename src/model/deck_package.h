#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/deck.h"
#include "base/result.h"
#include "model/shared_bytes.h"

namespace lectern {

// The previews a save puts into the package's QuickLook folder; either may be
// missing (no slides, or drawing failed).
struct DeckPreviews {
    std::optional<std::vector<std::uint8_t>> thumbnailPng;
    std::optional<std::vector<std::uint8_t>> previewPdf;
};
using DeckPreviewMaker = std::function<DeckPreviews(const Deck&)>;

// A deck on disk: a folder Name.lectern holding deck.json, media/ (one file per
// distinct image, named by the SHA-256 of its bytes) and QuickLook/. In memory
// every image lives inline in its slide's imageData; images move between the
// slides and media/ only here.
//
// Reading refuses members that could hang or exhaust the program: a deck.json
// or image that is not a regular file (a pipe, a device) is never waited on,
// and sizes are capped. deck.json may hold up to deckSizeLimit (room for
// pictures stored inline in Base64, as older decks did; a deck of text is a
// few kilobytes); a larger one fails the read with "deck.json is larger than
// 256 MiB". An image in media/ may hold up to mediaSizeLimit; a larger one, or
// one that is not a regular file, leaves its slide without a picture, as a
// missing one does.
class DeckPackage {
public:
    static constexpr std::string_view deckMember = "deck.json";
    static constexpr std::string_view mediaMember = "media";
    static constexpr std::string_view previewsMember = "QuickLook";
    static constexpr std::string_view thumbnailMember = "Thumbnail.png";
    static constexpr std::string_view previewMember = "Preview.pdf";
    static constexpr std::uint64_t deckSizeLimit = std::uint64_t{256} << 20;
    static constexpr std::uint64_t mediaSizeLimit = std::uint64_t{128} << 20;

    // Opens a package. Fails when it is not a folder (corrupt file), has no
    // readable deck.json (no such file), its deck.json is too large, or its
    // JSON does not decode.
    static Result<Deck> read(const std::filesystem::path& package);

    // Writes the deck to `destination` so that a crash at any instant leaves
    // the old package or the new one, whole. Members of `existing` (the package
    // the deck was read from or last saved to, usually `destination` itself)
    // that the deck does not own are kept; unchanged images are hard-linked,
    // never rewritten.
    static Status write(const Deck& deck, const std::filesystem::path& destination,
                        const std::optional<std::filesystem::path>& existing,
                        const DeckPreviewMaker& previews = {});

    // What writing the deck over a package whose media/ holds `heldMedia`
    // does: the deck as it goes into deck.json (images moved out to their
    // media names, bodies without leading and trailing blank lines) and the
    // image files to add.
    struct WritePlan {
        Deck stored;
        std::map<std::string, SharedBytes> newMedia;
        std::set<std::string> referencedMedia;
    };
    static WritePlan plan(const Deck& deck, const std::set<std::string>& heldMedia);

    // The deck.json that saving this deck into `package` would write.
    static std::string encodeForSaving(const Deck& deck, const std::filesystem::path& package);

    // Valid media names of the regular files in the package's media/.
    static std::set<std::string> heldMedia(const std::filesystem::path& package);

    // "<64 lower-case hex digits of SHA-256>.png" for PNG bytes, ".jpg" otherwise.
    static std::string mediaName(std::span<const std::uint8_t> bytes);
    static bool isValidMediaName(std::string_view name);
};

}  // namespace lectern
