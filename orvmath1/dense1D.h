// Counted view on a vector_num: the one vector type of the library.
#pragma once

#include <algorithm>
#include <cassert>
#include <complex>
#include <cstddef>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

#include "orvmath1/vector_num.h"

namespace orv {

/// A window [offset, offset + size) on a shared vector_num. Copies share the storage
/// (a copy costs one reference increment) and views may overlap: a sub_vector writes
/// through to its parent and keeps the storage alive after the parent is gone. When a
/// view has to grow past the capacity of its storage, the shared vector_num itself is
/// reallocated, so every other view on it stays valid and sees the same elements.
///
/// Exhaustion and size overflow are reported by a false result and leave the view as
/// it was; nothing throws. A constructor that cannot get its memory leaves an empty
/// view. An empty view has no storage until its first growth.
template <class T, int A = 8>
class dense1D {
public:
    /// The element type.
    typedef T value_type;
    /// The shared storage.
    typedef vector_num<T, A> storage_type;
    /// Iterator over the view's elements.
    typedef T* iterator;
    /// Read-only iterator.
    typedef const T* const_iterator;

    /// An empty view without storage.
    dense1D() noexcept = default;
    /// n elements, undefined (default-initialised).
    explicit dense1D(std::size_t n) noexcept { resize(n); }
    /// n elements set to value.
    dense1D(std::size_t n, const T& value) noexcept { resize(n, value); }
    /// Wraps n elements of external memory, which stays the caller's.
    template <class P, typename std::enable_if<std::is_same<P, T*>::value, int>::type = 0>
    dense1D(std::size_t n, P external) noexcept {
        if (!external || n == 0) return;
        storage_ = new (std::nothrow) storage_type(external, n);
        if (storage_) size_ = n;
    }
    /// Shares the other view's storage, size and offset.
    dense1D(const dense1D&) noexcept = default;
    /// Takes o's view; o becomes empty.
    dense1D(dense1D&& o) noexcept : storage_(std::move(o.storage_)), size_(o.size_), offset_(o.offset_) {
        o.size_ = 0;
        o.offset_ = 0;
    }
    ~dense1D() = default;

    /// Shares the other view's storage, size and offset.
    dense1D& operator=(const dense1D& o) noexcept = default;
    /// Takes o's view; o becomes empty.
    dense1D& operator=(dense1D&& o) noexcept {
        if (this != &o) {
            storage_ = std::move(o.storage_);
            size_ = o.size_;
            offset_ = o.offset_;
            o.size_ = 0;
            o.offset_ = 0;
        }
        return *this;
    }
    /// Fills the view and returns the value.
    const T& operator=(const T& value) {
        fill(value);
        return value;
    }
    /// Sets every element of the view.
    void fill(const T& value) {
        T* p = data();
        for (std::size_t i = 0; i < size_; ++i) p[i] = value;
    }

    /// Shares o's storage, size and offset (the same as assignment).
    void shallow_copy(const dense1D& o) noexcept { *this = o; }
    /// Deep copy of o's elements into this view, which is resized to o's size.
    bool copy(const dense1D& o) noexcept;

    /// Size 0, storage kept.
    void clear() noexcept { size_ = 0; }
    /// Size 0, storage released (freed if this was its last view).
    void clear_hard() noexcept {
        storage_.reset();
        size_ = 0;
        offset_ = 0;
    }

    /// Keeps the first min(size, n) elements; new ones are undefined or `value`.
    /// Shrinking keeps the capacity. Growth is exact (factor 1).
    bool resize(std::size_t n) noexcept {
        if (n > size_ && !ensure_capacity(n, 1)) return false;
        size_ = n;
        return true;
    }
    /// The same, new elements set to value.
    bool resize(std::size_t n, const T& value) noexcept;
    /// resize(n, value) for the outer vector of a nested structure: growth is
    /// amortised (factor 2), and the elements dropped by a shrink are reset to T(),
    /// so that the inner storages they held are released at once.
    bool resize_major(std::size_t n, const T& value) noexcept;
    /// Guarantees room for n elements from the view's start; the size is unchanged.
    bool reserve(std::size_t n, std::size_t factor = 1) noexcept {
        return n <= capacity() ? true : ensure_capacity(n, factor);
    }
    /// Appends value (amortised growth, factor 2).
    bool push_back(const T& value) noexcept { return push_back_n(value, 1); }
    /// Appends n copies of value (amortised growth, factor 2).
    bool push_back_n(const T& value, std::size_t n) noexcept;

    /// A view on elements [start, start + n) of this one, on the same storage.
    dense1D sub_vector(std::size_t start, std::size_t n) noexcept {
        assert(start <= size_ && n <= size_ - start);
        dense1D v(*this);
        v.offset_ += start;
        v.size_ = n;
        return v;
    }
    /// The same on a const view.
    const dense1D sub_vector(std::size_t start, std::size_t n) const noexcept {
        return const_cast<dense1D*>(this)->sub_vector(start, n);
    }

    /// Number of elements of the view.
    std::size_t size() const noexcept { return size_; }
    /// True for size 0.
    bool empty() const noexcept { return size_ == 0; }
    /// Room from the view's start to the end of the storage.
    std::size_t capacity() const noexcept { return storage_ ? storage_->capacity() - offset_ : 0; }
    /// Position of the view's first element in its storage.
    std::size_t offset() const noexcept { return offset_; }
    /// The shared storage (null before the first growth).
    const Ptr<storage_type>& storage() const noexcept { return storage_; }
    /// True when another view (or owner) holds the same storage.
    bool shared() const noexcept { return storage_ && storage_->ref_count() > 1; }

