// Stiffness meshes on tetrahedra.
#include "elements/mechanical_displacement_3d.h"
#include "elements/stiff_mesh_factory.h"

namespace orv {
namespace core {

namespace {
using elfes::Gauss_tetra;
using elfes::local_points_set;
using T1 = local_points_set<Gauss_tetra, 1>;
using T4 = local_points_set<Gauss_tetra, 4>;
using T5 = local_points_set<Gauss_tetra, 5>;
static_assert(matches_family_table<elfes::tetra4, T1, T1>("mechanical_displacement_3d", elfes::instance_lin));
static_assert(matches_family_table<elfes::tetra10, T5, T4>("mechanical_displacement_3d", elfes::instance_gnl));
}  // namespace

numerical_model_base* create_stiff_mesh_tetra(context_type* ctx, const Ptr<physics_model_base>& physics,
                                              const dense2D<unsigned int>& connectivity, fem::element_type type) {
    if (physics->get_family_code() != mechanical_displacement_3d::family_code) return nullptr;
    switch (type) {
        case fem::FE_tetra4:
            return make_lin_or_gnl<mechanical_displacement_3d_kinematics, elfes::tetra4, T1, T1>(ctx, physics,
                                                                                                 connectivity, type);
        case fem::FE_tetra10:
            return make_lin_or_gnl<mechanical_displacement_3d_kinematics, elfes::tetra10, T5, T4>(ctx, physics,
                                                                                                  connectivity, type);
        default: return nullptr;
    }
}

}  // namespace core
}  // namespace orv
