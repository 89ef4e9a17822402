// Engine of the modal run: the steps of the linear static run (numbering, stiffness,
// penalties, static factorisation and solve) with a mass matrix, Sturm counts of the
// frequency range, a shifted factorisation and the Lanczos and subspace stages.
#pragma once

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <orv/fem/field_tag.h>
#include <orv/fem/solver_modal.h>

#include "fem/solver_eigen_base.h"

namespace orv {
namespace core {

extern const solver_identity modal_identity;

typedef static_steps_settings<fem::solver_modal::settings_type> modal_engine_settings;

namespace modal_detail {

constexpr double two_pi = 6.283185307179586;

// lambda = (2 pi f)^2, the largest finite double when it would overflow.
inline double lambda_of(double f) {
    const double w = two_pi * f;
    const double l = w * w;
    return std::isfinite(l) ? l : DBL_MAX;
}
// sqrt(lambda) / (2 pi), with the sign of lambda.
inline double frequency_of(double lambda) {
    return lambda < 0 ? -std::sqrt(-lambda) / two_pi : std::sqrt(lambda) / two_pi;
}

// The shift s of the factor K + s M from the range [l1, l2] in lambda.
inline double auto_shift(double l1, double l2, bool l2_finite) {
    if (l2_finite) return -(l1 / 3.0 + 2.0 * l2 / 3.0);
    return l1 > 0 ? -l1 : 1.0;
}

}  // namespace modal_detail

template <class Types, class Settings, class Data>
class solver_modal : public solver_eigen_base<Types, Settings, Data> {
    typedef solver_eigen_base<Types, Settings, Data> base;

public:
    typedef typename base::sparse_type sparse_type;
    typedef typename base::states_type states_type;

    enum : int { line_Ms_allocation = 219, line_Ms_assembly = 252, line_no_mass = 256, line_modal_solver = 500 };

    explicit solver_modal(const Settings* settings)
        : base(settings, modal_identity, "  Size matrix Ms         : ", "  Size matrix D-modes    : ") {}

protected:
    void clear_inputs(Data& data) override;
    void numbering(Data& data) override;
    void compute(Data& data) override;
    double& size_of_B(Data& data) override { return data.size_Ms; }
    fem::FEM_SymSparse& record_of_B(Data& data) override { return data.Ms; }

    void assemble_mass(Data& data);
    void count_modes(Data& data);
    void report_modes(Data& data);
    void post_process(Data& data);

