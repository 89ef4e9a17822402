// The per-case solve of the linear static run: augmented Lagrange for penalised DOFs
// and kept imposed values, the conjugate gradient for kept imposed values alone, the
// sweeps otherwise.
#pragma once

#include <orv/fem/error_type.h>
#include "fem/solver_static_linear.h"
#include "linalg/small_dense.h"

namespace orv {
namespace core {

// The product K p of the conjugate gradient, asked from the models: the stiffness pass
// without penalties and the penalty pass with them, as Kf was assembled. The rows of
// the imposed DOFs of the case are taken as zero in p.
template <class Types, class Settings, class Data>
struct solver_static_linear<Types, Settings, Data>::product_operator {
    const solver_static_linear* run = nullptr;
    const std::vector<std::uint32_t>* fixed = nullptr;
    std::vector<double> scratch;
    unsigned nbr_threads = 1;
    int error = 0;

    void add_product(const double* p, double* w) {
        const std::size_t n = run->free_IDs_->size();
        scratch.assign(p, p + n);
        for (const std::uint32_t r : *fixed) scratch[r] = 0.0;
        DOF_vector U(run->free_IDs_, external_view(scratch.data(), n));
        DOF_vector target(run->free_IDs_, external_view(w, n));
        const int rc = run->add_stiffness_forces(U, target, -1.0, nbr_threads);
        if (rc && !error) error = rc;
    }
};

// The constraints of the augmented Lagrange iterations of one case: the DOFs of the
// penalty models (value: their internal force, -Kp u) and the imposed DOFs that stay
// in Kf (value: the force that brings them to their value, through the inverse of
// their block of the inverse of Kf).
template <class Types, class Settings, class Data>
struct solver_static_linear<Types, Settings, Data>::case_constraints {
    const solver_static_linear* run = nullptr;
    std::vector<std::uint32_t> penalised;  // positions in the free index
    std::vector<std::uint32_t> kept;       // positions in the free index
    std::vector<double> kept_values;
    std::vector<double> S_inv;  // kept x kept
    std::vector<double> forces, residual;
    unsigned nbr_threads = 1;

