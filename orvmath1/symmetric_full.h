// Dense symmetric matrix stored as one packed triangle in a dense1D.
#pragma once

#include <cassert>
#include <complex>
#include <cstddef>
#include <limits>

#include "orvmath1/dense1D.h"

namespace orv {

// Element (i, j) with i >= j lies at (i + 1) * i / 2 + j of the view; (i, j) with
// i < j reads and writes the same element. Copies share the storage like any
// dense1D; copy() is deep. Failures are false results; a constructor that cannot get
// its memory leaves dimension 0.
template <class T>
class symmetric_full : public dense1D<T, 8> {
public:
    typedef dense1D<T, 8> base_type;
    typedef T value_type;

    symmetric_full() noexcept = default;
    explicit symmetric_full(std::size_t dim) noexcept { resize(dim); }
    symmetric_full(std::size_t dim, const T& value) noexcept { resize(dim, value); }
    symmetric_full(const symmetric_full&) noexcept = default;
    symmetric_full(symmetric_full&& o) noexcept : base_type(std::move(o)), dim_(o.dim_) { o.dim_ = 0; }

    symmetric_full& operator=(const symmetric_full&) noexcept = default;
    symmetric_full& operator=(symmetric_full&& o) noexcept {
        if (this != &o) {
            base_type::operator=(std::move(o));
            dim_ = o.dim_;
            o.dim_ = 0;
        }
        return *this;
    }
    const T& operator=(const T& value) {
        base_type::fill(value);
        return value;
    }
    void shallow_copy(const symmetric_full& o) noexcept { *this = o; }
    bool copy(const symmetric_full& o) noexcept {
        if (!base_type::copy(o)) return false;
        dim_ = o.dim_;
        return true;
    }
    void clear() noexcept {
        base_type::clear();
        dim_ = 0;
    }
    void clear_hard() noexcept {
        base_type::clear_hard();
        dim_ = 0;
    }
    // New dimension; the packed elements of the leading min(old, new) block are
    // kept (the packing makes them the first ones), new ones undefined or `value`.
    bool resize(std::size_t dim) noexcept {
        std::size_t n;
        if (!packed_size(dim, n) || !base_type::resize(n)) return false;
        dim_ = dim;
        return true;
    }
    bool resize(std::size_t dim, const T& value) noexcept {
        std::size_t n;
        if (!packed_size(dim, n) || !base_type::resize(n, value)) return false;
        dim_ = dim;
        return true;
    }

    std::size_t dim() const noexcept { return dim_; }
    static std::size_t index(std::size_t i, std::size_t j) noexcept {
        return i >= j ? (i + 1) * i / 2 + j : (j + 1) * j / 2 + i;
    }
    // n = dim (dim + 1) / 2, false on overflow.
    static bool packed_size(std::size_t dim, std::size_t& n) noexcept {
        const std::size_t a = dim % 2 == 0 ? dim / 2 : dim;
        const std::size_t b = dim % 2 == 0 ? dim + 1 : (dim + 1) / 2;
        if (dim == std::numeric_limits<std::size_t>::max()) return false;
        if (b != 0 && a > std::numeric_limits<std::size_t>::max() / b) return false;
        n = a * b;
        return true;
    }
    T& operator()(std::size_t i, std::size_t j) noexcept {
        assert(i < dim_ && j < dim_);
        return base_type::data()[index(i, j)];
    }
    const T& operator()(std::size_t i, std::size_t j) const noexcept {
        assert(i < dim_ && j < dim_);
        return base_type::data()[index(i, j)];
    }

    void swap(symmetric_full& o) noexcept {
        base_type::swap(o);
        std::swap(dim_, o.dim_);
    }

private:
    std::size_t dim_ = 0;
};

extern template class symmetric_full<double>;

}  // namespace orv
