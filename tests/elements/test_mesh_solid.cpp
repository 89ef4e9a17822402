// The 3-D solid meshes: patch tests on every shape, element stiffness invariants,
// closed forms, finite strain consistency and bad input.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/law_solid_stiff.h>

#include "frame/context_type.h"
#include "tests/elements/test_mesh_utils.h"

namespace orv {
namespace test {
namespace {

struct solid_fixture {
    fem::context ctx;
    Ptr<core::law_solid_StVenant> law;
    fem::physics_model_base physics;
    solid_fixture(double E, double nu, bool finite) : law(make_law(E, nu)) {
        engine_handle h(law.get());
        if (finite) {
            fem::model_solid_gnl p;
            EXPECT_EQ(p.init(h), fem::no_error);
            physics = p;
        } else {
            fem::model_solid_lin p;
            EXPECT_EQ(p.init(h), fem::no_error);
            physics = p;
        }
    }
    fem::numerical_model_base mesh(const dense2D<unsigned int>& conn, fem::element_type type,
                                   fem::error_type* rc = nullptr) {
        fem::numerical_model_base m;
        fem::error_type e;
        if (physics.get_physics_code() == 4000) {
            fem::numerical_model_stiff_lin l;
            e = l.init(ctx, physics, conn, type);
            m = l;
        } else {
            fem::numerical_model_stiff_gnl g;
            e = g.init(ctx, physics, conn, type);
            m = g;
        }
        if (rc)
            *rc = e;
        else
            EXPECT_EQ(e, fem::no_error);
        return m;
    }
};

// Voigt strain of the gradient A (u = A x): E11, E22, E33, 2 E12, 2 E13, 2 E23.
void voigt_strain(const double A[3][3], double* e) {
    e[0] = A[0][0];
    e[1] = A[1][1];
    e[2] = A[2][2];
    e[3] = A[0][1] + A[1][0];
    e[4] = A[0][2] + A[2][0];
    e[5] = A[1][2] + A[2][1];
}

void isotropic_stress(const lame& L, const double* e, double* s) {
    const double tr = e[0] + e[1] + e[2];
    for (int k = 0; k < 3; ++k) s[k] = L.lambda * tr + 2 * L.mu * e[k];
    for (int k = 3; k < 6; ++k) s[k] = L.mu * e[k];
}

// A linear displacement field on a distorted patch: the stress is the same at every
// point of every element, and the internal forces of the interior nodes vanish,
// while those of boundary nodes do not.
template <class Shape>
void patch_test(double distortion) {
    const double E = 210.0, nu = 0.3;
    solid_fixture fx(E, nu, false);
    test_mesh m = make_patch<Shape>(2, 1.0, distortion);
    const fem::element_type type = elfes::element_type_of<Shape>;
    fem::numerical_model_base model = fx.mesh(m.conn, type);
    ASSERT_TRUE(model.is_valid());
    core::numerical_model_base* engine = model.engine();
    EXPECT_EQ(engine->get_server_code(), 4000u + type);
    const double A[3][3] = {{1e-3, 2e-4, -3e-4}, {5e-4, -2e-3, 1e-4}, {-4e-4, 3e-4, 1.5e-3}};
    const double c[3] = {0.1, -0.2, 0.05};
    core::DOF_vector U = make_U(m.pos, [&](const double* x, double* u) {
        for (int i = 0; i < 3; ++i) u[i] = c[i] + A[i][0] * x[0] + A[i][1] * x[1] + A[i][2] * x[2];
    });
    double eps[6], sig[6];
    voigt_strain(A, eps);
    isotropic_stress(lame(E, nu), eps, sig);

    // internal forces through the assembly loop, on two threads
    core::DOF_vector F;
    F.init(U.get_IDs(), 0.0);
    core::vector_assembler<double> va(F, 1.0);
    core::assembly_args args;
    args.pos = &m.pos;
    args.U = &U;
    args.vector_assembler = &va;
    args.matrix_level = 0;
    args.params.nbr_threads = 2;
    ASSERT_EQ(engine->assemble_matrix(1, args), 0);
    double fmax = 0.0, interior_max = 0.0;
    unsigned nbr_interior = 0;
    for (unsigned node = 0; node < m.pos.cols(); ++node) {
        const bool in = m.interior(node);
        nbr_interior += in;
        for (unsigned d = 0; d < 3; ++d) {
            const double f = std::fabs(*F.find(node * 9 + d));
            fmax = std::max(fmax, f);
            if (in) interior_max = std::max(interior_max, f);
        }
    }
    EXPECT_GT(nbr_interior, 0u);
    EXPECT_GT(fmax, 1e-3);
    EXPECT_LT(interior_max, 1e-11 * fmax) << "interior nodes are not in equilibrium";

    // total energy: 0.5 eps . sig times the volume of the patch (8)
    EXPECT_NEAR(
        args.accumulators[0],
        0.5 * 8.0 *
            (eps[0] * sig[0] + eps[1] * sig[1] + eps[2] * sig[2] + eps[3] * sig[3] + eps[4] * sig[4] + eps[5] * sig[5]),
        1e-9);

    // the same stress at every point
    auto* mesh = dynamic_cast<core::stiff_mesh_base*>(engine);
    ASSERT_NE(mesh, nullptr);
    for (std::uint32_t e = 0; e < engine->nbr_elements(); ++e) {
        dense2D<double> out;
        ASSERT_EQ(mesh->get_point_values(e, m.pos, &U, out), 0);
        for (std::size_t p = 0; p < out.cols(); ++p)
            for (int k = 0; k < 6; ++k) {
                ASSERT_NEAR(out(k, p), sig[k], 1e-10) << "element " << e << " point " << p;
                ASSERT_NEAR(out(6 + k, p), eps[k], 1e-13);
            }
    }
}

TEST(mesh_solid_patch, hexa8) { patch_test<elfes::hexa8>(0.5); }
TEST(mesh_solid_patch, hexa27) { patch_test<elfes::hexa27>(0.3); }
TEST(mesh_solid_patch, tetra4) { patch_test<elfes::tetra4>(0.5); }
TEST(mesh_solid_patch, tetra10) { patch_test<elfes::tetra10>(0.3); }
TEST(mesh_solid_patch, wedge6) { patch_test<elfes::wedge6>(0.5); }
TEST(mesh_solid_patch, wedge18) { patch_test<elfes::wedge18>(0.3); }
TEST(mesh_solid_patch, pyramid5) { patch_test<elfes::pyramid5>(0.3); }
TEST(mesh_solid_patch, pyramid14) { patch_test<elfes::pyramid14>(0.15); }

// One distorted element: K u equals minus the internal vector of u (the force the
// element exerts on its nodes; so the packed matrix is the derivative of the forces), the six rigid-body modes are in
// its null space, and a deformation mode has positive energy.
template <class Shape>
void element_invariants(bool finite) {
    solid_fixture fx(1000.0, 0.25, finite);
    test_mesh m = make_patch<Shape>(1, 1.0, 0.4, true);
    const fem::element_type type = elfes::element_type_of<Shape>;
    fem::numerical_model_base model = fx.mesh(m.conn, type);
    ASSERT_TRUE(model.is_valid());
    core::numerical_model_base& engine = *model.engine();
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> uni(-1.0, 1.0);
    const double w[3] = {0.3, -0.7, 0.5}, t[3] = {1.0, 2.0, -0.5};
    for (std::uint32_t e = 0; e < engine.nbr_elements(); ++e) {
        element_result r = compute_element(engine, m.pos, e);
        ASSERT_EQ(r.rc, 0);
        const std::size_t n = r.ids.size();
        ASSERT_EQ(n, 3u * Shape::nbr_nodes);
        double kmax = 0.0;
        for (double v : r.K) kmax = std::max(kmax, std::fabs(v));
        // rigid modes: translations and infinitesimal rotations
        for (int mode = 0; mode < 6; ++mode) {
            std::vector<double> u(n);
            for (std::size_t a = 0; a < n; ++a) {
                const unsigned node = r.ids[a] / 9, d = r.ids[a] % 9;
                const double x[3] = {m.pos(0, node), m.pos(1, node), m.pos(2, node)};
                if (mode < 3)
                    u[a] = d == unsigned(mode) ? 1.0 : 0.0;
                else {
                    double om[3] = {0, 0, 0};
                    om[mode - 3] = 1.0;
                    const double wx[3] = {om[1] * x[2] - om[2] * x[1], om[2] * x[0] - om[0] * x[2],
                                          om[0] * x[1] - om[1] * x[0]};
                    u[a] = wx[d];
                }
            }
            for (std::size_t i = 0; i < n; ++i) {
                double s = 0.0;
                for (std::size_t j = 0; j < n; ++j) s += r.at(i, j) * u[j];
                ASSERT_NEAR(s, 0.0, 1e-10 * kmax * 3) << "mode " << mode;
            }
        }
        // K u equals the internal force, and u' K u > 0 for a deformation
        core::DOF_vector U = make_U(m.pos, [&](const double* x, double* u) {
            for (int d = 0; d < 3; ++d) u[d] = 1e-9 * (t[d] + w[d] * x[(d + 1) % 3] * x[(d + 2) % 3] + 0.1 * uni(rng));
        });
        element_result ru = compute_element(engine, m.pos, e, &U);
        ASSERT_EQ(ru.rc, 0);
        double energy = 0.0;
        for (std::size_t i = 0; i < n; ++i) {
            double s = 0.0;
            for (std::size_t j = 0; j < n; ++j) s += r.at(i, j) * *U.find(r.ids[j]);
            EXPECT_NEAR(-ru.f[i], s, 1e-6 * kmax * 1e-9 + 1e-12 * std::fabs(s));
            energy += *U.find(r.ids[i]) * s;
        }
        EXPECT_GT(energy, 0.0);
        EXPECT_NEAR(ru.energy, 0.5 * energy, 1e-6 * energy);
    }
}

TEST(mesh_solid_element, invariants_lin) {
    element_invariants<elfes::hexa8>(false);
    element_invariants<elfes::hexa27>(false);
    element_invariants<elfes::tetra4>(false);
    element_invariants<elfes::tetra10>(false);
    element_invariants<elfes::wedge6>(false);
    element_invariants<elfes::wedge18>(false);
    element_invariants<elfes::pyramid5>(false);
    element_invariants<elfes::pyramid14>(false);
}

// The unit cube with E = 1, nu = 0.3, exactly integrated by 2 x 2 x 2 points:
// K(x0, x0) = (lambda + 4 mu) / 9, K(x0, y0) = (lambda + mu) / 12 and, for the
// opposite corner 6, K(x0, x6) = -(lambda + 4 mu) / 36.
TEST(mesh_solid_element, hexa8_unit_cube_closed_form) {
    solid_fixture fx(1.0, 0.3, false);
    dense2D<double> pos(3, 8);
    for (unsigned i = 0; i < 8; ++i) {
        double xi[3];
        elfes::hexa8::node_position(i, xi);
        for (int d = 0; d < 3; ++d) pos(d, i) = 0.5 * (xi[d] + 1.0);
    }
    dense2D<unsigned int> conn(8, 1);
    for (unsigned i = 0; i < 8; ++i) conn(i, 0) = i;
    fem::numerical_model_base model = fx.mesh(conn, fem::FE_hexa8);
    ASSERT_TRUE(model.is_valid());
    EXPECT_EQ(model.engine()->get_server_code(), 4022u);
    element_result r = compute_element(*model.engine(), pos, 0);
    ASSERT_EQ(r.rc, 0);
    ASSERT_EQ(r.ids.size(), 24u);
    const lame L(1.0, 0.3);
    // ids sorted: node 0 x, y, z are positions 0, 1, 2
    EXPECT_NEAR(r.at(0, 0), (L.lambda + 4 * L.mu) / 9.0, 1e-14);
    EXPECT_NEAR(r.at(0, 1), (L.lambda + L.mu) / 12.0, 1e-14);
    EXPECT_NEAR(r.at(1, 1), r.at(0, 0), 1e-14);
    EXPECT_NEAR(r.at(0, 18), -(L.lambda + 4 * L.mu) / 36.0, 1e-14);
}

// A body force on a patch: the nodal forces add up to the force times the volume
// (rules exact for these integrands: distorted trilinear hexahedra, straight tetra10).
template <class Shape>
void body_force_resultant(double distortion) {
    solid_fixture fx(1.0, 0.3, false);
    test_mesh m = make_patch<Shape>(2, 1.0, distortion);
    fem::numerical_model_base model = fx.mesh(m.conn, elfes::element_type_of<Shape>);
    ASSERT_TRUE(model.is_valid());
    core::DOF_vector U = make_U(m.pos, [](const double*, double* u) { u[0] = u[1] = u[2] = 0.0; });
    core::DOF_vector F;
    F.init(U.get_IDs(), 0.0);
    core::vector_assembler<double> va(F, 1.0);
    core::assembly_args args;
    args.pos = &m.pos;
    args.vector_assembler = &va;
    args.params.load_factor = 2.0;
    args.params.nbr_threads = 2;
    dense1D<double> b(3);
    b[0] = 1.5;
    b[1] = -0.5;
    b[2] = 3.0;
    fem::elementary_load body(fem::elementary_load::kind_force, 0, b);
    body.evolution_func_ID = 0;  // carried by the record; the loads manager applies it, not the model
    ASSERT_TRUE(model.engine()->accepts_load(body));
    ASSERT_EQ(model.engine()->assemble_load(body, args), 0);
    double total[3] = {0, 0, 0};
    for (unsigned node = 0; node < m.pos.cols(); ++node)
        for (unsigned d = 0; d < 3; ++d) total[d] += *F.find(node * 9 + d);
    for (int d = 0; d < 3; ++d) EXPECT_NEAR(total[d], 2.0 * 8.0 * b[d], 1e-12);
    // a pressure (scalar load) and an inertial load are not solid loads
    fem::elementary_load p(fem::elementary_load::kind_force, fem::elementary_load::type_scalar, b);
    EXPECT_FALSE(model.engine()->accepts_load(p));
    fem::elementary_load inertial(16 | fem::elementary_load::kind_inertial, 0, b);
    EXPECT_FALSE(model.engine()->accepts_load(inertial));
}

TEST(mesh_solid_load, body_force_resultant) {
    body_force_resultant<elfes::hexa8>(0.5);
    body_force_resultant<elfes::tetra10>(0.0);
    body_force_resultant<elfes::hexa27>(0.0);
    body_force_resultant<elfes::wedge6>(0.0);
}

// Finite strain: a rigid rotation gives no strain and no force (the small strain
// form gives both), and at zero displacement the tangent is the small strain matrix.
TEST(mesh_solid_gnl, rigid_rotation_and_zero_state) {
    for (int shape = 0; shape < 2; ++shape) {
        solid_fixture lin(100.0, 0.3, false), gnl(100.0, 0.3, true);
        test_mesh m =
            shape == 0 ? make_patch<elfes::hexa8>(1, 1.0, 0.4, true) : make_patch<elfes::tetra10>(1, 1.0, 0.3, true);
        const fem::element_type type = shape == 0 ? fem::FE_hexa8 : fem::FE_tetra10;
        fem::numerical_model_base ml = lin.mesh(m.conn, type), mg = gnl.mesh(m.conn, type);
        ASSERT_TRUE(mg.is_valid());
        EXPECT_EQ(mg.engine()->get_physics_code(), 4300u);
        EXPECT_EQ(mg.engine()->get_family_code(), 4000u);
        // rotation of 50 degrees about (1, 2, 2) / 3, and a translation
        const double th = 50.0 * M_PI / 180.0, a[3] = {1.0 / 3, 2.0 / 3, 2.0 / 3};
        const double cs = std::cos(th), sn = std::sin(th);
        double Q[3][3];
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) Q[i][j] = cs * (i == j) + (1 - cs) * a[i] * a[j];
        Q[0][1] -= sn * a[2], Q[0][2] += sn * a[1], Q[1][0] += sn * a[2];
        Q[1][2] -= sn * a[0], Q[2][0] -= sn * a[1], Q[2][1] += sn * a[0];
        core::DOF_vector U = make_U(m.pos, [&](const double* x, double* u) {
            for (int i = 0; i < 3; ++i) u[i] = Q[i][0] * x[0] + Q[i][1] * x[1] + Q[i][2] * x[2] - x[i] + 0.3 * i;
        });
        for (std::uint32_t e = 0; e < mg.engine()->nbr_elements(); ++e) {
            element_result rg = compute_element(*mg.engine(), m.pos, e, &U, 0);
            ASSERT_EQ(rg.rc, 0);
            for (double f : rg.f) ASSERT_NEAR(f, 0.0, 1e-11);
            EXPECT_NEAR(rg.energy, 0.0, 1e-20);
            element_result rl = compute_element(*ml.engine(), m.pos, e, &U, 0);
            double fl = 0.0;
            for (double f : rl.f) fl = std::max(fl, std::fabs(f));
            EXPECT_GT(fl, 1.0);
            // zero displacement: the same matrix
            element_result kg = compute_element(*mg.engine(), m.pos, e), kl = compute_element(*ml.engine(), m.pos, e);
            ASSERT_EQ(kg.K.size(), kl.K.size());
            for (std::size_t k = 0; k < kg.K.size(); ++k) ASSERT_NEAR(kg.K[k], kl.K[k], 1e-12 * 100.0);
        }
        dense2D<double> out;
        auto* mesh = dynamic_cast<core::stiff_mesh_base*>(mg.engine());
        ASSERT_EQ(mesh->get_point_values(0, m.pos, &U, out), 0);
        for (std::size_t p = 0; p < out.cols(); ++p)
            for (int k = 0; k < 6; ++k) EXPECT_NEAR(out(6 + k, p), 0.0, 1e-14);
    }
}

// Finite strain: the tangent is the derivative of minus the internal vector (central
// differences), geometric stiffness included.
template <class Shape>
void gnl_tangent(double distortion) {
    solid_fixture fx(100.0, 0.3, true);
    test_mesh m = make_patch<Shape>(1, 1.0, distortion, true);
    fem::numerical_model_base model = fx.mesh(m.conn, elfes::element_type_of<Shape>);
    ASSERT_TRUE(model.is_valid());
    core::numerical_model_base& engine = *model.engine();
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> uni(-0.08, 0.08);
    core::DOF_vector U = make_U(m.pos, [&](const double* x, double* u) {
        for (int d = 0; d < 3; ++d) u[d] = uni(rng) + 0.2 * x[(d + 1) % 3];
    });
    const std::uint32_t e = 0;
    element_result r = compute_element(engine, m.pos, e, &U);
    ASSERT_EQ(r.rc, 0);
    const std::size_t n = r.ids.size();
    double kmax = 0.0;
    for (double v : r.K) kmax = std::max(kmax, std::fabs(v));
    const double h = 1e-6;
    for (std::size_t j = 0; j < n; ++j) {
        double* uj = U.find(r.ids[j]);
        const double keep = *uj;
        *uj = keep + h;
        element_result p = compute_element(engine, m.pos, e, &U, 0);
        *uj = keep - h;
        element_result q = compute_element(engine, m.pos, e, &U, 0);
        *uj = keep;
        for (std::size_t i = 0; i < n; ++i)
            ASSERT_NEAR((q.f[i] - p.f[i]) / (2 * h), r.at(i, j), 1e-6 * kmax) << i << ", " << j;
    }
}

TEST(mesh_solid_gnl, tangent_is_derivative_of_forces) {
    gnl_tangent<elfes::hexa8>(0.4);
    gnl_tangent<elfes::tetra4>(0.4);
    gnl_tangent<elfes::wedge6>(0.4);
    gnl_tangent<elfes::pyramid5>(0.3);
}

TEST(mesh_solid_gnl, invariants_of_the_tangent_at_rest) {
    element_invariants<elfes::hexa27>(true);
    element_invariants<elfes::wedge18>(true);
}

// Bad input: codes, never a crash, nothing added.
TEST(mesh_solid_errors, creation_and_element_codes) {
    solid_fixture fx(1.0, 0.3, false);
    test_mesh m = make_patch<elfes::hexa8>(1, 1.0, 0.0);
    fem::error_type rc = fem::no_error;
    // shapes without a solid model, and values that are no shape
    for (fem::element_type t : {fem::FE_faceQ4, fem::FE_edge2, fem::FE_hexa20, fem::FE_none, fem::FE_type_end,
                                static_cast<fem::element_type>(1000)}) {
        fem::numerical_model_base bad = fx.mesh(m.conn, t, &rc);
        EXPECT_EQ(rc, fem::error_element_type) << t;
        EXPECT_FALSE(bad.is_valid());
    }
    // a connectivity of another node count
    fem::numerical_model_base bad = fx.mesh(m.conn, fem::FE_tetra4, &rc);
    EXPECT_EQ(rc, fem::error_connectivity);
    EXPECT_FALSE(bad.is_valid());
    // a finite mesh of a small strain physics, an empty physics
    fem::numerical_model_stiff_gnl g;
    EXPECT_EQ(g.init(fx.ctx, fx.physics, m.conn, fem::FE_hexa8), fem::error_data);
    EXPECT_FALSE(g.is_valid());
    fem::numerical_model_stiff_lin l;
    EXPECT_EQ(l.init(fx.ctx, fem::physics_model_base(), m.conn, fem::FE_hexa8), fem::error_data);
    // a law handle that is no solid law
    fem::model_solid_lin p;
    engine_handle not_a_law(fx.ctx.engine());
    EXPECT_EQ(p.init(not_a_law), fem::error_data);
    EXPECT_FALSE(p.is_valid());

    // element codes: past the end, a node past pos, an unassigned node
    dense2D<unsigned int> conn(8, 2);
    for (unsigned i = 0; i < 8; ++i) {
        conn(i, 0) = i;
        conn(i, 1) = i;
    }
    conn(3, 1) = 0xFFFFFFFFu;
    fem::numerical_model_base model = fx.mesh(conn, fem::FE_hexa8);
    ASSERT_TRUE(model.is_valid());
    core::numerical_model_base& engine = *model.engine();
    EXPECT_EQ(compute_element(engine, m.pos, 0).rc, 0);
    EXPECT_EQ(compute_element(engine, m.pos, 2).rc, fem::error_index);
    EXPECT_EQ(compute_element(engine, m.pos, 1).rc, fem::error_connectivity);
    dense2D<double> short_pos = m.pos.sub_matrix(0, 0, 3, 7);
    EXPECT_EQ(compute_element(engine, short_pos, 0).rc, fem::error_connectivity);
    dense2D<double> no_pos;
    EXPECT_EQ(compute_element(engine, no_pos, 0).rc, fem::error_connectivity);
    // the DOF walks: -104 for the unassigned slot, -102 past the end
    core::DOFs_mgr table;
    core::DOF_filter all;
    dense1D<unsigned int> list;
    EXPECT_EQ(engine.get_DOFs(table, 0, 1, list, all), 0);
    EXPECT_EQ(list.size(), 24u);
    list.clear();
    EXPECT_EQ(engine.get_DOFs(table, 1, 1, list, all), fem::error_element_type);
    list.clear();
    EXPECT_EQ(engine.get_DOFs(table, 5, 1, list, all), fem::error_index);
    EXPECT_EQ(list.size(), 0u);
    // stiffness meshes have no other matrix
    list.clear();
    EXPECT_EQ(engine.get_DOFs(table, 0, 2, list, all), 0);
    EXPECT_EQ(list.size(), 0u);
    // an assembly stops at the failing element and reports it
    core::DOF_vector U = make_U(m.pos, [](const double*, double* u) { u[0] = u[1] = u[2] = 0.0; });
    core::DOF_vector F;
    F.init(U.get_IDs(), 0.0);
    core::vector_assembler<double> va(F, 1.0);
    core::assembly_args args;
    args.pos = &m.pos;
    args.U = &U;
    args.vector_assembler = &va;
    EXPECT_EQ(engine.assemble_matrix(1, args), fem::error_connectivity);
}

// The public path: a law handle, the physics, its law back, the mesh and its codes.
TEST(mesh_solid_model, public_handles) {
    fem::context ctx;
    fem::law_solid_StVenant law(ctx);
    ASSERT_EQ(law.init(1.0, 0.3, 0.0), 0);
    fem::model_solid_gnl physics(law);
    ASSERT_TRUE(physics.is_valid());
    EXPECT_EQ(physics.get_family_code(), 4000u);
    EXPECT_EQ(physics.get_physics_code(), 4300u);
    EXPECT_EQ(physics.get_material().get_w(), law.get_w());
    EXPECT_FALSE(fem::model_solid_lin().get_material().is_valid());
    test_mesh m = make_patch<elfes::pyramid14>(1, 1.0, 0.0);
    fem::numerical_model_stiff_gnl model(ctx, physics, m.conn, fem::FE_pyramid14);
    ASSERT_TRUE(model.is_valid());
    EXPECT_EQ(model.engine()->get_server_code(), 4300u + 18u);
    EXPECT_EQ(model.get_FE_type(), fem::FE_pyramid14);
    EXPECT_EQ(model.get_nodes().size(), m.pos.cols());
    fem::DOFs_mgr table(static_cast<unsigned>(m.pos.cols()), true);
    EXPECT_EQ(model.get_DOFs(1, table, 2).size(), 3 * m.pos.cols());
    ASSERT_EQ(table.set(0, false), fem::no_error);
    EXPECT_EQ(model.get_DOFs(1, table, 0).size(), 1u);
    EXPECT_EQ(model.get_DOFs(1, table, 1).size(), 3 * m.pos.cols() - 1);
    // the projection knows stresses and strains only
    core::assembly_args args;
    args.pos = &m.pos;
    core::element_workspace ws(args, model.ID());
    ws.element_ID = 0;
    EXPECT_EQ(model.engine()->compute_projection(2, 0, true, ws), fem::error_element_type);
    EXPECT_EQ(model.engine()->compute_projection(0, 6, true, ws), fem::error_element_type);
    EXPECT_EQ(model.engine()->compute_projection(1, 5, true, ws), 0);
}

// The assembly does not depend on the number of threads: the same vector to the bit.
TEST(mesh_solid_model, threads_give_the_same_sums) {
    solid_fixture fx(10.0, 0.3, true);
    test_mesh m = make_patch<elfes::hexa27>(2, 1.0, 0.3);
    fem::numerical_model_base model = fx.mesh(m.conn, fem::FE_hexa27);
    ASSERT_TRUE(model.is_valid());
    core::DOF_vector U = make_U(m.pos, [](const double* x, double* u) {
        u[0] = 0.01 * x[1] * x[2];
        u[1] = -0.02 * x[0] * x[0];
        u[2] = 0.03 * x[1];
    });
    std::vector<double> first;
    for (unsigned threads : {1u, 2u, 3u}) {
        core::DOF_vector F;
        F.init(U.get_IDs(), 0.0);
        core::vector_assembler<double> va(F, 1.0);
        core::assembly_args args;
        args.pos = &m.pos;
        args.U = &U;
        args.vector_assembler = &va;
        args.params.nbr_threads = threads;
        ASSERT_EQ(model.engine()->assemble_matrix(1, args), 0);
        std::vector<double> f(F.begin(), F.end());
        f.push_back(args.accumulators[0]);
        if (first.empty())
            first = f;
        else
            EXPECT_TRUE(f == first) << threads << " threads";
    }
}

// Per-element law data are keyed by the global element number: the second mesh of a
// context starts after the elements of the first.
TEST(mesh_solid_model, per_element_law_data_by_global_number) {
    solid_fixture fx(1.0, 0.3, false);
    test_mesh m = make_patch<elfes::tetra4>(1, 1.0, 0.2, true);  // 6 elements
    fem::numerical_model_base first = fx.mesh(m.conn, fem::FE_tetra4);
    fem::numerical_model_base second = fx.mesh(m.conn, fem::FE_tetra4);
    ASSERT_TRUE(second.is_valid());
    element_result before = compute_element(*second.engine(), m.pos, 1);
    dense1D<double> stiffer(3);
    stiffer[0] = 3.0;
    stiffer[1] = 0.3;
    stiffer[2] = 0.0;
    ASSERT_EQ(fx.law->set_element_by_element(6 + 1, core::law_all_points, stiffer), 0);
    element_result after = compute_element(*second.engine(), m.pos, 1);
    element_result same = compute_element(*first.engine(), m.pos, 1);
    ASSERT_EQ(after.K.size(), before.K.size());
    for (std::size_t k = 0; k < before.K.size(); ++k) {
        EXPECT_NEAR(after.K[k], 3.0 * before.K[k], 1e-12);
        EXPECT_EQ(same.K[k], before.K[k]);
    }
}

// Sizes and bases.
TEST(mesh_solid_model, size_and_bases) {
    solid_fixture fx(1.0, 0.3, false);
    test_mesh m = make_patch<elfes::wedge6>(1, 2.0, 0.0);
    fem::numerical_model_base model = fx.mesh(m.conn, fem::FE_wedge6);
    ASSERT_TRUE(model.is_valid());
    EXPECT_NEAR(model.engine()->get_size(m.pos), 2.0 * std::sqrt(3.0), 1e-14);
    EXPECT_EQ(model.get_FE_type(), fem::FE_wedge6);
    EXPECT_EQ(model.engine()->nbr_elements(), 2u);
    matrix_fixed<double, 3, 3> R;
    EXPECT_EQ(model.get_local_basis(m.pos, 0, R), fem::no_error);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) EXPECT_EQ(R(i, j), i == j ? 1.0 : 0.0);
    EXPECT_EQ(model.get_local_basis(m.pos, 9, R), fem::error_index);
    // element basis: e1 along x0 - x2, e2 in the plane of x1 - x2
    EXPECT_EQ(model.get_element_basis(m.pos, 0, R), fem::no_error);
    for (int j = 0; j < 3; ++j) {
        double n = 0.0;
        for (int i = 0; i < 3; ++i) n += R(i, j) * R(i, j);
        EXPECT_NEAR(n, 1.0, 1e-14);
    }
    EXPECT_NEAR(R(0, 0) * R(0, 1) + R(1, 0) * R(1, 1) + R(2, 0) * R(2, 1), 0.0, 1e-14);
}

// The second path (matrix level 3): the geometric stiffness of the stress of U. For
// a uniform stress and v = x e_y, v' Kg v = integral of grad(v_y)' S grad(v_y) =
// S11 times the volume.
TEST(mesh_solid_model, geometric_stiffness_of_the_solved_stress) {
    const double E = 100.0, nu = 0.3;
    solid_fixture fx(E, nu, false);
    test_mesh m = make_patch<elfes::hexa27>(2, 1.0, 0.3);
    fem::numerical_model_base model = fx.mesh(m.conn, fem::FE_hexa27);
    ASSERT_TRUE(model.is_valid());
    core::DOF_vector U = make_U(m.pos, [](const double* x, double* u) {
        u[0] = 1e-3 * x[0];
        u[1] = u[2] = 0.0;
    });
    const lame L(E, nu);
    const double s11 = (L.lambda + 2 * L.mu) * 1e-3;
    double q = 0.0;
    for (std::uint32_t e = 0; e < model.engine()->nbr_elements(); ++e) {
        element_result r = compute_element(*model.engine(), m.pos, e, &U, 3);
        ASSERT_EQ(r.rc, 0);
        const std::size_t n = r.ids.size();
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = 0; j < n; ++j) {
                const double vi = r.ids[i] % 9 == 1 ? m.pos(0, r.ids[i] / 9) : 0.0;
                const double vj = r.ids[j] % 9 == 1 ? m.pos(0, r.ids[j] / 9) : 0.0;
                q += vi * r.at(i, j) * vj;
            }
    }
    EXPECT_NEAR(q, s11 * 8.0, 1e-12);
}

