// The small dense problems of the eigen solvers: the projected pencil
// Kr q = lambda Mr q of a Rayleigh-Ritz step, and the choice of the eigenvalues that
// fall into a window.
#pragma once

#include <cstddef>
#include <vector>

#include "linalg/pivot_checkers.h"
#include "orvmath1/dense2D.h"

namespace orv {
namespace core {

// Kr q = lambda Mr q for packed symmetric Kr and Mr of order m (element (i, j), i >= j,
// at (i + 1) * i / 2 + j). Mr is factored first as L D L^T; Kr is then brought to the
// standard form C = D^-1/2 L^-1 Kr L^-T D^-1/2, whose eigenpairs LAPACK's dspev gives.
class projected_pencil {
public:
    static constexpr std::size_t none = ~std::size_t(0);

    // Factors Mr with a positive-pivot check (the checker's range is reset first).
    // Returns `none` when every pivot was accepted, else the position of the first
    // rejected one: Mr is then not positive definite and the factorisation stops there.
    std::size_t factor_mass(const double* Mr, std::size_t m);
    // Lowest and highest pivot of the last factor_mass.
    double lowest_pivot() const { return checker_.first; }
    double highest_pivot() const { return checker_.second; }
    // Order of the last factor_mass.
    std::size_t order() const { return m_; }

    // Eigenvalues in ascending order into lambda (m values) and the eigenvectors into
    // the columns of Q (m x m), each scaled to unit Mr norm, or to unit Euclidean norm
    // when mass_scaling is false. Needs a successful factor_mass. Returns LAPACK's info;
    // when it is not zero, lambda and Q are all zero.
    long solve(const double* Kr, bool mass_scaling, double* lambda, orv::dense2D<double>& Q);

private:
    std::size_t m_ = 0;
    std::vector<double> L_;   // unit lower factor, row i at L_[i * m]
    std::vector<double> d_;   // pivots
    std::vector<double> Mr_;  // copy of Mr for the norms
    pivot_check_positive<dummy_verboser> checker_;
};

// Kr q = lambda Mr q when Mr is indefinite but Kr positive definite (the pencil of a
// buckling run): `pencil` must hold the factor of Kr (factor_mass(Kr)). Solves
// Mr q = mu Kr q and gives lambda = 1 / mu in ascending order, a mu of 0 giving +inf,
// with the columns of Q in the same order, each of unit |q^T Mr q| (mass_scaling, a
// mu of 0 keeping unit Kr norm) or of unit Euclidean norm. Returns LAPACK's info.
long solve_inverted(projected_pencil& pencil, const double* Mr, bool mass_scaling, double* lambda,
                    orv::dense2D<double>& Q);

// Range [i0, i1) of the ascending values lambda[0 .. m) that lie in [low, high) (an
// infinite bound is no bound), reduced to `wanted` values when there are more: those
// next to the one finite bound, or, with both finite, next to the bound of smaller
// magnitude; with no finite bound, the lowest ones.
void select_window(const double* lambda, std::size_t m, double low, double high, std::size_t wanted, std::size_t& i0,
                   std::size_t& i1);

}  // namespace core
}  // namespace orv
