#include <gtest/gtest.h>

#include <complex>
#include <vector>

#include "orvmath1/dense2D.h"

using orv::dense1D;
using orv::dense2D;

namespace {
// m(i, j) = 10 i + j, so that every element tells where it is.
dense2D<double> numbered(std::size_t rows, std::size_t cols) {
    dense2D<double> m(rows, cols);
    for (std::size_t j = 0; j < cols; ++j)
        for (std::size_t i = 0; i < rows; ++i) m(i, j) = 10.0 * i + j;
    return m;
}
}  // namespace

TEST(dense2D, column_major_layout) {
    dense2D<double> m = numbered(3, 4);
    EXPECT_EQ(m.rows(), 3u);
    EXPECT_EQ(m.cols(), 4u);
    EXPECT_EQ(m.ld(), 3u);
    EXPECT_EQ(m.size(), 12u);
    // (i, j) at j * ld + i, columns contiguous.
    EXPECT_EQ(m.data()[2 * 3 + 1], 12.0);
    EXPECT_EQ(m.col(3)[2], 23.0);
    dense1D<double> c = m.column(1);
    EXPECT_EQ(c.size(), 3u);
    EXPECT_EQ(c[2], 21.0);
    c[0] = -1.0;
    EXPECT_EQ(m(0, 1), -1.0);

    dense2D<double> f(2, 3, 0.25);
    for (std::size_t j = 0; j < 3; ++j)
        for (std::size_t i = 0; i < 2; ++i) EXPECT_EQ(f(i, j), 0.25);
}

TEST(dense2D, empty_shapes_have_no_elements) {
    dense2D<double> e;
    EXPECT_EQ(e.rows() * e.cols(), 0u);
    EXPECT_EQ(e.size(), 0u);
    dense2D<double> no_rows(0, 5), no_cols(4, 0);
    EXPECT_EQ(no_rows.size(), 0u);
    EXPECT_EQ(no_rows.cols(), 5u);
    EXPECT_EQ(no_rows.rows() * no_rows.cols(), 0u);
    EXPECT_EQ(no_cols.size(), 0u);
    EXPECT_EQ(no_cols.rows() * no_cols.cols(), 0u);
    dense2D<double> m = numbered(3, 3);
    dense2D<double> s = m.sub_matrix(1, 1, 2, 0);
    EXPECT_EQ(s.size(), 0u);
}

TEST(dense2D, sub_matrix_is_a_view_with_the_parent_leading_dimension) {
    dense2D<double> m = numbered(4, 5);
    dense2D<double> s = m.sub_matrix(1, 2, 2, 3);  // rows 1..2, columns 2..4
    EXPECT_EQ(s.ld(), 4u);
    EXPECT_EQ(s.size(), (3 - 1) * 4u + 2u);
    EXPECT_EQ(s(0, 0), 12.0);
    EXPECT_EQ(s(1, 2), 24.0);
    s(1, 1) = -5.0;
    EXPECT_EQ(m(2, 3), -5.0);

    // Filling a sub-matrix leaves the gaps between its columns alone.
    s = 0.0;
    for (std::size_t j = 0; j < 5; ++j)
        for (std::size_t i = 0; i < 4; ++i) {
            const bool inside = i >= 1 && i <= 2 && j >= 2;
            EXPECT_EQ(m(i, j), inside ? 0.0 : 10.0 * i + j) << i << "," << j;
        }

    // A sub-matrix outlives its parent.
    dense2D<double> keep;
    {
        dense2D<double> p = numbered(3, 3);
        keep = p.sub_matrix(1, 1, 2, 2);
    }
    EXPECT_EQ(keep(1, 1), 22.0);
}

