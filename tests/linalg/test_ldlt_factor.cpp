// Factor and solve of the block-skyline matrix against a dense LDLt reference.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "factor_checker.h"
#include "linalg/pivot_checkers.h"
#include "linalg/symmetric_L_D_Lt.h"

using namespace orv::core;
using namespace orv::core::testing;

namespace {

struct factor_case {
    std::size_t n;
    double density;
    bool indefinite;
    unsigned seed;
    std::size_t components;
    std::size_t limit;
};

void run_all_policies(const dense_sym& A, std::size_t limit, int threads) {
    const bool spd = [&] {
        std::vector<double> x(A.n, 0.0);
        const std::vector<double> d = dense_ldlt_solve(A, x);
        for (double v : d)
            if (!(v > 0)) return false;
        return true;
    }();
    if (spd) {
        pivot_check_positive<dummy_verboser> c1;
        check_factor_and_solve(A, limit, c1, threads);
        EXPECT_EQ(c1.first_rejected, ~std::size_t(0));
        pivot_force_positive<dummy_verboser> c2;
        check_factor_and_solve(A, limit, c2, threads);
        pivot_force_positive_rnd<dummy_verboser> c3;
        check_factor_and_solve(A, limit, c3, threads);
        EXPECT_EQ(c3.first_rejected, ~std::size_t(0));
    }
    pivot_force_definite<dummy_verboser> c4;
    check_factor_and_solve(A, limit, c4, threads);
    EXPECT_EQ(c4.first_rejected, ~std::size_t(0));
    // Sturm count: the number of negative pivots equals the dense reference's.
    count_n_force_definite<orvstd::binder2nd<orvstd::less<double>>, dummy_verboser> c5(
        orvstd::bind2nd(orvstd::less<double>(), 0.0));
    check_factor_and_solve(A, limit, c5, threads);
    std::vector<double> x(A.n, 0.0);
    std::size_t neg = 0;
    for (double v : dense_ldlt_solve(A, x)) neg += v < 0;
    EXPECT_EQ(c5.count, neg);
}

}  // namespace

class LdltRandom : public ::testing::TestWithParam<factor_case> {};

TEST_P(LdltRandom, MatchesDenseReferenceForEveryPolicyAndThreadCount) {
    const factor_case c = GetParam();
    const dense_sym A = random_matrix(c.n, c.density, c.indefinite, c.seed, c.components);
    for (int threads : {1, 2}) {
        SCOPED_TRACE(threads);
        run_all_policies(A, c.limit, threads);
    }
}

INSTANTIATE_TEST_SUITE_P(Matrices, LdltRandom,
                         ::testing::Values(factor_case{1, 0.0, false, 1, 1, 600}, factor_case{2, 0.0, true, 2, 1, 600},
                                           factor_case{40, 0.05, false, 3, 1, 600},   // one block
                                           factor_case{60, 0.05, false, 4, 1, 7},     // many small blocks, deep tree
                                           factor_case{90, 0.02, true, 5, 1, 11},     // indefinite, several levels
                                           factor_case{120, 0.03, false, 6, 4, 13},   // four components
                                           factor_case{300, 0.01, false, 7, 3, 37},   // wider blocks
                                           factor_case{700, 0.004, true, 8, 1, 300},  // panels of more than one width
                                           factor_case{500, 0.02, false, 9, 1, 150},
                                           factor_case{800, 0.01, true, 10, 4,
                                                       30}));  // independent subtrees in parallel

// Two disconnected parts: each starts with a column of height 0, so no block spans
// the boundary, and the blocks of one part never update the other.
TEST(LdltFactor, DisconnectedPartsHaveSeparateBlocks) {
    const dense_sym A = random_matrix(80, 0.05, false, 11, 2);
    const std::vector<orv::core::block_profile> prof = build_profiles(A, 600);
    ASSERT_GE(prof.size(), 2u);
    for (const auto& p : prof) EXPECT_FALSE(p.first < 40 && p.last > 40);
    pivot_check_positive<dummy_verboser> c;
    check_factor_and_solve(A, 600, c, 2);
}

// A dense element larger than one block: the columns past the block limit cross the
// block top and become extra segments of the first block (several tiles of them).
TEST(LdltFactor, DenseElementOverSeveralBlocks) {
    const std::size_t n = 1400;
    dense_sym A(n);
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = 0; i < j; ++i) A.set(i, j, u(rng) * 0.01);
    for (std::size_t i = 0; i < n; ++i) A(i, i) = 20.0 + u(rng);
    const std::vector<orv::core::block_profile> prof = build_profiles(A, 600);
    ASSERT_EQ(prof.size(), 3u);
    EXPECT_EQ(prof[0].segments.size(), n);  // 600 own, 800 extra
    EXPECT_EQ(prof[1].segments.size(), 800u);
    EXPECT_EQ(prof[2].segments.size(), 200u);
    pivot_check_positive<dummy_verboser> c1;
    const std::vector<double> x1 = check_factor_and_solve(A, 600, c1, 1);
    pivot_check_positive<dummy_verboser> c2;
    const std::vector<double> x2 = check_factor_and_solve(A, 600, c2, 2, 1 << 16);
    for (std::size_t i = 0; i < n; ++i) EXPECT_NEAR(x1[i], x2[i], 1e-13 * (1 + std::fabs(x1[i])));
}

// The thread count changes the order of sums only: the solutions agree to round-off.
TEST(LdltFactor, SameSolutionWithOneAndTwoThreads) {
    const dense_sym A = random_matrix(600, 0.01, true, 21, 1);
    pivot_force_definite<dummy_verboser> c1, c2;
    const std::vector<double> x1 = check_factor_and_solve(A, 40, c1, 1);
    const std::vector<double> x2 = check_factor_and_solve(A, 40, c2, 2, 1 << 14);
    for (std::size_t i = 0; i < x1.size(); ++i) EXPECT_NEAR(x1[i], x2[i], 1e-12 * (1 + std::fabs(x1[i])));
}

// Forward, diagonal and backward apart compose to the whole solve; the forward pass
// with the diagonal returns F^T K^-1 F.
TEST(LdltFactor, SweepsComposeAndForwardGivesEnergy) {
    const dense_sym A = random_matrix(150, 0.03, false, 31, 1);
    skyline_factor F = skyline_of(A, 17);
    pivot_check_positive<dummy_verboser> c;
    ASSERT_EQ(F.factorize(c), 0);
    std::vector<double> b(A.n), y1, y2;
    for (std::size_t i = 0; i < A.n; ++i) b[i] = std::sin(double(i));
    y1 = b;
    F.solve_forward_only(y1.data());
    double e = 0;
    std::vector<double> z(y1);
    F.solve_diagonal(y1.data());
    for (std::size_t i = 0; i < A.n; ++i) e += z[i] * y1[i];
    F.solve_backward(y1.data());
    y2 = b;
    const double e2 = F.solve(y2.data());
    for (std::size_t i = 0; i < A.n; ++i) EXPECT_DOUBLE_EQ(y1[i], y2[i]);
    double bx = 0;
    for (std::size_t i = 0; i < A.n; ++i) bx += b[i] * y2[i];
    EXPECT_NEAR(e2, e, 1e-12 * std::fabs(e));
    EXPECT_NEAR(e2, bx, 1e-10 * std::fabs(bx));
}
