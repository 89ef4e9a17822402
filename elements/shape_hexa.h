// Hexahedron shapes on [-1, 1]^3: hexa8, hexa27.
// (Interface common to all shapes: see shape_edge.h.)
#pragma once

namespace elfes {

// Corners counter-clockwise in the lower face, then the same in the upper face:
// (-1,-1,-1), (1,-1,-1), (1,1,-1), (-1,1,-1), (-1,-1,1), (1,-1,1), (1,1,1), (-1,1,1).
struct hexa8 {
    static constexpr unsigned nbr_nodes = 8;
    static constexpr unsigned nbr_corner_nodes = 8;
    static constexpr unsigned dim = 3;
    static constexpr unsigned element_type_value = 22;
    static constexpr unsigned nbr_second_derivatives = 0;

    // N = product over the axes of (s_k x_k + 0.5), s = -0.5 or +0.5
    struct node_type {
        double s[3];
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned index)
            : s{(index & 3) == 1 || (index & 3) == 2 ? 0.5 : -0.5,
                (index & 3) >= 2 ? 0.5 : -0.5, index >= 4 ? 0.5 : -0.5} {}
    };
    static const node_type nodes[nbr_nodes];

    static void node_position(unsigned i, double* x);
    static void values(const double* x, double* N);
    static void gradients(const double* x, double (*dN)[dim]);
};

// N = A(xi) A(eta) A(zeta), A the edge3 polynomial of the node's coordinate.
// 0 to 7 the corners as hexa8; 8 to 11 the lower mid-edges (0,-1,-1), (1,0,-1),
// (0,1,-1), (-1,0,-1); 12 to 15 the same at zeta = 1; 16 to 19 the vertical mid-edges
// (-1,-1,0), (1,-1,0), (1,1,0), (-1,1,0); 20 to 25 the face centres -xi, +xi, -eta,
// +eta, -zeta, +zeta; 26 the centre.
struct hexa27 {
    static constexpr unsigned nbr_nodes = 27;
    static constexpr unsigned nbr_corner_nodes = 8;
    static constexpr unsigned dim = 3;
    static constexpr unsigned element_type_value = 24;
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
