// Shape functions: partition of unity, Kronecker property in the documented node order,
// polynomial reproduction, and derivatives against finite differences.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "elements/elfes_shapes.h"
#include "elements/local_points_set.h"
#include "elements/node_DOF_table.h"
#include "reference_domains.h"

using namespace elfes;
using elements_test::domain;

namespace {

template <class Shape>
class shape_test : public ::testing::Test {};

using all_shapes = ::testing::Types<edge2, edge3, edge4, faceT3, faceT6, faceQ4, faceQ9, tetra4, tetra10, pyramid5,
                                    pyramid14, wedge6, wedge18, hexa8, hexa27>;
TYPED_TEST_SUITE(shape_test, all_shapes);

// Complete polynomial degree each shape reproduces exactly.
template <class S>
constexpr unsigned degree = 1;
template <>
constexpr unsigned degree<edge3> = 2;
template <>
constexpr unsigned degree<edge4> = 3;
template <>
constexpr unsigned degree<faceT6> = 2;
template <>
constexpr unsigned degree<faceQ9> = 2;
template <>
constexpr unsigned degree<tetra10> = 2;
template <>
constexpr unsigned degree<pyramid14> = 2;
template <>
constexpr unsigned degree<wedge18> = 2;
template <>
constexpr unsigned degree<hexa27> = 2;

template <class Shape>
std::vector<std::array<double, 3>> test_points(unsigned count) {
    std::mt19937 rng(1);
    std::vector<std::array<double, 3>> pts(count);
    for (auto& p : pts) elements_test::sample(elements_test::domain_of(Shape::element_type_value), rng, p.data());
    return pts;
}

double monomial(const double* x, unsigned a, unsigned b, unsigned c) {
    return std::pow(x[0], a) * std::pow(x[1], b) * std::pow(x[2], c);
}

}  // namespace

TYPED_TEST(shape_test, kronecker_at_nodes) {
    using S = TypeParam;
    for (unsigned j = 0; j < S::nbr_nodes; ++j) {
        double x[3], N[S::nbr_nodes];
        S::node_position(j, x);
        S::values(x, N);
        for (unsigned i = 0; i < S::nbr_nodes; ++i)
            EXPECT_NEAR(N[i], i == j ? 1.0 : 0.0, 1e-14) << "node " << j << ", function " << i;
    }
}

TYPED_TEST(shape_test, partition_of_unity_and_zero_gradient_sum) {
    using S = TypeParam;
    for (const auto& p : test_points<S>(50)) {
        double N[S::nbr_nodes], dN[S::nbr_nodes][S::dim];
        S::values(p.data(), N);
        S::gradients(p.data(), dN);
        double sum = 0.0, gsum[3] = {0.0, 0.0, 0.0};
        for (unsigned i = 0; i < S::nbr_nodes; ++i) {
            sum += N[i];
            for (unsigned k = 0; k < S::dim; ++k) gsum[k] += dN[i][k];
        }
        EXPECT_NEAR(sum, 1.0, 1e-13);
        for (unsigned k = 0; k < S::dim; ++k) EXPECT_NEAR(gsum[k], 0.0, 1e-12);
    }
}

// sum N_i m(x_i) = m(x) for every monomial of total degree up to the shape's degree:
// the node table and the functions agree beyond the nodes themselves, and the
// isoparametric map of the reference element is the identity.
TYPED_TEST(shape_test, reproduces_complete_polynomials) {
    using S = TypeParam;
    double nodes[S::nbr_nodes][3];
    for (unsigned i = 0; i < S::nbr_nodes; ++i) S::node_position(i, nodes[i]);
    const unsigned p = degree<S>;
    for (const auto& x : test_points<S>(20)) {
        double N[S::nbr_nodes], dN[S::nbr_nodes][S::dim];
        S::values(x.data(), N);
        S::gradients(x.data(), dN);
        for (unsigned a = 0; a <= p; ++a)
            for (unsigned b = 0; b <= (S::dim > 1 ? p - a : 0); ++b)
                for (unsigned c = 0; c <= (S::dim > 2 ? p - a - b : 0); ++c) {
                    double v = 0.0;
                    for (unsigned i = 0; i < S::nbr_nodes; ++i) v += N[i] * monomial(nodes[i], a, b, c);
                    EXPECT_NEAR(v, monomial(x.data(), a, b, c), 1e-12) << a << b << c;
                }
        // Jacobian of the reference element onto itself
        for (unsigned r = 0; r < S::dim; ++r)
            for (unsigned k = 0; k < S::dim; ++k) {
                double J = 0.0;
                for (unsigned i = 0; i < S::nbr_nodes; ++i) J += dN[i][k] * nodes[i][r];
                EXPECT_NEAR(J, r == k ? 1.0 : 0.0, 1e-12);
            }
    }
}

