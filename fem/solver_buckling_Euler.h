// Engine of the buckling run: the steps of the linear static run for the reference
// load, the geometric stiffness Kg of its stresses, then the eigen steps of the modal
// run on the pencil (K, -Kg): Sturm counts of a signed range of load factors, the
// shifted factorisation and the Lanczos and subspace stages.
#pragma once

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include <orv/fem/solver_buckling_Euler.h>

#include "fem/solver_eigen_base.h"

namespace orv {
namespace core {

extern const solver_identity buckling_identity;

typedef static_steps_settings<fem::solver_buckling_Euler::settings_type> buckling_engine_settings;

template <class Types, class Settings, class Data>
class solver_buckling_Euler : public solver_eigen_base<Types, Settings, Data> {
    typedef solver_eigen_base<Types, Settings, Data> base;

public:
    typedef typename base::sparse_type sparse_type;

    enum : int { line_Kg_allocation = 219, line_Kg_assembly = 358, line_buckling_solver = 500 };

    explicit solver_buckling_Euler(const Settings* settings)
        : base(settings, buckling_identity, "  Size matrix Kg         : ", "  Size matrix B-modes    : ") {
        this->B_indefinite_ = true;
    }

protected:
    void clear_inputs(Data& data) override;
    void numbering(Data& data) override;
    void compute(Data& data) override;
    void clear_unkept(Data& data) override;
    double& size_of_B(Data& data) override { return data.size_Kg; }
    fem::FEM_SymSparse& record_of_B(Data& data) override { return data.Kg; }

    // B := -Kg of the static solution (matrix code 1, level 3); data.Kg shows Kg.
    void assemble_Kg(Data& data);
    void count_modes(Data& data);
    void report_modes(Data& data);

