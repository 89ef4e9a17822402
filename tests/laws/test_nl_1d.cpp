// Non-linear elastic 1-D laws and the asymmetric plastic pairs: the power law's
// branches, the force curves against hand values and their energy against the
// integral of the force, the table checks, and the side a pair takes.
#include <gtest/gtest.h>

#include <cmath>

#include <orv/fem/context.h>
#include <orv/fem/law_scalar_nl.h>

#include "laws/law_scalar_nl.h"
#include "tests/laws/law_test_utils.h"

namespace orv {
namespace {

using law_test::values;

struct response {
    double force = 0, energy = 0, tangent = 0;
};

response at(const core::law_scalar& law, double s, double tangent_in = 0.0) {
    response r;
    r.tangent = tangent_in;
    law.stress(core::law_key(), s, r.force, r.energy, r.tangent);
    return r;
}

TEST(ScalarPow, BranchesOfThePowerLaw) {
    fem::context ctx;
    fem::law_scalar_pow two(ctx);
    ASSERT_EQ(two.init(3.0, 2.0), 0);
    for (double s : {-2.0, 0.5, 2.0}) {
        const response r = at(*two.engine(), s);
        EXPECT_DOUBLE_EQ(r.tangent, 3.0 * s * s);
        EXPECT_DOUBLE_EQ(r.force, 3.0 * s * s * s);
        EXPECT_DOUBLE_EQ(r.energy, 0.5 * s * r.force);
    }
    // c = 1 shifts the strain; below lower the caller's tangent stays, above upper
    // the tangent of upper holds.
    fem::law_scalar_pow five(ctx);
    ASSERT_EQ(five.init(2.0, 1.0, 1.0, -1.0, 3.0), 0);
    EXPECT_DOUBLE_EQ(at(*five.engine(), 1.0).tangent, 2.0 * 2.0);  // s = 2
    EXPECT_DOUBLE_EQ(at(*five.engine(), -3.0, 7.0).tangent, 7.0);  // s = -2 < lower
    EXPECT_DOUBLE_EQ(at(*five.engine(), -3.0, 7.0).force, -2.0 * 7.0);
    EXPECT_DOUBLE_EQ(at(*five.engine(), 9.0).tangent, 2.0 * 3.0);  // s = 10 > upper
    EXPECT_EQ(five.init(values({1.0, 2.0, 3.0})), -1);             // 3 values
}

// The curve through (-1, -2), (0, 0), (1, 1), (3, 2).
TEST(ScalarCurve, ForceEnergyAndTangentAlongTheCurve) {
    fem::context ctx;
    fem::law_scalar_nl law(ctx);
    dense2D<double> table(4, 2, 0.0);
    const double x[4] = {-1, 0, 1, 3}, y[4] = {-2, 0, 1, 2};
    for (int i = 0; i < 4; ++i) table(i, 0) = x[i], table(i, 1) = y[i];
    ASSERT_EQ(law.init(table, -5.0, 5.0), 0);
    const core::law_scalar& e = *law.engine();
    response r = at(e, 2.0);
    EXPECT_DOUBLE_EQ(r.force, 1.5);
    EXPECT_DOUBLE_EQ(r.energy, 0.5 + 1.25);
    EXPECT_DOUBLE_EQ(r.tangent, 0.5);
    r = at(e, 5.0);  // flat beyond the last point
    EXPECT_DOUBLE_EQ(r.force, 2.0);
    EXPECT_DOUBLE_EQ(r.tangent, 0.0);
    EXPECT_DOUBLE_EQ(r.energy, 0.5 + 3.0 + 4.0);
    r = at(e, -0.5);
    EXPECT_DOUBLE_EQ(r.force, -1.0);
    EXPECT_DOUBLE_EQ(r.energy, 0.25);
    EXPECT_DOUBLE_EQ(at(e, 1.0).tangent, 0.5);  // at a point: the piece away from 0
    EXPECT_DOUBLE_EQ(at(e, 0.0).tangent, 1.0);
    // The energy is the integral of the force: its difference quotient is the force.
    for (double s : {-1.7, -0.3, 0.4, 1.9, 4.0}) {
        const double h = 1e-6, dE = (at(e, s + h).energy - at(e, s - h).energy) / (2 * h);
        EXPECT_NEAR(dE, at(e, s).force, 1e-8) << s;
    }
    double lo = 0, hi = 0;
    law.get_limits(lo, hi);
    EXPECT_EQ(lo, -5.0);
    EXPECT_EQ(hi, 5.0);
    // Equal neighbours are accepted, decreasing abscissas refused.
    EXPECT_EQ(law.init(values({0.0, 1.0, 1.0, 0.0, 1.0, 2.0})), 0);
    EXPECT_EQ(law.init(values({0.0, 2.0, 1.0, 0.0, 1.0, 2.0})), -1);
    EXPECT_EQ(law.init(values({0.0, 1.0, 2.0})), -1);  // odd count
}

TEST(RodCurve, RodValuesThenTheCurve) {
    fem::context ctx;
    fem::law_rod_nl rod(ctx);
    ASSERT_EQ(rod.init(values({200.0, 2.0, 1e-5, 0.0, 0.01, 0.0, 2.0})), 0);  // 3 rod values, curve (0,0) (0.01,2)
    const dense1D<double> d = rod.get_data();
    ASSERT_EQ(d.size(), 8u);
    EXPECT_EQ(d[3], 0.0);  // the reserved value put in
    double area = 0, alpha = 0, tangent = 0;
    ASSERT_EQ(rod.engine()->get_properties(core::law_key(), area, alpha, tangent), 0);
    EXPECT_EQ(area, 2.0);
    double stress = 0, energy = 0, D = 0;
    rod.engine()->stress(core::law_key(), 0.005, stress, energy, D);
    EXPECT_DOUBLE_EQ(stress, 1.0);
    EXPECT_DOUBLE_EQ(D, 200.0);
    EXPECT_DOUBLE_EQ(energy, 0.5 * 0.005 * 1.0);
}

// Traction yields at 2, compression at 5; a strain of exactly 0 goes to traction.
TEST(UnsymPair, EachSideItsOwnLaw) {
    fem::context ctx;
    fem::law_scalar_ep_perfect pull(ctx, values({10.0, 0.0, 2.0})), push(ctx, values({10.0, 0.0, 5.0}));
    fem::law_scalar_ep_perfect_unsym pair(ctx);
    ASSERT_EQ(pair.init(pull, push), fem::no_error);
    EXPECT_EQ(pair.traction_law().engine(), pull.engine());
    EXPECT_EQ(pair.compression_law().engine(), push.engine());
    const core::law_scalar& e = *pair.engine();
    EXPECT_NEAR(at(e, 1.0).force, 2.0, 1e-12);
    EXPECT_NEAR(at(e, -1.0).force, -5.0, 1e-12);
    EXPECT_NEAR(at(e, -0.1).force, -1.0, 1e-12);
    EXPECT_DOUBLE_EQ(at(e, 0.0).tangent, 10.0);
    // A missing side carries nothing.
    fem::law_scalar_ep_perfect_unsym half(ctx);
    ASSERT_EQ(half.init(pull, fem::law_scalar_ep_perfect()), fem::no_error);
    EXPECT_EQ(at(*half.engine(), -1.0).force, 0.0);
    EXPECT_EQ(fem::law_scalar_ep_perfect_unsym().init(pull, push), fem::error_data);
}

}  // namespace
}  // namespace orv
