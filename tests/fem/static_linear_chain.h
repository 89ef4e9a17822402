// Fixtures of the linear static run tests: a log capture and a chain of springs.
#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/numerical_model_composite.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_static_linear.h>
#include <orv/fem/stiffness_diag.h>
#include <orv/fem/stiffness_sym.h>

#include "common/log_capture.h"
#include "orvmath1/dense2D.h"
#include "orvmath1/symmetric_full.h"

namespace orv {
namespace static_linear_test {

// The common log capture on a run's display hook; the interrupt hook stays the run's.
struct log_capture : orv::test::log_capture {
    explicit log_capture(fem::solver_static_linear::settings_type& s) {
        s.display_hook = &display;
        s.pass_thru = this;
    }
};

// Springs k[i - 1] between nodes i - 1 and i on the x DOFs (node * 9), as stiffness_sym
// models in a composite; node 0 blocked in the DOF table or free.
struct chain {
    fem::context ctx;
    dense2D<double> pos;
    fem::DOFs_mgr table;
    fem::numerical_model_composite comp;
    fem::problem_data problem;
    std::vector<double> k;
    std::vector<fem::numerical_model_base> models;

    chain(std::vector<double> ks, unsigned nbr_springs, bool fix_first, std::size_t nbr_cases)
        : pos(3, std::max(nbr_springs + 1, 5u), 0.0), table(std::max(nbr_springs + 1, 5u), false), comp(ctx), k(ks) {
        const unsigned nodes = std::max(nbr_springs + 1, 5u);
        for (unsigned j = fix_first ? 1 : 0; j < nodes; ++j) table.set(9ull * j, true);
        for (unsigned j = 0; j < nodes; ++j) pos(0, j) = double(j);
        for (unsigned i = 1; i <= nbr_springs; ++i) {
            symmetric_full<double> K(2, 0.0);
            K(0, 0) = K(1, 1) = k[i - 1];
            K(1, 0) = -k[i - 1];
            dense1D<unsigned int> ids(2);
            ids[0] = 9 * (i - 1);
            ids[1] = 9 * i;
            fem::stiffness_sym spring(ctx, K, ids, 1);
            comp.insert(spring.ID());
            models.push_back(spring);
        }
        k.resize(nbr_springs);
        problem = fem::problem_data(ctx, pos, table, comp.ID(), nbr_cases);
    }
    unsigned last() const { return static_cast<unsigned>(k.size()); }
    // Sum of 1 / k_i for i = 1 .. j.
    double flexibility(unsigned j) const {
        double f = 0.0;
        for (unsigned i = 1; i <= j; ++i) f += 1.0 / k[i - 1];
        return f;
    }
    void load(std::size_t c, unsigned node, double P) { problem.get_loads_mgr(c).record_DOF_load(9 * node, P); }
    void impose(std::size_t c, unsigned node, double v) {
        problem.get_loads_mgr(c).record_DOF_prescribed_value(9 * node, v);
    }
    unsigned add_diag(std::vector<double> values, std::vector<unsigned> ids, int absolute) {
        dense1D<double> v(values.size());
        dense1D<unsigned int> i(ids.size());
        for (std::size_t a = 0; a < values.size(); ++a) v[a] = values[a];
        for (std::size_t a = 0; a < ids.size(); ++a) i[a] = ids[a];
        fem::stiffness_diag d(ctx, v, i, absolute);
        comp.insert(d.ID());
        models.push_back(d);
        return d.ID();
    }
};

}  // namespace static_linear_test
}  // namespace orv
