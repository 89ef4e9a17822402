// Dense symmetric matrix stored as one packed triangle in a dense1D.
#pragma once

#include <cassert>
#include <complex>
#include <cstddef>
#include <limits>

#include "orvmath1/dense1D.h"

namespace orv {

/// Element (i, j) with i >= j lies at (i + 1) * i / 2 + j of the view; (i, j) with
/// i < j reads and writes the same element. Copies share the storage like any
/// dense1D; copy() is deep. Failures are false results; a constructor that cannot get
/// its memory leaves dimension 0.
template <class T>
class symmetric_full : public dense1D<T, 8> {
public:
    /// The vector of the packed storage.
    typedef dense1D<T, 8> base_type;
    /// The element type.
    typedef T value_type;

    /// Dimension 0.
    symmetric_full() noexcept = default;
    /// Dimension dim, elements undefined.
    explicit symmetric_full(std::size_t dim) noexcept { resize(dim); }
    /// Dimension dim, every element set to value.
    symmetric_full(std::size_t dim, const T& value) noexcept { resize(dim, value); }
    /// Shares the other matrix's storage.
    symmetric_full(const symmetric_full&) noexcept = default;
    /// Takes o's matrix; o becomes empty.
    symmetric_full(symmetric_full&& o) noexcept : base_type(std::move(o)), dim_(o.dim_) { o.dim_ = 0; }

    /// Shares the other matrix's storage.
    symmetric_full& operator=(const symmetric_full&) noexcept = default;
    /// Takes o's matrix; o becomes empty.
    symmetric_full& operator=(symmetric_full&& o) noexcept {
        if (this != &o) {
            base_type::operator=(std::move(o));
            dim_ = o.dim_;
            o.dim_ = 0;
        }
        return *this;
    }
    /// Sets every element and returns the value.
    const T& operator=(const T& value) {
        base_type::fill(value);
        return value;
    }
    /// Shares o's storage (the same as assignment).
    void shallow_copy(const symmetric_full& o) noexcept { *this = o; }
    /// Deep copy of o; false on exhaustion.
    bool copy(const symmetric_full& o) noexcept {
        if (!base_type::copy(o)) return false;
        dim_ = o.dim_;
        return true;
    }
    /// Dimension 0, storage kept.
    void clear() noexcept {
        base_type::clear();
        dim_ = 0;
    }
    /// Dimension 0, storage released.
    void clear_hard() noexcept {
        base_type::clear_hard();
        dim_ = 0;
    }
    /// New dimension; the packed elements of the leading min(old, new) block are
    /// kept (the packing makes them the first ones), new ones undefined or `value`.
    bool resize(std::size_t dim) noexcept {
        std::size_t n;
        if (!packed_size(dim, n) || !base_type::resize(n)) return false;
        dim_ = dim;
        return true;
    }
    /// The same, new elements set to value.
    bool resize(std::size_t dim, const T& value) noexcept {
        std::size_t n;
        if (!packed_size(dim, n) || !base_type::resize(n, value)) return false;
        dim_ = dim;
        return true;
    }

    /// The dimension.
    std::size_t dim() const noexcept { return dim_; }
    /// Position of element (i, j) in the packed storage.
    static std::size_t index(std::size_t i, std::size_t j) noexcept {
        return i >= j ? (i + 1) * i / 2 + j : (j + 1) * j / 2 + i;
    }
    /// n = dim (dim + 1) / 2, false on overflow.
    static bool packed_size(std::size_t dim, std::size_t& n) noexcept {
        const std::size_t a = dim % 2 == 0 ? dim / 2 : dim;
        const std::size_t b = dim % 2 == 0 ? dim + 1 : (dim + 1) / 2;
        if (dim == std::numeric_limits<std::size_t>::max()) return false;
        if (b != 0 && a > std::numeric_limits<std::size_t>::max() / b) return false;
        n = a * b;
        return true;
    }
    /// Element (i, j) = (j, i), checked by assert only.
    T& operator()(std::size_t i, std::size_t j) noexcept {
        assert(i < dim_ && j < dim_);
        return base_type::data()[index(i, j)];
    }
    /// Element (i, j) = (j, i), checked by assert only.
    const T& operator()(std::size_t i, std::size_t j) const noexcept {
        assert(i < dim_ && j < dim_);
        return base_type::data()[index(i, j)];
    }

    /// Exchanges the two matrices.
    void swap(symmetric_full& o) noexcept {
        base_type::swap(o);
        std::swap(dim_, o.dim_);
    }

private:
    std::size_t dim_ = 0;
};

extern template class symmetric_full<double>;

}  // namespace orv
