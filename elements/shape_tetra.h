// Tetrahedron shapes on xi, eta, zeta >= 0, xi + eta + zeta <= 1: tetra4, tetra10.
// (Interface common to all shapes: see shape_edge.h.)
//
// Corners N0 = xi at (1,0,0), N1 = eta at (0,1,0), N2 = zeta at (0,0,1) and
// N3 = 1 - xi - eta - zeta at the origin.
#pragma once

#include "elements/shape_traits.h"

namespace elfes {

struct tetra4 : shape_traits<4, 4, 3, 14> {
    // linear coefficients (c0, cxi, ceta, czeta)
    struct node_type {
        double c[4];
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned index) : c{} {
            if (index < 3)
                c[index + 1] = 1.0;
            else if (index == 3)
                c[0] = 1.0, c[1] = -1.0, c[2] = -1.0, c[3] = -1.0;
        }
    };
    ELFES_SHAPE_INTERFACE
};

// Corners as tetra4, then the edges 4 (1-2), 5 (0-2), 6 (0-1), 7 (0-3), 8 (1-3), 9 (2-3).
struct tetra10 : shape_traits<10, 4, 3, 15> {
    typedef indexed_node node_type;
    ELFES_SHAPE_INTERFACE

    // N and dN of one node; 0 for an index past the last node
    static double value(unsigned i, const double* x);
    static void gradient(unsigned i, const double* x, double* g);
};

}  // namespace elfes
