// Which element models exist: for every physics and shape, the point set of the main
// integral (stiffness, conduction, capacity or mass) and of the external work (load)
// integral, the assumed-strain formulation and the flags the mesh engine needs.
// The table is constexpr so that the engine can check its instantiations against it
// at compile time.
#pragma once

#include <orv/fem/element_type.h>

#include "elements/local_points_set.h"

namespace elfes {

enum class rule_kind : unsigned char {
    none,         // no model on this shape
    closed_form,  // integrated analytically, no point set
    edge,
    faceT,
    faceQ,
    tetra,
    pyramid,
    wedge,
    hexa
};

// A point set by family and sizes; n2 and n3 are used by the product families only
// (faceQ: n1 along xi, n2 along eta; wedge: n1 along zeta, n2 the triangle rule).
struct point_set_spec {
    rule_kind rule;
    unsigned char n1, n2, n3;

    constexpr unsigned size() const {
        switch (rule) {
            case rule_kind::edge:
            case rule_kind::faceT:
            case rule_kind::tetra:
            case rule_kind::pyramid: return n1;
            case rule_kind::faceQ:
            case rule_kind::wedge: return unsigned(n1) * n2;
            case rule_kind::hexa: return unsigned(n1) * n2 * n3;
            default: return 0;
        }
    }
    // whether the family has a rule of these sizes (a closed form always exists)
    constexpr bool exists() const {
        switch (rule) {
            case rule_kind::closed_form: return true;
            case rule_kind::edge: return Gauss_edge::is_rule(n1);
            case rule_kind::faceT: return Gauss_faceT::is_rule(n1);
            case rule_kind::tetra: return Gauss_tetra::is_rule(n1);
            case rule_kind::pyramid: return Gauss_pyramid::is_rule(n1);
            case rule_kind::faceQ: return Gauss_faceQ::is_rule(n1, n2);
            case rule_kind::wedge: return Gauss_wedge::is_rule(n1, n2);
            case rule_kind::hexa: return Gauss_hexa::is_rule(n1, n2, n3);
            default: return false;
        }
    }
    constexpr bool operator==(const point_set_spec& o) const {
        return rule == o.rule && n1 == o.n1 && n2 == o.n2 && n3 == o.n3;
    }
};

// The point set type named by a point_set_spec, for the engine's instantiations.
template <rule_kind K, unsigned N1, unsigned N2 = 0, unsigned N3 = 0>
struct point_set_for;
template <unsigned N>
struct point_set_for<rule_kind::edge, N> {
    using type = local_points_set<Gauss_edge, N>;
};
template <unsigned N>
struct point_set_for<rule_kind::faceT, N> {
    using type = local_points_set<Gauss_faceT, N>;
};
template <unsigned N>
struct point_set_for<rule_kind::tetra, N> {
    using type = local_points_set<Gauss_tetra, N>;
};
template <unsigned N>
struct point_set_for<rule_kind::pyramid, N> {
    using type = local_points_set<Gauss_pyramid, N>;
};
template <unsigned N1, unsigned N2>
struct point_set_for<rule_kind::faceQ, N1, N2> {
    using type = local_points_set_prod2<Gauss_faceQ, N1, N2>;
};
template <unsigned N1, unsigned N2>
struct point_set_for<rule_kind::wedge, N1, N2> {
    using type = local_points_set_prod2<Gauss_wedge, N1, N2>;
};
template <unsigned N1, unsigned N2, unsigned N3>
struct point_set_for<rule_kind::hexa, N1, N2, N3> {
    using type = local_points_set_prod3<Gauss_hexa, N1, N2, N3>;
};

// The point_set_spec of a point set type.
template <class Rule>
struct rule_kind_of;
template <>
struct rule_kind_of<Gauss_edge> {
    static constexpr rule_kind value = rule_kind::edge;
};
template <>
struct rule_kind_of<Gauss_faceT> {
    static constexpr rule_kind value = rule_kind::faceT;
};
template <>
struct rule_kind_of<Gauss_tetra> {
    static constexpr rule_kind value = rule_kind::tetra;
};
template <>
struct rule_kind_of<Gauss_pyramid> {
    static constexpr rule_kind value = rule_kind::pyramid;
};
template <>
struct rule_kind_of<Gauss_faceQ> {
    static constexpr rule_kind value = rule_kind::faceQ;
};
template <>
struct rule_kind_of<Gauss_wedge> {
    static constexpr rule_kind value = rule_kind::wedge;
};
template <>
struct rule_kind_of<Gauss_hexa> {
    static constexpr rule_kind value = rule_kind::hexa;
};

template <class Rule, unsigned N>
constexpr point_set_spec spec_of(const local_points_set<Rule, N>*) {
    return {rule_kind_of<Rule>::value, (unsigned char)N, 0, 0};
}
template <class Rule, unsigned N1, unsigned N2>
constexpr point_set_spec spec_of(const local_points_set_prod2<Rule, N1, N2>*) {
    return {rule_kind_of<Rule>::value, (unsigned char)N1, (unsigned char)N2, 0};
}
template <class Rule, unsigned N1, unsigned N2, unsigned N3>
constexpr point_set_spec spec_of(const local_points_set_prod3<Rule, N1, N2, N3>*) {
    return {rule_kind_of<Rule>::value, (unsigned char)N1, (unsigned char)N2, (unsigned char)N3};
}
template <class PointSet>
constexpr point_set_spec point_set_spec_of() {
    return spec_of(static_cast<const PointSet*>(nullptr));
}

// The rule family of a shape.
constexpr rule_kind rule_family_of(orv::fem::element_type type) {
    using namespace orv::fem;
    switch (type) {
        case FE_edge2:
        case FE_edge3:
        case FE_edge4: return rule_kind::edge;
        case FE_faceT3:
        case FE_faceT6: return rule_kind::faceT;
        case FE_faceQ4:
        case FE_faceQ9: return rule_kind::faceQ;
        case FE_tetra4:
        case FE_tetra10: return rule_kind::tetra;
        case FE_pyramid5:
        case FE_pyramid14: return rule_kind::pyramid;
        case FE_wedge6:
        case FE_wedge18: return rule_kind::wedge;
        case FE_hexa8:
        case FE_hexa27: return rule_kind::hexa;
        default: return rule_kind::none;
    }
}

// The one-point rule of a shape's family: its point is the centre at which an
// element's local basis is evaluated.
template <class Shape>
struct centre_point_set {
    static constexpr rule_kind kind = rule_family_of(static_cast<orv::fem::element_type>(Shape::element_type_value));
    static constexpr bool product2 = kind == rule_kind::faceQ || kind == rule_kind::wedge;
    using type = typename point_set_for<kind, 1, (product2 || kind == rule_kind::hexa) ? 1 : 0,
                                        kind == rule_kind::hexa ? 1 : 0>::type;
};

// The kind of mesh model an entry instantiates.
enum class mesh_kind : unsigned char { stiffness, mass, heat_conduction, heat_capacity, heat_convection, load_only };

// Instances of a physics: small strain (_lin), the finite variants (_gnld, _gnls,
// _gnl). Physics with a single instance use instance_lin.
enum : unsigned { instance_lin = 1u, instance_gnld = 2u, instance_gnls = 4u, instance_gnl = 8u };

// The integration weight of an axisymmetric entry is multiplied by 2 pi r.
constexpr double axi_two_pi = 6.283185307179586;

struct family_entry {
    const char* physics;  // engine physics class
    mesh_kind kind;
    unsigned instances;  // instance bits served by this entry
    orv::fem::element_type shape;
    point_set_spec main;      // stiffness, conduction, capacity or mass integral
    point_set_spec load;      // external work integral
    const char* formulation;  // assumed-strain formulation, nullptr for none
    bool drill;               // drilling rotation stiffness
    bool axi;                 // weight times 2 pi r
};

namespace family_detail {

constexpr point_set_spec CF{rule_kind::closed_form, 0, 0, 0};
constexpr point_set_spec E(unsigned n) { return {rule_kind::edge, (unsigned char)n, 0, 0}; }
constexpr point_set_spec T(unsigned n) { return {rule_kind::faceT, (unsigned char)n, 0, 0}; }
constexpr point_set_spec Q(unsigned n) { return {rule_kind::faceQ, (unsigned char)n, (unsigned char)n, 0}; }
constexpr point_set_spec Te(unsigned n) { return {rule_kind::tetra, (unsigned char)n, 0, 0}; }
constexpr point_set_spec P(unsigned n) { return {rule_kind::pyramid, (unsigned char)n, 0, 0}; }
constexpr point_set_spec W(unsigned ne, unsigned nt) {
    return {rule_kind::wedge, (unsigned char)ne, (unsigned char)nt, 0};
}
constexpr point_set_spec H(unsigned n) {
    return {rule_kind::hexa, (unsigned char)n, (unsigned char)n, (unsigned char)n};
}

constexpr unsigned both = instance_lin | instance_gnl;
constexpr unsigned single = instance_lin;

using K = mesh_kind;

namespace fe = orv::fem;
constexpr fe::element_type e2 = fe::FE_edge2, e3 = fe::FE_edge3, e4 = fe::FE_edge4, t3 = fe::FE_faceT3,
                           t6 = fe::FE_faceT6, q4 = fe::FE_faceQ4, q9 = fe::FE_faceQ9, te4 = fe::FE_tetra4,
                           te10 = fe::FE_tetra10, p5 = fe::FE_pyramid5, p14 = fe::FE_pyramid14, w6 = fe::FE_wedge6,
                           w18 = fe::FE_wedge18, h8 = fe::FE_hexa8, h27 = fe::FE_hexa27;

constexpr bool same_name(const char* a, const char* b) {
    while (*a && *a == *b) ++a, ++b;
    return *a == *b;
}

}  // namespace family_detail

// clang-format off
inline constexpr family_entry family_table[] = {
#define ORV_FE(phys, kind, inst, shape, m, l, form, drill, axi) \
    {phys, family_detail::K::kind, inst, family_detail::shape, family_detail::m, family_detail::l, form, drill, axi}
    // rods and beams
    ORV_FE("mechanical_displacement_1d", stiffness, instance_lin | instance_gnld | instance_gnl, e2, E(1), E(1), nullptr, false, false),
    ORV_FE("mechanical_Timoshenko_beam", stiffness, instance_lin | instance_gnls, e2, CF, CF, nullptr, false, false),
    ORV_FE("mechanical_Timoshenko_beam", stiffness, instance_gnl, e2, E(1), E(1), nullptr, false, false),
    ORV_FE("mechanical_Timoshenko_beam", stiffness, family_detail::both, e3, E(2), E(2), nullptr, false, false),
    ORV_FE("mechanical_Timoshenko_beam", stiffness, family_detail::both, e4, E(3), E(3), nullptr, false, false),
    // membranes and plane strain
    ORV_FE("mechanical_membrane", stiffness, family_detail::both, t3, T(1), T(1), nullptr, false, false),
    ORV_FE("mechanical_membrane", stiffness, family_detail::both, t6, T(6), T(6), nullptr, false, false),
    ORV_FE("mechanical_membrane", stiffness, family_detail::both, q4, Q(2), Q(2), "ANS_shell_MITC4", false, false),
    ORV_FE("mechanical_membrane", stiffness, family_detail::both, q9, Q(3), Q(3), nullptr, false, false),
    ORV_FE("mechanical_plane_strain", stiffness, family_detail::both, t3, T(1), T(1), nullptr, false, false),
    ORV_FE("mechanical_plane_strain", stiffness, family_detail::both, t6, T(6), T(6), nullptr, false, false),
    ORV_FE("mechanical_plane_strain", stiffness, family_detail::both, q4, Q(2), Q(2), "ANS_2D_MITC4", false, false),
    ORV_FE("mechanical_plane_strain", stiffness, family_detail::both, q9, Q(3), Q(3), nullptr, false, false),
    // axisymmetric
    ORV_FE("mechanical_displacement_axi3d", stiffness, family_detail::both, t3, T(3), T(3), nullptr, false, true),
    ORV_FE("mechanical_displacement_axi3d", stiffness, family_detail::both, t6, T(6), T(6), nullptr, false, true),
    ORV_FE("mechanical_displacement_axi3d", stiffness, family_detail::both, q4, Q(2), Q(2), nullptr, false, true),
    ORV_FE("mechanical_displacement_axi3d", stiffness, family_detail::both, q9, Q(3), Q(3), nullptr, false, true),
    ORV_FE("mechanical_displacement_axi_torsion", stiffness, family_detail::single, t3, T(3), T(3), nullptr, false, true),
    ORV_FE("mechanical_displacement_axi_torsion", stiffness, family_detail::single, t6, T(6), T(6), nullptr, false, true),
    ORV_FE("mechanical_displacement_axi_torsion", stiffness, family_detail::single, q4, Q(2), Q(2), nullptr, false, true),
    ORV_FE("mechanical_displacement_axi_torsion", stiffness, family_detail::single, q9, Q(3), Q(3), nullptr, false, true),
    // plates and shells
    ORV_FE("mechanical_Mindlin_plate", stiffness, family_detail::both, t3, T(3), T(1), "ANS_shell_T3", false, false),
    ORV_FE("mechanical_Mindlin_plate", stiffness, family_detail::both, t6, T(6), T(6), nullptr, false, false),
    ORV_FE("mechanical_Mindlin_plate", stiffness, family_detail::both, q4, Q(2), Q(2), "ANS_shell_Q4", false, false),
    ORV_FE("mechanical_Mindlin_plate", stiffness, family_detail::both, q9, Q(3), Q(3), "ANS_shell_Q9", false, false),
    ORV_FE("mechanical_Mindlin_shell", stiffness, family_detail::both, t3, T(3), T(3), "ANS_shell_T3", true, false),
    ORV_FE("mechanical_Mindlin_shell", stiffness, family_detail::both, t6, T(6), T(6), nullptr, true, false),
    ORV_FE("mechanical_Mindlin_shell", stiffness, family_detail::both, q4, Q(2), Q(2), "ANS_shell_MITC4", true, false),
    ORV_FE("mechanical_Mindlin_shell", stiffness, family_detail::both, q9, Q(3), Q(3), "ANS_shell_Q9", true, false),
    // distributed springs
    ORV_FE("mechanical_distributed_spring_1d", stiffness, family_detail::single, e2, E(2), E(2), nullptr, false, false),
    ORV_FE("mechanical_distributed_spring_1d", stiffness, family_detail::single, e3, E(3), E(3), nullptr, false, false),
    ORV_FE("mechanical_distributed_spring_1d", stiffness, family_detail::single, e4, E(4), E(4), nullptr, false, false),
    ORV_FE("mechanical_distributed_spring_rotation_1d", stiffness, family_detail::single, e2, E(2), E(2), nullptr, false, false),
    ORV_FE("mechanical_distributed_spring_rotation_1d", stiffness, family_detail::single, e3, E(3), E(3), nullptr, false, false),
    ORV_FE("mechanical_distributed_spring_rotation_1d", stiffness, family_detail::single, e4, E(4), E(4), nullptr, false, false),
    ORV_FE("mechanical_distributed_spring_2d", stiffness, family_detail::single, t3, T(3), T(3), nullptr, false, false),
    ORV_FE("mechanical_distributed_spring_2d", stiffness, family_detail::single, t6, T(6), T(6), nullptr, false, false),
    ORV_FE("mechanical_distributed_spring_2d", stiffness, family_detail::single, q4, Q(2), Q(2), nullptr, false, false),
    ORV_FE("mechanical_distributed_spring_2d", stiffness, family_detail::single, q9, Q(3), Q(3), nullptr, false, false),
    // solids
    ORV_FE("mechanical_displacement_3d", stiffness, family_detail::both, te4, Te(1), Te(1), nullptr, false, false),
    ORV_FE("mechanical_displacement_3d", stiffness, family_detail::both, te10, Te(5), Te(4), nullptr, false, false),
    ORV_FE("mechanical_displacement_3d", stiffness, family_detail::both, p5, P(8), P(8), nullptr, false, false),
    ORV_FE("mechanical_displacement_3d", stiffness, family_detail::both, p14, P(27), P(27), nullptr, false, false),
    ORV_FE("mechanical_displacement_3d", stiffness, family_detail::both, w6, W(2, 3), W(2, 3), nullptr, false, false),
    ORV_FE("mechanical_displacement_3d", stiffness, family_detail::both, w18, W(3, 6), W(3, 6), nullptr, false, false),
    ORV_FE("mechanical_displacement_3d", stiffness, family_detail::both, h8, H(2), H(2), nullptr, false, false),
    ORV_FE("mechanical_displacement_3d", stiffness, family_detail::both, h27, H(3), H(3), nullptr, false, false),
    // heat conduction
    ORV_FE("heat_conduction_1d", heat_conduction, family_detail::single, e2, E(1), E(2), nullptr, false, false),
    ORV_FE("heat_conduction_1d", heat_conduction, family_detail::single, e3, E(2), E(3), nullptr, false, false),
    ORV_FE("heat_conduction_1d", heat_conduction, family_detail::single, e4, E(3), E(4), nullptr, false, false),
    ORV_FE("heat_conduction_2d", heat_conduction, family_detail::single, t3, T(1), T(3), nullptr, false, false),
    ORV_FE("heat_conduction_2d", heat_conduction, family_detail::single, t6, T(6), T(6), nullptr, false, false),
    ORV_FE("heat_conduction_2d", heat_conduction, family_detail::single, q4, Q(2), Q(2), nullptr, false, false),
    ORV_FE("heat_conduction_2d", heat_conduction, family_detail::single, q9, Q(3), Q(3), nullptr, false, false),
    ORV_FE("heat_conduction_3d", heat_conduction, family_detail::single, te4, Te(1), Te(1), nullptr, false, false),
    ORV_FE("heat_conduction_3d", heat_conduction, family_detail::single, te10, Te(5), Te(4), nullptr, false, false),
    ORV_FE("heat_conduction_3d", heat_conduction, family_detail::single, p5, P(8), P(8), nullptr, false, false),
    ORV_FE("heat_conduction_3d", heat_conduction, family_detail::single, p14, P(27), P(27), nullptr, false, false),
    ORV_FE("heat_conduction_3d", heat_conduction, family_detail::single, w6, W(2, 3), W(2, 3), nullptr, false, false),
    ORV_FE("heat_conduction_3d", heat_conduction, family_detail::single, w18, W(3, 6), W(3, 6), nullptr, false, false),
    ORV_FE("heat_conduction_3d", heat_conduction, family_detail::single, h8, H(2), H(2), nullptr, false, false),
    ORV_FE("heat_conduction_3d", heat_conduction, family_detail::single, h27, H(3), H(3), nullptr, false, false),
    // 1-D capacity, convection and mass
    ORV_FE("heat_capacity_1d", heat_capacity, family_detail::single, e2, E(2), E(2), nullptr, false, false),
    ORV_FE("heat_capacity_1d", heat_capacity, family_detail::single, e3, E(3), E(3), nullptr, false, false),
    ORV_FE("heat_capacity_1d", heat_capacity, family_detail::single, e4, E(4), E(4), nullptr, false, false),
    ORV_FE("heat_convection_1d", heat_convection, family_detail::single, e2, E(2), E(2), nullptr, false, false),
    ORV_FE("heat_convection_1d", heat_convection, family_detail::single, e3, E(3), E(3), nullptr, false, false),
    ORV_FE("heat_convection_1d", heat_convection, family_detail::single, e4, E(4), E(4), nullptr, false, false),
    ORV_FE("mass_displacement_1d", mass, family_detail::single, e2, E(2), E(2), nullptr, false, false),
    ORV_FE("mass_displacement_1d", mass, family_detail::single, e3, E(3), E(3), nullptr, false, false),
    ORV_FE("mass_displacement_1d", mass, family_detail::single, e4, E(4), E(4), nullptr, false, false),
    ORV_FE("mass_beam", mass, family_detail::single, e2, CF, CF, nullptr, false, false),
    ORV_FE("mass_beam", mass, family_detail::single, e3, E(3), E(3), nullptr, false, false),
    ORV_FE("mass_beam", mass, family_detail::single, e4, E(4), E(4), nullptr, false, false),
    // 2-D capacity, convection and mass
    ORV_FE("heat_capacity_2d", heat_capacity, family_detail::single, t3, T(3), T(3), nullptr, false, false),
    ORV_FE("heat_capacity_2d", heat_capacity, family_detail::single, t6, T(6), T(6), nullptr, false, false),
    ORV_FE("heat_capacity_2d", heat_capacity, family_detail::single, q4, Q(2), Q(2), nullptr, false, false),
    ORV_FE("heat_capacity_2d", heat_capacity, family_detail::single, q9, Q(3), Q(3), nullptr, false, false),
    ORV_FE("heat_convection_2d", heat_convection, family_detail::single, t3, T(3), T(3), nullptr, false, false),
    ORV_FE("heat_convection_2d", heat_convection, family_detail::single, t6, T(6), T(6), nullptr, false, false),
    ORV_FE("heat_convection_2d", heat_convection, family_detail::single, q4, Q(2), Q(2), nullptr, false, false),
    ORV_FE("heat_convection_2d", heat_convection, family_detail::single, q9, Q(3), Q(3), nullptr, false, false),
    ORV_FE("mass_displacement_2d", mass, family_detail::single, t3, T(3), T(3), nullptr, false, false),
    ORV_FE("mass_displacement_2d", mass, family_detail::single, t6, T(6), T(6), nullptr, false, false),
    ORV_FE("mass_displacement_2d", mass, family_detail::single, q4, Q(2), Q(2), nullptr, false, false),
    ORV_FE("mass_displacement_2d", mass, family_detail::single, q9, Q(3), Q(3), nullptr, false, false),
    ORV_FE("mass_shell", mass, family_detail::single, t3, T(3), T(3), nullptr, false, false),
    ORV_FE("mass_shell", mass, family_detail::single, t6, T(6), T(6), nullptr, false, false),
    ORV_FE("mass_shell", mass, family_detail::single, q4, Q(2), Q(2), nullptr, false, false),
    ORV_FE("mass_shell", mass, family_detail::single, q9, Q(3), Q(3), nullptr, false, false),
    ORV_FE("mass_axi3d", mass, family_detail::single, t3, T(3), T(3), nullptr, false, true),
    ORV_FE("mass_axi3d", mass, family_detail::single, t6, T(6), T(6), nullptr, false, true),
    ORV_FE("mass_axi3d", mass, family_detail::single, q4, Q(2), Q(2), nullptr, false, true),
    ORV_FE("mass_axi3d", mass, family_detail::single, q9, Q(3), Q(3), nullptr, false, true),
    // 3-D capacity and mass
    ORV_FE("mass_displacement_3d", mass, family_detail::single, te4, Te(4), Te(4), nullptr, false, false),
    ORV_FE("mass_displacement_3d", mass, family_detail::single, te10, Te(11), Te(11), nullptr, false, false),
    ORV_FE("mass_displacement_3d", mass, family_detail::single, p5, P(8), P(8), nullptr, false, false),
    ORV_FE("mass_displacement_3d", mass, family_detail::single, p14, P(27), P(27), nullptr, false, false),
    ORV_FE("mass_displacement_3d", mass, family_detail::single, w6, W(2, 3), W(2, 3), nullptr, false, false),
    ORV_FE("mass_displacement_3d", mass, family_detail::single, w18, W(3, 6), W(3, 6), nullptr, false, false),
    ORV_FE("mass_displacement_3d", mass, family_detail::single, h8, H(2), H(2), nullptr, false, false),
    ORV_FE("mass_displacement_3d", mass, family_detail::single, h27, H(3), H(3), nullptr, false, false),
    ORV_FE("heat_capacity_3d", heat_capacity, family_detail::single, te4, Te(4), Te(4), nullptr, false, false),
    ORV_FE("heat_capacity_3d", heat_capacity, family_detail::single, te10, Te(11), Te(11), nullptr, false, false),
    ORV_FE("heat_capacity_3d", heat_capacity, family_detail::single, p5, P(8), P(8), nullptr, false, false),
    ORV_FE("heat_capacity_3d", heat_capacity, family_detail::single, p14, P(27), P(27), nullptr, false, false),
    ORV_FE("heat_capacity_3d", heat_capacity, family_detail::single, w6, W(2, 3), W(2, 3), nullptr, false, false),
    ORV_FE("heat_capacity_3d", heat_capacity, family_detail::single, w18, W(3, 6), W(3, 6), nullptr, false, false),
    ORV_FE("heat_capacity_3d", heat_capacity, family_detail::single, h8, H(2), H(2), nullptr, false, false),
    ORV_FE("heat_capacity_3d", heat_capacity, family_detail::single, h27, H(3), H(3), nullptr, false, false),
    // load-only meshes, plain and axisymmetric
    ORV_FE("physics_load_only", load_only, family_detail::single, e2, E(2), E(2), nullptr, false, false),
    ORV_FE("physics_load_only", load_only, family_detail::single, e3, E(3), E(3), nullptr, false, false),
    ORV_FE("physics_load_only", load_only, family_detail::single, t3, T(3), T(3), nullptr, false, false),
    ORV_FE("physics_load_only", load_only, family_detail::single, t6, T(6), T(6), nullptr, false, false),
    ORV_FE("physics_load_only", load_only, family_detail::single, q4, Q(2), Q(2), nullptr, false, false),
    ORV_FE("physics_load_only", load_only, family_detail::single, q9, Q(3), Q(3), nullptr, false, false),
    ORV_FE("physics_load_only", load_only, family_detail::single, te4, Te(1), Te(1), nullptr, false, false),
    ORV_FE("physics_load_only", load_only, family_detail::single, te10, Te(4), Te(4), nullptr, false, false),
    ORV_FE("physics_load_only", load_only, family_detail::single, p5, P(1), P(1), nullptr, false, false),
    ORV_FE("physics_load_only", load_only, family_detail::single, p14, P(8), P(8), nullptr, false, false),
    ORV_FE("physics_load_only", load_only, family_detail::single, w6, W(2, 3), W(2, 3), nullptr, false, false),
    ORV_FE("physics_load_only", load_only, family_detail::single, w18, W(3, 6), W(3, 6), nullptr, false, false),
    ORV_FE("physics_load_only", load_only, family_detail::single, h8, H(2), H(2), nullptr, false, false),
    ORV_FE("physics_load_only", load_only, family_detail::single, h27, H(3), H(3), nullptr, false, false),
    ORV_FE("physics_load_only_axi", load_only, family_detail::single, e2, E(2), E(2), nullptr, false, true),
    ORV_FE("physics_load_only_axi", load_only, family_detail::single, e3, E(3), E(3), nullptr, false, true),
    ORV_FE("physics_load_only_axi", load_only, family_detail::single, t3, T(3), T(3), nullptr, false, true),
    ORV_FE("physics_load_only_axi", load_only, family_detail::single, t6, T(6), T(6), nullptr, false, true),
    ORV_FE("physics_load_only_axi", load_only, family_detail::single, q4, Q(2), Q(2), nullptr, false, true),
    ORV_FE("physics_load_only_axi", load_only, family_detail::single, q9, Q(3), Q(3), nullptr, false, true),
#undef ORV_FE
};
// clang-format on

inline constexpr unsigned family_table_size = sizeof(family_table) / sizeof(family_table[0]);

// The entry of a physics, a shape and one instance bit; nullptr
// when the combination has no model.
constexpr const family_entry* find_family_entry(const char* physics, unsigned shape, unsigned instance = instance_lin) {
    for (unsigned i = 0; i < family_table_size; ++i) {
        const family_entry& e = family_table[i];
        if (e.shape == shape && (e.instances & instance) != 0 && family_detail::same_name(e.physics, physics))
            return &e;
    }
    return nullptr;
}

// Number of model instances of a kind (one per instance bit of each entry).
constexpr unsigned count_instances(mesh_kind kind) {
    unsigned n = 0;
    for (unsigned i = 0; i < family_table_size; ++i) {
        if (family_table[i].kind != kind) continue;
        for (unsigned b = family_table[i].instances; b != 0; b &= b - 1) ++n;
    }
    return n;
}

}  // namespace elfes
