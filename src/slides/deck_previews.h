#pragma once

#include <filesystem>

#include "model/deck.h"
#include "model/deck_package.h"
#include "base/result.h"

namespace lectern {

// What a save puts into the package's QuickLook folder: Thumbnail.png, the
// first slide at 960 × 540 points (from the render cache), and Preview.pdf,
// one 960 × 540 page per slide. A deck without slides gets neither.
DeckPreviews makeDeckPreviews(const Deck& deck);

// The deck as a PDF: every slide, in order, on a 960 × 540 point page of its
// own, drawn as vectors so text stays sharp at any size.
std::optional<std::vector<std::uint8_t>> deckPdf(const Deck& deck);

// Writes deckPdf to a file, atomically.
Status exportPdf(const Deck& deck, const std::filesystem::path& path);

}  // namespace lectern
