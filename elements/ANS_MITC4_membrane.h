// Assumed in-plane strains of the four-node quadrilateral (plane strain and membrane).
//
// The covariant strains e_rr, e_ss and 2 e_rs are not taken at the point: they are
// interpolated from five tying values, e_rr at the mid-sides A (0, 1) and B (0, -1),
// e_ss at C (1, 0) and D (-1, 0), and the shear 2 e_rs at the centre E. With the
// centre basis x_r, x_s and the distortion vector x_rs = x_d (the twist of the
// bilinear map), x_d = r_c x_r + s_c x_s on the mid surface; the bilinear element's
// strains contain the term x_d . u_d, which is recovered from the tying values as
// c = a_A e_A + a_B e_B + a_C e_C + a_D e_D + a_E g_E and removed:
//   m1 = (e_A + e_B) / 2 - c                      (= x_r . u_r)
//   m2 = (e_C + e_D) / 2 - c                      (= x_s . u_s)
//   l1 = (e_A - e_B) / 2 - (2 r_c m1 + s_c g_E)   (= x_r . (u_d - r_c u_r - s_c u_s))
//   l2 = (e_C - e_D) / 2 - (2 s_c m2 + r_c g_E)   (= x_s . (u_d - r_c u_r - s_c u_s))
//   E_rr = m1 + l1 s',  E_ss = m2 + l2 r',  2 E_rs = g_E + l1 r' + l2 s'
// with r' = (J_E / J) r and s' = (J_E / J) s (J: area factor of the point, J_E at the
// centre). l1 and l2 vanish for every linear displacement field, so the assumed
// strains of a constant strain state are the centre's covariant strains; they are
// turned into Cartesian components with the centre's contravariant basis, which keeps
// constant strain exact on any distorted patch. On a flat element under small strain
// the correction and the area scale cancel: the assumed strains are the displacement
// strains (a parallelogram, r_c = s_c = 0, trivially so). The interpolation acts where
// x_d leaves the plane of x_r, x_s (warped membranes) and in the finite form, which
// applies the same combination to the Green-Lagrange covariant strains at the tying
// points (all zero for a rigid motion).
#pragma once

#include <cmath>

#include "elements/local_point.h"

namespace orv {
namespace core {

template <class Shape>
class ANS_MITC4_membrane {
public:
    static constexpr unsigned NN = Shape::nbr_nodes;
    static constexpr unsigned NT = 5;  // A, B, C, D, E
    static_assert(NN == 4 && Shape::dim == 2, "the assumed membrane strains are those of the faceQ4");

    elfes::local_point tying[NT];
    double dN[NT][NN][2];

    ANS_MITC4_membrane() {
        const double rs[NT][2] = {{0, 1}, {0, -1}, {1, 0}, {-1, 0}, {0, 0}};
        for (unsigned t = 0; t < NT; ++t) {
            tying[t] = elfes::local_point(elfes::on_face, t, 0.0, rs[t][0], rs[t][1]);
            Shape::gradients(tying[t].coord, dN[t]);
        }
    }

    // What compose() computes for one element: the tying strains e_A, e_B, e_C, e_D,
    // g_E, their rows (derivatives by the element's DOFs, ND per node), the centre
    // contravariant basis and area factor, r_c, s_c and the five coefficients.
    template <unsigned ND>
    struct element_data {
        double e[NT];
        double B[NT][ND * NN];
        double gr[3], gs[3];
        double JE;
        double rc, sc;
        double a[NT];
    };

    // The tying strains of the element with nodes X and displacements u (ND per node;
    // ND = 2: the first two coordinates only).
    template <unsigned ND, bool Finite>
    void compose(const double (*X)[3], const double* u, element_data<ND>& d) const {
        constexpr unsigned nc = ND < 3 ? 2 : 3;
        double xa[NT][3] = {}, xb[NT][3] = {}, ua[NT][3] = {}, ub[NT][3] = {};
        for (unsigned t = 0; t < NT; ++t)
            for (unsigned i = 0; i < NN; ++i)
                for (unsigned c = 0; c < nc; ++c) {
                    xa[t][c] += dN[t][i][0] * X[i][c];
                    xb[t][c] += dN[t][i][1] * X[i][c];
                    ua[t][c] += dN[t][i][0] * u[ND * i + c];
                    ub[t][c] += dN[t][i][1] * u[ND * i + c];
                }
        auto dot = [](const double* x, const double* y) { return x[0] * y[0] + x[1] * y[1] + x[2] * y[2]; };
        const double* xr = xa[4];
        const double* xs = xb[4];
        double xd[3];
        for (unsigned c = 0; c < 3; ++c) xd[c] = 0.5 * (xa[0][c] - xa[1][c]);
        const double g11 = dot(xr, xr), g12 = dot(xr, xs), g22 = dot(xs, xs);
        const double det = g11 * g22 - g12 * g12;
        const double id = det > 0.0 ? 1.0 / det : 0.0;
        for (unsigned c = 0; c < 3; ++c) {
            d.gr[c] = (g22 * xr[c] - g12 * xs[c]) * id;
            d.gs[c] = (g11 * xs[c] - g12 * xr[c]) * id;
        }
        d.JE = det > 0.0 ? std::sqrt(det) : 0.0;
        d.rc = dot(xd, d.gr);
        d.sc = dot(xd, d.gs);
        const double q = d.rc * d.rc + d.sc * d.sc - 1.0;
        const double k = q == 0.0 ? 0.0 : 0.5 / q;
        d.a[0] = (d.rc - 1.0) * d.rc * k;
        d.a[1] = (d.rc + 1.0) * d.rc * k;
        d.a[2] = (d.sc - 1.0) * d.sc * k;
        d.a[3] = (d.sc + 1.0) * d.sc * k;
        d.a[4] = 2.0 * d.rc * d.sc * k;
        const double f = Finite ? 1.0 : 0.0;
        for (unsigned t = 0; t < 4; ++t) {
            // e_rr at A, B (along r), e_ss at C, D (along s)
            const unsigned dir = t < 2 ? 0 : 1;
            const double* x = dir == 0 ? xa[t] : xb[t];
            const double* v = dir == 0 ? ua[t] : ub[t];
            d.e[t] = dot(x, v) + 0.5 * f * dot(v, v);
            for (unsigned i = 0; i < NN; ++i)
                for (unsigned c = 0; c < ND; ++c) d.B[t][ND * i + c] = c < nc ? dN[t][i][dir] * (x[c] + f * v[c]) : 0.0;
        }
        d.e[4] = dot(xa[4], ub[4]) + dot(xb[4], ua[4]) + f * dot(ua[4], ub[4]);
        for (unsigned i = 0; i < NN; ++i)
            for (unsigned c = 0; c < ND; ++c)
                d.B[4][ND * i + c] =
                    c < nc ? dN[4][i][0] * (xb[4][c] + f * ub[4][c]) + dN[4][i][1] * (xa[4][c] + f * ua[4][c]) : 0.0;
    }

