#include "editor/navigator_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace lectern {
namespace {

std::vector<Uuid> ids(std::size_t count) {
    std::vector<Uuid> made;
    for (std::size_t i = 0; i < count; ++i) made.push_back(Uuid::random());
    return made;
}

// What a list model does with the splices.
std::vector<Uuid> apply(std::vector<Uuid> rows, const std::vector<Uuid>& after, const std::vector<RowSplice>& splices) {
    for (const auto& splice : splices) {
        EXPECT_LE(splice.position + splice.removed, rows.size());
        auto at = rows.begin() + static_cast<std::ptrdiff_t>(splice.position);
        rows.erase(at, at + static_cast<std::ptrdiff_t>(splice.removed));
        rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(splice.position),
                    after.begin() + static_cast<std::ptrdiff_t>(splice.position),
                    after.begin() + static_cast<std::ptrdiff_t>(splice.position + splice.added));
    }
    return rows;
}

std::size_t touched(const std::vector<RowSplice>& splices) {
    std::size_t rows = 0;
    for (const auto& splice : splices) rows += splice.removed + splice.added;
    return rows;
}

TEST(NavigatorRows, EditsTouchOnlyTheirRows) {
    auto before = ids(1000);

    // A slide dragged from the top to the bottom: one row out, one row in.
    auto moved = before;
    std::rotate(moved.begin(), moved.begin() + 1, moved.end());
    auto splices = rowSplices(before, moved);
    EXPECT_EQ(apply(before, moved, splices), moved);
    EXPECT_EQ(splices, (std::vector<RowSplice>{{0, 1, 0}, {999, 0, 1}}));

    auto inserted = before;
    inserted.insert(inserted.begin() + 500, Uuid::random());
    EXPECT_EQ(rowSplices(before, inserted), (std::vector<RowSplice>{{500, 0, 1}}));

    auto deleted = before;
    deleted.erase(deleted.begin() + 999);
    EXPECT_EQ(rowSplices(before, deleted), (std::vector<RowSplice>{{999, 1, 0}}));

    EXPECT_TRUE(rowSplices(before, before).empty());
    EXPECT_EQ(rowSplices({}, before), (std::vector<RowSplice>{{0, 0, 1000}}));
    EXPECT_EQ(rowSplices(before, {}), (std::vector<RowSplice>{{0, 1000, 0}}));
}

TEST(NavigatorRows, AnyChangeIsReproducedAndLargeOnesAreOneSplice) {
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        auto before = ids(random() % 30);
        auto after = before;
        // A few moves, insertions and deletions, as undo can bring back at once.
        for (int edit = static_cast<int>(random() % 5); edit > 0; --edit) {
            switch (random() % 3) {
            case 0:
                after.insert(after.begin() + static_cast<std::ptrdiff_t>(random() % (after.size() + 1)), Uuid::random());
                break;
            case 1:
                if (!after.empty()) after.erase(after.begin() + static_cast<std::ptrdiff_t>(random() % after.size()));
                break;
            default:
                if (after.size() > 1) {
                    auto from = random() % after.size();
                    Uuid id = after[from];
                    after.erase(after.begin() + static_cast<std::ptrdiff_t>(from));
                    after.insert(after.begin() + static_cast<std::ptrdiff_t>(random() % (after.size() + 1)), id);
                }
            }
        }
        auto splices = rowSplices(before, after);
        ASSERT_EQ(apply(before, after, splices), after) << "round " << round;
        EXPECT_LE(touched(splices), 10u) << "round " << round;
    }

    // Reversed: beyond the limit, the middle is replaced whole.
    auto before = ids(600);
    std::vector<Uuid> reversed(before.rbegin(), before.rend());
    auto splices = rowSplices(before, reversed, 64);
    EXPECT_EQ(splices, (std::vector<RowSplice>{{0, 600, 600}}));
}

}  // namespace
}  // namespace lectern
