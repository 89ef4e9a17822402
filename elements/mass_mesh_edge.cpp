// Mass and heat meshes on edges: lines with a density, a conductivity, a capacity or
// a convection coefficient per length.
#include "elements/numerical_model_mass_mesh.h"
#include "elements/stiff_mesh_factory.h"

namespace orv {
namespace core {

namespace {
using elfes::Gauss_edge;
using elfes::local_points_set;
using E1 = local_points_set<Gauss_edge, 1>;
using E2 = local_points_set<Gauss_edge, 2>;
using E3 = local_points_set<Gauss_edge, 3>;
using E4 = local_points_set<Gauss_edge, 4>;
static_assert(matches_family_table<elfes::edge2, E2, E2>("mass_displacement_1d", elfes::instance_lin));
static_assert(matches_family_table<elfes::edge3, E3, E3>("mass_displacement_1d", elfes::instance_lin));
static_assert(matches_family_table<elfes::edge4, E4, E4>("mass_displacement_1d", elfes::instance_lin));
static_assert(matches_family_table<elfes::edge2, E1, E2>("heat_conduction_1d", elfes::instance_lin));
static_assert(matches_family_table<elfes::edge3, E2, E3>("heat_conduction_1d", elfes::instance_lin));
static_assert(matches_family_table<elfes::edge4, E3, E4>("heat_conduction_1d", elfes::instance_lin));
static_assert(matches_family_table<elfes::edge2, E2, E2>("heat_capacity_1d", elfes::instance_lin));
static_assert(matches_family_table<elfes::edge2, E2, E2>("heat_convection_1d", elfes::instance_lin));

// The physics P on an edge, its point sets by node count: A for 2 nodes, B for 3,
// C for 4.
template <class P, class A, class B, class C>
numerical_model_base* make_edge(context_type* ctx, const Ptr<physics_model_base>& physics,
                                const dense2D<unsigned int>& connectivity, fem::element_type type) {
    switch (type) {
        case fem::FE_edge2: return make_mass_mesh<P, elfes::edge2, A>(ctx, physics, connectivity, type);
        case fem::FE_edge3: return make_mass_mesh<P, elfes::edge3, B>(ctx, physics, connectivity, type);
        case fem::FE_edge4: return make_mass_mesh<P, elfes::edge4, C>(ctx, physics, connectivity, type);
        default: return nullptr;
    }
}
}  // namespace

numerical_model_base* create_mass_mesh_edge(context_type* ctx, const Ptr<physics_model_base>& physics,
                                            const dense2D<unsigned int>& connectivity, fem::element_type type) {
    switch (physics->get_family_code()) {
        case mass_displacement_1d::family_code:
            return make_edge<mass_displacement_1d, E2, E3, E4>(ctx, physics, connectivity, type);
        case heat_conduction_1d::family_code:
            return make_edge<heat_conduction_1d, E1, E2, E3>(ctx, physics, connectivity, type);
        case heat_capacity_1d::family_code:
            return make_edge<heat_capacity_1d, E2, E3, E4>(ctx, physics, connectivity, type);
        case heat_convection_1d::family_code:
            return make_edge<heat_convection_1d, E2, E3, E4>(ctx, physics, connectivity, type);
        default: return nullptr;
    }
}

}  // namespace core
}  // namespace orv
