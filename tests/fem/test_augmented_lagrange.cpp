// Augmented Lagrange iterations: prescribed values met through a fixed penalty.
#include <gtest/gtest.h>

#include <cstring>

#include "fem/augmented_lagrange.h"
#include "small_spd_system.h"

using namespace orv::core;
using namespace fem_test;

namespace {

// u(dof_i) = value_i, enforced by a penalty k_i on the diagonal of the factor: the
// constraint value is the penalty force k_i (value_i - u(dof_i)).
struct prescribed_values {
    std::vector<unsigned> dof;  // matrix positions
    std::vector<double> value, k;
    std::vector<double> multipliers;
    int fail_code = 0;
    int added_states = 0;
    std::size_t size() const { return dof.size(); }
    void add_state_vectors(double*) { ++added_states; }
    int values(const double* u, double* L) {
        if (fail_code) return fail_code;
        for (std::size_t i = 0; i < dof.size(); ++i) L[i] = k[i] * (value[i] - u[dof[i]]);
        return 0;
    }
    void add_to_rhs(const double* L, double* F) {
        for (std::size_t i = 0; i < dof.size(); ++i) F[dof[i]] += L[i];
    }
    void set_multipliers(const double* states) {
        multipliers.resize(dof.size());
        for (std::size_t i = 0; i < dof.size(); ++i) multipliers[i] = states[3 * i + 1];
    }
};

struct alm_case {
    static const std::size_t n = 10;
    dense_sym K = spring_chain(n), Kp = spring_chain(n);
    skyline_factor factor;
    std::vector<unsigned> pos;
    prescribed_values c;
    std::vector<double> F_ext, F, u;
    augmented_lagrange_solver<prescribed_values> alm;
    augmented_lagrange_solver<prescribed_values>::settings_type& settings = alm.settings;
    alm_case() {
        // DOF 3 held at 0.25 and DOF 7 at -0.5 by penalties of 1e4.
        const unsigned d[2] = {3, 7};
        for (unsigned i = 0; i < 2; ++i) Kp(d[i], d[i]) += 1e4;
        EXPECT_EQ(factor_dense(Kp, factor, pos), 0);
        c.dof = {pos[3], pos[7]};
        c.value = {0.25, -0.5};
        c.k = {1e4, 1e4};
        F_ext.assign(n, 0.0);
        for (std::size_t i = 0; i < n; ++i) F_ext[i] = 0.1 * double(i + 1);
        F.assign(n, 0.0);
        for (std::size_t i = 0; i < n; ++i) F[pos[i]] = F_ext[i];
        u.assign(n, 0.0);
        settings.tolerance_energy = 1e-12;
        settings.tolerance_constraint = 1e-10;
        settings.max_iterations = 20;
    }
    run_settings rs;
    run_data data;
    augmented_lagrange_result r;
    int run() {
        alm.set_operator(factor, c);
        const int rc = alm.solve(F.data(), u.data(), rs, data);
        r = alm.result();
        return rc;
    }
};

}  // namespace

