// Reading and writing deck.json for a large talk: 1,000 slides.

#include <benchmark/benchmark.h>

#include <string>

#include "bench_decks.h"
#include "model/deck_json.h"

namespace lectern::bench {
namespace {

constexpr std::size_t slideCount = 1000;

struct JsonFixture {
    Deck deck = makeTalkDeck(slideCount, 20261121);
    std::string json = DeckJson::encode(deck);
};

const JsonFixture& fixture() {
    static const JsonFixture shared;
    return shared;
}

void reportSize(benchmark::State& state, const std::string& json) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * json.size()));
    state.counters["json_bytes"] =
        benchmark::Counter(static_cast<double>(json.size()), benchmark::Counter::kDefaults, benchmark::Counter::kIs1024);
    state.counters["slides"] = static_cast<double>(slideCount);
}

void BM_DecodeDeck1000(benchmark::State& state) {
    const auto& f = fixture();
    // The generated deck must survive the round trip, or the figure would
    // time an early failure.
    auto check = DeckJson::decode(std::string_view(f.json));
    if (!check) {
        state.SkipWithError(("decoding failed: " + check.error().message).c_str());
        return;
    }
    if (!(*check == f.deck)) {
        state.SkipWithError("decoded deck differs from the generated one");
        return;
    }
    for (auto _ : state) {
        auto decoded = DeckJson::decode(std::string_view(f.json));
        benchmark::DoNotOptimize(decoded);
    }
    reportSize(state, f.json);
}
BENCHMARK(BM_DecodeDeck1000)->Unit(benchmark::kMillisecond)->MinTime(1.0);

void BM_EncodeDeck1000(benchmark::State& state) {
    const auto& f = fixture();
    for (auto _ : state) {
        std::string json = DeckJson::encode(f.deck);
        benchmark::DoNotOptimize(json);
    }
    reportSize(state, f.json);
}
BENCHMARK(BM_EncodeDeck1000)->Unit(benchmark::kMillisecond)->MinTime(1.0);

// Undo keeps whole copies of the deck; this is the text-only part of that.
void BM_CopyDeck1000(benchmark::State& state) {
    const auto& f = fixture();
    for (auto _ : state) {
        Deck copy = f.deck;
        benchmark::DoNotOptimize(copy);
    }
    state.counters["slides"] = static_cast<double>(slideCount);
}
BENCHMARK(BM_CopyDeck1000)->Unit(benchmark::kMicrosecond)->MinTime(0.5);

}  // namespace
}  // namespace lectern::bench

BENCHMARK_MAIN();
