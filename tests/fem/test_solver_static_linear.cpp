// Linear static run seen from a host: spring chains with known solutions, imposed
// values eliminated or kept, penalty supports, pivot policies, masks, inputs and the
// size gate.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/numerical_model_composite.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_static_linear.h>
#include <orv/fem/stiffness_diag.h>
#include <orv/fem/stiffness_sym.h>

#include "fem/static_linear_chain.h"
#include "orvmath1/dense2D.h"
#include "orvmath1/symmetric_full.h"

using namespace orv;

using namespace static_linear_test;
using solver = fem::solver_static_linear;

namespace {

// Tip load P at the last node, P2 at node 2 and -P3 at the last node, no load.
struct three_cases : chain {
    explicit three_cases(unsigned nbr_springs = 4, bool fix_first = true)
        : chain({100.0, 200.0, 400.0, 800.0, 50.0, 25.0}, nbr_springs, fix_first, 3) {
        load(0, last(), 10.0);
        load(1, 2, 5.0);
        load(1, last(), -3.0);
    }
};

void expect_column(const solver::data_type& d, unsigned c, const std::vector<double>& expected,
                   const std::vector<unsigned>& IDs, double tol) {
    for (std::size_t i = 0; i < IDs.size(); ++i) {
        double v = 0.0;
        ASSERT_EQ(d.U.get_val(IDs[i], c, v), 0) << "ID " << IDs[i];
        EXPECT_NEAR(v, expected[i], tol * (1.0 + std::fabs(expected[i]))) << "case " << c << " ID " << IDs[i];
    }
}

}  // namespace

TEST(StaticLinear, SpringChainSeveralCases) {
    three_cases ch;
    solver s;
    s.settings.output_mask = 2 | 64;
    log_capture log(s.settings);
    solver::data_type d(ch.problem);
    s.run(d);
    ASSERT_EQ(d.error_code, 0) << d.error_name << " " << d.error_msg;
    EXPECT_EQ(d.warning_code, 0);
    EXPECT_EQ(d.nbr_free_DOFs, 4u);
    EXPECT_EQ(d.nbr_total_DOFs, 4u);
    EXPECT_EQ(d.nbr_eliminated_DOFs, 0u);
    EXPECT_EQ(d.nbr_kept_imposed_DOFs, 0u);
    ASSERT_EQ(d.U.rows(), 4u);
    ASSERT_EQ(d.U.cols(), 3u);
    ASSERT_EQ(d.F.cols(), 3u);

    // Flexibilities: u_j = sum over loads P_m * sum_{i <= min(j, m)} 1 / k_i.
    const std::vector<unsigned> IDs = {9, 18, 27, 36};
    const std::vector<std::vector<std::pair<unsigned, double>>> loads = {{{4, 10.0}}, {{2, 5.0}, {4, -3.0}}, {}};
    for (unsigned c = 0; c < 3; ++c) {
        std::vector<double> u(4, 0.0);
        double energy = 0.0;
        for (unsigned j = 1; j <= 4; ++j)
            for (const auto& l : loads[c]) u[j - 1] += l.second * ch.flexibility(std::min(j, l.first));
        for (const auto& l : loads[c]) energy += 0.5 * l.second * u[l.first - 1];
        expect_column(d, c, u, IDs, 1e-12);
        ASSERT_EQ(d.energy.size(), 3u);
        EXPECT_NEAR(d.energy[c], energy, 1e-12 * (1.0 + energy));
        double f = 0.0;
        EXPECT_EQ(d.F.get_val(36, c, f), 0);
        EXPECT_EQ(f, c == 0 ? 10.0 : (c == 1 ? -3.0 : 0.0));
    }
    EXPECT_EQ(d.energy[2], 0.0);
    // Ks and Kf were not asked for.
    EXPECT_EQ(d.Ks.dim(), 0u);
    EXPECT_EQ(d.Kf.dim(), 0u);
    EXPECT_GT(d.pivot_min, 0.0);
    EXPECT_GE(d.pivot_max, d.pivot_min);
    EXPECT_EQ(d.bad_pivot_DOF, 0xFFFFFFFFu);
    EXPECT_TRUE(log.has("Total computing time               : "));
}

