// Public handle on a numerical model: meshes, discrete elements and composites.
#pragma once

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/base_class.h>
#include <orv/fem/element_type.h>
#include <orv/fem/error_type.h>
#include <orv/fem/matrix_code.h>
#include <orv/fem/physics_model_base.h>

#include <orvmath1/dense1D.h>
#include <orvmath1/dense2D.h>
#include <orvmath1/matrix_fixed.h>
#include <orvmath1/vector_fixed.h>

namespace orv {
namespace core {
class numerical_model_base;
}
namespace fem {

/// A model lives in the registry of the context it was created on; its ID names it
/// there (numerical_models_mgr, problem_data, composites and load records use the ID).
/// The default constructor gives an empty handle; copies of a handle share its model.
class numerical_model_base : public base_class {
public:
    ORV_FEM_HANDLE(numerical_model_base, core::numerical_model_base)

    /// Element argument meaning all the elements of a model.
    static constexpr unsigned all_elements = 0xFFFFFFFEu;

    numerical_model_base();

    /// The model's ID; 0xFFFFFFFF for an empty handle.
    unsigned ID() const;
    /// The same as ID().
    unsigned get_ID() const { return ID(); }
    /// Shape of the elements; FE_none for a model without a mesh.
    element_type get_FE_type() const;
    /// Connectivity (one column per element, one row per node) and shape.
    void get_mesh(dense2D<unsigned int>& connectivity, element_type& type) const;
    /// The nodes of `element` (or of all), sorted, without duplicates.
    dense1D<unsigned int> get_nodes(unsigned element = all_elements) const;
    /// The DOFs of `element` (or of all) for the matrix `physics` (1 stiffness, 2 mass,
    /// ...). state 0: the fixed DOFs of `table`, 1: its free DOFs, 2 or more: all.
    /// Sorted, without duplicates; empty on an empty handle.
    dense1D<unsigned int> get_DOFs(unsigned physics, const DOFs_mgr& table, unsigned state,
                                   unsigned element = all_elements) const;

    /// The physics of a mesh model (its law and section data); empty for other models.
    physics_model_base get_physics_model() const;
    /// The same.
    physics_model_base get_mechanical_model() const { return get_physics_model(); }

    /// The element's local basis, one vector per column of R; -102 for a model without.
    error_type get_element_basis(const dense2D<double>& pos, unsigned element, matrix_fixed<double, 3, 3>& R) const;
    /// The same on the deformed positions pos + U, U(node * 9 + c, column) being the
    /// displacement c of a node.
    error_type get_element_basis(const dense2D<double>& pos, unsigned element, const dense2D<double>& U,
                                 unsigned column, matrix_fixed<double, 3, 3>& R) const;
    /// The basis of the element's material.
    error_type get_local_basis(const dense2D<double>& pos, unsigned element, matrix_fixed<double, 3, 3>& R) const;

    /// Evolution function that scales everything the model adds; 0xFFFFFFFF for none.
    void set_evolution_func_ID(unsigned ID);
    /// The evolution function of the model; 0xFFFFFFFF for none.
    unsigned get_evolution_func_ID() const;

    /// Rigid offsets of the nodes of one element, one column per node (3 rows). An empty
    /// or all-zero matrix does nothing and returns 0; another shape gives -101. `local`:
    /// given in the element's basis. `DOFs`, when not empty, restricts the offsets.
    error_type set_hard_offsets(const dense2D<double>& pos, unsigned element, const dense2D<double>& offsets,
                                bool local, const dense1D<unsigned int>& DOFs);
    /// The same for a two-node element.
    error_type set_hard_offsets(const dense2D<double>& pos, unsigned element, const vector_fixed<double, 3>& offset_1,
                                const vector_fixed<double, 3>& offset_2, bool local, const dense1D<unsigned int>& DOFs);
    /// One offset for all the elements. All zero returns 0.
    error_type set_hard_offsets(const vector_fixed<double, 3>& offset, const dense1D<unsigned int>& DOFs);
};

}  // namespace fem
}  // namespace orv
