// Elasto-plastic laws of solids: Von Mises plasticity with isotropic hardening.
#pragma once

#include "laws/law_hardening_ep.h"
#include "laws/law_solid_stiff.h"

namespace orv {
namespace core {

// Root of the elasto-plastic solid laws. Records per point and step slot: the six
// stresses and six strains of the last commit, then p signed (p > 0: the point was
// loading plastically at that commit; |p| = ep_largest: broken). 13 doubles.
// The data always start with E, nu, alpha.
class law_solid_ep : public law_with_ep_states<law_solid_stiff, 13> {
public:
    // States written by compute: the six plastic strains (shears doubled) and |p|.
    unsigned nbr_states() const override { return 7; }
    int fill_D(const dense1D<double>& data, tangent_type& D) const override;
    void get_alphas(const dense1D<double>& data, double alpha[3]) const override;
};

// The common compute of the curves: trial stress from the last committed record,
// radial return on the curve that get_hardening gives, consistent tangent, commit.
class law_solid_ep_iso_hardening : public law_solid_ep {
public:
    // flags: law_commit stores the record of the point (when p is not 0), under the
    // lock; law_first_iteration makes a point that was loading at its last commit
    // answer with its loading tangent even when the trial is elastic. 0; -1 (D zero,
    // stress unchanged) when the data are not usable; law_not_converged when the
    // return map did not converge (the elastic trial is then given); -199 on memory.
    int compute(const law_key& key, const strain_type& strain, tangent_type& D, stress_type& stress, double& energy,
                double* states, unsigned flags) const override;
    // The hardening curve of a normalised data vector. False on memory.
    virtual bool get_hardening(const dense1D<double>& data, hardening_curve& curve) const = 0;
    // Radial return of `stress` (the trial on entry) from p (>= 0) with shear modulus
    // G on `curve`; D holds the elastic tangent on entry and the consistent tangent
    // on a plastic return. `plastic` in: use the loading tangent even for an elastic
    // trial; out: the point yielded. False when the Newton did not converge or the
    // curve is not usable (stress, p and D are then unchanged).
    virtual bool return_map(double G, const hardening_curve& curve, stress_type& stress, double& p, bool& plastic,
                            tangent_type& D) const;
};

// Data: E, nu, alpha, ET, SY (5 values): linear hardening from the yield stress SY
// with the tangent modulus ET (ET = 0 is perfect plasticity).
class law_solid_ep_perfect : public law_solid_ep_iso_hardening {
public:
    bool check_size(const dense1D<double>& data) const override { return data.size() == 5; }
    bool get_hardening(const dense1D<double>& data, hardening_curve& curve) const override;
};

// Data: E, nu, alpha, SY, a, n (6 values): y = SY + C p^(1/n).
class law_solid_ep_power : public law_solid_ep_iso_hardening {
public:
    bool check_size(const dense1D<double>& data) const override { return data.size() == 6; }
    bool get_hardening(const dense1D<double>& data, hardening_curve& curve) const override;
};

// Data: E, nu, alpha, SY, a, n (6 values): y = C p^(1/n), no initial yield.
class law_solid_ep_RambergOsgood : public law_solid_ep_iso_hardening {
public:
    bool check_size(const dense1D<double>& data) const override { return data.size() == 6; }
    bool get_hardening(const dense1D<double>& data, hardening_curve& curve) const override;
};

// Data: E, nu, alpha, then k total strains, then k tangent moduli (3 + 2 k values,
// k >= 1), the first modulus being the elastic one.
class law_solid_ep_piecewise_linear : public law_solid_ep_iso_hardening {
public:
    bool check_size(const dense1D<double>& data) const override {
        return data.size() >= 5 && (data.size() - 3) % 2 == 0;
    }
    bool get_hardening(const dense1D<double>& data, hardening_curve& curve) const override;
};

// Von Mises value of a stress in the order S11, S22, S33, S12, S13, S23.
double Von_Mises_value(const double* s);

}  // namespace core
}  // namespace orv
