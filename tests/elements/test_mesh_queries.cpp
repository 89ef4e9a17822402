// Queries of a solid mesh beside its matrices: the nodal projection of point values,
// with and without recomputing them, and the element basis on deformed positions.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/elements/test_mesh_utils.h"

namespace orv {
namespace test {
namespace {

// Two unit cubes along x.
test_mesh two_cubes() {
    test_mesh m;
    m.pos.resize(3, 12);
    for (unsigned k = 0; k < 3; ++k) {
        const double yz[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
        for (unsigned c = 0; c < 4; ++c) {
            m.pos(0, 4 * k + c) = k;
            m.pos(1, 4 * k + c) = yz[c][0];
            m.pos(2, 4 * k + c) = yz[c][1];
        }
    }
    m.conn.resize(8, 2);
    for (unsigned e = 0; e < 2; ++e) {
        const unsigned a = 4 * e, b = 4 * e + 4;
        const unsigned nodes[8] = {a, b, b + 1, a + 1, a + 3, b + 3, b + 2, a + 2};
        for (unsigned i = 0; i < 8; ++i) m.conn(i, e) = nodes[i];
    }
    return m;
}

double projected_total(core::numerical_model_base& model, core::element_workspace& ws, std::uint32_t e,
                       bool recompute) {
    ws.element_ID = e;
    EXPECT_EQ(model.compute_projection(0, 0, recompute, ws), 0);
    double sum = 0.0;
    for (double v : ws.vector) sum += v;
    return sum;
}

TEST(mesh_projection, recompute_flag_chooses_between_kept_and_fresh_point_values) {
    const double E = 1000.0, nu = 0.25, eps = 1e-3;
    fem::context ctx;
    fem::model_solid_lin physics(engine_handle(make_law(E, nu).get()));
    test_mesh m = two_cubes();
    fem::numerical_model_stiff_lin model(ctx, physics, m.conn, fem::FE_hexa8);
    ASSERT_TRUE(model.is_valid());
    core::DOF_vector U1 = make_U(m.pos, [&](const double* x, double* u) { u[0] = eps * x[0], u[1] = u[2] = 0; });
    core::DOF_vector U2 = make_U(m.pos, [&](const double* x, double* u) { u[0] = 2 * eps * x[0], u[1] = u[2] = 0; });
    const double S11 = lame(E, nu).lambda * eps + 2 * lame(E, nu).mu * eps;  // on a unit volume

    core::assembly_args args;
    args.pos = &m.pos;
    args.U = &U1;
    core::element_workspace ws(args, model.ID());
    ws.element_ID = 0;
    ASSERT_EQ(model.engine()->compute_matrix(1, ws), 0);
    ws.U = &U2;
    // without recomputing: the stresses of the last stiffness computation (at U1)
    EXPECT_NEAR(projected_total(*model.engine(), ws, 0, false), S11, 1e-12);
    // recomputed at the workspace's displacements (U2), levels and flags restored
    ws.matrix_level = 1;
    ws.vector_level = 1;
    ws.flags[0] = 1;
    EXPECT_NEAR(projected_total(*model.engine(), ws, 0, true), 2 * S11, 1e-12);
    EXPECT_EQ(ws.matrix_level, 1);
    EXPECT_EQ(ws.vector_level, 1);
    EXPECT_EQ(ws.flags[0], 1);
    // another element has no kept values: they are computed
    EXPECT_NEAR(projected_total(*model.engine(), ws, 1, false), 2 * S11, 1e-12);
}

TEST(mesh_element_basis, follows_a_rigid_rotation_given_as_displacements) {
    fem::context ctx;
    fem::model_solid_lin physics(engine_handle(make_law(1000.0, 0.25).get()));
    test_mesh m = two_cubes();
    fem::numerical_model_stiff_lin model(ctx, physics, m.conn, fem::FE_hexa8);
    matrix_fixed<double, 3, 3> R0, R1;
    ASSERT_EQ(model.get_element_basis(m.pos, 1, R0), fem::no_error);
    // a quarter turn about z: (x, y, z) -> (-y, x, z), as displacements
    dense2D<double> U(9 * m.pos.cols(), 1, 0.0);
    for (unsigned n = 0; n < m.pos.cols(); ++n) {
        U(9 * n + 0, 0) = -m.pos(1, n) - m.pos(0, n);
        U(9 * n + 1, 0) = m.pos(0, n) - m.pos(1, n);
    }
    ASSERT_EQ(model.get_element_basis(m.pos, 1, U, 0, R1), fem::no_error);
    for (unsigned k = 0; k < 3; ++k) {  // each axis turned: (a, b, c) -> (-b, a, c)
        EXPECT_NEAR(R1(0, k), -R0(1, k), 1e-14);
        EXPECT_NEAR(R1(1, k), R0(0, k), 1e-14);
        EXPECT_NEAR(R1(2, k), R0(2, k), 1e-14);
    }
    EXPECT_EQ(model.get_element_basis(m.pos, 1, U, 1, R1), fem::error_data);  // no such column
}

}  // namespace
}  // namespace test
}  // namespace orv
