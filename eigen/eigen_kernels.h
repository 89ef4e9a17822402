// Column passes of the eigen solvers over blocks of vectors. Every pass visits the
// columns of a dense2D_OOC in storage order, one run of resident columns at a time,
// so that a block of vectors partly on disk costs one sweep per pass.
#pragma once

#include <cstddef>
#include <cstdint>

#include "eigen/eigen_mass.h"
#include "linalg/dense2D_OOC.h"
#include "linalg/symmetric_L_D_Lt.h"
#include "orvmath1/dense1D.h"
#include "orvmath1/dense2D.h"

namespace orv {
namespace core {
namespace eigen_kernels {

// Resident columns [c, c + n) of a matrix: the first column's address and the
// distance between columns.
struct column_run {
    double* p = nullptr;
    std::size_t ld = 0;
    std::size_t n = 0;
};

// Makes as many columns from c resident as the matrix can hold and describes them.
// Returns 0, or the code of the failed transfer (-200 when not even column c can be
// had).
int resident_run(dense2D_OOC<double>& A, std::size_t c, column_run& run);

// X := K^-1 X, all columns through the factor's many-column solve.
int solve_columns(const skyline_factor& K, dense2D_OOC<double>& X, int n_threads);

// Y := M X (Y has the shape of X). A product of at most 32 in columns * dim^2 runs on
// one thread.
int mass_product(const eigen_mass_operator& M, dense2D_OOC<double>& X, dense2D_OOC<double>& Y, int n_threads);

// packed[(i + 1) * i / 2 + j] = X_i . Y_j for j <= i: the lower triangle of X^T Y,
// packed by rows (the layout of symmetric_full).
int cross_packed(dense2D_OOC<double>& X, dense2D_OOC<double>& Y, double* packed);

// B := A Q, B of A's rows and Q's columns (Q has A's column count as rows).
int combine(dense2D_OOC<double>& A, const orv::dense2D<double>& Q, dense2D_OOC<double>& B);

// B := A, column by column (same shape).
int copy_columns(dense2D_OOC<double>& A, dense2D_OOC<double>& B);

// The stored diagonal of a block-skyline matrix: of a factor, the inverse pivots 1 / D.
int diagonal(const symmetric_hybrid_OOC<double>& M, double* d);

}  // namespace eigen_kernels
}  // namespace core
}  // namespace orv
