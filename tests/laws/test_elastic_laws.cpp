// Elastic laws: closed forms, inverses, tangents, energy, thermal strain, rotated
// material axes, and the surface and 1-D laws.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include <omp.h>

#include <orv/fem/bases_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/law_solid_stiff.h>

#include "law_test_utils.h"
#include "laws/law_membrane_stiff.h"
#include "laws/law_rod.h"
#include "laws/law_scalar.h"
#include "laws/law_shell_stiff.h"
#include "laws/law_solid_stiff.h"
#include "laws/law_solid_stiff_2d.h"
#include "problem/bases_mgr.h"

namespace {

namespace fem = orv::fem;
namespace core = orv::core;
using law_test::positive_definite;
using law_test::times;
using law_test::values;
using orv::dense1D;
using orv::matrix_fixed;
using orv::symmetric_fixed;
using orv::vector_fixed;

typedef vector_fixed<double, 6> vec6;
typedef symmetric_fixed<double, 6> sym6;
typedef matrix_fixed<double, 3, 3> mat3;

const core::law_key any_point;

// Engineering strain or stress vector (shears at 3, 4, 5: 12, 13, 23) as a tensor;
// `engineering` halves the shears.
symmetric_fixed<double, 3> to_tensor(const vec6& v, bool engineering) {
    const double f = engineering ? 0.5 : 1.0;
    symmetric_fixed<double, 3> t;
    t(0, 0) = v[0];
    t(1, 1) = v[1];
    t(2, 2) = v[2];
    t(1, 0) = f * v[3];
    t(2, 0) = f * v[4];
    t(2, 1) = f * v[5];
    return t;
}

vec6 from_tensor(const symmetric_fixed<double, 3>& t, bool engineering) {
    const double f = engineering ? 2.0 : 1.0;
    return vec6{t(0, 0), t(1, 1), t(2, 2), f * t(1, 0), f * t(2, 0), f * t(2, 1)};
}

// R S R' (local to global) for a symmetric tensor.
symmetric_fixed<double, 3> rotate_to_global(const mat3& R, const symmetric_fixed<double, 3>& S) {
    symmetric_fixed<double, 3> G;
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j <= i; ++j) {
            double s = 0.0;
            for (std::size_t k = 0; k < 3; ++k)
                for (std::size_t l = 0; l < 3; ++l) s += R(i, k) * S(k, l) * R(j, l);
            G(i, j) = s;
        }
    return G;
}

dense1D<double> orthotropic_data(double E1, double E2, double E3, double nu12, double nu13, double nu23, double G12,
                                 double G13, double G23, double a1 = 0, double a2 = 0, double a3 = 0) {
    return values({E1, E2, E3, nu12, nu13, nu23, G12, G13, G23, 0, 0, 0, 0, 0, 0, a1, a2, a3});
}

void expect_sym_near(const sym6& A, const sym6& B, double tolerance) {
    for (std::size_t i = 0; i < 6; ++i)
        for (std::size_t j = 0; j <= i; ++j) EXPECT_NEAR(A(i, j), B(i, j), tolerance) << "(" << i << ", " << j << ")";
}

TEST(law_solid_StVenant, lame_closed_form) {
    // E = 1, nu = 0.25: lambda = 0.4, mu = 0.4.
    core::law_solid_StVenant law;
    ASSERT_EQ(law.init(values({1.0, 0.25, 0.0})), 0);
    sym6 D;
    ASSERT_EQ(law.get_D(any_point, D), 0);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(D(i, i), 1.2, 1e-15);
        EXPECT_NEAR(D(i + 3, i + 3), 0.4, 1e-15);
        for (std::size_t j = 0; j < i; ++j) EXPECT_NEAR(D(i, j), 0.4, 1e-15);
        for (std::size_t j = 3; j < 6; ++j) EXPECT_EQ(D(i, j), 0.0);
    }
    EXPECT_EQ(D(4, 3), 0.0);
    EXPECT_EQ(D(5, 3), 0.0);

    // Steel: the general formulas, and uniaxial stress recovers E and nu.
    ASSERT_EQ(law.init(values({210000.0, 0.3, 0.0})), 0);
    ASSERT_EQ(law.get_D(any_point, D), 0);
    const double lambda = 0.3 * 210000.0 / (1.3 * 0.4), mu = 210000.0 / 2.6;
    EXPECT_NEAR(D(0, 0), lambda + 2 * mu, 1e-9);
    EXPECT_NEAR(D(2, 1), lambda, 1e-9);
    EXPECT_NEAR(D(5, 5), mu, 1e-9);
    const double e = 1e-3;
    vec6 strain{e, -0.3 * e, -0.3 * e, 0, 0, 0};
    vec6 stress;
    double energy;
    ASSERT_EQ(law.compute(any_point, strain, D, stress, energy, nullptr, 0), 0);
    EXPECT_NEAR(stress[0], 210.0, 1e-9);
    EXPECT_NEAR(stress[1], 0.0, 1e-9);
    EXPECT_NEAR(stress[2], 0.0, 1e-9);
    EXPECT_NEAR(energy, 0.5 * 210.0 * e, 1e-12);

    // nu exactly 0.5 or -1: -1 at evaluation, D zero.
    for (double nu : {0.5, -1.0}) {
        ASSERT_EQ(law.init(values({1.0, nu, 0.0})), 0);
        D = sym6(3.0);
        EXPECT_EQ(law.get_D(any_point, D), -1);
        EXPECT_EQ(D, sym6(0.0));
    }
}

