#include <gtest/gtest.h>

#include <complex>
#include <cstddef>
#include <limits>
#include <vector>

#include "orvmath1/dense1D.h"

using orv::dense1D;

namespace {
std::vector<double> values_of(const dense1D<double>& v) { return std::vector<double>(v.begin(), v.end()); }
}  // namespace

TEST(dense1D, empty_view_has_no_storage_until_it_grows) {
    dense1D<double> v;
    EXPECT_FALSE(v.storage());
    EXPECT_EQ(v.size(), 0u);
    EXPECT_EQ(v.capacity(), 0u);
    EXPECT_EQ(v.data(), nullptr);
    EXPECT_EQ(v.begin(), v.end());
    EXPECT_TRUE(v.resize(0));
    EXPECT_FALSE(v.storage());
    dense1D<double> w(v);  // copies of nothing are nothing
    EXPECT_FALSE(w.storage());
    EXPECT_TRUE(v.push_back(1.0));
    EXPECT_TRUE(v.storage());
    EXPECT_FALSE(w.storage());
}

TEST(dense1D, capacities_follow_the_growth_rule) {
    // Appending grows with factor 2 and a floor of 2.
    dense1D<double> v;
    std::vector<std::size_t> caps;
    for (int i = 0; i < 17; ++i) {
        ASSERT_TRUE(v.push_back(i));
        caps.push_back(v.capacity());
    }
    const std::vector<std::size_t> expected = {2, 2, 4, 4, 8, 8, 8, 8, 16, 16, 16, 16, 16, 16, 16, 16, 32};
    EXPECT_EQ(caps, expected);
    for (int i = 0; i < 17; ++i) EXPECT_EQ(v[i], i);

    // Several at once: max(2 * capacity, needed).
    dense1D<double> w;
    ASSERT_TRUE(w.push_back_n(1.0, 5));
    EXPECT_EQ(w.capacity(), 5u);
    ASSERT_TRUE(w.push_back_n(2.0, 2));
    EXPECT_EQ(w.capacity(), 10u);
    ASSERT_TRUE(w.push_back_n(3.0, 20));
    EXPECT_EQ(w.capacity(), 27u);
    EXPECT_EQ(w.size(), 27u);
    EXPECT_EQ(w[4], 1.0);
    EXPECT_EQ(w[6], 2.0);
    EXPECT_EQ(w[26], 3.0);

    // reserve grows with its factor, 1 by default, and never changes the size.
    dense1D<double> r;
    ASSERT_TRUE(r.reserve(10));
    EXPECT_EQ(r.capacity(), 10u);
    EXPECT_EQ(r.size(), 0u);
    ASSERT_TRUE(r.reserve(11));
    EXPECT_EQ(r.capacity(), 11u);
    ASSERT_TRUE(r.reserve(11, 2));
    EXPECT_EQ(r.capacity(), 11u);  // already there
    ASSERT_TRUE(r.reserve(12, 2));
    EXPECT_EQ(r.capacity(), 22u);
    ASSERT_TRUE(r.reserve(1));
    EXPECT_EQ(r.capacity(), 22u);

    // resize grows exactly; shrinking keeps the capacity.
    dense1D<double> s;
    ASSERT_TRUE(s.resize(3, 4.0));
    EXPECT_EQ(s.capacity(), 3u);
    ASSERT_TRUE(s.resize(5, 6.0));
    EXPECT_EQ(s.capacity(), 5u);
    EXPECT_EQ(values_of(s), (std::vector<double>{4, 4, 4, 6, 6}));
    ASSERT_TRUE(s.resize(1));
    EXPECT_EQ(s.capacity(), 5u);
    ASSERT_TRUE(s.resize(3, 9.0));  // new elements only get the value
    EXPECT_EQ(values_of(s), (std::vector<double>{4, 9, 9}));
}

TEST(dense1D, clear_keeps_storage_and_clear_hard_releases_it) {
    dense1D<double> v(100, 1.0);
    const double* p = v.data();
    v.clear();
    EXPECT_EQ(v.size(), 0u);
    EXPECT_EQ(v.capacity(), 100u);
    ASSERT_TRUE(v.resize(50));
    EXPECT_EQ(v.data(), p);  // no new block
    v.clear_hard();
    EXPECT_EQ(v.size(), 0u);
    EXPECT_EQ(v.capacity(), 0u);
    EXPECT_FALSE(v.storage());

    // The storage goes when its last view goes.
    dense1D<double> a(10, 2.0);
    dense1D<double> b = a.sub_vector(3, 2);
    EXPECT_EQ(a.storage()->ref_count(), 2u);
    a.clear_hard();
    EXPECT_EQ(b.storage()->ref_count(), 1u);
    EXPECT_EQ(b[1], 2.0);
}

