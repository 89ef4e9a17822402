// Step 10 of the linear static run: the right-hand sides, assembled case by case or
// taken over from the caller, and checked for values that are not finite.
#pragma once

#include <orv/fem/error_type.h>
#include "fem/solver_static_linear.h"

namespace orv {
namespace core {

// The caller's F, by IDs, into the index of the run.
template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::take_over_F(const Data& data, matrix_type& F) const {
    const FEM_matrix_engine* src = data.F.engine();
    const std::size_t n = total_IDs_->size();
    for (std::size_t r = 0; r < n; ++r) {
        const std::uint32_t s = src->row_of((*total_IDs_)[r]);
        if (s == FEM_matrix_engine::npos) continue;
        for (std::size_t c = 0; c < nbr_cases_; ++c) {
            double v = 0.0;
            if (src->dense().get_val(s, c, v) == 0 && v != 0.0) F.dense().set_val(r, c, 1.0 * v);
        }
    }
}

// The loads of each case into its column: in parallel over the cases when there are
// enough of them and F is in memory, each case then assembled with one thread.
template <class Types, class Settings, class Data>
int solver_static_linear<Types, Settings, Data>::assemble_RHS_columns(matrix_type& F) {
    const unsigned threads = this->nbr_threads();
    const bool parallel = threads > 1 && nbr_cases_ >= threads && F.dense().is_all_incore();
    const unsigned inner = parallel ? 1u : threads;
    return parallel_first_error(nbr_cases_, parallel ? int(threads) : 1, [&](std::size_t c) -> int {
        if (!F.dense().col(c) && F.dense().window(c, 1)) return fem::error_internal;
        DOF_vector target(total_IDs_, F.dense().column(c));
        vector_assembler<double> va(target, 1.0);
        assembly_args args;
        args.params = params_;
        args.params.nbr_threads = inner;
        args.vector_assembler = &va;
        args.pos = &problem_->get_pos();
        const loads_mgr* loads = problem_->get_loads(c);
        return loads ? loads->assemble(args) : 0;
    });
}

template <class Types, class Settings, class Data>
template <class M>
long solver_static_linear<Types, Settings, Data>::first_non_finite_case(M& m) const {
    for (std::size_t c = 0; c < nbr_cases_; ++c) {
        dense1D<double, 8> v;
        if (m.dense().get_col(c, v)) continue;
        if (!detail::all_finite(v.data(), v.size())) return long(c);
    }
    return -1;
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::set_not_finite(Data& data, long c, int line) {
    this->log(1, "Load case #%ld: INF or NaN detected.\n", c);
    this->set_error(data, fem::error_not_finite, "INF or NaN detected.", line);
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::assemble_RHS(Data& data) {
    if (!need_F_) return;
    const bool ran = this->step(data, data.time_RHS, "Numerical assembly matrix RHS      : %10.2f s.\n", [&] {
        context_type* ctx = this->context();
        Ptr<matrix_type> F(new matrix_type());
        if (F->init(total_IDs_, nbr_cases_, 0.0, Ptr<OOC_mgr>(ctx ? ctx->OOC() : nullptr))) {
            this->set_error(data, fem::error_memory, "Matrix allocation error.", line_RHS_allocation);
            return;
        }
        F_ = F;
        if (given_F_) {
            take_over_F(data, *F);
        } else {
            data.F = fem::FEM_matrix(F.get());
            if (total_IDs_->size() == 0 || nbr_cases_ == 0) return;
            const int rc = assemble_RHS_columns(*F);
            if (rc) {
                this->set_error(data, rc, "RHS assembly error.", line_RHS_assembly);
                return;
            }
        }
        const long bad = first_non_finite_case(*F);
        if (bad >= 0) set_not_finite(data, bad, line_RHS_not_finite);
    });
    if (!ran || data.error_code || !F_ || !settings().display_hook) return;
    for (std::size_t c = 0; c < nbr_cases_; ++c) {
        dense1D<double, 8> v;
        if (F_->dense().get_col(c, v)) continue;
        this->log(3, "%3d ||F||                : %+E\n", int(c), detail::two_norm(v.data(), v.size()));
    }
}

}  // namespace core
}  // namespace orv
