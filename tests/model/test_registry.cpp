// The model registry (IDs, free IDs, global element numbers) and the composite.
#include <gtest/gtest.h>

#include <orv/fem/error_type.h>

#include <thread>

#include <orv/fem/context.h>
#include <orv/fem/numerical_model_composite.h>
#include <orv/fem/numerical_models_mgr.h>
#include <orv/fem/stress_mgr.h>

#include "model/matrix_assembler.h"
#include "model/numerical_model_composite.h"
#include "model/numerical_models_mgr.h"
#include "model_test_utils.h"
#include "problem/stress_mgr.h"
#include "spring_model.h"

using namespace orv;
using namespace orv::core;
using orv::test::entry;
using orv::test::init_target;
using orv::test::make_index;
using orv::test::sparse_target;
using orv::test::spring_model;

namespace {

// A model of n springs between nodes e and e + 1 (stiffness k), owned by a handle.
fem::numerical_model_base make_chain(fem::context& ctx, unsigned n, double k = 1.0, unsigned first_node = 0) {
    std::vector<unsigned> a(n), b(n);
    for (unsigned e = 0; e < n; ++e) a[e] = first_node + e, b[e] = first_node + e + 1;
    fem::numerical_model_base h;
    h.set_w(static_cast<ref_counted*>(new spring_model(ctx.engine(), a, b, std::vector<double>(n, k))));
    return h;
}

typedef std::pair<unsigned, unsigned> pair_u;

}  // namespace

TEST(NumericalModelsMgr, IDsAndGlobalElementNumbers) {
    fem::context ctx;
    fem::numerical_models_mgr mgr = ctx.the_NM_mgr();
    fem::numerical_model_base m0 = make_chain(ctx, 3);
    fem::numerical_model_base m1 = make_chain(ctx, 0);
    fem::numerical_model_base m2 = make_chain(ctx, 2);
    EXPECT_EQ(m0.ID(), 0u);
    EXPECT_EQ(m1.ID(), 1u);
    EXPECT_EQ(m2.ID(), 2u);
    EXPECT_EQ(mgr.size(), 3u);
    EXPECT_EQ(mgr.get_ID(m2), 2u);
    EXPECT_EQ(mgr.get_ID(fem::numerical_model_base()), 0xFFFFFFFFu);
    EXPECT_EQ(mgr.get_NM(1).get_w(), m1.get_w());
    EXPECT_FALSE(mgr.get_NM(3).is_valid());
    fem::numerical_model_base out;
    EXPECT_EQ(mgr.get_NM(7, out), fem::error_data);
    EXPECT_EQ(mgr.get_NM(2, out), fem::no_error);
    EXPECT_EQ(out.get_w(), m2.get_w());

    EXPECT_EQ(mgr.global_FE_ID(0), 0u);
    EXPECT_EQ(mgr.global_FE_ID(1), 3u);
    EXPECT_EQ(mgr.global_FE_ID(2), 3u);
    EXPECT_EQ(mgr.global_FE_ID_range(2), pair_u(3, 5));
    EXPECT_EQ(mgr.global_FE_ID(3), 0xFFFFFFFFu);
    EXPECT_EQ(mgr.global_FE_ID_range(3), pair_u(0xFFFFFFFFu, 0xFFFFFFFFu));
    // The empty model 1 is passed over.
    EXPECT_EQ(mgr.local_FE_ID(2), pair_u(0, 2));
    EXPECT_EQ(mgr.local_FE_ID(3), pair_u(2, 0));
    EXPECT_EQ(mgr.local_FE_ID(4), pair_u(2, 1));
    EXPECT_EQ(mgr.local_FE_ID(5), pair_u(0xFFFFFFFFu, 0xFFFFFFFFu));
    for (unsigned id : {0u, 2u}) EXPECT_EQ(mgr.local_FE_ID(mgr.global_FE_ID(id)), pair_u(id, 0));
}

