// Wedge shapes: triangle (xi, eta) of faceT3 times zeta in [-1, 1]: wedge6, wedge18.
// (Interface common to all shapes: see shape_edge.h.)
#pragma once

namespace elfes {

// Nodes 0 to 2: the triangle's corners at zeta = -1 (in faceT3's order), 3 to 5 the
// same at zeta = +1.
struct wedge6 {
    static constexpr unsigned nbr_nodes = 6;
    static constexpr unsigned nbr_corner_nodes = 6;
    static constexpr unsigned dim = 3;
    static constexpr unsigned element_type_value = 19;
    static constexpr unsigned nbr_second_derivatives = 0;

    // N = (t0 + txi xi + teta eta)(s zeta + 0.5), s = -0.5 below, +0.5 above
    struct node_type {
        double t[3];
        double s;
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned index) : t{}, s(index < 3 ? -0.5 : 0.5) {
            const unsigned k = index % 3;
            if (index >= 6) s = 0.0;
            else if (k == 0) t[1] = 1.0;
            else if (k == 1) t[2] = 1.0;
            else t[0] = 1.0, t[1] = -1.0, t[2] = -1.0;
        }
    };
    static const node_type nodes[nbr_nodes];

    static void node_position(unsigned i, double* x);
    static void values(const double* x, double* N);
    static void gradients(const double* x, double (*dN)[dim]);
};

// With T the faceT6 functions and a = zeta (zeta - 1)/2, b = zeta (zeta + 1)/2,
// c = 1 - zeta^2: 0 to 2 corners T_i a (zeta = -1); 3 to 5 T_i b (zeta = +1);
// 6 to 8 T_i c (zeta = 0); 9 to 11 the mid-sides T_{3+i} a; 12 to 14 with b;
// 15 to 17 with c.
struct wedge18 {
    static constexpr unsigned nbr_nodes = 18;
    static constexpr unsigned nbr_corner_nodes = 6;
    static constexpr unsigned dim = 3;
    static constexpr unsigned element_type_value = 21;
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
