// Heat physics: conduction, capacity and convection on the temperature DOF of each
// node (slot 6), each on a law_scalar holding its coefficient, and the public
// creation of their meshes. Conduction and convection answer the conduction matrix
// (matrix code 5), capacity the capacity matrix (matrix code 6).
#pragma once

#include <orv/fem/context.h>
#include <orv/fem/element_type.h>
#include <orv/fem/error_type.h>
#include <orv/fem/numerical_model_base.h>
#include <orv/fem/physics_model_base.h>

#include <orvmath1/dense2D.h>

namespace orv {
namespace fem {

/// Conduction along lines: the law's value is the conductivity times the section
/// (k A); init also gives -101 when the value is not a positive finite number.
class model_heat_conduction_1d : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_heat_conduction_1d)
};

/// Conduction in surfaces: the law's value is the conductivity times the thickness.
class model_heat_conduction_2d : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_heat_conduction_2d)
};

/// Conduction in solids: the law's value is the conductivity.
class model_heat_conduction_3d : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_heat_conduction_3d)
};

/// Heat capacity of lines: the law's value is the capacity per unit length.
class model_heat_capacity_1d : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_heat_capacity_1d)
};

/// Heat capacity of surfaces: the law's value is the capacity per unit area.
class model_heat_capacity_2d : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_heat_capacity_2d)
};

/// Heat capacity of solids: the law's value is the capacity per unit volume (density
/// times specific heat).
class model_heat_capacity_3d : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_heat_capacity_3d)
};

/// Convection from lines to surroundings at temperature 0: the law's value is the
/// film coefficient times the perimeter. A surrounding temperature T0 is an applied
/// heat load of the same coefficient times T0 on the same elements.
class model_heat_convection_1d : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_heat_convection_1d)
};

/// Convection from surfaces to surroundings at temperature 0: the law's value is the
/// film coefficient.
class model_heat_convection_2d : public physics_model_base {
public:
    ORV_FEM_PHYSICS_HANDLE(model_heat_convection_2d)
};

/// A mesh of a heat physics. The connectivity has one column per element and one row
/// per node of the shape, in the shape's node order; the model is registered in the
/// context's registry. A constructor that fails leaves the handle empty; init says
/// why: -101 a physics that is empty or no heat physics, -104 a shape on which the
/// physics has no model, -105 a connectivity whose row count is not the shape's node
/// count, -199 memory. An element whose coefficient is not a positive finite number,
/// or whose measure is not positive, fails its assembly with -106.
class numerical_model_heat : public numerical_model_base {
public:
    numerical_model_heat();
    /// Makes the mesh; an empty handle on failure (init() gives the code).
    numerical_model_heat(const context& ctx, const physics_model_base& physics,
                         const dense2D<unsigned int>& connectivity, element_type type);
    /// Makes the mesh on `physics` over `connectivity` of shape `type`: 0 or a code above.
    error_type init(const context& ctx, const physics_model_base& physics, const dense2D<unsigned int>& connectivity,
                    element_type type);
};

}  // namespace fem
}  // namespace orv
