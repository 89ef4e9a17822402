// Steady heat: the conduction patch test on distorted meshes of every solid and face
// shape, a cooling fin and a heated bar against their closed forms, the run's log
// lines, and the error words of bad heat models.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/elementary_load.h>
#include <orv/fem/evolution_funcs_mgr.h>
#include <orv/fem/law_scalar.h>
#include <orv/fem/law_solid_stiff.h>
#include <orv/fem/model_heat.h>
#include <orv/fem/model_solid.h>
#include <orv/fem/numerical_model_composite.h>
#include <orv/fem/numerical_model_mass.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_heat_dynamic_linear.h>
#include <orv/fem/solver_heat_static_linear.h>

#include "elements/shape_element_type.h"
#include "tests/common/log_capture.h"
#include "tests/elements/test_mesh_utils.h"

namespace orv {
namespace {

using fem::solver_heat_static_linear;

struct outcome {
    solver_heat_static_linear::data_type data;
    test::log_capture log;
};

void run(const fem::problem_data& problem, outcome& out) {
    solver_heat_static_linear solver;
    out.log.attach(solver.settings);
    solver.settings.output_mask = 64;
    out.data = solver_heat_static_linear::data_type(problem);
    solver.run(out.data);
}

double temperature(const outcome& o, unsigned node) {
    double t = 0.0;
    o.data.U.get_val(9ull * node + 6, 0, t);
    return t;
}

double linear_field(const dense2D<double>& pos, unsigned i) {
    return 1.0 + 2.0 * pos(0, i) - 3.0 * pos(1, i) + 0.5 * pos(2, i);
}

// A linear temperature prescribed on the boundary of a distorted patch is reproduced
// exactly inside, whatever the element's shape and order.
template <class Shape, class Physics>
void patch_test(unsigned dim) {
    fem::context ctx;
    test::test_mesh m = test::make_patch<Shape>(2, 1.0, 0.3);
    fem::law_scalar k(ctx, 2.5);
    Physics physics(k);
    fem::numerical_model_heat model(ctx, physics, m.conn, elfes::element_type_of<Shape>);
    ASSERT_TRUE(model.is_valid());
    const unsigned nn = m.pos.cols();
    fem::DOFs_mgr table(nn, false);
    for (unsigned i = 0; i < nn; ++i) table.set(i, fem::field_temperature, true);
    fem::problem_data problem(ctx, m.pos, table, model.ID(), 1);
    auto inside = [&](unsigned i) {
        for (unsigned c = 0; c < dim; ++c)
            if (m.keys[i][c] <= 0 || m.keys[i][c] >= m.extent) return false;
        return true;
    };
    unsigned interior = 0;
    for (unsigned i = 0; i < nn; ++i) {
        if (inside(i))
            ++interior;
        else
            problem.get_loads_mgr(0).record_DOF_prescribed_value(9 * i + 6, linear_field(m.pos, i));
    }
    ASSERT_GT(interior, 0u);
    outcome o;
    run(problem, o);
    ASSERT_EQ(o.data.error_code, 0) << o.data.error_msg;
    for (unsigned i = 0; i < nn; ++i) EXPECT_NEAR(temperature(o, i), linear_field(m.pos, i), 1e-11) << i;
}

TEST(HeatStatic, PatchTestOnEveryShape) {
    patch_test<elfes::hexa8, fem::model_heat_conduction_3d>(3);
    patch_test<elfes::hexa27, fem::model_heat_conduction_3d>(3);
    patch_test<elfes::tetra4, fem::model_heat_conduction_3d>(3);
    patch_test<elfes::tetra10, fem::model_heat_conduction_3d>(3);
    patch_test<elfes::wedge6, fem::model_heat_conduction_3d>(3);
    patch_test<elfes::wedge18, fem::model_heat_conduction_3d>(3);
    patch_test<elfes::pyramid5, fem::model_heat_conduction_3d>(3);
    patch_test<elfes::pyramid14, fem::model_heat_conduction_3d>(3);
    patch_test<elfes::faceT3, fem::model_heat_conduction_2d>(2);
    patch_test<elfes::faceT6, fem::model_heat_conduction_2d>(2);
    patch_test<elfes::faceQ4, fem::model_heat_conduction_2d>(2);
    patch_test<elfes::faceQ9, fem::model_heat_conduction_2d>(2);
}

// A bar of n edge elements on [0, L]: conduction kA, convection hP when hP > 0 and
// capacity cA when cA > 0.
struct bar {
    fem::context ctx;
    dense2D<double> pos;
    fem::DOFs_mgr table;
    fem::numerical_model_composite comp;
    fem::problem_data problem;
    std::vector<fem::numerical_model_base> held;

