// Stiffness meshes on edges: the rod.
#include "elements/mechanical_displacement_1d.h"
#include "elements/stiff_mesh_factory.h"

namespace orv {
namespace core {

namespace {
using E1 = elfes::local_points_set<elfes::Gauss_edge, 1>;
static_assert(matches_family_table<elfes::edge2, E1, E1>("mechanical_displacement_1d", elfes::instance_gnld));
template <class S, class T>
using rod = mechanical_displacement_1d_kinematics<S, T>;
}  // namespace

numerical_model_base* create_stiff_mesh_edge(context_type* ctx, const Ptr<physics_model_base>& physics,
                                             const dense2D<unsigned int>& connectivity, fem::element_type type) {
    if (physics->get_family_code() != mechanical_displacement_1d::family_code || type != fem::FE_edge2) return nullptr;
    switch (physics->get_kinematics()) {
        case kinematics_lin:
            return make_stiff_mesh<rod<small_strain_tag, small_transformation_tag>, elfes::edge2, E1, E1>(
                ctx, physics, connectivity, type);
        case kinematics_gnld:
            return make_stiff_mesh<rod<small_strain_tag, finite_transformation_tag>, elfes::edge2, E1, E1>(
                ctx, physics, connectivity, type);
        case kinematics_gnl:
            return make_stiff_mesh<rod<finite_strain_tag, finite_transformation_tag>, elfes::edge2, E1, E1>(
                ctx, physics, connectivity, type);
        default: return nullptr;
    }
}

}  // namespace core
}  // namespace orv
