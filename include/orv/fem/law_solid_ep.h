// Elasto-plastic laws of solids: Von Mises plasticity with isotropic hardening.
#pragma once

#include <orv/fem/law_solid_stiff.h>

#include <orvmath1/dense1D.h>

namespace orv {
namespace core {
class law_solid_ep;
class law_solid_ep_perfect;
class law_solid_ep_power;
class law_solid_ep_RambergOsgood;
class law_solid_ep_piecewise_linear;
}  // namespace core
namespace fem {

/// Root of the elasto-plastic solid laws. Data always start with [0] E, [1] nu,
/// [2] alpha; the hardening values follow (see each law). p is the accumulated
/// plastic strain (Von Mises equivalent); the yield stress y(p) grows with it.
///
/// States: each point of each element keeps the stresses, strains and p of its last
/// committed step, under the step slot law_step % 50 of the run. Evaluations read
/// them and write only when a run commits a step, so that the iterations of a step
/// can be repeated as often as needed. A step is started from the last committed one
/// by copy_states(last, next), and a committed step rolled back by the same call.
///
/// Curve values that make no material (a yield stress zero or negative, a tangent
/// modulus below 0 or above E, strains of a table that do not increase, power
/// exponents n <= 1) are accepted by init: the law then never yields and stays
/// elastic. curve_valid() tells which case holds.
class law_solid_ep : public law_solid_stiff {
public:
    ORV_FEM_HANDLE(law_solid_ep, core::law_solid_ep)

    /// |p| at a point of an element at a step (0 where nothing was committed; the
    /// largest double for a broken point).
    double plasticity(unsigned element, unsigned point, unsigned step) const;
    /// Forgets every committed state.
    void reset_states();
    /// The states of step slot to_step become those of from_step (steps modulo 50).
    /// 0; -101 for an empty handle; -199 on memory (nothing changed).
    error_type copy_states(unsigned from_step, unsigned to_step);
    /// True when the law's own data give a hardening curve that can yield.
    bool curve_valid() const;

protected:
    law_solid_ep() = default;
};

/// Linear hardening: [3] ET, the tangent modulus after yield (0: perfect plasticity),
/// [4] SY, the yield stress. 5 values. y = SY + H p with H = E ET / (E - ET).
class law_solid_ep_perfect : public law_solid_ep {
public:
    ORV_FEM_LAW_HANDLE(law_solid_ep_perfect, core::law_solid_ep_perfect)
    /// Makes the law on a context with its constants (see init()); an empty handle on memory.
    law_solid_ep_perfect(context& ctx, double E, double nu, double alpha, double ET, double SY);
    /// Sets the constants: 0, -1 (unusable sizes) or -2 (a value that is not finite).
    int init(double E, double nu, double alpha, double ET, double SY);
};

/// Power hardening: [3] SY, [4] a, [5] n. 6 values. y = SY + C p^(1/n) with C =
/// SY (E / (a SY))^(1/n). Usable for E > 0, a > 0, SY >= 0, n > 1.
class law_solid_ep_power : public law_solid_ep {
public:
    ORV_FEM_LAW_HANDLE(law_solid_ep_power, core::law_solid_ep_power)
    /// Makes the law on a context with its constants (see init()); an empty handle on memory.
    law_solid_ep_power(context& ctx, double E, double nu, double alpha, double SY, double a, double n);
    /// Sets the constants: 0, -1 (unusable sizes) or -2 (a value that is not finite).
    int init(double E, double nu, double alpha, double SY, double a, double n);
};

/// Ramberg-Osgood hardening: [3] SY, [4] a, [5] n. 6 values. y = C p^(1/n) with C =
/// (E / a)^(1/n) SY^(1 - 1/n): the law yields from the first load.
class law_solid_ep_RambergOsgood : public law_solid_ep {
public:
    ORV_FEM_LAW_HANDLE(law_solid_ep_RambergOsgood, core::law_solid_ep_RambergOsgood)
    /// Makes the law on a context with its constants (see init()); an empty handle on memory.
    law_solid_ep_RambergOsgood(context& ctx, double E, double nu, double alpha, double SY, double a, double n);
    /// Sets the constants: 0, -1 (unusable sizes) or -2 (a value that is not finite).
    int init(double E, double nu, double alpha, double SY, double a, double n);
};

/// Piecewise linear uniaxial curve: k total strains e_i then k tangent moduli E_i
/// (3 + 2 k values). E_0 is the elastic modulus and (e_0, E_0 e_0) the first yield
/// point; from e_(i-1) to e_i the uniaxial tangent is E_i; past e_(k-1) the curve is
/// flat.
class law_solid_ep_piecewise_linear : public law_solid_ep {
public:
    ORV_FEM_LAW_HANDLE(law_solid_ep_piecewise_linear, core::law_solid_ep_piecewise_linear)
    /// Makes the law on a context with its constants (see init()); an empty handle on memory.
    law_solid_ep_piecewise_linear(context& ctx, double E, double nu, double alpha, const dense1D<double>& strains,
                                  const dense1D<double>& moduli);
    /// -1 when the two tables are empty or of different lengths.
    int init(double E, double nu, double alpha, const dense1D<double>& strains, const dense1D<double>& moduli);
};

}  // namespace fem
}  // namespace orv
