// Settings shared by the eigen solvers, and the start vectors they make.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "linalg/dense2D_OOC.h"
#include "linalg/symmetric_L_D_Lt.h"

namespace orv {
namespace core {

// What a run tells an eigen solver. The pencil is K x = lambda M x; the factor handed
// to the solver holds K - shift * M.
struct eigen_settings {
    double tolerance = 0.001;      // on the relative change of the extreme eigenvalues
    unsigned max_iterations = 50;  // rounds of the subspace iteration
    double low = -HUGE_VAL;        // window of eigenvalues [low, high) of the unshifted K
    double high = HUGE_VAL;
    double shift = 0.0;        // sigma of the factor K - sigma M
    bool mass_scaling = true;  // modes of unit M norm; false: of unit Euclidean norm
    // M may be indefinite (a buckling run's -Kg), K being positive definite: the
    // projected pencils are solved through the factor of the projected K.
    bool indefinite_mass = false;
    int n_threads = 1;  // threads of the solves and products
    // Called after each round with its number (from 1) and its convergence value.
    void (*iteration_hook)(void* pass_thru, unsigned iteration, double residue) = nullptr;
    void* pass_thru = nullptr;
};

namespace detail {

// 2^-32 and half of it: a 32-bit output of the twister as a fraction of [0, 1), or
// of [0, 0.5).
constexpr double unit_32 = 2.3283064370807974e-10;
constexpr double half_unit_32 = 1.1641532185403987e-10;

// Start vectors in columns [from, T.cols()) of T, which stand for M times the
// vectors: first the diagonal of M; then unit vectors at the largest ratios of mass
// to stiffness (diagonal of M times the inverse pivots of K, each spread by a random
// factor in [0.75, 1.25]); uniform noise on [-1/sqrt(n), 1/sqrt(n)] added to the
// columns that remain. mass_diag and dinv have T.rows() values. Returns 0 or a column
// transfer code.
int start_vectors(dense2D_OOC<double>& T, std::size_t from, const std::vector<double>& mass_diag,
                  const std::vector<double>& dinv, std::mt19937& twister);

}  // namespace detail
}  // namespace core
}  // namespace orv
