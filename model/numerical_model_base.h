// The one contract between the runs and everything that contributes equations.
#pragma once

#include <cstdint>
#include <vector>

#include <orv/fem/element_type.h>
#include <orv/fem/matrix_code.h>

#include "linalg/vector_fast.h"
#include "model/assembly_params.h"
#include "orvmath1/dense1D.h"
#include "orvmath1/dense2D.h"
#include "orvmath1/matrix_fixed.h"
#include "orvmath1/ref_counted.h"
#include "orvmath1/vector_fixed.h"
#include "problem/DOFs_mgr.h"
#include "problem/elementary_load.h"

namespace orv {
namespace core {

class context_type;
class internal_states;
struct internal_states_layout;
struct element_workspace;
struct assembly_args;

// One entry of the inverse element-to-DOF graph: an element of a model.
struct FE_ID_pair {
    std::uint32_t NM_ID;
    std::uint32_t FE_ID;
};

// What the element loop of a model computes for each element.
enum assembly_kind : int { assemble_matrices = 0, assemble_loads = 1, assemble_projections = 2 };

// Root of the numerical models: meshes, discrete elements and composites. A run knows
// no element type: it lists DOFs through the get_DOFs slots, has the model add its
// matrices and vectors through assemblers (assemble_matrix, assemble_load), and hands
// it states to keep.
//
// A concrete model computes one element at a time in compute_matrix, compute_load and
// compute_projection, writing only into the workspace it is given: these run
// concurrently on one model object. The assembly loops of this class add the results
// in element order, so that a sum does not depend on the number of threads.
//
// A derived class registers itself with its context's registry by calling
// register_self(nbr_elements) at the end of its constructor (and again whenever its
// element count changes).
class numerical_model_base : public ref_counted {
public:
    static constexpr std::uint32_t all_elements = 0xFFFFFFFEu;
    static constexpr std::uint32_t no_ID = 0xFFFFFFFFu;

    // The model keeps a plain pointer to its context, which owns the registry that
    // holds the model.
    explicit numerical_model_base(context_type* ctx);
    numerical_model_base(const numerical_model_base&) = delete;
    numerical_model_base& operator=(const numerical_model_base&) = delete;

    // slot 0: releases the transformer.
    ~numerical_model_base() override;

    context_type* get_context() const { return context_; }
    std::uint32_t ID() const { return ID_; }
    std::uint32_t get_evolution_func_ID() const { return evolution_func_ID_; }
    void set_evolution_func_ID(std::uint32_t ID) { evolution_func_ID_ = ID; }
    // Value of this model's evolution function at t: 1.0 when the ID names none.
    double evolution_value(double t) const;
    // The DOF transformer (shared with the other models under a composite), or null.
    const Ptr<ref_counted>& get_transformer() const { return transformer_; }

    // slot 1: the engine physics of a mesh model, null otherwise.
    virtual Ptr<ref_counted> get_physics_model() const;
    // slots 2 to 4: family, physics (with kinematics) and server (with shape) codes.
    virtual unsigned get_family_code() const;
    virtual unsigned get_physics_code() const;
    virtual unsigned get_server_code() const;
    // slot 5: connectivity, one column per element, one row per node, with the shape.
    virtual void get_mesh(dense2D<unsigned int>& connectivity, fem::element_type& type) const;
    // slot 6
    virtual fem::element_type get_FE_type() const;
    // slot 7: 0 to 3, from the shape.
    virtual unsigned get_dim() const;
    // slot 8: columns of the connectivity; discrete models answer 1.
    virtual std::uint32_t nbr_elements() const;
    // slot 9: diagonal of the box around the model's nodes.
    virtual double get_size(const dense2D<double>& pos) const;
    // slot 10: false for composites.
    virtual bool is_simple() const;
    // slot 11: appends this model, or for a composite each simple model under it.
    virtual void collect_simple_models(std::vector<Ptr<numerical_model_base>>& list);
    // slot 12: whether an elementary load record applies to this model.
    virtual bool accepts_load(const fem::elementary_load& record) const;
    // slot 13: whether the model has the matrix of matrix_code.
    virtual bool has_matrix(unsigned matrix_code) const;
    // slot 14
    virtual double get_element_value(std::uint32_t element) const;
    // slot 15: adds a value of the law for `element` to out[0].
    virtual void add_element_value(std::uint32_t element, const assembly_params& params, dense1D<double>& out) const;
    // slots 16, 17: element and material bases, one vector per column of R.
    virtual int get_element_basis(const dense2D<double>& pos, std::uint32_t element,
                                  matrix_fixed<double, 3, 3>& R) const;
    virtual int get_local_basis(const dense2D<double>& pos, std::uint32_t element, matrix_fixed<double, 3, 3>& R) const;
    // slot 18: stores the transformer; composites pass it on.
    virtual void set_transformer(const Ptr<ref_counted>& transformer);
    // slots 19, 20: hard offsets of one element (one column per node) or of all.
    virtual int set_hard_offsets(const dense2D<double>& pos, std::uint32_t element, const dense2D<double>& offsets,
                                 bool local, const dense1D<unsigned int>& DOFs);
    virtual int set_hard_offsets(const vector_fixed<double, 3>& offset, const dense1D<unsigned int>& DOFs);

