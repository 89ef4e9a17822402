// Triangle shapes on xi, eta >= 0, xi + eta <= 1: faceT3, faceT6.
// (Interface common to all shapes: see shape_edge.h.)
//
// The corner order is N0 = xi at (1, 0), N1 = eta at (0, 1), N2 = 1 - xi - eta at the
// origin; mid-side node 3 + i lies opposite corner i.
#pragma once

namespace elfes {

struct faceT3 {
    static constexpr unsigned nbr_nodes = 3;
    static constexpr unsigned nbr_corner_nodes = 3;
    static constexpr unsigned dim = 2;
    static constexpr unsigned element_type_value = 7;
    static constexpr unsigned nbr_second_derivatives = 0;

    // linear coefficients (c0, cxi, ceta)
    struct node_type {
        double c[3];
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned index) : c{} {
            if (index == 0) c[1] = 1.0;
            else if (index == 1) c[2] = 1.0;
            else if (index == 2) c[0] = 1.0, c[1] = -1.0, c[2] = -1.0;
        }
    };
    static const node_type nodes[nbr_nodes];

    static void node_position(unsigned i, double* x);
    static void values(const double* x, double* N);
    static void gradients(const double* x, double (*dN)[dim]);
};

// Second derivatives in the order xi-xi, xi-eta, eta-eta.
struct faceT6 {
    static constexpr unsigned nbr_nodes = 6;
    static constexpr unsigned nbr_corner_nodes = 3;
    static constexpr unsigned dim = 2;
    static constexpr unsigned element_type_value = 8;
    static constexpr unsigned nbr_second_derivatives = 3;

    // quadratic coefficients (c0, cxi, ceta, cxixi, cetaeta, cxieta)
    struct node_type {
        double c[6];
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned index) : c{} {
            switch (index) {
                case 0:  // xi (2 xi - 1)
                    c[1] = -1.0, c[3] = 2.0;
                    break;
                case 1:  // eta (2 eta - 1)
                    c[2] = -1.0, c[4] = 2.0;
                    break;
                case 2:  // L (2 L - 1), L = 1 - xi - eta
                    c[0] = 1.0, c[1] = -3.0, c[2] = -3.0, c[3] = 2.0, c[4] = 2.0, c[5] = 4.0;
                    break;
                case 3:  // 4 eta L
                    c[2] = 4.0, c[4] = -4.0, c[5] = -4.0;
                    break;
                case 4:  // 4 xi L
                    c[1] = 4.0, c[3] = -4.0, c[5] = -4.0;
                    break;
                case 5:  // 4 xi eta
                    c[5] = 4.0;
                    break;
                default:
                    break;
            }
        }
    };
    static const node_type nodes[nbr_nodes];

    static void node_position(unsigned i, double* x);
    static void values(const double* x, double* N);
    static void gradients(const double* x, double (*dN)[dim]);
    static void second_derivatives(const double* x, double (*d2N)[nbr_second_derivatives]);
};

}  // namespace elfes