TEST(law_solid_orthotropic, compliance_is_the_inverse_and_isotropic_limit) {
    const double E1 = 150000, E2 = 9000, E3 = 8000, nu12 = 0.3, nu13 = 0.28, nu23 = 0.45;
    const double G12 = 5000, G13 = 4800, G23 = 3100;
    core::law_solid_orthotropic law;
    ASSERT_EQ(law.init(orthotropic_data(E1, E2, E3, nu12, nu13, nu23, G12, G13, G23)), 0);
    sym6 D;
    ASSERT_EQ(law.get_D(any_point, D), 0);
    EXPECT_TRUE(positive_definite(D));

    // Compliance built independently from the engineering constants.
    double S[6][6] = {};
    S[0][0] = 1 / E1;
    S[1][1] = 1 / E2;
    S[2][2] = 1 / E3;
    S[0][1] = S[1][0] = -nu12 / E1;
    S[0][2] = S[2][0] = -nu13 / E1;
    S[1][2] = S[2][1] = -nu23 / E2;
    S[3][3] = 1 / G12;
    S[4][4] = 1 / G13;
    S[5][5] = 1 / G23;
    for (std::size_t i = 0; i < 6; ++i)
        for (std::size_t j = 0; j < 6; ++j) {
            double p = 0.0;
            for (std::size_t k = 0; k < 6; ++k) p += S[i][k] * D(k, j);
            EXPECT_NEAR(p, i == j ? 1.0 : 0.0, 1e-12) << i << ", " << j;
        }

    // Uniaxial stress along 2 through the law: strains -nu21 s / E1 ... as expected.
    // (Checks the reciprocal convention: nu12 / E1 = nu21 / E2.)
    const double s2 = 90.0;
    vec6 strain{-nu12 / E1 * s2, s2 / E2, -nu23 / E2 * s2, 0, 0, 0};
    vec6 stress;
    double energy;
    ASSERT_EQ(law.compute(any_point, strain, D, stress, energy, nullptr, 0), 0);
    EXPECT_NEAR(stress[0], 0.0, 1e-9);
    EXPECT_NEAR(stress[1], s2, 1e-9);
    EXPECT_NEAR(stress[2], 0.0, 1e-9);

    // Equal constants with G = E / (2 + 2 nu): the isotropic law.
    const double E = 70000, nu = 0.33, G = E / (2 + 2 * nu);
    ASSERT_EQ(law.init(orthotropic_data(E, E, E, nu, nu, nu, G, G, G)), 0);
    core::law_solid_StVenant iso;
    ASSERT_EQ(iso.init(values({E, nu, 0.0})), 0);
    sym6 Diso;
    ASSERT_EQ(law.get_D(any_point, D), 0);
    ASSERT_EQ(iso.get_D(any_point, Diso), 0);
    expect_sym_near(D, Diso, 1e-7);

    // Singular constants fail at evaluation.
    ASSERT_EQ(law.init(orthotropic_data(0, E, E, nu, nu, nu, G, G, G)), 0);
    EXPECT_EQ(law.get_D(any_point, D), -1);
    ASSERT_EQ(law.init(orthotropic_data(E, E, E, 0.5, 0.5, 0.5, G, G, G)), 0);  // delta = 0
    EXPECT_EQ(law.get_D(any_point, D), -1);
    EXPECT_EQ(D, sym6(0.0));
}

