// The problem record: init rules, case managers, combinations, and loads on composites.
#include <gtest/gtest.h>

#include <orv/fem/context.h>
#include <orv/fem/loads_mgr.h>
#include <orv/fem/numerical_model_composite.h>
#include <orv/fem/problem_data.h>

#include "model/element_workspace.h"
#include "model/vector_assembler.h"
#include "model_test_utils.h"
#include "problem/loads_mgr.h"
#include "problem/problem_data.h"
#include "spring_model.h"

using namespace orv;
using orv::test::make_index;
using orv::test::spring_model;

namespace {

fem::numerical_model_base make_chain(fem::context& ctx, unsigned n, unsigned first_node) {
    std::vector<unsigned> a(n), b(n);
    for (unsigned e = 0; e < n; ++e) a[e] = first_node + e, b[e] = first_node + e + 1;
    fem::numerical_model_base h;
    h.set_w(static_cast<ref_counted*>(new spring_model(ctx.engine(), a, b, std::vector<double>(n, 1.0))));
    return h;
}

double Neumann_sum(const fem::loads_mgr& l, unsigned ID) {
    double s = 0.0;
    fem::DOF_record r;
    for (std::size_t i = 0; i < l.nbr_node_Neumann_loads(); ++i)
        if (l.get_node_Neumann_load(i, r) == fem::no_error && r.ID == ID) s += r.value;
    return s;
}

}  // namespace

TEST(ProblemData, InitShapesPositionsGrowsTheTableAndMakesCases) {
    fem::context ctx;
    fem::DOFs_mgr table;
    dense2D<double> pos(2, 10, 1.5);
    fem::problem_data p(ctx, pos, table, 5, 2);
    ASSERT_TRUE(p.is_valid());
    ASSERT_EQ(pos.rows(), 3u);  // the caller's matrix, in place
    ASSERT_EQ(pos.cols(), 10u);
    for (std::size_t j = 0; j < 10; ++j) {
        EXPECT_EQ(pos(1, j), 1.5);
        EXPECT_EQ(pos(2, j), 0.0);
    }
    EXPECT_EQ(p.get_pos_matrix().data(), pos.data());  // shared
    EXPECT_EQ(table.nbr_nodes(), 10u);
    EXPECT_EQ(table.nbr_DOFs(true), 0u);  // new DOFs start fixed
    EXPECT_EQ(p.get_DOFs_mgr().get_w(), table.get_w());
    EXPECT_EQ(p.NM_ID(), 5u);
    EXPECT_FALSE(p.valid());  // no model 5

    ASSERT_EQ(p.nbr_load_cases(), 2u);
    EXPECT_TRUE(p.get_loads_mgr(1).is_valid());
    EXPECT_TRUE(p.get_stress_mgr(1).is_valid());
    EXPECT_FALSE(p.get_loads_mgr(2).is_valid());
    EXPECT_FALSE(p.get_stress_mgr(2).is_valid());
    fem::loads_mgr other(ctx);
    p.set_loads_mgr(2, other);  // ignored
    EXPECT_EQ(p.nbr_load_cases(), 2u);
    p.set_loads_mgr(0, other);
    EXPECT_EQ(p.get_loads_mgr(0).get_w(), other.get_w());

    // A table longer than pos stays as it is; the model makes the problem valid.
    fem::numerical_model_base m = make_chain(ctx, 2, 0);
    fem::DOFs_mgr big(20, true);
    dense2D<double> pos3(3, 5, 0.0);
    p.init(pos3, big, m.ID(), 0);
    EXPECT_EQ(big.nbr_nodes(), 20u);
    EXPECT_EQ(big.nbr_DOFs(true), 180u);
    EXPECT_EQ(p.nbr_load_cases(), 0u);
    EXPECT_TRUE(p.valid());
    // The first table is the caller's and is not touched by the second init.
    EXPECT_EQ(table.nbr_nodes(), 10u);

    dense2D<double> pos4(4, 12, 2.0);
    p.set_pos_matrix(pos4);
    EXPECT_EQ(pos4.rows(), 3u);
    EXPECT_EQ(big.nbr_nodes(), 20u);
}

TEST(ProblemData, WithoutContextNothingIsHeld) {
    fem::context no_ctx{static_cast<const fem::base_class&>(fem::DOFs_mgr())};
    ASSERT_FALSE(no_ctx.is_valid());
    fem::problem_data p(no_ctx);
    ASSERT_TRUE(p.is_valid());
    fem::DOFs_mgr table;
    dense2D<double> pos(2, 4, 1.0);
    p.init(pos, table, 3, 4);
    EXPECT_EQ(p.NM_ID(), 0xFFFFFFFFu);
    EXPECT_EQ(p.nbr_load_cases(), 0u);
    EXPECT_FALSE(p.valid());
    fem::problem_data empty;
    EXPECT_FALSE(empty.valid());
    EXPECT_EQ(empty.nbr_load_cases(), 0u);
}

