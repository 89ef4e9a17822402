#include "elements/shape_wedge.h"

#include "elements/shape_faceT.h"

namespace elfes {

const wedge6::node_type wedge6::nodes[6] = {node_type(0), node_type(1), node_type(2),
                                            node_type(3), node_type(4), node_type(5)};
const wedge18::node_type wedge18::nodes[18] = {
    node_type(0),  node_type(1),  node_type(2),  node_type(3),  node_type(4),  node_type(5),
    node_type(6),  node_type(7),  node_type(8),  node_type(9),  node_type(10), node_type(11),
    node_type(12), node_type(13), node_type(14), node_type(15), node_type(16), node_type(17)};

namespace {

// wedge18 node i = triangle node tri(i) of faceT6 times the zeta function level(i):
// 0 -> a (zeta = -1), 1 -> b (zeta = +1), 2 -> c (zeta = 0)
inline unsigned tri(unsigned i) { return i < 9 ? i % 3 : 3 + (i - 9) % 3; }
inline unsigned level(unsigned i) { return i < 9 ? i / 3 : (i - 9) / 3; }

const double level_zeta[3] = {-1.0, 1.0, 0.0};

inline double zeta_value(unsigned m, double z) {
    return m == 0 ? 0.5 * z * (z - 1.0) : m == 1 ? 0.5 * z * (z + 1.0) : 1.0 - z * z;
}
inline double zeta_derivative(unsigned m, double z) { return m == 0 ? z - 0.5 : m == 1 ? z + 0.5 : -2.0 * z; }

}  // namespace

// --- wedge6 ----------------------------------------------------------------

void wedge6::node_position(unsigned i, double* x) {
    if (i >= nbr_nodes) {
        x[0] = x[1] = x[2] = 0.0;
        return;
    }
    faceT3::node_position(i % 3, x);
    x[2] = i < 3 ? -1.0 : 1.0;
}

void wedge6::values(const double* x, double* N) {
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const node_type& n = nodes[i];
        N[i] = (n.t[0] + n.t[1] * x[0] + n.t[2] * x[1]) * (n.s * x[2] + 0.5);
    }
}

void wedge6::gradients(const double* x, double (*dN)[dim]) {
    for (unsigned i = 0; i < nbr_nodes; ++i) {
        const node_type& n = nodes[i];
        const double h = n.s * x[2] + 0.5;
        dN[i][0] = n.t[1] * h;
        dN[i][1] = n.t[2] * h;
        dN[i][2] = (n.t[0] + n.t[1] * x[0] + n.t[2] * x[1]) * n.s;
    }
}

// --- wedge18 ---------------------------------------------------------------

double wedge18::value(unsigned i, const double* x) {
    if (i >= nbr_nodes) return 0.0;
    const double* c = faceT6::nodes[tri(i)].c;
    const double u = x[0], v = x[1];
    const double T = c[0] + c[1] * u + c[2] * v + c[3] * u * u + c[4] * v * v + c[5] * u * v;
    return T * zeta_value(level(i), x[2]);
}

void wedge18::gradient(unsigned i, const double* x, double* g) {
    if (i >= nbr_nodes) {
        g[0] = g[1] = g[2] = 0.0;
        return;
    }
    const double* c = faceT6::nodes[tri(i)].c;
    const double u = x[0], v = x[1];
    const double T = c[0] + c[1] * u + c[2] * v + c[3] * u * u + c[4] * v * v + c[5] * u * v;
    const double Z = zeta_value(level(i), x[2]);
    g[0] = (c[1] + 2.0 * c[3] * u + c[5] * v) * Z;
    g[1] = (c[2] + 2.0 * c[4] * v + c[5] * u) * Z;
    g[2] = T * zeta_derivative(level(i), x[2]);
}

void wedge18::node_position(unsigned i, double* x) {
    if (i >= nbr_nodes) {
        x[0] = x[1] = x[2] = 0.0;
        return;
    }
    faceT6::node_position(tri(i), x);
    x[2] = level_zeta[level(i)];
}

void wedge18::values(const double* x, double* N) {
    for (unsigned i = 0; i < nbr_nodes; ++i) N[i] = value(i, x);
}

void wedge18::gradients(const double* x, double (*dN)[dim]) {
    for (unsigned i = 0; i < nbr_nodes; ++i) gradient(i, x, dN[i]);
}

}  // namespace elfes
