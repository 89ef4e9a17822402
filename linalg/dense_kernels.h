// Small dense kernels of the block-skyline matrix and its factorisation, and the
// entry points of the system BLAS that the factorisation uses.
#pragma once

#include <cstddef>

extern "C" {
void dgemm_(const char* transa, const char* transb, const int* m, const int* n, const int* k, const double* alpha,
            const double* a, const int* lda, const double* b, const int* ldb, const double* beta, double* c,
            const int* ldc);
void dtrsm_(const char* side, const char* uplo, const char* transa, const char* diag, const int* m, const int* n,
            const double* alpha, const double* a, const int* lda, double* b, const int* ldb);
}

namespace orv {
namespace core {
namespace kernels {

// Dot product over two plain arrays: 16 products a step, then 4 partial sums in the
// tail.
inline double dot(const double* a, const double* b, std::size_t n) {
    double s[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    std::size_t i = 0;
    for (; i + 16 <= n; i += 16)
        for (int k = 0; k < 16; ++k) s[k] += a[i + k] * b[i + k];
    double t[4] = {0, 0, 0, 0};
    for (; i + 4 <= n; i += 4)
        for (int k = 0; k < 4; ++k) t[k] += a[i + k] * b[i + k];
    for (; i < n; ++i) t[0] += a[i] * b[i];
    double r = 0;
    for (int k = 0; k < 16; ++k) r += s[k];
    return r + ((t[0] + t[1]) + (t[2] + t[3]));
}

// The dot product split over up to n_threads threads when it is long (16385 values
// or more), summed in fixed chunks (the same bits for any thread count); a plain dot
// otherwise.
double dot_parallel(const double* a, const double* b, std::size_t n, int n_threads);

// y += alpha * x
inline void axpy(std::size_t n, double alpha, const double* x, double* y) {
    for (std::size_t i = 0; i < n; ++i) y[i] += alpha * x[i];
}

// C = beta C + alpha op(A) op(B), column major (thin wrappers over the system BLAS).
inline void gemm(char ta, char tb, int m, int n, int k, double alpha, const double* a, int lda, const double* b,
                 int ldb, double beta, double* c, int ldc) {
    if (m <= 0 || n <= 0) return;
    dgemm_(&ta, &tb, &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc);
}
inline void trsm(char side, char uplo, char ta, char diag, int m, int n, double alpha, const double* a, int lda,
                 double* b, int ldb) {
    if (m <= 0 || n <= 0) return;
    dtrsm_(&side, &uplo, &ta, &diag, &m, &n, &alpha, a, &lda, b, &ldb);
}

// Thread count of the system BLAS's own thread pool, when the library offers the
// call (looked up at run time, so that any BLAS links). set returns the old count,
// or 0 when the call is not there.
int blas_set_threads(int n);

}  // namespace kernels
}  // namespace core
}  // namespace orv