TEST(StaticLinear, ResultsDoNotDependOnThreads) {
    std::vector<double> reference;
    for (unsigned threads : {1u, 2u}) {
        three_cases ch(6);
        ch.ctx.set_max_threads(threads);
        solver s;
        solver::data_type d(ch.problem);
        s.run(d);
        ASSERT_EQ(d.error_code, 0);
        std::vector<double> all;
        for (unsigned c = 0; c < 3; ++c)
            for (unsigned j = 1; j <= 6; ++j) {
                double v = 0.0;
                d.U.get_val(9 * j, c, v);
                all.push_back(v);
            }
        if (reference.empty())
            reference = all;
        else
            for (std::size_t i = 0; i < all.size(); ++i)
                EXPECT_NEAR(all[i], reference[i], 1e-14 * std::fabs(reference[i]));
    }
}

// Node 0 imposed at 0.01 in both cases (eliminated); the tip imposed at 0.05 in case 1
// only (kept in Kf, met by the iterative path), loaded by P in case 0.
TEST(StaticLinear, ImposedEverywhereEliminatedImposedSomewhereKept) {
    for (unsigned use_ALM : {0u, 1u})
        for (unsigned threads : {1u, 2u}) {
            chain ch({100.0, 200.0, 400.0, 800.0}, 4, false, 2);
            ch.ctx.set_max_threads(threads);
            for (unsigned c = 0; c < 2; ++c) ch.impose(c, 0, 0.01);
            ch.load(0, 4, 10.0);
            ch.impose(1, 4, 0.05);
            solver s;
            s.settings.use_ALM = use_ALM;
            s.settings.tol_CG = 1e-10;
            solver::data_type d(ch.problem);
            s.run(d);
            ASSERT_EQ(d.error_code, 0) << d.error_name << " " << d.error_msg;
            EXPECT_EQ(d.nbr_free_DOFs, 4u);
            EXPECT_EQ(d.nbr_total_DOFs, 5u);
            EXPECT_EQ(d.nbr_eliminated_DOFs, 1u);
            EXPECT_EQ(d.nbr_kept_imposed_DOFs, 1u);
            EXPECT_EQ(d.U.row_pos(0), 4u);  // the eliminated DOF stands behind the free ones
            const double total = ch.flexibility(4);
            std::vector<double> u0(5), u1(5);
            for (unsigned j = 0; j <= 4; ++j) {
                u0[j] = 0.01 + 10.0 * ch.flexibility(j);
                u1[j] = 0.01 + 0.04 * ch.flexibility(j) / total;
            }
            const std::vector<unsigned> IDs = {0, 9, 18, 27, 36};
            expect_column(d, 0, u0, IDs, 1e-12);
            expect_column(d, 1, u1, IDs, 1e-8);
            double v = 0.0;
            d.U.get_val(36, 1, v);
            EXPECT_EQ(v, 0.05);  // an imposed value stands exactly
            d.U.get_val(0, 1, v);
            EXPECT_EQ(v, 0.01);
            EXPECT_EQ(d.energy[1], 0.0);  // half of U . F, and case 1 has no force
        }
}