    const Settings& settings() const { return base::settings(); }
};

template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::clear_inputs(Data& data) {
    if (!(settings().input_mask & fem::mask_F)) data.F = fem::FEM_matrix();
    data.Ks = fem::FEM_SymSparse();
    data.Ms = fem::FEM_SymSparse();
    data.Kf = fem::FEM_factor();
}

// The numbering of the static run, then the pattern and size of Ms.
template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::numbering(Data& data) {
    this->number_with_B(data, fem::matrix_M, settings().mass_level == 1, false, "Ms assembly error.",
                        line_Ms_allocation);
}

template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::compute(Data& data) {
    this->assemble_stiffness(data);
    this->assemble_penalties(data);
    assemble_mass(data);
    count_modes(data);
    // The static modes, when asked for and there are load cases.
    if (!data.error_code && this->need_U_ && this->nbr_cases_ != 0 && !this->stop_requested(data))
        this->solve_static(data);
    this->factorize_shifted(data);
    this->solve_modes(data, data.D_modes, "Modal solver.", line_modal_solver);
    report_modes(data);
    post_process(data);
}

template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::assemble_mass(Data& data) {
    if (!this->assemble_B(data, data.Ms, int(settings().mass_level), "Numerical assembly matrix Ms       : %10.2f s.\n",
                          "Ms assembly error.", line_Ms_allocation, line_Ms_assembly))
        return;
    // Without any mass there is no eigenproblem to solve.
    if ((settings().output_mask & fem::mask_modes) && this->B_ && this->free_IDs_->size() &&
        is_zero_throughout(*this->B_))
        this->set_error(data, fem::error_data, "DATA ERROR", line_no_mass);
}

// The count of modes in the range and the size of the Ritz space.
template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::count_modes(Data& data) {
    const Settings& s = settings();
    this->plan_ = eigen_run_detail::ritz_plan();
    if (!(s.output_mask & fem::mask_modes)) return;  // static modes only
    const double l1 = modal_detail::lambda_of(std::max(s.freq_min, 0.0));
    const double l2 = modal_detail::lambda_of(s.freq_max);
    const bool l2_finite = std::isfinite(s.freq_max) && s.freq_max < DBL_MAX && l2 < DBL_MAX;
    this->shift_ = s.auto_shift ? modal_detail::auto_shift(l1, l2, l2_finite) : 0.0;
    this->count_range(data, l1, l2, true, l2_finite);
    if (data.error_code || data.warning_code == fem::warning_interrupted) return;
    if (l2_finite)
        this->log(1, "#modes in range [%+E %+E] : %d\n", l1, l2, int(this->count_));
    else
        this->log(1, "#modes in range [%+E +INF] : %d\n", l1, int(this->count_));
    this->plan_modes(data, "Requested memory D-modes : ");
}

template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::report_modes(Data& data) {
    if (data.error_code || data.warning_code == fem::warning_interrupted) return;
    const std::size_t found = this->lambda_.size();
    if (found < this->plan_.wanted) {
        this->log(1, "solver_modal: only %d vectors computed, out of %d.\n", int(found), int(this->plan_.wanted));
        if (this->l2_finite_) this->set_warning(data, fem::warning_missing_modes, "Potentially missing modes.");
    }
    data.frequencies = dense1D<double>(found, 0.0);
    for (std::size_t i = 0; i < found; ++i) data.frequencies[i] = modal_detail::frequency_of(this->lambda_[i]);
    const unsigned long long statics = this->U_ ? this->nbr_cases_ : 0;
    this->log(1, "Dynamic modes actually computed    : %d\n", int(found));
    this->log(1, "Static modes actually computed     : %d\n", int(statics));
    this->log(1, "Vibration frequencies (Hz) = [\n");
    for (std::size_t i = 0; i < found; ++i) this->log(1, " %E", data.frequencies[i]);
    this->log(1, "]\n");
}

// One pass over the modes: generalised mass and stiffness, participation factors and
// effective masses of the rigid translations.
template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::post_process(Data& data) {
    if (!settings().post_modes || data.error_code || !this->D_ || this->stop_requested(data)) return;
    const std::size_t n = this->free_IDs_->size(), found = this->lambda_.size();
    data.mode_results = dense2D<double>(found, 8, 0.0);
    std::vector<double> Mx(n), Kx(n);
    const symmetric_sparse<double>& M = this->B_->matrix();
    const symmetric_sparse<double>& Ks = this->Ks_->matrix();
    for (std::size_t c = 0; c < found; ++c) {
        const double* x =
            (this->D_->dense().col(c) || this->D_->dense().window(c, 1)) ? this->D_->dense().col(c) : nullptr;
        if (!x) return this->set_error(data, fem::error_internal, "Modal solver.", line_modal_solver);
        std::fill(Mx.begin(), Mx.end(), 0.0);
        std::fill(Kx.begin(), Kx.end(), 0.0);
        pencil_detail::sparse_mult_add(M, x, Mx.data());
        pencil_detail::sparse_mult_add(Ks, x, Kx.data());
        double m = 0.0, k = 0.0, p[3] = {0.0, 0.0, 0.0};
        for (std::size_t i = 0; i < n; ++i) {
            m += x[i] * Mx[i];
            k += x[i] * Kx[i];
            const unsigned id = (*this->free_IDs_)[i];
            if (id % fem::DOFs_per_node < 3) p[id % fem::DOFs_per_node] += Mx[i];
        }
        data.mode_results(c, 0) = m;
        data.mode_results(c, 1) = k;
        for (int d = 0; d < 3; ++d) {
            data.mode_results(c, 2 + d) = p[d];
            data.mode_results(c, 5 + d) = m > 0 ? p[d] * p[d] / m : 0.0;
        }
    }
}

}  // namespace core
}  // namespace orv
