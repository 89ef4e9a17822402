// Elasto-plastic laws of rods and scalar elements: isotropic hardening on one
// stress component.
#pragma once

#include <orv/fem/law_base.h>

#include <orvmath1/dense1D.h>

namespace orv {
namespace core {
class law_rod_ep;
class law_rod_ep_perfect;
class law_rod_ep_power;
class law_rod_ep_RambergOsgood;
class law_rod_ep_piecewise_linear;
class law_scalar_ep;
class law_scalar_ep_perfect;
class law_scalar_ep_power;
class law_scalar_ep_RambergOsgood;
class law_scalar_ep_piecewise_linear;
}  // namespace core
namespace fem {

/// The state operations of the elasto-plastic rods and scalar laws, as those of
/// law_solid_ep (states per point and step slot, committed by the runs), and their
/// limit states: a point whose |strain| reaches max_strain or whose |stress| reaches
/// max_stress breaks, and carries nothing until the states are reset.
#define ORV_FEM_EP_1D_OPERATIONS                                                 \
    double plasticity(unsigned element, unsigned point, unsigned step) const;    \
    void reset_states();                                                         \
    error_type copy_states(unsigned from_step, unsigned to_step);                \
    bool curve_valid() const;                                                    \
    /* Both default to the largest double. -101 for a NaN or an empty handle. */ \
    error_type set_limit_states(double max_strain, double max_stress);

/// Root of the elasto-plastic rods. Data start with [0] E, [1] the section area,
/// [2] alpha; stresses are per unit of section.
class law_rod_ep : public law_base {
public:
    ORV_FEM_HANDLE(law_rod_ep, core::law_rod_ep)
    ORV_FEM_EP_1D_OPERATIONS

protected:
    law_rod_ep() = default;
};

/// [3] ET, [4] SY, [5] reserved: 5 or 6 values. Linear hardening as law_solid_ep_perfect.
class law_rod_ep_perfect : public law_rod_ep {
public:
    ORV_FEM_LAW_HANDLE(law_rod_ep_perfect, core::law_rod_ep_perfect)
    /// Sets the constants: 0, -1 (unusable sizes) or -2 (a value that is not finite).
    int init(double E, double area, double alpha, double ET, double SY);
};

/// [3] SY, [4] a, [5] n, [6] reserved: 6 or 7 values, as law_solid_ep_power.
class law_rod_ep_power : public law_rod_ep {
public:
    ORV_FEM_LAW_HANDLE(law_rod_ep_power, core::law_rod_ep_power)
    /// Sets the constants: 0, -1 or -2 as law_rod_ep_perfect::init.
    int init(double E, double area, double alpha, double SY, double a, double n);
};

/// [3] SY, [4] a, [5] n, [6] reserved: 6 or 7 values, as law_solid_ep_RambergOsgood.
class law_rod_ep_RambergOsgood : public law_rod_ep {
public:
    ORV_FEM_LAW_HANDLE(law_rod_ep_RambergOsgood, core::law_rod_ep_RambergOsgood)
    /// Sets the constants: 0, -1 or -2 as law_rod_ep_perfect::init.
    int init(double E, double area, double alpha, double SY, double a, double n);
};

/// k strains then k tangent moduli after the first three values (3 + 2 k), as
/// law_solid_ep_piecewise_linear.
class law_rod_ep_piecewise_linear : public law_rod_ep {
public:
    ORV_FEM_LAW_HANDLE(law_rod_ep_piecewise_linear, core::law_rod_ep_piecewise_linear)
    /// -1 when the two tables are empty or of different lengths.
    int init(double E, double area, double alpha, const dense1D<double>& strains, const dense1D<double>& moduli);
};

/// Root of the elasto-plastic scalar laws: [0] k, the elastic stiffness, then the
/// hardening values of the rods (force for stress, elongation for strain).
class law_scalar_ep : public law_base {
public:
    ORV_FEM_HANDLE(law_scalar_ep, core::law_scalar_ep)
    ORV_FEM_EP_1D_OPERATIONS

protected:
    law_scalar_ep() = default;
};

/// k, ET, SY.
class law_scalar_ep_perfect : public law_scalar_ep {
public:
    ORV_FEM_LAW_HANDLE(law_scalar_ep_perfect, core::law_scalar_ep_perfect)
    /// Sets the constants: 0, -1 (unusable sizes) or -2 (a value that is not finite).
    int init(double k, double ET, double SY);
};

/// k, SY, a, n.
class law_scalar_ep_power : public law_scalar_ep {
public:
    ORV_FEM_LAW_HANDLE(law_scalar_ep_power, core::law_scalar_ep_power)
    /// Sets the constants: 0, -1 (unusable sizes) or -2 (a value that is not finite).
    int init(double k, double SY, double a, double n);
};

/// k, SY, a, n.
class law_scalar_ep_RambergOsgood : public law_scalar_ep {
public:
    ORV_FEM_LAW_HANDLE(law_scalar_ep_RambergOsgood, core::law_scalar_ep_RambergOsgood)
    /// Sets the constants: 0, -1 (unusable sizes) or -2 (a value that is not finite).
    int init(double k, double SY, double a, double n);
};

/// k, then m strains and m tangent moduli (1 + 2 m).
class law_scalar_ep_piecewise_linear : public law_scalar_ep {
public:
    ORV_FEM_LAW_HANDLE(law_scalar_ep_piecewise_linear, core::law_scalar_ep_piecewise_linear)
    /// -1 when the two tables are empty or of different lengths.
    int init(double k, const dense1D<double>& strains, const dense1D<double>& moduli);
};

#undef ORV_FEM_EP_1D_OPERATIONS

}  // namespace fem
}  // namespace orv
