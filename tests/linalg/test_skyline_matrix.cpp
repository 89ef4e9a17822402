// The block-skyline matrix: layout, entry access, element addition, products and
// report numbers.
#include <gtest/gtest.h>

#include <orv/fem/error_type.h>

#include <cmath>
#include <random>
#include <vector>

#include "factor_checker.h"
#include "linalg/dense_kernels.h"
#include "linalg/symmetric_hybrid_OOC.h"

using namespace orv::core;
using namespace orv::core::testing;

namespace {

block_profile make_block(unsigned first, unsigned last, std::vector<block_segment> segs) {
    block_profile p;
    p.first = first;
    p.last = last;
    for (const block_segment& s : segs) p.segments.push_back(s);
    return p;
}

// Two blocks: rows 0..3 with own heights 0,1,0,2 and extra columns 4 (height 2) and
// 5 (height 1); rows 4..5 with own heights 0,1 and no extra segment.
std::vector<block_profile> two_blocks() {
    return {make_block(0, 4, {{0, 0}, {1, 1}, {2, 0}, {3, 2}, {4, 2}, {5, 1}}), make_block(4, 6, {{4, 0}, {5, 1}})};
}

}  // namespace

TEST(SkylineMatrix, LayoutOfBlocksAndSegments) {
    const std::vector<block_profile> prof = two_blocks();
    symmetric_hybrid_OOC<double> S;
    ASSERT_EQ(S.init(prof.data(), prof.size(), 0.0, orv::Ptr<OOC_mgr>()), 0);
    EXPECT_EQ(S.dimension(), 6u);
    EXPECT_EQ(S.nbr_blocks(), 2u);
    EXPECT_EQ(S.profile(), 4u + 6u + 2u + 1u);  // columns + heights
    EXPECT_EQ(S.nbr_segments(), 8u);
    EXPECT_EQ(S.max_extra_segments(), 2u);
    EXPECT_EQ(S.total_bytes(), (13u + 16u) * 8u);
    EXPECT_EQ(S.parent_of(0), 1u);
    EXPECT_EQ(S.parent_of(1), ~0u);
    EXPECT_EQ(S.block_of(3), 0u);
    EXPECT_EQ(S.block_of(4), 1u);

    const auto& b0 = S.block(0);
    EXPECT_EQ(b0.n_own, 4u);
    EXPECT_EQ(b0.first(), 0u);
    // an own column of height 0 has an empty segment that ends where the previous one does
    EXPECT_EQ(b0.seg_height(0), 0u);
    EXPECT_EQ(b0.seg_end(0), b0.values.data() + 4);
    EXPECT_EQ(b0.seg_height(2), 0u);
    EXPECT_EQ(b0.seg_end(2), b0.seg_end(1));
    EXPECT_EQ(b0.seg_height(4), 2u);
    EXPECT_EQ(b0.seg_end(5), b0.values.data() + b0.values.size());
    // a block without extra segments has as many segments as own columns
    const auto& b1 = S.block(1);
    EXPECT_EQ(b1.segments.size(), b1.n_own);
    // the blocks' values follow each other in elimination order
    EXPECT_EQ(b1.values.data(), b0.values.data() + b0.values.size());
}

TEST(SkylineMatrix, InconsistentProfilesAreRejected) {
    std::vector<block_profile> prof = two_blocks();
    prof[1].first = 5;  // gap between the blocks
    symmetric_hybrid_OOC<double> S;
    EXPECT_EQ(S.init(prof.data(), prof.size(), 0.0, orv::Ptr<OOC_mgr>()), orv::fem::error_data);
    prof = two_blocks();
    prof[0].segments[4].height = 5;  // extra segment higher than the block
    EXPECT_EQ(S.init(prof.data(), prof.size(), 0.0, orv::Ptr<OOC_mgr>()), orv::fem::error_data);
    EXPECT_EQ(S.dimension(), 0u);
}