TEST(dense1D, views_share_and_overlap) {
    dense1D<double> a(6);
    for (int i = 0; i < 6; ++i) a[i] = i;
    dense1D<double> copy(a);  // shallow: one more reference, same elements
    EXPECT_EQ(copy.data(), a.data());
    EXPECT_EQ(a.storage()->ref_count(), 2u);

    dense1D<double> s1 = a.sub_vector(1, 3);  // elements 1..3
    dense1D<double> s2 = a.sub_vector(2, 3);  // elements 2..4, overlaps s1
    s1[2] = 30.0;
    EXPECT_EQ(a[3], 30.0);
    EXPECT_EQ(s2[1], 30.0);
    EXPECT_EQ(copy[3], 30.0);
    EXPECT_EQ(s2.offset(), 2u);
    dense1D<double> s3 = s2.sub_vector(1, 1);  // a view of a view
    EXPECT_EQ(s3.offset(), 3u);
    EXPECT_EQ(s3[0], 30.0);

    // operator= shares; shallow_copy too.
    dense1D<double> c;
    c = s1;
    EXPECT_EQ(c.data(), s1.data());
    EXPECT_EQ(c.size(), 3u);
    dense1D<double> d;
    d.shallow_copy(s2);
    EXPECT_EQ(d.data(), s2.data());

    // Filling a view touches only that view.
    s1 = 0.5;
    EXPECT_EQ(values_of(a), (std::vector<double>{0, 0.5, 0.5, 0.5, 4, 5}));
    EXPECT_EQ((s2 = 7.0), 7.0);
    EXPECT_EQ(values_of(a), (std::vector<double>{0, 0.5, 7, 7, 7, 5}));
}

TEST(dense1D, sub_vector_outlives_its_parent) {
    dense1D<double> sub;
    {
        dense1D<double> parent(8);
        for (int i = 0; i < 8; ++i) parent[i] = 10.0 * i;
        sub = parent.sub_vector(5, 3);
    }
    EXPECT_EQ(sub.storage()->ref_count(), 1u);
    EXPECT_EQ(values_of(sub), (std::vector<double>{50, 60, 70}));
    sub[0] = 1.0;  // still writable (checked by the sanitizer build)
    EXPECT_EQ(sub[0], 1.0);
}

TEST(dense1D, growing_shared_storage_keeps_every_view_valid) {
    dense1D<double> parent(4);
    for (int i = 0; i < 4; ++i) parent[i] = i + 1.0;
    dense1D<double> tail = parent.sub_vector(2, 2);
    const double* old = parent.data();
    ASSERT_TRUE(parent.push_back(5.0));  // reallocates the shared block
    EXPECT_NE(parent.data(), old);
    EXPECT_EQ(tail.data(), parent.data() + 2);
    EXPECT_EQ(values_of(tail), (std::vector<double>{3, 4}));
    parent[3] = 40.0;
    EXPECT_EQ(tail[1], 40.0);

    // A sub-view that grows past the end grows the storage for everybody, and keeps
    // the content that lies beyond it.
    dense1D<double> mid = parent.sub_vector(1, 1);
    const std::size_t cap = parent.capacity();
    ASSERT_TRUE(mid.resize(cap + 3, -1.0));
    EXPECT_EQ(parent.capacity(), cap + 4);
    EXPECT_EQ(values_of(parent), (std::vector<double>{1, 2, -1, -1, -1}));

    // A view at the front that grows carries over what lies behind it.
    dense1D<double> whole(6);
    for (int i = 0; i < 6; ++i) whole[i] = i;
    dense1D<double> head = whole.sub_vector(0, 2);
    ASSERT_TRUE(head.reserve(20));
    EXPECT_EQ(whole.capacity(), 20u);
    EXPECT_EQ(values_of(whole), (std::vector<double>{0, 1, 2, 3, 4, 5}));
}

TEST(dense1D, copy_is_deep) {
    dense1D<double> a(4);
    for (int i = 0; i < 4; ++i) a[i] = i;
    dense1D<double> b;
    ASSERT_TRUE(b.copy(a));
    EXPECT_NE(b.data(), a.data());
    EXPECT_EQ(values_of(b), values_of(a));
    b[0] = 9.0;
    EXPECT_EQ(a[0], 0.0);

    // Copy between overlapping views of one storage.
    dense1D<double> lo = a.sub_vector(0, 3), hi = a.sub_vector(1, 3);
    ASSERT_TRUE(hi.copy(lo));
    EXPECT_EQ(values_of(a), (std::vector<double>{0, 0, 1, 2}));
    ASSERT_TRUE(a.copy(a));
    EXPECT_EQ(values_of(a), (std::vector<double>{0, 0, 1, 2}));

    // Copying into a view writes its storage, resized to the source's size.
    dense1D<double> big(6, 0.0);
    dense1D<double> window = big.sub_vector(2, 1);
    dense1D<double> src(3, 5.0);
    ASSERT_TRUE(window.copy(src));
    EXPECT_EQ(window.size(), 3u);
    EXPECT_EQ(values_of(big), (std::vector<double>{0, 0, 5, 5, 5, 0}));
}

