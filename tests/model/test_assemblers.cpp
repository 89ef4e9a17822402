// Assemblers: intersection of DOF lists, symmetric and skew parts, diagonals, complex
// and row targets, projections, vectors and Lagrange states.
#include <gtest/gtest.h>

#include <complex>

#include "linalg/OOC_mgr.h"
#include "model/map_DOFs.h"
#include "model/matrix_assembler.h"
#include "model/vector_assembler.h"
#include "model_test_utils.h"

using namespace orv;
using namespace orv::core;
using orv::test::entry;
using orv::test::init_target;
using orv::test::make_index;
using orv::test::make_sym;
using orv::test::sparse_target;

TEST(MapDOFs, IntersectionOrderAndIdentity) {
    Ptr<DOF_index> target = make_index({0, 9, 18, 27});
    Ptr<DOF_index> element = make_index({27, 9, 5});
    std::vector<DOF_pair> pairs;
    // The element is smaller: pairs in element order, 5 is not in the target.
    map_DOFs(target.get(), element.get(), pairs);
    ASSERT_EQ(pairs.size(), 2u);
    EXPECT_EQ(pairs[0], DOF_pair(3, 0));
    EXPECT_EQ(pairs[1], DOF_pair(1, 1));
    // The target is smaller: pairs in ascending target position.
    Ptr<DOF_index> small = make_index({27, 9});
    Ptr<DOF_index> big = make_index({9, 18, 27, 36});
    map_DOFs(small.get(), big.get(), pairs);
    ASSERT_EQ(pairs.size(), 2u);
    EXPECT_EQ(pairs[0], DOF_pair(0, 2));
    EXPECT_EQ(pairs[1], DOF_pair(1, 0));
    // One index on both sides: the identity.
    map_DOFs(target.get(), target.get(), pairs);
    ASSERT_EQ(pairs.size(), 4u);
    for (std::uint32_t k = 0; k < 4; ++k) EXPECT_EQ(pairs[k], DOF_pair(k, k));
    map_DOFs(nullptr, target.get(), pairs);
    EXPECT_TRUE(pairs.empty());
}

TEST(MatrixSymAssembler, AddsOnlyTheFreeDOFsWithFactorAndMultiplier) {
    sparse_target Kf;
    init_target(Kf, make_index({18, 9}));  // DOF 0 is fixed, order unsorted on purpose
    matrix_sym_assembler<sparse_target> A(Kf, 0.5);
    ASSERT_FALSE(A.is_null());
    element_sym_matrix e;
    make_sym(e, {0, 9, 18}, {4.0, -1.0, 5.0, 0.5, -2.0, 6.0});
    EXPECT_EQ(A.add_sym(2.0, e, true), 0);
    EXPECT_EQ(entry(Kf, 9, 9), 5.0);
    EXPECT_EQ(entry(Kf, 18, 18), 6.0);
    EXPECT_EQ(entry(Kf, 9, 18), -2.0);
    // A second element on the same DOFs sums; one without a free DOF adds nothing.
    A.add_sym(4.0, e, true);
    element_sym_matrix fixed_only;
    make_sym(fixed_only, {0, 1}, {100.0, 100.0, 100.0});
    A.add_sym(1.0, fixed_only, true);
    EXPECT_EQ(entry(Kf, 9, 9), 15.0);
    EXPECT_EQ(entry(Kf, 18, 18), 18.0);
    EXPECT_EQ(entry(Kf, 18, 9), -6.0);
    // A zero factor and a skew element (flag clear) add nothing.
    A.add_sym(0.0, e, true);
    A.add_sym(1.0, e, false);
    EXPECT_EQ(entry(Kf, 9, 9), 15.0);
    EXPECT_EQ(entry(Kf, 18, 9), -6.0);
}

TEST(MatrixSymAssembler, IsNullOnZeroMultiplierOrEmptyTarget) {
    sparse_target K;
    init_target(K, make_index({0, 9}));
    EXPECT_TRUE((matrix_sym_assembler<sparse_target>(K, 0.0).is_null()));
    EXPECT_FALSE((matrix_sym_assembler<sparse_target>(K, 1.0).is_null()));
    // A compressed matrix of dimension 0: its pointer vector has one entry.
    sparse_target empty;
    dense1D<unsigned int> ptr(1, 0u), col;
    empty.matrix().init(ptr, col, 0.0);
    empty.set_IDs(make_index({}));
    EXPECT_TRUE((matrix_sym_assembler<sparse_target>(empty, 1.0).is_null()));
    EXPECT_TRUE(matrix_null_assembler().is_null());
    double mass = 0.0;
    EXPECT_FALSE(matrix_sym_assembler_projection(DOF_selector(), &mass).is_null());
}

