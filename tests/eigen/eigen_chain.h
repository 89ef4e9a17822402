// Spring-mass chains with eigenvalues in closed form, factored through the
// block-skyline path, and minimal run records for the eigen solver tests.
#pragma once

#include <gtest/gtest.h>

#include <orv/fem/solver_base.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "common/run_records.h"
#include "eigen/eigen_Lanczos_hybrid.h"
#include "eigen/eigen_subspace.h"
#include "linalg/factor_checker.h"
#include "orvlapack/orvlapack.h"

namespace eigen_test {

using orv::core::testing::dense_sym;

using orv::test::run_data;
using orv::test::run_settings;

// n masses between springs of stiffness k. fixed: both ends held (K = k tridiag(-1, 2,
// -1)); otherwise free at both ends (a rigid mode). consistent: M = mass/6 tridiag(1,
// 4, 1) (interior rows), lumped: M = mass I.
inline dense_sym chain_K(std::size_t n, double k, bool fixed) {
    dense_sym K(n);
    for (std::size_t i = 0; i < n; ++i) {
        const bool end = !fixed && (i == 0 || i + 1 == n);
        K.set(i, i, (end ? 1.0 : 2.0) * k);
        if (i + 1 < n) K.set(i, i + 1, -k);
    }
    return K;
}
inline dense_sym chain_M(std::size_t n, double mass, bool consistent) {
    dense_sym M(n);
    for (std::size_t i = 0; i < n; ++i) {
        M.set(i, i, consistent ? 4.0 * mass / 6.0 : mass);
        if (consistent && i + 1 < n) M.set(i, i + 1, mass / 6.0);
    }
    return M;
}
// Eigenvalue j (from 1) of the fixed-fixed chain.
inline double fixed_chain_lambda(std::size_t n, double k, double mass, bool consistent, std::size_t j) {
    const double c = std::cos(double(j) * M_PI / double(n + 1));
    return consistent ? 6.0 * k * (1.0 - c) / (mass * (2.0 + c)) : 2.0 * k * (1.0 - c) / mass;
}

// K - sigma M factored (zero pivots replaced, so that a shift inside the spectrum
// works), and M, both as block-skyline matrices; Mop is M as the solvers see it.
struct pencil {
    orv::core::symmetric_hybrid_OOC<double> Kmat, M;
    orv::core::skyline_factor K;
    dense_sym Kd, Md;
    double sigma = 0;
    orv::core::skyline_mass Mop{M};
    pencil(const pencil&) = delete;
    pencil(const dense_sym& Kin, const dense_sym& Min, double shift) : Kd(Kin), Md(Min), sigma(shift) {
        dense_sym S(Kin.n);
        for (std::size_t i = 0; i < S.n * S.n; ++i) S.a[i] = Kin.a[i] - shift * Min.a[i];
        EXPECT_EQ(orv::core::testing::make_skyline(S, 3, Kmat), 0);
        EXPECT_EQ(orv::core::testing::make_skyline(Min, 3, M), 0);
        K = orv::core::skyline_factor(Kmat);
        orv::core::pivot_force_definite<orv::core::dummy_verboser> checker;
        EXPECT_EQ(K.factorize(checker), 0);
    }
    std::size_t n() const { return Kd.n; }
};

// Dense reference for a diagonal M: the eigenvalues of M^-1/2 K M^-1/2, ascending.
inline std::vector<double> reference_lambda(const dense_sym& K, const dense_sym& M) {
    const std::size_t n = K.n;
    std::vector<double> ap((n + 1) * n / 2), w(n), z(n * n), work(3 * n);
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = 0; i <= j; ++i) ap[i + j * (j + 1) / 2] = K(i, j) / std::sqrt(M(i, i) * M(j, j));
    long info = 0;
    orv::lapack::dspev('N', 'U', long(n), ap.data(), w.data(), z.data(), 1, work.data(), info);
    EXPECT_EQ(info, 0);
    return w;
}

// Largest |x_i^T M x_j - delta_ij| and largest |K x - lambda M x| over the modes.
struct mode_check {
    double orthonormality = 0;
    double residual = 0;
};
inline mode_check check_modes(const pencil& P, orv::core::dense2D_OOC<double>& X,
                              const orv::dense1D<double, 8>& lambda) {
    mode_check out;
    const std::size_t n = P.n();
    for (std::size_t a = 0; a < X.cols(); ++a) {
        const double* xa = X.col(a);
        for (std::size_t b = 0; b < X.cols(); ++b) {
            const double* xb = X.col(b);
            double s = 0;
            for (std::size_t i = 0; i < n; ++i)
                for (std::size_t j = 0; j < n; ++j) s += xa[i] * P.Md(i, j) * xb[j];
            out.orthonormality = std::max(out.orthonormality, std::fabs(s - (a == b ? 1.0 : 0.0)));
        }
        double num = 0;
        for (std::size_t i = 0; i < n; ++i) {
            double kx = 0, mx = 0;
            for (std::size_t j = 0; j < n; ++j) {
                kx += P.Kd(i, j) * xa[j];
                mx += P.Md(i, j) * xa[j];
            }
            num += (kx - lambda[a] * mx) * (kx - lambda[a] * mx);
        }
        out.residual = std::max(out.residual, std::sqrt(num));
    }
    return out;
}

}  // namespace eigen_test
