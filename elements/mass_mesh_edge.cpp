// Mass meshes on edges: lines with a density per length.
#include "elements/numerical_model_mass_mesh.h"
#include "elements/stiff_mesh_factory.h"

namespace orv {
namespace core {

namespace {
using elfes::Gauss_edge;
using elfes::local_points_set;
using E2 = local_points_set<Gauss_edge, 2>;
using E3 = local_points_set<Gauss_edge, 3>;
using E4 = local_points_set<Gauss_edge, 4>;
static_assert(matches_family_table<elfes::edge2, E2, E2>("mass_displacement_1d", elfes::instance_lin));
static_assert(matches_family_table<elfes::edge3, E3, E3>("mass_displacement_1d", elfes::instance_lin));
static_assert(matches_family_table<elfes::edge4, E4, E4>("mass_displacement_1d", elfes::instance_lin));
}  // namespace

numerical_model_base* create_mass_mesh_edge(context_type* ctx, const Ptr<physics_model_base>& physics,
                                            const dense2D<unsigned int>& connectivity, fem::element_type type) {
    if (physics->get_family_code() != mass_displacement_1d::family_code) return nullptr;
    using P = mass_displacement_1d;
    switch (type) {
        case fem::FE_edge2: return make_mass_mesh<P, elfes::edge2, E2>(ctx, physics, connectivity, type);
        case fem::FE_edge3: return make_mass_mesh<P, elfes::edge3, E3>(ctx, physics, connectivity, type);
        case fem::FE_edge4: return make_mass_mesh<P, elfes::edge4, E4>(ctx, physics, connectivity, type);
        default: return nullptr;
    }
}

}  // namespace core
}  // namespace orv
