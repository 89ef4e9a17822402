// DOF table: ID rule, free bits, resizing, fictitious nodes and the range checks.
#include <gtest/gtest.h>

#include <orv/fem/error_type.h>

#include <orv/fem/DOFs_mgr.h>

#include <vector>

#include "problem/DOFs_mgr.h"

using orv::fem::DOFs_mgr;
using orv::fem::field_displacement;
using orv::fem::field_rotation;
using orv::fem::field_tag;
using orv::fem::field_temperature;

TEST(DOFsMgr, IDRuleAndInfo) {
    EXPECT_EQ(DOFs_mgr::ID(4, field_displacement, 2), 38ull);
    EXPECT_EQ(DOFs_mgr::ID(4, field_rotation, 0), 39ull);
    EXPECT_EQ(DOFs_mgr::ID(4, field_temperature, 2), 42ull);  // comp ignored
    EXPECT_EQ(DOFs_mgr::ID(4, static_cast<field_tag>(48), 0), 0xFFFFFFFFull);
    // IDs past 32 bits are computed in full.
    EXPECT_EQ(DOFs_mgr::ID(600000000ull, field_displacement, 1), 5400000001ull);

    DOFs_mgr d(3, true);
    unsigned node = 0, comp = 0;
    field_tag tag = field_displacement;
    const struct {
        unsigned long long ID;
        unsigned node;
        field_tag tag;
        unsigned comp;
    } cases[] = {{0, 0, field_displacement, 0},
                 {14, 1, field_rotation, 2},
                 {15, 1, field_temperature, 0},
                 {16, 1, field_temperature, 1},
                 {26, 2, field_temperature, 2}};
    for (const auto& c : cases) {
        d.get_info(c.ID, node, tag, comp, false);
        EXPECT_EQ(node, c.node) << c.ID;
        EXPECT_EQ(tag, c.tag) << c.ID;
        EXPECT_EQ(comp, c.comp) << c.ID;
    }
}

TEST(DOFsMgr, SettersCountsAndIDLists) {
    DOFs_mgr d(4, true);
    EXPECT_EQ(d.nbr_nodes(), 4u);
    EXPECT_EQ(d.size(), 36ull);
    EXPECT_EQ(d.nbr_DOFs(true), 36ull);  // reserved positions counted too
    EXPECT_EQ(d.nbr_DOFs(false), 0ull);

    EXPECT_EQ(d.set(1, field_displacement, false), 0);       // 9, 10, 11
    EXPECT_EQ(d.set(2, field_rotation, 0, 2, false), 0);     // 21, 23
    EXPECT_EQ(d.set(3, field_temperature, false), 0);        // 33
    EXPECT_EQ(d.set(0, field_rotation, 1, false), 0);        // 4
    EXPECT_EQ(d.set(2, field_temperature, 0, 1, false), 0);  // 24 twice
    EXPECT_EQ(d.set(35ull, false), 0);                       // reserved position 8
    EXPECT_EQ(d.nbr_DOFs(false), 9ull);
    EXPECT_EQ(d.nbr_DOFs(true), 27ull);

    std::vector<unsigned> fixed;
    ASSERT_EQ(d.copy_IDs(fixed, false), 0);
    const std::vector<unsigned> want = {4, 9, 10, 11, 21, 23, 24, 33, 35};
    EXPECT_EQ(fixed, want);

    std::vector<unsigned> free_IDs = {1000};
    ASSERT_EQ(d.copy_IDs(free_IDs, true), 0);
    EXPECT_EQ(free_IDs.size(), 28u);
    EXPECT_EQ(free_IDs[0], 1000u);  // not cleared
    EXPECT_EQ(free_IDs[1], 0u);
    EXPECT_EQ(free_IDs.back(), 34u);

    bool state = true;
    EXPECT_EQ(d.get(2, field_rotation, 2, state), 0);
    EXPECT_FALSE(state);
}

TEST(DOFsMgr, RangeChecks) {
    DOFs_mgr d(2, false);
    bool state = true;
    EXPECT_EQ(d.get(18ull, state), orv::fem::error_data);
    EXPECT_TRUE(state);  // untouched
    EXPECT_EQ(d.set(18ull, true), orv::fem::error_data);
    EXPECT_EQ(d.set(2, field_displacement, 0, true), orv::fem::error_data);
    EXPECT_EQ(d.set(1, field_temperature, 5, true), 0);  // comp ignored for temperature
    EXPECT_EQ(d.set(2, field_rotation, true), orv::fem::error_data);
    EXPECT_EQ(d.set(0, static_cast<field_tag>(8), true), orv::fem::error_data);
    EXPECT_EQ(d.set(0, field_rotation, 0, 3, true), orv::fem::error_data);
    EXPECT_EQ(d.set(0, field_rotation, 3, 0, true), orv::fem::error_data);
    EXPECT_EQ(d.set(2, field_rotation, 0, 1, true), orv::fem::error_data);
    // An unknown tag names ID 0xFFFFFFFF, which no small table has.
    EXPECT_EQ(d.get(0, static_cast<field_tag>(8), 0, state), orv::fem::error_data);
    EXPECT_EQ(d.set(0, static_cast<field_tag>(8), 0, true), orv::fem::error_data);
    // None of the refused calls changed a bit; the accepted one set node 1's temperature.
    EXPECT_EQ(d.nbr_DOFs(true), 1ull);
    EXPECT_EQ(d.get(15ull, state), 0);
    EXPECT_TRUE(state);
}

