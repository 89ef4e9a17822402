// A matrix whose rows carry identifiers.
#pragma once

#include <cstddef>
#include <cstdint>

#include "linalg/vector_fast.h"
#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// Row k of the matrix M belongs to the identifier IDs[k]: the row of `id` is
// IDs.position(id). M is a dense column-major matrix (in core or out of core); this
// class adds only the numbering, held through a counted pointer so that several
// matrices can share it. Copies share the matrix (as M does) and the IDs.
template <class I, class M>
class indexed2D_row : public M {
public:
    typedef I index_type;
    typedef M matrix_type;
    static constexpr std::uint32_t npos = ~std::uint32_t(0);

    indexed2D_row() = default;
    // Shares the IDs and the matrix.
    indexed2D_row(const Ptr<I>& IDs, const M& m) : M(m), IDs_(IDs) {}

    const Ptr<I>& get_IDs() const noexcept { return IDs_; }
    void set_IDs(const Ptr<I>& IDs) noexcept { IDs_ = IDs; }
    M& matrix() noexcept { return *this; }
    const M& matrix() const noexcept { return *this; }

    // Row of an ID, npos if absent or without IDs.
    std::uint32_t position(const typename I::value_type& id) const noexcept { return IDs_ ? IDs_->find(id) : npos; }
    std::uint32_t row_of(const typename I::value_type& id) const noexcept { return position(id); }

    void shallow_copy(const indexed2D_row& o) { *this = o; }
    // Deep copy of the matrix; the IDs are shared.
    bool copy(const indexed2D_row& o) {
        if (!M::copy(o)) return false;
        IDs_ = o.IDs_;
        return true;
    }
    void clear() {
        M::clear();
        IDs_.reset();
    }
    void clear_hard() {
        M::clear_hard();
        IDs_.reset();
    }

private:
    Ptr<I> IDs_;
};

}  // namespace core
}  // namespace orv
