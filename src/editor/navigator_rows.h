#pragma once

#include <cstddef>
#include <vector>

#include "model/uuid.h"

namespace lectern {

// One change of the navigator's list of rows: at `position`, `removed` rows
// go and `added` rows come in their place.
struct RowSplice {
    std::size_t position = 0;
    std::size_t removed = 0;
    std::size_t added = 0;
    friend bool operator==(const RowSplice&, const RowSplice&) = default;
};

// The splices that turn the rows `before` into the rows `after`, so that a
// list shows an edit by changing only the rows it touched: a moved slide is
// one row out and one row in, not every row between. Applied in order, each
// splice's position counts in the list as the splices before it left it,
// and its added rows are after[position, position + added). Rows are slide
// ids, each in a list once. When the two lists differ in more than
// `maxChanges` rows (a deck replaced, say), the differing middle is one splice.
std::vector<RowSplice> rowSplices(const std::vector<Uuid>& before, const std::vector<Uuid>& after,
                                  std::size_t maxChanges = 256);

}  // namespace lectern