TYPED_TEST(shape_test, gradients_match_central_differences) {
    using S = TypeParam;
    const double h = 1e-6;
    for (const auto& p : test_points<S>(30)) {
        double dN[S::nbr_nodes][S::dim];
        S::gradients(p.data(), dN);
        for (unsigned k = 0; k < S::dim; ++k) {
            double xp[3] = {p[0], p[1], p[2]}, xm[3] = {p[0], p[1], p[2]};
            xp[k] += h;
            xm[k] -= h;
            double Np[S::nbr_nodes], Nm[S::nbr_nodes];
            S::values(xp, Np);
            S::values(xm, Nm);
            for (unsigned i = 0; i < S::nbr_nodes; ++i)
                EXPECT_NEAR(dN[i][k], (Np[i] - Nm[i]) / (2 * h), 2e-8)
                    << "node " << i << " direction " << k << " at " << p[0] << "," << p[1] << "," << p[2];
        }
    }
}

template <class Shape>
class curved_shape_test : public ::testing::Test {};
using curved_shapes = ::testing::Types<edge3, edge4, faceT6, faceQ4, faceQ9>;
TYPED_TEST_SUITE(curved_shape_test, curved_shapes);

TYPED_TEST(curved_shape_test, second_derivatives_match_differences_of_gradients) {
    using S = TypeParam;
    // component c -> (gradient component g, direction k of the difference):
    // faces xi-xi, xi-eta, eta-eta; edges xi-xi
    const unsigned pairs[3][2] = {{0, 0}, {0, 1}, {1, 1}};
    const double h = 1e-6;
    for (const auto& p : test_points<S>(30)) {
        double d2N[S::nbr_nodes][S::nbr_second_derivatives];
        S::second_derivatives(p.data(), d2N);
        for (unsigned c = 0; c < S::nbr_second_derivatives; ++c) {
            const unsigned g = pairs[c][0], k = pairs[c][1];
            double xp[3] = {p[0], p[1], p[2]}, xm[3] = {p[0], p[1], p[2]};
            xp[k] += h;
            xm[k] -= h;
            double gp[S::nbr_nodes][S::dim], gm[S::nbr_nodes][S::dim];
            S::gradients(xp, gp);
            S::gradients(xm, gm);
            for (unsigned i = 0; i < S::nbr_nodes; ++i)
                EXPECT_NEAR(d2N[i][c], (gp[i][g] - gm[i][g]) / (2 * h), 2e-8) << "node " << i << " component " << c;
        }
    }
}

TYPED_TEST(shape_test, no_position_past_the_last_node) {
    using S = TypeParam;
    // a node past the last has no position
    double x[3] = {7.0, 7.0, 7.0};
    S::node_position(S::nbr_nodes, x);
    EXPECT_EQ(x[0], 0.0);
    EXPECT_EQ(x[1], 0.0);
    EXPECT_EQ(x[2], 0.0);
}

// --- values computed by hand ---------------------------------------------------

TEST(shape_values, edge_shapes_at_hand_points) {
    double N[4], x[3] = {0.5, 0.0, 0.0};
    edge2::values(x, N);
    EXPECT_DOUBLE_EQ(N[0], 0.25);
    EXPECT_DOUBLE_EQ(N[1], 0.75);
    edge3::values(x, N);  // (x(x-1)/2, x(x+1)/2, 1-x^2)
    EXPECT_DOUBLE_EQ(N[0], -0.125);
    EXPECT_DOUBLE_EQ(N[1], 0.375);
    EXPECT_DOUBLE_EQ(N[2], 0.75);
    x[0] = 0.0;  // edge4 at the centre: the constant coefficients
    edge4::values(x, N);
    EXPECT_DOUBLE_EQ(N[0], -0.0625);
    EXPECT_DOUBLE_EQ(N[1], -0.0625);
    EXPECT_DOUBLE_EQ(N[2], 0.5625);
    EXPECT_DOUBLE_EQ(N[3], 0.5625);
    double d2[4][1];
    x[0] = 1.0;
    edge4::second_derivatives(x, d2);  // 2 c2 + 6 c3 at xi = 1
    EXPECT_DOUBLE_EQ(d2[0][0], 2 * 0.5625 - 6 * 0.5625);
    EXPECT_DOUBLE_EQ(d2[2][0], -2 * 0.5625 + 6 * 1.6875);
}

