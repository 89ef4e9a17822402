// Demonstration of a linear static analysis: a plane truss of three bars, each a
// stiffness_sym model, three load cases, one support imposed in every case.
#pragma once

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/numerical_model_composite.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_static_linear.h>
#include <orv/fem/stiffness_sym.h>

#include <cmath>
#include <cstdio>
#include <vector>

#include "orvmath1/dense1D.h"
#include "orvmath1/dense2D.h"
#include "orvmath1/symmetric_full.h"

// Runs the analysis, prints its log and its results. Returns 0, or the run's error
// code when it failed.
inline int run_static_demo() {
    using namespace orv;
    using namespace orv::fem;

    // Nodes: 0 at (0, 0), 1 at (4, 0), 2 at (2, 3). Bars 0-1, 1-2, 2-0 with EA = 2e5.
    context ctx;
    dense2D<double> pos(3, 3, 0.0);
    const double xy[3][2] = {{0.0, 0.0}, {4.0, 0.0}, {2.0, 3.0}};
    for (unsigned n = 0; n < 3; ++n) {
        pos(0, n) = xy[n][0];
        pos(1, n) = xy[n][1];
    }
    // In-plane displacements free, except both of node 0 (a pin); node 1 rests on a
    // roller, its vertical displacement imposed at 0 in every case below.
    DOFs_mgr dofs(3, false);
    for (unsigned n = 1; n < 3; ++n) dofs.set(n, field_displacement, 0, 1, true);

    numerical_model_composite truss(ctx);
    std::vector<stiffness_sym> bars;
    const unsigned ends[3][2] = {{0, 1}, {1, 2}, {2, 0}};
    const double EA = 2e5;
    for (const auto& e : ends) {
        const double dx = xy[e[1]][0] - xy[e[0]][0], dy = xy[e[1]][1] - xy[e[0]][1];
        const double L = std::sqrt(dx * dx + dy * dy), c = dx / L, s = dy / L, k = EA / L;
        // k * [d -d; -d d] with d = [c c, c s; c s, s s] on (ux_a, uy_a, ux_b, uy_b).
        const double d[2] = {c, s};
        symmetric_full<double> K(4, 0.0);
        for (unsigned i = 0; i < 4; ++i)
            for (unsigned j = 0; j <= i; ++j) {
                const double sign = (i < 2) == (j < 2) ? 1.0 : -1.0;
                K(i, j) = sign * k * d[i % 2] * d[j % 2];
            }
        dense1D<unsigned int> ids(4);
        ids[0] = 9 * e[0];
        ids[1] = 9 * e[0] + 1;
        ids[2] = 9 * e[1];
        ids[3] = 9 * e[1] + 1;
        bars.emplace_back(ctx, K, ids, 1);
        truss.insert(bars.back().ID());
    }

    // Case 1: 10 down at the apex; case 2: 5 sideways at the apex; case 3: both.
    problem_data problem(ctx, pos, dofs, truss.ID(), 3);
    const unsigned apex_x = 9 * 2, apex_y = 9 * 2 + 1, roller_y = 9 * 1 + 1;
    problem.get_loads_mgr(0).record_DOF_load(apex_y, -10.0);
    problem.get_loads_mgr(1).record_DOF_load(apex_x, 5.0);
    problem.get_loads_mgr(2).record_DOF_load(apex_y, -10.0);
    problem.get_loads_mgr(2).record_DOF_load(apex_x, 5.0);
    for (unsigned c = 0; c < 3; ++c) problem.get_loads_mgr(c).record_DOF_prescribed_value(roller_y, 0.0);

    solver_static_linear solver;
    solver.settings.display_hook = [](void*, unsigned level, const char* text) {
        if (level <= 3) std::fputs(text, stdout);
    };
    solver_static_linear::data_type data(problem);
    solver.run(data);
    if (data.error_raised()) {
        std::printf("Run failed: %d %s %s\n", data.error_code, data.error_name, data.error_msg);
        return data.error_code;
    }
    if (data.warning_raised()) std::printf("Warning: %d %s\n", data.warning_code, data.error_name);

    std::printf("Free DOFs %u, eliminated %u, kept imposed %u, rows of U %u\n", data.nbr_free_DOFs,
                data.nbr_eliminated_DOFs, data.nbr_kept_imposed_DOFs, data.nbr_total_DOFs);
    for (unsigned c = 0; c < 3; ++c) {
        std::printf("Load case %u: elastic energy %.6e\n", c + 1, data.energy[c]);
        for (unsigned n = 0; n < 3; ++n) {
            vector_fixed<double, 3> u;
            data.U.get_vector(n, field_displacement, c, u);
            std::printf("  node %u  ux %+.6e  uy %+.6e\n", n, u[0], u[1]);
        }
    }
    return 0;
}
