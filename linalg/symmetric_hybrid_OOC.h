// The block-skyline symmetric matrix: stiffness, mass and geometric matrices are
// assembled into it and the LDLt factorisation works on it in place.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <string>

#include "linalg/OOC_mgr.h"
#include "linalg/block_profile.h"
#include "linalg/block_proxy_data.h"
#include "linalg/symmetric_skyline_block.h"
#include "orvmath1/dense1D.h"
#include "orvmath1/dense2D.h"
#include "orvmath1/symmetric_fixed.h"
#include "orvmath1/symmetric_full.h"
#include "orvmath1/symmetric_sparse.h"

namespace orv {
namespace core {

// Numbers of the size table of a matrix (the numeric part of its report lines).
struct skyline_report {
    std::uint64_t dimension = 0;
    std::uint64_t profile = 0;
    std::uint64_t nbr_blocks = 0;
    std::uint64_t max_extra_segments = 0;
    double symbolic_fill = 0.0;  // 2 * profile / ((n + 1) * n) * 100
    bool numeric = false;        // the three below are known (all blocks in core)
    std::uint64_t zeros = 0;
    std::uint64_t non_zeros = 0;
    double numerical_fill = 0.0;        // 2 * non_zeros / ((n + 1) * n) * 100
    double numerical_fill_ratio = 0.0;  // non_zeros * 100 / max(profile, 1)
};

// The matrix is a list of row blocks (see symmetric_skyline_block) whose values live
// in a shared proxy. Blocks are reached only through a window of resident blocks:
// window() / the sweeps below make a block resident and hand it out. A matrix built
// without an out-of-core manager (or of dimension <= 32) is resident for good.
//
// Copies share the proxy (and so the values); the per-object maps row -> block and
// block -> parent are shared views too.
template <class T>
class symmetric_hybrid_OOC {
public:
    typedef T value_type;
    typedef symmetric_skyline_block<T> block_type;
    typedef block_proxy_data<block_type> proxy_type;
    typedef typename block_type::segment_type segment_type;

    symmetric_hybrid_OOC() = default;
    virtual ~symmetric_hybrid_OOC() = default;
    symmetric_hybrid_OOC(const symmetric_hybrid_OOC&) = default;
    symmetric_hybrid_OOC& operator=(const symmetric_hybrid_OOC&) = default;

    // Builds the blocks from the DOF-level block profiles, every value set to
    // fill_value. Returns 0, -101 for an inconsistent profile, -199 on exhaustion.
    int init(const orv::dense1D<block_profile, 8>& profiles, T fill_value, const Ptr<OOC_mgr>& mgr);
    int init(const block_profile* profiles, std::size_t n_profiles, T fill_value, const Ptr<OOC_mgr>& mgr);
    // Releases everything; dimension 0.
    void clear();
    // Sets every stored value (diagonal included) to v.
    void fill(T v);

    bool is_valid() const noexcept { return bool(proxy_); }
    std::size_t dimension() const noexcept { return block_of_.size(); }
    std::uint64_t nbr_blocks() const noexcept { return proxy_ ? proxy_->n_blocks : 0; }
    std::uint64_t profile() const noexcept { return proxy_ ? proxy_->profile : 0; }
    std::uint64_t nbr_segments() const noexcept { return proxy_ ? proxy_->nbr_segments : 0; }
    std::uint64_t max_extra_segments() const noexcept { return proxy_ ? proxy_->max_extra_segments : 0; }
    std::uint64_t total_bytes() const noexcept { return proxy_ ? proxy_->total_bytes : 0; }
    // Size in MB of a matrix of this layout with the given totals: its header, the row
    // and block maps, one block record and 16 bytes of segment record per segment,
    // and the values. 2^44 when the profile reaches the size lines' limit (2^61 - 1).
    static double layout_MB(std::uint64_t rows, std::uint64_t blocks, std::uint64_t segments,
                            std::uint64_t profile) noexcept {
        if (rows == 0) return 0.0;
        if (profile >= 0x1FFFFFFFFFFFFFFFull) return 17592186044416.0;
        return (56.0 + 4.0 * double(rows + blocks) + 56.0 * double(blocks) + 16.0 * double(segments) +
                8.0 * double(profile)) /
               1048576.0;
    }
    double layout_MB() const noexcept { return layout_MB(dimension(), nbr_blocks(), nbr_segments(), profile()); }
    bool all_incore() const noexcept { return !proxy_ || proxy_->all_resident(); }
    const Ptr<proxy_type>& proxy() const noexcept { return proxy_; }
    // Block holding row r.
    unsigned int block_of(std::size_t r) const noexcept { return block_of_[r]; }
    // Block of the first extra column of block b, ~0 if b has none: the block tree.
    unsigned int parent_of(std::size_t b) const noexcept { return parent_[b]; }
    const orv::dense1D<unsigned int, 8>& block_map() const noexcept { return block_of_; }
    const orv::dense1D<unsigned int, 8>& parents() const noexcept { return parent_; }