TEST(DOFsMgr, ResizeKeepsOldBits) {
    DOFs_mgr d(2, true);
    d.set(0, field_displacement, 1, false);
    d.resize(5, false);
    EXPECT_EQ(d.nbr_nodes(), 5u);
    EXPECT_EQ(d.nbr_DOFs(true), 17ull);  // the old free bits stay set
    EXPECT_EQ(d.nbr_DOFs(false), 28ull);
    bool state = true;
    d.get(1ull, state);
    EXPECT_FALSE(state);
    d.get(17ull, state);
    EXPECT_TRUE(state);
    d.get(18ull, state);
    EXPECT_FALSE(state);

    d.resize(1, true);  // the tail goes
    EXPECT_EQ(d.nbr_nodes(), 1u);
    EXPECT_EQ(d.nbr_DOFs(true), 8ull);
    d.resize(4, true);  // bits that came back take the new state, not their old one
    EXPECT_EQ(d.nbr_DOFs(true), 35ull);

    // Across a 32-bit word boundary, bit by bit.
    DOFs_mgr e(3, false);  // 27 bits
    e.resize(7, true);     // 63 bits
    EXPECT_EQ(e.nbr_DOFs(true), 36ull);
    for (unsigned long long id = 0; id < 63; ++id) {
        e.get(id, state);
        EXPECT_EQ(state, id >= 27) << id;
    }

    e.clear();
    EXPECT_EQ(e.nbr_nodes(), 0u);
    EXPECT_EQ(e.size(), 0ull);
    EXPECT_EQ(e.nbr_DOFs(true), 0ull);
    EXPECT_EQ(DOFs_mgr().size(), 0ull);
}

TEST(DOFsMgr, FictitiousNodes) {
    DOFs_mgr d(3, false);
    EXPECT_EQ(d.add_fictitious_node(1), 3u);
    EXPECT_EQ(d.add_fictitious_node(0), 4u);
    EXPECT_EQ(d.nbr_fictitious_nodes(), 2u);
    EXPECT_EQ(d.nbr_fictitious_DOFs(), 18ull);
    EXPECT_EQ(d.size(), 45ull);
    EXPECT_EQ(d.nbr_DOFs(true), 0ull);  // fictitious DOFs are not counted
    EXPECT_EQ(d.nbr_DOFs(false), 27ull);

    // The first ID past the real nodes reads free, and cannot be set.
    bool state = false;
    EXPECT_EQ(d.get(27ull, state), 0);
    EXPECT_TRUE(state);
    EXPECT_EQ(d.set(27ull, false), orv::fem::error_data);
    EXPECT_EQ(d.set(3, field_displacement, false), orv::fem::error_data);
    EXPECT_EQ(d.set(4, field_rotation, 0, false), orv::fem::error_data);
    state = false;
    EXPECT_EQ(d.get(44ull, state), 0);
    EXPECT_TRUE(state);
    EXPECT_EQ(d.get(45ull, state), orv::fem::error_data);

    unsigned node = 0, comp = 0;
    field_tag tag = field_displacement;
    d.get_info(31ull, node, tag, comp, false);
    EXPECT_EQ(node, 3u);
    EXPECT_EQ(tag, field_rotation);
    EXPECT_EQ(comp, 1u);
    d.get_info(31ull, node, tag, comp, true);
    EXPECT_EQ(node, 1u);
    d.get_info(40ull, node, tag, comp, true);
    EXPECT_EQ(node, 0u);
    d.get_info(46ull, node, tag, comp, true);  // past every node: its own number
    EXPECT_EQ(node, 5u);
    d.get_info(13ull, node, tag, comp, true);  // a real node is its own master
    EXPECT_EQ(node, 1u);

    // Growing the real nodes renumbers the fictitious ones.
    d.resize(4, false);
    EXPECT_EQ(d.size(), 54ull);
    d.get_info(36ull, node, tag, comp, true);
    EXPECT_EQ(node, 1u);
    EXPECT_EQ(d.set(27ull, true), 0);  // now a real DOF

    d.clear();
    EXPECT_EQ(d.nbr_fictitious_nodes(), 0u);
    EXPECT_EQ(d.size(), 0ull);
}

TEST(DOFsMgr, EngineFilter) {
    orv::core::DOFs_mgr t(2, true);
    t.set(3ull, false);
    orv::core::DOF_filter free_only{&t, true};
    orv::core::DOF_filter fixed_only{&t, false};
    orv::core::DOF_filter all{};
    EXPECT_TRUE(orv::core::is_selected(2, free_only));
    EXPECT_FALSE(orv::core::is_selected(3, free_only));
    EXPECT_TRUE(orv::core::is_selected(3, fixed_only));
    // Past the end of the bit vector counts as free.
    EXPECT_TRUE(orv::core::is_selected(18, free_only));
    EXPECT_FALSE(orv::core::is_selected(1000, fixed_only));
    EXPECT_TRUE(orv::core::is_selected(3, all));
    EXPECT_TRUE(orv::core::is_selected(1000, all));
    EXPECT_EQ(t.master(2), orv::core::DOFs_mgr::no_node);
    t.add_fictitious_node(1);
    EXPECT_EQ(t.master(2), 1u);
    EXPECT_EQ(t.masters().size(), 1u);
}
