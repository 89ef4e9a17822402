#include "elements/shape_pyramid.h"

namespace elfes {

const pyramid5::node_type pyramid5::nodes[5] = {node_type(0), node_type(1), node_type(2), node_type(3), node_type(4)};
const pyramid14::node_type pyramid14::nodes[14] = {
    node_type(0), node_type(1), node_type(2), node_type(3),  node_type(4),  node_type(5),  node_type(6),
    node_type(7), node_type(8), node_type(9), node_type(10), node_type(11), node_type(12), node_type(13)};

namespace {

const double pyramid_nodes[14][3] = {{-1.0, -1.0, 0.0}, {1.0, -1.0, 0.0},  {1.0, 1.0, 0.0},  {-1.0, 1.0, 0.0},
                                     {0.0, 0.0, 1.0},   {-0.5, -0.5, 0.5}, {0.5, -0.5, 0.5}, {0.5, 0.5, 0.5},
                                     {-0.5, 0.5, 0.5},  {0.0, -1.0, 0.0},  {1.0, 0.0, 0.0},  {0.0, 1.0, 0.0},
                                     {-1.0, 0.0, 0.0},  {0.0, 0.0, 0.0}};

void set_position(unsigned i, double* x) {
    for (unsigned k = 0; k < 3; ++k) x[k] = i < 14 ? pyramid_nodes[i][k] : 0.0;
}

// r = 1 / (1 - zeta), 0 at the apex
inline double inverse_height(double zeta) {
    const double d = 1.0 - zeta;
    return (d < 0.0 || d > 0.0) ? 1.0 / d : 0.0;
}

// signed halves of a base corner
inline double half_xi(unsigned i) { return (i == 1 || i == 2) ? 0.5 : -0.5; }
inline double half_eta(unsigned i) { return i >= 2 ? 0.5 : -0.5; }

// pyramid14: N = P(x, y, z) + r A(x, y) + r^2 kB x^2 y^2; with dr/dz = r^2,
// dN/dz = dP/dz + r^2 A + 2 r^3 kB x^2 y^2.
struct pyramid14_parts {
    double P, Px, Py, Pz;
    double A, Ax, Ay;
    double kB;
};

pyramid14_parts parts14(unsigned i, double x, double y, double z, bool want_value) {
    pyramid14_parts p{0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
    switch (i) {
        case 0:
            if (want_value) p.P = x * y / 2 - z / 4 + (y * z + x * z + z * z) / 4;
            p.Px = y / 2 + z / 4, p.Py = x / 2 + z / 4, p.Pz = (-1.0 + x + y + 2 * z) / 4;
            p.A = -(x * y + x * x * y + x * y * y) / 4;
            p.Ax = -(y + 2 * x * y + y * y) / 4, p.Ay = -(x + x * x + 2 * x * y) / 4;
            p.kB = 0.25;
            break;
        case 1:
            if (want_value) p.P = y * z / 4 - (x * z + z) / 4 - x * y / 2 + z * z / 4;
            p.Px = -z / 4 - y / 2, p.Py = z / 4 - x / 2, p.Pz = (y - x - 1.0 + 2 * z) / 4;
            p.A = (x * y - x * x * y + x * y * y) / 4;
            p.Ax = (y - 2 * x * y + y * y) / 4, p.Ay = (x - x * x + 2 * x * y) / 4;
            p.kB = 0.25;
            break;
        case 2:
            if (want_value) p.P = x * y / 2 - z / 4 - x * z / 4 - y * z / 4 + z * z / 4;
            p.Px = y / 2 - z / 4, p.Py = x / 2 - z / 4, p.Pz = (-1.0 - x - y + 2 * z) / 4;
            p.A = (-x * y + x * y * y + x * x * y) / 4;
            p.Ax = (-y + y * y + 2 * x * y) / 4, p.Ay = (-x + 2 * x * y + x * x) / 4;
            p.kB = 0.25;
            break;
        case 3:
            if (want_value) p.P = x * z / 4 - x * y / 2 - z / 4 - y * z / 4 + z * z / 4;
            p.Px = z / 4 - y / 2, p.Py = -x / 2 - z / 4, p.Pz = (x - 1.0 - y + 2 * z) / 4;
            p.A = (x * x * y + x * y - x * y * y) / 4;
            p.Ax = (2 * x * y + y - y * y) / 4, p.Ay = (x * x + x - 2 * x * y) / 4;
            p.kB = 0.25;
            break;
        case 4:
            if (want_value) p.P = 2 * z * z - z;
            p.Pz = 4 * z - 1.0;
            break;
        case 5:
            if (want_value) p.P = z - x * y - x * z - y * z - z * z;
            p.Px = -y - z, p.Py = -x - z, p.Pz = 1.0 - x - y - 2 * z;
            p.A = x * y, p.Ax = y, p.Ay = x;
            break;
        case 6:
            if (want_value) p.P = z + x * y + x * z - y * z - z * z;
            p.Px = y + z, p.Py = x - z, p.Pz = 1.0 + x - y - 2 * z;
            p.A = -x * y, p.Ax = -y, p.Ay = -x;
            break;
        case 7:
            if (want_value) p.P = z - x * y + x * z + y * z - z * z;
            p.Px = z - y, p.Py = z - x, p.Pz = 1.0 + x + y - 2 * z;
            p.A = x * y, p.Ax = y, p.Ay = x;
            break;
        case 8:
            if (want_value) p.P = z + x * y - x * z + y * z - z * z;
            p.Px = y - z, p.Py = x + z, p.Pz = 1.0 - x + y - 2 * z;
            p.A = -x * y, p.Ax = -y, p.Ay = -x;
            break;
        case 9:
            if (want_value) p.P = y * z / 2 - y / 2 + y * y / 2;
            p.Py = z / 2 - 0.5 + y, p.Pz = y / 2;
            p.A = x * x * y / 2, p.Ax = x * y, p.Ay = x * x / 2;
            p.kB = -0.5;
            break;
        case 10:
            if (want_value) p.P = x / 2 - x * z / 2 + x * x / 2;
            p.Px = 0.5 - z / 2 + x, p.Pz = -x / 2;
            p.A = -x * y * y / 2, p.Ax = -y * y / 2, p.Ay = -x * y;
            p.kB = -0.5;
            break;
        case 11:
            if (want_value) p.P = y / 2 - y * z / 2 + y * y / 2;
            p.Py = 0.5 - z / 2 + y, p.Pz = -y / 2;
            p.A = -x * x * y / 2, p.Ax = -x * y, p.Ay = -x * x / 2;
            p.kB = -0.5;
            break;
        case 12:
            if (want_value) p.P = x * z / 2 - x / 2 + x * x / 2;
            p.Px = z / 2 - 0.5 + x, p.Pz = x / 2;
            p.A = x * y * y / 2, p.Ax = y * y / 2, p.Ay = x * y;
            p.kB = -0.5;
            break;
        case 13:
            if (want_value) p.P = 1.0 - 2 * z - x * x - y * y + z * z;
            p.Px = -2 * x, p.Py = -2 * y, p.Pz = 2 * z - 2.0;
            p.kB = 1.0;
            break;
        default: break;
    }
    return p;
}

}  // namespace

// --- pyramid5 --------------------------------------------------------------

double pyramid5::value(unsigned i, const double* x) {
    if (i == 4) return x[2];
    if (i > 4) return 0.0;
    const double r = inverse_height(x[2]);
    return (half_xi(i) * r * x[0] + 0.5) * (half_eta(i) * r * x[1] + 0.5) * (1.0 - x[2]);
}

void pyramid5::gradient(unsigned i, const double* x, double* g) {
    g[0] = g[1] = g[2] = 0.0;
    if (i == 4) g[2] = 1.0;
    if (i >= 4) return;
    const double r = inverse_height(x[2]);
    const double s1 = half_xi(i), s2 = half_eta(i);
    const double fx = s1 * r * x[0] + 0.5, fy = s2 * r * x[1] + 0.5;
    g[0] = s1 * fy;
    g[1] = s2 * fx;
    // r xi and r eta both grow with zeta as r^2 xi and r^2 eta
    g[2] = g[0] * r * x[0] + g[1] * r * x[1] - fx * fy;
}

void pyramid5::node_position(unsigned i, double* x) { set_position(i < 5 ? i : 14, x); }

void pyramid5::values(const double* x, double* N) {
    for (unsigned i = 0; i < nbr_nodes; ++i) N[i] = value(i, x);
}

void pyramid5::gradients(const double* x, double (*dN)[dim]) {
    for (unsigned i = 0; i < nbr_nodes; ++i) gradient(i, x, dN[i]);
}

// --- pyramid14 -------------------------------------------------------------

double pyramid14::value(unsigned i, const double* x) {
    const double r = inverse_height(x[2]);
    const pyramid14_parts p = parts14(i, x[0], x[1], x[2], true);
    const double xy = x[0] * x[1];
    return p.P + r * p.A + r * r * p.kB * xy * xy;
}

void pyramid14::gradient(unsigned i, const double* x, double* g) {
    const double r = inverse_height(x[2]);
    const pyramid14_parts p = parts14(i, x[0], x[1], x[2], false);
    const double xy = x[0] * x[1], r2 = r * r;
    g[0] = p.Px + r * p.Ax + r2 * p.kB * 2.0 * xy * x[1];
    g[1] = p.Py + r * p.Ay + r2 * p.kB * 2.0 * xy * x[0];
    g[2] = p.Pz + r2 * p.A + 2.0 * r2 * r * p.kB * xy * xy;
}

void pyramid14::node_position(unsigned i, double* x) { set_position(i, x); }

void pyramid14::values(const double* x, double* N) {
    for (unsigned i = 0; i < nbr_nodes; ++i) N[i] = value(i, x);
}

void pyramid14::gradients(const double* x, double (*dN)[dim]) {
    for (unsigned i = 0; i < nbr_nodes; ++i) gradient(i, x, dN[i]);
}

}  // namespace elfes