TEST(NumericalModelsMgr, FreedIDIsReusedWithItsRangeResizedAndLaterRangesShifted) {
    fem::context ctx;
    fem::numerical_models_mgr mgr = ctx.the_NM_mgr();
    fem::numerical_model_base m0 = make_chain(ctx, 2);
    fem::numerical_model_base m1 = make_chain(ctx, 3);
    fem::numerical_model_base m2 = make_chain(ctx, 4);
    EXPECT_EQ(mgr.global_FE_ID_range(2), pair_u(5, 9));

    // The registry's reference keeps a model alive after the host drops its handle.
    core::numerical_model_base* e1 = m1.engine();
    m1.clear_w();
    EXPECT_EQ(mgr.get_NM(1).engine(), e1);

    EXPECT_EQ(mgr.remove(1), fem::no_error);
    EXPECT_FALSE(mgr.get_NM(1).is_valid());
    EXPECT_EQ(mgr.remove(1), fem::error_data);
    EXPECT_EQ(ctx.engine()->models()->nbr_free_IDs(), 1u);

    fem::numerical_model_base m3 = make_chain(ctx, 5);
    EXPECT_EQ(m3.ID(), 1u);  // the freed ID
    EXPECT_EQ(mgr.size(), 3u);
    EXPECT_EQ(mgr.global_FE_ID_range(0), pair_u(0, 2));
    EXPECT_EQ(mgr.global_FE_ID_range(1), pair_u(2, 7));
    EXPECT_EQ(mgr.global_FE_ID_range(2), pair_u(7, 11));
    EXPECT_EQ(mgr.local_FE_ID(7), pair_u(2, 0));
    EXPECT_EQ(mgr.local_FE_ID(6), pair_u(1, 4));

    // The next model takes a fresh ID.
    fem::numerical_model_base m4 = make_chain(ctx, 1);
    EXPECT_EQ(m4.ID(), 3u);
    EXPECT_EQ(mgr.global_FE_ID_range(3), pair_u(11, 12));

    // A model removed while the host still holds it is detached.
    EXPECT_EQ(mgr.remove(3), fem::no_error);
    EXPECT_EQ(m4.ID(), 0xFFFFFFFFu);

    mgr.clear();
    EXPECT_EQ(mgr.size(), 0u);
    EXPECT_EQ(mgr.global_FE_ID(0), 0xFFFFFFFFu);
    fem::numerical_model_base m5 = make_chain(ctx, 1);
    EXPECT_EQ(m5.ID(), 0u);
}

TEST(NumericalModelComposite, ForwardsSkipsMissingChildrenAndScales) {
    fem::context ctx;
    fem::numerical_model_base a = make_chain(ctx, 1, 2.0, 0);  // nodes 0-1
    fem::numerical_model_base b = make_chain(ctx, 2, 3.0, 1);  // nodes 1-2-3
    fem::numerical_model_composite comp(ctx);
    ASSERT_TRUE(comp.is_valid());
    EXPECT_EQ(comp.ID(), 2u);
    EXPECT_EQ(ctx.the_NM_mgr().global_FE_ID_range(2), pair_u(3, 4));  // one element in the registry
    EXPECT_EQ(comp.insert(a.ID(), 57u, b.ID()), fem::no_error);       // 57: no such model
    EXPECT_EQ(comp.size(), 3u);
    EXPECT_EQ(comp.get_NM_ID(1), 57u);
    EXPECT_EQ(comp.get_NM_ID(3), 0xFFFFFFFFu);
    EXPECT_FALSE(comp.get_NM(1).is_valid());
    EXPECT_EQ(comp.get_NM(2).get_w(), b.get_w());
    EXPECT_EQ(comp.get_NM_IDs().size(), 3u);

    core::numerical_model_composite* c = comp.engine();
    EXPECT_FALSE(c->is_simple());
    EXPECT_EQ(c->nbr_elements(), 3u);
    std::vector<Ptr<core::numerical_model_base>> simple;
    c->collect_simple_models(simple);
    ASSERT_EQ(simple.size(), 2u);
    EXPECT_EQ(simple[0]->ID(), a.ID());
    EXPECT_EQ(simple[1]->ID(), b.ID());

    dense1D<unsigned int> dofs = comp.get_DOFs(1, fem::DOFs_mgr(), 2);
    ASSERT_EQ(dofs.size(), 4u);
    EXPECT_EQ(dofs[3], 27u);

    sparse_target K;
    init_target(K, make_index({0, 9, 18, 27}));
    matrix_sym_assembler<sparse_target> A(K, 1.0);
    assembly_args args;
    args.matrix_assembler = &A;
    ASSERT_EQ(c->assemble_matrix(1, args), 0);
    EXPECT_EQ(entry(K, 0, 0), 2.0);
    EXPECT_EQ(entry(K, 9, 9), 5.0);
    EXPECT_EQ(entry(K, 27, 27), 3.0);

    // The composite's evolution function multiplies its children's; 0 skips them all.
    const unsigned two = ctx.engine()->evolution_funcs()->create_cste(2.0);
    const unsigned zero = ctx.engine()->evolution_funcs()->create_cste(0.0);
    b.set_evolution_func_ID(two);
    comp.set_evolution_func_ID(two);
    ASSERT_EQ(c->assemble_matrix(1, args), 0);
    EXPECT_EQ(entry(K, 0, 0), 2.0 + 4.0);
    EXPECT_EQ(entry(K, 27, 27), 3.0 + 12.0);
    EXPECT_EQ(args.factor, 1.0);
    comp.set_evolution_func_ID(zero);
    ASSERT_EQ(c->assemble_matrix(1, args), 0);
    EXPECT_EQ(entry(K, 27, 27), 15.0);

    // insert(a, a): the child acts twice.
    fem::numerical_model_composite twice(ctx);
    twice.insert(a.ID(), a.ID());
    sparse_target K2;
    init_target(K2, make_index({0, 9}));
    matrix_sym_assembler<sparse_target> A2(K2, 1.0);
    args.matrix_assembler = &A2;
    ASSERT_EQ(twice.engine()->assemble_matrix(1, args), 0);
    EXPECT_EQ(entry(K2, 0, 0), 4.0);

    // A removed child counts as absent.
    ASSERT_EQ(ctx.the_NM_mgr().remove(a.ID()), fem::no_error);
    EXPECT_EQ(c->nbr_elements(), 2u);
    EXPECT_EQ(comp.get_DOFs(1, fem::DOFs_mgr(), 2).size(), 3u);
}

