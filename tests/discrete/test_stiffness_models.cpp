// Matrix-defined stiffness models: plain and penalty modes through the assembly loop,
// the checks of init, the element argument, and the internal forces and energy.
#include <gtest/gtest.h>

#include <orv/fem/error_type.h>

#include <new>
#include <vector>

#include <orv/fem/context.h>
#include <orv/fem/elementary_load.h>
#include <orv/fem/stiffness_diag.h>
#include <orv/fem/stiffness_sym.h>
#include <orv/fem/stiffness_sym_sparse.h>

#include <orv/fem/FEM_factor.h>

#include "common/literal_lists.h"
#include "discrete/stiffness_diag.h"
#include "discrete/stiffness_sym.h"
#include "discrete/stiffness_sym_sparse.h"
#include "linalg/indexed_sym.h"
#include "linalg/symmetric_L_D_Lt.h"
#include "model/element_workspace.h"
#include "model/matrix_assembler.h"
#include "model/vector_assembler.h"

using namespace orv;
using fem::error_data;
using fem::no_error;
using orv::test::list_of;
using orv::test::vec_of;

namespace {

// K = [[4, 1], [1, 3]] as a packed and as a compressed matrix.
symmetric_full<double> full_K() {
    symmetric_full<double> K(2, 0.0);
    K(0, 0) = 4;
    K(1, 0) = 1;
    K(1, 1) = 3;
    return K;
}

symmetric_sparse<double> sparse_K() {
    symmetric_sparse<double> K;
    K.init(list_of({0, 2, 3}), list_of({0, 1, 1}), 0.0);
    K[0] = 4;
    K[1] = 1;
    K[2] = 3;
    return K;
}

// The engines of model handles, to run one check on each.
template <class... H>
std::vector<core::numerical_model_base*> engines_of(H&... h) {
    return {static_cast<core::numerical_model_base*>(h.engine())...};
}

// A global system on a list of DOF IDs: a dense symmetric matrix and a vector, with
// their assemblers, and the arguments of an assembly.
struct test_system {
    Ptr<core::DOF_index> ids;
    core::indexed_sym<core::DOF_index, symmetric_full<double>> K;
    core::DOF_vector F;
    core::assembly_args args;

    explicit test_system(const dense1D<unsigned int>& list) : ids(new core::DOF_index()) {
        ids->init(list.begin(), list.end());
        K.set_IDs(ids);
        K.matrix() = symmetric_full<double>(ids->size(), 0.0);
        F.init(ids, 0.0);
    }
    double k(unsigned a, unsigned b) const { return K.matrix()(ids->find(a), ids->find(b)); }
    double f(unsigned a) const { return F[ids->find(a)]; }
    double sum_K() const {
        double s = 0;
        for (std::size_t i = 0; i < K.matrix().size(); ++i) s += std::abs(K.matrix()[i]);
        return s;
    }
    // Matrix of matrix_code into K, with the penalties given.
    int assemble(core::numerical_model_base& m, unsigned code, double p_disp = 0, double p_rot = 0, double p_temp = 0) {
        core::matrix_sym_assembler<decltype(K)> ma(K, 1.0);
        args.matrix_assembler = &ma;
        args.vector_assembler = nullptr;
        args.params.penalty_displacement = p_disp;
        args.params.penalty_rotation = p_rot;
        args.params.penalty_temperature = p_temp;
        const int rc = m.assemble_matrix(code, args);
        args.matrix_assembler = nullptr;
        return rc;
    }
    // Internal forces into F and energy into the first accumulator, no matrix.
    int internal(core::numerical_model_base& m, unsigned code, const core::DOF_vector& U, double p_disp = 0) {
        core::vector_assembler<double> va(F, 1.0);
        args.matrix_assembler = nullptr;
        args.vector_assembler = &va;
        args.U = &U;
        args.params.penalty_displacement = p_disp;
        for (double& a : args.accumulators) a = 0.0;
        const int rc = m.assemble_matrix(code, args);
        args.vector_assembler = nullptr;
        return rc;
    }
};

}  // namespace

