// Preconditioned conjugate gradient on a factored matrix: the product A p comes from
// an operator (the models' assembly), the preconditioner is the factor's solve. A
// system whose stiffness has parts that are not in the factor is thus solved without
// a new factorisation.
#pragma once

#include <omp.h>

#include <cmath>
#include <cstddef>

#include "frame/run_log.h"
#include "linalg/symmetric_L_D_Lt.h"

namespace orv {
namespace core {

// Operator: any type with `void add_product(const double* p, double* w)` that adds
// A p to w (w has the dimension of the factor). A failure of memory inside it leaves
// by std::bad_alloc, which the run's guard turns into -199.
template <class Operator>
struct conj_gradient_settings {
    double tolerance = 1e-8;        // on the preconditioned norm, relative to its start
    unsigned max_iterations = 100;  // iteration limit
    Operator* op = nullptr;         // gives A p
};

struct conj_gradient_result {
    double energy = 0.0;
    unsigned iterations = 0;
};

namespace internal {
double cg_dot(std::size_t n, const double* a, const double* b);
// y += alpha * x
void cg_axpy(std::size_t n, double alpha, const double* x, double* y);
// p := beta * p + z; a beta of 0 leaves p unscaled (p := p + z)
void cg_update_direction(std::size_t n, double beta, const double* z, double* p);
bool cg_all_zero(std::size_t n, const double* x);
// w := A p, then zero at the fixed rows.
template <class Operator>
void cg_product(Operator& op, std::size_t n, const double* p, double* w, const unsigned* fixed, std::size_t n_fixed) {
    for (std::size_t i = 0; i < n; ++i) w[i] = 0.0;
    op.add_product(p, w);
    for (std::size_t k = 0; k < n_fixed; ++k)
        if (fixed[k] < n) w[fixed[k]] = 0.0;
}
}  // namespace internal

// Solves A x = F with M (the factor) as preconditioner, from the start value in x.
// On entry g holds F; on exit the last gradient g = A x - F. w and z are work vectors
// of the factor's dimension. The rows listed in `fixed` are zeroed after each product.
// RunSettings/RunData are a run's records (log hook, interrupt hook, error fields);
// the interrupt hook is asked under `lock` when one is given.
//
// Returns 0, -10 (interrupted: warning), -108 ("INF or NaN detected.") or -109
// ("Convergence error."); errors and the warning are also recorded in the run's data,
// first error wins.
template <class Operator, class RunSettings, class RunData>
int conj_gradient(const skyline_factor& M, const conj_gradient_settings<Operator>& s, double* g, double* w,
                  double* z, double* p, double* x, const unsigned* fixed, std::size_t n_fixed,
                  const RunSettings& run, RunData& data, conj_gradient_result& result, omp_lock_t* lock = nullptr,
                  int n_threads = 1) {
    static const char* const source = "fem/conj_gradient";
    const std::size_t n = M.dimension();
    log_line(run, 4, "Conjugate gradient algorithm.\n");
    result.energy = 0.0;
    result.iterations = 0;

    for (std::size_t i = 0; i < n; ++i) g[i] = -g[i];
    if (!internal::cg_all_zero(n, x)) {
        internal::cg_product(*s.op, n, x, w, fixed, n_fixed);
        internal::cg_axpy(n, 1.0, w, g);
    }
    for (std::size_t i = 0; i < n; ++i) z[i] = g[i];
    double gz = M.solve(z, n_threads);  // g^T M^-1 g
    for (std::size_t i = 0; i < n; ++i) p[i] = z[i];

    const double limit = gz * s.tolerance * s.tolerance;
    const double inverse = 1.0 / limit;
    unsigned iter = 0;
    for (;;) {
        log_line(run, 4, "%3d  two_norm(g)         : %E (%E)\n", int(iter), std::sqrt(gz), std::sqrt(inverse * gz));
        if (gz < limit) break;
        ++iter;
        if (iter >= s.max_iterations) break;
        bool stop;
        if (lock) omp_set_lock(lock);
        stop = stop_requested(run, data);
        if (lock) omp_unset_lock(lock);
        if (stop) {
            result.iterations = iter;  // stop_requested has set the warning -10
            return data.error_code ? data.error_code : -10;
        }
        internal::cg_product(*s.op, n, p, w, fixed, n_fixed);
        const double pw = internal::cg_dot(n, p, w);
        const double alpha = -gz / pw;
        if (!std::isfinite(alpha)) {
            result.iterations = iter;
            set_error(data, -108, "INF or NaN detected.", source, __LINE__);
            return -108;
        }
        if (alpha != 0.0) {
            internal::cg_axpy(n, alpha, p, x);
            internal::cg_axpy(n, alpha, w, g);
        }
        for (std::size_t i = 0; i < n; ++i) z[i] = g[i];
        const double gz_new = M.solve(z, n_threads);
        const double beta = gz_new / gz;
        if (!std::isfinite(beta)) {
            result.iterations = iter;
            set_error(data, -108, "INF or NaN detected.", source, __LINE__);
            return -108;
        }
        internal::cg_update_direction(n, beta, z, p);
        gz = gz_new;
    }
    result.iterations = iter;
    if (gz >= limit) {
        set_error(data, -109, "Convergence error.", source, __LINE__);
        return -109;
    }
    log_line(run, 4, "Convergence within %d iterations.\n", int(iter));
    return 0;
}

}  // namespace core
}  // namespace orv
