// Newmark run on a one-DOF oscillator (a rod with a line mass): free vibration and a
// step load against the exact discrete solutions of the average acceleration scheme,
// the energy it conserves, Rayleigh damping's decay of two modes, and bad settings.
#include <gtest/gtest.h>

#include <cmath>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/law_rod.h>
#include <orv/fem/law_scalar.h>
#include <orv/fem/model_line_mass.h>
#include <orv/fem/model_rod.h>
#include <orv/fem/numerical_model_composite.h>
#include <orv/fem/numerical_model_mass.h>
#include <orv/fem/numerical_model_stiff.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_Newmark.h>

namespace orv {
namespace {

using fem::solver_Newmark;

// Node 0 held, node 1 free along x: k = E A / L, consistent mass m = rho L / 3.
struct oscillator {
    static constexpr double E = 12.0, A = 1.0, L = 2.0, rho = 1.5;
    fem::context ctx;
    dense2D<double> pos{3, 2, 0.0};
    fem::DOFs_mgr table{2, false};
    fem::numerical_model_composite comp{ctx};
    fem::problem_data problem;
    std::vector<fem::numerical_model_base> held;

    explicit oscillator(unsigned nbr_cases = 1) {
        pos(0, 1) = L;
        dense2D<unsigned int> conn(2, 1, 0u);
        conn(1, 0) = 1;
        fem::law_rod rod(ctx, E, A, 0.0);
        fem::law_scalar density(ctx, rho);
        fem::numerical_model_stiff_lin K(ctx, fem::model_rod_lin(rod), conn, fem::FE_edge2);
        fem::numerical_model_mass M(ctx, fem::model_line_mass(density), conn, fem::FE_edge2);
        EXPECT_TRUE(K.is_valid() && M.is_valid());
        comp.insert(K.ID(), M.ID());
        held = {K, M};
        table.set(1, fem::field_displacement, 0, true);
        problem = fem::problem_data(ctx, pos, table, comp.ID(), nbr_cases);
    }
    static double k() { return E * A / L; }
    static double m() { return rho * L / 3.0; }
    static double omega() { return std::sqrt(k() / m()); }

