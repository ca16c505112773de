#include "slides/reveal_plan.h"

#include <algorithm>
#include <set>

#include "slides/body_layout.h"

namespace lectern {

namespace {

bool validRow(const RevealSteps& plan, BuildRowKey row) {
    return row.step < plan.size() && row.pos < plan[row.step].size();
}

// Takes the row's unit out of its step; removes the step when it empties.
// Returns the unit and whether its step was removed.
std::pair<std::int64_t, bool> takeRow(RevealSteps& plan, BuildRowKey row) {
    auto& step = plan[row.step];
    std::int64_t unit = step[row.pos];
    step.erase(step.begin() + static_cast<std::ptrdiff_t>(row.pos));
    bool removed = step.empty();
    if (removed) plan.erase(plan.begin() + static_cast<std::ptrdiff_t>(row.step));
    return {unit, removed};
}

}  // namespace

RevealSteps RevealPlan::normalized(std::size_t unitCount, const std::optional<RevealSteps>& stored) {
    const auto count = static_cast<std::int64_t>(unitCount);
    RevealSteps plan;
    std::set<std::int64_t> used;
    if (stored) {
        for (const auto& step : *stored) {
            std::vector<std::int64_t> kept;
            for (std::int64_t unit : step) {
                if (unit >= 0 && unit < count) {
                    kept.push_back(unit);
                    used.insert(unit);
                }
            }
            if (!kept.empty()) plan.push_back(std::move(kept));
        }
    }
    for (std::int64_t unit = 0; unit < count; ++unit) {
        if (!used.contains(unit)) plan.push_back({unit});
    }
    return plan;  // with no stored plan this is [[0], [1], ..., [N-1]]
}

RevealSteps RevealPlan::normalized(const Slide& slide) {
    return normalized(revealUnits(slide.body).size(), slide.revealPlan);
}

std::size_t RevealPlan::stepCount(const Slide& slide) {
    if (slide.reveal != RevealMode::reveal) return 0;
    if (slide.layout == SlideLayout::decisions) return slide.links.size();
    return normalized(slide).size();
}

std::int64_t RevealPlan::highestRevealIndex(const Slide& slide) {
    std::size_t count = stepCount(slide);
    return count == 0 ? 0 : static_cast<std::int64_t>(count) - 1;
}

std::vector<AttributedText> RevealPlan::stepTexts(const Slide& slide) {
    auto units = revealUnits(slide.body);
    std::vector<AttributedText> texts;
    for (const auto& step : normalized(units.size(), slide.revealPlan)) {
        AttributedText text;
        if (!texts.empty()) {
            const auto& first = units[static_cast<std::size_t>(step.front())];
            text.append(std::string(first.precedingBlankLines, '\n'));
        }
        for (std::size_t i = 0; i < step.size(); ++i) {
            if (i > 0) text.append("\n");
            text.append(units[static_cast<std::size_t>(step[i])].text);
        }
        texts.push_back(std::move(text));
    }
    return texts;
}

bool RevealPlan::canMergeWithStepAbove(const RevealSteps& plan, std::size_t step) {
    return step >= 1 && step < plan.size();
}

bool RevealPlan::canBreakIntoOwnStep(const RevealSteps& plan, BuildRowKey row) {
    return validRow(plan, row) && plan[row.step].size() > 1;
}

RevealSteps RevealPlan::mergeWithStepAbove(const Slide& slide, std::size_t step) {
    RevealSteps plan = normalized(slide);
    if (!canMergeWithStepAbove(plan, step)) return plan;
    auto& above = plan[step - 1];
    above.insert(above.end(), plan[step].begin(), plan[step].end());
    plan.erase(plan.begin() + static_cast<std::ptrdiff_t>(step));
    return plan;
}

RevealSteps RevealPlan::breakIntoOwnStep(const Slide& slide, BuildRowKey row) {
    RevealSteps plan = normalized(slide);
    if (!canBreakIntoOwnStep(plan, row)) return plan;
    const auto step = plan[row.step];
    const auto at = step.begin() + static_cast<std::ptrdiff_t>(row.pos);
    RevealSteps pieces;
    if (at != step.begin()) pieces.emplace_back(step.begin(), at);
    pieces.push_back({*at});
    if (at + 1 != step.end()) pieces.emplace_back(at + 1, step.end());
    plan.erase(plan.begin() + static_cast<std::ptrdiff_t>(row.step));
    plan.insert(plan.begin() + static_cast<std::ptrdiff_t>(row.step), pieces.begin(), pieces.end());
    return plan;
}

RevealSteps RevealPlan::dropRowOnStep(const Slide& slide, BuildRowKey row, std::size_t targetStep) {
    RevealSteps plan = normalized(slide);
    if (!validRow(plan, row) || targetStep >= plan.size() || targetStep == row.step) return plan;
    auto [unit, removed] = takeRow(plan, row);
    if (removed && targetStep > row.step) --targetStep;
    plan[targetStep].push_back(unit);
    return plan;
}

RevealSteps RevealPlan::dropRowInGap(const Slide& slide, BuildRowKey row, std::size_t gap) {
    RevealSteps plan = normalized(slide);
    if (!validRow(plan, row)) return plan;
    auto [unit, removed] = takeRow(plan, row);
    if (removed && gap > row.step) --gap;
    gap = std::min(gap, plan.size());
    plan.insert(plan.begin() + static_cast<std::ptrdiff_t>(gap), {unit});
    return plan;
}

}  // namespace lectern
