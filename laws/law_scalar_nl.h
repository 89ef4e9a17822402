// Non-linear elastic 1-D laws: the power law and the tabulated force curves of
// springs and rods, and the asymmetric pairs of plastic scalar laws (one law in
// traction, another in compression).
#pragma once

#include "laws/law_rod.h"
#include "laws/law_rod_ep.h"
#include "laws/law_scalar.h"

namespace orv {
namespace core {

// Data: a, b, c, lower, upper (2 values are padded with c = 0 and the widest limits).
// With s = strain + c inside [lower, upper): tangent a |s|^b; above upper the tangent
// of upper; below lower (or at upper exactly) the caller's tangent stays. stress =
// s tangent + stress, energy = s stress / 2.
class law_scalar_pow : public law_scalar {
public:
    bool check_size(const dense1D<double>& data) const override { return data.size() == 2 || data.size() == 5; }
    int normalize(dense1D<double>& data) const override;
    int stress(const law_key& key, double strain, double& stress, double& energy, double& tangent) const override;
    int tangent(const law_key& key, double& tangent) const override;
};

// A force curve through k points: the data are the k abscissas (not decreasing) then
// the k ordinates. The force at s is the curve walked from 0 out to s, flat beyond
// its ends; the energy is the area under it from 0 (trapezium rule on each piece);
// the tangent is the slope of the piece that holds s, at a point the piece beyond it
// (away from 0).
struct force_curve {
    const double* x = nullptr;
    const double* y = nullptr;
    std::size_t k = 0;
    // Force, energy and tangent at s.
    void at(double s, double& force, double& energy, double& tangent) const;
    // True for k >= 1 and abscissas that do not decrease.
    static bool valid(const double* x, std::size_t k);
};

// The limits (set by the public init with the table) are reported by get_limits for
// the models that check their strains against them; the curve itself is not cut.
class law_scalar_nl : public law_scalar {
public:
    void set_limits(double low, double high) {
        low_ = low;
        high_ = high;
    }
    void get_limits(double& min, double& max) const override {
        min = low_;
        max = high_;
    }
    bool check_size(const dense1D<double>& data) const override;
    int normalize(dense1D<double>& data) const override;
    // stress += force(strain), energy the area, tangent the slope.
    int stress(const law_key& key, double strain, double& stress, double& energy, double& tangent) const override;
    int tangent(const law_key& key, double& tangent) const override;

private:
    double low_ = -1.7976931348623157e308, high_ = 1.7976931348623157e308;
};

// A rod whose stress follows a curve of strain: the rod data (E, area, alpha, and a
// reserved value that 3 rod values get as 0) then the curve's k abscissas and k
// ordinates. E serves what needs an elastic modulus (thermal strains keep alpha).
class law_rod_nl : public law_rod {
public:
    bool check_size(const dense1D<double>& data) const override;
    int normalize(dense1D<double>& data) const override;
    int stress(const law_key& key, double strain, double& stress, double& energy, double& tangent) const override;
    int compute(const law_key& key, double strain, double& D, double& stress, double& energy, double* states,
                unsigned flags) const override;
};

// A plastic scalar law in traction (strain >= 0) and another in compression (strain
// < 0). Each keeps its own data and states; the pair forwards the state operations
// to both. A missing side carries nothing.
class law_scalar_ep_unsym : public law_scalar {
public:
    bool check_size(const dense1D<double>& data) const override { return data.empty(); }
    void set_laws(const Ptr<law_scalar_ep>& traction, const Ptr<law_scalar_ep>& compression) {
        traction_ = traction;
        compression_ = compression;
    }
    const Ptr<law_scalar_ep>& traction_law() const { return traction_; }
    const Ptr<law_scalar_ep>& compression_law() const { return compression_; }

    int stress(const law_key& key, double strain, double& stress, double& energy, double& tangent) const override;
    int tangent(const law_key& key, double& tangent) const override;
    unsigned nbr_states() const override;
    void reset_states() override;
    int copy_states(std::uint32_t from_step, std::uint32_t to_step) override;
    double plasticity(const law_key& key) const override;

private:
    Ptr<law_scalar_ep> traction_, compression_;
};

// The pairs of perfectly plastic and of piecewise-linear hardening laws.
class law_scalar_ep_perfect_unsym : public law_scalar_ep_unsym {};
class law_scalar_ep_piecewise_linear_unsym : public law_scalar_ep_unsym {};

}  // namespace core
}  // namespace orv