TEST(SkylineMatrix, EntryAccessAndFillValue) {
    const std::vector<block_profile> prof = two_blocks();
    symmetric_hybrid_OOC<double> S;
    ASSERT_EQ(S.init(prof.data(), prof.size(), 2.5, orv::Ptr<OOC_mgr>()), 0);
    // what a matrix reads before assembly
    EXPECT_EQ(S.get_val(3, 3), 2.5);
    EXPECT_EQ(S.get_val(2, 3), 2.5);
    EXPECT_EQ(S.get_val(3, 4), 2.5);
    // outside the profile: 0.0; past the dimension: error_data
    EXPECT_EQ(S.get_val(0, 3), 0.0);
    EXPECT_EQ(S.get_val(0, 5), 0.0);
    double v = 1;
    EXPECT_EQ(S.get_val(0, 6, v), orv::fem::error_data);
    EXPECT_EQ(S.set_val(0, 3, 1.0), orv::fem::error_index);
    EXPECT_EQ(S.set_val(7, 1, 1.0), orv::fem::error_data);

    S.fill(0.0);
    EXPECT_EQ(S.set_val(3, 2, 7.0), 0);  // either order
    EXPECT_EQ(S.get_val(2, 3), 7.0);
    EXPECT_EQ(S.add_val(2, 3, 1.0), 0);
    EXPECT_EQ(S.get_val(3, 2), 8.0);
    EXPECT_EQ(S.set_val(3, 5, -1.0), 0);  // extra segment of column 5, row 3
    EXPECT_EQ(S.get_val(5, 3), -1.0);
    EXPECT_EQ(S.add_val(4, 5, 3.0), 0);  // own column of the second block
    EXPECT_EQ(S.get_val(4, 5), 3.0);
    EXPECT_EQ(S.count_zeros(), S.profile() - 3);
}

TEST(SkylineMatrix, SmallMatrixHasNoManager) {
    orv::Ptr<OOC_mgr> mgr(new OOC_mgr());
    dense_sym A32 = random_matrix(32, 0.1, false, 1), A33 = random_matrix(33, 0.1, false, 1);
    std::vector<block_profile> p32 = build_profiles(A32, 600), p33 = build_profiles(A33, 600);
    symmetric_hybrid_OOC<double> S32, S33;
    ASSERT_EQ(S32.init(p32.data(), p32.size(), 0.0, mgr), 0);
    ASSERT_EQ(S33.init(p33.data(), p33.size(), 0.0, mgr), 0);
    EXPECT_FALSE(S32.proxy()->mgr);
    EXPECT_EQ(S33.proxy()->mgr.get(), mgr.get());
    EXPECT_TRUE(S32.all_incore());
}

namespace {

// The test matrix and its skyline form, empty.
struct assembly_case {
    dense_sym pattern;
    symmetric_hybrid_OOC<double> S;
    explicit assembly_case(std::size_t n, unsigned seed, std::size_t limit) : pattern(n) {
        // a pattern of overlapping dense elements of 4 DOFs
        std::mt19937 rng(seed);
        for (std::size_t e = 0; e + 3 < n; e += 2)
            for (std::size_t i = e; i < e + 4; ++i)
                for (std::size_t j = e; j < e + 4; ++j) pattern(i, j) = 1.0;
        std::vector<block_profile> prof = build_profiles(pattern, limit);
        EXPECT_EQ(S.init(prof.data(), prof.size(), 0.0, orv::Ptr<OOC_mgr>()), 0);
    }
};

orv::symmetric_full<double> random_element(std::size_t m, std::mt19937& rng, bool with_zero) {
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    orv::symmetric_full<double> B(m);
    for (std::size_t i = 0; i < m; ++i)
        for (std::size_t j = 0; j <= i; ++j) B.data()[(i + 1) * i / 2 + j] = u(rng);
    if (with_zero) B.data()[1] = 0.0;
    return B;
}

}  // namespace

TEST(SkylineMatrix, ElementAdditionMatchesDenseSum) {
    assembly_case c(20, 3, 5);
    dense_sym ref(20);
    std::mt19937 rng(5);
    for (std::size_t e = 0; e + 3 < 20; e += 2) {
        // element DOFs in a scrambled order, one of them constrained (~0)
        const unsigned pos[5] = {unsigned(e + 2), unsigned(e), ~0u, unsigned(e + 3), unsigned(e + 1)};
        const orv::symmetric_full<double> B = random_element(5, rng, e == 4);
        const double alpha = 0.5 + double(e);
        ASSERT_EQ(c.S.add(alpha, B, pos), 0);
        for (std::size_t i = 0; i < 5; ++i)
            for (std::size_t j = 0; j < 5; ++j)
                if (pos[i] != ~0u && pos[j] != ~0u)
                    ref(pos[i], pos[j]) += alpha * B.data()[i >= j ? (i + 1) * i / 2 + j : (j + 1) * j / 2 + i];
    }
    for (std::size_t i = 0; i < 20; ++i)
        for (std::size_t j = 0; j < 20; ++j) EXPECT_NEAR(c.S.get_val(i, j), ref(i, j), 1e-14) << i << " " << j;
}

