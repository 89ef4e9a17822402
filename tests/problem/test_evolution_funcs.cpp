// Evolution functions: values of each kind, the registry's ID rules, the public handle.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <orv/fem/context.h>
#include <orv/fem/evolution_funcs_mgr.h>

#include "problem/evolution_funcs_mgr.h"

using orv::core::evolution_funcs_mgr;

namespace {

const unsigned none = 0xFFFFFFFFu;

unsigned discret(evolution_funcs_mgr& m, std::initializer_list<double> t, std::initializer_list<double> v) {
    return m.create_discret(t.begin(), t.size(), v.begin(), v.size());
}

}  // namespace

// One function of each kind with its exact values at chosen times: triangles take
// their whole base as width, a triangle without width is a spike, a trapeze is a
// segment closed at its start and open at its end, a discrete list extrapolates below
// and holds its last value above.
struct evolution_case {
    const char* name;
    unsigned (*make)(evolution_funcs_mgr&);
    std::vector<std::pair<double, double>> samples;  // t, f(t)
};

class EvolutionValues : public ::testing::TestWithParam<evolution_case> {};

TEST_P(EvolutionValues, ExactAtEveryTime) {
    evolution_funcs_mgr m;
    m.create_cste(99.0);  // the function under test is not the first one
    const unsigned f = GetParam().make(m);
    EXPECT_EQ(f, 1u);
    for (const auto& s : GetParam().samples) EXPECT_DOUBLE_EQ(m.val(f, s.first), s.second) << "t = " << s.first;
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, EvolutionValues,
    ::testing::Values(
        evolution_case{"constant", [](evolution_funcs_mgr& m) { return m.create_cste(2.5); }, {{-7.0, 2.5}}},
        evolution_case{
            "linear", [](evolution_funcs_mgr& m) { return m.create_linear(-3.0); }, {{0.0, 0.0}, {1.5, -4.5}}},
        evolution_case{"sinus",
                       [](evolution_funcs_mgr& m) { return m.create_sinus(2.0, 0.5); },
                       {{0.0, std::sin(0.5)}, {0.25, std::sin(1.0)}}},
        evolution_case{"triangle",
                       [](evolution_funcs_mgr& m) { return m.create_triangle(2.0, 4.0); },
                       {{2.0, 1.0}, {1.0, 0.5}, {3.0, 0.5}, {0.0, 0.0}, {4.0, 0.0}, {-10.0, 0.0}, {10.0, 0.0}}},
        evolution_case{"spike_of_zero_width",
                       [](evolution_funcs_mgr& m) { return m.create_triangle(1.5, 0.0); },
                       {{1.5, 1.0}, {1.5 + 1e-12, 0.0}, {1.5 - 1e-12, 0.0}, {100.0, 0.0}}},
        evolution_case{"spike_of_negative_width",
                       [](evolution_funcs_mgr& m) { return m.create_triangle(1.5, -2.0); },
                       {{1.5, 1.0}, {1.5 + 1e-12, 0.0}, {1.5 - 1e-12, 0.0}, {100.0, 0.0}}},
        evolution_case{"trapeze",
                       [](evolution_funcs_mgr& m) { return m.create_trapeze(0.0, 1.0, 0.0, 2.0); },
                       {{-0.5, 0.0}, {0.0, 0.0}, {0.5, 1.0}, {1.0, 0.0}, {3.0, 0.0}}},
        evolution_case{"trapeze_from_its_start_value",
                       [](evolution_funcs_mgr& m) { return m.create_trapeze(1.0, 3.0, 3.0, -1.0); },
                       {{1.0, 3.0}, {2.0, 1.0}, {2.5, 0.0}, {3.0, 0.0}}},
        evolution_case{"trapeze_of_zero_length",
                       [](evolution_funcs_mgr& m) { return m.create_trapeze(2.0, 2.0, 5.0, 5.0); },
                       {{0.0, 0.0}, {1.0, 0.0}, {2.0, 0.0}, {2.5, 0.0}, {3.0, 0.0}}},
        evolution_case{"trapeze_reversed",
                       [](evolution_funcs_mgr& m) { return m.create_trapeze(3.0, 1.0, 5.0, 5.0); },
                       {{0.0, 0.0}, {1.0, 0.0}, {2.0, 0.0}, {2.5, 0.0}, {3.0, 0.0}}},
        evolution_case{"discrete_of_two_points",
                       [](evolution_funcs_mgr& m) {
                           return discret(m, {0.0, 1.0}, {10.0, 20.0});
                       },
                       {{-0.5, 5.0}, {0.0, 10.0}, {0.5, 15.0}, {1.0, 20.0}, {2.0, 20.0}}},
        evolution_case{"discrete_of_three_slopes",
                       [](evolution_funcs_mgr& m) {
                           return discret(m, {1.0, 2.0, 4.0, 5.0}, {0.0, 4.0, 0.0, 1.0});
                       },
                       {{1.0, 0.0},
                        {1.25, 1.0},
                        {2.0, 4.0},
                        {3.0, 2.0},
                        {4.0, 0.0},
                        {4.5, 0.5},
                        {5.0, 1.0},
                        {0.0, -4.0},
                        {1e6, 1.0}}}),
    [](const ::testing::TestParamInfo<evolution_case>& info) { return std::string(info.param.name); });

