// Mass of 3-D solids: a density per unit volume, on the three displacement DOFs of
// each node. Meshes of every solid shape through numerical_model_mass.
#pragma once

#include <orv/fem/physics_model_base.h>

namespace orv {
namespace fem {

/// Mass physics of solids on a law_scalar whose value is the mass per unit volume;
/// init also gives -101 when that value is not a positive finite number.
class model_solid_mass : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_solid_mass)
};

}  // namespace fem
}  // namespace orv
