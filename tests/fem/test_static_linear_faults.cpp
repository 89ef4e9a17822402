// Linear static run on input it must refuse or report honestly: non-finite loads and
// imposed values on every path, non-finite pivots, the size of Ks when it is not kept,
// and the strain energy of a model driven by imposed displacements.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/elementary_load.h>
#include <orv/fem/law_solid_stiff.h>
#include <orv/fem/model_solid.h>
#include <orv/fem/numerical_model_composite.h>
#include <orv/fem/numerical_model_stiff.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_static_linear.h>
#include <orv/fem/stiffness_diag.h>
#include <orv/fem/stiffness_sym.h>

#include "fem/static_linear_chain.h"
#include "orvmath1/dense2D.h"
#include "orvmath1/symmetric_full.h"

using namespace orv;
using solver = fem::solver_static_linear;
using static_linear_test::chain;

namespace {

const double NaN = std::numeric_limits<double>::quiet_NaN();
const double INF = std::numeric_limits<double>::infinity();

// A model of separate diagonal stiffnesses (no coupling): the pivots are the values,
// whatever the order of elimination.
struct diagonal {
    fem::context ctx;
    dense2D<double> pos;
    fem::DOFs_mgr table;
    fem::stiffness_diag model;
    fem::problem_data problem;

    diagonal(const std::vector<double>& values, const std::vector<unsigned>& ids) : pos(3, 4, 0.0), table(4, false) {
        dense1D<double> v(values.size());
        dense1D<unsigned int> i(ids.size());
        for (std::size_t a = 0; a < values.size(); ++a) {
            v[a] = values[a];
            i[a] = ids[a];
            table.set(ids[a], true);
        }
        model = fem::stiffness_diag(ctx, v, i, 1);
        problem = fem::problem_data(ctx, pos, table, model.ID(), 1);
    }
};

void expect_not_finite_error(const solver::data_type& d) {
    EXPECT_EQ(d.error_code, fem::error_not_finite);
    EXPECT_STREQ(d.error_name, "INF or NaN detected.");
    EXPECT_NE(std::strstr(d.error_msg, "fem/solver_static_linear"), nullptr) << d.error_msg;
}

}  // namespace

// A NaN in a nodal load or in an eliminated imposed value is reported, on the direct
// path and on the per-case paths alike; a clean case before it is solved.
TEST(StaticLinearFaults, NonFiniteLoadsAndImposedValues) {
    struct variant {
        const char* name;
        bool imposed;  // NaN in an imposed value imposed in all cases, else in a load
        unsigned use_ALM;
    };
    for (const variant v : {variant{"load, direct", false, 0}, variant{"imposed, direct", true, 0},
                            variant{"load, ALM", false, 1}, variant{"imposed, ALM", true, 1}}) {
        SCOPED_TRACE(v.name);
        chain m({100.0, 200.0}, 2, true, 2);
        m.load(0, 2, 1.0);
        if (v.imposed) {
            m.impose(0, 1, 0.0);
            m.impose(1, 1, NaN);
        } else {
            m.load(1, 2, NaN);
        }
        m.add_diag({50.0}, {18}, 0);  // a penalty support: the ALM switch matters
        solver s;
        s.settings.use_ALM = v.use_ALM;
        std::vector<std::string> lines;
        s.settings.display_hook = [](void* p, unsigned, const char* t) {
            static_cast<std::vector<std::string>*>(p)->push_back(t);
        };
        s.settings.pass_thru = &lines;
        solver::data_type d(m.problem);
        s.run(d);
        expect_not_finite_error(d);
        bool named = false;
        for (const auto& l : lines) named = named || l.find("Load case #1: INF or NaN detected.") != std::string::npos;
        EXPECT_TRUE(named);
    }
}