TEST(SkylineMatrix, SparseFixedAndSkewElements) {
    assembly_case c(12, 4, 600);
    // the same 4 x 4 element as symmetric_full, symmetric_sparse and symmetric_fixed
    std::mt19937 rng(9);
    const orv::symmetric_full<double> B = random_element(4, rng, false);
    orv::dense1D<unsigned int, 8> ptr, col;
    for (unsigned i = 0; i <= 4; ++i) ptr.push_back(i == 0 ? 0 : ptr[i - 1] + (4 - (i - 1)));
    for (unsigned i = 0; i < 4; ++i)
        for (unsigned j = i; j < 4; ++j) col.push_back(j);
    orv::symmetric_sparse<double> Bs;
    ASSERT_TRUE(Bs.init(ptr, col, 0.0));
    for (unsigned i = 0, k = 0; i < 4; ++i)
        for (unsigned j = i; j < 4; ++j) Bs.data()[k++] = B.data()[(j + 1) * j / 2 + i];
    const unsigned pos[4] = {6, 4, 5, 7};
    ASSERT_EQ(c.S.add(2.0, B, pos), 0);
    symmetric_hybrid_OOC<double> T;
    {
        assembly_case c2(12, 4, 600);
        T = c2.S;
    }
    ASSERT_EQ(T.add(2.0, Bs, pos), 0);
    for (std::size_t i = 4; i < 8; ++i)
        for (std::size_t j = 4; j < 8; ++j) EXPECT_DOUBLE_EQ(T.get_val(i, j), c.S.get_val(i, j));

    // skew forms: the stored triangle as given, the mirrored entries with the other sign
    assembly_case c3(12, 4, 600), c4(12, 4, 600);
    ASSERT_EQ(c3.S.add(1.0, B, pos, true), 0);
    ASSERT_EQ(c4.S.add(1.0, Bs, pos, true), 0);
    // element rows 0 and 1 sit at positions 6 and 4: the entry (4, 6) is B(1, 0) as
    // stored by the full form (lower triangle) and -B(0, 1) by the sparse form (upper)
    EXPECT_DOUBLE_EQ(c3.S.get_val(4, 6), B.data()[1]);
    EXPECT_DOUBLE_EQ(c4.S.get_val(4, 6), -B.data()[1]);
    // rows 2 and 3 at positions 5 and 7 keep their order: both forms add B(2, 3) as stored
    EXPECT_DOUBLE_EQ(c3.S.get_val(5, 7), -B.data()[(3 + 1) * 3 / 2 + 2]);
    EXPECT_DOUBLE_EQ(c4.S.get_val(5, 7), B.data()[(3 + 1) * 3 / 2 + 2]);

    orv::symmetric_fixed<double, 3> F3;
    F3(0, 0) = 1;
    F3(1, 0) = 2;
    F3(2, 2) = 3;
    assembly_case c5(12, 4, 600);
    const unsigned pos3[3] = {9, 8, ~0u};
    ASSERT_EQ(c5.S.add(1.0, F3, pos3), 0);
    EXPECT_EQ(c5.S.get_val(9, 9), 1.0);
    EXPECT_EQ(c5.S.get_val(8, 9), 2.0);
    EXPECT_EQ(c5.S.get_val(8, 8), 0.0);
}

TEST(SkylineMatrix, ZeroFactorTouchesNothing) {
    assembly_case c(12, 4, 600);
    c.S.fill(3.0);
    std::mt19937 rng(1);
    const orv::symmetric_full<double> B = random_element(4, rng, false);
    const unsigned pos[4] = {0, 1, 2, 3};
    std::vector<bool> written_before = c.S.proxy()->ever_written;
    ASSERT_EQ(c.S.add(0.0, B, pos), 0);
    EXPECT_EQ(c.S.proxy()->ever_written, written_before);
    for (std::size_t i = 0; i < 4; ++i)
        for (std::size_t j = 0; j < 4; ++j) EXPECT_EQ(c.S.get_val(i, j), c.pattern(i, j) != 0 ? 3.0 : 0.0);
    // an element entry outside the profile is reported and left out
    const unsigned far[2] = {0, 11};
    orv::symmetric_full<double> B2(2, 1.0);
    EXPECT_EQ(c.S.add(1.0, B2, far), orv::fem::error_index);
    EXPECT_EQ(c.S.get_val(0, 0), 4.0);
    EXPECT_EQ(c.S.get_val(0, 11), 0.0);
}