TEST(dense1D, exhaustion_is_false_and_changes_nothing) {
    dense1D<double> v(3, 1.5);
    const double* p = v.data();
    const std::size_t max = std::numeric_limits<std::size_t>::max();
    EXPECT_FALSE(v.resize(max));
    EXPECT_FALSE(v.resize(max / 2, 0.0));
    EXPECT_FALSE(v.resize(std::size_t(1) << 60));
    EXPECT_FALSE(v.reserve(std::size_t(1) << 43));
    EXPECT_FALSE(v.push_back_n(0.0, max));
    EXPECT_FALSE(v.resize_major(std::size_t(1) << 58, 0.0));
    dense1D<double> tail = v.sub_vector(2, 1);
    EXPECT_FALSE(tail.resize(max - 1));  // offset + n overflows
    EXPECT_EQ(v.size(), 3u);
    EXPECT_EQ(v.capacity(), 3u);
    EXPECT_EQ(v.data(), p);
    EXPECT_EQ(values_of(v), (std::vector<double>{1.5, 1.5, 1.5}));

    // A constructor that cannot get its memory leaves an empty view.
    dense1D<double> huge(std::size_t(1) << 60, 0.0);
    EXPECT_EQ(huge.size(), 0u);
    dense1D<std::complex<double>> zhuge(std::size_t(1) << 59);
    EXPECT_EQ(zhuge.size(), 0u);
}

TEST(dense1D, external_memory_is_wrapped_not_owned) {
    double ext[4] = {1, 2, 3, 4};
    {
        dense1D<double> v(4, ext);
        EXPECT_EQ(v.data(), ext);
        v[1] = 20.0;
        EXPECT_EQ(ext[1], 20.0);
        dense1D<double> sub = v.sub_vector(2, 2);
        sub[0] = 30.0;
        EXPECT_EQ(ext[2], 30.0);
        ASSERT_TRUE(v.push_back(5.0));  // moves to an owned block, for all views
        EXPECT_NE(v.data(), ext);
        sub[1] = 40.0;
        EXPECT_EQ(ext[3], 4.0);
        EXPECT_EQ(v[3], 40.0);
        EXPECT_EQ(v[4], 5.0);
    }
    EXPECT_EQ(ext[0], 1.0);
    dense1D<unsigned int> z(3, 0u);  // a zero value is a value, not a null pointer
    EXPECT_EQ(z.size(), 3u);
    EXPECT_EQ(z[2], 0u);
}

TEST(dense1D, nested_vectors_and_resize_major) {
    dense1D<dense1D<double>> outer;
    dense1D<double> inner(5, 1.0);
    ASSERT_TRUE(outer.resize_major(3, inner));  // three views of one inner storage
    EXPECT_EQ(inner.storage()->ref_count(), 4u);
    EXPECT_EQ(outer.capacity(), 3u);
    outer[1][0] = 7.0;
    EXPECT_EQ(inner[0], 7.0);
    ASSERT_TRUE(outer.resize_major(4, dense1D<double>()));
    EXPECT_EQ(outer.capacity(), 6u);  // amortised growth
    EXPECT_EQ(outer[3].size(), 0u);
    EXPECT_EQ(outer[2].size(), 5u);  // moved elements kept their views
    EXPECT_EQ(inner.storage()->ref_count(), 4u);
    ASSERT_TRUE(outer.resize_major(1, dense1D<double>()));  // dropped ones let go
    EXPECT_EQ(inner.storage()->ref_count(), 2u);
    EXPECT_EQ(outer.capacity(), 6u);
    outer.clear_hard();
    EXPECT_EQ(inner.storage()->ref_count(), 1u);
}

TEST(dense1D, other_element_types) {
    dense1D<std::complex<double>> z(2, {1.0, -1.0});
    ASSERT_TRUE(z.push_back({0.0, 2.0}));
    EXPECT_EQ(z[2], std::complex<double>(0.0, 2.0));
    EXPECT_EQ(z(0), std::complex<double>(1.0, -1.0));
    dense1D<unsigned int> u;
    for (unsigned i = 0; i < 10; ++i) ASSERT_TRUE(u.push_back(i * i));
    unsigned sum = 0;
    for (unsigned x : u) sum += x;
    EXPECT_EQ(sum, 285u);
}
