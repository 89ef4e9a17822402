// Stiffness meshes on hexahedra.
#include "elements/mechanical_displacement_3d.h"
#include "elements/stiff_mesh_factory.h"

namespace orv {
namespace core {

namespace {
using elfes::Gauss_hexa;
using elfes::local_points_set_prod3;
using H2 = local_points_set_prod3<Gauss_hexa, 2, 2, 2>;
using H3 = local_points_set_prod3<Gauss_hexa, 3, 3, 3>;
static_assert(matches_family_table<elfes::hexa8, H2, H2>("mechanical_displacement_3d", elfes::instance_lin));
static_assert(matches_family_table<elfes::hexa27, H3, H3>("mechanical_displacement_3d", elfes::instance_gnl));
}  // namespace

numerical_model_base* create_stiff_mesh_hexa(context_type* ctx, const Ptr<physics_model_base>& physics,
                                             const dense2D<unsigned int>& connectivity, fem::element_type type) {
    if (physics->get_family_code() != mechanical_displacement_3d::family_code) return nullptr;
    switch (type) {
        case fem::FE_hexa8:
            return make_lin_or_gnl<mechanical_displacement_3d_kinematics, elfes::hexa8, H2, H2>(ctx, physics,
                                                                                                connectivity, type);
        case fem::FE_hexa27:
            return make_lin_or_gnl<mechanical_displacement_3d_kinematics, elfes::hexa27, H3, H3>(ctx, physics,
                                                                                                 connectivity, type);
        default: return nullptr;
    }
}

}  // namespace core
}  // namespace orv
