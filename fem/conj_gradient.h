// Preconditioned conjugate gradient on a factored matrix: the product A p comes from
// an operator (the models' assembly), the preconditioner is the factor's solve. A
// system whose stiffness has parts that are not in the factor is thus solved without
// a new factorisation.
#pragma once

#include <omp.h>
#include <orv/fem/error_type.h>

#include <cassert>
#include <cmath>
#include <cstddef>
#include <vector>

#include "frame/run_log.h"
#include "linalg/symmetric_L_D_Lt.h"

namespace orv {
namespace core {

// Operator: any type with `void add_product(const double* p, double* w)` that adds
// A p to w (w has the dimension of the factor). A failure of memory inside it leaves
// by std::bad_alloc, which the run's guard turns into -199.

struct conj_gradient_result {
    double energy = 0.0;
    unsigned iterations = 0;
};

namespace detail {
double cg_dot(std::size_t n, const double* a, const double* b);
// y += alpha * x
void cg_axpy(std::size_t n, double alpha, const double* x, double* y);
// p := beta * p + z; a beta of 0 leaves p unscaled (p := p + z)
void cg_update_direction(std::size_t n, double beta, const double* z, double* p);
bool cg_all_zero(std::size_t n, const double* x);
}  // namespace detail

// Solves A x = F with M (the factor) as preconditioner. Set up once with
// set_operator, then applied with solve as often as needed; the work vectors are the
// solver's own.
template <class Operator>
class conj_gradient_solver {
public:
    struct settings_type {
        double tolerance = 1e-8;        // on the preconditioned norm, relative to its start
        unsigned max_iterations = 100;  // iteration limit
    };
    settings_type settings;

    conj_gradient_solver() = default;
    explicit conj_gradient_solver(const settings_type& s) : settings(s) {}

    // The operator that gives A p, the preconditioner, and the rows set to 0 after
    // each product (positions in the factor). Throws std::bad_alloc.
    void set_operator(Operator& op, const skyline_factor& M, const unsigned* fixed = nullptr, std::size_t n_fixed = 0) {
        op_ = &op;
        M_ = &M;
        fixed_ = fixed;
        n_fixed_ = n_fixed;
        const std::size_t n = M.dimension();
        w_.assign(n, 0.0);
        z_.assign(n, 0.0);
        p_.assign(n, 0.0);
    }

    // From the start value in x. On entry g holds F; on exit the last gradient
    // g = A x - F. RunSettings/RunData are a run's records (log hook, interrupt hook,
    // error fields); the interrupt hook is asked under `lock` when one is given.
    //
    // Returns 0, -10 (interrupted: warning), -108 ("INF or NaN detected.") or -109
    // ("Convergence error."); errors and the warning are also recorded in the run's
    // data, first error wins.
    template <class RunSettings, class RunData>
    int solve(double* g, double* x, const RunSettings& run, RunData& data, omp_lock_t* lock = nullptr,
              int n_threads = 1);

    const conj_gradient_result& result() const { return result_; }
    // The last product A p, zero at the fixed rows.
    const std::vector<double>& last_product() const { return w_; }

private:
    // w := A p, then zero at the fixed rows.
    void product(const double* p, double* w) {
        const std::size_t n = w_.size();
        for (std::size_t i = 0; i < n; ++i) w[i] = 0.0;
        op_->add_product(p, w);
        for (std::size_t k = 0; k < n_fixed_; ++k)
            if (fixed_[k] < n) w[fixed_[k]] = 0.0;
    }
    // Leaves with an error or the interrupt's warning.
    template <class RunData>
    int leave(RunData& data, int code, const char* name, int line, unsigned iter) {
        result_.iterations = iter;
        if (name) set_error(data, code, name, "fem/conj_gradient", line);
        return code;
    }

    Operator* op_ = nullptr;
    const skyline_factor* M_ = nullptr;
    const unsigned* fixed_ = nullptr;
    std::size_t n_fixed_ = 0;
    std::vector<double> w_, z_, p_;
    conj_gradient_result result_;
};

template <class Operator>
template <class RunSettings, class RunData>
int conj_gradient_solver<Operator>::solve(double* g, double* x, const RunSettings& run, RunData& data, omp_lock_t* lock,
                                          int n_threads) {
    assert(op_ && M_ && "conj_gradient_solver: set_operator first");
    const skyline_factor& M = *M_;
    const std::size_t n = M.dimension();
    double *w = w_.data(), *z = z_.data(), *p = p_.data();
    log_line(run, 4, "Conjugate gradient algorithm.\n");
    result_ = conj_gradient_result();

    for (std::size_t i = 0; i < n; ++i) g[i] = -g[i];
    if (!detail::cg_all_zero(n, x)) {
        product(x, w);
        detail::cg_axpy(n, 1.0, w, g);
    }
    for (std::size_t i = 0; i < n; ++i) z[i] = g[i];
    double gz = M.solve(z, n_threads);  // g^T M^-1 g
    for (std::size_t i = 0; i < n; ++i) p[i] = z[i];

    const double limit = gz * settings.tolerance * settings.tolerance;
    const double inverse = 1.0 / limit;
    unsigned iter = 0;
    for (;;) {
        log_line(run, 4, "%3d  two_norm(g)         : %E (%E)\n", int(iter), std::sqrt(gz), std::sqrt(inverse * gz));
        if (gz < limit) break;
        ++iter;
        if (iter >= settings.max_iterations) break;
        if (lock) omp_set_lock(lock);
        const bool stop = stop_requested(run, data);
        if (lock) omp_unset_lock(lock);
        // stop_requested has set the warning -10
        if (stop) return leave(data, data.error_code ? data.error_code : fem::warning_interrupted, nullptr, 0, iter);
        product(p, w);
        const double alpha = -gz / detail::cg_dot(n, p, w);
        if (!std::isfinite(alpha)) return leave(data, fem::error_not_finite, "INF or NaN detected.", __LINE__, iter);
        if (alpha != 0.0) {
            detail::cg_axpy(n, alpha, p, x);
            detail::cg_axpy(n, alpha, w, g);
        }
        for (std::size_t i = 0; i < n; ++i) z[i] = g[i];
        const double gz_new = M.solve(z, n_threads);
        const double beta = gz_new / gz;
        if (!std::isfinite(beta)) return leave(data, fem::error_not_finite, "INF or NaN detected.", __LINE__, iter);
        detail::cg_update_direction(n, beta, z, p);
        gz = gz_new;
    }
    result_.iterations = iter;
    if (gz >= limit) return leave(data, fem::error_convergence, "Convergence error.", __LINE__, iter);
    log_line(run, 4, "Convergence within %d iterations.\n", int(iter));
    return 0;
}

}  // namespace core
}  // namespace orv
