// Stiffness meshes on faces: plane strain, axisymmetric and membrane physics.
#include "elements/ANS_MITC4_membrane.h"
#include "elements/mechanical_membrane.h"
#include "elements/mechanical_plane_strain.h"
#include "elements/stiff_mesh_factory.h"

namespace orv {
namespace core {

namespace {
using elfes::Gauss_faceQ;
using elfes::Gauss_faceT;
using elfes::local_points_set;
using elfes::local_points_set_prod2;
using T1 = local_points_set<Gauss_faceT, 1>;
using T3 = local_points_set<Gauss_faceT, 3>;
using T6 = local_points_set<Gauss_faceT, 6>;
using Q2 = local_points_set_prod2<Gauss_faceQ, 2, 2>;
using Q3 = local_points_set_prod2<Gauss_faceQ, 3, 3>;

static_assert(matches_family_table<elfes::faceT3, T1, T1>("mechanical_plane_strain", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceT6, T6, T6>("mechanical_plane_strain", elfes::instance_gnl));
static_assert(matches_family_table<elfes::faceQ4, Q2, Q2>("mechanical_plane_strain", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceQ9, Q3, Q3>("mechanical_plane_strain", elfes::instance_gnl));
static_assert(matches_family_table<elfes::faceT3, T3, T3>("mechanical_displacement_axi3d", elfes::instance_gnl));
static_assert(matches_family_table<elfes::faceT6, T6, T6>("mechanical_displacement_axi3d", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceQ4, Q2, Q2>("mechanical_displacement_axi3d", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceQ9, Q3, Q3>("mechanical_displacement_axi3d", elfes::instance_gnl));
static_assert(matches_family_table<elfes::faceT3, T1, T1>("mechanical_membrane", elfes::instance_gnl));
static_assert(matches_family_table<elfes::faceT6, T6, T6>("mechanical_membrane", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceQ9, Q3, Q3>("mechanical_membrane", elfes::instance_gnl));
static_assert(matches_family_table<elfes::faceT3, T3, T3>("mechanical_displacement_axi_torsion", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceQ9, Q3, Q3>("mechanical_displacement_axi_torsion", elfes::instance_lin));

// The four face shapes of a physics whose kinematics template is K, with the point
// sets of its entries; `T3set` is the rule of faceT3, `Q4form` the formulation of faceQ4.
template <template <class, class> class K, class T3set, bool finite_allowed, class Q4form = regular_formulation>
numerical_model_base* make_face(context_type* ctx, const Ptr<physics_model_base>& physics,
                                const dense2D<unsigned int>& connectivity, fem::element_type type) {
    if constexpr (finite_allowed) {
        switch (type) {
            case fem::FE_faceT3:
                return make_lin_or_gnl<K, elfes::faceT3, T3set, T3set>(ctx, physics, connectivity, type);
            case fem::FE_faceT6: return make_lin_or_gnl<K, elfes::faceT6, T6, T6>(ctx, physics, connectivity, type);
            case fem::FE_faceQ4:
                return make_lin_or_gnl<K, elfes::faceQ4, Q2, Q2, Q4form>(ctx, physics, connectivity, type);
            case fem::FE_faceQ9: return make_lin_or_gnl<K, elfes::faceQ9, Q3, Q3>(ctx, physics, connectivity, type);
            default: return nullptr;
        }
    } else {
        if (physics->get_kinematics() != kinematics_lin) return nullptr;
        using L = K<small_strain_tag, small_transformation_tag>;
        switch (type) {
            case fem::FE_faceT3:
                return make_stiff_mesh<L, elfes::faceT3, T3set, T3set>(ctx, physics, connectivity, type);
            case fem::FE_faceT6: return make_stiff_mesh<L, elfes::faceT6, T6, T6>(ctx, physics, connectivity, type);
            case fem::FE_faceQ4:
                return make_stiff_mesh<L, elfes::faceQ4, Q2, Q2, Q4form>(ctx, physics, connectivity, type);
            case fem::FE_faceQ9: return make_stiff_mesh<L, elfes::faceQ9, Q3, Q3>(ctx, physics, connectivity, type);
            default: return nullptr;
        }
    }
}

}  // namespace

numerical_model_base* create_stiff_mesh_face(context_type* ctx, const Ptr<physics_model_base>& physics,
                                             const dense2D<unsigned int>& connectivity, fem::element_type type) {
    switch (physics->get_family_code()) {
        case mechanical_plane_strain::family_code:
            return make_face<mechanical_plane_strain_kinematics, T1, true, ANS_2D_MITC4<elfes::faceQ4>>(
                ctx, physics, connectivity, type);
        case mechanical_displacement_axi3d::family_code:
            return make_face<mechanical_displacement_axi3d_kinematics, T3, true>(ctx, physics, connectivity, type);
        case mechanical_membrane::family_code:
            return make_face<mechanical_membrane_kinematics, T1, true, ANS_shell_MITC4<elfes::faceQ4>>(
                ctx, physics, connectivity, type);
        case mechanical_displacement_axi_torsion::family_code:
            return make_face<mechanical_displacement_axi_torsion_kinematics, T3, false>(ctx, physics, connectivity,
                                                                                        type);
        default: return nullptr;
    }
}

}  // namespace core
}  // namespace orv
