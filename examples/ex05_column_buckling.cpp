// Example 5: the buckling load of a solid column of hexa8 elements.
//
// What it shows
//   An Euler buckling run: a square column clamped at its foot, one load case holding
//   a reference load (a unit compressive force spread over the top face), and a
//   solver_buckling_Euler asked for the lowest load factors. The run solves the
//   static case, builds the geometric stiffness Kg of its stresses and finds the
//   factors lambda of K x = -lambda Kg x: the column buckles under lambda times the
//   reference load. A second run turns the load into tension and looks for negative
//   factors, which only a range below 0 holds.
//
// How to build and run it
//   cmake --build build --target ex05_column_buckling && ./build/ex05_column_buckling
//
// What it prints
//   The first run's level-1 log, then the two lowest factors (one pair: the square
//   section buckles alike in y and z) beside Euler's load of a clamped-free column,
//   P = pi^2 E I / (4 L^2), and the factors of the column in tension. It checks that
//   the pair is within the 5 % above Euler's load that this mesh of fully integrated
//   hexa8 allows (they are too stiff in bending; 2.5 % here), that the tension factors are the
//   compression ones with their sign turned, and exits with 1 if a check fails.
#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/law_solid_stiff.h>
#include <orv/fem/model_solid.h>
#include <orv/fem/numerical_model_stiff.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_buckling_Euler.h>

#include <cfloat>
#include <cmath>
#include <cstdio>

using namespace orv;
using namespace orv::fem;

namespace {

const unsigned nx = 40, ny = 4, nz = 4;  // elements along x (the axis), y and z
const double length = 10.0, side = 1.0, E = 1000.0, nu = 0.0;
const unsigned node_count = (nx + 1) * (ny + 1) * (nz + 1), element_count = nx * ny * nz;

unsigned node(unsigned i, unsigned j, unsigned k) { return (i * (ny + 1) + j) * (nz + 1) + k; }

void print_log(void*, unsigned level, const char* text) {
    if (level <= 1) std::printf("%s", text);
}

// A run of the column under the end force P along x (negative: compression) in the
// range of load factors [low, high]; false when the run fails.
bool run(context& ctx, dense2D<double>& pos, DOFs_mgr& DOFs, const numerical_model_base& model, double P, double low,
         double high, bool show_log, solver_buckling_Euler::data_type& data) {
    problem_data problem(ctx, pos, DOFs, model.ID(), 1);
    // The reference load: P spread over the top face as bilinear faces spread a
    // uniform traction: an inner node takes 1 / (ny nz) of it, an edge node half of
    // that, a corner node a quarter.
    for (unsigned j = 0; j <= ny; ++j)
        for (unsigned k = 0; k <= nz; ++k) {
            const double wj = (j == 0 || j == ny) ? 0.5 : 1.0, wk = (k == 0 || k == nz) ? 0.5 : 1.0;
            problem.get_loads_mgr(0).record_nodal_load(node(nx, j, k), field_displacement, 0, P * wj * wk / (ny * nz));
        }
    solver_buckling_Euler solver;
    solver.settings.max_modes = 2;
    solver.settings.lambda_min = low;
    solver.settings.lambda_max = high;
    solver.settings.tolerance = 1e-8;
    if (show_log) solver.settings.display_hook = print_log;
    data = solver_buckling_Euler::data_type(problem);
    solver.run(data);
    if (data.error_raised()) std::printf("Run failed: %d %s %s\n", data.error_code, data.error_name, data.error_msg);
    return !data.error_raised();
}

}  // namespace

int main() {
    // 1. The mesh: a lattice of nodes and hexa8 cells in the library's node order.
    context ctx;
    dense2D<double> pos(3, node_count, 0.0);
    for (unsigned i = 0; i <= nx; ++i)
        for (unsigned j = 0; j <= ny; ++j)
            for (unsigned k = 0; k <= nz; ++k) {
                pos(0, node(i, j, k)) = length * i / nx;
                pos(1, node(i, j, k)) = side * (double(j) / ny - 0.5);
                pos(2, node(i, j, k)) = side * (double(k) / nz - 0.5);
            }
    dense2D<unsigned int> conn(8, element_count, 0u);
    unsigned e = 0;
    for (unsigned i = 0; i < nx; ++i)
        for (unsigned j = 0; j < ny; ++j)
            for (unsigned k = 0; k < nz; ++k, ++e) {
                const unsigned c[8] = {
                    node(i, j, k),     node(i + 1, j, k),     node(i + 1, j + 1, k),     node(i, j + 1, k),
                    node(i, j, k + 1), node(i + 1, j, k + 1), node(i + 1, j + 1, k + 1), node(i, j + 1, k + 1)};
                for (unsigned a = 0; a < 8; ++a) conn(a, e) = c[a];
            }

    // 2. Law, physics and the stiffness mesh: Kg comes from the same mesh (the second
    //    path of its elements), so no other model is needed.
    law_solid_StVenant law(ctx, E, nu, 0.0);
    model_solid_lin physics(law);
    numerical_model_stiff_lin model(ctx, physics, conn, FE_hexa8);
    if (!model.is_valid()) {
        std::printf("Could not make the column model\n");
        return 1;
    }

    // 3. The clamp: every displacement of the nodes at x = 0 blocked.
    DOFs_mgr DOFs(node_count, true);
    for (unsigned j = 0; j <= ny; ++j)
        for (unsigned k = 0; k <= nz; ++k) DOFs.set(node(0, j, k), field_displacement, false);

    // 4. Compression by a unit force: the factors from 0 up (an open range).
    solver_buckling_Euler::data_type press, pull;
    if (!run(ctx, pos, DOFs, model, -1.0, 0.0, DBL_MAX, true, press) || press.buckling_loads.size() != 2) return 1;

    // 5. Tension: no positive factor; the range below 0 holds the same ones, signed.
    if (!run(ctx, pos, DOFs, model, 1.0, -DBL_MAX, 0.0, false, pull) || pull.buckling_loads.size() != 2) return 1;

    const double pi = 3.141592653589793, I = std::pow(side, 4) / 12.0;
    const double euler = pi * pi * E * I / (4.0 * length * length);
    std::printf("\nColumn: L = %g, section %g x %g, clamped at x = 0; E = %g; %u x %u x %u hexa8, %u free DOFs\n",
                length, side, side, E, nx, ny, nz, press.nbr_free_DOFs);
    std::printf("  Euler's load pi^2 E I / (4 L^2)   : %.6e\n", euler);
    bool ok = true;
    for (unsigned i = 0; i < 2; ++i) {
        const double l = press.buckling_loads[i], t = pull.buckling_loads[i];
        std::printf("  mode %u: compression %+.6e (ratio to Euler %.4f), tension %+.6e\n", i + 1, l, l / euler, t);
        ok = ok && l / euler > 1.0 && l / euler < 1.05;
        ok = ok && std::fabs(t + l) < 1e-6 * l;
    }
    std::printf("%s\n", ok ? "All checks passed." : "A check FAILED.");
    return ok ? 0 : 1;
}
