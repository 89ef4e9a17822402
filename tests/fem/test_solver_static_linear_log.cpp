// The whole log of a reference linear static run, line by line against the formats,
// with the values that the model fixes written out and the times masked.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/numerical_model_composite.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_static_linear.h>
#include <orv/fem/stiffness_sym.h>

#include "orvmath1/dense2D.h"
#include "orvmath1/symmetric_full.h"

using namespace orv;

namespace {

// A printf format as a pattern: each conversion matches any value it can print.
std::regex format_pattern(const std::string& format) {
    std::string out;
    for (std::size_t i = 0; i < format.size(); ++i) {
        const char ch = format[i];
        if (ch != '%') {
            if (std::string("\\^$.|?*+()[]{}").find(ch) != std::string::npos) out += '\\';
            out += ch;
            continue;
        }
        std::size_t j = i + 1;
        while (j < format.size() && std::string("0123456789.+-l").find(format[j]) != std::string::npos) ++j;
        switch (format[j]) {
            case '%': out += "%"; break;
            case 'd':
            case 'u': out += " *-?[0-9]+"; break;
            case 'f': out += " *-?[0-9]+\\.[0-9]+"; break;
            case 'E': out += "[+-][0-9]\\.[0-9]{6}E[+-][0-9]{2}"; break;
            default: ADD_FAILURE() << "conversion " << format[j];
        }
        i = j;
    }
    return std::regex(out);
}

std::string printed(const char* format, double v) {
    char buf[256];
    std::snprintf(buf, sizeof buf, format, v);
    return buf;
}

struct log_line {
    unsigned level;
    std::string text;
};

}  // namespace

