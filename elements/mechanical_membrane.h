// Kinematics of the membrane: a surface in 3-D with three displacement DOFs per node
// and the three in-plane strains E11, E22, 2 E12 of the point's local frame (e1 along
// the first tangent). The law gives forces per unit length (the thickness is in D).
#pragma once

#include <type_traits>

#include "elements/mesh_kinematics.h"
#include "elements/physics_model_base.h"

namespace orv {
namespace core {

template <class StrainTag, class TransformationTag>
struct mechanical_membrane_kinematics {
    using physics_type = mechanical_membrane;
    static constexpr bool finite = std::is_same<StrainTag, finite_strain_tag>::value;
    static constexpr unsigned nbr_dofs = 3;
    static constexpr unsigned nbr_strains = 3;
    static constexpr bool axi = false;
    // whether the point geometry carries the element's local frame (T)
    static constexpr bool element_frame = true;
    static constexpr bool surface = true;

    template <class Table, unsigned NN>
    static void geometry(const Table& t, unsigned p, const double (*X)[3], point_geometry<NN>& geo) {
        surface_geometry(t, p, X, geo);
    }

    // a_k = du / dx_k along e1, e2 (3-vectors); small: E11 = e1 . a1, E22 = e2 . a2,
    // 2 E12 = e1 . a2 + e2 . a1; finite: the same with the quadratic terms a1 . a1 / 2,
    // a2 . a2 / 2 and a1 . a2, out-of-plane stretching included.
    template <unsigned NN>
    static void strain_B(const point_geometry<NN>& geo, const double* u, double* eps, double (*B)[3 * NN]) {
        double a1[3] = {0, 0, 0}, a2[3] = {0, 0, 0};
        for (unsigned i = 0; i < NN; ++i)
            for (unsigned d = 0; d < 3; ++d) {
                a1[d] += u[3 * i + d] * geo.g[i][0];
                a2[d] += u[3 * i + d] * geo.g[i][1];
            }
        const double* e1 = geo.T[0];
        const double* e2 = geo.T[1];
        auto dot = [](const double* x, const double* y) { return x[0] * y[0] + x[1] * y[1] + x[2] * y[2]; };
        double f1[3], f2[3];  // e_k + a_k for the finite form, e_k otherwise
        for (int d = 0; d < 3; ++d) {
            f1[d] = e1[d] + (finite ? a1[d] : 0.0);
            f2[d] = e2[d] + (finite ? a2[d] : 0.0);
        }
        eps[0] = dot(e1, a1) + (finite ? 0.5 * dot(a1, a1) : 0.0);
        eps[1] = dot(e2, a2) + (finite ? 0.5 * dot(a2, a2) : 0.0);
        eps[2] = dot(e1, a2) + dot(e2, a1) + (finite ? dot(a1, a2) : 0.0);
        for (unsigned i = 0; i < NN; ++i) {
            const double g1 = geo.g[i][0], g2 = geo.g[i][1];
            for (unsigned d = 0; d < 3; ++d) {
                const unsigned col = 3 * i + d;
                B[0][col] = g1 * f1[d];
                B[1][col] = g2 * f2[d];
                B[2][col] = g2 * f1[d] + g1 * f2[d];
            }
        }
    }

    template <unsigned NN>
    static void add_geometric(const point_geometry<NN>& geo, const double* S, double w, double* K) {
        constexpr unsigned n = 3 * NN;
        for (unsigned i = 0; i < NN; ++i) {
            const double s1 = S[0] * geo.g[i][0] + S[2] * geo.g[i][1];
            const double s2 = S[2] * geo.g[i][0] + S[1] * geo.g[i][1];
            for (unsigned j = 0; j <= i; ++j) {
                const double v = w * (s1 * geo.g[j][0] + s2 * geo.g[j][1]);
                for (unsigned d = 0; d < 3; ++d) K[(3 * i + d) * n + 3 * j + d] += v;
            }
        }
    }
};

}  // namespace core
}  // namespace orv
