// Axisymmetric solids: small strain (model_axi3d_lin), finite strain (model_axi3d_gnl),
// two DOFs per node (radial, axial: slots 0 and 1); and with torsion
// (model_axi_torsion_lin, small strain only), the hoop displacement in slot 2.
#pragma once

#include <orv/fem/physics_model_base.h>

namespace orv {
namespace fem {

/// Small-strain axisymmetric solid physics on a solid stiffness law, used on the six
/// slots E11 (radial), E22 (axial), E33 (hoop), 2 E12 and, for the torsion physics,
/// 2 E13 and 2 E23. Coordinates: r the first, z the second.
class model_axi3d_lin : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_axi3d_lin)
};

/// Finite-strain axisymmetric solid physics on a solid stiffness law.
class model_axi3d_gnl : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_axi3d_gnl)
};

/// Small-strain axisymmetric solid physics with torsion (hoop displacement in slot 2),
/// on a solid stiffness law with the six strain slots.
class model_axi_torsion_lin : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_axi_torsion_lin)
};

}  // namespace fem
}  // namespace orv
