// The one judgement of a pivot range, under the policies of the run and of the
// factor's outcome layer, and the parallel loop where the first error wins.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <stdexcept>
#include <vector>

#include "linalg/parallel_first_error.h"
#include "linalg/pivot_checkers.h"

using namespace orv::core;

namespace {

const double INF = std::numeric_limits<double>::infinity();
const double NaN = std::numeric_limits<double>::quiet_NaN();
const std::size_t none = ~std::size_t(0);

// The pivots of a factorisation in row order, through a recorder like a checker's.
struct range : recorder_range2<double> {
    std::size_t first_rejected = none;
    range(std::vector<double> pivots, std::size_t rejected = none) : first_rejected(rejected) {
        for (std::size_t i = 0; i < pivots.size(); ++i) record(pivots[i], i);
    }
};

pivot_policy policy(bool definite, bool forcing, bool at_max) {
    pivot_policy p;
    p.definite = definite;
    p.forcing = forcing;
    p.non_finite_at_max = at_max;
    return p;
}

}  // namespace

TEST(PivotJudgement, SignsAndRatiosUnderEachPolicy) {
    struct row {
        std::vector<double> pivots;
        std::size_t rejected;
        pivot_policy p;
        int rc, error, warning;
        std::size_t position;
    };
    const pivot_policy positive = policy(false, false, false), forcing = policy(false, true, true),
                       definite = policy(true, false, false);
    const row rows[] = {
        {{4.0, 2.0, 8.0}, none, positive, 0, 0, 0, none},
        {{1.0, 1e-12}, none, positive, 0, 0, 0, none},  // ratio exactly 1e-12 passes
        {{1.0, 1e-12}, none, definite, 0, 0, -11, 1},   // strict on magnitudes
        {{1.0, 0.5e-12}, none, positive, 0, 0, -11, 1},
        {{1.0, 0.0, 3.0}, 1, positive, orv::fem::error_pivot, orv::fem::error_pivot, 0, 1},  // bad sign: error at the
                                                                                             // rejected row
        {{1.0, -2.0, 3.0}, 1, forcing, 0, 0, -11, 1},                                        // replaced: only a warning
        {{-1.0, -3.0}, none, definite, 0, 0, 0, none},  // all negative: definite passes
        {{2.0, 5.0}, none, positive, orv::fem::error_memory, orv::fem::error_memory, 0, none},  // the factorisation's
                                                                                                // own code
    };
    for (const row& r : rows) {
        const range g(r.pivots, r.rejected);
        const pivot_verdict v = judge_pivot_range(g, r.rc, r.pivots.size(), r.p);
        EXPECT_EQ(v.error, r.error);
        EXPECT_EQ(v.warning, r.warning);
        EXPECT_EQ(v.position, r.position);
    }
}

TEST(PivotJudgement, NonFiniteRangesNeverShowStartValues) {
    // INF first: the lowest end is never set and takes the other end.
    const range inf_only({INF}, 0);
    pivot_verdict v = judge_pivot_range(inf_only, orv::fem::error_pivot, 1, policy(false, false, true));
    EXPECT_EQ(v.error, orv::fem::error_pivot);
    EXPECT_EQ(v.pivot_min, INF);
    EXPECT_EQ(v.pivot_max, INF);
    EXPECT_EQ(v.position, 0u);
    // A NaN after finite pivots: the row of the largest pivot for the run, the rejected
    // row for the outcome layer.
    const range late_nan({3.0, 7.0, NaN}, 2);
    v = judge_pivot_range(late_nan, orv::fem::error_pivot, 3, policy(false, true, true));
    EXPECT_EQ(v.error, orv::fem::error_pivot);
    EXPECT_EQ(v.position, 1u);
    EXPECT_TRUE(std::isnan(v.pivot_min));
    EXPECT_EQ(v.pivot_max, 7.0);
    v = judge_pivot_range(late_nan, orv::fem::error_pivot, 3, policy(false, false, false));
    EXPECT_EQ(v.position, 2u);
    // A NaN alone: both ends NaN, the rejected row.
    const range nan_only({NaN}, 0);
    v = judge_pivot_range(nan_only, orv::fem::error_pivot, 1, policy(true, true, true));
    EXPECT_TRUE(std::isnan(v.pivot_min) && std::isnan(v.pivot_max));
    EXPECT_EQ(v.position, 0u);
    // Nothing to factor: 0 and 0.
    v = judge_pivot_range(range({}), 0, 0, policy(false, false, false));
    EXPECT_EQ(v.error, 0);
    EXPECT_EQ(v.pivot_min, 0.0);
    EXPECT_EQ(v.pivot_max, 0.0);
}

TEST(ParallelFirstError, FirstErrorWinsAndExceptionsBecomeCodes) {
    for (const int threads : {1, 2}) {
        SCOPED_TRACE(threads);
        std::vector<int> seen(100, 0);
        EXPECT_EQ(parallel_first_error(seen.size(), threads, [&](std::size_t i) { return ++seen[i], 0; }), 0);
        EXPECT_EQ(std::count(seen.begin(), seen.end(), 1), 100);
        // With one thread the items run in order: the first failure is the lowest.
        const int rc = parallel_first_error(100, threads, [](std::size_t i) {
            return i == 10 ? -7 : i == 60 ? -8 : 0;
        });
        if (threads == 1)
            EXPECT_EQ(rc, -7);
        else
            EXPECT_TRUE(rc == -7 || rc == -8);
        EXPECT_EQ(parallel_first_error(4, threads,
                                       [](std::size_t i) -> int {
                                           if (i == 0) throw std::bad_alloc();
                                           return 0;
                                       }),
                  orv::fem::error_memory);
        EXPECT_EQ(parallel_first_error(1, threads, [](std::size_t) -> int { throw std::runtime_error("x"); }),
                  orv::fem::error_internal);
    }
    first_error e;
    EXPECT_FALSE(e.set(0));
    EXPECT_TRUE(e.set(-3));
    EXPECT_FALSE(e.set(-4));
    EXPECT_EQ(e.get(), -3);
}
