// Example 6: steady and transient heat in a plate of faceQ4 elements.
//
// What it shows
//   The heat models and runs: a square plate with a conduction mesh
//   (model_heat_conduction_2d, the law's value being conductivity times thickness)
//   and a capacity mesh (model_heat_capacity_2d) on one connectivity, gathered in a
//   composite; its left edge held at 100 and its right edge at 0 by prescribed
//   temperatures, the other edges insulated. solver_heat_static_linear gives the
//   steady field; solver_heat_dynamic_linear starts from 0 and integrates the heating
//   with Crank-Nicolson steps, keeping every tenth step.
//
// How to build and run it
//   cmake --build build --target ex06_heat_plate && ./build/ex06_heat_plate
//
// What it prints
//   The steady run's level-1 log and its temperatures along the mid line against the
//   exact linear profile, then the temperature at the plate's centre at each output
//   time of the transient run against the series solution of the slab,
//   T = 100 (1 - x / L) - sum 200 / (n pi) sin(n pi x / L) exp(-a (n pi / L)^2 t),
//   a = k / c. It checks the steady profile to 1e-9, the transient to 0.5 % of the
//   hot temperature, and exits with 1 if a check fails.
#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/law_scalar.h>
#include <orv/fem/model_heat.h>
#include <orv/fem/numerical_model_composite.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_heat_dynamic_linear.h>
#include <orv/fem/solver_heat_static_linear.h>

#include <cmath>
#include <cstdio>

using namespace orv;
using namespace orv::fem;

namespace {

const unsigned nx = 20, ny = 4;  // elements along x (the heat flows along it) and y
const double L = 1.0, W = 0.2, k = 1.5, c = 3.0, hot = 100.0;
const unsigned node_count = (nx + 1) * (ny + 1);

unsigned node(unsigned i, unsigned j) { return j * (nx + 1) + i; }

void print_log(void*, unsigned level, const char* text) {
    if (level <= 1) std::printf("%s", text);
}

// The slab's series solution at x and t.
double series(double x, double t) {
    const double pi = 3.141592653589793, a = k / c;
    double T = hot * (1.0 - x / L);
    for (int n = 1; n < 200; ++n)
        T -= 2.0 * hot / (n * pi) * std::sin(n * pi * x / L) * std::exp(-a * std::pow(n * pi / L, 2) * t);
    return T;
}

}  // namespace

int main() {
    // 1. The mesh: a lattice of nodes and faceQ4 cells counter-clockwise.
    context ctx;
    dense2D<double> pos(3, node_count, 0.0);
    for (unsigned j = 0; j <= ny; ++j)
        for (unsigned i = 0; i <= nx; ++i) {
            pos(0, node(i, j)) = L * i / nx;
            pos(1, node(i, j)) = W * j / ny;
        }
    dense2D<unsigned int> conn(4, nx * ny, 0u);
    unsigned e = 0;
    for (unsigned j = 0; j < ny; ++j)
        for (unsigned i = 0; i < nx; ++i, ++e) {
            conn(0, e) = node(i, j);
            conn(1, e) = node(i + 1, j);
            conn(2, e) = node(i + 1, j + 1);
            conn(3, e) = node(i, j + 1);
        }

    // 2. Conduction and capacity on the same cells, in one composite model.
    law_scalar conductivity(ctx, k), capacity(ctx, c);
    model_heat_conduction_2d conduction(conductivity);
    model_heat_capacity_2d storage(capacity);
    numerical_model_heat K(ctx, conduction, conn, FE_faceQ4), C(ctx, storage, conn, FE_faceQ4);
    numerical_model_composite model(ctx);
    if (!K.is_valid() || !C.is_valid() || model.insert(K.ID(), C.ID()) != no_error) {
        std::printf("Could not make the plate model\n");
        return 1;
    }

    // 3. The temperature DOF of every node, and one load case holding the edges.
    DOFs_mgr DOFs(node_count, false);
    for (unsigned v = 0; v < node_count; ++v) DOFs.set(v, field_temperature, true);
    problem_data problem(ctx, pos, DOFs, model.ID(), 1);
    for (unsigned j = 0; j <= ny; ++j) {
        problem.get_loads_mgr(0).record_nodal_prescribed_value(node(0, j), field_temperature, 0, hot);
        problem.get_loads_mgr(0).record_nodal_prescribed_value(node(nx, j), field_temperature, 0, 0.0);
    }

    // 4. Steady state: linear between the two edges.
    solver_heat_static_linear steady;
    steady.settings.display_hook = print_log;
    solver_heat_static_linear::data_type s(problem);
    steady.run(s);
    if (s.error_raised()) {
        std::printf("Steady run failed: %d %s %s\n", s.error_code, s.error_name, s.error_msg);
        return 1;
    }
    bool ok = true;
    std::printf("\nSteady temperatures along y = W / 2:\n  %8s %14s %14s\n", "x", "T", "exact");
    for (unsigned i = 0; i <= nx; i += 4) {
        double T = 0.0;
        s.U.get_val(9ull * node(i, ny / 2) + 6, 0, T);
        const double x = pos(0, node(i, 0)), exact = hot * (1.0 - x / L);
        std::printf("  %8.3f %14.9f %14.9f\n", x, T, exact);
        ok = ok && std::fabs(T - exact) < 1e-9;
    }

    // 5. Heating from 0: Crank-Nicolson steps of 0.005, every tenth kept.
    solver_heat_dynamic_linear transient;
    transient.settings.t_end = 0.5;
    transient.settings.dt = 0.005;
    transient.settings.theta = 0.5;
    transient.settings.output_period = 10;
    solver_heat_dynamic_linear::data_type d(problem);
    transient.run(d);
    if (d.error_raised()) {
        std::printf("Transient run failed: %d %s %s\n", d.error_code, d.error_name, d.error_msg);
        return 1;
    }
    const unsigned centre = node(nx / 2, ny / 2);
    std::printf("\nCentre temperature while heating (slab series alongside):\n  %8s %14s %14s\n", "t", "T", "series");
    for (unsigned col = 0; col < d.times.size(); ++col) {
        double T = 0.0;
        d.T.get_val(9ull * centre + 6, col, T);
        const double exact = series(L / 2, d.times[col]);
        std::printf("  %8.3f %14.6f %14.6f\n", d.times[col], T, exact);
        ok = ok && std::fabs(T - exact) < 0.005 * hot;
    }
    std::printf("%s\n", ok ? "All checks passed." : "A check FAILED.");
    return ok ? 0 : 1;
}
