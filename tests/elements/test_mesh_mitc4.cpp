// The assumed in-plane strains of the faceQ4 plane strain and membrane elements:
// agreement with the plain element on parallelograms, constant strain on distorted
// patches, rigid modes and no spurious ones, the finite-strain tangent, and in-plane
// bending of a cantilever on a trapezoidal mesh.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "elements/mechanical_membrane.h"
#include "elements/mechanical_plane_strain.h"
#include "elements/mesh_material_law.h"
#include "elements/stiff_mesh_factory.h"
#include "laws/law_membrane_stiff.h"
#include "tests/elements/test_mesh_utils.h"

namespace orv {
namespace test {
namespace {

using Q2 = elfes::local_points_set_prod2<elfes::Gauss_faceQ, 2, 2>;

// A physics on an isotropic law: plane strain (E, nu) or membrane (E, nu, thickness t).
Ptr<core::physics_model_base> make_physics(bool membrane, unsigned kinematics, double E, double nu, double t = 1.0) {
    Ptr<core::physics_model_base> ph;
    const unsigned slots[3] = {0, 1, 2};
    if (membrane) {
        ph = new core::mechanical_membrane(kinematics);
        ph->set_DOF_slots(slots, 3);
        Ptr<core::law_membrane_StVenant> law(new core::law_membrane_StVenant());
        dense1D<double> d(4);
        d[0] = E;
        d[1] = nu;
        d[2] = 0.0;
        d[3] = t;
        EXPECT_EQ(law->init(d), 0);
        ph->set_material(Ptr<core::mesh_material>(new core::mesh_material_membrane(law)), Ptr<ref_counted>(law.get()));
    } else {
        ph = new core::mechanical_plane_strain(kinematics);
        ph->set_DOF_slots(slots, 2);
        Ptr<core::law_solid_StVenant> law = make_law(E, nu);
        ph->set_material(Ptr<core::mesh_material>(new core::mesh_material_solid(law)), Ptr<ref_counted>(law.get()));
    }
    return ph;
}

// The faceQ4 model as built by the library (assumed strains) and the plain one.
struct model_pair {
    Ptr<core::numerical_model_base> assumed, plain;
};

model_pair make_models(fem::context& ctx, const Ptr<core::physics_model_base>& ph, const dense2D<unsigned int>& conn) {
    using namespace core;
    model_pair m;
    EXPECT_EQ(create_stiff_mesh(ctx.engine(), ph, conn, fem::FE_faceQ4, m.assumed), 0);
    const bool finite = ph->get_kinematics() != kinematics_lin;
    numerical_model_base* p = nullptr;
    if (ph->get_family_code() == mechanical_membrane::family_code)
        p = finite ? make_stiff_mesh<mechanical_membrane_kinematics<finite_strain_tag, finite_transformation_tag>,
                                     elfes::faceQ4, Q2, Q2>(ctx.engine(), ph, conn, fem::FE_faceQ4)
                   : make_stiff_mesh<mechanical_membrane_kinematics<small_strain_tag, small_transformation_tag>,
                                     elfes::faceQ4, Q2, Q2>(ctx.engine(), ph, conn, fem::FE_faceQ4);
    else
        p = finite ? make_stiff_mesh<mechanical_plane_strain_kinematics<finite_strain_tag, finite_transformation_tag>,
                                     elfes::faceQ4, Q2, Q2>(ctx.engine(), ph, conn, fem::FE_faceQ4)
                   : make_stiff_mesh<mechanical_plane_strain_kinematics<small_strain_tag, small_transformation_tag>,
                                     elfes::faceQ4, Q2, Q2>(ctx.engine(), ph, conn, fem::FE_faceQ4);
    m.plain = Ptr<numerical_model_base>(p);
    return m;
}

// One element with the given corners (counter-clockwise), nodes 0 to 3.
struct one_element {
    dense2D<double> pos{3, 4};
    dense2D<unsigned int> conn{4, 1};
    explicit one_element(const double (*c)[3]) {
        for (unsigned i = 0; i < 4; ++i) {
            conn(i, 0) = i;
            for (unsigned d = 0; d < 3; ++d) pos(d, i) = c[i][d];
        }
    }
};

double max_abs(const std::vector<double>& v) {
    double m = 0.0;
    for (double x : v) m = std::max(m, std::fabs(x));
    return m;
}

// Rank of a dense n x n matrix by Gaussian elimination with full pivoting.
unsigned rank_of(std::vector<double> A, unsigned n, double tol) {
    unsigned rank = 0;
    std::vector<bool> row_used(n, false), col_used(n, false);
    for (unsigned step = 0; step < n; ++step) {
        double best = 0.0;
        unsigned pr = 0, pc = 0;
        for (unsigned i = 0; i < n; ++i)
            for (unsigned j = 0; j < n; ++j)
                if (!row_used[i] && !col_used[j] && std::fabs(A[i * n + j]) > best) {
                    best = std::fabs(A[i * n + j]);
                    pr = i;
                    pc = j;
                }
        if (best <= tol) break;
        ++rank;
        row_used[pr] = col_used[pc] = true;
        for (unsigned i = 0; i < n; ++i) {
            if (row_used[i]) continue;
            const double f = A[i * n + pc] / A[pr * n + pc];
            for (unsigned j = 0; j < n; ++j) A[i * n + j] -= f * A[pr * n + j];
        }
    }
    return rank;
}

// A plane R (x, y) + origin holding the membrane elements.
const double tilt[3][3] = {{0.8, 0.0, 0.6}, {0.36, 0.8, -0.48}, {-0.48, 0.6, 0.64}};

void place(bool membrane, double x, double y, double* out) {
    if (!membrane) {
        out[0] = x;
        out[1] = y;
        out[2] = 0.0;
        return;
    }
    for (int r = 0; r < 3; ++r) out[r] = tilt[r][0] * x + tilt[r][1] * y + 0.5;
}

// Flat elements under small strain: the distortion correction and the area-factor
// scale cancel, and the assumed strains are the displacement strains on any flat
// quadrilateral (parallelogram or trapezoid): the plain matrix. A warped membrane
// element (corners off one plane) and the finite strain form (the tying values miss
// the quadratic terms of the Green-Lagrange strains) differ from the plain element.
TEST(mesh_mitc4, flat_small_strain_gives_the_plain_matrix) {
    fem::context ctx;
    for (bool membrane : {false, true}) {
        Ptr<core::physics_model_base> ph = make_physics(membrane, core::kinematics_lin, 70.0, 0.3, 0.2);
        const double para[4][2] = {{0.0, 0.0}, {2.0, 0.5}, {2.7, 1.7}, {0.7, 1.2}};
        const double trap[4][2] = {{0.0, 0.0}, {2.0, 0.0}, {1.6, 1.0}, {0.3, 1.0}};
        for (int shape = 0; shape < 3; ++shape) {
            if (shape == 2 && !membrane) continue;
            double c[4][3];
            for (int i = 0; i < 4; ++i) {
                const double* p = shape == 0 ? para[i] : trap[i];
                place(membrane, p[0], p[1], c[i]);
            }
            if (shape == 2) {
                // warp: the corners alternately above and below the plane
                for (int i = 0; i < 4; ++i)
                    for (int r = 0; r < 3; ++r) c[i][r] += (i % 2 ? -0.15 : 0.15) * tilt[r][2];
            }
            one_element el(c);
            model_pair m = make_models(ctx, ph, el.conn);
            ASSERT_TRUE(m.assumed && m.plain);
            element_result a = compute_element(*m.assumed, el.pos, 0), b = compute_element(*m.plain, el.pos, 0);
            ASSERT_EQ(a.rc, 0);
            ASSERT_EQ(b.rc, 0);
            ASSERT_EQ(a.K.size(), b.K.size());
            double diff = 0.0;
            for (std::size_t k = 0; k < a.K.size(); ++k) diff = std::max(diff, std::fabs(a.K[k] - b.K[k]));
            if (shape < 2)
                EXPECT_LT(diff, 1e-12 * max_abs(b.K)) << membrane << " " << shape;
            else
                EXPECT_GT(diff, 1e-3 * max_abs(b.K));
        }
        // finite strain on the parallelogram at a displaced state
        Ptr<core::physics_model_base> pg = make_physics(membrane, core::kinematics_gnl, 70.0, 0.3, 0.2);
        double c[4][3];
        for (int i = 0; i < 4; ++i) place(membrane, para[i][0], para[i][1], c[i]);
        one_element el(c);
        model_pair m = make_models(ctx, pg, el.conn);
        core::DOF_vector U = make_U(el.pos, [&](const double* x, double* u) {
            // a bending (hourglass-like) field
            u[0] = 0.05 * x[0] * x[1];
            u[1] = -0.03 * x[0] * x[1];
            u[2] = 0.02 * x[0] * x[1];
        });
        element_result a = compute_element(*m.assumed, el.pos, 0, &U, 0),
                       b = compute_element(*m.plain, el.pos, 0, &U, 0);
        double diff = 0.0;
        for (std::size_t k = 0; k < a.f.size(); ++k) diff = std::max(diff, std::fabs(a.f[k] - b.f[k]));
        EXPECT_GT(diff, 1e-4 * max_abs(b.f)) << membrane;
    }
}

// Strongly distorted element: the rigid modes (2 planar, 6 for the membrane in space)
// are in the null space and there is no other zero-energy mode; K u equals the
// negated internal force of u.
TEST(mesh_mitc4, rigid_modes_rank_and_consistency) {
    fem::context ctx;
    const double quad[4][2] = {{0.0, 0.0}, {2.0, 0.3}, {2.4, 1.9}, {-0.2, 1.1}};
    for (int kase : {0, 1, 2}) {
        // plane strain, flat membrane, warped membrane
        const bool membrane = kase > 0;
        Ptr<core::physics_model_base> ph = make_physics(membrane, core::kinematics_lin, 70.0, 0.3, 0.2);
        double c[4][3];
        for (int i = 0; i < 4; ++i) place(membrane, quad[i][0], quad[i][1], c[i]);
        if (kase == 2)
            for (int i = 0; i < 4; ++i)
                for (int r = 0; r < 3; ++r) c[i][r] += (i % 2 ? -0.2 : 0.2) * tilt[r][2];
        one_element el(c);
        model_pair m = make_models(ctx, ph, el.conn);
        element_result r = compute_element(*m.assumed, el.pos, 0);
        ASSERT_EQ(r.rc, 0);
        const unsigned n = static_cast<unsigned>(r.ids.size());
        ASSERT_EQ(n, membrane ? 12u : 8u);
        const double kmax = max_abs(r.K);
        const int modes = membrane ? 6 : 3;
        for (int mode = 0; mode < modes; ++mode) {
            std::vector<double> u(n);
            for (unsigned j = 0; j < n; ++j) {
                const unsigned node = r.ids[j] / 9, d = r.ids[j] % 9;
                const double x[3] = {el.pos(0, node), el.pos(1, node), el.pos(2, node)};
                double om[3] = {0, 0, 0};
                if (mode >= (membrane ? 3 : 2)) om[membrane ? mode - 3 : 2] = 1.0;
                const double wx[3] = {om[1] * x[2] - om[2] * x[1], om[2] * x[0] - om[0] * x[2],
                                      om[0] * x[1] - om[1] * x[0]};
                u[j] = (int(d) == mode ? 1.0 : 0.0) + wx[d];
            }
            for (unsigned i = 0; i < n; ++i) {
                double s = 0.0;
                for (unsigned j = 0; j < n; ++j) s += r.at(i, j) * u[j];
                ASSERT_NEAR(s, 0.0, 1e-11 * kmax) << membrane << " mode " << mode;
            }
        }
        // null space: the rigid modes, and for the flat membrane the normal motions of
        // the four nodes (three of them rigid): rank 8 - 3 and 12 - 7
        if (kase < 2) {
            EXPECT_EQ(rank_of(r.K, n, 1e-10 * kmax), 5u);
        }
        std::mt19937 rng(11);
        std::uniform_real_distribution<double> uni(-1e-3, 1e-3);
        core::DOF_vector U = make_U(el.pos, [&](const double*, double* u) {
            for (int d = 0; d < 3; ++d) u[d] = uni(rng);
        });
        element_result f = compute_element(*m.assumed, el.pos, 0, &U);
        for (unsigned i = 0; i < n; ++i) {
            double s = 0.0;
            for (unsigned j = 0; j < n; ++j) s += r.at(i, j) * *U.find(r.ids[j]);
            EXPECT_NEAR(f.f[i], -s, 1e-12 * kmax);
        }
    }
}

// A 3 x 3 patch of general quadrilaterals (interior nodes moved far) under a linear
// field: interior nodes in equilibrium and the exact stresses at every point.
TEST(mesh_mitc4, constant_strain_patch) {
    fem::context ctx;
    const double E = 40.0, nu = 0.25, t = 0.3;
    const double off[4][2] = {{0.31, -0.22}, {-0.18, 0.27}, {0.24, 0.19}, {-0.29, -0.13}};
    for (bool membrane : {false, true}) {
        Ptr<core::physics_model_base> ph = make_physics(membrane, core::kinematics_lin, E, nu, t);
        dense2D<double> pos(3, 16);
        dense2D<unsigned int> conn(4, 9);
        std::vector<double> lx(16), ly(16);
        for (unsigned j = 0; j < 4; ++j)
            for (unsigned i = 0; i < 4; ++i) {
                const unsigned k = 4 * j + i;
                double x = i, y = j;
                if (i > 0 && i < 3 && j > 0 && j < 3) {
                    const unsigned q = 2 * (j - 1) + (i - 1);
                    x += off[q][0];
                    y += off[q][1];
                }
                lx[k] = x;
                ly[k] = y;
                double p[3];
                place(membrane, x, y, p);
                for (int d = 0; d < 3; ++d) pos(d, k) = p[d];
            }
        for (unsigned j = 0; j < 3; ++j)
            for (unsigned i = 0; i < 3; ++i) {
                const unsigned e = 3 * j + i, n0 = 4 * j + i;
                conn(0, e) = n0;
                conn(1, e) = n0 + 1;
                conn(2, e) = n0 + 5;
                conn(3, e) = n0 + 4;
            }
        model_pair m = make_models(ctx, ph, conn);
        const double A[2][2] = {{1e-3, 4e-4}, {-2e-4, 2e-3}};
        core::DOF_vector U = make_U(pos, [&](const double* x, double* u) {
            double l[2];
            if (membrane) {
                const double p[3] = {x[0] - 0.5, x[1] - 0.5, x[2] - 0.5};
                for (int a = 0; a < 2; ++a) l[a] = tilt[0][a] * p[0] + tilt[1][a] * p[1] + tilt[2][a] * p[2];
            } else {
                l[0] = x[0];
                l[1] = x[1];
            }
            const double ul[2] = {A[0][0] * l[0] + A[0][1] * l[1] + 0.1, A[1][0] * l[0] + A[1][1] * l[1] - 0.2};
            if (membrane)
                for (int r = 0; r < 3; ++r) u[r] = tilt[r][0] * ul[0] + tilt[r][1] * ul[1];
            else {
                u[0] = ul[0];
                u[1] = ul[1];
                u[2] = 0.0;
            }
        });
        std::vector<double> F(16 * 9, 0.0);
        double fmax = 0.0;
        for (std::uint32_t e = 0; e < 9; ++e) {
            element_result r = compute_element(*m.assumed, pos, e, &U, 0);
            ASSERT_EQ(r.rc, 0);
            for (std::size_t k = 0; k < r.ids.size(); ++k) F[r.ids[k]] += r.f[k];
            fmax = std::max(fmax, max_abs(r.f));
        }
        for (unsigned node : {5u, 6u, 9u, 10u})
            for (unsigned d = 0; d < 3; ++d) EXPECT_NEAR(F[node * 9 + d], 0.0, 1e-12 * fmax) << membrane << " " << node;
        // the exact strain and stress in the element's axes (here the plane's axes up
        // to the in-plane rotation of each point frame: compare invariants)
        const double e11 = A[0][0], e22 = A[1][1], g12 = A[0][1] + A[1][0];
        auto* mesh = dynamic_cast<core::stiff_mesh_base*>(m.assumed.get());
        ASSERT_NE(mesh, nullptr);
        for (std::uint32_t e = 0; e < 9; ++e) {
            dense2D<double> out;
            ASSERT_EQ(mesh->get_point_values(e, pos, &U, out), 0);
            const unsigned ns = membrane ? 3 : 6, s12 = membrane ? 2 : 3;
            for (std::size_t p = 0; p < out.cols(); ++p) {
                const double a = out(ns + 0, p), b = out(ns + 1, p), g = out(ns + s12, p);
                EXPECT_NEAR(a + b, e11 + e22, 1e-13);
                EXPECT_NEAR(a * b - 0.25 * g * g, e11 * e22 - 0.25 * g12 * g12, 1e-15);
                if (!membrane) {
                    EXPECT_NEAR(a, e11, 1e-13);
                    EXPECT_NEAR(g, g12, 1e-13);
                }
            }
        }
    }
}

// Finite strain: the tangent is the derivative of the internal force (which also
// checks its symmetry) at a general displaced state of a distorted element, and a
// large rigid rotation gives no force.
TEST(mesh_mitc4, finite_strain_tangent_and_rotation) {
    fem::context ctx;
    const double quad[4][2] = {{0.0, 0.0}, {2.0, 0.3}, {2.4, 1.9}, {-0.2, 1.1}};
    for (bool membrane : {false, true}) {
        Ptr<core::physics_model_base> ph = make_physics(membrane, core::kinematics_gnl, 100.0, 0.3, 0.1);
        double c[4][3];
        for (int i = 0; i < 4; ++i) place(membrane, quad[i][0], quad[i][1], c[i]);
        one_element el(c);
        model_pair m = make_models(ctx, ph, el.conn);
        ASSERT_TRUE(m.assumed);
        // rigid rotation (about the plane's normal for plane strain, a general one for
        // the membrane) plus a translation
        const double th = 0.7;
        const double Rz[3][3] = {{std::cos(th), -std::sin(th), 0}, {std::sin(th), std::cos(th), 0}, {0, 0, 1}};
        const double Rg[3][3] = {{0.36, 0.48, -0.8}, {-0.8, 0.6, 0.0}, {0.48, 0.64, 0.6}};
        const double(*R)[3] = membrane ? Rg : Rz;
        core::DOF_vector V = make_U(el.pos, [&](const double* x, double* u) {
            for (int r = 0; r < 3; ++r) u[r] = R[r][0] * x[0] + R[r][1] * x[1] + R[r][2] * x[2] - x[r] + 0.1 * r;
        });
        element_result rot = compute_element(*m.assumed, el.pos, 0, &V, 0);
        ASSERT_EQ(rot.rc, 0);
        for (double f : rot.f) EXPECT_NEAR(f, 0.0, 1e-12);
        std::mt19937 rng(5);
        std::uniform_real_distribution<double> uni(-0.08, 0.08);
        core::DOF_vector U = make_U(el.pos, [&](const double*, double* u) {
            for (int d = 0; d < 3; ++d) u[d] = uni(rng);
        });
        element_result r = compute_element(*m.assumed, el.pos, 0, &U);
        ASSERT_EQ(r.rc, 0);
        const double kmax = max_abs(r.K);
        const double h = 1e-6;
        for (std::size_t j = 0; j < r.ids.size(); ++j) {
            double* uj = U.find(r.ids[j]);
            const double keep = *uj;
            *uj = keep + h;
            element_result p = compute_element(*m.assumed, el.pos, 0, &U, 0);
            *uj = keep - h;
            element_result q = compute_element(*m.assumed, el.pos, 0, &U, 0);
            *uj = keep;
            for (std::size_t i = 0; i < r.ids.size(); ++i)
                ASSERT_NEAR((q.f[i] - p.f[i]) / (2 * h), r.at(i, j), 1e-6 * kmax) << membrane << " " << i << ", " << j;
        }
    }
}

// Tip deflection of a plane strain cantilever L x h (nu = 0, unit thickness), nx x 2
// elements, clamped at x = 0, shear force P at x = L; interior vertical lines tilted
// alternately by +-d at the top and bottom (trapezoids).
double cantilever_tip(fem::context& ctx, bool assumed, double d) {
    const double L = 10.0, h = 1.0, E = 1000.0, P = 1.0;
    const unsigned nx = 10, ny = 2, nn = (nx + 1) * (ny + 1);
    dense2D<double> pos(3, nn);
    dense2D<unsigned int> conn(4, nx * ny);
    for (unsigned i = 0; i <= nx; ++i)
        for (unsigned j = 0; j <= ny; ++j) {
            const unsigned k = i * (ny + 1) + j;
            const double shift = (i > 0 && i < nx) ? (i % 2 ? d : -d) * (2.0 * j / ny - 1.0) : 0.0;
            pos(0, k) = L * i / nx + shift;
            pos(1, k) = h * j / ny;
            pos(2, k) = 0.0;
        }
    for (unsigned i = 0; i < nx; ++i)
        for (unsigned j = 0; j < ny; ++j) {
            const unsigned e = i * ny + j, n0 = i * (ny + 1) + j;
            conn(0, e) = n0;
            conn(1, e) = n0 + ny + 1;
            conn(2, e) = n0 + ny + 2;
            conn(3, e) = n0 + 1;
        }
    Ptr<core::physics_model_base> ph = make_physics(false, core::kinematics_lin, E, 0.0);
    model_pair m = make_models(ctx, ph, conn);
    core::numerical_model_base& model = assumed ? *m.assumed : *m.plain;
    const unsigned n = 2 * nn;
    std::vector<double> K(n * n, 0.0), f(n, 0.0);
    for (std::uint32_t e = 0; e < nx * ny; ++e) {
        element_result r = compute_element(model, pos, e);
        EXPECT_EQ(r.rc, 0);
        for (std::size_t a = 0; a < r.ids.size(); ++a)
            for (std::size_t b = 0; b < r.ids.size(); ++b)
                K[(2 * (r.ids[a] / 9) + r.ids[a] % 9) * n + 2 * (r.ids[b] / 9) + r.ids[b] % 9] += r.at(a, b);
    }
    // the shear of the free end spread as a beam's parabola: 1/6, 4/6, 1/6
    for (unsigned j = 0; j <= ny; ++j) f[2 * (nx * (ny + 1) + j) + 1] = P * (j == 1 ? 4.0 : 1.0) / 6.0;
    std::vector<bool> fixed(n, false);
    for (unsigned j = 0; j <= ny; ++j) fixed[2 * j] = fixed[2 * j + 1] = true;
    for (unsigned a = 0; a < n; ++a)
        if (fixed[a]) {
            for (unsigned b = 0; b < n; ++b) K[a * n + b] = K[b * n + a] = 0.0;
            K[a * n + a] = 1.0;
            f[a] = 0.0;
        }
    // Gaussian elimination (the matrix is positive definite)
    for (unsigned k = 0; k < n; ++k)
        for (unsigned i = k + 1; i < n; ++i) {
            const double q = K[i * n + k] / K[k * n + k];
            if (q == 0.0) continue;
            for (unsigned j = k; j < n; ++j) K[i * n + j] -= q * K[k * n + j];
            f[i] -= q * f[k];
        }
    std::vector<double> u(n);
    for (unsigned k = n; k-- > 0;) {
        double s = f[k];
        for (unsigned j = k + 1; j < n; ++j) s -= K[k * n + j] * u[j];
        u[k] = s / K[k * n + k];
    }
    return u[2 * (nx * (ny + 1) + 1) + 1];  // the mid-depth node of the free end
}

TEST(mesh_mitc4, distorted_cantilever_in_plane_bending) {
    fem::context ctx;
    // beam theory with shear: P L^3 / (3 E I) + P L / (5/6 G A), E = 1000, nu = 0
    const double reference = 1000.0 / (3.0 * 1000.0 / 12.0) + 10.0 / (5.0 / 6.0 * 500.0);
    const double plain_regular = cantilever_tip(ctx, false, 0.0) / reference;
    const double assumed_regular = cantilever_tip(ctx, true, 0.0) / reference;
    const double plain = cantilever_tip(ctx, false, 0.3) / reference;
    const double assumed = cantilever_tip(ctx, true, 0.3) / reference;
    std::printf(
        "cantilever tip / beam theory: rectangles plain %.4f assumed %.4f; trapezoids plain %.4f assumed %.4f\n",
        plain_regular, assumed_regular, plain, assumed);
    // flat small strain: the assumed strains are the plain ones, on rectangles and on
    // trapezoids alike (so no gain in in-plane bending); the plain element locks in
    // shear, more so on the trapezoids
    EXPECT_NEAR(assumed_regular, plain_regular, 1e-9);
    EXPECT_NEAR(assumed, plain, 1e-9);
    EXPECT_LT(plain, plain_regular);
    EXPECT_LT(plain_regular, 0.9);
}

}  // namespace
}  // namespace test
}  // namespace orv
