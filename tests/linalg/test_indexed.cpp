#include <gtest/gtest.h>

#include "linalg/indexed1D.h"
#include "linalg/indexed2D_row.h"
#include "linalg/indexed_sym.h"
#include "linalg/vector_fast.h"
#include "orvmath1/dense2D.h"
#include "orvmath1/symmetric_fixed.h"
#include "orvmath1/symmetric_full.h"
#include "orvmath1/symmetric_sparse.h"

using orv::dense1D;
using orv::dense2D;
using orv::Ptr;
using orv::core::indexed1D;
using orv::core::indexed2D_row;
using orv::core::indexed_sym;
typedef orv::core::vector_fast<unsigned> ids_type;

namespace {
Ptr<ids_type> make_ids(std::initializer_list<unsigned> l) {
    std::vector<unsigned> v(l);
    return Ptr<ids_type>(new ids_type(v.data(), v.data() + v.size()));
}
}  // namespace

TEST(indexed, vector_of_values_by_ID) {
    Ptr<ids_type> ids = make_ids({18, 3, 40});
    indexed1D<ids_type, dense1D<double, 8>> f;
    ASSERT_TRUE(f.init(ids, 0.0));
    EXPECT_EQ(f.size(), 3u);
    *f.find(3) = 2.5;
    EXPECT_EQ(f[1], 2.5);
    EXPECT_EQ(f.find(4), nullptr);
    EXPECT_EQ(f.position(40), 2u);

    // A second vector on the same numbering; copies share values and IDs.
    indexed1D<ids_type, dense1D<double, 8>> g(ids, dense1D<double, 8>(3, 1.0));
    EXPECT_EQ(g.get_IDs(), f.get_IDs());
    EXPECT_EQ(ids->ref_count(), 3u);
    indexed1D<ids_type, dense1D<double, 8>> shared = f, deep;
    ASSERT_TRUE(deep.copy(f));
    f[0] = 7.0;
    EXPECT_EQ(shared[0], 7.0);
    EXPECT_EQ(deep[0], 0.0);
    EXPECT_EQ(*deep.find(3), 2.5);
    f.clear();
    EXPECT_EQ(f.position(3), ids_type::npos);  // no IDs any more
    EXPECT_EQ(f.find(3), nullptr);
}

TEST(indexed, matrix_rows_by_ID) {
    Ptr<ids_type> ids = make_ids({9, 10, 11, 27});
    indexed2D_row<ids_type, dense2D<double>> m(ids, dense2D<double>(4, 2, 0.0));
    m(m.row_of(27), 1) = 5.0;
    EXPECT_EQ(m(3, 1), 5.0);
    EXPECT_EQ(m.row_of(12), ids_type::npos);
    indexed2D_row<ids_type, dense2D<double>> c;
    ASSERT_TRUE(c.copy(m));
    EXPECT_EQ(c.get_IDs(), ids);
    EXPECT_EQ(c(3, 1), 5.0);
    EXPECT_NE(c.data(), m.data());
}

TEST(indexed, symmetric_matrices_share_one_numbering) {
    Ptr<ids_type> ids = make_ids({4, 8, 15});
    typedef indexed_sym<ids_type, orv::symmetric_full<double>> full_type;
    typedef indexed_sym<ids_type, orv::symmetric_sparse<double>> sparse_type;
    typedef indexed_sym<ids_type, orv::symmetric_fixed<double, 3>> fixed_type;

    Ptr<full_type> K(new full_type(ids, 3, 0.0));
    EXPECT_EQ(K->ref_count(), 1u);
    std::uint32_t i, j;
    ASSERT_TRUE(K->positions(15, 4, i, j));
    (*K)(i, j) = 2.0;
    EXPECT_EQ((*K)(0, 2), 2.0);
    EXPECT_FALSE(K->positions(15, 5, i, j));
    EXPECT_EQ(j, ids_type::npos);

    dense1D<unsigned int> ptr, col;
    for (unsigned x : {0u, 2u, 3u, 4u}) ptr.push_back(x);
    for (unsigned x : {0u, 2u, 1u, 2u}) col.push_back(x);
    sparse_type M(ids);
    ASSERT_TRUE(M.init(ptr, col, 1.0));
    double v;
    EXPECT_EQ(M.get(M.position(15), M.position(4), v), 0);
    EXPECT_EQ(v, 1.0);
    EXPECT_EQ(M.get_IDs(), K->get_IDs());
    EXPECT_EQ(ids->ref_count(), 3u);

    fixed_type small(ids, 0.5);
    EXPECT_EQ(small(small.position(8), 2), 0.5);
    EXPECT_EQ(small.nbr_IDs(), 3u);

    // A copy is a new counted object that shares matrix and numbering.
    full_type K2(*K);
    EXPECT_EQ(K2.ref_count(), 0u);
    EXPECT_EQ(&K2(0, 0), &(*K)(0, 0));
    EXPECT_EQ(K2.get_IDs(), ids);
    K.reset();
    EXPECT_EQ(K2(2, 0), 2.0);
    EXPECT_EQ(ids->ref_count(), 4u);  // ids, M, small, K2
}
