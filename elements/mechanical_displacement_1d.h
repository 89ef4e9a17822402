// Kinematics of the rod: an edge in 3-D, three displacement DOFs per node, one axial
// strain along the element's axis. The law gives the axial force (the area is in the
// adapter).
//   _lin:  e = a . t, a = du / ds along the original axis t;
//   _gnld: the axis is that of the current positions, e = (l - L) / L, and the
//          geometric term w g_i g_j s is added on pairs of one direction;
//   _gnl:  Green-Lagrange e = a . t + a . a / 2; the force is the law's stress times
//          the stretch |t + a| along the current axis, which is B' S with the B row
//          g_i (t + a): no further factor is applied.
#pragma once

#include <cmath>
#include <type_traits>

#include "elements/mesh_kinematics.h"
#include "elements/physics_model_base.h"

namespace orv {
namespace core {

template <class StrainTag, class TransformationTag>
struct mechanical_displacement_1d_kinematics {
    using physics_type = mechanical_displacement_1d;
    static constexpr bool finite_strain = std::is_same<StrainTag, finite_strain_tag>::value;
    static constexpr bool finite = std::is_same<TransformationTag, finite_transformation_tag>::value;
    static constexpr unsigned nbr_dofs = 3;
    static constexpr unsigned nbr_strains = 1;
    static constexpr bool axi = false;
    // whether the point geometry carries the element's local frame (T)
    static constexpr bool element_frame = true;
    static constexpr bool surface = false;

    template <class Table, unsigned NN>
    static void geometry(const Table& t, unsigned p, const double (*X)[3], point_geometry<NN>& geo) {
        line_geometry(t, p, X, geo);
    }

    template <unsigned NN>
    static void derivative(const point_geometry<NN>& geo, const double* u, double* a) {
        a[0] = a[1] = a[2] = 0.0;
        for (unsigned i = 0; i < NN; ++i)
            for (unsigned d = 0; d < 3; ++d) a[d] += u[3 * i + d] * geo.g[i][0];
    }

    template <unsigned NN>
    static void strain_B(const point_geometry<NN>& geo, const double* u, double* eps, double (*B)[3 * NN]) {
        double a[3];
        derivative(geo, u, a);
        const double* t = geo.T[0];
        double f[3] = {t[0], t[1], t[2]};
        if (finite && finite_strain) {
            for (int d = 0; d < 3; ++d) f[d] += a[d];
            eps[0] = t[0] * a[0] + t[1] * a[1] + t[2] * a[2] + 0.5 * (a[0] * a[0] + a[1] * a[1] + a[2] * a[2]);
        } else if (finite) {
            // current axis and engineering stretch
            const double c[3] = {t[0] + a[0], t[1] + a[1], t[2] + a[2]};
            const double l = std::sqrt(c[0] * c[0] + c[1] * c[1] + c[2] * c[2]);
            if (l > 0.0)
                for (int d = 0; d < 3; ++d) f[d] = c[d] / l;
            eps[0] = l - 1.0;
        } else {
            eps[0] = t[0] * a[0] + t[1] * a[1] + t[2] * a[2];
        }
        for (unsigned i = 0; i < NN; ++i)
            for (unsigned d = 0; d < 3; ++d) B[0][3 * i + d] = geo.g[i][0] * f[d];
    }

    template <unsigned NN>
    static void add_geometric(const point_geometry<NN>& geo, const double* S, double w, double* K) {
        constexpr unsigned n = 3 * NN;
        for (unsigned i = 0; i < NN; ++i)
            for (unsigned j = 0; j <= i; ++j) {
                const double v = w * geo.g[i][0] * geo.g[j][0] * S[0];
                for (unsigned d = 0; d < 3; ++d) K[(3 * i + d) * n + 3 * j + d] += v;
            }
    }
};

}  // namespace core
}  // namespace orv
