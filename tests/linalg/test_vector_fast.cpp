#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <unordered_map>
#include <vector>

#include "linalg/vector_fast.h"

using orv::core::vector_fast;
typedef vector_fast<unsigned> ids_type;

TEST(vector_fast, keeps_first_occurrences_of_a_range) {
    const unsigned keys[] = {5, 7, 5};
    ids_type v(keys, keys + 3);
    ASSERT_EQ(v.size(), 2u);
    EXPECT_EQ(v.find(5), 0u);
    EXPECT_EQ(v.find(7), 1u);
    EXPECT_EQ(v.position(6), ids_type::npos);
    EXPECT_EQ(v.find(0), ids_type::npos);  // an empty slot holds key 0 but is not taken
    EXPECT_EQ(v[0], 5u);
    EXPECT_EQ(v[1], 7u);
    EXPECT_EQ(v.nbr_buckets(), 23u);

    ids_type empty(keys, keys);
    EXPECT_EQ(empty.size(), 0u);
    EXPECT_EQ(empty.find(5), ids_type::npos);
    ids_type none;
    EXPECT_EQ(none.find(0), ids_type::npos);
    EXPECT_EQ(none.nbr_buckets(), 0u);
}

TEST(vector_fast, insert_reports_position_and_novelty) {
    ids_type v;
    auto r = v.insert(42);
    EXPECT_EQ(r.first, 0u);
    EXPECT_TRUE(r.second);
    r = v.insert(0);
    EXPECT_EQ(r.first, 1u);
    EXPECT_TRUE(r.second);
    r = v.insert(42);
    EXPECT_EQ(r.first, 0u);
    EXPECT_FALSE(r.second);
    EXPECT_EQ(v.size(), 2u);
    EXPECT_EQ(v.find(0), 1u);
}

TEST(vector_fast, bucket_table_and_rebuild_rule) {
    EXPECT_EQ(ids_type::bucket_count_for(0), 13u);
    EXPECT_EQ(ids_type::bucket_count_for(13), 13u);
    EXPECT_EQ(ids_type::bucket_count_for(14), 23u);
    EXPECT_EQ(ids_type::bucket_count_for(92), 97u);
    EXPECT_EQ(ids_type::bucket_count_for(4294967291ul), 4294967291ul);
    EXPECT_EQ(ids_type::bucket_count_for(4294967292ul), 4294967291ul);

    // Starts with 23 buckets; rebuilt for 2 * elements when elements + 1 > 2 * buckets.
    ids_type v;
    std::vector<std::size_t> buckets_after;  // bucket count after each insert
    for (unsigned k = 0; k < 800; ++k) {
        ASSERT_TRUE(v.insert(k * 7 + 3).second);
        buckets_after.push_back(v.nbr_buckets());
    }
    EXPECT_EQ(buckets_after[0], 23u);
    EXPECT_EQ(buckets_after[45], 23u);    // 46 elements: 46 = 2 * 23
    EXPECT_EQ(buckets_after[46], 97u);    // the 47th: rebuilt for 92
    EXPECT_EQ(buckets_after[193], 97u);   // 194 elements
    EXPECT_EQ(buckets_after[194], 389u);  // rebuilt for 388
    EXPECT_EQ(buckets_after[777], 389u);
    EXPECT_EQ(buckets_after[778], 3079u);  // rebuilt for 1556, above 1543
    for (unsigned k = 0; k < 800; ++k) ASSERT_EQ(v.find(k * 7 + 3), k);
}

TEST(vector_fast, colliding_keys_chain_behind_the_buckets) {
    // Multiples of 23 all fall into bucket 0 of the first table.
    ids_type v;
    for (unsigned k = 0; k < 40; ++k) ASSERT_EQ(v.insert(23 * k).first, k);
    EXPECT_EQ(v.nbr_buckets(), 23u);
    EXPECT_EQ(v.nbr_slots(), 23u + 39u);  // one head, 39 appended slots
    for (unsigned k = 0; k < 40; ++k) EXPECT_EQ(v.find(23 * k), k);
    EXPECT_EQ(v.find(23 * 40), ids_type::npos);  // end of the chain reached
    EXPECT_EQ(v.find(1), ids_type::npos);
}

TEST(vector_fast, agrees_with_a_hash_map_on_random_keys) {
    std::mt19937 gen(1);
    for (unsigned range : {1000u, 100000u, 0xFFFFFFFFu}) {
        std::vector<unsigned> keys(60000);
        for (unsigned& k : keys) k = static_cast<unsigned>(gen() % range);
        ids_type v(keys.data(), keys.data() + keys.size());
        std::unordered_map<unsigned, std::uint32_t> first;
        std::vector<unsigned> order;
        for (unsigned k : keys)
            if (first.emplace(k, static_cast<std::uint32_t>(order.size())).second) order.push_back(k);
        ASSERT_EQ(v.size(), order.size());
        for (std::size_t i = 0; i < order.size(); ++i) ASSERT_EQ(v[i], order[i]);
        for (const auto& kv : first) ASSERT_EQ(v.find(kv.first), kv.second);
        // Absent keys.
        for (int t = 0; t < 2000; ++t) {
            const unsigned k = gen();
            const auto it = first.find(k);
            ASSERT_EQ(v.find(k), it == first.end() ? ids_type::npos : it->second);
        }
    }
}

TEST(vector_fast, clear_copy_and_reserve) {
    const unsigned keys[] = {9, 18, 27, 36, 45};
    ids_type v(keys, keys + 5);
    ids_type w(v);  // deep
    ASSERT_TRUE(w.insert(100).second);
    EXPECT_EQ(v.size(), 5u);
    EXPECT_EQ(v.find(100), ids_type::npos);
    EXPECT_NE(w.data(), v.data());

    const std::size_t buckets = v.nbr_buckets();
    v.clear();
    EXPECT_EQ(v.size(), 0u);
    EXPECT_EQ(v.nbr_buckets(), buckets);
    EXPECT_EQ(v.find(9), ids_type::npos);
    EXPECT_EQ(v.insert(27).first, 0u);
    EXPECT_EQ(v.find(27), 0u);
    EXPECT_EQ(w.find(27), 2u);

    ids_type r;
    ASSERT_TRUE(r.reserve(1000));
    const std::size_t reserved = r.nbr_buckets();
    EXPECT_GE(2 * reserved, 1001u);
    for (unsigned k = 0; k < 1000; ++k) ASSERT_EQ(r.insert(k * 13).first, k);
    EXPECT_EQ(r.nbr_buckets(), reserved);  // no rebuild was needed
    for (unsigned k = 0; k < 1000; ++k) ASSERT_EQ(r.find(k * 13), k);

    w.clear_hard();
    EXPECT_EQ(w.size(), 0u);
    EXPECT_EQ(w.find(9), ids_type::npos);
    EXPECT_EQ(w.insert(9).first, 0u);
}