// A support at the tip by a penalty-mode stiffness_diag, a load at node 2.
TEST(StaticLinear, PenaltySupportAddsNothingFirstEverythingSecond) {
    const double P = 6.0;
    for (unsigned use_ALM : {0u, 1u}) {
        chain ch({100.0, 200.0, 400.0, 800.0}, 4, true, 1);
        ch.load(0, 2, P);
        const unsigned support = ch.add_diag({1.0}, {36}, 0);
        (void)support;
        solver s;
        s.settings.use_ALM = use_ALM;
        s.settings.tol_ALM = 1e-12;
        s.settings.output_mask = 16 | 64;
        solver::data_type d(ch.problem);
        s.run(d);
        ASSERT_EQ(d.error_code, 0) << d.error_name << " " << d.error_msg;
        // Ks holds the chain's diagonal and, at the tip, the penalty 1e4 * 800.
        double kt = 0.0;
        const auto tip = d.Ks.pos(36);
        ASSERT_NE(tip, ~0ull);
        EXPECT_EQ(d.Ks.get_val(tip, tip, kt), 0);
        const double p = 1e4 * 800.0;
        EXPECT_DOUBLE_EQ(kt, 800.0 + p);

        const double left = 1.0 / ch.flexibility(2);
        const double right_flex = 1.0 / 400.0 + 1.0 / 800.0;
        double u2 = 0.0, u4 = 0.0;
        d.U.get_val(18, 0, u2);
        d.U.get_val(36, 0, u4);
        if (use_ALM) {
            // The multipliers make the support exact.
            const double expected = P / (left + 1.0 / right_flex);
            EXPECT_NEAR(u2, expected, 1e-9 * expected);
            EXPECT_NEAR(u4, 0.0, 1e-9 * expected);
        } else {
            // Pure penalty: a tip spring of stiffness p.
            const double right = 1.0 / (right_flex + 1.0 / p);
            const double expected = P / (left + right);
            EXPECT_NEAR(u2, expected, 1e-12 * expected);
            EXPECT_NEAR(u4, expected * right / p, 1e-9 * expected);
            EXPECT_GT(u4, 0.0);
        }
    }
}

// The penalty support of the previous test with a tip value imposed in one case only:
// augmented Lagrange with both kinds of constraints.
TEST(StaticLinear, AugmentedLagrangeWithKeptImposedValue) {
    chain ch({100.0, 200.0, 400.0, 800.0}, 4, true, 2);
    ch.add_diag({1.0}, {18}, 0);  // node 2 held by a penalty support
    ch.load(0, 4, 8.0);
    ch.impose(1, 4, 0.02);
    solver s;
    s.settings.tol_ALM = 1e-12;
    solver::data_type d(ch.problem);
    s.run(d);
    ASSERT_EQ(d.error_code, 0) << d.error_name << " " << d.error_msg;
    EXPECT_EQ(d.nbr_kept_imposed_DOFs, 1u);
    double u1 = 0, u2 = 0, u3 = 0, u4 = 0;
    // Case 0: node 2 fixed, the tip load goes through springs 3 and 4.
    d.U.get_val(18, 0, u2);
    d.U.get_val(36, 0, u4);
    EXPECT_NEAR(u2, 0.0, 1e-10);
    EXPECT_NEAR(u4, 8.0 * (1.0 / 400 + 1.0 / 800), 1e-10);
    // Case 1: tip at 0.02, node 2 at 0, linear in the flexibility between them.
    d.U.get_val(9, 1, u1);
    d.U.get_val(18, 1, u2);
    d.U.get_val(27, 1, u3);
    d.U.get_val(36, 1, u4);
    EXPECT_EQ(u4, 0.02);
    EXPECT_NEAR(u1, 0.0, 1e-10);
    EXPECT_NEAR(u2, 0.0, 1e-10);
    EXPECT_NEAR(u3, 0.02 * (1.0 / 400) / (1.0 / 400 + 1.0 / 800), 1e-10);
}

