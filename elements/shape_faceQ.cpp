#include "elements/shape_faceQ.h"

namespace elfes {

const faceQ4::node_type faceQ4::nodes[4] = {node_type(0), node_type(1), node_type(2), node_type(3)};
const faceQ9::node_type faceQ9::nodes[9] = {node_type(0), node_type(1), node_type(2), node_type(3), node_type(4),
                                            node_type(5), node_type(6), node_type(7), node_type(8)};

namespace {

const double quad_nodes[9][2] = {{-1.0, -1.0}, {1.0, -1.0}, {1.0, 1.0},  {-1.0, 1.0}, {0.0, -1.0},
                                 {1.0, 0.0},   {0.0, 1.0},  {-1.0, 0.0}, {0.0, 0.0}};

void set_position(unsigned i, double* x) {
    x[0] = i < 9 ? quad_nodes[i][0] : 0.0;
    x[1] = i < 9 ? quad_nodes[i][1] : 0.0;
    x[2] = 0.0;
}

inline double poly(const double* c, double t) { return c[0] + t * (c[1] + t * c[2]); }
inline double dpoly(const double* c, double t) { return c[1] + 2.0 * t * c[2]; }

}  // namespace

// --- faceQ4 ----------------------------------------------------------------

void faceQ4::node_position(unsigned i, double* x) { set_position(i < 4 ? i : 9, x); }

void faceQ4::values(const double* x, double* N) {
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const double* s = nodes[i].s;
        N[i] = (s[0] * x[0] + 0.5) * (s[1] * x[1] + 0.5);
    }
}

void faceQ4::gradients(const double* x, double (*dN)[dim]) {
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const double* s = nodes[i].s;
        dN[i][0] = s[0] * (s[1] * x[1] + 0.5);
        dN[i][1] = s[1] * (s[0] * x[0] + 0.5);
    }
}

void faceQ4::second_derivatives(const double*, double (*d2N)[nbr_second_derivatives]) {
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        d2N[i][0] = 0.0;
        d2N[i][1] = nodes[i].s[0] * nodes[i].s[1];
        d2N[i][2] = 0.0;
    }
}

// --- faceQ9 ----------------------------------------------------------------

void faceQ9::node_position(unsigned i, double* x) { set_position(i, x); }

void faceQ9::values(const double* x, double* N) {
    for (unsigned i = 0; i < nbr_nodes; ++i) N[i] = poly(nodes[i].P, x[0]) * poly(nodes[i].Q, x[1]);
}

void faceQ9::gradients(const double* x, double (*dN)[dim]) {
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const node_type& n = nodes[i];
        dN[i][0] = dpoly(n.P, x[0]) * poly(n.Q, x[1]);
        dN[i][1] = poly(n.P, x[0]) * dpoly(n.Q, x[1]);
    }
}

void faceQ9::second_derivatives(const double* x, double (*d2N)[nbr_second_derivatives]) {
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const node_type& n = nodes[i];
        d2N[i][0] = 2.0 * n.P[2] * poly(n.Q, x[1]);
        d2N[i][1] = dpoly(n.P, x[0]) * dpoly(n.Q, x[1]);
        d2N[i][2] = poly(n.P, x[0]) * 2.0 * n.Q[2];
    }
}

}  // namespace elfes