// A NaN body force on a hexa8 goes through the element loads.
TEST(StaticLinearFaults, NonFiniteBodyForce) {
    fem::context ctx;
    fem::law_solid_StVenant law(ctx);
    ASSERT_EQ(law.init(1.0, 0.3, 0.0), 0);
    fem::model_solid_lin physics;
    ASSERT_EQ(physics.init(law), fem::no_error);
    dense2D<unsigned int> conn(8, 1, 0u);
    dense2D<double> pos(3, 8, 0.0);
    static const unsigned corner[8][3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                          {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
    for (unsigned a = 0; a < 8; ++a) {
        conn(a, 0) = a;
        for (unsigned c = 0; c < 3; ++c) pos(c, a) = corner[a][c];
    }
    fem::numerical_model_stiff_lin mesh;
    ASSERT_EQ(mesh.init(ctx, physics, conn, fem::FE_hexa8), fem::no_error);
    fem::DOFs_mgr table(8, false);
    for (unsigned v = 4; v < 8; ++v) table.set(v, fem::field_displacement, true);
    fem::problem_data problem(ctx, pos, table, mesh.ID(), 1);
    dense1D<double> g(3, 0.0);
    g[2] = NaN;
    ASSERT_EQ(problem.get_loads_mgr(0).record_NM_load(mesh.ID(), fem::numerical_model_base::all_elements,
                                                      fem::elementary_load(24, 0, g)),
              fem::no_error);
    solver s;
    solver::data_type d(problem);
    s.run(d);
    expect_not_finite_error(d);
}

// A pivot that is not finite: -107, the DOF from the row of the largest pivot, and a
// range that holds what the factorisation saw, never the recorder's start values.
TEST(StaticLinearFaults, NonFinitePivots) {
    const double start = 1.7976931348623157e+308;
    struct variant {
        std::vector<double> values;
        std::vector<unsigned> ids;
        unsigned bad_DOF;
    };
    const variant variants[] = {{{INF}, {9}, 9}, {{2.0, INF}, {0, 18}, 18}, {{NaN}, {27}, 27}};
    for (const bool forcing : {false, true})
        for (const variant& v : variants) {
            SCOPED_TRACE(testing::Message() << (forcing ? "forcing " : "checking ") << v.bad_DOF);
            diagonal m(v.values, v.ids);
            solver s;
            s.settings.force_positive_pivots = forcing;
            solver::data_type d(m.problem);
            s.run(d);
            EXPECT_EQ(d.error_code, fem::error_pivot);
            EXPECT_STREQ(d.error_name, "Pivot error.");
            EXPECT_EQ(d.bad_pivot_DOF, v.bad_DOF);
            EXPECT_NE(d.pivot_min, start);
            EXPECT_NE(d.pivot_max, -start);
            if (std::isnan(v.values[0])) {
                EXPECT_TRUE(std::isnan(d.pivot_min) && std::isnan(d.pivot_max));
            } else {
                EXPECT_EQ(d.pivot_max, INF);
                if (v.values.size() == 1) {
                    EXPECT_EQ(d.pivot_min, INF);
                }
            }
        }
}

// size_Ks is the size of the sparse stiffness whether or not the run keeps it, and
// the size gate counts it only when it does.
TEST(StaticLinearFaults, SizeOfKsWithoutKeepingIt) {
    // 4 free DOFs in a chain: 4 diagonal and 3 off-diagonal entries.
    const double MB = 1.0 / 1048576.0;
    const double expected = MB * (4.0 * (4 + 18 + 7) + 8.0 * 7);
    for (const std::uint32_t mask : {64u, 16u | 64u, 0u}) {
        SCOPED_TRACE(mask);
        chain m({1.0, 2.0, 3.0, 4.0}, 4, true, 1);
        m.load(0, 4, 1.0);
        solver s;
        s.settings.output_mask = mask;
        solver::data_type d(m.problem);
        s.run(d);
        ASSERT_EQ(d.error_code, 0);
        EXPECT_DOUBLE_EQ(d.size_Ks, expected);
        if (mask == 64u) {
            EXPECT_DOUBLE_EQ(d.size_total, d.size_Kf + d.size_RHS + d.size_U);
        }
    }
}

// Two springs in series driven by an imposed displacement of their far end: no load
// does work, all the energy is in the springs. k1 = 100, k2 = 200, u2 = 0.03: the
// force is 0.03 / (1/100 + 1/200) = 2, u1 = 0.02, the strain energy 0.5 * 2 * 0.03.
TEST(StaticLinearFaults, StrainEnergyOfADisplacementDrivenModel) {
    for (const bool eliminated : {true, false}) {
        SCOPED_TRACE(eliminated ? "eliminated" : "kept");
        chain m({100.0, 200.0}, 2, true, 2);
        m.impose(0, 2, 0.03);
        if (eliminated)
            m.impose(1, 2, 0.03);
        else
            m.load(1, 1, 3.0);  // the tip is free here: u1 = u2 = 0.03
        solver s;
        s.settings.use_ALM = 0;
        s.settings.tol_CG = 1e-12;
        solver::data_type d(m.problem);
        s.run(d);
        ASSERT_EQ(d.error_code, 0) << d.error_name;
        double u1 = 0.0;
        ASSERT_EQ(d.U.get_val(9, 0, u1), 0);
        EXPECT_NEAR(u1, 0.02, 1e-12);
        EXPECT_EQ(d.energy[0], 0.0);
        ASSERT_EQ(d.strain_energy.size(), 2u);
        EXPECT_NEAR(d.strain_energy[0], 0.03, 1e-12);
        // Case 1 is a plain load case: both energies are 1/2 F u.
        const double e1 = eliminated ? 0.03 : 0.5 * 3.0 * 0.03;
        EXPECT_NEAR(d.strain_energy[1], e1, 1e-12);
        if (!eliminated) {
            EXPECT_NEAR(d.energy[1], e1, 1e-12);
        }
    }
}

// A factor kept from a run whose factorisation failed is refused when it is supplied
// to a second run, instead of being solved with.
TEST(StaticLinearFaults, UnfactoredSuppliedFactorIsRefused) {
    diagonal m({1.0, 0.0}, {0, 9});
    m.problem.get_loads_mgr(0).record_DOF_load(0, 1.0);
    solver s;
    s.settings.output_mask = 32 | 64;
    solver::data_type first(m.problem);
    s.run(first);
    ASSERT_EQ(first.error_code, fem::error_pivot);
    ASSERT_EQ(first.Kf.dim(), 2u);
    solver::data_type second(m.problem);
    second.Kf = first.Kf;
    s.settings.input_mask = 32;
    s.run(second);
    EXPECT_EQ(second.error_code, fem::error_data);
    EXPECT_STREQ(second.error_name, "DATA ERROR");
    EXPECT_EQ(second.U.cols(), 0u);
}

// The work arrays of the factorisation count in the size gate: a clique of 300 DOFs
// whose Kf, F and U fit in 1 MB, but not with the dense 300 x 300 copy of its block.
TEST(StaticLinearFaults, SizeGateCountsTheFactorisationWorkArrays) {
    const unsigned n = 300;
    fem::context ctx;
    ctx.set_max_threads(1);
    dense2D<double> pos(3, n, 0.0);
    fem::DOFs_mgr table(n, false);
    symmetric_full<double> K(n, 0.0);
    dense1D<unsigned int> ids(n);
    for (unsigned i = 0; i < n; ++i) {
        table.set(9 * i, true);
        ids[i] = 9 * i;
        K(i, i) = 2.0 * n;
        for (unsigned j = 0; j < i; ++j) K(i, j) = -1.0;
    }
    fem::stiffness_sym model(ctx, K, ids, 1);
    fem::problem_data problem(ctx, pos, table, model.ID(), 1);
    problem.get_loads_mgr(0).record_DOF_load(0, 1.0);
    for (const bool limited : {false, true}) {
        SCOPED_TRACE(limited ? "1 MB limit" : "no limit");
        if (limited) ctx.set_max_total_size(1);
        solver s;
        solver::data_type d(problem);
        s.run(d);
        EXPECT_GE(d.size_spare, 8.0 * n * n / 1048576.0);
        EXPECT_LT(d.size_total, 1.0);
        EXPECT_GT(d.size_total + d.size_spare, 1.0);
        EXPECT_EQ(d.error_code, limited ? fem::error_memory_limit : 0);
    }
}
