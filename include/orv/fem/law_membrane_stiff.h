// Elastic laws of membranes.
#pragma once

#include <orv/fem/law_base.h>

namespace orv {
namespace core {
class law_membrane_stiff;
class law_membrane_StVenant;
class law_membrane_orthotropic;
}  // namespace core
namespace fem {

/// Root of the laws that membrane models take: plane stress in the element's local
/// frame, strains E11, E22, 2 E12, membrane forces per unit length N11, N22, N12.
class law_membrane_stiff : public law_base {
public:
    ORV_FEM_HANDLE(law_membrane_stiff, core::law_membrane_stiff)

protected:
    law_membrane_stiff() = default;
};

/// Isotropic membrane. Data: [0] E; [1] nu; [2] alpha; [3] thickness; [4] reserved
/// (0 when not given). 4 or 5 values. A nu of exactly -1 or 1 makes the law fail at
/// evaluation.
class law_membrane_StVenant : public law_membrane_stiff {
public:
    ORV_FEM_LAW_HANDLE(law_membrane_StVenant, core::law_membrane_StVenant)

    /// A new law on ctx with these values: create(ctx) then init, whose code is not
    /// reported.
    law_membrane_StVenant(context& ctx, double E, double nu, double alpha, double thickness);
    /// init of the data [E, nu, alpha, thickness]: 0, -1 or -2 as law_base::init.
    int init(double E, double nu, double alpha, double thickness);
};

/// Orthotropic membrane. 13 or 14 values:
///   [0] E1  [1] E2  [2] nu12  [3] G12   material axes 1 and 2 in the element's plane
///                                       (nu12 / E1 = nu21 / E2)
///   [4] theta   angle in degrees from the element's local axis 1 to the material
///               axis 1, positive towards the local axis 2
///   [5] alpha1  [6] alpha2              thermal expansion along the material axes
///   [7] nu21                            derived
///   [8] Q11 [9] Q22 [10] Q12 [11] Q66   derived: the plane stress stiffness in the
///                                       material axes (Q11 = E1 / (1 - nu12 nu21),
///                                       Q12 = nu12 E2 / (1 - nu12 nu21), Q66 = G12)
///   [12] thickness
///   [13] reserved (0 when not given)
/// What the caller gives in [7] to [11] is replaced. E1 or 1 - nu12 nu21 equal to 0
/// makes the law fail at evaluation.
class law_membrane_orthotropic : public law_membrane_stiff {
public:
    ORV_FEM_LAW_HANDLE(law_membrane_orthotropic, core::law_membrane_orthotropic)
};

}  // namespace fem
}  // namespace orv
