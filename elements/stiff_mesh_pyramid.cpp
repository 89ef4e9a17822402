// Stiffness meshes on pyramids.
#include "elements/mechanical_displacement_3d.h"
#include "elements/stiff_mesh_factory.h"

namespace orv {
namespace core {

namespace {
using elfes::Gauss_pyramid;
using elfes::local_points_set;
using P8 = local_points_set<Gauss_pyramid, 8>;
using P27 = local_points_set<Gauss_pyramid, 27>;
static_assert(matches_family_table<elfes::pyramid5, P8, P8>("mechanical_displacement_3d", elfes::instance_lin));
static_assert(matches_family_table<elfes::pyramid14, P27, P27>("mechanical_displacement_3d", elfes::instance_gnl));
}  // namespace

numerical_model_base* create_stiff_mesh_pyramid(context_type* ctx, const Ptr<physics_model_base>& physics,
                                                const dense2D<unsigned int>& connectivity, fem::element_type type) {
    if (physics->get_family_code() != mechanical_displacement_3d::family_code) return nullptr;
    switch (type) {
        case fem::FE_pyramid5:
            return make_lin_or_gnl<mechanical_displacement_3d_kinematics, elfes::pyramid5, P8, P8>(ctx, physics,
                                                                                                   connectivity, type);
        case fem::FE_pyramid14:
            return make_lin_or_gnl<mechanical_displacement_3d_kinematics, elfes::pyramid14, P27, P27>(
                ctx, physics, connectivity, type);
        default: return nullptr;
    }
}

}  // namespace core
}  // namespace orv
