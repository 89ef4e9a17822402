// Public creation of the stiffness meshes: a physics on a connectivity of one shape.
#pragma once

#include <orv/fem/context.h>
#include <orv/fem/element_type.h>
#include <orv/fem/error_type.h>
#include <orv/fem/numerical_model_base.h>
#include <orv/fem/physics_model_base.h>

#include <orvmath1/dense1D.h>
#include <orvmath1/dense2D.h>

namespace orv {
namespace fem {

/// A mesh element is bad when, at some point of its stiffness rule, the determinant of
/// its Jacobian (the ratio of the element's volume, area or length to the reference
/// shape's) is not above bad_jacobian_ratio times L^d, L being the diagonal of the
/// bounding box of its nodes and d its dimension: an inverted element (negative),
/// a flat one (zero), or one whose nodes nearly coincide at a corner. For an
/// undistorted element the determinant over L^d is of order 0.01 to 1 (0.0241 for a
/// cube: (L / (2 sqrt 3))^3 / L^3). Bad elements are integrated as they are (their
/// negative weights included); the run's log names them after the assembly of K, and
/// get_bad_elements gives them to the host.
constexpr double bad_jacobian_ratio = 1e-8;

/// A mesh of a small-strain physics (model_solid_lin, ...). The connectivity has one
/// column per element and one row per node of the shape, in the shape's node order.
/// The model is registered in the context's registry. A constructor that fails leaves
/// the handle empty; init says why: -101 a physics that is empty or not small-strain,
/// -104 a shape on which the physics has no model, -105 a connectivity whose row count
/// is not the shape's node count, -199 memory.
///
/// When its elements are computed (matrices, loads, projections, bases), an element
/// with a node past the columns of the positions, or with a coordinate that is NaN or
/// infinite, gives -105.
class numerical_model_stiff_lin : public numerical_model_base {
public:
    numerical_model_stiff_lin();
    /// init(ctx, physics, connectivity, type); an empty handle when that fails.
    numerical_model_stiff_lin(const context& ctx, const physics_model_base& physics,
                              const dense2D<unsigned int>& connectivity, element_type type);
    /// Makes the mesh model and registers it on ctx; 0 or the error codes above.
    error_type init(const context& ctx, const physics_model_base& physics, const dense2D<unsigned int>& connectivity,
                    element_type type);
    /// Appends to `elements`, ascending, the local numbers of the elements that were
    /// bad (see bad_jacobian_ratio) at their last stiffness computation. -101 for an
    /// empty handle, -199 on memory.
    error_type get_bad_elements(dense1D<unsigned int>& elements) const;
};

/// The same for the finite-strain physics (model_solid_gnl, ...): -101 for a
/// small-strain physics.
class numerical_model_stiff_gnl : public numerical_model_base {
public:
    numerical_model_stiff_gnl();
    /// init(ctx, physics, connectivity, type); an empty handle when that fails.
    numerical_model_stiff_gnl(const context& ctx, const physics_model_base& physics,
                              const dense2D<unsigned int>& connectivity, element_type type);
    /// As numerical_model_stiff_lin::init, for a finite-strain physics.
    error_type init(const context& ctx, const physics_model_base& physics, const dense2D<unsigned int>& connectivity,
                    element_type type);
    /// As numerical_model_stiff_lin::get_bad_elements.
    error_type get_bad_elements(dense1D<unsigned int>& elements) const;
};

}  // namespace fem
}  // namespace orv
