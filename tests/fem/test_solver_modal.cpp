// Modal run: spring-mass chains with frequencies in closed form, Sturm counts of
// ranges, a hexa8 bar against rod and beam theory, the rigid modes of a free block,
// the log lines, repeatability and bad input.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/law_scalar.h>
#include <orv/fem/law_solid_stiff.h>
#include <orv/fem/model_line_mass.h>
#include <orv/fem/model_solid.h>
#include <orv/fem/model_solid_mass.h>
#include <orv/fem/numerical_model_composite.h>
#include <orv/fem/numerical_model_mass.h>
#include <orv/fem/numerical_model_stiff.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_modal.h>
#include <orv/fem/stiffness_sym.h>

#include "orvmath1/dense2D.h"
#include "orvmath1/symmetric_full.h"
#include "tests/common/log_capture.h"
#include "tests/fem/hexa_bar.h"

namespace orv {
namespace {

using fem::solver_modal;
constexpr double two_pi = 6.283185307179586;

// n free masses on x between springs k, nodes 0 and n + 1 held: n + 1 springs and
// n + 1 line-mass elements of unit length and density rho. Lumped, each free node
// carries rho; consistent, M = rho / 6 tridiag(1, 4, 1).
struct chain {
    fem::context ctx;
    dense2D<double> pos;
    fem::DOFs_mgr table;
    fem::numerical_model_composite comp;
    fem::problem_data problem;
    std::vector<fem::numerical_model_base> held;
    unsigned n;
    double k, rho;

