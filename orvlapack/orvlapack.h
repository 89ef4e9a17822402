// The two LAPACK routines the library calls, behind a thin C++ layer so that the
// rest of the code never spells a Fortran calling convention.
#pragma once

#include <complex>

namespace orv {
namespace lapack {

// Eigenvalues (and, with jobz 'V', eigenvectors) of a symmetric matrix in packed
// storage. info receives LAPACK's INFO.
void dspev(char jobz, char uplo, long n, double* ap, double* w, double* z, long ldz, double* work, long& info);

// Solves A X = B for a general complex matrix by LU with partial pivoting.
void zgesv(long n, long nrhs, std::complex<double>* a, long lda, long* ipiv, std::complex<double>* b, long ldb,
           long& info);

}  // namespace lapack
}  // namespace orv