TEST(EvolutionFuncs, DiscreteDegenerateLists) {
    evolution_funcs_mgr m;
    const unsigned empty = m.create_discret(nullptr, 0, nullptr, 0);
    EXPECT_EQ(m.val(empty, 1.0), 0.0);
    const unsigned one = discret(m, {3.0}, {7.0});
    EXPECT_EQ(m.val(one, -1.0), 7.0);
    EXPECT_EQ(m.val(one, 3.0), 7.0);
    EXPECT_EQ(m.val(one, 9.0), 7.0);
    // Fewer values than times: the last value holds where values are missing.
    const unsigned short_values = discret(m, {0.0, 1.0, 2.0}, {1.0, 3.0});
    EXPECT_EQ(m.val(short_values, 0.5), 2.0);
    EXPECT_EQ(m.val(short_values, 1.5), 3.0);
    EXPECT_EQ(m.val(short_values, 5.0), 3.0);
    // A repeated abscissa is a jump, not a division by zero.
    const unsigned jump = discret(m, {0.0, 0.0, 1.0}, {1.0, 2.0, 4.0});
    EXPECT_EQ(m.val(jump, 0.0), 1.0);
    EXPECT_EQ(m.val(jump, 0.5), 3.0);
    // A null list with a count is refused.
    EXPECT_EQ(m.create_discret(nullptr, 2, nullptr, 0), none);
}

TEST(EvolutionFuncs, SumAndProduct) {
    evolution_funcs_mgr m;
    const unsigned lin = m.create_linear(2.0);  // 2t
    const unsigned cst = m.create_cste(3.0);    // 3
    const unsigned ids[] = {lin, cst};
    const double coefs[] = {0.5, -2.0};
    const unsigned sum = m.create_sum(ids, 2, coefs, 2);
    const unsigned mult = m.create_mult(ids, 2);
    EXPECT_EQ(m.val(sum, 4.0), 0.5 * 8.0 - 2.0 * 3.0);
    EXPECT_EQ(m.val(mult, 4.0), 24.0);

    // An ID that names nothing is a term of 1.0.
    const unsigned with_none[] = {lin, none};
    const double c2[] = {1.0, 10.0};
    const unsigned sum2 = m.create_sum(with_none, 2, c2, 2);
    const unsigned mult2 = m.create_mult(with_none, 2);
    EXPECT_EQ(m.val(sum2, 1.0), 2.0 + 10.0);
    EXPECT_EQ(m.val(mult2, 1.0), 2.0);

    // Empty lists give 0.0, both for the sum and the product.
    EXPECT_EQ(m.val(m.create_sum(nullptr, 0, nullptr, 0), 1.0), 0.0);
    EXPECT_EQ(m.val(m.create_mult(nullptr, 0), 1.0), 0.0);

    // Lists of different lengths make no function.
    const std::size_t before = m.size();
    EXPECT_EQ(m.create_sum(ids, 2, coefs, 1), none);
    EXPECT_EQ(m.size(), before);
}

TEST(EvolutionFuncs, TermsSurviveClear) {
    evolution_funcs_mgr m;
    const unsigned lin = m.create_linear(5.0);
    const unsigned ids[] = {lin, lin};
    const double coefs[] = {1.0, 1.0};
    m.create_sum(ids, 2, coefs, 2);
    orv::Ptr<orv::core::evolution_func_base> sum = m.get(1);
    ASSERT_TRUE(sum);
    m.clear();
    EXPECT_EQ(m.size(), 0u);
    EXPECT_EQ(sum->val(2.0), 20.0);  // the terms are still held by the sum
    // After clear, every former ID means 1.0, and IDs start again from 0.
    EXPECT_EQ(m.val(lin, 2.0), 1.0);
    EXPECT_EQ(m.val(1, 2.0), 1.0);
    EXPECT_EQ(m.create_cste(4.0), 0u);
}

TEST(EvolutionFuncs, UnknownIDMeansOne) {
    evolution_funcs_mgr m;
    EXPECT_EQ(m.val(0, 3.0), 1.0);
    EXPECT_EQ(m.val(none, 3.0), 1.0);
    m.create_cste(0.0);
    EXPECT_EQ(m.val(0, 3.0), 0.0);
    EXPECT_EQ(m.val(1, 3.0), 1.0);
}

TEST(EvolutionFuncsHandle, SharesTheRegistryOfItsContext) {
    orv::fem::context ctx;
    orv::fem::evolution_funcs_mgr a = ctx.the_evol_funcs_mgr();
    orv::fem::evolution_funcs_mgr b(ctx);
    ASSERT_TRUE(a.is_valid());
    ASSERT_TRUE(b.is_valid());
    EXPECT_EQ(a.get_w(), b.get_w());

    const unsigned t = a.create_triangle(2.0, 4.0);
    EXPECT_EQ(b.size(), 1u);
    EXPECT_EQ(b.val(t, 1.0), 0.5);

    orv::dense1D<double> times(2), values(2);
    times[0] = 0.0;
    times[1] = 1.0;
    values[0] = 10.0;
    values[1] = 20.0;
    const unsigned d = b.create_discret(times, values);
    times[1] = 100.0;  // the function keeps its own copy
    EXPECT_EQ(a.val(d, 0.5), 15.0);

    orv::dense1D<unsigned> ids(2, t);
    orv::dense1D<double> one_coef(1, 1.0);
    EXPECT_EQ(a.create_sum(ids, one_coef), none);

    // A second context has its own functions.
    orv::fem::context other;
    EXPECT_EQ(other.the_evol_funcs_mgr().size(), 0u);

    a.clear();
    EXPECT_EQ(b.size(), 0u);
    EXPECT_EQ(b.val(t, 1.0), 1.0);
}

TEST(EvolutionFuncsHandle, EmptyHandleIsHarmless) {
    orv::fem::evolution_funcs_mgr h;
    EXPECT_FALSE(h.is_valid());
    EXPECT_EQ(h.create_cste(1.0), none);
    EXPECT_EQ(h.val(0, 1.0), 1.0);
    EXPECT_EQ(h.size(), 0u);
    EXPECT_FALSE(h.reserve(3));
    h.clear();
}