TEST(MatrixSkewAssembler, KeepsTheSignOfTheMirroredEntry) {
    element_sym_matrix e;  // K(18, 9) = 3, K(9, 18) = -3
    make_sym(e, {9, 18}, {0.0, 3.0, 0.0});
    // Target order 18, 9: the kept entry is K(position 0, position 1) = K(18, 9).
    sparse_target K1;
    init_target(K1, make_index({18, 9}));
    matrix_skew_assembler<sparse_target> S1(K1, 1.0);
    S1.add_sym(2.0, e, true);  // symmetric matrices are not its business
    EXPECT_EQ(entry(K1, 9, 18), 0.0);
    S1.add_sym(2.0, e, false);
    EXPECT_EQ(K1.matrix()[1], 6.0);  // row 0 holds (0, 0) then (0, 1)
    // Target order 9, 18: the kept entry is K(9, 18).
    sparse_target K2;
    init_target(K2, make_index({9, 18}));
    matrix_skew_assembler<sparse_target> S2(K2, 1.0);
    S2.add_sym(2.0, e, false);
    EXPECT_EQ(K2.matrix()[1], -6.0);
    EXPECT_EQ(K2.matrix()[0], 0.0);
    EXPECT_EQ(K2.matrix()[2], 0.0);
    // The symmetric assembler on the same run ignores the skew element.
    matrix_sym_assembler<sparse_target> A(K2, 1.0);
    A.add_sym(2.0, e, false);
    EXPECT_EQ(K2.matrix()[1], -6.0);
}

TEST(MatrixSymAssembler, SparseElementMatrix) {
    element_sparse_matrix e;
    e.set_IDs(make_index({0, 9, 18}));
    // rows: 0 -> (0,0)=1, (0,2)=2; 1 -> (1,1)=3; 2 -> (2,2)=4
    const unsigned p[] = {0, 2, 3, 4}, c[] = {0, 2, 1, 2};
    dense1D<unsigned int> ptr(4), col(4);
    for (int i = 0; i < 4; ++i) ptr[i] = p[i], col[i] = c[i];
    e.matrix().init(ptr, col, 0.0);
    e.matrix()[0] = 1.0, e.matrix()[1] = 2.0, e.matrix()[2] = 3.0, e.matrix()[3] = 4.0;
    sparse_target K;
    init_target(K, make_index({0, 18}));
    matrix_sym_assembler<sparse_target> A(K, 2.0);
    A.add_sparse(1.0, e, true);
    EXPECT_EQ(entry(K, 0, 0), 2.0);
    EXPECT_EQ(entry(K, 0, 18), 4.0);
    EXPECT_EQ(entry(K, 18, 18), 8.0);
}

TEST(MatrixDiagAssembler, AddsNonZeroValuesOfFreeDOFs) {
    DOF_vector d;
    d.init(make_index({9, 18}), 0.0);
    matrix_diag_assembler A(d, 2.0);
    DOF_vector e;
    e.init(make_index({0, 9, 18}), 0.0);
    e[0] = 7.0, e[1] = 1.5, e[2] = 0.0;
    A.add_diag(3.0, e);
    EXPECT_EQ(d[0], 9.0);
    EXPECT_EQ(d[1], 0.0);
    element_sym_matrix s;
    make_sym(s, {9}, {5.0});
    A.add_sym(1.0, s, true);  // a diagonal target takes diagonals only
    EXPECT_EQ(d[0], 9.0);
    EXPECT_TRUE(matrix_diag_assembler(d, 0.0).is_null());
}