    chain(unsigned n_free, double k_, double rho_, bool with_mass = true, std::size_t cases = 0)
        : pos(3, n_free + 2, 0.0), table(n_free + 2, false), comp(ctx), n(n_free), k(k_), rho(rho_) {
        for (unsigned j = 1; j <= n; ++j) table.set(9ull * j, true);
        for (unsigned j = 0; j < n + 2; ++j) pos(0, j) = double(j);
        for (unsigned i = 0; i <= n; ++i) {
            symmetric_full<double> K(2, 0.0);
            K(0, 0) = K(1, 1) = k;
            K(1, 0) = -k;
            dense1D<unsigned int> ids(2);
            ids[0] = 9 * i;
            ids[1] = 9 * (i + 1);
            fem::stiffness_sym spring(ctx, K, ids, 1);
            comp.insert(spring.ID());
            held.push_back(spring);
        }
        if (with_mass) {
            fem::law_scalar density(ctx, rho);
            fem::model_line_mass physics(density);
            dense2D<unsigned int> conn(2, n + 1, 0u);
            for (unsigned i = 0; i <= n; ++i) {
                conn(0, i) = i;
                conn(1, i) = i + 1;
            }
            fem::numerical_model_mass mass(ctx, physics, conn, fem::FE_edge2);
            EXPECT_TRUE(mass.is_valid());
            comp.insert(mass.ID());
            held.push_back(mass);
        }
        problem = fem::problem_data(ctx, pos, table, comp.ID(), cases);
    }
    // Frequency j (from 1) in Hz.
    double frequency(unsigned j, bool lumped) const {
        const double c = std::cos(double(j) * M_PI / double(n + 1));
        const double lambda = lumped ? 2.0 * k * (1.0 - c) / rho : 6.0 * k * (1.0 - c) / (rho * (2.0 + c));
        return std::sqrt(lambda) / two_pi;
    }
};

struct outcome {
    solver_modal::data_type data;
    test::log_capture log;
};

void run(const fem::problem_data& problem, solver_modal::settings_type s, outcome& out) {
    out.log.attach(s);
    solver_modal solver;
    solver.settings = s;
    out.data = solver_modal::data_type(problem);
    solver.run(out.data);
}

std::string range_line(double l1, double l2, int count) {
    char buf[128];
    std::snprintf(buf, sizeof buf, "#modes in range [%+E %+E] : %d\n", l1, l2, count);
    return buf;
}

TEST(ModalChain, FrequenciesAndModesInClosedForm) {
    for (unsigned level : {1u, 2u}) {
        const bool lumped = level == 2;
        chain c(10, 3.0, 2.0);
        solver_modal::settings_type s;
        s.max_modes = 4;
        s.mass_level = level;
        s.tolerance = 1e-12;
        s.max_iters = 200;
        outcome o;
        run(c.problem, s, o);
        ASSERT_EQ(o.data.error_code, 0) << o.data.error_msg;
        EXPECT_EQ(o.data.warning_code, 0);
        ASSERT_EQ(o.data.frequencies.size(), 4u);
        for (unsigned j = 1; j <= 4; ++j)
            EXPECT_NEAR(o.data.frequencies[j - 1] / c.frequency(j, lumped), 1.0, 1e-8) << level << " " << j;
        // Lumped modes: unit mass, sin shapes.
        ASSERT_EQ(o.data.D_modes.cols(), 4u);
        if (lumped) {
            for (unsigned j = 0; j < 4; ++j) {
                double m = 0.0, ratio = 0.0;
                for (unsigned i = 1; i <= c.n; ++i) {
                    double x = 0.0;
                    ASSERT_EQ(o.data.D_modes.get_val(9 * i, j, x), fem::no_error);
                    m += c.rho * x * x;
                    const double shape = std::sin(double((j + 1) * i) * M_PI / double(c.n + 1));
                    if (i == 1) ratio = x / shape;
                    EXPECT_NEAR(x, ratio * shape, 1e-7);
                }
                EXPECT_NEAR(m, 1.0, 1e-10);
            }
        }
        EXPECT_TRUE(o.log.has("#modes in range [+0.000000E+00 +INF] : 10\n"));
        EXPECT_TRUE(o.log.has("  !! => limited to 4 modes.\n"));
        EXPECT_TRUE(o.log.has("Ritz-space size          :         10\n"));  // min(20, 32) + 4, cut to 10
        EXPECT_TRUE(o.log.has("Dynamic modes actually computed    : 4\n"));
        EXPECT_TRUE(o.log.has("Static modes actually computed     : 0\n"));
        EXPECT_TRUE(o.log.has("Vibration frequencies (Hz) = [\n"));
        EXPECT_TRUE(o.log.has("Factorization matrix Kf (shifted)  : "));  // open range from 0: s = 1
    }
}

// The count of modes in [f_a, f_b] from the two Sturm counts is the number of closed
// form frequencies in the range, and the run finds exactly those modes.
TEST(ModalChain, SturmCountsMatchTheFrequenciesInTheRange) {
    chain c(8, 5.0, 1.5);
    std::vector<double> f;
    for (unsigned j = 1; j <= c.n; ++j) f.push_back(c.frequency(j, true));
    struct range {
        double lo, hi;
        int count;
    };
    const range ranges[] = {{0.0, 0.5 * (f[2] + f[3]), 3},
                            {0.5 * (f[1] + f[2]), 0.5 * (f[5] + f[6]), 4},
                            {0.5 * (f[6] + f[7]), 2.0 * f[7], 1},
                            {0.0, 0.5 * f[0], 0}};
    for (const range& r : ranges) {
        solver_modal::settings_type s;
        s.freq_min = r.lo;
        s.freq_max = r.hi;
        s.max_modes = 20;
        s.mass_level = 2;
        s.tolerance = 1e-10;
        outcome o;
        run(c.problem, s, o);
        ASSERT_EQ(o.data.error_code, 0) << o.data.error_msg;
        const double l1 = std::pow(two_pi * r.lo, 2), l2 = std::pow(two_pi * r.hi, 2);
        EXPECT_TRUE(o.log.has(range_line(l1, l2, r.count))) << r.lo << " " << r.hi;
        ASSERT_EQ(o.data.frequencies.size(), std::size_t(r.count));
        // The modes found are the ones of the range, in order.
        std::size_t first = 0;
        while (first < f.size() && f[first] < r.lo) ++first;
        for (int i = 0; i < r.count; ++i) EXPECT_NEAR(o.data.frequencies[i] / f[first + i], 1.0, 1e-7);
        if (r.count == 0) {
            EXPECT_EQ(o.data.warning_code, 0);
            EXPECT_FALSE(o.log.has("Resolution  "));
            EXPECT_FALSE(o.log.has("Lanczos hybrid algorithm."));
            EXPECT_TRUE(o.log.has("Dynamic modes actually computed    : 0\n"));
        }
    }
    // More modes in a range from 0 than wanted: the lowest ones.
    solver_modal::settings_type s;
    s.freq_max = 0.5 * (f[4] + f[5]);
    s.max_modes = 2;
    s.mass_level = 2;
    outcome o;
    run(c.problem, s, o);
    ASSERT_EQ(o.data.frequencies.size(), 2u);
    EXPECT_NEAR(o.data.frequencies[0] / f[0], 1.0, 1e-7);
    EXPECT_NEAR(o.data.frequencies[1] / f[1], 1.0, 1e-7);
    EXPECT_TRUE(o.log.has("  !! => limited to 2 modes.\n"));
}

TEST(ModalChain, StaticModesAndTwoMassesInClosedForm) {
    // Two free masses, three springs k: a load P on node 1 gives u = P / (3 k) (2, 1).
    chain c(2, 4.0, 1.0, true, 1);
    c.problem.get_loads_mgr(0).record_DOF_load(9, 6.0);
    solver_modal::settings_type s;
    s.max_modes = 2;
    outcome a;
    run(c.problem, s, a);
    ASSERT_EQ(a.data.error_code, 0) << a.data.error_msg;
    double u1 = 0, u2 = 0;
    ASSERT_EQ(a.data.S_modes.get_val(9, 0, u1), fem::no_error);
    ASSERT_EQ(a.data.S_modes.get_val(18, 0, u2), fem::no_error);
    EXPECT_NEAR(u1, 1.0, 1e-14);
    EXPECT_NEAR(u2, 0.5, 1e-14);
    ASSERT_EQ(a.data.energy.size(), 1u);
    EXPECT_NEAR(a.data.energy[0], 3.0, 1e-13);
    EXPECT_TRUE(a.log.has("Static modes actually computed     : 1\n"));
    // Consistent mass: M = 1/6 [[4, 1], [1, 4]], K = 4 [[2, -1], [-1, 2]], so
    // lambda = 4 (2 -+ 1) / ((4 +- 1) / 6).
    ASSERT_EQ(a.data.frequencies.size(), 2u);
    EXPECT_NEAR(a.data.frequencies[0], std::sqrt(24.0 / 5.0) / two_pi, 1e-9);
    EXPECT_NEAR(a.data.frequencies[1], std::sqrt(72.0 / 3.0) / two_pi, 1e-9);
}

TEST(ModalChain, BadInputGetsItsWords) {
    chain c(4, 1.0, 1.0);
    struct bad {
        double fmin, fmax, tol;
        unsigned modes;
    };
    for (const bad& b : {bad{5.0, 1.0, 1e-3, 1}, bad{0.0, 1.0, 0.0, 1}, bad{0.0, 1.0, 1e-3, 0}, bad{-1.0, 0.0, 1e-3, 1},
                         bad{0.0, NAN, 1e-3, 1}}) {
        solver_modal::settings_type s;
        s.freq_min = b.fmin;
        s.freq_max = b.fmax;
        s.tolerance = b.tol;
        s.max_modes = b.modes;
        outcome o;
        run(c.problem, s, o);
        EXPECT_EQ(o.data.error_code, fem::error_data);
        EXPECT_STREQ(o.data.error_name, "SETTINGS ERROR");
        EXPECT_STREQ(o.data.error_msg, "ORV solver_modal: invalid settings.");
    }
    // More modes wanted than DOFs: all four, without warning.
    {
        solver_modal::settings_type s;
        s.max_modes = 50;
        s.mass_level = 2;
        outcome o;
        run(c.problem, s, o);
        EXPECT_EQ(o.data.error_code, 0) << o.data.error_msg;
        EXPECT_EQ(o.data.warning_code, 0);
        ASSERT_EQ(o.data.frequencies.size(), 4u);
        EXPECT_NEAR(o.data.frequencies[3] / c.frequency(4, true), 1.0, 1e-6);
        EXPECT_FALSE(o.log.has("limited to"));
    }
    // No mass model (or a mass of zero throughout): a data error, no modes.
    {
        chain bare(4, 1.0, 1.0, false);
        outcome o;
        run(bare.problem, solver_modal::settings_type(), o);
        EXPECT_EQ(o.data.error_code, fem::error_data);
        EXPECT_STREQ(o.data.error_name, "DATA ERROR");
        EXPECT_EQ(o.data.frequencies.size(), 0u);
    }
    // Stopped anywhere by the host: the warning -10, no error, and no half-made modes.
    for (int after = 0; after < 25; ++after) {  // a run asks 23 times
        solver_modal::settings_type s;
        s.max_modes = 3;
        outcome o;
        o.log.interrupt_after = after;
        run(c.problem, s, o);
        EXPECT_EQ(o.data.error_code, 0) << after;
        if (o.data.warning_code == fem::warning_interrupted) {
            EXPECT_EQ(o.data.frequencies.size(), 0u) << after;
            EXPECT_EQ(o.data.D_modes.cols(), 0u) << after;
        } else {
            EXPECT_EQ(o.data.frequencies.size(), 3u) << after;
        }
    }
}

// Lumped chain modes have x . x = 1 / rho; the chain has no damping model.
TEST(ModalChain, DampingFormsOnTheModes) {
    chain c(6, 2.0, 4.0);
    solver_modal::settings_type s;
    s.max_modes = 3;
    s.mass_level = 2;
    outcome o;
    run(c.problem, s, o);
    ASSERT_EQ(o.data.error_code, 0) << o.data.error_msg;
    solver_modal solver;
    dense1D<double> out;
    solver.compute_damping_decay_factors(o.data, 0.8, out);
    ASSERT_EQ(out.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(out[i], -0.5 * 0.8 / c.rho, 1e-12);
    dense1D<double> coef(3);
    for (std::size_t i = 0; i < 3; ++i) coef[i] = double(i + 1);
    solver.compute_damping_decay_factors(o.data, coef, out);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(out[i], -0.5 * double(i + 1) / c.rho, 1e-12);
    solver.compute_damping_decay_factors(o.data, 0.0, out);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(out[i], 0.0);
    // Without damping models the model forms give zeros, and no correction.
    out = dense1D<double>(3, 7.0);
    solver.compute_damping_decay_factors(o.data, out);
    fem::FEM_states corrections;
    dense1D<double> diag;
    solver.compute_damping_corrections(o.data, diag, corrections);
    EXPECT_EQ(o.data.error_code, 0);
    ASSERT_EQ(diag.size(), 3u);
    ASSERT_EQ(corrections.cols(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        double v = 1.0;
        EXPECT_EQ(corrections.get_val(9, i, v), fem::no_error);
        EXPECT_TRUE(out[i] == 0.0 && diag[i] == 0.0 && v == 0.0) << i;
    }
    // One coefficient too few: DATA ERROR, out as it was.
    dense1D<double> short_c(2, 1.0);
    solver.compute_damping_decay_factors(o.data, short_c, out);
    EXPECT_EQ(o.data.error_code, fem::error_data);
    EXPECT_STREQ(o.data.error_name, "DATA ERROR");
    EXPECT_EQ(out.size(), 3u);
    EXPECT_EQ(out[0], 0.0);
}

// A bar of hexa8 solids along x, clamped at x = 0 or free; nu = 0.
struct bar {
    fem::context ctx;
    test::hexa_bar_mesh mesh;
    fem::numerical_model_composite comp;
    fem::problem_data problem;
    std::vector<fem::numerical_model_base> held;
    double E = 1000.0, rho = 2.0;

    bar(unsigned nx, unsigned ny, unsigned nz, double length, double side, bool clamped)
        : mesh(nx, ny, nz, length, side, clamped), comp(ctx) {
        fem::law_solid_StVenant law(ctx, E, 0.0, 0.0);
        fem::model_solid_lin physics(law);
        fem::numerical_model_stiff_lin stiff(ctx, physics, mesh.conn, fem::FE_hexa8);
        fem::law_scalar density(ctx, rho);
        fem::model_solid_mass mass_physics(density);
        fem::numerical_model_mass mass(ctx, mass_physics, mesh.conn, fem::FE_hexa8);
        EXPECT_TRUE(stiff.is_valid() && mass.is_valid());
        comp.insert(stiff.ID(), mass.ID());
        held = {stiff, mass};
        problem = fem::problem_data(ctx, mesh.pos, mesh.table, comp.ID(), 0);
    }
};

TEST(ModalBar, ClampedBarConvergesToRodAndBeamTheory) {
    const double L = 10.0, a = 1.0;
    double err_axial[2], err_bending[2];
    const unsigned meshes[2][3] = {{10, 1, 1}, {20, 2, 2}};
    for (int m = 0; m < 2; ++m) {
        bar b(meshes[m][0], meshes[m][1], meshes[m][2], L, a, true);
        solver_modal::settings_type s;
        s.max_modes = 8;
        s.post_modes = true;
        outcome o;
        run(b.problem, s, o);
        ASSERT_EQ(o.data.error_code, 0) << o.data.error_msg;
        ASSERT_EQ(o.data.frequencies.size(), 8u);
        ASSERT_EQ(o.data.mode_results.rows(), 8u);
        // Axial: the mode with the largest effective mass in x, f = sqrt(E / rho) / (4 L).
        std::size_t axial = 0;
        for (std::size_t i = 1; i < 8; ++i)
            if (o.data.mode_results(i, 5) > o.data.mode_results(axial, 5)) axial = i;
        const double f_axial = std::sqrt(b.E / b.rho) / (4.0 * L);
        // Bending: the lowest pair, f = 1.87510^2 / (2 pi) sqrt(E I / (rho A L^4)).
        const double beta = 1.8751040687119611;
        const double f_bend = beta * beta / two_pi * std::sqrt(b.E * a * a / 12.0 / (b.rho * L * L * L * L));
        EXPECT_NEAR(o.data.frequencies[0] / o.data.frequencies[1], 1.0, 1e-6);  // square section: a pair
        err_axial[m] = o.data.frequencies[axial] / f_axial - 1.0;
        err_bending[m] = o.data.frequencies[0] / f_bend - 1.0;
        // Unit generalised mass; effective masses in x add up to at most the bar's.
        double mx = 0.0;
        for (std::size_t i = 0; i < 8; ++i) {
            EXPECT_NEAR(o.data.mode_results(i, 0), 1.0, 1e-9);
            EXPECT_NEAR(o.data.mode_results(i, 1), std::pow(two_pi * o.data.frequencies[i], 2),
                        1e-7 * o.data.mode_results(i, 1));
            mx += o.data.mode_results(i, 5);
        }
        EXPECT_LT(mx, b.rho * L * a * a * (1 + 1e-9));
        EXPECT_GT(o.data.mode_results(axial, 5), 0.7 * b.rho * L * a * a);  // 8 / pi^2 of it for a rod
    }
    // Stiff elements and a consistent mass: from above, closer on the finer mesh.
    for (int m = 0; m < 2; ++m) {
        EXPECT_GT(err_axial[m], 0.0);
        EXPECT_GT(err_bending[m], 0.0);
    }
    EXPECT_LT(err_axial[1], err_axial[0]);
    EXPECT_LT(err_bending[1], err_bending[0]);
    EXPECT_LT(err_axial[1], 0.01);
    EXPECT_LT(err_bending[1], 0.15);
}

// The size gate counts Ms and the largest Ritz space; a dry run only sizes; static
// modes alone make no eigen stage.
TEST(ModalBar, SizesGateAndOutputs) {
    bar b(20, 2, 2, 10.0, 1.0, true);
    solver_modal::settings_type s;
    outcome small, big, dry;
    s.max_modes = 4;
    run(b.problem, s, small);
    EXPECT_EQ(small.data.error_code, 0) << small.data.error_msg;
    EXPECT_GT(small.data.size_Ms, 0.0);
    EXPECT_NEAR(small.data.size_D_modes, 540.0 * 36.0 * 8.0 / 1048576.0, 1e-15);
    EXPECT_NEAR(small.data.size_total,
                small.data.size_Ks + small.data.size_Kf + small.data.size_Ms + small.data.size_D_modes, 1e-12);
    // A limit that passes 36 vectors and not 540 (2 MB more).
    b.ctx.set_max_total_size(static_cast<unsigned long long>(small.data.size_total + small.data.size_spare) + 1);
    run(b.problem, s, small);
    EXPECT_EQ(small.data.error_code, 0) << small.data.error_msg;
    s.max_modes = 100;  // 540 vectors: 2.2 MB
    run(b.problem, s, big);
    EXPECT_EQ(big.data.error_code, fem::error_memory_limit);
    EXPECT_STREQ(big.data.error_name, "Insufficient memory.");
    EXPECT_EQ(big.data.frequencies.size(), 0u);
    s.output_mask = 0;
    run(b.problem, s, dry);
    EXPECT_EQ(dry.data.error_code, 0);
    EXPECT_EQ(dry.data.size_D_modes, big.data.size_D_modes);
    EXPECT_TRUE(dry.log.has("  Size matrix D-modes    :     291600 doubles"));
    EXPECT_FALSE(dry.log.has("Total computing time"));
    EXPECT_FALSE(dry.log.has("Numerical assembly matrix Ms"));

    chain c(3, 1.0, 1.0, true, 1);
    c.problem.get_loads_mgr(0).record_DOF_load(18, 1.0);
    s = solver_modal::settings_type();
    s.output_mask = 64;
    outcome statics;
    run(c.problem, s, statics);
    EXPECT_EQ(statics.data.error_code, 0);
    EXPECT_EQ(statics.data.S_modes.cols(), 1u);
    EXPECT_EQ(statics.data.D_modes.cols(), 0u);
    EXPECT_FALSE(statics.log.has("Lanczos hybrid algorithm."));
    EXPECT_TRUE(statics.log.has("Factorization matrix Kf            : "));
}

// On one thread every mode and frequency repeats bit for bit. The parallel
// factorisation adds its updates in the order the threads reach them, so two threads
// agree with one to round-off in the frequencies (the square section's modes come in
// pairs, whose shapes may turn within the pair).
TEST(ModalBar, SameBitsTwiceOnOneThreadAndFrequenciesOnTwo) {
    bar b(8, 2, 2, 4.0, 1.0, true);
    solver_modal::settings_type s;
    s.max_modes = 6;
    outcome runs[3];
    for (int r = 0; r < 3; ++r) {
        b.ctx.set_max_threads(r == 2 ? 2 : 1);
        run(b.problem, s, runs[r]);
        ASSERT_EQ(runs[r].data.error_code, 0) << runs[r].data.error_msg;
        ASSERT_EQ(runs[r].data.D_modes.cols(), 6u);
    }
    const dense1D<unsigned int> ids = runs[0].data.D_modes.get_IDs();
    for (std::size_t j = 0; j < 6; ++j) {
        EXPECT_EQ(std::memcmp(&runs[0].data.frequencies[j], &runs[1].data.frequencies[j], sizeof(double)), 0) << j;
        std::size_t differ = 0;
        for (std::size_t i = 0; i < ids.size(); ++i) {
            double x = 0, y = 0;
            runs[0].data.D_modes.get_val(ids[i], j, x);
            runs[1].data.D_modes.get_val(ids[i], j, y);
            differ += std::memcmp(&x, &y, sizeof x) != 0;
        }
        EXPECT_EQ(differ, 0u) << j;
        EXPECT_NEAR(runs[2].data.frequencies[j] / runs[0].data.frequencies[j], 1.0, 1e-10) << j;
    }
}

// Through s = 1 from the range; without the automatic shift the singular K is
// factored with s = 0, found wanting and factored again with a shift from the mass.
TEST(ModalBar, FreeBlockHasSixRigidModes) {
    bar b(2, 1, 1, 2.0, 1.0, false);
    double first_elastic = 0.0;
    for (bool automatic : {true, false}) {
        solver_modal::settings_type s;
        s.max_modes = 8;
        s.auto_shift = automatic;
        outcome o;
        run(b.problem, s, o);
        ASSERT_EQ(o.data.error_code, 0) << o.data.error_msg;
        EXPECT_EQ(o.data.warning_code, 0);
        ASSERT_EQ(o.data.frequencies.size(), 8u);
        const double f7 = o.data.frequencies[6];
        EXPECT_GT(f7, 0.1);
        for (int i = 0; i < 6; ++i) EXPECT_LT(std::fabs(o.data.frequencies[i]), 1e-6 * f7) << i;
        EXPECT_TRUE(o.log.has("Factorization matrix Kf (shifted)  : "));
        if (automatic)
            first_elastic = f7;
        else
            EXPECT_NEAR(f7 / first_elastic, 1.0, 1e-9);
        // The factor kept is that of the retry: its smallest pivot is well away from 0.
        if (!automatic) {
            EXPECT_GT(std::fabs(o.data.pivot_min), 1e-8 * std::fabs(o.data.pivot_max));
        }
    }
}

}  // namespace
}  // namespace orv
