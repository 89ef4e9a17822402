// Helpers of the I/O tests: the data folder, the shared scratch files, and the geometric
// check of a block's node order with the library's own shapes.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include <orv/fem/io/mesh_io.h>

#include "common/scratch_files.h"
#include "elements/elfes_shapes.h"

namespace orv_io_test {

using namespace orv::fem;
using namespace orv::fem::io;
using orv::dense2D;
using orv::test::scratch;
using orv::test::slurp;
using orv::test::spit;

inline std::string data_path(const std::string& name) {
    const char* env = std::getenv("ORV_TEST_DATA");
    return (env != nullptr ? std::string(env) : std::string(ORV_IO_TEST_DATA_ROOT)) + "/io/" + name;
}

// A record that a failed read must leave exactly as it is.
inline mesh sentinel_mesh() {
    mesh m;
    m.positions.resize(3, 1);
    m.positions = 42.0;
    m.node_ids = {7};
    m.blocks.resize(1);
    m.blocks[0].label = "sentinel";
    return m;
}

inline bool is_sentinel(const mesh& m) {
    return m.positions.rows() == 3 && m.positions.cols() == 1 && m.positions(2, 0) == 42.0 && m.node_ids.size() == 1 &&
           m.blocks.size() == 1 && m.blocks[0].label == "sentinel" && m.node_sets.empty() && m.element_sets.empty();
}

// Checks every element of a block with straight edges: each node lies where the corner
// shape puts the library's reference position of that node (this catches a wrong
// mid-node map), and the Jacobian of the corners at the centroid is positive (a
// reversed corner order gives a negative volume). Full gives the reference positions,
// Corner the corner shape.
template <class Full, class Corner>
void check_order(const mesh& m, const element_block& b, unsigned nbr, const double* centroid) {
    ASSERT_EQ(b.connectivity.rows(), nbr);
    for (std::size_t e = 0; e < b.connectivity.cols(); ++e) {
        auto x = [&](unsigned node, unsigned k) { return m.positions(k, b.connectivity(node, e)); };
        for (unsigned i = 0; i < nbr; ++i) {
            double r[3] = {0, 0, 0}, N[Corner::nbr_nodes];
            Full::node_position(i, r);
            Corner::values(r, N);
            for (unsigned k = 0; k < 3; ++k) {
                double expected = 0.0;
                for (unsigned c = 0; c < Corner::nbr_nodes; ++c) expected += N[c] * x(c, k);
                ASSERT_NEAR(x(i, k), expected, 1e-9) << b.label << " element " << e << " node " << i;
            }
        }
        double dN[Corner::nbr_nodes][Corner::dim], J[3][3] = {};
        Corner::gradients(centroid, dN);
        for (unsigned c = 0; c < Corner::nbr_nodes; ++c)
            for (unsigned k = 0; k < 3; ++k)
                for (unsigned d = 0; d < Corner::dim; ++d) J[k][d] += dN[c][d] * x(c, k);
        double measure = 0.0;
        if (Corner::dim == 1) measure = std::sqrt(J[0][0] * J[0][0] + J[1][0] * J[1][0] + J[2][0] * J[2][0]);
        if (Corner::dim == 2) {  // area of a face anywhere in space: the norm of dx/dxi x dx/deta
            const double n0 = J[1][0] * J[2][1] - J[2][0] * J[1][1], n1 = J[2][0] * J[0][1] - J[0][0] * J[2][1],
                         n2 = J[0][0] * J[1][1] - J[1][0] * J[0][1];
            measure = std::sqrt(n0 * n0 + n1 * n1 + n2 * n2);
        }
        if (Corner::dim == 3)
            measure = J[0][0] * (J[1][1] * J[2][2] - J[1][2] * J[2][1]) -
                      J[0][1] * (J[1][0] * J[2][2] - J[1][2] * J[2][0]) +
                      J[0][2] * (J[1][0] * J[2][1] - J[1][1] * J[2][0]);
        ASSERT_GT(measure, 0.0) << b.label << " element " << e;
    }
}

// The check above for whatever shape the block holds.
inline void check_block(const mesh& m, const element_block& b) {
    using namespace elfes;
    static const double tet[3] = {0.25, 0.25, 0.25}, hex[3] = {0, 0, 0}, wedge[3] = {1.0 / 3, 1.0 / 3, 0},
                        pyr[3] = {0, 0, 0.25}, tri[3] = {1.0 / 3, 1.0 / 3, 0};
    switch (b.type) {
        case FE_edge2: return check_order<edge2, edge2>(m, b, 2, hex);
        case FE_edge3: return check_order<edge3, edge2>(m, b, 3, hex);
        case FE_edge4: return check_order<edge4, edge2>(m, b, 4, hex);
        case FE_faceT3: return check_order<faceT3, faceT3>(m, b, 3, tri);
        case FE_faceT6: return check_order<faceT6, faceT3>(m, b, 6, tri);
        case FE_faceQ4: return check_order<faceQ4, faceQ4>(m, b, 4, hex);
        case FE_faceQ8: return check_order<faceQ9, faceQ4>(m, b, 8, hex);
        case FE_faceQ9: return check_order<faceQ9, faceQ4>(m, b, 9, hex);
        case FE_tetra4: return check_order<tetra4, tetra4>(m, b, 4, tet);
        case FE_tetra10: return check_order<tetra10, tetra4>(m, b, 10, tet);
        case FE_pyramid5: return check_order<pyramid5, pyramid5>(m, b, 5, pyr);
        case FE_pyramid13: return check_order<pyramid14, pyramid5>(m, b, 13, pyr);
        case FE_pyramid14: return check_order<pyramid14, pyramid5>(m, b, 14, pyr);
        case FE_wedge6: return check_order<wedge6, wedge6>(m, b, 6, wedge);
        case FE_wedge15: return check_order<wedge18, wedge6>(m, b, 15, wedge);
        case FE_wedge18: return check_order<wedge18, wedge6>(m, b, 18, wedge);
        case FE_hexa8: return check_order<hexa8, hexa8>(m, b, 8, hex);
        case FE_hexa20: return check_order<hexa27, hexa8>(m, b, 20, hex);
        case FE_hexa27: return check_order<hexa27, hexa8>(m, b, 27, hex);
        default: break;
    }
}

inline const element_block* find_block(const mesh& m, element_type type) {
    for (const element_block& b : m.blocks)
        if (b.type == type) return &b;
    return nullptr;
}

}  // namespace orv_io_test
