#include <orv/fem/error_type.h>
#include <algorithm>
#include <cmath>

#include "eigen/eigen_settings.h"

namespace orv {
namespace core {
namespace detail {

int start_vectors(dense2D_OOC<double>& T, std::size_t from, const std::vector<double>& mass_diag,
                  const std::vector<double>& dinv, std::mt19937& twister) {
    const std::size_t n = T.rows(), m = T.cols();
    if (from >= m) return 0;
    if (mass_diag.size() != n || dinv.size() != n) return fem::error_data;
    // Column c made resident (null when it cannot be).
    auto column = [&T](std::size_t c) {
        double* p = T.col(c);
        if (!p && T.window(c, 1) == 0) p = T.col(c);
        return p;
    };
    for (std::size_t c = from; c < m; ++c) {
        double* p = column(c);
        if (!p) return fem::error_internal;
        std::fill(p, p + n, 0.0);
    }
    std::vector<double> s(mass_diag);
    const bool any_mass = std::any_of(s.begin(), s.end(), [](double v) { return v != 0.0; });
    std::size_t noisy = from;
    if (any_mass) {
        double* p = column(from);
        if (!p) return fem::error_internal;
        std::copy(s.begin(), s.end(), p);
        for (std::size_t i = 0; i < n; ++i) {
            s[i] *= dinv[i];
            s[i] *= double(twister()) * half_unit_32 + 0.75;
        }
        noisy = from + 1;
        for (; noisy < m; ++noisy) {
            std::size_t k = 0;
            for (std::size_t i = 1; i < n; ++i)
                if (std::fabs(s[i]) > std::fabs(s[k])) k = i;
            if (s[k] == 0.0) break;
            double* q = column(noisy);
            if (!q) return fem::error_internal;
            q[k] = s[k] > 0 ? 1.0 : -1.0;
            s[k] = 0.0;
        }
    }
    const double r = 1.0 / std::sqrt(double(n));
    for (std::size_t c = noisy; c < m; ++c) {
        double* p = column(c);
        if (!p) return fem::error_internal;
        for (std::size_t i = 0; i < n; ++i) p[i] += double(twister()) * (2.0 * r) * unit_32 - r;
    }
    return 0;
}

}  // namespace detail
}  // namespace core
}  // namespace orv
