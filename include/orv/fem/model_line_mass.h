// Mass of lines (rods and cables): a density per unit length, on the three
// displacement DOFs of each node (slots 0, 1, 2). Meshes of edge2, edge3, edge4 through
// numerical_model_mass.
#pragma once

#include <orv/fem/physics_model_base.h>

namespace orv {
namespace fem {

/// Mass physics of lines on a law_scalar whose value is the mass per unit length;
/// init also gives -101 when that value is not a positive finite number.
class model_line_mass : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_line_mass)
};

}  // namespace fem
}  // namespace orv
