// Rods: two-node edges in 3-D, three displacement DOFs per node, one axial strain.
// model_rod_lin: small strain on the original axis; model_rod_gnld: engineering
// stretch on the current axis, with the geometric stiffness; model_rod_gnl:
// Green-Lagrange strain, the force being the law's stress times the stretch.
#pragma once

#include <orv/fem/physics_model_base.h>

namespace orv {
namespace fem {

/// Small-strain rod physics on a rod law (E, area, alpha).
class model_rod_lin : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_rod_lin)
};

/// Rod physics with the engineering stretch on the current axis, on a rod law.
class model_rod_gnld : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_rod_gnld)
};

/// Rod physics with the Green-Lagrange strain, on a rod law.
class model_rod_gnl : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_rod_gnl)
};

}  // namespace fem
}  // namespace orv
