// Kinematics of the 3-D solid: strain, strain-displacement matrix B and geometric
// stiffness at a point, for the small (_lin) and the total Lagrangian (_gnl) forms.
//
// DOFs of an element are numbered node by node, three per node (x, y, z): local
// index 3 i + d. Strains use six slots E11, E22, E33, 2 E12, 2 E13, 2 E23.
#pragma once

#include <type_traits>

#include "elements/mesh_kinematics.h"
#include "elements/physics_model_base.h"

namespace orv {
namespace core {

template <class StrainTag, class TransformationTag>
struct mechanical_displacement_3d_kinematics {
    using physics_type = mechanical_displacement_3d;
    static constexpr bool finite = std::is_same<StrainTag, finite_strain_tag>::value;
    static constexpr unsigned nbr_dofs = 3;
    static constexpr unsigned nbr_strains = 6;
    static constexpr bool axi = false;
    // whether the point geometry carries the element's local frame (T)
    static constexpr bool element_frame = false;
    static constexpr bool surface = false;
    static constexpr unsigned kinematics = finite ? kinematics_gnl : kinematics_lin;

    template <class Table, unsigned NN>
    static void geometry(const Table& t, unsigned p, const double (*X)[3], point_geometry<NN>& geo) {
        solid_geometry(t, p, X, geo);
    }

    // Strain and B rows at a point from the element displacements u (3 per node), in
    // the global axes (the server turns them into a law's material frame).
    template <unsigned NN>
    static void strain_B(const point_geometry<NN>& geo, const double* u, double* eps, double (*B)[3 * NN]) {
        double F[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
        double H[9] = {0, 0, 0, 0, 0, 0, 0, 0, 0};
        const auto& g = geo.g;
        // H(d, k) = sum_i u_i,d g_i,k
        for (unsigned i = 0; i < NN; ++i)
            for (unsigned d = 0; d < 3; ++d) {
                const double ud = u[3 * i + d];
                if (ud == 0.0) continue;
                for (unsigned k = 0; k < 3; ++k) H[3 * d + k] += ud * g[i][k];
            }
        if (finite) {
            for (unsigned k = 0; k < 9; ++k) F[k] += H[k];
            double G[9];
            for (unsigned k = 0; k < 3; ++k)
                for (unsigned l = 0; l < 3; ++l) G[3 * k + l] = H[k] * H[l] + H[3 + k] * H[3 + l] + H[6 + k] * H[6 + l];
            eps[0] = H[0] + 0.5 * G[0];
            eps[1] = H[4] + 0.5 * G[4];
            eps[2] = H[8] + 0.5 * G[8];
            eps[3] = H[1] + H[3] + G[1];
            eps[4] = H[2] + H[6] + G[2];
            eps[5] = H[5] + H[7] + G[5];
        } else {
            eps[0] = H[0];
            eps[1] = H[4];
            eps[2] = H[8];
            eps[3] = H[1] + H[3];
            eps[4] = H[2] + H[6];
            eps[5] = H[5] + H[7];
        }
        for (unsigned i = 0; i < NN; ++i) {
            const double a = g[i][0], b = g[i][1], c = g[i][2];
            for (unsigned d = 0; d < 3; ++d) {
                const double* R = F + 3 * d;
                const unsigned col = 3 * i + d;
                B[0][col] = a * R[0];
                B[1][col] = b * R[1];
                B[2][col] = c * R[2];
                B[3][col] = b * R[0] + a * R[1];
                B[4][col] = c * R[0] + a * R[2];
                B[5][col] = c * R[1] + b * R[2];
            }
        }
    }

    // Geometric stiffness w g_i^T S g_j on pairs of DOFs of the same direction;
    // K is the element's full row-major matrix of size 3 NN (lower triangle used).
    template <unsigned NN>
    static void add_geometric(const point_geometry<NN>& geo, const double* S, double w, double* K) {
        constexpr unsigned n = 3 * NN;
        const double s[3][3] = {{S[0], S[3], S[4]}, {S[3], S[1], S[5]}, {S[4], S[5], S[2]}};
        for (unsigned i = 0; i < NN; ++i) {
            double sg[3];
            for (unsigned k = 0; k < 3; ++k)
                sg[k] = s[k][0] * geo.g[i][0] + s[k][1] * geo.g[i][1] + s[k][2] * geo.g[i][2];
            for (unsigned j = 0; j <= i; ++j) {
                const double v = w * (sg[0] * geo.g[j][0] + sg[1] * geo.g[j][1] + sg[2] * geo.g[j][2]);
                for (unsigned d = 0; d < 3; ++d) K[(3 * i + d) * n + 3 * j + d] += v;
            }
        }
    }
};

using mechanical_displacement_3d_lin =
    mechanical_displacement_3d_kinematics<small_strain_tag, small_transformation_tag>;
using mechanical_displacement_3d_gnl =
    mechanical_displacement_3d_kinematics<finite_strain_tag, finite_transformation_tag>;

}  // namespace core
}  // namespace orv
