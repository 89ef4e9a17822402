// Mass of surfaces (membranes, plane strain sections): a density per unit area.
// Meshes of faceT3, faceT6, faceQ4, faceQ9 through numerical_model_mass; the area is
// measured in 3-D, so a surface may lie in any plane.
#pragma once

#include <orv/fem/physics_model_base.h>

namespace orv {
namespace fem {

/// Mass physics of surfaces on a law_scalar whose value is the mass per unit area
/// (density times thickness); init also gives -101 when that value is not a positive
/// finite number. The mass goes to the three displacement DOFs of each node, as the
/// membranes have them, or to the two in-plane DOFs of a plane strain model.
class model_surf_mass : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_surf_mass)
    /// The same on the two in-plane DOFs of a plane strain model whose plane is normal
    /// to `axis`: 0 gives the slots 1 and 2, 1 gives 0 and 2, any other value 0 and 1.
    model_surf_mass(const base_class& density, unsigned axis);
    /// Mass on the two in-plane slots of a plane-strain model whose normal is `axis`;
    /// -101 as init(density), or for an axis past 2.
    error_type init(const base_class& density, unsigned axis);
};

}  // namespace fem
}  // namespace orv