TEST(law_solid_laws, tangents_symmetric_positive_and_energy) {
    core::law_solid_StVenant iso;
    ASSERT_EQ(iso.init(values({210000.0, 0.3, 1.2e-5})), 0);
    core::law_solid_orthotropic ortho;
    ASSERT_EQ(ortho.init(orthotropic_data(150000, 9000, 8000, 0.3, 0.28, 0.45, 5000, 4800, 3100)), 0);
    // A skyline with a full matrix: an SPD matrix with couplings to the shears.
    const double M[6][6] = {{10, 2, 1, 0.5, 0, 0.1},  {2, 9, 1.5, 0, 0.3, 0},   {1, 1.5, 8, 0.2, 0, 0.4},
                            {0.5, 0, 0.2, 4, 0.1, 0}, {0, 0.3, 0, 0.1, 3, 0.2}, {0.1, 0, 0.4, 0, 0.2, 5}};
    dense1D<double> packed;
    for (std::size_t j = 0; j < 6; ++j)
        for (std::size_t i = 0; i <= j; ++i) packed.push_back(M[i][j]);
    for (double a : {1.0, 2.0, 3.0}) packed.push_back(a);
    core::law_solid_skyline sky;
    ASSERT_EQ(sky.init(packed), 0);

    const vec6 strain{1e-3, -2e-4, 5e-4, 3e-4, -1e-4, 2e-4};
    const vec6 initial{10, -5, 2, 1, 0, -3};
    for (const core::law_solid_stiff* law :
         {static_cast<const core::law_solid_stiff*>(&iso), static_cast<const core::law_solid_stiff*>(&ortho),
          static_cast<const core::law_solid_stiff*>(&sky)}) {
        sym6 D;
        vec6 stress;
        double energy = -1.0;
        ASSERT_EQ(law->compute(any_point, strain, D, stress, energy, nullptr, core::law_commit), 0);
        EXPECT_TRUE(positive_definite(D));
        // Symmetric storage: D(i, j) and D(j, i) are one value; check D x . y = x . D y.
        const vec6 y{0.3, 1, -2, 0.7, 0.1, -0.4};
        EXPECT_NEAR(times(D, strain).dot(y), strain.dot(times(D, y)), 1e-9);
        // stress = D strain and energy = 1/2 strain . D strain.
        const vec6 expected = times(D, strain);
        for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(stress[i], expected[i], 1e-9);
        EXPECT_NEAR(energy, 0.5 * strain.dot(expected), 1e-12);
        // With an initial stress: added to the stress, and in the energy.
        vec6 s = initial;
        ASSERT_EQ(law->compute(any_point, strain, D, s, energy, nullptr, 0), 0);
        for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(s[i], expected[i] + initial[i], 1e-9);
        EXPECT_NEAR(energy, 0.5 * strain.dot(expected + initial), 1e-12);
        // A zero strain leaves the stress as it came, energy 0.
        s = initial;
        ASSERT_EQ(law->compute(any_point, vec6{}, D, s, energy, nullptr, 0), 0);
        EXPECT_EQ(s, initial);
        EXPECT_EQ(energy, 0.0);
    }
    // The skyline gave back the matrix exactly.
    sym6 D;
    ASSERT_EQ(sky.get_D(any_point, D), 0);
    for (std::size_t i = 0; i < 6; ++i)
        for (std::size_t j = 0; j < 6; ++j) EXPECT_EQ(D(i, j), M[i][j]);

    // Partial skyline: column heights 1, 1, 2, 1, 2, 1 leave the other terms 0.
    ASSERT_EQ(sky.init(vector_fixed<unsigned, 6>{1, 1, 2, 1, 2, 1}, values({1, 2, 0.5, 3, 4, 0.25, 5, 6, 0, 0, 0})), 0);
    ASSERT_EQ(sky.get_D(any_point, D), 0);
    EXPECT_EQ(D(0, 0), 1.0);
    EXPECT_EQ(D(1, 1), 2.0);
    EXPECT_EQ(D(2, 1), 0.5);
    EXPECT_EQ(D(2, 2), 3.0);
    EXPECT_EQ(D(2, 0), 0.0);
    EXPECT_EQ(D(3, 3), 4.0);
    EXPECT_EQ(D(4, 3), 0.25);
    EXPECT_EQ(D(4, 4), 5.0);
    EXPECT_EQ(D(5, 5), 6.0);
    EXPECT_EQ(D(5, 4), 0.0);
}