// A DOF without stiffness, a tiny one, and a negative one, under both pivot policies.
TEST(StaticLinear, SingularModelPivotPolicies) {
    struct expectation {
        double second;
        bool forcing;
        int error, warning;
    };
    const expectation cases[] = {
        {0.0, false, fem::error_pivot, 0},
        {0.0, true, 0, fem::warning_pivot},
        {1e-13, false, 0, fem::warning_pivot},
        {1e-13, true, 0, fem::warning_pivot},
        {1e-12, false, 0, 0},
        {-2.0, false, fem::error_pivot, 0},
        {-2.0, true, 0, fem::warning_pivot},
        {HUGE_VAL, false, fem::error_pivot, 0},
        {HUGE_VAL, true, fem::error_pivot, 0},
    };
    for (const expectation& e : cases) {
        chain ch({}, 0, true, 1);
        ch.add_diag({1.0, e.second}, {9, 18}, 1);
        ch.load(0, 1, 1.0);
        ch.load(0, 2, 1.0);
        solver s;
        s.settings.force_positive_pivots = e.forcing;
        log_capture log(s.settings);
        solver::data_type d(ch.problem);
        s.run(d);
        SCOPED_TRACE(testing::Message() << "second pivot " << e.second << " forcing " << e.forcing);
        EXPECT_EQ(d.error_code, e.error);
        EXPECT_EQ(d.warning_code, e.warning);
        if (e.error) {
            EXPECT_STREQ(d.error_name, "Pivot error.");
            EXPECT_STREQ(d.error_msg, "File = fem/solver_static_linear, Line #525.");
            EXPECT_EQ(d.bad_pivot_DOF, 18u);
            EXPECT_EQ(d.U.cols(), 0u);  // no solve after the error
            EXPECT_TRUE(log.has("Bad pivot detected: "));
        } else if (e.warning) {
            EXPECT_STREQ(d.error_name, "Pivot warning.");
            EXPECT_STREQ(d.error_msg, "");
            EXPECT_EQ(d.bad_pivot_DOF, 18u);
            ASSERT_EQ(d.U.cols(), 1u);
            double u = 0.0;
            d.U.get_val(9, 0, u);
            EXPECT_DOUBLE_EQ(u, 1.0);
            d.U.get_val(18, 0, u);
            // A replaced pivot is 1.0: the load then moves the DOF by 1.
            EXPECT_DOUBLE_EQ(u, e.second > 0.0 ? 1.0 / e.second : 1.0);
        } else {
            EXPECT_EQ(d.bad_pivot_DOF, 0xFFFFFFFFu);
            EXPECT_DOUBLE_EQ(d.pivot_min, e.second);
            EXPECT_DOUBLE_EQ(d.pivot_max, 1.0);
        }
        EXPECT_TRUE(log.has("Total computing time               : "));
    }
}

TEST(StaticLinear, DryRunFillsSizesOnly) {
    three_cases ch(5);
    solver s;
    s.settings.output_mask = 0;
    log_capture log(s.settings);
    solver::data_type d(ch.problem);
    s.run(d);
    ASSERT_EQ(d.error_code, 0);
    EXPECT_EQ(d.nbr_free_DOFs, 5u);
    EXPECT_EQ(d.nbr_total_DOFs, 5u);
    const double MB = 1.0 / 1048576.0;
    EXPECT_DOUBLE_EQ(d.size_RHS, 5 * 3 * 8 * MB);
    EXPECT_DOUBLE_EQ(d.size_U, 5 * 3 * 8 * MB);
    // A chain is tridiagonal: 5 + 4 entries.
    EXPECT_DOUBLE_EQ(d.size_Ks, (4.0 * (5 + 18 + 9) + 8.0 * 9) * MB);
    EXPECT_GT(d.size_Kf, 8.0 * 9 * MB);
    EXPECT_EQ(d.U.cols(), 0u);
    EXPECT_EQ(d.Kf.dim(), 0u);
    EXPECT_EQ(d.Ks.dim(), 0u);
    EXPECT_FALSE(log.has("Total computing time"));
    EXPECT_TRUE(log.has("  Size matrix Ks         :          9 doubles ("));
    EXPECT_FALSE(log.has("Numerical assembly"));
}

