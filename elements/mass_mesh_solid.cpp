// Mass and heat meshes on solids, with a density, a conductivity or a capacity per
// volume.
#include "elements/numerical_model_mass_mesh.h"
#include "elements/stiff_mesh_factory.h"

namespace orv {
namespace core {

namespace {
using elfes::local_points_set;
using elfes::local_points_set_prod2;
using elfes::local_points_set_prod3;
using Te1 = local_points_set<elfes::Gauss_tetra, 1>;
using Te4 = local_points_set<elfes::Gauss_tetra, 4>;
using Te5 = local_points_set<elfes::Gauss_tetra, 5>;
using Te11 = local_points_set<elfes::Gauss_tetra, 11>;
using P8 = local_points_set<elfes::Gauss_pyramid, 8>;
using P27 = local_points_set<elfes::Gauss_pyramid, 27>;
using W23 = local_points_set_prod2<elfes::Gauss_wedge, 2, 3>;
using W36 = local_points_set_prod2<elfes::Gauss_wedge, 3, 6>;
using H2 = local_points_set_prod3<elfes::Gauss_hexa, 2, 2, 2>;
using H3 = local_points_set_prod3<elfes::Gauss_hexa, 3, 3, 3>;
constexpr const char* solid = "mass_displacement_3d";
static_assert(matches_family_table<elfes::tetra4, Te4, Te4>(solid, elfes::instance_lin));
static_assert(matches_family_table<elfes::tetra10, Te11, Te11>(solid, elfes::instance_lin));
static_assert(matches_family_table<elfes::pyramid5, P8, P8>(solid, elfes::instance_lin));
static_assert(matches_family_table<elfes::pyramid14, P27, P27>(solid, elfes::instance_lin));
static_assert(matches_family_table<elfes::wedge6, W23, W23>(solid, elfes::instance_lin));
static_assert(matches_family_table<elfes::wedge18, W36, W36>(solid, elfes::instance_lin));
static_assert(matches_family_table<elfes::hexa8, H2, H2>(solid, elfes::instance_lin));
static_assert(matches_family_table<elfes::hexa27, H3, H3>(solid, elfes::instance_lin));
static_assert(matches_family_table<elfes::tetra4, Te1, Te1>("heat_conduction_3d", elfes::instance_lin));
static_assert(matches_family_table<elfes::tetra10, Te5, Te4>("heat_conduction_3d", elfes::instance_lin));
static_assert(matches_family_table<elfes::hexa8, H2, H2>("heat_conduction_3d", elfes::instance_lin));
static_assert(matches_family_table<elfes::tetra10, Te11, Te11>("heat_capacity_3d", elfes::instance_lin));

// The physics P on a solid; A and B are the point sets of the tetra4 and tetra10
// (the other shapes take the same rules for every physics).
template <class P, class A, class B>
numerical_model_base* make_solid(context_type* ctx, const Ptr<physics_model_base>& physics,
                                 const dense2D<unsigned int>& connectivity, fem::element_type type) {
    switch (type) {
        case fem::FE_tetra4: return make_mass_mesh<P, elfes::tetra4, A>(ctx, physics, connectivity, type);
        case fem::FE_tetra10: return make_mass_mesh<P, elfes::tetra10, B>(ctx, physics, connectivity, type);
        case fem::FE_pyramid5: return make_mass_mesh<P, elfes::pyramid5, P8>(ctx, physics, connectivity, type);
        case fem::FE_pyramid14: return make_mass_mesh<P, elfes::pyramid14, P27>(ctx, physics, connectivity, type);
        case fem::FE_wedge6: return make_mass_mesh<P, elfes::wedge6, W23>(ctx, physics, connectivity, type);
        case fem::FE_wedge18: return make_mass_mesh<P, elfes::wedge18, W36>(ctx, physics, connectivity, type);
        case fem::FE_hexa8: return make_mass_mesh<P, elfes::hexa8, H2>(ctx, physics, connectivity, type);
        case fem::FE_hexa27: return make_mass_mesh<P, elfes::hexa27, H3>(ctx, physics, connectivity, type);
        default: return nullptr;
    }
}
}  // namespace

numerical_model_base* create_mass_mesh_solid(context_type* ctx, const Ptr<physics_model_base>& physics,
                                             const dense2D<unsigned int>& connectivity, fem::element_type type) {
    switch (physics->get_family_code()) {
        case mass_displacement_3d::family_code:
            return make_solid<mass_displacement_3d, Te4, Te11>(ctx, physics, connectivity, type);
        case heat_conduction_3d::family_code:
            return make_solid<heat_conduction_3d, Te1, Te5>(ctx, physics, connectivity, type);
        case heat_capacity_3d::family_code:
            return make_solid<heat_capacity_3d, Te4, Te11>(ctx, physics, connectivity, type);
        default: return nullptr;
    }
}

}  // namespace core
}  // namespace orv
