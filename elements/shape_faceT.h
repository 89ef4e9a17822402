// Triangle shapes on xi, eta >= 0, xi + eta <= 1: faceT3, faceT6.
// (Interface common to all shapes: see shape_edge.h.)
//
// The corner order is N0 = xi at (1, 0), N1 = eta at (0, 1), N2 = 1 - xi - eta at the
// origin; mid-side node 3 + i lies opposite corner i.
#pragma once

#include "elements/shape_traits.h"

namespace elfes {

struct faceT3 : shape_traits<3, 3, 2, 7> {
    // linear coefficients (c0, cxi, ceta)
    struct node_type {
        double c[3];
        constexpr node_type() : node_type(0u) {}
        constexpr explicit node_type(unsigned index) : c{} {
            if (index == 0)
                c[1] = 1.0;
            else if (index == 1)
                c[2] = 1.0;
            else if (index == 2)
                c[0] = 1.0, c[1] = -1.0, c[2] = -1.0;
        }
    };
    ELFES_SHAPE_INTERFACE
};

// Second derivatives in the order xi-xi, xi-eta, eta-eta.
struct faceT6 : shape_traits<6, 3, 2, 8, 3> {
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
                default: break;
            }
        }
    };
    ELFES_SHAPE_INTERFACE
    static void second_derivatives(const double* x, double (*d2N)[nbr_second_derivatives]);
};

}  // namespace elfes
