#include "elements/shape_tetra.h"

namespace elfes {

const tetra4::node_type tetra4::nodes[4] = {node_type(0), node_type(1), node_type(2), node_type(3)};
const tetra10::node_type tetra10::nodes[10] = {node_type(0), node_type(1), node_type(2), node_type(3), node_type(4),
                                               node_type(5), node_type(6), node_type(7), node_type(8), node_type(9)};

namespace {

const double tetra_nodes[10][3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}, {0.0, 0.0, 0.0}, {0.0, 0.5, 0.5},
                                   {0.5, 0.0, 0.5}, {0.5, 0.5, 0.0}, {0.5, 0.0, 0.0}, {0.0, 0.5, 0.0}, {0.0, 0.0, 0.5}};

void set_position(unsigned i, double* x) {
    for (unsigned k = 0; k < 3; ++k) x[k] = i < 10 ? tetra_nodes[i][k] : 0.0;
}

}  // namespace

// --- tetra4 ----------------------------------------------------------------

void tetra4::node_position(unsigned i, double* x) { set_position(i < 4 ? i : 10, x); }

void tetra4::values(const double* x, double* N) {
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const double* c = nodes[i].c;
        N[i] = c[0] + c[1] * x[0] + c[2] * x[1] + c[3] * x[2];
    }
}

void tetra4::gradients(const double*, double (*dN)[dim]) {
    for (unsigned i = 0; i < nbr_nodes; ++i)
        for (unsigned k = 0; k < 3; ++k) dN[i][k] = nodes[i].c[k + 1];
}

// --- tetra10 ---------------------------------------------------------------

double tetra10::value(unsigned i, const double* x) {
    const double u = x[0], v = x[1], w = x[2], L = 1.0 - u - v - w;
    switch (i) {
        case 0: return u * (2.0 * u - 1.0);
        case 1: return v * (2.0 * v - 1.0);
        case 2: return w * (2.0 * w - 1.0);
        case 3: return L * (2.0 * L - 1.0);
        case 4: return 4.0 * v * w;
        case 5: return 4.0 * u * w;
        case 6: return 4.0 * u * v;
        case 7: return 4.0 * u * L;
        case 8: return 4.0 * v * L;
        case 9: return 4.0 * w * L;
        default: return 0.0;
    }
}

void tetra10::gradient(unsigned i, const double* x, double* g) {
    const double u = x[0], v = x[1], w = x[2], L = 1.0 - u - v - w;
    g[0] = g[1] = g[2] = 0.0;
    switch (i) {
        case 0: g[0] = 4.0 * u - 1.0; break;
        case 1: g[1] = 4.0 * v - 1.0; break;
        case 2: g[2] = 4.0 * w - 1.0; break;
        case 3: g[0] = g[1] = g[2] = 1.0 - 4.0 * L; break;
        case 4: g[1] = 4.0 * w, g[2] = 4.0 * v; break;
        case 5: g[0] = 4.0 * w, g[2] = 4.0 * u; break;
        case 6: g[0] = 4.0 * v, g[1] = 4.0 * u; break;
        // d(4 a L) = 4 L da - 4 a (1, 1, 1)
        case 7: g[0] = 4.0 * (L - u), g[1] = g[2] = -4.0 * u; break;
        case 8: g[1] = 4.0 * (L - v), g[0] = g[2] = -4.0 * v; break;
        case 9: g[2] = 4.0 * (L - w), g[0] = g[1] = -4.0 * w; break;
        default: break;
    }
}

void tetra10::node_position(unsigned i, double* x) { set_position(i, x); }

void tetra10::values(const double* x, double* N) {
    for (unsigned i = 0; i < nbr_nodes; ++i) N[i] = value(i, x);
}

void tetra10::gradients(const double* x, double (*dN)[dim]) {
    for (unsigned i = 0; i < nbr_nodes; ++i) gradient(i, x, dN[i]);
}

}  // namespace elfes
