// Quadrilateral shapes on [-1, 1]^2: faceQ4, faceQ9.
// (Interface common to all shapes: see shape_edge.h.)
// Second derivatives in the order xi-xi, xi-eta, eta-eta.
#pragma once

#include "elements/shape_traits.h"

namespace elfes {

// Corners (-1,-1), (1,-1), (1,1), (-1,1).
struct faceQ4 : shape_traits<4, 4, 2, 9, 3> {
    // N = (s0 xi + 0.5)(s1 eta + 0.5), s = -0.5 or +0.5
    struct node_type {
        double s[2];
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned index)
            : s{index == 1 || index == 2 ? 0.5 : -0.5, index >= 2 ? 0.5 : -0.5} {}
    };
    ELFES_SHAPE_INTERFACE
    static void second_derivatives(const double* x, double (*d2N)[nbr_second_derivatives]);
};

// Corners as faceQ4, then the mid-sides (0,-1), (1,0), (0,1), (-1,0) and the centre.
struct faceQ9 : shape_traits<9, 4, 2, 11, 3> {
    // N = P(xi) Q(eta), P and Q quadratic (coefficients of 1, t, t^2): the edge3
    // polynomial of the node's coordinate along each axis.
    struct node_type {
        double P[3], Q[3];
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned index) : P{}, Q{} {
            // node coordinate per axis: -1, 0 or +1
            constexpr int xi[9] = {-1, 1, 1, -1, 0, 1, 0, -1, 0};
            constexpr int eta[9] = {-1, -1, 1, 1, -1, 0, 1, 0, 0};
            if (index < 9) {
                set(P, xi[index]);
                set(Q, eta[index]);
            }
        }
        static constexpr void set(double* c, int position) {
            c[0] = position == 0 ? 1.0 : 0.0;
            c[1] = position == 0 ? 0.0 : 0.5 * position;
            c[2] = position == 0 ? -1.0 : 0.5;
        }
    };
    ELFES_SHAPE_INTERFACE
    static void second_derivatives(const double* x, double (*d2N)[nbr_second_derivatives]);
};

}  // namespace elfes