TEST(law_solid_laws, thermal_strain_free_expansion_gives_no_stress) {
    const double T = 80.0;
    core::law_solid_StVenant iso;
    ASSERT_EQ(iso.init(values({210000.0, 0.3, 1.2e-5})), 0);
    core::law_solid_orthotropic ortho;
    ASSERT_EQ(ortho.init(orthotropic_data(150000, 9000, 8000, 0.3, 0.28, 0.45, 5000, 4800, 3100, -1e-6, 3e-5, 2.5e-5)),
              0);
    struct probe {
        const core::law_solid_stiff* law;
        double a[3];
    } probes[] = {{&iso, {1.2e-5, 1.2e-5, 1.2e-5}}, {&ortho, {-1e-6, 3e-5, 2.5e-5}}};
    for (const probe& p : probes) {
        // The free expansion strain, plus a shear that must be left alone.
        vec6 strain{p.a[0] * T, p.a[1] * T, p.a[2] * T, 1e-4, 0, 0};
        ASSERT_EQ(p.law->thermal_correction(any_point, strain, T), 0);
        for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(strain[i], 0.0, 1e-18);
        EXPECT_EQ(strain[3], 1e-4);
        strain[3] = 0.0;
        sym6 D;
        vec6 stress;
        double energy;
        ASSERT_EQ(p.law->compute(any_point, strain, D, stress, energy, nullptr, 0), 0);
        for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(stress[i], 0.0, 1e-9);
        // Blocked expansion of the isotropic law: -E alpha T / (1 - 2 nu) each way.
        if (p.law == &iso) {
            vec6 blocked{};
            ASSERT_EQ(p.law->thermal_correction(any_point, blocked, T), 0);
            ASSERT_EQ(p.law->compute(any_point, blocked, D, stress, energy, nullptr, 0), 0);
            EXPECT_NEAR(stress[0], -210000.0 * 1.2e-5 * T / 0.4, 1e-9);
        }
    }
}

TEST(law_solid_orthotropic, rotated_basis_stress_transforms_as_a_tensor) {
    fem::context ctx;
    fem::bases_mgr bases = ctx.the_bases_mgr();
    // Material axis 1 along global y, axis 2 along -x, axis 3 along z.
    const unsigned quarter = bases.create_cartesian(mat3{0, -1, 0,  //
                                                         1, 0, 0,   //
                                                         0, 0, 1});
    const double c = std::cos(0.4), s = std::sin(0.4);
    const double a = std::cos(1.1), b = std::sin(1.1);
    // A general rotation: about z by 0.4 then about x by 1.1.
    const mat3 Rz{c, -s, 0, s, c, 0, 0, 0, 1};
    const mat3 Rx{1, 0, 0, 0, a, -b, 0, b, a};
    const unsigned general = bases.create_cartesian(Rz * Rx);

    const double E1 = 150000, E2 = 9000, E3 = 8000, nu12 = 0.3, nu13 = 0.28, nu23 = 0.45;
    const double G12 = 5000, G13 = 4800, G23 = 3100;
    fem::law_solid_orthotropic in_quarter(ctx);
    ASSERT_EQ(in_quarter.init(orthotropic_data(E1, E2, E3, nu12, nu13, nu23, G12, G13, G23), bases, quarter), 0);
    EXPECT_EQ(in_quarter.basis_ID(), quarter);
    // The same material described in the global axes: 1 <-> 2 swapped.
    const double nu21 = nu12 * E2 / E1;
    fem::law_solid_orthotropic swapped(ctx);
    ASSERT_EQ(swapped.init(orthotropic_data(E2, E1, E3, nu21, nu23, nu13, G12, G23, G13)), 0);

    const vec6 global_strain{1e-3, -4e-4, 2e-4, 6e-4, -3e-4, 5e-4};
    const vector_fixed<double, 3> where{1, 2, 3};
    mat3 R;
    ASSERT_TRUE(in_quarter.engine()->get_material_frame(where, R));
    EXPECT_FALSE(swapped.engine()->get_material_frame(where, R));
    ASSERT_TRUE(in_quarter.engine()->get_material_frame(where, R));

    auto global_stress = [&](const core::law_solid_stiff& law, const mat3& frame) {
        // Strain to the material frame (R' e R), stress back (R s R').
        symmetric_fixed<double, 3> e = to_tensor(global_strain, true);
        core::cartesian_basis basis(frame);
        basis.to_local(where, e);
        const vec6 local_strain = from_tensor(e, true);
        sym6 D;
        vec6 stress;
        double energy;
        EXPECT_EQ(law.compute(any_point, local_strain, D, stress, energy, nullptr, 0), 0);
        const vec6 g = from_tensor(rotate_to_global(frame, to_tensor(stress, false)), false);
        // The energy does not depend on the frame.
        EXPECT_NEAR(energy, 0.5 * g.dot(global_strain), 1e-12);
        return g;
    };
    const mat3 I{1, 0, 0, 0, 1, 0, 0, 0, 1};
    const vec6 via_basis = global_stress(*in_quarter.engine(), R);
    const vec6 direct = global_stress(*swapped.engine(), I);
    for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(via_basis[i], direct[i], 1e-8) << i;

    // Equal constants are isotropic: any frame gives the isotropic stress.
    const double E = 70000, nu = 0.33, G = E / (2 + 2 * nu);
    fem::law_solid_orthotropic iso_in_general(ctx);
    ASSERT_EQ(iso_in_general.init(orthotropic_data(E, E, E, nu, nu, nu, G, G, G), bases, general), 0);
    ASSERT_TRUE(iso_in_general.engine()->get_material_frame(where, R));
    fem::law_solid_StVenant iso(ctx, values({E, nu, 0.0}));
    const vec6 rotated = global_stress(*iso_in_general.engine(), R);
    const vec6 plain = global_stress(*iso.engine(), I);
    for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(rotated[i], plain[i], 1e-7) << i;

    // A cylindrical basis: the frame follows the point.
    const unsigned cyl = bases.create_cylindrical(vector_fixed<double, 3>{0, 0, 0}, vector_fixed<double, 3>{0, 0, 1});
    fem::law_solid_orthotropic in_cyl(ctx);
    ASSERT_EQ(in_cyl.init(orthotropic_data(E1, E2, E3, nu12, nu13, nu23, G12, G13, G23), bases, cyl), 0);
    ASSERT_TRUE(in_cyl.engine()->get_material_frame(vector_fixed<double, 3>{0, 5, 0}, R));
    EXPECT_NEAR(R(1, 0), 1.0, 1e-15);   // radial = y
    EXPECT_NEAR(R(0, 1), -1.0, 1e-15);  // circumferential = -x
    // An ID that names no basis: the global axes.
    fem::law_solid_orthotropic in_none(ctx);
    ASSERT_EQ(in_none.init(orthotropic_data(E1, E2, E3, nu12, nu13, nu23, G12, G13, G23), bases, 99), 0);
    EXPECT_FALSE(in_none.engine()->get_material_frame(where, R));
}

