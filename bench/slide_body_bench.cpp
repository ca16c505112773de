// What the stage recomputes on every keystroke in a body: the reveal units,
// the normalised plan, the step texts and the render items. A frame at 60 Hz
// is 16.7 ms; this must stay far below it.
#include <benchmark/benchmark.h>

#include "slides/body_layout.h"
#include "slides/reveal_plan.h"

namespace {

using namespace lectern;

// A 200-line body: paragraphs with bold and coloured runs, bullet and
// numbered items after tabs, command blocks, blank lines, accents and emoji.
Slide twoHundredLineSlide() {
    Slide slide = Slide::make(SlideLayout::regular);
    slide.reveal = RevealMode::reveal;
    SlideBodyAttributes bold;
    bold.inlineIntent = inline_intent::stronglyEmphasized;
    SlideBodyAttributes command;
    command.block = SlideBodyBlockKind::command;
    SlideBodyAttributes centred;
    centred.alignment = SlideBodyAlignment::center;
    centred.foregroundColor = "#3B5A7A";
    for (int line = 0; line < 200; ++line) {
        switch (line % 8) {
            case 0: slide.body.append("\n"); break;
            case 1:
                slide.body.append("Caf\u00e9 metrics for the ", {});
                slide.body.append("launch \U0001F680", bold);
                slide.body.append(" review, line " + std::to_string(line) + "\n");
                break;
            case 2: slide.body.append("\t\u2022 A bullet item that says something useful\n"); break;
            case 3: slide.body.append("\t\t12. A numbered item under it\n"); break;
            case 4: slide.body.append("curl -s https://example.com/api/v1/items | jq .\n", command); break;
            case 5: slide.body.append("npm run demo -- --fixtures 42\n", command); break;
            case 6: slide.body.append("A centred closing thought\n", centred); break;
            default: slide.body.append("   \n"); break;
        }
    }
    // A stored plan that has gone stale: duplicates, out-of-range indexes.
    slide.revealPlan = RevealSteps{{3, 1, 1}, {400, 2}, {-1}, {10, 11, 12}, {150}};
    return slide;
}

void KeystrokeRecompute(benchmark::State& state) {
    Slide slide = twoHundredLineSlide();
    std::size_t middle = slide.body.size() / 2;
    while (middle < slide.body.size() && (slide.body.string()[middle] & 0xC0) == 0x80) ++middle;
    bool insert = true;
    for (auto _ : state) {
        // Type a character, or delete it again, in the middle of the body.
        if (insert) {
            slide.body.replace(middle, middle, "x");
        } else {
            slide.body.replace(middle, middle + 1, "");
        }
        insert = !insert;
        auto units = revealUnits(slide.body);
        auto plan = RevealPlan::normalized(units.size(), slide.revealPlan);
        auto texts = RevealPlan::stepTexts(slide);
        auto items = renderItems(slide.body);
        benchmark::DoNotOptimize(units.data());
        benchmark::DoNotOptimize(plan.data());
        benchmark::DoNotOptimize(texts.data());
        benchmark::DoNotOptimize(items.data());
    }
    state.counters["units"] = static_cast<double>(revealUnits(slide.body).size());
}
BENCHMARK(KeystrokeRecompute)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
