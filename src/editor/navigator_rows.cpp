#include "editor/navigator_rows.h"

#include <algorithm>
#include <optional>

namespace lectern {

namespace {

enum class Step { keep, remove, add };

// The shortest edit script from `a` to `b` (Myers' O(ND) difference), or
// nothing when it needs more than `limit` removals and additions.
std::optional<std::vector<Step>> shortestScript(const std::vector<Uuid>& a, const std::vector<Uuid>& b,
                                                std::size_t limit) {
    const long n = static_cast<long>(a.size());
    const long m = static_cast<long>(b.size());
    const long maxD = std::min(static_cast<long>(limit), n + m);
    const long offset = maxD + 1;
    // v[offset + k]: the furthest x reached on diagonal k = x - y.
    std::vector<long> v(static_cast<std::size_t>(2 * offset + 1), 0);
    std::vector<std::vector<long>> trace;
    auto at = [&](std::vector<long>& values, long k) -> long& { return values[static_cast<std::size_t>(offset + k)]; };

    long found = -1;
    for (long d = 0; d <= maxD && found < 0; ++d) {
        trace.push_back(v);
        for (long k = -d; k <= d; k += 2) {
            long x = (k == -d || (k != d && at(v, k - 1) < at(v, k + 1))) ? at(v, k + 1) : at(v, k - 1) + 1;
            long y = x - k;
            while (x < n && y < m && a[static_cast<std::size_t>(x)] == b[static_cast<std::size_t>(y)]) ++x, ++y;
            at(v, k) = x;
            if (x >= n && y >= m) {
                found = d;
                break;
            }
        }
    }
    if (found < 0) return std::nullopt;

    // Walk back from the end, each d's values as they stood before step d.
    std::vector<Step> steps;
    long x = n, y = m;
    for (long d = found; d >= 0; --d) {
        auto& values = trace[static_cast<std::size_t>(d)];
        long k = x - y;
        long previousK = (k == -d || (k != d && at(values, k - 1) < at(values, k + 1))) ? k + 1 : k - 1;
        long previousX = d == 0 ? 0 : at(values, previousK);
        long previousY = d == 0 ? 0 : previousX - previousK;
        while (x > previousX && y > previousY) {
            steps.push_back(Step::keep);
            --x, --y;
        }
        if (d > 0) {
            steps.push_back(x == previousX ? Step::add : Step::remove);
            x = previousX;
            y = previousY;
        }
    }
    std::reverse(steps.begin(), steps.end());
    return steps;
}

}  // namespace

std::vector<RowSplice> rowSplices(const std::vector<Uuid>& before, const std::vector<Uuid>& after,
                                  std::size_t maxChanges) {
    std::size_t prefix = 0;
    while (prefix < before.size() && prefix < after.size() && before[prefix] == after[prefix]) ++prefix;
    std::size_t suffix = 0;
    while (suffix < before.size() - prefix && suffix < after.size() - prefix &&
           before[before.size() - 1 - suffix] == after[after.size() - 1 - suffix]) {
        ++suffix;
    }
    std::vector<Uuid> a(before.begin() + static_cast<std::ptrdiff_t>(prefix),
                        before.end() - static_cast<std::ptrdiff_t>(suffix));
    std::vector<Uuid> b(after.begin() + static_cast<std::ptrdiff_t>(prefix),
                        after.end() - static_cast<std::ptrdiff_t>(suffix));
    if (a.empty() && b.empty()) return {};
    if (a.empty() || b.empty()) return {RowSplice{prefix, a.size(), b.size()}};

    auto script = shortestScript(a, b, maxChanges);
    if (!script) return {RowSplice{prefix, a.size(), b.size()}};

    // Runs of removals and additions between kept rows become one splice each.
    std::vector<RowSplice> splices;
    std::size_t position = prefix;
    std::optional<RowSplice> run;
    for (Step step : *script) {
        if (step == Step::keep) {
            if (run) {
                position = run->position + run->added;
                splices.push_back(*run);
                run.reset();
            }
            ++position;
            continue;
        }
        if (!run) run = RowSplice{position, 0, 0};
        (step == Step::remove ? run->removed : run->added)++;
    }
    if (run) splices.push_back(*run);
    return splices;
}

}  // namespace lectern