TEST(law_membrane, plane_stress_closed_form_and_orthotropic_limits) {
    const double E = 70000, nu = 0.25, t = 2.0;
    core::law_membrane_StVenant iso;
    ASSERT_EQ(iso.init(values({E, nu, 1e-5, t})), 0);
    symmetric_fixed<double, 3> D;
    ASSERT_EQ(iso.get_D(any_point, D), 0);
    const double k = E / (1 - nu * nu);
    EXPECT_NEAR(D(0, 0), t * k, 1e-9);
    EXPECT_NEAR(D(1, 1), t * k, 1e-9);
    EXPECT_NEAR(D(1, 0), t * nu * k, 1e-9);
    EXPECT_NEAR(D(2, 2), t * E / (2 + 2 * nu), 1e-9);
    EXPECT_EQ(D(2, 0), 0.0);
    EXPECT_TRUE(positive_definite(D));
    // Uniaxial force: N11 = E t e with the free contraction.
    vector_fixed<double, 3> strain{1e-3, -nu * 1e-3, 0}, N;
    double energy;
    ASSERT_EQ(iso.compute(any_point, strain, D, N, energy, nullptr, 0), 0);
    EXPECT_NEAR(N[0], E * t * 1e-3, 1e-9);
    EXPECT_NEAR(N[1], 0.0, 1e-9);
    EXPECT_NEAR(energy, 0.5 * N[0] * 1e-3, 1e-12);
    EXPECT_DOUBLE_EQ(iso.thickness(any_point), t);

    // Orthotropic with equal constants, at any angle: the isotropic membrane.
    core::law_membrane_orthotropic ortho;
    const double G = E / (2 + 2 * nu);
    symmetric_fixed<double, 3> Do;
    for (double theta : {0.0, 30.0, 90.0, -117.0}) {
        ASSERT_EQ(ortho.init(values({E, E, nu, G, theta, 1e-5, 1e-5, 0, 0, 0, 0, 0, t})), 0);
        ASSERT_EQ(ortho.get_D(any_point, Do), 0);
        for (std::size_t i = 0; i < 3; ++i)
            for (std::size_t j = 0; j <= i; ++j) EXPECT_NEAR(Do(i, j), D(i, j), 1e-8);
    }
    // A quarter turn swaps the material axes.
    const double E1 = 140000, E2 = 10000, nu12 = 0.3, G12 = 5000;
    ASSERT_EQ(ortho.init(values({E1, E2, nu12, G12, 90.0, 0, 0, 0, 0, 0, 0, 0, 1.0})), 0);
    ASSERT_EQ(ortho.get_D(any_point, Do), 0);
    core::law_membrane_orthotropic swapped;
    ASSERT_EQ(swapped.init(values({E2, E1, nu12 * E2 / E1, G12, 0.0, 0, 0, 0, 0, 0, 0, 0, 1.0})), 0);
    ASSERT_EQ(swapped.get_D(any_point, D), 0);
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j <= i; ++j) EXPECT_NEAR(Do(i, j), D(i, j), 1e-8);

    // At 30 degrees: energy is the same as the material-axes energy of the
    // rotated strain, and a free thermal expansion gives no force.
    ASSERT_EQ(ortho.init(values({E1, E2, nu12, G12, 30.0, -1e-6, 3e-5, 0, 0, 0, 0, 0, 1.0})), 0);
    ASSERT_EQ(ortho.get_D(any_point, Do), 0);
    EXPECT_TRUE(positive_definite(Do));
    const double c = std::sqrt(3.0) / 2, s = 0.5;
    const vector_fixed<double, 3> e{1e-3, 4e-4, -6e-4};
    // Material strain: e'11 = a1.e.a1, etc. with a1 = (c, s), a2 = (-s, c).
    const double e11 = c * c * e[0] + s * s * e[1] + c * s * e[2];
    const double e22 = s * s * e[0] + c * c * e[1] - c * s * e[2];
    const double g12 = -2 * c * s * e[0] + 2 * c * s * e[1] + (c * c - s * s) * e[2];
    const double d = 1 - nu12 * nu12 * E2 / E1;
    const double material_energy =
        0.5 * (E1 / d * e11 * e11 + 2 * nu12 * E2 / d * e11 * e22 + E2 / d * e22 * e22 + G12 * g12 * g12);
    vector_fixed<double, 3> force;
    ASSERT_EQ(ortho.compute(any_point, e, Do, force, energy, nullptr, 0), 0);
    EXPECT_NEAR(energy, material_energy, 1e-12);
    const double T = 50.0;
    vector_fixed<double, 3> thermal{(c * c * -1e-6 + s * s * 3e-5) * T, (s * s * -1e-6 + c * c * 3e-5) * T,
                                    2 * c * s * (-1e-6 - 3e-5) * T};
    ASSERT_EQ(ortho.thermal_correction(any_point, thermal, T), 0);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(thermal[i], 0.0, 1e-18);

    // nu exactly 1 fails.
    ASSERT_EQ(iso.init(values({E, 1.0, 0, t})), 0);
    EXPECT_EQ(iso.get_D(any_point, D), -1);
}

