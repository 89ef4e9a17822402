// Elasto-plastic laws of rods and scalar elements: isotropic hardening on one
// stress component.
#pragma once

#include "laws/law_hardening_ep.h"
#include "laws/law_rod.h"
#include "laws/law_scalar.h"

namespace orv {
namespace core {

// What the rod and scalar families share beside their base law: the limit states
// and the common compute on one component. Records are (strain, stress, p signed).
class scalar_ep_limits {
public:
    // A point whose |strain| reaches max_strain or whose |stress| reaches max_stress
    // breaks: it carries nothing until the states are reset. Both default to the
    // largest double. Set them before a run.
    void set_limit_states(double max_strain, double max_stress) {
        max_strain_ = max_strain;
        max_stress_ = max_stress;
    }
    double max_strain() const { return max_strain_; }
    double max_stress() const { return max_stress_; }

private:
    double max_strain_ = ep_largest;
    double max_stress_ = ep_largest;
};

// Root of the elasto-plastic rods. Data start with E, area, alpha; the stress is per
// unit of section (the rod physics multiplies by the area).
class law_rod_ep : public law_with_ep_states<law_1d, 3>, public scalar_ep_limits {
public:
    // States written by compute: the plastic strain and |p|.
    unsigned nbr_states() const override { return 2; }
    double tangent(const dense1D<double>& data) const override { return data[0]; }
};

// The common compute of the rod curves.
class law_rod_ep_iso_hardening : public law_rod_ep {
public:
    // The hardening curve of a normalised data vector. False on memory.
    virtual bool get_hardening(const dense1D<double>& data, hardening_curve& curve) const = 0;
    // As the solid laws: flags law_commit and law_first_iteration; 0, -1 (data not
    // usable or E not positive), law_not_converged (elastic trial given) or -199.
    int compute(const law_key& key, double strain, double& D, double& stress, double& energy, double* states,
                unsigned flags) const override;
    // An evaluation that commits nothing.
    int stress(const law_key& key, double strain, double& stress, double& energy, double& tangent) const override;
};

// Data: E, area, alpha, ET, SY, and a reserved value (5 or 6, padded to 6).
class law_rod_ep_perfect : public law_rod_ep_iso_hardening {
public:
    bool check_size(const dense1D<double>& data) const override { return data.size() == 5 || data.size() == 6; }
    int normalize(dense1D<double>& data) const override;
    bool get_hardening(const dense1D<double>& data, hardening_curve& curve) const override;
};

// Data: E, area, alpha, SY, a, n, and a reserved value (6 or 7, padded to 7);
// y = SY + C p^(1/n).
class law_rod_ep_power : public law_rod_ep_iso_hardening {
public:
    bool check_size(const dense1D<double>& data) const override { return data.size() == 6 || data.size() == 7; }
    int normalize(dense1D<double>& data) const override;
    bool get_hardening(const dense1D<double>& data, hardening_curve& curve) const override;
};

// Data as law_rod_ep_power: y = C p^(1/n), no initial yield.
class law_rod_ep_RambergOsgood : public law_rod_ep_iso_hardening {
public:
    bool check_size(const dense1D<double>& data) const override { return data.size() == 6 || data.size() == 7; }
    int normalize(dense1D<double>& data) const override;
    bool get_hardening(const dense1D<double>& data, hardening_curve& curve) const override;
};

// Data: E, area, alpha, then k strains and k tangent moduli (3 + 2 k, k >= 1).
class law_rod_ep_piecewise_linear : public law_rod_ep_iso_hardening {
public:
    bool check_size(const dense1D<double>& data) const override {
        return data.size() >= 5 && (data.size() - 3) % 2 == 0;
    }
    bool get_hardening(const dense1D<double>& data, hardening_curve& curve) const override;
};

// Root of the elasto-plastic scalar laws. Data start with the elastic stiffness k,
// followed by the hardening values of the rods (without E, area and alpha).
class law_scalar_ep : public law_with_ep_states<law_scalar, 3>, public scalar_ep_limits {
public:
    unsigned nbr_states() const override { return 2; }
};

// The common compute of the scalar curves.
class law_scalar_ep_iso_hardening : public law_scalar_ep {
public:
    virtual bool get_hardening(const dense1D<double>& data, hardening_curve& curve) const = 0;
    // As law_rod_ep::compute, on the scalar's force and elongation.
    int compute(const law_key& key, double strain, double& D, double& stress, double& energy, double* states,
                unsigned flags) const;
    int stress(const law_key& key, double strain, double& stress, double& energy, double& tangent) const override;
};

// Data: k, ET, SY.
class law_scalar_ep_perfect : public law_scalar_ep_iso_hardening {
public:
    bool check_size(const dense1D<double>& data) const override { return data.size() == 3; }
    bool get_hardening(const dense1D<double>& data, hardening_curve& curve) const override;
};

// Data: k, SY, a, n; y = SY + C p^(1/n).
class law_scalar_ep_power : public law_scalar_ep_iso_hardening {
public:
    bool check_size(const dense1D<double>& data) const override { return data.size() == 4; }
    bool get_hardening(const dense1D<double>& data, hardening_curve& curve) const override;
};

// Data: k, SY, a, n; y = C p^(1/n), no initial yield.
class law_scalar_ep_RambergOsgood : public law_scalar_ep_iso_hardening {
public:
    bool check_size(const dense1D<double>& data) const override { return data.size() == 4; }
    bool get_hardening(const dense1D<double>& data, hardening_curve& curve) const override;
};

// Data: k, then m strains and m tangent moduli (1 + 2 m, m >= 1).
class law_scalar_ep_piecewise_linear : public law_scalar_ep_iso_hardening {
public:
    bool check_size(const dense1D<double>& data) const override {
        return data.size() >= 3 && (data.size() - 1) % 2 == 0;
    }
    bool get_hardening(const dense1D<double>& data, hardening_curve& curve) const override;
};

}  // namespace core
}  // namespace orv
