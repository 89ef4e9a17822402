// The model contract through the real assembly loops: values, thread independence,
// failures, evolution functions, null assemblers, penalties, DOF graphs.
#include <gtest/gtest.h>

#include <orv/fem/error_type.h>

#include <cmath>
#include <cstring>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/numerical_model_base.h>
#include <orv/fem/numerical_models_mgr.h>

#include "model/internal_states.h"
#include "model/matrix_assembler.h"
#include "model/vector_assembler.h"
#include "model_test_utils.h"
#include "spring_model.h"

using namespace orv;
using namespace orv::core;
using orv::test::entry;
using orv::test::init_target;
using orv::test::make_index;
using orv::test::sparse_target;
using orv::test::spring_model;

namespace {

// A handle that owns the model (the registry holds another reference).
template <class M>
fem::numerical_model_base adopt(M* m) {
    fem::numerical_model_base h;
    h.set_w(static_cast<ref_counted*>(m));
    return h;
}

// A star: element e joins node 0 and node e + 1, with stiffnesses of very different
// magnitudes, so that the sum on DOF 0 depends on the order of the additions.
std::vector<double> star_stiffness(unsigned n) {
    std::vector<double> k(n);
    for (unsigned e = 0; e < n; ++e) k[e] = (1.0 + e / 3.0) * std::pow(10.0, double((e * 5) % 11) - 5.0);
    return k;
}

spring_model* make_star(fem::context& ctx, unsigned n) {
    std::vector<unsigned> a(n, 0), b(n);
    for (unsigned e = 0; e < n; ++e) b[e] = e + 1;
    return new spring_model(ctx.engine(), a, b, star_stiffness(n));
}

struct star_result {
    std::vector<double> K, F;
    double acc[nbr_element_results];
    int rc;
};

// Assembles the star's stiffness, internal forces and energies with `threads` threads
// over the element list `elements` (all when empty).
star_result run_star(spring_model& m, unsigned n, int threads, const std::vector<unsigned>& elements) {
    std::vector<unsigned> ids(n + 1);
    for (unsigned i = 0; i <= n; ++i) ids[i] = 9 * i;
    Ptr<DOF_index> index = make_index(ids);
    sparse_target K;
    init_target(K, index);
    DOF_vector F, U;
    F.init(index, 0.0);
    U.init(index, 0.0);
    for (unsigned i = 0; i <= n; ++i) U[i] = std::sin(1.0 + i) * std::pow(10.0, double(i % 5) - 2.0);
    matrix_sym_assembler<sparse_target> A(K, 1.0);
    vector_assembler<> V(F, 1.0);
    assembly_args args;
    args.params.nbr_threads = threads;
    args.matrix_assembler = &A;
    args.vector_assembler = &V;
    args.U = &U;
    dense1D<unsigned int> list;
    for (unsigned e : elements) list.push_back(e);
    args.elements = &list;
    star_result r;
    r.rc = m.assemble_matrix(1, args);
    r.K.assign(K.matrix().data(), K.matrix().data() + K.matrix().size());
    r.F.assign(F.data(), F.data() + F.size());
    std::memcpy(r.acc, args.accumulators, sizeof r.acc);
    return r;
}

bool same_bits(const star_result& a, const star_result& b) {
    return a.K.size() == b.K.size() && a.F.size() == b.F.size() &&
           std::memcmp(a.K.data(), b.K.data(), a.K.size() * sizeof(double)) == 0 &&
           std::memcmp(a.F.data(), b.F.data(), a.F.size() * sizeof(double)) == 0 &&
           std::memcmp(a.acc, b.acc, sizeof a.acc) == 0;
}

}  // namespace

