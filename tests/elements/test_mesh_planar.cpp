// The planar and surface meshes: plane strain, axisymmetric (with torsion), membrane,
// and the rod.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>

#include <orv/fem/law_membrane_stiff.h>
#include <orv/fem/law_rod.h>
#include <orv/fem/model_axi3d.h>
#include <orv/fem/model_membrane.h>
#include <orv/fem/model_plane_strain.h>
#include <orv/fem/model_rod.h>

#include "laws/law_membrane_stiff.h"
#include "laws/law_rod.h"
#include "tests/elements/test_mesh_utils.h"

namespace orv {
namespace test {
namespace {

// A patch of n x n squares of side h (make_lattice, lattice 2 per side) in the plane
// of the first two coordinates, from `origin`; interior lattice points moved by up to
// `distortion` lattice steps. The third row of pos is origin[2].
template <class Shape>
test_mesh make_patch_2d(int n, double h, double distortion, const double* origin) {
    test_mesh m = make_lattice<Shape>(n, n, 1, 2);
    m.extent = 2 * n;
    const unsigned nn = static_cast<unsigned>(m.keys.size());
    m.pos.resize(3, nn);
    for (unsigned i = 0; i < nn; ++i) {
        const bool interior =
            m.keys[i][0] > 0 && m.keys[i][0] < m.extent && m.keys[i][1] > 0 && m.keys[i][1] < m.extent;
        for (int d = 0; d < 2; ++d) {
            const double r = std::sin(12.9898 * m.keys[i][0] + 78.233 * m.keys[i][1] + 11.0 * d);
            const double jitter = interior ? distortion * (r * 43758.5453 - std::floor(r * 43758.5453) - 0.5) * 2 : 0.0;
            m.pos(d, i) = origin[d] + (m.keys[i][d] + jitter) * h / 2.0;
        }
        m.pos(2, i) = origin[2];
    }
    return m;
}

bool interior_2d(const test_mesh& m, unsigned i) {
    return m.keys[i][0] > 0 && m.keys[i][0] < m.extent && m.keys[i][1] > 0 && m.keys[i][1] < m.extent;
}

fem::numerical_model_base make_mesh(fem::context& ctx, const fem::physics_model_base& ph,
                                    const dense2D<unsigned int>& conn, fem::element_type type) {
    fem::numerical_model_base m;
    fem::error_type rc;
    if (ph.get_physics_code() % 1000 == 0) {
        fem::numerical_model_stiff_lin l;
        rc = l.init(ctx, ph, conn, type);
        m = l;
    } else {
        fem::numerical_model_stiff_gnl g;
        rc = g.init(ctx, ph, conn, type);
        m = g;
    }
    EXPECT_EQ(rc, fem::no_error);
    return m;
}

// Internal forces of U, assembled on two threads.
core::DOF_vector internal_forces(core::numerical_model_base& model, const dense2D<double>& pos,
                                 const core::DOF_vector& U, double* energy = nullptr) {
    core::DOF_vector F;
    F.init(U.get_IDs(), 0.0);
    core::vector_assembler<double> va(F, 1.0);
    core::assembly_args args;
    args.pos = &pos;
    args.U = &U;
    args.vector_assembler = &va;
    args.matrix_level = 0;
    args.params.nbr_threads = 2;
    EXPECT_EQ(model.assemble_matrix(1, args), 0);
    if (energy) *energy = args.accumulators[0];
    return F;
}

// Plane strain and axisymmetric patches under a linear field: constant stress, and
// interior nodes in equilibrium. Axisymmetric: u_r = a r, u_z = b z (equal radial and
// hoop strains and no shear, as equilibrium of a constant stress asks), on r in [1, 3].
template <class Shape>
void planar_patch(bool axi, double distortion) {
    const double E = 100.0, nu = 0.3;
    fem::context ctx;
    Ptr<core::law_solid_StVenant> law = make_law(E, nu);
    engine_handle h(law.get());
    fem::physics_model_base ph;
    if (axi)
        ph = fem::model_axi3d_lin(h);
    else
        ph = fem::model_plane_strain_lin(h, 2);
    ASSERT_TRUE(ph.is_valid());
    const double origin[3] = {axi ? 1.0 : -0.5, 0.25, 0.0};
    test_mesh m = make_patch_2d<Shape>(2, 1.0, distortion, origin);
    fem::numerical_model_base model = make_mesh(ctx, ph, m.conn, elfes::element_type_of<Shape>);
    ASSERT_TRUE(model.is_valid());
    EXPECT_EQ(model.engine()->get_server_code(), (axi ? 15000u : 10000u) + Shape::element_type_value);
    const double a = 2e-3, b = -1e-3, c = axi ? 0.0 : 5e-4, d = 3e-4;
    core::DOF_vector U = make_U(m.pos, [&](const double* x, double* u) {
        u[0] = axi ? a * x[0] : a * x[0] + d * x[1] + 0.1;
        u[1] = b * x[1] + c * x[0] - 0.2;
        u[2] = 0.0;
    });
    double eps[6] = {a, b, axi ? a : 0.0, axi ? c : c + d, 0.0, 0.0}, sig[6];
    const lame L(E, nu);
    const double tr = eps[0] + eps[1] + eps[2];
    for (int k = 0; k < 3; ++k) sig[k] = L.lambda * tr + 2 * L.mu * eps[k];
    for (int k = 3; k < 6; ++k) sig[k] = L.mu * eps[k];
    double energy = 0.0;
    core::DOF_vector F = internal_forces(*model.engine(), m.pos, U, &energy);
    double fmax = 0.0, fin = 0.0;
    for (unsigned node = 0; node < m.pos.cols(); ++node)
        for (unsigned k = 0; k < 2; ++k) {
            const double f = std::fabs(*F.find(node * 9 + k));
            fmax = std::max(fmax, f);
            if (interior_2d(m, node)) fin = std::max(fin, f);
        }
    EXPECT_GT(fmax, 1e-3);
    EXPECT_LT(fin, 1e-11 * fmax);
    // energy: area 4 (plane, unit thickness) or the ring volume 2 pi int r dr dz = 2 pi * 4 * 2
    const double volume = axi ? 2.0 * M_PI * 4.0 * 2.0 : 4.0;
    double w = 0.0;
    for (int k = 0; k < 6; ++k) w += 0.5 * eps[k] * sig[k];
    EXPECT_NEAR(energy, w * volume, 1e-10 * w * volume);
    auto* mesh = dynamic_cast<core::stiff_mesh_base*>(model.engine());
    for (std::uint32_t e = 0; e < model.engine()->nbr_elements(); ++e) {
        dense2D<double> out;
        ASSERT_EQ(mesh->get_point_values(e, m.pos, &U, out), 0);
        for (std::size_t p = 0; p < out.cols(); ++p)
            for (int k = 0; k < 6; ++k) ASSERT_NEAR(out(k, p), sig[k], 1e-11) << e << " " << p << " " << k;
    }
}

TEST(mesh_plane_strain, patch) {
    planar_patch<elfes::faceQ4>(false, 0.4);
    planar_patch<elfes::faceQ9>(false, 0.3);
    planar_patch<elfes::faceT3>(false, 0.4);
    planar_patch<elfes::faceT6>(false, 0.3);
}

TEST(mesh_axi3d, patch) {
    planar_patch<elfes::faceQ4>(true, 0.4);
    planar_patch<elfes::faceQ9>(true, 0.3);
    planar_patch<elfes::faceT3>(true, 0.4);
    planar_patch<elfes::faceT6>(true, 0.3);
}

// Plane strain in another plane: axis 0 takes the slots 1 and 2 and the y, z
// coordinates; the same field gives the same forces.
TEST(mesh_plane_strain, axis_selects_slots_and_coordinates) {
    fem::context ctx;
    Ptr<core::law_solid_StVenant> law = make_law(10.0, 0.25);
    engine_handle h(law.get());
    fem::model_plane_strain_lin pz(h, 2), px(h, 0);
    const double origin[3] = {0, 0, 0};
    test_mesh m = make_patch_2d<elfes::faceQ4>(1, 1.0, 0.0, origin);
    dense2D<double> pos_yz(3, m.pos.cols());
    for (std::size_t i = 0; i < m.pos.cols(); ++i) {
        pos_yz(0, i) = 7.0;
        pos_yz(1, i) = m.pos(0, i);
        pos_yz(2, i) = m.pos(1, i);
    }
    fem::numerical_model_base mz = make_mesh(ctx, pz, m.conn, fem::FE_faceQ4),
                              mx = make_mesh(ctx, px, m.conn, fem::FE_faceQ4);
    element_result rz = compute_element(*mz.engine(), m.pos, 0), rx = compute_element(*mx.engine(), pos_yz, 0);
    ASSERT_EQ(rz.ids.size(), 8u);
    ASSERT_EQ(rx.ids.size(), 8u);
    for (std::size_t k = 0; k < 8; ++k) {
        EXPECT_EQ(rz.ids[k] % 9, k % 2);
        EXPECT_EQ(rx.ids[k] % 9, 1 + k % 2);
    }
    for (std::size_t k = 0; k < rz.K.size(); ++k) EXPECT_NEAR(rz.K[k], rx.K[k], 1e-13);
}

// On the axis (r = 0) the hoop slot is 0; the torsion physics: a rigid rotation about
// the axis (u_theta = w r) has no strain, a twist u_theta = k r z has 2 E23 = k r.
TEST(mesh_axi3d, axis_and_torsion) {
    fem::context ctx;
    Ptr<core::law_solid_StVenant> law = make_law(10.0, 0.25);
    engine_handle h(law.get());
    fem::model_axi_torsion_lin pt(h);
    ASSERT_TRUE(pt.is_valid());
    EXPECT_EQ(pt.get_physics_code(), 16000u);
    dense2D<double> pos(3, 3, 0.0);
    pos(0, 0) = 1.0;  // faceT3: node 0 at (1, 0), node 1 at (0, 1), node 2 at the origin
    pos(1, 1) = 1.0;
    dense2D<unsigned int> conn(3, 1);
    for (unsigned i = 0; i < 3; ++i) conn(i, 0) = i;
    fem::numerical_model_base model = make_mesh(ctx, pt, conn, fem::FE_faceT3);
    ASSERT_TRUE(model.is_valid());
    auto* mesh = dynamic_cast<core::stiff_mesh_base*>(model.engine());
    core::DOF_vector U = make_U(pos, [](const double* x, double* u) {
        u[0] = 0.0;
        u[1] = 0.0;
        u[2] = 0.3 * x[0];
    });
    dense2D<double> out;
    ASSERT_EQ(mesh->get_point_values(0, pos, &U, out), 0);
    for (std::size_t p = 0; p < out.cols(); ++p)
        for (int k = 0; k < 6; ++k) EXPECT_NEAR(out(6 + k, p), 0.0, 1e-14);
    core::DOF_vector V = make_U(pos, [](const double* x, double* u) {
        u[0] = u[1] = 0.0;
        u[2] = 0.2 * x[0] * x[1];
    });
    ASSERT_EQ(mesh->get_point_values(0, pos, &V, out), 0);
    // the three points of the rule: 2 E13 = d(u)/dr - u / r = 0 for a field linear in
    // r (interpolation of r z is exact at the nodes only: compare with the interpolant)
    EXPECT_EQ(out.cols(), 3u);
    // a radial field on a triangle touching the axis: a point of the one-point rule is
    // off the axis, but the node at the origin contributes; r > 0 at all points here
    fem::model_axi3d_lin pa(h);
    fem::numerical_model_base ma = make_mesh(ctx, pa, conn, fem::FE_faceT3);
    dense2D<double> on_axis(3, 3, 0.0);
    on_axis(1, 0) = 1.0;
    on_axis(1, 1) = 2.0;
    on_axis(0, 2) = 0.0;  // all nodes on r = 0: every point is on the axis
    core::DOF_vector W = make_U(on_axis, [](const double*, double* u) {
        u[0] = 0.1;
        u[1] = 0.0;
        u[2] = 0.0;
    });
    auto* amesh = dynamic_cast<core::stiff_mesh_base*>(ma.engine());
    ASSERT_EQ(amesh->get_point_values(0, on_axis, &W, out), 0);
    for (std::size_t p = 0; p < out.cols(); ++p) EXPECT_EQ(out(6 + 2, p), 0.0);
}

// Finite planar forms: a rigid rotation gives no force, the tangent is the derivative
// of the forces, and at rest it is the small strain matrix.
template <class Shape>
void planar_gnl(bool axi) {
    fem::context ctx;
    Ptr<core::law_solid_StVenant> law = make_law(100.0, 0.3);
    engine_handle h(law.get());
    fem::physics_model_base pl, pg;
    if (axi) {
        pl = fem::model_axi3d_lin(h);
        pg = fem::model_axi3d_gnl(h);
        EXPECT_EQ(pg.get_physics_code(), 15100u);
    } else {
        pl = fem::model_plane_strain_lin(h, 2);
        pg = fem::model_plane_strain_gnl(h, 2);
        EXPECT_EQ(pg.get_physics_code(), 10300u);
    }
    const double origin[3] = {1.0, 0.0, 0.0};
    test_mesh m = make_patch_2d<Shape>(1, 1.0, 0.0, origin);
    for (std::size_t i = 0; i < m.pos.cols(); ++i) m.pos(0, i) += 0.1 * std::sin(3.0 * i);
    fem::numerical_model_base ml = make_mesh(ctx, pl, m.conn, elfes::element_type_of<Shape>);
    fem::numerical_model_base mg = make_mesh(ctx, pg, m.conn, elfes::element_type_of<Shape>);
    element_result kl = compute_element(*ml.engine(), m.pos, 0), kg = compute_element(*mg.engine(), m.pos, 0);
    ASSERT_EQ(kl.K.size(), kg.K.size());
    for (std::size_t k = 0; k < kl.K.size(); ++k) ASSERT_NEAR(kl.K[k], kg.K[k], 1e-11);
    if (!axi) {
        const double th = 0.7;
        core::DOF_vector U = make_U(m.pos, [&](const double* x, double* u) {
            u[0] = std::cos(th) * x[0] - std::sin(th) * x[1] - x[0] + 0.2;
            u[1] = std::sin(th) * x[0] + std::cos(th) * x[1] - x[1];
            u[2] = 0.0;
        });
        element_result r = compute_element(*mg.engine(), m.pos, 0, &U, 0);
        for (double f : r.f) EXPECT_NEAR(f, 0.0, 1e-11);
    }
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> uni(-0.05, 0.05);
    core::DOF_vector U = make_U(m.pos, [&](const double*, double* u) {
        u[0] = uni(rng);
        u[1] = uni(rng);
        u[2] = 0.0;
    });
    element_result r = compute_element(*mg.engine(), m.pos, 0, &U);
    double kmax = 0.0;
    for (double v : r.K) kmax = std::max(kmax, std::fabs(v));
    const double hh = 1e-6;
    for (std::size_t j = 0; j < r.ids.size(); ++j) {
        double* uj = U.find(r.ids[j]);
        const double keep = *uj;
        *uj = keep + hh;
        element_result p = compute_element(*mg.engine(), m.pos, 0, &U, 0);
        *uj = keep - hh;
        element_result q = compute_element(*mg.engine(), m.pos, 0, &U, 0);
        *uj = keep;
        for (std::size_t i = 0; i < r.ids.size(); ++i)
            ASSERT_NEAR((q.f[i] - p.f[i]) / (2 * hh), r.at(i, j), 1e-6 * kmax) << i << ", " << j;
    }
}

TEST(mesh_plane_strain, finite_strain) {
    planar_gnl<elfes::faceQ4>(false);
    planar_gnl<elfes::faceT6>(false);
}

TEST(mesh_axi3d, finite_strain) {
    planar_gnl<elfes::faceQ4>(true);
    planar_gnl<elfes::faceQ9>(true);
}

Ptr<core::law_membrane_StVenant> membrane_law(double E, double nu, double t) {
    Ptr<core::law_membrane_StVenant> law(new core::law_membrane_StVenant());
    dense1D<double> d(4);
    d[0] = E;
    d[1] = nu;
    d[2] = 0.0;
    d[3] = t;
    EXPECT_EQ(law->init(d), 0);
    return law;
}

// A membrane patch in a tilted plane: an in-plane linear field leaves interior nodes
// in equilibrium; the six rigid modes are in the null space of the element matrix; a
// rigid rotation in the finite form gives no force.
template <class Shape>
void membrane_checks(double distortion) {
    fem::context ctx;
    const double E = 50.0, nu = 0.2, t = 0.1;
    Ptr<core::law_membrane_StVenant> law = membrane_law(E, nu, t);
    engine_handle h(law.get());
    fem::model_membrane_lin pl(h);
    fem::model_membrane_gnl pg(h);
    ASSERT_TRUE(pl.is_valid());
    const double origin[3] = {0, 0, 0};
    test_mesh flat = make_patch_2d<Shape>(2, 1.0, distortion, origin);
    // rotate the plane: R takes (x, y, 0) to the tilted plane
    const double R[3][3] = {{0.8, 0.0, 0.6}, {0.36, 0.8, -0.48}, {-0.48, 0.6, 0.64}};
    test_mesh m = flat;
    m.pos = dense2D<double>(3, flat.pos.cols());
    for (std::size_t i = 0; i < flat.pos.cols(); ++i)
        for (int r = 0; r < 3; ++r) m.pos(r, i) = R[r][0] * flat.pos(0, i) + R[r][1] * flat.pos(1, i) + 1.0;
    fem::numerical_model_base ml = make_mesh(ctx, pl, m.conn, elfes::element_type_of<Shape>);
    fem::numerical_model_base mg = make_mesh(ctx, pg, m.conn, elfes::element_type_of<Shape>);
    ASSERT_TRUE(ml.is_valid());
    EXPECT_EQ(ml.engine()->get_server_code(), 9000u + Shape::element_type_value);
    // in-plane field: local u = A (x, y)
    const double A[2][2] = {{1e-3, 4e-4}, {-2e-4, 2e-3}};
    auto in_plane = [&](const double* x, double* u) {
        // local coordinates of x
        const double p[3] = {x[0] - 1.0, x[1] - 1.0, x[2] - 1.0};
        const double lx = R[0][0] * p[0] + R[1][0] * p[1] + R[2][0] * p[2];
        const double ly = R[0][1] * p[0] + R[1][1] * p[1] + R[2][1] * p[2];
        const double ul[2] = {A[0][0] * lx + A[0][1] * ly, A[1][0] * lx + A[1][1] * ly};
        for (int r = 0; r < 3; ++r) u[r] = R[r][0] * ul[0] + R[r][1] * ul[1];
    };
    core::DOF_vector U = make_U(m.pos, in_plane);
    double energy = 0.0;
    core::DOF_vector F = internal_forces(*ml.engine(), m.pos, U, &energy);
    double fmax = 0.0, fin = 0.0;
    for (unsigned node = 0; node < m.pos.cols(); ++node)
        for (unsigned k = 0; k < 3; ++k) {
            const double f = std::fabs(*F.find(node * 9 + k));
            fmax = std::max(fmax, f);
            if (interior_2d(m, node)) fin = std::max(fin, f);
        }
    EXPECT_GT(fmax, 1e-5);
    EXPECT_LT(fin, 1e-11 * fmax);
    // plane stress energy on area 4
    const double e11 = A[0][0], e22 = A[1][1], g12 = A[0][1] + A[1][0];
    const double c = nu * E / (1 - nu * nu), mu = E / (2 + 2 * nu);
    const double n11 = t * ((2 * mu + c) * e11 + c * e22), n22 = t * (c * e11 + (2 * mu + c) * e22), n12 = t * mu * g12;
    EXPECT_NEAR(energy, 0.5 * 4.0 * (n11 * e11 + n22 * e22 + n12 * g12), 1e-12);
    // rigid modes of each element
    for (std::uint32_t e = 0; e < ml.engine()->nbr_elements(); ++e) {
        element_result r = compute_element(*ml.engine(), m.pos, e);
        ASSERT_EQ(r.rc, 0);
        double kmax = 0.0;
        for (double v : r.K) kmax = std::max(kmax, std::fabs(v));
        for (int mode = 0; mode < 6; ++mode) {
            for (std::size_t i = 0; i < r.ids.size(); ++i) {
                double s = 0.0;
                for (std::size_t j = 0; j < r.ids.size(); ++j) {
                    const unsigned node = r.ids[j] / 9, d = r.ids[j] % 9;
                    const double x[3] = {m.pos(0, node), m.pos(1, node), m.pos(2, node)};
                    double u = 0.0;
                    if (mode < 3)
                        u = d == unsigned(mode) ? 1.0 : 0.0;
                    else {
                        double om[3] = {0, 0, 0};
                        om[mode - 3] = 1.0;
                        const double wx[3] = {om[1] * x[2] - om[2] * x[1], om[2] * x[0] - om[0] * x[2],
                                              om[0] * x[1] - om[1] * x[0]};
                        u = wx[d];
                    }
                    s += r.at(i, j) * u;
                }
                ASSERT_NEAR(s, 0.0, 1e-10 * kmax);
            }
        }
    }
    // finite: rigid rotation of the whole membrane, out of its plane
    const double Q[3][3] = {{0.36, 0.48, -0.8}, {-0.8, 0.6, 0.0}, {0.48, 0.64, 0.6}};
    core::DOF_vector V = make_U(m.pos, [&](const double* x, double* u) {
        for (int r = 0; r < 3; ++r) u[r] = Q[r][0] * x[0] + Q[r][1] * x[1] + Q[r][2] * x[2] - x[r];
    });
    core::DOF_vector G = internal_forces(*mg.engine(), m.pos, V);
    for (std::size_t k = 0; k < G.size(); ++k) EXPECT_NEAR(G[k], 0.0, 1e-12);
}

TEST(mesh_membrane, patch_rigid_modes_and_rotation) {
    membrane_checks<elfes::faceQ4>(0.4);
    membrane_checks<elfes::faceQ9>(0.3);
    membrane_checks<elfes::faceT3>(0.4);
    membrane_checks<elfes::faceT6>(0.3);
}

// A pressure on a membrane: the resultant is p times the area along the normal of
// the node order.
TEST(mesh_membrane, pressure_resultant) {
    fem::context ctx;
    Ptr<core::law_membrane_StVenant> law = membrane_law(50.0, 0.2, 0.1);
    engine_handle h(law.get());
    fem::model_membrane_lin pl(h);
    const double origin[3] = {0, 0, 2.0};
    test_mesh m = make_patch_2d<elfes::faceQ9>(2, 1.0, 0.2, origin);
    fem::numerical_model_base ml = make_mesh(ctx, pl, m.conn, fem::FE_faceQ9);
    core::DOF_vector U = make_U(m.pos, [](const double*, double* u) { u[0] = u[1] = u[2] = 0.0; });
    core::DOF_vector F;
    F.init(U.get_IDs(), 0.0);
    core::vector_assembler<double> va(F, 1.0);
    core::assembly_args args;
    args.pos = &m.pos;
    args.vector_assembler = &va;
    dense1D<double> p(3, 0.0);
    p[0] = 3.0;
    fem::elementary_load pressure(fem::elementary_load::kind_force, fem::elementary_load::type_scalar, p);
    ASSERT_TRUE(ml.engine()->accepts_load(pressure));
    ASSERT_EQ(ml.engine()->assemble_load(pressure, args), 0);
    double total[3] = {0, 0, 0};
    for (unsigned node = 0; node < m.pos.cols(); ++node)
        for (unsigned d = 0; d < 3; ++d) total[d] += *F.find(node * 9 + d);
    EXPECT_NEAR(total[0], 0.0, 1e-12);
    EXPECT_NEAR(total[1], 0.0, 1e-12);
    EXPECT_NEAR(total[2], 3.0 * 4.0, 1e-10);
    // the local basis of an element: e1 along the first tangent, e3 the normal
    matrix_fixed<double, 3, 3> R;
    ASSERT_EQ(ml.get_local_basis(m.pos, 0, R), fem::no_error);
    EXPECT_NEAR(R(2, 2), 1.0, 1e-14);
    EXPECT_NEAR(R(0, 0) * R(0, 0) + R(1, 0) * R(1, 0), 1.0, 1e-14);
}

Ptr<core::law_rod> rod_law(double E, double A) {
    Ptr<core::law_rod> law(new core::law_rod());
    dense1D<double> d(3);
    d[0] = E;
    d[1] = A;
    d[2] = 0.0;
    EXPECT_EQ(law->init(d), 0);
    return law;
}

// The rod: K = EA / L (t t') blocks; the finite forms keep a translated rod free of
// force, and the Green-Lagrange form gives no force under a rigid rotation.
TEST(mesh_rod, stiffness_and_finite_forms) {
    fem::context ctx;
    Ptr<core::law_rod> law = rod_law(200.0, 0.5);
    engine_handle h(law.get());
    fem::model_rod_lin pl(h);
    fem::model_rod_gnld pd(h);
    fem::model_rod_gnl pg(h);
    EXPECT_EQ(pl.get_physics_code(), 2000u);
    EXPECT_EQ(pd.get_physics_code(), 2200u);
    EXPECT_EQ(pg.get_physics_code(), 2300u);
    dense2D<double> pos(3, 2, 0.0);
    pos(0, 1) = 1.0;
    pos(1, 1) = 2.0;
    pos(2, 1) = 2.0;  // length 3
    dense2D<unsigned int> conn(2, 1);
    conn(0, 0) = 0;
    conn(1, 0) = 1;
    fem::numerical_model_base ml = make_mesh(ctx, pl, conn, fem::FE_edge2);
    ASSERT_TRUE(ml.is_valid());
    element_result r = compute_element(*ml.engine(), pos, 0);
    ASSERT_EQ(r.ids.size(), 6u);
    const double t[3] = {1.0 / 3, 2.0 / 3, 2.0 / 3}, k = 200.0 * 0.5 / 3.0;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            EXPECT_NEAR(r.at(i, j), k * t[i] * t[j], 1e-12);
            EXPECT_NEAR(r.at(i, 3 + j), -k * t[i] * t[j], 1e-12);
        }
    // a stretch of 1 %: axial force EA * 0.01; the element pulls its second node back
    // along -t
    core::DOF_vector U = make_U(pos, [&](const double* x, double* u) {
        for (int d = 0; d < 3; ++d) u[d] = 0.01 * x[d];
    });
    for (fem::physics_model_base* ph :
         {static_cast<fem::physics_model_base*>(&pl), static_cast<fem::physics_model_base*>(&pd)}) {
        fem::numerical_model_base m = make_mesh(ctx, *ph, conn, fem::FE_edge2);
        element_result s = compute_element(*m.engine(), pos, 0, &U, 0);
        for (int d = 0; d < 3; ++d) EXPECT_NEAR(s.f[3 + d], -200.0 * 0.5 * 0.01 * t[d], 1e-12);
    }
    // Green-Lagrange: e = 0.01 + 0.00005, force = EA e times the stretch 1.01
    fem::numerical_model_base mg = make_mesh(ctx, pg, conn, fem::FE_edge2);
    element_result s = compute_element(*mg.engine(), pos, 0, &U, 0);
    for (int d = 0; d < 3; ++d) EXPECT_NEAR(s.f[3 + d], -100.0 * 0.01005 * 1.01 * t[d], 1e-12);
    // translation and rigid rotation
    core::DOF_vector T = make_U(pos, [](const double*, double* u) {
        u[0] = 0.5;
        u[1] = -1.0;
        u[2] = 2.0;
    });
    const double Q[3][3] = {{0.36, 0.48, -0.8}, {-0.8, 0.6, 0.0}, {0.48, 0.64, 0.6}};
    core::DOF_vector Rot = make_U(pos, [&](const double* x, double* u) {
        for (int i = 0; i < 3; ++i) u[i] = Q[i][0] * x[0] + Q[i][1] * x[1] + Q[i][2] * x[2] - x[i];
    });
    fem::numerical_model_base md = make_mesh(ctx, pd, conn, fem::FE_edge2);
    for (const core::DOF_vector* V : {&T, &Rot}) {
        for (fem::numerical_model_base* m : {&md, &mg}) {
            element_result z = compute_element(*m->engine(), pos, 0, V, 0);
            for (double f : z.f) EXPECT_NEAR(f, 0.0, 1e-12);
        }
    }
    // other shapes have no rod
    fem::numerical_model_stiff_lin bad;
    dense2D<unsigned int> c3(3, 1, 0u);
    EXPECT_EQ(bad.init(ctx, pl, c3, fem::FE_edge3), fem::error_element_type);
}

}  // namespace
}  // namespace test
}  // namespace orv
