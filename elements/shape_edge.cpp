#include "elements/shape_edge.h"

namespace elfes {

const edge2::node_type edge2::nodes[2] = {node_type(0), node_type(1)};
const edge3::node_type edge3::nodes[3] = {node_type(0), node_type(1), node_type(2)};
const edge4::node_type edge4::nodes[4] = {node_type(0), node_type(1), node_type(2), node_type(3)};

namespace {

void set_position(double* x, double xi) {
    x[0] = xi;
    x[1] = 0.0;
    x[2] = 0.0;
}

}  // namespace

// --- edge2 -----------------------------------------------------------------

void edge2::node_position(unsigned i, double* x) { set_position(x, i == 0 ? -1.0 : (i == 1 ? 1.0 : 0.0)); }

void edge2::values(const double* x, double* N) {
    for (unsigned i = 0; i < nbr_nodes; ++i) N[i] = nodes[i].s * x[0] + 0.5;
}

void edge2::gradients(const double*, double (*dN)[dim]) {
    for (unsigned i = 0; i < nbr_nodes; ++i) dN[i][0] = nodes[i].s;
}

// --- edge3 -----------------------------------------------------------------

void edge3::node_position(unsigned i, double* x) { set_position(x, i == 0 ? -1.0 : (i == 1 ? 1.0 : 0.0)); }

void edge3::values(const double* x, double* N) {
    const double t = x[0];
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const double* c = nodes[i].c;
        N[i] = c[0] + t * (c[1] + t * c[2]);
    }
}

void edge3::gradients(const double* x, double (*dN)[dim]) {
    const double t = x[0];
    for (unsigned i = 0; i < nbr_nodes; ++i) dN[i][0] = nodes[i].c[1] + 2.0 * t * nodes[i].c[2];
}

void edge3::second_derivatives(const double*, double (*d2N)[nbr_second_derivatives]) {
    for (unsigned i = 0; i < nbr_nodes; ++i) d2N[i][0] = 2.0 * nodes[i].c[2];
}

// --- edge4 -----------------------------------------------------------------

void edge4::node_position(unsigned i, double* x) {
    static const double xi[4] = {-1.0, 1.0, -1.0 / 3.0, 1.0 / 3.0};
    set_position(x, i < 4 ? xi[i] : 0.0);
}

void edge4::values(const double* x, double* N) {
    const double t = x[0];
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const double* c = nodes[i].c;
        N[i] = c[0] + t * (c[1] + t * (c[2] + t * c[3]));
    }
}

void edge4::gradients(const double* x, double (*dN)[dim]) {
    const double t = x[0];
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const double* c = nodes[i].c;
        dN[i][0] = c[1] + t * (2.0 * c[2] + 3.0 * t * c[3]);
    }
}

void edge4::second_derivatives(const double* x, double (*d2N)[nbr_second_derivatives]) {
    const double t = x[0];
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const double* c = nodes[i].c;
        d2N[i][0] = 2.0 * c[2] + 6.0 * t * c[3];
    }
}

}  // namespace elfes