    const Settings& settings() const { return base::settings(); }
};

namespace buckling_detail {

// A bound at the largest finite double (or beyond) is open.
inline bool is_open(double bound) { return !(std::fabs(bound) < DBL_MAX); }

// "[%+E" or "[-INF" and the like for one end of the range.
inline void print_bound(char* out, std::size_t size, double bound) {
    if (is_open(bound))
        std::snprintf(out, size, "%cINF", bound < 0 ? '-' : '+');
    else
        std::snprintf(out, size, "%+E", bound);
}

}  // namespace buckling_detail

template <class Types, class Settings, class Data>
void solver_buckling_Euler<Types, Settings, Data>::clear_inputs(Data& data) {
    if (!(settings().input_mask & fem::mask_F)) data.F = fem::FEM_matrix();
    data.Ks = fem::FEM_SymSparse();
    data.Kg = fem::FEM_SymSparse();
    data.Kf = fem::FEM_factor();
}

// The numbering of the static run with the static solution always made (Kg comes
// from its stresses), then the pattern and size of Kg: that of Ks.
template <class Types, class Settings, class Data>
void solver_buckling_Euler<Types, Settings, Data>::numbering(Data& data) {
    this->mass_scaling_ = settings().mode_scaling != 0;
    this->number_with_B(data, fem::matrix_K, true, true, "Kg assembly error.", line_Kg_allocation);
}

template <class Types, class Settings, class Data>
void solver_buckling_Euler<Types, Settings, Data>::compute(Data& data) {
    this->assemble_stiffness(data);
    this->assemble_penalties(data);
    if (!data.error_code && !this->stop_requested(data)) this->solve_static(data);
    assemble_Kg(data);
    count_modes(data);
    this->factorize_shifted(data);
    this->solve_modes(data, data.D_modes, "Buckling solver.", line_buckling_solver);
    report_modes(data);
}

template <class Types, class Settings, class Data>
void solver_buckling_Euler<Types, Settings, Data>::assemble_Kg(Data& data) {
    if (data.error_code || !this->U_ || this->stop_requested(data)) return;
    this->step(data, data.time_assembly, "Numerical assembly matrix Kg       : %10.2f s.\n", [&] {
        if (!this->allocate_B(data, data.Kg, line_Kg_allocation)) return;
        if (this->free_IDs_->size() == 0) return;
        dense1D<double, 8> u;
        if (this->U_->dense().get_col(0, u))
            return this->set_error(data, fem::error_internal, "Kg assembly error.", line_Kg_assembly);
        const DOF_vector U(this->total_IDs_, u);
        matrix_sym_assembler<sparse_type> a(*this->B_, -1.0);
        assembly_args args;
        args.params = this->stiffness_params();
        args.matrix_assembler = &a;
        args.matrix_level = 3;
        args.U = &U;
        args.pos = &this->problem_->get_pos();
        const int rc = this->model_->assemble_matrix(fem::matrix_K, args);
        if (rc) return this->set_error(data, rc, "Kg assembly error.", line_Kg_assembly);
    });
}

// The count of modes in the signed range of load factors and the Ritz space. A range
// that holds 0 keeps the static factor (K is positive definite: no shift); one on a
// side of 0 is shifted two thirds of the way from its end nearest 0 towards the
// other, or to that end when the other is open.
template <class Types, class Settings, class Data>
void solver_buckling_Euler<Types, Settings, Data>::count_modes(Data& data) {
    const Settings& s = settings();
    this->plan_ = eigen_run_detail::ritz_plan();
    if (data.error_code || !(s.output_mask & fem::mask_modes) || !this->B_) return;
    const double l1 = s.lambda_min, l2 = s.lambda_max;
    const bool l1_finite = !buckling_detail::is_open(l1), l2_finite = !buckling_detail::is_open(l2);
    double sigma = 0.0;
    if (l1 > 0)
        sigma = l2_finite ? l1 / 3.0 + 2.0 * l2 / 3.0 : l1;
    else if (l2 < 0)
        sigma = l1_finite ? l2 / 3.0 + 2.0 * l1 / 3.0 : l2;
    this->shift_ = -sigma;
    this->count_range(data, l1, l2, l1_finite, l2_finite);
    if (data.error_code || data.warning_code == fem::warning_interrupted) return;
    char a[32], b[32];
    buckling_detail::print_bound(a, sizeof a, l1);
    buckling_detail::print_bound(b, sizeof b, l2);
    this->log(1, "#modes in range [%s %s] : %d\n", a, b, int(this->count_));
    this->plan_modes(data, "Requested memory B-modes : ");
}

template <class Types, class Settings, class Data>
void solver_buckling_Euler<Types, Settings, Data>::report_modes(Data& data) {
    if (data.error_code || data.warning_code == fem::warning_interrupted) return;
    const std::size_t found = this->lambda_.size();
    if (found < this->plan_.wanted) {
        this->log(1, "solver_buckling_Euler: only %d vectors computed, out of %d.\n", int(found),
                  int(this->plan_.wanted));
        if (this->l1_finite_ && this->l2_finite_)
            this->set_warning(data, fem::warning_missing_modes, "Potentially missing modes.");
    }
    data.buckling_loads = dense1D<double>(found, 0.0);
    for (std::size_t i = 0; i < found; ++i) data.buckling_loads[i] = this->lambda_[i];
    this->log(1, "Buckling modes actually computed   : %d\n", int(found));
    this->log(1, "Buckling loads = [\n");
    for (std::size_t i = 0; i < found; ++i) this->log(1, " %+E", data.buckling_loads[i]);
    this->log(1, "]\n");
}

template <class Types, class Settings, class Data>
void solver_buckling_Euler<Types, Settings, Data>::clear_unkept(Data& data) {
    // The run worked on -Kg; the record shows Kg.
    if (this->B_) {
        symmetric_sparse<double>& B = this->B_->matrix();
        for (std::size_t k = 0; k < B.nbr_entries(); ++k) B[k] = -B[k];
    }
    base::clear_unkept(data);
}

}  // namespace core
}  // namespace orv
