// Engine shared by the runs that solve K x = lambda B x on the free DOFs after the
// steps of the linear static run: the modal run (B the mass) and the buckling run
// (B = -Kg). It holds B, counts the eigenvalues of a range by Sturm sequences, plans
// the Ritz space, factors K - sigma B and runs the Lanczos and subspace stages.
#pragma once

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <orv/fem/solver_static_linear.h>

#include "eigen/eigen_Lanczos_hybrid.h"
#include "eigen/eigen_mass.h"
#include "eigen/eigen_subspace.h"
#include "fem/solver_pencil_base.h"
#include "linalg/sparse_pattern.h"

namespace orv {
namespace core {

namespace eigen_run_detail {

// Ritz size from the mode count of the range and the settings; wanted is cut to
// max_modes. limited tells whether it was.
struct ritz_plan {
    std::size_t wanted = 0;
    std::size_t size = 0;
    bool limited = false;
};
inline ritz_plan plan_ritz(std::size_t count, std::size_t max_modes, std::size_t ritz_factor, std::size_t n) {
    ritz_plan p;
    p.wanted = count;
    p.size = 2 * count + 4;
    if (count > max_modes) {
        p.wanted = max_modes;
        p.limited = true;
        const std::size_t by_factor = max_modes * (ritz_factor < 2 ? 2 : ritz_factor);
        p.size = (2 * count < by_factor ? 2 * count : by_factor) + 4;
    }
    if (p.size > n) p.size = n;
    return p;
}

// Mean of the absolute diagonal, 0 for an empty matrix.
inline double mean_diagonal(const symmetric_sparse<double>& A) {
    const auto& ptr = A.pointers();
    const auto& col = A.columns();
    double sum = 0.0;
    for (std::size_t r = 0; r < A.dim(); ++r)
        if (ptr[r] < ptr[r + 1] && col[ptr[r]] == r) sum += std::fabs(A[ptr[r]]);
    return A.dim() ? sum / double(A.dim()) : 0.0;
}

}  // namespace eigen_run_detail

template <class Types, class Settings, class Data>
class solver_eigen_base : public solver_pencil_base<Types, Settings, Data> {
    typedef solver_pencil_base<Types, Settings, Data> base;

public:
    typedef typename base::sparse_type sparse_type;
    typedef typename base::skyline_type skyline_type;
    typedef typename base::states_type states_type;

    // B_label and modes_label: the size lines of B and of the modes in the log.
    solver_eigen_base(const Settings* settings, const solver_identity& id, const char* B_label, const char* modes_label)
        : base(settings, id, B_label), modes_label_(modes_label) {}

    // Number of eigenvalues of (Ks, B) below lambda: the negative pivots of
    // Ks - lambda B, factored in the place of Kf. Returns 0 or the factorisation's
    // code (-107 for a pivot that is not finite).
    int sturm_count(double lambda, std::size_t& count);

protected:
    void log_sizes(Data& data) override;
    double needed_size(Data& data) override;
    // The modes (when kept) stay in the record.
    void clear_unkept(Data& data) override;
    bool make_resident(Data& data) override;

    // The numbering of the pencil with the size of the Ritz space at its largest.
    void number_with_B(Data& data, unsigned matrix_code, bool coupled, bool need_U, const char* error_text, int line);
    // Number of eigenvalues in [l1, l2] (signed ends; K positive definite when l1 < 0)
    // into count_, the dimension when an end is infinite. Errors of the counts go to
    // data with the static run's words.
    void count_range(Data& data, double l1, double l2, bool l1_finite, bool l2_finite);
    // The Ritz plan of count_ and its log lines.
    void plan_modes(Data& data, const char* memory_label);
    // Kf := Ks + s B, not factored.
    void refill_Kf(double s) { this->fill_Kf(1.0, s); }
    // The static solution of the load cases: Kf := Ks (again, when Sturm counts used
    // it) factored under the positive pivot check, the loads and the solve of the
    // static run.
    void solve_static(Data& data);
    // Kf := Ks + shift_ B factored with zero pivots replaced; a factor with a pivot
    // tiny beside the largest is made again with the shift moved by the mean of |B|.
    void factorize_shifted(Data& data);
    // The Lanczos stage on the Ritz space, then the subspace iteration polishing its
    // modes, whose eigenvalues go to lambda_ and the modes to `modes` (rows of the
    // total index). error_text and line name a failure of the stage.
    void solve_modes(Data& data, fem::FEM_states& modes, const char* error_text, int line);
    void release_eigen();

