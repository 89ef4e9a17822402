// Engine of the modal run: the steps of the linear static run (numbering, stiffness,
// penalties, static factorisation and solve) with a mass matrix, Sturm counts of the
// frequency range, a shifted factorisation and the Lanczos and subspace stages.
#pragma once

#include <orv/fem/field_tag.h>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <orv/fem/solver_modal.h>
#include <orv/fem/solver_static_linear.h>

#include "eigen/eigen_Lanczos_hybrid.h"
#include "eigen/eigen_mass.h"
#include "eigen/eigen_subspace.h"
#include "fem/solver_static_linear.h"
#include "linalg/sparse_pattern.h"

namespace orv {
namespace core {

extern const solver_identity modal_identity;

// The modal settings with the settings of the static steps at the linear static run's
// defaults, taken from its settings record so that the two never drift apart.
struct modal_engine_settings : fem::solver_modal::settings_type {
    static const fem::solver_static_linear::settings_type& static_defaults() {
        static const fem::solver_static_linear::settings_type defaults;
        return defaults;
    }
    std::uint32_t use_ALM = static_defaults().use_ALM;
    std::uint32_t max_iters_CG = static_defaults().max_iters_CG;
    std::uint32_t max_iters_ALM = static_defaults().max_iters_ALM;
    double tol_ALM = static_defaults().tol_ALM;
    double tol_CG = static_defaults().tol_CG;
    double ALM_floor = static_defaults().ALM_floor;
    bool force_positive_pivots = static_defaults().force_positive_pivots;
};

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

// y += A x for the upper-triangle storage of a symmetric matrix.
inline void sparse_mult_add(const symmetric_sparse<double>& A, const double* x, double* y) {
    const auto& ptr = A.pointers();
    const auto& col = A.columns();
    for (std::size_t r = 0; r < A.dim(); ++r)
        for (std::size_t k = ptr[r]; k < ptr[r + 1]; ++k) {
            const std::size_t c = col[k];
            y[r] += A[k] * x[c];
            if (c != r) y[c] += A[k] * x[r];
        }
}
// Mean of the diagonal, 0 for an empty matrix.
inline double mean_diagonal(const symmetric_sparse<double>& A) {
    const auto& ptr = A.pointers();
    const auto& col = A.columns();
    double sum = 0.0;
    for (std::size_t r = 0; r < A.dim(); ++r)
        if (ptr[r] < ptr[r + 1] && col[ptr[r]] == r) sum += A[ptr[r]];
    return A.dim() ? sum / double(A.dim()) : 0.0;
}

}  // namespace modal_detail

template <class Types, class Settings, class Data>
class solver_modal : public solver_static_linear<Types, Settings, Data> {
    typedef solver_static_linear<Types, Settings, Data> base;

public:
    typedef typename base::sparse_type sparse_type;
    typedef typename base::skyline_type skyline_type;
    typedef typename base::states_type states_type;

    enum : int { line_Ms_allocation = 219, line_Ms_assembly = 252, line_no_mass = 256, line_modal_solver = 500 };

    explicit solver_modal(const Settings* settings) : base(settings, modal_identity) {}

    // Number of eigenvalues of (Ks, Ms) below lambda: the negative pivots of
    // Ks - lambda Ms, factored in the place of Kf. Returns 0 or the factorisation's
    // code (-107 for a pivot that is not finite).
    int sturm_count(double lambda, std::size_t& count);

protected:
    void clear_inputs(Data& data) override;
    void numbering(Data& data) override;
    void log_sizes(Data& data) override;
    double needed_size(Data& data) override;
    void compute(Data& data) override;
    void clear_unkept(Data& data) override;
    bool make_resident(Data& data) override;

    void assemble_mass(Data& data);
    void count_modes(Data& data);
    void static_modes(Data& data);
    void factorize_shifted(Data& data);
    void solve_modes(Data& data);
    void report_modes(Data& data);
    void post_process(Data& data);
    // Kf := Ks + s Ms, not factored.
    void refill_Kf(double s);
    void release_modal();

    const Settings& settings() const { return base::settings(); }

