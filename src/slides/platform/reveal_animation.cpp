#include "slides/platform/reveal_animation.h"

#include <algorithm>
#include <cmath>

#include "slides/reveal_plan.h"

namespace lectern {

std::vector<double> RevealAnimation::targets(const Slide& slide, std::int64_t revealIndex) {
    if (slide.reveal != RevealMode::reveal) return {};
    std::size_t count = RevealPlan::stepCount(slide);
    std::vector<double> result(count, 0.0);
    for (std::size_t k = 0; k < count; ++k) {
        if (static_cast<std::int64_t>(k) <= revealIndex) result[k] = 1.0;
    }
    return result;
}

void RevealAnimation::reset(const std::vector<double>& targets) {
    steps_.assign(targets.size(), Step{});
    for (std::size_t k = 0; k < targets.size(); ++k) steps_[k] = {targets[k], targets[k], 0};
}

void RevealAnimation::retarget(const std::vector<double>& targets, double now) {
    if (targets.size() != steps_.size()) {
        reset(targets);
        return;
    }
    for (std::size_t k = 0; k < targets.size(); ++k) {
        Step& step = steps_[k];
        if (step.to == targets[k]) continue;
        step = {valueOf(step, now), targets[k], now};
    }
}

std::vector<double> RevealAnimation::values(double now) const {
    std::vector<double> result;
    result.reserve(steps_.size());
    for (const Step& step : steps_) result.push_back(valueOf(step, now));
    return result;
}

bool RevealAnimation::isRunning(double now) const {
    return std::any_of(steps_.begin(), steps_.end(),
                       [&](const Step& step) { return step.from != step.to && now < step.start + duration; });
}

double RevealAnimation::valueOf(const Step& step, double now) const {
    double progress = std::clamp((now - step.start) / duration, 0.0, 1.0);
    return step.from + (step.to - step.from) * easeInOut(progress);
}

double RevealAnimation::easeInOut(double t) {
    // The curve runs through (0,0), (0.42,0), (0.58,1), (1,1). Solve x(u) = t
    // for the curve parameter u by bisection (x is increasing), then take y(u).
    constexpr double x1 = 0.42, x2 = 0.58;
    auto coordinate = [](double u, double p1, double p2) {
        double v = 1 - u;
        return 3 * v * v * u * p1 + 3 * v * u * u * p2 + u * u * u;
    };
    if (t <= 0) return 0;
    if (t >= 1) return 1;
    double low = 0, high = 1, u = t;
    for (int i = 0; i < 40; ++i) {
        u = (low + high) / 2;
        if (coordinate(u, x1, x2) < t) low = u; else high = u;
    }
    return coordinate(u, 0, 1);
}

}  // namespace lectern
