// The mesh model engine: a connectivity of one shape, the physics it was built from,
// a stiffness server and an external work server. The part that does not depend on
// the shape (element and node checks, DOF walks, sizes, bases) is stiff_mesh_base;
// the template numerical_model_stiff_mesh adds the element computations.
#pragma once

#include <orv/fem/error_type.h>
#include <cmath>
#include <cstdint>
#include <vector>

#include <orv/fem/element_type.h>
#include <orv/fem/numerical_model_stiff.h>

#include "elements/bad_elements_log.h"
#include "elements/physics_model_base.h"
#include "elements/stiffness_server.h"
#include "model/element_workspace.h"
#include "model/numerical_model_base.h"
#include "orvmath1/dense2D.h"

namespace orv {
namespace core {

class stiff_mesh_base : public numerical_model_base {
public:
    stiff_mesh_base(context_type* ctx, const Ptr<physics_model_base>& physics,
                    const dense2D<unsigned int>& connectivity, fem::element_type type);

    Ptr<ref_counted> get_physics_model() const override;
    const physics_model_base* physics() const { return physics_.get(); }
    unsigned get_family_code() const override;
    unsigned get_physics_code() const override;
    unsigned get_server_code() const override;
    void get_mesh(dense2D<unsigned int>& connectivity, fem::element_type& type) const override;
    fem::element_type get_FE_type() const override { return type_; }
    std::uint32_t nbr_elements() const override { return static_cast<std::uint32_t>(connectivity_.cols()); }
    double get_size(const dense2D<double>& pos) const override;
    // Stiffness meshes have K (code 1) only; code 9 goes its own way.
    bool has_matrix(unsigned matrix_code) const override { return matrix_code == fem::matrix_K; }
    // Forces on displacements (kind 24), not the inertial kinds; a pressure (type 3)
    // only on surfaces.
    bool accepts_load(const fem::elementary_load& record) const override;
    int get_DOFs(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code, dense1D<unsigned int>& list,
                 const DOF_filter& filter) const override;
    int get_element_basis(const dense2D<double>& pos, std::uint32_t element,
                          matrix_fixed<double, 3, 3>& R) const override;
    bool has_internal_states() const override;
    // Stresses (the physics' n strain slots: rows 0 to n - 1) and strains (rows n to
    // 2 n - 1) at the points of the rule,
    // one column per point, for the displacements U (null: none). For outputs and tests.
    virtual int get_point_values(std::uint32_t element, const dense2D<double>& pos, const DOF_vector* U,
                                 dense2D<double>& out) const = 0;

    // Elements whose Jacobian determinant, at their last stiffness computation, was
    // at some point not above fem::bad_jacobian_ratio times the element's size (the
    // diagonal of its nodes' bounding box) to the power of its dimension: appended to
    // `list` in ascending order. False on memory.
    bool get_bad_elements(dense1D<unsigned int>& list) const;
    std::uint32_t nbr_bad_elements() const;

protected:
    // Checks of an element and gathering of its data, shared by the three compute
    // slots. Fills `nodes` (nn entries) and the node coordinates X (in the
    // coordinate slots of the physics when `planar`), sets ws.DOFs to the sorted list
    // of the element's DOFs and `local` to the position of each local DOF (node by
    // node, nd per node) in it. Returns 0, -102 or -105 (after resetting ws).
    int prepare_element(element_workspace& ws, unsigned nn, unsigned nd, unsigned* nodes, double (*X)[3],
                        unsigned* local, bool planar) const;
    // The element's displacements in local order from ws.U; false when there is none.
    bool gather_element(const element_workspace& ws, unsigned nn, unsigned nd, const unsigned* nodes, double* u) const;
    // Adds the lower triangle of the n x n row-major K at the positions `local` of
    // ws.sym (the matrix must be initialised).
    static void scatter_matrix(element_workspace& ws, unsigned n, const unsigned* local, const double* K);
    static void scatter_vector(element_workspace& ws, unsigned n, const unsigned* local, const double* f);
    // The global number of a local element (numerical_models_mgr), the key of the
    // laws' per-element data and states; the local number when the model has no range.
    std::uint32_t global_element(std::uint32_t element) const;
    // The nodal matrix of code 9 on the element's node IDs, in ws.sparse.
    int add_nodal_matrix(element_workspace& ws, unsigned nn, const unsigned* nodes, const double* M) const;
    // Records whether the element is bad, from the smallest determinant of its points
    // and its nodes' coordinates X (nn nodes) in `dim` dimensions. Each element is
    // computed by one thread at a time, so that the flags need no lock.
    void mark_element(std::uint32_t element, double min_detJ, unsigned nn, const double (*X)[3], unsigned dim);
    // The point fields of the element's last stiffness computation (width values per
    // point, np points) are kept in the workspace's last scratch matrix, tagged with
    // the model and element, for a projection that does not recompute them.
    bool keep_fields(element_workspace& ws, const double* fields, unsigned width, unsigned np) const;
    // Copies those fields to `out` when they are the workspace's element's of this
    // model; false otherwise.
    bool kept_fields(const element_workspace& ws, unsigned width, unsigned np, double* out) const;

