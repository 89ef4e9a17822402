#include <gtest/gtest.h>

#include "orvmath1/matrix_fixed.h"
#include "orvmath1/symmetric_fixed.h"
#include "orvmath1/vector_fixed.h"

using orv::matrix_fixed;
using orv::symmetric_fixed;
using orv::vector_fixed;

TEST(fixed, vectors_are_values) {
    vector_fixed<double, 3> a{1.0, 2.0, 3.0}, b{4.0, -5.0, 6.0};
    vector_fixed<double, 3> c = a;
    c[0] = 100.0;
    EXPECT_EQ(a[0], 1.0);  // no sharing
    EXPECT_EQ(a.dot(b), 12.0);
    EXPECT_EQ(orv::cross(a, b), (vector_fixed<double, 3>{27.0, 6.0, -13.0}));
    EXPECT_EQ(a + b, (vector_fixed<double, 3>{5.0, -3.0, 9.0}));
    EXPECT_EQ(2.0 * a - b, (vector_fixed<double, 3>{-2.0, 9.0, 0.0}));
    EXPECT_DOUBLE_EQ((vector_fixed<double, 2>{3.0, 4.0}).norm(), 5.0);
    vector_fixed<double, 6> z;
    for (double x : z) EXPECT_EQ(x, 0.0);
    EXPECT_EQ((z = 2.0), 2.0);
    EXPECT_EQ(z(5), 2.0);
}

TEST(fixed, matrices_column_major_with_products) {
    // Given by rows.
    matrix_fixed<double, 2, 2> a{1.0, 2.0, 3.0, 4.0};
    EXPECT_EQ(a(0, 1), 2.0);
    EXPECT_EQ(a.data()[1], 3.0);  // (1, 0) comes second in memory
    matrix_fixed<double, 2, 2> b{0.0, 1.0, 1.0, 0.0};
    EXPECT_EQ(a * b, (matrix_fixed<double, 2, 2>{2.0, 1.0, 4.0, 3.0}));
    matrix_fixed<double, 3, 4> m{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    vector_fixed<double, 4> x{1.0, 0.0, -1.0, 2.0};
    EXPECT_EQ(m * x, (vector_fixed<double, 3>{6.0, 14.0, 22.0}));
    vector_fixed<double, 3> y{1.0, 1.0, 1.0};
    EXPECT_EQ(m.transpose_times(y), (vector_fixed<double, 4>{15.0, 18.0, 21.0, 24.0}));
    EXPECT_EQ(m.transpose()(3, 2), 12.0);
    matrix_fixed<double, 3, 2> t{1, 0, 0, 1, 1, 1};
    matrix_fixed<double, 3, 3> sq = t * matrix_fixed<double, 2, 3>{1, 2, 3, 4, 5, 6};
    EXPECT_EQ(sq, (matrix_fixed<double, 3, 3>{1, 2, 3, 4, 5, 6, 5, 7, 9}));
}

TEST(fixed, symmetric_fixed_packs_one_triangle) {
    symmetric_fixed<double, 3> s;
    EXPECT_EQ(s.size(), 6u);
    for (std::size_t k = 0; k < 6; ++k) s.data()[k] = k;
    // (i, j), i >= j, at (i + 1) i / 2 + j.
    EXPECT_EQ(s(0, 0), 0.0);
    EXPECT_EQ(s(1, 0), 1.0);
    EXPECT_EQ(s(1, 1), 2.0);
    EXPECT_EQ(s(2, 1), 4.0);
    EXPECT_EQ(s(1, 2), 4.0);
    EXPECT_EQ(s(2, 2), 5.0);
    s(0, 2) = 30.0;
    EXPECT_EQ(s(2, 0), 30.0);
    // [[0 1 30] [1 2 4] [30 4 5]] x (1, 1, 1)
    EXPECT_EQ(s * (vector_fixed<double, 3>(1.0)), (vector_fixed<double, 3>{31.0, 7.0, 39.0}));
    symmetric_fixed<double, 6> six(1.5);
    EXPECT_EQ(six.size(), 21u);
    EXPECT_EQ(six(5, 0), 1.5);
    EXPECT_EQ((symmetric_fixed<double, 6>::index(5, 5)), 20u);
}