    /// The first element of the view, null without storage.
    T* data() noexcept { return storage_ ? storage_->data() + offset_ : nullptr; }
    /// The first element of the view, null without storage.
    const T* data() const noexcept { return storage_ ? storage_->data() + offset_ : nullptr; }
    /// Start of the elements.
    T* begin() noexcept { return data(); }
    /// End of the elements.
    T* end() noexcept { return data() + size_; }
    /// Start of the elements.
    const T* begin() const noexcept { return data(); }
    /// End of the elements.
    const T* end() const noexcept { return data() + size_; }

    /// Element i (i < size(), checked by assert only).
    T& operator[](std::size_t i) noexcept {
        assert(i < size_);
        return storage_->data()[offset_ + i];
    }
    /// Element i (i < size(), checked by assert only).
    const T& operator[](std::size_t i) const noexcept {
        assert(i < size_);
        return storage_->data()[offset_ + i];
    }
    /// Element i, as operator[].
    T& operator()(std::size_t i) noexcept { return (*this)[i]; }
    /// Element i, as operator[].
    const T& operator()(std::size_t i) const noexcept { return (*this)[i]; }
    /// First element (the view must not be empty).
    T& front() noexcept { return (*this)[0]; }
    /// Last element (the view must not be empty).
    T& back() noexcept { return (*this)[size_ - 1]; }
    /// First element (the view must not be empty).
    const T& front() const noexcept { return (*this)[0]; }
    /// Last element (the view must not be empty).
    const T& back() const noexcept { return (*this)[size_ - 1]; }

    /// Exchanges the two views.
    void swap(dense1D& o) noexcept {
        std::swap(storage_, o.storage_);
        std::swap(size_, o.size_);
        std::swap(offset_, o.offset_);
    }

protected:
    /// Makes the storage hold at least offset + n elements. When the storage is shared,
    /// all of its old content is carried over (other views may use any of it);
    /// otherwise only this view's elements.
    bool ensure_capacity(std::size_t n, std::size_t factor) noexcept;

    /// The shared storage.
    Ptr<storage_type> storage_;
    /// Number of elements of the view.
    std::size_t size_ = 0;
    /// Position of the first element in the storage.
    std::size_t offset_ = 0;
};

template <class T, int A>
bool dense1D<T, A>::ensure_capacity(std::size_t n, std::size_t factor) noexcept {
    if (n > std::numeric_limits<std::size_t>::max() - offset_) return false;
    const std::size_t needed = offset_ + n;
    if (storage_ && needed <= storage_->capacity()) return true;
    if (!storage_) {
        Ptr<storage_type> s(new (std::nothrow) storage_type());
        if (!s || !s->__grow(needed, 0, factor)) return false;
        storage_ = s;
        return true;
    }
    const std::size_t used = shared() ? storage_->capacity() : offset_ + size_;
    return storage_->__grow(needed, used, factor);
}

template <class T, int A>
bool dense1D<T, A>::resize(std::size_t n, const T& value) noexcept {
    if (n <= size_) {
        size_ = n;
        return true;
    }
    const T v(value);  // value may live in the storage that is about to move
    if (!ensure_capacity(n, 1)) return false;
    T* p = data();
    for (std::size_t i = size_; i < n; ++i) p[i] = v;
    size_ = n;
    return true;
}

template <class T, int A>
bool dense1D<T, A>::resize_major(std::size_t n, const T& value) noexcept {
    if (n <= size_) {
        T* p = data();
        for (std::size_t i = n; i < size_; ++i) p[i] = T();
        size_ = n;
        return true;
    }
    const T v(value);
    if (n > capacity() && !ensure_capacity(n, 2)) return false;
    T* p = data();
    for (std::size_t i = size_; i < n; ++i) p[i] = v;
    size_ = n;
    return true;
}

template <class T, int A>
bool dense1D<T, A>::push_back_n(const T& value, std::size_t n) noexcept {
    if (n == 0) return true;
    if (n > std::numeric_limits<std::size_t>::max() - size_) return false;
    const T v(value);
    if (size_ + n > capacity() && !ensure_capacity(size_ + n, 2)) return false;
    T* p = data();
    for (std::size_t i = size_; i < size_ + n; ++i) p[i] = v;
    size_ += n;
    return true;
}

template <class T, int A>
bool dense1D<T, A>::copy(const dense1D& o) noexcept {
    if (storage_ == o.storage_ && offset_ == o.offset_ && size_ == o.size_) return true;
    if (storage_ && storage_ == o.storage_) {
        // Same storage: go through a private copy, the regions may overlap.
        dense1D tmp;
        if (!tmp.copy(o)) return false;
        return copy(tmp);
    }
    // o is kept alive by this reference even if it is a view on our own elements'
    // owner that the resize below would otherwise release.
    const dense1D src(o);
    if (!resize(src.size_)) return false;
    const T* s = src.data();
    T* d = data();
    for (std::size_t i = 0; i < src.size_; ++i) d[i] = s[i];
    return true;
}

extern template class dense1D<double, 8>;
extern template class dense1D<unsigned int, 8>;
extern template class dense1D<std::complex<double>, 8>;

}  // namespace orv