TEST(MatrixGenAssembler, ComplexTargetTakesBothTrianglesAndSkewSigns) {
    typedef std::complex<double> cplx;
    typedef indexed2D_row<DOF_index, dense2D<cplx>> target_type;
    target_type Z(make_index({9, 18}), dense2D<cplx>(2, 2, cplx(0.0)));
    matrix_gen_assembler<target_type> A(Z, cplx(0.0, 1.0));
    element_sym_matrix k;
    make_sym(k, {9, 18}, {2.0, -1.0, 3.0});
    A.add_sym(2.0, k, true);
    EXPECT_EQ(Z(0, 0), cplx(0.0, 4.0));
    EXPECT_EQ(Z(1, 0), cplx(0.0, -2.0));
    EXPECT_EQ(Z(0, 1), cplx(0.0, -2.0));
    EXPECT_EQ(Z(1, 1), cplx(0.0, 6.0));
    element_sym_matrix g;  // gyroscopic: G(18, 9) = 4, G(9, 18) = -4
    make_sym(g, {9, 18}, {0.0, 4.0, 0.0});
    A.add_sym(1.0, g, false);
    EXPECT_EQ(Z(1, 0), cplx(0.0, 2.0));
    EXPECT_EQ(Z(0, 1), cplx(0.0, -6.0));
    EXPECT_EQ(Z(0, 0), cplx(0.0, 4.0));
}

TEST(MatrixIndexed2dAssembler, AddsRowsUpToTheSmallerColumnCount) {
    typedef indexed2D_row<DOF_index, dense2D<double>> target_type;
    target_type T(make_index({0, 9, 18}), dense2D<double>(3, 2, 0.0));
    matrix_indexed2d_assembler<target_type> A(T, 1.0);
    element_gen_matrix e(make_index({9, 27}), dense2D<double>(2, 3, 1.0));
    e(0, 0) = 5.0, e(0, 1) = 6.0, e(0, 2) = 7.0;
    A.add_gen(2.0, e);
    EXPECT_EQ(T(1, 0), 10.0);
    EXPECT_EQ(T(1, 1), 12.0);
    EXPECT_EQ(T(0, 0), 0.0);
    EXPECT_EQ(T(2, 1), 0.0);
}

TEST(MatrixSymAssemblerProjection, QuadraticFormOnTheSelectedDirections) {
    double mass = 0.0;
    DOF_selector x_only;
    x_only.mask = 1u;  // position 0 of each node
    matrix_sym_assembler_projection P(x_only, &mass);
    element_sym_matrix m;  // DOFs 0 (x of node 0), 1 (y of node 0), 9 (x of node 1)
    make_sym(m, {0, 1, 9}, {2.0, 1.0, 3.0, 0.5, 0.0, 4.0});
    P.add_sym(2.0, m, true);
    EXPECT_EQ(mass, 2.0 * (2.0 + 4.0 + 2.0 * 0.5));
    DOF_vector d;
    d.init(make_index({0, 1}), 5.0);
    P.add_diag(1.0, d);
    EXPECT_EQ(mass, 19.0);
}

TEST(VectorAssembler, DOFValuesAndElementVectorsOnTheIntersection) {
    DOF_vector F;
    F.init(make_index({9, 18}), 0.0);
    vector_assembler<> A(F, 2.0);
    A.add_DOF(0, 5.0);  // a fixed DOF: dropped
    A.add_DOF(18, 1.5);
    EXPECT_EQ(F[1], 3.0);
    EXPECT_EQ(F[0], 0.0);
    DOF_vector e;
    e.init(make_index({0, 9}), 0.0);
    e[0] = 100.0, e[1] = 0.25;
    EXPECT_EQ(A.add(4.0, e, 3, 0), 0);
    EXPECT_EQ(F[0], 2.0);
    EXPECT_TRUE(vector_assembler<>(F, 0.0).is_null());
    EXPECT_TRUE(vector_null_assembler().is_null());

    typedef std::complex<double> cplx;
    indexed1D<DOF_index, dense1D<cplx>> Fc;
    Fc.init(make_index({9}), cplx(0.0));
    vector_assembler<cplx> C(Fc, cplx(0.0, 1.0));
    C.add(2.0, e, 0, 0);
    EXPECT_EQ(Fc[0], cplx(0.0, 0.5));
}