    const Settings& settings() const { return base::settings(); }

    const char* modes_label_;
    bool B_indefinite_ = false;
    bool mass_scaling_ = true;  // modes of unit |x^T B x|, else of unit Euclidean norm
    // The window [l1_, l2_] of the eigenvalues and the shift s of Kf = Ks + s B.
    double l1_ = 0.0, l2_ = 0.0;
    bool l1_finite_ = true, l2_finite_ = false;
    double shift_ = 0.0;
    std::size_t count_ = 0;
    eigen_run_detail::ritz_plan plan_;
    bool static_factor_usable_ = false;
    bool Kf_overwritten_ = false;
    bool shifted_ready_ = false;
    Ptr<states_type> D_;
    orv::dense1D<double, 8> lambda_;
};

template <class Types, class Settings, class Data>
void solver_eigen_base<Types, Settings, Data>::number_with_B(Data& data, unsigned matrix_code, bool coupled,
                                                             bool need_U, const char* error_text, int line) {
    release_eigen();
    base::number_with_B(data, matrix_code, coupled, need_U, error_text, line);
    if (data.error_code || !this->free_IDs_) return;
    // The Ritz space at its largest: max_modes * max(ritz_factor, 2) + 4 vectors.
    const std::size_t n = this->free_IDs_->size();
    const std::size_t m =
        eigen_run_detail::plan_ritz(~std::size_t(0) / 4, settings().max_modes, settings().ritz_factor, n).size;
    data.size_D_modes = double(n) * double(m) * 8.0 / 1048576.0;
}

template <class Types, class Settings, class Data>
void solver_eigen_base<Types, Settings, Data>::log_sizes(Data& data) {
    base::log_sizes(data);
    this->log_size(2, modes_label_, static_cast<unsigned long long>(data.size_D_modes * 1048576.0 / 8.0 + 0.5),
                   data.size_D_modes);
}

template <class Types, class Settings, class Data>
double solver_eigen_base<Types, Settings, Data>::needed_size(Data& data) {
    const double need = base::needed_size(data);
    const double part = (settings().output_mask & fem::mask_modes) ? data.size_D_modes : 0.0;
    data.size_total += part;
    return need + part;
}

template <class Types, class Settings, class Data>
void solver_eigen_base<Types, Settings, Data>::clear_unkept(Data& data) {
    base::clear_unkept(data);
    if (!(settings().output_mask & fem::mask_modes)) data.D_modes = fem::FEM_states();
}

template <class Types, class Settings, class Data>
bool solver_eigen_base<Types, Settings, Data>::make_resident(Data& data) {
    bool ok = true;
    if (data.D_modes.is_valid() && !data.D_modes.is_all_incore()) ok = data.D_modes.force_incore();
    release_eigen();
    return base::make_resident(data) && ok;
}

template <class Types, class Settings, class Data>
void solver_eigen_base<Types, Settings, Data>::solve_static(Data& data) {
    static_factor_usable_ = false;
    if (Kf_overwritten_ && this->Kf_->matrix().dimension()) refill_Kf(0.0);
    Kf_overwritten_ = false;
    const int warning_before = data.warning_code;
    this->factorize(data);
    static_factor_usable_ = !data.error_code && data.warning_code == warning_before;
    this->assemble_RHS(data);
    this->solve_cases(data);
    this->report_cases(data);
}

template <class Types, class Settings, class Data>
int solver_eigen_base<Types, Settings, Data>::sturm_count(double lambda, std::size_t& count) {
    count = 0;
    if (!this->Kf_ || this->Kf_->matrix().dimension() == 0) return 0;
    static_factor_usable_ = false;  // Kf no longer holds the factor of Ks
    Kf_overwritten_ = true;
    refill_Kf(-lambda);
    typedef orvstd::binder2nd<orvstd::less<double>> below_zero;
    count_n_force_definite<below_zero, dummy_verboser> checker(orvstd::bind2nd(orvstd::less<double>(), 0.0));
    const int rc =
        this->Kf_->matrix().factorize(checker, static_cast<std::size_t>(this->LLC_size()), int(this->nbr_threads()));
    count = checker.count;
    return rc;
}

// With K positive definite, the negative pivots of K - l B count the eigenvalues
// between 0 and l (Sylvester's law of inertia), on either side of 0.
template <class Types, class Settings, class Data>
void solver_eigen_base<Types, Settings, Data>::count_range(Data& data, double l1, double l2, bool l1_finite,
                                                           bool l2_finite) {
    l1_ = l1;
    l2_ = l2;
    l1_finite_ = l1_finite;
    l2_finite_ = l2_finite;
    const std::size_t n = this->free_IDs_->size();
    this->step(data, data.time_factor, nullptr, [&] {
        count_ = 0;
        if (!l1_finite || !l2_finite) {
            count_ = n;
            return;
        }
        if (l1 == l2 || n == 0) return;
        std::size_t at_l1 = 0, at_l2 = 0;
        int rc = sturm_count(l1, at_l1);
        if (!rc) rc = sturm_count(l2, at_l2);
        if (rc == fem::error_pivot) return this->set_error(data, rc, "Pivot error.", base::line_pivot);
        if (rc) return this->set_error(data, rc, "Factorization error.", base::line_factorization);
        std::size_t c = 0;
        if (l1 >= 0)
            c = at_l2 > at_l1 ? at_l2 - at_l1 : 0;
        else if (l2 <= 0)
            c = at_l1 > at_l2 ? at_l1 - at_l2 : 0;
        else
            c = at_l1 + at_l2;
        count_ = std::min(c, n);
    });
}

template <class Types, class Settings, class Data>
void solver_eigen_base<Types, Settings, Data>::plan_modes(Data& data, const char* memory_label) {
    const Settings& s = settings();
    const std::size_t n = this->free_IDs_->size();
    (void)data;
    plan_ = eigen_run_detail::plan_ritz(count_, s.max_modes, s.ritz_factor, n);
    if (plan_.limited) this->log(1, "  !! => limited to %d modes.\n", int(plan_.wanted));
    this->log(1, "Ritz-space size          : %10llu\n", static_cast<unsigned long long>(plan_.size));
    this->log_size(2, memory_label, static_cast<unsigned long long>(n) * plan_.size,
                   double(n) * double(plan_.size) * 8.0 / 1048576.0);
}

template <class Types, class Settings, class Data>
void solver_eigen_base<Types, Settings, Data>::factorize_shifted(Data& data) {
    shifted_ready_ = false;
    if (data.error_code || plan_.wanted == 0 || !(settings().output_mask & fem::mask_modes)) return;
    if (shift_ == 0.0 && static_factor_usable_) {
        shifted_ready_ = true;
        return;
    }
    skyline_factor& K = this->Kf_->matrix();
    const std::size_t n = K.dimension();
    const bool ran = this->step(data, data.time_factor, "Factorization matrix Kf (shifted)  : %10.2f s.\n", [&] {
        const int max_retries = 3;
        for (int attempt = 0;; ++attempt) {
            refill_Kf(shift_);
            hook_verboser verboser(settings().display_hook, settings().pass_thru);
            pivot_force_definite<hook_verboser> checker(&verboser);
            const int rc = K.factorize(checker, static_cast<std::size_t>(this->LLC_size()), int(this->nbr_threads()));
            pivot_policy policy;
            policy.definite = true;
            policy.forcing = true;
            policy.non_finite_at_max = true;
            const pivot_verdict v = judge_pivot_range(checker, rc, n, policy);
            data.pivot_min = v.pivot_min;
            data.pivot_max = v.pivot_max;
            const std::uint32_t at = v.position < n ? (*this->free_IDs_)[v.position] : 0xFFFFFFFFu;
            if (v.error && v.error != fem::error_pivot)
                return this->set_error(data, v.error, "Factorization error.", base::line_factorization);
            if (v.error) {
                data.bad_pivot_DOF = at;
                return this->set_error(data, fem::error_pivot, "Pivot error.", base::line_pivot);
            }
            if (!v.warning) break;
            const double mean = eigen_run_detail::mean_diagonal(this->B_->matrix());
            if (attempt == max_retries || !(mean > 0)) {
                if (!data.warning_code) data.bad_pivot_DOF = at;
                this->set_warning(data, fem::warning_pivot, "Pivot warning.");
                break;
            }
            shift_ += std::max(-v.pivot_min, 1.0) / mean;
        }
        shifted_ready_ = true;
    });
    if (!ran || data.error_code) return;
    this->log(2, "  pivot max              : %+E\n", data.pivot_max);
    this->log(2, "  pivot min              : %+E\n", data.pivot_min);
}

template <class Types, class Settings, class Data>
void solver_eigen_base<Types, Settings, Data>::solve_modes(Data& data, fem::FEM_states& modes, const char* error_text,
                                                           int line) {
    lambda_.clear();
    if (!shifted_ready_ || data.error_code) return;
    this->step(data, data.time_solve, "Resolution                         : %10.2f s.\n", [&] {
        const skyline_factor& K = this->Kf_->matrix();
        const std::size_t n = K.dimension();
        sparse_mass Bop;
        const int prc = Bop.init(
            this->B_->matrix(), *this->free_IDs_, [&](unsigned id) { return unsigned(this->free_IDs_->find(id)); }, n);
        if (prc) return this->set_error(data, prc, error_text, line);
        eigen_settings es;
        es.tolerance = settings().tolerance;
        es.max_iterations = settings().max_iters;
        es.indefinite_mass = B_indefinite_;
        es.mass_scaling = mass_scaling_;
        // With B definite, a range from 0 takes the eigenvalues 0 up to round-off
        // (rigid-body modes) and, when it holds more than wanted, the lowest ones (the
        // eigen solvers keep those next to the finite bound of smaller magnitude). With
        // B indefinite K is definite: 0 is no eigenvalue and the range is as given.
        if (B_indefinite_)
            es.low = l1_finite_ ? l1_ : -HUGE_VAL;
        else
            es.low = l1_ != 0 ? l1_ : (l2_finite_ ? -1e-8 * std::fabs(l2_) : -HUGE_VAL);
        es.high = l2_finite_ ? l2_ : HUGE_VAL;
        es.shift = -shift_;  // the factor holds K - (-s) B
        es.n_threads = int(this->nbr_threads());
        context_type* ctx = this->context();
        const Ptr<OOC_mgr> mgr(ctx ? ctx->OOC() : nullptr);

        dense2D_OOC<double> X;
        eigen_Lanczos_hybrid<Settings, Data> lanczos(K, Bop, es, settings(), data);
        int rc = lanczos.solve(plan_.wanted, plan_.size, X, lambda_, mgr);
        if (rc == 0 || rc == fem::error_convergence) {
            eigen_subspace<Settings, Data> subspace(K, Bop, es, settings(), data);
            rc = X.cols() ? subspace.solve(plan_.wanted, X, X.cols(), lambda_) : 0;
        }
        if (rc) {
            lambda_.clear();
            if (rc == fem::warning_interrupted || data.warning_code == fem::warning_interrupted) return;
            return this->set_error(data, rc, error_text, line);
        }
        const std::size_t found = lambda_.size();
        Ptr<states_type> D(new states_type());
        if (D->init(this->total_IDs_, found, 0.0, mgr))
            return this->set_error(data, fem::error_memory, "Matrix allocation error.", line);
        // Column by column in storage order; the free rows lead the rows of D.
        for (std::size_t c = 0; c < found; ++c) {
            const double* x = (X.col(c) || X.window(c, 1)) ? X.col(c) : nullptr;
            double* d = (D->dense().col(c) || D->dense().window(c, 1)) ? D->dense().col(c) : nullptr;
            if (!x || !d) return this->set_error(data, fem::error_internal, error_text, line);
            std::copy(x, x + n, d);
        }
        D_ = D;
        modes = fem::FEM_states(D.get());
    });
}

template <class Types, class Settings, class Data>
void solver_eigen_base<Types, Settings, Data>::release_eigen() {
    this->release_B();
    D_.reset();
    lambda_.clear();
    count_ = 0;
    plan_ = eigen_run_detail::ritz_plan();
    static_factor_usable_ = shifted_ready_ = Kf_overwritten_ = false;
}

}  // namespace core
}  // namespace orv
