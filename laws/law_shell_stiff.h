// Stiffness laws of Mindlin shells: the common interface and the elastic laws.
#pragma once

#include "laws/law_2d_stiff.h"
#include "laws/law_skyline.h"

namespace orv {
namespace core {

// The law a shell physics calls at each point, in the element's local frame. Eight
// generalised strains: membrane E11, E22, 2 E12; curvatures K11, K22, 2 K12;
// transverse shears 2 E13, 2 E23. Generalised stresses: membrane forces, moments and
// shear forces, all per unit length. With P the plane stress block of the material,
// t the thickness, I the bending inertia and C the coupling (both per unit width):
// D is t P on the membrane slots, I P on the bending slots, C P between them, and
// the transverse shear stiffnesses times t on the two shear slots.
class law_shell_stiff : public law_2d_stiff<8> {
protected:
    // D from the plane block P (per unit thickness), the thickness, inertia,
    // coupling and the shear block H (per unit thickness).
    static void assemble_D(const symmetric_fixed<double, 3>& P, double t, double inertia, double coupling,
                           const symmetric_fixed<double, 2>& H, tangent_type& D);
};

// Isotropic shell. Data: E, nu, alpha, thickness t, shear stiffness, bending inertia,
// coupling: 4, 6 or 7 values, normalised to 7.
//  - 4 values: shear stiffness 5/6 E / (2 nu + 2), inertia t^3 / 12, coupling 0.
//  - 6 values: the sixth is an offset o of the reference surface from the mid
//    surface; inertia o^2 t + t^3 / 12 and coupling o t. The fifth (the shear
//    stiffness) is kept: a caller gives its own shear correction there.
//  - 7 values are kept as given.
// -1 when nu is exactly -1 or 1.
class law_shell_StVenant : public law_shell_stiff {
public:
    ORV_LAW_2D_ELASTIC_MEMBERS(3)
};

// Orthotropic shell: the plane card of law_2d.h in [0] to [11], then [12] k13 and
// [13] k23, the transverse shear stiffnesses of the material axes (a shear modulus
// times the shear correction, 5/6 G13 and 5/6 G23 as usual), [14] the thickness t,
// [15] the bending inertia, [16] the coupling: 15, 16 or 17 values, normalised to 17.
//  - 15 values: inertia t^3 / 12, coupling 0.
//  - 16 values: [15] is an offset o; inertia o^2 t + t^3 / 12, coupling o t.
//  - 17 values are kept as given (but for the derived values of the card).
// -1 when E1 or 1 - nu12 nu21 is 0.
class law_shell_orthotropic : public law_shell_stiff {
public:
    ORV_LAW_2D_ELASTIC_MEMBERS(14)
};

// A shell stiffness given by the columns of a skyline of the symmetric 8 x 8 matrix D
// on the generalised strains (in the element's local frame). Column j (0 to 7) holds
// heights[j] values, 1 <= heights[j] <= j + 1: the terms of rows j - heights[j] + 1
// to j, top down (the terms above are 0). The data are these columns one after the
// other, then 16 values: [0] alpha1, [1] alpha2, [2] alpha12, the thermal strains per
// degree of the three membrane slots; [3] the thickness; [4] to [15] reserved (kept
// as given). Full matrix: heights 1 to 8, 36 + 16 = 52 values.
class law_shell_skyline : public law_skyline<law_shell_stiff, 8, 16> {
public:
    std::size_t thickness_index() const override { return nbr_matrix_values() + 3; }
};

}  // namespace core
}  // namespace orv
