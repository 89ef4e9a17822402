// Pyramid shapes: base [-1, 1]^2 at zeta = 0, apex (0, 0, 1): pyramid5, pyramid14.
// (Interface common to all shapes: see shape_edge.h.)
//
// Both are rational in zeta through r = 1 / (1 - zeta). At the apex, where 1 - zeta is
// exactly 0, r is taken as 0: the limit of the values there (apex node 1, others 0).
#pragma once

namespace elfes {

// Base corners (-1,-1), (1,-1), (1,1), (-1,1), then the apex.
struct pyramid5 {
    static constexpr unsigned nbr_nodes = 5;
    static constexpr unsigned nbr_corner_nodes = 5;
    static constexpr unsigned dim = 3;
    static constexpr unsigned element_type_value = 16;
    static constexpr unsigned nbr_second_derivatives = 0;

    struct node_type {
        unsigned index;
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned i) : index(i) {}
    };
    static const node_type nodes[nbr_nodes];

    static double value(unsigned i, const double* x);
    static void gradient(unsigned i, const double* x, double* g);

    static void node_position(unsigned i, double* x);
    static void values(const double* x, double* N);
    static void gradients(const double* x, double (*dN)[dim]);
};

// Base corners 0 to 3 and apex 4 as pyramid5; 5 to 8 the mid-points of the edges to
// the apex; 9 to 12 the base mid-sides (0,-1), (1,0), (0,1), (-1,0); 13 the base centre.
struct pyramid14 {
    static constexpr unsigned nbr_nodes = 14;
    static constexpr unsigned nbr_corner_nodes = 5;
    static constexpr unsigned dim = 3;
    static constexpr unsigned element_type_value = 18;
    static constexpr unsigned nbr_second_derivatives = 0;

    struct node_type {
        unsigned index;
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned i) : index(i) {}
    };
    static const node_type nodes[nbr_nodes];

    static double value(unsigned i, const double* x);
    static void gradient(unsigned i, const double* x, double* g);

    static void node_position(unsigned i, double* x);
    static void values(const double* x, double* N);
    static void gradients(const double* x, double (*dN)[dim]);
};

}  // namespace elfes
