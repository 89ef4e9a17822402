// Example 2: a thick-walled cylinder under internal pressure, meshed by Gmsh, shown in
// ParaView.
//
// What it shows
//   Reading a Gmsh MSH 4.1 file with orvfem_io (a quarter of a ring of radii 10 and 20,
//   height 2, in tetra10); using its physical groups as named sets: the volume "ring"
//   for the mesh model, the planes "sym_x", "sym_y" and "ends" for the supports, the
//   bore "bore" for the load; a pressure on the faces of solid elements turned into
//   consistent nodal forces (the solid elements take forces per unit volume, not
//   pressures on their faces, so the program integrates the pressure over the curved
//   faceT6 faces itself); one linear static run; writing the mesh and the displacements
//   to a .vtu file with orvfem_io.
//
//   The symmetry planes hold the normal displacement, the two end planes hold the axial
//   one: a state of plane strain, whose closed form is Lame's thick cylinder,
//     u(r) = p a^2 (1 + nu) / (E (b^2 - a^2)) ((1 - 2 nu) r + b^2 / r).
//
// How to build and run it
//   cmake --build build --target ex02_gmsh_part && ./build/ex02_gmsh_part [mesh.msh [out.vtu]]
//   The mesh defaults to examples/data/thick_ring.msh of the source tree (its path is
//   compiled in, so the program runs from any folder); thick_ring.geo beside it remakes
//   it with Gmsh (the program measures a, b and h on the mesh, so a refined or resized
//   ring works as well). The file defaults to thick_ring.vtu in the working folder: open it in
//   ParaView, colour by "radial displacement" and apply Warp By Vector to "U".
//   docs/render_ex02.py renders it offscreen to a picture.
//
// What it prints
//   The mesh (nodes, tetra10, loaded faces), the resultant of the nodal forces beside
//   p a h, then the radial displacement of the bore and of the outer surface (the mean
//   over their nodes) beside Lame's, the largest deviation from u(r) over all nodes,
//   and the elastic energy beside p u(a) (pi a h / 2) / 2. It checks that both radial
//   displacements and the energy agree to 0.1 % (about 0.01 % with this mesh), that no
//   node strays from u(r) by more than 0.5 % of u(a), and that the resultant is p a h to
//   1e-9: the bore's projection on each symmetry plane is the rectangle a x h whatever
//   its facets, so a wrong normal or weight shows there. It exits with 1 if the file,
//   the run or a check fails.
#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/io/mesh_io.h>
#include <orv/fem/law_solid_stiff.h>
#include <orv/fem/loads_mgr.h>
#include <orv/fem/model_solid.h>
#include <orv/fem/numerical_model_stiff.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_static_linear.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "orvmath1/dense2D.h"

#ifndef ORV_EX02_MESH
#define ORV_EX02_MESH "examples/data/thick_ring.msh"
#endif

using namespace orv;
using namespace orv::fem;