TEST(law_shell, blocks_of_the_stiffness_and_orthotropic_limit) {
    const double E = 1000.0, nu = 0.25, t = 2.0;
    core::law_shell_StVenant shell;
    // Offset 0.5: inertia 0.25 * 2 + 8 / 12, coupling 1.
    ASSERT_EQ(shell.init(values({E, nu, 1e-5, t, 300.0, 0.5})), 0);
    symmetric_fixed<double, 8> D;
    ASSERT_EQ(shell.get_D(any_point, D), 0);
    symmetric_fixed<double, 3> P;
    ASSERT_EQ(core::plane_stress_isotropic(E, nu, P), 0);
    const double inertia = 0.5 + 8.0 / 12.0;
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j) {
            EXPECT_NEAR(D(i, j), t * P(i, j), 1e-9);
            EXPECT_NEAR(D(i + 3, j + 3), inertia * P(i, j), 1e-9);
            EXPECT_NEAR(D(i + 3, j), 1.0 * P(i, j), 1e-9);
            EXPECT_EQ(D(i + 6 > 7 ? 7 : i + 6, j), 0.0);
        }
    EXPECT_DOUBLE_EQ(D(6, 6), 300.0 * t);
    EXPECT_DOUBLE_EQ(D(7, 7), 300.0 * t);
    EXPECT_EQ(D(7, 6), 0.0);
    EXPECT_TRUE(positive_definite(D));

    // Pure bending of a mid-surface shell: M11 = E t^3 / 12 / (1 - nu^2) kappa.
    ASSERT_EQ(shell.init(values({E, nu, 1e-5, t})), 0);
    vector_fixed<double, 8> strain{}, stress{};
    strain[3] = 0.01;
    double energy;
    ASSERT_EQ(shell.compute(any_point, strain, D, stress, energy, nullptr, 0), 0);
    EXPECT_NEAR(stress[3], E * 8.0 / 12.0 / (1 - nu * nu) * 0.01, 1e-9);
    EXPECT_EQ(stress[0], 0.0);
    EXPECT_NEAR(energy, 0.5 * stress[3] * 0.01, 1e-15);
    // Shear: 5/6 G t.
    strain = vector_fixed<double, 8>{};
    stress = vector_fixed<double, 8>{};
    strain[6] = 1e-3;
    ASSERT_EQ(shell.compute(any_point, strain, D, stress, energy, nullptr, 0), 0);
    EXPECT_NEAR(stress[6], 5.0 / 6.0 * E / 2.5 * t * 1e-3, 1e-12);
    // Thermal: only the membrane strains change.
    strain = vector_fixed<double, 8>{};
    strain[0] = strain[1] = 1e-5 * 20.0;
    strain[3] = 0.5;
    ASSERT_EQ(shell.thermal_correction(any_point, strain, 20.0), 0);
    EXPECT_NEAR(strain[0], 0.0, 1e-20);
    EXPECT_NEAR(strain[1], 0.0, 1e-20);
    EXPECT_EQ(strain[3], 0.5);

    // Orthotropic with equal constants and 5/6 G shear stiffness: the same law.
    const double G = E / 2.5;
    core::law_shell_orthotropic ortho;
    ASSERT_EQ(ortho.init(values({E, E, nu, G, 40.0, 1e-5, 1e-5, 0, 0, 0, 0, 0, 5.0 / 6.0 * G, 5.0 / 6.0 * G, t})), 0);
    symmetric_fixed<double, 8> Do;
    ASSERT_EQ(ortho.get_D(any_point, Do), 0);
    ASSERT_EQ(shell.get_D(any_point, D), 0);
    for (std::size_t i = 0; i < 8; ++i)
        for (std::size_t j = 0; j <= i; ++j) EXPECT_NEAR(Do(i, j), D(i, j), 1e-9) << i << "," << j;
    // Unequal transverse shears turned by 90 degrees swap.
    ASSERT_EQ(ortho.init(values({E, E, nu, G, 90.0, 0, 0, 0, 0, 0, 0, 0, 100.0, 10.0, t})), 0);
    ASSERT_EQ(ortho.get_D(any_point, Do), 0);
    EXPECT_NEAR(Do(6, 6), 10.0 * t, 1e-12);
    EXPECT_NEAR(Do(7, 7), 100.0 * t, 1e-12);
    EXPECT_NEAR(Do(7, 6), 0.0, 1e-12);
    // At 45 degrees they couple.
    ASSERT_EQ(ortho.init(values({E, E, nu, G, 45.0, 0, 0, 0, 0, 0, 0, 0, 100.0, 10.0, t})), 0);
    ASSERT_EQ(ortho.get_D(any_point, Do), 0);
    EXPECT_NEAR(Do(6, 6), 55.0 * t, 1e-9);
    EXPECT_NEAR(Do(7, 6), 45.0 * t, 1e-9);
    EXPECT_TRUE(positive_definite(Do));

    // nu exactly -1 fails with D zero.
    ASSERT_EQ(shell.init(values({E, -1.0, 0, t, 1.0, 1.0, 0.0})), 0);
    EXPECT_EQ(shell.get_D(any_point, D), -1);
    EXPECT_EQ(D, (symmetric_fixed<double, 8>(0.0)));
}

