// Pivot policies of the LDLt factorisation: what counts as a bad pivot, what is done
// with it, and the range of pivots seen.
#pragma once

#include <orv/fem/error_type.h>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <random>
#include <utility>

#include "orvmath1/ref_counted.h"

namespace orvstd {

template <class T>
struct less {
    bool operator()(const T& a, const T& b) const { return a < b; }
};
template <class T>
struct less_equal {
    bool operator()(const T& a, const T& b) const { return a <= b; }
};
// A binary predicate with its second argument bound to a value.
template <class Op>
struct binder2nd {
    Op op;
    double value;
    binder2nd(const Op& o, double v) : op(o), value(v) {}
    bool operator()(double x) const { return op(x, value); }
};
template <class Op>
binder2nd<Op> bind2nd(const Op& op, double v) {
    return binder2nd<Op>(op, v);
}

}  // namespace orvstd

namespace orv {
namespace core {

// Lowest (first) and highest (second) value shown, with their positions (~0 for
// none). A NaN is kept as the lowest value, so that the range shows it.
template <class T>
class recorder_range2 : public std::pair<T, T>, public ref_counted {
public:
    std::size_t first_position = ~std::size_t(0);
    std::size_t second_position = ~std::size_t(0);

    recorder_range2() : std::pair<T, T>(1.7976931348623157e+308, -1.7976931348623157e+308) {}
    void reset_range() {
        this->first = 1.7976931348623157e+308;
        this->second = -1.7976931348623157e+308;
        first_position = second_position = ~std::size_t(0);
    }
    void record(T v, std::size_t position) {
        if (std::isnan(v)) {
            if (!std::isnan(this->first)) {
                this->first = v;
                first_position = position;
            }
            return;
        }
        if (v < this->first) {
            this->first = v;
            first_position = position;
        }
        if (v > this->second) {
            this->second = v;
            second_position = position;
        }
    }
};

// Where pivot messages go: the run (through its log) or nowhere.
// A verboser offers verbose(level, text).
struct dummy_verboser {
    void verbose(unsigned, const char*) {}
};

// A verboser over a log callback (pass_thru, level, text); a null hook is silent.
struct hook_verboser {
    typedef void (*hook_type)(void*, unsigned, const char*);
    hook_type hook = nullptr;
    void* pass_thru = nullptr;
    hook_verboser() = default;
    hook_verboser(hook_type h, void* p) : hook(h), pass_thru(p) {}
    void verbose(unsigned level, const char* text) {
        if (hook) hook(pass_thru, level, text);
    }
};

// Base of the checkers. A checker offers `bool check(double& pivot, size_t position)`:
// it records the pivot as found in the range, may replace it, and returns false when
// the factorisation must stop (-107). The factorisation serialises the calls.
template <class V>
class pivot_checker_base : public recorder_range2<double> {
public:
    // Position of the first rejected (bad) pivot, ~0 for none.
    std::size_t first_rejected = ~std::size_t(0);
    V* verboser = nullptr;

