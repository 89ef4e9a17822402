#include "linalg/small_dense.h"

#include <cmath>
#include <utility>

namespace orv {
namespace core {

bool invert_small(std::vector<double>& a, std::size_t n) {
    std::vector<double> inv(n * n, 0.0);
    for (std::size_t i = 0; i < n; ++i) inv[i + i * n] = 1.0;
    for (std::size_t k = 0; k < n; ++k) {
        std::size_t p = k;
        for (std::size_t i = k + 1; i < n; ++i)
            if (std::fabs(a[i + k * n]) > std::fabs(a[p + k * n])) p = i;
        const double pivot = a[p + k * n];
        if (!(std::fabs(pivot) > 0.0) || !std::isfinite(pivot)) return false;
        if (p != k)
            for (std::size_t j = 0; j < n; ++j) {
                std::swap(a[k + j * n], a[p + j * n]);
                std::swap(inv[k + j * n], inv[p + j * n]);
            }
        for (std::size_t j = 0; j < n; ++j) {
            a[k + j * n] /= pivot;
            inv[k + j * n] /= pivot;
        }
        for (std::size_t i = 0; i < n; ++i) {
            if (i == k) continue;
            const double f = a[i + k * n];
            if (f == 0.0) continue;
            for (std::size_t j = 0; j < n; ++j) {
                a[i + j * n] -= f * a[k + j * n];
                inv[i + j * n] -= f * inv[k + j * n];
            }
        }
    }
    a.swap(inv);
    return true;
}

}  // namespace core
}  // namespace orv
