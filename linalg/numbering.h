// Fill-reducing numbering of the free DOFs: orderings of a compressed graph, the
// elimination-tree postorder, the DOF-level pattern and the numbering driver.
#pragma once

#include "linalg/block_profile.h"
#include "linalg/block_profile_build.h"
#include "linalg/compressed_graph.h"
#include "linalg/vector_fast.h"
#include "orvmath1/dense1D.h"
#include "orvmath1/symmetric_sparse.h"

namespace orv {
namespace core {

// Numbering modes. 0: identity shuffled by an MT19937 seeded with 1; 4: METIS nested
// dissection; 5: mode 4 then postorder of the elimination tree. Modes 1 to 3 are not
// provided (-101). A mode above 5 leaves the identity.
enum numbering_mode : unsigned int {
    numbering_shuffle = 0,
    numbering_nested_dissection = 4,
    numbering_nested_dissection_postordered = 5
};

// Orders the graph (xadj, adjncy) (symmetric, no self loop). `weights` has one entry
// per vertex to be used as METIS vertex weights; of any other length it is ignored.
// On success perm maps a position to a vertex and iperm a vertex to its position.
// Returns 0, -101 (unknown mode, bad graph), -199 (memory) or -200 (METIS failure).
int compute_numbering(unsigned int mode, const orv::dense1D<unsigned int, 8>& xadj,
                      const orv::dense1D<unsigned int, 8>& adjncy, const orv::dense1D<unsigned int, 8>& weights,
                      orv::dense1D<unsigned int, 8>& perm, orv::dense1D<unsigned int, 8>& iperm);

// Elimination tree of the graph in the order perm, by Liu's algorithm with path
// compression: parent[k] is the position of the parent of position k, ~0 for a root.
int compute_elimination_tree(const orv::dense1D<unsigned int, 8>& xadj, const orv::dense1D<unsigned int, 8>& adjncy,
                             const orv::dense1D<unsigned int, 8>& perm, const orv::dense1D<unsigned int, 8>& iperm,
                             orv::dense1D<unsigned int, 8>& parent);

// Renumbers (perm, iperm) so that every subtree of the elimination tree is contiguous
// (children in ascending order, each subtree before its root).
int postorder_numbering(const orv::dense1D<unsigned int, 8>& xadj, const orv::dense1D<unsigned int, 8>& adjncy,
                        orv::dense1D<unsigned int, 8>& perm, orv::dense1D<unsigned int, 8>& iperm);

// Upper triangle by rows of the DOF-level pattern of the matrix in elimination order:
// row r holds r, the later DOFs of its supervariable and all DOFs of the later
// neighbour supervariables. `g` is the compressed graph, perm/iperm its order.
int build_DOF_pattern(const compressed_graph& g, const orv::dense1D<unsigned int, 8>& perm,
                      const orv::dense1D<unsigned int, 8>& iperm, orv::dense1D<unsigned int, 8>& pointers,
                      orv::dense1D<unsigned int, 8>& columns);

// Everything the numbering produces for one matrix pattern.
struct numbering_output {
    orv::dense1D<block_profile, 8> blocks;  // DOF-level block profile
    block_profile_totals totals;
    orv::symmetric_sparse<double> pattern;  // filled with 0.0; only when asked for
    void clear() noexcept {
        blocks.clear_hard();
        totals = block_profile_totals();
        pattern = orv::symmetric_sparse<double>();
    }
};

// The numbering driver. The element DOF groups come as compressed lists: group g holds
// the DOF IDs group_IDs[group_ptr[g] .. group_ptr[g + 1]); IDs that are not in
// `free_DOFs` are dropped. On success `free_DOFs` is rewritten so that the position of
// a DOF equals its number in the elimination order, and `out` holds the block profile
// and its totals (and the DOF pattern when `with_pattern`). Every output is cleared
// on entry. Returns 0, -101 (inconsistent lists), -199 (memory; also a saturated
// profile) or -200 (ordering failure).
int number_free_DOFs(const orv::dense1D<unsigned int, 8>& group_ptr, const orv::dense1D<unsigned int, 8>& group_IDs,
                     vector_fast<unsigned int>& free_DOFs, numbering_output& out, bool with_pattern = true,
                     unsigned int mode = numbering_nested_dissection_postordered,
                     unsigned int limit = block_profile_limit);

}  // namespace core
}  // namespace orv
