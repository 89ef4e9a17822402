// The stiffness server of the mesh engine: one physics kinematics, one shape, one
// point set and one formulation. It tabulates the shape at the points of its rule
// when built, and computes an element's matrix, internal force and energy from the
// node coordinates and displacements. Read only after construction: one server
// serves all the threads of an assembly.
#pragma once

#include <cstdint>
#include <type_traits>

#include "elements/element_family_table.h"
#include "elements/mesh_kinematics.h"
#include "elements/mesh_material.h"
#include "elements/physics_model_base.h"
#include "elements/shape_table.h"
#include "model/assembly_params.h"

namespace orv {
namespace core {

// The plain formulation: strains are taken at the point.
struct regular_formulation {};

// What an element computation is given.
struct stiffness_input {
    const physics_model_base* physics = nullptr;
    std::uint32_t element = 0;
    bool want_matrix = true;    // the material (and, finite, the geometric) tangent
    bool want_geometric = false; // only the geometric stiffness of the current stress
    bool want_vector = false;   // the internal force
    unsigned law_flags = 0;
    const assembly_params* params = nullptr;
    // Projection: when `projection` is set, adds w N_i s[component] (stress when
    // `projection_strain` is false) for each node.
    double* projection = nullptr;
    unsigned projection_component = 0;
    bool projection_strain = false;
};

template <class Kin, class Shape, class PointSet, class Formulation = regular_formulation>
class stiffness_server {
public:
    using kinematics_type = Kin;
    using shape_type = Shape;
    using point_set_type = PointSet;
    static constexpr unsigned NN = Shape::nbr_nodes;
    static constexpr unsigned ND = Kin::nbr_dofs;
    static constexpr unsigned NDOF = NN * ND;
    static constexpr unsigned NS = Kin::nbr_strains;

    elfes::shape_table<Shape, PointSet> table;
    elfes::shape_table<Shape, typename elfes::centre_point_set<Shape>::type> centre;
    // The formulation: empty for the plain one, else its tying points.
    Formulation formulation;
    static constexpr bool assumed = !std::is_same<Formulation, regular_formulation>::value;

    // X: node coordinates (as the kinematics reads them); u: element displacements
    // in local DOF order (node by node), or null for none. K: NDOF x NDOF row-major,
    // lower triangle added to; f: NDOF values, the internal vector -integral of B' S,
    // added to; energy added to.
    // Global coordinates of a point (the planar physics have only two).
    static void position(const point_geometry<NN>& geo, const double (*X)[3], double* x) {
        x[0] = x[1] = x[2] = 0.0;
        for (unsigned i = 0; i < NN; ++i)
            for (unsigned c = 0; c < 3; ++c) x[c] += geo.N[i] * X[i][c];
    }

    int compute(const stiffness_input& in, const double (*X)[3], const double* u, double* K, double* f,
                double& energy) const {
        const mesh_material* law = in.physics->material();
        if (!law) return -101;
        static const double zero_u[NDOF] = {};
        const double* uu = u ? u : zero_u;
        element_data ed;
        compose(X, uu, ed);
        for (unsigned p = 0; p < table.nbr_points; ++p) {
            point_geometry<NN> geo;
            Kin::geometry(table, p, X, geo);
            double w = geo.w;
            if (Kin::axi) w *= elfes::axi_two_pi * geo.r;
            material_point_key key;
            key.element = in.element;
            key.point = table.point[p].ID;
            key.step = in.params ? in.params->law_step[0] % 50u : 0u;
            double Q[9], x[3];
            position(geo, X, x);
            const bool frame = !Kin::finite && law->material_frame(x, Q);
            double eps[NS];
            double B[NS][NDOF];
            double W[3][5];
            strain_B(ed, p, geo, frame ? Q : nullptr, uu, eps, B, W);
            double D[NS * NS];
            double S[NS];
            for (unsigned k = 0; k < NS; ++k) S[k] = 0.0;
            double e = 0.0;
            const int rc = law->compute(key, eps, D, S, e, in.law_flags, in.params ? *in.params : assembly_params());
            if (rc < 0) return rc;
            energy += w * e;
            if (in.want_matrix) {
                // K += w B^T D B, lower triangle
                double DB[NS][NDOF];
                for (unsigned r = 0; r < NS; ++r)
                    for (unsigned c = 0; c < NDOF; ++c) {
                        double s = 0.0;
                        for (unsigned k = 0; k < NS; ++k) s += D[r * NS + k] * B[k][c];
                        DB[r][c] = w * s;
                    }
                for (unsigned a = 0; a < NDOF; ++a) {
                    double* row = K + a * NDOF;
                    for (unsigned k = 0; k < NS; ++k) {
                        const double bka = B[k][a];
                        if (bka == 0.0) continue;
                        const double* db = DB[k];
                        for (unsigned b = 0; b <= a; ++b) row[b] += bka * db[b];
                    }
                }
            }
            if ((in.want_matrix && Kin::finite) || in.want_geometric) {
                if constexpr (assumed)
                    formulation.template add_geometric<ND>(W, slots, S, w, K);
                else
                    Kin::add_geometric(geo, S, w, K);
            }
            // The element's vector is the force it exerts on its nodes, -B' S, the
            // sign of the discrete elements: a run adds it to the external forces.
            if (in.want_vector)
                for (unsigned a = 0; a < NDOF; ++a) {
                    double s = 0.0;
                    for (unsigned k = 0; k < NS; ++k) s += B[k][a] * S[k];
                    f[a] -= w * s;
                }
            if (in.projection) {
                const double v = in.projection_strain ? eps[in.projection_component % NS] : S[in.projection_component % NS];
                for (unsigned i = 0; i < NN; ++i) in.projection[i] += w * geo.N[i] * v;
            }
        }
        return 0;
    }

