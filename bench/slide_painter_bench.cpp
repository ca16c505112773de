// Drawing slides: one slide at full HD, as the stage and the thumbnails do;
// the geometry the stage asks for on a click; a 100-slide deck exported to
// PDF; and what a save adds for QuickLook/.
#include <benchmark/benchmark.h>

#include <cairo.h>

#include <vector>

#include "slides/deck_previews.h"
#include "slides/slide_painter.h"

namespace {

using namespace lectern;

Slide regularSlide() {
    Slide slide = Slide::make(SlideLayout::regular);
    slide.eyebrow = "Quarterly review";
    slide.title = "What we shipped this quarter";
    SlideBodyAttributes bold;
    bold.inlineIntent = inline_intent::stronglyEmphasized;
    SlideBodyAttributes command;
    command.block = SlideBodyBlockKind::command;
    for (int i = 0; i < 17; ++i) {
        slide.body.append("\u2022 A point about the launch, with ");
        slide.body.append("numbers", bold);
        slide.body.append(" that matter\n");
    }
    slide.body.append("npm run demo\ncurl -s localhost:8080/health\n", command);
    slide.body.append("Questions welcome");
    return slide;
}

Slide decisionsSlide() {
    Slide slide = Slide::make(SlideLayout::decisions);
    slide.title = "Where next?";
    slide.showLinkSubtitles = true;
    for (int i = 0; i < 9; ++i) {
        SlideLink link;
        link.label = "Option " + std::to_string(i + 1);
        link.subtitle = "A short subtitle";
        link.filled = i % 2 == 0;
        slide.links.push_back(link);
    }
    return slide;
}

// A 1600 x 900 PNG drawn with Cairo, so the benchmark needs no file; the
// variant changes its colours, so each variant is a picture never decoded before.
SharedBytes pictureBytes(int variant) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 1600, 900);
    cairo_t* cr = cairo_create(surface);
    cairo_pattern_t* gradient = cairo_pattern_create_linear(0, 0, 1600, 900);
    cairo_pattern_add_color_stop_rgb(gradient, 0, 0.23, 0.35, (variant % 256) / 255.0);
    cairo_pattern_add_color_stop_rgb(gradient, 1, 0.95, 0.95, 0.97);
    cairo_set_source(cr, gradient);
    cairo_paint(cr);
    cairo_pattern_destroy(gradient);
    cairo_destroy(cr);
    std::vector<std::uint8_t> png;
    cairo_surface_write_to_png_stream(
        surface,
        [](void* closure, const unsigned char* data, unsigned int length) {
            auto* bytes = static_cast<std::vector<std::uint8_t>*>(closure);
            bytes->insert(bytes->end(), data, data + length);
            return CAIRO_STATUS_SUCCESS;
        },
        &png);
    cairo_surface_destroy(surface);
    return SharedBytes(std::move(png));
}

Slide imageSlide(int variant = 0) {
    Slide slide = Slide::make(SlideLayout::image);
    slide.position = SlidePosition::right;
    slide.title = "The dashboard";
    slide.body = AttributedText("Live numbers from the launch week");
    slide.setImage(pictureBytes(variant), "dashboard.png");
    return slide;
}

void drawSlide(benchmark::State& state, const Slide& slide) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 1920, 1080);
    SlidePaintOptions options;
    options.deckTitle = "Benchmark";
    for (auto _ : state) {
        cairo_t* cr = cairo_create(surface);
        SlidePainter::paint(cr, slide, options, 1920, 1080);
        cairo_destroy(cr);
        cairo_surface_flush(surface);
    }
    cairo_surface_destroy(surface);
}

void DrawRegularSlide(benchmark::State& state) { drawSlide(state, regularSlide()); }
void DrawDecisionsSlide(benchmark::State& state) { drawSlide(state, decisionsSlide()); }
void DrawImageSlide(benchmark::State& state) { drawSlide(state, imageSlide()); }
BENCHMARK(DrawRegularSlide)->Unit(benchmark::kMillisecond);
BENCHMARK(DrawDecisionsSlide)->Unit(benchmark::kMillisecond);
BENCHMARK(DrawImageSlide)->Unit(benchmark::kMillisecond);

// The first time a picture is shown it is decoded as well (later draws reuse
// the decoded picture).
void DrawImageSlideFirstTime(benchmark::State& state) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 1920, 1080);
    SlidePaintOptions options;
    int variant = 1;
    for (auto _ : state) {
        state.PauseTiming();
        Slide slide = imageSlide(variant++);
        state.ResumeTiming();
        cairo_t* cr = cairo_create(surface);
        SlidePainter::paint(cr, slide, options, 1920, 1080);
        cairo_destroy(cr);
        cairo_surface_flush(surface);
    }
    cairo_surface_destroy(surface);
}
BENCHMARK(DrawImageSlideFirstTime)->Unit(benchmark::kMillisecond);

// What the stage computes to hit-test a click on a card.
void CardGeometry(benchmark::State& state) {
    Slide slide = decisionsSlide();
    SlidePaintOptions options;
    for (auto _ : state) {
        auto geometry = SlidePainter::geometry(slide, options);
        benchmark::DoNotOptimize(geometry.cards.data());
    }
}
BENCHMARK(CardGeometry)->Unit(benchmark::kMicrosecond);

// 100 slides: regular, decisions and image slides in turn.
Deck hundredSlideDeck() {
    Deck deck;
    deck.title = "Benchmark";
    Slide slides[] = {regularSlide(), decisionsSlide(), imageSlide()};
    for (int i = 0; i < 100; ++i) {
        deck.slides.push_back(slides[i % 3]);
        deck.slides.back().id = Uuid::random();
    }
    return deck;
}

void ExportHundredSlides(benchmark::State& state) {
    Deck deck = hundredSlideDeck();
    std::size_t size = 0;
    for (auto _ : state) {
        auto pdf = deckPdf(deck);
        size = pdf ? pdf->size() : 0;
        benchmark::DoNotOptimize(size);
    }
    state.counters["pdf_bytes"] = static_cast<double>(size);
}
BENCHMARK(ExportHundredSlides)->Unit(benchmark::kMillisecond)->Iterations(3);

// The same deck as handout pages, each slide with a paragraph of presenter
// notes under it (the window's "Include presenter notes").
void ExportHundredSlidesWithNotes(benchmark::State& state) {
    Deck deck = hundredSlideDeck();
    for (auto& slide : deck.slides) {
        slide.notes = "Open with the customer's question, then show the page live. Point at the totals and "
                      "mention that the numbers refresh every minute.\nIf time is short, skip the second demo.";
    }
    PdfExportOptions options;
    options.withNotes = true;
    std::size_t size = 0;
    for (auto _ : state) {
        auto pdf = deckPdf(deck, options);
        size = pdf ? pdf->size() : 0;
        benchmark::DoNotOptimize(size);
    }
    state.counters["pdf_bytes"] = static_cast<double>(size);
}
BENCHMARK(ExportHundredSlidesWithNotes)->Unit(benchmark::kMillisecond)->Iterations(3);

// A save of the same deck with nothing changed: the thumbnail comes from the
// render cache and is encoded as PNG, the PDF is drawn again.
void QuickLookOfUnchangedDeck(benchmark::State& state) {
    Deck deck = hundredSlideDeck();
    makeDeckPreviews(deck);
    for (auto _ : state) {
        DeckPreviews previews = makeDeckPreviews(deck);
        benchmark::DoNotOptimize(previews.thumbnailPng);
    }
}
BENCHMARK(QuickLookOfUnchangedDeck)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

BENCHMARK_MAIN();