    symmetric_sparse<double> Ms_pattern_;
    std::uint64_t Ms_nnz_ = 0;
    Ptr<sparse_type> Ms_;
    double l1_ = 0.0, l2_ = 0.0;
    bool l2_finite_ = false;
    double shift_ = 0.0;
    std::size_t count_ = 0;
    modal_detail::ritz_plan plan_;
    bool static_factor_usable_ = false;
    bool shifted_ready_ = false;
    Ptr<states_type> D_;
    orv::dense1D<double, 8> lambda_;
};

template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::clear_inputs(Data& data) {
    if (!(settings().input_mask & fem::mask_F)) data.F = fem::FEM_matrix();
    data.Ks = fem::FEM_SymSparse();
    data.Ms = fem::FEM_SymSparse();
    data.Kf = fem::FEM_factor();
}

// The numbering of the static run, with Ks and Kf always made (the Sturm counts and
// the shifted factor are built from them), then the pattern and size of Ms.
template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::numbering(Data& data) {
    release_modal();
    this->prepare(data);
    this->need_Ks_ = this->need_Kf_ = true;
    this->collect_imposed_DOFs(data);
    if (this->stop_requested(data)) return;
    this->number_system(data);
    if (data.error_code) return;
    this->make_total_index(data);
    const std::size_t n = this->free_IDs_->size();
    if (n) {
        dense1D<unsigned int, 8> ptr, ids;
        if (!ptr.push_back(0u)) throw std::bad_alloc();
        if (settings().mass_level == 1) {
            const DOF_filter free_filter{this->table_, true};
            const int rc = this->model_->get_DOFs_graph(*this->table_, numerical_model_base::all_elements,
                                                        fem::matrix_M, ptr, ids, free_filter);
            if (rc) return this->set_error(data, rc, "Ms assembly error.", line_Ms_allocation);
        }
        // Without groups every row has only its diagonal.
        build_sparse_pattern(ptr, ids, *this->free_IDs_, Ms_pattern_);
        Ms_nnz_ = Ms_pattern_.nbr_entries();
    }
    data.size_Ms = n ? (4.0 * double(n + 18 + Ms_nnz_) + 8.0 * double(Ms_nnz_)) / 1048576.0 : 0.0;
    // The Ritz space at its largest: max_modes * max(ritz_factor, 2) + 4 vectors.
    const std::size_t m =
        modal_detail::plan_ritz(~std::size_t(0) / 4, settings().max_modes, settings().ritz_factor, n).size;
    data.size_D_modes = double(n) * double(m) * 8.0 / 1048576.0;
}

template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::log_sizes(Data& data) {
    base::log_sizes(data);
    this->log_size(2, "  Size matrix Ms         : ", Ms_nnz_, data.size_Ms);
    this->log_size(2, "  Size matrix D-modes    : ",
                   static_cast<unsigned long long>(data.size_D_modes * 1048576.0 / 8.0 + 0.5), data.size_D_modes);
}

template <class Types, class Settings, class Data>
double solver_modal<Types, Settings, Data>::needed_size(Data& data) {
    const double static_part = base::needed_size(data);
    const double modal_part = data.size_Ms + ((settings().output_mask & fem::mask_modes) ? data.size_D_modes : 0.0);
    data.size_total += modal_part;
    return static_part + modal_part;
}

template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::compute(Data& data) {
    this->assemble_stiffness(data);
    this->assemble_penalties(data);
    assemble_mass(data);
    count_modes(data);
    static_modes(data);
    factorize_shifted(data);
    solve_modes(data);
    report_modes(data);
    post_process(data);
}

template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::assemble_mass(Data& data) {
    this->step(data, data.time_assembly, "Numerical assembly matrix Ms       : %10.2f s.\n", [&] {
        Ptr<sparse_type> Ms(new sparse_type(this->free_IDs_));
        if (this->free_IDs_->size() && !Ms->matrix().init(Ms_pattern_.pointers(), Ms_pattern_.columns(), 0.0))
            return this->set_error(data, fem::error_memory, "Matrix allocation error.", line_Ms_allocation);
        Ms_ = Ms;
        data.Ms = fem::FEM_SymSparse(Ms.get());
        Ms_pattern_ = symmetric_sparse<double>();
        if (this->free_IDs_->size() == 0) return;
        matrix_sym_assembler<sparse_type> a(*Ms_, 1.0);
        assembly_args args;
        args.params = this->stiffness_params();
        args.matrix_assembler = &a;
        args.matrix_level = int(settings().mass_level);
        args.pos = &this->problem_->get_pos();
        const int rc = this->model_->assemble_matrix(fem::matrix_M, args);
        if (rc) return this->set_error(data, rc, "Ms assembly error.", line_Ms_assembly);
        // Without any mass there is no eigenproblem to solve.
        if ((settings().output_mask & fem::mask_modes) && is_zero_throughout(*Ms_))
            this->set_error(data, fem::error_data, "DATA ERROR", line_no_mass);
    });
}

template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::refill_Kf(double s) {
    skyline_factor& K = this->Kf_->matrix();
    K.fill(0.0);
    K.set_unfactored();
    skyline_type view(this->free_IDs_, static_cast<const symmetric_hybrid_OOC<double>&>(K));
    this->scatter_Ks_into_Kf(*this->Ks_, view);
    if (s != 0.0) this->scatter_Ks_into_Kf(*Ms_, view, s);
}

template <class Types, class Settings, class Data>
int solver_modal<Types, Settings, Data>::sturm_count(double lambda, std::size_t& count) {
    count = 0;
    if (!this->Kf_ || this->Kf_->matrix().dimension() == 0) return 0;
    refill_Kf(-lambda);
    typedef orvstd::binder2nd<orvstd::less<double>> below_zero;
    count_n_force_definite<below_zero, dummy_verboser> checker(orvstd::bind2nd(orvstd::less<double>(), 0.0));
    const int rc =
        this->Kf_->matrix().factorize(checker, static_cast<std::size_t>(this->LLC_size()), int(this->nbr_threads()));
    count = checker.count;
    return rc;
}

// The count of modes in the range and the size of the Ritz space.
template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::count_modes(Data& data) {
    const Settings& s = settings();
    plan_ = modal_detail::ritz_plan();
    if (!(s.output_mask & fem::mask_modes)) return;  // static modes only
    l1_ = modal_detail::lambda_of(std::max(s.freq_min, 0.0));
    l2_ = modal_detail::lambda_of(s.freq_max);
    l2_finite_ = std::isfinite(s.freq_max) && s.freq_max < DBL_MAX && l2_ < DBL_MAX;
    shift_ = s.auto_shift ? modal_detail::auto_shift(l1_, l2_, l2_finite_) : 0.0;
    const std::size_t n = this->free_IDs_->size();
    const bool ran = this->step(data, data.time_factor, nullptr, [&] {
        if (!l2_finite_) {
            count_ = n;
            return;
        }
        count_ = 0;
        if (l1_ == l2_ || n == 0) return;
        std::size_t below_l1 = 0, below_l2 = 0;
        int rc = sturm_count(l1_, below_l1);
        if (!rc) rc = sturm_count(l2_, below_l2);
        if (rc == fem::error_pivot) return this->set_error(data, rc, "Pivot error.", base::line_pivot);
        if (rc) return this->set_error(data, rc, "Factorization error.", base::line_factorization);
        count_ = below_l2 > below_l1 ? std::min(below_l2 - below_l1, n) : 0;
    });
    if (!ran || data.error_code) return;
    if (l2_finite_)
        this->log(1, "#modes in range [%+E %+E] : %d\n", l1_, l2_, int(count_));
    else
        this->log(1, "#modes in range [%+E +INF] : %d\n", l1_, int(count_));
    plan_ = modal_detail::plan_ritz(count_, s.max_modes, s.ritz_factor, n);
    if (plan_.limited) this->log(1, "  !! => limited to %d modes.\n", int(plan_.wanted));
    this->log(1, "Ritz-space size          : %10llu\n", static_cast<unsigned long long>(plan_.size));
    this->log_size(2, "Requested memory D-modes : ", static_cast<unsigned long long>(n) * plan_.size,
                   double(n) * double(plan_.size) * 8.0 / 1048576.0);
}

// The static modes: Kf := Ks factored under the positive pivot check, the loads of
// the cases and the solve of the static run. Only when static modes are asked for and
// there are load cases.
template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::static_modes(Data& data) {
    static_factor_usable_ = false;
    if (data.error_code || !this->need_U_ || this->nbr_cases_ == 0) return;
    if (this->stop_requested(data)) return;
    if (l2_finite_ && this->Kf_->matrix().dimension()) refill_Kf(0.0);  // Kf served the Sturm counts
    const int warning_before = data.warning_code;
    this->factorize(data);
    static_factor_usable_ = !data.error_code && data.warning_code == warning_before;
    this->assemble_RHS(data);
    this->solve_cases(data);
    this->report_cases(data);
}

// Kf := Ks + s Ms factored with zero pivots replaced; a factor with a pivot that is
// tiny beside the largest is made again with the shift moved by the mean mass.
template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::factorize_shifted(Data& data) {
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
            const double mean = modal_detail::mean_diagonal(Ms_->matrix());
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

// The Lanczos stage on the Ritz space, then the subspace iteration polishing its
// modes; the modes go to D_modes in the rows of S_modes.
template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::solve_modes(Data& data) {
    lambda_.clear();
    if (!shifted_ready_ || data.error_code) return;
    this->step(data, data.time_solve, "Resolution                         : %10.2f s.\n", [&] {
        const skyline_factor& K = this->Kf_->matrix();
        const std::size_t n = K.dimension();
        sparse_mass Mop;
        const int prc = Mop.init(
            Ms_->matrix(), *this->free_IDs_, [&](unsigned id) { return unsigned(this->free_IDs_->find(id)); }, n);
        if (prc) return this->set_error(data, prc, "Modal solver.", line_modal_solver);
        eigen_settings es;
        es.tolerance = settings().tolerance;
        es.max_iterations = settings().max_iters;
        // A range from 0 takes the rigid-body modes, whose lambda is 0 up to round-off,
        // and, when it holds more modes than wanted, the lowest ones (the eigen solvers
        // keep those next to the finite bound of smaller magnitude).
        es.low = l1_ > 0 ? l1_ : (l2_finite_ ? -1e-8 * l2_ : -HUGE_VAL);
        es.high = l2_finite_ ? l2_ : HUGE_VAL;
        es.shift = -shift_;  // the factor holds K - (-s) M
        es.n_threads = int(this->nbr_threads());
        context_type* ctx = this->context();
        const Ptr<OOC_mgr> mgr(ctx ? ctx->OOC() : nullptr);

        dense2D_OOC<double> X;
        eigen_Lanczos_hybrid<Settings, Data> lanczos(K, Mop, es, settings(), data);
        int rc = lanczos.solve(plan_.wanted, plan_.size, X, lambda_, mgr);
        if (rc == 0 || rc == fem::error_convergence) {
            eigen_subspace<Settings, Data> subspace(K, Mop, es, settings(), data);
            rc = X.cols() ? subspace.solve(plan_.wanted, X, X.cols(), lambda_) : 0;
        }
        if (rc) {
            lambda_.clear();
            if (rc == fem::warning_interrupted || data.warning_code == fem::warning_interrupted) return;
            return this->set_error(data, rc, "Modal solver.", line_modal_solver);
        }
        const std::size_t found = lambda_.size();
        Ptr<states_type> D(new states_type());
        if (D->init(this->total_IDs_, found, 0.0, mgr))
            return this->set_error(data, fem::error_memory, "Matrix allocation error.", line_modal_solver);
        // Column by column in storage order; the free rows lead the rows of D.
        for (std::size_t c = 0; c < found; ++c) {
            const double* x = (X.col(c) || X.window(c, 1)) ? X.col(c) : nullptr;
            double* d = (D->dense().col(c) || D->dense().window(c, 1)) ? D->dense().col(c) : nullptr;
            if (!x || !d) return this->set_error(data, fem::error_internal, "Modal solver.", line_modal_solver);
            std::copy(x, x + n, d);
        }
        D_ = D;
        data.D_modes = fem::FEM_states(D.get());
    });
}

template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::report_modes(Data& data) {
    if (data.error_code || data.warning_code == fem::warning_interrupted) return;
    const std::size_t found = lambda_.size();
    if (found < plan_.wanted) {
        this->log(1, "solver_modal: only %d vectors computed, out of %d.\n", int(found), int(plan_.wanted));
        if (l2_finite_) this->set_warning(data, fem::warning_missing_modes, "Potentially missing modes.");
    }
    data.frequencies = dense1D<double>(found, 0.0);
    for (std::size_t i = 0; i < found; ++i) data.frequencies[i] = modal_detail::frequency_of(lambda_[i]);
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
    if (!settings().post_modes || data.error_code || !D_ || this->stop_requested(data)) return;
    const std::size_t n = this->free_IDs_->size(), found = lambda_.size();
    data.mode_results = dense2D<double>(found, 8, 0.0);
    std::vector<double> Mx(n), Kx(n);
    const symmetric_sparse<double>& M = Ms_->matrix();
    const symmetric_sparse<double>& Ks = this->Ks_->matrix();
    for (std::size_t c = 0; c < found; ++c) {
        const double* x = (D_->dense().col(c) || D_->dense().window(c, 1)) ? D_->dense().col(c) : nullptr;
        if (!x) return this->set_error(data, fem::error_internal, "Modal solver.", line_modal_solver);
        std::fill(Mx.begin(), Mx.end(), 0.0);
        std::fill(Kx.begin(), Kx.end(), 0.0);
        modal_detail::sparse_mult_add(M, x, Mx.data());
        modal_detail::sparse_mult_add(Ks, x, Kx.data());
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

template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::clear_unkept(Data& data) {
    base::clear_unkept(data);
    const std::uint32_t keep = settings().input_mask | settings().output_mask;
    if (!(keep & fem::mask_Ks)) data.Ms = fem::FEM_SymSparse();
    if (!(settings().output_mask & fem::mask_modes)) data.D_modes = fem::FEM_states();
}

template <class Types, class Settings, class Data>
bool solver_modal<Types, Settings, Data>::make_resident(Data& data) {
    bool ok = true;
    if (data.D_modes.is_valid() && !data.D_modes.is_all_incore()) ok = data.D_modes.force_incore();
    release_modal();
    return base::make_resident(data) && ok;
}

template <class Types, class Settings, class Data>
void solver_modal<Types, Settings, Data>::release_modal() {
    Ms_pattern_ = symmetric_sparse<double>();
    Ms_nnz_ = 0;
    Ms_.reset();
    D_.reset();
    lambda_.clear();
    count_ = 0;
    plan_ = modal_detail::ritz_plan();
    static_factor_usable_ = shifted_ready_ = false;
}

}  // namespace core
}  // namespace orv
