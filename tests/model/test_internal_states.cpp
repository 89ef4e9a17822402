// Saving and restoring internal states through the model contract.
#include <gtest/gtest.h>

#include <orv/fem/context.h>
#include <orv/fem/numerical_model_composite.h>

#include "model/internal_states.h"
#include "model/numerical_model_composite.h"
#include "spring_model.h"

using namespace orv;
using namespace orv::core;
using orv::test::spring_model;

namespace {

// Springs with one state value per element, saved as a record of two values (the state
// and the element number).
class stateful_spring : public spring_model {
public:
    stateful_spring(context_type* ctx, unsigned n)
        : spring_model(ctx, std::vector<unsigned>(n, 0), std::vector<unsigned>(n, 1), std::vector<double>(n, 1.0)),
          state(n, 0.0) {}

    std::vector<double> state;
    const unsigned record = 2;

    bool has_internal_states() const override { return true; }
    int get_internal_states_layout(internal_states_layout& layout) const override {
        layout.record_size = record;
        layout.offsets = dense1D<unsigned int>();
        for (std::size_t e = 0; e <= state.size(); ++e) layout.offsets.push_back(static_cast<unsigned>(e * record));
        layout.values = dense1D<double>(state.size() * record, -1.0);
        return 0;
    }
    int set_element_states(std::uint32_t e, const dense1D<double>& values) override {
        state[e] = values.size() ? values[0] : 0.0;
        return 0;
    }
    int get_element_states(std::uint32_t e, dense1D<double>& values) const override {
        values.resize(record, 0.0);
        values[0] = state[e];
        if (record > 1) values[1] = e;
        return 0;
    }
    void reset_internal_states() override { state.assign(state.size(), 0.0); }
};

}  // namespace

TEST(InternalStates, SavedPerModelAndRestored) {
    fem::context ctx;
    stateful_spring* a = new stateful_spring(ctx.engine(), 3);
    stateful_spring* b = new stateful_spring(ctx.engine(), 1);
    fem::numerical_model_base ha, hb;
    ha.set_w(static_cast<ref_counted*>(a));
    hb.set_w(static_cast<ref_counted*>(b));
    fem::numerical_model_composite comp(ctx);
    comp.insert(a->ID(), b->ID());
    a->state = {1.5, 2.5, 3.5};
    b->state = {-7.0};

    Ptr<internal_states> saved;
    ASSERT_EQ(comp.engine()->get_internal_states(saved), 0);
    ASSERT_TRUE(saved);
    const internal_states_layout* la = saved->get(a->ID());
    ASSERT_NE(la, nullptr);
    ASSERT_EQ(la->values.size(), 6u);
    EXPECT_EQ(la->values[2], 2.5);
    EXPECT_EQ(la->values[5], 2.0);
    ASSERT_NE(saved->get(b->ID()), nullptr);
    EXPECT_EQ(saved->get(comp.ID()), nullptr);

    comp.engine()->reset_internal_states();
    EXPECT_EQ(a->state[2], 0.0);
    EXPECT_EQ(b->state[0], 0.0);
    ASSERT_EQ(comp.engine()->set_internal_states(*saved), 0);
    EXPECT_EQ(a->state, (std::vector<double>{1.5, 2.5, 3.5}));
    EXPECT_EQ(b->state[0], -7.0);

    // A row that is not a full record reads as empty, which resets its element.
    internal_states odd;
    internal_states_layout l;
    l.record_size = 2;
    for (unsigned o : {0u, 2u, 3u, 5u}) l.offsets.push_back(o);
    for (double v : {8.0, 0.0, 9.0, 10.0, 0.0}) l.values.push_back(v);
    ASSERT_TRUE(odd.set(a->ID(), l));
    ASSERT_EQ(a->set_internal_states(odd), 0);
    EXPECT_EQ(a->state, (std::vector<double>{8.0, 0.0, 10.0}));
    // A model with no entry in the record is left as it is.
    internal_states other;
    b->state[0] = 4.0;
    ASSERT_EQ(b->set_internal_states(other), 0);
    EXPECT_EQ(b->state[0], 4.0);
}
