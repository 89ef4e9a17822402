// Mass of axisymmetric sections: a density per unit volume, integrated with the
// weight 2 pi r (r the first coordinate, z the second) on the radial and axial DOFs
// (slots 0 and 1), so that a section of area A at radius r weighs 2 pi r A rho: the
// mass of the whole ring. Meshes of faceT3, faceT6, faceQ4, faceQ9.
#pragma once

#include <orv/fem/physics_model_base.h>

namespace orv {
namespace fem {

/// Mass physics of axisymmetric sections (mass per unit volume, rings of radius r), on a law_scalar holding the
/// density.
class model_axi3d_mass : public physics_model_base {
public:
    model_axi3d_mass();
    /// Makes the physics on a density law; see init().
    explicit model_axi3d_mass(const base_class& density);
    /// Shares the physics of another handle.
    model_axi3d_mass(const model_axi3d_mass&) = default;
    /// Shares the physics of another handle.
    model_axi3d_mass& operator=(const model_axi3d_mass&) = default;
    ~model_axi3d_mass() override = default;
    /// density: a law_scalar whose value is the mass per unit volume. -101 when the
    /// handle holds no law_scalar or its value is not a positive finite number (the
    /// handle is then empty), -199 on memory.
    error_type init(const base_class& density);
};

}  // namespace fem
}  // namespace orv