    Ptr<physics_model_base> physics_;
    dense2D<unsigned int> connectivity_;
    fem::element_type type_;
    // One flag per element: 1 when its last stiffness computation met a bad Jacobian.
    std::vector<unsigned char> bad_;
};

template <class Server, class LoadServer>
class numerical_model_stiff_mesh : public stiff_mesh_base {
public:
    using Kin = typename Server::kinematics_type;
    static constexpr unsigned NN = Server::NN;
    static constexpr unsigned ND = Server::ND;
    static constexpr unsigned NDOF = Server::NDOF;
    static constexpr bool planar = !Kin::surface && Server::shape_type::dim == 2;
    static constexpr unsigned NP = decltype(Server::table)::nbr_points;
    static constexpr unsigned FW = Server::field_width;

    numerical_model_stiff_mesh(context_type* ctx, const Ptr<physics_model_base>& physics,
                               const dense2D<unsigned int>& connectivity, fem::element_type type)
        : stiff_mesh_base(ctx, physics, connectivity, type) {
        register_self(nbr_elements());
    }

    int compute_matrix(unsigned matrix_code, element_workspace& ws) override {
        unsigned nodes[NN];
        double X[NN][3];
        unsigned local[NDOF];
        int rc = prepare_element(ws, NN, ND, nodes, X, local, planar);
        if (rc) return rc;
        if (matrix_code == fem::matrix_nodal) {
            double M[NN * NN] = {};
            server_.nodal_matrix(X, M);
            return add_nodal_matrix(ws, NN, nodes, M);
        }
        if (!has_matrix(matrix_code)) return 0;
        const bool want_matrix = ws.matrix_level > 0;
        const bool want_vector = ws.vector_level > 0;
        double u[NDOF];
        const bool has_u = gather_element(ws, NN, ND, nodes, u);
        stiffness_input in;
        in.physics = physics_.get();
        in.element = global_element(ws.element_ID);
        in.want_matrix = want_matrix && ws.matrix_level != 3;
        in.want_geometric = ws.matrix_level == 3;
        in.want_vector = want_vector;
        in.law_flags = ws.flags[0] ? 1u : 0u;
        in.params = &ws.params;
        double min_detJ = HUGE_VAL;
        in.min_detJ = &min_detJ;
        double fields[FW * NP];
        in.fields = fields;
        double K[NDOF * NDOF] = {};
        double f[NDOF] = {};
        double energy = 0.0;
        rc = server_.compute(in, X, has_u ? u : nullptr, K, f, energy);
        mark_element(ws.element_ID, min_detJ, NN, X, Server::shape_type::dim);
        if (rc) {
            // a law that cannot evaluate the point fails the element
            ws.reset();
            return rc > -100 ? fem::error_element : rc;
        }
        if (!keep_fields(ws, fields, FW, NP)) {
            ws.reset();
            return fem::error_memory;
        }
        if (want_matrix) {
            if (!ws.init_sym()) {
                ws.reset();
                return fem::error_memory;
            }
            scatter_matrix(ws, NDOF, local, K);
        }
        if (want_vector) {
            if (!ws.init_vector()) {
                ws.reset();
                return fem::error_memory;
            }
            scatter_vector(ws, NDOF, local, f);
        }
        ws.results[0] += energy;
        return 0;
    }