TEST(ModelAssembly, ChainStiffnessKeepsTheFixedDOFOut) {
    fem::context ctx;
    spring_model* m = new spring_model(ctx.engine(), {0, 1, 2}, {1, 2, 3}, {1.0, 2.0, 4.0});
    fem::numerical_model_base h = adopt(m);
    sparse_target Kf, Kall;
    init_target(Kf, make_index({9, 18, 27}));  // node 0 fixed
    init_target(Kall, make_index({0, 9, 18, 27}));
    matrix_sym_assembler<sparse_target> Af(Kf, 1.0), Aall(Kall, 1.0);
    assembly_args args;
    args.matrix_assembler = &Af;
    ASSERT_EQ(m->assemble_matrix(1, args), 0);
    args.matrix_assembler = &Aall;
    ASSERT_EQ(m->assemble_matrix(1, args), 0);
    const double expected[3][3] = {{3, -2, 0}, {-2, 6, -4}, {0, -4, 4}};
    for (unsigned i = 0; i < 3; ++i)
        for (unsigned j = 0; j < 3; ++j) {
            EXPECT_EQ(entry(Kf, 9 * (i + 1), 9 * (j + 1)), expected[i][j]) << i << "," << j;
            EXPECT_EQ(entry(Kall, 9 * (i + 1), 9 * (j + 1)), expected[i][j]) << i << "," << j;
        }
    EXPECT_EQ(entry(Kall, 0, 0), 1.0);
    EXPECT_EQ(entry(Kall, 0, 9), -1.0);
    EXPECT_EQ(args.factor, 1.0);  // restored
    // One element, and one out of range.
    args.element = 2;
    ASSERT_EQ(m->assemble_matrix(1, args), 0);
    EXPECT_EQ(entry(Kall, 27, 27), 8.0);
    args.element = 3;
    EXPECT_EQ(m->assemble_matrix(1, args), fem::error_index);
    // A matrix the model does not have: nothing, no error.
    args.element = numerical_model_base::all_elements;
    EXPECT_EQ(m->assemble_matrix(2, args), 0);
    EXPECT_EQ(entry(Kall, 27, 27), 8.0);
}

TEST(ModelAssembly, ResultsAreBitIdenticalForAnyThreadCountAndCompletionOrder) {
    fem::context ctx;
    const unsigned n = 48;
    spring_model* m = make_star(ctx, n);
    fem::numerical_model_base h = adopt(m);
    const star_result serial = run_star(*m, n, 1, {});
    ASSERT_EQ(serial.rc, 0);
    // The data are order sensitive: summing the stiffnesses backwards gives other bits.
    const std::vector<double> k = star_stiffness(n);
    double forward = 0.0, backward = 0.0;
    for (unsigned e = 0; e < n; ++e) forward += k[e];
    for (unsigned e = n; e-- > 0;) backward += k[e];
    ASSERT_NE(forward, backward);
    EXPECT_EQ(serial.K[0], forward);
    EXPECT_EQ(serial.acc[1], double(n));

    EXPECT_EQ(m->computed_in_parallel.load(), 0);
    m->scramble = true;
    for (int threads : {2, 3, 4}) {
        const star_result parallel = run_star(*m, n, threads, {});
        EXPECT_EQ(parallel.rc, 0);
        EXPECT_TRUE(same_bits(serial, parallel)) << threads << " threads";
    }
    EXPECT_EQ(m->computed_in_parallel.load(), int(3 * n));
    // An element list is added in its own order, whatever the threads.
    std::vector<unsigned> reversed(n);
    for (unsigned e = 0; e < n; ++e) reversed[e] = n - 1 - e;
    const star_result rev1 = run_star(*m, n, 1, reversed);
    const star_result rev3 = run_star(*m, n, 3, reversed);
    EXPECT_EQ(rev1.K[0], backward);
    EXPECT_TRUE(same_bits(rev1, rev3));
}

