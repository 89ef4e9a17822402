// Helpers of the law tests: data vectors, Cholesky test, dense products.
#pragma once

#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <vector>

#include "orvmath1/dense1D.h"
#include "orvmath1/symmetric_fixed.h"
#include "orvmath1/vector_fixed.h"

namespace law_test {

inline orv::dense1D<double> values(std::initializer_list<double> list) {
    orv::dense1D<double> d;
    for (double x : list) d.push_back(x);
    return d;
}

// True when the Cholesky factorisation of D succeeds with pivots above tiny times
// the largest diagonal term.
template <std::size_t N>
bool positive_definite(const orv::symmetric_fixed<double, N>& D) {
    std::vector<double> L(N * N, 0.0);
    double largest = 0.0;
    for (std::size_t i = 0; i < N; ++i) largest = std::fmax(largest, std::fabs(D(i, i)));
    for (std::size_t j = 0; j < N; ++j) {
        double d = D(j, j);
        for (std::size_t k = 0; k < j; ++k) d -= L[j * N + k] * L[j * N + k];
        if (!(d > 1e-12 * largest)) return false;
        L[j * N + j] = std::sqrt(d);
        for (std::size_t i = j + 1; i < N; ++i) {
            double s = D(i, j);
            for (std::size_t k = 0; k < j; ++k) s -= L[i * N + k] * L[j * N + k];
            L[i * N + j] = s / L[j * N + j];
        }
    }
    return true;
}

// y = D x with the full symmetric matrix, the plain way.
template <std::size_t N>
orv::vector_fixed<double, N> times(const orv::symmetric_fixed<double, N>& D, const orv::vector_fixed<double, N>& x) {
    orv::vector_fixed<double, N> y;
    for (std::size_t i = 0; i < N; ++i)
        for (std::size_t j = 0; j < N; ++j) y[i] += D(i, j) * x[j];
    return y;
}

}  // namespace law_test
