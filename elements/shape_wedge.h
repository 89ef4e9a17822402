// Wedge shapes: triangle (xi, eta) of faceT3 times zeta in [-1, 1]: wedge6, wedge18.
// (Interface common to all shapes: see shape_edge.h.)
#pragma once

#include "elements/shape_traits.h"

namespace elfes {

// Nodes 0 to 2: the triangle's corners at zeta = -1 (in faceT3's order), 3 to 5 the
// same at zeta = +1.
struct wedge6 : shape_traits<6, 6, 3, 19> {
    // N = (t0 + txi xi + teta eta)(s zeta + 0.5), s = -0.5 below, +0.5 above
    struct node_type {
        double t[3];
        double s;
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned index) : t{}, s(index < 3 ? -0.5 : 0.5) {
            const unsigned k = index % 3;
            if (index >= 6)
                s = 0.0;
            else if (k == 0)
                t[1] = 1.0;
            else if (k == 1)
                t[2] = 1.0;
            else
                t[0] = 1.0, t[1] = -1.0, t[2] = -1.0;
        }
    };
    ELFES_SHAPE_INTERFACE
};

// With T the faceT6 functions and a = zeta (zeta - 1)/2, b = zeta (zeta + 1)/2,
// c = 1 - zeta^2: 0 to 2 corners T_i a (zeta = -1); 3 to 5 T_i b (zeta = +1);
// 6 to 8 T_i c (zeta = 0); 9 to 11 the mid-sides T_{3+i} a; 12 to 14 with b;
// 15 to 17 with c.
struct wedge18 : shape_traits<18, 6, 3, 21> {
    typedef indexed_node node_type;
    ELFES_SHAPE_INTERFACE

    static double value(unsigned i, const double* x);
    static void gradient(unsigned i, const double* x, double* g);
};

}  // namespace elfes