TEST(stiffness_diag, penalty_mode_is_silent_in_the_first_pass_and_whole_in_the_second) {
    fem::context ctx;
    // A displacement, a rotation and a temperature DOF: the scale is the largest
    // penalty among them.
    fem::stiffness_diag d(ctx, vec_of({2, 3, 5}), list_of({0, 4, 6}), 0);
    ASSERT_TRUE(d.is_valid());
    EXPECT_NE(d.ID(), 0xFFFFFFFFu);
    core::stiffness_diag& e = *d.engine();
    EXPECT_TRUE(e.has_matrix(1));
    EXPECT_TRUE(e.has_matrix(7));
    EXPECT_TRUE(e.has_matrix(8));
    EXPECT_FALSE(e.has_matrix(2));

    test_system s(list_of({0, 4, 6, 9}));
    EXPECT_EQ(s.assemble(e, 1), 0);
    EXPECT_EQ(s.sum_K(), 0.0);
    EXPECT_EQ(s.assemble(e, 7, 1000.0, 10.0, 7.0), 0);
    EXPECT_EQ(s.k(0, 0), 2000.0);
    EXPECT_EQ(s.k(4, 4), 3000.0);
    EXPECT_EQ(s.k(6, 6), 5000.0);
    EXPECT_EQ(s.k(9, 9), 0.0);
    EXPECT_EQ(s.k(0, 4), 0.0);

    // Only the rotation's penalty is set: it scales everything.
    test_system r(list_of({0, 4, 6}));
    EXPECT_EQ(r.assemble(e, 7, 0.0, 10.0, 0.0), 0);
    EXPECT_EQ(r.k(0, 0), 20.0);
    EXPECT_EQ(r.k(6, 6), 50.0);

    // The penalty pass lists the model's DOFs.
    fem::DOFs_mgr table;
    EXPECT_EQ(d.get_DOFs(7, table, 2).size(), 3u);
}

TEST(stiffness_diag, absolute_mode_is_not_in_the_penalty_pass) {
    fem::context ctx;
    fem::stiffness_diag d(ctx, vec_of({2, 3}), list_of({0, 4}), 1);
    core::stiffness_diag& e = *d.engine();
    EXPECT_FALSE(e.has_matrix(7));
    EXPECT_FALSE(e.has_matrix(8));
    test_system s(list_of({0, 4}));
    EXPECT_EQ(s.assemble(e, 7, 1000.0, 1000.0), 0);
    EXPECT_EQ(s.sum_K(), 0.0);
    EXPECT_EQ(s.assemble(e, 1), 0);
    EXPECT_EQ(s.k(0, 0), 2.0);
    EXPECT_EQ(s.k(4, 4), 3.0);
    // With the penalties set, code 1 still adds the plain values.
    EXPECT_EQ(s.assemble(e, 1, 1000.0, 1000.0), 0);
    EXPECT_EQ(s.k(0, 0), 4.0);
    fem::DOFs_mgr table;
    EXPECT_EQ(d.get_DOFs(7, table, 2).size(), 0u);
    EXPECT_EQ(d.get_DOFs(1, table, 2).size(), 2u);
}

TEST(stiffness_models, dense_and_sparse_forms_give_the_same_matrix_on_unsorted_IDs) {
    fem::context ctx;
    // Row 0 of K on ID 11, row 1 on ID 10.
    fem::stiffness_sym a(ctx, full_K(), list_of({11, 10}), 1);
    fem::stiffness_sym_sparse b(ctx, sparse_K(), list_of({11, 10}), 1);
    for (core::numerical_model_base* m : engines_of(a, b)) {
        test_system s(list_of({10, 11, 12}));
        EXPECT_EQ(s.assemble(*m, 1), 0);
        EXPECT_EQ(s.k(11, 11), 4.0);
        EXPECT_EQ(s.k(10, 10), 3.0);
        EXPECT_EQ(s.k(10, 11), 1.0);
        EXPECT_EQ(s.k(12, 12), 0.0);
    }
    // Penalty mode, displacement DOFs: scaled by the displacement penalty.
    fem::stiffness_sym_sparse p(ctx, sparse_K(), list_of({11, 10}), 0);
    test_system s(list_of({10, 11}));
    EXPECT_EQ(s.assemble(*p.engine(), 1), 0);
    EXPECT_EQ(s.sum_K(), 0.0);
    EXPECT_EQ(s.assemble(*p.engine(), 7, 100.0, 5.0), 0);
    EXPECT_EQ(s.k(11, 11), 400.0);
    EXPECT_EQ(s.k(10, 11), 100.0);
    // The model's own matrix was not scaled in place.
    symmetric_sparse<double> back;
    dense1D<unsigned int> ids;
    int absolute = -1;
    EXPECT_EQ(p.get_params(back, ids, absolute), 0);
    EXPECT_EQ(back[0], 4.0);
    EXPECT_EQ(absolute, 0);
    ASSERT_EQ(ids.size(), 2u);
    EXPECT_EQ(ids[0], 11u);
}

