// The mass meshes: a connectivity of one shape with a mass physics and its mass
// server. They share the element checks, DOF walks and sizes of the stiffness meshes
// (stiff_mesh_base) and the assembly loop of the model base; what differs is the
// element matrix: rho N_i N_j on each pair of DOFs of one direction (matrix code 2),
// consistent at matrix_level 1 and lumped to a diagonal at matrix_level 2.
#pragma once

#include <orv/fem/error_type.h>
#include <new>

#include "elements/element_family_table.h"
#include "elements/mechanical_mass.h"
#include "elements/numerical_model_stiff_mesh.h"

namespace orv {
namespace core {

class mass_mesh_base : public stiff_mesh_base {
public:
    mass_mesh_base(context_type* ctx, const Ptr<physics_model_base>& physics, const dense2D<unsigned int>& connectivity,
                   fem::element_type type);

    // The physics' matrix only (the mass, code 2, for a mass physics); code 9 goes its
    // own way.
    bool has_matrix(unsigned matrix_code) const override { return physics() && matrix_code == mass()->matrix_code(); }
    // Heat meshes take the heat loads of their physics: a conduction mesh a flux or
    // source (kind 72, per unit of the element's measure), a convection mesh the
    // temperature of the surroundings (kind 64), which its coefficient turns into a
    // flux. Mass meshes take none.
    bool accepts_load(const fem::elementary_load& record) const override;
    bool has_internal_states() const override { return false; }
    // A mass has no material frame: the identity, for an element in range.
    int get_local_basis(const dense2D<double>& pos, std::uint32_t element,
                        matrix_fixed<double, 3, 3>& R) const override;
    // A mass mesh has no stresses or strains.
    int get_point_values(std::uint32_t, const dense2D<double>&, const DOF_vector*, dense2D<double>&) const override {
        return fem::error_data;
    }

protected:
    const mass_physics* mass() const { return static_cast<const mass_physics*>(physics()); }
    // From the nodal mass matrix m (lower triangle of nn x nn, row-major) to the
    // workspace: the element matrix on the pairs of DOFs of one slot (matrix_level 1),
    // lumped to ws.diag (matrix_level 2), nothing at other levels. With vector_level
    // 1 and a solution U, the vector -M u (the inertial force of an acceleration u)
    // and, in the first result, u M u / 2 (the kinetic energy of a velocity u).
    int finish_element(element_workspace& ws, unsigned nn, unsigned nd, const unsigned* local, const double* m) const;
};

template <class Server>
class numerical_model_mass_mesh : public mass_mesh_base {
public:
    static constexpr unsigned NN = Server::NN;
    // a mass physics carries at most the three displacement slots
    static constexpr unsigned max_ND = 3;

    numerical_model_mass_mesh(context_type* ctx, const Ptr<physics_model_base>& physics,
                              const dense2D<unsigned int>& connectivity, fem::element_type type)
        : mass_mesh_base(ctx, physics, connectivity, type) {
        register_self(nbr_elements());
    }

    int compute_matrix(unsigned matrix_code, element_workspace& ws) override {
        unsigned nodes[NN];
        double X[NN][3];
        unsigned local[NN * max_ND];
        ws.reset();
        const unsigned nd = physics_ ? physics_->nbr_DOF_slots() : 0;
        if (nd > max_ND) return fem::error_connectivity;
        int rc = prepare_element(ws, NN, nd, nodes, X, local, Server::planar);
        if (rc) return rc;
        double m[NN * NN] = {};
        if (matrix_code == fem::matrix_nodal) {
            server_.nodal_matrix(X, m);
            return add_nodal_matrix(ws, NN, nodes, m);
        }
        if (!has_matrix(matrix_code)) return 0;
        rc = server_.compute(*mass()->density(), global_element(ws.element_ID), X, m);
        if (rc) {
            ws.reset();
            return rc;
        }
        return finish_element(ws, NN, nd, local, m);
    }

    int compute_load(const fem::elementary_load& record, element_workspace& ws) override {
        unsigned nodes[NN];
        double X[NN][3];
        unsigned local[NN * max_ND];
        ws.reset_vector();
        const unsigned nd = physics_ ? physics_->nbr_DOF_slots() : 0;
        if (nd != 1) return 0;
        int rc = prepare_element(ws, NN, nd, nodes, X, local, Server::planar);
        if (rc) return rc;
        if (!accepts_load(record) || record.values.empty()) return 0;
        const bool exchange = (record.kind & 0xF8u) == fem::elementary_load::kind_heat_exchange;
        double f[NN] = {};
        rc = server_.load_vector(exchange ? mass()->density() : nullptr, global_element(ws.element_ID), X,
                                 record.values[0], f);
        if (rc) return rc;
        if (!ws.init_vector()) {
            ws.reset();
            return fem::error_memory;
        }
        scatter_vector(ws, NN, local, f);
        return 0;
    }

private:
    Server server_;
};

template <class Physics, class Shape, class PointSet>
numerical_model_base* make_mass_mesh(context_type* ctx, const Ptr<physics_model_base>& physics,
                                     const dense2D<unsigned int>& connectivity, fem::element_type type) {
    using server = mass_server<Physics, Shape, PointSet>;
    return new (std::nothrow) numerical_model_mass_mesh<server>(ctx, physics, connectivity, type);
}

// Creation of a mass mesh by shape family (one source file each): null when the
// physics has no model on that shape.
mesh_creator create_mass_mesh_edge, create_mass_mesh_face, create_mass_mesh_solid;

// The public creation path: -101 for a physics that is no mass physics with a
// density law (with heat: no heat physics), -104 for a shape outside the family table of the physics, -105 for a
// connectivity whose rows are not the shape's node count, -199 on memory.
int create_mass_mesh(context_type* ctx, const Ptr<physics_model_base>& physics,
                     const dense2D<unsigned int>& connectivity, fem::element_type type,
                     Ptr<numerical_model_base>& model, bool heat = false);

// Replaces the element's symmetric matrix by a diagonal that keeps, for each DOF slot
// (ID % 9), the total of the slot's block: each diagonal entry is scaled by the ratio
// of the block's total to the sum of its diagonal (or, with a zero diagonal, the
// total is shared evenly). Unlike row sums, the entries stay positive for quadratic
// shapes, whose row sums are zero or negative at the corners. The diagonal goes to
// ws.diag; the symmetric matrix is cleared. False on memory.
bool lump_element_matrix(element_workspace& ws);

}  // namespace core
}  // namespace orv