TEST(ProblemData, CombinationsOfLoadCases) {
    fem::context ctx;
    fem::DOFs_mgr table(4, true);
    dense2D<double> pos(3, 4, 0.0);
    fem::problem_data src(ctx, pos, table, 0, 2);
    fem::loads_mgr c0 = src.get_loads_mgr(0), c1 = src.get_loads_mgr(1);
    c0.record_DOF_load(9, 1.0);
    c1.record_DOF_load(9, 10.0);
    c1.record_DOF_prescribed_value(0, 2.0);

    dense2D<double> coeffs(2, 3, 0.0);
    coeffs(0, 0) = 1.0, coeffs(1, 0) = 2.0;
    coeffs(1, 1) = 0.5;
    fem::problem_data comb(src, coeffs);
    ASSERT_TRUE(comb.is_valid());
    ASSERT_EQ(comb.nbr_load_cases(), 3u);
    EXPECT_EQ(Neumann_sum(comb.get_loads_mgr(0), 9), 21.0);
    EXPECT_EQ(comb.get_loads_mgr(0).nbr_node_Dirichlet_loads(), 1u);
    fem::DOF_record r;
    ASSERT_EQ(comb.get_loads_mgr(0).get_node_Dirichlet_load(0, r), fem::no_error);
    EXPECT_EQ(r.value, 4.0);
    EXPECT_EQ(Neumann_sum(comb.get_loads_mgr(1), 9), 5.0);
    // A column of zeros is an empty case, not a missing one.
    EXPECT_TRUE(comb.get_loads_mgr(2).is_valid());
    EXPECT_EQ(comb.get_loads_mgr(2).nbr_node_Neumann_loads(), 0u);
    EXPECT_TRUE(comb.get_stress_mgr(2).is_valid());
    // Same model and table, a copy of the positions; the source is untouched.
    EXPECT_EQ(comb.NM_ID(), src.NM_ID());
    EXPECT_EQ(comb.get_DOFs_mgr().get_w(), table.get_w());
    EXPECT_NE(comb.get_pos_matrix().data(), pos.data());
    EXPECT_EQ(comb.get_pos_matrix().cols(), 4u);
    EXPECT_EQ(Neumann_sum(c1, 9), 10.0);

    dense2D<double> wrong(3, 1, 1.0);
    EXPECT_FALSE(fem::problem_data(src, wrong).is_valid());
    fem::problem_data none(src, dense2D<double>());
    ASSERT_TRUE(none.is_valid());
    EXPECT_EQ(none.nbr_load_cases(), 0u);
    // Separate stress coefficients with the wrong shape also fail.
    EXPECT_FALSE(fem::problem_data(src, coeffs, wrong).is_valid());
}

TEST(ProblemData, LoadsOnACompositeAreStoredUnderItsSimpleModelsAndAssembled) {
    fem::context ctx;
    fem::numerical_model_base a = make_chain(ctx, 1, 0);  // nodes 0-1
    fem::numerical_model_base b = make_chain(ctx, 2, 1);  // nodes 1-2-3
    fem::numerical_model_composite comp(ctx);
    comp.insert(a.ID(), b.ID());
    fem::loads_mgr loads(ctx);
    fem::elementary_load force(24, 0, dense1D<double>(3, 4.0));
    ASSERT_EQ(loads.record_NM_load(comp.ID(), fem::numerical_model_base::all_elements, force), fem::no_error);
    loads.record_DOF_load(27, 1.0);
    // Where the records are kept is the loads manager's own test; here they are assembled.
    core::loads_mgr* L = loads.engine();

    core::DOF_vector F;
    F.init(make_index({0, 9, 18, 27}), 0.0);
    core::vector_assembler<> V(F, 1.0);
    core::assembly_args args;
    args.vector_assembler = &V;
    args.params.nbr_threads = 2;
    ASSERT_EQ(L->assemble(args), 0);
    EXPECT_EQ(F[0], 2.0);
    EXPECT_EQ(F[1], 4.0);
    EXPECT_EQ(F[2], 4.0);
    EXPECT_EQ(F[3], 3.0);

    // The problem built on the composite is valid; an unknown ID is not.
    fem::DOFs_mgr table(4, true);
    dense2D<double> pos(3, 4, 0.0);
    EXPECT_TRUE(fem::problem_data(ctx, pos, table, comp.ID(), 1).valid());
    EXPECT_FALSE(fem::problem_data(ctx, pos, table, 99, 1).valid());
}
