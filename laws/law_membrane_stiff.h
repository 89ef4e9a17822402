// Stiffness laws of membranes: the common interface and the elastic laws.
#pragma once

#include "laws/law_2d_stiff.h"

namespace orv {
namespace core {

// The law a membrane physics calls at each point, in the element's local frame:
// strains E11, E22, 2 E12 and the membrane forces per unit length N11, N22, N12 (the
// thickness is in D).
class law_membrane_stiff : public law_2d_stiff<3> {};

// Isotropic membrane. Data: E, nu, alpha, thickness, and a fifth value (reserved, 0
// when not given): 4 or 5 values, normalised to 5. D = thickness times the plane
// stress block; -1 when nu is exactly -1 or 1.
class law_membrane_StVenant : public law_membrane_stiff {
public:
    ORV_LAW_2D_ELASTIC_MEMBERS(3)
};

// Orthotropic membrane: the plane card of law_2d.h in [0] to [11] (E1, E2, nu12,
// G12, the angle theta of the material axes in degrees, alpha1, alpha2, then derived
// values), [12] the thickness, [13] reserved (0 when not given): 13 or 14 values,
// normalised to 14. D = thickness times the orthotropic plane stress block turned by
// theta. -1 when E1 or 1 - nu12 nu21 is 0.
class law_membrane_orthotropic : public law_membrane_stiff {
public:
    ORV_LAW_2D_ELASTIC_MEMBERS(12)
};

}  // namespace core
}  // namespace orv
