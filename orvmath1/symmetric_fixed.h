// Small symmetric N x N matrix held by value, one packed triangle.
#pragma once

#include <cassert>
#include <cstddef>

#include "orvmath1/vector_fixed.h"

namespace orv {

/// A plain value holding N (N + 1) / 2 numbers. Element (i, j) with i >= j lies at
/// (i + 1) * i / 2 + j, the packing of symmetric_full; (i, j) with i < j is the same
/// element. A default-constructed matrix is zero.
template <class T, std::size_t N>
class symmetric_fixed {
public:
    /// The element type.
    typedef T value_type;
    /// Number of stored elements: N (N + 1) / 2.
    static constexpr std::size_t packed_size = N * (N + 1) / 2;

    /// The zero matrix.
    symmetric_fixed() noexcept { fill(T()); }
    /// Every element set to value.
    explicit symmetric_fixed(const T& value) noexcept { fill(value); }

    /// Sets every element and returns the value.
    const T& operator=(const T& value) noexcept {
        fill(value);
        return value;
    }
    /// Sets every element.
    void fill(const T& value) noexcept {
        for (std::size_t k = 0; k < packed_size; ++k) m_[k] = value;
    }

    /// N.
    static constexpr std::size_t dim() noexcept { return N; }
    /// packed_size.
    static constexpr std::size_t size() noexcept { return packed_size; }
    /// Position of element (i, j) in the packed storage.
    static constexpr std::size_t index(std::size_t i, std::size_t j) noexcept {
        return i >= j ? (i + 1) * i / 2 + j : (j + 1) * j / 2 + i;
    }
    /// The packed elements.
    T* data() noexcept { return m_; }
    /// The packed elements.
    const T* data() const noexcept { return m_; }
    /// Element (i, j) = (j, i), checked by assert only.
    T& operator()(std::size_t i, std::size_t j) noexcept {
        assert(i < N && j < N);
        return m_[index(i, j)];
    }
    /// Element (i, j) = (j, i), checked by assert only.
    const T& operator()(std::size_t i, std::size_t j) const noexcept {
        assert(i < N && j < N);
        return m_[index(i, j)];
    }

    /// Adds o element by element.
    symmetric_fixed& operator+=(const symmetric_fixed& o) noexcept {
        for (std::size_t k = 0; k < packed_size; ++k) m_[k] += o.m_[k];
        return *this;
    }
    /// Multiplies every element by s.
    symmetric_fixed& operator*=(const T& s) noexcept {
        for (std::size_t k = 0; k < packed_size; ++k) m_[k] *= s;
        return *this;
    }
    /// True when every element is equal.
    friend bool operator==(const symmetric_fixed& a, const symmetric_fixed& b) noexcept {
        for (std::size_t k = 0; k < packed_size; ++k)
            if (!(a.m_[k] == b.m_[k])) return false;
        return true;
    }
    /// True when some element differs.
    friend bool operator!=(const symmetric_fixed& a, const symmetric_fixed& b) noexcept { return !(a == b); }

    /// y = A x
    vector_fixed<T, N> operator*(const vector_fixed<T, N>& x) const noexcept {
        vector_fixed<T, N> y;
        for (std::size_t i = 0; i < N; ++i)
            for (std::size_t j = 0; j < N; ++j) y[i] += (*this)(i, j) * x[j];
        return y;
    }

private:
    T m_[packed_size];
};

extern template class symmetric_fixed<double, 3>;
extern template class symmetric_fixed<double, 6>;

}  // namespace orv
