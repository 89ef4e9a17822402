// Public creation of the mass meshes: a mass physics (model_line_mass,
// model_surf_mass, model_solid_mass, model_axi3d_mass) on a connectivity of one shape.
#pragma once

#include <orv/fem/context.h>
#include <orv/fem/element_type.h>
#include <orv/fem/error_type.h>
#include <orv/fem/numerical_model_base.h>
#include <orv/fem/physics_model_base.h>

#include <orvmath1/dense2D.h>

namespace orv {
namespace fem {

/// The model answers the mass matrix (matrix code 2): consistent when assembled with
/// matrix_level 1, lumped to a diagonal with matrix_level 2 (per direction, each
/// diagonal term scaled so that the element keeps its mass). The connectivity has
/// one column per element and one row per node of the shape, in the shape's node
/// order; the model is registered in the context's registry.
///
/// A constructor that fails leaves the handle empty; init says why: -101 a physics
/// that is empty or no mass physics, -104 a shape on which the physics has no model,
/// -105 a connectivity whose row count is not the shape's node count, -199 memory.
/// An element whose density (per-element data of the law included) is not a
/// positive finite number, or whose mass is not positive (a degenerate or inverted
/// element), fails its assembly with -106.
class numerical_model_mass : public numerical_model_base {
public:
    numerical_model_mass();
    /// Makes the mesh; an empty handle on failure (init() gives the code).
    numerical_model_mass(const context& ctx, const physics_model_base& physics,
                         const dense2D<unsigned int>& connectivity, element_type type);
    /// Makes the mesh on `physics` over `connectivity` of shape `type`: 0 or a code above.
    error_type init(const context& ctx, const physics_model_base& physics, const dense2D<unsigned int>& connectivity,
                    element_type type);
};

}  // namespace fem
}  // namespace orv
