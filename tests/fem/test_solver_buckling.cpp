// Buckling run: a clamped-free column of hexa8 solids under an end load against
// Euler's load, the signs of the load factors under tension, Sturm counts of signed
// ranges, and the error words of bad input.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include <orv/fem/context.h>
#include <orv/fem/law_solid_stiff.h>
#include <orv/fem/model_solid.h>
#include <orv/fem/numerical_model_stiff.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_buckling_Euler.h>

#include "tests/common/log_capture.h"
#include "tests/fem/hexa_bar.h"

namespace orv {
namespace {

using fem::solver_buckling_Euler;

// A square column of side a and length L clamped at x = 0, under the axial end load
// P (negative: compression) spread over its end face; nu = 0.
struct column {
    fem::context ctx;
    test::hexa_bar_mesh mesh;
    fem::numerical_model_stiff_lin model;
    fem::problem_data problem;
    double E = 1000.0;

    column(unsigned nx, unsigned ny, double L, double a, double P, unsigned nbr_cases = 1)
        : mesh(nx, ny, ny, L, a, true) {
        fem::law_solid_StVenant law(ctx, E, 0.0, 0.0);
        fem::model_solid_lin physics(law);
        model = fem::numerical_model_stiff_lin(ctx, physics, mesh.conn, fem::FE_hexa8);
        EXPECT_TRUE(model.is_valid());
        problem = fem::problem_data(ctx, mesh.pos, mesh.table, model.ID(), nbr_cases);
        for (unsigned c = 0; c < nbr_cases; ++c)
            for (unsigned j = 0; j <= ny; ++j)
                for (unsigned k = 0; k <= ny; ++k)
                    problem.get_loads_mgr(c).record_DOF_load(mesh.node(nx, j, k) * 9, P * mesh.end_share(j, k));
    }
    // Euler's load of the clamped-free column: pi^2 E I / (4 L^2).
    double euler_load() const {
        const double pi = 3.141592653589793, I = std::pow(mesh.a, 4) / 12.0;
        return pi * pi * E * I / (4.0 * mesh.L * mesh.L);
    }
};

struct outcome {
    solver_buckling_Euler::data_type data;
    test::log_capture log;
};

void run(const fem::problem_data& problem, solver_buckling_Euler::settings_type s, outcome& out) {
    out.log.attach(s);
    solver_buckling_Euler solver;
    solver.settings = s;
    out.data = solver_buckling_Euler::data_type(problem);
    solver.run(out.data);
}

TEST(BucklingColumn, ConvergesToEulerFromAbove) {
    const double L = 10.0, a = 1.0, P = -1.0;
    double err[2];
    const unsigned meshes[2][2] = {{10, 1}, {20, 2}};
    for (int m = 0; m < 2; ++m) {
        column c(meshes[m][0], meshes[m][1], L, a, P);
        solver_buckling_Euler::settings_type s;
        s.max_modes = 2;
        outcome o;
        run(c.problem, s, o);
        ASSERT_EQ(o.data.error_code, 0) << o.data.error_msg;
        ASSERT_EQ(o.data.buckling_loads.size(), 2u);
        // The square section buckles in y and z at the same load.
        EXPECT_NEAR(o.data.buckling_loads[1] / o.data.buckling_loads[0], 1.0, 1e-6);
        err[m] = o.data.buckling_loads[0] * std::fabs(P) / c.euler_load() - 1.0;
        EXPECT_NE(o.log.all().find("Buckling loads = [\n"), std::string::npos);
        EXPECT_NE(o.log.all().find("#modes in range [+0.000000E+00 +INF] : "), std::string::npos);
    }
    // Stiff elements (fully integrated hexa8 lock in bending): from above, closer on
    // the finer mesh (measured: 0.49 and 0.12), at second order in the element size.
    EXPECT_GT(err[1], 0.0);
    EXPECT_GT(err[0] / err[1], 3.0);
    EXPECT_LT(err[0] / err[1], 5.5);
}

// Under tension the load factors are those of the compression with their sign
// turned: none in [0, +INF), found in [-INF, 0]; Sturm counts of signed ranges.
TEST(BucklingColumn, TensionGivesNegativeFactorsAndSignedCounts) {
    const double L = 10.0, a = 1.0;
    column press(10, 1, L, a, -1.0), pull(10, 1, L, a, 1.0);
    solver_buckling_Euler::settings_type s;
    s.max_modes = 2;
    outcome c;
    run(press.problem, s, c);
    ASSERT_EQ(c.data.error_code, 0) << c.data.error_msg;
    ASSERT_EQ(c.data.buckling_loads.size(), 2u);
    const double l1 = c.data.buckling_loads[0];

    outcome none;
    run(pull.problem, s, none);
    EXPECT_EQ(none.data.error_code, 0) << none.data.error_msg;
    EXPECT_EQ(none.data.buckling_loads.size(), 0u);
    EXPECT_EQ(none.data.warning_code, 0);  // an open range: no missing modes

    s.lambda_min = -DBL_MAX;
    s.lambda_max = 0.0;
    outcome t;
    run(pull.problem, s, t);
    ASSERT_EQ(t.data.error_code, 0) << t.data.error_msg;
    ASSERT_EQ(t.data.buckling_loads.size(), 2u);
    // The window keeps the factors next to its finite end, 0.
    EXPECT_NEAR(t.data.buckling_loads[1], -l1, 1e-6 * l1);
    EXPECT_NEAR(t.data.buckling_loads[0], -l1, 1e-6 * l1);
    EXPECT_NE(t.log.all().find("#modes in range [-INF +0.000000E+00] : "), std::string::npos);

    // The pair at -l1 lies in [-1.5 l1, 0] and in [-1.5 l1, 1.5 l1]; the next Euler
    // load is 9 l1. A Krylov basis as small as the count asks for holds one vector of
    // a double eigenvalue: the run may find one of the pair, and then says so.
    for (double top : {0.0, 1.5 * l1}) {
        s.lambda_min = -1.5 * l1;
        s.lambda_max = top;
        outcome r;
        run(pull.problem, s, r);
        ASSERT_EQ(r.data.error_code, 0) << r.data.error_msg;
        EXPECT_NE(r.log.all().find("] : 2\n"), std::string::npos);
        ASSERT_GE(r.data.buckling_loads.size(), 1u);
        EXPECT_NEAR(r.data.buckling_loads[0], -l1, 1e-6 * l1);
        if (r.data.buckling_loads.size() < 2) {
            EXPECT_EQ(r.data.warning_code, fem::warning_missing_modes);
        }
    }
}

TEST(BucklingColumn, BadInputGetsItsWords) {
    column two(4, 1, 4.0, 1.0, -1.0, 2), zero(4, 1, 4.0, 1.0, 0.0);
    solver_buckling_Euler::settings_type s;
    outcome o;
    run(two.problem, s, o);
    EXPECT_EQ(o.data.error_code, fem::error_data);
    EXPECT_STREQ(o.data.error_name, "DATA ERROR");
    EXPECT_STREQ(o.data.error_msg, "ORV solver_buckling_Euler: Needs exactly one load case.");

    s.lambda_min = 2.0;
    s.lambda_max = 1.0;
    run(two.problem, s, o);
    EXPECT_STREQ(o.data.error_name, "SETTINGS ERROR");
    EXPECT_STREQ(o.data.error_msg, "ORV solver_buckling_Euler: invalid settings.");
    s.reset();
    s.ritz_factor = 0;
    run(zero.problem, s, o);
    EXPECT_STREQ(o.data.error_name, "SETTINGS ERROR");

    // No load: Kg is zero, no mode at all, and no crash.
    s.reset();
    s.max_modes = 3;
    run(zero.problem, s, o);
    EXPECT_EQ(o.data.error_code, 0) << o.data.error_msg;
    EXPECT_EQ(o.data.buckling_loads.size(), 0u);
}

}  // namespace
}  // namespace orv
