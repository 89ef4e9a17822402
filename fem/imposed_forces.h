// The imposed values of a load case in the solve of the linear static run: eliminated
// values are written into U and their forces -K u_e go to the free rows of the
// right-hand side; values that stay in Kf are kept for the iterative paths.
#pragma once

#include <orv/fem/error_type.h>
#include "fem/solver_static_linear.h"

namespace orv {
namespace core {

// A view of n values of external memory (which stays the caller's).
inline dense1D<double> external_view(double* p, std::size_t n) {
    return n && p ? dense1D<double>(n, p) : dense1D<double>();
}

template <class Types, class Settings, class Data>
int solver_static_linear<Types, Settings, Data>::set_up_case(std::size_t c) {
    const std::size_t n_free = free_IDs_->size(), n_total = total_IDs_->size();
    double* u = U_column(c);
    if (!u) return fem::error_internal;
    dense1D<double, 8> f;
    if (F_->dense().get_col(c, f)) return fem::error_internal;
    std::fill(u, u + n_total, 0.0);
    std::copy(f.begin(), f.begin() + n_free, u);

    case_imposed& imposed = cases_[c];
    imposed.kept.clear();
    imposed.kept_values.clear();
    std::vector<std::pair<std::uint32_t, double>> values;
    const loads_mgr* loads = problem_->get_loads(c);
    if (loads) loads->get_prescribed_values(params_.time, values);
    for (const auto& iv : values) {
        if (!std::isfinite(iv.second)) return fem::error_not_finite;
        const std::uint32_t r = total_IDs_->find(iv.first);
        if (r == DOF_index::npos) continue;
        if (r >= n_free) {
            u[r] = iv.second;
        } else {
            imposed.kept.push_back(r);
            imposed.kept_values.push_back(iv.second);
        }
    }
    return 0;
}

template <class Types, class Settings, class Data>
int solver_static_linear<Types, Settings, Data>::add_imposed_forces(std::size_t c, unsigned nbr_threads) {
    const std::size_t n_free = free_IDs_->size(), n_total = total_IDs_->size();
    if (n_free == 0 || n_free == n_total) return 0;
    double* u = U_column(c);
    if (!u) return fem::error_internal;
    std::vector<double> eliminated(n_total, 0.0);
    bool any = false;
    for (std::size_t r = n_free; r < n_total; ++r) {
        eliminated[r] = u[r];
        any = any || u[r] != 0.0;
    }
    if (!any) return 0;
    DOF_vector Us(total_IDs_, external_view(eliminated.data(), n_total));
    DOF_vector target(free_IDs_, external_view(u, n_free));
    return add_stiffness_forces(Us, target, 1.0, nbr_threads);
}

}  // namespace core
}  // namespace orv
