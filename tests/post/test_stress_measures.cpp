// Stress measures against hand values, in principal and rotated frames; unit products.
#include <gtest/gtest.h>

#include <cmath>

#include <orv/fem/stress_measures.h>

using namespace orv;
using orv::fem::stress_tensor;

namespace {

stress_tensor tensor(double s11, double s22, double s33, double s12, double s13, double s23) {
    stress_tensor s;
    s(0, 0) = s11, s(1, 1) = s22, s(2, 2) = s33, s(1, 0) = s12, s(2, 0) = s13, s(2, 1) = s23;
    return s;
}

// R diag(p) R^T for the rotation of angle a about z then b about x.
stress_tensor rotated_principal(double p1, double p2, double p3, double a, double b) {
    const double Rz[3][3] = {{std::cos(a), -std::sin(a), 0}, {std::sin(a), std::cos(a), 0}, {0, 0, 1}};
    const double Rx[3][3] = {{1, 0, 0}, {0, std::cos(b), -std::sin(b)}, {0, std::sin(b), std::cos(b)}};
    double R[3][3] = {}, p[3] = {p1, p2, p3};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 3; ++k) R[i][j] += Rx[i][k] * Rz[k][j];
    stress_tensor s;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j <= i; ++j)
            for (int k = 0; k < 3; ++k) s(i, j) += R[i][k] * p[k] * R[j][k];
    return s;
}

}  // namespace

TEST(StressMeasures, VonMisesAndTrescaHandValues) {
    EXPECT_DOUBLE_EQ(fem::Von_Mises_stress(tensor(100, 0, 0, 0, 0, 0)), 100.0);                   // uniaxial
    EXPECT_NEAR(fem::Von_Mises_stress(tensor(0, 0, 0, 10, 0, 0)), 10.0 * std::sqrt(3.0), 1e-12);  // shear
    EXPECT_NEAR(fem::Von_Mises_stress(tensor(-7, -7, -7, 0, 0, 0)), 0.0, 1e-12);                  // hydrostatic
    EXPECT_NEAR(fem::Tresca_stress(tensor(0, 0, 0, 10, 0, 0)), 20.0, 1e-12);
    EXPECT_NEAR(fem::Tresca_stress(tensor(3, 1, -2, 0, 0, 0)), 5.0, 1e-12);
    // Signed: the sign of the trace, plus at zero trace.
    EXPECT_DOUBLE_EQ(fem::Von_Mises_stress(tensor(-100, 0, 0, 0, 0, 0), true), -100.0);
    EXPECT_NEAR(fem::Tresca_stress(tensor(-3, -1, 2, 0, 0, 0), true), -5.0, 1e-12);
    EXPECT_GT(fem::Von_Mises_stress(tensor(1, -1, 0, 0, 0, 0), true), 0.0);
}

TEST(StressMeasures, FrameIndependence) {
    // Principal stresses 3, 1, -2 in a rotated frame: q^2 = ((3-1)^2 + (1+2)^2 + (3+2)^2) / 2 = 19.
    const stress_tensor s = rotated_principal(3, 1, -2, 0.7, -0.4);
    EXPECT_GT(std::fabs(s(1, 0)), 0.1);
    EXPECT_NEAR(fem::Von_Mises_stress(s), std::sqrt(19.0), 1e-12);
    EXPECT_NEAR(fem::Tresca_stress(s), 5.0, 1e-12);
    vector_fixed<double, 3> I;
    vector_fixed<double, 2> J;
    fem::stress_invariants(s, I, J);
    EXPECT_NEAR(I[0], 2.0, 1e-12);
    EXPECT_NEAR(I[1], 3 * 1 + 3 * -2 + 1 * -2, 1e-12);
    EXPECT_NEAR(I[2], -6.0, 1e-12);
    EXPECT_NEAR(J[0], 19.0 / 3.0, 1e-12);  // q = sqrt(3 J2)
    // J3 = det of the deviator: principal deviators 7/3, 1/3, -8/3.
    EXPECT_NEAR(J[1], 7.0 / 3 * 1.0 / 3 * -8.0 / 3, 1e-12);
}

TEST(StressMeasures, BatchesRepackStrainOrder) {
    // Rows s11, s22, s33, s12, s13, s23: the second column is a pure s13 shear.
    dense2D<double> batch(6, 2, 0.0);
    batch(0, 0) = 100.0;
    batch(4, 1) = 10.0;
    dense1D<double> q, t;
    ASSERT_EQ(fem::Von_Mises_stresses(batch, q), fem::no_error);
    ASSERT_EQ(fem::Tresca_stresses(batch, t), fem::no_error);
    ASSERT_EQ(q.size(), 2u);
    EXPECT_DOUBLE_EQ(q[0], 100.0);
    EXPECT_NEAR(q[1], 10.0 * std::sqrt(3.0), 1e-12);
    EXPECT_NEAR(t[1], 20.0, 1e-12);
    dense2D<double> I, J;
    ASSERT_EQ(fem::stress_invariants(batch, I, J), fem::no_error);
    EXPECT_NEAR(I(1, 1), -100.0, 1e-12);

    // Wrong row count: refused, out untouched; no column: empty out.
    EXPECT_EQ(fem::Von_Mises_stresses(dense2D<double>(5, 2, 1.0), q), fem::error_data);
    EXPECT_EQ(q.size(), 2u);
    EXPECT_EQ(fem::Tresca_stresses(dense2D<double>(), t), fem::no_error);
    EXPECT_EQ(t.size(), 0u);
}

TEST(StressMeasures, UnitProductPicksOneNodalDirection) {
    // Two nodes, DOFs x, y of node 0, then y, rz, T of node 1.
    const unsigned ids[] = {0, 1, 10, 14, 15};
    dense1D<unsigned int> IDs;
    for (unsigned id : ids) IDs.push_back(id);
    dense1D<double> v;
    for (double x : {1.0, 2.0, 4.0, 8.0, 16.0}) v.push_back(x);
    EXPECT_EQ(fem::unit_product(v, IDs, fem::field_displacement, 1), 6.0);
    EXPECT_EQ(fem::unit_product(v, IDs, fem::field_rotation, 2), 8.0);
    EXPECT_EQ(fem::unit_product(v, IDs, fem::field_temperature, 0), 16.0);
    EXPECT_EQ(fem::unit_product(v, IDs, fem::field_displacement, 3), 0.0);
    EXPECT_EQ(fem::unit_product(v, IDs, 8u, 0), 0.0);
    symmetric_full<double> M(5, 1.0);
    for (std::size_t k = 0; k < 5; ++k) M(k, k) = v[k];
    EXPECT_EQ(fem::unit_product(M, IDs, fem::field_displacement, 0), 1.0);
}

TEST(StressMeasures, CauchyStressesWithoutModel) {
    fem::context ctx;
    dense2D<double> out(6, 1, 1.0);
    EXPECT_EQ(fem::Cauchy_stresses(ctx, 7, 0, dense2D<double>(3, 1, 0.0), fem::FEM_matrix(), 0, out), fem::error_data);
    EXPECT_EQ(out.rows() * out.cols(), 0u);
}