    explicit pivot_checker_base(V* v = nullptr) : verboser(v) {}
    virtual ~pivot_checker_base() = default;
    void reset() {
        reset_range();
        first_rejected = ~std::size_t(0);
    }

protected:
    void reject(std::size_t position) {
        if (first_rejected == ~std::size_t(0) || position < first_rejected) first_rejected = position;
    }
    void message(const char* text) {
        if (!verboser) return;
#pragma omp critical(orv_pivot_message)
        verboser->verbose(3, text);
    }
    void bad_message(double found) {
        if (!verboser) return;
        char buf[256];
        std::snprintf(buf, sizeof buf, "Bad pivot detected: %+E.\n", found);
        message(buf);
    }
    void replaced_message(double found, double with) {
        if (!verboser) return;
        char buf[256];
        std::snprintf(buf, sizeof buf, "Bad pivot detected: %+E. Replaced with: %+E\n", found, with);
        message(buf);
    }
    // Rejects the pivot at position and puts `with` in its place, said in the log when
    // `say`; false when the pivot found was not finite (the factorisation stops).
    bool replace(double& pivot, std::size_t position, double with, bool say = true) {
        const double found = pivot;
        reject(position);
        pivot = with;
        if (say) replaced_message(found, with);
        return std::isfinite(found);
    }
};

// A pivot must be finite and positive; a bad one stops the factorisation.
template <class V>
class pivot_check_positive : public pivot_checker_base<V> {
public:
    static constexpr bool definite_kind = false;
    explicit pivot_check_positive(V* v = nullptr) : pivot_checker_base<V>(v) {}
    bool check(double& pivot, std::size_t position) {
        this->record(pivot, position);
        if (std::isfinite(pivot) && pivot > 0) return true;
        this->reject(position);
        this->bad_message(pivot);
        return false;
    }
};

// A pivot must be finite and not zero; a zero is replaced by `replacement`. A pivot
// that is not finite is replaced too, then the factorisation stops.
template <class V>
class pivot_force_definite : public pivot_checker_base<V> {
public:
    static constexpr bool definite_kind = true;
    double replacement = 1.0;
    explicit pivot_force_definite(V* v = nullptr) : pivot_checker_base<V>(v) {}
    bool check(double& pivot, std::size_t position) {
        this->record(pivot, position);
        if (std::isfinite(pivot) && pivot != 0) return true;
        return this->replace(pivot, position, replacement);
    }
};

// A pivot must be finite and positive; a bad one is replaced by `replacement`. A
// pivot that is not finite is replaced too, then the factorisation stops.
template <class V>
class pivot_force_positive : public pivot_checker_base<V> {
public:
    static constexpr bool definite_kind = false;
    double replacement = 1.0;
    explicit pivot_force_positive(V* v = nullptr) : pivot_checker_base<V>(v) {}
    bool check(double& pivot, std::size_t position) {
        this->record(pivot, position);
        if (std::isfinite(pivot) && pivot > 0) return true;
        return this->replace(pivot, position, replacement);
    }
};

// A pivot must be finite, positive, and, once the lowest pivot so far is below 1e6,
// not below 1e-12 times it. A bad one is replaced by a random positive value
// max(|pivot|, 0.001 * highest so far) * u, u uniform in [0, 1) from the checker's own
// twister (seed 1); not finite stops the factorisation after the replacement.
template <class V>
class pivot_force_positive_rnd : public pivot_checker_base<V> {
public:
    static constexpr bool definite_kind = false;
    std::mt19937 twister{1u};
    explicit pivot_force_positive_rnd(V* v = nullptr) : pivot_checker_base<V>(v) {}
    bool check(double& pivot, std::size_t position) {
        const double lowest = this->first, highest = this->second;
        this->record(pivot, position);
        const bool finite = std::isfinite(pivot);
        bool bad = !finite || pivot <= 0;
        if (!bad && lowest < 1e6 && pivot < 1e-12 * lowest) bad = true;
        if (!bad) return true;
        const double top = highest > -1.7976931348623157e+308 ? 0.001 * highest : 0.0;
        double r = std::max(std::fabs(pivot), top) * (double(twister()) * 2.3283064370807974e-10);
        if (!(r > 0) || !std::isfinite(r)) r = 1.0;
        return this->replace(pivot, position, r);
    }
};

// Adds one for every value the predicate holds for.
template <class Pred>
class counter {
public:
    Pred predicate;
    std::size_t count = 0;
    explicit counter(const Pred& p) : predicate(p) {}
    void count_value(double v) {
        if (predicate(v)) ++count;
    }
};

// Sturm counter: counts the pivots that the predicate (value below a threshold)
// holds for; a zero pivot is silently replaced by `replacement`, a pivot that is not
// finite is replaced and stops the factorisation.
template <class Pred, class V>
class count_n_force_definite : public pivot_checker_base<V>, public counter<Pred> {
public:
    static constexpr bool definite_kind = true;
    double replacement = 1.0;
    explicit count_n_force_definite(const Pred& p, V* v = nullptr) : pivot_checker_base<V>(v), counter<Pred>(p) {}
    bool check(double& pivot, std::size_t position) {
        this->record(pivot, position);
        this->count_value(pivot);
        if (std::isfinite(pivot) && pivot != 0) return true;
        return this->replace(pivot, position, replacement, false);
    }
};

// How a pivot range is judged after a factorisation.
struct pivot_policy {
    // Test on magnitudes (a definite matrix of any sign) instead of signs.
    bool definite = false;
    // A bad sign (a pivot that was replaced) is only the warning -11.
    bool forcing = false;
    // A range with a non-finite end names the row of the largest pivot; otherwise the
    // row of the first rejected pivot.
    bool non_finite_at_max = false;
};

// The verdict on a pivot range: codes 0, -107 (error) and -11 (warning), the position
// of the pivot at fault (~0 for none) and the range as it is to be reported.
struct pivot_verdict {
    int error = 0;
    int warning = 0;
    std::size_t position = ~std::size_t(0);
    double pivot_min = 0.0;
    double pivot_max = 0.0;
};

// Judges the range of `checker` after a factorisation of n rows that returned rc.
// A code other than 0 and -107 is the factorisation's own and is returned as the error.
// An end of the range that was never set takes the value of the other end, so the
// range never shows the recorder's start values.
template <class Checker>
pivot_verdict judge_pivot_range(const Checker& checker, int rc, std::size_t n, const pivot_policy& policy) {
    pivot_verdict v;
    if (n == 0) return v;
    const std::size_t none = ~std::size_t(0);
    const bool lo_set = checker.first_position != none, hi_set = checker.second_position != none;
    const double lo = lo_set ? checker.first : (hi_set ? checker.second : 0.0);
    const double hi = hi_set ? checker.second : (lo_set ? checker.first : 0.0);
    v.pivot_min = lo;
    v.pivot_max = hi;
    const std::size_t lo_row = lo_set ? checker.first_position : checker.second_position;
    const std::size_t hi_row = hi_set ? checker.second_position : checker.first_position;
    const std::size_t rejected = checker.first_rejected != none ? checker.first_rejected : lo_row;
    if (rc != 0 && rc != fem::error_pivot) {
        v.error = rc;
        return v;
    }
    if (!std::isfinite(lo) || !std::isfinite(hi) || !(lo_set || hi_set)) {
        v.error = fem::error_pivot;
        v.position = policy.non_finite_at_max && hi_row != none ? hi_row : rejected;
        return v;
    }
    const bool bad_sign = !policy.definite && !(lo > 0.0);
    if ((bad_sign && !policy.forcing) || (rc != 0 && !policy.forcing)) {
        v.error = fem::error_pivot;
        v.position = rejected;
        return v;
    }
    const bool small = policy.definite ? !(std::fabs(lo) > 1e-12 * std::fabs(hi)) : lo < 1e-12 * hi;
    if (bad_sign || small) {
        v.warning = fem::warning_pivot;
        v.position = lo_row;
    }
    return v;
}

}  // namespace core
}  // namespace orv
