// Hardening curves, committed states and the one-component return map of the
// elasto-plastic laws.
#include "laws/law_hardening_ep.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace orv {
namespace core {

// --- hardening_curve ---------------------------------------------------------

void hardening_curve::set_invalid() {
    kind_ = kind_invalid;
    valid_ = false;
    SY_ = H_ = C_ = k_ = chord_ = 0.0;
    table_.clear();
}

void hardening_curve::set_linear(double E, double ET, double SY) {
    set_invalid();
    if (!(E > 0.0) || !(SY > 0.0) || !(ET >= 0.0) || !(ET <= E) || !std::isfinite(E) || !std::isfinite(SY)) return;
    kind_ = kind_linear;
    valid_ = true;
    SY_ = SY;
    H_ = E == ET ? 0.0 : E * ET / (E - ET);
}

namespace {
bool power_data_valid(double E, double SY, double a, double n) {
    return E > 0.0 && a > 0.0 && SY >= 0.0 && n > 1.0 && std::isfinite(E) && std::isfinite(SY) && std::isfinite(a) &&
           std::isfinite(n);
}
}  // namespace

void hardening_curve::set_power(double E, double SY, double a, double n) {
    set_invalid();
    if (!power_data_valid(E, SY, a, n)) return;
    kind_ = kind_power;
    valid_ = true;
    k_ = 1.0 / n;
    SY_ = SY;
    // With SY = 0 the constant tends to 0 (k < 1); the closed form would give 0 * inf.
    C_ = SY > 0.0 ? SY * std::pow(E / (a * SY), k_) : 0.0;
    chord_ = (SY_ + C_ * std::pow(ep_small_p, k_)) / ep_small_p;
}

void hardening_curve::set_Ramberg_Osgood(double E, double SY, double a, double n) {
    set_invalid();
    if (!power_data_valid(E, SY, a, n)) return;
    kind_ = kind_power;
    valid_ = true;
    k_ = 1.0 / n;
    SY_ = 0.0;
    C_ = std::pow(E / a, k_) * std::pow(SY, 1.0 - k_);
    chord_ = C_ * std::pow(ep_small_p, k_) / ep_small_p;
}

bool hardening_curve::set_piecewise_linear(const double* strains, const double* moduli, std::size_t k) {
    set_invalid();
    if (k == 0) return true;
    const double E0 = moduli[0];
    if (!(E0 > 0.0) || !(strains[0] > 0.0) || !std::isfinite(E0) || !std::isfinite(strains[0])) return true;
    for (std::size_t i = 1; i < k; ++i) {
        if (!(strains[i] > strains[i - 1]) || !(moduli[i] >= 0.0) || !(moduli[i] <= E0) || !std::isfinite(strains[i]))
            return true;
    }
    try {
        table_.resize(3 * k);
    } catch (const std::bad_alloc&) {
        table_.clear();
        return false;
    }
    double p = 0.0, y = strains[0] * E0;
    table_[0] = p;
    table_[1] = y;
    table_[2] = 0.0;
    for (std::size_t i = 1; i < k; ++i) {
        const double de = strains[i] - strains[i - 1];
        const double r = (E0 - moduli[i]) / E0;
        y += de * moduli[i];
        p += de * r;
        table_[3 * i] = p;
        table_[3 * i + 1] = y;
        table_[3 * i + 2] = r != 0.0 ? moduli[i] / r : 0.0;
    }
    kind_ = kind_table;
    valid_ = true;
    return true;
}

void hardening_curve::eval(double p, double& y, double& h) const {
    p = std::fabs(p);
    switch (kind_) {
        case kind_linear:
            y = H_ * p + SY_;
            h = H_;
            return;
        case kind_power: {
            const double pk = std::pow(p, k_);
            y = SY_ + C_ * pk;
            // The derivative is infinite at p = 0: below ep_small_p the slope is the
            // chord from 0 to ep_small_p of the curve, a safe start for the Newton.
            h = p > ep_small_p ? k_ * C_ * pk / p : chord_;
            return;
        }
        case kind_table: {
            const std::size_t rows = table_.size() / 3;
            // Last row whose p is below the asked p (row 0 at the start).
            std::size_t lo = 0, hi = rows;
            while (hi - lo > 1) {
                const std::size_t mid = (lo + hi) / 2;
                if (table_[3 * mid] < p)
                    lo = mid;
                else
                    hi = mid;
            }
            h = lo + 1 < rows ? table_[3 * (lo + 1) + 2] : 0.0;
            y = table_[3 * lo + 1] + h * (p - table_[3 * lo]);
            return;
        }
        default:
            y = 0.0;
            h = ep_largest;
            return;
    }
}

bool hardening_curve::solve(double p_in, double r, double c, double& dp) const {
    if (!valid_ || !(c > 0.0)) return false;
    double y, h;
    eval(p_in, y, h);
    double a = 0.0, fa = r - y;
    if (!(fa > 0.0)) {
        dp = 0.0;
        return fa == 0.0;
    }
    double b = fa / c;
    eval(p_in + b, y, h);
    double fb = r - c * b - y;
    if (fb == 0.0) {
        dp = b;
        return true;
    }
    if (!(fb < 0.0)) return false;
    int side = 0;
    const double tolerance = 1e-13 * r;
    for (unsigned round = 0; round < 200; ++round) {
        const double x = (a * fb - b * fa) / (fb - fa);
        eval(p_in + x, y, h);
        const double fx = r - c * x - y;
        if (std::fabs(fx) <= tolerance || b - a <= 1e-15 * b) {
            dp = x;
            return true;
        }
        if (fx > 0.0) {
            a = x;
            fa = fx;
            if (side > 0) fb *= 0.5;
            side = 1;
        } else {
            b = x;
            fb = fx;
            if (side < 0) fa *= 0.5;
            side = -1;
        }
    }
    return false;
}

// --- ep_state_map ----------------------------------------------------------------

namespace {
constexpr std::size_t npos = static_cast<std::size_t>(-1);

std::size_t hash_of(std::uint32_t element, std::uint32_t point, std::uint32_t slot) {
    return 3u * std::size_t(element) + 5u * std::size_t(point) + 7u * std::size_t(slot);
}

// Locks for the lifetime of the object, when asked.
class scoped_lock {
public:
    scoped_lock(omp_lock_t& lock, bool take) : lock_(take ? &lock : nullptr) {
        if (lock_) omp_set_lock(lock_);
    }
    ~scoped_lock() {
        if (lock_) omp_unset_lock(lock_);
    }
    scoped_lock(const scoped_lock&) = delete;
    scoped_lock& operator=(const scoped_lock&) = delete;

private:
    omp_lock_t* lock_;
};
}  // namespace

ep_state_map::ep_state_map(unsigned record_size) : record_size_(record_size) { omp_init_lock(&lock_); }

ep_state_map::~ep_state_map() { omp_destroy_lock(&lock_); }

std::size_t ep_state_map::find(std::uint32_t element, std::uint32_t point, std::uint32_t slot) const {
    if (count_ == 0) return npos;
    const std::size_t mask = keys_.size() - 1;
    for (std::size_t i = hash_of(element, point, slot) & mask;; i = (i + 1) & mask) {
        if (!used_[i]) return npos;
        const slot_key& k = keys_[i];
        if (k.element == element && k.point == point && k.slot == slot) return i;
    }
}

bool ep_state_map::read(const law_key& key, double* record, bool lock) const {
    scoped_lock guard(lock_, lock);
    const std::size_t i = find(key.element, key.point, key.step % ep_step_slots);
    if (i == npos) {
        std::fill(record, record + record_size_, 0.0);
        return false;
    }
    std::copy(values_.begin() + i * record_size_, values_.begin() + (i + 1) * record_size_, record);
    return true;
}

bool ep_state_map::rebuild(std::size_t capacity, const std::vector<slot_key>& keys, const std::vector<double>& values) {
    std::size_t c = 16;
    while (c < 2 * keys.size() || c < capacity) c *= 2;
    try {
        std::vector<slot_key> k(c);
        std::vector<char> u(c, 0);
        std::vector<double> v(c * record_size_, 0.0);
        const std::size_t mask = c - 1;
        for (std::size_t r = 0; r < keys.size(); ++r) {
            std::size_t i = hash_of(keys[r].element, keys[r].point, keys[r].slot) & mask;
            while (u[i]) i = (i + 1) & mask;
            u[i] = 1;
            k[i] = keys[r];
            std::copy(values.begin() + r * record_size_, values.begin() + (r + 1) * record_size_,
                      v.begin() + i * record_size_);
        }
        keys_.swap(k);
        used_.swap(u);
        values_.swap(v);
        count_ = keys.size();
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

bool ep_state_map::write(const law_key& key, const double* record) {
    scoped_lock guard(lock_, true);
    const std::uint32_t slot = key.step % ep_step_slots;
    std::size_t i = find(key.element, key.point, slot);
    if (i == npos) {
        if (2 * (count_ + 1) > keys_.size()) {
            // Doubling: the records as a list, then a table twice as large.
            try {
                std::vector<slot_key> keys;
                std::vector<double> values;
                keys.reserve(count_);
                values.reserve(count_ * record_size_);
                for (std::size_t j = 0; j < keys_.size(); ++j) {
                    if (!used_[j]) continue;
                    keys.push_back(keys_[j]);
                    values.insert(values.end(), values_.begin() + j * record_size_,
                                  values_.begin() + (j + 1) * record_size_);
                }
                if (!rebuild(2 * keys_.size(), keys, values)) return false;
            } catch (const std::bad_alloc&) {
                return false;
            }
        }
        const std::size_t mask = keys_.size() - 1;
        i = hash_of(key.element, key.point, slot) & mask;
        while (used_[i]) i = (i + 1) & mask;
        used_[i] = 1;
        keys_[i] = slot_key{key.element, key.point, slot};
        ++count_;
    }
    std::copy(record, record + record_size_, values_.begin() + i * record_size_);
    return true;
}

std::size_t ep_state_map::size() const {
    scoped_lock guard(lock_, true);
    return count_;
}

void ep_state_map::clear() {
    scoped_lock guard(lock_, true);
    keys_.clear();
    used_.clear();
    values_.clear();
    count_ = 0;
}

bool ep_state_map::copy_slot(std::uint32_t from, std::uint32_t to) {
    from %= ep_step_slots;
    to %= ep_step_slots;
    if (from == to) return true;
    scoped_lock guard(lock_, true);
    try {
        std::vector<slot_key> keys;
        std::vector<double> values;
        for (std::size_t j = 0; j < keys_.size(); ++j) {
            if (!used_[j] || keys_[j].slot == to) continue;
            const auto first = values_.begin() + j * record_size_, last = first + record_size_;
            keys.push_back(keys_[j]);
            values.insert(values.end(), first, last);
            if (keys_[j].slot == from) {
                keys.push_back(slot_key{keys_[j].element, keys_[j].point, to});
                values.insert(values.end(), first, last);
            }
        }
        return rebuild(keys_.size(), keys, values);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

// --- one-component return map ---------------------------------------------------

bool scalar_return_map(double E, const hardening_curve& curve, double& s, double& p, bool& plastic, double& tangent) {
    const double p_in = std::fabs(p);
    double y, h;
    curve.eval(p_in, y, h);
    const double a = std::fabs(s);
    if (a < y) {
        // Elastic; a point that was loading keeps the loading tangent on the first
        // iteration of a step.
        tangent = plastic && h != ep_largest ? E * h / (E + h) : E;
        return true;
    }
    double dp = 0.0;
    bool converged = false;
    for (unsigned round = 0; round < ep_max_rounds; ++round) {
        if (h == ep_largest) break;
        const double d = (a - y - E * dp) / (E + h);
        dp += d;
        curve.eval(p_in + dp, y, h);
        converged = std::fabs(dp) * ep_tolerance >= std::fabs(d);
        if (converged) break;
    }
    if (!converged && h != ep_largest && curve.solve(p_in, a, E, dp)) {
        curve.eval(p_in + dp, y, h);
        converged = true;
    }
    if (!converged) return false;
    p = p_in + dp;
    s = s > 0.0 ? y : -y;
    tangent = E * h / (E + h);
    plastic = true;
    return true;
}

int scalar_ep_compute(ep_state_map& map, const hardening_curve& curve, double E, double max_strain, double max_stress,
                      const law_key& key, double strain, double& tangent, double& stress, double& energy,
                      double* states, unsigned flags) {
    const bool commit = (flags & law_commit) != 0;
    double record[3];
    map.read(key, record, commit);
    const double p0 = record[2];
    energy = 0.0;
    if (std::fabs(p0) == ep_largest) {
        // A broken point carries nothing until the states are reset.
        tangent = stress = 0.0;
        states[0] = strain;
        states[1] = ep_largest;
        return law_ok;
    }
    if (!(E > 0.0)) {
        tangent = 0.0;
        return law_bad_size;
    }
    const double initial = stress;
    const double trial = record[1] + E * (strain - record[0]) + initial;
    double s = trial, p = std::fabs(p0), t = E;
    bool plastic = (flags & law_first_iteration) != 0 && p0 > 0.0;
    const bool ok = scalar_return_map(E, curve, s, p, plastic, t);
    if (!ok) {
        // The caller keeps nothing from the map: the elastic trial stands. A curve
        // that cannot be used never yields; a valid one that did not converge fails.
        s = trial;
        t = E;
        p = std::fabs(p0);
        plastic = false;
        if (curve.valid()) {
            stress = s;
            tangent = t;
            states[0] = 0.0;
            states[1] = p;
            return law_not_converged;
        }
    }
    if (std::fabs(strain) >= max_strain || std::fabs(s) >= max_stress) {
        s = t = 0.0;
        p = ep_largest;
    }
    stress = s;
    tangent = t;
    const double elastic = s / E;
    energy = 0.5 * elastic * s;
    states[0] = strain - elastic;
    states[1] = p;
    if (commit && p != 0.0) {
        const bool loading = plastic || p > std::fabs(p0);
        const double out[3] = {strain, s - initial, loading ? p : -p};
        if (!map.write(key, out)) return law_memory;
    }
    return law_ok;
}

}  // namespace core
}  // namespace orv
