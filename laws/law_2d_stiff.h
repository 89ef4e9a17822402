// The common interface of the plane stiffness laws (membranes and shells): N
// generalised strains and stresses in the element's local frame, D from the data
// through fill_D, thermal expansion on the first three strains through get_alphas.
#pragma once

#include "laws/law_2d.h"
#include "laws/law_elastic_kernels.h"
#include "orvmath1/symmetric_fixed.h"
#include "orvmath1/vector_fixed.h"

namespace orv {
namespace core {

template <unsigned N>
class law_2d_stiff : public law_2d {
public:
    static constexpr unsigned nbr_strains = N;
    typedef vector_fixed<double, N> strain_type;
    typedef vector_fixed<double, N> stress_type;
    typedef symmetric_fixed<double, N> tangent_type;

    // D at a point, 0 or -1 (D zero).
    virtual int get_D(const law_key& key, tangent_type& D) const { return elastic_get_D(*this, key, D); }
    // stress += D strain and the energy, as law_solid_stiff::compute on N slots.
    virtual int compute(const law_key& key, const strain_type& strain, tangent_type& D, stress_type& stress,
                        double& energy, double* /*states*/, unsigned /*flags*/) const {
        return elastic_compute(*this, key, strain, D, stress, energy);
    }
    // strain -= (thermal strain per degree) temperature on the first three slots; 0 or -1.
    virtual int thermal_correction(const law_key& key, strain_type& strain, double temperature) const {
        return elastic_thermal_correction(*this, key, strain, temperature);
    }
    virtual int fill_D(const dense1D<double>& data, tangent_type& D) const = 0;
    // Thermal strains per degree of the three membrane slots, in the element's axes.
    virtual void get_alphas(const dense1D<double>& data, double alpha[3]) const = 0;
};

// The members an elastic plane law defines from its data card, the thickness being
// the value at index T of the card.
#define ORV_LAW_2D_ELASTIC_MEMBERS(T)                                        \
    bool check_size(const dense1D<double>& data) const override;             \
    int normalize(dense1D<double>& data) const override;                     \
    std::size_t thickness_index() const override { return T; }               \
    int fill_D(const dense1D<double>& data, tangent_type& D) const override; \
    void get_alphas(const dense1D<double>& data, double alpha[3]) const override;

}  // namespace core
}  // namespace orv