TEST(stiffness_models, init_refuses_repeated_IDs_and_size_mismatches) {
    fem::context ctx;
    fem::stiffness_diag d(ctx);
    EXPECT_EQ(d.init(vec_of({1, 2}), list_of({3, 3}), 1), error_data);
    dense1D<double> values;
    dense1D<unsigned int> ids;
    int absolute;
    d.get_params(values, ids, absolute);
    EXPECT_EQ(values.size(), 0u);
    EXPECT_EQ(ids.size(), 0u);
    EXPECT_EQ(d.init(vec_of({1, 2}), list_of({3}), 1), error_data);
    EXPECT_EQ(d.init(vec_of({1, 2}), list_of({3, 4}), 1), no_error);
    d.get_params(values, ids, absolute);
    EXPECT_EQ(values.size(), 2u);
    EXPECT_EQ(absolute, 1);

    fem::stiffness_sym s(ctx);
    EXPECT_EQ(s.init(full_K(), list_of({1, 2, 3}), 0), error_data);
    EXPECT_EQ(s.init(full_K(), list_of({7, 7}), 0), error_data);
    EXPECT_EQ(s.init(full_K(), list_of({7, 8}), 0), no_error);

    fem::stiffness_sym_sparse p(ctx);
    symmetric_sparse<double> broken = sparse_K();
    broken.init(list_of({0, 2, 1}), list_of({0, 1, 1}), 1.0);  // pointers go back
    EXPECT_EQ(p.init(broken, list_of({1, 2}), 1), error_data);
    EXPECT_EQ(p.init(sparse_K(), list_of({1, 1}), 1), error_data);
    EXPECT_EQ(p.init(sparse_K(), list_of({1, 2}), 1), no_error);

    fem::stiffness_diag empty_handle;
    EXPECT_EQ(empty_handle.init(vec_of({1}), list_of({1}), 1), error_data);
}

TEST(stiffness_models, empty_values_contribute_nothing) {
    fem::context ctx;
    fem::stiffness_diag d(ctx);
    EXPECT_EQ(d.init(dense1D<double>(), dense1D<unsigned int>(), 0), no_error);
    test_system s(list_of({0, 1}));
    EXPECT_EQ(s.assemble(*d.engine(), 1), 0);
    EXPECT_EQ(s.assemble(*d.engine(), 7, 10.0, 10.0, 10.0), 0);
    EXPECT_EQ(s.sum_K(), 0.0);
    fem::DOFs_mgr table;
    EXPECT_EQ(d.get_DOFs(1, table, 2).size(), 0u);
}

TEST(stiffness_models, element_other_than_all_or_zero_is_refused) {
    fem::context ctx;
    fem::stiffness_diag d(ctx, vec_of({2}), list_of({0}), 1);
    fem::stiffness_sym y(ctx, full_K(), list_of({0, 1}), 1);
    fem::stiffness_sym_sparse p(ctx, sparse_K(), list_of({0, 1}), 1);
    for (core::numerical_model_base* m : engines_of(d, y, p)) {
        EXPECT_EQ(m->nbr_elements(), 1u);
        test_system s(list_of({0, 1}));
        s.args.element = 1;
        EXPECT_EQ(s.assemble(*m, 1), fem::error_index);
        EXPECT_EQ(s.sum_K(), 0.0);
        s.args.element = 0;
        EXPECT_EQ(s.assemble(*m, 1), 0);
        EXPECT_GT(s.sum_K(), 0.0);
        dense1D<unsigned int> list;
        EXPECT_EQ(m->get_DOFs(core::DOFs_mgr(), 3, 1, list, core::DOF_filter()), fem::error_index);
    }
}

