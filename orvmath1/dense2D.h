// Column-major matrix view over a dense1D.
#pragma once

#include <cassert>
#include <complex>
#include <cstddef>
#include <limits>
#include <type_traits>

#include "orvmath1/dense1D.h"

namespace orv {

/// Element (i, j) lies at offset + j * ld + i of the shared storage; a column is
/// contiguous. The underlying dense1D view spans from (0, 0) to (rows-1, cols-1), that
/// is (cols - 1) * ld + rows elements, 0 when rows or cols is 0. A compact matrix has
/// ld == rows, and then size() == rows * cols. Callers test `rows() * cols() == 0`
/// for "no work".
///
/// Copies and sub_matrix views share the storage, as for dense1D. A resize or copy
/// that changes the shape makes the matrix compact (ld == rows); one that keeps it
/// works in place, so copying into a sub_matrix view writes the parent. Failures are
/// false results.
template <class T>
class dense2D : public dense1D<T, 8> {
public:
    /// The vector of the storage under the matrix.
    typedef dense1D<T, 8> base_type;
    /// The element type.
    typedef T value_type;

    /// An empty matrix (0 x 0).
    dense2D() noexcept = default;
    /// A compact rows x cols matrix, elements undefined.
    dense2D(std::size_t rows, std::size_t cols) noexcept { resize(rows, cols); }
    /// A compact rows x cols matrix set to value.
    dense2D(std::size_t rows, std::size_t cols, const T& value) noexcept { resize(rows, cols, value); }
    /// Wraps external column-major memory, which stays the caller's. ld < rows leaves
    /// an empty matrix.
    template <class P, typename std::enable_if<std::is_same<P, T*>::value, int>::type = 0>
    dense2D(std::size_t rows, std::size_t cols, std::size_t ld, P external) noexcept {
        std::size_t span;
        if (!external || !span_of(rows, cols, ld, span)) return;
        if (span == 0) return;
        base_type::operator=(base_type(span, external));
        if (base_type::size() == span) set_shape(rows, cols, ld);
    }
    /// A matrix on shared storage, starting at the first element of `storage`. A
    /// shape that does not fit in the view leaves an empty matrix.
    dense2D(std::size_t rows, std::size_t cols, std::size_t ld, const base_type& storage) noexcept {
        std::size_t span;
        if (!span_of(rows, cols, ld, span) || span > storage.size()) return;
        base_type::operator=(storage.sub_vector(0, span));
        set_shape(rows, cols, ld);
    }
    /// Shares the other matrix's storage and shape.
    dense2D(const dense2D&) noexcept = default;
    /// Takes o's matrix; o becomes empty.
    dense2D(dense2D&& o) noexcept : base_type(std::move(o)), rows_(o.rows_), cols_(o.cols_), ld_(o.ld_) {
        o.rows_ = o.cols_ = o.ld_ = 0;
    }

    /// Shares the other matrix's storage and shape.
    dense2D& operator=(const dense2D&) noexcept = default;
    /// Takes o's matrix; o becomes empty.
    dense2D& operator=(dense2D&& o) noexcept {
        if (this != &o) {
            base_type::operator=(std::move(o));
            rows_ = o.rows_;
            cols_ = o.cols_;
            ld_ = o.ld_;
            o.rows_ = o.cols_ = o.ld_ = 0;
        }
        return *this;
    }
    /// Fills the matrix elements (not the gaps between columns) and returns the value.
    const T& operator=(const T& value) {
        fill(value);
        return value;
    }
    /// Sets every element of the matrix (not the gaps between columns).
    void fill(const T& value) {
        for (std::size_t j = 0; j < cols_; ++j) {
            T* c = col(j);
            for (std::size_t i = 0; i < rows_; ++i) c[i] = value;
        }
    }
    /// Shares o's storage and shape (the same as assignment).
    void shallow_copy(const dense2D& o) noexcept { *this = o; }
    /// Deep, compact copy of o.
    bool copy(const dense2D& o) noexcept;

