// Integration rules: reference measures, exactness on monomials (and failure one
// degree higher, so that the degree is the one claimed), identifiers and point order.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "elements/local_points_set.h"
#include "reference_domains.h"

using namespace elfes;
using namespace elements_test;

namespace {

double pw(double x, unsigned a) { return std::pow(x, int(a)); }

// Largest |rule - exact| over the monomials x^a y^b z^c with a + b + c == degree.
template <class PointAt>
double worst_error(unsigned size, unsigned dim, unsigned degree, PointAt point_at,
                   const std::function<double(unsigned, unsigned, unsigned)>& exact) {
    double worst = 0.0;
    for (unsigned a = 0; a <= degree; ++a)
        for (unsigned b = 0; b <= (dim > 1 ? degree - a : 0); ++b) {
            const unsigned c = degree - a - b;
            if (dim == 1 && (b != 0 || c != 0)) continue;
            if (dim == 2 && c != 0) continue;
            double sum = 0.0;
            for (unsigned i = 0; i < size; ++i) {
                const local_point p = point_at(i);
                sum += p.weight * pw(p.coord[0], a) * pw(p.coord[1], b) * pw(p.coord[2], c);
            }
            worst = std::max(worst, std::fabs(sum - exact(a, b, c)));
        }
    return worst;
}

// Exact up to `degree` included, not exact at degree + 1.
template <class PointAt>
void expect_degree(unsigned size, unsigned dim, unsigned degree, PointAt point_at,
                   const std::function<double(unsigned, unsigned, unsigned)>& exact, const char* what) {
    for (unsigned d = 0; d <= degree; ++d)
        EXPECT_LT(worst_error(size, dim, d, point_at, exact), 2e-14) << what << " degree " << d;
    EXPECT_GT(worst_error(size, dim, degree + 1, point_at, exact), 1e-6)
        << what << " is exact beyond degree " << degree;
}

double sum_weights(unsigned size, const std::function<local_point(unsigned)>& point_at) {
    double w = 0.0;
    for (unsigned i = 0; i < size; ++i) w += point_at(i).weight;
    return w;
}

}  // namespace

// The rules of one family: measure, exactness degree, flat start and identifiers.
struct rule_family {
    const char* name;
    unsigned dim, ID_base;
    double measure;
    std::vector<std::array<unsigned, 3>> rules;  // size, degree, start
    local_point (*point)(unsigned n, unsigned i);
    unsigned (*start)(unsigned n);
    bool (*is_rule)(unsigned n);
    double (*exact)(unsigned a, unsigned b, unsigned c);
};

class gauss_family : public ::testing::TestWithParam<rule_family> {};

TEST_P(gauss_family, measure_degree_start_and_identifiers) {
    const rule_family& f = GetParam();
    for (const auto& r : f.rules) {
        const unsigned n = r[0];
        auto at = [&](unsigned i) { return f.point(n, i); };
        EXPECT_TRUE(f.is_rule(n)) << f.name << n;
        EXPECT_EQ(f.start(n), r[2]) << f.name << n;
        EXPECT_NEAR(sum_weights(n, at), f.measure, 4e-15) << f.name << n;
        expect_degree(n, f.dim, r[1], at, f.exact, f.name);
        for (unsigned i = 0; i < n; ++i) EXPECT_EQ(at(i).ID, f.ID_base + i) << f.name << n;
    }
}