// The nodal matrix of the least-squares run (code 9, one row per node) sums to the
// volume; the element right-hand side of a projection sums to the stress times the
// volume.
TEST(mesh_solid_model, nodal_matrix_and_projection) {
    solid_fixture fx(100.0, 0.3, false);
    test_mesh m = make_patch<elfes::wedge18>(2, 1.0, 0.2);
    fem::numerical_model_base model = fx.mesh(m.conn, fem::FE_wedge18);
    ASSERT_TRUE(model.is_valid());
    core::DOF_vector U = make_U(m.pos, [](const double* x, double* u) {
        u[0] = 0.0;
        u[1] = 2e-3 * x[1];
        u[2] = 0.0;
    });
    const lame L(100.0, 0.3);
    double mass = 0.0, proj = 0.0;
    core::assembly_args args;
    args.pos = &m.pos;
    args.U = &U;
    for (std::uint32_t e = 0; e < model.engine()->nbr_elements(); ++e) {
        core::element_workspace ws(args, model.ID());
        ws.element_ID = e;
        ws.matrix_level = 1;
        ASSERT_EQ(model.engine()->compute_matrix(9, ws), 0);
        const symmetric_sparse<double>& M = ws.sparse.matrix();
        ASSERT_EQ(M.dim(), elfes::wedge18::nbr_nodes);
        for (std::size_t i = 0; i < M.dim(); ++i)
            for (std::size_t j = 0; j < M.dim(); ++j) {
                const double* v = M.find(std::min(i, j), std::max(i, j));
                ASSERT_NE(v, nullptr);
                mass += *v;
            }
        ws.reset();
        ASSERT_EQ(model.engine()->compute_projection(0, 0, true, ws), 0);
        for (std::size_t k = 0; k < ws.vector.size(); ++k) proj += ws.vector[k];
    }
    EXPECT_NEAR(mass, 8.0, 1e-12);
    EXPECT_NEAR(proj, L.lambda * 2e-3 * 8.0, 1e-12);
}

// A law that cannot evaluate (nu = 0.5) fails the element with -106 and adds nothing.
TEST(mesh_solid_errors, failing_law) {
    solid_fixture fx(1.0, 0.5, false);
    test_mesh m = make_patch<elfes::tetra4>(1, 1.0, 0.0);
    fem::numerical_model_base model = fx.mesh(m.conn, fem::FE_tetra4);
    ASSERT_TRUE(model.is_valid());
    core::assembly_args args;
    args.pos = &m.pos;
    core::element_workspace ws(args, model.ID());
    ws.matrix_level = 1;
    ws.element_ID = 0;
    EXPECT_EQ(model.engine()->compute_matrix(1, ws), fem::error_element);
    EXPECT_EQ(ws.sym.matrix().dim(), 0u);
    EXPECT_EQ(ws.vector.size(), 0u);
}

}  // namespace
}  // namespace test
}  // namespace orv
