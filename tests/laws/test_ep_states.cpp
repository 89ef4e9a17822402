// Committed states of the elasto-plastic laws: iterations write nothing, a
// rolled-back step is exactly the committed one, step slots, growth of the map,
// commits from several threads, and the solid adapter of the mesh kernels.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include <omp.h>

#include "elements/mesh_material_law.h"
#include "law_test_utils.h"
#include "laws/law_solid_ep.h"

namespace {

namespace core = orv::core;
using law_test::values;
using orv::Ptr;

typedef orv::vector_fixed<double, 6> vec6;
typedef orv::symmetric_fixed<double, 6> sym6;

Ptr<core::law_solid_ep_perfect> make_law() {
    Ptr<core::law_solid_ep_perfect> law(new core::law_solid_ep_perfect());
    EXPECT_EQ(law->init(values({250.0, 0.25, 0.0, 50.0, 1.0})), 0);
    return law;
}

core::law_key key_of(std::uint32_t element, std::uint32_t point, std::uint32_t step) {
    core::law_key k;
    k.element = element;
    k.point = point;
    k.step = step;
    return k;
}

vec6 strain(double t) { return vec6{0.02 * t, -0.005 * t, 0.003 * t, 0.01 * t, -0.004 * t, 0.002 * t}; }

vec6 eval(const core::law_solid_ep& law, const core::law_key& key, const vec6& e, unsigned flags) {
    sym6 D;
    vec6 s;
    double energy, states[7];
    EXPECT_EQ(law.compute(key, e, D, s, energy, states, flags), 0);
    return s;
}

std::vector<double> record(const core::law_solid_ep& law, const core::law_key& key) {
    std::vector<double> r(13, -1.0);
    law.get_state(key, r.data());
    return r;
}

TEST(EpStates, RollBackRestoresTheCommittedStep) {
    auto law = make_law();
    const core::law_key step1 = key_of(3, 7, 1), step2 = key_of(3, 7, 2);
    eval(*law, step1, strain(1.0), core::law_commit);
    const std::vector<double> committed = record(*law, step1);
    ASSERT_GT(committed[12], 0.0);  // loading at the commit
    // Step 2 starts from step 1; its iterations write nothing.
    ASSERT_EQ(law->copy_states(1, 2), 0);
    const vec6 first = eval(*law, step2, strain(1.5), 0);
    eval(*law, step2, strain(0.4), core::law_first_iteration);
    EXPECT_EQ(record(*law, step2), committed);
    // Committed, then rolled back: bit for bit the record of step 1 again, and the
    // same answer to the same strain.
    eval(*law, step2, strain(1.5), core::law_commit);
    EXPECT_NE(record(*law, step2), committed);
    ASSERT_EQ(law->copy_states(1, 2), 0);
    EXPECT_EQ(record(*law, step2), committed);
    EXPECT_EQ(record(*law, step1), committed);
    const vec6 again = eval(*law, step2, strain(1.5), 0);
    EXPECT_EQ(std::memcmp(first.data(), again.data(), sizeof(double) * 6), 0);
    // Elastic unloading committed: same |p|, sign says elastic.
    eval(*law, step1, strain(0.5), core::law_commit);
    EXPECT_EQ(record(*law, step1)[12], -committed[12]);
    // Step 51 is slot 1; copying from an empty slot empties the target.
    EXPECT_EQ(law->plasticity(key_of(3, 7, 51)), committed[12]);
    ASSERT_EQ(law->copy_states(9, 2), 0);
    EXPECT_EQ(law->plasticity(step2), 0.0);
    EXPECT_EQ(law->nbr_state_records(), 1u);
    law->reset_states();
    EXPECT_EQ(law->nbr_state_records(), 0u);
    EXPECT_EQ(law->plasticity(step1), 0.0);
}

// The first iteration of a step from a loading point answers with the plastic
// tangent even for an elastic trial; later iterations with the elastic one.
TEST(EpStates, FirstIterationKeepsTheLoadingTangent) {
    auto law = make_law();
    const core::law_key key = key_of(0, 0, 1);
    eval(*law, key, strain(1.0), core::law_commit);
    sym6 D1, D2, De;
    vec6 s;
    double energy, states[7];
    ASSERT_EQ(law->compute(key, strain(0.99), D1, s, energy, states, core::law_first_iteration), 0);
    s.fill(0.0);  // the stress argument carries the initial stress in
    ASSERT_EQ(law->compute(key, strain(0.99), D2, s, energy, states, 0), 0);
    ASSERT_EQ(core::isotropic_D(250.0, 0.25, De), 0);
    EXPECT_EQ(D2, De);
    EXPECT_NE(D1, De);
}

// Many points committed from several threads give the records of a serial run, and
// every record is found after the map grew.
TEST(EpStates, CommitsFromThreadsMatchASerialRun) {
    auto serial = make_law(), parallel = make_law();
    const int n = 600;
    for (int i = 0; i < n; ++i) eval(*serial, key_of(i / 4, i % 4, 5), strain(0.5 + 0.002 * i), core::law_commit);
#pragma omp parallel for num_threads(2) schedule(dynamic, 7)
    for (int i = 0; i < n; ++i) {
        sym6 D;
        vec6 s;
        double energy, states[7];
        parallel->compute(key_of(i / 4, i % 4, 5), strain(0.5 + 0.002 * i), D, s, energy, states, core::law_commit);
    }
    ASSERT_EQ(serial->nbr_state_records(), std::size_t(n));
    ASSERT_EQ(parallel->nbr_state_records(), std::size_t(n));
    for (int i = 0; i < n; ++i) {
        const std::vector<double> r = record(*serial, key_of(i / 4, i % 4, 5));
        ASSERT_GT(r[12], 0.0) << i;
        ASSERT_EQ(r, record(*parallel, key_of(i / 4, i % 4, 5))) << i;
    }
}

// The mesh kernels reach the law through the same adapter as the elastic laws.
TEST(EpStates, SolidAdapterCommitsThroughTheLaw) {
    auto law = make_law();
    core::mesh_material_solid adapter{Ptr<core::law_solid_stiff>(law)};
    EXPECT_TRUE(adapter.has_states());
    core::material_point_key key;
    key.element = 2;
    key.step = 4;
    const vec6 e = strain(1.0);
    double D[36], s[6] = {}, energy = 0.0;
    ASSERT_EQ(adapter.compute(key, e.data(), D, s, energy, core::law_commit, core::assembly_params()), 0);
    const vec6 direct = eval(*law, key_of(2, 0, 4), e, 0);
    for (unsigned i = 0; i < 6; ++i) EXPECT_EQ(s[i], direct[i]);
    EXPECT_GT(law->plasticity(key_of(2, 0, 54)), 0.0);
    EXPECT_EQ(D[1], D[6]);
    // Saving and restoring a record through the adapter.
    ASSERT_EQ(adapter.state_record_size(), 13u);
    std::vector<double> saved(13);
    ASSERT_TRUE(adapter.get_state(key, saved.data()));
    EXPECT_EQ(saved, record(*law, key_of(2, 0, 4)));
    key.element = 9;
    ASSERT_EQ(adapter.set_state(key, saved.data()), 0);
    EXPECT_EQ(record(*law, key_of(9, 0, 4)), saved);
    ASSERT_EQ(adapter.copy_states(4, 5), 0);
    EXPECT_EQ(law->plasticity(key_of(2, 0, 5)), law->plasticity(key_of(2, 0, 4)));
    adapter.reset_states();
    EXPECT_EQ(law->nbr_state_records(), 0u);
}

}  // namespace
