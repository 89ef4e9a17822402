// Geometry of a local point of a mesh element: Jacobian, its closed inverse and the
// Cartesian gradients of the shape functions. Lower dimensions embed into the 3 x 3
// forms. Shared by the kernels of the continuum physics.
#pragma once

#include <cmath>

namespace orv {
namespace core {

// Tags of the two halves of a physics' kinematics.
struct small_strain_tag {};
struct finite_strain_tag {};
struct small_transformation_tag {};
struct finite_transformation_tag {};

// What a kernel knows of one point: shape values, Cartesian gradients (3 slots, unused
// ones 0), the integration weight (rule weight times det J, times 2 pi r for the
// axisymmetric physics) and the interpolated first coordinate r.
// The surface and line physics also keep the local triad of the point (rows e1, e2,
// e3), their gradients g being along e1 and e2 (e1 only for a line).
template <unsigned NN>
struct point_geometry {
    double N[NN];
    double g[NN][3];
    double w;
    double detJ;
    double r;
    double T[3][3];
};

// Inverse of a 3 x 3 matrix (row-major); returns the determinant. A zero determinant
// leaves the inverse at 0.
inline double inverse_3x3(const double* J, double* inv) {
    const double c00 = J[4] * J[8] - J[5] * J[7];
    const double c01 = J[5] * J[6] - J[3] * J[8];
    const double c02 = J[3] * J[7] - J[4] * J[6];
    const double det = J[0] * c00 + J[1] * c01 + J[2] * c02;
    if (det == 0.0) {
        for (int k = 0; k < 9; ++k) inv[k] = 0.0;
        return 0.0;
    }
    const double d = 1.0 / det;
    inv[0] = c00 * d;
    inv[1] = (J[2] * J[7] - J[1] * J[8]) * d;
    inv[2] = (J[1] * J[5] - J[2] * J[4]) * d;
    inv[3] = c01 * d;
    inv[4] = (J[0] * J[8] - J[2] * J[6]) * d;
    inv[5] = (J[2] * J[3] - J[0] * J[5]) * d;
    inv[6] = c02 * d;
    inv[7] = (J[1] * J[6] - J[0] * J[7]) * d;
    inv[8] = (J[0] * J[4] - J[1] * J[3]) * d;
    return det;
}

// Solid point: J(a, b) = sum_i dN_i/dxi_a x_i,b, gradients g_i = J^-1 dN_i.
template <class Table, unsigned NN = Table::nbr_nodes>
void solid_geometry(const Table& t, unsigned p, const double (*X)[3], point_geometry<NN>& geo) {
    double J[9] = {0, 0, 0, 0, 0, 0, 0, 0, 0};
    for (unsigned i = 0; i < NN; ++i)
        for (unsigned a = 0; a < 3; ++a) {
            const double d = t.dN[p][i][a];
            J[3 * a + 0] += d * X[i][0];
            J[3 * a + 1] += d * X[i][1];
            J[3 * a + 2] += d * X[i][2];
        }
    double inv[9];
    geo.detJ = inverse_3x3(J, inv);
    geo.w = t.point[p].weight * geo.detJ;
    geo.r = 0.0;
    for (unsigned i = 0; i < NN; ++i) {
        geo.N[i] = t.N[p][i];
        geo.r += geo.N[i] * X[i][0];
        for (unsigned b = 0; b < 3; ++b)
            geo.g[i][b] =
                inv[3 * b + 0] * t.dN[p][i][0] + inv[3 * b + 1] * t.dN[p][i][1] + inv[3 * b + 2] * t.dN[p][i][2];
    }
}

// The end of a point of a 2-D parametric map whose Jacobian [[a, b], [c, d]] maps
// the in-plane gradients to the parametric ones ([dN/dxi, dN/deta] = J [g1, g2]):
// weights, shape values, the radius (first coordinate) and the gradients, whose third
// slot is 0. A singular J gives zero gradients and weight.
template <class Table, unsigned NN>
void plane_gradients(const Table& t, unsigned p, const double (*X)[3], double a, double b, double c, double d,
                     point_geometry<NN>& geo) {
    const double det = a * d - b * c;
    const double inv[4] = {det != 0.0 ? d / det : 0.0, det != 0.0 ? -b / det : 0.0, det != 0.0 ? -c / det : 0.0,
                           det != 0.0 ? a / det : 0.0};
    geo.detJ = det;
    geo.w = t.point[p].weight * det;
    geo.r = 0.0;
    for (unsigned i = 0; i < NN; ++i) {
        geo.N[i] = t.N[p][i];
        geo.r += geo.N[i] * X[i][0];
        geo.g[i][0] = inv[0] * t.dN[p][i][0] + inv[1] * t.dN[p][i][1];
        geo.g[i][1] = inv[2] * t.dN[p][i][0] + inv[3] * t.dN[p][i][1];
        geo.g[i][2] = 0.0;
    }
}

// Planar point: the first two coordinates of X are the plane's; the third slot of the
// gradients is 0.
template <class Table, unsigned NN = Table::nbr_nodes>
void planar_geometry(const Table& t, unsigned p, const double (*X)[3], point_geometry<NN>& geo) {
    double J[4] = {0, 0, 0, 0};
    for (unsigned i = 0; i < NN; ++i)
        for (unsigned a = 0; a < 2; ++a) {
            J[2 * a + 0] += t.dN[p][i][a] * X[i][0];
            J[2 * a + 1] += t.dN[p][i][a] * X[i][1];
        }
    plane_gradients(t, p, X, J[0], J[1], J[2], J[3], geo);
}

// The rotation of six-slot strains (E11, E22, E33, 2 E12, 2 E13, 2 E23) into a frame
// whose axis k has the components Q(d, k) (row-major, one axis per column):
// e' = T e with e'_kl = sum_df Q(d, k) Q(f, l) e_df, the shears kept doubled. The
// same T turns B rows (B' = T B) and takes stresses back (s = T^T s'), since the
// work s . e is the same in both frames.
inline void strain_rotation(const double* Q, double (*T)[6]) {
    static const unsigned pair[6][2] = {{0, 0}, {1, 1}, {2, 2}, {0, 1}, {0, 2}, {1, 2}};
    for (unsigned r = 0; r < 6; ++r) {
        const unsigned k = pair[r][0], l = pair[r][1];
        const double out = k == l ? 1.0 : 2.0;
        for (unsigned c = 0; c < 6; ++c) {
            const unsigned d = pair[c][0], f = pair[c][1];
            const double v = d == f ? Q[3 * d + k] * Q[3 * d + l]
                                    : 0.5 * (Q[3 * d + k] * Q[3 * f + l] + Q[3 * f + k] * Q[3 * d + l]);
            T[r][c] = out * v;
        }
    }
}

inline bool triad_from(const double* a, const double* b, double (*T)[3]);

// Surface point in 3-D: tangents t1, t2 (rows 0 and 1 of J), the triad of the point
// with e1 along t1, the area factor |t1 x t2| and the gradients along e1, e2.
template <class Table, unsigned NN = Table::nbr_nodes>
void surface_geometry(const Table& t, unsigned p, const double (*X)[3], point_geometry<NN>& geo) {
    double t1[3] = {0, 0, 0}, t2[3] = {0, 0, 0};
    for (unsigned i = 0; i < NN; ++i)
        for (unsigned c = 0; c < 3; ++c) {
            t1[c] += t.dN[p][i][0] * X[i][c];
            t2[c] += t.dN[p][i][1] * X[i][c];
        }
    for (auto& row : geo.T)
        for (double& v : row) v = 0.0;
    triad_from(t1, t2, geo.T);
    const double a = t1[0] * geo.T[0][0] + t1[1] * geo.T[0][1] + t1[2] * geo.T[0][2];
    const double b = t1[0] * geo.T[1][0] + t1[1] * geo.T[1][1] + t1[2] * geo.T[1][2];
    const double c = t2[0] * geo.T[0][0] + t2[1] * geo.T[0][1] + t2[2] * geo.T[0][2];
    const double d = t2[0] * geo.T[1][0] + t2[1] * geo.T[1][1] + t2[2] * geo.T[1][2];
    plane_gradients(t, p, X, a, b, c, d, geo);
}

// Line point in 3-D: the tangent t (J), e1 along it, the length factor |t| and the
// gradients along e1; e2, e3 complete the triad with the global axis least aligned
// with e1.
template <class Table, unsigned NN = Table::nbr_nodes>
void line_geometry(const Table& t, unsigned p, const double (*X)[3], point_geometry<NN>& geo) {
    double t1[3] = {0, 0, 0};
    for (unsigned i = 0; i < NN; ++i)
        for (unsigned c = 0; c < 3; ++c) t1[c] += t.dN[p][i][0] * X[i][c];
    const double l = std::sqrt(t1[0] * t1[0] + t1[1] * t1[1] + t1[2] * t1[2]);
    unsigned k = 0;
    for (unsigned c = 1; c < 3; ++c)
        if (std::fabs(t1[c]) < std::fabs(t1[k])) k = c;
    double other[3] = {0, 0, 0};
    other[k] = 1.0;
    for (auto& row : geo.T)
        for (double& v : row) v = 0.0;
    triad_from(t1, other, geo.T);
    geo.detJ = l;
    geo.w = t.point[p].weight * l;
    geo.r = 0.0;
    for (unsigned i = 0; i < NN; ++i) {
        geo.N[i] = t.N[p][i];
        geo.r += geo.N[i] * X[i][0];
        geo.g[i][0] = l > 0.0 ? t.dN[p][i][0] / l : 0.0;
        geo.g[i][1] = geo.g[i][2] = 0.0;
    }
}

// Orthonormal triad from two vectors, by Gram-Schmidt: e1 along a, e2 in the plane of
// a and b, e3 = e1 x e2. Rows of T are the axes. False when a is null or b parallel.
inline bool triad_from(const double* a, const double* b, double (*T)[3]) {
    const double la = std::sqrt(a[0] * a[0] + a[1] * a[1] + a[2] * a[2]);
    if (!(la > 0.0)) return false;
    for (int k = 0; k < 3; ++k) T[0][k] = a[k] / la;
    const double d = b[0] * T[0][0] + b[1] * T[0][1] + b[2] * T[0][2];
    double c[3] = {b[0] - d * T[0][0], b[1] - d * T[0][1], b[2] - d * T[0][2]};
    const double lc = std::sqrt(c[0] * c[0] + c[1] * c[1] + c[2] * c[2]);
    if (!(lc > 0.0)) return false;
    for (int k = 0; k < 3; ++k) T[1][k] = c[k] / lc;
    T[2][0] = T[0][1] * T[1][2] - T[0][2] * T[1][1];
    T[2][1] = T[0][2] * T[1][0] - T[0][0] * T[1][2];
    T[2][2] = T[0][0] * T[1][1] - T[0][1] * T[1][0];
    return true;
}

}  // namespace core
}  // namespace orv