TEST(law_rod_and_scalar, axial_and_scalar_responses) {
    core::law_rod rod;
    ASSERT_EQ(rod.init(values({200000.0, 3.0, 1.2e-5})), 0);
    double area, alpha, E;
    ASSERT_EQ(rod.get_properties(any_point, area, alpha, E), 0);
    EXPECT_EQ(area, 3.0);
    EXPECT_EQ(alpha, 1.2e-5);
    EXPECT_EQ(E, 200000.0);
    EXPECT_EQ(rod.alpha(any_point), 1.2e-5);
    double D = 0.0, stress = 10.0, energy = 0.0;
    ASSERT_EQ(rod.compute(any_point, 1e-3, D, stress, energy, nullptr, 0), 0);
    EXPECT_EQ(D, 200000.0);
    EXPECT_DOUBLE_EQ(stress, 210.0);
    EXPECT_DOUBLE_EQ(energy, 0.5 * 1e-3 * 210.0);
    double strain = 1.2e-5 * 30.0;
    ASSERT_EQ(rod.thermal_correction(any_point, strain, 30.0), 0);
    EXPECT_NEAR(strain, 0.0, 1e-20);

    core::law_scalar k;
    ASSERT_EQ(k.init(4.0), 0);
    double tangent = 0.0;
    stress = 1.0;
    ASSERT_EQ(k.stress(any_point, 0.5, stress, energy, tangent), 0);
    EXPECT_EQ(tangent, 4.0);
    EXPECT_EQ(stress, 3.0);
    EXPECT_EQ(energy, 0.75);
    core::law_scalar empty;
    stress = 1.0;
    EXPECT_EQ(empty.stress(any_point, 0.5, stress, energy, tangent), -1);
    EXPECT_EQ(tangent, 0.0);
    EXPECT_EQ(stress, 1.0);
}