TEST(stiffness_models, internal_forces_and_energy_on_a_known_state) {
    fem::context ctx;
    fem::stiffness_sym a(ctx, full_K(), list_of({10, 11}), 1);
    fem::stiffness_sym_sparse b(ctx, sparse_K(), list_of({10, 11}), 1);
    // U = (1, 2) on IDs 10, 11; K U = (6, 7); energy 0.5 * U K U = 10.
    core::DOF_vector U;
    Ptr<core::DOF_index> uids(new core::DOF_index());
    const unsigned u_ids[3] = {11, 10, 30};
    uids->init(u_ids, u_ids + 3);
    U.init(uids, 0.0);
    U[0] = 2.0;
    U[1] = 1.0;
    U[2] = 9.0;  // a DOF the models do not have
    for (core::numerical_model_base* m : engines_of(a, b)) {
        test_system s(list_of({10, 11}));
        EXPECT_EQ(s.internal(*m, 1, U), 0);
        EXPECT_EQ(s.f(10), -6.0);
        EXPECT_EQ(s.f(11), -7.0);
        EXPECT_EQ(s.args.accumulators[0], 10.0);
        EXPECT_EQ(s.sum_K(), 0.0);  // no matrix assembler, no matrix
    }
    // Penalty mode: everything scaled by the penalty, nothing while it is 0.
    fem::stiffness_sym p(ctx, full_K(), list_of({10, 11}), 0);
    test_system s(list_of({10, 11}));
    EXPECT_EQ(s.internal(*p.engine(), 1, U), 0);
    EXPECT_EQ(s.f(10), 0.0);
    EXPECT_EQ(s.args.accumulators[0], 0.0);
    EXPECT_EQ(s.internal(*p.engine(), 7, U, 100.0), 0);
    EXPECT_EQ(s.f(10), -600.0);
    EXPECT_EQ(s.f(11), -700.0);
    EXPECT_EQ(s.args.accumulators[0], 1000.0);

    // Diagonal: f = -k u term by term.
    fem::stiffness_diag d(ctx, vec_of({3, 5}), list_of({11, 30}), 1);
    test_system t(list_of({11, 30}));
    EXPECT_EQ(t.internal(*d.engine(), 1, U), 0);
    EXPECT_EQ(t.f(11), -6.0);
    EXPECT_EQ(t.f(30), -45.0);
    EXPECT_EQ(t.args.accumulators[0], 0.5 * (3 * 4 + 5 * 81));

    // A zero state gives no vector and no energy.
    core::DOF_vector Z;
    Z.init(uids, 0.0);
    test_system z(list_of({10, 11}));
    EXPECT_EQ(z.internal(*a.engine(), 1, Z), 0);
    EXPECT_EQ(z.f(10), 0.0);
    EXPECT_EQ(z.args.accumulators[0], 0.0);
}

TEST(stiffness_models, loads_of_force_and_moment_kind_only) {
    fem::context ctx;
    fem::stiffness_diag d(ctx, vec_of({1}), list_of({0}), 1);
    fem::elementary_load f(fem::elementary_load::kind_force, 0, vec_of({1, 0, 0}));
    fem::elementary_load m(fem::elementary_load::kind_moment | 1, 0, vec_of({1, 0, 0}));
    fem::elementary_load h(fem::elementary_load::kind_heat_flux, 3, vec_of({1}));
    EXPECT_TRUE(d.engine()->accepts_load(f));
    EXPECT_TRUE(d.engine()->accepts_load(m));
    EXPECT_FALSE(d.engine()->accepts_load(h));
    EXPECT_FALSE(d.engine()->has_internal_states());
}

TEST(stiffness_models, assembled_into_the_public_factor_they_solve_exactly) {
    // K = [[4, 1], [1, 3]] on IDs 10, 11 plus a penalty diagonal on ID 18 (a displacement), assembled
    // into one block of the block-skyline factor of a FEM_factor, factored and solved
    // against K (1, 2, 0.5): the answer is exact in binary arithmetic.
    fem::context ctx;
    fem::stiffness_sym a(ctx, full_K(), list_of({10, 11}), 1);
    fem::stiffness_diag p(ctx, vec_of({0.25}), list_of({18}), 0);

    core::block_profile prof;
    prof.first = 0;
    prof.last = 3;
    prof.segments.resize(3);
    prof.segments[0] = core::block_segment{0, 0};
    prof.segments[1] = core::block_segment{1, 1};
    prof.segments[2] = core::block_segment{2, 0};
    fem::FEM_factor F;
    core::FEM_factor_engine& f = *F.engine();
    ASSERT_EQ(f.matrix().init(&prof, 1, 0.0, Ptr<core::OOC_mgr>()), 0);
    ASSERT_EQ(F.set_IDs(list_of({10, 11, 18})), 0);

    core::matrix_sym_assembler<core::FEM_factor_engine> ma(f, 1.0);
    core::assembly_args args;
    args.matrix_assembler = &ma;
    ASSERT_EQ(a.engine()->assemble_matrix(1, args), 0);
    ASSERT_EQ(p.engine()->assemble_matrix(1, args), 0);
    EXPECT_EQ(f.matrix().get_val(2, 2), 0.0);  // silent without penalties
    args.params.penalty_displacement = 8.0;
    ASSERT_EQ(p.engine()->assemble_matrix(7, args), 0);
    ASSERT_EQ(a.engine()->assemble_matrix(7, args), 0);  // absolute: not in this pass
    EXPECT_EQ(f.matrix().get_val(0, 0), 4.0);
    EXPECT_EQ(f.matrix().get_val(1, 0), 1.0);
    EXPECT_EQ(f.matrix().get_val(2, 2), 2.0);

    core::pivot_check_positive<core::dummy_verboser> check;
    ASSERT_EQ(f.matrix().factorize(check), 0);
    double x[3] = {6.0, 7.0, 1.0};
    f.matrix().solve(x);
    EXPECT_EQ(x[0], 1.0);
    EXPECT_EQ(x[1], 2.0);
    EXPECT_EQ(x[2], 0.5);
}
