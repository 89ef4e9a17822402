// Pivot policies of the LDLt factorisation and the outcome a run gets from them.
#include <gtest/gtest.h>

#include <orv/fem/error_type.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "common/log_capture.h"
#include "factor_checker.h"
#include "linalg/pivot_checkers.h"
#include "linalg/symmetric_L_D_Lt.h"

using namespace orv::core;
using namespace orv::core::testing;
using orv::test::log_capture;

namespace {

// 3 x 3 matrix [[1, 1, 0], [1, 1, 0], [0, 0, 2]] modified by `d1` at (1, 1): the
// second pivot is d1 - 1.
skyline_factor small_matrix(double d1, double a22 = 2.0) {
    dense_sym A(3);
    A.set(0, 1, 1.0);
    A(0, 0) = 1.0;
    A(1, 1) = d1;
    A(2, 2) = a22;
    A.set(1, 2, 0.5);
    return skyline_of(A);
}

// Sturm counter of the pivots below t.
typedef count_n_force_definite<orvstd::binder2nd<orvstd::less<double>>, dummy_verboser> count_below;
orvstd::binder2nd<orvstd::less<double>> below(double t) { return orvstd::bind2nd(orvstd::less<double>(), t); }

double stored_pivot(const skyline_factor& F, std::size_t i) {
    return 1.0 / F.block(F.block_of(i)).diag()[i - F.block(F.block_of(i)).first()];
}

const std::uint32_t ids[3] = {90, 91, 95};

}  // namespace

TEST(LdltPivots, OneByOne) {
    dense_sym A(1);
    A(0, 0) = 4.0;
    skyline_factor F = skyline_of(A);
    pivot_check_positive<dummy_verboser> c;
    pivot_outcome out;
    EXPECT_EQ(factorize_with_outcome(F, c, ids, 0x100000, 1, out), 0);
    EXPECT_EQ(F.block(0).diag()[0], 0.25);
    EXPECT_EQ(c.first, 4.0);
    EXPECT_EQ(c.second, 4.0);
    EXPECT_EQ(out.pivot_min, 4.0);
    EXPECT_EQ(out.pivot_max, 4.0);
    EXPECT_EQ(out.warning, 0);
    double y = 2.0;
    EXPECT_EQ(F.solve(&y), 1.0);  // 2 * 2 / 4
    EXPECT_EQ(y, 0.5);
}

TEST(LdltPivots, EmptyMatrixHasZeroRange) {
    skyline_factor F;
    pivot_check_positive<dummy_verboser> c;
    pivot_outcome out;
    out.pivot_min = out.pivot_max = 7;
    EXPECT_EQ(factorize_with_outcome(F, c, nullptr, 0x100000, 1, out), 0);
    EXPECT_EQ(out.pivot_min, 0.0);
    EXPECT_EQ(out.pivot_max, 0.0);
}

TEST(LdltPivots, ZeroPivotStopsCheckPositive) {
    skyline_factor F = small_matrix(1.0);
    log_capture log;
    hook_verboser v(&log_capture::display, &log);
    pivot_check_positive<hook_verboser> c(&v);
    EXPECT_EQ(F.factorize(c), orv::fem::error_pivot);
    EXPECT_FALSE(F.factored());
    EXPECT_EQ(c.first_rejected, 1u);
    ASSERT_EQ(log.lines.size(), 1u);
    EXPECT_EQ(log.lines[0].second, "Bad pivot detected: +0.000000E+00.\n");
    EXPECT_EQ(log.lines[0].first, 3u);

    skyline_factor G = small_matrix(1.0);
    pivot_check_positive<dummy_verboser> c2;
    pivot_outcome out;
    EXPECT_EQ(factorize_with_outcome(G, c2, ids, 0x100000, 1, out, {"caller/source", 12}), orv::fem::error_pivot);
    EXPECT_EQ(out.error, orv::fem::error_pivot);
    EXPECT_STREQ(out.error_text, "Pivot error.");
    EXPECT_STREQ(out.file, "caller/source");
    EXPECT_EQ(out.line, 12);
    EXPECT_EQ(out.bad_pivot_DOF, 91u);
}