    std::size_t size() const { return penalised.size() + kept.size(); }
    void add_state_vectors(double*) {}
    int values(const double* u, double* L) {
        const std::size_t n = run->free_IDs_->size();
        if (!penalised.empty()) {
            forces.assign(n, 0.0);
            DOF_vector U(run->free_IDs_, external_view(const_cast<double*>(u), n));
            DOF_vector target(run->free_IDs_, external_view(forces.data(), n));
            const int rc = run->add_internal_forces(7, U, target, 1.0, run->params_, nbr_threads);
            if (rc) return rc;
            for (std::size_t i = 0; i < penalised.size(); ++i) L[i] = forces[penalised[i]];
        }
        const std::size_t m = kept.size(), o = penalised.size();
        if (m) {
            double scale = 0.0;
            for (std::size_t i = 0; i < n; ++i) scale = std::max(scale, std::fabs(u[i]));
            residual.assign(m, 0.0);
            for (std::size_t j = 0; j < m; ++j) {
                const double r = kept_values[j] - u[kept[j]];
                // What is left of a met constraint is rounding: it counts as met.
                residual[j] = std::fabs(r) <= 1e-13 * (std::fabs(kept_values[j]) + scale) ? 0.0 : r;
            }
            for (std::size_t i = 0; i < m; ++i) {
                double s = 0.0;
                for (std::size_t j = 0; j < m; ++j) s += S_inv[i + j * m] * residual[j];
                L[o + i] = s;
            }
        }
        return 0;
    }
    void add_to_rhs(const double* L, double* F) {
        for (std::size_t i = 0; i < penalised.size(); ++i) F[penalised[i]] += L[i];
        for (std::size_t j = 0; j < kept.size(); ++j) F[kept[j]] += L[penalised.size() + j];
    }
    void set_multipliers(const double*) {}
};

// Per case, in a parallel loop over the cases when U, F and Kf are all in memory;
// otherwise one case at a time with all threads. The first failure wins.
template <class Types, class Settings, class Data>
int solver_static_linear<Types, Settings, Data>::solve_per_case(Data& data) {
    const unsigned threads = this->nbr_threads();
    const bool in_core = U_->dense().is_all_incore() && F_->dense().is_all_incore() && Kf_->matrix().all_incore();
    const unsigned team = in_core ? static_cast<unsigned>(std::min<std::size_t>(threads, nbr_cases_)) : 1u;
    const unsigned inner = team > 1 ? 1u : threads;
    omp_lock_t lock;
    omp_init_lock(&lock);
    const int rc =
        parallel_first_error(nbr_cases_, int(team), [&](std::size_t c) { return solve_case(data, c, inner, &lock); });
    omp_destroy_lock(&lock);
    return rc;
}

// Column c holds its right-hand side with the forces of the eliminated values.
template <class Types, class Settings, class Data>
int solver_static_linear<Types, Settings, Data>::solve_case(Data& data, std::size_t c, unsigned threads,
                                                            omp_lock_t* lock) {
    if (free_IDs_->size() == 0) return 0;
    double* u = U_column(c);
    if (!u) return fem::error_internal;
    if (ALM_) return solve_case_ALM(data, c, u, threads);
    if (!cases_[c].kept.empty()) return solve_case_CG(data, c, u, threads, lock);
    Kf_->matrix().solve(u, int(threads));
    return 0;
}

// Augmented Lagrange on the penalised DOFs and the kept imposed values of the case.
template <class Types, class Settings, class Data>
int solver_static_linear<Types, Settings, Data>::solve_case_ALM(Data& data, std::size_t c, double* u,
                                                                unsigned threads) {
    const std::size_t n_free = free_IDs_->size();
    const skyline_factor& K = Kf_->matrix();
    const std::vector<std::uint32_t>& kept = cases_[c].kept;
    const std::vector<double>& kept_values = cases_[c].kept_values;
    std::vector<double> rhs(u, u + n_free);
    case_constraints cons;
    cons.run = this;
    cons.nbr_threads = threads;
    for (const std::uint32_t id : penalised_) cons.penalised.push_back(free_IDs_->find(id));
    cons.kept = kept;
    cons.kept_values = kept_values;
    const std::size_t m = kept.size();
    if (m) {
        // S = the block of the inverse of Kf on the kept DOFs, and its inverse.
        std::vector<double> S(m * m, 0.0), e(n_free);
        for (std::size_t j = 0; j < m; ++j) {
            std::fill(e.begin(), e.end(), 0.0);
            e[kept[j]] = 1.0;
            K.solve(e.data(), int(threads));
            for (std::size_t i = 0; i < m; ++i) S[i + j * m] = e[kept[i]];
        }
        if (!invert_small(S, m)) return fem::error_pivot;
        cons.S_inv = S;
        // The imposed values are met before the first round.
        std::vector<double> w(rhs);
        K.solve(w.data(), int(threads));
        for (std::size_t i = 0; i < m; ++i) {
            double l = 0.0;
            for (std::size_t j = 0; j < m; ++j) l += S[i + j * m] * (kept_values[j] - w[kept[j]]);
            rhs[kept[i]] += l;
        }
    }
    serialised_hooks hooks;
    hooks.host = &settings();
    const Settings s = hooks.settings_for_workers();
    augmented_lagrange_solver<case_constraints> alm;
    alm.settings.tolerance_energy = s.tol_ALM;
    alm.settings.tolerance_constraint = s.tol_ALM;
    alm.settings.min_energy = s.ALM_floor;
    alm.settings.max_iterations = s.max_iters_ALM;
    alm.set_operator(K, cons);
    const int rc = alm.solve(rhs.data(), u, s, data, int(threads));
    for (std::size_t j = 0; j < m; ++j) u[kept[j]] = kept_values[j];
    return rc;
}

// Conjugate gradient on the system with the kept imposed values of the case, which
// are written into the solution first; their forces go to the other DOFs.
template <class Types, class Settings, class Data>
int solver_static_linear<Types, Settings, Data>::solve_case_CG(Data& data, std::size_t c, double* u, unsigned threads,
                                                               omp_lock_t* lock) {
    const std::size_t n_free = free_IDs_->size();
    const std::vector<std::uint32_t>& kept = cases_[c].kept;
    const std::vector<double>& kept_values = cases_[c].kept_values;
    std::vector<double> x(n_free, 0.0), g(u, u + n_free);
    for (std::size_t j = 0; j < kept.size(); ++j) x[kept[j]] = kept_values[j];
    {
        DOF_vector X(free_IDs_, external_view(x.data(), n_free));
        DOF_vector G(free_IDs_, external_view(g.data(), n_free));
        const int rc = add_stiffness_forces(X, G, 1.0, threads);
        if (rc) return rc;
    }
    for (const std::uint32_t r : kept) g[r] = 0.0;
    bool zero = true;
    for (const double v : g) zero = zero && v == 0.0;
    if (!zero) {
        serialised_hooks hooks;
        hooks.host = &settings();
        const Settings s = hooks.settings_for_workers();
        product_operator op;
        op.run = this;
        op.fixed = &kept;
        op.nbr_threads = threads;
        conj_gradient_solver<product_operator> cg;
        cg.settings.tolerance = s.tol_CG;
        cg.settings.max_iterations = s.max_iters_CG;
        cg.set_operator(op, Kf_->matrix(), kept.data(), kept.size());
        const int rc = cg.solve(g.data(), x.data(), s, data, lock, int(threads));
        if (op.error) return op.error;
        if (rc) return rc;
        for (std::size_t j = 0; j < kept.size(); ++j) x[kept[j]] = kept_values[j];
    }
    std::copy(x.begin(), x.end(), u);
    return 0;
}

}  // namespace core
}  // namespace orv