namespace {

// The material and the pressure; the radii and the height are measured on the mesh.
const double E = 210000.0, nu = 0.3, p = 100.0;
const double pi = 3.14159265358979323846;

// Radii a < b and height h of the ring.
struct cylinder {
    double a = 0.0, b = 0.0, h = 0.0;
    // Lame's radial displacement of the thick cylinder in plane strain.
    double u(double r) const {
        return p * a * a * (1.0 + nu) / (E * (b * b - a * a)) * ((1.0 - 2.0 * nu) * r + b * b / r);
    }
};

const io::node_set* find_nodes(const io::mesh& m, const char* name) {
    for (const io::node_set& s : m.node_sets)
        if (s.name == name) return &s;
    return nullptr;
}
const io::element_set* find_elements(const io::mesh& m, const char* name) {
    for (const io::element_set& s : m.element_sets)
        if (s.name == name) return &s;
    return nullptr;
}

// Consistent nodal forces of a pressure p on one faceT6 face: f_i = p int N_i n dA,
// n the unit normal that points into the solid (towards `inside`, a point of the
// element the face bounds). Node order of the face: corners 0, 1, 2, then mid-side
// node 3 + i opposite corner i. A degree-4 rule of 6 points integrates N_i (t1 x t2)
// exactly on a quadratic face.
void face_forces(const dense2D<double>& pos, const unsigned* nodes, const double* inside, double f[6][3]) {
    static const double g[2][3] = {{0.445948490915965, 0.108103018168070, 0.223381589678011},
                                   {0.091576213509771, 0.816847572980459, 0.109951743655322}};
    static const unsigned edge[3][2] = {{1, 2}, {0, 2}, {0, 1}};  // corners of mid-side node 3 + i
    double c[3] = {0.0, 0.0, 0.0};                                // centroid of the corners
    for (unsigned i = 0; i < 3; ++i)
        for (unsigned d = 0; d < 3; ++d) c[d] += pos(d, nodes[i]) / 3.0;
    for (unsigned i = 0; i < 6; ++i) f[i][0] = f[i][1] = f[i][2] = 0.0;
    double sign = 0.0;
    for (unsigned k = 0; k < 6; ++k) {
        const double s = g[k / 3][0], t = g[k / 3][1], w = 0.5 * g[k / 3][2];
        double L[3] = {s, s, s};
        L[k % 3] = t;
        // N and dN/dL of each node in the barycentric coordinates L
        double N[6], dN[6][3] = {};
        for (unsigned i = 0; i < 3; ++i) {
            N[i] = L[i] * (2.0 * L[i] - 1.0);
            dN[i][i] = 4.0 * L[i] - 1.0;
            const unsigned j = edge[i][0], m = edge[i][1];
            N[3 + i] = 4.0 * L[j] * L[m];
            dN[3 + i][j] = 4.0 * L[m];
            dN[3 + i][m] = 4.0 * L[j];
        }
        // tangents along xi = L0 and eta = L1, with L2 = 1 - xi - eta
        double t1[3] = {}, t2[3] = {};
        for (unsigned i = 0; i < 6; ++i)
            for (unsigned d = 0; d < 3; ++d) {
                t1[d] += (dN[i][0] - dN[i][2]) * pos(d, nodes[i]);
                t2[d] += (dN[i][1] - dN[i][2]) * pos(d, nodes[i]);
            }
        const double n[3] = {t1[1] * t2[2] - t1[2] * t2[1], t1[2] * t2[0] - t1[0] * t2[2],
                             t1[0] * t2[1] - t1[1] * t2[0]};  // n dA = (t1 x t2) dxi deta
        if (sign == 0.0) {
            double dot = 0.0;
            for (unsigned d = 0; d < 3; ++d) dot += n[d] * (inside[d] - c[d]);
            sign = dot > 0.0 ? 1.0 : -1.0;
        }
        for (unsigned i = 0; i < 6; ++i)
            for (unsigned d = 0; d < 3; ++d) f[i][d] += sign * p * w * N[i] * n[d];
    }
}

}  // namespace