    bar(unsigned n, unsigned order, double L, double kA, double hP, double cA = 0.0) : comp(ctx) {
        const unsigned nn = n * order + 1;
        pos = dense2D<double>(3, nn, 0.0);
        for (unsigned i = 0; i < nn; ++i) pos(0, i) = L * i / (nn - 1);
        dense2D<unsigned int> conn(order + 1, n, 0u);
        for (unsigned e = 0; e < n; ++e) {
            conn(0, e) = order * e;
            conn(1, e) = order * e + order;  // end nodes first, then the inner ones
            for (unsigned a = 2; a <= order; ++a) conn(a, e) = order * e + a - 1;
        }
        const fem::element_type type = order == 1 ? fem::FE_edge2 : fem::FE_edge3;
        fem::law_scalar k(ctx, kA), h(ctx, hP);
        fem::model_heat_conduction_1d conduction(k);
        fem::numerical_model_heat K(ctx, conduction, conn, type);
        EXPECT_TRUE(K.is_valid());
        comp.insert(K.ID());
        held.push_back(K);
        if (hP > 0) {
            fem::model_heat_convection_1d convection(h);
            fem::numerical_model_heat H(ctx, convection, conn, type);
            EXPECT_TRUE(H.is_valid());
            comp.insert(H.ID());
            held.push_back(H);
        }
        if (cA > 0) {
            fem::law_scalar c(ctx, cA);
            fem::model_heat_capacity_1d capacity(c);
            fem::numerical_model_heat C(ctx, capacity, conn, type);
            EXPECT_TRUE(C.is_valid());
            comp.insert(C.ID());
            held.push_back(C);
        }
        table = fem::DOFs_mgr(nn, false);
        for (unsigned i = 0; i < nn; ++i) table.set(i, fem::field_temperature, true);
        problem = fem::problem_data(ctx, pos, table, comp.ID(), 1);
    }
};

// A fin held at T0 at x = 0, insulated at x = L, cooled along its length:
// T = T0 cosh(m (L - x)) / cosh(m L), m^2 = hP / kA.
TEST(HeatStatic, CoolingFinAgainstClosedForm) {
    const double L = 2.0, kA = 3.0, hP = 12.0, T0 = 100.0, m = std::sqrt(hP / kA);
    bar b(40, 2, L, kA, hP);
    b.problem.get_loads_mgr(0).record_DOF_prescribed_value(6, T0);
    outcome o;
    run(b.problem, o);
    ASSERT_EQ(o.data.error_code, 0) << o.data.error_msg;
    for (unsigned i = 0; i < b.pos.cols(); i += 10) {
        const double x = b.pos(0, i), exact = T0 * std::cosh(m * (L - x)) / std::cosh(m * L);
        EXPECT_NEAR(temperature(o, i), exact, 1e-5 * T0) << x;
    }
    // The run's words: its title and the temperature lines, no energy.
    EXPECT_TRUE(o.log.has("ORV FEM(R) - THERMAL STATIC LINEAR"));
    EXPECT_TRUE(o.log.starts("  0 ||TH||               : "));
    EXPECT_TRUE(o.log.starts("  0 max temperature      : +1.000000E+02"));
    EXPECT_FALSE(o.log.has("energy"));
    EXPECT_EQ(o.data.energy.size(), 0u);
}

// A bar held at 0 at both ends with a uniform heat source q per length, an element
// load on the conduction mesh: T = q x (L - x) / (2 kA), exact at the nodes of linear
// elements. With convection to surroundings at T_inf (an exchange load on the
// convection mesh) and no source, the bar held at T_inf everywhere is the solution.
TEST(HeatStatic, SourceAndSurroundingsAsElementLoads) {
    const unsigned n = 8;
    const double L = 4.0, kA = 2.0, q = 3.0;
    bar b(n, 1, L, kA, 0.0);
    fem::loads_mgr loads = b.problem.get_loads_mgr(0);
    const fem::elementary_load source(fem::elementary_load::kind_heat_flux, fem::elementary_load::type_scalar,
                                      dense1D<double>(1, q));
    ASSERT_EQ(loads.record_NM_load(b.held[0].ID(), 0xFFFFFFFEu, source), fem::no_error);
    loads.record_DOF_prescribed_value(6, 0.0);
    loads.record_DOF_prescribed_value(9 * n + 6, 0.0);
    outcome o;
    run(b.problem, o);
    ASSERT_EQ(o.data.error_code, 0) << o.data.error_msg;
    for (unsigned i = 0; i <= n; ++i) {
        const double x = b.pos(0, i);
        EXPECT_NEAR(temperature(o, i), q * x * (L - x) / (2 * kA), 1e-12);
    }

    const double T_inf = 25.0;
    bar c(n, 2, L, kA, 5.0);
    const fem::elementary_load surroundings(fem::elementary_load::kind_heat_exchange, fem::elementary_load::type_scalar,
                                            dense1D<double>(1, T_inf));
    ASSERT_EQ(c.problem.get_loads_mgr(0).record_NM_load(c.held[1].ID(), 0xFFFFFFFEu, surroundings), fem::no_error);
    outcome p;
    run(c.problem, p);
    ASSERT_EQ(p.data.error_code, 0) << p.data.error_msg;
    for (unsigned i = 0; i < c.pos.cols(); ++i) EXPECT_NEAR(temperature(p, i), T_inf, 1e-10);
}

TEST(HeatStatic, BadHeatModelsGetTheirCodes) {
    fem::context ctx;
    dense2D<unsigned int> edge(2, 1, 0u), hexa(8, 1, 0u);
    edge(1, 0) = 1;
    for (unsigned a = 0; a < 8; ++a) hexa(a, 0) = a;
    fem::law_scalar zero(ctx, 0.0), nan(ctx, std::nan("")), k(ctx, 1.0);
    fem::model_heat_conduction_1d none(zero), bad(nan), good(k);
    EXPECT_FALSE(none.is_valid());
    EXPECT_EQ(fem::model_heat_capacity_3d().init(nan), fem::error_data);
    fem::numerical_model_heat m;
    EXPECT_EQ(m.init(ctx, none, edge, fem::FE_edge2), fem::error_data);          // empty physics
    EXPECT_EQ(m.init(ctx, good, hexa, fem::FE_hexa8), fem::error_element_type);  // a line physics on a solid
    EXPECT_EQ(m.init(ctx, good, hexa, fem::FE_edge2), fem::error_connectivity);  // 8 rows for 2 nodes
    fem::law_solid_StVenant steel(ctx, 1.0, 0.3, 0.0);
    EXPECT_EQ(m.init(ctx, fem::model_solid_lin(steel), hexa, fem::FE_hexa8), fem::error_data);  // no heat physics
    fem::numerical_model_mass mass;
    EXPECT_EQ(mass.init(ctx, good, edge, fem::FE_edge2), fem::error_data);  // heat is no mass
    EXPECT_EQ(m.init(ctx, good, edge, fem::FE_edge2), fem::no_error);
}

// Transient: a bar held at 0 at x = 0, insulated at x = L, starting from its first
// mode sin(pi x / 2L), which decays as exp(-(k / c) (pi / 2L)^2 t).
struct transient {
    static constexpr double L = 1.0, k = 2.0, c = 4.0;
    bar b{40, 2, L, k, 0.0, c};
    fem::FEM_states T0;

