// Non-linear elastic 1-D laws and the asymmetric plastic pairs.
#include "laws/law_scalar_nl.h"

#include <cfloat>
#include <cmath>

namespace orv {
namespace core {

// --- law_scalar_pow ------------------------------------------------------------------

int law_scalar_pow::normalize(dense1D<double>& data) const {
    if (!check_size(data)) return law_bad_size;
    if (data.size() == 5) return law_ok;
    const double tail[3] = {0.0, -DBL_MAX, DBL_MAX};
    for (double v : tail)
        if (!data.push_back(v)) return law_memory;
    return law_ok;
}

int law_scalar_pow::stress(const law_key& key, double strain, double& stress, double& energy, double& tangent) const {
    dense1D<double> d;
    if (get_element_data(key, d) < 0) {
        tangent = energy = 0.0;
        return law_bad_size;
    }
    const double a = d[0], b = d[1], lower = d[3], upper = d[4], s = strain + d[2];
    if (s > upper)
        tangent = a * std::pow(std::fabs(upper), b);
    else if (s >= lower && s != upper)
        tangent = a * std::pow(std::fabs(s), b);
    stress += s * tangent;
    energy = 0.5 * s * stress;
    return law_ok;
}

int law_scalar_pow::tangent(const law_key& key, double& tangent) const {
    double stress = 0.0, energy = 0.0;
    tangent = 0.0;
    return this->stress(key, 0.0, stress, energy, tangent);
}

// --- force_curve ---------------------------------------------------------------------

bool force_curve::valid(const double* x, std::size_t k) {
    if (k == 0) return false;
    for (std::size_t i = 1; i < k; ++i)
        if (!(x[i] >= x[i - 1])) return false;
    return true;
}

void force_curve::at(double s, double& force, double& energy, double& tangent) const {
    // The force at a point of the curve: flat beyond its ends.
    auto value = [&](double e, std::size_t& piece) {
        if (e <= x[0]) {
            piece = 0;
            return y[0];
        }
        if (e >= x[k - 1]) {
            piece = k;
            return y[k - 1];
        }
        std::size_t i = 1;
        while (x[i] <= e) ++i;  // x[i - 1] <= e < x[i]
        piece = i;
        const double h = x[i] - x[i - 1];
        return h > 0 ? y[i - 1] + (y[i] - y[i - 1]) * (e - x[i - 1]) / h : y[i];
    };
    std::size_t p0 = 0, ps = 0;
    const double f0 = value(0.0, p0);
    force = value(s, ps);
    // The slope of the piece beyond s (away from 0); flat outside the table.
    tangent = 0.0;
    if (ps > 0 && ps < k) {
        std::size_t i = ps;
        if (s < 0 && x[i - 1] == s && i >= 2) --i;  // at a point walked to from above
        const double h = x[i] - x[i - 1];
        tangent = h > 0 ? (y[i] - y[i - 1]) / h : 0.0;
    }
    // The area from 0 to s: trapezia between the points that lie between them.
    const double lo = std::min(0.0, s), hi = std::max(0.0, s);
    double area = 0.0, e = lo, fe = s < 0 ? force : f0;
    for (std::size_t i = 0; i < k; ++i) {
        if (x[i] <= lo || x[i] >= hi) continue;
        area += 0.5 * (fe + y[i]) * (x[i] - e);
        e = x[i];
        fe = y[i];
    }
    area += 0.5 * (fe + (s < 0 ? f0 : force)) * (hi - e);
    energy = s < 0 ? -area : area;
    (void)p0;
}

namespace {

// The curve of the last 2k values of d after `skip` leading ones.
force_curve curve_of(const dense1D<double>& d, std::size_t skip) {
    force_curve c;
    c.k = (d.size() - skip) / 2;
    c.x = d.data() + skip;
    c.y = c.x + c.k;
    return c;
}

}  // namespace

// --- law_scalar_nl -------------------------------------------------------------------

bool law_scalar_nl::check_size(const dense1D<double>& data) const {
    return data.size() >= 2 && data.size() % 2 == 0 && force_curve::valid(data.data(), data.size() / 2);
}

int law_scalar_nl::normalize(dense1D<double>& data) const { return check_size(data) ? law_ok : law_bad_size; }

int law_scalar_nl::stress(const law_key& key, double strain, double& stress, double& energy, double& tangent) const {
    dense1D<double> d;
    if (get_element_data(key, d) < 0) {
        tangent = energy = 0.0;
        return law_bad_size;
    }
    double force = 0.0;
    curve_of(d, 0).at(strain, force, energy, tangent);
    stress += force;
    return law_ok;
}

int law_scalar_nl::tangent(const law_key& key, double& tangent) const {
    double stress = 0.0, energy = 0.0;
    return this->stress(key, 0.0, stress, energy, tangent);
}

// --- law_rod_nl ----------------------------------------------------------------------

bool law_rod_nl::check_size(const dense1D<double>& data) const {
    if (data.size() < 5) return false;
    const std::size_t rod = data.size() % 2 ? 3 : 4;
    return force_curve::valid(data.data() + rod, (data.size() - rod) / 2);
}

int law_rod_nl::normalize(dense1D<double>& data) const {
    if (!check_size(data)) return law_bad_size;
    if (data.size() % 2 == 0) return law_ok;
    // 3 rod values: the reserved fourth goes in as 0.
    dense1D<double> d;
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (i == 3 && !d.push_back(0.0)) return law_memory;
        if (!d.push_back(data[i])) return law_memory;
    }
    data = d;
    return law_ok;
}

int law_rod_nl::stress(const law_key& key, double strain, double& stress, double& energy, double& tangent) const {
    dense1D<double> d;
    if (get_element_data(key, d) < 0) {
        tangent = energy = 0.0;
        return law_bad_size;
    }
    double force = 0.0;
    curve_of(d, 4).at(strain, force, energy, tangent);
    stress += force;
    return law_ok;
}

int law_rod_nl::compute(const law_key& key, double strain, double& D, double& stress, double& energy, double*,
                        unsigned) const {
    return law_rod_nl::stress(key, strain, stress, energy, D);
}

// --- law_scalar_ep_unsym -------------------------------------------------------------

int law_scalar_ep_unsym::stress(const law_key& key, double strain, double& stress, double& energy,
                                double& tangent) const {
    const law_scalar_ep* side = strain < 0 ? compression_.get() : traction_.get();
    if (!side) {
        tangent = energy = 0.0;
        return law_ok;
    }
    return side->stress(key, strain, stress, energy, tangent);
}

int law_scalar_ep_unsym::tangent(const law_key& key, double& tangent) const {
    tangent = 0.0;
    return traction_ ? traction_->tangent(key, tangent) : law_ok;
}

unsigned law_scalar_ep_unsym::nbr_states() const {
    return std::max(traction_ ? traction_->nbr_states() : 0u, compression_ ? compression_->nbr_states() : 0u);
}

void law_scalar_ep_unsym::reset_states() {
    if (traction_) traction_->reset_states();
    if (compression_) compression_->reset_states();
}

int law_scalar_ep_unsym::copy_states(std::uint32_t from_step, std::uint32_t to_step) {
    const int a = traction_ ? traction_->copy_states(from_step, to_step) : law_ok;
    const int b = compression_ ? compression_->copy_states(from_step, to_step) : law_ok;
    return a < 0 ? a : b;
}

double law_scalar_ep_unsym::plasticity(const law_key& key) const {
    return (traction_ ? traction_->plasticity(key) : 0.0) + (compression_ ? compression_->plasticity(key) : 0.0);
}

}  // namespace core
}  // namespace orv
