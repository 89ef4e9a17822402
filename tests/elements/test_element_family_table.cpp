// The family table: counts per kind, sample cells, valid point sets, and the shapes
// tabulated at the points of every rule they are used with.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <set>
#include <string>
#include <tuple>

#include "elements/element_family_table.h"
#include "elements/elfes_shapes.h"
#include "elements/shape_element_type.h"
#include "elements/shape_table.h"

using namespace elfes;

namespace {

unsigned shape_dim(unsigned type) { return type < 5 ? 1 : type < 12 ? 2 : 3; }

}  // namespace

TEST(element_family_table, instance_counts_per_kind) {
    EXPECT_EQ(count_instances(mesh_kind::stiffness), 80u);
    EXPECT_EQ(count_instances(mesh_kind::mass), 26u);
    EXPECT_EQ(count_instances(mesh_kind::load_only), 20u);
    EXPECT_EQ(count_instances(mesh_kind::heat_capacity), 15u);
    EXPECT_EQ(count_instances(mesh_kind::heat_conduction), 15u);
    EXPECT_EQ(count_instances(mesh_kind::heat_convection), 7u);
}

TEST(element_family_table, every_entry_is_consistent) {
    std::set<std::tuple<std::string, unsigned, unsigned>> seen;
    for (unsigned i = 0; i < family_table_size; ++i) {
        const family_entry& e = family_table[i];
        SCOPED_TRACE(std::string(e.physics) + " on " + std::to_string(e.shape));
        EXPECT_TRUE(e.main.exists());
        EXPECT_TRUE(e.load.exists());
        EXPECT_EQ(e.main.rule == rule_kind::closed_form, e.load.rule == rule_kind::closed_form);
        EXPECT_NE(e.instances, 0u);
        // physics names that end in a dimension agree with the shape's
        const std::string p = e.physics;
        const std::string tail = p.size() > 3 ? p.substr(p.size() - 3) : std::string();
        if (tail == "_1d" || tail == "_2d" || tail == "_3d") {
            EXPECT_EQ(shape_dim(e.shape), unsigned(tail[1] - '0'));
        }
        // no two entries serve the same instance of a physics on a shape
        for (unsigned b = 1; b <= instance_gnl; b <<= 1)
            if (e.instances & b) {
                EXPECT_TRUE(seen.insert({p, e.shape, b}).second);
            }
        EXPECT_EQ(find_family_entry(e.physics, e.shape, e.instances & (0u - e.instances)), &e);
        const bool axi = p.find("axi") != std::string::npos;
        EXPECT_EQ(e.axi, axi);
    }
}

TEST(element_family_table, sample_cells) {
    const family_entry* t10 = find_family_entry("mechanical_displacement_3d", 15, instance_gnl);
    ASSERT_NE(t10, nullptr);
    EXPECT_EQ(t10->main.rule, rule_kind::tetra);
    EXPECT_EQ(t10->main.size(), 5u);
    EXPECT_EQ(t10->load.size(), 4u);
    const family_entry* m10 = find_family_entry("mass_displacement_3d", 15);
    ASSERT_NE(m10, nullptr);
    EXPECT_EQ(m10->main.size(), 11u);
    const family_entry* plate = find_family_entry("mechanical_Mindlin_plate", 7);
    ASSERT_NE(plate, nullptr);
    EXPECT_EQ(plate->main.size(), 3u);
    EXPECT_EQ(plate->load.size(), 1u);
    EXPECT_STREQ(plate->formulation, "ANS_shell_T3");
    EXPECT_FALSE(plate->drill);
    const family_entry* shell = find_family_entry("mechanical_Mindlin_shell", 9, instance_gnl);
    ASSERT_NE(shell, nullptr);
    EXPECT_TRUE(shell->drill);
    EXPECT_STREQ(shell->formulation, "ANS_shell_MITC4");
    const family_entry* w18 = find_family_entry("heat_conduction_3d", 21);
    ASSERT_NE(w18, nullptr);
    EXPECT_EQ(w18->main.rule, rule_kind::wedge);
    EXPECT_EQ(w18->main.n1, 3);  // along zeta
    EXPECT_EQ(w18->main.n2, 6);  // triangle
    EXPECT_EQ(w18->main.size(), 18u);
    const family_entry* h1 = find_family_entry("heat_conduction_1d", 2);
    ASSERT_NE(h1, nullptr);
    EXPECT_EQ(h1->main.size(), 1u);
    EXPECT_EQ(h1->load.size(), 2u);
    // beam edge2: closed form except in the fully finite instance
    EXPECT_EQ(find_family_entry("mechanical_Timoshenko_beam", 2)->main.rule, rule_kind::closed_form);
    EXPECT_EQ(find_family_entry("mechanical_Timoshenko_beam", 2, instance_gnls)->main.rule, rule_kind::closed_form);
    EXPECT_EQ(find_family_entry("mechanical_Timoshenko_beam", 2, instance_gnl)->main.size(), 1u);
}

