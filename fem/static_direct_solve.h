// The direct solve of the linear static run: all columns of U through the sweeps of
// the factor, when no constraint needs iterations.
#pragma once

#include <orv/fem/error_type.h>
#include "fem/solver_static_linear.h"

namespace orv {
namespace core {

template <class Types, class Settings, class Data>
int solver_static_linear<Types, Settings, Data>::solve_direct(unsigned threads) {
    if (free_IDs_->size() == 0) return 0;
    const skyline_factor& K = Kf_->matrix();
    if (U_->dense().is_all_incore()) {
        dense2D<double> raw = U_->dense().as_raw_matrix();
        if (nbr_cases_ == 1)
            K.solve(raw.col(0), int(threads));
        else
            K.solve(raw.col(0), raw.ld(), nbr_cases_, int(threads));
        return 0;
    }
    for (std::size_t c = 0; c < nbr_cases_; ++c) {
        double* u = U_column(c);
        if (!u) return fem::error_internal;
        K.solve(u, int(threads));
    }
    return 0;
}

}  // namespace core
}  // namespace orv
