// Symmetric DOF graph and its reduction to supervariables (groups of DOFs with the
// same closed neighbourhood, typically the DOFs of one node).
#pragma once

#include "orvmath1/dense1D.h"

namespace orv {
namespace core {

// Result of supervariable detection. Supervariable s holds the graph vertices
// super_members[super_ptr[s] .. super_ptr[s + 1]) and is a vertex of the reduced
// graph (xadj, adjncy), whose rows are sorted and hold no self loop.
struct compressed_graph {
    orv::dense1D<unsigned int, 8> xadj;
    orv::dense1D<unsigned int, 8> adjncy;
    orv::dense1D<unsigned int, 8> dof_to_super;  // ~0 for a vertex not yet assigned
    orv::dense1D<unsigned int, 8> super_ptr;
    orv::dense1D<unsigned int, 8> super_members;

    unsigned int nbr_super() const noexcept {
        return super_ptr.size() ? static_cast<unsigned int>(super_ptr.size() - 1) : 0u;
    }
    unsigned int super_size(unsigned int s) const noexcept { return super_ptr[s + 1] - super_ptr[s]; }
    void clear() noexcept {
        xadj.clear_hard();
        adjncy.clear_hard();
        dof_to_super.clear_hard();
        super_ptr.clear_hard();
        super_members.clear_hard();
    }
};

// Builds the symmetric graph of n vertices in which every group is a clique.
// Group g holds the vertices group_ids[group_ptr[g] .. group_ptr[g + 1]), each below
// n, sorted and without duplicates. Rows of the result are sorted, without self loop.
// Returns 0, -101 for a vertex out of range or inconsistent pointers, -199 when
// memory is exhausted.
int build_clique_graph(unsigned int n, const orv::dense1D<unsigned int, 8>& group_ptr,
                       const orv::dense1D<unsigned int, 8>& group_ids, orv::dense1D<unsigned int, 8>& xadj,
                       orv::dense1D<unsigned int, 8>& adjncy);

// Detects supervariables of the graph (xadj, adjncy): vertices whose closed
// neighbourhoods are equal. The graph must be symmetric and without self loops.
// Returns 0 or -199; on failure `out` is left empty.
int compress_graph(const orv::dense1D<unsigned int, 8>& xadj, const orv::dense1D<unsigned int, 8>& adjncy,
                   compressed_graph& out);

}  // namespace core
}  // namespace orv
