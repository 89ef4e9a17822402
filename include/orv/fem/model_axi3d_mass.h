// Mass of axisymmetric sections: a density per unit volume, integrated with the
// weight 2 pi r (r the first coordinate, z the second) on the radial and axial DOFs
// (slots 0 and 1), so that a section of area A at radius r weighs 2 pi r A rho: the
// mass of the whole ring. Meshes of faceT3, faceT6, faceQ4, faceQ9.
#pragma once

#include <orv/fem/physics_model_base.h>

namespace orv {
namespace fem {

/// Mass physics of axisymmetric sections (rings of radius r) on a law_scalar whose
/// value is the mass per unit volume; init also gives -101 when that value is not a
/// positive finite number.
class model_axi3d_mass : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_axi3d_mass)
};

}  // namespace fem
}  // namespace orv