// Kf and F of a first run supplied to a second: no assembly and no factorisation.
TEST(StaticLinear, SuppliedFactorAndRightHandSides) {
    three_cases ch;
    solver first;
    first.settings.output_mask = 32 | 64;
    solver::data_type d1(ch.problem);
    first.run(d1);
    ASSERT_EQ(d1.error_code, 0);
    ASSERT_EQ(d1.Kf.dim(), 4u);

    dense1D<unsigned int> IDs(2);
    IDs[0] = 36;
    IDs[1] = 18;
    fem::FEM_matrix F(IDs, 2, 0.0);
    F.set_val(36, 0, 1.0);
    F.set_val(18, 1, 2.0);
    solver second;
    second.settings.input_mask = 2 | 32;
    log_capture log(second.settings);
    solver::data_type d2(ch.problem);
    d2.Kf = d1.Kf;
    d2.F = F;
    second.run(d2);
    ASSERT_EQ(d2.error_code, 0) << d2.error_name << " " << d2.error_msg;
    EXPECT_EQ(d2.time_assembly, 0.0);
    EXPECT_EQ(d2.time_factor, 0.0);
    EXPECT_FALSE(log.has("Numerical assembly matrix K"));
    EXPECT_FALSE(log.has("Factorization"));
    ASSERT_EQ(d2.U.cols(), 2u);
    double v = 0.0;
    d2.U.get_val(36, 0, v);
    EXPECT_NEAR(v, ch.flexibility(4), 1e-14);
    d2.U.get_val(9, 1, v);
    EXPECT_NEAR(v, 2.0 * ch.flexibility(1), 1e-14);
    d2.U.get_val(36, 1, v);
    EXPECT_NEAR(v, 2.0 * ch.flexibility(2), 1e-14);
    // The inputs are the caller's and stay.
    EXPECT_EQ(d2.Kf.dim(), 4u);
    EXPECT_EQ(d2.F.cols(), 2u);
    F.get_val(18, 1, v);
    EXPECT_EQ(v, 2.0);
}

TEST(StaticLinear, ModelWithoutDOFs) {
    chain ch({}, 0, true, 2);
    solver s;
    solver::data_type d(ch.problem);
    s.run(d);
    EXPECT_EQ(d.error_code, 0) << d.error_name << " " << d.error_msg;
    EXPECT_EQ(d.warning_code, 0);
    EXPECT_EQ(d.nbr_total_DOFs, 0u);
    EXPECT_EQ(d.size_Kf + d.size_Ks + d.size_RHS, 0.0);
    EXPECT_EQ(d.pivot_max, 0.0);
    EXPECT_EQ(d.U.rows(), 0u);
    ASSERT_EQ(d.energy.size(), 2u);
    EXPECT_EQ(d.energy[0], 0.0);
}

TEST(StaticLinear, MemoryGate) {
    chain ch({100.0, 200.0, 400.0, 800.0}, 4, true, 20000);
    ch.ctx.set_max_total_size(1);
    solver s;
    log_capture log(s.settings);
    solver::data_type d(ch.problem);
    s.run(d);
    EXPECT_EQ(d.error_code, fem::error_memory_limit);
    EXPECT_STREQ(d.error_name, "Insufficient memory.");
    EXPECT_STREQ(d.error_msg, "File = fem/solver_static_linear, Line #199.");
    EXPECT_GT(d.size_total, 1.0);
    EXPECT_DOUBLE_EQ(d.size_total, d.size_RHS + d.size_U + d.size_Kf);
    EXPECT_EQ(d.U.cols(), 0u);
    EXPECT_EQ(d.time_assembly, 0.0);
    EXPECT_TRUE(log.has("Total computing time               : "));

    // Without a limit the same run goes through.
    ch.ctx.set_max_total_size(0);
    solver::data_type d2(ch.problem);
    s.run(d2);
    EXPECT_EQ(d2.error_code, 0) << d2.error_name << " " << d2.error_msg;
    EXPECT_EQ(d2.U.cols(), 20000u);
}

TEST(StaticLinear, InterruptedRunIsAWarning) {
    three_cases ch;
    solver s;
    s.settings.interrupt_hook = [](void*) { return true; };
    solver::data_type d(ch.problem);
    s.run(d);
    EXPECT_FALSE(d.error_raised());
    EXPECT_EQ(d.warning_code, fem::warning_interrupted);
    EXPECT_GE(d.time_total, 0.0);
    EXPECT_EQ(d.U.cols(), 0u);
}