    // u and v of every step (output kind 512) from u0, v0 under a constant force F.
    solver_Newmark::data_type run(solver_Newmark::settings_type s, double u0, double F) {
        if (F != 0.0) problem.get_loads_mgr(0).record_DOF_load(9, F);
        solver_Newmark solver;
        s.output_kind = 512;
        solver.settings = s;
        solver_Newmark::data_type data(problem);
        dense1D<unsigned int> ids(1, 9u);
        data.U_init = fem::FEM_states(ids, 2, 0.0);
        data.U_init.set_val(9, 0, u0);
        solver.run(data);
        return data;
    }
};

double value(const solver_Newmark::data_type& d, std::size_t col) {
    double x = 0.0;
    d.U.get_val(9, col, x);
    return x;
}

solver_Newmark::settings_type steps(double dt, double t_end) {
    solver_Newmark::settings_type s;
    s.dt = dt;
    s.t_end = t_end;
    return s;
}

// The average acceleration scheme turns the oscillator by omega_h dt per step, with
// tan(omega_h dt / 2) = omega dt / 2, and keeps the amplitude: u_n = cos(omega_h t_n).
TEST(NewmarkOscillator, FreeVibrationIsTheExactDiscreteRotation) {
    oscillator o;
    const double dt = 0.1, w = oscillator::omega(), wh = 2.0 / dt * std::atan(w * dt / 2.0);
    const solver_Newmark::data_type d = o.run(steps(dt, 5.0), 1.0, 0.0);
    ASSERT_EQ(d.error_code, 0) << d.error_msg;
    ASSERT_EQ(d.times.size(), 50u);
    for (std::size_t s = 0; s < 50; ++s) {
        const double t = d.times[s], u = value(d, 3 * s), v = value(d, 3 * s + 1);
        EXPECT_NEAR(u, std::cos(wh * t), 1e-12);
        // energy: k u^2 / 2 + m v^2 / 2 stays k / 2
        EXPECT_NEAR(oscillator::k() * u * u + oscillator::m() * v * v, oscillator::k(), 1e-11);
    }
}

// A step load from rest: the start acceleration is F / m and the response
// (F / k) (1 - cos(omega_h t)) peaks at twice the static displacement.
TEST(NewmarkOscillator, StepLoadFromRest) {
    oscillator o;
    const double F = 3.0, dt = 0.05, w = oscillator::omega(), wh = 2.0 / dt * std::atan(w * dt / 2.0);
    const solver_Newmark::data_type d = o.run(steps(dt, 3.0), 0.0, F);
    ASSERT_EQ(d.error_code, 0) << d.error_msg;
    for (std::size_t s = 0; s < d.times.size(); ++s)
        EXPECT_NEAR(value(d, 3 * s), F / oscillator::k() * (1.0 - std::cos(wh * d.times[s])), 1e-12);
    EXPECT_NEAR(value(d, 2), F / oscillator::m() * std::cos(wh * d.times[0]), 1e-9);  // a = (F - k u) / m
}

// Two oscillators side by side (two modes, omega and 2 omega) under Rayleigh damping
// rM M + rK K: each decays by exp(-zeta_i omega_i t) with zeta_i = rM / (2 omega_i) +
// rK omega_i / 2. The ratio of the two decays, sampled at the same peaks, checks both
// terms of the damping at once.
TEST(NewmarkOscillator, RayleighDampingOfTwoModes) {
    oscillator o;  // mode 1 on node 1; mode 2 on node 2 with four times the stiffness
    o.pos = dense2D<double>(3, 4, 0.0);
    o.pos(0, 1) = o.pos(0, 3) = oscillator::L;
    o.pos(1, 2) = o.pos(1, 3) = 5.0;
    dense2D<unsigned int> conn(2, 1, 0u);
    conn(0, 0) = 2, conn(1, 0) = 3;
    fem::law_rod stiff(o.ctx, 4 * oscillator::E, oscillator::A, 0.0);
    fem::law_scalar density(o.ctx, oscillator::rho);
    fem::numerical_model_stiff_lin K(o.ctx, fem::model_rod_lin(stiff), conn, fem::FE_edge2);
    fem::numerical_model_mass M(o.ctx, fem::model_line_mass(density), conn, fem::FE_edge2);
    o.comp.insert(K.ID(), M.ID());
    o.held.push_back(K), o.held.push_back(M);
    o.table = fem::DOFs_mgr(4, false);
    o.table.set(1, fem::field_displacement, 0, true);
    o.table.set(3, fem::field_displacement, 0, true);
    o.problem = fem::problem_data(o.ctx, o.pos, o.table, o.comp.ID(), 1);
    const double w1 = oscillator::omega(), w2 = 2 * w1, rM = 0.05, rK = 0.01;
    solver_Newmark solver;
    solver.settings = steps(2e-3, 4 * 3.141592653589793 / w1);  // two periods of mode 1
    solver.settings.rayleigh_M = rM, solver.settings.rayleigh_K = rK;
    solver_Newmark::data_type d(o.problem);
    dense1D<unsigned int> ids(2, 9u);
    ids[1] = 27u;
    d.U_init = fem::FEM_states(ids, 1, 1.0);
    solver.run(d);
    ASSERT_EQ(d.error_code, 0) << d.error_msg;
    const std::size_t last = d.times.size() - 1;  // t = 2 periods of mode 1, 4 of mode 2
    for (int mode = 0; mode < 2; ++mode) {
        const double w = mode ? w2 : w1, zeta = rM / (2 * w) + rK * w / 2;
        double u = 0.0;
        d.U.get_val(mode ? 27 : 9, last, u);
        // at a whole number of damped periods the oscillator is back near its peak
        const double wd = w * std::sqrt(1 - zeta * zeta), t = d.times[last];
        const double exact =
            std::exp(-zeta * w * t) * (std::cos(wd * t) + zeta / std::sqrt(1 - zeta * zeta) * std::sin(wd * t));
        EXPECT_NEAR(u, exact, 5e-3) << mode;
    }
}

TEST(NewmarkOscillator, BadSettingsAndRecords) {
    oscillator o;
    solver_Newmark solver;
    solver_Newmark::data_type d(o.problem);
    const double bad[][4] = {
        {0.1, 1.0, -0.1, 0.5}, {0.1, 1.0, 0.25, 0.0}, {0.0, 1.0, 0.25, 0.5}, {0.1, 0.0, 0.25, 0.5}};
    for (const auto& b : bad) {
        solver.settings = steps(b[0], b[1]);
        solver.settings.beta = b[2];
        solver.settings.gamma = b[3];
        solver.run(d);
        EXPECT_STREQ(d.error_msg, "ORV solver_Newmark: invalid settings.");
    }
    oscillator two(2);
    solver.settings = steps(0.1, 1.0);
    d = solver_Newmark::data_type(two.problem);
    solver.run(d);
    EXPECT_STREQ(d.error_msg, "ORV solver_Newmark: Needs exactly one load case.");
}

}  // namespace
}  // namespace orv
