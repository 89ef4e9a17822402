// Intrusive reference counting shared by every engine object and numeric container.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

namespace orv {
namespace math1 {

/// Root of every shared object. The count starts at 0: a fresh object is owned only
/// once a handle or a Ptr adopts it. The owner whose release takes the count from 1
/// to 0 destroys the object.
class ref_counted {
public:
    /// A new object with a count of 0.
    ref_counted() noexcept : count_(0) {}
    /// A copy is a new object: it starts unowned whatever the source's count.
    ref_counted(const ref_counted&) noexcept : count_(0) {}
    /// Assignment leaves the count alone.
    ref_counted& operator=(const ref_counted&) noexcept { return *this; }
    /// Destroys the object.
    virtual ~ref_counted() = default;

    /// Takes one reference.
    void add_ref() const noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
    /// Drops one reference; the last one destroys the object.
    void release() const noexcept {
        if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) __destroy();
    }
    /// The number of references held.
    std::uint32_t ref_count() const noexcept { return count_.load(std::memory_order_acquire); }

private:
    void __destroy() const noexcept { delete this; }
    mutable std::atomic<std::uint32_t> count_;
};

}  // namespace math1

/// The engine uses the same root under its own namespace.
using math1::ref_counted;

/// Smart pointer over a ref_counted object. Every assignment takes the new reference
/// before it drops the old one, so self-assignment and aliasing are safe.
template <class T>
class Ptr {
public:
    /// A null pointer.
    Ptr() noexcept = default;
    /// Adopts p (one reference taken); null gives a null pointer.
    Ptr(T* p) noexcept : p_(p) {
        if (p_) p_->add_ref();
    }
    /// Shares o's object.
    Ptr(const Ptr& o) noexcept : p_(o.p_) {
        if (p_) p_->add_ref();
    }
    /// Takes o's reference; o becomes null.
    Ptr(Ptr&& o) noexcept : p_(o.p_) { o.p_ = nullptr; }
    template <class U>
    /// Shares o's object, converted to T*.
    Ptr(const Ptr<U>& o) noexcept : p_(o.get()) {
        if (p_) p_->add_ref();
    }
    /// Drops the reference.
    ~Ptr() {
        if (p_) p_->release();
    }

    /// Adopts p, then drops the old object.
    Ptr& operator=(T* p) noexcept {
        if (p) p->add_ref();
        T* old = p_;
        p_ = p;
        if (old) old->release();
        return *this;
    }
    /// Shares o's object, then drops the old one.
    Ptr& operator=(const Ptr& o) noexcept { return *this = o.p_; }
    /// Takes o's reference (o becomes null), then drops the old object.
    Ptr& operator=(Ptr&& o) noexcept {
        if (this != &o) {
            T* old = p_;
            p_ = o.p_;
            o.p_ = nullptr;
            if (old) old->release();
        }
        return *this;
    }

    /// The object, or null.
    T* get() const noexcept { return p_; }
    /// Member access to the object.
    T* operator->() const noexcept { return p_; }
    /// The object, which must exist.
    T& operator*() const noexcept { return *p_; }
    /// True when not null.
    explicit operator bool() const noexcept { return p_ != nullptr; }
    /// Drops the object; the pointer becomes null.
    void reset() noexcept { *this = static_cast<T*>(nullptr); }

private:
    T* p_ = nullptr;
};

template <class T, class U>
/// True when both point at the same object.
bool operator==(const Ptr<T>& a, const Ptr<U>& b) noexcept {
    return a.get() == b.get();
}
template <class T, class U>
/// True when they point at different objects.
bool operator!=(const Ptr<T>& a, const Ptr<U>& b) noexcept {
    return a.get() != b.get();
}

}  // namespace orv