    // Makes block b resident as the first block of a forward sweep (forward) or the
    // last of a backward one, and gives the resident window [w0, w1) around it.
    // Returns 0 or -200.
    int window(std::uint64_t b, bool forward, std::uint64_t& w0, std::uint64_t& w1);
    // Resident block b; only valid inside the current window.
    // Block b, which must exist (window() is the checked way to reach a block).
    block_type& block(std::uint64_t b) noexcept {
        assert(proxy_ && b < proxy_->n_blocks && "no such block");
        return proxy_->block(b);
    }
    const block_type& block(std::uint64_t b) const noexcept {
        assert(proxy_ && b < proxy_->n_blocks && "no such block");
        return proxy_->block(b);
    }

    // Visits the blocks in ascending (forward) or descending order, each made
    // resident before f(b, block) is called. f returns 0 to go on; a non-zero value
    // stops the sweep and is returned. -200 when a block cannot be made resident.
    template <class F>
    int for_each_block(bool forward, F&& f);
    template <class F>
    int for_each_block(bool forward, F&& f) const {
        return const_cast<symmetric_hybrid_OOC*>(this)->for_each_block(
            forward, [&](std::uint64_t b, block_type& blk) { return f(b, static_cast<const block_type&>(blk)); });
    }

    // Entry (r, c) in either order; 0 outside the profile. -101 past the dimension.
    T get_val(std::size_t r, std::size_t c) const;
    int get_val(std::size_t r, std::size_t c, T& v) const;
    // 0, -101 past the dimension, -102 outside the profile.
    int set_val(std::size_t r, std::size_t c, T v);
    int add_val(std::size_t r, std::size_t c, T v);

    // Adds alpha * B with B given by the matrix positions of its rows (`pos[i]`, ~0 for
    // a row that is not in the matrix). The skew forms add the skew-symmetric matrix
    // whose stored triangle is B's (the mirrored entries change sign). Returns 0 or
    // -102 when an entry falls outside the profile (it is then left out).
    int add(T alpha, const orv::symmetric_full<T>& B, const unsigned int* pos, bool skew = false);
    int add(T alpha, const orv::symmetric_sparse<T>& B, const unsigned int* pos, bool skew = false);
    template <std::size_t N>
    int add(T alpha, const orv::symmetric_fixed<T, N>& B, const unsigned int* pos, bool skew = false) {
        return add_packed(alpha, B.data(), N, pos, skew);
    }
    // B(i, j), i >= j, at packed[(i + 1) * i / 2 + j].
    int add_packed(T alpha, const T* packed, std::size_t n, const unsigned int* pos, bool skew);

    // y += alpha * A * x.
    void mult_add(T alpha, const T* x, T* y, int n_threads = 1) const;
    // Y += alpha * A * X for the columns of X (each of dimension() rows).
    void mult_add(T alpha, const T* X, std::size_t ldx, T* Y, std::size_t ldy, std::size_t n_columns,
                  int n_threads = 1) const;
    void mult_add(T alpha, const orv::dense2D<T>& X, orv::dense2D<T>& Y, int n_threads = 1) const;
    // x^T A x.
    T xT_A_x(const T* x, int n_threads = 1) const;

    // Stored entries that are exactly 0 (only meaningful when all blocks are resident).
    std::uint64_t count_zeros() const;
    // Numbers of the size table; the numerical part only when all blocks are resident.
    skyline_report report() const;
    // The size table as log text, formats of the system's log.
    std::string report_text(bool with_numbers) const;

protected:
    // The stored place of entry (r, c), its block made resident and marked written:
    // 0, or the codes of set_val (p null then).
    int writable_entry(std::size_t r, std::size_t c, T*& p);
    int row_pour(std::size_t row, const std::pair<std::size_t, T>* entries, std::size_t n, T factor);

    Ptr<proxy_type> proxy_;
    orv::dense1D<unsigned int, 8> block_of_;
    orv::dense1D<unsigned int, 8> parent_;
};

template <class T>
template <class F>
int symmetric_hybrid_OOC<T>::for_each_block(bool forward, F&& f) {
    if (!proxy_) return 0;
    Ptr<proxy_type> keep(proxy_);  // the sweep keeps the proxy alive
    const std::uint64_t n = keep->n_blocks;
    std::uint64_t w0 = 0, w1 = 0;
    bool have = false;
    for (std::uint64_t k = 0; k < n; ++k) {
        const std::uint64_t b = forward ? k : n - 1 - k;
        if (!have || b < w0 || b >= w1) {
            const int rc = window(b, forward, w0, w1);
            if (rc) return rc;
            have = true;
        }
        const int rc = f(b, keep->block(b));
        if (rc) return rc;
    }
    return 0;
}

extern template class symmetric_hybrid_OOC<double>;

}  // namespace core
}  // namespace orv
