// Mass of 3-D solids: a density per unit volume, on the three displacement DOFs of
// each node. Meshes of every solid shape through numerical_model_mass.
#pragma once

#include <orv/fem/physics_model_base.h>

namespace orv {
namespace fem {

/// Mass physics of solids (mass per unit volume), on a law_scalar holding the density.
class model_solid_mass : public physics_model_base {
public:
    model_solid_mass();
    /// Makes the physics on a density law; see init().
    explicit model_solid_mass(const base_class& density);
    /// Shares the physics of another handle.
    model_solid_mass(const model_solid_mass&) = default;
    /// Shares the physics of another handle.
    model_solid_mass& operator=(const model_solid_mass&) = default;
    ~model_solid_mass() override = default;
    /// density: a law_scalar whose value is the mass per unit volume. -101 when the
    /// handle holds no law_scalar or its value is not a positive finite number (the
    /// handle is then empty), -199 on memory.
    error_type init(const base_class& density);
};

}  // namespace fem
}  // namespace orv
