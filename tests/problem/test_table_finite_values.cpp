// Tables refuse values that are not finite, which would spread into every reading.
#include <gtest/gtest.h>

#include <cmath>

#include <orv/fem/oneD_table.h>
#include <orv/fem/twoD_table.h>

namespace {

using orv::dense1D;
using orv::dense2D;

dense1D<double> list(std::initializer_list<double> v) {
    dense1D<double> d;
    for (double x : v) d.push_back(x);
    return d;
}

const double nan_value = std::nan(""), inf = HUGE_VAL;

TEST(table_finite_values, oneD_table_refuses_nan_and_infinity) {
    orv::fem::oneD_table t(list({0, 1}), list({10, 20}));
    ASSERT_EQ(t(0.5), 15.0);
    for (double bad : {nan_value, inf, -inf}) {
        EXPECT_FALSE(t.init(list({0, 1}), list({10, bad})));
        EXPECT_TRUE(t.empty());
        EXPECT_EQ(t(0.5), 0.0);
        EXPECT_FALSE(t.init(list({bad, 1}), list({10, 20})));
        EXPECT_TRUE(t.empty());
        EXPECT_TRUE(orv::fem::oneD_table(bad).empty());
    }
    EXPECT_TRUE(t.init(list({0, 1}), list({10, 20})));
    EXPECT_EQ(t(2.0), 20.0);
}

TEST(table_finite_values, twoD_table_refuses_nan_and_infinity) {
    dense2D<double> z(2, 2, 1.0);
    orv::fem::twoD_table t(list({0, 1}), list({0, 1}), z);
    ASSERT_FALSE(t.empty());
    for (double bad : {nan_value, inf, -inf}) {
        dense2D<double> zb(2, 2, 1.0);
        zb(1, 0) = bad;
        EXPECT_FALSE(t.init(list({0, 1}), list({0, 1}), zb));
        EXPECT_TRUE(t.empty());
        EXPECT_EQ(t(0.5, 0.5), 0.0);
    }
    // an infinite abscissa keeps a list non-decreasing and is still refused
    EXPECT_FALSE(t.init(list({0, inf}), list({0, 1}), z));
    EXPECT_FALSE(t.init(list({0, 1}), list({-inf, 1}), z));
    EXPECT_TRUE(t.init(list({0, 1}), list({0, 1}), z));
}

}  // namespace
