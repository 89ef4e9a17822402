// The stiffness server of the mesh engine: one physics kinematics, one shape, one
// point set and one formulation. It tabulates the shape at the points of its rule
// when built, and computes an element's matrix, internal force and energy from the
// node coordinates and displacements. Read only after construction: one server
// serves all the threads of an assembly.
#pragma once

#include <orv/fem/error_type.h>
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
    bool want_matrix = true;      // the material (and, finite, the geometric) tangent
    bool want_geometric = false;  // only the geometric stiffness of the current stress
    bool want_vector = false;     // the internal force
    unsigned law_flags = 0;
    const assembly_params* params = nullptr;
    // Projection: when `projection` is set, adds w N_i s[component] (stress when
    // `projection_strain` is false) for each node.
    double* projection = nullptr;
    unsigned projection_component = 0;
    bool projection_strain = false;
    // When set, lowered to the smallest Jacobian determinant of the element's points.
    double* min_detJ = nullptr;
    // When set, the point fields of the element, point after point: the NS stresses,
    // the NS strains and the NN weights w N_i of the point (what a projection sums).
    double* fields = nullptr;
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
    // Values per point of stiffness_input::fields.
    static constexpr unsigned field_width = 2 * NS + NN;

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
        if (!law) return fem::error_data;
        static const double zero_u[NDOF] = {};
        const double* uu = u ? u : zero_u;
        element_data ed;
        compose(X, uu, ed);
        for (unsigned p = 0; p < table.nbr_points; ++p) {
            point_state ps;
            const int rc = evaluate(in, *law, ed, p, X, uu, in.law_flags, ps);
            const point_geometry<NN>& geo = ps.geo;
            if (in.min_detJ && geo.detJ < *in.min_detJ) *in.min_detJ = geo.detJ;
            if (rc < 0) return rc;
            double w = geo.w;
            if (Kin::axi) w *= elfes::axi_two_pi * geo.r;
            energy += w * ps.e;
            const auto& B = ps.B;
            const double* S = ps.S;
            if (in.want_matrix) {
                // K += w B^T D B, lower triangle
                double DB[NS][NDOF];
                for (unsigned r = 0; r < NS; ++r)
                    for (unsigned c = 0; c < NDOF; ++c) {
                        double s = 0.0;
                        for (unsigned k = 0; k < NS; ++k) s += ps.D[r * NS + k] * B[k][c];
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
                // the geometric stiffness works on the stress of the kinematics' axes
                double Sg[NS];
                ps.global_stress(Sg);
                if constexpr (assumed)
                    formulation.template add_geometric<ND>(ps.W, slots, Sg, w, K);
                else
                    Kin::add_geometric(geo, Sg, w, K);
            }
            // The element's vector is the force it exerts on its nodes, -B' S, the
            // sign of the discrete elements: a run adds it to the external forces.
            if (in.want_vector)
                for (unsigned a = 0; a < NDOF; ++a) {
                    double s = 0.0;
                    for (unsigned k = 0; k < NS; ++k) s += B[k][a] * S[k];
                    f[a] -= w * s;
                }
            if (in.projection || in.fields) {
                double So[NS], Eo[NS];
                ps.output(So, Eo);
                if (in.projection) {
                    const double v =
                        in.projection_strain ? Eo[in.projection_component % NS] : So[in.projection_component % NS];
                    for (unsigned i = 0; i < NN; ++i) in.projection[i] += w * geo.N[i] * v;
                }
                if (in.fields) {
                    double* out = in.fields + p * field_width;
                    for (unsigned k = 0; k < NS; ++k) {
                        out[k] = So[k];
                        out[NS + k] = Eo[k];
                    }
                    for (unsigned i = 0; i < NN; ++i) out[2 * NS + i] = w * geo.N[i];
                }
            }
        }
        return 0;
    }

    // Stresses and strains at every point of the rule (NS rows each, one column per
    // point, column-major), in the law's material frame when it has one, else in the
    // kinematics' axes. Returns 0 or the law's code.
    int point_values(const stiffness_input& in, const double (*X)[3], const double* u, double* stress,
                     double* strain) const {
        const mesh_material* law = in.physics->material();
        if (!law) return fem::error_data;
        element_data ed;
        compose(X, u, ed);
        for (unsigned p = 0; p < table.nbr_points; ++p) {
            point_state ps;
            const int rc = evaluate(in, *law, ed, p, X, u, 0u, ps);
            if (rc < 0) return rc;
            ps.output(stress + p * NS, strain + p * NS);
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
    void strain_B(const element_data& ed, unsigned p, const point_geometry<NN>& geo, const double* u, double* eps,
                  double (*B)[NDOF], double (*W)[5]) const {
        Kin::strain_B(geo, u, eps, B);
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

    // What one point gives: geometry, strain and rows, the law's answer, and the
    // rotation into the law's material frame when it has one (six-slot strains only:
    // membranes and rods work in the element's own axes).
    struct point_state {
        point_geometry<NN> geo;
        double eps[NS];
        double B[NS][NDOF];
        double W[3][5];
        double D[NS * NS];
        double S[NS];
        double e = 0.0;
        bool rotated = false;
        // whether the rotation is the law's frame (not only a permutation of axes)
        bool law_frame = false;
        double T[6][6];
        double eps_axes[NS];  // the strain in the kinematics' axes, when rotated
        // The point values a host sees: in the law's frame when it has one, else in
        // the axes of the kinematics (the plane's axes of the planar physics).
        void output(double* stress, double* strain) const {
            if (rotated && !law_frame) {
                global_stress(stress);
                for (unsigned k = 0; k < NS; ++k) strain[k] = eps_axes[k];
            } else {
                for (unsigned k = 0; k < NS; ++k) {
                    stress[k] = S[k];
                    strain[k] = eps[k];
                }
            }
        }
        // S in the axes of the kinematics: T^T S when rotated.
        void global_stress(double* Sg) const {
            if (NS != 6 || !rotated) {
                for (unsigned k = 0; k < NS; ++k) Sg[k] = S[k];
                return;
            }
            for (unsigned c = 0; c < NS; ++c) {
                double v = 0.0;
                for (unsigned r = 0; r < 6; ++r) v += T[r][c] * S[r];
                Sg[c] = v;
            }
        }
    };

    // The planar physics work in the axes (x0, x1, third) of their plane: x0 and x1
    // are the global directions of the DOF slots, the third the remaining one (the
    // normal of plane strain, the hoop direction of the axisymmetric physics, whose
    // r and z are the global x and y). The solids work in the global axes.
    static constexpr bool planar = !Kin::surface && Shape::dim == 2;

    // The law's frame at the point, in the axes of the kinematics; false for the
    // identity.
    // `has_frame` tells whether the law has a frame (else only the plane's axes are
    // permuted into the global ones).
    bool frame_at(const stiffness_input& in, const mesh_material& law, const point_geometry<NN>& geo,
                  const double (*X)[3], double* Q, bool& has_frame) const {
        has_frame = false;
        if constexpr (NS != 6) {
            (void)in, (void)law, (void)geo, (void)X, (void)Q;
            return false;
        } else {
            double x[3];
            position(geo, X, x);
            if constexpr (!planar) {
                return has_frame = law.material_frame(x, Q);
            } else {
                unsigned axis[3] = {in.physics->DOF_slot(0) % 3, in.physics->DOF_slot(1) % 3, 0};
                axis[2] = 3 - axis[0] - axis[1];
                if (axis[0] == axis[1] || axis[2] > 2) return false;
                // A law without a frame is in the global axes: the plane's axes are
                // then only permuted into them (plane strain about x or y).
                double xg[3] = {0, 0, 0}, Qg[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
                xg[axis[0]] = x[0];
                xg[axis[1]] = x[1];
                has_frame = law.material_frame(xg, Qg);
                for (unsigned k = 0; k < 3; ++k)
                    for (unsigned m = 0; m < 3; ++m) Q[3 * k + m] = Qg[3 * axis[k] + m];
                return has_frame || axis[0] != 0 || axis[1] != 1;
            }
        }
    }

    // Geometry, strain, rows and law at point p; the strain and rows are those of the
    // law's frame when it has one.
    int evaluate(const stiffness_input& in, const mesh_material& law, const element_data& ed, unsigned p,
                 const double (*X)[3], const double* u, unsigned flags, point_state& ps) const {
        Kin::geometry(table, p, X, ps.geo);
        strain_B(ed, p, ps.geo, u, ps.eps, ps.B, ps.W);
        double Q[9];
        if constexpr (NS == 6) {
            ps.rotated = frame_at(in, law, ps.geo, X, Q, ps.law_frame);
            if (ps.rotated) {
                for (unsigned r = 0; r < 6; ++r) ps.eps_axes[r] = ps.eps[r];
                strain_rotation(Q, ps.T);
                double e[6];
                for (unsigned r = 0; r < 6; ++r) {
                    e[r] = 0.0;
                    for (unsigned c = 0; c < 6; ++c) e[r] += ps.T[r][c] * ps.eps[c];
                }
                for (unsigned r = 0; r < 6; ++r) ps.eps[r] = e[r];
                for (unsigned a = 0; a < NDOF; ++a) {
                    double b[6];
                    for (unsigned r = 0; r < 6; ++r) {
                        b[r] = 0.0;
                        for (unsigned c = 0; c < 6; ++c) b[r] += ps.T[r][c] * ps.B[c][a];
                    }
                    for (unsigned r = 0; r < 6; ++r) ps.B[r][a] = b[r];
                }
            }
        } else {
            (void)Q;
        }
        material_point_key key;
        key.element = in.element;
        key.point = table.point[p].ID;
        key.step = in.params ? in.params->law_step[0] % 50u : 0u;
        for (unsigned k = 0; k < NS; ++k) ps.S[k] = 0.0;
        ps.e = 0.0;
        return law.compute(key, ps.eps, ps.D, ps.S, ps.e, flags, in.params ? *in.params : assembly_params());
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