TEST(shape_values, triangle_order_keeps_the_origin_last) {
    double N[6], x[3] = {0.2, 0.3, 0.0};
    faceT3::values(x, N);
    EXPECT_DOUBLE_EQ(N[0], 0.2);
    EXPECT_DOUBLE_EQ(N[1], 0.3);
    EXPECT_DOUBLE_EQ(N[2], 0.5);
    faceT6::values(x, N);
    EXPECT_NEAR(N[0], 0.2 * (0.4 - 1.0), 1e-15);
    EXPECT_NEAR(N[1], 0.3 * (0.6 - 1.0), 1e-15);
    EXPECT_NEAR(N[2], 0.5 * (1.0 - 1.0), 1e-15);
    EXPECT_NEAR(N[3], 4 * 0.3 * 0.5, 1e-15);
    EXPECT_NEAR(N[4], 4 * 0.2 * 0.5, 1e-15);
    EXPECT_NEAR(N[5], 4 * 0.2 * 0.3, 1e-15);
    double p[3];
    faceT3::node_position(2, p);
    EXPECT_EQ(p[0], 0.0);
    EXPECT_EQ(p[1], 0.0);
    faceT6::node_position(3, p);  // opposite corner 0: between corners 1 and 2
    EXPECT_EQ(p[0], 0.0);
    EXPECT_EQ(p[1], 0.5);
}

TEST(shape_values, hexa8_and_wedge6_at_hand_points) {
    double N[8], x[3] = {0.5, -0.5, 0.0};
    hexa8::values(x, N);
    // (1 +- 0.5)(1 +- 0.5)(1) / 8
    const double expect[8] = {0.5 * 1.5 / 8, 1.5 * 1.5 / 8, 1.5 * 0.5 / 8, 0.5 * 0.5 / 8,
                              0.5 * 1.5 / 8, 1.5 * 1.5 / 8, 1.5 * 0.5 / 8, 0.5 * 0.5 / 8};
    for (unsigned i = 0; i < 8; ++i) EXPECT_DOUBLE_EQ(N[i], expect[i]) << i;
    double y[3] = {0.25, 0.5, 0.5};
    wedge6::values(y, N);
    EXPECT_DOUBLE_EQ(N[0], 0.25 * 0.25);
    EXPECT_DOUBLE_EQ(N[1], 0.5 * 0.25);
    EXPECT_DOUBLE_EQ(N[2], 0.25 * 0.25);
    EXPECT_DOUBLE_EQ(N[3], 0.25 * 0.75);
    EXPECT_DOUBLE_EQ(N[5], 0.25 * 0.75);
}

TEST(shape_values, face_second_derivatives_by_hand) {
    double d2[9][3], x[3] = {0.3, -0.4, 0.0};
    faceQ4::second_derivatives(x, d2);
    EXPECT_DOUBLE_EQ(d2[0][1], 0.25);
    EXPECT_DOUBLE_EQ(d2[1][1], -0.25);
    EXPECT_DOUBLE_EQ(d2[0][0], 0.0);
    EXPECT_DOUBLE_EQ(d2[0][2], 0.0);
    faceT6::second_derivatives(x, d2);
    // N2 = L(2L - 1): xi-xi 4, xi-eta 4, eta-eta 4; N5 = 4 xi eta: 0, 4, 0
    EXPECT_DOUBLE_EQ(d2[2][0], 4.0);
    EXPECT_DOUBLE_EQ(d2[2][1], 4.0);
    EXPECT_DOUBLE_EQ(d2[2][2], 4.0);
    EXPECT_DOUBLE_EQ(d2[5][0], 0.0);
    EXPECT_DOUBLE_EQ(d2[5][1], 4.0);
    faceQ9::second_derivatives(x, d2);
    // centre node (1 - xi^2)(1 - eta^2): xi-xi = -2 (1 - eta^2)
    EXPECT_DOUBLE_EQ(d2[8][0], -2.0 * (1.0 - 0.16));
    EXPECT_DOUBLE_EQ(d2[8][1], 4.0 * 0.3 * -0.4);
}