TEST(dense2D, copy_is_deep_and_compact) {
    dense2D<double> m = numbered(4, 5);
    dense2D<double> s = m.sub_matrix(1, 1, 3, 2);
    dense2D<double> c;
    ASSERT_TRUE(c.copy(s));
    EXPECT_EQ(c.rows(), 3u);
    EXPECT_EQ(c.cols(), 2u);
    EXPECT_EQ(c.ld(), 3u);
    EXPECT_EQ(c.size(), 6u);
    for (std::size_t j = 0; j < 2; ++j)
        for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(c(i, j), 10.0 * (i + 1) + (j + 1));
    c(0, 0) = 100.0;
    EXPECT_EQ(m(1, 1), 11.0);

    // Copy into a view of the same shape writes the parent in place.
    dense2D<double> src(2, 2, 7.0);
    dense2D<double> window = m.sub_matrix(2, 3, 2, 2);
    ASSERT_TRUE(window.copy(src));
    EXPECT_EQ(window.ld(), 4u);
    EXPECT_EQ(m(3, 4), 7.0);
    EXPECT_EQ(m(1, 4), 14.0);

    // Overlapping source and target on one storage.
    dense2D<double> a = m.sub_matrix(0, 0, 2, 2), b = m.sub_matrix(1, 0, 2, 2);
    ASSERT_TRUE(b.copy(a));
    EXPECT_EQ(m(1, 0), 0.0);
    EXPECT_EQ(m(2, 0), 10.0);
    EXPECT_EQ(m(2, 1), 11.0);

    // operator= and shallow_copy share.
    dense2D<double> sh;
    sh = m;
    EXPECT_EQ(sh.data(), m.data());
    dense2D<double> sh2;
    sh2.shallow_copy(s);
    EXPECT_EQ(&sh2(0, 0), &m(1, 1));
}

TEST(dense2D, external_and_shared_storage) {
    double ext[8] = {0, 1, 2, 3, 4, 5, 6, 7};
    dense2D<double> e(2, 3, 3, ext);  // ld 3: uses 0,1 | 3,4 | 6,7
    ASSERT_EQ(e.rows(), 2u);
    EXPECT_EQ(e(1, 2), 7.0);
    e(0, 1) = 30.0;
    EXPECT_EQ(ext[3], 30.0);
    dense2D<double> bad(3, 2, 2, ext);  // ld < rows
    EXPECT_EQ(bad.rows() * bad.cols(), 0u);

    dense1D<double> store(12, 1.0);
    dense2D<double> on(3, 4, 3, store);
    ASSERT_EQ(on.cols(), 4u);
    on(2, 3) = 9.0;
    EXPECT_EQ(store[11], 9.0);
    dense2D<double> too_big(4, 4, 4, store);  // does not fit in 12 elements
    EXPECT_EQ(too_big.rows() * too_big.cols(), 0u);
}

TEST(dense2D, resize_reserve_and_clear) {
    dense2D<double> m(2, 2, 1.0);
    ASSERT_TRUE(m.resize(3, 2, 5.0));  // the first 4 elements in storage order stay
    EXPECT_EQ(m.ld(), 3u);
    EXPECT_EQ(m(0, 0), 1.0);
    EXPECT_EQ(m(2, 0), 1.0);
    EXPECT_EQ(m(0, 1), 1.0);
    EXPECT_EQ(m(1, 1), 5.0);
    EXPECT_EQ(m(2, 1), 5.0);
    ASSERT_TRUE(m.reserve(10, 10));
    EXPECT_EQ(m.capacity(), 100u);
    EXPECT_EQ(m.rows(), 3u);
    m.clear();
    EXPECT_EQ(m.rows() * m.cols(), 0u);
    EXPECT_EQ(m.capacity(), 100u);
    m.clear_hard();
    EXPECT_EQ(m.capacity(), 0u);
    EXPECT_FALSE(m.storage());

    // Overflowing shapes are refused and change nothing.
    dense2D<double> k(2, 2, 3.0);
    EXPECT_FALSE(k.resize(std::size_t(1) << 40, std::size_t(1) << 40));
    EXPECT_FALSE(k.resize(std::size_t(1) << 30, std::size_t(1) << 30, 0.0));
    EXPECT_FALSE(k.reserve(std::size_t(1) << 33, 1u << 10));
    EXPECT_EQ(k.rows(), 2u);
    EXPECT_EQ(k(1, 1), 3.0);
}

TEST(dense2D, complex_and_unsigned) {
    dense2D<std::complex<double>> z(2, 2, {0.0, 1.0});
    z(1, 0) = {2.0, 0.0};
    EXPECT_EQ(z.col(0)[1], std::complex<double>(2.0, 0.0));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(z.data()) % 16, 0u);
    dense2D<unsigned int> u(3, 1, 4u);
    EXPECT_EQ(u(2, 0), 4u);
}
