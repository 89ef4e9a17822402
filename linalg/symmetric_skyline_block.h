// One row block of the block-skyline matrix.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "orvmath1/dense1D.h"

namespace orv {
namespace core {

// Entry of a block's segment table: the global column of the segment and the
// address one past its last value. A segment's first value follows the end of the
// segment before it (the first segment starts right behind the diagonal).
template <class T>
struct skyline_segment {
    std::uint64_t column;
    T* end;
};

// A block owns the rows [first, last) of the matrix, first = segments[0].column.
// `values` is a view into the matrix's big array: the n_own diagonal entries, then
// the segments one after the other. The first n_own segments are the own columns
// first .. last-1 (rows [c - h, c) of column c); the others, sorted by column, are
// the extra columns beyond the block, each holding rows [last - h, last).
// Rows are stored in ascending order within a segment.
//
// The block does not own its memory: values and segments are views on storage of
// the matrix proxy, which keeps them alive.
template <class T>
class symmetric_skyline_block {
public:
    typedef T value_type;
    typedef skyline_segment<T> segment_type;

    std::uint64_t n_own = 0;
    orv::dense1D<T, 8> values;
    orv::dense1D<segment_type, 8> segments;

    std::size_t first() const noexcept { return n_own ? std::size_t(segments[0].column) : 0; }
    std::size_t last() const noexcept { return first() + std::size_t(n_own); }
    std::size_t nbr_segments() const noexcept { return segments.size(); }
    std::size_t nbr_extra() const noexcept { return segments.size() - std::size_t(n_own); }

    T* diag() noexcept { return values.data(); }
    const T* diag() const noexcept { return values.data(); }
    const segment_type* table() const noexcept { return segments.data(); }
    segment_type* table() noexcept { return segments.data(); }

    // First value of segment k.
    T* seg_begin(std::size_t k) const noexcept {
        return k == 0 ? const_cast<T*>(values.data()) + n_own : segments[k - 1].end;
    }
    T* seg_end(std::size_t k) const noexcept { return segments[k].end; }
    std::size_t seg_height(std::size_t k) const noexcept { return std::size_t(seg_end(k) - seg_begin(k)); }
    std::uint64_t seg_column(std::size_t k) const noexcept { return segments[k].column; }

    // Index of the segment of column c (c >= first), or ~0 if the block has none.
    // Own columns are found directly, extra ones by binary search behind them.
    std::size_t find_segment(std::uint64_t c) const noexcept {
        const std::size_t f = first();
        if (c < f) return ~std::size_t(0);
        if (c < f + n_own) return std::size_t(c - f);
        const segment_type* b = segments.data() + n_own;
        const segment_type* e = segments.data() + segments.size();
        const segment_type* p =
            std::lower_bound(b, e, c, [](const segment_type& s, std::uint64_t v) { return s.column < v; });
        return (p != e && p->column == c) ? std::size_t(p - segments.data()) : ~std::size_t(0);
    }

    // Address of the entry (r, c), r < c, r in the block, or null outside the profile.
    T* entry(std::size_t r, std::size_t c) const noexcept {
        const std::size_t k = find_segment(c);
        if (k == ~std::size_t(0)) return nullptr;
        const std::size_t below = (c < last()) ? c - r : last() - r;  // rows from r to the segment's end
        if (below == 0 || below > seg_height(k)) return nullptr;
        return seg_end(k) - below;
    }
};

}  // namespace core
}  // namespace orv