TEST(element_family_table, combinations_without_a_model) {
    EXPECT_EQ(find_family_entry("mechanical_displacement_3d", 9), nullptr);
    EXPECT_EQ(find_family_entry("mechanical_Timoshenko_beam", 3, instance_gnls), nullptr);
    EXPECT_EQ(find_family_entry("mechanical_displacement_1d", 3), nullptr);
    EXPECT_EQ(find_family_entry("mechanical_displacement_axi_torsion", 7, instance_gnl), nullptr);
    EXPECT_EQ(find_family_entry("physics_load_only", 4), nullptr);
    EXPECT_EQ(find_family_entry("physics_load_only_axi", 22), nullptr);
    EXPECT_EQ(find_family_entry("mechanical_membrane", 10), nullptr);  // serendipity size
    EXPECT_EQ(find_family_entry("no_such_physics", 22), nullptr);
}

// Point set types and their table specs convert both ways (checked when compiling).
using wedge_2x3 = point_set_for<rule_kind::wedge, 2, 3>::type;
static_assert(std::is_same_v<wedge_2x3, local_points_set_prod2<Gauss_wedge, 2, 3>>);
static_assert(point_set_spec_of<wedge_2x3>() == point_set_spec{rule_kind::wedge, 2, 3, 0});
static_assert(point_set_spec_of<local_points_set<Gauss_tetra, 5>>() ==
              find_family_entry("mechanical_displacement_3d", 15)->main);
static_assert(point_set_spec_of<local_points_set_prod3<Gauss_hexa, 2, 2, 2>>() ==
              find_family_entry("mechanical_displacement_3d", 22)->main);

// --- shapes at the points of the rules they are used with -----------------------

namespace {

template <class Shape, class Set>
void check_table() {
    static_assert(family_detail::same_name("x", "x"));
    const shape_table<Shape, Set> t;
    for (unsigned p = 0; p < Set::size; ++p) {
        double sum = 0.0, g[3] = {0.0, 0.0, 0.0};
        for (unsigned i = 0; i < Shape::nbr_nodes; ++i) {
            sum += t.N[p][i];
            for (unsigned k = 0; k < Shape::dim; ++k) g[k] += t.dN[p][i][k];
        }
        EXPECT_NEAR(sum, 1.0, 1e-13) << "point " << p;
        for (unsigned k = 0; k < Shape::dim; ++k) EXPECT_NEAR(g[k], 0.0, 1e-12);
        EXPECT_EQ(t.point[p].ID, Set::point(p).ID);
    }
    // the integral of the shape functions is the reference measure
    double measure = 0.0, integral = 0.0;
    for (unsigned p = 0; p < Set::size; ++p) {
        measure += t.point[p].weight;
        for (unsigned i = 0; i < Shape::nbr_nodes; ++i) integral += t.point[p].weight * t.N[p][i];
    }
    EXPECT_NEAR(integral, measure, 1e-14 * measure + 1e-14 * Set::size);
}

}  // namespace

TEST(shape_tables, every_rule_of_the_family_table) {
    using namespace elfes;
    check_table<edge2, local_points_set<Gauss_edge, 1>>();
    check_table<edge2, local_points_set<Gauss_edge, 2>>();
    check_table<edge3, local_points_set<Gauss_edge, 2>>();
    check_table<edge3, local_points_set<Gauss_edge, 3>>();
    check_table<edge4, local_points_set<Gauss_edge, 3>>();
    check_table<edge4, local_points_set<Gauss_edge, 4>>();
    check_table<faceT3, local_points_set<Gauss_faceT, 1>>();
    check_table<faceT3, local_points_set<Gauss_faceT, 3>>();
    check_table<faceT6, local_points_set<Gauss_faceT, 6>>();
    check_table<faceQ4, local_points_set_prod2<Gauss_faceQ, 2, 2>>();
    check_table<faceQ9, local_points_set_prod2<Gauss_faceQ, 3, 3>>();
    check_table<tetra4, local_points_set<Gauss_tetra, 1>>();
    check_table<tetra4, local_points_set<Gauss_tetra, 4>>();
    check_table<tetra10, local_points_set<Gauss_tetra, 4>>();
    check_table<tetra10, local_points_set<Gauss_tetra, 5>>();
    check_table<tetra10, local_points_set<Gauss_tetra, 11>>();
    check_table<pyramid5, local_points_set<Gauss_pyramid, 1>>();
    check_table<pyramid5, local_points_set<Gauss_pyramid, 8>>();
    check_table<pyramid14, local_points_set<Gauss_pyramid, 8>>();
    check_table<pyramid14, local_points_set<Gauss_pyramid, 27>>();
    check_table<wedge6, local_points_set_prod2<Gauss_wedge, 2, 3>>();
    check_table<wedge18, local_points_set_prod2<Gauss_wedge, 3, 6>>();
    check_table<hexa8, local_points_set_prod3<Gauss_hexa, 2, 2, 2>>();
    check_table<hexa27, local_points_set_prod3<Gauss_hexa, 3, 3, 3>>();
}

