// Evolution function kinds.
#include "problem/evolution_func.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orv {
namespace core {

namespace detail {

void locate(const double* abscissas, std::size_t n, double t, std::size_t& k, double& w) {
    // First position p with abscissas[p] >= t, by bisection.
    const double* first = std::lower_bound(abscissas, abscissas + n, t);
    const std::size_t p = static_cast<std::size_t>(first - abscissas);
    k = p > 0 ? p - 1 : 0;
    w = 0.0;
    if (k + 1 < n) {
        const double length = abscissas[k + 1] - abscissas[k];
        // A repeated abscissa would divide by zero: its segment is a jump, and the
        // value before the jump is the one returned.
        if (length != 0.0) w = (t - abscissas[k]) / length;
    }
}

}  // namespace detail

double evolution_func_constant::val(double) const { return c_; }

double evolution_func_linear::val(double t) const { return a_ * t; }

double evolution_func_sinus::val(double t) const { return std::sin(omega_ * t + phi_); }

evolution_func_triangle::evolution_func_triangle(double t0, double width)
    : t0_(t0), slope_(width > 0.0 ? -2.0 / width : -std::numeric_limits<double>::max()) {}

double evolution_func_triangle::val(double t) const { return std::max(0.0, 1.0 + slope_ * std::fabs(t - t0_)); }

evolution_func_trapeze::evolution_func_trapeze(double t1, double t2, double v1, double v2)
    : t1_(t1), t2_(t2), a_(0.0), b_(0.0) {
    if (t1 < t2) {
        const double s = 1.0 / (t2 - t1);
        a_ = (v2 - v1) * s;
        b_ = (t2 * v1 - t1 * v2) * s;
    }
}

double evolution_func_trapeze::val(double t) const {
    if (t1_ <= t && t < t2_) return a_ * t + b_;
    return 0.0;
}

double evolution_func_discret::val(double t) const {
    if (times_.empty() || values_.empty()) return 0.0;
    std::size_t k;
    double w;
    detail::locate(times_.data(), times_.size(), t, k, w);
    // Fewer values than times: the last value holds past the end of the values.
    if (k >= values_.size()) return values_.back();
    if (k + 1 < values_.size()) return values_[k] + (values_[k + 1] - values_[k]) * w;
    return values_[k];
}

double evolution_func_sum::val(double t) const {
    const std::size_t n = std::min(terms_.size(), coefficients_.size());
    double s = 0.0;
    for (std::size_t i = 0; i < n; ++i) s += coefficients_[i] * (terms_[i] ? terms_[i]->val(t) : 1.0);
    return s;
}

double evolution_func_mult::val(double t) const {
    if (factors_.empty()) return 0.0;
    double p = 1.0;
    for (const auto& f : factors_)
        if (f) p *= f->val(t);
    return p;
}

}  // namespace core
}  // namespace orv
