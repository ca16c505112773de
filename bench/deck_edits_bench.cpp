// Reordering a large talk: one slide of a 1,000-slide deck moved from near
// the start to near the end, by index ("Move" commands) and by a drag onto a
// row's bottom edge. Each edit returns a new deck; the "Copy" figures include
// the copy of the deck that the document makes for undo, the others move the
// deck in and out, so they time the edit alone.

#include <benchmark/benchmark.h>

#include <utility>

#include "bench_decks.h"
#include "editor/deck_edits.h"

namespace lectern::bench {
namespace {

constexpr std::size_t slideCount = 1000;
constexpr std::size_t near = 10;
constexpr std::size_t far = slideCount - 10;

const Deck& talk() {
    static const Deck shared = makeTalkDeck(slideCount, 20261121);
    return shared;
}

void BM_MoveSlide1000(benchmark::State& state) {
    Deck deck = talk();
    for (auto _ : state) {
        // There and back, so every iteration starts from the same order.
        deck = edits::moveSlide(std::move(deck), near, far);
        deck = edits::moveSlide(std::move(deck), far, near);
        benchmark::DoNotOptimize(deck);
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_MoveSlide1000)->Unit(benchmark::kMicrosecond)->MinTime(0.5);

void BM_MoveSlideCopy1000(benchmark::State& state) {
    const Deck& deck = talk();
    for (auto _ : state) {
        Deck moved = edits::moveSlide(deck, near, far);
        benchmark::DoNotOptimize(moved);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_MoveSlideCopy1000)->Unit(benchmark::kMicrosecond)->MinTime(0.5);

void BM_DropSlide1000(benchmark::State& state) {
    Deck deck = talk();
    const Uuid dragged = deck.slides[near].id;
    const Uuid down = deck.slides[far].id;
    const Uuid up = deck.slides[near - 1].id;
    for (auto _ : state) {
        deck = edits::dropSlide(std::move(deck), dragged, {edits::SlideDropEdge::Side::bottom, down, true});
        deck = edits::dropSlide(std::move(deck), dragged, {edits::SlideDropEdge::Side::bottom, up, true});
        benchmark::DoNotOptimize(deck);
    }
    if (deck.slides[near].id != dragged) state.SkipWithError("the dragged slide did not come back");
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_DropSlide1000)->Unit(benchmark::kMicrosecond)->MinTime(0.5);

void BM_DropSlideCopy1000(benchmark::State& state) {
    const Deck& deck = talk();
    const edits::SlideDropEdge edge{edits::SlideDropEdge::Side::bottom, deck.slides[far].id, true};
    for (auto _ : state) {
        Deck dropped = edits::dropSlide(deck, deck.slides[near].id, edge);
        benchmark::DoNotOptimize(dropped);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DropSlideCopy1000)->Unit(benchmark::kMicrosecond)->MinTime(0.5);

}  // namespace
}  // namespace lectern::bench

BENCHMARK_MAIN();
