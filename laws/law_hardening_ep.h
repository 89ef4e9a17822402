// Pieces shared by the elasto-plastic laws of solids, rods and scalar elements:
// the isotropic hardening curves, the committed states per point and step slot, and
// the return map of one stress component.
#pragma once

#include <orv/fem/error_type.h>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include <omp.h>

#include "laws/law_base.h"
#include "orvmath1/dense1D.h"

namespace orv {
namespace core {

// The largest double: the slope of a curve that cannot be used, and the |p| of a
// broken point.
constexpr double ep_largest = std::numeric_limits<double>::max();

// Code of a compute whose return map did not converge (the Newton run that called
// it counts the iteration as non-convergent).
constexpr int law_not_converged = fem::error_convergence;

// Step slots: law step modulo this count.
constexpr std::uint32_t ep_step_slots = 50;

// Round limit and relative test of the return maps' Newton on the increment of p.
constexpr unsigned ep_max_rounds = 17;
constexpr double ep_tolerance = 1e-6;

// Below this p the power curves use a chord slope (their derivative is infinite at 0).
constexpr double ep_small_p = 1e-6;

// Yield stress y(p) and slope h(p) of an isotropic hardening curve, p being the
// accumulated plastic strain (p >= 0). A curve whose parameters make no material is
// `valid == false`: y = 0 and h = ep_largest, so that a return map stops at once and
// the law stays elastic.
class hardening_curve {
public:
    // Linear hardening from SY with the elasto-plastic tangent modulus ET: H = E ET /
    // (E - ET), 0 when ET equals E. Valid for E > 0, SY > 0 and 0 <= ET <= E.
    void set_linear(double E, double ET, double SY);
    // y = SY + C p^(1/n), C = SY (E / (a SY))^(1/n). Valid for E > 0, a > 0, SY >= 0,
    // n > 1.
    void set_power(double E, double SY, double a, double n);
    // y = C p^(1/n), C = (E / a)^(1/n) SY^(1 - 1/n): no initial yield. Same validity.
    void set_Ramberg_Osgood(double E, double SY, double a, double n);
    // k total strains e_i (increasing) and k tangent moduli E_i, E_0 the elastic one,
    // the curve passing through (e_0, E_0 e_0). Valid for E_0 > 0, e_0 > 0, strictly
    // increasing strains and 0 <= E_i <= E_0. False on memory.
    bool set_piecewise_linear(const double* strains, const double* moduli, std::size_t k);

    bool valid() const { return valid_; }
    // y and h at p (p is taken by absolute value).
    void eval(double p, double& y, double& h) const;
    // The root dp of r - c dp - y(p_in + dp), c > 0, bracketed in [0, (r - y(p_in)) /
    // c], by regula falsi with the Illinois correction. The return maps call it when
    // their Newton on dp fails: near p = 0 the power curves' slope is unbounded and
    // the chord slope that replaces it makes that Newton oscillate. False when the
    // curve is not usable or no root was found.
    bool solve(double p_in, double r, double c, double& dp) const;

private:
    enum kind_type { kind_invalid, kind_linear, kind_power, kind_table };
    void set_invalid();

    kind_type kind_ = kind_invalid;
    bool valid_ = false;
    double SY_ = 0.0, H_ = 0.0, C_ = 0.0, k_ = 0.0;
    // Power curves: the slope used at p <= ep_small_p, y(ep_small_p) / ep_small_p.
    double chord_ = 0.0;
    // Rows (p, y, h): row 0 is (0, e_0 E_0, 0); h of row i is the slope of the
    // segment that ends at row i.
    std::vector<double> table_;
};

// Committed states of the points of a law: one record of `record_size` doubles per
// (element, point, step slot). Open addressing on 3 element + 5 point + 7 slot with
// linear probing; the capacity doubles when the table is half full. Writers take the
// lock; a reader takes it when asked (a commit pass, in which other threads write).
class ep_state_map {
public:
    explicit ep_state_map(unsigned record_size);
    ~ep_state_map();
    ep_state_map(const ep_state_map&) = delete;
    ep_state_map& operator=(const ep_state_map&) = delete;

    unsigned record_size() const { return record_size_; }
    // Copies the record of key into `record`; false (record zero) when there is none.
    bool read(const law_key& key, double* record, bool lock) const;
    // Stores the record of key; false on memory (the map is then unchanged).
    bool write(const law_key& key, const double* record);
    // Number of records, all slots.
    std::size_t size() const;
    // Removes every record.
    void clear();
    // The records of slot `to` become copies of those of slot `from` (a slot with no
    // records empties `to`). Steps are taken modulo the slot count. False on memory
    // (the map is then unchanged).
    bool copy_slot(std::uint32_t from, std::uint32_t to);

private:
    struct slot_key {
        std::uint32_t element, point, slot;
    };
    std::size_t find(std::uint32_t element, std::uint32_t point, std::uint32_t slot) const;
    bool rebuild(std::size_t capacity, const std::vector<slot_key>& keys, const std::vector<double>& values);

    unsigned record_size_;
    std::vector<slot_key> keys_;
    std::vector<char> used_;
    std::vector<double> values_;
    std::size_t count_ = 0;
    mutable omp_lock_t lock_;
};

// The state operations of law_base on an ep_state_map of records of R doubles, the
// last of which is the signed p.
template <class Base, unsigned R>
class law_with_ep_states : public Base {
public:
    void reset_states() override { states_.clear(); }
    int copy_states(std::uint32_t from_step, std::uint32_t to_step) override {
        return states_.copy_slot(from_step, to_step) ? law_ok : law_memory;
    }
    double plasticity(const law_key& key) const override {
        double record[R];
        states_.read(key, record, true);
        return record[R - 1] < 0.0 ? -record[R - 1] : record[R - 1];
    }
    unsigned state_record_size() const override { return R; }
    bool get_state(const law_key& key, double* record) const override { return states_.read(key, record, true); }
    int set_state(const law_key& key, const double* record) override {
        return states_.write(key, record) ? law_ok : law_memory;
    }
    // Number of records over all step slots.
    std::size_t nbr_state_records() const { return states_.size(); }

protected:
    mutable ep_state_map states_{R};
};

// Return map of one stress component (rods, scalar elements): E the elastic
// tangent, s the trial stress, p_in the accumulated plastic strain (>= 0). On a
// plastic answer s becomes +-y(p), p the new value and tangent E h / (E + h); an
// elastic trial keeps s and the tangent E (E h / (E + h) when `plastic` came in true,
// the loading tangent of a first iteration). `plastic` says whether the point
// yielded. False when the Newton did not converge or the curve is not usable.
bool scalar_return_map(double E, const hardening_curve& curve, double& s, double& p, bool& plastic, double& tangent);

// Common compute of the rod and scalar families on one strain, per unit of the
// quantity the stress is taken on: E the elastic tangent, strain in, stress (the
// initial stress on entry) and tangent and energy out, states[0] the plastic strain
// and states[1] |p|. Limits: |strain| >= max_strain or |stress| >= max_stress breaks
// the point (stress and tangent 0 from then on). Records are (strain, stress, p).
int scalar_ep_compute(ep_state_map& map, const hardening_curve& curve, double E, double max_strain, double max_stress,
                      const law_key& key, double strain, double& tangent, double& stress, double& energy,
                      double* states, unsigned flags);

}  // namespace core
}  // namespace orv