TEST(shape_values, pyramid_apex_gives_the_apex_node_only) {
    const double apex[3] = {0.0, 0.0, 1.0};
    double N5[5], N14[14];
    pyramid5::values(apex, N5);
    pyramid14::values(apex, N14);
    for (unsigned i = 0; i < 5; ++i) EXPECT_EQ(N5[i], i == 4 ? 1.0 : 0.0) << i;
    for (unsigned i = 0; i < 14; ++i) EXPECT_EQ(N14[i], i == 4 ? 1.0 : 0.0) << i;
    // gradients there are finite
    double g5[5][3], g14[14][3];
    pyramid5::gradients(apex, g5);
    pyramid14::gradients(apex, g14);
    for (unsigned i = 0; i < 14; ++i)
        for (unsigned k = 0; k < 3; ++k) {
            EXPECT_TRUE(std::isfinite(g14[i][k]));
            if (i < 5) {
                EXPECT_TRUE(std::isfinite(g5[i][k]));
            }
        }
    EXPECT_EQ(g5[4][2], 1.0);
}

TEST(shape_values, pyramid5_is_bilinear_on_the_base) {
    double N[5], x[3] = {0.2, -0.6, 0.0};
    pyramid5::values(x, N);
    EXPECT_DOUBLE_EQ(N[0], 0.25 * 0.8 * 1.6);
    EXPECT_DOUBLE_EQ(N[1], 0.25 * 1.2 * 1.6);
    EXPECT_DOUBLE_EQ(N[2], 0.25 * 1.2 * 0.4);
    EXPECT_DOUBLE_EQ(N[3], 0.25 * 0.8 * 0.4);
    EXPECT_DOUBLE_EQ(N[4], 0.0);
}

TEST(shape_values, closed_forms_are_zero_past_the_last_node) {
    const double x[3] = {0.1, 0.2, 0.3};
    double g[3] = {1.0, 1.0, 1.0};
    EXPECT_EQ(tetra10::value(10, x), 0.0);
    EXPECT_EQ(pyramid5::value(5, x), 0.0);
    EXPECT_EQ(pyramid14::value(14, x), 0.0);
    EXPECT_EQ(wedge18::value(18, x), 0.0);
    EXPECT_EQ(hexa27::value(27, x), 0.0);
    hexa27::gradient(99, x, g);
    EXPECT_EQ(g[0] + g[1] + g[2], 0.0);
    g[0] = 1.0;
    pyramid14::gradient(14, x, g);
    EXPECT_EQ(g[0] * g[0] + g[1] * g[1] + g[2] * g[2], 0.0);
}

// --- node tables of an element ----------------------------------------------------

TYPED_TEST(shape_test, node_DOF_table_forms_agree) {
    using S = TypeParam;
    unsigned column[S::nbr_nodes];
    for (unsigned i = 0; i < S::nbr_nodes; ++i) column[i] = 1000u - 37u * i;
    node_DOF_table<S> a, b;
    std::memset(static_cast<void*>(a.data()), 0xFF, sizeof(a));
    std::memset(static_cast<void*>(b.data()), 0x00, sizeof(b));
    build_node_DOF_table<S>(column, a, true);
    build_node_DOF_table<S>(column, b, false);
    for (unsigned i = 0; i < S::nbr_nodes; ++i) {
        EXPECT_EQ(a[i].DOF_base, column[i] * 9u);
        EXPECT_EQ(a[i].node, i);
        EXPECT_EQ(b[i].DOF_base, a[i].DOF_base);
        EXPECT_EQ(b[i].node, a[i].node);
        EXPECT_EQ(std::memcmp(&a[i].coefs, &b[i].coefs, sizeof(a[i].coefs)), 0) << i;
        EXPECT_EQ(std::memcmp(&a[i].coefs, &S::nodes[i], sizeof(a[i].coefs)), 0) << i;
    }
}