TEST(StaticLinear, InvalidDataAndCopiedRecord) {
    fem::context ctx;
    fem::problem_data empty(ctx);
    solver s;
    solver::data_type d(empty);
    s.run(d);
    EXPECT_EQ(d.error_code, fem::error_data);
    EXPECT_STREQ(d.error_name, "DATA ERROR");
    EXPECT_STREQ(d.error_msg, "ORV solver_static_linear: invalid data.");

    // A copied record keeps the U view of its source.
    three_cases ch;
    solver::data_type src(ch.problem);
    solver::data_type copy(src);
    EXPECT_EQ(copy.U_view, &src.U);
    EXPECT_EQ(src.U_view, &src.U);
}

// Right-hand sides and solutions bigger than the in-core budget of the context: the
// results are those of an in-core run and are in memory after it.
TEST(StaticLinear, ResultsUnderAnInCoreBudget) {
    const std::size_t cases = 50000;
    chain ch({100.0, 200.0, 400.0, 800.0}, 4, true, cases);
    for (std::size_t c = 0; c < cases; ++c) ch.load(c, 1 + unsigned(c % 4), double(c % 7) + 1.0);
    ASSERT_EQ(ch.ctx.set_max_incore_size(1, "/tmp", "orv_static_"), 0);
    solver s;
    s.settings.output_mask = 2 | 64;
    solver::data_type d(ch.problem);
    s.run(d);
    ASSERT_EQ(d.error_code, 0) << d.error_name << " " << d.error_msg;
    EXPECT_TRUE(d.U.is_all_incore());
    ASSERT_EQ(d.U.cols(), cases);
    for (std::size_t c : {std::size_t(0), std::size_t(12345), cases - 1}) {
        const unsigned m = 1 + unsigned(c % 4);
        const double P = double(c % 7) + 1.0;
        for (unsigned j = 1; j <= 4; ++j) {
            double v = 0.0;
            EXPECT_EQ(d.U.get_val(9 * j, c, v), 0);
            EXPECT_NEAR(v, P * ch.flexibility(std::min(j, m)), 1e-12) << "case " << c << " node " << j;
        }
        EXPECT_NEAR(d.energy[c], 0.5 * P * P * ch.flexibility(m), 1e-12);
    }
}

// Ks of a first run supplied to a second: Kf is made from it, not from the models.
TEST(StaticLinear, SuppliedStiffnessIsScatteredIntoKf) {
    three_cases ch;
    solver first;
    first.settings.output_mask = 16;
    solver::data_type d1(ch.problem);
    first.run(d1);
    ASSERT_EQ(d1.error_code, 0);
    ASSERT_EQ(d1.Ks.dim(), 4u);

    // Doubling the supplied stiffness halves the displacements.
    fem::FEM_SymSparse Ks;
    ASSERT_EQ(Ks.copy(d1.Ks), 0);
    for (unsigned i = 0; i < 4; ++i)
        for (unsigned j = 0; j < 4; ++j) {
            double v = 0.0;
            if (i <= j && Ks.get_val(i, j, v) == 0 && v != 0.0) Ks.set_val(i, j, 2.0 * v);
        }
    solver second;
    second.settings.input_mask = 16;
    log_capture log(second.settings);
    solver::data_type d2(ch.problem);
    d2.Ks = Ks;
    second.run(d2);
    ASSERT_EQ(d2.error_code, 0) << d2.error_name << " " << d2.error_msg;
    EXPECT_FALSE(log.has("Numerical assembly matrix Ks"));
    EXPECT_TRUE(log.has("Numerical assembly matrix Kf"));
    double v = 0.0;
    d2.U.get_val(36, 0, v);
    EXPECT_NEAR(v, 0.5 * 10.0 * ch.flexibility(4), 1e-13);
    EXPECT_EQ(d2.Ks.dim(), 4u);  // an input stays
}

