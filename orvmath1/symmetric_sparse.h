// Compressed symmetric matrix: the upper triangle stored by rows.
#pragma once

#include <cstddef>
#include <cstdint>

#include "orvmath1/dense1D.h"

namespace orv {

/// The values live in the dense1D base, one per stored entry. Row i owns the entries
/// [pointers[i], pointers[i + 1]) whose columns (>= i, ascending) are in `columns`.
/// The dimension is pointers.size() - 1, 0 for an empty pointer vector. Copies share
/// values and profile; copy() is deep. Two matrices of the same pattern may share one
/// profile: init() takes the index vectors by sharing.
template <class T>
class symmetric_sparse : public dense1D<T, 8> {
public:
    /// The vector of the stored values.
    typedef dense1D<T, 8> base_type;
    /// Row pointers and column indices.
    typedef dense1D<unsigned int, 8> index_type;
    /// The element type.
    typedef T value_type;

    /// Dimension 0, no profile.
    symmetric_sparse() noexcept = default;
    /// Shares the other matrix's values and profile.
    symmetric_sparse(const symmetric_sparse&) noexcept = default;
    /// Shares the other matrix's values and profile.
    symmetric_sparse& operator=(const symmetric_sparse&) noexcept = default;
    /// Sets every stored entry and returns the value.
    const T& operator=(const T& value) {
        base_type::fill(value);
        return value;
    }

    /// Shares the profile and sets every stored entry to value; false on exhaustion,
    /// with the matrix left as it was. The profile is not checked here: see is_valid.
    bool init(const index_type& pointers, const index_type& columns, const T& value) noexcept {
        base_type values;
        if (!values.resize(columns.size(), value)) return false;
        base_type::operator=(values);
        pointers_ = pointers;
        columns_ = columns;
        return true;
    }
    /// Shallow views of the two index vectors.
    void get_profile(index_type& pointers, index_type& columns) const noexcept {
        pointers = pointers_;
        columns = columns_;
    }
    /// Row pointers: dim() + 1 entries.
    const index_type& pointers() const noexcept { return pointers_; }
    /// Column of each stored entry.
    const index_type& columns() const noexcept { return columns_; }

    /// The profile is consistent: pointers start at 0, do not decrease and end at the
    /// number of columns; each row's columns are ascending, not below the row and
    /// below the dimension; there is one value per column entry.
    bool is_valid() const noexcept;

    /// The dimension.
    std::size_t dim() const noexcept { return pointers_.size() == 0 ? 0 : pointers_.size() - 1; }
    /// Number of stored entries (upper triangle).
    std::size_t nbr_entries() const noexcept { return columns_.size(); }

    /// The stored entry (i, j) (either triangle), or null when it is outside the
    /// pattern or an index is at or beyond the dimension.
    T* find(std::size_t i, std::size_t j) noexcept;
    /// The same on a const matrix.
    const T* find(std::size_t i, std::size_t j) const noexcept {
        return const_cast<symmetric_sparse*>(this)->find(i, j);
    }
    /// Code of get() for an index past the dimension (the library's data error).
    static constexpr int index_out_of_range = -101;
    /// 0 with the entry, 0 with 0.0 outside the pattern, -101 (and 0.0) when an index
    /// is at or beyond the dimension.
    int get(std::size_t i, std::size_t j, T& value) const noexcept {
        value = T();
        if (i >= dim() || j >= dim()) return index_out_of_range;
        if (const T* p = find(i, j)) value = *p;
        return 0;
    }

    /// Shares o's values and profile (the same as assignment).
    void shallow_copy(const symmetric_sparse& o) noexcept { *this = o; }
    /// Deep copy of values and profile.
    bool copy(const symmetric_sparse& o) noexcept {
        if (this == &o) return true;
        base_type v;
        index_type p, c;
        if (!v.copy(o) || !p.copy(o.pointers_) || !c.copy(o.columns_)) return false;
        base_type::operator=(v);
        pointers_ = p;
        columns_ = c;
        return true;
    }
    /// Dimension 0; the values' storage is kept, the profile is let go.
    void clear() noexcept {
        base_type::clear();
        pointers_.clear_hard();
        columns_.clear_hard();
    }
    /// Dimension 0; values and profile let go.
    void clear_hard() noexcept {
        base_type::clear_hard();
        pointers_.clear_hard();
        columns_.clear_hard();
    }

    /// Exchanges the two matrices.
    void swap(symmetric_sparse& o) noexcept {
        base_type::swap(o);
        pointers_.swap(o.pointers_);
        columns_.swap(o.columns_);
    }

private:
    index_type pointers_;
    index_type columns_;
};

template <class T>
bool symmetric_sparse<T>::is_valid() const noexcept {
    const std::size_t n = dim();
    if (pointers_.size() == 0) return columns_.size() == 0 && base_type::size() == 0;
    if (pointers_[0] != 0 || pointers_[n] != columns_.size() || base_type::size() != columns_.size()) return false;
    for (std::size_t r = 0; r < n; ++r) {
        const std::size_t b = pointers_[r], e = pointers_[r + 1];
        if (e < b) return false;
        for (std::size_t k = b; k < e; ++k) {
            const std::size_t c = columns_[k];
            if (c < r || c >= n) return false;
            if (k > b && c <= columns_[k - 1]) return false;
        }
    }
    return true;
}

template <class T>
T* symmetric_sparse<T>::find(std::size_t i, std::size_t j) noexcept {
    const std::size_t n = dim();
    if (i >= n || j >= n) return nullptr;
    const std::size_t r = i < j ? i : j;
    const unsigned int c = static_cast<unsigned int>(i < j ? j : i);
    // Bounds are clamped so that a damaged profile reads as "outside the pattern".
    const std::size_t limit = columns_.size() < base_type::size() ? columns_.size() : base_type::size();
    std::size_t b = pointers_[r], e = pointers_[r + 1];
    if (e > limit) e = limit;
    if (b >= e) return nullptr;
    const unsigned int* cols = columns_.data();
    if (cols[b] == c) return base_type::data() + b;
    // Binary search in the rest of the row.
    std::size_t lo = b + 1, hi = e;
    while (lo < hi) {
        const std::size_t mid = lo + (hi - lo) / 2;
        if (cols[mid] < c)
            lo = mid + 1;
        else
            hi = mid;
    }
    return (lo < e && cols[lo] == c) ? base_type::data() + lo : nullptr;
}

extern template class symmetric_sparse<double>;

}  // namespace orv