INSTANTIATE_TEST_SUITE_P(
    rules, gauss_family,
    ::testing::Values(rule_family{"edge",
                                  1,
                                  100,
                                  2.0,
                                  {{1, 1, 0}, {2, 3, 1}, {3, 5, 3}, {4, 7, 6}, {5, 9, 10}, {6, 11, 15}},
                                  &Gauss_edge::point,
                                  &Gauss_edge::start,
                                  &Gauss_edge::is_rule,
                                  [](unsigned a, unsigned, unsigned) { return edge_integral(a); }},
                      rule_family{"triangle",
                                  2,
                                  200,
                                  0.5,
                                  {{1, 1, 0}, {3, 2, 1}, {4, 3, 4}, {6, 4, 8}, {7, 5, 14}},
                                  &Gauss_faceT::point,
                                  &Gauss_faceT::start,
                                  &Gauss_faceT::is_rule,
                                  [](unsigned a, unsigned b, unsigned) { return triangle_integral(a, b); }},
                      rule_family{"tetra",
                                  3,
                                  400,
                                  1.0 / 6.0,
                                  {{1, 1, 0}, {4, 2, 1}, {5, 3, 5}, {11, 4, 10}},
                                  &Gauss_tetra::point,
                                  &Gauss_tetra::start,
                                  &Gauss_tetra::is_rule,
                                  [](unsigned a, unsigned b, unsigned c) { return tetra_integral(a, b, c); }},
                      rule_family{"pyramid",
                                  3,
                                  500,
                                  4.0 / 3.0,
                                  {{1, 1, 0}, {8, 3, 1}, {27, 5, 9}},
                                  &Gauss_pyramid::point,
                                  &Gauss_pyramid::start,
                                  &Gauss_pyramid::is_rule,
                                  [](unsigned a, unsigned b, unsigned c) { return pyramid_integral(a, b, c); }}),
    [](const ::testing::TestParamInfo<rule_family>& info) { return std::string(info.param.name); });

TEST(gauss_edge, flat_table_order_centre_first_then_pairs) {
    EXPECT_EQ(Gauss_edge::point(3, 0).coord[0], 0.0);
    EXPECT_EQ(Gauss_edge::point(3, 1).coord[0], -0.774596669241483);
    EXPECT_EQ(Gauss_edge::point(3, 2).coord[0], 0.774596669241483);
    EXPECT_EQ(Gauss_edge::point(3, 0).weight, 0.888888888888889);
    EXPECT_EQ(Gauss_edge::point(4, 0).coord[0], -0.339981043584856);
    EXPECT_EQ(Gauss_edge::point(4, 3).coord[0], 0.861136311594053);
    EXPECT_EQ(Gauss_edge::point(5, 3).coord[0], -0.906179845938664);
    EXPECT_EQ(Gauss_edge::point(6, 5).coord[0], 0.932469514203152);
    // within each rule, |abscissa| does not decrease
    for (unsigned n = 2; n <= 6; ++n)
        for (unsigned i = 1; i < n; ++i)
            EXPECT_LE(std::fabs(Gauss_edge::point(n, i - 1).coord[0]),
                      std::fabs(Gauss_edge::point(n, i).coord[0]) + 1e-15);
}

TEST(gauss_faceT, points_inside_and_printed_constants) {
    for (unsigned n : {1u, 3u, 4u, 6u, 7u}) {
        auto at = [n](unsigned i) { return Gauss_faceT::point(n, i); };
        for (unsigned i = 0; i < n; ++i) {
            EXPECT_GE(at(i).coord[0], 0.0);
            EXPECT_GE(at(i).coord[1], 0.0);
            EXPECT_LE(at(i).coord[0] + at(i).coord[1], 1.0);
        }
    }
    for (unsigned n : {0u, 2u, 5u, 8u}) {
        EXPECT_FALSE(Gauss_faceT::is_rule(n));
        EXPECT_EQ(Gauss_faceT::point(n, 0).weight, 0.0);
    }
    // the 4-point rule starts with its negative centre weight
    EXPECT_EQ(Gauss_faceT::point(4, 0).weight, -0.28125);
    EXPECT_EQ(Gauss_faceT::point(6, 1).coord[0], 0.10810301816807);
    EXPECT_EQ(Gauss_faceT::point(7, 6).coord[1], 0.797426985353088);
}

TEST(gauss_tetra, negative_first_weights) {
    EXPECT_LT(Gauss_tetra::point(5, 0).weight, 0.0);
    EXPECT_LT(Gauss_tetra::point(11, 0).weight, 0.0);
    EXPECT_DOUBLE_EQ(Gauss_tetra::point(5, 0).weight, -0.8 / 6.0);
    EXPECT_FALSE(Gauss_tetra::is_rule(6));
}

