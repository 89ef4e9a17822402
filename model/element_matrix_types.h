// The element matrices and vectors that models hand to assemblers.
#pragma once

#include "linalg/indexed1D.h"
#include "linalg/indexed2D_row.h"
#include "linalg/indexed_sym.h"
#include "linalg/vector_fast.h"
#include "orvmath1/dense1D.h"
#include "orvmath1/dense2D.h"
#include "orvmath1/symmetric_full.h"
#include "orvmath1/symmetric_sparse.h"

namespace orv {
namespace core {

// A list of DOF IDs with its position lookup. Element lists are sorted.
typedef vector_fast<unsigned int> DOF_index;

// A vector of values on DOFs: element vectors, element diagonals, solution vectors.
typedef indexed1D<DOF_index, dense1D<double>> DOF_vector;
// Symmetric element matrix, packed; for a skew matrix the stored (i >= j) triangle is
// K(i, j) and K(j, i) = -K(i, j).
typedef indexed_sym<DOF_index, symmetric_full<double>> element_sym_matrix;
// Symmetric element matrix, compressed (upper triangle by rows); for a skew matrix the
// stored entry (r, c >= r) is K(r, c) and K(c, r) = -K(r, c).
typedef indexed_sym<DOF_index, symmetric_sparse<double>> element_sparse_matrix;
// General element matrix: rows on the DOF list; a square one has its columns on the
// same list.
typedef indexed2D_row<DOF_index, dense2D<double>> element_gen_matrix;

}  // namespace core
}  // namespace orv
