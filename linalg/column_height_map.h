// Hash map from a column to a segment height, used while a block of the profile is
// being built. Open chains inside one slot array; a key keeps the larger height.
#pragma once

#include <cstddef>
#include <vector>

#include "linalg/block_profile.h"

namespace orv {
namespace core {

class column_height_map {
public:
    // Smallest bucket count of the prime table not below `wanted`.
    static std::size_t bucket_count_for(std::size_t wanted) noexcept;

    // An empty map with 23 buckets. May throw std::bad_alloc.
    column_height_map() { rebuild_table(23); }

    std::size_t size() const noexcept { return elements_; }
    std::size_t buckets() const noexcept { return buckets_; }

    // Inserts (column, height), or raises the stored height of the column to `height`
    // if that is larger. May throw std::bad_alloc.
    void insert_max(unsigned int column, unsigned int height);

    // Height stored for the column; false if absent.
    bool find(unsigned int column, unsigned int& height) const noexcept;

    // All entries, sorted by column.
    void sorted(std::vector<block_segment>& out) const;

    // Gives back the memory.
    void release() noexcept {
        std::vector<slot>().swap(slots_);
        elements_ = 0;
        buckets_ = 0;
    }

private:
    // `link`: low bit set when the slot is occupied; link >> 1 is the distance to the
    // next slot of the chain, a link below 2 ends the chain.
    struct slot {
        unsigned int key;
        unsigned int value;
        std::size_t link;
    };

    void rebuild_table(std::size_t wanted);
    void place_entry(unsigned int key, unsigned int value);

    std::vector<slot> slots_;
    std::size_t buckets_ = 0;
    std::size_t elements_ = 0;
};

}  // namespace core
}  // namespace orv
