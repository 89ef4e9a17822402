// Degenerate, inverted and non-finite elements: refused coordinates, the bad elements
// a mesh keeps, and their log lines in a run.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/loads_mgr.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_static_linear.h>

#include "tests/elements/test_mesh_utils.h"

namespace orv {
namespace test {
namespace {

struct log_capture {
    std::vector<std::pair<unsigned, std::string>> lines;
    static void hook(void* p, unsigned level, const char* text) {
        static_cast<log_capture*>(p)->lines.emplace_back(level, text);
    }
    std::vector<std::string> containing(const std::string& part) const {
        std::vector<std::string> r;
        for (const auto& l : lines)
            if (l.second.find(part) != std::string::npos) r.push_back(l.second);
        return r;
    }
};

std::vector<unsigned> bad_of(const fem::numerical_model_stiff_lin& model) {
    dense1D<unsigned int> bad;
    EXPECT_EQ(model.get_bad_elements(bad), fem::no_error);
    return std::vector<unsigned>(bad.begin(), bad.end());
}

// n unit cubes side by side along x (hexa8), element e on nodes 4e .. 4e + 7.
struct row_of_cubes {
    dense2D<double> pos;
    dense2D<unsigned int> conn;
    explicit row_of_cubes(unsigned n) {
        pos.resize(3, 4 * (n + 1));
        for (unsigned k = 0; k <= n; ++k) {
            const double yz[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
            for (unsigned c = 0; c < 4; ++c) {
                pos(0, 4 * k + c) = k;
                pos(1, 4 * k + c) = yz[c][0];
                pos(2, 4 * k + c) = yz[c][1];
            }
        }
        conn.resize(8, n);
        // corners in hexa8 order: x, y, z = (0,0,0) (1,0,0) (1,1,0) (0,1,0) then z = 1
        for (unsigned e = 0; e < n; ++e) {
            const unsigned a = 4 * e, b = 4 * (e + 1);
            const unsigned nodes[8] = {a, b, b + 1, a + 1, a + 3, b + 3, b + 2, a + 2};
            for (unsigned i = 0; i < 8; ++i) conn(i, e) = nodes[i];
        }
    }
    // mirrors element e: swaps its lower and upper faces
    void invert(unsigned e) {
        for (unsigned i = 0; i < 4; ++i) std::swap(conn(i, e), conn(i + 4, e));
    }
};

TEST(bad_elements, inverted_flat_and_non_finite_elements) {
    fem::context ctx;
    fem::model_solid_lin physics(engine_handle(make_law(1000.0, 0.3).get()));
    row_of_cubes mesh(4);
    mesh.invert(1);
    // element 3 squashed flat: its far face moved onto its near face
    for (unsigned c = 0; c < 4; ++c) mesh.pos(0, 16 + c) = 3.0;
    fem::numerical_model_stiff_lin model(ctx, physics, mesh.conn, fem::FE_hexa8);
    ASSERT_TRUE(model.is_valid());
    EXPECT_TRUE(bad_of(model).empty());  // nothing computed yet
    for (std::uint32_t e = 0; e < 4; ++e) EXPECT_EQ(compute_element(*model.engine(), mesh.pos, e).rc, 0) << e;
    EXPECT_EQ(bad_of(model), (std::vector<unsigned>{1, 3}));
    // fixing an element clears its mark at its next computation
    mesh.invert(1);
    fem::numerical_model_stiff_lin again(ctx, physics, mesh.conn, fem::FE_hexa8);
    for (std::uint32_t e = 0; e < 4; ++e) compute_element(*again.engine(), mesh.pos, e);
    EXPECT_EQ(bad_of(again), (std::vector<unsigned>{3}));

    // non-finite coordinates are refused where the element is computed
    for (double v : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        dense2D<double> pos;
        ASSERT_TRUE(pos.copy(mesh.pos));
        pos(2, 5) = v;
        EXPECT_EQ(compute_element(*model.engine(), pos, 0).rc, orv::fem::error_connectivity);
        EXPECT_EQ(compute_element(*model.engine(), pos, 2).rc, 0);  // does not touch node 5
        matrix_fixed<double, 3, 3> R;
        EXPECT_EQ(model.get_local_basis(pos, 0, R), orv::fem::error_connectivity);
        EXPECT_EQ(model.get_element_basis(pos, 0, R), orv::fem::error_connectivity);  // node 5 is among its first three
    }
    fem::numerical_model_stiff_lin empty;
    dense1D<unsigned int> list;
    EXPECT_EQ(empty.get_bad_elements(list), fem::error_data);
}

TEST(bad_elements, log_names_the_first_ten_and_counts_all) {
    fem::context ctx;
    fem::model_solid_lin physics(engine_handle(make_law(1000.0, 0.3).get()));
    row_of_cubes mesh(13);
    for (unsigned e = 1; e < 13; ++e) mesh.invert(e);
    fem::numerical_model_stiff_lin model(ctx, physics, mesh.conn, fem::FE_hexa8);
    for (std::uint32_t e = 0; e < 13; ++e) compute_element(*model.engine(), mesh.pos, e);
    log_capture log;
    EXPECT_EQ(core::log_bad_elements(*model.engine(), &log_capture::hook, &log), 12u);
    ASSERT_EQ(log.lines.size(), 11u);
    for (unsigned k = 0; k < 10; ++k) {
        EXPECT_EQ(log.lines[k].first, 1u);
        EXPECT_EQ(log.lines[k].second, "  Bad element: model " + std::to_string(model.ID()) + ", element " +
                                           std::to_string(k + 1) + " (Jacobian determinant not positive or tiny)\n");
    }
    EXPECT_EQ(log.lines[10].second, "  Nbr bad elements       :         12\n");
    // a null hook costs nothing and still counts
    EXPECT_EQ(core::log_bad_elements(*model.engine(), nullptr, nullptr), 12u);
}

TEST(bad_elements, static_run_logs_the_inverted_element) {
    fem::context ctx;
    fem::model_solid_lin physics(engine_handle(make_law(1000.0, 0.3).get()));
    row_of_cubes mesh(3);
    mesh.invert(2);
    fem::numerical_model_stiff_lin model(ctx, physics, mesh.conn, fem::FE_hexa8);
    fem::DOFs_mgr DOFs(static_cast<unsigned>(mesh.pos.cols()), true);
    for (unsigned node = 0; node < 4; ++node) ASSERT_EQ(DOFs.set(node, fem::field_displacement, false), fem::no_error);
    fem::problem_data problem(ctx, mesh.pos, DOFs, model.ID(), 1);
    ASSERT_EQ(problem.get_loads_mgr(0).record_DOF_prescribed_value(12 * 9, 0.01), fem::no_error);
    fem::solver_static_linear solver;
    log_capture log;
    solver.settings.display_hook = &log_capture::hook;
    solver.settings.pass_thru = &log;
    fem::solver_static_linear::data_type data(problem);
    solver.run(data);
    const auto named = log.containing("Bad element");
    ASSERT_EQ(named.size(), 1u);
    EXPECT_NE(named[0].find("element 2 "), std::string::npos);
    EXPECT_EQ(log.containing("  Nbr bad elements       :          1\n").size(), 1u);
}

}  // namespace
}  // namespace test
}  // namespace orv
