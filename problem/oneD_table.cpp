// One-variable table.
#include "problem/oneD_table.h"

#include <cmath>

#include "problem/evolution_func.h"

namespace orv {
namespace fem {

oneD_table::oneD_table(double c) {
    if (!std::isfinite(c) || !x_.resize(1, 0.0) || !y_.resize(1, c)) {
        x_.clear_hard();
        y_.clear_hard();
    }
}

oneD_table::oneD_table(const dense1D<double>& x, const dense1D<double>& y) { init(x, y); }

namespace {
bool all_finite(const dense1D<double>& v) {
    for (std::size_t i = 0; i < v.size(); ++i)
        if (!std::isfinite(v[i])) return false;
    return true;
}
}  // namespace

bool oneD_table::init(const dense1D<double>& x, const dense1D<double>& y) {
    // A NaN or an infinity would spread into every reading of the table.
    if (!all_finite(x) || !all_finite(y)) {
        x_.clear_hard();
        y_.clear_hard();
        return false;
    }
    // Fresh storage, so that the table never shares with the caller's lists.
    dense1D<double> nx, ny;
    if (!nx.copy(x) || !ny.copy(y)) {
        x_.clear_hard();
        y_.clear_hard();
        return false;
    }
    x_ = nx;
    y_ = ny;
    return true;
}

double oneD_table::operator()(double x) const {
    if (x_.empty() || y_.empty()) return 0.0;
    std::size_t k;
    double w;
    core::detail::locate(x_.data(), x_.size(), x, k, w);
    if (k >= y_.size()) return y_[y_.size() - 1];
    const double y0 = y_[k];
    const double y1 = k + 1 < y_.size() ? y_[k + 1] : y0;
    return y0 + (y1 - y0) * w;
}

dense1D<double> oneD_table::operator()(const dense1D<double>& x) const {
    dense1D<double> r;
    if (!r.resize(x.size())) return dense1D<double>();
    for (std::size_t i = 0; i < x.size(); ++i) r[i] = (*this)(x[i]);
    return r;
}

}  // namespace fem
}  // namespace orv
