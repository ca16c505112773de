#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>

#include "model/deck.h"
#include "model/deck_package.h"
#include "base/result.h"

namespace lectern {

// What a save puts into the package's QuickLook folder: Thumbnail.png, the
// first slide at 960 × 540 points (from the render cache), and Preview.pdf,
// one 960 × 540 page per slide. A deck without slides gets neither.
DeckPreviews makeDeckPreviews(const Deck& deck);

// How a deck becomes a PDF.
struct PdfExportOptions {
    // Handout pages (HandoutPage): each slide with its presenter notes under
    // it on A4 portrait paper, instead of a 960 × 540 page per slide.
    bool withNotes = false;
    // Told after each slide is drawn, with the slides done and the slides in
    // all; returning false stops the export. Called on the exporting thread.
    std::function<bool(std::size_t done, std::size_t total)> progress;
};

// The deck as a PDF: every slide, in order, on a 960 × 540 point page of its
// own (or its handout pages), drawn as vectors so text stays sharp at any
// size. Nothing when the deck has no slides, drawing fails or `progress`
// stopped it.
std::optional<std::vector<std::uint8_t>> deckPdf(const Deck& deck, const PdfExportOptions& options = {});

// Writes deckPdf to a file, atomically: on any failure a file already at
// `path` is left as it was. The command line and the window both export
// through it, so the same deck gives the same pages.
Status exportPdf(const Deck& deck, const std::filesystem::path& path, const PdfExportOptions& options = {});

}  // namespace lectern
