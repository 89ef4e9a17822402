// Pyramid shapes: base [-1, 1]^2 at zeta = 0, apex (0, 0, 1): pyramid5, pyramid14.
// (Interface common to all shapes: see shape_edge.h.)
//
// Both are rational in zeta through r = 1 / (1 - zeta). At the apex, where 1 - zeta is
// exactly 0, r is taken as 0: the limit of the values there (apex node 1, others 0).
#pragma once

#include "elements/shape_traits.h"

namespace elfes {

// Base corners (-1,-1), (1,-1), (1,1), (-1,1), then the apex.
struct pyramid5 : shape_traits<5, 5, 3, 16> {
    typedef indexed_node node_type;
    ELFES_SHAPE_INTERFACE

    static double value(unsigned i, const double* x);
    static void gradient(unsigned i, const double* x, double* g);
};

// Base corners 0 to 3 and apex 4 as pyramid5; 5 to 8 the mid-points of the edges to
// the apex; 9 to 12 the base mid-sides (0,-1), (1,0), (0,1), (-1,0); 13 the base centre.
struct pyramid14 : shape_traits<14, 5, 3, 18> {
    typedef indexed_node node_type;
    ELFES_SHAPE_INTERFACE

    static double value(unsigned i, const double* x);
    static void gradient(unsigned i, const double* x, double* g);
};

}  // namespace elfes
