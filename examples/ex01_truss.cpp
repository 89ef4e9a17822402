// Example 1: a plane truss of three bars under three load cases.
//
// What it shows
//   The smallest complete linear static run: a context, a DOF table with blocked
//   displacements, three bars each given as a 4 x 4 stiffness matrix (stiffness_sym)
//   gathered in a composite model, a problem_data with three load cases, one of whose
//   supports is an imposed value, and a solver_static_linear whose log goes to stdout.
//
// How to build and run it
//   cmake --build build --target ex01_truss && ./build/ex01_truss
//
// What it prints
//   The version and the processor resources the library found, the full run log, then
//   per load case the elastic energy and the displacements of the three nodes. The truss
//   is statically determinate, so its bar forces follow from equilibrium alone; the
//   program compares the apex and roller displacements with the unit-load method and
//   the energy with sum N^2 L / (2 E A). It exits with 1 if the run fails or if any
//   value is off by more than 1e-9 relative.
#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/numerical_model_composite.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_static_linear.h>
#include <orv/fem/stiffness_sym.h>
#include <orv/fem/version.h>

#include <cmath>
#include <cstdio>
#include <vector>

#include "orvmath1/dense1D.h"
#include "orvmath1/dense2D.h"
#include "orvmath1/symmetric_full.h"

using namespace orv;
using namespace orv::fem;

namespace {

// Node 0 at (0, 0) is pinned, node 1 at (4, 0) rests on a roller, node 2 at (2, 3) is
// the apex. Bars 0-1, 1-2 and 2-0, all with the same axial stiffness EA.
const double xy[3][2] = {{0.0, 0.0}, {4.0, 0.0}, {2.0, 3.0}};
const unsigned ends[3][2] = {{0, 1}, {1, 2}, {2, 0}};
const double EA = 2e5;

double bar_length(unsigned b) {
    return std::hypot(xy[ends[b][1]][0] - xy[ends[b][0]][0], xy[ends[b][1]][1] - xy[ends[b][0]][1]);
}

// Axial forces (tension positive) of bars 0-1, 1-2, 2-0 under a load (px, py) at the
// apex, by the method of joints. The roller reaction comes from the moments about
// node 0; joint 1 then gives bars 0-1 and 1-2, joint 0 gives bar 2-0.
void bar_forces(double px, double py, double N[3]) {
    const double s13 = std::sqrt(13.0);
    const double r1 = (3.0 * px - 2.0 * py) / 4.0;  // vertical reaction of the roller
    const double r0 = -py - r1;                     // vertical reaction of the pin
    N[1] = -r1 * s13 / 3.0;
    N[0] = 2.0 * r1 / 3.0;
    N[2] = -r0 * s13 / 3.0;
}

bool close(double value, double expected) { return std::fabs(value - expected) <= 1e-9 * std::fabs(expected) + 1e-15; }

}  // namespace