    // Stresses and strains at every point of the rule (NS rows each, one column per
    // point, column-major). Returns 0 or the law's code.
    int point_values(const stiffness_input& in, const double (*X)[3], const double* u, double* stress,
                     double* strain) const {
        const mesh_material* law = in.physics->material();
        if (!law) return -101;
        element_data ed;
        compose(X, u, ed);
        for (unsigned p = 0; p < table.nbr_points; ++p) {
            point_geometry<NN> geo;
            Kin::geometry(table, p, X, geo);
            material_point_key key;
            key.element = in.element;
            key.point = table.point[p].ID;
            double Q[9], x[3];
            position(geo, X, x);
            const bool frame = !Kin::finite && law->material_frame(x, Q);
            double B[NS][NDOF];
            double* eps = strain + p * NS;
            double W[3][5];
            strain_B(ed, p, geo, frame ? Q : nullptr, u, eps, B, W);
            double D[NS * NS];
            double* S = stress + p * NS;
            for (unsigned k = 0; k < NS; ++k) S[k] = 0.0;
            double e = 0.0;
            const int rc = law->compute(key, eps, D, S, e, 0u, in.params ? *in.params : assembly_params());
            if (rc < 0) return rc;
        }
        return 0;
    }

private:
    struct no_data {};
    template <class F, bool A>
    struct data_of {
        using type = no_data;
    };
    template <class F>
    struct data_of<F, true> {
        using type = typename F::template element_data<ND>;
    };
    using element_data = typename data_of<Formulation, assumed>::type;
    // the slots of E11, E22 and 2 E12 among the physics' strains
    static constexpr unsigned slots[3] = {0, 1, NS == 6 ? 3u : 2u};

    // The element's tying data, before the point loop (nothing for the plain form).
    void compose(const double (*X)[3], const double* u, element_data& ed) const {
        if constexpr (assumed)
            formulation.template compose<ND, Kin::finite>(X, u, ed);
        else
            (void)X, (void)u, (void)ed;
    }

    // The strains and rows of point p: the kinematics' own, with the in-plane ones
    // replaced by the formulation's (W: their weights, set when assumed).
    void strain_B(const element_data& ed, unsigned p, const point_geometry<NN>& geo, const double* Q,
                  const double* u, double* eps, double (*B)[NDOF], double (*W)[5]) const {
        Kin::strain_B(geo, Q, u, eps, B);
        if constexpr (assumed) {
            static const double ex[3] = {1, 0, 0}, ey[3] = {0, 1, 0};
            const double* e1 = Kin::surface ? geo.T[0] : ex;
            const double* e2 = Kin::surface ? geo.T[1] : ey;
            Formulation::weights(ed, table.point[p].coord[0], table.point[p].coord[1], geo.detJ, e1, e2, W);
            Formulation::strain_B(ed, W, slots, eps, B);
        } else {
            (void)ed, (void)p, (void)W;
        }
    }

public:
    // The nodal matrix of the least-squares run: the integral of N_i N_j over the
    // element (lower triangle of an NN x NN row-major matrix).
    void nodal_matrix(const double (*X)[3], double* M) const {
        for (unsigned p = 0; p < table.nbr_points; ++p) {
            point_geometry<NN> geo;
            Kin::geometry(table, p, X, geo);
            double w = geo.w;
            if (Kin::axi) w *= elfes::axi_two_pi * geo.r;
            for (unsigned i = 0; i < NN; ++i)
                for (unsigned j = 0; j <= i; ++j) M[i * NN + j] += w * geo.N[i] * geo.N[j];
        }
    }
};

// The external work server: distributed loads integrated on the load rule.
template <class Kin, class Shape, class PointSet>
class external_work_server {
public:
    static constexpr unsigned NN = Shape::nbr_nodes;
    static constexpr unsigned ND = Kin::nbr_dofs;
    static constexpr unsigned NDOF = NN * ND;

    elfes::shape_table<Shape, PointSet> table;

    // A force per unit of the element's measure (volume, area or length), given by
    // its component along each DOF direction of a node: f_(i, k) += w N_i q[k].
    // `normal_pressure`: surfaces only, q[0] is a pressure along the normal of the
    // node order.
    void distributed(const double (*X)[3], const double* q, bool normal_pressure, double* f) const {
        for (unsigned p = 0; p < table.nbr_points; ++p) {
            point_geometry<NN> geo;
            Kin::geometry(table, p, X, geo);
            double w = geo.w;
            if (Kin::axi) w *= elfes::axi_two_pi * geo.r;
            double load[ND];
            for (unsigned k = 0; k < ND; ++k) load[k] = q[k];
            // the unit normal of a surface point is the third axis of its frame
            if (Kin::surface && normal_pressure)
                for (unsigned k = 0; k < ND; ++k) load[k] = k < 3 ? q[0] * geo.T[2][k] : 0.0;
            for (unsigned i = 0; i < NN; ++i)
                for (unsigned k = 0; k < ND; ++k) f[i * ND + k] += w * geo.N[i] * load[k];
        }
    }
};

}  // namespace core
}  // namespace orv
