// Small kernels shared by the elastic laws: the stress of a symmetric tangent.
#pragma once

#include <cstddef>

#include "orvmath1/symmetric_fixed.h"
#include "orvmath1/vector_fixed.h"

namespace orv {
namespace core {

// y = D x on the packed lower triangle, one pass over the triangle: each term
// D(i, j), i > j, feeds both y[i] and y[j].
template <std::size_t N>
inline void packed_multiply_add(const symmetric_fixed<double, N>& D, const double* x, double* y) {
    const double* d = D.data();
    for (std::size_t i = 0; i < N; ++i) {
        const double xi = x[i];
        double yi = 0.0;
        for (std::size_t j = 0; j < i; ++j, ++d) {
            yi += *d * x[j];
            y[j] += *d * xi;
        }
        y[i] += yi + *d * xi;
        ++d;
    }
}

// stress += D strain and energy = 0.5 strain . stress: the common end of the elastic
// laws. A strain that is exactly zero leaves the stress as it came and gives energy
// 0. Large matrices go through the packed product, small ones through plain loops.
template <std::size_t N>
inline void elastic_stress(const symmetric_fixed<double, N>& D, const vector_fixed<double, N>& strain,
                           vector_fixed<double, N>& stress, double& energy) {
    energy = 0.0;
    bool zero = true;
    for (std::size_t i = 0; i < N; ++i)
        if (strain[i] != 0.0) zero = false;
    if (zero) return;
    if (N * N > 16 && 2 * N > 8) {
        packed_multiply_add(D, strain.data(), stress.data());
    } else {
        for (std::size_t i = 0; i < N; ++i) {
            double s = 0.0;
            for (std::size_t j = 0; j < N; ++j) s += D(i, j) * strain[j];
            stress[i] += s;
        }
    }
    energy = 0.5 * strain.dot(stress);
}

}  // namespace core
}  // namespace orv