    int compute_load(const fem::elementary_load& record, element_workspace& ws) override {
        unsigned nodes[NN];
        double X[NN][3];
        unsigned local[NDOF];
        ws.reset_vector();
        int rc = prepare_element(ws, NN, ND, nodes, X, local, planar);
        if (rc) return rc;
        if (!accepts_load(record)) return 0;
        const bool pressure = (record.type & 0x7Fu) == fem::elementary_load::type_scalar;
        double q[ND];
        for (unsigned k = 0; k < ND; ++k) {
            // the component along the DOF's direction
            const unsigned slot = physics_->DOF_slot(k);
            const std::size_t index = pressure ? 0 : slot % 3;
            q[k] = index < record.values.size() ? record.values[index] : 0.0;
        }
        double f[NDOF] = {};
        load_server_.distributed(X, q, pressure, f);
        if (!ws.init_vector()) {
            ws.reset();
            return fem::error_memory;
        }
        scatter_vector(ws, NDOF, local, f);
        return 0;
    }

    // field 0: stresses, 1: strains; component: the slot. The element's right-hand
    // side of the nodal least-squares run, one entry per node (on node IDs). -104 for
    // another field or a slot past the physics' strains.
    //
    // With `recompute`, the law is evaluated anew at the workspace's displacements,
    // with no matrix, no vector and no commit of states (the workspace's levels and
    // first flag are zeroed for the call and restored). Without it, the point values
    // that the workspace's last stiffness computation left are projected, when they
    // are this element's of this model; otherwise they are computed as with it.
    int compute_projection(unsigned field, unsigned component, bool recompute, element_workspace& ws) override {
        unsigned nodes[NN];
        double X[NN][3];
        unsigned local[NDOF];
        const int levels[2] = {ws.matrix_level, ws.vector_level};
        const unsigned char commit = ws.flags[0];
        ws.reset();
        int rc = prepare_element(ws, NN, ND, nodes, X, local, planar);
        if (rc) return rc;
        if (field > 1 || component >= Server::NS) {
            ws.reset();
            return fem::error_element_type;
        }
        double proj[NN] = {};
        double kept[FW * NP];
        if (!recompute && kept_fields(ws, FW, NP, kept)) {
            const unsigned slot = (field == 1 ? Server::NS : 0) + component;
            for (unsigned p = 0; p < NP; ++p)
                for (unsigned i = 0; i < NN; ++i) proj[i] += kept[p * FW + 2 * Server::NS + i] * kept[p * FW + slot];
        } else {
            double u[NDOF];
            const bool has_u = gather_element(ws, NN, ND, nodes, u);
            ws.matrix_level = ws.vector_level = 0;
            ws.flags[0] = 0;
            stiffness_input in;
            in.physics = physics_.get();
            in.element = global_element(ws.element_ID);
            in.want_matrix = false;
            in.law_flags = ws.flags[0] ? 1u : 0u;
            in.params = &ws.params;
            in.projection = proj;
            in.projection_component = component;
            in.projection_strain = field == 1;
            double energy = 0.0;
            rc = server_.compute(in, X, has_u ? u : nullptr, nullptr, nullptr, energy);
            ws.matrix_level = levels[0];
            ws.vector_level = levels[1];
            ws.flags[0] = commit;
            if (rc) {
                ws.reset();
                return rc;
            }
        }
        if (!ws.set_DOFs(nodes, NN) || !ws.init_vector()) {
            ws.reset();
            return fem::error_memory;
        }
        for (unsigned i = 0; i < NN; ++i) {
            const std::uint32_t k = ws.DOFs->find(nodes[i]);
            if (k != DOF_index::npos) ws.vector[k] += proj[i];
        }
        return 0;
    }

