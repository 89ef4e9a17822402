// Elasto-plastic solid laws: closed forms of a uniaxial strain path, the hardening
// curves, the consistent tangent against finite differences, the return onto the
// yield surface, and refused or unusable data.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <orv/fem/context.h>
#include <orv/fem/law_solid_ep.h>
#include <orv/fem/stress_measures.h>

#include "law_test_utils.h"
#include "laws/law_solid_ep.h"

namespace {

namespace fem = orv::fem;
namespace core = orv::core;
using law_test::values;
using orv::Ptr;

typedef orv::vector_fixed<double, 6> vec6;
typedef orv::symmetric_fixed<double, 6> sym6;

// E = 250, nu = 0.25: G = lambda = 100, K = 500 / 3.
const double E = 250.0, nu = 0.25, G = 100.0, lambda = 100.0, K = lambda + 2.0 * G / 3.0;

struct result {
    int rc = 0;
    vec6 stress;
    sym6 D;
    double energy = 0.0;
    double states[7] = {};
};

result eval(const core::law_solid_stiff& law, const vec6& strain, unsigned flags, std::uint32_t step = 1,
            std::uint32_t element = 0) {
    result r;
    core::law_key key;
    key.element = element;
    key.step = step;
    r.rc = law.compute(key, strain, r.D, r.stress, r.energy, r.states, flags);
    return r;
}

vec6 uniaxial(double e) { return vec6{e, 0.0, 0.0, 0.0, 0.0, 0.0}; }

double Von_Mises(const vec6& s) {
    fem::stress_tensor t;
    t(0, 0) = s[0];
    t(1, 1) = s[1];
    t(2, 2) = s[2];
    t(1, 0) = s[3];
    t(2, 0) = s[4];
    t(2, 1) = s[5];
    return fem::Von_Mises_stress(t);
}

template <class Law>
Ptr<Law> make(std::initializer_list<double> data) {
    Ptr<Law> law(new Law());
    EXPECT_EQ(law->init(values(data)), 0);
    return law;
}

// Uniaxial strain with linear hardening (SY = 1, ET = 50, H = 62.5): loading,
// elastic unloading, reversed yielding and unloading again, each step committed.
// Hand closed forms: with the plastic strain ep along 11, s11 = 2 G (2/3 e - ep);
// on the first loading p = (2 G e - SY) / (3 G + H), on the reversal p = (6 G p1 -
// 2 G e - SY) / (3 G + H), and s11 = +-2/3 y(p) on the yield surface.
TEST(EpSolid, UniaxialStrainPathFollowsTheClosedForm) {
    const double SY = 1.0, H = 62.5;
    auto law = make<core::law_solid_ep_perfect>({E, nu, 0.0, 50.0, SY});
    const double p1 = (2.0 * G * 0.02 - SY) / (3.0 * G + H);
    const double p2 = (6.0 * G * p1 + 2.0 * G * 0.02 - SY) / (3.0 * G + H);
    struct point {
        double e, ep, p;
        int sign;  // 0 elastic, +-1 on the yield surface in tension / compression
    } path[] = {{0.004, 0.0, 0.0, 0},
                {0.01, (2.0 * G * 0.01 - SY) / (3.0 * G + H), 0, 1},
                {0.02, p1, p1, 1},
                {0.012, p1, p1, 0},
                {0.006, p1, p1, 0},
                {-0.02, 2.0 * p1 - p2, p2, -1},
                {-0.01, 2.0 * p1 - p2, p2, 0}};
    path[1].p = path[1].ep;
    for (const point& pt : path) {
        const result r = eval(*law, uniaxial(pt.e), core::law_commit);
        ASSERT_EQ(r.rc, 0);
        const double s11 = pt.sign == 0 ? 2.0 * G * (2.0 / 3.0 * pt.e - pt.ep) : pt.sign * 2.0 / 3.0 * (SY + H * pt.p);
        EXPECT_NEAR(r.stress[0], K * pt.e + s11, 1e-12) << pt.e;
        EXPECT_NEAR(r.stress[1], K * pt.e - 0.5 * s11, 1e-12) << pt.e;
        EXPECT_NEAR(r.stress[2], r.stress[1], 1e-12);
        EXPECT_EQ(r.stress[3], 0.0);
        EXPECT_NEAR(r.states[0], pt.ep, 1e-14) << pt.e;
        EXPECT_NEAR(r.states[1], -0.5 * pt.ep, 1e-14);
        EXPECT_NEAR(r.states[6], pt.p, 1e-14) << pt.e;
        // Tangent dS11/dE11: K + 4/3 G on the elastic branch, K + 4/3 G H / (3 G + H)
        // on the plastic one (the closed form of the consistent tangent here).
        const double d11 = K + 4.0 / 3.0 * G * (pt.sign == 0 ? 1.0 : H / (3.0 * G + H));
        EXPECT_NEAR(r.D(0, 0), d11, 1e-10) << pt.e;
    }
}

// A trial exactly on the yield surface (2 G e = SY, all values exact in binary)
// takes the plastic branch with dp = 0: stress unchanged, plastic tangent.
TEST(EpSolid, TrialOnTheSurfaceGivesThePlasticTangent) {
    const double e = 0.0078125, SY = 2.0 * G * e, H = 62.5;
    auto law = make<core::law_solid_ep_perfect>({E, nu, 0.0, 50.0, SY});
    const result r = eval(*law, uniaxial(e), 0);
    ASSERT_EQ(r.rc, 0);
    EXPECT_EQ(r.stress[0], (lambda + 2.0 * G) * e);
    EXPECT_EQ(r.states[6], 0.0);
    EXPECT_NEAR(r.D(0, 0), K + 4.0 / 3.0 * G * H / (3.0 * G + H), 1e-12);
}

// On a monotonic uniaxial strain path the stress follows y(p): with q = y(p) =
// 2 G e - 3 G p, e = (y + 3 G p) / (2 G) and S11 = K e + 2/3 y.
void expect_curve(const core::law_solid_stiff& law, const double* p, const double* y, int n) {
    for (int i = 0; i < n; ++i) {
        const double e = (y[i] + 3.0 * G * p[i]) / (2.0 * G);
        const result r = eval(law, uniaxial(e), core::law_commit);
        ASSERT_EQ(r.rc, 0);
        EXPECT_NEAR(r.states[6], p[i], 1e-9 * p[i]) << i;
        EXPECT_NEAR(r.stress[0], K * e + 2.0 / 3.0 * y[i], 1e-9 * y[i]) << i;
        EXPECT_NEAR(Von_Mises(r.stress), y[i], 1e-9 * y[i]) << i;
    }
}

TEST(EpSolid, HardeningCurvesOnAMonotonicPath) {
    const double SY = 1.0, a = 2.0, n = 4.0;
    const double p[] = {0.001, 0.004, 0.02, 0.05};
    double y[4];
    // Power: y = SY + SY (E / (a SY))^(1/n) p^(1/n).
    for (int i = 0; i < 4; ++i) y[i] = SY + SY * std::pow(E / (a * SY), 0.25) * std::pow(p[i], 0.25);
    expect_curve(*make<core::law_solid_ep_power>({E, nu, 0.0, SY, a, n}), p, y, 4);
    // Ramberg-Osgood: y = (E / a)^(1/n) SY^(1 - 1/n) p^(1/n).
    for (int i = 0; i < 4; ++i) y[i] = std::pow(E / a, 0.25) * std::pow(SY, 0.75) * std::pow(p[i], 0.25);
    expect_curve(*make<core::law_solid_ep_RambergOsgood>({E, nu, 0.0, SY, a, n}), p, y, 4);
    // Tiny plastic strains from p = 0, below the chord slope's range.
    const double tiny[] = {1e-10, 3e-8};
    for (int i = 0; i < 2; ++i) y[i] = std::pow(E / a, 0.25) * std::pow(SY, 0.75) * std::pow(tiny[i], 0.25);
    expect_curve(*make<core::law_solid_ep_RambergOsgood>({E, nu, 0.0, SY, a, n}), tiny, y, 2);
    // Table: strains 0.01, 0.02, 0.05 with moduli 200, 50, 10 (E0 = 200). Rows by
    // hand: (p, y) = (0, 2), (0.0075, 2.5), (0.036, 2.8); slopes 200/3, 10/0.95, then 0.
    const double pt[] = {0.005, 0.02, 0.06};
    const double yt[] = {2.0 + 0.005 * 200.0 / 3.0, 2.5 + 0.0125 * 10.0 / 0.95, 2.8};
    expect_curve(*make<core::law_solid_ep_piecewise_linear>({E, nu, 0.0, 0.01, 0.02, 0.05, 200.0, 50.0, 10.0}), pt, yt,
                 3);
}

// From a committed plastic state, a strain increment with shear: the consistent
// tangent is the derivative of the returned stress.
void expect_tangent_is_derivative(const core::law_solid_stiff& law) {
    const vec6 e0{0.01, -0.002, 0.001, 0.006, 0.002, -0.003};
    ASSERT_EQ(eval(law, e0, core::law_commit).rc, 0);
    ASSERT_GT(eval(law, e0, 0).states[6], 0.0);
    vec6 e = e0;
    const vec6 de{0.003, 0.001, -0.002, 0.004, -0.001, 0.002};
    for (unsigned i = 0; i < 6; ++i) e[i] += de[i];
    const result r = eval(law, e, 0);
    ASSERT_EQ(r.rc, 0);
    ASSERT_GT(r.states[6], eval(law, e0, 0).states[6]);  // still loading
    const double h = 1e-7;
    double largest = 0.0;
    for (unsigned i = 0; i < 21; ++i) largest = std::fmax(largest, std::fabs(r.D.data()[i]));
    for (unsigned j = 0; j < 6; ++j) {
        vec6 ep = e, em = e;
        ep[j] += h;
        em[j] -= h;
        const result rp = eval(law, ep, 0), rm = eval(law, em, 0);
        for (unsigned i = 0; i < 6; ++i)
            EXPECT_NEAR(r.D(i, j), (rp.stress[i] - rm.stress[i]) / (2.0 * h), 1e-6 * largest) << i << "," << j;
    }
    // The plastic tangent is softer than the elastic one along the increment.
    sym6 De;
    ASSERT_EQ(core::isotropic_D(E, nu, De), 0);
    EXPECT_LT(de.dot(law_test::times(r.D, de)), de.dot(law_test::times(De, de)));
}

TEST(EpSolid, ConsistentTangentIsTheDerivativeOfTheStress) {
    expect_tangent_is_derivative(*make<core::law_solid_ep_perfect>({E, nu, 0.0, 50.0, 1.0}));
    expect_tangent_is_derivative(*make<core::law_solid_ep_perfect>({E, nu, 0.0, 0.0, 1.0}));
    expect_tangent_is_derivative(*make<core::law_solid_ep_power>({E, nu, 0.0, 1.0, 2.0, 4.0}));
    expect_tangent_is_derivative(*make<core::law_solid_ep_RambergOsgood>({E, nu, 0.0, 1.0, 2.0, 4.0}));
}

// Plane strain states in several directions: the returned stress has the Von Mises
// value of the yield stress at the returned p, to round-off.
TEST(EpSolid, ReturnedStressLiesOnTheYieldSurface) {
    auto linear = make<core::law_solid_ep_perfect>({E, nu, 0.0, 50.0, 1.0});
    auto power = make<core::law_solid_ep_power>({E, nu, 0.0, 1.0, 2.0, 4.0});
    for (int k = 0; k < 8; ++k) {
        const double t = 0.7 * k;
        const vec6 e{0.03 * std::cos(t), 0.02 * std::sin(t), 0.0, 0.025 * std::sin(2.0 * t + 0.3), 0.0, 0.0};
        const result r = eval(*linear, e, 0);
        ASSERT_GT(r.states[6], 0.0);
        EXPECT_NEAR(Von_Mises(r.stress), 1.0 + 62.5 * r.states[6], 1e-13 * 4.0) << k;
        const result s = eval(*power, e, 0);
        const double y = 1.0 + std::pow(E / 2.0, 0.25) * std::pow(s.states[6], 0.25);
        EXPECT_NEAR(Von_Mises(s.stress), y, 1e-12 * y) << k;
        // The plastic strain is deviatoric.
        EXPECT_NEAR(s.states[0] + s.states[1] + s.states[2], 0.0, 1e-15);
    }
}

// Sizes and non-finite values get the init codes; values that make no curve are
// kept but the law never yields (elastic stress at any strain).
TEST(EpSolid, BadDataAreRefusedOrStayElastic) {
    fem::context ctx;
    fem::law_solid_ep_perfect bad_size(ctx);
    EXPECT_EQ(bad_size.init(values({E, nu, 0.0, 50.0})), -1);
    EXPECT_TRUE(bad_size.get_data().empty());
    EXPECT_FALSE(bad_size.curve_valid());
    fem::law_solid_ep_perfect nan(ctx);
    EXPECT_EQ(nan.init(E, nu, 0.0, 50.0, std::nan("")), -2);
    EXPECT_EQ(nan.get_data()[4], 0.0);
    fem::law_solid_ep_power inf(ctx);
    EXPECT_EQ(inf.init(E, nu, 0.0, 1.0, std::numeric_limits<double>::infinity(), 4.0), -2);
    fem::law_solid_ep_piecewise_linear table(ctx);
    EXPECT_EQ(table.init(E, nu, 0.0, values({0.01, 0.02}), values({200.0})), -1);
    EXPECT_EQ(table.init(E, nu, 0.0, values({0.01, 0.02}), values({200.0, 50.0})), 0);
    EXPECT_TRUE(table.curve_valid());

    sym6 De;
    ASSERT_EQ(core::isotropic_D(E, nu, De), 0);
    const vec6 e{0.05, -0.01, 0.02, 0.03, 0.0, 0.01};
    const vec6 elastic = law_test::times(De, e);
    std::initializer_list<double> unusable[] = {
        {E, nu, 0.0, 50.0, 0.0}, {E, nu, 0.0, 50.0, -1.0}, {E, nu, 0.0, 300.0, 1.0}, {E, nu, 0.0, -5.0, 1.0}};
    for (const auto& d : unusable) {
        fem::law_solid_ep_perfect h(ctx, values(d));
        EXPECT_FALSE(h.curve_valid());
        const result r = eval(*h.engine(), e, core::law_commit);
        EXPECT_EQ(r.rc, 0);
        for (unsigned i = 0; i < 6; ++i) EXPECT_NEAR(r.stress[i], elastic[i], 1e-12);
        EXPECT_EQ(h.plasticity(0, 0, 1), 0.0);
    }
    fem::law_solid_ep_power low_n(ctx, E, nu, 0.0, 1.0, 2.0, 1.0);
    fem::law_solid_ep_RambergOsgood zero_a(ctx, E, nu, 0.0, 1.0, 0.0, 4.0);
    fem::law_solid_ep_piecewise_linear decreasing(ctx, E, nu, 0.0, values({0.02, 0.01}), values({250.0, 50.0}));
    const fem::law_solid_ep* others[] = {&low_n, &zero_a, &decreasing};
    for (const fem::law_solid_ep* h : others) {
        EXPECT_FALSE(h->curve_valid());
        const result r = eval(*h->engine(), e, 0);
        EXPECT_EQ(r.rc, 0);
        for (unsigned i = 0; i < 6; ++i) EXPECT_NEAR(r.stress[i], elastic[i], 1e-12);
    }
    // nu = 0.5 or E <= 0 is no material: the evaluation fails with a zero tangent.
    fem::law_solid_ep_perfect incompressible(ctx, E, 0.5, 0.0, 50.0, 1.0), negative(ctx, -E, nu, 0.0, 50.0, 1.0);
    for (const fem::law_solid_ep* h : {&incompressible, &negative}) {
        const result r = eval(*h->engine(), e, 0);
        EXPECT_EQ(r.rc, -1);
        EXPECT_EQ(r.D(0, 0), 0.0);
    }
    // Empty handles.
    fem::law_solid_ep_perfect none;
    EXPECT_EQ(none.init(E, nu, 0.0, 50.0, 1.0), -1);
    EXPECT_EQ(none.copy_states(1, 2), fem::error_data);
    EXPECT_EQ(none.plasticity(0, 0, 0), 0.0);
    none.reset_states();
}

}  // namespace
