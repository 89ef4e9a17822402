// What a host sees of a refused law: the init code of a constructor, and the shell
// stiffness given by a skyline.
#include <gtest/gtest.h>

#include <cmath>

#include <orv/fem/bases_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/law_rod.h>
#include <orv/fem/law_shell_stiff.h>
#include <orv/fem/law_solid_stiff.h>

#include "law_test_utils.h"
#include "laws/law_shell_stiff.h"

namespace {

namespace fem = orv::fem;
namespace core = orv::core;
using law_test::values;
using orv::dense1D;

TEST(law_init_code, constructors_keep_the_code_for_the_host) {
    fem::context ctx;
    const double nan = std::nan(""), inf = HUGE_VAL;
    fem::law_solid_StVenant good(ctx, 1000.0, 0.3, 0.0);
    EXPECT_EQ(good.get_init_code(), 0);
    fem::law_solid_StVenant bad_E(ctx, nan, 0.3, 0.0);
    EXPECT_EQ(bad_E.get_init_code(), -2);
    EXPECT_EQ(bad_E.get_data()[0], 0.0);
    fem::law_rod bad_area(ctx, 210000.0, -inf, 0.0);
    EXPECT_EQ(bad_area.get_init_code(), -2);
    fem::law_solid_StVenant wrong_size(ctx, values({1000.0, 0.3}));
    EXPECT_EQ(wrong_size.get_init_code(), -1);
    EXPECT_TRUE(wrong_size.get_data().empty());
    dense1D<double> ortho = values({1, 2, 3, 0.1, 0.1, 0.1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, inf, 0});
    fem::law_solid_orthotropic in_basis(ctx, ortho, ctx.the_bases_mgr(), 0xFFFFFFFFu);
    EXPECT_EQ(in_basis.get_init_code(), -2);
    fem::law_solid_skyline bad_heights(ctx, orv::vector_fixed<unsigned int, 6>{1, 3, 1, 1, 1, 1}, values({1}));
    EXPECT_EQ(bad_heights.get_init_code(), -1);
    // a later init replaces the code
    EXPECT_EQ(bad_E.init(1000.0, 0.3, 0.0), 0);
    EXPECT_EQ(bad_E.get_init_code(), 0);
    EXPECT_EQ(fem::law_solid_StVenant().get_init_code(), -1);  // empty handle
}

TEST(law_shell_skyline, columns_give_the_matrix_and_sizes_are_checked) {
    // The full skyline of an isotropic shell's D gives that D back.
    core::law_shell_StVenant iso;
    ASSERT_EQ(iso.init(values({70000, 0.3, 1e-5, 2.0})), 0);
    core::law_shell_StVenant::tangent_type D;
    ASSERT_EQ(iso.get_D(core::law_key(), D), 0);
    dense1D<double> full;
    for (unsigned j = 0; j < 8; ++j)
        for (unsigned i = 0; i <= j; ++i) full.push_back(D(i, j));
    for (double v : {1e-5, 1e-5, 0.0, 2.0}) full.push_back(v);
    for (int k = 0; k < 12; ++k) full.push_back(0.0);
    ASSERT_EQ(full.size(), 52u);
    core::law_shell_skyline sky;
    ASSERT_EQ(sky.init(full), 0);
    core::law_shell_skyline::tangent_type S;
    ASSERT_EQ(sky.get_D(core::law_key(), S), 0);
    for (unsigned i = 0; i < 8; ++i)
        for (unsigned j = 0; j <= i; ++j) EXPECT_EQ(S(i, j), D(i, j)) << i << " " << j;
    EXPECT_EQ(sky.thickness(core::law_key()), 2.0);

    // Heights 1, 2, 1, ...: the diagonal and the (0, 1) coupling only.
    const orv::vector_fixed<unsigned int, 8> h{1, 2, 1, 1, 1, 1, 1, 1};
    dense1D<double> short_data = values({1, 12, 2, 3, 4, 5, 6, 7, 8});
    for (int k = 0; k < 16; ++k) short_data.push_back(k == 3 ? 0.5 : 0.0);
    fem::context ctx;
    fem::law_shell_skyline banded(ctx, h, short_data);
    ASSERT_EQ(banded.get_init_code(), 0);
    ASSERT_EQ(banded.engine()->get_D(core::law_key(), S), 0);
    EXPECT_EQ(S(1, 0), 12.0);
    EXPECT_EQ(S(2, 1), 0.0);
    for (unsigned i = 0; i < 8; ++i) EXPECT_EQ(S(i, i), i + 1.0);
    EXPECT_EQ(banded.engine()->thickness(core::law_key()), 0.5);

    // refused: a height past its column, a count that does not match, non-finite values
    EXPECT_EQ(banded.init(orv::vector_fixed<unsigned int, 8>{2, 1, 1, 1, 1, 1, 1, 1}, short_data), -1);
    EXPECT_EQ(banded.init(h, values({1, 2, 3})), -1);
    short_data[4] = std::nan("");
    EXPECT_EQ(banded.init(h, short_data), -2);
}

}  // namespace
