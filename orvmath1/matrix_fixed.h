// Small R x C matrix held by value, column-major like dense2D.
#pragma once

#include <cassert>
#include <cstddef>
#include <initializer_list>

#include "orvmath1/vector_fixed.h"

namespace orv {

/// A plain value: element (i, j) lies at j * R + i inside the object. A default-
/// constructed matrix is zero.
template <class T, std::size_t R, std::size_t C>
class matrix_fixed {
public:
    /// The element type.
    typedef T value_type;

    /// The zero matrix.
    matrix_fixed() noexcept { fill(T()); }
    /// Every element set to value.
    explicit matrix_fixed(const T& value) noexcept { fill(value); }
    /// Numbers given row by row, as a matrix is written; missing ones are zero.
    matrix_fixed(std::initializer_list<T> by_rows) noexcept {
        fill(T());
        std::size_t k = 0;
        for (const T& x : by_rows) {
            if (k == R * C) break;
            (*this)(k / C, k % C) = x;
            ++k;
        }
    }

    /// Sets every element and returns the value.
    const T& operator=(const T& value) noexcept {
        fill(value);
        return value;
    }
    /// Sets every element.
    void fill(const T& value) noexcept {
        for (std::size_t k = 0; k < R * C; ++k) m_[k] = value;
    }

    /// R.
    static constexpr std::size_t rows() noexcept { return R; }
    /// C.
    static constexpr std::size_t cols() noexcept { return C; }
    /// R * C.
    static constexpr std::size_t size() noexcept { return R * C; }
    /// The elements, column after column.
    T* data() noexcept { return m_; }
    /// The elements, column after column.
    const T* data() const noexcept { return m_; }
    /// Element (i, j), checked by assert only.
    T& operator()(std::size_t i, std::size_t j) noexcept {
        assert(i < R && j < C);
        return m_[j * R + i];
    }
    /// Element (i, j), checked by assert only.
    const T& operator()(std::size_t i, std::size_t j) const noexcept {
        assert(i < R && j < C);
        return m_[j * R + i];
    }

    /// Adds o element by element.
    matrix_fixed& operator+=(const matrix_fixed& o) noexcept {
        for (std::size_t k = 0; k < R * C; ++k) m_[k] += o.m_[k];
        return *this;
    }
    /// Subtracts o element by element.
    matrix_fixed& operator-=(const matrix_fixed& o) noexcept {
        for (std::size_t k = 0; k < R * C; ++k) m_[k] -= o.m_[k];
        return *this;
    }
    /// Multiplies every element by s.
    matrix_fixed& operator*=(const T& s) noexcept {
        for (std::size_t k = 0; k < R * C; ++k) m_[k] *= s;
        return *this;
    }
    /// True when every element is equal.
    friend bool operator==(const matrix_fixed& a, const matrix_fixed& b) noexcept {
        for (std::size_t k = 0; k < R * C; ++k)
            if (!(a.m_[k] == b.m_[k])) return false;
        return true;
    }
    /// True when some element differs.
    friend bool operator!=(const matrix_fixed& a, const matrix_fixed& b) noexcept { return !(a == b); }

    /// y = A x
    vector_fixed<T, R> operator*(const vector_fixed<T, C>& x) const noexcept {
        vector_fixed<T, R> y;
        for (std::size_t j = 0; j < C; ++j)
            for (std::size_t i = 0; i < R; ++i) y[i] += (*this)(i, j) * x[j];
        return y;
    }
    /// y = A^T x
    vector_fixed<T, C> transpose_times(const vector_fixed<T, R>& x) const noexcept {
        vector_fixed<T, C> y;
        for (std::size_t j = 0; j < C; ++j)
            for (std::size_t i = 0; i < R; ++i) y[j] += (*this)(i, j) * x[i];
        return y;
    }
    /// The transposed matrix.
    matrix_fixed<T, C, R> transpose() const noexcept {
        matrix_fixed<T, C, R> t;
        for (std::size_t j = 0; j < C; ++j)
            for (std::size_t i = 0; i < R; ++i) t(j, i) = (*this)(i, j);
        return t;
    }

private:
    T m_[R * C];
};

/// Matrix product.
template <class T, std::size_t R, std::size_t K, std::size_t C>
matrix_fixed<T, R, C> operator*(const matrix_fixed<T, R, K>& a, const matrix_fixed<T, K, C>& b) noexcept {
    matrix_fixed<T, R, C> p;
    for (std::size_t j = 0; j < C; ++j)
        for (std::size_t k = 0; k < K; ++k)
            for (std::size_t i = 0; i < R; ++i) p(i, j) += a(i, k) * b(k, j);
    return p;
}

extern template class matrix_fixed<double, 2, 2>;
extern template class matrix_fixed<double, 3, 2>;
extern template class matrix_fixed<double, 3, 3>;
extern template class matrix_fixed<double, 3, 4>;

}  // namespace orv