TEST(NumericalModelComposite, EmptyCompositeAndNestedComposites) {
    fem::context ctx;
    fem::numerical_model_composite empty(ctx);
    core::numerical_model_composite* e = empty.engine();
    EXPECT_EQ(e->nbr_elements(), 0u);
    EXPECT_EQ(empty.get_DOFs(1, fem::DOFs_mgr(), 2).size(), 0u);
    sparse_target K;
    init_target(K, make_index({0}));
    matrix_sym_assembler<sparse_target> A(K, 1.0);
    assembly_args args;
    args.matrix_assembler = &A;
    EXPECT_EQ(e->assemble_matrix(1, args), 0);
    unsigned type = 1, rows = 1, cols = 1;
    EXPECT_EQ(e->get_output_shape(0, type, rows, cols), 0);
    EXPECT_EQ(rows, 0u);

    fem::numerical_model_base a = make_chain(ctx, 2);
    fem::numerical_model_composite inner(ctx), outer(ctx);
    inner.insert(a.ID());
    outer.insert(inner.ID(), empty.ID());
    std::vector<Ptr<core::numerical_model_base>> simple;
    outer.engine()->collect_simple_models(simple);
    ASSERT_EQ(simple.size(), 1u);
    EXPECT_EQ(simple[0]->ID(), a.ID());
    EXPECT_EQ(outer.engine()->nbr_elements(), 2u);
    // An error of a child stops the loop and is the result.
    args.element = 5;
    EXPECT_EQ(outer.engine()->assemble_matrix(1, args), fem::error_index);

    // Narrowing: a composite handle from a plain model handle is empty.
    fem::numerical_model_composite not_composite(a);
    EXPECT_FALSE(not_composite.is_valid());
    fem::numerical_model_composite same(static_cast<const fem::base_class&>(outer));
    EXPECT_TRUE(same.is_valid());
}

namespace {
// A model that answers an output shape.
class shaped_model : public core::numerical_model_base {
public:
    shaped_model(core::context_type* ctx, unsigned type, unsigned rows)
        : core::numerical_model_base(ctx), t(type), r(rows) {
        register_self(1);
    }
    int get_output_shape(unsigned, unsigned& type, unsigned& rows, unsigned& cols) const override {
        type = t;
        rows = r;
        cols = 1;
        return 0;
    }
    double get_size(const dense2D<double>&) const override { return r; }
    unsigned t, r;
};
}  // namespace

TEST(NumericalModelComposite, OutputShapeAndSize) {
    fem::context ctx;
    fem::numerical_model_base plain = make_chain(ctx, 1);  // no output: left out
    fem::numerical_model_base a, b, c;
    a.set_w(static_cast<ref_counted*>(new shaped_model(ctx.engine(), 1, 6)));
    b.set_w(static_cast<ref_counted*>(new shaped_model(ctx.engine(), 1, 3)));
    c.set_w(static_cast<ref_counted*>(new shaped_model(ctx.engine(), 2, 6)));
    fem::numerical_model_composite comp(ctx);
    comp.insert(plain.ID(), a.ID(), b.ID());
    unsigned type = 0, rows = 0, cols = 0;
    EXPECT_EQ(comp.engine()->get_output_shape(0, type, rows, cols), 0);
    EXPECT_EQ(type, 1u);
    EXPECT_EQ(rows, 6u);  // the first child with an answer
    EXPECT_EQ(cols, 1u);
    EXPECT_EQ(comp.engine()->get_size(dense2D<double>()), 6.0);
    comp.insert(c.ID());
    EXPECT_EQ(comp.engine()->get_output_shape(0, type, rows, cols), fem::error_element_type);
}

