// Penalty statistics on a known diagonal.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <orv/fem/context.h>

#include "linalg/OOC_mgr.h"
#include "model/penalty_statistics.h"
#include "model_test_utils.h"

using namespace orv;
using namespace orv::core;
using orv::test::init_target;
using orv::test::make_index;
using orv::test::sparse_target;

TEST(PenaltyStatistics, ClassesByDOFPositionRootMeanSquareAndClamps) {
    // DOFs 0, 1: displacements; 3: rotation; 15 (node 1, position 6): temperature.
    sparse_target K;
    init_target(K, make_index({0, 1, 3, 15}));
    *K.matrix().find(0, 0) = 3.0;
    *K.matrix().find(1, 1) = -4.0;
    *K.matrix().find(2, 2) = 5.0;
    *K.matrix().find(3, 3) = 1.0e-3;
    *K.matrix().find(0, 1) = 1.0e9;  // off the diagonal: not measured
    EXPECT_FALSE(is_zero_throughout(K));

    penalty_factors f;
    f.raw = 10.0;
    f.min = 1.0;
    f.max = 40.0;
    assembly_params params;
    // 27 has no row in Kf; 3 is listed twice and counts twice.
    const std::uint32_t candidates[] = {0, 1, 3, 3, 15, 27};
    compute_penalties(K, candidates, 6, f, params);
    EXPECT_DOUBLE_EQ(params.penalty_displacement, std::sqrt((9.0 + 16.0) / 2.0) * 10.0);
    EXPECT_EQ(params.penalty_rotation, 40.0);    // 50 clamped to the maximum
    EXPECT_EQ(params.penalty_temperature, 1.0);  // 0.01 raised to the minimum

    // Only rotational DOFs: the other classes get the minimum.
    const std::uint32_t rot[] = {3};
    compute_penalties(K, rot, 1, f, params);
    EXPECT_EQ(params.penalty_displacement, 1.0);
    EXPECT_EQ(params.penalty_rotation, 40.0);
    EXPECT_EQ(params.penalty_temperature, 1.0);

    // A NaN diagonal gives the minimum too.
    *K.matrix().find(2, 2) = std::numeric_limits<double>::quiet_NaN();
    compute_penalties(K, rot, 1, f, params);
    EXPECT_EQ(params.penalty_rotation, 1.0);
}

TEST(PenaltyStatistics, ContextFactorsAndZeroMatrix) {
    fem::context ctx;
    ctx.set_raw_penalty_factor(2.0);
    ctx.set_min_penalty_factor(0.5);
    ctx.set_max_penalty_factor(1.0e12);
    const penalty_factors f = context_penalty_factors(ctx.engine());
    EXPECT_EQ(f.raw, 2.0);
    EXPECT_EQ(f.min, 0.5);
    EXPECT_EQ(f.max, 1.0e12);
    EXPECT_EQ(context_penalty_factors(nullptr).raw, 10000.0);

    sparse_target K;
    init_target(K, make_index({0, 9}));
    EXPECT_TRUE(is_zero_throughout(K));
    assembly_params params;
    const std::uint32_t c[] = {0, 9};
    compute_penalties(K, c, 2, f, params);  // a zero diagonal: the minimum
    EXPECT_EQ(params.penalty_displacement, 0.5);
    *K.matrix().find(1, 1) = 8.0;
    compute_penalties(K, c, 2, f, params);
    EXPECT_EQ(params.penalty_displacement, std::sqrt(32.0) * 2.0);
}

TEST(PenaltyStatistics, BlockSkylineDiagonal) {
    typedef indexed_sym<DOF_index, symmetric_hybrid_OOC<double>> skyline_target;
    block_profile prof;
    for (unsigned c = 0; c < 2; ++c) prof.segments.push_back(block_segment{c, c});
    prof.first = 0;
    prof.last = 2;
    skyline_target K(make_index({3, 9}));
    ASSERT_EQ(K.matrix().init(&prof, 1, 0.0, Ptr<OOC_mgr>()), 0);
    EXPECT_TRUE(is_zero_throughout(K));
    K.matrix().set_val(0, 0, 2.0);
    K.matrix().set_val(1, 1, 6.0);
    EXPECT_FALSE(is_zero_throughout(K));
    penalty_factors f;
    f.raw = 1.0;
    assembly_params params;
    const std::uint32_t c[] = {3, 9, 18};
    compute_penalties(K, c, 3, f, params);
    EXPECT_EQ(params.penalty_rotation, 2.0);
    EXPECT_EQ(params.penalty_displacement, 6.0);
    EXPECT_EQ(params.penalty_temperature, 1.0);
}