// A second run on the same record starts from cleared outputs.
TEST(StaticLinear, RepeatedRunOnOneRecord) {
    three_cases ch;
    solver s;
    solver::data_type d(ch.problem);
    s.run(d);
    ASSERT_EQ(d.error_code, 0);
    const fem::FEM_states first = d.U;
    double a = 0.0, b = 0.0;
    first.get_val(36, 0, a);
    s.settings.force_positive_pivots = true;
    s.run(d);
    ASSERT_EQ(d.error_code, 0);
    d.U.get_val(36, 0, b);
    EXPECT_EQ(a, b);
    EXPECT_NE(first.get_w(), d.U.get_w());  // the host's copy of the first U is its own
    first.get_val(36, 0, a);
    EXPECT_EQ(a, b);
}

// A support settlement imposed in every case goes the fast path: its forces on the free
// DOFs are part of the right-hand side of each case.
TEST(StaticLinear, EliminatedSettlementOnTheFastPath) {
    chain ch({100.0, 200.0, 400.0}, 3, false, 2);
    for (unsigned c = 0; c < 2; ++c) ch.impose(c, 0, c == 0 ? -0.02 : 0.03);
    ch.impose(0, 3, 0.0);  // a support at the tip in case 0 ...
    ch.impose(1, 3, 0.0);  // ... and in case 1: eliminated too
    ch.load(0, 1, 4.0);
    solver s;
    solver::data_type d(ch.problem);
    s.run(d);
    ASSERT_EQ(d.error_code, 0) << d.error_name << " " << d.error_msg;
    EXPECT_EQ(d.nbr_free_DOFs, 2u);
    EXPECT_EQ(d.nbr_eliminated_DOFs, 2u);
    EXPECT_EQ(d.nbr_kept_imposed_DOFs, 0u);
    // Case 1: no load, ends at 0.03 and 0: linear in the flexibility.
    const double total = ch.flexibility(3);
    for (unsigned j = 0; j <= 3; ++j) {
        double v = 0.0;
        d.U.get_val(9 * j, 1, v);
        EXPECT_NEAR(v, 0.03 * (1.0 - ch.flexibility(j) / total), 1e-14) << j;
    }
    // Case 0: settlement -0.02 at node 0, plus 4 at node 1 between two supports.
    const double k_left = 100.0, k_right = 1.0 / (1.0 / 200.0 + 1.0 / 400.0);
    const double u1 = (4.0 + k_left * -0.02) / (k_left + k_right);
    double v = 0.0;
    d.U.get_val(9, 0, v);
    EXPECT_NEAR(v, u1, 1e-14);
    d.U.get_val(0, 0, v);
    EXPECT_EQ(v, -0.02);
}

// Each output mask keeps exactly its objects.
TEST(StaticLinear, OutputMaskKeepsItsObjects) {
    for (unsigned mask : {2u, 16u, 32u, 64u, 2u | 16u | 32u | 64u}) {
        three_cases ch;
        solver s;
        s.settings.output_mask = mask;
        solver::data_type d(ch.problem);
        s.run(d);
        SCOPED_TRACE(testing::Message() << "mask " << mask);
        ASSERT_EQ(d.error_code, 0) << d.error_name << " " << d.error_msg;
        EXPECT_EQ(d.F.cols(), (mask & 2) ? 3u : 0u);
        EXPECT_EQ(d.Ks.dim(), (mask & 16) ? 4u : 0u);
        EXPECT_EQ(d.Kf.dim(), (mask & 32) ? 4u : 0u);
        EXPECT_EQ(d.U.cols(), (mask & 64) ? 3u : 0u);
        EXPECT_EQ(d.energy.size(), (mask & 64) ? 3u : 0u);
        EXPECT_EQ(d.pivot_max > 0.0, (mask & (32 | 64)) != 0);  // factorised only for Kf or U
    }
}

