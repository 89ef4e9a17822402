// Elasto-plastic rods and scalar laws: closed forms of a strain cycle, the uniaxial
// curves, the tangent against finite differences, limit states and bad data.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <orv/fem/context.h>
#include <orv/fem/law_rod_ep.h>

#include "elements/mesh_material_law.h"
#include "law_test_utils.h"
#include "laws/law_rod_ep.h"

namespace {

namespace fem = orv::fem;
namespace core = orv::core;
using law_test::values;
using orv::Ptr;

struct result {
    int rc = 0;
    double stress = 0.0, D = 0.0, energy = 0.0;
    double states[2] = {};
};

template <class Law>
result eval(const Law& law, double strain, unsigned flags) {
    result r;
    core::law_key key;
    key.step = 1;
    r.rc = law.compute(key, strain, r.D, r.stress, r.energy, r.states, flags);
    return r;
}

template <class Law>
Ptr<Law> make(std::initializer_list<double> data) {
    Ptr<Law> law(new Law());
    EXPECT_EQ(law->init(values(data)), 0);
    return law;
}

// E = 200, ET = 20, SY = 2 (yield at 0.01). Hand closed form of the cycle 0 ->
// 0.03 -> -0.03 -> 0: loading S = SY + ET (e - 0.01), so S1 = 2.4 at 0.03; elastic
// unloading S1 + E (e - 0.03) down to -S1, reached at e = 0.006; then S = -2.4 +
// ET (e - 0.006), S3 = -3.12 at -0.03; elastic again.
template <class Law>
void expect_cycle(const Law& law) {
    const double E = 200.0, ET = 20.0;
    const struct {
        double e, s, tangent;
    } path[] = {{0.005, 1.0, E},    {0.02, 2.2, ET},   {0.03, 2.4, ET},
                {0.02, 0.4, E},     {0.01, -1.6, E},   {-0.01, -2.4 - ET * 0.016, ET},
                {-0.03, -3.12, ET}, {-0.02, -1.12, E}, {0.0, 2.88, E}};
    for (const auto& pt : path) {
        const result r = eval(law, pt.e, core::law_commit);
        ASSERT_EQ(r.rc, 0);
        EXPECT_NEAR(r.stress, pt.s, 1e-13) << pt.e;
        EXPECT_NEAR(r.D, pt.tangent, 1e-12) << pt.e;
        EXPECT_NEAR(r.states[0], pt.e - pt.s / E, 1e-15) << pt.e;
        EXPECT_NEAR(r.energy, 0.5 * pt.s * pt.s / E, 1e-15);
    }
    // |p| sums the plastic strain increments: 0.018 in tension, then 0.0324 from
    // the plastic strain 0.018 down to -0.03 + 3.12 / E = -0.0144.
    core::law_key key;
    key.step = 1;
    EXPECT_NEAR(law.plasticity(key), 0.018 + 0.0324, 1e-15);
}

TEST(EpRodScalar, StrainCycleFollowsTheClosedForm) {
    expect_cycle(*make<core::law_rod_ep_perfect>({200.0, 3.0, 0.0, 20.0, 2.0}));
    expect_cycle(*make<core::law_scalar_ep_perfect>({200.0, 20.0, 2.0}));
    // The same table as a piecewise curve: one hardening segment far beyond the path.
    expect_cycle(*make<core::law_rod_ep_piecewise_linear>({200.0, 3.0, 0.0, 0.01, 1.0, 200.0, 20.0}));
}

// Through the rod adapter of the mesh kernels, force and tangent are times the area.
TEST(EpRodScalar, RodAdapterScalesByTheArea) {
    auto law = make<core::law_rod_ep_perfect>({200.0, 3.0, 0.0, 20.0, 2.0});
    core::mesh_material_rod adapter{Ptr<core::law_1d>(law)};
    EXPECT_TRUE(adapter.has_states());
    core::material_point_key key;
    key.step = 1;
    const double strain = 0.02;
    double D = 0.0, force = 0.0, energy = 0.0;
    ASSERT_EQ(adapter.compute(key, &strain, &D, &force, energy, core::law_commit, core::assembly_params()), 0);
    EXPECT_NEAR(force, 3.0 * 2.2, 1e-13);
    EXPECT_NEAR(D, 3.0 * 20.0, 1e-12);
    adapter.reset_states();
    EXPECT_EQ(law->nbr_state_records(), 0u);
}

// Monotonic uniaxial loading: the stress is y(p) with e = p + y(p) / E.
TEST(EpRodScalar, UniaxialCurvesFollowTheirFormulas) {
    const double E = 200.0, SY = 2.0, a = 0.5, n = 5.0;
    const double p[] = {0.0005, 0.002, 0.01, 0.04};
    auto power = make<core::law_rod_ep_power>({E, 1.0, 0.0, SY, a, n});
    auto ro = make<core::law_scalar_ep_RambergOsgood>({E, SY, a, n});
    for (double pi : p) {
        const double yp = SY + SY * std::pow(E / (a * SY), 0.2) * std::pow(pi, 0.2);
        result r = eval(*power, pi + yp / E, core::law_commit);
        EXPECT_NEAR(r.stress, yp, 1e-10 * yp);
        EXPECT_NEAR(r.states[1], pi, 1e-10 * pi);
        const double yr = std::pow(E / a, 0.2) * std::pow(SY, 0.8) * std::pow(pi, 0.2);
        r = eval(*ro, pi + yr / E, core::law_commit);
        EXPECT_NEAR(r.stress, yr, 1e-10 * yr);
    }
    // Table: yield at 0.01 (S = 2), then tangent 50 to 0.02 and 10 to 0.05, then flat.
    auto table = make<core::law_scalar_ep_piecewise_linear>({200.0, 0.01, 0.02, 0.05, 200.0, 50.0, 10.0});
    const double e[] = {0.015, 0.03, 0.05, 0.08}, s[] = {2.25, 2.6, 2.8, 2.8};
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(eval(*table, e[i], core::law_commit).stress, s[i], 1e-12) << i;
    // Ramberg-Osgood yields from the first load, also when p stays far below 1e-6
    // (where the Newton's chord slope makes it oscillate and the bracketed solve
    // takes over): S = y(p) and e = p + S / E.
    auto fresh = make<core::law_rod_ep_RambergOsgood>({E, 1.0, 0.0, SY, a, n});
    for (double e : {1e-4, 1e-3}) {
        const result r = eval(*fresh, e, 0);
        ASSERT_EQ(r.rc, 0);
        const double p_small = r.states[1];
        EXPECT_GT(p_small, 0.0);
        EXPECT_LT(p_small, 1e-6);
        EXPECT_NEAR(r.stress, std::pow(E / a, 0.2) * std::pow(SY, 0.8) * std::pow(p_small, 0.2), 1e-12);
        EXPECT_NEAR(e, p_small + r.stress / E, 1e-15);
    }
}

template <class Law>
void expect_tangent_is_derivative(const Law& law, double e0, double e) {
    ASSERT_EQ(eval(law, e0, core::law_commit).rc, 0);
    const result r = eval(law, e, 0);
    const double h = 1e-8;
    const double fd = (eval(law, e + h, 0).stress - eval(law, e - h, 0).stress) / (2.0 * h);
    EXPECT_NEAR(r.D, fd, 1e-6 * 200.0);
    EXPECT_LT(r.D, 200.0);
}

TEST(EpRodScalar, TangentIsTheDerivativeOfTheStress) {
    expect_tangent_is_derivative(*make<core::law_rod_ep_power>({200.0, 1.0, 0.0, 2.0, 0.5, 5.0}), 0.02, 0.03);
    expect_tangent_is_derivative(*make<core::law_scalar_ep_power>({200.0, 2.0, 0.5, 5.0}), 0.02, -0.04);
    expect_tangent_is_derivative(*make<core::law_scalar_ep_perfect>({200.0, 20.0, 2.0}), -0.02, -0.025);
}

// A point that reaches a limit breaks: nothing carried until the states are reset.
TEST(EpRodScalar, LimitStatesBreakThePoint) {
    fem::context ctx;
    fem::law_rod_ep_perfect rod(ctx, values({200.0, 1.0, 0.0, 20.0, 2.0}));
    EXPECT_EQ(rod.set_limit_states(0.05, std::nan("")), fem::error_data);
    EXPECT_EQ(rod.set_limit_states(0.05, std::numeric_limits<double>::max()), fem::no_error);
    const core::law_rod_ep& law = *rod.engine();
    EXPECT_NEAR(eval(law, 0.04, core::law_commit).stress, 2.6, 1e-13);
    const result broken = eval(law, 0.05, core::law_commit);
    EXPECT_EQ(broken.stress, 0.0);
    EXPECT_EQ(broken.D, 0.0);
    EXPECT_EQ(rod.plasticity(0, 0, 1), std::numeric_limits<double>::max());
    EXPECT_EQ(eval(law, 0.0, 0).stress, 0.0);
    rod.reset_states();
    EXPECT_NEAR(eval(law, 0.005, 0).stress, 1.0, 1e-14);

    fem::law_scalar_ep_perfect spring(ctx, values({200.0, 20.0, 2.0}));
    ASSERT_EQ(spring.set_limit_states(std::numeric_limits<double>::max(), 2.5), fem::no_error);
    EXPECT_EQ(eval(*spring.engine(), 0.04, 0).stress, 0.0);  // 2.6 >= 2.5
    EXPECT_NEAR(eval(*spring.engine(), 0.02, 0).stress, 2.2, 1e-13);
}

TEST(EpRodScalar, BadDataAreRefusedOrStayElastic) {
    fem::context ctx;
    fem::law_rod_ep_perfect rod(ctx);
    EXPECT_EQ(rod.init(values({200.0, 1.0, 0.0, 20.0})), -1);
    EXPECT_EQ(rod.init(values({200.0, 1.0, 0.0, 20.0, 2.0})), 0);
    EXPECT_EQ(rod.get_data().size(), 6u);
    EXPECT_EQ(rod.init(values({200.0, 1.0, 0.0, 20.0, std::numeric_limits<double>::infinity()})), -2);
    EXPECT_FALSE(rod.curve_valid());  // SY stored as 0
    EXPECT_NEAR(eval(*rod.engine(), 0.05, core::law_commit).stress, 10.0, 1e-12);
    fem::law_scalar_ep_piecewise_linear table(ctx);
    EXPECT_EQ(table.init(values({200.0, 0.01, 0.02, 200.0})), -1);
    EXPECT_EQ(table.init(values({200.0, 0.02, 0.01, 200.0, 50.0})), 0);
    EXPECT_FALSE(table.curve_valid());
    EXPECT_NEAR(eval(*table.engine(), 0.05, 0).stress, 10.0, 1e-12);
    fem::law_scalar_ep_perfect stiff_hardening(ctx, values({200.0, 250.0, 2.0}));
    EXPECT_FALSE(stiff_hardening.curve_valid());
    fem::law_scalar_ep_power low_n(ctx, values({200.0, 2.0, 0.5, 0.5}));
    EXPECT_FALSE(low_n.curve_valid());
    EXPECT_NEAR(eval(*low_n.engine(), -0.05, 0).stress, -10.0, 1e-12);
    // A zero stiffness is no material: the evaluation fails.
    fem::law_scalar_ep_perfect zero(ctx, values({0.0, 0.0, 2.0}));
    EXPECT_EQ(eval(*zero.engine(), 0.05, 0).rc, -1);
    // Tables by their two columns: strains then moduli after the leading values.
    fem::law_rod_ep_piecewise_linear by_columns(ctx);
    EXPECT_EQ(by_columns.init(200.0, 1.0, 0.0, values({0.01, 0.05}), values({200.0, 20.0, 5.0})), -1);
    EXPECT_TRUE(by_columns.get_data().empty());
    EXPECT_EQ(by_columns.init(200.0, 1.0, 0.0, values({0.01, 0.05}), values({200.0, 20.0})), 0);
    const double expected[] = {200.0, 1.0, 0.0, 0.01, 0.05, 200.0, 20.0};
    ASSERT_EQ(by_columns.get_data().size(), 7u);
    for (int i = 0; i < 7; ++i) EXPECT_EQ(by_columns.get_data()[i], expected[i]);
    fem::law_scalar_ep_perfect none;
    EXPECT_EQ(none.set_limit_states(1.0, 1.0), fem::error_data);
    EXPECT_FALSE(none.curve_valid());
}

}  // namespace
