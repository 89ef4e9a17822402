// Augmented Lagrange iterations on a factored matrix: the constraints of Lagrange-type
// DOFs are met by penalties that are already in the factor (their factor never
// changes) and by multipliers that are accumulated into the right-hand side.
#pragma once

#include <orv/fem/error_type.h>
#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <vector>

#include "frame/run_log.h"
#include "linalg/symmetric_L_D_Lt.h"

namespace orv {
namespace core {

// Constraints: any type with
//   std::size_t size() const;                     number of constraints
//   void add_state_vectors(double* u);            adds its stored state vectors to a
//                                                 solution, with the factor 1.0
//   int values(const double* u, double* L);       constraint values for the solution
//                                                 u; a non-zero code stops the loop
//   void add_to_rhs(const double* L, double* F);  adds the values L into the
//                                                 right-hand side
//   void set_multipliers(const double* states);   takes the final states, 3 doubles
//                                                 per constraint (value, multiplier,
//                                                 spare)
struct augmented_lagrange_result {
    double energy = 0.0;  // energy of the last solve, F^T K^-1 F
    double max_L = 0.0;   // largest |L_i| of the last round
    unsigned iterations = 0;
    bool converged = false;
};

// Set up once with set_operator (the factor and the constraints), then applied with
// solve; the work vectors, the constraint values and their states are the solver's.
template <class Constraints>
class augmented_lagrange_solver {
public:
    struct settings_type {
        double tolerance_energy = 1e-6;
        double tolerance_constraint = 1e-6;
        double min_energy = 0.0;  // at or below this energy convergence is not sought further
        unsigned max_iterations = 20;
    };
    settings_type settings;

    augmented_lagrange_solver() = default;
    explicit augmented_lagrange_solver(const settings_type& s) : settings(s) {}

    // Sizes the work vectors to the factor and the constraints. Throws std::bad_alloc.
    void set_operator(const skyline_factor& K, Constraints& c) {
        K_ = &K;
        c_ = &c;
        work_.assign(K.dimension(), 0.0);
        solution_.assign(K.dimension(), 0.0);
        L_.assign(c.size(), 0.0);
        states_.assign(3 * c.size(), 0.0);
    }

    // Solves with the factor, F being the right-hand side (it accumulates the
    // constraint values), and writes the solution into u. The states start at 0.0 at
    // each call. Returns 0, the constraints' own code ("Error in ALM solver.") or -109
    // ("Convergence error in ALM solver."); errors are recorded in the run's data,
    // first error wins.
    template <class RunSettings, class RunData>
    int solve(double* F, double* u, const RunSettings& run, RunData& data, int n_threads = 1);

    const augmented_lagrange_result& result() const { return result_; }
    // 3 doubles per constraint: last value, multiplier, spare.
    const std::vector<double>& states() const { return states_; }

private:
    const skyline_factor* K_ = nullptr;
    Constraints* c_ = nullptr;
    std::vector<double> work_, solution_, L_, states_;
    augmented_lagrange_result result_;
};

template <class Constraints>
template <class RunSettings, class RunData>
int augmented_lagrange_solver<Constraints>::solve(double* F, double* u, const RunSettings& run, RunData& data,
                                                  int n_threads) {
    assert(K_ && c_ && "augmented_lagrange_solver: set_operator first");
    static const char* const source = "fem/augmented_lagrange";
    const double percent = 100.0, cap_factor = 1e+20;
    const skyline_factor& K = *K_;
    Constraints& c = *c_;
    const std::size_t n = K.dimension(), m = L_.size();
    double *work = work_.data(), *solution = solution_.data(), *L = L_.data(), *states = states_.data();
    std::fill(states_.begin(), states_.end(), 0.0);

    log_line(run, 4, "  Augmented Lagrange Method.\n");
    result_ = augmented_lagrange_result();
    double E = 0.0, E0 = 0.0, L0 = 0.0, cap = 0.0, max_L = 0.0;
    unsigned iter = 0;
    bool converged = false;
    int code = 0;
    do {
        const double E_old = E;
        for (std::size_t i = 0; i < n; ++i) work[i] = F[i];
        E = K.solve(work, n_threads);
        for (std::size_t i = 0; i < n; ++i) solution[i] = work[i];
        c.add_state_vectors(solution);
        code = c.values(solution, L);
        if (code != 0) break;
        max_L = 0.0;
        for (std::size_t i = 0; i < m; ++i) max_L = std::max(max_L, std::fabs(L[i]));
        if (iter == 0) {
            E0 = E;
            L0 = std::max(max_L, L0);
            cap = L0 * cap_factor;
        }
        // A diverging multiplier is held at twenty orders of magnitude above the
        // first violation.
        if (max_L > cap) {
            const double scale = cap / max_L;
            for (std::size_t i = 0; i < m; ++i) L[i] *= scale;
        }
        for (std::size_t i = 0; i < m; ++i) {
            states[3 * i] = L[i];
            states[3 * i + 1] += L[i];
        }
        c.add_to_rhs(L, F);
        const double dE = E - E_old;
        if (E0 != 0.0 && L0 != 0.0)
            log_line(run, 4, "  %3d  dE: %+E (%.2E %%)  dL: %+E (%.2E %%)\n", int(iter), dE,
                     std::fabs(dE / E0) * percent, max_L, max_L * percent / L0);
        converged = (std::fabs(dE) <= E0 * settings.tolerance_energy && max_L <= L0 * settings.tolerance_constraint) ||
                    max_L == 0.0;
        if (iter >= 1 && settings.min_energy >= E) converged = true;
        ++iter;
    } while (iter < settings.max_iterations && !converged);

    for (std::size_t i = 0; i < n; ++i) u[i] = solution[i];
    c.set_multipliers(states);
    result_.energy = E;
    result_.max_L = max_L;
    result_.iterations = iter;
    result_.converged = converged;
    if (!converged) {
        if (code != 0) {
            set_error(data, code, "Error in ALM solver.", source, __LINE__);
            return code;
        }
        set_error(data, fem::error_convergence, "Convergence error in ALM solver.", source, __LINE__);
        return fem::error_convergence;
    }
    log_line(run, 4, "  Convergence within %d iterations.\n", int(iter));
    return 0;
}

}  // namespace core
}  // namespace orv