TEST(StaticLinearLog, ReferenceRunLineByLine) {
    // Springs 100, 200, 400 from node 0 (blocked) to node 3; case 0: 10 at node 3,
    // case 1: 5 at node 1.
    fem::context ctx;
    ctx.set_max_threads(1);
    dense2D<double> pos(3, 4, 0.0);
    fem::DOFs_mgr table(4, false);
    for (unsigned j = 1; j < 4; ++j) table.set(9ull * j, true);
    fem::numerical_model_composite comp(ctx);
    const double k[3] = {100.0, 200.0, 400.0};
    std::vector<fem::stiffness_sym> springs;
    for (unsigned i = 1; i <= 3; ++i) {
        symmetric_full<double> K(2, 0.0);
        K(0, 0) = K(1, 1) = k[i - 1];
        K(1, 0) = -k[i - 1];
        dense1D<unsigned int> ids(2);
        ids[0] = 9 * (i - 1);
        ids[1] = 9 * i;
        springs.emplace_back(ctx, K, ids, 1);
        comp.insert(springs.back().ID());
    }
    fem::problem_data problem(ctx, pos, table, comp.ID(), 2);
    problem.get_loads_mgr(0).record_DOF_load(27, 10.0);
    problem.get_loads_mgr(1).record_DOF_load(9, 5.0);

    fem::solver_static_linear s;
    std::vector<log_line> lines;
    s.settings.pass_thru = &lines;
    s.settings.display_hook = [](void* p, unsigned level, const char* text) {
        static_cast<std::vector<log_line>*>(p)->push_back({level, text});
    };
    fem::solver_static_linear::data_type d(problem);
    s.run(d);
    ASSERT_EQ(d.error_code, 0) << d.error_name << " " << d.error_msg;

    const std::string stars(55, '*');
    const std::string title = "*        ORV FEM(R) - STATIC LINEAR (5.5.0.0)         *";
    ASSERT_EQ(title.size(), 55u);
    // Solutions: case 0 u = 10 * (1/100, 1/100 + 1/200, ... ) = (0.1, 0.15, 0.175),
    // case 1 u = (0.05, 0.05, 0.05).
    const double U1[3] = {0.1, 0.15, 0.175}, U2[3] = {0.05, 0.05, 0.05};
    auto norm = [](const double* u) { return std::sqrt(u[0] * u[0] + u[1] * u[1] + u[2] * u[2]); };

    // (level, exact text) when `exact`, else (level, format).
    struct expected {
        unsigned level;
        std::string text;
        bool exact;
    };
    std::vector<expected> want = {
        {0, stars, true},
        {0, "\n", true},
        {0, title, true},
        {0, "\n", true},
        {0, stars, true},
        {0, "\n", true},
        {2, "Numbering and matrix profiles      : %10.2f s.\n", false},
        {1, "  Nbr free DOFs          :          3\n", true},
        {2, "  Size matrix RHS        :          6 doubles (0.00 MB)\n", true},
        {2, "  Size matrix Ks         :          0 doubles (0.00 MB)\n", true},
        {2, "  Size matrix Kf         : %10llu doubles (%.2f MB)\n", false},
        {2, "  Size matrix S-modes    :          6 doubles (0.00 MB)\n", true},
        {1, "Numerical assembly matrix Kf       : %10.2f s.\n", false},
        {2, "  dimension              :          3\n", true},
        {2, "  profile                : %10llu (%.2f MB)\n", false},
        {2, "  nbr blocks             : %10llu\n", false},
        {2, "  max extra segments     : %10llu\n", false},
        {2, "  symbolic fill-ins      : %8.2f %%\n", false},
        {2, "  zeros                  : %10llu\n", false},
        {2, "  non zeros              :          5\n", true},
        {2, "  numerical fill-ins     : %8.2f %% (%.2f %%)\n", false},
        {1, "Factorization matrix Kf            : %10.2f s.\n", false},
        {2, "  dimension              :          3\n", true},
        {2, "  profile                : %10llu (%.2f MB)\n", false},
        {2, "  nbr blocks             : %10llu\n", false},
        {2, "  max extra segments     : %10llu\n", false},
        {2, "  symbolic fill-ins      : %8.2f %%\n", false},
        {2, "  pivot max              : %+E\n", false},
        {2, "  pivot min              : %+E\n", false},
        {1, "Numerical assembly matrix RHS      : %10.2f s.\n", false},
        {3, "  0 ||F||                : +1.000000E+01\n", true},
        {3, "  1 ||F||                : +5.000000E+00\n", true},
        {1, "Resolution RHS                     : %10.2f s.\n", false},
    };
    const double* U[2] = {U1, U2};
    const double energy[2] = {0.5 * 10.0 * 0.175, 0.5 * 5.0 * 0.05};
    for (int c = 0; c < 2; ++c) {
        const std::string n = c == 0 ? "  0" : "  1";  // cases by their column in U
        want.push_back({3, n + printed(" ||U||                : %+E\n", norm(U[c])), true});
        want.push_back({3, n + printed(" max displacement     : %+E\n", U[c][2]), true});
        want.push_back({3, n + printed(" min displacement     : %+E\n", U[c][0]), true});
        want.push_back({3, n + " max rotation         : +0.000000E+00\n", true});
        want.push_back({3, n + " min rotation         : +0.000000E+00\n", true});
        want.push_back({3, n + printed(" elastic energy       : %+E\n", energy[c]), true});
    }
    want.push_back({0, "Total computing time               : %10.2f s.\n\n", false});

    ASSERT_EQ(lines.size(), want.size());
    for (std::size_t i = 0; i < want.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "line " << i << ": " << lines[i].text);
        EXPECT_EQ(lines[i].level, want[i].level);
        if (want[i].exact)
            EXPECT_EQ(lines[i].text, want[i].text);
        else
            EXPECT_TRUE(std::regex_match(lines[i].text, format_pattern(want[i].text))) << want[i].text;
    }
    // The pivots of the log are those of the record.
    EXPECT_EQ(lines[27].text, printed("  pivot max              : %+E\n", d.pivot_max));
    EXPECT_EQ(lines[28].text, printed("  pivot min              : %+E\n", d.pivot_min));
    // The product of the pivots is det K = 100 * 200 * 400.
    EXPECT_GT(d.pivot_min, 0.0);
}

TEST(StaticLinearLog, SilentWithoutHook) {
    // Nothing to capture, but the run must go through with a null hook.
    fem::context ctx;
    dense2D<double> pos(3, 2, 0.0);
    fem::DOFs_mgr table(2, false);
    table.set(9ull, true);
    symmetric_full<double> K(2, 0.0);
    K(0, 0) = K(1, 1) = 50.0;
    K(1, 0) = -50.0;
    dense1D<unsigned int> ids(2);
    ids[0] = 0;
    ids[1] = 9;
    fem::stiffness_sym spring(ctx, K, ids, 1);
    fem::problem_data problem(ctx, pos, table, spring.ID(), 1);
    problem.get_loads_mgr(0).record_DOF_load(9, 5.0);
    fem::solver_static_linear s;
    fem::solver_static_linear::data_type d(problem);
    s.run(d);
    ASSERT_EQ(d.error_code, 0);
    double u = 0.0;
    EXPECT_EQ(d.U.get_val(9, 0, u), 0);
    EXPECT_DOUBLE_EQ(u, 0.1);
    EXPECT_DOUBLE_EQ(d.energy[0], 0.25);
    EXPECT_GE(d.time_total, 0.0);
}
