// A law's material frame in every continuum physics: an orthotropic material whose
// axes are turned by a basis must give the element matrices (and, finite, the internal
// forces) of the same material written with its constants in the global axes.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>

#include <orv/fem/bases_mgr.h>
#include <orv/fem/law_membrane_stiff.h>
#include <orv/fem/law_solid_stiff.h>
#include <orv/fem/model_axi3d.h>
#include <orv/fem/model_membrane.h>
#include <orv/fem/model_plane_strain.h>

#include "laws/law_solid_stiff.h"
#include "tests/elements/test_mesh_utils.h"

namespace orv {
namespace test {
namespace {

dense1D<double> list(std::initializer_list<double> v) {
    dense1D<double> d;
    for (double x : v) d.push_back(x);
    return d;
}

// Material constants along axes 1, 2, 3, and the same material with 1 and 2 swapped.
const double E1 = 150000, E2 = 9000, E3 = 8000, nu12 = 0.3, nu13 = 0.28, nu23 = 0.45;
const double G12 = 5000, G13 = 4800, G23 = 3100, nu21 = nu12 * E2 / E1;

dense1D<double> solid_data(bool swapped) {
    if (swapped) return list({E2, E1, E3, nu21, nu23, nu13, G12, G23, G13, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    return list({E1, E2, E3, nu12, nu13, nu23, G12, G13, G23, 0, 0, 0, 0, 0, 0, 0, 0, 0});
}

// One element of each family, its nodes off any symmetry.
struct element_case {
    std::string name;
    fem::element_type type;
    dense2D<double> pos;
    dense2D<unsigned int> conn;
};

element_case make_case(const std::string& name, fem::element_type type, std::vector<std::array<double, 3>> nodes) {
    element_case c{name, type, {}, {}};
    c.pos.resize(3, nodes.size());
    c.conn.resize(nodes.size(), 1);
    for (unsigned i = 0; i < nodes.size(); ++i) {
        for (unsigned d = 0; d < 3; ++d) c.pos(d, i) = nodes[i][d];
        c.conn(i, 0) = i;
    }
    return c;
}

// The physics on a law: (kind, law) -> handle, kind 0 small strain, 1 finite.
using physics_maker = std::function<fem::physics_model_base(int finite, const fem::base_class& law)>;

struct frame_case {
    const char* name;
    bool finite;
    physics_maker physics;
    element_case element;
};

// Both laws on one physics: the element matrices (and, with U, the forces) agree.
void expect_same_element(fem::context& ctx, const frame_case& fc, const fem::base_class& turned,
                         const fem::base_class& global) {
    const element_case& e = fc.element;
    auto model_of = [&](const fem::base_class& law, fem::context& c) -> fem::numerical_model_base {
        const fem::physics_model_base ph = fc.physics(fc.finite, law);
        if (fc.finite) return fem::numerical_model_stiff_gnl(c, ph, e.conn, e.type);
        return fem::numerical_model_stiff_lin(c, ph, e.conn, e.type);
    };
    fem::numerical_model_base a = model_of(turned, ctx), b = model_of(global, ctx);
    ASSERT_TRUE(a.engine() && b.engine()) << fc.name;
    // a homogeneous stretch and shear, large enough that the finite terms count
    core::DOF_vector U = make_U(e.pos, [](const double* x, double* u) {
        u[0] = 0.08 * x[0] + 0.05 * x[1] - 0.03 * x[2];
        u[1] = -0.04 * x[0] + 0.06 * x[1] + 0.02 * x[2];
        u[2] = 0.03 * x[0] - 0.02 * x[1] + 0.07 * x[2];
    });
    const core::DOF_vector* none = nullptr;
    for (const core::DOF_vector* u : {none, static_cast<const core::DOF_vector*>(&U)}) {
        element_result ra = compute_element(*a.engine(), e.pos, 0, u), rb = compute_element(*b.engine(), e.pos, 0, u);
        ASSERT_EQ(ra.rc, 0) << fc.name;
        ASSERT_EQ(rb.rc, 0) << fc.name;
        ASSERT_EQ(ra.K.size(), rb.K.size());
        double scale = 0.0;
        for (double v : rb.K) scale = std::fmax(scale, std::fabs(v));
        ASSERT_GT(scale, 0.0);
        for (std::size_t k = 0; k < ra.K.size(); ++k)
            ASSERT_NEAR(ra.K[k], rb.K[k], 1e-9 * scale) << fc.name << " " << k;
        ASSERT_EQ(ra.f.size(), rb.f.size());
        for (std::size_t k = 0; k < ra.f.size(); ++k)
            EXPECT_NEAR(ra.f[k], rb.f[k], 1e-9 * scale) << fc.name << " " << k;
        EXPECT_NEAR(ra.energy, rb.energy, 1e-9 * std::fmax(1.0, std::fabs(rb.energy))) << fc.name;
    }
}

class solid_frame : public ::testing::TestWithParam<int> {};

// Cases: a distorted brick (3-D), a quadrilateral and a six-node triangle in the plane
// y-z (plane strain about x: material axis 1 in the plane, axis 2 along the normal),
// the same in the r-z half plane (axisymmetric, the hoop direction being z).
std::vector<frame_case> solid_cases() {
    const element_case brick = make_case("hexa8", fem::FE_hexa8,
                                         {{0, 0, 0},
                                          {2.1, 0.1, -0.1},
                                          {2.3, 1.8, 0.2},
                                          {-0.2, 1.6, 0},
                                          {0.1, 0.2, 1.9},
                                          {2.0, -0.1, 2.2},
                                          {2.2, 2.0, 1.8},
                                          {0.2, 1.7, 2.1}});
    const element_case quad_yz =
        make_case("faceQ4 yz", fem::FE_faceQ4, {{0.3, 0, 0}, {0.3, 2.2, 0.3}, {0.3, 2.0, 1.9}, {0.3, -0.2, 1.6}});
    const element_case tri6_yz =
        make_case("faceT6 yz", fem::FE_faceT6,
                  {{0.3, 2, 0}, {0.3, 0.1, 1.8}, {0.3, 0, 0}, {0.3, 0.1, 0.9}, {0.3, 0, 0.1}, {0.3, 1.0, 0.8}});
    const element_case quad_rz =
        make_case("faceQ4 rz", fem::FE_faceQ4, {{1.0, 0, 0}, {3.1, 0.2, 0}, {2.9, 2.1, 0}, {1.2, 1.8, 0}});
    auto solid = [](int finite, const fem::base_class& law) -> fem::physics_model_base {
        if (finite) return fem::model_solid_gnl(law);
        return fem::model_solid_lin(law);
    };
    auto plane = [](int finite, const fem::base_class& law) -> fem::physics_model_base {
        if (finite) return fem::model_plane_strain_gnl(law, 0);
        return fem::model_plane_strain_lin(law, 0);
    };
    auto axi = [](int finite, const fem::base_class& law) -> fem::physics_model_base {
        if (finite) return fem::model_axi3d_gnl(law);
        return fem::model_axi3d_lin(law);
    };
    auto torsion = [](int, const fem::base_class& law) -> fem::physics_model_base {
        return fem::model_axi_torsion_lin(law);
    };
    return {{"solid_lin", false, solid, brick},
            {"solid_gnl", true, solid, brick},
            {"plane_strain_lin Q4", false, plane, quad_yz},
            {"plane_strain_gnl Q4", true, plane, quad_yz},
            {"plane_strain_lin T6", false, plane, tri6_yz},
            {"plane_strain_gnl T6", true, plane, tri6_yz},
            {"axi3d_lin", false, axi, quad_rz},
            {"axi3d_gnl", true, axi, quad_rz},
            {"axi_torsion_lin", false, torsion, quad_rz}};
}

TEST_P(solid_frame, turned_orthotropic_law_equals_the_law_in_global_axes) {
    const frame_case fc = solid_cases()[GetParam()];
    fem::context ctx;
    fem::bases_mgr bases = ctx.the_bases_mgr();
    // material axis 1 along global y, axis 2 along -x, axis 3 along z
    const unsigned quarter = bases.create_cartesian(matrix_fixed<double, 3, 3>{0, -1, 0, 1, 0, 0, 0, 0, 1});
    fem::law_solid_orthotropic turned(ctx, solid_data(false), bases, quarter);
    fem::law_solid_orthotropic global(ctx);
    ASSERT_EQ(global.init(solid_data(true)), 0);
    expect_same_element(ctx, fc, turned, global);
}

INSTANTIATE_TEST_SUITE_P(physics, solid_frame, ::testing::Range(0, 9));

// The membrane's material axes are an angle from the element's first axis: at 90
// degrees axis 1 lies along the element's axis 2.
TEST(membrane_frame, quarter_turned_orthotropic_membrane_equals_swapped_constants) {
    fem::context ctx;
    const double t = 0.4;
    fem::law_membrane_orthotropic turned(ctx, list({E1, E2, nu12, G12, 90.0, 0, 0, 0, 0, 0, 0, 0, t}));
    fem::law_membrane_orthotropic swapped(ctx, list({E2, E1, nu21, G12, 0.0, 0, 0, 0, 0, 0, 0, 0, t}));
    auto membrane = [](int finite, const fem::base_class& law) -> fem::physics_model_base {
        if (finite) return fem::model_membrane_gnl(law);
        return fem::model_membrane_lin(law);
    };
    const element_case quad =
        make_case("faceQ4 xy", fem::FE_faceQ4, {{0, 0, 0}, {2.2, 0.3, 0}, {2.0, 1.9, 0}, {-0.2, 1.6, 0}});
    for (bool finite : {false, true}) expect_same_element(ctx, {"membrane", finite, membrane, quad}, turned, swapped);
}

}  // namespace
}  // namespace test
}  // namespace orv

namespace orv {
namespace test {
namespace {

// A law without a frame is in the global axes, while a plane strain model about x
// reports its point values in the plane's axes (y, z, x).
TEST(plane_strain_frame, frameless_law_outputs_stay_in_the_plane_axes) {
    fem::context ctx;
    fem::law_solid_orthotropic global(ctx, solid_data(true));
    fem::model_plane_strain_lin ph(global, 0);
    const element_case quad =
        make_case("faceQ4 yz", fem::FE_faceQ4, {{0.3, 0, 0}, {0.3, 2, 0}, {0.3, 2, 1}, {0.3, 0, 1}});
    fem::numerical_model_stiff_lin model(ctx, ph, quad.conn, quad.type);
    const double e = 1e-3;
    core::DOF_vector U = make_U(quad.pos, [&](const double* x, double* u) { u[0] = u[2] = 0.0, u[1] = e * x[1]; });
    dense2D<double> out;
    ASSERT_EQ(dynamic_cast<core::stiff_mesh_base*>(model.engine())->get_point_values(0, quad.pos, &U, out), 0);
    // stresses of the global axes y, z, x in the plane's slots 0, 1, 2
    core::law_solid_stiff::tangent_type D;
    ASSERT_EQ(global.engine()->get_D(core::law_key(), D), 0);
    for (std::size_t p = 0; p < out.cols(); ++p) {
        EXPECT_NEAR(out(6, p), e, 1e-15);
        for (int k = 1; k < 6; ++k) EXPECT_NEAR(out(6 + k, p), 0.0, 1e-15);
        EXPECT_NEAR(out(0, p), D(1, 1) * e, 1e-9);
        EXPECT_NEAR(out(1, p), D(2, 1) * e, 1e-9);
        EXPECT_NEAR(out(2, p), D(0, 1) * e, 1e-9);
    }
    // the basis of those values: the plane's axes y, z, x as columns
    matrix_fixed<double, 3, 3> R;
    ASSERT_EQ(model.get_local_basis(quad.pos, 0, R), fem::no_error);
    const double expected[3][3] = {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}};
    for (unsigned i = 0; i < 3; ++i)
        for (unsigned k = 0; k < 3; ++k) EXPECT_EQ(R(i, k), expected[i][k]) << i << k;
}

}  // namespace
}  // namespace test
}  // namespace orv
