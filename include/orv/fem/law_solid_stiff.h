// Elastic laws of solids: isotropic, orthotropic in a local basis, and by matrix.
#pragma once

#include <orv/fem/law_base.h>

#include <orvmath1/vector_fixed.h>

namespace orv {
namespace core {
class law_solid_stiff;
class law_solid_StVenant;
class law_solid_orthotropic;
class law_solid_skyline;
}  // namespace core
namespace fem {

class bases_mgr;

/// Root of the laws that solid, plane strain and axisymmetric models take. Strains
/// and stresses are in the order E11, E22, E33, 2 E12, 2 E13, 2 E23 (shears doubled)
/// and S11, S22, S33, S12, S13, S23.
class law_solid_stiff : public law_base {
public:
    ORV_FEM_HANDLE(law_solid_stiff, core::law_solid_stiff)

protected:
    law_solid_stiff() = default;
};

/// Isotropic linear elasticity. Data: [0] E, Young's modulus; [1] nu, Poisson's
/// ratio; [2] alpha, the thermal expansion coefficient. Exactly 3 values. A nu of
/// exactly -1 or 0.5 makes the law fail at evaluation.
class law_solid_StVenant : public law_solid_stiff {
public:
    ORV_FEM_LAW_HANDLE(law_solid_StVenant, core::law_solid_StVenant)

    /// A new law on ctx with these values: create(ctx) then init, whose code is not
    /// reported.
    law_solid_StVenant(context& ctx, double E, double nu, double alpha);
    /// init of the data [E, nu, alpha]: 0, -1 or -2 as law_base::init.
    int init(double E, double nu, double alpha);
};

/// Orthotropic linear elasticity, stated in a local basis of the context's bases_mgr
/// (the material axes 1, 2, 3 are the basis vectors at each point). 18 values:
///   [0] E1    [1] E2    [2] E3     Young's moduli along the material axes
///   [3] nu12  [4] nu13  [5] nu23   Poisson's ratios: nu_ij is the contraction along
///                                  j under a tension along i, and nu_ij / E_i =
///                                  nu_ji / E_j
///   [6] G12   [7] G13   [8] G23    shear moduli
///   [9] nu21  [10] nu31 [11] nu32  derived: filled by the law from the above
///   [12]      derived: 1 - nu12 nu21 - nu13 nu31 - nu23 nu32 - 2 nu21 nu32 nu13; the
///             material is stable when it and all the moduli are positive
///   [13] [14] reserved, set to 0
///   [15] alpha1 [16] alpha2 [17] alpha3   thermal expansion along the material axes
/// What the caller gives in [9] to [14] is replaced. With E1 = E2 = E3 = E, all nu
/// equal to nu and all G equal to E / (2 + 2 nu) the law is law_solid_StVenant.
/// A modulus E_i or the value [12] equal to 0 makes the law fail at evaluation.
class law_solid_orthotropic : public law_solid_stiff {
public:
    ORV_FEM_LAW_HANDLE(law_solid_orthotropic, core::law_solid_orthotropic)

    /// The data in basis basis_ID of bases; an ID that names no basis when the law is
    /// evaluated means the global axes.
    law_solid_orthotropic(context& ctx, const dense1D<double>& data, const bases_mgr& bases, unsigned basis_ID);
    /// The data in basis basis_ID of bases: 0, -1 or -2 as law_base::init.
    int init(const dense1D<double>& data, const bases_mgr& bases, unsigned basis_ID);
    /// The basis ID given to init, 0xFFFFFFFF when none.
    unsigned basis_ID() const;
};

/// A symmetric 6 x 6 stiffness matrix given by the columns of a skyline, in the
/// global axes. Column j (0 to 5) holds heights[j] values, 1 <= heights[j] <= j + 1:
/// the terms of rows j - heights[j] + 1 to j, top down (the terms above are 0). The
/// data are these columns one after the other, then alpha1, alpha2, alpha3:
/// sum(heights) + 3 values. Full matrix: heights 1, 2, 3, 4, 5, 6 and 24 values,
/// which is also what init(data) alone expects.
class law_solid_skyline : public law_solid_stiff {
public:
    ORV_FEM_LAW_HANDLE(law_solid_skyline, core::law_solid_skyline)

    /// -1 for heights out of range, otherwise as init(data).
    law_solid_skyline(context& ctx, const vector_fixed<unsigned int, 6>& heights, const dense1D<double>& data);
    /// The skyline columns of heights and their data: -1 for heights out of range,
    /// otherwise as law_base::init.
    int init(const vector_fixed<unsigned int, 6>& heights, const dense1D<double>& data);
};

}  // namespace fem
}  // namespace orv
