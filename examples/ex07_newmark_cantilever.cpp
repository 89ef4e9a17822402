// Example 7: a solid cantilever under a suddenly applied tip load, by Newmark's method.
//
// What it shows
//   A transient run: the hexa8 cantilever of the earlier examples with its mass mesh in
//   a composite, a tip load in one load case applied at t = 0 and held, and a
//   solver_Newmark with the average acceleration scheme (beta 1/4, gamma 1/2) over
//   three periods of the first bending mode. The same problem through
//   solver_static_linear gives the static deflection, and through solver_modal the
//   first period that sets the time step.
//
// How to build and run it
//   cmake --build build --target ex07_newmark_cantilever && ./build/ex07_newmark_cantilever
//
// What it prints
//   The static tip deflection, the first period, then the tip deflection every tenth
//   step. A load applied suddenly and held drives an undamped structure to twice its
//   static deflection around which it swings; the example checks that the largest tip
//   deflection lies between 1.8 and 2.1 times the static one, that the mean over the
//   last two periods is within 5 % of it, and exits with 1 if a check fails.
#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/law_scalar.h>
#include <orv/fem/law_solid_stiff.h>
#include <orv/fem/model_solid.h>
#include <orv/fem/model_solid_mass.h>
#include <orv/fem/numerical_model_composite.h>
#include <orv/fem/numerical_model_mass.h>
#include <orv/fem/numerical_model_stiff.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_Newmark.h>
#include <orv/fem/solver_modal.h>
#include <orv/fem/solver_static_linear.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

using namespace orv;
using namespace orv::fem;

namespace {

const unsigned nx = 10, ny = 2, nz = 2;
const double length = 10.0, side = 1.0, E = 1000.0, nu = 0.3, rho = 1.0, P = -0.1;
const unsigned node_count = (nx + 1) * (ny + 1) * (nz + 1);

unsigned node(unsigned i, unsigned j, unsigned k) { return (i * (ny + 1) + j) * (nz + 1) + k; }

}  // namespace

int main() {
    // 1. Mesh, stiffness and mass in a composite, the clamp at x = 0.
    context ctx;
    dense2D<double> pos(3, node_count, 0.0);
    for (unsigned i = 0; i <= nx; ++i)
        for (unsigned j = 0; j <= ny; ++j)
            for (unsigned k = 0; k <= nz; ++k) {
                pos(0, node(i, j, k)) = length * i / nx;
                pos(1, node(i, j, k)) = side * (double(j) / ny - 0.5);
                pos(2, node(i, j, k)) = side * (double(k) / nz - 0.5);
            }
    dense2D<unsigned int> conn(8, nx * ny * nz, 0u);
    unsigned e = 0;
    for (unsigned i = 0; i < nx; ++i)
        for (unsigned j = 0; j < ny; ++j)
            for (unsigned k = 0; k < nz; ++k, ++e) {
                const unsigned c[8] = {
                    node(i, j, k),     node(i + 1, j, k),     node(i + 1, j + 1, k),     node(i, j + 1, k),
                    node(i, j, k + 1), node(i + 1, j, k + 1), node(i + 1, j + 1, k + 1), node(i, j + 1, k + 1)};
                for (unsigned a = 0; a < 8; ++a) conn(a, e) = c[a];
            }
    law_solid_StVenant law(ctx, E, nu, 0.0);
    law_scalar density(ctx, rho);
    numerical_model_stiff_lin stiffness(ctx, model_solid_lin(law), conn, FE_hexa8);
    numerical_model_mass mass(ctx, model_solid_mass(density), conn, FE_hexa8);
    numerical_model_composite model(ctx);
    if (!stiffness.is_valid() || !mass.is_valid() || model.insert(stiffness.ID(), mass.ID()) != no_error) {
        std::printf("Could not make the cantilever model\n");
        return 1;
    }
    DOFs_mgr DOFs(node_count, true);
    for (unsigned j = 0; j <= ny; ++j)
        for (unsigned k = 0; k <= nz; ++k) DOFs.set(node(0, j, k), field_displacement, false);

    // 2. One load case: the tip load in z, shared by the nodes of the end face.
    problem_data problem(ctx, pos, DOFs, model.ID(), 1);
    const unsigned tip = node(nx, ny / 2, nz / 2);
    for (unsigned j = 0; j <= ny; ++j)
        for (unsigned k = 0; k <= nz; ++k)
            problem.get_loads_mgr(0).record_nodal_load(node(nx, j, k), field_displacement, 2,
                                                       P / ((ny + 1) * (nz + 1)));

    // 3. The static deflection and the first period.
    solver_static_linear statics;
    solver_static_linear::data_type s(problem);
    statics.run(s);
    solver_modal modes;
    solver_modal::data_type m(problem);
    modes.run(m);
    if (s.error_raised() || m.error_raised() || m.frequencies.size() != 1) {
        std::printf("Static or modal run failed\n");
        return 1;
    }
    double w_static = 0.0;
    s.U.get_val(9ull * tip + 2, 0, w_static);
    const double period = 1.0 / m.frequencies[0];
    std::printf("Static tip deflection %.6e, first period %.6e\n", w_static, period);

    // 4. Newmark over three periods, 100 steps a period.
    solver_Newmark newmark;
    newmark.settings.dt = period / 100.0;
    newmark.settings.t_end = 3.0 * period;
    solver_Newmark::data_type d(problem);
    newmark.run(d);
    if (d.error_raised()) {
        std::printf("Newmark run failed: %d %s %s\n", d.error_code, d.error_name, d.error_msg);
        return 1;
    }
    std::printf("%10s %14s %10s\n", "t", "tip w", "w / static");
    double peak = 0.0, mean = 0.0;
    unsigned counted = 0;
    for (unsigned col = 0; col < d.times.size(); ++col) {
        double w = 0.0;
        d.U.get_val(9ull * tip + 2, col, w);
        if (col % 10 == 9) std::printf("%10.4f %14.6e %10.4f\n", d.times[col], w, w / w_static);
        peak = std::max(peak, w / w_static);
        if (d.times[col] > period) {
            mean += w / w_static;
            ++counted;
        }
    }
    mean /= counted;
    std::printf("Largest tip deflection %.4f times the static one, mean over the last two periods %.4f\n", peak, mean);
    const bool ok = peak > 1.8 && peak < 2.1 && std::fabs(mean - 1.0) < 0.05;
    std::printf("%s\n", ok ? "All checks passed." : "A check FAILED.");
    return ok ? 0 : 1;
}