    // The weights W (3 x 5) of the tying values in the Cartesian strains E11, E22,
    // 2 E12 along the in-plane axes e1, e2, at the reference point (r, s) whose area
    // factor is J.
    template <unsigned ND>
    static void weights(const element_data<ND>& d, double r, double s, double J, const double* e1, const double* e2,
                        double (*W)[NT]) {
        const double scale = J != 0.0 && d.JE != 0.0 ? d.JE / J : 1.0;
        const double rr = scale * r, ss = scale * s;
        double M1[NT], M2[NT], L1[NT], L2[NT];
        for (unsigned t = 0; t < NT; ++t) {
            M1[t] = (t < 2 ? 0.5 : 0.0) - d.a[t];
            M2[t] = (t == 2 || t == 3 ? 0.5 : 0.0) - d.a[t];
        }
        for (unsigned t = 0; t < NT; ++t) {
            L1[t] = (t == 0 ? 0.5 : t == 1 ? -0.5 : 0.0) - 2.0 * d.rc * M1[t] - (t == 4 ? d.sc : 0.0);
            L2[t] = (t == 2 ? 0.5 : t == 3 ? -0.5 : 0.0) - 2.0 * d.sc * M2[t] - (t == 4 ? d.rc : 0.0);
        }
        auto dot = [](const double* x, const double* y) { return x[0] * y[0] + x[1] * y[1] + x[2] * y[2]; };
        const double r1 = dot(d.gr, e1), r2 = dot(d.gr, e2), s1 = dot(d.gs, e1), s2 = dot(d.gs, e2);
        for (unsigned t = 0; t < NT; ++t) {
            const double err = M1[t] + ss * L1[t];
            const double ess = M2[t] + rr * L2[t];
            const double grs = (t == 4 ? 1.0 : 0.0) + rr * L1[t] + ss * L2[t];
            W[0][t] = err * r1 * r1 + ess * s1 * s1 + grs * r1 * s1;
            W[1][t] = err * r2 * r2 + ess * s2 * s2 + grs * r2 * s2;
            W[2][t] = 2.0 * (err * r1 * r2 + ess * s1 * s2) + grs * (r1 * s2 + s1 * r2);
        }
    }

    // The assumed strains in the slots `slot` (E11, E22, 2 E12) of eps and their rows
    // of B; the other slots of eps and B are left as they are.
    template <unsigned ND>
    static void strain_B(const element_data<ND>& d, const double (*W)[NT], const unsigned* slot, double* eps,
                         double (*B)[ND * NN]) {
        for (unsigned k = 0; k < 3; ++k) {
            double v = 0.0;
            for (unsigned t = 0; t < NT; ++t) v += W[k][t] * d.e[t];
            eps[slot[k]] = v;
            for (unsigned c = 0; c < ND * NN; ++c) {
                double b = 0.0;
                for (unsigned t = 0; t < NT; ++t) b += W[k][t] * d.B[t][c];
                B[slot[k]][c] = b;
            }
        }
    }

    // Geometric stiffness of the finite form: the second derivatives of the tying
    // strains weighted by the stresses they carry, on pairs of DOFs of one direction
    // (lower triangle of the row-major ND NN square).
    template <unsigned ND>
    void add_geometric(const double (*W)[NT], const unsigned* slot, const double* S, double w, double* K) const {
        constexpr unsigned n = ND * NN;
        double sig[NT];
        for (unsigned t = 0; t < NT; ++t)
            sig[t] = w * (S[slot[0]] * W[0][t] + S[slot[1]] * W[1][t] + S[slot[2]] * W[2][t]);
        for (unsigned i = 0; i < NN; ++i)
            for (unsigned j = 0; j <= i; ++j) {
                double v = sig[0] * dN[0][i][0] * dN[0][j][0] + sig[1] * dN[1][i][0] * dN[1][j][0] +
                           sig[2] * dN[2][i][1] * dN[2][j][1] + sig[3] * dN[3][i][1] * dN[3][j][1] +
                           sig[4] * (dN[4][i][0] * dN[4][j][1] + dN[4][i][1] * dN[4][j][0]);
                for (unsigned c = 0; c < ND; ++c) K[(ND * i + c) * n + ND * j + c] += v;
            }
    }
};

// The faceQ4 formulations of the plane strain and of the membrane.
template <class Shape>
using ANS_2D_MITC4 = ANS_MITC4_membrane<Shape>;
template <class Shape>
using ANS_shell_MITC4 = ANS_MITC4_membrane<Shape>;

}  // namespace core
}  // namespace orv
