// A solid mesh in a whole linear static run: a distorted unit block with symmetry
// supports, stretched by a prescribed displacement of one face, gives the exact
// uniaxial solution u = (d x, -nu d y, -nu d z) whatever the shape.
#include <gtest/gtest.h>

#include <cmath>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/loads_mgr.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_static_linear.h>

#include "tests/elements/test_mesh_utils.h"

namespace orv {
namespace test {
namespace {

// block_face: the pulled face is also blocked in the DOF table, which must not change
// the result: a prescribed value counts on a blocked DOF.
template <class Shape>
void uniaxial_block(unsigned threads, bool block_face = false) {
    const double E = 200.0, nu = 0.3, d = 0.01;
    fem::context ctx;
    ctx.set_max_threads(threads);
    Ptr<core::law_solid_StVenant> law = make_law(E, nu);
    engine_handle h(law.get());
    fem::model_solid_lin physics(h);
    test_mesh m = make_patch<Shape>(2, 0.5, 0.4);  // the unit cube, interior nodes moved
    fem::numerical_model_stiff_lin model(ctx, physics, m.conn, elfes::element_type_of<Shape>);
    ASSERT_TRUE(model.is_valid());
    const unsigned nn = static_cast<unsigned>(m.pos.cols());
    fem::DOFs_mgr DOFs(nn, true);
    for (unsigned node = 0; node < nn; ++node)
        for (unsigned c = 0; c < 3; ++c)
            if (m.keys[node][c] == 0 || (block_face && c == 0 && m.keys[node][0] == m.extent)) {
                ASSERT_EQ(DOFs.set(node * 9 + c, false), fem::no_error);
            }
    dense2D<double> pos;
    ASSERT_TRUE(pos.copy(m.pos));
    fem::problem_data problem(ctx, pos, DOFs, model.ID(), 1);
    fem::loads_mgr loads = problem.get_loads_mgr(0);
    for (unsigned node = 0; node < nn; ++node)
        if (m.keys[node][0] == m.extent) {
            ASSERT_EQ(loads.record_DOF_prescribed_value(node * 9, d), fem::no_error);
        }
    fem::solver_static_linear solver;
    fem::solver_static_linear::data_type data(problem);
    solver.run(data);
    ASSERT_EQ(data.error_code, 0) << data.error_msg;
    double worst = 0.0;
    core::DOF_vector Us = make_U(m.pos, [](const double*, double* u) { u[0] = u[1] = u[2] = 0.0; });
    for (unsigned node = 0; node < nn; ++node) {
        const double exact[3] = {d * m.pos(0, node), -nu * d * m.pos(1, node), -nu * d * m.pos(2, node)};
        for (unsigned c = 0; c < 3; ++c) {
            double u = 0.0;
            if (data.U.get_val(node * 9 + c, 0, u) != fem::no_error) continue;  // a support may be absent
            worst = std::max(worst, std::fabs(u - exact[c]));
            *Us.find(node * 9 + c) = u;
        }
    }
    EXPECT_LT(worst, 1e-10);
    // the model's energy of the solution: E d^2 / 2 on the unit volume
    core::assembly_args args;
    args.pos = &m.pos;
    args.U = &Us;
    ASSERT_EQ(model.engine()->assemble_matrix(1, args), 0);
    EXPECT_NEAR(args.accumulators[0], 0.5 * E * d * d, 1e-12);
}

TEST(mesh_solve, uniaxial_block_hexa8) { uniaxial_block<elfes::hexa8>(1); }
TEST(mesh_solve, uniaxial_block_tetra10_two_threads) { uniaxial_block<elfes::tetra10>(2); }
TEST(mesh_solve, uniaxial_block_pyramid5) { uniaxial_block<elfes::pyramid5>(1); }
TEST(mesh_solve, uniaxial_block_prescribed_on_blocked_DOFs) { uniaxial_block<elfes::hexa8>(1, true); }

}  // namespace
}  // namespace test
}  // namespace orv
