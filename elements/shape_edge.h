// Line shapes on xi in [-1, 1]: edge2, edge3, edge4.
//
// Every shape of elfes has the same static interface:
//   nbr_nodes, nbr_corner_nodes, dim, element_type_value (the value of the public
//   element enumeration), nbr_second_derivatives (0 when the shape has none), from
//   the base shape_traits<nbr_nodes, nbr_corner_nodes, dim, element_type_value,
//   nbr_second_derivatives>;
//   node_type, the per-node coefficient record, and nodes[], its table;
//   node_position(i, x): reference coordinates of node i (x has 3 entries, unused 0);
//   values(x, N) and gradients(x, dN) at the reference point x (3 entries);
//   second_derivatives(x, d2N) where nbr_second_derivatives > 0.
#pragma once

#include "elements/shape_traits.h"

namespace elfes {

// Linear: N0 = (1 - xi) / 2 at -1, N1 = (1 + xi) / 2 at +1.
struct edge2 : shape_traits<2, 2, 1, 2> {
    // N = s * xi + 0.5 with s = -0.5 or +0.5
    struct node_type {
        double s;
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned index) : s(index == 0 ? -0.5 : 0.5) {}
    };
    ELFES_SHAPE_INTERFACE
};

// Quadratic, nodes at -1, +1, 0.
struct edge3 : shape_traits<3, 2, 1, 3, 1> {
    // coefficients of 1, xi, xi^2
    struct node_type {
        double c[3];
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned index)
            : c{index == 2 ? 1.0 : 0.0, index == 0 ? -0.5 : (index == 1 ? 0.5 : 0.0), index == 2 ? -1.0 : 0.5} {}
    };
    ELFES_SHAPE_INTERFACE
    static void second_derivatives(const double* x, double (*d2N)[nbr_second_derivatives]);
};

// Cubic, nodes at -1, +1, -1/3, +1/3.
struct edge4 : shape_traits<4, 2, 1, 4, 1> {
    // coefficients of 1, xi, xi^2, xi^3
    struct node_type {
        double c[4];
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned index)
            : c{index < 2 ? -0.0625 : 0.5625,
                index == 0   ? 0.0625
                : index == 1 ? -0.0625
                : index == 2 ? -1.6875
                             : 1.6875,
                index < 2 ? 0.5625 : -0.5625,
                index == 0   ? -0.5625
                : index == 1 ? 0.5625
                : index == 2 ? 1.6875
                             : -1.6875} {}
    };
    ELFES_SHAPE_INTERFACE
    static void second_derivatives(const double* x, double (*d2N)[nbr_second_derivatives]);
};

}  // namespace elfes
