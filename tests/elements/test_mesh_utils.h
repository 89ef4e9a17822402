// Meshes and helpers shared by the mesh model tests: structured patches of every
// solid shape with distorted node positions, an isotropic law, element matrices.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <map>
#include <vector>

#include <orv/fem/context.h>
#include <orv/fem/model_solid.h>
#include <orv/fem/numerical_model_stiff.h>

#include "elements/elfes_shapes.h"
#include "elements/numerical_model_stiff_mesh.h"
#include "elements/shape_element_type.h"
#include "laws/law_solid_stiff.h"
#include "model/element_workspace.h"
#include "model/vector_assembler.h"

namespace orv {
namespace test {

// A handle on any engine object, to hand an engine law to the public model classes.
struct engine_handle : fem::base_class {
    explicit engine_handle(ref_counted* p) : fem::base_class(p) {}
};

inline Ptr<core::law_solid_StVenant> make_law(double E, double nu) {
    Ptr<core::law_solid_StVenant> law(new core::law_solid_StVenant());
    dense1D<double> d(3);
    d[0] = E;
    d[1] = nu;
    d[2] = 0.0;
    EXPECT_EQ(law->init(d), 0);
    return law;
}

struct lame {
    double lambda, mu;
    lame(double E, double nu) : lambda(nu * E / ((1 + nu) * (1 - 2 * nu))), mu(E / (2 + 2 * nu)) {}
};

// A mesh: positions (3 rows) and connectivity (one column per element).
struct test_mesh {
    dense2D<double> pos;
    dense2D<unsigned int> conn;
    std::vector<std::array<int, 3>> keys;  // lattice coordinates of each node
    int extent = 0;                        // lattice size of the box
    bool interior(unsigned node) const {
        for (int c = 0; c < 3; ++c)
            if (keys[node][c] <= 0 || keys[node][c] >= extent) return false;
        return true;
    }
};

// Determinant of the Jacobian of a shape at reference point xi for nodes X (in the
// plane of the first two coordinates for a surface shape).
template <class Shape>
double det_at(const double (*X)[3], const double* xi) {
    constexpr unsigned D = Shape::dim;
    double dN[Shape::nbr_nodes][D];
    Shape::gradients(xi, dN);
    double J[9] = {0, 0, 0, 0, 0, 0, 0, 0, D == 2 ? 1.0 : 0.0};
    for (unsigned i = 0; i < Shape::nbr_nodes; ++i)
        for (unsigned a = 0; a < D; ++a)
            for (unsigned b = 0; b < D; ++b) J[3 * a + b] += dN[i][a] * X[i][b];
    return J[0] * (J[4] * J[8] - J[5] * J[7]) - J[1] * (J[3] * J[8] - J[5] * J[6]) + J[2] * (J[3] * J[7] - J[4] * J[6]);
}

// The cells of an nx x ny x nz box, each of lattice size `step`, every cell whole
// (hexahedra, quadrilaterals) or split into elements of Shape (wedges and triangles
// by two, tetrahedra by six around the main diagonal, pyramids by six around the
// centre), each oriented to a positive Jacobian. Surface shapes fill the plane z = 0
// (nz is not used). Fills keys (lattice coordinates of the nodes, integer for every
// node of a quadratic shape when step is even, a multiple of 4 for pyramid14) and the
// connectivity, cells with x fastest; the caller places the nodes in pos.
template <class Shape>
test_mesh make_lattice(int nx, int ny, int nz, int step) {
    constexpr bool flat = Shape::dim == 2;
    using Corner = std::conditional_t<
        flat, std::conditional_t<Shape::element_type_value >= 9, elfes::faceQ4, elfes::faceT3>,
        std::conditional_t<
            Shape::element_type_value >= 22, elfes::hexa8,
            std::conditional_t<Shape::element_type_value >= 19, elfes::wedge6,
                               std::conditional_t<Shape::element_type_value >= 16, elfes::pyramid5, elfes::tetra4>>>>;
    constexpr unsigned NC = Corner::nbr_nodes;
    test_mesh m;
    std::map<std::array<int, 3>, unsigned> index;
    std::vector<std::vector<unsigned>> elements;
    auto node_of = [&](const std::array<int, 3>& k) {
        auto it = index.find(k);
        if (it != index.end()) return it->second;
        const unsigned id = static_cast<unsigned>(m.keys.size());
        index[k] = id;
        m.keys.push_back(k);
        return id;
    };
    // the element of corner keys c (lattice coordinates), oriented to a positive J
    auto add_element = [&](std::array<std::array<double, 3>, NC> c) {
        for (int attempt = 0; attempt < 2; ++attempt) {
            std::array<std::array<int, 3>, Shape::nbr_nodes> k;
            double X[Shape::nbr_nodes][3];
            for (unsigned i = 0; i < Shape::nbr_nodes; ++i) {
                double xi[3] = {0, 0, 0}, N[NC];
                Shape::node_position(i, xi);
                Corner::values(xi, N);
                for (int d = 0; d < 3; ++d) {
                    double v = 0;
                    for (unsigned j = 0; j < NC; ++j) v += N[j] * c[j][d];
                    k[i][d] = static_cast<int>(std::lround(v));
                    X[i][d] = v;
                }
            }
            double centre[3] = {0.25, 0.25, 0.25};
            if (NC == 5) centre[0] = centre[1] = 0.0;
            if (NC == 6) centre[0] = centre[1] = 1.0 / 3.0, centre[2] = 0.0;
            if (NC == 8) centre[0] = centre[1] = centre[2] = 0.0;
            if (flat) centre[0] = centre[1] = NC == 3 ? 1.0 / 3.0 : 0.0, centre[2] = 0.0;
            if (det_at<Shape>(X, centre) > 0) {
                std::vector<unsigned> e;
                for (auto& kk : k) e.push_back(node_of(kk));
                elements.push_back(e);
                return;
            }
            // mirror the element: swap two corners (and their images)
            if (flat)
                std::swap(c[NC == 3 ? 0 : 1], c[NC == 3 ? 1 : 3]);
            else if (NC == 4)
                std::swap(c[0], c[1]);
            if (NC == 5) std::swap(c[1], c[3]);
            if (NC == 6) std::swap(c[0], c[1]), std::swap(c[3], c[4]);
            if (NC == 8) std::swap(c[1], c[3]), std::swap(c[5], c[7]);
        }
        ADD_FAILURE() << "element without a positive Jacobian";
    };
    for (int bz = 0; bz < (flat ? 1 : nz); ++bz)
        for (int by = 0; by < ny; ++by)
            for (int bx = 0; bx < nx; ++bx) {
                auto P = [&](int x, int y, int z) {
                    return std::array<double, 3>{double(step * (bx + x)), double(step * (by + y)),
                                                 double(step * (bz + z))};
                };
                // hexa8 order
                const std::array<std::array<double, 3>, 8> h8 = {P(0, 0, 0), P(1, 0, 0), P(1, 1, 0), P(0, 1, 0),
                                                                 P(0, 0, 1), P(1, 0, 1), P(1, 1, 1), P(0, 1, 1)};
                if constexpr (flat && NC == 4) {
                    add_element({h8[0], h8[1], h8[2], h8[3]});
                } else if constexpr (flat) {
                    add_element({P(1, 0, 0), P(0, 1, 0), P(0, 0, 0)});
                    add_element({P(1, 1, 0), P(0, 1, 0), P(1, 0, 0)});
                } else if constexpr (NC == 8) {
                    add_element(h8);
                } else if constexpr (NC == 6) {
                    add_element({h8[0], h8[1], h8[2], h8[4], h8[5], h8[6]});
                    add_element({h8[0], h8[2], h8[3], h8[4], h8[6], h8[7]});
                } else if constexpr (NC == 4 && !flat) {
                    const int perm[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
                    for (auto& p : perm) {
                        int b[3] = {0, 0, 0};
                        std::array<std::array<double, 3>, 4> c;
                        c[0] = P(0, 0, 0);
                        b[p[0]] = 1;
                        c[1] = P(b[0], b[1], b[2]);
                        b[p[1]] = 1;
                        c[2] = P(b[0], b[1], b[2]);
                        c[3] = P(1, 1, 1);
                        add_element(c);
                    }
                } else {
                    std::array<double, 3> centre = P(0, 0, 0);
                    for (int d = 0; d < 3; ++d) centre[d] += step / 2;
                    const int faces[6][4] = {{0, 1, 2, 3}, {4, 5, 6, 7}, {0, 1, 5, 4},
                                             {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}};
                    for (auto& f : faces) add_element({h8[f[0]], h8[f[1]], h8[f[2]], h8[f[3]], centre});
                }
            }
    m.conn.resize(Shape::nbr_nodes, elements.size());
    for (std::size_t e = 0; e < elements.size(); ++e)
        for (unsigned i = 0; i < Shape::nbr_nodes; ++i) m.conn(i, e) = elements[e][i];
    return m;
}

// A patch of n x n x n cubes of side h (make_lattice with lattice size 4). Node
// positions are the lattice points scaled by h / 4, each interior one moved by a
// fixed pseudo-random amount of up to `distortion` times the lattice step, so that
// the boundary stays the faces of the box (unless `move_boundary`).
template <class Shape>
test_mesh make_patch(int n, double h, double distortion, bool move_boundary = false) {
    test_mesh m = make_lattice<Shape>(n, n, n, 4);
    m.extent = 4 * n;
    const unsigned nn = static_cast<unsigned>(m.keys.size());
    m.pos.resize(3, nn);
    for (unsigned i = 0; i < nn; ++i)
        for (int d = 0; d < 3; ++d) {
            // a fixed pseudo-random displacement of each lattice point
            const double r =
                std::sin(12.9898 * m.keys[i][0] + 78.233 * m.keys[i][1] + 37.719 * m.keys[i][2] + 11.0 * d);
            const double jitter = (move_boundary || m.interior(i))
                                      ? distortion * (r * 43758.5453 - std::floor(r * 43758.5453) - 0.5) * 2.0
                                      : 0.0;
            m.pos(d, i) = (m.keys[i][d] + jitter) * h / 4.0;
        }
    return m;
}

// A solution vector on all displacement DOFs of the nodes, u = f(x).
template <class F>
core::DOF_vector make_U(const dense2D<double>& pos, F&& f) {
    std::vector<unsigned> ids;
    for (unsigned i = 0; i < pos.cols(); ++i)
        for (unsigned d = 0; d < 3; ++d) ids.push_back(i * 9 + d);
    Ptr<core::DOF_index> index(new core::DOF_index(ids.data(), ids.data() + ids.size()));
    core::DOF_vector U;
    U.init(index, 0.0);
    for (unsigned i = 0; i < pos.cols(); ++i) {
        double x[3] = {pos(0, i), pos(1, i), pos(2, i)}, u[3];
        f(x, u);
        for (unsigned d = 0; d < 3; ++d) *U.find(i * 9 + d) = u[d];
    }
    return U;
}

// Element results in the order of the workspace's sorted DOF list.
struct element_result {
    int rc = 0;
    std::vector<unsigned> ids;
    std::vector<double> K;  // full, row-major
    std::vector<double> f;
    double energy = 0.0;
    double at(std::size_t i, std::size_t j) const { return K[i * ids.size() + j]; }
};

inline element_result compute_element(core::numerical_model_base& model, const dense2D<double>& pos, std::uint32_t e,
                                      const core::DOF_vector* U = nullptr, int matrix_level = 1) {
    core::assembly_args args;
    args.pos = &pos;
    args.U = U;
    core::element_workspace ws(args, model.ID());
    ws.matrix_level = matrix_level;
    ws.vector_level = U ? 1 : 0;
    ws.element_ID = e;
    element_result r;
    r.rc = model.compute_matrix(1, ws);
    if (r.rc || !ws.DOFs) return r;
    const std::size_t n = ws.DOFs->size();
    r.ids.assign(ws.DOFs->begin(), ws.DOFs->end());
    if (ws.sym.matrix().dim() == n) {
        r.K.resize(n * n);
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = 0; j < n; ++j) r.K[i * n + j] = ws.sym.matrix()(i, j);
    }
    if (ws.vector.size() == n) r.f.assign(ws.vector.begin(), ws.vector.end());
    r.energy = ws.results[0];
    return r;
}

}  // namespace test
}  // namespace orv
