// Small R x C matrix held by value, column-major like dense2D.
#pragma once

#include <cassert>
#include <cstddef>
#include <initializer_list>

#include "orvmath1/vector_fixed.h"

namespace orv {

// A plain value: element (i, j) lies at j * R + i inside the object. A default-
// constructed matrix is zero.
template <class T, std::size_t R, std::size_t C>
class matrix_fixed {
public:
    typedef T value_type;

    matrix_fixed() noexcept { fill(T()); }
    explicit matrix_fixed(const T& value) noexcept { fill(value); }
    // Numbers given row by row, as a matrix is written; missing ones are zero.
    matrix_fixed(std::initializer_list<T> by_rows) noexcept {
        fill(T());
        std::size_t k = 0;
        for (const T& x : by_rows) {
            if (k == R * C) break;
            (*this)(k / C, k % C) = x;
            ++k;
        }
    }

    const T& operator=(const T& value) noexcept {
        fill(value);
        return value;
    }
    void fill(const T& value) noexcept {
        for (std::size_t k = 0; k < R * C; ++k) m_[k] = value;
    }

    static constexpr std::size_t rows() noexcept { return R; }
    static constexpr std::size_t cols() noexcept { return C; }
    static constexpr std::size_t size() noexcept { return R * C; }
    T* data() noexcept { return m_; }
    const T* data() const noexcept { return m_; }
    T& operator()(std::size_t i, std::size_t j) noexcept {
        assert(i < R && j < C);
        return m_[j * R + i];
    }
    const T& operator()(std::size_t i, std::size_t j) const noexcept {
        assert(i < R && j < C);
        return m_[j * R + i];
    }

    matrix_fixed& operator+=(const matrix_fixed& o) noexcept {
        for (std::size_t k = 0; k < R * C; ++k) m_[k] += o.m_[k];
        return *this;
    }
    matrix_fixed& operator-=(const matrix_fixed& o) noexcept {
        for (std::size_t k = 0; k < R * C; ++k) m_[k] -= o.m_[k];
        return *this;
    }
    matrix_fixed& operator*=(const T& s) noexcept {
        for (std::size_t k = 0; k < R * C; ++k) m_[k] *= s;
        return *this;
    }
    friend bool operator==(const matrix_fixed& a, const matrix_fixed& b) noexcept {
        for (std::size_t k = 0; k < R * C; ++k)
            if (!(a.m_[k] == b.m_[k])) return false;
        return true;
    }
    friend bool operator!=(const matrix_fixed& a, const matrix_fixed& b) noexcept { return !(a == b); }

    // y = A x
    vector_fixed<T, R> operator*(const vector_fixed<T, C>& x) const noexcept {
        vector_fixed<T, R> y;
        for (std::size_t j = 0; j < C; ++j)
            for (std::size_t i = 0; i < R; ++i) y[i] += (*this)(i, j) * x[j];
        return y;
    }
    // y = A^T x
    vector_fixed<T, C> transpose_times(const vector_fixed<T, R>& x) const noexcept {
        vector_fixed<T, C> y;
        for (std::size_t j = 0; j < C; ++j)
            for (std::size_t i = 0; i < R; ++i) y[j] += (*this)(i, j) * x[i];
        return y;
    }
    matrix_fixed<T, C, R> transpose() const noexcept {
        matrix_fixed<T, C, R> t;
        for (std::size_t j = 0; j < C; ++j)
            for (std::size_t i = 0; i < R; ++i) t(j, i) = (*this)(i, j);
        return t;
    }

private:
    T m_[R * C];
};

// Matrix product.
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
