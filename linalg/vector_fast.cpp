#include "linalg/vector_fast.h"

namespace orv {
namespace core {

namespace {
const std::size_t bucket_primes[30] = {13ul,        23ul,        53ul,        97ul,         193ul,        389ul,
                                       769ul,       1543ul,      3079ul,      6151ul,       12289ul,      24593ul,
                                       49157ul,     98317ul,     196613ul,    393241ul,     786433ul,     1572869ul,
                                       3145739ul,   6291469ul,   12582917ul,  25165843ul,   50331653ul,   100663319ul,
                                       201326611ul, 402653189ul, 805306457ul, 1610612741ul, 3221225473ul, 4294967291ul};
constexpr std::size_t start_buckets = 23;
constexpr std::uint32_t taken = 1;
}  // namespace

template <class T>
std::size_t vector_fast<T>::bucket_count_for(std::size_t n) noexcept {
    for (std::size_t p : bucket_primes)
        if (p >= n) return p;
    return bucket_primes[29];
}

template <class T>
bool vector_fast<T>::link_entry(const T& key, std::uint32_t pos) noexcept {
    std::size_t i = bucket_of(key);
    slot* s = slots_.data();
    if (!(s[i].link & taken)) {
        s[i].key = key;
        s[i].value = pos;
        s[i].link = taken;
        return true;
    }
    // Walk to the end of the chain, then link a new slot at the end of the array.
    while ((s[i].link >> 1) != 0) i += s[i].link >> 1;
    const std::size_t fresh = slots_.size();
    const std::size_t distance = fresh - i;
    if (distance > (npos >> 1)) return false;
    if (!slots_.push_back(slot{key, pos, taken})) return false;
    slots_[i].link = static_cast<std::uint32_t>(distance << 1) | taken;
    return true;
}

template <class T>
bool vector_fast<T>::rebuild_table(std::size_t n) noexcept {
    const std::size_t buckets = bucket_count_for(n);
    dense1D<slot, 8> fresh;
    if (!fresh.reserve(buckets + list_.size()) || !fresh.resize(buckets, slot{T(), 0, 0})) return false;
    dense1D<slot, 8> old(slots_);
    const std::size_t old_buckets = buckets_;
    slots_ = fresh;
    buckets_ = buckets;
    for (std::size_t k = 0; k < list_.size(); ++k) {
        if (!link_entry(list_[k], static_cast<std::uint32_t>(k))) {
            slots_ = old;
            buckets_ = old_buckets;
            return false;
        }
    }
    return true;
}

template <class T>
std::pair<std::uint32_t, bool> vector_fast<T>::insert(const T& key) noexcept {
    const std::uint32_t found = find(key);
    if (found != npos) return {found, false};
    const std::size_t n = list_.size();
    if (n >= npos) return {npos, false};
    if (buckets_ == 0) {
        if (!rebuild_table(start_buckets)) return {npos, false};
    } else if (n + 1 > 2 * buckets_) {
        if (!rebuild_table(2 * n)) return {npos, false};
    }
    // Room first, so that a failure leaves list and table consistent.
    if (!list_.reserve(n + 1, 2) || !slots_.reserve(slots_.size() + 1, 2)) return {npos, false};
    if (!link_entry(key, static_cast<std::uint32_t>(n))) return {npos, false};
    list_.push_back(key);
    return {static_cast<std::uint32_t>(n), true};
}

template <class T>
std::uint32_t vector_fast<T>::find(const T& key) const noexcept {
    if (buckets_ == 0) return npos;
    std::size_t i = bucket_of(key);
    const slot* s = slots_.data();
    if (!(s[i].link & taken)) return npos;
    for (;;) {
        if (s[i].key == key) return s[i].value;
        const std::uint32_t d = s[i].link >> 1;
        if (d == 0) return npos;
        i += d;
    }
}

template <class T>
void vector_fast<T>::clear() noexcept {
    list_.clear();
    if (buckets_ != 0) {
        slots_.resize(buckets_);
        for (std::size_t i = 0; i < buckets_; ++i) slots_[i] = slot{T(), 0, 0};
    }
}

template <class T>
bool vector_fast<T>::reserve(std::size_t n) noexcept {
    if (!list_.reserve(n)) return false;
    if (n + 1 > 2 * buckets_ || buckets_ == 0) {
        const std::size_t want = n / 2 + 1 > start_buckets ? n / 2 + 1 : start_buckets;
        if (bucket_count_for(want) > buckets_ && !rebuild_table(want)) return false;
    }
    return true;
}

template <class T>
bool vector_fast<T>::init(const T* first, const T* last) noexcept {
    vector_fast tmp;
    for (const T* p = first; p != last; ++p)
        if (tmp.insert(*p).first == npos) return false;
    list_.swap(tmp.list_);
    slots_.swap(tmp.slots_);
    std::swap(buckets_, tmp.buckets_);
    return true;
}

template <class T>
bool vector_fast<T>::copy(const vector_fast& o) noexcept {
    if (this == &o) return true;
    list_type l;
    dense1D<slot, 8> s;
    if (!l.copy(o.list_) || !s.copy(o.slots_)) return false;
    list_ = l;
    slots_ = s;
    buckets_ = o.buckets_;
    return true;
}

template class vector_fast<unsigned>;

}  // namespace core
}  // namespace orv
