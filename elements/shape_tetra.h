// Tetrahedron shapes on xi, eta, zeta >= 0, xi + eta + zeta <= 1: tetra4, tetra10.
// (Interface common to all shapes: see shape_edge.h.)
//
// Corners N0 = xi at (1,0,0), N1 = eta at (0,1,0), N2 = zeta at (0,0,1) and
// N3 = 1 - xi - eta - zeta at the origin.
#pragma once

namespace elfes {

struct tetra4 {
    static constexpr unsigned nbr_nodes = 4;
    static constexpr unsigned nbr_corner_nodes = 4;
    static constexpr unsigned dim = 3;
    static constexpr unsigned element_type_value = 14;
    static constexpr unsigned nbr_second_derivatives = 0;

    // linear coefficients (c0, cxi, ceta, czeta)
    struct node_type {
        double c[4];
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned index) : c{} {
            if (index < 3) c[index + 1] = 1.0;
            else if (index == 3) c[0] = 1.0, c[1] = -1.0, c[2] = -1.0, c[3] = -1.0;
        }
    };
    static const node_type nodes[nbr_nodes];

    static void node_position(unsigned i, double* x);
    static void values(const double* x, double* N);
    static void gradients(const double* x, double (*dN)[dim]);
};

// Corners as tetra4, then the edges 4 (1-2), 5 (0-2), 6 (0-1), 7 (0-3), 8 (1-3), 9 (2-3).
struct tetra10 {
    static constexpr unsigned nbr_nodes = 10;
    static constexpr unsigned nbr_corner_nodes = 4;
    static constexpr unsigned dim = 3;
    static constexpr unsigned element_type_value = 15;
    static constexpr unsigned nbr_second_derivatives = 0;

    struct node_type {
        unsigned index;
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned i) : index(i) {}
    };
    static const node_type nodes[nbr_nodes];

    // N and dN of one node; 0 for an index past the last node
    static double value(unsigned i, const double* x);
    static void gradient(unsigned i, const double* x, double* g);

    static void node_position(unsigned i, double* x);
    static void values(const double* x, double* N);
    static void gradients(const double* x, double (*dN)[dim]);
};

}  // namespace elfes
