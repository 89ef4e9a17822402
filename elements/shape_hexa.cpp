#include "elements/shape_hexa.h"

namespace elfes {

const hexa8::node_type hexa8::nodes[8] = {node_type(0), node_type(1), node_type(2), node_type(3),
                                          node_type(4), node_type(5), node_type(6), node_type(7)};
const hexa27::node_type hexa27::nodes[27] = {
    node_type(0),  node_type(1),  node_type(2),  node_type(3),  node_type(4),  node_type(5),  node_type(6),
    node_type(7),  node_type(8),  node_type(9),  node_type(10), node_type(11), node_type(12), node_type(13),
    node_type(14), node_type(15), node_type(16), node_type(17), node_type(18), node_type(19), node_type(20),
    node_type(21), node_type(22), node_type(23), node_type(24), node_type(25), node_type(26)};

namespace {

const signed char hexa_nodes[27][3] = {
    {-1, -1, -1}, {1, -1, -1}, {1, 1, -1},  {-1, 1, -1}, {-1, -1, 1}, {1, -1, 1}, {1, 1, 1},  {-1, 1, 1},  {0, -1, -1},
    {1, 0, -1},   {0, 1, -1},  {-1, 0, -1}, {0, -1, 1},  {1, 0, 1},   {0, 1, 1},  {-1, 0, 1}, {-1, -1, 0}, {1, -1, 0},
    {1, 1, 0},    {-1, 1, 0},  {-1, 0, 0},  {1, 0, 0},   {0, -1, 0},  {0, 1, 0},  {0, 0, -1}, {0, 0, 1},   {0, 0, 0}};

// edge3 polynomial of a node at p = -1, 0, +1, and its derivative
inline double A(int p, double t) { return p == 0 ? 1.0 - t * t : 0.5 * t * (t + p); }
inline double dA(int p, double t) { return p == 0 ? -2.0 * t : t + 0.5 * p; }

}  // namespace

// --- hexa8 -----------------------------------------------------------------

void hexa8::node_position(unsigned i, double* x) {
    for (unsigned k = 0; k < 3; ++k) x[k] = i < nbr_nodes ? 2.0 * nodes[i].s[k] : 0.0;
}

void hexa8::values(const double* x, double* N) {
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const double* s = nodes[i].s;
        N[i] = (s[0] * x[0] + 0.5) * (s[1] * x[1] + 0.5) * (s[2] * x[2] + 0.5);
    }
}

void hexa8::gradients(const double* x, double (*dN)[dim]) {
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const double* s = nodes[i].s;
        const double f0 = s[0] * x[0] + 0.5, f1 = s[1] * x[1] + 0.5, f2 = s[2] * x[2] + 0.5;
        dN[i][0] = s[0] * f1 * f2;
        dN[i][1] = f0 * s[1] * f2;
        dN[i][2] = f0 * f1 * s[2];
    }
}

// --- hexa27 ----------------------------------------------------------------

double hexa27::value(unsigned i, const double* x) {
    if (i >= nbr_nodes) return 0.0;
    const signed char* p = hexa_nodes[i];
    return A(p[0], x[0]) * A(p[1], x[1]) * A(p[2], x[2]);
}

void hexa27::gradient(unsigned i, const double* x, double* g) {
    if (i >= nbr_nodes) {
        g[0] = g[1] = g[2] = 0.0;
        return;
    }
    const signed char* p = hexa_nodes[i];
    const double a0 = A(p[0], x[0]), a1 = A(p[1], x[1]), a2 = A(p[2], x[2]);
    g[0] = dA(p[0], x[0]) * a1 * a2;
    g[1] = a0 * dA(p[1], x[1]) * a2;
    g[2] = a0 * a1 * dA(p[2], x[2]);
}

void hexa27::node_position(unsigned i, double* x) {
    for (unsigned k = 0; k < 3; ++k) x[k] = i < nbr_nodes ? hexa_nodes[i][k] : 0.0;
}

void hexa27::values(const double* x, double* N) {
    for (unsigned i = 0; i < nbr_nodes; ++i) N[i] = value(i, x);
}

void hexa27::gradients(const double* x, double (*dN)[dim]) {
    for (unsigned i = 0; i < nbr_nodes; ++i) gradient(i, x, dN[i]);
}

}  // namespace elfes
