#include "fem/conj_gradient.h"

namespace orv {
namespace core {
namespace detail {

double cg_dot(std::size_t n, const double* a, const double* b) {
    double s0 = 0, s1 = 0, s2 = 0, s3 = 0;
    std::size_t i = 0;
    for (; i + 4 <= n; i += 4) {
        s0 += a[i] * b[i];
        s1 += a[i + 1] * b[i + 1];
        s2 += a[i + 2] * b[i + 2];
        s3 += a[i + 3] * b[i + 3];
    }
    for (; i < n; ++i) s0 += a[i] * b[i];
    return (s0 + s1) + (s2 + s3);
}

void cg_axpy(std::size_t n, double alpha, const double* x, double* y) {
    for (std::size_t i = 0; i < n; ++i) y[i] += alpha * x[i];
}

void cg_update_direction(std::size_t n, double beta, const double* z, double* p) {
    if (beta != 0.0) {
        for (std::size_t i = 0; i < n; ++i) p[i] = beta * p[i] + z[i];
    } else {
        for (std::size_t i = 0; i < n; ++i) p[i] += z[i];
    }
}

bool cg_all_zero(std::size_t n, const double* x) {
    for (std::size_t i = 0; i < n; ++i)
        if (x[i] != 0.0) return false;
    return true;
}

}  // namespace detail
}  // namespace core
}  // namespace orv