TEST(gauss_pyramid, layer_order_and_printed_constants) {
    // layers: xi fastest, minus first
    const local_point p1 = Gauss_pyramid::point(8, 1), p2 = Gauss_pyramid::point(8, 2);
    EXPECT_EQ(p1.coord[0], 0.506616303349787);
    EXPECT_EQ(p1.coord[1], -0.506616303349787);
    EXPECT_EQ(p2.coord[0], -0.506616303349787);
    EXPECT_EQ(Gauss_pyramid::point(8, 4).coord[2], 0.544151844011225);
    // 27 points: centre of the middle layer carries s of that layer
    const local_point c = Gauss_pyramid::point(27, 13);
    EXPECT_EQ(c.coord[0], 0.0);
    EXPECT_EQ(c.coord[1], 0.0);
    EXPECT_EQ(c.coord[2], 0.347003766038352);
    EXPECT_DOUBLE_EQ(c.weight, 0.0866644558576984 * 4.0 / 3.0);
    EXPECT_DOUBLE_EQ(Gauss_pyramid::point(27, 1).weight, 0.0581986522462543 * 4.0 / 3.0);
}

TEST(gauss_products, faceQ_order_degree_and_identifiers) {
    for (unsigned n1 = 1; n1 <= 6; ++n1)
        for (unsigned n2 = 1; n2 <= 6; ++n2) {
            const unsigned n = n1 * n2;
            auto at = [n1, n2](unsigned i) { return Gauss_faceQ::point(n1, n2, i); };
            EXPECT_NEAR(sum_weights(n, at), 4.0, 4e-14);
            for (unsigned i = 0; i < n; ++i) {
                const local_point p = at(i);
                EXPECT_EQ(p.ID, 300 + i);
                EXPECT_EQ(p.coord[0], Gauss_edge::point(n1, i % n1).coord[0]);
                EXPECT_EQ(p.coord[1], Gauss_edge::point(n2, i / n1).coord[0]);
                EXPECT_EQ(p.coord[2], 0.0);
            }
            // exact for xi^a eta^b with a < 2 n1 and b < 2 n2, not for a = 2 n1
            for (unsigned a = 0; a <= 2 * n1; ++a)
                for (unsigned b = 0; b < 2 * n2; ++b) {
                    double s = 0.0;
                    for (unsigned i = 0; i < n; ++i) s += at(i).weight * pw(at(i).coord[0], a) * pw(at(i).coord[1], b);
                    const double e = edge_integral(a) * edge_integral(b);
                    if (a < 2 * n1) {
                        EXPECT_NEAR(s, e, 2e-14);
                    } else if (b % 2 == 0) {
                        EXPECT_GT(std::fabs(s - e), 1e-6);
                    }
                }
        }
}

TEST(gauss_products, hexa_order_degree_and_identifiers) {
    const unsigned cases[][3] = {{1, 1, 1}, {2, 2, 2}, {3, 3, 3}, {1, 2, 3}, {3, 1, 2}, {2, 4, 1}};
    for (const auto& c : cases) {
        const unsigned n1 = c[0], n2 = c[1], n3 = c[2], n = n1 * n2 * n3;
        auto at = [=](unsigned i) { return Gauss_hexa::point(n1, n2, n3, i); };
        EXPECT_NEAR(sum_weights(n, at), 8.0, 8e-14);
        for (unsigned i = 0; i < n; ++i) {
            const local_point p = at(i);
            EXPECT_EQ(p.ID, 700 + i);
            EXPECT_EQ(p.coord[0], Gauss_edge::point(n1, i % n1).coord[0]);
            EXPECT_EQ(p.coord[1], Gauss_edge::point(n2, (i / n1) % n2).coord[0]);
            EXPECT_EQ(p.coord[2], Gauss_edge::point(n3, i / (n1 * n2)).coord[0]);
        }
        for (unsigned a = 0; a < 2 * n1; ++a)
            for (unsigned b = 0; b < 2 * n2; ++b)
                for (unsigned d = 0; d <= 2 * n3; ++d) {
                    double s = 0.0;
                    for (unsigned i = 0; i < n; ++i) {
                        const local_point p = at(i);
                        s += p.weight * pw(p.coord[0], a) * pw(p.coord[1], b) * pw(p.coord[2], d);
                    }
                    const double e = edge_integral(a) * edge_integral(b) * edge_integral(d);
                    if (d < 2 * n3) {
                        EXPECT_NEAR(s, e, 4e-14);
                    } else if (a % 2 == 0 && b % 2 == 0) {
                        EXPECT_GT(std::fabs(s - e), 1e-6);
                    }
                }
    }
}

