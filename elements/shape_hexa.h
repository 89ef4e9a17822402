// Hexahedron shapes on [-1, 1]^3: hexa8, hexa27.
// (Interface common to all shapes: see shape_edge.h.)
#pragma once

#include "elements/shape_traits.h"

namespace elfes {

// Corners counter-clockwise in the lower face, then the same in the upper face:
// (-1,-1,-1), (1,-1,-1), (1,1,-1), (-1,1,-1), (-1,-1,1), (1,-1,1), (1,1,1), (-1,1,1).
struct hexa8 : shape_traits<8, 8, 3, 22> {
    // N = product over the axes of (s_k x_k + 0.5), s = -0.5 or +0.5
    struct node_type {
        double s[3];
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned index)
            : s{(index & 3) == 1 || (index & 3) == 2 ? 0.5 : -0.5, (index & 3) >= 2 ? 0.5 : -0.5,
                index >= 4 ? 0.5 : -0.5} {}
    };
    ELFES_SHAPE_INTERFACE
};

// N = A(xi) A(eta) A(zeta), A the edge3 polynomial of the node's coordinate.
// 0 to 7 the corners as hexa8; 8 to 11 the lower mid-edges (0,-1,-1), (1,0,-1),
// (0,1,-1), (-1,0,-1); 12 to 15 the same at zeta = 1; 16 to 19 the vertical mid-edges
// (-1,-1,0), (1,-1,0), (1,1,0), (-1,1,0); 20 to 25 the face centres -xi, +xi, -eta,
// +eta, -zeta, +zeta; 26 the centre.
struct hexa27 : shape_traits<27, 8, 3, 24> {
    typedef indexed_node node_type;
    ELFES_SHAPE_INTERFACE

    static double value(unsigned i, const double* x);
    static void gradient(unsigned i, const double* x, double* g);
};

}  // namespace elfes
