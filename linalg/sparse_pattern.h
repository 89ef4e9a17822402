// Upper-triangle pattern of a sparse symmetric matrix from groups of coupled DOFs.
#pragma once

#include <cstddef>
#include <cstdint>

#include "linalg/vector_fast.h"
#include "orvmath1/dense1D.h"
#include "orvmath1/symmetric_sparse.h"

namespace orv {
namespace core {

// Group g holds the IDs ids[ptr[g] .. ptr[g + 1]); the DOFs of a group are coupled
// with one another. IDs the index lacks are dropped; every row of the index has its
// diagonal. The pattern is on the positions of the index.

// Number of entries of the pattern (diagonal included). Throws std::bad_alloc.
std::uint64_t count_sparse_pattern(const dense1D<unsigned int, 8>& ptr, const dense1D<unsigned int, 8>& ids,
                                   const vector_fast<unsigned int>& index);

// The pattern itself, every value 0. Throws std::bad_alloc.
void build_sparse_pattern(const dense1D<unsigned int, 8>& ptr, const dense1D<unsigned int, 8>& ids,
                          const vector_fast<unsigned int>& index, symmetric_sparse<double>& out);

}  // namespace core
}  // namespace orv