TEST(gauss_products, wedge_order_degree_and_identifiers) {
    const unsigned tri_sizes[5] = {1, 3, 4, 6, 7}, tri_degrees[5] = {1, 2, 3, 4, 5};
    for (unsigned ne = 1; ne <= 4; ++ne)
        for (unsigned r = 0; r < 5; ++r) {
            const unsigned nt = tri_sizes[r], n = ne * nt;
            auto at = [=](unsigned i) { return Gauss_wedge::point(ne, nt, i); };
            EXPECT_NEAR(sum_weights(n, at), 1.0, 1e-14);
            for (unsigned i = 0; i < n; ++i) {
                const local_point p = at(i);
                EXPECT_EQ(p.ID, 500 + i);
                EXPECT_EQ(p.coord[0], Gauss_faceT::point(nt, i % nt).coord[0]);
                EXPECT_EQ(p.coord[1], Gauss_faceT::point(nt, i % nt).coord[1]);
                EXPECT_EQ(p.coord[2], Gauss_edge::point(ne, i / nt).coord[0]);
            }
            for (unsigned a = 0; a <= tri_degrees[r]; ++a)
                for (unsigned b = 0; a + b <= tri_degrees[r]; ++b)
                    for (unsigned d = 0; d < 2 * ne; ++d) {
                        double s = 0.0;
                        for (unsigned i = 0; i < n; ++i) {
                            const local_point p = at(i);
                            s += p.weight * pw(p.coord[0], a) * pw(p.coord[1], b) * pw(p.coord[2], d);
                        }
                        EXPECT_NEAR(s, triangle_integral(a, b) * edge_integral(d), 2e-14);
                    }
        }
}

TEST(local_points_sets, tables_equal_the_rules) {
    using S1 = local_points_set<Gauss_tetra, 11>;
    using S2 = local_points_set_prod2<Gauss_wedge, 3, 6>;
    using S3 = local_points_set_prod3<Gauss_hexa, 3, 3, 3>;
    static_assert(S1::size == 11 && S2::size == 18 && S3::size == 27);
    static_assert(S1::point(10).ID == 410 && S2::point(17).ID == 517 && S3::point(26).ID == 726);
    static_assert(S1::point(0).weight < 0.0, "the 11-point rule has a negative first weight");
    for (unsigned i = 0; i < S1::size; ++i) {
        EXPECT_EQ(S1::point(i).weight, Gauss_tetra::point(11, i).weight);
        EXPECT_EQ(S1::point(i).coord[2], Gauss_tetra::point(11, i).coord[2]);
    }
    for (unsigned i = 0; i < S2::size; ++i) EXPECT_EQ(S2::point(i).coord[2], Gauss_wedge::point(3, 6, i).coord[2]);
    for (unsigned i = 0; i < S3::size; ++i) EXPECT_EQ(S3::point(i).weight, Gauss_hexa::point(3, 3, 3, i).weight);
}

TEST(local_points_sets, points_outside_rules) {
    constexpr local_point t(on_triangle, 2, 0.25, 0.5, 0.0);
    constexpr local_point f(on_face, 3, 1.0, -0.5, 0.5);
    static_assert(t.ID == 202 && f.ID == 353);
    EXPECT_EQ(t.weight, 0.25);
    EXPECT_EQ(f.coord[0], -0.5);
    EXPECT_EQ(f.coord[2], 0.0);
}
