// Stiffness laws of membranes: the common interface and the elastic laws.
#pragma once

#include "laws/law_2d.h"
#include "laws/law_elastic_kernels.h"
#include "orvmath1/vector_fixed.h"

namespace orv {
namespace core {

// The law a membrane physics calls at each point, in the element's local frame:
// strains E11, E22, 2 E12 and the membrane forces per unit length N11, N22, N12 (the
// thickness is in D).
class law_membrane_stiff : public law_2d {
public:
    static constexpr unsigned nbr_strains = 3;
    typedef vector_fixed<double, 3> strain_type;
    typedef vector_fixed<double, 3> stress_type;
    typedef symmetric_fixed<double, 3> tangent_type;

    // As law_solid_stiff: D at a point, 0 or -1 (D zero).
    virtual int get_D(const law_key& key, tangent_type& D) const;
    // As law_solid_stiff::compute on three slots.
    virtual int compute(const law_key& key, const strain_type& strain, tangent_type& D,
                        stress_type& stress, double& energy, double* states,
                        unsigned flags) const;
    // strain -= (thermal strain per degree) temperature; 0 or -1.
    virtual int thermal_correction(const law_key& key, strain_type& strain,
                                   double temperature) const;
    virtual int fill_D(const dense1D<double>& data, tangent_type& D) const = 0;
    // Thermal strains per degree in the element's axes (E11, E22, 2 E12).
    virtual void get_alphas(const dense1D<double>& data, double alpha[3]) const = 0;
};

// Isotropic membrane. Data: E, nu, alpha, thickness, and a fifth value (reserved, 0
// when not given): 4 or 5 values, normalised to 5. D = thickness times the plane
// stress block; -1 when nu is exactly -1 or 1.
class law_membrane_StVenant : public law_membrane_stiff {
public:
    bool check_size(const dense1D<double>& data) const override;
    int normalize(dense1D<double>& data) const override;
    std::size_t thickness_index() const override { return 3; }
    int fill_D(const dense1D<double>& data, tangent_type& D) const override;
    void get_alphas(const dense1D<double>& data, double alpha[3]) const override;
};

// Orthotropic membrane: the plane card of law_2d.h in [0] to [11] (E1, E2, nu12,
// G12, the angle theta of the material axes in degrees, alpha1, alpha2, then derived
// values), [12] the thickness, [13] reserved (0 when not given): 13 or 14 values,
// normalised to 14. D = thickness times the orthotropic plane stress block turned by
// theta. -1 when E1 or 1 - nu12 nu21 is 0.
class law_membrane_orthotropic : public law_membrane_stiff {
public:
    bool check_size(const dense1D<double>& data) const override;
    int normalize(dense1D<double>& data) const override;
    std::size_t thickness_index() const override { return 12; }
    int fill_D(const dense1D<double>& data, tangent_type& D) const override;
    void get_alphas(const dense1D<double>& data, double alpha[3]) const override;
};

}  // namespace core
}  // namespace orv
