#include "elements/shape_faceT.h"

namespace elfes {

const faceT3::node_type faceT3::nodes[3] = {node_type(0), node_type(1), node_type(2)};
const faceT6::node_type faceT6::nodes[6] = {node_type(0), node_type(1), node_type(2),
                                            node_type(3), node_type(4), node_type(5)};

namespace {

// corners (1, 0), (0, 1), (0, 0), then the mid-sides opposite them
const double triangle_nodes[6][2] = {{1.0, 0.0}, {0.0, 1.0}, {0.0, 0.0}, {0.0, 0.5}, {0.5, 0.0}, {0.5, 0.5}};

void set_position(unsigned i, double* x) {
    x[0] = i < 6 ? triangle_nodes[i][0] : 0.0;
    x[1] = i < 6 ? triangle_nodes[i][1] : 0.0;
    x[2] = 0.0;
}

}  // namespace

// --- faceT3 ----------------------------------------------------------------

void faceT3::node_position(unsigned i, double* x) { set_position(i < 3 ? i : 6, x); }

void faceT3::values(const double* x, double* N) {
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const double* c = nodes[i].c;
        N[i] = c[0] + c[1] * x[0] + c[2] * x[1];
    }
}

void faceT3::gradients(const double*, double (*dN)[dim]) {
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        dN[i][0] = nodes[i].c[1];
        dN[i][1] = nodes[i].c[2];
    }
}

// --- faceT6 ----------------------------------------------------------------

void faceT6::node_position(unsigned i, double* x) { set_position(i, x); }

void faceT6::values(const double* x, double* N) {
    const double u = x[0], v = x[1];
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const double* c = nodes[i].c;
        N[i] = c[0] + c[1] * u + c[2] * v + c[3] * u * u + c[4] * v * v + c[5] * u * v;
    }
}

void faceT6::gradients(const double* x, double (*dN)[dim]) {
    const double u = x[0], v = x[1];
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const double* c = nodes[i].c;
        dN[i][0] = c[1] + 2.0 * c[3] * u + c[5] * v;
        dN[i][1] = c[2] + 2.0 * c[4] * v + c[5] * u;
    }
}

void faceT6::second_derivatives(const double*, double (*d2N)[nbr_second_derivatives]) {
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const double* c = nodes[i].c;
        d2N[i][0] = 2.0 * c[3];
        d2N[i][1] = c[5];
        d2N[i][2] = 2.0 * c[4];
    }
}

}  // namespace elfes
