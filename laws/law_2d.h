// Root of the laws of surfaces (membranes and shells) and their plane stress blocks.
#pragma once

#include "laws/law_base.h"
#include "orvmath1/symmetric_fixed.h"

namespace orv {
namespace core {

// Laws stated in the local frame of a surface element: in-plane strains E11, E22,
// 2 E12 of the element's axes 1 and 2.
class law_2d : public law_base {
public:
    // Thickness at the point; 0 when the data are not usable.
    virtual double thickness(const law_key& key) const;
    // Position of the thickness in a normalised data vector.
    virtual std::size_t thickness_index() const = 0;
};

// Plane stress block of an isotropic material in the order E11, E22, 2 E12: with c =
// nu E / (1 - nu^2) and mu = E / (2 nu + 2), 2 mu + c on the first two diagonal
// terms, c off the diagonal, mu on the third. -1 (P zero) when nu is exactly -1 or 1.
int plane_stress_isotropic(double E, double nu, symmetric_fixed<double, 3>& P);

// Values of an orthotropic plane card, shared by the orthotropic membranes and
// shells:
//   [0] E1  [1] E2  [2] nu12  [3] G12   material axes 1 and 2
//   [4] theta   angle in degrees from the element's axis 1 to the material axis 1,
//               positive towards the element's axis 2
//   [5] alpha1  [6] alpha2              thermal expansion along the material axes
//   [7] nu21 = nu12 E2 / E1             derived
//   [8] Q11 [9] Q22 [10] Q12 [11] Q66   derived plane stress stiffness in the
//                                       material axes
constexpr std::size_t plane_card_size = 12;

// Writes the derived values [7] to [11] of a plane card (only where they differ).
void plane_card_derive(dense1D<double>& data);
// Plane stress block of a card in the element's axes: the material block turned by
// theta. -1 (P zero) when E1 or 1 - nu12 nu21 is 0.
int plane_stress_orthotropic(const double* card, symmetric_fixed<double, 3>& P);
// Thermal strains per degree of a card in the element's axes (E11, E22, 2 E12).
void plane_thermal_orthotropic(const double* card, double alpha[3]);
// Transverse shear block of the stiffnesses k13, k23 of the material axes, turned by
// theta into the element's axes (slots 2 E13, 2 E23).
void transverse_shear_orthotropic(double theta_degrees, double k13, double k23, symmetric_fixed<double, 2>& H);

}  // namespace core
}  // namespace orv
