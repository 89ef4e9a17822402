// Augmented Lagrange iterations on a factored matrix: the constraints of Lagrange-type
// DOFs are met by penalties that are already in the factor (their factor never
// changes) and by multipliers that are accumulated into the right-hand side.
#pragma once

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
template <class Constraints>
struct augmented_lagrange_settings {
    const skyline_factor* factor = nullptr;
    Constraints* constraints = nullptr;
    double tolerance_energy = 1e-6;
    double tolerance_constraint = 1e-6;
    double min_energy = 0.0;  // at or below this energy convergence is not sought further
    unsigned max_iterations = 20;
};

struct augmented_lagrange_result {
    double energy = 0.0;  // energy of the last solve, F^T K^-1 F
    double max_L = 0.0;   // largest |L_i| of the last round
    unsigned iterations = 0;
    bool converged = false;
};

// Solves with the factor, F being the right-hand side (it accumulates the constraint
// values), and writes the solution into u. `work` and `solution` are vectors of the
// factor's dimension, `L` one of constraints->size(), `states` 3 doubles per
// constraint, all 0.0 at the start. Returns 0, the constraints' own code ("Error in
// ALM solver.") or -109 ("Convergence error in ALM solver."); errors are recorded in
// the run's data, first error wins.
template <class Constraints, class RunSettings, class RunData>
int augmented_lagrange(const augmented_lagrange_settings<Constraints>& s, double* F, double* work,
                       double* solution, double* L, double* states, double* u, const RunSettings& run,
                       RunData& data, augmented_lagrange_result& result, int n_threads = 1) {
    static const char* const source = "fem/augmented_lagrange";
    const double percent = 100.0, cap_factor = 1e+20;
    const skyline_factor& K = *s.factor;
    Constraints& c = *s.constraints;
    const std::size_t n = K.dimension(), m = c.size();

    log_line(run, 4, "  Augmented Lagrange Method.\n");
    double E = result.energy, E0 = 0.0, L0 = 0.0, cap = 0.0, max_L = 0.0;
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
        converged = (std::fabs(dE) <= E0 * s.tolerance_energy && max_L <= L0 * s.tolerance_constraint) ||
                    max_L == 0.0;
        if (iter >= 1 && s.min_energy >= E) converged = true;
        ++iter;
    } while (iter < s.max_iterations && !converged);

    for (std::size_t i = 0; i < n; ++i) u[i] = solution[i];
    c.set_multipliers(states);
    result.energy = E;
    result.max_L = max_L;
    result.iterations = iter;
    result.converged = converged;
    if (!converged) {
        if (code != 0) {
            set_error(data, code, "Error in ALM solver.", source, __LINE__);
            return code;
        }
        set_error(data, -109, "Convergence error in ALM solver.", source, __LINE__);
        return -109;
    }
    log_line(run, 4, "  Convergence within %d iterations.\n", int(iter));
    return 0;
}

}  // namespace core
}  // namespace orv
