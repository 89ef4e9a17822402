// Subspace iteration and Lanczos hybrid on spring-mass chains with eigenvalues in
// closed form or from a dense LAPACK reference.
#include <gtest/gtest.h>

#include <cstring>

#include "eigen_chain.h"

namespace eigen_test {
namespace {

using orv::core::dense2D_OOC;
using orv::core::eigen_settings;
typedef orv::core::eigen_subspace<run_settings, run_data> subspace;
typedef orv::core::eigen_Lanczos_hybrid<run_settings, run_data> lanczos;

struct outcome {
    int rc = 0;
    orv::dense1D<double, 8> lambda;
    dense2D_OOC<double> X;
    unsigned iterations = 0;
    run_data data;
    std::vector<std::string> log;
};

void capture(void* self, unsigned, const char* text) { static_cast<outcome*>(self)->log.push_back(text); }

eigen_settings tight(double sigma, double low = -HUGE_VAL, double high = HUGE_VAL) {
    eigen_settings s;
    s.tolerance = 1e-12;
    s.max_iterations = 200;
    s.shift = sigma;
    s.low = low;
    s.high = high;
    return s;
}

// One solve on a fresh block: the subspace iteration on m start vectors of its own, or
// the Lanczos hybrid with a basis of m vectors.
outcome run_solver(bool use_lanczos, const pencil& P, const eigen_settings& s, std::size_t wanted, std::size_t m,
                   bool (*interrupt)(void*)) {
    outcome out;
    run_settings rs;
    rs.display_hook = capture;
    rs.interrupt_hook = interrupt;
    rs.pass_thru = &out;
    if (use_lanczos) {
        lanczos solver(P.K, P.Mop, s, rs, out.data);
        out.rc = solver.solve(wanted, m, out.X, out.lambda);
        out.iterations = solver.nbr_iterations();
    } else {
        EXPECT_EQ(out.X.init(P.n(), m, 0.0), 0);
        subspace solver(P.K, P.Mop, s, rs, out.data);
        out.rc = solver.solve(wanted, out.X, 0, out.lambda);
        out.iterations = solver.nbr_iterations();
    }
    return out;
}
outcome run_subspace(const pencil& P, const eigen_settings& s, std::size_t wanted, std::size_t m,
                     bool (*interrupt)(void*) = nullptr) {
    return run_solver(false, P, s, wanted, m, interrupt);
}
outcome run_lanczos(const pencil& P, const eigen_settings& s, std::size_t wanted, std::size_t m,
                    bool (*interrupt)(void*) = nullptr) {
    return run_solver(true, P, s, wanted, m, interrupt);
}

std::size_t count_lines(const outcome& o, const std::string& text) {
    std::size_t c = 0;
    for (const auto& l : o.log) c += l == text;
    return c;
}

TEST(EigenWindow, KeepsTheValuesNextToTheFiniteBound) {
    const double v[6] = {-2, -1, 0, 1, 2, 3};
    std::size_t i0, i1;
    orv::core::select_window(v, 6, -1, 2, 10, i0, i1);  // the upper bound itself is out
    EXPECT_EQ(i0, 1u);
    EXPECT_EQ(i1, 4u);
    orv::core::select_window(v, 6, 0, HUGE_VAL, 2, i0, i1);
    EXPECT_EQ(i0, 2u);
    EXPECT_EQ(i1, 4u);
    orv::core::select_window(v, 6, -HUGE_VAL, 2.5, 2, i0, i1);
    EXPECT_EQ(i0, 3u);
    EXPECT_EQ(i1, 5u);
    orv::core::select_window(v, 6, -1.5, 2.5, 2, i0, i1);  // |low| < |high|: from below
    EXPECT_EQ(i0, 1u);
    EXPECT_EQ(i1, 3u);
    orv::core::select_window(v, 6, -2.5, 0.5, 1, i0, i1);  // |high| < |low|: from above
    EXPECT_EQ(i0, 2u);
    EXPECT_EQ(i1, 3u);
    orv::core::select_window(v, 6, 0.2, 0.8, 3, i0, i1);
    EXPECT_EQ(i0, i1);
}

TEST(EigenSubspace, LowestModesOfAFixedChain) {
    const std::size_t n = 12;
    for (bool consistent : {false, true}) {
        pencil P(chain_K(n, 3.0, true), chain_M(n, 2.0, consistent), 0.0);
        outcome o = run_subspace(P, tight(0.0), 4, 8);
        ASSERT_EQ(o.rc, 0) << consistent;
        ASSERT_EQ(o.lambda.size(), 4u);
        ASSERT_EQ(o.X.cols(), 4u);
        for (std::size_t j = 0; j < 4; ++j)
            EXPECT_NEAR(o.lambda[j] / fixed_chain_lambda(n, 3.0, 2.0, consistent, j + 1), 1.0, 1e-10);
        const mode_check c = check_modes(P, o.X, o.lambda);
        EXPECT_LT(c.orthonormality, 1e-10);
        EXPECT_LT(c.residual, 1e-5);
        EXPECT_GT(o.iterations, 1u);
        EXPECT_EQ(count_lines(o, "Subspace iterations algorithm.\n"), 1u);
        EXPECT_EQ(count_lines(o, "Convergence within " + std::to_string(o.iterations) + " iterations.\n"), 1u);
    }
}

TEST(EigenLanczos, MatchesTheDenseReferenceAndTheSubspaceModes) {
    const std::size_t n = 15;
    dense_sym M(n);
    for (std::size_t i = 0; i < n; ++i) M.set(i, i, 1.0 + 0.1 * double(i));
    pencil P(chain_K(n, 5.0, true), M, 0.0);
    const std::vector<double> ref = reference_lambda(P.Kd, P.Md);
    outcome l = run_lanczos(P, tight(0.0), 3, 8);
    outcome s = run_subspace(P, tight(0.0), 3, 8);
    ASSERT_EQ(l.rc, 0);
    ASSERT_EQ(s.rc, 0);
    ASSERT_EQ(l.lambda.size(), 3u);
    for (std::size_t j = 0; j < 3; ++j) {
        EXPECT_NEAR(l.lambda[j] / ref[j], 1.0, 1e-10);
        EXPECT_NEAR(s.lambda[j] / ref[j], 1.0, 1e-10);
        // the same mode up to its sign: |x_l^T M x_s| = 1
        double c = 0;
        for (std::size_t i = 0; i < n; ++i) c += l.X.col(j)[i] * M(i, i) * s.X.col(j)[i];
        EXPECT_NEAR(std::fabs(c), 1.0, 1e-8);
    }
    EXPECT_LT(check_modes(P, l.X, l.lambda).orthonormality, 1e-10);
    EXPECT_EQ(count_lines(l, "Lanczos hybrid algorithm.\n"), 1u);

    // Without mass scaling: the same values, modes of unit Euclidean norm.
    eigen_settings plain = tight(0.0);
    plain.mass_scaling = false;
    outcome e = run_subspace(P, plain, 3, 8);
    ASSERT_EQ(e.rc, 0);
    for (std::size_t j = 0; j < 3; ++j) {
        EXPECT_NEAR(e.lambda[j] / ref[j], 1.0, 1e-10);
        double norm2 = 0;
        for (std::size_t i = 0; i < n; ++i) norm2 += e.X.col(j)[i] * e.X.col(j)[i];
        EXPECT_NEAR(norm2, 1.0, 1e-12);
    }
}

std::vector<double> residues;
void record_residue(void*, unsigned iteration, double r) {
    EXPECT_EQ(iteration, residues.size() + 2);  // round 1 was the restart
    residues.push_back(r);
}

TEST(EigenSubspace, DependentStartVectorsAreReplaced) {
    // Given columns 0 and 1, the second all zero: the projected mass is singular at 1.
    const std::size_t n = 10;
    pencil P(chain_K(n, 1.0, true), chain_M(n, 1.0, false), 0.0);
    outcome o;
    run_settings rs;
    rs.display_hook = capture;
    rs.pass_thru = &o;
    ASSERT_EQ(o.X.init(n, 4, 0.0), 0);
    for (std::size_t i = 0; i < n; ++i) o.X.col(0)[i] = 1.0;
    eigen_settings s = tight(0.0);
    s.iteration_hook = record_residue;
    residues.clear();
    subspace solver(P.K, P.Mop, s, rs, o.data);
    ASSERT_EQ(solver.solve(2, o.X, 2, o.lambda), 0);
    EXPECT_EQ(count_lines(o, "  1- bad mode(s).\n"), 1u);
    ASSERT_EQ(o.lambda.size(), 2u);
    for (std::size_t j = 0; j < 2; ++j) EXPECT_NEAR(o.lambda[j], fixed_chain_lambda(n, 1.0, 1.0, false, j + 1), 1e-12);
    // one call per Rayleigh-Ritz round, the restart counted as a round without a call
    EXPECT_EQ(residues.size() + 1, solver.nbr_iterations());
    EXPECT_LT(residues.back(), 1e-12);
    EXPECT_EQ(residues.front(), 1.0);
}

TEST(EigenSolvers, ShiftInsideTheSpectrumGivesTheModesOfTheWindow) {
    const std::size_t n = 20;
    auto lam = [&](std::size_t j) { return fixed_chain_lambda(n, 1.0, 1.0, false, j); };
    const double low = 0.5 * (lam(5) + lam(6)), high = 0.5 * (lam(8) + lam(9));
    pencil P(chain_K(n, 1.0, true), chain_M(n, 1.0, false), lam(7) + 0.3 * (lam(8) - lam(7)));
    for (bool use_lanczos : {false, true}) {
        const eigen_settings s = tight(P.sigma, low, high);
        outcome o = use_lanczos ? run_lanczos(P, s, 10, 8) : run_subspace(P, s, 10, 8);
        ASSERT_EQ(o.rc, 0) << use_lanczos;
        ASSERT_EQ(o.lambda.size(), 3u);
        for (std::size_t j = 0; j < 3; ++j) EXPECT_NEAR(o.lambda[j], lam(j + 6), 1e-10 * lam(9));
        const mode_check c = check_modes(P, o.X, o.lambda);
        EXPECT_LT(c.orthonormality, 1e-10);
        EXPECT_LT(c.residual, 1e-5);
    }
}

TEST(EigenSolvers, FreeChainFindsTheRigidModeThroughAShift) {
    const std::size_t n = 10;
    // K + M is factored: sigma = -1.
    pencil P(chain_K(n, 2.0, false), chain_M(n, 1.0, false), -1.0);
    for (bool use_lanczos : {false, true}) {
        outcome o = use_lanczos ? run_lanczos(P, tight(-1.0, 0.0 - 1e-6), 3, 8)
                                : run_subspace(P, tight(-1.0, 0.0 - 1e-6), 3, 8);
        ASSERT_EQ(o.rc, 0);
        ASSERT_EQ(o.lambda.size(), 3u);
        EXPECT_LT(std::fabs(o.lambda[0]), 1e-10);
        for (std::size_t i = 1; i < n; ++i) EXPECT_NEAR(o.X.col(0)[i], o.X.col(0)[0], 1e-9);
        EXPECT_NEAR(std::fabs(o.X.col(0)[0]), 1.0 / std::sqrt(double(n)), 1e-9);
        for (std::size_t j = 1; j < 3; ++j) {
            const double s = std::sin(double(j) * M_PI / (2.0 * n));
            EXPECT_NEAR(o.lambda[j], 8.0 * s * s, 1e-10);
        }
    }
}

TEST(EigenSolvers, MoreModesWantedThanDOFs) {
    pencil P(chain_K(3, 1.0, true), chain_M(3, 1.0, false), 0.0);
    outcome s = run_subspace(P, tight(0.0), 10, 3);
    outcome l = run_lanczos(P, tight(0.0), 10, 6);
    for (const outcome* o : {&s, &l}) {
        ASSERT_EQ(o->rc, 0);
        ASSERT_EQ(o->lambda.size(), 3u);
        // 2 - sqrt(2), 2, 2 + sqrt(2)
        EXPECT_NEAR(o->lambda[0], 2.0 - std::sqrt(2.0), 1e-12);
        EXPECT_NEAR(o->lambda[1], 2.0, 1e-12);
        EXPECT_NEAR(o->lambda[2], 2.0 + std::sqrt(2.0), 1e-12);
    }
    // The Krylov space ends at 3 vectors; four random restarts in a row then fail.
    EXPECT_EQ(count_lines(l, "iter #3 : restart.\n"), 4u);
}

TEST(EigenSolvers, WindowWithoutModesRunsToTheLimit) {
    const std::size_t n = 10;
    pencil P(chain_K(n, 1.0, true), chain_M(n, 1.0, false), 0.0);
    const double l3 = fixed_chain_lambda(n, 1.0, 1.0, false, 3), l4 = fixed_chain_lambda(n, 1.0, 1.0, false, 4);
    eigen_settings s = tight(0.0, l3 + 0.25 * (l4 - l3), l3 + 0.75 * (l4 - l3));
    s.max_iterations = 6;
    outcome o = run_subspace(P, s, 2, 6);
    EXPECT_EQ(o.rc, orv::fem::error_convergence);
    EXPECT_EQ(o.iterations, 6u);
    EXPECT_EQ(o.lambda.size(), 0u);
    EXPECT_EQ(o.X.cols(), 0u);
}

TEST(EigenSolvers, IterationLimitGivesConvergenceErrorWithTheLastModes) {
    pencil P(chain_K(30, 1.0, true), chain_M(30, 1.0, false), 0.0);
    eigen_settings s = tight(0.0);
    s.max_iterations = 1;
    for (bool use_lanczos : {false, true}) {
        outcome o = use_lanczos ? run_lanczos(P, s, 3, 5) : run_subspace(P, s, 3, 5);
        EXPECT_EQ(o.rc, orv::fem::error_convergence);
        EXPECT_EQ(o.iterations, 1u);
        EXPECT_EQ(o.lambda.size(), 3u);
        EXPECT_EQ(o.data.error_code, 0);  // the run reports it in its own words
    }
}

TEST(EigenSolvers, SameBitsTwiceAndForAnyThreadCount) {
    const std::size_t n = 80;
    pencil P(chain_K(n, 1.0, true), chain_M(n, 1.0, true), -0.5);
    eigen_settings s = tight(-0.5);
    outcome a = run_lanczos(P, s, 4, 10);
    outcome b = run_lanczos(P, s, 4, 10);
    s.n_threads = 2;
    outcome c = run_lanczos(P, s, 4, 10);
    ASSERT_EQ(a.rc, 0);
    for (const outcome* o : {&b, &c}) {
        ASSERT_EQ(o->lambda.size(), a.lambda.size());
        EXPECT_EQ(std::memcmp(o->lambda.data(), a.lambda.data(), a.lambda.size() * sizeof(double)), 0);
        for (std::size_t j = 0; j < a.X.cols(); ++j)
            EXPECT_EQ(std::memcmp(o->X.col(j), a.X.col(j), n * sizeof(double)), 0);
    }
}

TEST(EigenMass, SparseMassInItsOwnNumberingGivesTheSameModes) {
    // The consistent chain mass numbered backwards, plus a DOF that has no equation
    // in the factor (position npos) coupled to the last row: it must take no part.
    const std::size_t n = 14;
    pencil P(chain_K(n, 2.0, true), chain_M(n, 3.0, true), 0.0);
    orv::dense1D<unsigned, 8> pointers(n + 2), columns;
    for (std::size_t i = 0; i <= n; ++i) {
        pointers[i] = unsigned(columns.size());
        columns.push_back(unsigned(i));
        if (i + 1 <= n) columns.push_back(unsigned(i + 1));
    }
    pointers[n + 1] = unsigned(columns.size());
    orv::symmetric_sparse<double> Ms;
    ASSERT_TRUE(Ms.init(pointers, columns, 0.0));
    for (std::size_t i = 0; i < n; ++i) {
        *Ms.find(i, i) = 4.0 * 3.0 / 6.0;
        if (i + 1 < n) *Ms.find(i, i + 1) = 3.0 / 6.0;
    }
    *Ms.find(n - 1, n) = 100.0;
    *Ms.find(n, n) = 50.0;
    std::vector<unsigned> pos(n + 1);
    for (std::size_t i = 0; i < n; ++i) pos[i] = unsigned(n - 1 - i);
    pos[n] = orv::core::sparse_mass::npos;
    orv::core::sparse_mass sparse;
    ASSERT_EQ(sparse.init(Ms, pos.data(), n), 0);

    run_settings rs;
    run_data data;
    for (int threads : {1, 2}) {
        eigen_settings s = tight(0.0);
        s.n_threads = threads;
        orv::dense1D<double, 8> lambda;
        dense2D_OOC<double> X;
        ASSERT_EQ(X.init(n, 8, 0.0), 0);
        subspace solver(P.K, sparse, s, rs, data);
        ASSERT_EQ(solver.solve(4, X, 0, lambda), 0);
        ASSERT_EQ(lambda.size(), 4u);
        for (std::size_t j = 0; j < 4; ++j)
            EXPECT_NEAR(lambda[j] / fixed_chain_lambda(n, 2.0, 3.0, true, j + 1), 1.0, 1e-10);
        EXPECT_LT(check_modes(P, X, lambda).orthonormality, 1e-10);
    }

    pos[2] = unsigned(n);  // past the factor
    EXPECT_EQ(sparse.init(Ms, pos.data(), n), orv::fem::error_data);
    EXPECT_EQ(sparse.dimension(), 0u);
}

int interrupt_calls = 0;
bool stop_at_third_call(void*) { return ++interrupt_calls >= 3; }

TEST(EigenSolvers, InterruptStopsWithWarning) {
    pencil P(chain_K(20, 1.0, true), chain_M(20, 1.0, false), 0.0);
    interrupt_calls = 0;
    outcome s = run_subspace(P, tight(0.0), 2, 6, stop_at_third_call);
    EXPECT_EQ(s.rc, orv::fem::warning_interrupted);
    EXPECT_EQ(s.data.warning_code, orv::fem::warning_interrupted);
    EXPECT_EQ(s.data.error_code, 0);
    EXPECT_LT(s.iterations, 3u);
    EXPECT_EQ(s.X.cols(), 0u);
    interrupt_calls = 0;
    outcome l = run_lanczos(P, tight(0.0), 2, 6, stop_at_third_call);  // during the Lanczos stage
    EXPECT_EQ(l.rc, orv::fem::warning_interrupted);
    EXPECT_EQ(l.data.warning_code, orv::fem::warning_interrupted);
    EXPECT_EQ(l.iterations, 0u);
}

TEST(EigenSolvers, BadArgumentsAreRefused) {
    pencil P(chain_K(5, 1.0, true), chain_M(5, 1.0, false), 0.0);
    run_settings rs;
    run_data data;
    orv::dense1D<double, 8> lambda;
    dense2D_OOC<double> X;
    ASSERT_EQ(X.init(4, 3, 7.0), 0);  // rows do not match the factor
    subspace solver(P.K, P.Mop, tight(0.0), rs, data);
    EXPECT_EQ(solver.solve(2, X, 0, lambda), orv::fem::error_data);
    EXPECT_EQ(X.cols(), 3u);
    EXPECT_EQ(X.col(0)[0], 7.0);
    ASSERT_EQ(X.init(5, 3, 7.0), 0);
    EXPECT_EQ(solver.solve(2, X, 4, lambda), orv::fem::error_data);  // more given than columns
    EXPECT_EQ(solver.solve(0, X, 0, lambda), 0);                     // nothing wanted: nothing done
    EXPECT_EQ(X.col(2)[4], 7.0);
    orv::core::skyline_factor unfactored(P.Kmat);
    unfactored.set_unfactored();
    lanczos l(unfactored, P.Mop, tight(0.0), rs, data);
    dense2D_OOC<double> V;
    EXPECT_EQ(l.solve(2, 3, V, lambda), orv::fem::error_data);
    EXPECT_EQ(data.error_code, 0);
}

TEST(EigenLanczos, RankOneMassExhaustsTheKrylovSpace) {
    dense_sym M(6);
    M.set(2, 2, 1.5);
    pencil P(chain_K(6, 1.0, true), M, 0.0);
    run_settings rs;
    run_data data;
    lanczos l(P.K, P.Mop, tight(0.0), rs, data);
    dense2D_OOC<double> V;
    EXPECT_EQ(l.build_basis(3, V), 0);
    EXPECT_EQ(V.cols(), 1u);
    // the one vector has unit M norm
    EXPECT_NEAR(V.col(0)[2] * V.col(0)[2] * 1.5, 1.0, 1e-12);
}

TEST(EigenLanczos, IndefiniteMassBasisIsOrthonormalUpToSigns) {
    const std::size_t n = 8;
    dense_sym M(n);
    for (std::size_t i = 0; i < n; ++i) M.set(i, i, (i % 2 ? -1.0 : 1.0) * (1.0 + 0.25 * double(i)));
    pencil P(chain_K(n, 1.0, true), M, 0.0);
    run_settings rs;
    run_data data;
    lanczos l(P.K, P.Mop, tight(0.0), rs, data);
    dense2D_OOC<double> V;
    ASSERT_EQ(l.build_basis(n, V), 0);
    ASSERT_GE(V.cols(), 2u);
    const std::vector<double>& signs = l.signs();
    EXPECT_NE(std::count(signs.begin(), signs.end(), 1.0), 0);
    EXPECT_NE(std::count(signs.begin(), signs.end(), -1.0), 0);
    for (std::size_t a = 0; a < V.cols(); ++a)
        for (std::size_t b = 0; b < V.cols(); ++b) {
            double s = 0;
            for (std::size_t i = 0; i < n; ++i) s += V.col(a)[i] * M(i, i) * V.col(b)[i];
            EXPECT_NEAR(s, a == b ? signs[a] : 0.0, 1e-9) << a << " " << b;
        }
}

}  // namespace
}  // namespace eigen_test
