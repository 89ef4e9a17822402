// A prism of hexa8 solids along x: nx x ny x nz cells on [0, L] x [-a/2, a/2]^2,
// node (i, j, k) numbered (i (ny + 1) + j) (nz + 1) + k; clamped at x = 0 when asked
// (the nodes there have no free DOFs).
#pragma once

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/field_tag.h>

#include "orvmath1/dense2D.h"

namespace orv {
namespace test {

struct hexa_bar_mesh {
    unsigned nx, ny, nz;
    double L, a;
    dense2D<double> pos;
    dense2D<unsigned int> conn;
    fem::DOFs_mgr table;

    unsigned node(unsigned i, unsigned j, unsigned k) const { return (i * (ny + 1) + j) * (nz + 1) + k; }
    unsigned nbr_nodes() const { return (nx + 1) * (ny + 1) * (nz + 1); }

    hexa_bar_mesh(unsigned nx_, unsigned ny_, unsigned nz_, double length, double side, bool clamped)
        : nx(nx_), ny(ny_), nz(nz_), L(length), a(side) {
        pos = dense2D<double>(3, nbr_nodes(), 0.0);
        conn = dense2D<unsigned int>(8, nx * ny * nz, 0u);
        table = fem::DOFs_mgr(nbr_nodes(), false);
        for (unsigned i = 0; i <= nx; ++i)
            for (unsigned j = 0; j <= ny; ++j)
                for (unsigned k = 0; k <= nz; ++k) {
                    const unsigned p = node(i, j, k);
                    pos(0, p) = L * i / nx;
                    pos(1, p) = a * (double(j) / ny - 0.5);
                    pos(2, p) = a * (double(k) / nz - 0.5);
                    if (!clamped || i > 0) table.set(p, fem::field_displacement, true);
                }
        unsigned e = 0;
        for (unsigned i = 0; i < nx; ++i)
            for (unsigned j = 0; j < ny; ++j)
                for (unsigned k = 0; k < nz; ++k, ++e) {
                    const unsigned c[8] = {
                        node(i, j, k),     node(i + 1, j, k),     node(i + 1, j + 1, k),     node(i, j + 1, k),
                        node(i, j, k + 1), node(i + 1, j, k + 1), node(i + 1, j + 1, k + 1), node(i, j + 1, k + 1)};
                    for (unsigned q = 0; q < 8; ++q) conn(q, e) = c[q];
                }
    }

    // The share of node (nx, j, k) in a uniform load on the end face x = L (bilinear
    // faces: corners 1/4, edges 1/2 of an inner node's share); the shares sum to 1.
    double end_share(unsigned j, unsigned k) const {
        const double wj = (j == 0 || j == ny) ? 0.5 : 1.0, wk = (k == 0 || k == nz) ? 0.5 : 1.0;
        return wj * wk / double(ny * nz);
    }
};

}  // namespace test
}  // namespace orv
