// Physics of the 3-D solid: small strain (model_solid_lin) and total Lagrangian
// finite strain (model_solid_gnl). Three displacement DOFs per node.
#pragma once

#include <orv/fem/physics_model_base.h>

namespace orv {
namespace fem {

/// Small-strain 3-D solid physics on a solid stiffness law (law_solid_StVenant,
/// law_solid_orthotropic, ...).
class model_solid_lin : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_solid_lin)
};

/// Total Lagrangian finite-strain 3-D solid physics on a solid stiffness law.
class model_solid_gnl : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_solid_gnl)
};

}  // namespace fem
}  // namespace orv