TEST(LdltPivots, ZeroPivotIsReplacedByForcingPolicies) {
    {  // positive kind: replaced and factored, but the range shows the zero: error
        skyline_factor F = small_matrix(1.0);
        log_capture log;
        hook_verboser v(&log_capture::display, &log);
        pivot_force_positive<hook_verboser> c(&v);
        c.replacement = 1e3;
        pivot_outcome out;
        EXPECT_EQ(factorize_with_outcome(F, c, ids, 0x100000, 1, out), orv::fem::error_pivot);
        EXPECT_TRUE(F.factored());
        EXPECT_DOUBLE_EQ(stored_pivot(F, 1), 1e3);
        ASSERT_EQ(log.lines.size(), 1u);
        EXPECT_EQ(log.lines[0].second, "Bad pivot detected: +0.000000E+00. Replaced with: +1.000000E+03\n");
        EXPECT_EQ(out.bad_pivot_DOF, 91u);
        EXPECT_EQ(out.pivot_min, 0.0);
    }
    {  // definite kind: replaced; the zero end of the range gives the warning only
        skyline_factor F = small_matrix(1.0);
        pivot_force_definite<dummy_verboser> c;
        c.replacement = -2.0;
        pivot_outcome out;
        EXPECT_EQ(factorize_with_outcome(F, c, ids, 0x100000, 1, out), 0);
        EXPECT_DOUBLE_EQ(stored_pivot(F, 1), -2.0);
        EXPECT_DOUBLE_EQ(stored_pivot(F, 2), 2.0 - 0.25 / -2.0);  // the replaced pivot is used further on
        EXPECT_EQ(out.warning, orv::fem::warning_pivot);
        EXPECT_STREQ(out.warning_text, "Pivot warning.");
        EXPECT_EQ(out.bad_pivot_DOF, 91u);
    }
    {  // random replacement: max(|0|, 0.001 * highest so far) * u, u from MT19937(1)
        skyline_factor F = small_matrix(1.0);
        pivot_force_positive_rnd<dummy_verboser> c;
        EXPECT_EQ(F.factorize(c), 0);
        const double u = 1791095845.0 * 2.3283064370807974e-10;  // first output of MT19937(1)
        EXPECT_DOUBLE_EQ(stored_pivot(F, 1), 0.001 * 1.0 * u);
        EXPECT_EQ(c.first_rejected, 1u);
    }
    {  // Sturm counter: silent replacement, the zero is not below 0
        skyline_factor F = small_matrix(1.0);
        count_below c(below(0.0));
        c.replacement = 5.0;
        EXPECT_EQ(F.factorize(c), 0);
        EXPECT_EQ(c.count, 0u);
        EXPECT_DOUBLE_EQ(stored_pivot(F, 1), 5.0);
    }
}

TEST(LdltPivots, RatioOfExactlyOneTrillionth) {
    // pivots 1 and 1e-12: the positive test (>=) passes, the definite one (>) warns
    for (int kind = 0; kind < 2; ++kind) {
        dense_sym A(2);
        A(0, 0) = 1.0;
        A(1, 1) = 1e-12;
        skyline_factor F = skyline_of(A);
        pivot_outcome out;
        if (kind == 0) {
            pivot_check_positive<dummy_verboser> c;
            EXPECT_EQ(factorize_with_outcome(F, c, ids, 0x100000, 1, out), 0);
            EXPECT_EQ(out.warning, 0);
        } else {
            pivot_force_definite<dummy_verboser> c;
            EXPECT_EQ(factorize_with_outcome(F, c, ids, 0x100000, 1, out), 0);
            EXPECT_EQ(out.warning, orv::fem::warning_pivot);
            EXPECT_EQ(out.bad_pivot_DOF, 91u);
        }
    }
}

TEST(LdltPivots, WarningDoesNotOverrideStandingCodes) {
    dense_sym A(2);
    A(0, 0) = 1.0;
    A(1, 1) = 1e-13;
    skyline_factor F = skyline_of(A);
    pivot_check_positive<dummy_verboser> c;
    pivot_outcome out;
    out.warning = orv::fem::warning_interrupted;
    EXPECT_EQ(factorize_with_outcome(F, c, ids, 0x100000, 1, out), 0);
    EXPECT_EQ(out.warning, orv::fem::warning_interrupted);
    EXPECT_EQ(out.bad_pivot_DOF, ~0u);
}

