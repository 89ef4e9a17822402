#include <gtest/gtest.h>

#include <complex>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include "orvmath1/dense1D.h"
#include "orvmath1/vector_num.h"

// Under AddressSanitizer a request the machine cannot serve must come back as a null
// pointer, as it does from the plain allocator, instead of stopping the program.
extern "C" __attribute__((used)) const char* __asan_default_options() { return "allocator_may_return_null=1"; }

using orv::dense1D;
using orv::vector_num;

namespace {

// Counts live instances, and throws from the copy constructor once armed.
struct tracked {
    static int live;
    static int copies_before_throw;  // < 0: never throw
    double x = -1.0;
    tracked() { ++live; }
    tracked(const tracked& o) : x(o.x) {
        if (copies_before_throw == 0) throw std::runtime_error("copy");
        if (copies_before_throw > 0) --copies_before_throw;
        ++live;
    }
    tracked& operator=(const tracked& o) {
        x = o.x;
        return *this;
    }
    ~tracked() { --live; }
};
int tracked::live = 0;
int tracked::copies_before_throw = -1;

struct bytes24 {
    double a[3];
};
struct bytes32 {
    double a[4];
};

template <class T>
bool aligned_to(const T* p, std::size_t unit) {
    return reinterpret_cast<std::uintptr_t>(p) % unit == 0;
}

}  // namespace

TEST(vector_num, grow_rule_is_max_of_scaled_capacity_two_and_needed) {
    vector_num<double, 8> v;
    EXPECT_EQ(v.capacity(), 0u);
    EXPECT_EQ(v.data(), nullptr);
    ASSERT_TRUE(v.__grow(1, 0, 2));
    EXPECT_EQ(v.capacity(), 2u);  // the floor of 2
    v.data()[0] = 1.5;
    v.data()[1] = 2.5;
    ASSERT_TRUE(v.__grow(3, 2, 2));
    EXPECT_EQ(v.capacity(), 4u);  // 2 * 2 beats 3
    EXPECT_EQ(v.data()[0], 1.5);
    EXPECT_EQ(v.data()[1], 2.5);
    ASSERT_TRUE(v.__grow(9, 2, 2));
    EXPECT_EQ(v.capacity(), 9u);  // needed beats 2 * 4
    ASSERT_TRUE(v.__grow(1, 2, 1));
    EXPECT_EQ(v.capacity(), 9u);  // factor 1 keeps the capacity
    ASSERT_TRUE(v.__grow(0, 2, 0));
    EXPECT_EQ(v.capacity(), 2u);  // factor 0: only the floor
    EXPECT_EQ(v.data()[0], 1.5);
    EXPECT_EQ(v.data()[1], 2.5);
}

TEST(vector_num, overflow_and_exhaustion_leave_the_vector_untouched) {
    vector_num<double, 8> v;
    ASSERT_TRUE(v.__grow(5, 0, 1));
    v.data()[4] = 7.0;
    double* before = v.data();
    const std::size_t big = std::numeric_limits<std::size_t>::max();
    EXPECT_FALSE(v.__grow(6, 5, big / 2));               // capacity * factor overflows
    EXPECT_FALSE(v.__grow(big / 4, 5, 1));               // bytes overflow
    EXPECT_FALSE(v.__grow(std::size_t(1) << 57, 5, 1));  // 2^60 bytes
    EXPECT_FALSE(v.__grow(std::size_t(1) << 43, 5, 1));  // 64 TiB: the allocator says no
    EXPECT_EQ(v.data(), before);
    EXPECT_EQ(v.capacity(), 5u);
    EXPECT_EQ(v.data()[4], 7.0);
}

TEST(vector_num, first_element_is_aligned_on_its_size) {
    // Many blocks of different lengths, so that the allocator's own alignment is not
    // the only thing tested.
    for (std::size_t n = 1; n < 60; ++n) {
        vector_num<double, 8> d;
        vector_num<std::complex<double>, 8> c;
        vector_num<bytes32, 8> b32;
        vector_num<bytes24, 8> b24;
        vector_num<unsigned int, 8> u;
        ASSERT_TRUE(d.__grow(n, 0, 1) && c.__grow(n, 0, 1) && b32.__grow(n, 0, 1) && b24.__grow(n, 0, 1) &&
                    u.__grow(n, 0, 1));
        EXPECT_TRUE(aligned_to(d.data(), 8));
        EXPECT_TRUE(aligned_to(c.data(), 16));
        EXPECT_TRUE(aligned_to(b32.data(), 32));
        EXPECT_TRUE(aligned_to(b24.data(), 24));
        EXPECT_TRUE(aligned_to(u.data(), 4));
        EXPECT_LT(b32.shift(), 32u);
        EXPECT_LT(b24.shift(), 24u);
        // The whole capacity is usable (the sanitizer build checks the bounds).
        b32.data()[n - 1].a[3] = 1.0;
        b24.data()[n - 1].a[2] = 1.0;
    }
}

TEST(vector_num, elements_are_copy_constructed_and_all_destroyed) {
    tracked::live = 0;
    tracked::copies_before_throw = -1;
    {
        vector_num<tracked, 8> v;
        ASSERT_TRUE(v.__grow(3, 0, 1));
        EXPECT_EQ(tracked::live, 3);  // the whole capacity is constructed
        v.data()[0].x = 10.0;
        v.data()[1].x = 11.0;
        ASSERT_TRUE(v.__grow(4, 2, 2));  // capacity 6, two copied
        EXPECT_EQ(tracked::live, 6);
        EXPECT_EQ(v.data()[0].x, 10.0);
        EXPECT_EQ(v.data()[1].x, 11.0);
        EXPECT_EQ(v.data()[2].x, -1.0);  // default-initialised

        // A copy that throws: false, and the vector is as it was.
        tracked::copies_before_throw = 1;
        tracked* before = v.data();
        EXPECT_FALSE(v.__grow(7, 2, 2));
        tracked::copies_before_throw = -1;
        EXPECT_EQ(v.data(), before);
        EXPECT_EQ(v.capacity(), 6u);
        EXPECT_EQ(tracked::live, 6);
    }
    EXPECT_EQ(tracked::live, 0);
}

TEST(vector_num, wrapped_external_memory_is_never_freed) {
    double ext[3] = {1.0, 2.0, 3.0};
    {
        vector_num<double, 8> v(ext, 3);
        EXPECT_TRUE(v.external());
        EXPECT_EQ(v.data(), ext);
        EXPECT_EQ(v.capacity(), 3u);
        ASSERT_TRUE(v.__grow(4, 3, 2));  // moves into an owned block
        EXPECT_FALSE(v.external());
        EXPECT_NE(v.data(), ext);
        EXPECT_EQ(v.capacity(), 6u);
        EXPECT_EQ(v.data()[2], 3.0);
    }
    EXPECT_EQ(ext[0], 1.0);  // freeing a stack array would have been caught here
}
