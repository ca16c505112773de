#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "model/attributed_text.h"
#include "model/slide.h"

namespace lectern {

// Steps of a reveal: step k lists the unit indexes shown at step k.
using RevealSteps = std::vector<std::vector<std::int64_t>>;

// How far the current slide's reveal has come, handed to the layouts. The
// default (mode all, index 0) applies wherever nothing is being presented.
struct RevealState {
    RevealMode mode = RevealMode::all;
    std::int64_t index = 0;  // steps shown beyond the first
    friend bool operator==(const RevealState&, const RevealState&) = default;
};

// One row of the build-order list: a unit, by its step and its place in it.
struct BuildRowKey {
    std::size_t step = 0;
    std::size_t pos = 0;
    friend bool operator==(const BuildRowKey&, const BuildRowKey&) = default;
};

// The build order of a slide. The stored plan is never trusted as it stands:
// it is normalised against the current text every time it is used.
class RevealPlan {
public:
    // Keeps the stored indexes that name a unit (duplicates too), drops steps
    // left empty, then appends every unit not yet used as a step of its own.
    static RevealSteps normalized(std::size_t unitCount, const std::optional<RevealSteps>& stored);
    static RevealSteps normalized(const Slide& slide);

    // The steps navigation goes through: none in mode all; one per card on a
    // decisions slide; otherwise the steps of the normalised plan.
    static std::size_t stepCount(const Slide& slide);
    // The highest reveal index navigation may reach (0 when there are no steps).
    static std::int64_t highestRevealIndex(const Slide& slide);

    // Per step, its units' lines joined with "\n", each step after the first
    // preceded by one "\n" per blank line before its first unit.
    static std::vector<AttributedText> stepTexts(const Slide& slide);

    // Build-order edits. Each reads the slide's normalised plan and returns
    // the plan to store in `revealPlan` as one edit.
    static RevealSteps mergeWithStepAbove(const Slide& slide, std::size_t step);
    static RevealSteps breakIntoOwnStep(const Slide& slide, BuildRowKey row);
    static RevealSteps dropRowOnStep(const Slide& slide, BuildRowKey row, std::size_t targetStep);
    static RevealSteps dropRowInGap(const Slide& slide, BuildRowKey row, std::size_t gap);

    // Whether the editor offers these on a step or row.
    static bool canMergeWithStepAbove(const RevealSteps& plan, std::size_t step);
    static bool canBreakIntoOwnStep(const RevealSteps& plan, BuildRowKey row);
};

}  // namespace lectern