TEST(VectorAssemblerLagrange, RecordsInternalForcesPerModel) {
    DOF_vector F;
    F.init(make_index({9}), 0.0);
    Lagrange_states states;
    vector_assembler_Lagrange A(F, 2.0, &states);
    DOF_vector zero;
    zero.init(make_index({0, 9}), 0.0);
    A.add(1.0, zero, 7, 0);
    EXPECT_EQ(states.size(), 0u);  // a vector of zeros makes no entry
    DOF_vector e1;
    e1.init(make_index({0, 9}), 0.0);
    e1[0] = 1.0, e1[1] = 2.0;
    DOF_vector e2;
    e2.init(make_index({9, 18}), 0.0);
    e2[0] = 3.0, e2[1] = 4.0;
    A.add(1.0, e1, 7, 0);
    A.add(1.0, e2, 7, 1);  // same model, another element: same entry
    A.add(1.0, e1, 8, 0);
    EXPECT_EQ(F[0], 2.0 * (2.0 + 3.0 + 2.0));
    ASSERT_EQ(states.size(), 2u);
    const DOF_vector* s7 = states.find(7);
    ASSERT_NE(s7, nullptr);
    EXPECT_EQ(*s7->find(0), 2.0);
    EXPECT_EQ(*s7->find(9), 10.0);
    EXPECT_EQ(*s7->find(18), 8.0);
    // add_plain leaves no record.
    A.add_plain(1.0, e1);
    EXPECT_EQ(*s7->find(9), 10.0);
    // Not null with states attached, even on an empty target.
    DOF_vector empty;
    EXPECT_FALSE(vector_assembler_Lagrange(empty, 1.0, &states).is_null());
    EXPECT_TRUE(vector_assembler_Lagrange(empty, 1.0, nullptr).is_null());
}

TEST(MatrixSymAssembler, BlockSkylineTargetMatchesTheSparseTarget) {
    typedef indexed_sym<DOF_index, symmetric_hybrid_OOC<double>> skyline_target;
    // One block of three rows with full columns.
    block_profile prof;
    for (unsigned c = 0; c < 3; ++c) prof.segments.push_back(block_segment{c, c});
    prof.first = 0;
    prof.last = 3;
    Ptr<DOF_index> ids = make_index({18, 9, 0});
    skyline_target S(ids);
    ASSERT_EQ(S.matrix().init(&prof, 1, 0.0, Ptr<OOC_mgr>()), 0);
    sparse_target K;
    init_target(K, ids);
    matrix_sym_assembler<skyline_target> AS(S, 2.0);
    matrix_sym_assembler<sparse_target> AK(K, 2.0);
    ASSERT_FALSE(AS.is_null());

    element_sym_matrix e;
    make_sym(e, {0, 9, 18, 27}, {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0, 10.0});
    element_sparse_matrix sp;
    sp.set_IDs(make_index({9, 27, 18}));
    const unsigned p[] = {0, 2, 3, 4}, c[] = {0, 2, 1, 2};
    dense1D<unsigned int> ptr(4), col(4);
    for (int i = 0; i < 4; ++i) ptr[i] = p[i], col[i] = c[i];
    sp.matrix().init(ptr, col, 0.0);
    sp.matrix()[0] = 0.5, sp.matrix()[1] = -1.5, sp.matrix()[2] = 2.5, sp.matrix()[3] = 3.5;
    DOF_vector d;
    d.init(make_index({9, 36}), 0.25);
    for (matrix_assembler_base* A :
         {static_cast<matrix_assembler_base*>(&AS), static_cast<matrix_assembler_base*>(&AK)}) {
        EXPECT_EQ(A->add_sym(1.5, e, true), 0);
        EXPECT_EQ(A->add_sparse(1.0, sp, true), 0);
        EXPECT_EQ(A->add_diag(4.0, d), 0);
        EXPECT_EQ(A->add_sym(1.0, e, false), 0);  // skew: not for a symmetric assembler
    }
    for (unsigned i : {0u, 9u, 18u})
        for (unsigned j : {0u, 9u, 18u}) {
            std::uint32_t pi = 0, pj = 0;
            ASSERT_TRUE(S.positions(i, j, pi, pj));
            EXPECT_EQ(S.matrix().get_val(pi, pj), entry(K, i, j)) << i << "," << j;
        }
    EXPECT_EQ(entry(K, 9, 9), 2.0 * (1.5 * 3.0 + 0.5 + 4.0 * 0.25));
    EXPECT_EQ(entry(K, 18, 9), 2.0 * (1.5 * 5.0 - 1.5));
    EXPECT_TRUE((matrix_sym_assembler<skyline_target>(S, 0.0).is_null()));
    // Skew parts: both targets keep the same value for the pair (18, 9).
    matrix_skew_assembler<skyline_target> SS(S, 1.0);
    matrix_skew_assembler<sparse_target> SK(K, 1.0);
    element_sparse_matrix g;  // stored (0, 1) = 3: G(9, 18) = 3, G(18, 9) = -3
    g.set_IDs(make_index({9, 18}));
    dense1D<unsigned int> gp(3), gc(1, 1u);
    gp[0] = 0, gp[1] = 1, gp[2] = 1;
    g.matrix().init(gp, gc, 3.0);
    const double before = entry(K, 18, 9);
    SS.add_sparse(1.0, g, false);
    SK.add_sparse(1.0, g, false);
    std::uint32_t p18 = 0, p9 = 0;
    S.positions(18, 9, p18, p9);
    EXPECT_EQ(S.matrix().get_val(p18, p9), entry(K, 18, 9));
    // Target order 18, 9: the kept entry is G(18, 9).
    EXPECT_EQ(entry(K, 18, 9), before - 3.0);
    element_sym_matrix h;  // packed lower triangle: H(18, 9) = 2, H(9, 18) = -2
    make_sym(h, {9, 18}, {0.0, 2.0, 0.0});
    SS.add_sym(1.0, h, false);
    SK.add_sym(1.0, h, false);
    EXPECT_EQ(entry(K, 18, 9), before - 1.0);
    EXPECT_EQ(S.matrix().get_val(p18, p9), entry(K, 18, 9));
    skyline_target unset(ids);
    EXPECT_TRUE((matrix_sym_assembler<skyline_target>(unset, 1.0).is_null()));
}