TEST(ModelAssembly, FirstFailureInElementOrderWinsAndStopsTheLoop) {
    fem::context ctx;
    const unsigned n = 24;
    spring_model* m = make_star(ctx, n);
    fem::numerical_model_base h = adopt(m);
    m->failing = {9, 5};
    const std::vector<double> k = star_stiffness(n);
    double before = 0.0;
    for (unsigned e = 0; e < 5; ++e) before += k[e];
    for (int threads : {1, 2, 4}) {
        m->scramble = threads > 1;
        const star_result r = run_star(*m, n, threads, {});
        EXPECT_EQ(r.rc, fem::error_element) << threads;
        EXPECT_EQ(r.K[0], before) << threads;  // elements 0 to 4 only
        EXPECT_EQ(r.acc[1], 5.0) << threads;
    }
}

TEST(ModelAssembly, FewerElementsThanThreadsRunSerially) {
    fem::context ctx;
    spring_model* m = make_star(ctx, 1);
    fem::numerical_model_base h = adopt(m);
    m->failing = {0};
    const star_result r = run_star(*m, 1, 2, {});
    EXPECT_EQ(r.rc, fem::error_element);
    m->failing.clear();
    const star_result ok = run_star(*m, 1, 2, {});
    EXPECT_EQ(ok.rc, 0);
    EXPECT_EQ(m->computed_in_parallel.load(), 0);
    EXPECT_EQ(ok.K[0], star_stiffness(1)[0]);
}

TEST(ModelAssembly, EvolutionFunctionAndLoadFactorScale) {
    fem::context ctx;
    spring_model* m = new spring_model(ctx.engine(), {0}, {1}, {2.0});
    fem::numerical_model_base h = adopt(m);
    sparse_target K;
    init_target(K, make_index({0, 9}));
    matrix_sym_assembler<sparse_target> A(K, 1.0);
    assembly_args args;
    args.matrix_assembler = &A;
    args.params.time = 3.0;

    const unsigned zero = ctx.engine()->evolution_funcs()->create_cste(0.0);
    const unsigned lin = ctx.engine()->evolution_funcs()->create_linear(0.5);  // 1.5 at t = 3
    h.set_evolution_func_ID(zero);
    EXPECT_EQ(m->assemble_matrix(1, args), 0);
    EXPECT_EQ(m->computed.load(), 0);  // no element computed at a zero scale
    EXPECT_EQ(entry(K, 0, 0), 0.0);

    h.set_evolution_func_ID(lin);
    args.factor = 2.0;
    EXPECT_EQ(m->assemble_matrix(1, args), 0);
    EXPECT_EQ(entry(K, 0, 0), 6.0);
    EXPECT_EQ(entry(K, 9, 0), -6.0);

    h.set_evolution_func_ID(0xFFFFFFFFu);  // none: 1.0
    args.factor = 1.0;
    m->assemble_matrix(1, args);
    EXPECT_EQ(entry(K, 0, 0), 8.0);

    // Loads: f(time) * load_factor * factor, only the vector.
    h.set_evolution_func_ID(lin);
    DOF_vector F;
    F.init(make_index({9}), 0.0);
    vector_assembler<> V(F, 1.0);
    args.vector_assembler = &V;
    args.factor = 2.0;
    args.params.load_factor = 0.5;
    elementary_load force(24, 0, dense1D<double>(3, 4.0));
    EXPECT_EQ(m->assemble_load(force, args), 0);
    EXPECT_EQ(F[0], 2.0 * 0.5 * 2.0 * 1.5);
    elementary_load heat(72, 3, dense1D<double>(1, 4.0));
    EXPECT_EQ(m->assemble_load(heat, args), 0);  // not accepted
    EXPECT_EQ(F[0], 3.0);
    EXPECT_EQ(entry(K, 0, 0), 8.0);
}

