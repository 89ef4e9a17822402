// Membranes: surfaces in 3-D with three displacement DOFs per node and the in-plane
// strains E11, E22, 2 E12 of the element's local frame at each point (axis 1 along the
// first tangent). Small strain (model_membrane_lin) and finite strain
// (model_membrane_gnl, out-of-plane stretching included).
#pragma once

#include <orv/fem/physics_model_base.h>

namespace orv {
namespace fem {

/// Small-strain membrane physics on a membrane stiffness law (forces per unit length;
/// the thickness is in its data).
class model_membrane_lin : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_membrane_lin)
};

/// Finite-strain membrane physics on a membrane stiffness law.
class model_membrane_gnl : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_membrane_gnl)
};

}  // namespace fem
}  // namespace orv