int main() {
    // 1. The context, and what the library found of the processor.
    std::printf("ORV FEM %s\n", version::text());
    context ctx;
    std::printf("Physical cores %u, max threads %u, last-level cache %u bytes\n\n", ctx.get_nbr_physical_cores(),
                ctx.get_max_threads(), ctx.get_LLC_size());

    // 2. Node positions: one column per node, rows x, y, z.
    dense2D<double> pos(3, 3, 0.0);
    for (unsigned n = 0; n < 3; ++n) {
        pos(0, n) = xy[n][0];
        pos(1, n) = xy[n][1];
    }

    // 3. The DOF table: everything blocked, then the in-plane displacements of nodes 1
    //    and 2 freed. Node 1's vertical displacement is imposed at 0 in every case below.
    DOFs_mgr dofs(3, false);
    for (unsigned n = 1; n < 3; ++n) dofs.set(n, field_displacement, 0, 1, true);

    // 4. The bars: k [d -d; -d d] with d = [c c, c s; c s, s s] on (ux_a, uy_a, ux_b,
    //    uy_b), k = EA / L, (c, s) the bar's direction. DOF IDs are node * 9 + position.
    numerical_model_composite truss(ctx);
    std::vector<stiffness_sym> bars;
    for (unsigned b = 0; b < 3; ++b) {
        const unsigned a = ends[b][0], z = ends[b][1];
        const double L = bar_length(b), k = EA / L;
        const double d[2] = {(xy[z][0] - xy[a][0]) / L, (xy[z][1] - xy[a][1]) / L};
        symmetric_full<double> K(4, 0.0);
        for (unsigned i = 0; i < 4; ++i)
            for (unsigned j = 0; j <= i; ++j) K(i, j) = ((i < 2) == (j < 2) ? k : -k) * d[i % 2] * d[j % 2];
        dense1D<unsigned int> ids(4);
        ids[0] = 9 * a;
        ids[1] = 9 * a + 1;
        ids[2] = 9 * z;
        ids[3] = 9 * z + 1;
        bars.emplace_back(ctx, K, ids, 1);
        truss.insert(bars.back().ID());
    }

    // 5. Three load cases: 10 down at the apex, 5 sideways at the apex, both together.
    const double loads[3][2] = {{0.0, -10.0}, {5.0, 0.0}, {5.0, -10.0}};
    problem_data problem(ctx, pos, dofs, truss.ID(), 3);
    const unsigned apex_x = 9 * 2, apex_y = 9 * 2 + 1, roller_y = 9 * 1 + 1;
    for (unsigned c = 0; c < 3; ++c) {
        if (loads[c][0] != 0.0) problem.get_loads_mgr(c).record_DOF_load(apex_x, loads[c][0]);
        if (loads[c][1] != 0.0) problem.get_loads_mgr(c).record_DOF_load(apex_y, loads[c][1]);
        problem.get_loads_mgr(c).record_DOF_prescribed_value(roller_y, 0.0);
    }

    // 6. The run, its log on stdout.
    solver_static_linear solver;
    solver.settings.display_hook = [](void*, unsigned, const char* text) { std::fputs(text, stdout); };
    solver_static_linear::data_type data(problem);
    solver.run(data);
    if (data.error_raised()) {
        std::printf("Run failed: %d %s %s\n", data.error_code, data.error_name, data.error_msg);
        return 1;
    }
    std::printf("\nFree DOFs %u, eliminated %u, kept imposed %u, rows of U %u\n", data.nbr_free_DOFs,
                data.nbr_eliminated_DOFs, data.nbr_kept_imposed_DOFs, data.nbr_total_DOFs);

    // 7. Results against statics. Unit loads at the apex in x and in y give the virtual
    //    bar forces; the apex displacement is sum N n L / (E A). The roller moves by the
    //    stretch of the horizontal bar 0-1.
    double nx[3], ny[3];
    bar_forces(1.0, 0.0, nx);
    bar_forces(0.0, 1.0, ny);
    bool ok = true;
    for (unsigned c = 0; c < 3; ++c) {
        double N[3], ux = 0.0, uy = 0.0, energy = 0.0;
        bar_forces(loads[c][0], loads[c][1], N);
        for (unsigned b = 0; b < 3; ++b) {
            const double flexibility = bar_length(b) / EA;
            ux += N[b] * nx[b] * flexibility;
            uy += N[b] * ny[b] * flexibility;
            energy += 0.5 * N[b] * N[b] * flexibility;
        }
        const double roller_x = N[0] * bar_length(0) / EA;

        vector_fixed<double, 3> u[3];
        for (unsigned n = 0; n < 3; ++n) data.U.get_vector(n, field_displacement, c, u[n]);
        std::printf("Load case %u: elastic energy %.6e (statics %.6e)\n", c + 1, data.energy[c], energy);
        for (unsigned n = 0; n < 3; ++n) std::printf("  node %u  ux %+.6e  uy %+.6e\n", n, u[n][0], u[n][1]);
        std::printf("  statics: apex ux %+.6e  uy %+.6e, roller ux %+.6e\n", ux, uy, roller_x);
        ok = ok && close(u[2][0], ux) && close(u[2][1], uy) && close(u[1][0], roller_x) && close(u[1][1], 0.0) &&
             close(data.energy[c], energy);
    }
    std::printf("%s\n", ok ? "All displacements and energies agree with statics." : "MISMATCH with statics.");
    return ok ? 0 : 1;
}