TEST(ModelAssembly, NullMatrixAssemblerGivesInternalForcesAndEnergies) {
    fem::context ctx;
    spring_model* m = new spring_model(ctx.engine(), {0, 1}, {1, 2}, {2.0, 3.0});
    fem::numerical_model_base h = adopt(m);
    Ptr<DOF_index> ids = make_index({0, 9, 18});
    DOF_vector U, F;
    U.init(ids, 0.0);
    F.init(ids, 0.0);
    U[1] = 1.0, U[2] = 3.0;  // elongations 1 and 2
    matrix_null_assembler none;
    vector_assembler<> V(F, 1.0);
    dense1D<double> energies(2, 0.0);
    assembly_args args;
    args.matrix_assembler = &none;
    args.vector_assembler = &V;
    args.U = &U;
    args.element_energies = &energies;
    ASSERT_EQ(m->assemble_matrix(1, args), 0);
    EXPECT_EQ(F[0], -2.0);
    EXPECT_EQ(F[1], 2.0 - 6.0);
    EXPECT_EQ(F[2], 6.0);
    EXPECT_EQ(args.accumulators[0], 0.5 * 2.0 + 0.5 * 3.0 * 4.0);
    const unsigned first = ctx.the_NM_mgr().global_FE_ID(h.ID());
    ASSERT_EQ(first, 0u);
    EXPECT_EQ(energies[0], 1.0);
    EXPECT_EQ(energies[1], 6.0);
    // Both assemblers null: energies only, no vector.
    vector_null_assembler nothing;
    args.vector_assembler = &nothing;
    ASSERT_EQ(m->assemble_matrix(1, args), 0);
    EXPECT_EQ(args.accumulators[0], 14.0);
    EXPECT_EQ(F[2], 6.0);
}

TEST(ModelAssembly, LinkIsSilentInTheStiffnessPassAndFullInThePenaltyPass) {
    fem::context ctx;
    spring_model* link = new spring_model(ctx.engine(), {1}, {2}, {123.0}, true);
    fem::numerical_model_base h = adopt(link);
    sparse_target K;
    init_target(K, make_index({9, 18}));
    matrix_sym_assembler<sparse_target> A(K, 1.0);
    assembly_args args;
    args.matrix_assembler = &A;
    ASSERT_EQ(link->assemble_matrix(1, args), 0);
    EXPECT_EQ(entry(K, 9, 9), 0.0);
    args.params.penalty_displacement = 1.0e6;
    ASSERT_EQ(link->assemble_matrix(7, args), 0);
    EXPECT_EQ(entry(K, 9, 9), 1.0e6);
    EXPECT_EQ(entry(K, 18, 9), -1.0e6);
}

