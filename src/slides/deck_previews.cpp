#include "slides/deck_previews.h"

#include <glib/gi18n.h>

#include <cairo-pdf.h>

#include "model/file_io.h"
#include "slides/handout_page.h"
#include "slides/slide_painter.h"
#include "slides/slide_render_cache.h"

namespace lectern {

namespace {

cairo_status_t appendBytes(void* closure, const unsigned char* data, unsigned int length) {
    auto* bytes = static_cast<std::vector<std::uint8_t>*>(closure);
    bytes->insert(bytes->end(), data, data + length);
    return CAIRO_STATUS_SUCCESS;
}

}  // namespace

std::optional<std::vector<std::uint8_t>> deckPdf(const Deck& deck, const PdfExportOptions& exportOptions) {
    if (deck.slides.empty()) return std::nullopt;
    std::vector<std::uint8_t> bytes;
    const bool handouts = exportOptions.withNotes;
    cairo_surface_t* surface = cairo_pdf_surface_create_for_stream(
        appendBytes, &bytes, handouts ? HandoutPage::pageWidth : SlidePainter::designWidth,
        handouts ? HandoutPage::pageHeight : SlidePainter::designHeight);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(surface);
        return std::nullopt;
    }
    if (deck.title) cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_TITLE, deck.title->c_str());
    cairo_t* cr = cairo_create(surface);
    SlidePaintOptions options;
    options.theme = deck.theme;
    options.deckAccentHex = deck.accentHex;
    options.deckTitle = deck.title.value_or("");
    bool stopped = false;
    for (std::size_t i = 0; i < deck.slides.size() && !stopped; ++i) {
        const Slide& slide = deck.slides[i];
        if (handouts) {
            HandoutPage::paint(cr, slide, options);
        } else {
            SlidePainter::paint(cr, slide, options, SlidePainter::designWidth, SlidePainter::designHeight);
            cairo_show_page(cr);
        }
        if (exportOptions.progress) stopped = !exportOptions.progress(i + 1, deck.slides.size());
    }
    cairo_destroy(cr);
    cairo_surface_finish(surface);
    bool ok = !stopped && cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS;
    cairo_surface_destroy(surface);
    if (!ok) return std::nullopt;
    return bytes;
}

DeckPreviews makeDeckPreviews(const Deck& deck) {
    DeckPreviews previews;
    if (deck.slides.empty()) return previews;
    SlideRenderCache::RenderKey key{deck.slides.front(),
                                    deck.theme,
                                    deck.accentHex,
                                    0,
                                    static_cast<std::int64_t>(deck.slides.size()),
                                    SlidePainter::designWidth,
                                    SlidePainter::designHeight,
                                    deck.title.value_or("")};
    SlideImage image = SlideRenderCache::shared().image(key);
    std::vector<std::uint8_t> png;
    if (cairo_surface_write_to_png_stream(image.get(), appendBytes, &png) == CAIRO_STATUS_SUCCESS) {
        previews.thumbnailPng = std::move(png);
    }
    previews.previewPdf = deckPdf(deck);
    return previews;
}

Status exportPdf(const Deck& deck, const std::filesystem::path& path, const PdfExportOptions& options) {
    if (deck.slides.empty()) return Error{_("The deck has no slides to export.")};
    auto bytes = deckPdf(deck, options);
    if (!bytes) return Error{_("The PDF could not be made.")};
    return replaceFileAtomically(path, std::string_view(reinterpret_cast<const char*>(bytes->data()), bytes->size()));
}

}  // namespace lectern
