// A vector of values whose entries carry identifiers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "linalg/vector_fast.h"
#include "orvmath1/dense1D.h"
#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// Entry k of the values belongs to the identifier IDs[k]. The IDs are held through a
// counted pointer, so several objects can share one numbering; copies share both the
// values (as V does) and the IDs.
template <class I, class V>
class indexed1D : public V {
public:
    typedef I index_type;
    typedef V values_type;
    typedef typename V::value_type value_type;
    static constexpr std::uint32_t npos = ~std::uint32_t(0);

    indexed1D() noexcept = default;
    // Shares the IDs and the values.
    indexed1D(const Ptr<I>& IDs, const V& values) noexcept : V(values), IDs_(IDs) {}

    // One value per ID, all set to `value`; false on exhaustion, the object unchanged.
    bool init(const Ptr<I>& IDs, const value_type& value) noexcept {
        V v;
        if (!v.resize(IDs ? IDs->size() : 0, value)) return false;
        V::operator=(v);
        IDs_ = IDs;
        return true;
    }

    const Ptr<I>& get_IDs() const noexcept { return IDs_; }
    void set_IDs(const Ptr<I>& IDs) noexcept { IDs_ = IDs; }
    V& values() noexcept { return *this; }
    const V& values() const noexcept { return *this; }

    // Position of an ID in the numbering, npos if absent or without IDs.
    std::uint32_t position(const typename I::value_type& id) const noexcept { return IDs_ ? IDs_->find(id) : npos; }
    // The value of an ID, null when the ID is absent or past the values.
    value_type* find(const typename I::value_type& id) noexcept {
        const std::uint32_t k = position(id);
        return (k == npos || k >= V::size()) ? nullptr : V::data() + k;
    }
    const value_type* find(const typename I::value_type& id) const noexcept {
        return const_cast<indexed1D*>(this)->find(id);
    }

    void shallow_copy(const indexed1D& o) noexcept { *this = o; }
    // Deep copy of the values; the IDs are shared.
    bool copy(const indexed1D& o) noexcept {
        if (!V::copy(o)) return false;
        IDs_ = o.IDs_;
        return true;
    }
    void clear() noexcept {
        V::clear();
        IDs_.reset();
    }
    void clear_hard() noexcept {
        V::clear_hard();
        IDs_.reset();
    }

private:
    Ptr<I> IDs_;
};

}  // namespace core
}  // namespace orv
