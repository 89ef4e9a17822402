// A symmetric matrix whose rows and columns carry identifiers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "linalg/vector_fast.h"
#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// Row and column k of the symmetric storage S belong to the identifier IDs[k]. The
// object is itself counted (handles hold it through Ptr) and owns a counted pointer
// to the IDs: two objects that hold the same pointer share one numbering. Nothing is
// asked of S here beyond being constructible and copyable, so that any symmetric
// storage (packed, compressed, block skyline, factors) can be wrapped.
template <class I, class S>
class indexed_sym : public ref_counted, public S {
public:
    typedef I index_type;
    typedef S storage_type;
    static constexpr std::uint32_t npos = ~std::uint32_t(0);

    indexed_sym() = default;
    // IDs shared; S built from the remaining arguments (a copy shares when S does).
    template <class... Args>
    explicit indexed_sym(const Ptr<I>& IDs, Args&&... args)
        : ref_counted(), S(std::forward<Args>(args)...), IDs_(IDs) {}
    indexed_sym(const indexed_sym& o) : ref_counted(), S(o), IDs_(o.IDs_) {}
    indexed_sym& operator=(const indexed_sym& o) {
        S::operator=(static_cast<const S&>(o));
        IDs_ = o.IDs_;
        return *this;
    }

    const Ptr<I>& get_IDs() const noexcept { return IDs_; }
    void set_IDs(const Ptr<I>& IDs) noexcept { IDs_ = IDs; }
    S& matrix() noexcept { return *this; }
    const S& matrix() const noexcept { return *this; }
    // Number of IDs, 0 without IDs.
    std::size_t nbr_IDs() const noexcept { return IDs_ ? IDs_->size() : 0; }

    // Position of an ID, npos if absent or without IDs.
    std::uint32_t position(const typename I::value_type& id) const noexcept { return IDs_ ? IDs_->find(id) : npos; }
    // Positions of two IDs; false when either is absent.
    bool positions(const typename I::value_type& id_i, const typename I::value_type& id_j, std::uint32_t& i,
                   std::uint32_t& j) const noexcept {
        i = position(id_i);
        j = position(id_j);
        return i != npos && j != npos;
    }

private:
    Ptr<I> IDs_;
};

}  // namespace core
}  // namespace orv