// A chain long enough for many blocks of the factor, on two threads.
TEST(StaticLinear, LongChainManyBlocks) {
    const unsigned n = 3000;
    std::vector<double> k(n);
    for (unsigned i = 0; i < n; ++i) k[i] = 100.0 + double((i * 37) % 101);
    chain ch(k, n, true, 3);
    ch.ctx.set_max_threads(2);
    ch.load(0, n, 1.0);
    ch.load(1, n / 2, -2.0);
    ch.load(2, 1, 3.0);
    ch.load(2, n, 1.0);
    solver s;
    s.settings.output_mask = 32 | 64;
    solver::data_type d(ch.problem);
    s.run(d);
    ASSERT_EQ(d.error_code, 0) << d.error_name << " " << d.error_msg;
    EXPECT_EQ(d.nbr_free_DOFs, n);
    for (unsigned j : {1u, 7u, n / 2, n - 1, n}) {
        double v0 = 0, v1 = 0, v2 = 0;
        d.U.get_val(9 * j, 0, v0);
        d.U.get_val(9 * j, 1, v1);
        d.U.get_val(9 * j, 2, v2);
        const double fj = ch.flexibility(j);
        EXPECT_NEAR(v0, fj, 1e-10 * fj) << j;
        EXPECT_NEAR(v1, -2.0 * ch.flexibility(std::min(j, n / 2)), 1e-10 * fj) << j;
        EXPECT_NEAR(v2, 3.0 * ch.flexibility(1) + fj, 1e-10 * fj) << j;
    }
    EXPECT_NEAR(d.energy[0], 0.5 * ch.flexibility(n), 1e-10 * ch.flexibility(n));
}

// A rigid link in penalty mode (stiffness_sym with absolute 0) made exact by the
// multipliers; and a system of constraints alone, whose Kf is zero after the first
// pass, which takes the augmented Lagrange path even with use_ALM 0.
TEST(StaticLinear, PenaltyLinkAndConstraintsOnly) {
    {
        chain ch({100.0}, 1, true, 1);
        symmetric_full<double> L(2, 0.0);
        L(0, 0) = L(1, 1) = 1.0;
        L(1, 0) = -1.0;
        dense1D<unsigned int> ids(2);
        ids[0] = 9;
        ids[1] = 18;
        fem::stiffness_sym link(ch.ctx, L, ids, 0);
        ch.comp.insert(link.ID());
        ch.load(0, 2, 7.0);
        solver s;
        s.settings.tol_ALM = 1e-12;
        solver::data_type d(ch.problem);
        s.run(d);
        ASSERT_EQ(d.error_code, 0) << d.error_name << " " << d.error_msg;
        double u1 = 0, u2 = 0;
        d.U.get_val(9, 0, u1);
        d.U.get_val(18, 0, u2);
        EXPECT_NEAR(u1, 0.07, 1e-12);
        EXPECT_NEAR(u2, 0.07, 1e-12);
    }
    {
        chain ch({}, 0, true, 1);
        ch.add_diag({1.0}, {9}, 0);
        ch.load(0, 1, 5.0);
        solver s;
        s.settings.use_ALM = 0;
        solver::data_type d(ch.problem);
        s.run(d);
        ASSERT_EQ(d.error_code, 0) << d.error_name << " " << d.error_msg;
        double u = 1.0;
        d.U.get_val(9, 0, u);
        EXPECT_NEAR(u, 0.0, 1e-12);  // pure penalty would give 5 / min penalty = 5
    }
}

// A problem without load cases: the matrices are made, nothing is solved.
TEST(StaticLinear, NoLoadCase) {
    chain ch({100.0, 200.0}, 2, true, 0);
    solver s;
    s.settings.output_mask = 32 | 64;
    solver::data_type d(ch.problem);
    s.run(d);
    EXPECT_EQ(d.error_code, 0) << d.error_name << " " << d.error_msg;
    EXPECT_EQ(d.Kf.dim(), 2u);
    EXPECT_EQ(d.U.cols(), 0u);
    EXPECT_EQ(d.energy.size(), 0u);
    EXPECT_EQ(d.size_RHS, 0.0);
}