TEST(shape_tables, second_derivatives_are_tabulated) {
    const shape_table<faceQ9, local_points_set_prod2<Gauss_faceQ, 3, 3>> t;
    double d2[9][3];
    faceQ9::second_derivatives(t.point[4].coord, d2);
    for (unsigned i = 0; i < 9; ++i)
        for (unsigned c = 0; c < 3; ++c) EXPECT_EQ(t.d2N[4][i][c], d2[i][c]);
}

// --- shapes and the public enumeration ------------------------------------------

namespace {

template <class Shape>
void check_enumeration(unsigned& visited) {
    const orv::fem::element_type t = element_type_of<Shape>;
    EXPECT_EQ(orv::fem::nbr_nodes(t), Shape::nbr_nodes) << t;
    EXPECT_EQ(orv::fem::nbr_base_nodes(t), Shape::nbr_corner_nodes) << t;
    EXPECT_EQ(orv::fem::element_dim(t), Shape::dim) << t;
    unsigned seen_nodes = 0;
    EXPECT_TRUE(dispatch_shape(t, [&](auto s) { seen_nodes = decltype(s)::nbr_nodes; }));
    EXPECT_EQ(seen_nodes, Shape::nbr_nodes);
    ++visited;
}

}  // namespace

TEST(shape_element_type, counts_agree_with_the_enumeration) {
    unsigned visited = 0;
    check_enumeration<edge2>(visited);
    check_enumeration<edge3>(visited);
    check_enumeration<edge4>(visited);
    check_enumeration<faceT3>(visited);
    check_enumeration<faceT6>(visited);
    check_enumeration<faceQ4>(visited);
    check_enumeration<faceQ9>(visited);
    check_enumeration<tetra4>(visited);
    check_enumeration<tetra10>(visited);
    check_enumeration<pyramid5>(visited);
    check_enumeration<pyramid14>(visited);
    check_enumeration<wedge6>(visited);
    check_enumeration<wedge18>(visited);
    check_enumeration<hexa8>(visited);
    check_enumeration<hexa27>(visited);
    EXPECT_EQ(visited, 15u);
}

TEST(shape_element_type, values_without_a_shape_are_not_dispatched) {
    unsigned calls = 0;
    for (unsigned v : {0u, 1u, 5u, 6u, 10u, 12u, 13u, 17u, 20u, 23u, 25u, 1000u})
        EXPECT_FALSE(dispatch_shape(static_cast<orv::fem::element_type>(v), [&](auto) { ++calls; })) << v;
    EXPECT_EQ(calls, 0u);
    unsigned shapes = 0;
    for (unsigned v = 0; v < 25; ++v)
        if (dispatch_shape(static_cast<orv::fem::element_type>(v), [](auto) {})) ++shapes;
    EXPECT_EQ(shapes, 15u);
}

namespace {

template <class Shape>
void check_centre(double measure, double xi, double eta, double zeta) {
    using C = typename centre_point_set<Shape>::type;
    static_assert(C::size == 1 && C::dim == Shape::dim);
    const local_point& p = C::point(0);
    EXPECT_NEAR(p.weight, measure, 1e-15);
    EXPECT_NEAR(p.coord[0], xi, 1e-15);
    EXPECT_NEAR(p.coord[1], eta, 1e-15);
    EXPECT_NEAR(p.coord[2], zeta, 1e-15);
}

}  // namespace

TEST(shape_element_type, centre_points_are_the_one_point_rules) {
    const double t = 1.0 / 3.0;
    check_centre<edge3>(2.0, 0.0, 0.0, 0.0);
    check_centre<faceT6>(0.5, t, t, 0.0);
    check_centre<faceQ9>(4.0, 0.0, 0.0, 0.0);
    check_centre<tetra10>(1.0 / 6.0, 0.25, 0.25, 0.25);
    check_centre<pyramid14>(4.0 / 3.0, 0.0, 0.0, 0.25);
    check_centre<wedge6>(1.0, t, t, 0.0);
    check_centre<hexa8>(8.0, 0.0, 0.0, 0.0);
    EXPECT_EQ(centre_point_set<wedge18>::type::point(0).ID, 500u);
    EXPECT_EQ(centre_point_set<faceQ4>::type::point(0).ID, 300u);
}