TEST(ModelDOFs, ListsGraphAndInverseGraph) {
    fem::context ctx;
    spring_model* m = new spring_model(ctx.engine(), {0, 1, 2}, {1, 2, 3}, {1.0, 1.0, 1.0});
    fem::numerical_model_base h = adopt(m);
    DOFs_mgr table(4, true);
    table.set(0, false);  // node 0 x fixed
    table.set(9, false);  // node 1 x fixed: element 0 has no free DOF
    const DOF_filter free_DOFs{&table, true};

    DOF_index set;
    ASSERT_EQ(m->get_DOFs(table, numerical_model_base::all_elements, 1, set, free_DOFs), 0);
    ASSERT_EQ(set.size(), 2u);
    EXPECT_TRUE(set.contains(18) && set.contains(27));

    dense1D<unsigned int> offsets(1, 0u), ids;
    ASSERT_EQ(m->get_DOFs_graph(table, numerical_model_base::all_elements, 1, offsets, ids, free_DOFs), 0);
    ASSERT_EQ(offsets.size(), 3u);  // element 0 makes no row
    EXPECT_EQ(offsets[1], 1u);
    EXPECT_EQ(offsets[2], 3u);
    EXPECT_EQ(ids[0], 18u);
    EXPECT_EQ(ids[2], 27u);

    // Public form: sorted, by state.
    fem::DOFs_mgr public_table;  // empty table: every ID past it counts as free
    dense1D<unsigned int> all = h.get_DOFs(1, public_table, 2);
    ASSERT_EQ(all.size(), 4u);
    EXPECT_EQ(all[0], 0u);
    EXPECT_EQ(all[3], 27u);
    EXPECT_EQ(h.get_DOFs(1, public_table, 0).size(), 0u);
    EXPECT_EQ(h.get_nodes().size(), 4u);
    EXPECT_EQ(h.get_nodes(1)[1], 2u);

    // Inverse graph over rows 0, 18, 27 (0 has no element of the free filter... the
    // inverse takes every DOF of an element).
    Ptr<DOF_index> rows = make_index({18, 0, 27});
    std::vector<FE_ID_pair> pairs;
    ASSERT_EQ(m->get_FEs_of_DOFs(table, numerical_model_base::all_elements, 1, *rows, offsets, pairs), 0);
    ASSERT_EQ(offsets.size(), 4u);
    EXPECT_EQ(offsets[0], 0u);
    EXPECT_EQ(offsets[1], 2u);  // 18: elements 1, 2
    EXPECT_EQ(offsets[2], 3u);  // 0: element 0
    EXPECT_EQ(offsets[3], 4u);  // 27: element 2
    ASSERT_EQ(pairs.size(), 4u);
    EXPECT_EQ(pairs[0].FE_ID, 1u);
    EXPECT_EQ(pairs[1].FE_ID, 2u);
    EXPECT_EQ(pairs[2].FE_ID, 0u);
    EXPECT_EQ(pairs[3].FE_ID, 2u);
    EXPECT_EQ(pairs[3].NM_ID, h.ID());
    DOF_index none;
    ASSERT_EQ(m->get_FEs_of_DOFs(table, numerical_model_base::all_elements, 1, none, offsets, pairs), 0);
    EXPECT_EQ(offsets.size(), 1u);
    EXPECT_EQ(offsets[0], 0u);
    EXPECT_TRUE(pairs.empty());
}

TEST(ModelDOFs, NodesGraphAndDefaults) {
    fem::context ctx;
    spring_model* m = new spring_model(ctx.engine(), {0, 4}, {4, 2}, {1.0, 1.0});
    fem::numerical_model_base h = adopt(m);
    dense1D<unsigned int> offsets(1, 0u), ids;
    ASSERT_EQ(m->get_nodes_graph(numerical_model_base::all_elements, offsets, ids), 0);
    ASSERT_EQ(offsets.size(), 3u);
    EXPECT_EQ(ids[2], 4u);
    EXPECT_EQ(ids[3], 2u);
    EXPECT_EQ(m->get_nodes_graph(2, offsets, ids), fem::error_index);
    EXPECT_EQ(h.get_FE_type(), fem::FE_edge2);
    EXPECT_EQ(m->get_dim(), 1u);
    unsigned type = 9, rows = 9, cols = 9;
    EXPECT_EQ(m->get_output_shape(1, type, rows, cols), fem::error_element_type);
    EXPECT_EQ(rows, 0u);
    matrix_fixed<double, 3, 3> R;
    EXPECT_EQ(h.get_element_basis(dense2D<double>(3, 5, 0.0), 0, R), fem::error_index);
    EXPECT_EQ(h.set_hard_offsets(vector_fixed<double, 3>(), dense1D<unsigned int>()), 0);
    vector_fixed<double, 3> o;
    o[1] = 1.0;
    EXPECT_EQ(h.set_hard_offsets(o, dense1D<unsigned int>()), fem::error_data);
    dense2D<double> bad(2, 2, 1.0);
    EXPECT_EQ(h.set_hard_offsets(dense2D<double>(3, 5, 0.0), 0, bad, false, dense1D<unsigned int>()), fem::error_data);
    // No internal states: nothing is stored, no record is made.
    Ptr<internal_states> states;
    EXPECT_EQ(m->get_internal_states(states), 0);
    EXPECT_FALSE(states);
}
