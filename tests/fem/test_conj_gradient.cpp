// Preconditioned conjugate gradient: a factor of one stiffness preconditions a
// stiffer system given only by its products.
#include <gtest/gtest.h>

#include <cstring>

#include "fem/conj_gradient.h"
#include "small_spd_system.h"

using namespace orv::core;
using namespace fem_test;

namespace {

// A p in matrix positions for a matrix given in original rows.
struct dense_operator {
    const dense_sym* K;
    const std::vector<unsigned>* pos;
    int calls = 0;
    void add_product(const double* p, double* w) {
        ++calls;
        const std::size_t n = K->n;
        std::vector<double> x(n), y(n, 0.0);
        for (std::size_t i = 0; i < n; ++i) x[i] = p[(*pos)[i]];
        K->mult_add(x.data(), y.data());
        for (std::size_t i = 0; i < n; ++i) w[(*pos)[i]] += y[i];
    }
};

struct cg_case {
    static const std::size_t n = 12;
    dense_sym K0 = spring_chain(n), K = spring_chain(n);
    skyline_factor M;
    std::vector<unsigned> pos;
    std::vector<double> F, g, x;
    dense_operator op;
    conj_gradient_solver<dense_operator> cg;
    conj_gradient_solver<dense_operator>::settings_type& settings = cg.settings;
    cg_case() {
        // Two parts that the factor does not hold: a spring between DOFs 2 and 9 and
        // a ground spring at DOF 5. The preconditioned operator is the identity plus
        // a rank 2 term, so CG ends in at most 3 steps.
        K.add_spring(2, 9, 5.0);
        K(5, 5) += 3.0;
        EXPECT_EQ(factor_dense(K0, M, pos), 0);
        F.assign(n, 0.0);
        for (std::size_t i = 0; i < n; ++i) F[i] = std::sin(1.0 + double(i));
        g.assign(n, 0.0);
        for (std::size_t i = 0; i < n; ++i) g[pos[i]] = F[i];
        x.assign(n, 0.0);
        op.K = &K;
        op.pos = &pos;
        settings.tolerance = 1e-10;
        settings.max_iterations = 50;
    }
    run_settings rs;
    run_data data;
    conj_gradient_result r;
    int run(const unsigned* fixed = nullptr, std::size_t n_fixed = 0, omp_lock_t* lock = nullptr) {
        cg.set_operator(op, M, fixed, n_fixed);
        const int rc = cg.solve(g.data(), x.data(), rs, data, lock);
        r = cg.result();
        return rc;
    }
};

}  // namespace

TEST(ConjGradient, ConvergesWithTheFactorAsPreconditioner) {
    cg_case c;
    log_capture log;
    log.attach(c.rs);
    ASSERT_EQ(c.run(), 0);
    EXPECT_EQ(c.data.error_code, 0);
    EXPECT_LE(c.r.iterations, 3u);
    EXPECT_GE(c.r.iterations, 2u);
    EXPECT_EQ(c.r.energy, 0.0);
    const std::vector<double> exact = dense_solve(c.K, c.F);
    for (std::size_t i = 0; i < cg_case::n; ++i)
        EXPECT_NEAR(c.x[c.pos[i]], exact[i], 1e-9 * std::fabs(exact[i]) + 1e-12);
    // g holds the last gradient A x - F.
    for (std::size_t i = 0; i < cg_case::n; ++i) EXPECT_NEAR(c.g[i], 0.0, 1e-9);
    ASSERT_GE(log.lines.size(), 3u);
    EXPECT_EQ(log.lines.front().second, "Conjugate gradient algorithm.\n");
    EXPECT_EQ(log.lines.back().second, "Convergence within " + std::to_string(c.r.iterations) + " iterations.\n");
    EXPECT_EQ(log.lines.size(), c.r.iterations + 3);
    // The first norm line: the relative value is 1/tolerance at the start.
    EXPECT_EQ(log.lines[1].second.substr(0, 26), "  0  two_norm(g)         :");
    EXPECT_NE(log.lines[1].second.find("(1.000000E+10)"), std::string::npos) << log.lines[1].second;
    for (const auto& l : log.lines) EXPECT_EQ(l.first, 4u);
    // One product per iteration.
    EXPECT_EQ(c.op.calls, int(c.r.iterations));
}

TEST(ConjGradient, StartsFromAGivenSolution) {
    cg_case c;
    const std::vector<double> exact = dense_solve(c.K, c.F);
    for (std::size_t i = 0; i < cg_case::n; ++i) c.x[c.pos[i]] = 0.5 * exact[i];
    ASSERT_EQ(c.run(), 0);
    for (std::size_t i = 0; i < cg_case::n; ++i)
        EXPECT_NEAR(c.x[c.pos[i]], exact[i], 1e-9 * std::fabs(exact[i]) + 1e-12);
    EXPECT_EQ(c.op.calls, int(c.r.iterations) + 1);  // the start product A x
}

TEST(ConjGradient, ZeroToleranceNeverConverges) {
    cg_case c;
    c.settings.tolerance = 0.0;
    c.settings.max_iterations = 7;
    EXPECT_EQ(c.run(), orv::fem::error_convergence);
    EXPECT_EQ(c.data.error_code, orv::fem::error_convergence);
    EXPECT_STREQ(c.data.error_name, "Convergence error.");
    EXPECT_EQ(std::strncmp(c.data.error_msg, "File = fem/conj_gradient, Line #", 32), 0) << c.data.error_msg;
    EXPECT_EQ(c.r.iterations, 7u);
}

TEST(ConjGradient, ZeroLoadsGiveANonFiniteStep) {
    cg_case c;
    std::fill(c.g.begin(), c.g.end(), 0.0);
    EXPECT_EQ(c.run(), orv::fem::error_not_finite);
    EXPECT_STREQ(c.data.error_name, "INF or NaN detected.");
    // While that error stands a new call stops at its first step boundary and keeps it.
    const int calls = c.op.calls;
    std::fill(c.g.begin(), c.g.end(), 1.0);
    EXPECT_EQ(c.run(), orv::fem::error_not_finite);
    EXPECT_EQ(c.data.error_code, orv::fem::error_not_finite);
    EXPECT_EQ(c.op.calls, calls);
}

TEST(ConjGradient, InterruptIsAWarning) {
    cg_case c;
    int asked = 0;
    c.rs.interrupt_hook = [](void* p) {
        ++*static_cast<int*>(p);
        return true;
    };
    c.rs.pass_thru = &asked;
    omp_lock_t lock;
    omp_init_lock(&lock);
    EXPECT_EQ(c.run(nullptr, 0, &lock), orv::fem::warning_interrupted);
    omp_destroy_lock(&lock);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(c.data.error_code, 0);
    EXPECT_EQ(c.data.warning_code, orv::fem::warning_interrupted);
    EXPECT_EQ(c.op.calls, 0);
}

TEST(ConjGradient, FixedRowsAreZeroedInEveryProduct) {
    // No product reaches the gradient at a fixed row: it keeps its start value -F
    // while the other rows change.
    cg_case c;
    c.settings.tolerance = 0.0;
    c.settings.max_iterations = 5;
    const unsigned fixed = c.pos[9];
    EXPECT_EQ(c.run(&fixed, 1), orv::fem::error_convergence);
    EXPECT_EQ(c.g[fixed], -c.F[9]);
    EXPECT_NE(c.g[c.pos[8]], -c.F[8]);
    EXPECT_EQ(c.cg.last_product()[fixed], 0.0);
}