TEST(MatrixAssemblers, ResultMatrixTargets) {
    typedef std::complex<double> cplx;
    typedef indexed2D_row<DOF_index, dense2D_OOC<cplx>> complex_target;
    typedef indexed2D_row<DOF_index, dense2D_OOC<double>> real_target;
    element_sym_matrix k;
    make_sym(k, {9, 18}, {2.0, -1.0, 3.0});

    // The impedance matrix: general, both triangles.
    complex_target Z;
    Z.set_IDs(make_index({18, 9}));
    ASSERT_EQ(Z.matrix().init(2, 2, cplx(0.0)), 0);
    matrix_gen_assembler<complex_target> G(Z, cplx(0.0, 2.0));
    ASSERT_FALSE(G.is_null());
    G.add_sym(1.0, k, true);
    cplx v;
    Z.matrix().get_val(0, 1, v);  // (18, 9)
    EXPECT_EQ(v, cplx(0.0, -2.0));
    Z.matrix().get_val(1, 0, v);
    EXPECT_EQ(v, cplx(0.0, -2.0));
    Z.matrix().get_val(0, 0, v);
    EXPECT_EQ(v, cplx(0.0, 6.0));

    // A row-indexed symmetric target keeps the (max, min) entry.
    complex_target Zs;
    Zs.set_IDs(make_index({9, 18}));
    ASSERT_EQ(Zs.matrix().init(2, 2, cplx(0.0)), 0);
    matrix_sym_assembler<complex_target> S(Zs, cplx(1.0, 0.0));
    S.add_sym(1.0, k, true);
    Zs.matrix().get_val(1, 0, v);
    EXPECT_EQ(v, cplx(-1.0, 0.0));
    Zs.matrix().get_val(0, 1, v);
    EXPECT_EQ(v, cplx(0.0, 0.0));

    // Rows of a dense result matrix.
    real_target R;
    R.set_IDs(make_index({9}));
    ASSERT_EQ(R.matrix().init(1, 2, 0.0), 0);
    matrix_indexed2d_assembler<real_target> A(R, 1.0);
    element_gen_matrix e(make_index({9, 18}), dense2D<double>(2, 2, 1.0));
    A.add_gen(3.0, e);
    double x = 0.0;
    R.matrix().get_val(0, 1, x);
    EXPECT_EQ(x, 3.0);
    real_target unset;
    EXPECT_TRUE((matrix_indexed2d_assembler<real_target>(unset, 1.0).is_null()));
}
