// Shared, aligned, growable storage under every numeric view of the library.
#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>

#include "orvmath1/ref_counted.h"

namespace orv {

/// Raw blocks of every vector_num. A null result means that the memory is exhausted
/// (or that the request exceeds what the address space could ever hold); neither call
/// throws.
void* __vector_num_alloc(std::size_t bytes) noexcept;
void __vector_num_free(void* block) noexcept;

/// Storage of `capacity()` elements of T, shared by counted views (dense1D and
/// everything built on it). The block holds `capacity * sizeof(T) + sizeof(T) - 1`
/// bytes and the first element sits on the next multiple of sizeof(T), so that 8-,
/// 16- and 32-byte elements get 8-, 16- and 32-byte alignment; `shift()` records how
/// far the pointer was moved. Every element of the capacity is constructed (default-
/// initialised) while the block is owned, and destroyed when the block goes.
///
/// The parameter A names the alignment family of the views; the placement rule above
/// is by element size. Elements larger than 256 bytes are placed on the largest power
/// of two (at most 256) that divides their size, so that the shift fits in one byte.
///
/// A vector_num may also wrap memory that it does not own (external()): it then
/// neither constructs, destroys nor frees those elements. Growing it moves the
/// content into an owned block.
template <class T, int A = 8>
class vector_num : public ref_counted {
public:
    /// The element type.
    typedef T value_type;

    /// No storage.
    vector_num() noexcept = default;
    /// Wraps n elements of external memory, which stays the caller's.
    vector_num(T* external, std::size_t n) noexcept
        : first_(external), capacity_(external ? n : 0), external_(external != nullptr) {}
    /// Not copyable: views share it through Ptr.
    vector_num(const vector_num&) = delete;
    /// Not assignable.
    vector_num& operator=(const vector_num&) = delete;
    /// Destroys and frees an owned block.
    ~vector_num() override { release_storage(); }

    /// The first element, null without storage.
    T* data() const noexcept { return first_; }
    /// Number of elements of the storage.
    std::size_t capacity() const noexcept { return capacity_; }
    /// Bytes between the block's start and the first element.
    unsigned shift() const noexcept { return shift_; }
    /// True when the memory is the caller's.
    bool external() const noexcept { return external_; }

    /// Alignment unit of the first element.
    static constexpr std::size_t align_unit() noexcept {
        return sizeof(T) <= 256 ? sizeof(T)
                                : ((sizeof(T) & (~sizeof(T) + 1)) < 256 ? (sizeof(T) & (~sizeof(T) + 1)) : 256);
    }

    /// Replaces the block by one of capacity max(max(capacity * factor, 2), needed).
    /// The first `used` elements are copied (by copy-construction) into the new block,
    /// the others default-initialised. On overflow of the size computation, on
    /// exhaustion, or when an element's constructor throws, the vector is left
    /// untouched and the result is false. Appending grows with factor 2, an explicit
    /// reserve with factor 1.
    bool __grow(std::size_t needed, std::size_t used, std::size_t factor) noexcept;

private:
    void release_storage() noexcept;

    T* first_ = nullptr;
    std::size_t capacity_ = 0;
    std::uint8_t shift_ = 0;
    bool external_ = false;
};

template <class T, int A>
bool vector_num<T, A>::__grow(std::size_t needed, std::size_t used, std::size_t factor) noexcept {
    constexpr std::size_t max_size = std::numeric_limits<std::size_t>::max();
    if (factor != 0 && capacity_ > max_size / factor) return false;
    std::size_t cap = capacity_ * factor;
    if (cap < 2) cap = 2;
    if (cap < needed) cap = needed;
    if (cap > (max_size - (sizeof(T) - 1)) / sizeof(T)) return false;
    const std::size_t bytes = cap * sizeof(T) + sizeof(T) - 1;

    void* raw = __vector_num_alloc(bytes);
    if (!raw) return false;
    constexpr std::size_t unit = align_unit();
    const std::uintptr_t p = reinterpret_cast<std::uintptr_t>(raw);
    const std::uintptr_t aligned = (p + unit - 1) / unit * unit;
    T* fresh = reinterpret_cast<T*>(aligned);

    if (used > capacity_) used = capacity_;
    if (used > cap) used = cap;

    std::size_t built = 0;
    try {
        if (std::is_trivially_copyable<T>::value) {
            if (used) std::memcpy(static_cast<void*>(fresh), static_cast<const void*>(first_), used * sizeof(T));
            built = used;
        } else {
            for (; built < used; ++built) ::new (static_cast<void*>(fresh + built)) T(first_[built]);
        }
        if (!std::is_trivially_default_constructible<T>::value) {
            for (; built < cap; ++built) ::new (static_cast<void*>(fresh + built)) T;
        }
    } catch (...) {
        if (!std::is_trivially_destructible<T>::value) {
            for (std::size_t i = 0; i < built; ++i) fresh[i].~T();
        }
        __vector_num_free(raw);
        return false;
    }

    release_storage();
    first_ = fresh;
    capacity_ = cap;
    shift_ = static_cast<std::uint8_t>(aligned - p);
    external_ = false;
    return true;
}

template <class T, int A>
void vector_num<T, A>::release_storage() noexcept {
    if (first_ && !external_) {
        if (!std::is_trivially_destructible<T>::value) {
            for (std::size_t i = 0; i < capacity_; ++i) first_[i].~T();
        }
        __vector_num_free(reinterpret_cast<char*>(first_) - shift_);
    }
    first_ = nullptr;
    capacity_ = 0;
    shift_ = 0;
    external_ = false;
}

extern template class vector_num<double, 8>;
extern template class vector_num<unsigned int, 8>;
extern template class vector_num<std::complex<double>, 8>;

}  // namespace orv
