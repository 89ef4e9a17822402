// Mass and heat meshes on faces: surfaces with a density, a conductivity, a capacity
// or a convection coefficient per area, and axisymmetric sections with a density per
// volume.
#include "elements/numerical_model_mass_mesh.h"
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
static_assert(matches_family_table<elfes::faceT3, T3, T3>("mass_displacement_2d", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceT6, T6, T6>("mass_displacement_2d", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceQ4, Q2, Q2>("mass_displacement_2d", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceQ9, Q3, Q3>("mass_displacement_2d", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceT3, T3, T3>("mass_axi3d", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceT6, T6, T6>("mass_axi3d", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceQ4, Q2, Q2>("mass_axi3d", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceQ9, Q3, Q3>("mass_axi3d", elfes::instance_lin));

static_assert(matches_family_table<elfes::faceT3, T1, T3>("heat_conduction_2d", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceT6, T6, T6>("heat_conduction_2d", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceQ4, Q2, Q2>("heat_conduction_2d", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceQ9, Q3, Q3>("heat_conduction_2d", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceT3, T3, T3>("heat_capacity_2d", elfes::instance_lin));
static_assert(matches_family_table<elfes::faceT3, T3, T3>("heat_convection_2d", elfes::instance_lin));

// The physics P on a face; TA is the point set of the faceT3.
template <class P, class TA = T3>
numerical_model_base* make_face(context_type* ctx, const Ptr<physics_model_base>& physics,
                                const dense2D<unsigned int>& connectivity, fem::element_type type) {
    switch (type) {
        case fem::FE_faceT3: return make_mass_mesh<P, elfes::faceT3, TA>(ctx, physics, connectivity, type);
        case fem::FE_faceT6: return make_mass_mesh<P, elfes::faceT6, T6>(ctx, physics, connectivity, type);
        case fem::FE_faceQ4: return make_mass_mesh<P, elfes::faceQ4, Q2>(ctx, physics, connectivity, type);
        case fem::FE_faceQ9: return make_mass_mesh<P, elfes::faceQ9, Q3>(ctx, physics, connectivity, type);
        default: return nullptr;
    }
}
}  // namespace

numerical_model_base* create_mass_mesh_face(context_type* ctx, const Ptr<physics_model_base>& physics,
                                            const dense2D<unsigned int>& connectivity, fem::element_type type) {
    switch (physics->get_family_code()) {
        case mass_displacement_2d::family_code:
            return make_face<mass_displacement_2d>(ctx, physics, connectivity, type);
        case mass_axi3d::family_code: return make_face<mass_axi3d>(ctx, physics, connectivity, type);
        case heat_conduction_2d::family_code:
            return make_face<heat_conduction_2d, T1>(ctx, physics, connectivity, type);
        case heat_capacity_2d::family_code: return make_face<heat_capacity_2d>(ctx, physics, connectivity, type);
        case heat_convection_2d::family_code: return make_face<heat_convection_2d>(ctx, physics, connectivity, type);
        default: return nullptr;
    }
}

}  // namespace core
}  // namespace orv
