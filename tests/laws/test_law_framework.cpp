// Law framework: init codes, normalisation of every law, per-element data, handles.
#include <gtest/gtest.h>

#include <limits>

#include <orv/fem/context.h>
#include <orv/fem/law_membrane_stiff.h>
#include <orv/fem/law_rod.h>
#include <orv/fem/law_scalar.h>
#include <orv/fem/law_shell_stiff.h>
#include <orv/fem/law_solid_stiff.h>

#include "law_test_utils.h"
#include "laws/law_membrane_stiff.h"
#include "laws/law_rod.h"
#include "laws/law_scalar.h"
#include "laws/law_shell_stiff.h"
#include "laws/law_solid_stiff.h"

namespace {

namespace fem = orv::fem;
namespace core = orv::core;
using law_test::values;
using orv::dense1D;

const double nan = std::numeric_limits<double>::quiet_NaN();
const double inf = std::numeric_limits<double>::infinity();

void expect_data(const dense1D<double>& d, std::initializer_list<double> expected) {
    ASSERT_EQ(d.size(), expected.size());
    std::size_t i = 0;
    for (double x : expected) {
        EXPECT_DOUBLE_EQ(d[i], x) << "value " << i;
        ++i;
    }
}

TEST(law_init, codes_sizes_and_non_finite_values) {
    fem::context ctx;
    fem::law_solid_StVenant solid(ctx);
    ASSERT_TRUE(solid.is_valid());
    EXPECT_EQ(solid.init(values({210000.0, 0.3})), -1);
    EXPECT_TRUE(solid.get_data().empty());
    EXPECT_EQ(solid.init(210000.0, 0.3, 1.2e-5), 0);
    expect_data(solid.get_data(), {210000.0, 0.3, 1.2e-5});
    // A refused size afterwards empties the data again.
    EXPECT_EQ(solid.init(values({1, 2, 3, 4})), -1);
    EXPECT_TRUE(solid.get_data().empty());

    // Non-finite values: -2, stored as 0, the others kept.
    EXPECT_EQ(solid.init(values({210000.0, nan, 1e-5})), -2);
    expect_data(solid.get_data(), {210000.0, 0.0, 1e-5});
    EXPECT_EQ(solid.init(-inf, 0.25, inf), -2);
    expect_data(solid.get_data(), {0.0, 0.25, 0.0});

    fem::law_scalar k(ctx, 12.5);
    EXPECT_EQ(k.value(), 12.5);
    EXPECT_EQ(k.init(inf), -2);
    EXPECT_EQ(k.value(), 0.0);
    EXPECT_EQ(k.init(values({1, 2})), -1);
    EXPECT_EQ(k.value(), 0.0);

    // Empty handles answer -1 and an empty data vector; create on an empty context.
    fem::law_rod none;
    EXPECT_FALSE(none.is_valid());
    EXPECT_EQ(none.init(1.0, 2.0, 3.0), -1);
    EXPECT_TRUE(none.get_data().empty());
    EXPECT_EQ(none.set_element_by_element(3, values({1, 2, 3})), -1);
    EXPECT_FALSE(none.has_element_data(3));
    EXPECT_FALSE(none.reserve_elements(10));
    fem::context empty_ctx(static_cast<const fem::base_class&>(none));
    ASSERT_FALSE(empty_ctx.is_valid());
    fem::law_shell_StVenant shell;
    EXPECT_EQ(shell.create(empty_ctx), fem::error_data);
    EXPECT_FALSE(shell.is_valid());
}

TEST(law_init, accepted_sizes_and_normalised_data) {
    fem::context ctx;
    // Rod: 3 or 4 values, padded with 0.
    fem::law_rod rod(ctx);
    EXPECT_EQ(rod.init(200.0, 3.0, 1e-5), 0);
    expect_data(rod.get_data(), {200.0, 3.0, 1e-5, 0.0});
    EXPECT_EQ(rod.init(values({200, 3, 1e-5, 7})), 0);
    expect_data(rod.get_data(), {200, 3, 1e-5, 7});
    EXPECT_EQ(rod.init(values({200, 3})), -1);
    EXPECT_EQ(rod.init(values({1, 2, 3, 4, 5})), -1);

    // Membrane: 4 or 5 values, padded with 0.
    fem::law_membrane_StVenant membrane(ctx);
    EXPECT_EQ(membrane.init(70000.0, 0.33, 2.3e-5, 1.5), 0);
    expect_data(membrane.get_data(), {70000.0, 0.33, 2.3e-5, 1.5, 0.0});
    EXPECT_EQ(membrane.init(values({1, 2, 3})), -1);

    // Shell: 4, 6, 7 values; 5 is refused.
    fem::law_shell_StVenant shell(ctx);
    EXPECT_EQ(shell.init(values({1, 0.25, 0, 2, 0.5})), -1);
    EXPECT_TRUE(shell.get_data().empty());
    // 4 values: shear 5/6 E / (2 nu + 2), inertia t^3 / 12, coupling 0.
    EXPECT_EQ(shell.init(1000.0, 0.25, 1e-5, 2.0), 0);
    const dense1D<double> d4 = shell.get_data();
    ASSERT_EQ(d4.size(), 7u);
    EXPECT_EQ(d4[4], 1000.0 * 0.8333333333333334 / 2.5);
    EXPECT_EQ(d4[5], 8.0 * 0.08333333333333333);
    EXPECT_EQ(d4[6], 0.0);
    // 6 values: the sixth is the offset o: inertia o^2 t + t^3 / 12, coupling o t.
    EXPECT_EQ(shell.init(values({1000.0, 0.25, 1e-5, 2.0, 300.0, 0.5})), 0);
    expect_data(shell.get_data(), {1000.0, 0.25, 1e-5, 2.0, 300.0, 0.25 * 2.0 + 8.0 / 12.0, 1.0});
    // 7 values are kept.
    EXPECT_EQ(shell.init(values({1000.0, 0.25, 1e-5, 2.0, 300.0, 5.0, -1.0})), 0);
    expect_data(shell.get_data(), {1000.0, 0.25, 1e-5, 2.0, 300.0, 5.0, -1.0});

    // Orthotropic solid: exactly 18; the reciprocal ratios are derived.
    fem::law_solid_orthotropic ortho(ctx);
    EXPECT_EQ(ortho.init(values({1, 2, 3})), -1);
    dense1D<double> o = values({100, 50, 25, 0.2, 0.3, 0.4, 10, 20, 30, 9, 9, 9, 9, 9, 9, 1, 2, 3});
    EXPECT_EQ(ortho.init(o), 0);
    const dense1D<double> od = ortho.get_data();
    ASSERT_EQ(od.size(), 18u);
    EXPECT_DOUBLE_EQ(od[9], 0.2 * 50 / 100);   // nu21
    EXPECT_DOUBLE_EQ(od[10], 0.3 * 25 / 100);  // nu31
    EXPECT_DOUBLE_EQ(od[11], 0.4 * 25 / 50);   // nu32
    EXPECT_DOUBLE_EQ(od[12], 1 - 0.2 * 0.1 - 0.3 * 0.075 - 0.4 * 0.2 - 2 * 0.1 * 0.2 * 0.3);
    EXPECT_EQ(od[13], 0.0);
    EXPECT_EQ(od[14], 0.0);
    EXPECT_EQ(od[17], 3.0);
    EXPECT_EQ(o[9], 9.0);  // the caller's vector is not touched

    // Orthotropic membrane 13 or 14, shell 15, 16, 17.
    fem::law_membrane_orthotropic om(ctx);
    EXPECT_EQ(om.init(values({100, 50, 0.2, 10, 30, 1, 2, 0, 0, 0, 0, 0, 1.5})), 0);
    const dense1D<double> omd = om.get_data();
    ASSERT_EQ(omd.size(), 14u);
    EXPECT_DOUBLE_EQ(omd[7], 0.1);
    EXPECT_DOUBLE_EQ(omd[8], 100 / 0.98);
    EXPECT_DOUBLE_EQ(omd[9], 50 / 0.98);
    EXPECT_DOUBLE_EQ(omd[10], 0.2 * 50 / 0.98);
    EXPECT_DOUBLE_EQ(omd[11], 10.0);
    EXPECT_EQ(omd[12], 1.5);
    EXPECT_EQ(om.init(values({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12})), -1);
    fem::law_shell_orthotropic os(ctx);
    dense1D<double> s15 = values({100, 50, 0.2, 10, 0, 1, 2, 0, 0, 0, 0, 0, 4, 3, 2.0});
    EXPECT_EQ(os.init(s15), 0);
    EXPECT_DOUBLE_EQ(os.get_data()[15], 8.0 / 12.0);
    EXPECT_EQ(os.get_data()[16], 0.0);
    s15.push_back(0.5);
    EXPECT_EQ(os.init(s15), 0);
    EXPECT_DOUBLE_EQ(os.get_data()[15], 0.5 + 8.0 / 12.0);
    EXPECT_DOUBLE_EQ(os.get_data()[16], 1.0);
    EXPECT_EQ(os.init(values({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14})), -1);

    // Skyline: sum of the heights plus 3.
    fem::law_solid_skyline sky(ctx);
    EXPECT_EQ(sky.init(dense1D<double>(24, 1.0)), 0);
    EXPECT_EQ(sky.init(dense1D<double>(23, 1.0)), -1);
    EXPECT_EQ(sky.init(orv::vector_fixed<unsigned, 6>{1, 1, 1, 1, 1, 1}, dense1D<double>(9, 1.0)), 0);
    EXPECT_EQ(sky.init(orv::vector_fixed<unsigned, 6>{1, 3, 1, 1, 1, 1}, dense1D<double>(11, 1.0)), -1);
    EXPECT_EQ(sky.init(orv::vector_fixed<unsigned, 6>{0, 1, 1, 1, 1, 1}, dense1D<double>(8, 1.0)), -1);
}

TEST(law_element_data, overrides_precedence_and_errors) {
    fem::context ctx;
    fem::law_solid_StVenant law(ctx, values({100.0, 0.25, 1e-5}));
    core::law_solid_StVenant* e = law.engine();
    ASSERT_NE(e, nullptr);
    const dense1D<double> base = law.get_data();

    // Equal to the base data: nothing stored.
    EXPECT_EQ(law.set_element_by_element(4, values({100.0, 0.25, 1e-5})), 0);
    EXPECT_FALSE(law.has_element_data(4));
    EXPECT_EQ(e->nbr_element_data(), 0u);

    // Element 4 gets E = 200 for all its points, point 7 of it E = 300.
    EXPECT_EQ(law.set_element_by_element(4, values({200.0, 0.25, 1e-5})), 0);
    EXPECT_EQ(law.set_element_by_element(4, 7, values({300.0, 0.25, 1e-5})), 0);
    EXPECT_TRUE(law.has_element_data(4));
    EXPECT_TRUE(law.has_element_data(4, 7));
    EXPECT_FALSE(law.has_element_data(4, 6));
    EXPECT_FALSE(law.has_element_data(5));

    orv::symmetric_fixed<double, 6> D;
    auto E_at = [&](unsigned element, unsigned point) {
        core::law_key key;
        key.element = element;
        key.point = point;
        EXPECT_EQ(e->get_D(key, D), 0);
        // D(3, 3) = mu = E / 2.5 for nu = 0.25.
        return D(3, 3) * 2.5;
    };
    EXPECT_DOUBLE_EQ(E_at(4, 7), 300.0);
    EXPECT_DOUBLE_EQ(E_at(4, 0), 200.0);
    EXPECT_DOUBLE_EQ(E_at(5, 7), 100.0);
    EXPECT_DOUBLE_EQ(E_at(0, 0), 100.0);

    // Errors store nothing: bad size -1, non-finite -2.
    EXPECT_EQ(law.set_element_by_element(9, values({1.0, 0.2})), -1);
    EXPECT_EQ(law.set_element_by_element(9, values({1.0, nan, 0.0})), -2);
    EXPECT_FALSE(law.has_element_data(9));
    EXPECT_DOUBLE_EQ(E_at(9, 0), 100.0);

    // Setting an element back to the base values: it reads the base again.
    EXPECT_EQ(law.set_element_by_element(4, values({100.0, 0.25, 1e-5})), 0);
    EXPECT_DOUBLE_EQ(E_at(4, 0), 100.0);
    // The base data did not change through all this.
    const dense1D<double> after = law.get_data();
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(after[i], base[i]);

    // A law without data takes the first element data as its own.
    fem::law_rod rod(ctx);
    EXPECT_EQ(rod.set_element_by_element(2, values({10.0, 1.0, 0.0})), 0);
    expect_data(rod.get_data(), {10.0, 1.0, 0.0, 0.0});
    EXPECT_FALSE(rod.has_element_data(2));

    // Element data are normalised: a 4-value shell entry is padded like init.
    fem::law_shell_StVenant shell(ctx, values({1000.0, 0.25, 0.0, 2.0}));
    EXPECT_EQ(shell.set_element_by_element(1, values({1000.0, 0.25, 0.0, 4.0})), 0);
    core::law_key key;
    key.element = 1;
    dense1D<double> d;
    EXPECT_EQ(shell.engine()->get_element_data(key, d), 0);
    ASSERT_EQ(d.size(), 7u);
    EXPECT_DOUBLE_EQ(d[5], 64.0 / 12.0);
    EXPECT_DOUBLE_EQ(shell.engine()->thickness(key), 4.0);
    key.element = 0;
    EXPECT_DOUBLE_EQ(shell.engine()->thickness(key), 2.0);
}

TEST(law_element_data, many_entries_survive_growth) {
    core::law_scalar law;
    ASSERT_EQ(law.init(1.0), 0);
    EXPECT_TRUE(law.reserve_elements(3));
    // Keys chosen to collide on the hash 3 e + 5 p as well as spread.
    for (unsigned e = 0; e < 500; ++e) {
        ASSERT_EQ(law.set_element_by_element(e, e % 3 == 0 ? 0u : core::law_all_points, values({2.0 + e})), 0);
    }
    EXPECT_EQ(law.nbr_element_data(), 500u);
    for (unsigned e = 0; e < 500; ++e) {
        core::law_key key;
        key.element = e;
        key.point = 0;
        double k = 0.0;
        EXPECT_EQ(law.tangent(key, k), 0);
        EXPECT_EQ(k, 2.0 + e) << e;
    }
    core::law_key far;
    far.element = 5000;
    double k = 0.0;
    law.tangent(far, k);
    EXPECT_EQ(k, 1.0);
    law.clear_element_data();
    EXPECT_EQ(law.nbr_element_data(), 0u);
}

TEST(law_element_data, unusable_data_fail_the_evaluation) {
    // Skyline heights changed after the data were set: the data no longer fit.
    core::law_solid_skyline law;
    ASSERT_EQ(law.init(dense1D<double>(24, 1.0)), 0);
    ASSERT_EQ(law.init(orv::vector_fixed<unsigned, 6>{1, 1, 1, 1, 1, 1}, dense1D<double>(9, 2.0)), 0);
    // A law without data at all.
    core::law_solid_StVenant empty;
    core::law_key key;
    core::law_3d::strain_type strain{1e-3, 0, 0, 0, 0, 0};
    core::law_3d::stress_type stress{5, 0, 0, 0, 0, 0};
    core::law_3d::tangent_type D(1.0);
    double energy = 7.0;
    EXPECT_EQ(empty.compute(key, strain, D, stress, energy, nullptr, 0), -1);
    EXPECT_EQ(D, core::law_3d::tangent_type(0.0));
    EXPECT_EQ(energy, 0.0);
    EXPECT_EQ(stress[0], 5.0);
    EXPECT_EQ(empty.thermal_correction(key, strain, 10.0), -1);
    EXPECT_EQ(strain[0], 1e-3);
}

TEST(law_handles, sharing_narrowing_and_constructors) {
    fem::context ctx;
    fem::law_solid_StVenant a(ctx, 100.0, 0.3, 1e-5);
    fem::law_solid_StVenant b = a;
    EXPECT_EQ(a.get_w(), b.get_w());
    EXPECT_EQ(b.init(200.0, 0.3, 0.0), 0);
    EXPECT_EQ(a.get_data()[0], 200.0);  // one law seen through both handles

    // Narrowing to the family and to the root; an unrelated law gives an empty handle.
    fem::law_solid_stiff family(a);
    EXPECT_TRUE(family.is_valid());
    EXPECT_EQ(family.obj_type_id(), fem::law_solid_StVenant::type_id());
    fem::law_base root(a);
    EXPECT_TRUE(root.is_valid());
    fem::law_rod rod(ctx, 1.0, 2.0, 3.0);
    fem::law_solid_stiff not_solid(rod);
    EXPECT_FALSE(not_solid.is_valid());
    EXPECT_EQ(not_solid.obj_type_id(), fem::law_solid_stiff::type_id());
    fem::law_shell_stiff shell_family(fem::law_shell_StVenant(ctx, 1.0, 0.2, 0.0, 0.1));
    EXPECT_TRUE(shell_family.is_valid());
    EXPECT_EQ(shell_family.get_data().size(), 7u);
    fem::law_membrane_stiff membrane_family(fem::law_membrane_StVenant(ctx, 1.0, 0.2, 0.0, 0.1));
    EXPECT_EQ(membrane_family.get_data().size(), 5u);

    // The root handle reaches the data checks of the concrete law.
    EXPECT_EQ(root.init(values({1.0})), -1);
    EXPECT_TRUE(a.get_data().empty());

    fem::law_solid_skyline sky(ctx, orv::vector_fixed<unsigned, 6>{1, 1, 1, 1, 1, 1}, dense1D<double>(9, 2.0));
    EXPECT_EQ(sky.get_data().size(), 9u);
    double lo = 0.0, hi = 0.0;
    sky.get_limits(lo, hi);
    EXPECT_EQ(hi, std::numeric_limits<double>::max());
    EXPECT_EQ(lo, -std::numeric_limits<double>::max());
}

}  // namespace