TEST(AugmentedLagrange, MeetsPrescribedValues) {
    alm_case a;
    log_capture log;
    log.attach(a.rs);
    ASSERT_EQ(a.run(), 0);
    EXPECT_TRUE(a.r.converged);
    EXPECT_GE(a.r.iterations, 2u);
    EXPECT_LE(a.r.iterations, 6u);
    EXPECT_NEAR(a.u[a.pos[3]], 0.25, 1e-9);
    EXPECT_NEAR(a.u[a.pos[7]], -0.5, 1e-9);
    // Reference: the chain with both DOFs eliminated. The multipliers hold the
    // reactions K u - F at the held DOFs plus the penalty forces k * value.
    std::vector<double> u(alm_case::n);
    for (std::size_t i = 0; i < alm_case::n; ++i) u[i] = a.u[a.pos[i]];
    dense_sym Kr = a.K;
    std::vector<double> rhs = a.F_ext;
    for (unsigned d : {3u, 7u}) {
        const double v = d == 3 ? 0.25 : -0.5;
        for (std::size_t i = 0; i < alm_case::n; ++i) {
            rhs[i] -= Kr(i, d) * v;
            Kr(i, d) = Kr(d, i) = 0.0;
        }
        Kr(d, d) = 1.0;
        rhs[d] = v;
    }
    const std::vector<double> exact = dense_solve(Kr, rhs);
    for (std::size_t i = 0; i < alm_case::n; ++i) EXPECT_NEAR(u[i], exact[i], 1e-8);
    std::vector<double> Ku(alm_case::n, 0.0);
    a.K.mult_add(u.data(), Ku.data());
    ASSERT_EQ(a.c.multipliers.size(), 2u);
    EXPECT_NEAR(a.c.multipliers[0], Ku[3] - a.F_ext[3] + 1e4 * 0.25, 1e-6);
    EXPECT_NEAR(a.c.multipliers[1], Ku[7] - a.F_ext[7] - 1e4 * 0.5, 1e-6);
    EXPECT_EQ(a.c.added_states, int(a.r.iterations));

    ASSERT_EQ(log.lines.size(), a.r.iterations + 2);
    EXPECT_EQ(log.lines.front().second, "  Augmented Lagrange Method.\n");
    EXPECT_EQ(log.lines[1].second.substr(0, 12), "    0  dE: +");
    EXPECT_NE(log.lines[1].second.find("(1.00E+02 %)  dL: +"), std::string::npos) << log.lines[1].second;
    EXPECT_NE(log.lines[1].second.find("(1.00E+02 %)\n"), std::string::npos) << log.lines[1].second;
    EXPECT_EQ(log.lines.back().second, "  Convergence within " + std::to_string(a.r.iterations) + " iterations.\n");
}

TEST(AugmentedLagrange, SatisfiedConstraintsEndAtOnce) {
    alm_case a;
    a.c.k = {0.0, 0.0};  // constraint values are all 0
    ASSERT_EQ(a.run(), 0);
    EXPECT_EQ(a.r.iterations, 1u);
    EXPECT_TRUE(a.r.converged);
    // The energy is F^T K^-1 F of the first solve.
    const std::vector<double> x = dense_solve(a.Kp, a.F_ext);
    double e = 0;
    for (std::size_t i = 0; i < alm_case::n; ++i) e += a.F_ext[i] * x[i];
    EXPECT_NEAR(a.r.energy, e, 1e-12 * e);
    for (std::size_t i = 0; i < alm_case::n; ++i) EXPECT_NEAR(a.u[a.pos[i]], x[i], 1e-12);
}

TEST(AugmentedLagrange, RunsOutOfIterations) {
    alm_case a;
    a.settings.max_iterations = 1;
    EXPECT_EQ(a.run(), orv::fem::error_convergence);
    EXPECT_FALSE(a.r.converged);
    EXPECT_STREQ(a.data.error_name, "Convergence error in ALM solver.");
    EXPECT_EQ(std::strncmp(a.data.error_msg, "File = fem/augmented_lagrange, Line #", 37), 0) << a.data.error_msg;
    // The solution of the last round is handed back all the same.
    EXPECT_NE(a.u[a.pos[5]], 0.0);
}

TEST(AugmentedLagrange, ConstraintFailureStopsWithItsCode) {
    alm_case a;
    a.c.fail_code = orv::fem::error_index;
    EXPECT_EQ(a.run(), orv::fem::error_index);
    EXPECT_EQ(a.data.error_code, orv::fem::error_index);
    EXPECT_STREQ(a.data.error_name, "Error in ALM solver.");
}

TEST(AugmentedLagrange, MinimumEnergyStopsFromTheSecondRound) {
    alm_case a;
    a.settings.min_energy = 1e30;
    a.settings.tolerance_constraint = 0.0;
    a.settings.tolerance_energy = 0.0;
    ASSERT_EQ(a.run(), 0);
    EXPECT_EQ(a.r.iterations, 2u);
}