int main(int argc, char** argv) {
    const char* msh_path = argc > 1 ? argv[1] : ORV_EX02_MESH;
    const char* vtu_path = argc > 2 ? argv[2] : "thick_ring.vtu";

    // 1. The mesh file: positions, one block per element shape, a node set and an
    //    element set per physical group. Connectivities are already in the library's
    //    node order.
    io::mesh m;
    io::read_error where;
    if (io::read_msh(msh_path, m, &where) != no_error) {
        std::printf("Could not read the mesh: %s\n", where.text.c_str());
        return 1;
    }
    const io::element_set* ring = find_elements(m, "ring");
    const io::element_set* bore = find_elements(m, "bore");
    const io::node_set* sym_x = find_nodes(m, "sym_x");
    const io::node_set* sym_y = find_nodes(m, "sym_y");
    const io::node_set* ends = find_nodes(m, "ends");
    const io::node_set* outer = find_nodes(m, "outer");
    const io::node_set* bore_nodes = find_nodes(m, "bore");
    if (!ring || !bore || !sym_x || !sym_y || !ends || !outer || !bore_nodes || ring->elements.empty() ||
        bore->elements.empty() || outer->nodes.empty()) {
        std::printf("%s lacks a physical group ring, bore, outer, sym_x, sym_y or ends\n", msh_path);
        return 1;
    }
    const io::element_block& tets = m.blocks[ring->elements[0].block];
    const io::element_block& faces = m.blocks[bore->elements[0].block];
    if (tets.type != FE_tetra10 || faces.type != FE_faceT6 || ring->elements.size() != tets.connectivity.cols()) {
        std::printf("%s: expected the tetra10 of \"ring\" in a block of their own and faceT6 on \"bore\"\n", msh_path);
        return 1;
    }
    const unsigned node_count = static_cast<unsigned>(m.positions.cols());
    // The ring's dimensions: the mean radius of the bore and outer nodes, the span in z.
    auto mean_radius = [&](const io::node_set& s) {
        double sum = 0.0;
        for (unsigned n : s.nodes) sum += std::hypot(m.positions(0, n), m.positions(1, n));
        return sum / s.nodes.size();
    };
    double z_min = m.positions(2, 0), z_max = z_min;
    for (unsigned n = 0; n < node_count; ++n) {
        z_min = std::fmin(z_min, m.positions(2, n));
        z_max = std::fmax(z_max, m.positions(2, n));
    }
    cylinder cyl;
    cyl.a = mean_radius(*bore_nodes);
    cyl.b = mean_radius(*outer);
    cyl.h = z_max - z_min;
    const double a = cyl.a, b = cyl.b, h = cyl.h;

    // 2. Law, physics and the mesh model on the tetra10 block.
    context ctx;
    law_solid_StVenant law(ctx, E, nu, 0.0);
    model_solid_lin physics(law);
    numerical_model_stiff_lin model(ctx, physics, tets.connectivity, FE_tetra10);
    if (!law.is_valid() || !physics.is_valid() || !model.is_valid()) {
        std::printf("Could not make the ring model\n");
        return 1;
    }

    // 3. Supports from the named sets: the normal displacement on each symmetry plane,
    //    the axial one on both ends.
    DOFs_mgr DOFs(node_count, true);
    for (unsigned n : sym_x->nodes) DOFs.set(n, field_displacement, 0, false);
    for (unsigned n : sym_y->nodes) DOFs.set(n, field_displacement, 1, false);
    for (unsigned n : ends->nodes) DOFs.set(n, field_displacement, 2, false);

    // 4. The pressure on the bore. Each bore face bounds one tetra10, found by its three
    //    corners; the fourth corner of that tetra tells which way is into the solid.
    std::map<std::array<unsigned, 3>, unsigned> opposite;  // sorted face corners -> fourth corner
    for (std::size_t e = 0; e < tets.connectivity.cols(); ++e)
        for (unsigned skip = 0; skip < 4; ++skip) {
            std::array<unsigned, 3> key;
            for (unsigned i = 0, k = 0; i < 4; ++i)
                if (i != skip) key[k++] = tets.connectivity(i, e);
            std::sort(key.begin(), key.end());
            opposite[key] = tets.connectivity(skip, e);
        }
    problem_data problem(ctx, m.positions, DOFs, model.ID(), 1);
    double resultant[3] = {0.0, 0.0, 0.0};
    for (const io::element_ref& ref : bore->elements) {
        unsigned nodes[6];
        for (unsigned i = 0; i < 6; ++i) nodes[i] = m.blocks[ref.block].connectivity(i, ref.column);
        std::array<unsigned, 3> key = {nodes[0], nodes[1], nodes[2]};
        std::sort(key.begin(), key.end());
        const auto hit = opposite.find(key);
        if (m.blocks[ref.block].type != FE_faceT6 || hit == opposite.end()) {
            std::printf("A bore face is not a faceT6 on the boundary of the ring\n");
            return 1;
        }
        const double inside[3] = {m.positions(0, hit->second), m.positions(1, hit->second),
                                  m.positions(2, hit->second)};
        double f[6][3];
        face_forces(m.positions, nodes, inside, f);
        for (unsigned i = 0; i < 6; ++i)
            for (unsigned d = 0; d < 3; ++d) {
                problem.get_loads_mgr(0).record_nodal_load(nodes[i], field_displacement, d, f[i][d]);
                resultant[d] += f[i][d];
            }
    }

    // 5. The run.
    solver_static_linear solver;
    solver_static_linear::data_type data(problem);
    solver.run(data);
    if (data.error_raised()) {
        std::printf("Run failed: %d %s %s\n", data.error_code, data.error_name, data.error_msg);
        return 1;
    }

    // 6. Radial displacements: the mean over the bore and the outer surface, and the
    //    worst deviation from Lame's u(r) over every node.
    std::vector<double> ur(node_count, 0.0);
    double worst = 0.0, uz_max = 0.0;
    for (unsigned n = 0; n < node_count; ++n) {
        vector_fixed<double, 3> u;
        if (data.U.get_vector(n, field_displacement, 0, u) != no_error) {
            std::printf("Node %u has no displacement in the results\n", n);
            return 1;
        }
        const double x = m.positions(0, n), y = m.positions(1, n), r = std::hypot(x, y);
        ur[n] = (u[0] * x + u[1] * y) / r;
        worst = std::fmax(worst, std::fabs(ur[n] - cyl.u(r)));
        uz_max = std::fmax(uz_max, std::fabs(u[2]));
    }
    auto mean_ur = [&](const io::node_set& s) {
        double sum = 0.0;
        for (unsigned n : s.nodes) sum += ur[n];
        return sum / s.nodes.size();
    };
    const double ua = mean_ur(*bore_nodes), ub = mean_ur(*outer);
    const double energy_theory = 0.5 * p * cyl.u(a) * (0.5 * pi * a * h);

    std::printf("Thick cylinder, a quarter in plane strain: a = %g, b = %g, h = %g; E = %g, nu = %g; p = %g\n", a, b, h,
                E, nu, p);
    std::printf("Mesh %s: %u nodes, %zu tetra10, %zu faceT6 on the bore, %u free DOFs\n", msh_path, node_count,
                tets.connectivity.cols(), bore->elements.size(), data.nbr_free_DOFs);
    std::printf("Resultant of the bore forces: (%.6f, %.6f, %.3e), p a h = %g in x and y\n", resultant[0], resultant[1],
                resultant[2], p * a * h);
    std::printf("  %-28s %14s %14s %10s\n", "", "tetra10", "Lame", "error");
    bool ok = true;
    struct row {
        const char* name;
        double value, theory, tolerance;
    };
    const row rows[] = {{"u_r at the bore (r = a)", ua, cyl.u(a), 1e-3},
                        {"u_r at the outside (r = b)", ub, cyl.u(b), 1e-3},
                        {"elastic energy", data.energy[0], energy_theory, 1e-3}};
    for (const row& r : rows) {
        const double err = r.value / r.theory - 1.0;
        std::printf("  %-28s %14.6e %14.6e %9.4f%%\n", r.name, r.value, r.theory, 100.0 * err);
        ok = ok && std::fabs(err) <= r.tolerance;
    }
    std::printf("Largest |u_r - u(r)| over all nodes: %.3e (%.3f %% of u(a)); largest |u_z|: %.3e\n", worst,
                100.0 * worst / cyl.u(a), uz_max);
    ok = ok && worst <= 0.005 * cyl.u(a);
    for (unsigned d = 0; d < 2; ++d) ok = ok && std::fabs(resultant[d] / (p * a * h) - 1.0) <= 1e-9;

    // 7. The file: the tetra10 block with the displacements "U" (3 components) and the
    //    radial displacement as point fields.
    io::mesh out;
    out.positions = m.positions;
    out.blocks.push_back(tets);
    std::vector<io::vtk_frame> frames;
    if (io::nodal_frames(data.U, node_count, "U", {}, frames) != no_error || frames.empty()) {
        std::printf("Could not make the displacement fields\n");
        return 1;
    }
    io::vtk_field radial;
    radial.name = "radial displacement";
    radial.values.resize(1, node_count, 0.0);
    for (unsigned n = 0; n < node_count; ++n) radial.values(0, n) = ur[n];
    frames[0].point_data.push_back(radial);
    if (io::write_vtu(vtu_path, out, frames[0]) != no_error) {
        std::printf("Could not write %s\n", vtu_path);
        return 1;
    }
    std::printf("Mesh and displacements written to %s (in ParaView: Warp By Vector on U).\n", vtu_path);
    std::printf("%s\n", ok ? "All checks against Lame's solution passed." : "A CHECK AGAINST LAME'S SOLUTION FAILED.");
    return ok ? 0 : 1;
}
