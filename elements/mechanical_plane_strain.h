// Kinematics of the planar continua: plane strain, and the axisymmetric solid with
// and without torsion. Two in-plane coordinates x0, x1 (r, z for the axisymmetric
// physics); DOFs per node: the two in-plane displacements, and the hoop one for the
// torsion physics. Strains keep the six slots of the solid law:
//   plane strain:  E11, E22, 0, 2 E12, 0, 0
//   axisymmetric:  E11 (radial), E22 (axial), E33 (hoop), 2 E12, 0, 0
//   with torsion:  the same with the torsion shears 2 E13 (r, theta) and 2 E23
//                  (z, theta) in slots 4 and 5.
#pragma once

#include <type_traits>

#include "elements/mesh_kinematics.h"
#include "elements/physics_model_base.h"

namespace orv {
namespace core {

enum class planar_mode { plane_strain, axi, axi_torsion };

template <planar_mode Mode, class StrainTag, class TransformationTag>
struct planar_kinematics {
    using physics_type = std::conditional_t<Mode == planar_mode::plane_strain, mechanical_plane_strain,
                                            std::conditional_t<Mode == planar_mode::axi, mechanical_displacement_axi3d,
                                                               mechanical_displacement_axi_torsion>>;
    static constexpr bool finite = std::is_same<StrainTag, finite_strain_tag>::value;
    static constexpr unsigned nbr_dofs = Mode == planar_mode::axi_torsion ? 3 : 2;
    static constexpr unsigned nbr_strains = 6;
    static constexpr bool axi = Mode != planar_mode::plane_strain;
    // whether the point geometry carries the element's local frame (T)
    static constexpr bool element_frame = false;
    static constexpr bool surface = false;
    static_assert(!(finite && Mode == planar_mode::axi_torsion), "the torsion physics is small strain only");

    template <class Table, unsigned NN>
    static void geometry(const Table& t, unsigned p, const double (*X)[3], point_geometry<NN>& geo) {
        planar_geometry(t, p, X, geo);
    }

    // 1 / r of a point, 0 on or across the axis.
    template <unsigned NN>
    static double inverse_radius(const point_geometry<NN>& geo) {
        return axi && geo.r > 0.0 ? 1.0 / geo.r : 0.0;
    }

    // Strains in the axes of the plane (x0, x1, normal or hoop); the server turns
    // them into a law's material frame.
    template <unsigned NN>
    static void strain_B(const point_geometry<NN>& geo, const double* u, double* eps, double (*B)[nbr_dofs * NN]) {
        constexpr unsigned nd = nbr_dofs;
        double H[4] = {0, 0, 0, 0};  // H(d, k) = du_d / dx_k, in-plane
        double ur = 0.0;             // radial displacement at the point
        double ut = 0.0, gt[2] = {0, 0};
        for (unsigned i = 0; i < NN; ++i) {
            for (unsigned d = 0; d < 2; ++d) {
                const double ud = u[nd * i + d];
                H[2 * d + 0] += ud * geo.g[i][0];
                H[2 * d + 1] += ud * geo.g[i][1];
            }
            ur += geo.N[i] * u[nd * i];
            if constexpr (nd == 3) {
                const double uh = u[nd * i + 2];
                ut += geo.N[i] * uh;
                gt[0] += uh * geo.g[i][0];
                gt[1] += uh * geo.g[i][1];
            }
        }
        const double ir = inverse_radius(geo);
        double F[4] = {1, 0, 0, 1};
        if (finite) {
            for (int k = 0; k < 4; ++k) F[k] += H[k];
            const double G00 = H[0] * H[0] + H[2] * H[2], G11 = H[1] * H[1] + H[3] * H[3];
            const double G01 = H[0] * H[1] + H[2] * H[3];
            eps[0] = H[0] + 0.5 * G00;
            eps[1] = H[3] + 0.5 * G11;
            eps[3] = H[1] + H[2] + G01;
        } else {
            eps[0] = H[0];
            eps[1] = H[3];
            eps[3] = H[1] + H[2];
        }
        const double e = ur * ir;  // hoop stretch u / r
        eps[2] = axi ? (finite ? e * (1.0 + 0.5 * e) : e) : 0.0;
        eps[4] = nd == 3 ? gt[0] - ut * ir : 0.0;
        eps[5] = nd == 3 ? gt[1] : 0.0;
        for (unsigned i = 0; i < NN; ++i) {
            const double a = geo.g[i][0], b = geo.g[i][1];
            for (unsigned d = 0; d < 2; ++d) {
                const double* R = F + 2 * d;
                const unsigned col = nd * i + d;
                B[0][col] = a * R[0];
                B[1][col] = b * R[1];
                B[2][col] = (axi && d == 0) ? geo.N[i] * ir * (finite ? 1.0 + e : 1.0) : 0.0;
                B[3][col] = b * R[0] + a * R[1];
                B[4][col] = 0.0;
                B[5][col] = 0.0;
            }
            if constexpr (nd == 3) {
                const unsigned col = nd * i + 2;
                for (unsigned k = 0; k < 4; ++k) B[k][col] = 0.0;
                B[4][col] = a - geo.N[i] * ir;
                B[5][col] = b;
            }
        }
    }

    // Geometric stiffness: w g_i^T S g_j on in-plane pairs of one direction, and for
    // the axisymmetric form the hoop term w S33 N_i N_j / r^2 on radial pairs.
    template <unsigned NN>
    static void add_geometric(const point_geometry<NN>& geo, const double* S, double w, double* K) {
        constexpr unsigned nd = nbr_dofs, n = nd * NN;
        const double ir = inverse_radius(geo);
        for (unsigned i = 0; i < NN; ++i) {
            const double s0 = S[0] * geo.g[i][0] + S[3] * geo.g[i][1];
            const double s1 = S[3] * geo.g[i][0] + S[1] * geo.g[i][1];
            for (unsigned j = 0; j <= i; ++j) {
                const double v = w * (s0 * geo.g[j][0] + s1 * geo.g[j][1]);
                K[(nd * i + 0) * n + nd * j + 0] += v + (axi ? w * S[2] * geo.N[i] * geo.N[j] * ir * ir : 0.0);
                K[(nd * i + 1) * n + nd * j + 1] += v;
            }
        }
    }
};

template <class S, class T>
using mechanical_plane_strain_kinematics = planar_kinematics<planar_mode::plane_strain, S, T>;
template <class S, class T>
using mechanical_displacement_axi3d_kinematics = planar_kinematics<planar_mode::axi, S, T>;
template <class S, class T>
using mechanical_displacement_axi_torsion_kinematics = planar_kinematics<planar_mode::axi_torsion, S, T>;

}  // namespace core
}  // namespace orv
