// List of identifiers with a constant-time lookup of their positions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "orvmath1/dense1D.h"
#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// A list of distinct keys (DOF IDs) in the order they were inserted, with a hash map
// from key to position. The map is a set of open chains inside one array of slots:
// the first `nbr_buckets()` slots are the chain heads, further slots are appended
// behind them. A slot holds the key, its position and a link word whose low bit says
// that the slot is taken and whose other bits give the distance to the next slot of
// the chain (a link below 2 ends the chain). Bucket counts come from a fixed table of
// primes; a table starts with 23 buckets and is rebuilt for 2 * elements buckets when
// elements + 1 would exceed 2 * buckets.
//
// Positions are 32-bit; `npos` (~0) means absent. Exhaustion is a false result or,
// for insert, npos; it never throws. Copies are deep (the list is not shared).
template <class T = unsigned>
class vector_fast : public ref_counted {
public:
    typedef T value_type;
    typedef dense1D<T, 8> list_type;
    static constexpr std::uint32_t npos = ~std::uint32_t(0);

    struct slot {
        T key;
        std::uint32_t value;
        std::uint32_t link;
    };

    vector_fast() noexcept = default;
    // From a range: first occurrences only, so the size may be below the range's.
    // On exhaustion the result is empty.
    vector_fast(const T* first, const T* last) noexcept {
        if (!init(first, last)) clear_hard();
    }
    explicit vector_fast(const list_type& keys) noexcept : vector_fast(keys.begin(), keys.end()) {}
    vector_fast(const vector_fast& o) noexcept : ref_counted() {
        if (!copy(o)) clear_hard();
    }
    vector_fast& operator=(const vector_fast& o) noexcept {
        if (this != &o && !copy(o)) clear_hard();
        return *this;
    }

    // Replaces the content by the first occurrences of [first, last).
    bool init(const T* first, const T* last) noexcept;
    bool copy(const vector_fast& o) noexcept;

    // Inserts key if absent. Returns its position and whether it is new; on
    // exhaustion (npos, false) and nothing changes.
    std::pair<std::uint32_t, bool> insert(const T& key) noexcept;
    // Position of key, npos if absent.
    std::uint32_t find(const T& key) const noexcept;
    std::uint32_t position(const T& key) const noexcept { return find(key); }
    bool contains(const T& key) const noexcept { return find(key) != npos; }

    // Empties list and table; memory is kept, the table keeps its bucket count.
    void clear() noexcept;
    // Empties and releases the memory.
    void clear_hard() noexcept {
        list_.clear_hard();
        slots_.clear_hard();
        buckets_ = 0;
    }
    // Prepares the table for n keys (no rebuild until then) and reserves the list.
    bool reserve(std::size_t n) noexcept;

    std::size_t size() const noexcept { return list_.size(); }
    bool empty() const noexcept { return list_.size() == 0; }
    const list_type& list() const noexcept { return list_; }
    const T& operator[](std::size_t i) const noexcept { return list_[i]; }
    const T* data() const noexcept { return list_.data(); }
    const T* begin() const noexcept { return list_.begin(); }
    const T* end() const noexcept { return list_.end(); }

    std::size_t nbr_buckets() const noexcept { return buckets_; }
    std::size_t nbr_slots() const noexcept { return slots_.size(); }
    // Smallest prime of the table not below n; the last prime for anything larger.
    static std::size_t bucket_count_for(std::size_t n) noexcept;

private:
    // Builds an empty table of bucket_count_for(n) buckets and inserts the list.
    bool rebuild_table(std::size_t n) noexcept;
    // Inserts a key known to be absent, at position pos, into the table.
    bool link_entry(const T& key, std::uint32_t pos) noexcept;
    std::size_t bucket_of(const T& key) const noexcept { return static_cast<std::size_t>(key) % buckets_; }

    list_type list_;
    dense1D<slot, 8> slots_;
    std::size_t buckets_ = 0;
};

extern template class vector_fast<unsigned>;

}  // namespace core
}  // namespace orv
