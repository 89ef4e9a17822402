// Symbolic description of one row block of the block-skyline factor.
#pragma once

#include "orvmath1/dense1D.h"

namespace orv {
namespace core {

// One column segment of a block: the global column and the number of rows the
// segment holds above the diagonal (own column) or above the block's last row
// (extra column). At node level both are in supervariables; after conversion to
// DOF level they are DOF numbers and DOF counts.
struct block_segment {
    unsigned int column;
    unsigned int height;
};

inline bool operator==(const block_segment& a, const block_segment& b) {
    return a.column == b.column && a.height == b.height;
}
inline bool operator!=(const block_segment& a, const block_segment& b) { return !(a == b); }

// A block owns the rows [first, last). Its segments are sorted by column: first the
// last - first own columns (one per owned row, height possibly 0), then one extra
// segment for each later column that has entries within the block's rows. An extra
// segment is contiguous and ends at the block's last row.
struct block_profile {
    orv::dense1D<block_segment, 8> segments;
    unsigned int first = 0;
    unsigned int last = 0;
};

}  // namespace core
}  // namespace orv
