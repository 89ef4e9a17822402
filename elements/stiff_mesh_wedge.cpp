// Stiffness meshes on wedges.
#include "elements/mechanical_displacement_3d.h"
#include "elements/stiff_mesh_factory.h"

namespace orv {
namespace core {

namespace {
using elfes::Gauss_wedge;
using elfes::local_points_set_prod2;
using W23 = local_points_set_prod2<Gauss_wedge, 2, 3>;
using W36 = local_points_set_prod2<Gauss_wedge, 3, 6>;
static_assert(matches_family_table<elfes::wedge6, W23, W23>("mechanical_displacement_3d", elfes::instance_lin));
static_assert(matches_family_table<elfes::wedge18, W36, W36>("mechanical_displacement_3d", elfes::instance_gnl));
}  // namespace

numerical_model_base* create_stiff_mesh_wedge(context_type* ctx, const Ptr<physics_model_base>& physics,
                                              const dense2D<unsigned int>& connectivity, fem::element_type type) {
    if (physics->get_family_code() != mechanical_displacement_3d::family_code) return nullptr;
    switch (type) {
        case fem::FE_wedge6:
            return make_lin_or_gnl<mechanical_displacement_3d_kinematics, elfes::wedge6, W23, W23>(ctx, physics,
                                                                                                   connectivity, type);
        case fem::FE_wedge18:
            return make_lin_or_gnl<mechanical_displacement_3d_kinematics, elfes::wedge18, W36, W36>(ctx, physics,
                                                                                                    connectivity, type);
        default: return nullptr;
    }
}

}  // namespace core
}  // namespace orv