TEST(SkylineMatrix, ProductsAndEnergy) {
    const dense_sym A = random_matrix(150, 0.03, true, 12, 2);
    symmetric_hybrid_OOC<double> S;
    ASSERT_EQ(make_skyline(A, 13, S), 0);
    std::mt19937 rng(2);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    const std::size_t n = A.n, ld = n + 1;
    std::vector<double> X(ld * 3), Y(ld * 3, 1.0), ref(ld * 3, 1.0);
    for (double& v : X) v = u(rng);
    for (std::size_t c = 0; c < 3; ++c)
        for (std::size_t j = 0; j < n; ++j)
            for (std::size_t i = 0; i < n; ++i) ref[i + c * ld] += -2.0 * A(i, j) * X[j + c * ld];
    S.mult_add(-2.0, X.data(), ld, Y.data(), ld, 3, 2);
    for (std::size_t c = 0; c < 3; ++c)
        for (std::size_t i = 0; i < n; ++i) EXPECT_NEAR(Y[i + c * ld], ref[i + c * ld], 1e-12);
    std::vector<double> y(n, 1.0);
    S.mult_add(-2.0, X.data(), y.data());
    for (std::size_t i = 0; i < n; ++i) EXPECT_NEAR(y[i], ref[i], 1e-12);
    double e = 0;
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = 0; i < n; ++i) e += X[i] * A(i, j) * X[j];
    EXPECT_NEAR(S.xT_A_x(X.data()), e, 1e-11 * std::fabs(e));
    // small matrices are written out from the entries
    for (std::size_t m = 1; m <= 3; ++m) {
        dense_sym B(m);
        for (std::size_t i = 0; i < m; ++i)
            for (std::size_t j = 0; j <= i; ++j) B.set(i, j, double(1 + i + 2 * j));
        symmetric_hybrid_OOC<double> Sb;
        ASSERT_EQ(make_skyline(B, 600, Sb), 0);
        const double x[3] = {0.5, -2.0, 3.0};
        double eb = 0;
        for (std::size_t i = 0; i < m; ++i)
            for (std::size_t j = 0; j < m; ++j) eb += x[i] * B(i, j) * x[j];
        EXPECT_DOUBLE_EQ(Sb.xT_A_x(x), eb);
    }
}

TEST(SkylineMatrix, ReportLines) {
    const std::vector<block_profile> prof = two_blocks();
    symmetric_hybrid_OOC<double> S;
    ASSERT_EQ(S.init(prof.data(), prof.size(), 0.0, orv::Ptr<OOC_mgr>()), 0);
    S.set_val(0, 0, 1.0);
    S.set_val(3, 4, 2.0);
    const skyline_report r = S.report();
    EXPECT_EQ(r.zeros, 11u);
    EXPECT_EQ(r.non_zeros, 2u);
    EXPECT_DOUBLE_EQ(r.symbolic_fill, 2.0 * 13 / (7.0 * 6.0) * 100.0);
    EXPECT_EQ(S.report_text(true),
              "  dimension              :          6\n"
              "  profile                :         13 (0.00 MB)\n"
              "  nbr blocks             :          2\n"
              "  max extra segments     :          2\n"
              "  symbolic fill-ins      :    61.90 %\n"
              "  zeros                  :         11\n"
              "  non zeros              :          2\n"
              "  numerical fill-ins     :     9.52 % (15.38 %)\n");
    symmetric_hybrid_OOC<double> E;
    EXPECT_EQ(E.report_text(true),
              "  dimension              :          0\n"
              "  profile                :          0 (0.00 MB)\n"
              "  nbr blocks             :          0\n"
              "  max extra segments     :          0\n");
}

// The long dot products split over threads give the serial result up to round-off.
TEST(SkylineMatrix, LongDotOverThreads) {
    std::vector<double> a(40000), b(40000);
    for (std::size_t i = 0; i < a.size(); ++i) {
        a[i] = std::sin(double(i));
        b[i] = std::cos(0.5 * double(i));
    }
    double ref = 0;
    for (std::size_t i = 0; i < a.size(); ++i) ref += a[i] * b[i];
    EXPECT_NEAR(kernels::dot(a.data(), b.data(), a.size()), ref, 1e-10);
    EXPECT_NEAR(kernels::dot_parallel(a.data(), b.data(), a.size(), 2), ref, 1e-10);
    EXPECT_NEAR(kernels::dot_parallel(a.data(), b.data(), 37, 2), kernels::dot(a.data(), b.data(), 37), 1e-15);
}
