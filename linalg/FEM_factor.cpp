// Public handle of the LDLt factors with DOF IDs, and their native binary file.
#include <orv/fem/FEM_factor.h>
#include <orv/fem/error_type.h>

#include <cstdint>
#include <new>
#include <vector>

#include "linalg/FEM_binary_io.h"
#include "linalg/block_profile.h"
#include "linalg/indexed_sym.h"
#include "linalg/symmetric_L_D_Lt.h"
#include "linalg/vector_fast.h"

namespace orv {
namespace fem {

namespace {

typedef core::FEM_factor_engine engine_type;
typedef core::vector_fast<unsigned> ID_list;
typedef core::skyline_factor factor_type;
typedef factor_type::block_type block_type;

Ptr<ID_list> make_IDs(const unsigned int* first, std::size_t n) {
    Ptr<ID_list> ids(new (std::nothrow) ID_list());
    if (!ids || (n && !ids->init(first, first + n))) return Ptr<ID_list>();
    return ids;
}

// File layout, in order:
//   n_IDs (u64), n_IDs IDs (u32)
//   n_blocks (u64)
//   per block: first, last, n_entries (u64), n_entries pairs (column, height) (u32, u32)
//   per block, ascending: n_own (u64); n_values (u64), n_values doubles; n_segments
//   (u64), n_segments pairs (column, end) (u64, u64), `end` being the byte offset of
//   the segment's end from the block's first value.
int write_factor(const engine_type& f, const char* file) {
    core::binary_writer out(file);
    if (!out.ok()) return -1;
    const ID_list* ids = f.get_IDs().get();
    out.items(ids ? ids->data() : nullptr, ids ? ids->size() : 0);
    const factor_type& m = f.matrix();
    out.item(std::uint64_t(m.nbr_blocks()));
    // Two residency sweeps: the profiles first, then the values.
    int rc = m.for_each_block(true, [&](std::uint64_t, const block_type& blk) {
        out.item(std::uint64_t(blk.first()));
        out.item(std::uint64_t(blk.last()));
        out.item(std::uint64_t(blk.nbr_segments()));
        for (std::size_t k = 0; k < blk.nbr_segments(); ++k) {
            out.item(static_cast<std::uint32_t>(blk.seg_column(k)));
            out.item(static_cast<std::uint32_t>(blk.seg_height(k)));
        }
        return out.ok() ? 0 : -1;
    });
    if (rc == 0)
        rc = m.for_each_block(true, [&](std::uint64_t, const block_type& blk) {
            out.item(std::uint64_t(blk.n_own));
            out.items(blk.values.data(), blk.values.size());
            out.item(std::uint64_t(blk.nbr_segments()));
            const double* base = blk.values.data();
            for (std::size_t k = 0; k < blk.nbr_segments(); ++k) {
                out.item(std::uint64_t(blk.seg_column(k)));
                out.item(std::uint64_t(blk.seg_end(k) - base) * sizeof(double));
            }
            return out.ok() ? 0 : -1;
        });
    const int closed = out.close();
    return rc ? -1 : closed;
}

// Reads a factor into `f` (a fresh object). 0, -1, -2, -199.
int read_factor(engine_type& f, const char* file) {
    core::binary_reader in(file);
    if (!in.is_open()) return -1;
    std::uint64_t n_IDs = 0;
    if (!in.count(n_IDs, sizeof(std::uint32_t))) return -1;
    std::vector<unsigned int> id_values;
    try {
        id_values.resize(std::size_t(n_IDs));
    } catch (...) {
        return fem::error_memory;
    }
    if (!in.raw(id_values.data(), n_IDs * sizeof(std::uint32_t))) return -1;
    Ptr<ID_list> ids = make_IDs(id_values.data(), id_values.size());
    if (!ids) return fem::error_memory;
    if (ids->size() != n_IDs) return -2;  // repeated IDs

    // Profiles: each block takes at least three counts.
    std::uint64_t n_blocks = 0;
    if (!in.count(n_blocks, 3 * sizeof(std::uint64_t))) return -1;
    orv::dense1D<core::block_profile, 8> profiles;
    if (!profiles.resize(std::size_t(n_blocks), core::block_profile())) return fem::error_memory;
    std::uint64_t next_row = 0, n_values = 0;
    for (std::size_t b = 0; b < n_blocks; ++b) {
        std::uint64_t first = 0, last = 0, n_entries = 0;
        if (!in.item(first) || !in.item(last) || !in.count(n_entries, 2 * sizeof(std::uint32_t))) return -1;
        // Blocks follow each other and stay within the IDs.
        if (first != next_row || last < first || last > n_IDs) return -2;
        next_row = last;
        n_values += last - first;
        core::block_profile& p = profiles[b];
        p.first = static_cast<unsigned int>(first);
        p.last = static_cast<unsigned int>(last);
        if (!p.segments.resize(std::size_t(n_entries))) return fem::error_memory;
        for (std::size_t k = 0; k < n_entries; ++k) {
            std::uint32_t column = 0, height = 0;
            if (!in.item(column) || !in.item(height)) return -1;
            p.segments[k].column = column;
            p.segments[k].height = height;
            n_values += height;
        }
    }
    if (next_row != n_IDs) return -2;
    // Every value is stored once in the rest of the file: a profile that asks for more
    // than the file holds is a truncated or damaged file, found before any allocation.
    if (n_values > in.bytes_left() / sizeof(double)) return -1;
    // The matrix is built from the profile the normal way; a profile it refuses does
    // not agree with the counts of the file.
    factor_type m;
    int rc = m.init(profiles, 0.0, Ptr<core::OOC_mgr>());
    if (rc == fem::error_memory) return fem::error_memory;
    if (rc) return -2;
    if (m.dimension() != n_IDs || m.nbr_blocks() != n_blocks) return -2;

    rc = m.for_each_block(true, [&](std::uint64_t, block_type& blk) {
        std::uint64_t n_own = 0, n_values = 0, n_segments = 0;
        if (!in.item(n_own)) return -1;
        if (n_own != blk.n_own) return -2;
        if (!in.count(n_values, sizeof(double))) return -1;
        if (n_values != blk.values.size()) return -2;
        if (!in.raw(blk.values.data(), n_values * sizeof(double))) return -1;
        if (!in.count(n_segments, 2 * sizeof(std::uint64_t))) return -1;
        if (n_segments != blk.nbr_segments()) return -2;
        const double* base = blk.values.data();
        for (std::size_t k = 0; k < n_segments; ++k) {
            std::uint64_t column = 0, end = 0;
            if (!in.item(column) || !in.item(end)) return -1;
            // The end positions are rebased on the block's memory; they must be the
            // ones the profile gave.
            if (column != blk.seg_column(k) || end != std::uint64_t(blk.seg_end(k) - base) * sizeof(double)) return -2;
        }
        return 0;
    });
    if (rc == fem::error_internal) return fem::error_memory;
    if (rc) return rc;
    f.matrix() = m;
    f.matrix().mark_factored();  // a file of factors: save writes a factored matrix
    f.set_IDs(ids);
    return 0;
}

}  // namespace

ORV_FEM_HANDLE_IMPL(FEM_factor, base_class, core::FEM_factor_engine)

FEM_factor::FEM_factor() { set_w(static_cast<ref_counted*>(new (std::nothrow) engine_type())); }

FEM_factor::FEM_factor(core::FEM_factor_engine* e) { set_w(static_cast<ref_counted*>(e)); }

FEM_factor::index_type FEM_factor::dim() const { return engine() ? engine()->matrix().dimension() : 0; }

dense1D<unsigned int> FEM_factor::get_IDs() const {
    if (!engine() || !engine()->get_IDs()) return dense1D<unsigned int>();
    return engine()->get_IDs()->list();
}

error_type FEM_factor::set_IDs(const dense1D<unsigned int>& IDs) {
    if (!engine()) return error_data;
    Ptr<ID_list> ids = make_IDs(IDs.data(), IDs.size());
    if (!ids) return error_memory;
    if (ids->size() != IDs.size() || ids->size() != engine()->matrix().dimension()) return error_data;
    engine()->set_IDs(ids);
    return no_error;
}

void FEM_factor::clear() {
    if (!engine()) return;
    engine()->matrix().clear();
    engine()->set_IDs(Ptr<ID_list>());
}

void FEM_factor::shallow_copy(const FEM_factor& other) {
    if (!engine() || !other.engine() || engine() == other.engine()) return;
    engine()->matrix() = other.engine()->matrix();
    engine()->set_IDs(other.engine()->get_IDs());
}

error_type FEM_factor::save(const char* file) const {
    if (!engine() || !file) return static_cast<error_type>(-1);
    try {
        return static_cast<error_type>(write_factor(*engine(), file));
    } catch (...) {
        return static_cast<error_type>(-1);
    }
}

error_type FEM_factor::load(const char* file) {
    if (!engine() || !file) return static_cast<error_type>(-1);
    try {
        return static_cast<error_type>(read_factor(*engine(), file));
    } catch (const std::bad_alloc&) {
        return error_memory;
    } catch (...) {
        return static_cast<error_type>(-1);
    }
}

}  // namespace fem
}  // namespace orv
