// The mass meshes: total mass, momentum and kinetic energy of rigid motions on
// distorted patches of every solid shape, the lumped diagonal (exact values and
// positivity where row sums fail), lines, surfaces, axisymmetric rings, bad input.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <orv/fem/law_scalar.h>
#include <orv/fem/model_axi3d_mass.h>
#include <orv/fem/model_line_mass.h>
#include <orv/fem/model_solid_mass.h>
#include <orv/fem/model_surf_mass.h>
#include <orv/fem/numerical_model_mass.h>

#include "elements/numerical_model_mass_mesh.h"
#include "frame/context_type.h"
#include "model/matrix_assembler.h"
#include "model/numerical_models_mgr.h"
#include "tests/elements/test_mesh_utils.h"

namespace orv {
namespace test {
namespace {

constexpr double two_pi = 6.283185307179586;

// A mass mesh of `physics`; the creation code must be `expected`.
fem::numerical_model_mass mass_mesh(fem::context& ctx, const fem::physics_model_base& physics,
                                    const dense2D<unsigned int>& conn, fem::element_type type,
                                    fem::error_type expected = fem::no_error) {
    fem::numerical_model_mass m;
    EXPECT_EQ(m.init(ctx, physics, conn, type), expected);
    EXPECT_EQ(m.is_valid(), expected == fem::no_error);
    return m;
}

// One element's mass matrix (full, on the sorted DOF list) or lumped diagonal.
struct element_mass {
    int rc = 0;
    std::vector<unsigned> ids;
    std::vector<double> M, diag;
    double at(std::size_t i, std::size_t j) const { return M[i * ids.size() + j]; }
};

element_mass compute_mass(core::numerical_model_base& model, const dense2D<double>& pos, std::uint32_t e,
                          int matrix_level) {
    core::assembly_args args;
    args.pos = &pos;
    core::element_workspace ws(args, model.ID());
    ws.matrix_level = matrix_level;
    ws.vector_level = 0;
    ws.element_ID = e;
    element_mass r;
    r.rc = model.compute_matrix(2, ws);
    if (r.rc || !ws.DOFs) return r;
    const std::size_t n = ws.DOFs->size();
    r.ids.assign(ws.DOFs->begin(), ws.DOFs->end());
    if (ws.sym.matrix().dim() == n)
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = 0; j < n; ++j) r.M.push_back(ws.sym.matrix()(i, j));
    if (ws.diag.size() == n) r.diag.assign(ws.diag.begin(), ws.diag.end());
    return r;
}

// The assembly of a whole mesh with the solution U (a velocity or an acceleration):
// the inertial vector -M U, the kinetic energy U M U / 2 and, lumped, the diagonal.
struct assembled {
    int rc = 0;
    core::DOF_vector F, D;
    double energy = 0.0;
};

assembled assemble(core::numerical_model_base& model, const dense2D<double>& pos, const core::DOF_vector& U,
                   int matrix_level, int threads) {
    assembled a;
    a.F.init(U.get_IDs(), 0.0);
    a.D.init(U.get_IDs(), 0.0);
    core::vector_assembler<double> va(a.F, 1.0);
    core::matrix_diag_assembler da(a.D, 1.0);
    core::matrix_null_assembler none;
    core::assembly_args args;
    args.pos = &pos;
    args.U = &U;
    args.vector_assembler = &va;
    args.matrix_assembler = matrix_level == 2 ? static_cast<core::matrix_assembler_base*>(&da) : &none;
    args.matrix_level = matrix_level;
    args.params.nbr_threads = threads;
    a.rc = model.assemble_matrix(2, args);
    a.energy = args.accumulators[0];
    return a;
}

double sum_of_slot(const core::DOF_vector& v, unsigned slot) {
    double s = 0.0;
    for (std::size_t k = 0; k < v.size(); ++k)
        if ((*v.get_IDs())[k] % 9 == slot) s += v[k];
    return s;
}

// Node positions of a face or edge shape under the affine map x = o + xi a + eta b.
template <class Shape>
dense2D<double> affine_nodes(const double* o, const double* a, const double* b) {
    dense2D<double> pos(3, Shape::nbr_nodes);
    for (unsigned i = 0; i < Shape::nbr_nodes; ++i) {
        double xi[3] = {0, 0, 0};
        Shape::node_position(i, xi);
        for (unsigned c = 0; c < 3; ++c) pos(c, i) = o[c] + xi[0] * a[c] + xi[1] * b[c];
    }
    return pos;
}

template <class Shape>
dense2D<unsigned int> one_element() {
    dense2D<unsigned int> conn(Shape::nbr_nodes, 1);
    for (unsigned i = 0; i < Shape::nbr_nodes; ++i) conn(i, 0) = i;
    return conn;
}

template <class Shape>
class SolidMass : public ::testing::Test {};
using solid_shapes = ::testing::Types<elfes::tetra4, elfes::tetra10, elfes::pyramid5, elfes::pyramid14, elfes::wedge6,
                                      elfes::wedge18, elfes::hexa8, elfes::hexa27>;
TYPED_TEST_SUITE(SolidMass, solid_shapes);

// A rigid velocity v on a distorted patch of volume 1: the consistent and the lumped
// forms both give the momentum rho V v, per direction, and the kinetic energy
// rho V |v|^2 / 2; the lumped diagonal is positive, sums to rho V per direction and
// does not depend on the thread count. The element matrix couples only DOFs of one
// direction, with the same block in each.
TYPED_TEST(SolidMass, RigidMotionGivesExactMomentumAndEnergy) {
    const double rho = 7.8, V = 1.0;
    const double v[3] = {1.5, -2.0, 0.5};
    fem::context ctx;
    fem::law_scalar law(ctx, rho);
    fem::model_solid_mass physics(law);
    ASSERT_TRUE(physics.is_valid());
    EXPECT_EQ(physics.get_family_code(), 22000u);
    test_mesh m = make_patch<TypeParam>(2, 0.5, 0.3);
    const fem::element_type type = elfes::element_type_of<TypeParam>;
    fem::numerical_model_mass model = mass_mesh(ctx, physics, m.conn, type);
    ASSERT_TRUE(model.is_valid());
    core::numerical_model_base& engine = *model.engine();
    const core::DOF_vector U = make_U(m.pos, [&](const double*, double* u) {
        for (int d = 0; d < 3; ++d) u[d] = v[d];
    });
    const double tol = 1e-11 * rho * V;
    for (int level : {1, 2}) {
        SCOPED_TRACE(level);
        const assembled a = assemble(engine, m.pos, U, level, 2);
        ASSERT_EQ(a.rc, 0);
        for (unsigned d = 0; d < 3; ++d) EXPECT_NEAR(sum_of_slot(a.F, d), -rho * V * v[d], tol * 10);
        EXPECT_NEAR(a.energy, 0.5 * rho * V * (v[0] * v[0] + v[1] * v[1] + v[2] * v[2]), tol * 10);
        if (level == 1) continue;
        for (std::size_t k = 0; k < a.D.size(); ++k) ASSERT_GT(a.D[k], 0.0) << "DOF " << (*a.D.get_IDs())[k];
        for (unsigned d = 0; d < 3; ++d) EXPECT_NEAR(sum_of_slot(a.D, d), rho * V, tol);
        const assembled serial = assemble(engine, m.pos, U, level, 1);
        for (std::size_t k = 0; k < a.D.size(); ++k) ASSERT_EQ(serial.D[k], a.D[k]);
    }
    const element_mass e = compute_mass(engine, m.pos, 0, 1);
    ASSERT_EQ(e.rc, 0);
    ASSERT_EQ(e.ids.size(), 3u * TypeParam::nbr_nodes);
    for (std::size_t i = 0; i < e.ids.size(); ++i)
        for (std::size_t j = 0; j < e.ids.size(); ++j) {
            if (e.ids[i] % 9 != e.ids[j] % 9) {
                ASSERT_EQ(e.at(i, j), 0.0);
            } else if (e.ids[i] % 9 == 0) {
                ASSERT_EQ(e.at(i, j), e.at(i + 1, j + 1));
            }
        }
}

// A straight-sided tetra10 (affine map): consistent corner rows sum to -rho V / 20
// and mid-side rows to rho V / 5, so row-sum lumping would make corners negative;
// the diagonal scaling gives rho V / 36 at corners and 4 rho V / 27 at mid-sides.
// A tetra4: M_ii = rho V / 10, M_ij = rho V / 20, lumped rho V / 4.
TEST(MassMesh, TetrahedraHaveTheirClosedFormMatrices) {
    const double rho = 2.5;
    fem::context ctx;
    fem::law_scalar law(ctx, rho);
    fem::model_solid_mass physics(law);
    const double A[3][3] = {{2.0, 0.3, 0.1}, {-0.4, 1.5, 0.2}, {0.3, 0.5, 1.2}};
    double det = A[0][0] * (A[1][1] * A[2][2] - A[1][2] * A[2][1]) - A[0][1] * (A[1][0] * A[2][2] - A[1][2] * A[2][0]) +
                 A[0][2] * (A[1][0] * A[2][1] - A[1][1] * A[2][0]);
    const double mass = rho * det / 6.0;
    auto check = [&](auto shape) {
        using S = decltype(shape);
        dense2D<double> pos(3, S::nbr_nodes);
        for (unsigned i = 0; i < S::nbr_nodes; ++i) {
            double xi[3] = {0, 0, 0};
            S::node_position(i, xi);
            for (unsigned r = 0; r < 3; ++r) pos(r, i) = 1.0 + A[r][0] * xi[0] + A[r][1] * xi[1] + A[r][2] * xi[2];
        }
        fem::numerical_model_mass model = mass_mesh(ctx, physics, one_element<S>(), elfes::element_type_of<S>);
        const element_mass c = compute_mass(*model.engine(), pos, 0, 1), l = compute_mass(*model.engine(), pos, 0, 2);
        ASSERT_EQ(c.rc, 0);
        ASSERT_EQ(l.rc, 0);
        ASSERT_TRUE(l.M.empty());
        for (std::size_t i = 0; i < c.ids.size(); ++i) {
            const bool corner = c.ids[i] / 9 < 4;
            double row = 0.0;
            for (std::size_t j = 0; j < c.ids.size(); ++j) row += c.at(i, j);
            if (S::nbr_nodes == 4) {
                EXPECT_NEAR(c.at(i, i), mass / 10, 1e-13);
                EXPECT_NEAR(l.diag[i], mass / 4, 1e-13);
            } else {
                EXPECT_NEAR(row, corner ? -mass / 20 : mass / 5, 1e-13);
                EXPECT_NEAR(l.diag[i], corner ? mass / 36 : 4 * mass / 27, 1e-13);
            }
        }
        if (S::nbr_nodes == 4) {
            EXPECT_NEAR(c.at(0, 3), mass / 20, 1e-13);
        }
    };
    check(elfes::tetra4{});
    check(elfes::tetra10{});
}

// Lines in 3-D with a mass per length: edge2 rho L / 6 [2 1; 1 2]; edge3 lumped by
// the diagonal scaling to Simpson's weights L (1/6, 1/6, 2/3).
TEST(MassMesh, LinesCarryTheirMassPerLength) {
    const double rho = 3.0;
    fem::context ctx;
    fem::law_scalar law(ctx, rho);
    fem::model_line_mass physics(law);
    ASSERT_TRUE(physics.is_valid());
    const double o[3] = {1, 2, 3}, a[3] = {1.0, -2.0, 2.0}, b[3] = {0, 0, 0};  // half-length 3
    const double mass = rho * 6.0;
    {
        fem::numerical_model_mass model = mass_mesh(ctx, physics, one_element<elfes::edge2>(), fem::FE_edge2);
        const element_mass c = compute_mass(*model.engine(), affine_nodes<elfes::edge2>(o, a, b), 0, 1);
        ASSERT_EQ(c.rc, 0);
        EXPECT_NEAR(c.at(0, 0), mass / 3, 1e-13);
        EXPECT_NEAR(c.at(0, 3), mass / 6, 1e-13);
        EXPECT_EQ(c.at(0, 1), 0.0);
        // U on node 0 alone: node 1 still feels -M_10 u_0
        const dense2D<double> pos = affine_nodes<elfes::edge2>(o, a, b);
        const unsigned first = 0;
        core::DOF_vector U, F = make_U(pos, [](const double*, double*u) { u[0] = u[1] = u[2] = 0.0; });
        U.init(Ptr<core::DOF_index>(new core::DOF_index(&first, &first + 1)), 1.0);
        core::vector_assembler<double> va(F, 1.0);
        core::assembly_args args;
        args.pos = &pos;
        args.U = &U;
        args.vector_assembler = &va;
        ASSERT_EQ(model.engine()->assemble_matrix(2, args), 0);
        EXPECT_NEAR(*F.find(9), -mass / 6, 1e-13);
        EXPECT_NEAR(*F.find(0), -mass / 3, 1e-13);
    }
    {
        fem::numerical_model_mass model = mass_mesh(ctx, physics, one_element<elfes::edge3>(), fem::FE_edge3);
        const element_mass l = compute_mass(*model.engine(), affine_nodes<elfes::edge3>(o, a, b), 0, 2);
        ASSERT_EQ(l.rc, 0);
        for (std::size_t i = 0; i < l.ids.size(); ++i)
            EXPECT_NEAR(l.diag[i], l.ids[i] / 9 == 2 ? 2 * mass / 3 : mass / 6, 1e-13);
    }
}

// A tilted surface with a mass per area weighs rho A on each of its three directions;
// on the in-plane slots of a plane strain model it has those two slots only.
TEST(MassMesh, SurfacesCarryTheirMassPerArea) {
    const double rho = 0.75;
    fem::context ctx;
    fem::law_scalar law(ctx, rho);
    const double o[3] = {1, 2, 3}, a[3] = {0.9, 1.2, 0.0}, b[3] = {0.0, 0.0, 2.0};  // |a x b| = 3
    auto check = [&](auto shape, const fem::model_surf_mass& physics, double reference_area,
                     std::vector<unsigned> slots) {
        using S = decltype(shape);
        const dense2D<double> pos = affine_nodes<S>(o, a, b);
        fem::numerical_model_mass model = mass_mesh(ctx, physics, one_element<S>(), elfes::element_type_of<S>);
        const core::DOF_vector U = make_U(pos, [](const double*, double* u) { u[0] = u[1] = u[2] = 1.0; });
        const assembled r = assemble(*model.engine(), pos, U, 2, 1);
        ASSERT_EQ(r.rc, 0);
        for (unsigned d = 0; d < 3; ++d) {
            const bool carried = std::find(slots.begin(), slots.end(), d) != slots.end();
            EXPECT_NEAR(sum_of_slot(r.D, d), carried ? rho * 3.0 * reference_area : 0.0, 1e-12) << d;
        }
    };
    const fem::model_surf_mass membrane(law), plane(law, 2), plane_x(law, 0);
    check(elfes::faceT3{}, membrane, 0.5, {0, 1, 2});
    check(elfes::faceT6{}, membrane, 0.5, {0, 1, 2});
    check(elfes::faceQ4{}, membrane, 4.0, {0, 1, 2});
    check(elfes::faceQ9{}, membrane, 4.0, {0, 1, 2});
    check(elfes::faceQ4{}, plane, 4.0, {0, 1});
    check(elfes::faceT6{}, plane_x, 0.5, {1, 2});
}

// An axisymmetric section of area A whose centroid is at radius r is a ring of mass
// 2 pi r A rho, on the radial and the axial DOFs.
TEST(MassMesh, AxisymmetricRingWeighsTwoPiRAreaRho) {
    const double rho = 7.8;
    fem::context ctx;
    fem::law_scalar law(ctx, rho);
    fem::model_axi3d_mass physics(law);
    auto check = [&](auto shape, const double* o, const double* a, const double* b, double area, double r) {
        using S = decltype(shape);
        const dense2D<double> pos = affine_nodes<S>(o, a, b);
        fem::numerical_model_mass model = mass_mesh(ctx, physics, one_element<S>(), elfes::element_type_of<S>);
        const core::DOF_vector U = make_U(pos, [](const double*, double* u) { u[0] = 1.0, u[1] = -1.0, u[2] = 5.0; });
        const double ring = two_pi * r * area * rho;
        for (int level : {1, 2}) {
            const assembled m = assemble(*model.engine(), pos, U, level, 1);
            ASSERT_EQ(m.rc, 0);
            EXPECT_NEAR(sum_of_slot(m.F, 0), -ring, 1e-11 * ring);
            EXPECT_NEAR(sum_of_slot(m.F, 1), ring, 1e-11 * ring);
            EXPECT_EQ(sum_of_slot(m.F, 2), 0.0);  // no hoop DOF
            if (level == 2) {
                EXPECT_NEAR(sum_of_slot(m.D, 0), ring, 1e-11 * ring);
            }
        }
    };
    // quadrilaterals: r in [2, 3], z in [0, 1]; triangles: corners (3, 0), (2, 1), (2, 0)
    const double oq[3] = {2.5, 0.5, 0}, aq[3] = {0.5, 0, 0}, bq[3] = {0, 0.5, 0};
    const double ot[3] = {2, 0, 0}, at[3] = {1, 0, 0}, bt[3] = {0, 1, 0};
    check(elfes::faceQ4{}, oq, aq, bq, 1.0, 2.5);
    check(elfes::faceQ9{}, oq, aq, bq, 1.0, 2.5);
    check(elfes::faceT3{}, ot, at, bt, 0.5, 2.0 + 1.0 / 3.0);
    check(elfes::faceT6{}, ot, at, bt, 0.5, 2.0 + 1.0 / 3.0);
}

// Bad input: densities that are not positive finite numbers, laws of another kind,
// physics and shapes that do not match, and elements that cannot carry a mass all
// give their code, and nothing is added.
TEST(MassMesh, BadInputGivesItsCode) {
    fem::context ctx;
    for (double rho : {0.0, -1.0, std::nan("")}) {
        fem::law_scalar bad(ctx, rho);
        fem::model_solid_mass p;
        EXPECT_EQ(p.init(bad), fem::error_data) << rho;
        EXPECT_FALSE(p.is_valid());
    }
    Ptr<core::law_solid_StVenant> steel = make_law(210.0, 0.3);
    EXPECT_EQ(fem::model_solid_mass().init(engine_handle(steel.get())), fem::error_data);
    EXPECT_EQ(fem::model_surf_mass().init(fem::law_scalar()), fem::error_data);

    fem::law_scalar law(ctx, 1.0);
    fem::model_solid_mass physics(law);
    const dense2D<unsigned int> tet = one_element<elfes::tetra4>();
    fem::model_solid_lin stiff(engine_handle(steel.get()));
    mass_mesh(ctx, stiff, tet, fem::FE_tetra4, fem::error_data);
    mass_mesh(ctx, fem::physics_model_base(), tet, fem::FE_tetra4, fem::error_data);
    mass_mesh(ctx, physics, tet, fem::FE_faceT3, fem::error_element_type);
    mass_mesh(ctx, fem::model_axi3d_mass(law), tet, fem::FE_tetra4, fem::error_element_type);
    mass_mesh(ctx, physics, tet, fem::FE_tetra10, fem::error_connectivity);
    fem::numerical_model_stiff_lin as_stiffness;
    EXPECT_EQ(as_stiffness.init(ctx, physics, tet, fem::FE_tetra4), fem::error_data);

    // two tetrahedra: the second is inverted, then flat; then the first gets a zero
    // density of its own
    dense2D<double> pos(3, 5);
    const double x[5][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}, {0.5, 0.5, 0}};
    for (unsigned i = 0; i < 5; ++i)
        for (unsigned c = 0; c < 3; ++c) pos(c, i) = x[i][c];
    dense2D<unsigned int> conn(4, 2);
    const unsigned nodes[2][4] = {{0, 1, 2, 3}, {1, 0, 2, 3}};
    for (unsigned e = 0; e < 2; ++e)
        for (unsigned i = 0; i < 4; ++i) conn(i, e) = nodes[e][i];
    fem::numerical_model_mass model = mass_mesh(ctx, physics, conn, fem::FE_tetra4);
    core::numerical_model_base& engine = *model.engine();
    const core::DOF_vector U = make_U(pos, [](const double*, double* u) { u[0] = u[1] = u[2] = 1.0; });
    EXPECT_EQ(compute_mass(engine, pos, 0, 1).rc, 0);
    EXPECT_EQ(compute_mass(engine, pos, 1, 1).rc, fem::error_element);
    EXPECT_EQ(assemble(engine, pos, U, 2, 2).rc, fem::error_element);
    conn(3, 1) = 4;  // in the plane of nodes 0, 1, 3
    fem::numerical_model_mass flat = mass_mesh(ctx, physics, conn, fem::FE_tetra4);
    const element_mass f = compute_mass(*flat.engine(), pos, 1, 2);
    EXPECT_EQ(f.rc, fem::error_element);
    EXPECT_TRUE(f.diag.empty());

    fem::numerical_model_mass good = mass_mesh(ctx, physics, tet, fem::FE_tetra4);
    const std::uint32_t g = ctx.engine()->models()->global_FE_ID(good.engine()->ID());
    dense1D<double> zero(1);
    zero[0] = 0.0;
    ASSERT_EQ(law.set_element_by_element(g, zero), 0);
    const assembled z = assemble(*good.engine(), pos, U, 2, 1);
    EXPECT_EQ(z.rc, fem::error_element);
    for (std::size_t k = 0; k < z.D.size(); ++k) EXPECT_EQ(z.D[k], 0.0);
}

}  // namespace
}  // namespace test
}  // namespace orv