    // slot 21: appends the DOFs of `element` (or of all) that the filter selects to a
    // plain list, in element order. `table` gives the number of real-node DOFs.
    virtual int get_DOFs(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code,
                         dense1D<unsigned int>& list, const DOF_filter& filter) const;
    // slot 22: the same into an index set without duplicates.
    virtual int get_DOFs(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code,
                         vector_fast<unsigned int>& set, const DOF_filter& filter) const;
    // slot 23: one row of DOFs per element that has a selected DOF; the end of each row
    // is appended to `offsets` (which the caller starts with its first offset).
    virtual int get_DOFs_graph(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code,
                               dense1D<unsigned int>& offsets, dense1D<unsigned int>& ids,
                               const DOF_filter& filter) const;
    // slot 24: the inverse of slot 23 over the DOFs of `rows`. With `offsets` (counting
    // mode) offsets[row] is the cursor of each row: the pair (model ID, element) is
    // written at the cursor when `pairs` is given, and the cursor moves on. Without
    // `offsets` the pairs are appended.
    virtual int get_FEs_of_DOFs(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code,
                                const vector_fast<unsigned int>& rows, dense1D<unsigned int>* offsets,
                                std::vector<FE_ID_pair>* pairs, dense1D<unsigned int>& scratch) const;
    // slot 25: compressed rows in two passes: offsets gets rows.size() + 1 row starts
    // and pairs the elements of each row.
    virtual int get_FEs_of_DOFs(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code,
                                const vector_fast<unsigned int>& rows, dense1D<unsigned int>& offsets,
                                std::vector<FE_ID_pair>& pairs) const;
    // slot 26: nodes of `element` (or of all).
    virtual int get_nodes(std::uint32_t element, vector_fast<unsigned int>& set) const;
    // slot 27: the nodes as one row per element.
    virtual int get_nodes_graph(std::uint32_t element, dense1D<unsigned int>& offsets,
                                dense1D<unsigned int>& ids) const;

    // slots 28 to 34: internal states.
    virtual bool has_internal_states() const;
    virtual int get_internal_states_layout(internal_states_layout& layout) const;
    // An empty `values` resets the element to its initial state.
    virtual int set_element_states(std::uint32_t element, const dense1D<double>& values);
    virtual int get_element_states(std::uint32_t element, dense1D<double>& values) const;
    virtual void reset_internal_states();
    virtual int set_internal_states(const internal_states& states);
    // Allocates `states` when it is null.
    virtual int get_internal_states(Ptr<internal_states>& states) const;

    // slots 35 to 37: one element, workspace.element_ID, into the workspace.
    virtual int compute_matrix(unsigned matrix_code, element_workspace& workspace);
    virtual int compute_load(const fem::elementary_load& record, element_workspace& workspace);
    virtual int compute_projection(unsigned field, unsigned component, bool recompute, element_workspace& workspace);

    // slots 38 to 40: the assembly loops.
    virtual int assemble_matrix(unsigned matrix_code, assembly_args& args);
    virtual int assemble_load(const fem::elementary_load& record, assembly_args& args);
    virtual int assemble_projection(unsigned field, unsigned component, assembly_args& args);

    // slot 41: number of components of an output of this model.
    virtual int get_output_shape(unsigned output_code, unsigned& type, unsigned& rows, unsigned& cols) const;
    // slot 42: stress tensors of an element.
    virtual int get_stresses(std::uint32_t element, const dense2D<double>& pos, const dense1D<double>& U,
                             const vector_fast<unsigned int>* U_IDs, unsigned basis, dense2D<double>& out) const;

    // Registry side: enters this model with its element count (see the class comment).
    // Returns the ID, 0xFFFFFFFF when it could not be registered.
    std::uint32_t register_self(std::uint32_t nbr_elements);
    // Set by the registry only.
    void assign_ID(std::uint32_t ID) { ID_ = ID; }

protected:
    // The range [first, end) of the elements `element` names (all_elements: every
    // one); -102 past the last element.
    int element_range(std::uint32_t element, std::uint32_t& first, std::uint32_t& end) const;
    // The element loop shared by the three assembly slots: compute_matrix,
    // compute_load or compute_projection by kind.
    int assemble_kind(int kind, unsigned matrix_code, const fem::elementary_load* record, unsigned field,
                      unsigned component, assembly_args& args);

private:
    context_type* context_;
    std::uint32_t ID_ = no_ID;
    std::uint32_t evolution_func_ID_ = no_ID;
    Ptr<ref_counted> transformer_;
};

}  // namespace core
}  // namespace orv
