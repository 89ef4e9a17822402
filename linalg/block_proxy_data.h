// Shared state of a block-skyline matrix: its memory, its resident window of blocks
// and the symbolic totals. Copies of the matrix share one proxy.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "linalg/OOC_mgr.h"
#include "linalg/symmetric_skyline_block.h"
#include "orvmath1/dense1D.h"
#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// One postponed addition into a block that is not resident: the values
// pending_values[start, end) go to row `row` of block `block`, at the columns
// pending_indices[start, end).
struct pending_record {
    std::uint64_t block;
    std::uint64_t row;
    std::uint64_t start;
    std::uint64_t end;
};

template <class B>
class block_proxy_data;

// Ownership: `buffer` owns every value of the matrix that is in memory; blocks'
// `values` are sub-views of `resident_values`, itself a sub-view of `buffer`, and
// their segment tables are sub-views of `segment_store`. The proxy lives as long as
// a matrix (or a factor) or a sweep over its blocks refers to it.
template <class T>
class block_proxy_data<symmetric_skyline_block<T>> : public ref_counted {
public:
    typedef symmetric_skyline_block<T> block_type;
    typedef typename block_type::segment_type segment_type;

    orv::dense1D<T, 8> buffer;
    orv::dense1D<T, 8> resident_values;
    orv::dense1D<T, 8> pending_values;
    orv::dense1D<segment_type, 8> segment_store;
    std::uint64_t budget_bytes = 0;
    std::uint64_t n_blocks = 0;
    std::uint64_t first_resident = 0;
    orv::dense1D<block_type, 8> resident;
    std::uint64_t n_resident = 0;
    orv::dense1D<unsigned int, 8> pending_indices;
    orv::dense1D<pending_record, 8> pending_list;
    int file = -1;
    std::string file_name;
    bool assembly_closed = true;
    std::uint64_t total_bytes = 0;
    std::uint64_t profile = 0;
    std::uint64_t nbr_segments = 0;
    std::uint64_t max_extra_segments = 0;
    orv::dense1D<std::uint64_t, 8> segment_offsets;
    orv::dense1D<std::uint64_t, 8> value_offsets;
    orv::dense1D<std::uint64_t, 8> n_own_table;
    std::vector<bool> ever_written;
    T fill_value = T();
    Ptr<OOC_mgr> mgr;

    bool all_resident() const noexcept { return n_resident == n_blocks; }
    // Resident block b (b in [first_resident, first_resident + n_resident)).
    block_type& block(std::uint64_t b) noexcept { return resident[std::size_t(b - first_resident)]; }
    const block_type& block(std::uint64_t b) const noexcept { return resident[std::size_t(b - first_resident)]; }
};

}  // namespace core
}  // namespace orv