TEST(LdltPivots, AllNegativePivots) {
    dense_sym A = random_matrix(30, 0.1, false, 5, 1);
    for (double& v : A.a) v = -v;
    for (int kind = 0; kind < 2; ++kind) {
        skyline_factor F = skyline_of(A, 8);
        pivot_outcome out;
        if (kind == 0) {
            pivot_force_definite<dummy_verboser> c;
            EXPECT_EQ(factorize_with_outcome(F, c, nullptr, 0x100000, 2, out), 0);
            EXPECT_EQ(out.warning, 0);
            EXPECT_LT(out.pivot_max, 0.0);
        } else {
            pivot_check_positive<dummy_verboser> c;
            EXPECT_EQ(factorize_with_outcome(F, c, nullptr, 0x100000, 1, out), orv::fem::error_pivot);
            EXPECT_EQ(c.first_rejected, 0u);
        }
    }
}

TEST(LdltPivots, InfiniteDiagonalIsAlwaysAnError) {
    const double inf = std::numeric_limits<double>::infinity();
    {
        skyline_factor F = small_matrix(3.0, inf);
        log_capture log;
        hook_verboser v(&log_capture::display, &log);
        pivot_force_definite<hook_verboser> c(&v);
        c.replacement = 1.0;
        pivot_outcome out;
        EXPECT_EQ(factorize_with_outcome(F, c, ids, 0x100000, 1, out), orv::fem::error_pivot);
        ASSERT_EQ(log.lines.size(), 1u);
        EXPECT_EQ(log.lines[0].second, "Bad pivot detected: +INF. Replaced with: +1.000000E+00\n");
        EXPECT_EQ(out.bad_pivot_DOF, 95u);
    }
    {
        skyline_factor F = small_matrix(3.0, inf);
        pivot_force_positive<dummy_verboser> c;
        EXPECT_EQ(F.factorize(c), orv::fem::error_pivot);
    }
    {
        skyline_factor F = small_matrix(3.0, inf);
        count_below c(below(0.0));
        EXPECT_EQ(F.factorize(c), orv::fem::error_pivot);
    }
}

TEST(LdltPivots, SturmCountLessAgainstLessEqual) {
    // pivots -1, 2, 2 (diagonal) and threshold 2
    dense_sym A(3);
    A(0, 0) = -1.0;
    A(1, 1) = 2.0;
    A(2, 2) = 2.0;
    for (int pass = 0; pass < 2; ++pass) {
        skyline_factor F = skyline_of(A);
        if (pass == 0) {
            count_below c(below(2.0));
            EXPECT_EQ(F.factorize(c), 0);
            EXPECT_EQ(c.count, 1u);
        } else {
            count_n_force_definite<orvstd::binder2nd<orvstd::less_equal<double>>, dummy_verboser> c(
                orvstd::bind2nd(orvstd::less_equal<double>(), 2.0));
            EXPECT_EQ(F.factorize(c), 0);
            EXPECT_EQ(c.count, 3u);
        }
    }
}

// The inertia of a shifted matrix counts the eigenvalues below the shift, with one
// and two threads alike.
TEST(LdltPivots, SturmCountMatchesEigenvalueCount) {
    const std::size_t n = 200;
    dense_sym A(n);
    // tridiagonal -1 2 -1: eigenvalues 2 - 2 cos(k pi / (n + 1))
    for (std::size_t i = 0; i < n; ++i) {
        A(i, i) = 2.0;
        if (i + 1 < n) A.set(i, i + 1, -1.0);
    }
    const double shift = 1.3;
    for (std::size_t i = 0; i < n; ++i) A(i, i) -= shift;
    std::size_t expected = 0;
    for (std::size_t k = 1; k <= n; ++k) expected += 2.0 - 2.0 * std::cos(double(k) * M_PI / double(n + 1)) < shift;
    for (int threads : {1, 2}) {
        skyline_factor F = skyline_of(A, 9);
        count_below c(below(0.0));
        EXPECT_EQ(F.factorize(c, 0x100000, threads), 0);
        EXPECT_EQ(c.count, expected);
    }
}

// An indexed factor reports the DOF ID of its own numbering.
TEST(LdltPivots, IndexedFactorGivesDOFIDs) {
    const unsigned list[3] = {27, 4, 13};
    orv::Ptr<vector_fast<unsigned>> IDs(new vector_fast<unsigned>(list, list + 3));
    indexed_sym<vector_fast<unsigned>, skyline_factor> F(IDs, small_matrix(1.0));
    pivot_check_positive<dummy_verboser> c;
    pivot_outcome out;
    EXPECT_EQ(factorize_with_outcome(F, c, 0x100000, 1, out), orv::fem::error_pivot);
    EXPECT_EQ(out.bad_pivot_DOF, 4u);
}
