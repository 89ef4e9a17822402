// Step 9 of the linear static run: factorisation of Kf under the pivot policy of the
// settings, and the judgement of its pivots.
#pragma once

#include <orv/fem/error_type.h>
#include "fem/solver_static_linear.h"

namespace orv {
namespace core {

// The run's judgement: a pivot that is not finite names the row of the largest pivot;
// with the forcing policy a bad sign (a replaced pivot) is only a warning.
template <class Types, class Settings, class Data>
template <class Checker>
void solver_static_linear<Types, Settings, Data>::factorize_with(Data& data, Checker& checker, bool forcing) {
    skyline_factor& K = Kf_->matrix();
    const std::size_t n = K.dimension();
    const int rc = K.factorize(checker, static_cast<std::size_t>(this->LLC_size()), int(this->nbr_threads()));
    pivot_policy policy;
    policy.forcing = forcing;
    policy.non_finite_at_max = true;
    const pivot_verdict v = judge_pivot_range(checker, rc, n, policy);
    data.pivot_min = v.pivot_min;
    data.pivot_max = v.pivot_max;
    const std::uint32_t at =
        (v.position < n && v.position < free_IDs_->size()) ? (*free_IDs_)[v.position] : 0xFFFFFFFFu;
    if (v.error && v.error != fem::error_pivot) {
        this->set_error(data, v.error, "Factorization error.", line_factorization);
    } else if (v.error) {
        if (!data.error_code) data.bad_pivot_DOF = at;
        this->set_error(data, fem::error_pivot, "Pivot error.", line_pivot);
    } else if (v.warning) {
        if (!data.error_code && !data.warning_code) data.bad_pivot_DOF = at;
        this->set_warning(data, fem::warning_pivot, "Pivot warning.");
    }
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::factorize(Data& data) {
    if (!need_Kf_ || given_Kf_ || !Kf_built_) return;
    const bool ran = this->step(data, data.time_factor, "Factorization matrix Kf            : %10.2f s.\n", [&] {
        if (Kf_->matrix().dimension() == 0) {
            data.pivot_min = data.pivot_max = 0.0;
            return;
        }
        hook_verboser verboser(settings().display_hook, settings().pass_thru);
        if (settings().force_positive_pivots) {
            pivot_force_positive<hook_verboser> checker(&verboser);
            factorize_with(data, checker, true);
        } else {
            pivot_check_positive<hook_verboser> checker(&verboser);
            factorize_with(data, checker, false);
        }
    });
    if (!ran) return;
    log_text_lines(2, Kf_->matrix().report_text(false));
    this->log(2, "  pivot max              : %+E\n", data.pivot_max);
    this->log(2, "  pivot min              : %+E\n", data.pivot_min);
}

}  // namespace core
}  // namespace orv
