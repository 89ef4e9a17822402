// Building the block profile of the factor from an ordered graph: first-neighbour
// heights, blocks at supervariable level with their symbolic fill, conversion to DOF
// level, totals and the report lines.
#pragma once

#include <cstdint>

#include "linalg/block_profile.h"
#include "orvmath1/dense1D.h"

namespace orv {
namespace core {

// Most supervariables in one block.
const unsigned int block_profile_limit = 600;

// Log callback of a run: (pass_thru, level, text).
typedef void (*profile_log_hook)(void* pass_thru, unsigned int level, const char* text);

struct block_profile_totals {
    std::uint64_t dimension = 0;  // sum of the blocks' columns
    std::uint64_t nbr_blocks = 0;
    std::uint64_t nbr_segments = 0;        // own and extra segments of all blocks
    std::uint64_t profile = 0;             // stored values, diagonal included
    std::uint64_t max_extra_segments = 0;  // largest number of extra segments of a block
    std::uint64_t max_block_bytes = 0;     // largest (values + 2 * segments) * 8
};

// h[i] = i - (lowest position among the neighbours of perm[i] and i itself).
// perm maps a position to a vertex, iperm a vertex to its position.
int compute_first_neighbour_heights(const orv::dense1D<unsigned int, 8>& xadj,
                                    const orv::dense1D<unsigned int, 8>& adjncy,
                                    const orv::dense1D<unsigned int, 8>& perm,
                                    const orv::dense1D<unsigned int, 8>& iperm, orv::dense1D<unsigned int, 8>& heights);

// Blocks at vertex (supervariable) level, columns and heights in positions of the
// order, with the symbolic fill between blocks. `sizes[v]` is the number of DOFs of
// vertex v. At most `limit` vertices a block. Returns 0, -101 on inconsistent input
// or -199.
int build_node_block_profile(const orv::dense1D<unsigned int, 8>& xadj, const orv::dense1D<unsigned int, 8>& adjncy,
                             const orv::dense1D<unsigned int, 8>& perm, const orv::dense1D<unsigned int, 8>& iperm,
                             const orv::dense1D<unsigned int, 8>& sizes, unsigned int limit,
                             orv::dense1D<block_profile, 8>& blocks);

// Expands a vertex-level profile to DOFs: vertex position k holds the DOF numbers
// offset[k] .. offset[k + 1) with offset the running sum of sizes[perm[k]].
int convert_block_profile_to_DOFs(const orv::dense1D<block_profile, 8>& node_blocks,
                                  const orv::dense1D<unsigned int, 8>& perm, const orv::dense1D<unsigned int, 8>& sizes,
                                  orv::dense1D<block_profile, 8>& DOF_blocks);

// Totals of a DOF-level profile. -199 when the profile or a block's bytes saturate
// 64 bits (the totals then hold the saturated values).
int compute_block_profile_totals(const orv::dense1D<block_profile, 8>& blocks, block_profile_totals& totals);

// The size table at log level 2, up to "symbolic fill-ins" (only "dimension" to "max
// extra segments" for a dimension of 0). A null hook does nothing.
void report_block_profile(const block_profile_totals& totals, profile_log_hook hook, void* pass_thru);

// The lines that follow once the matrix holds its values and all its blocks are in
// core; `zeros` is the number of stored entries that are exactly 0.0.
void report_numerical_fill(const block_profile_totals& totals, std::uint64_t zeros, profile_log_hook hook,
                           void* pass_thru);

}  // namespace core
}  // namespace orv
