// Public handles of the mass physics and the public creation of the mass meshes.
#include <orv/fem/model_axi3d_mass.h>
#include <orv/fem/model_heat.h>
#include <orv/fem/model_line_mass.h>
#include <orv/fem/model_solid_mass.h>
#include <orv/fem/model_surf_mass.h>
#include <orv/fem/numerical_model_mass.h>

#include <cmath>
#include <new>

#include "elements/mechanical_mass.h"
#include "elements/numerical_model_mass_mesh.h"
#include "frame/context_type.h"

namespace orv {
namespace fem {

namespace {

// A mass physics of class Physics on the density law held by `law`, carrying the
// mass on the given DOF slots. The law must be a law_scalar with a positive finite
// value: a mass matrix of zero or negative density has no meaning in a dynamic run.
template <class Physics>
error_type make_mass(physics_model_base& handle, const base_class& law, const unsigned* slots, unsigned nbr_slots) {
    handle.clear_w();
    core::law_scalar* l = dynamic_cast<core::law_scalar*>(static_cast<ref_counted*>(law.get_w()));
    if (!l) return error_data;
    const double rho = l->value();
    if (!(rho > 0.0) || !std::isfinite(rho)) return error_data;
    Ptr<core::physics_model_base> ph(new (std::nothrow) Physics(Ptr<core::law_scalar>(l)));
    if (!ph) return error_memory;
    ph->set_DOF_slots(slots, nbr_slots);
    handle.set_w(static_cast<ref_counted*>(ph.get()));
    return no_error;
}

const unsigned xyz[3] = {0, 1, 2};

}  // namespace

ORV_FEM_PHYSICS_HANDLE_IMPL(model_line_mass, make_mass<core::mass_displacement_1d>(*this, law, xyz, 3))

ORV_FEM_PHYSICS_HANDLE_IMPL(model_surf_mass, make_mass<core::mass_displacement_2d>(*this, law, xyz, 3))
model_surf_mass::model_surf_mass(const base_class& density, unsigned axis) { init(density, axis); }
error_type model_surf_mass::init(const base_class& density, unsigned axis) {
    // the in-plane slots of the plane strain model of the same axis
    const unsigned slots[2] = {axis == 0 ? 1u : 0u, axis == 0 || axis == 1 ? 2u : 1u};
    return make_mass<core::mass_displacement_2d>(*this, density, slots, 2);
}

ORV_FEM_PHYSICS_HANDLE_IMPL(model_solid_mass, make_mass<core::mass_displacement_3d>(*this, law, xyz, 3))

ORV_FEM_PHYSICS_HANDLE_IMPL(model_axi3d_mass, make_mass<core::mass_axi3d>(*this, law, xyz, 2))

numerical_model_mass::numerical_model_mass() = default;
numerical_model_mass::numerical_model_mass(const context& ctx, const physics_model_base& physics,
                                           const dense2D<unsigned int>& connectivity, element_type type) {
    init(ctx, physics, connectivity, type);
}

namespace {

// A mass or heat mesh of `physics` into `handle`.
error_type make_mesh(numerical_model_base& handle, const context& ctx, const physics_model_base& physics,
                     const dense2D<unsigned int>& connectivity, element_type type, bool heat) {
    handle.clear_w();
    core::physics_model_base* ph = physics.engine();
    if (!ctx.engine() || !ph) return error_data;
    Ptr<core::numerical_model_base> model;
    int rc = 0;
    try {
        rc = core::create_mass_mesh(ctx.engine(), Ptr<core::physics_model_base>(ph), connectivity, type, model, heat);
    } catch (...) {
        return error_memory;
    }
    if (rc) return static_cast<error_type>(rc);
    handle.set_w(static_cast<ref_counted*>(model.get()));
    return no_error;
}

const unsigned temperature_slot[1] = {6};

}  // namespace

error_type numerical_model_mass::init(const context& ctx, const physics_model_base& physics,
                                      const dense2D<unsigned int>& connectivity, element_type type) {
    return make_mesh(*this, ctx, physics, connectivity, type, false);
}

#define ORV_HEAT_PHYSICS(X, Engine) \
    ORV_FEM_PHYSICS_HANDLE_IMPL(X, make_mass<core::Engine>(*this, law, temperature_slot, 1))
ORV_HEAT_PHYSICS(model_heat_conduction_1d, heat_conduction_1d)
ORV_HEAT_PHYSICS(model_heat_conduction_2d, heat_conduction_2d)
ORV_HEAT_PHYSICS(model_heat_conduction_3d, heat_conduction_3d)
ORV_HEAT_PHYSICS(model_heat_capacity_1d, heat_capacity_1d)
ORV_HEAT_PHYSICS(model_heat_capacity_2d, heat_capacity_2d)
ORV_HEAT_PHYSICS(model_heat_capacity_3d, heat_capacity_3d)
ORV_HEAT_PHYSICS(model_heat_convection_1d, heat_convection_1d)
ORV_HEAT_PHYSICS(model_heat_convection_2d, heat_convection_2d)
#undef ORV_HEAT_PHYSICS

numerical_model_heat::numerical_model_heat() = default;
numerical_model_heat::numerical_model_heat(const context& ctx, const physics_model_base& physics,
                                           const dense2D<unsigned int>& connectivity, element_type type) {
    init(ctx, physics, connectivity, type);
}

error_type numerical_model_heat::init(const context& ctx, const physics_model_base& physics,
                                      const dense2D<unsigned int>& connectivity, element_type type) {
    return make_mesh(*this, ctx, physics, connectivity, type, true);
}

}  // namespace fem
}  // namespace orv
