// Axial laws of rods: the 1-D family and the elastic rod.
#pragma once

#include "laws/law_base.h"

namespace orv {
namespace core {

// Laws of one axial strain. Stress, tangent and energy are per unit of section: the
// rod physics multiplies them by the area that get_properties gives.
class law_1d : public law_base {
public:
    // stress = E strain + stress (the initial stress on entry), energy = 0.5 strain
    // stress, tangent E. 0, or -1 (tangent and energy 0, stress unchanged).
    virtual int stress(const law_key& key, double strain, double& stress, double& energy, double& tangent) const;
    // Thermal expansion coefficient at the point (0 when the data are not usable).
    virtual double alpha(const law_key& key) const;
    // Section area, thermal expansion coefficient and tangent modulus at the point.
    // 0, or -1 (all three 0).
    virtual int get_properties(const law_key& key, double& area, double& alpha, double& tangent) const;
    // One point, with the arguments of the solid laws: strain in, tangent D out,
    // stress (initial stress on entry) and energy out, states (nbr_states() values)
    // and the flag word. 0 or -1.
    virtual int compute(const law_key& key, double strain, double& D, double& stress, double& energy, double* states,
                        unsigned flags) const;
    // strain -= alpha temperature; 0 or -1 (strain unchanged).
    virtual int thermal_correction(const law_key& key, double& strain, double temperature) const;
    // The tangent modulus of a normalised data vector.
    virtual double tangent(const dense1D<double>& data) const = 0;
};

// Elastic rod. Data: E, area, alpha, and a fourth value (reserved, 0 when not given):
// 3 or 4 values, normalised to 4.
class law_rod : public law_1d {
public:
    bool check_size(const dense1D<double>& data) const override;
    int normalize(dense1D<double>& data) const override;
    double tangent(const dense1D<double>& data) const override { return data[0]; }
};

}  // namespace core
}  // namespace orv
