// Mass of lines (rods and cables): a density per unit length, on the three
// displacement DOFs of each node (slots 0, 1, 2). Meshes of edge2, edge3, edge4 through
// numerical_model_mass.
#pragma once

#include <orv/fem/physics_model_base.h>

namespace orv {
namespace fem {

/// Mass physics of lines (mass per unit length), on a law_scalar holding the density.
class model_line_mass : public physics_model_base {
public:
    model_line_mass();
    /// Makes the physics on a density law; see init().
    explicit model_line_mass(const base_class& density);
    /// Shares the physics of another handle.
    model_line_mass(const model_line_mass&) = default;
    /// Shares the physics of another handle.
    model_line_mass& operator=(const model_line_mass&) = default;
    ~model_line_mass() override = default;
    /// density: a law_scalar whose value is the mass per unit length. -101 when the
    /// handle holds no law_scalar or its value is not a positive finite number (the
    /// handle is then empty), -199 on memory.
    error_type init(const base_class& density);
};

}  // namespace fem
}  // namespace orv