TEST(law_kernels, packed_product_matches_the_plain_one) {
    symmetric_fixed<double, 8> D;
    for (std::size_t i = 0; i < 8; ++i)
        for (std::size_t j = 0; j <= i; ++j) D(i, j) = 1.0 + i * 0.5 - j * 0.25 + (i == j ? 10 : 0);
    vector_fixed<double, 8> x, y;
    for (std::size_t i = 0; i < 8; ++i) x[i] = 0.1 * i - 0.3;
    double energy;
    core::elastic_stress(D, x, y, energy);
    const vector_fixed<double, 8> expected = times(D, x);
    for (std::size_t i = 0; i < 8; ++i) EXPECT_NEAR(y[i], expected[i], 1e-13);
    EXPECT_NEAR(energy, 0.5 * x.dot(expected), 1e-13);
}

TEST(law_solid_stiff_2d, plane_strain_on_the_solid_law) {
    orv::Ptr<core::law_solid_StVenant> solid(new core::law_solid_StVenant());
    ASSERT_EQ(solid->init(values({1.0, 0.25, 1e-5})), 0);
    core::law_solid_stiff_2d plane(solid.get());
    EXPECT_EQ(plane.thickness(any_point), 1.0);
    // Plane strain: S33 = nu (S11 + S22).
    const vec6 strain{1e-3, 2e-4, 0, 4e-4, 0, 0};
    sym6 D;
    vec6 stress;
    double energy;
    ASSERT_EQ(plane.compute(any_point, strain, D, stress, energy, nullptr, 0), 0);
    EXPECT_NEAR(stress[2], 0.25 * (stress[0] + stress[1]), 1e-15);
    EXPECT_NEAR(stress[0], 1.2e-3 + 0.4 * 2e-4, 1e-15);
    EXPECT_NEAR(stress[3], 0.4 * 4e-4, 1e-15);
    // Per-element data set on the solid law are seen, and the other way round.
    ASSERT_EQ(solid->set_element_by_element(3, core::law_all_points, values({2.0, 0.25, 1e-5})), 0);
    core::law_key key;
    key.element = 3;
    ASSERT_EQ(plane.get_D(key, D), 0);
    EXPECT_DOUBLE_EQ(D(3, 3), 0.8);
    ASSERT_EQ(plane.set_element_by_element(4, core::law_all_points, values({3.0, 0.25, 0.0})), 0);
    key.element = 4;
    key.point = core::law_all_points;
    EXPECT_TRUE(solid->has_element_data(key));
    EXPECT_EQ(plane.get_data().size(), 0u);
}

TEST(law_solid_orthotropic, parallel_evaluation_matches_serial) {
    core::law_solid_orthotropic law;
    ASSERT_EQ(law.init(orthotropic_data(150000, 9000, 8000, 0.3, 0.28, 0.45, 5000, 4800, 3100)), 0);
    for (unsigned e = 0; e < 64; e += 3)
        ASSERT_EQ(law.set_element_by_element(e, core::law_all_points,
                                             orthotropic_data(1000.0 + e, 900, 800, 0.3, 0.2, 0.1, 300, 200, 100)),
                  0);
    const int n = 2000;
    auto run = [&](int threads) {
        std::vector<double> out(static_cast<std::size_t>(n) * 7);
#pragma omp parallel for num_threads(threads) schedule(dynamic, 7)
        for (int i = 0; i < n; ++i) {
            core::law_key key;
            key.element = static_cast<std::uint32_t>(i % 64);
            key.point = static_cast<std::uint32_t>(i % 5);
            const vec6 strain{1e-4 * (i % 11), -2e-5 * (i % 7), 3e-5, 1e-5 * (i % 3), 0, -4e-5};
            sym6 D;
            vec6 stress;
            double energy = 0.0;
            const int rc = law.compute(key, strain, D, stress, energy, nullptr, 0);
            for (std::size_t k = 0; k < 6; ++k) out[7 * i + k] = stress[k];
            out[7 * i + 6] = rc == 0 ? energy : -1.0;
        }
        return out;
    };
    const std::vector<double> serial = run(1);
    const std::vector<double> parallel = run(4);
    for (int i = 0; i < n; ++i) ASSERT_GE(serial[7 * i + 6], 0.0) << "point " << i << " failed";
    EXPECT_EQ(serial, parallel);
    const dense1D<double> d = law.get_data();
    EXPECT_EQ(d[0], 150000.0);
    EXPECT_EQ(law.nbr_element_data(), 22u);
}

}  // namespace