    /// Shape 0 x 0, storage kept.
    void clear() noexcept {
        base_type::clear();
        rows_ = cols_ = ld_ = 0;
    }
    /// Shape 0 x 0, storage released (freed if this was its last view).
    void clear_hard() noexcept {
        base_type::clear_hard();
        rows_ = cols_ = ld_ = 0;
    }
    /// Compact shape rows x cols; the first rows*cols elements of the storage (in
    /// storage order) are kept, new ones undefined or `value`. The same shape is kept
    /// as it is, so that a sub_matrix view keeps its leading dimension.
    bool resize(std::size_t rows, std::size_t cols) noexcept {
        if (rows == rows_ && cols == cols_) return true;
        std::size_t n;
        if (!checked_product(rows, cols, n) || !base_type::resize(n)) return false;
        set_shape(rows, cols, rows);
        return true;
    }
    /// The same, new elements set to value.
    bool resize(std::size_t rows, std::size_t cols, const T& value) noexcept {
        if (rows == rows_ && cols == cols_) return true;
        std::size_t n;
        if (!checked_product(rows, cols, n) || !base_type::resize(n, value)) return false;
        set_shape(rows, cols, rows);
        return true;
    }
    /// Room for a compact rows x cols matrix; the shape is unchanged.
    bool reserve(std::size_t rows, std::size_t cols, std::size_t factor = 1) noexcept {
        std::size_t n;
        return checked_product(rows, cols, n) && base_type::reserve(n, factor);
    }

    /// View on rows [row0, row0 + rows) and columns [col0, col0 + cols), with this
    /// matrix's leading dimension.
    dense2D sub_matrix(std::size_t row0, std::size_t col0, std::size_t rows, std::size_t cols) const noexcept {
        assert(row0 <= rows_ && rows <= rows_ - row0 && col0 <= cols_ && cols <= cols_ - col0);
        dense2D m;
        std::size_t span = (rows == 0 || cols == 0) ? 0 : (cols - 1) * ld_ + rows;
        m.base_type::operator=(base_type::sub_vector(span ? col0 * ld_ + row0 : 0, span));
        m.set_shape(rows, cols, ld_);
        return m;
    }
    /// Column j as a vector view.
    base_type column(std::size_t j) const noexcept {
        assert(j < cols_);
        return base_type::sub_vector(j * ld_, rows_);
    }

    /// Number of rows.
    std::size_t rows() const noexcept { return rows_; }
    /// Number of columns.
    std::size_t cols() const noexcept { return cols_; }
    /// Leading dimension: distance between the starts of two columns.
    std::size_t ld() const noexcept { return ld_; }

    /// Start of column j.
    T* col(std::size_t j) noexcept { return base_type::data() + j * ld_; }
    /// Start of column j.
    const T* col(std::size_t j) const noexcept { return base_type::data() + j * ld_; }
    /// Element (i, j), checked by assert only.
    T& operator()(std::size_t i, std::size_t j) noexcept {
        assert(i < rows_ && j < cols_);
        return base_type::data()[j * ld_ + i];
    }
    /// Element (i, j), checked by assert only.
    const T& operator()(std::size_t i, std::size_t j) const noexcept {
        assert(i < rows_ && j < cols_);
        return base_type::data()[j * ld_ + i];
    }

    /// Exchanges the two matrices.
    void swap(dense2D& o) noexcept {
        base_type::swap(o);
        std::swap(rows_, o.rows_);
        std::swap(cols_, o.cols_);
        std::swap(ld_, o.ld_);
    }

private:
    static bool checked_product(std::size_t a, std::size_t b, std::size_t& n) noexcept {
        if (b != 0 && a > std::numeric_limits<std::size_t>::max() / b) return false;
        n = a * b;
        return true;
    }
    static bool span_of(std::size_t rows, std::size_t cols, std::size_t ld, std::size_t& span) noexcept {
        if (ld < rows) return false;
        if (rows == 0 || cols == 0) {
            span = 0;
            return true;
        }
        std::size_t n;
        if (!checked_product(cols - 1, ld, n) || n > std::numeric_limits<std::size_t>::max() - rows) return false;
        span = n + rows;
        return true;
    }
    void set_shape(std::size_t rows, std::size_t cols, std::size_t ld) noexcept {
        rows_ = rows;
        cols_ = cols;
        ld_ = ld;
    }

    std::size_t rows_ = 0;
    std::size_t cols_ = 0;
    std::size_t ld_ = 0;
};

template <class T>
bool dense2D<T>::copy(const dense2D& o) noexcept {
    if (this == &o) return true;
    if (base_type::storage() && base_type::storage() == o.storage()) {
        // Same storage: the two may overlap, go through a private copy.
        dense2D tmp;
        if (!tmp.copy(o)) return false;
        return copy(tmp);
    }
    const dense2D src(o);  // keeps o's storage alive whatever happens to ours
    if (!resize(src.rows_, src.cols_)) return false;
    for (std::size_t j = 0; j < src.cols_; ++j) {
        const T* s = src.col(j);
        T* d = col(j);
        for (std::size_t i = 0; i < src.rows_; ++i) d[i] = s[i];
    }
    return true;
}

extern template class dense2D<double>;
extern template class dense2D<unsigned int>;
extern template class dense2D<std::complex<double>>;

}  // namespace orv