    transient() {
        const unsigned nn = b.pos.cols();
        dense1D<unsigned int> ids(nn, 0u);
        for (unsigned i = 0; i < nn; ++i) ids[i] = 9 * i + 6;
        T0 = fem::FEM_states(ids, 1, 0.0);
        for (unsigned i = 0; i < nn; ++i) T0.set_val(9 * i + 6, 0, std::sin(3.141592653589793 * b.pos(0, i) / (2 * L)));
        b.problem.get_loads_mgr(0).record_DOF_prescribed_value(6, 0.0);
    }
    // The temperature at x = L after a run to t_end with steps dt.
    double tip(double dt, double theta, double t_end, fem::solver_heat_dynamic_linear::data_type* out = nullptr) {
        fem::solver_heat_dynamic_linear solver;
        solver.settings.t_end = t_end;
        solver.settings.dt = dt;
        solver.settings.theta = theta;
        fem::solver_heat_dynamic_linear::data_type data(b.problem);
        data.T_init = T0;
        solver.run(data);
        EXPECT_EQ(data.error_code, 0) << data.error_msg;
        double t = 0.0;
        data.T.get_val(9ull * (b.pos.cols() - 1) + 6, data.T.cols() - 1, t);
        if (out) *out = data;
        return t;
    }
};

TEST(HeatTransient, FirstModeDecaysAtItsRate) {
    transient tr;
    const double t_end = 0.2, pi = 3.141592653589793;
    fem::solver_heat_dynamic_linear::data_type data;
    const double tip = tr.tip(0.001, 0.5, t_end, &data);
    EXPECT_NEAR(tip, std::exp(-(tr.k / tr.c) * pi * pi / 4 * t_end), 1e-6);
    ASSERT_EQ(data.times.size(), 200u);
    EXPECT_DOUBLE_EQ(data.times[199], t_end);  // t_start + s dt by multiplication
}

// Against a run with a tiny step on the same mesh: Crank-Nicolson halves its error by
// four when the step halves, the implicit scheme by two.
TEST(HeatTransient, CrankNicolsonSecondOrderImplicitFirstOrder) {
    transient tr;
    const double t_end = 0.4, reference = tr.tip(2e-4, 0.5, t_end);
    const double cn1 = tr.tip(0.04, 0.5, t_end) - reference, cn2 = tr.tip(0.02, 0.5, t_end) - reference;
    const double be1 = tr.tip(0.04, 1.0, t_end) - reference, be2 = tr.tip(0.02, 1.0, t_end) - reference;
    EXPECT_NEAR(cn1 / cn2, 4.0, 0.2);
    EXPECT_NEAR(be1 / be2, 2.0, 0.2);
}

// The explicit limit of this mesh is about dt = 2 / lambda_max ~ 2e-5: the implicit
// scheme stays bounded and decays at steps ten thousand times longer.
TEST(HeatTransient, ImplicitStableFarBeyondTheExplicitLimit) {
    transient tr;
    fem::solver_heat_dynamic_linear::data_type data;
    tr.tip(0.2, 1.0, 2.0, &data);
    ASSERT_EQ(data.T.cols(), 10u);
    double last = 1.0;
    for (unsigned s = 0; s < 10; ++s) {
        double t = 0.0;
        data.T.get_val(9ull * (tr.b.pos.cols() - 1) + 6, s, t);
        EXPECT_GT(t, 0.0);
        EXPECT_LT(t, last);
        last = t;
    }
}

// A bar whose end x = 0 is driven at T = t (an evolution function on the prescribed
// value), insulated at x = L: after the transients (k / c = 8) it follows
// T = t - (c / k) (L x - x^2 / 2), which the quadratic elements and the linear-in-time
// scheme reproduce.
TEST(HeatTransient, RampedEndTemperature) {
    const double L = 1.0, k = 8.0, c = 1.0;
    bar b(10, 2, L, k, 0.0, c);
    fem::evolution_funcs_mgr funcs(b.ctx);
    const unsigned ramp = funcs.create_linear(1.0);
    b.problem.get_loads_mgr(0).record_DOF_prescribed_value(6, 1.0, ramp);
    fem::solver_heat_dynamic_linear solver;
    solver.settings.t_end = 1.0;
    solver.settings.dt = 0.01;
    fem::solver_heat_dynamic_linear::data_type data(b.problem);
    solver.run(data);
    ASSERT_EQ(data.error_code, 0) << data.error_msg;
    for (unsigned i = 0; i < b.pos.cols(); i += 5) {
        const double x = b.pos(0, i);
        double t = 0.0;
        data.T.get_val(9ull * i + 6, data.T.cols() - 1, t);
        EXPECT_NEAR(t, 1.0 - (c / k) * (L * x - x * x / 2), 1e-6) << x;
    }
}

TEST(HeatTransient, BadSettingsAndRecords) {
    transient tr;
    fem::solver_heat_dynamic_linear solver;
    fem::solver_heat_dynamic_linear::data_type data(tr.b.problem);
    solver.settings.t_end = 1.0;
    solver.settings.dt = 0.1;
    for (double theta : {-0.1, 1.5, std::nan("")}) {
        solver.settings.theta = theta;
        solver.run(data);
        EXPECT_STREQ(data.error_msg, "ORV solver_heat_dynamic_linear: invalid settings.");
    }
    solver.settings.theta = 1.0;
    solver.settings.dt = 0.0;
    solver.run(data);
    EXPECT_STREQ(data.error_name, "SETTINGS ERROR");
    solver.settings.dt = 0.1;
    fem::problem_data two(tr.b.ctx, tr.b.pos, tr.b.table, tr.b.comp.ID(), 2);
    data = fem::solver_heat_dynamic_linear::data_type(two);
    solver.run(data);
    EXPECT_STREQ(data.error_msg, "ORV solver_heat_dynamic_linear: Needs exactly one load case.");
}

}  // namespace
}  // namespace orv
