// Handle counting, sharing, narrowing and identity.
#include <gtest/gtest.h>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/base_class.h>
#include <orv/fem/context.h>

#include <atomic>
#include <thread>
#include <typeinfo>
#include <utility>
#include <vector>

#include "frame/context_type.h"
#include "problem/DOFs_mgr.h"

namespace {

std::atomic<int> destroyed{0};

// Engine objects that count their destructions.
struct probe_engine : orv::ref_counted {
    ~probe_engine() override { ++destroyed; }
    int value = 0;
};
struct probe_engine_derived : probe_engine {};

class probe : public orv::fem::base_class {
public:
    ORV_FEM_HANDLE(probe, probe_engine)
    probe() : base_class(static_cast<orv::ref_counted*>(new probe_engine())) {}
    explicit probe(probe_engine* e) : base_class(static_cast<orv::ref_counted*>(e)) {}
    void set(int v) { engine()->value = v; }
    int get() const { return engine()->value; }
    unsigned count() const { return engine()->ref_count(); }
};

ORV_FEM_HANDLE_IMPL(probe, base_class, probe_engine)

}  // namespace

TEST(Handles, SelfAssignmentOfASoleOwnerKeepsTheObject) {
    destroyed = 0;
    probe a;
    a.set(5);
    probe& alias = a;
    a = alias;
    ASSERT_TRUE(a.is_valid());
    EXPECT_EQ(a.get(), 5);
    EXPECT_EQ(a.count(), 1u);
    a.set_w(a.get_w());
    EXPECT_EQ(a.count(), 1u);
    EXPECT_EQ(destroyed, 0);
}

TEST(Handles, CopiesShareOneObject) {
    destroyed = 0;
    {
        probe a;
        probe b(a);
        probe c;
        EXPECT_EQ(destroyed, 0);
        c = b;  // c's own object goes
        EXPECT_EQ(destroyed, 1);
        b.set(7);
        EXPECT_EQ(a.get(), 7);
        EXPECT_EQ(c.get(), 7);
        EXPECT_EQ(a.count(), 3u);
        {
            probe d = a;
            EXPECT_EQ(a.count(), 4u);
        }
        EXPECT_EQ(a.count(), 3u);
        a.clear_w();
        b.clear_w();
        EXPECT_TRUE(c.is_valid());
        EXPECT_EQ(c.get(), 7);
        EXPECT_EQ(destroyed, 1);
    }
    EXPECT_EQ(destroyed, 2);
}

TEST(Handles, MovedFromHandlesKeepTheirShare) {
    destroyed = 0;
    probe a;
    probe b(std::move(a));
    EXPECT_TRUE(a.is_valid());  // a move shares, like a copy
    EXPECT_EQ(a.get_w(), b.get_w());
    probe c;
    c = std::move(b);
    EXPECT_TRUE(b.is_valid());
    EXPECT_EQ(c.count(), 3u);
    EXPECT_EQ(destroyed, 1);  // c's former object
}

TEST(Handles, ClearDestroysExactlyOnce) {
    destroyed = 0;
    probe a;
    EXPECT_EQ(a.count(), 1u);
    a.clear_w();
    EXPECT_FALSE(a.is_valid());
    EXPECT_EQ(destroyed, 1);
    a.clear_w();
    EXPECT_EQ(destroyed, 1);
    a.set_w(nullptr);
    EXPECT_EQ(destroyed, 1);

    // Adoption of a fresh object (count 0) and replacement by set_w.
    probe b(new probe_engine());
    EXPECT_EQ(b.count(), 1u);
    probe c;
    b.set_w(c.get_w());
    EXPECT_EQ(destroyed, 2);
    EXPECT_EQ(c.count(), 2u);
    probe empty{static_cast<probe_engine*>(nullptr)};
    EXPECT_FALSE(empty.is_valid());
}

TEST(Handles, NarrowingAndIdentity) {
    destroyed = 0;
    orv::fem::context ctx;
    probe unrelated(ctx);
    EXPECT_FALSE(unrelated.is_valid());
    EXPECT_EQ(unrelated.obj_type_id(), probe::type_id());
    EXPECT_EQ(probe::type_id(), typeid(probe_engine));

    // Narrowing to the right class shares the object.
    const orv::fem::base_class& as_base = ctx;
    orv::fem::context again(as_base);
    EXPECT_TRUE(again.is_valid());
    EXPECT_EQ(again.get_w(), ctx.get_w());
    EXPECT_EQ(ctx.obj_type_id(), typeid(orv::core::context_type));

    // obj_type_id names the class of the object actually held.
    probe derived(new probe_engine_derived());
    EXPECT_EQ(derived.obj_type_id(), typeid(probe_engine_derived));
    EXPECT_NE(derived.obj_type_id(), probe::type_id());
    probe narrowed(static_cast<const orv::fem::base_class&>(derived));
    EXPECT_TRUE(narrowed.is_valid());
    EXPECT_EQ(derived.count(), 2u);

    orv::fem::DOFs_mgr dofs;
    orv::fem::context not_a_context(dofs);
    EXPECT_FALSE(not_a_context.is_valid());
    EXPECT_EQ(not_a_context.obj_type_id(), typeid(orv::core::context_type));
    EXPECT_EQ(dofs.obj_type_id(), typeid(orv::core::DOFs_mgr));

    // Narrowing an empty handle gives an empty handle.
    probe none(not_a_context);
    EXPECT_FALSE(none.is_valid());
}

TEST(Handles, ConcurrentCopiesKeepTheCount) {
    destroyed = 0;
    probe a;
    auto churn = [&a] {
        for (int i = 0; i < 20000; ++i) {
            probe b(a);
            probe c;
            c = b;
        }
    };
    std::thread t1(churn), t2(churn);
    t1.join();
    t2.join();
    EXPECT_EQ(a.count(), 1u);
    EXPECT_EQ(destroyed, 40000);  // only the objects made inside the loops
}