    // The axes of the element's point values (one axis per column): the local frame
    // of a surface or line element at its centre, else the law's material frame
    // there, else the axes of a planar physics' plane (x0, x1, third), else the
    // identity.
    int get_local_basis(const dense2D<double>& pos, std::uint32_t element,
                        matrix_fixed<double, 3, 3>& R) const override {
        if (element >= nbr_elements()) return fem::error_index;
        for (unsigned i = 0; i < 3; ++i)
            for (unsigned j = 0; j < 3; ++j) R(i, j) = i == j ? 1.0 : 0.0;
        double X[NN][3];
        for (unsigned i = 0; i < NN; ++i) {
            const unsigned node = connectivity_(i, element);
            if (node >= pos.cols() || pos.rows() < 3) return fem::error_connectivity;
            for (unsigned c = 0; c < 3; ++c) {
                X[i][c] = pos(c, node);
                if (!std::isfinite(X[i][c])) return fem::error_connectivity;
            }
        }
        if constexpr (Kin::element_frame) {
            point_geometry<NN> geo;
            Kin::geometry(server_.centre, 0, X, geo);
            for (unsigned i = 0; i < 3; ++i)
                for (unsigned j = 0; j < 3; ++j) R(i, j) = geo.T[j][i];
            return 0;
        }
        const mesh_material* law = physics_->material();
        double x[3] = {0, 0, 0};
        for (unsigned i = 0; i < NN; ++i)
            for (unsigned c = 0; c < 3; ++c) x[c] += server_.centre.N[0][i] * X[i][c];
        double Q[9];
        if constexpr (planar) {
            // the axes of the plane (x0, x1, third); the frame is asked in the plane
            // through the origin, as the element kernels do
            const unsigned axis[3] = {physics_->DOF_slot(0) % 3, physics_->DOF_slot(1) % 3,
                                      3u - physics_->DOF_slot(0) % 3 - physics_->DOF_slot(1) % 3};
            if (axis[2] < 3) {
                x[axis[2]] = 0.0;
                for (unsigned i = 0; i < 3; ++i)
                    for (unsigned k = 0; k < 3; ++k) R(i, k) = i == axis[k] ? 1.0 : 0.0;
            }
        }
        if (law && law->material_frame(x, Q))
            for (unsigned i = 0; i < 3; ++i)
                for (unsigned j = 0; j < 3; ++j) R(i, j) = Q[3 * i + j];  // one local axis per column
        return 0;
    }

    int get_point_values(std::uint32_t element, const dense2D<double>& pos, const DOF_vector* U,
                         dense2D<double>& out) const override {
        assembly_args args;
        args.pos = &pos;
        args.U = U;
        element_workspace ws(args, ID());
        ws.element_ID = element;
        unsigned nodes[NN];
        double X[NN][3];
        unsigned local[NDOF];
        int rc = prepare_element(ws, NN, ND, nodes, X, local, planar);
        if (rc) return rc;
        double u[NDOF] = {};
        gather_element(ws, NN, ND, nodes, u);
        constexpr unsigned NS = Server::NS;
        constexpr unsigned NP = decltype(Server::table)::nbr_points;
        double S[NS * NP], E[NS * NP];
        stiffness_input in;
        in.physics = physics_.get();
        in.element = global_element(element);
        in.params = &ws.params;
        rc = server_.point_values(in, X, u, S, E);
        if (rc) return rc;
        if (!out.resize(2 * NS, NP)) return fem::error_memory;
        for (unsigned p = 0; p < NP; ++p)
            for (unsigned k = 0; k < NS; ++k) {
                out(k, p) = S[p * NS + k];
                out(NS + k, p) = E[p * NS + k];
            }
        return 0;
    }

private:
    Server server_;
    LoadServer load_server_;
};

// Creation of a stiffness mesh of a physics on a shape, by shape family (one source
// file each): null when the physics has no model on that shape. The physics' codes
// decide the kinematics.
typedef numerical_model_base* mesh_creator(context_type* ctx, const Ptr<physics_model_base>& physics,
                                           const dense2D<unsigned int>& connectivity, fem::element_type type);
mesh_creator create_stiff_mesh_tetra, create_stiff_mesh_pyramid, create_stiff_mesh_wedge, create_stiff_mesh_hexa,
    create_stiff_mesh_face, create_stiff_mesh_edge;

// Takes a mesh just made by a create function (null when the physics has none on
// the shape): 0 with `model` holding it, -104 for none, -199 when the mesh could not
// be registered (it is then released).
int adopt_mesh(numerical_model_base* m, Ptr<numerical_model_base>& model);

// The public creation path: checks the shape (-104 for a shape outside the family
// table of the physics), the connectivity (-105: rows other than the shape's node
// count), and builds the model. 0 and `model` set, or the code and `model` null.
int create_stiff_mesh(context_type* ctx, const Ptr<physics_model_base>& physics,
                      const dense2D<unsigned int>& connectivity, fem::element_type type,
                      Ptr<numerical_model_base>& model);

}  // namespace core
}  // namespace orv