TEST(Handles, EmptyHandlesAnswerWithoutAnEngine) {
    fem::numerical_models_mgr mgr;
    EXPECT_EQ(mgr.size(), 0u);
    EXPECT_FALSE(mgr.get_NM(0).is_valid());
    EXPECT_EQ(mgr.remove(0), fem::error_data);
    EXPECT_EQ(mgr.local_FE_ID(0), pair_u(0xFFFFFFFFu, 0xFFFFFFFFu));
    fem::numerical_model_composite comp;
    EXPECT_EQ(comp.insert(1u), fem::error_data);
    EXPECT_EQ(comp.size(), 0u);
    EXPECT_EQ(comp.get_NM_ID(0), 0xFFFFFFFFu);
    fem::numerical_model_base m;
    EXPECT_EQ(m.ID(), 0xFFFFFFFFu);
    EXPECT_EQ(m.get_DOFs(1, fem::DOFs_mgr(), 2).size(), 0u);
    EXPECT_EQ(m.obj_type_id(), fem::numerical_model_base::type_id());
    fem::stress_mgr s;
    s.clear();
    EXPECT_FALSE(s.is_valid());
    fem::context ctx;
    fem::stress_mgr s2(ctx);
    EXPECT_TRUE(s2.is_valid());
    EXPECT_TRUE(s2.engine()->empty());
}

TEST(NumericalModelsMgr, RegisteringAgainResizesTheRangeInPlace) {
    fem::context ctx;
    fem::numerical_models_mgr mgr = ctx.the_NM_mgr();
    fem::numerical_model_base m0 = make_chain(ctx, 2);
    fem::numerical_model_base m1 = make_chain(ctx, 3);
    // A mesh model registers again when its connectivity changes.
    EXPECT_EQ(m0.engine()->register_self(5), 0u);
    EXPECT_EQ(mgr.size(), 2u);
    EXPECT_EQ(mgr.global_FE_ID_range(0), pair_u(0, 5));
    EXPECT_EQ(mgr.global_FE_ID_range(1), pair_u(5, 8));
    EXPECT_EQ(m1.engine()->register_self(0), 1u);
    EXPECT_EQ(mgr.global_FE_ID_range(1), pair_u(5, 5));
    EXPECT_EQ(mgr.local_FE_ID(5), pair_u(0xFFFFFFFFu, 0xFFFFFFFFu));
}

TEST(NumericalModelsMgr, ConcurrentCreationAndInsertion) {
    fem::context ctx;
    fem::numerical_model_composite comp(ctx);
    const unsigned per_thread = 50, threads = 4;
    std::vector<std::vector<fem::numerical_model_base>> made(threads);
    std::vector<std::thread> pool;
    for (unsigned t = 0; t < threads; ++t)
        pool.emplace_back([&, t] {
            for (unsigned i = 0; i < per_thread; ++i) {
                made[t].push_back(make_chain(ctx, 1 + (i % 3)));
                comp.insert(made[t].back().ID());
            }
        });
    for (std::thread& th : pool) th.join();
    fem::numerical_models_mgr mgr = ctx.the_NM_mgr();
    EXPECT_EQ(mgr.size(), threads * per_thread + 1);
    EXPECT_EQ(comp.size(), threads * per_thread);
    // Every ID once, and the ranges tile the global numbering.
    std::vector<int> seen(mgr.size(), 0);
    for (unsigned i = 0; i < comp.size(); ++i) ++seen[comp.get_NM_ID(i)];
    seen[comp.ID()] += 1;
    for (int s : seen) EXPECT_EQ(s, 1);
    unsigned end = 0;
    for (unsigned id = 0; id < mgr.size(); ++id) {
        const pair_u r = mgr.global_FE_ID_range(id);
        EXPECT_EQ(r.first, end);
        const unsigned n = id == comp.ID() ? 1u : mgr.get_NM(id).engine()->nbr_elements();
        EXPECT_EQ(r.second - r.first, n);
        end = r.second;
    }
}

TEST(Handles, PhysicsOfAModelWithoutOne) {
    fem::context ctx;
    fem::numerical_model_base m = make_chain(ctx, 1);
    EXPECT_FALSE(m.get_physics_model().is_valid());
    EXPECT_FALSE(m.get_mechanical_model().is_valid());
    EXPECT_FALSE(fem::numerical_model_base().get_physics_model().is_valid());
}
