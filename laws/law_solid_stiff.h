// Stiffness laws of solids: the common interface and the elastic laws.
#pragma once

#include "laws/law_base.h"
#include "laws/law_elastic_kernels.h"
#include "laws/law_skyline.h"
#include "orvmath1/matrix_fixed.h"
#include "orvmath1/symmetric_fixed.h"
#include "orvmath1/vector_fixed.h"

namespace orv {
namespace core {

class bases_mgr;

// Laws of a 3-D continuum point: six strains E11, E22, E33, 2 E12, 2 E13, 2 E23 and
// the six stresses S11, S22, S33, S12, S13, S23.
class law_3d : public law_base {
public:
    static constexpr unsigned nbr_strains = 6;
    typedef vector_fixed<double, 6> strain_type;
    typedef vector_fixed<double, 6> stress_type;
    typedef symmetric_fixed<double, 6> tangent_type;
};

// The law a solid physics calls at each integration point. Strain and stress are
// taken in the material frame of the law: the kernel asks get_material_frame at the
// point and, if the law has one, writes its B rows in that frame.
class law_solid_stiff : public law_3d {
public:
    // The material frame at a point of global coordinates `position`: R holds the
    // three axes as columns. False when the law has none (the identity is kept).
    virtual bool get_material_frame(const vector_fixed<double, 3>& position, matrix_fixed<double, 3, 3>& R) const;
    // The tangent D at a point. 0, or -1 (data not usable; D is zero then).
    virtual int get_D(const law_key& key, tangent_type& D) const;
    // One point: stress holds the initial stress on entry and the stress on exit
    // (stress = D strain + initial); energy = 0.5 strain . stress; D the tangent;
    // states receives nbr_states() values (none for elastic laws); flags is a
    // combination of law_commit and law_first_iteration. 0, or -1 with D, energy
    // and the stress increment zero when the data are not usable.
    virtual int compute(const law_key& key, const strain_type& strain, tangent_type& D, stress_type& stress,
                        double& energy, double* states, unsigned flags) const;
    // Takes the thermal strain of `temperature` (above the reference state) out of
    // the first three strains. 0, or -1 when the data are not usable.
    virtual int thermal_correction(const law_key& key, strain_type& strain, double temperature) const;
    // D from a normalised data vector; 0, or -1 (D zero) when the values do not
    // define a usable matrix.
    virtual int fill_D(const dense1D<double>& data, tangent_type& D) const = 0;
    // Thermal expansion coefficients of the three normal directions.
    virtual void get_alphas(const dense1D<double>& data, double alpha[3]) const = 0;
};

// Isotropic linear elasticity. Data: E, nu, alpha (exactly three values).
// nu exactly -1 or 0.5 makes every evaluation fail with -1.
class law_solid_StVenant : public law_solid_stiff {
public:
    bool check_size(const dense1D<double>& data) const override;
    int fill_D(const dense1D<double>& data, tangent_type& D) const override;
    void get_alphas(const dense1D<double>& data, double alpha[3]) const override;
};

// Orthotropic linear elasticity in a local basis of the context's bases_mgr.
// Data (18 values):
//   [0] E1   [1] E2   [2] E3      Young's moduli along the basis axes
//   [3] nu12 [4] nu13 [5] nu23    Poisson ratios (nu_ij: contraction along j for
//                                 a stress along i, nu_ij / E_i = nu_ji / E_j)
//   [6] G12  [7] G13  [8] G23     shear moduli
//   [9] nu21 [10] nu31 [11] nu32  derived by normalize (nu_ji = nu_ij E_j / E_i)
//   [12] 1 - nu12 nu21 - nu13 nu31 - nu23 nu32 - 2 nu21 nu32 nu13, derived; the
//        stiffness is positive definite when it and the moduli are positive
//   [13] [14] reserved, set to 0 by normalize
//   [15] alpha1 [16] alpha2 [17] alpha3
// D is the inverse of the compliance built from these constants. A modulus or the
// value [12] equal to 0 makes every evaluation fail with -1.
class law_solid_orthotropic : public law_solid_stiff {
public:
    law_solid_orthotropic();
    ~law_solid_orthotropic() override;

    // The data with the basis `basis_ID` of `bases` (0xFFFFFFFF, or a null manager:
    // the global axes). The manager is held by a counted reference.
    int init(const dense1D<double>& data, bases_mgr* bases, std::uint32_t basis_ID);
    using law_solid_stiff::init;

    bool check_size(const dense1D<double>& data) const override;
    int normalize(dense1D<double>& data) const override;
    bool get_material_frame(const vector_fixed<double, 3>& position, matrix_fixed<double, 3, 3>& R) const override;
    int fill_D(const dense1D<double>& data, tangent_type& D) const override;
    void get_alphas(const dense1D<double>& data, double alpha[3]) const override;

    std::uint32_t basis_ID() const { return basis_ID_; }

private:
    Ptr<bases_mgr> bases_;
    std::uint32_t basis_ID_ = 0xFFFFFFFFu;
};

// A symmetric 6 x 6 matrix given by columns of a skyline, in the global axes. Column
// j holds heights[j] values (1 <= heights[j] <= j + 1): the terms of rows j -
// heights[j] + 1 to j, top down; the terms above them are 0. The data vector is these
// columns one after the other, then alpha1, alpha2, alpha3: sum(heights) + 3 values.
// The full matrix has heights 1, 2, 3, 4, 5, 6 and 24 values.
class law_solid_skyline : public law_skyline<law_solid_stiff, 6, 3> {};

// Isotropic elasticity of a solid: lambda' = nu E / ((1 - 2 nu)(1 + nu)) and mu = E
// / (2 nu + 2) on D. -1 (D zero) when nu is exactly -1 or 0.5.
int isotropic_D(double E, double nu, symmetric_fixed<double, 6>& D);

}  // namespace core
}  // namespace orv
