#include "eigen/eigen_kernels.h"
#include <orv/fem/error_type.h>

#include <algorithm>

#include "linalg/dense_kernels.h"

namespace orv {
namespace core {
namespace eigen_kernels {

int resident_run(dense2D_OOC<double>& A, std::size_t c, column_run& run) {
    run = column_run();
    if (c >= A.cols()) return fem::error_data;
    // The whole rest first; a matrix that cannot hold it gives at least column c.
    if (A.window(c, A.cols() - c) != 0) {
        const int rc = A.window(c, 1);
        if (rc) return rc;
    }
    run.p = A.col(c);
    if (!run.p) return fem::error_internal;
    std::size_t n = 1;
    while (c + n < A.cols() && A.col(c + n)) ++n;
    run.n = n;
    run.ld = n > 1 ? std::size_t(A.col(c + 1) - run.p) : A.rows();
    return 0;
}

int solve_columns(const skyline_factor& K, dense2D_OOC<double>& X, int n_threads) {
    for (std::size_t c = 0; c < X.cols();) {
        column_run r;
        const int rc = resident_run(X, c, r);
        if (rc) return rc;
        if (r.n == 1)
            K.solve(r.p, n_threads);
        else
            K.solve(r.p, r.ld, r.n, n_threads);
        c += r.n;
    }
    return 0;
}

int mass_product(const eigen_mass_operator& M, dense2D_OOC<double>& X, dense2D_OOC<double>& Y, int n_threads) {
    const std::size_t n = X.rows();
    if (Y.rows() != n || Y.cols() != X.cols() || M.dimension() != n) return fem::error_data;
    for (std::size_t c = 0; c < X.cols();) {
        column_run rx, ry;
        int rc = resident_run(X, c, rx);
        if (rc) return rc;
        rc = resident_run(Y, c, ry);
        if (rc) return rc;
        // Column c of X may have moved out while Y was brought in.
        rc = resident_run(X, c, rx);
        if (rc) return rc;
        const std::size_t k = std::min(rx.n, ry.n);
        for (std::size_t j = 0; j < k; ++j) std::fill(ry.p + j * ry.ld, ry.p + j * ry.ld + n, 0.0);
        const int threads = double(k) * double(n) * double(n) <= 32.0 ? 1 : n_threads;
        M.mult_add(rx.p, rx.ld, ry.p, ry.ld, k, threads);
        c += k;
    }
    return 0;
}

int cross_packed(dense2D_OOC<double>& X, dense2D_OOC<double>& Y, double* packed) {
    const std::size_t n = X.rows(), m = X.cols();
    if (Y.rows() != n || Y.cols() != m) return fem::error_data;
    for (std::size_t i = 0; i < m;) {
        column_run rx;
        int rc = resident_run(X, i, rx);
        if (rc) return rc;
        const std::size_t i_end = i + rx.n;
        // For the run of X, one sweep over the columns of Y that it meets.
        for (std::size_t j = 0; j < i_end;) {
            column_run ry;
            rc = resident_run(Y, j, ry);
            if (rc) return rc;
            rc = resident_run(X, i, rx);
            if (rc) return rc;
            const std::size_t j_end = std::min(j + ry.n, i_end);
            for (std::size_t a = i; a < std::min(i + rx.n, i_end); ++a) {
                const double* xa = rx.p + (a - i) * rx.ld;
                for (std::size_t b = j; b < std::min(j_end, a + 1); ++b)
                    packed[(a + 1) * a / 2 + b] = kernels::dot(xa, ry.p + (b - j) * ry.ld, n);
            }
            j = j_end;
        }
        i = i_end;
    }
    return 0;
}

int combine(dense2D_OOC<double>& A, const orv::dense2D<double>& Q, dense2D_OOC<double>& B) {
    const std::size_t n = A.rows();
    if (B.rows() != n || Q.rows() != A.cols() || B.cols() != Q.cols()) return fem::error_data;
    for (std::size_t jb = 0; jb < B.cols();) {
        column_run rb;
        int rc = resident_run(B, jb, rb);
        if (rc) return rc;
        for (std::size_t j = 0; j < rb.n; ++j) std::fill(rb.p + j * rb.ld, rb.p + j * rb.ld + n, 0.0);
        for (std::size_t ka = 0; ka < A.cols();) {
            column_run ra;
            rc = resident_run(A, ka, ra);
            if (rc) return rc;
            rc = resident_run(B, jb, rb);
            if (rc) return rc;
            kernels::gemm('N', 'N', int(n), int(rb.n), int(ra.n), 1.0, ra.p, int(ra.ld), Q.col(jb) + ka, int(Q.ld()),
                          1.0, rb.p, int(rb.ld));
            ka += ra.n;
        }
        jb += rb.n;
    }
    return 0;
}

int copy_columns(dense2D_OOC<double>& A, dense2D_OOC<double>& B) {
    const std::size_t n = A.rows();
    if (B.rows() != n || B.cols() != A.cols()) return fem::error_data;
    for (std::size_t c = 0; c < A.cols(); ++c) {
        column_run ra, rb;
        int rc = resident_run(A, c, ra);
        if (rc) return rc;
        rc = resident_run(B, c, rb);
        if (rc) return rc;
        const double* a = A.col(c);
        if (!a) return fem::error_internal;
        std::copy(a, a + n, rb.p);
    }
    return 0;
}

int diagonal(const symmetric_hybrid_OOC<double>& M, double* d) {
    return M.for_each_block(true, [&](std::uint64_t, const symmetric_skyline_block<double>& blk) {
        const std::size_t f = blk.first();
        std::copy(blk.diag(), blk.diag() + blk.n_own, d + f);
        return 0;
    });
}

}  // namespace eigen_kernels
}  // namespace core
}  // namespace orv
