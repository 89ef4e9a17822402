// Public handles of the physics descriptions.
#include <orv/fem/model_axi3d.h>
#include <orv/fem/model_membrane.h>
#include <orv/fem/model_plane_strain.h>
#include <orv/fem/model_rod.h>
#include <orv/fem/model_solid.h>
#include <orv/fem/physics_model_base.h>

#include <new>

#include "elements/mesh_material_law.h"
#include "elements/physics_model_base.h"
#include "frame/raw_handle.h"

namespace orv {
namespace fem {

ORV_FEM_HANDLE_IMPL(physics_model_base, base_class, core::physics_model_base)

physics_model_base::physics_model_base() = default;

unsigned physics_model_base::get_family_code() const { return engine() ? engine()->get_family_code() : 0; }
unsigned physics_model_base::get_physics_code() const { return engine() ? engine()->get_physics_code() : 0; }

law_base physics_model_base::get_material() const {
    detail::raw_handle h(engine() ? engine()->get_law().get() : nullptr);
    return law_base(h);
}

namespace {

// The engine law of a handle, when it is of class Law.
template <class Law>
Law* law_of(const base_class& law) {
    return dynamic_cast<Law*>(static_cast<ref_counted*>(law.get_w()));
}

// A physics of class Physics and kinematics on the law held by `law` (of class Law,
// wrapped in the Adapter), with its DOF slots and third value.
template <class Physics, class Law, class Adapter>
error_type make_physics(physics_model_base& handle, const base_class& law, unsigned kinematics, const unsigned* slots,
                        unsigned nbr_slots, unsigned aux = 0) {
    handle.clear_w();
    Law* l = law_of<Law>(law);
    if (!l) return error_data;
    Ptr<core::mesh_material> adapter(new (std::nothrow) Adapter(Ptr<Law>(l)));
    Ptr<core::physics_model_base> ph(new (std::nothrow) Physics(kinematics));
    if (!adapter || !ph) return error_memory;
    ph->set_DOF_slots(slots, nbr_slots);
    ph->set_aux(aux);
    ph->set_material(adapter, Ptr<ref_counted>(l));
    handle.set_w(static_cast<ref_counted*>(ph.get()));
    return no_error;
}

const unsigned xyz[3] = {0, 1, 2};

error_type make_solid(physics_model_base& h, const base_class& law, unsigned kinematics) {
    return make_physics<core::mechanical_displacement_3d, core::law_solid_stiff, core::mesh_material_solid>(
        h, law, kinematics, xyz, 3);
}

error_type make_plane_strain(physics_model_base& h, const base_class& law, unsigned kinematics, unsigned axis) {
    const unsigned slots[2] = {axis == 0 ? 1u : 0u, axis == 0 || axis == 1 ? 2u : 1u};
    return make_physics<core::mechanical_plane_strain, core::law_solid_stiff, core::mesh_material_solid>(
        h, law, kinematics, slots, 2, axis);
}

error_type make_axi(physics_model_base& h, const base_class& law, unsigned kinematics) {
    return make_physics<core::mechanical_displacement_axi3d, core::law_solid_stiff, core::mesh_material_solid>(
        h, law, kinematics, xyz, 2);
}

error_type make_membrane(physics_model_base& h, const base_class& law, unsigned kinematics) {
    return make_physics<core::mechanical_membrane, core::law_membrane_stiff, core::mesh_material_membrane>(
        h, law, kinematics, xyz, 3);
}

error_type make_rod(physics_model_base& h, const base_class& law, unsigned kinematics) {
    return make_physics<core::mechanical_displacement_1d, core::law_1d, core::mesh_material_rod>(h, law, kinematics,
                                                                                                 xyz, 3);
}

}  // namespace

ORV_FEM_PHYSICS_HANDLE_IMPL(model_solid_lin, make_solid(*this, law, core::kinematics_lin))

ORV_FEM_PHYSICS_HANDLE_IMPL(model_solid_gnl, make_solid(*this, law, core::kinematics_gnl))

model_plane_strain_lin::model_plane_strain_lin() = default;
model_plane_strain_lin::model_plane_strain_lin(const base_class& law, unsigned axis) { init(law, axis); }
error_type model_plane_strain_lin::init(const base_class& law, unsigned axis) {
    return make_plane_strain(*this, law, core::kinematics_lin, axis);
}

model_plane_strain_gnl::model_plane_strain_gnl() = default;
model_plane_strain_gnl::model_plane_strain_gnl(const base_class& law, unsigned axis) { init(law, axis); }
error_type model_plane_strain_gnl::init(const base_class& law, unsigned axis) {
    return make_plane_strain(*this, law, core::kinematics_gnl, axis);
}

ORV_FEM_PHYSICS_HANDLE_IMPL(model_axi3d_lin, make_axi(*this, law, core::kinematics_lin))

// The finite axisymmetric code is 15100.
ORV_FEM_PHYSICS_HANDLE_IMPL(model_axi3d_gnl, make_axi(*this, law, core::kinematics_gnls))

ORV_FEM_PHYSICS_HANDLE_IMPL(model_axi_torsion_lin,
                            make_physics<core::mechanical_displacement_axi_torsion, core::law_solid_stiff,
                                         core::mesh_material_solid>(*this, law, core::kinematics_lin, xyz, 3))

ORV_FEM_PHYSICS_HANDLE_IMPL(model_membrane_lin, make_membrane(*this, law, core::kinematics_lin))

ORV_FEM_PHYSICS_HANDLE_IMPL(model_membrane_gnl, make_membrane(*this, law, core::kinematics_gnl))

ORV_FEM_PHYSICS_HANDLE_IMPL(model_rod_lin, make_rod(*this, law, core::kinematics_lin))

ORV_FEM_PHYSICS_HANDLE_IMPL(model_rod_gnld, make_rod(*this, law, core::kinematics_gnld))

ORV_FEM_PHYSICS_HANDLE_IMPL(model_rod_gnl, make_rod(*this, law, core::kinematics_gnl))

}  // namespace fem
}  // namespace orv
