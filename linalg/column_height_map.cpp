#include "linalg/column_height_map.h"

#include <algorithm>

namespace orv {
namespace core {

namespace {

const std::size_t primes[30] = {13ul,        23ul,        53ul,        97ul,         193ul,        389ul,
                                769ul,       1543ul,      3079ul,      6151ul,       12289ul,      24593ul,
                                49157ul,     98317ul,     196613ul,    393241ul,     786433ul,     1572869ul,
                                3145739ul,   6291469ul,   12582917ul,  25165843ul,   50331653ul,   100663319ul,
                                201326611ul, 402653189ul, 805306457ul, 1610612741ul, 3221225473ul, 4294967291ul};

}  // namespace

std::size_t column_height_map::bucket_count_for(std::size_t wanted) noexcept {
    for (std::size_t p : primes)
        if (p >= wanted) return p;
    return primes[29];
}

void column_height_map::rebuild_table(std::size_t wanted) {
    const std::size_t b = bucket_count_for(wanted);
    std::vector<slot> fresh(b, slot{0u, 0u, 0u});
    fresh.reserve(b + b / 2);
    fresh.swap(slots_);
    buckets_ = b;
    elements_ = 0;
    for (const slot& s : fresh)
        if (s.link & 1u) place_entry(s.key, s.value);
}

void column_height_map::place_entry(unsigned int key, unsigned int value) {
    std::size_t i = key % buckets_;
    if (!(slots_[i].link & 1u)) {
        slots_[i] = slot{key, value, 1u};
        ++elements_;
        return;
    }
    while (slots_[i].link >= 2) i += slots_[i].link >> 1;
    const std::size_t j = slots_.size();
    slots_.push_back(slot{key, value, 1u});
    slots_[i].link = ((j - i) << 1) | 1u;
    ++elements_;
}

void column_height_map::insert_max(unsigned int column, unsigned int height) {
    std::size_t i = column % buckets_;
    if (slots_[i].link & 1u) {
        for (;;) {
            if (slots_[i].key == column) {
                if (height > slots_[i].value) slots_[i].value = height;
                return;
            }
            if (slots_[i].link < 2) break;
            i += slots_[i].link >> 1;
        }
    }
    if (elements_ + 1 > 2 * buckets_) rebuild_table(2 * elements_);
    place_entry(column, height);
}

bool column_height_map::find(unsigned int column, unsigned int& height) const noexcept {
    if (!buckets_) return false;
    std::size_t i = column % buckets_;
    if (!(slots_[i].link & 1u)) return false;
    for (;;) {
        if (slots_[i].key == column) {
            height = slots_[i].value;
            return true;
        }
        if (slots_[i].link < 2) return false;
        i += slots_[i].link >> 1;
    }
}

void column_height_map::sorted(std::vector<block_segment>& out) const {
    out.clear();
    out.reserve(elements_);
    for (const slot& s : slots_)
        if (s.link & 1u) out.push_back(block_segment{s.key, s.value});
    std::sort(out.begin(), out.end(),
              [](const block_segment& a, const block_segment& b) { return a.column < b.column; });
}

}  // namespace core
}  // namespace orv
