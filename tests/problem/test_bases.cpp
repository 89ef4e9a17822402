// Local bases: known bases at known points, orthonormality, transformations, registry.
#include <gtest/gtest.h>

#include <cmath>

#include <orv/fem/bases_mgr.h>
#include <orv/fem/context.h>

#include "problem/bases_mgr.h"

namespace {

using orv::matrix_fixed;
using orv::symmetric_fixed;
using orv::vector_fixed;
namespace fem = orv::fem;
namespace core = orv::core;

typedef vector_fixed<double, 3> vec3;
typedef matrix_fixed<double, 3, 3> mat3;

constexpr double tol = 1e-13;

void expect_column(const mat3& R, std::size_t j, const vec3& v) {
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(R(i, j), v[i], tol) << "column " << j << " row " << i;
}

double det(const mat3& R) {
    return R(0, 0) * (R(1, 1) * R(2, 2) - R(1, 2) * R(2, 1)) - R(0, 1) * (R(1, 0) * R(2, 2) - R(1, 2) * R(2, 0)) +
           R(0, 2) * (R(1, 0) * R(2, 1) - R(1, 1) * R(2, 0));
}

// R' R = I and a right-handed triad.
void expect_orthonormal(const mat3& R, double tolerance = 1e-12) {
    const mat3 G = R.transpose() * R;
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j) EXPECT_NEAR(G(i, j), i == j ? 1.0 : 0.0, tolerance);
    EXPECT_NEAR(det(R), 1.0, tolerance);
}

TEST(bases_cylindrical, radial_circumferential_axial_at_known_points) {
    core::cylindrical_basis b(vec3{0, 0, 0}, vec3{0, 0, 1});
    mat3 R;
    b.get_basis(vec3{2, 0, 0}, R);
    expect_column(R, 0, vec3{1, 0, 0});
    expect_column(R, 1, vec3{0, 1, 0});
    expect_column(R, 2, vec3{0, 0, 1});

    // Height along the axis does not matter; e2 = axis x e1.
    b.get_basis(vec3{0, 3, 5}, R);
    expect_column(R, 0, vec3{0, 1, 0});
    expect_column(R, 1, vec3{-1, 0, 0});
    expect_column(R, 2, vec3{0, 0, 1});

    // An origin off zero and an axis along x of length 4 (normalised).
    core::cylindrical_basis c(vec3{1, 1, 1}, vec3{4, 0, 0});
    EXPECT_EQ(c.axis(), (vec3{1, 0, 0}));
    c.get_basis(vec3{-7, 1, 1 + 2.5}, R);
    expect_column(R, 0, vec3{0, 0, 1});
    expect_column(R, 1, vec3{0, -1, 0});
    expect_column(R, 2, vec3{1, 0, 0});
}

TEST(bases_cylindrical, on_axis_and_degenerate_axis) {
    // On the axis: e1 along the first smallest component of the axis.
    core::cylindrical_basis b(vec3{0, 0, 0}, vec3{0, 0, 1});
    mat3 R;
    b.get_basis(vec3{0, 0, 7}, R);
    expect_column(R, 0, vec3{1, 0, 0});
    expect_column(R, 1, vec3{0, 1, 0});

    // A zero axis is stored as (0, 0, 1).
    core::cylindrical_basis z(vec3{0, 0, 0}, vec3{0, 0, 0});
    EXPECT_EQ(z.axis(), (vec3{0, 0, 1}));
    // Any other axis is made unit; one of exactly unit length is kept bit for bit.
    core::cylindrical_basis u(vec3{0, 0, 0}, vec3{0, 3, 4});
    EXPECT_NEAR(u.axis()[1], 0.6, 1e-15);
    EXPECT_NEAR(u.axis()[2], 0.8, 1e-15);
    core::cylindrical_basis v(vec3{0, 0, 0}, vec3{0, -1, 0});
    EXPECT_EQ(v.axis(), (vec3{0, -1, 0}));

    // An oblique axis, point on it: still an orthonormal triad with e3 the axis.
    core::cylindrical_basis o(vec3{1, 2, 3}, vec3{1, 2, 2});
    o.get_basis(vec3{1 + 2, 2 + 4, 3 + 4}, R);
    expect_orthonormal(R);
    expect_column(R, 2, vec3{1.0 / 3, 2.0 / 3, 2.0 / 3});
}

TEST(bases_spherical, known_points_centre_and_axis) {
    core::spherical_basis b(vec3{0, 0, 0}, vec3{0, 0, 1});
    mat3 R;
    // On the equator along x: e3 radial, e1 = z x x = y, e2 = e3 x e1 = z.
    b.get_basis(vec3{3, 0, 0}, R);
    expect_column(R, 0, vec3{0, 1, 0});
    expect_column(R, 1, vec3{0, 0, 1});
    expect_column(R, 2, vec3{1, 0, 0});

    // A point at 45 degrees of latitude in the x-z plane.
    const double s = 1.0 / std::sqrt(2.0);
    b.get_basis(vec3{2, 0, 2}, R);
    expect_column(R, 2, vec3{s, 0, s});
    expect_column(R, 0, vec3{0, 1, 0});
    expect_column(R, 1, vec3{-s, 0, s});

    // The centre and a point of the axis line still give orthonormal triads.
    b.get_basis(vec3{0, 0, 0}, R);
    expect_orthonormal(R);
    b.get_basis(vec3{0, 0, -4}, R);
    expect_orthonormal(R);
    expect_column(R, 2, vec3{0, 0, -1});
}

