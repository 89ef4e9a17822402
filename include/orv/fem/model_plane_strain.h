// Physics of plane strain: small strain (model_plane_strain_lin) and total Lagrangian
// finite strain (model_plane_strain_gnl), two in-plane displacement DOFs per node.
#pragma once

#include <orv/fem/physics_model_base.h>

namespace orv {
namespace fem {

/// Small-strain plane strain physics.
class model_plane_strain_lin : public physics_model_base {
public:
    model_plane_strain_lin();
    /// Makes the physics on a law: init(law, axis).
    model_plane_strain_lin(const base_class& law, unsigned axis);
    /// law: a solid stiffness law, used on the six strain slots with E33 = 0 (its S33
    /// is the out-of-plane stress). axis: the axis normal to the plane; 0 gives the
    /// in-plane DOF slots 1 and 2 (coordinates y, z), 1 gives 0 and 2, any other value
    /// 0 and 1. -101 when the handle holds no solid stiffness law (the handle is then
    /// empty), -199 on memory.
    error_type init(const base_class& law, unsigned axis);
};

/// Total Lagrangian finite-strain plane strain physics.
class model_plane_strain_gnl : public physics_model_base {
public:
    model_plane_strain_gnl();
    /// Makes the physics on a law: init(law, axis).
    model_plane_strain_gnl(const base_class& law, unsigned axis);
    /// As model_plane_strain_lin::init.
    error_type init(const base_class& law, unsigned axis);
};

}  // namespace fem
}  // namespace orv
