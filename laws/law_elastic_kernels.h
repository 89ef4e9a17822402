// Small kernels shared by the elastic laws: the stress of a symmetric tangent, and
// the per-point members that the solid, shell and membrane stiffness laws share.
#pragma once

#include <cstddef>

#include "laws/law_base.h"
#include "orvmath1/dense1D.h"
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

// The members below serve every stiffness law whose D comes from its per-element data
// through fill_D and whose first three strains take the thermal expansion of
// get_alphas.

// D at a point: 0, or -1 with D zero when the data are not usable.
template <class Law>
int elastic_get_D(const Law& law, const law_key& key, typename Law::tangent_type& D) {
    dense1D<double> data;
    if (law.get_element_data(key, data) < 0) {
        D.fill(0.0);
        return law_bad_size;
    }
    return law.fill_D(data, D);
}

// stress += D strain, energy = 0.5 strain . stress; -1 with energy zero on bad data.
template <class Law>
int elastic_compute(const Law& law, const law_key& key, const typename Law::strain_type& strain,
                    typename Law::tangent_type& D, typename Law::stress_type& stress, double& energy) {
    energy = 0.0;
    if (law.get_D(key, D) < 0) return law_bad_size;
    elastic_stress(D, strain, stress, energy);
    return law_ok;
}

// strain[0..2] -= alpha temperature; 0 or -1.
template <class Law>
int elastic_thermal_correction(const Law& law, const law_key& key, typename Law::strain_type& strain,
                               double temperature) {
    dense1D<double> data;
    if (law.get_element_data(key, data) < 0) return law_bad_size;
    double alpha[3];
    law.get_alphas(data, alpha);
    for (std::size_t i = 0; i < 3; ++i) strain[i] -= alpha[i] * temperature;
    return law_ok;
}

}  // namespace core
}  // namespace orv
