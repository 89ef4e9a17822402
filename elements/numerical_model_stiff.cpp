// Public creation of the stiffness meshes.
#include <orv/fem/numerical_model_stiff.h>

#include "elements/numerical_model_stiff_mesh.h"
#include "frame/context_type.h"

namespace orv {
namespace fem {

namespace {

// finite: whether the physics must be a finite-strain one.
error_type make_mesh(numerical_model_base& handle, const context& ctx, const physics_model_base& physics,
                     const dense2D<unsigned int>& connectivity, element_type type, bool finite) {
    handle.clear_w();
    core::physics_model_base* ph = physics.engine();
    if (!ctx.engine() || !ph || (ph->get_kinematics() != core::kinematics_lin) != finite) return error_data;
    Ptr<core::numerical_model_base> model;
    int rc = 0;
    try {
        rc = core::create_stiff_mesh(ctx.engine(), Ptr<core::physics_model_base>(ph), connectivity, type, model);
    } catch (...) {
        return error_memory;
    }
    if (rc) return static_cast<error_type>(rc);
    handle.set_w(static_cast<ref_counted*>(model.get()));
    return no_error;
}

error_type bad_elements_of(const numerical_model_base& handle, dense1D<unsigned int>& elements) {
    const auto* mesh = dynamic_cast<const core::stiff_mesh_base*>(handle.engine());
    if (!mesh) return error_data;
    return mesh->get_bad_elements(elements) ? no_error : error_memory;
}

}  // namespace

error_type numerical_model_stiff_lin::get_bad_elements(dense1D<unsigned int>& elements) const {
    return bad_elements_of(*this, elements);
}

error_type numerical_model_stiff_gnl::get_bad_elements(dense1D<unsigned int>& elements) const {
    return bad_elements_of(*this, elements);
}

numerical_model_stiff_lin::numerical_model_stiff_lin() = default;
numerical_model_stiff_lin::numerical_model_stiff_lin(const context& ctx, const physics_model_base& physics,
                                                     const dense2D<unsigned int>& connectivity, element_type type) {
    init(ctx, physics, connectivity, type);
}
error_type numerical_model_stiff_lin::init(const context& ctx, const physics_model_base& physics,
                                           const dense2D<unsigned int>& connectivity, element_type type) {
    return make_mesh(*this, ctx, physics, connectivity, type, false);
}

numerical_model_stiff_gnl::numerical_model_stiff_gnl() = default;
numerical_model_stiff_gnl::numerical_model_stiff_gnl(const context& ctx, const physics_model_base& physics,
                                                     const dense2D<unsigned int>& connectivity, element_type type) {
    init(ctx, physics, connectivity, type);
}
error_type numerical_model_stiff_gnl::init(const context& ctx, const physics_model_base& physics,
                                           const dense2D<unsigned int>& connectivity, element_type type) {
    return make_mesh(*this, ctx, physics, connectivity, type, true);
}

}  // namespace fem
}  // namespace orv
