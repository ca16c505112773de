#pragma once

#include <cstddef>
#include <vector>

#include "model/slide.h"

namespace lectern {

// How far each reveal step of the slide on the stage has appeared, 0 (hidden)
// to 1 (shown). A step whose target changes moves there over 0.22 seconds,
// ease-in-out, starting from wherever it is at that moment, so a quick second
// key press never makes a step jump.
class RevealAnimation {
public:
    static constexpr double duration = 0.22;

    // The targets of a slide at a reveal index: one per step (per card on a
    // decisions slide), 1 up to the index and 0 after it; empty when the
    // slide shows everything at once.
    static std::vector<double> targets(const Slide& slide, std::int64_t revealIndex);

    // Shows the targets at once (a slide newly on the stage).
    void reset(const std::vector<double>& targets);
    // Moves towards new targets from time `now` (seconds). A different step
    // count means a different slide: the same as reset.
    void retarget(const std::vector<double>& targets, double now);

    std::vector<double> values(double now) const;
    bool isRunning(double now) const;

    // The ease-in-out timing curve, cubic-bezier(0.42, 0, 0.58, 1).
    static double easeInOut(double t);

private:
    struct Step {
        double from = 0;
        double to = 0;
        double start = 0;
    };
    double valueOf(const Step& step, double now) const;

    std::vector<Step> steps_;
};

}  // namespace lectern
