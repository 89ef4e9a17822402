// Elastic laws of Mindlin shells.
#pragma once

#include <orv/fem/law_base.h>

#include <orvmath1/vector_fixed.h>

namespace orv {
namespace core {
class law_shell_stiff;
class law_shell_StVenant;
class law_shell_orthotropic;
class law_shell_skyline;
}  // namespace core
namespace fem {

/// Root of the laws that shell and plate models take, in the element's local frame.
/// Generalised strains: membrane E11, E22, 2 E12; curvatures K11, K22, 2 K12;
/// transverse shears 2 E13, 2 E23. Generalised stresses per unit length: forces
/// N11, N22, N12; moments M11, M22, M12; shear forces Q1, Q2. With P the plane stress
/// matrix of the material, t the thickness, I the bending inertia and C the coupling
/// (per unit width), the stiffness is t P on the membrane strains, I P on the
/// curvatures, C P between them, and the shear stiffness times t on the shears.
class law_shell_stiff : public law_base {
public:
    ORV_FEM_HANDLE(law_shell_stiff, core::law_shell_stiff)

protected:
    law_shell_stiff() = default;
};

/// Isotropic shell. Data: [0] E; [1] nu; [2] alpha; [3] thickness t; [4] transverse
/// shear stiffness (a shear modulus times the shear correction); [5] bending inertia
/// I; [6] coupling C. 4, 6 or 7 values:
///   4: [4] = 5/6 E / (2 + 2 nu), I = t^3 / 12, C = 0;
///   6: [5] is the offset o of the reference surface from the mid surface:
///      I = o^2 t + t^3 / 12, C = o t;
///   7: kept as given.
/// A nu of exactly -1 or 1 makes the law fail at evaluation.
class law_shell_StVenant : public law_shell_stiff {
public:
    ORV_FEM_LAW_HANDLE(law_shell_StVenant, core::law_shell_StVenant)

    /// A new law on ctx with these values: create(ctx) then init, whose code is not
    /// reported.
    law_shell_StVenant(context& ctx, double E, double nu, double alpha, double thickness);
    /// init of the data [E, nu, alpha, thickness] (4 values): 0, -1 or -2 as
    /// law_base::init.
    int init(double E, double nu, double alpha, double thickness);
};

/// Orthotropic shell. [0] to [11]: the values of law_membrane_orthotropic (E1, E2,
/// nu12, G12, theta, alpha1, alpha2, then derived values); [12] k13 and [13] k23,
/// the transverse shear stiffnesses along the material axes (shear moduli times the
/// shear correction, usually 5/6 G13 and 5/6 G23); [14] thickness t; [15] bending
/// inertia I; [16] coupling C. 15, 16 or 17 values:
///   15: I = t^3 / 12, C = 0;
///   16: [15] is the offset o: I = o^2 t + t^3 / 12, C = o t;
///   17: kept as given.
class law_shell_orthotropic : public law_shell_stiff {
public:
    ORV_FEM_LAW_HANDLE(law_shell_orthotropic, core::law_shell_orthotropic)
};

/// A shell stiffness D given directly, in the element's local frame, by the columns of
/// a skyline of the symmetric 8 x 8 matrix on the generalised strains above. Column j
/// (0 to 7) holds heights[j] values, 1 <= heights[j] <= j + 1: the terms of rows
/// j - heights[j] + 1 to j, top down (the terms above are 0). The data are these
/// columns one after the other, then 16 values: [0] alpha1, [1] alpha2, [2] alpha12
/// (thermal strains per degree of the three membrane slots), [3] the thickness, [4] to
/// [15] reserved and kept as given: sum(heights) + 16 values. Full matrix: heights
/// 1, 2, ..., 8 and 52 values, which is also what init(data) alone expects.
class law_shell_skyline : public law_shell_stiff {
public:
    ORV_FEM_LAW_HANDLE(law_shell_skyline, core::law_shell_skyline)

    /// Makes the law on a context; an empty handle on memory, init's code by get_init_code().
    law_shell_skyline(context& ctx, const vector_fixed<unsigned int, 8>& heights, const dense1D<double>& data);
    /// -1 for heights out of range, otherwise as init(data).
    int init(const vector_fixed<unsigned int, 8>& heights, const dense1D<double>& data);
};

}  // namespace fem
}  // namespace orv