TEST(bases_cartesian, gram_schmidt_in_column_order) {
    // Columns (2, 0, 0), (1, 1, 0), (1, 1, 1) give the identity.
    core::cartesian_basis b(mat3{2, 1, 1,  //
                                 0, 1, 1,  //
                                 0, 0, 1});
    mat3 R;
    b.get_basis(vec3{5, 6, 7}, R);
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j) EXPECT_NEAR(R(i, j), i == j ? 1.0 : 0.0, tol);

    // The first column keeps its direction, the second its part normal to it.
    core::cartesian_basis c(mat3{1, 0, 0,  //
                                 1, 1, 0,  //
                                 0, 0, 3});
    c.get_basis(vec3{0, 0, 0}, R);
    const double s = 1.0 / std::sqrt(2.0);
    expect_column(R, 0, vec3{s, s, 0});
    expect_column(R, 1, vec3{-s, s, 0});
    expect_column(R, 2, vec3{0, 0, 1});

    // Degenerate input still gives an orthonormal triad.
    core::cartesian_basis d(mat3{0, 0, 0, 0, 0, 0, 0, 0, 0});
    d.get_basis(vec3{0, 0, 0}, R);
    expect_orthonormal(R);
    core::cartesian_basis e(mat3{1, 2, 0,  //
                                 1, 2, 0,  //
                                 1, 2, 0});
    e.get_basis(vec3{0, 0, 0}, R);
    expect_orthonormal(R);
}

TEST(bases_all, orthonormal_everywhere_and_round_trips) {
    core::bases_mgr mgr;
    const double c = std::cos(0.7), s = std::sin(0.7);
    ASSERT_EQ(mgr.create_cartesian(mat3{c, -s, 0, s, c, 0, 0, 0, 1}), 0u);
    ASSERT_EQ(mgr.create_cylindrical(vec3{1, -2, 0.5}, vec3{0.3, -1.1, 2.0}), 1u);
    ASSERT_EQ(mgr.create_spherical(vec3{-1, 0, 2}, vec3{1, 1, 0}), 2u);
    EXPECT_EQ(mgr.size(), 3u);

    const vec3 points[] = {{0.3, 0.2, -1.7}, {4, -3, 2}, {-2.5, 0.1, 0.9}, {10, 10, -10}};
    const vec3 v0{1.5, -0.25, 3.0};
    symmetric_fixed<double, 3> S0;
    S0(0, 0) = 4;
    S0(1, 1) = -1;
    S0(2, 2) = 2.5;
    S0(1, 0) = 0.5;
    S0(2, 0) = -1.25;
    S0(2, 1) = 3;
    for (std::uint32_t ID = 0; ID < 3; ++ID) {
        const core::basis_base* b = mgr.get(ID);
        ASSERT_NE(b, nullptr);
        for (const vec3& p : points) {
            mat3 R;
            b->get_basis(p, R);
            expect_orthonormal(R);

            // Components on the basis vectors, and back.
            vec3 v = v0;
            b->to_local(p, v);
            for (std::size_t i = 0; i < 3; ++i)
                EXPECT_NEAR(v[i], R(0, i) * v0[0] + R(1, i) * v0[1] + R(2, i) * v0[2], 1e-12);
            b->from_local(p, v);
            for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(v[i], v0[i], 1e-12);

            // A tensor: S_local(i, j) = e_i . S e_j.
            symmetric_fixed<double, 3> L = S0;
            b->to_local(p, L);
            for (std::size_t i = 0; i < 3; ++i)
                for (std::size_t j = 0; j < 3; ++j) {
                    double e = 0.0;
                    for (std::size_t k = 0; k < 3; ++k)
                        for (std::size_t l = 0; l < 3; ++l) e += R(k, i) * S0(k, l) * R(l, j);
                    EXPECT_NEAR(L(i, j), e, 1e-12);
                }
        }
    }
    mgr.clear();
    EXPECT_EQ(mgr.size(), 0u);
    EXPECT_EQ(mgr.get(0), nullptr);
}

TEST(bases_mgr_handle, shares_the_context_registry) {
    fem::context ctx;
    fem::bases_mgr a = ctx.the_bases_mgr();
    fem::bases_mgr b(ctx);
    ASSERT_TRUE(a.is_valid());
    EXPECT_EQ(a.get_w(), b.get_w());
    EXPECT_EQ(a.create_cylindrical(vec3{0, 0, 0}, vec3{0, 0, 1}), 0u);
    EXPECT_EQ(b.create_spherical(vec3{0, 0, 0}, vec3{0, 0, 1}), 1u);
    EXPECT_EQ(a.size(), 2u);

    mat3 R;
    EXPECT_EQ(a.get_basis(0, vec3{2, 0, 0}, R), fem::no_error);
    expect_column(R, 1, vec3{0, 1, 0});

    // An ID past the end: error_data, identity, nothing changed.
    vec3 w{1, 2, 3};
    EXPECT_EQ(a.get_basis(2, vec3{2, 0, 0}, R), fem::error_data);
    EXPECT_EQ(R(0, 0), 1.0);
    EXPECT_EQ(R(1, 0), 0.0);
    EXPECT_EQ(a.to_local(7, vec3{0, 0, 0}, w), fem::error_data);
    EXPECT_EQ(w, (vec3{1, 2, 3}));
    symmetric_fixed<double, 3> S(1.0);
    EXPECT_EQ(a.to_local(2, vec3{0, 0, 0}, S), fem::error_data);

    b.clear();
    EXPECT_EQ(a.size(), 0u);

    // An empty handle answers without crashing.
    fem::bases_mgr none;
    EXPECT_FALSE(none.is_valid());
    EXPECT_EQ(none.create_cartesian(mat3{}), 0xFFFFFFFFu);
    EXPECT_EQ(none.size(), 0u);
    EXPECT_EQ(none.get_basis(0, vec3{}, R), fem::error_data);
    none.clear();
}

}  // namespace
