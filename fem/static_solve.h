// Step 11 of the linear static run: U for every load case. The right-hand sides take
// the imposed values and their forces, then one path solves: the direct sweeps for
// all columns at once, or, with constraints that need iterations, case by case.
#pragma once

#include <orv/fem/error_type.h>
#include "fem/solver_static_linear.h"

namespace orv {
namespace core {

template <class Types, class Settings, class Data>
bool solver_static_linear<Types, Settings, Data>::allocate_U(Data& data) {
    context_type* ctx = this->context();
    Ptr<states_type> U(new states_type());
    if (U->init(total_IDs_, nbr_cases_, 0.0, Ptr<OOC_mgr>(ctx ? ctx->OOC() : nullptr))) {
        this->set_error(data, fem::error_memory, "Matrix allocation error.", line_RHS_allocation);
        return false;
    }
    U_ = U;
    detail::solution_of(data) = fem::FEM_states(U.get());
    if (temperatures_) return true;  // a heat run has no energy
    data.energy = dense1D<double>(nbr_cases_, 0.0);
    if constexpr (detail::has_strain_energy<Data>::value) data.strain_energy = dense1D<double>(nbr_cases_, 0.0);
    return true;
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::solve_cases(Data& data) {
    if (!need_U_) return;
    this->step(data, data.time_solve, "Resolution RHS                     : %10.2f s.\n", [&] {
        if (!allocate_U(data)) return;
        if (!F_ || !Kf_ || nbr_cases_ == 0 || total_IDs_->size() == 0) return;
        const unsigned threads = this->nbr_threads();
        cases_.assign(nbr_cases_, case_imposed());
        for (std::size_t c = 0; c < nbr_cases_; ++c) {
            int rc = set_up_case(c);
            if (!rc) rc = add_imposed_forces(c, threads);
            if (rc == fem::error_not_finite) return set_not_finite(data, long(c), line_RHS_not_finite);
            if (rc) return this->set_error(data, rc, "Solver error.", line_solver);
        }
        const bool direct = !ALM_ && data.nbr_kept_imposed_DOFs == 0;
        const int rc = direct ? solve_direct(threads) : solve_per_case(data);
        if (rc == -10) return;  // interrupted: the warning stands
        if (rc) return this->set_error(data, rc, "Solver error.", line_solver);
        const long bad = first_non_finite_case(*U_);
        if (bad >= 0) return set_not_finite(data, bad, line_solution_not_finite);
        if (!temperatures_) compute_energies(data);  // a heat run has no energy
    });
}

}  // namespace core
}  // namespace orv
