#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <vector>

#include <orv/fem/error_type.h>

#include "common/literal_lists.h"
#include "orvmath1/symmetric_full.h"
#include "orvmath1/symmetric_sparse.h"

using orv::dense1D;
using orv::symmetric_full;
using orv::symmetric_sparse;
using orv::test::list_of;

namespace {
// The 4 x 4 pattern, upper triangle by rows:
//   row 0: 0 2 3    row 1: 1    row 2: (none)    row 3: 3
symmetric_sparse<double> sample() {
    symmetric_sparse<double> s;
    EXPECT_TRUE(s.init(list_of({0, 3, 4, 4, 5}), list_of({0, 2, 3, 1, 3}), 0.0));
    for (std::size_t k = 0; k < s.size(); ++k) s[k] = 1.0 + k;
    return s;
}
}  // namespace

TEST(symmetric_full, packed_lower_triangle) {
    symmetric_full<double> a(4);
    ASSERT_EQ(a.dim(), 4u);
    ASSERT_EQ(a.size(), 10u);
    for (std::size_t k = 0; k < 10; ++k) a[k] = k;
    EXPECT_EQ(a(0, 0), 0.0);
    EXPECT_EQ(a(2, 0), 3.0);
    EXPECT_EQ(a(3, 1), 7.0);
    EXPECT_EQ(a(1, 3), 7.0);
    EXPECT_EQ(a(3, 3), 9.0);
    a(0, 3) = -6.0;
    EXPECT_EQ(a[6], -6.0);

    symmetric_full<double> shared = a, deep;
    ASSERT_TRUE(deep.copy(a));
    a(1, 1) = 50.0;
    EXPECT_EQ(shared(1, 1), 50.0);
    EXPECT_EQ(deep(1, 1), 2.0);
    EXPECT_EQ(deep.dim(), 4u);

    // Growing keeps the leading block: the packing puts it first.
    ASSERT_TRUE(deep.resize(5, 0.0));
    EXPECT_EQ(deep(3, 1), 7.0);
    EXPECT_EQ(deep(4, 2), 0.0);
    symmetric_full<double> f(3, 2.0);
    EXPECT_EQ(f(2, 0), 2.0);
    EXPECT_EQ((f = 1.0), 1.0);
    EXPECT_EQ(f(1, 2), 1.0);

    EXPECT_FALSE(f.resize(std::numeric_limits<std::size_t>::max()));
    EXPECT_FALSE(f.resize(std::size_t(1) << 40));
    EXPECT_EQ(f.dim(), 3u);
    f.clear();
    EXPECT_EQ(f.dim(), 0u);
}

TEST(symmetric_sparse, lookups_at_and_past_the_dimension) {
    symmetric_sparse<double> s = sample();
    ASSERT_TRUE(s.is_valid());
    ASSERT_EQ(s.dim(), 4u);
    // Values in and out of the pattern are checked against a dense reference below.
    EXPECT_EQ(s.find(1, 3), nullptr);
    // At or beyond the dimension.
    double v = -1.0;
    EXPECT_EQ(s.get(4, 0, v), orv::fem::error_data);
    EXPECT_EQ(v, 0.0);
    EXPECT_EQ(s.get(0, 4, v), orv::fem::error_data);
    EXPECT_EQ(s.find(7, 7), nullptr);
    *s.find(3, 0) = 30.0;
    EXPECT_EQ(s[2], 30.0);

    symmetric_sparse<double> empty;
    EXPECT_EQ(empty.dim(), 0u);
    EXPECT_TRUE(empty.is_valid());
    EXPECT_EQ(empty.get(0, 0, v), orv::fem::error_data);
}

TEST(symmetric_sparse, agrees_with_a_dense_reference_on_random_patterns) {
    std::mt19937 gen(1);
    for (int trial = 0; trial < 20; ++trial) {
        const unsigned n = 1 + gen() % 40;
        std::vector<double> dense(n * n, 0.0);
        dense1D<unsigned int> ptr, col;
        ptr.push_back(0);
        double next = 1.0;
        std::vector<double> vals;
        for (unsigned r = 0; r < n; ++r) {
            for (unsigned c = r; c < n; ++c)
                if (gen() % 3 == 0) {
                    col.push_back(c);
                    vals.push_back(next);
                    dense[r * n + c] = dense[c * n + r] = next;
                    next += 1.0;
                }
            ptr.push_back(static_cast<unsigned>(col.size()));
        }
        symmetric_sparse<double> s;
        ASSERT_TRUE(s.init(ptr, col, 0.0));
        ASSERT_TRUE(s.is_valid());
        for (std::size_t k = 0; k < vals.size(); ++k) s[k] = vals[k];
        for (unsigned i = 0; i < n; ++i)
            for (unsigned j = 0; j < n; ++j) {
                double v = -1.0;
                ASSERT_EQ(s.get(i, j, v), 0);
                ASSERT_EQ(v, dense[i * n + j]) << i << "," << j;
            }
    }
}

TEST(symmetric_sparse, profile_sharing_copies_and_validity) {
    symmetric_sparse<double> s = sample();
    dense1D<unsigned int> p, c;
    s.get_profile(p, c);
    EXPECT_EQ(p.data(), s.pointers().data());  // shallow
    EXPECT_EQ(c.data(), s.columns().data());

    // Two matrices of one pattern share the profile.
    symmetric_sparse<double> m;
    ASSERT_TRUE(m.init(p, c, 2.5));
    EXPECT_EQ(m.columns().data(), s.columns().data());
    EXPECT_NE(m.data(), s.data());
    double v;
    EXPECT_EQ(m.get(3, 0, v), 0);
    EXPECT_EQ(v, 2.5);

    symmetric_sparse<double> shared = s, deep;
    ASSERT_TRUE(deep.copy(s));
    s[0] = 99.0;
    EXPECT_EQ(shared[0], 99.0);
    EXPECT_EQ(deep[0], 1.0);
    EXPECT_NE(deep.columns().data(), s.columns().data());
    EXPECT_TRUE(deep.is_valid());

    s.clear();
    EXPECT_EQ(s.dim(), 0u);
    EXPECT_EQ(shared.dim(), 4u);

    // Damaged profiles.
    symmetric_sparse<double> bad;
    ASSERT_TRUE(bad.init(list_of({0, 2, 3}), list_of({1, 0, 1}), 0.0));  // descending row
    EXPECT_FALSE(bad.is_valid());
    ASSERT_TRUE(bad.init(list_of({0, 1, 2}), list_of({0, 0}), 0.0));  // column below its row
    EXPECT_FALSE(bad.is_valid());
    ASSERT_TRUE(bad.init(list_of({0, 1, 3}), list_of({0, 1}), 0.0));  // pointer past the columns
    EXPECT_FALSE(bad.is_valid());
    EXPECT_EQ(bad.get(1, 1, v), 0);                                   // and lookups stay in bounds
    ASSERT_TRUE(bad.init(list_of({0, 1, 2}), list_of({0, 2}), 0.0));  // column beyond the dimension
    EXPECT_FALSE(bad.is_valid());
    ASSERT_TRUE(bad.init(list_of({1, 1, 2}), list_of({1, 1}), 0.0));  // not starting at 0
    EXPECT_FALSE(bad.is_valid());
    ASSERT_TRUE(bad.init(list_of({0, 1, 2}), list_of({0, 1}), 0.0));
    EXPECT_TRUE(bad.is_valid());
}
