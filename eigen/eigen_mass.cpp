#include "eigen/eigen_mass.h"

#include <algorithm>
#include <new>

#include <orv/fem/error_type.h>

#include "eigen/eigen_kernels.h"

namespace orv {
namespace core {

void skyline_mass::diagonal(double* d) const {
    std::fill(d, d + M_.dimension(), 0.0);
    eigen_kernels::diagonal(M_, d);
}

void skyline_mass::mult_add(const double* X, std::size_t ldx, double* Y, std::size_t ldy, std::size_t n_columns,
                            int n_threads) const {
    M_.mult_add(1.0, X, ldx, Y, ldy, n_columns, n_threads);
}

int sparse_mass::init(const orv::symmetric_sparse<double>& M, const unsigned* positions, std::size_t n_factor) {
    M_ = orv::symmetric_sparse<double>();
    pos_.clear();
    n_ = 0;
    if (!M.is_valid() || (M.dim() && !positions)) return fem::error_data;
    for (std::size_t i = 0; i < M.dim(); ++i)
        if (positions[i] != npos && positions[i] >= n_factor) return fem::error_data;
    try {
        pos_.assign(positions, positions + M.dim());
    } catch (const std::bad_alloc&) {
        return fem::error_memory;
    }
    M_ = M;
    n_ = n_factor;
    return fem::no_error;
}

void sparse_mass::diagonal(double* d) const {
    std::fill(d, d + n_, 0.0);
    const unsigned* p = M_.pointers().data();
    const unsigned* c = M_.columns().data();
    for (std::size_t r = 0; r < pos_.size(); ++r)
        if (pos_[r] != npos && p[r] < p[r + 1] && c[p[r]] == r) d[pos_[r]] = M_[p[r]];
}

void sparse_mass::column_product(const double* x, double* y) const {
    const unsigned* p = M_.pointers().data();
    const unsigned* c = M_.columns().data();
    const double* v = M_.data();
    for (std::size_t r = 0; r < pos_.size(); ++r) {
        const unsigned pr = pos_[r];
        if (pr == npos) continue;
        double sum = 0.0;
        const double xr = x[pr];
        for (unsigned k = p[r]; k < p[r + 1]; ++k) {
            const unsigned pc = pos_[c[k]];
            if (pc == npos) continue;
            sum += v[k] * x[pc];
            if (c[k] != r) y[pc] += v[k] * xr;
        }
        y[pr] += sum;
    }
}

void sparse_mass::mult_add(const double* X, std::size_t ldx, double* Y, std::size_t ldy, std::size_t n_columns,
                           int n_threads) const {
    // Columns are independent: a parallel loop over them gives the same bits as a
    // serial one.
    const long nc = long(n_columns);
    if (n_threads < 1) n_threads = 1;
    const bool parallel = n_threads > 1 && nc > 1 && double(nc) * double(n_) * double(n_) > 32.0;
#pragma omp parallel for schedule(static) num_threads(n_threads) if (parallel)
    for (long j = 0; j < nc; ++j) column_product(X + std::size_t(j) * ldx, Y + std::size_t(j) * ldy);
}

}  // namespace core
}  // namespace orv
