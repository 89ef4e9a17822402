// Non-linear elastic 1-D laws (a power law, tabulated force curves of springs and
// rods) and the asymmetric pairs of plastic scalar laws.
#pragma once

#include <orv/fem/law_base.h>
#include <orv/fem/law_rod.h>
#include <orv/fem/law_rod_ep.h>
#include <orv/fem/law_scalar.h>

#include <orvmath1/dense2D.h>

namespace orv {
namespace core {
class law_scalar_pow;
class law_scalar_nl;
class law_rod_nl;
class law_scalar_ep_perfect_unsym;
class law_scalar_ep_piecewise_linear_unsym;
}  // namespace core
namespace fem {

/// Data: a, b, c, lower, upper (2 values: c = 0 and the widest limits). With s =
/// strain + c in [lower, upper): tangent a |s|^b; above upper the tangent of upper;
/// below lower the tangent stays what it was. Force s tangent, energy s force / 2.
class law_scalar_pow : public law_scalar {
public:
    ORV_FEM_LAW_HANDLE(law_scalar_pow, core::law_scalar_pow)
    /// a |s|^b for every s: 0, -1 or -2 as law_base::init.
    int init(double a, double b);
    /// The five values: 0, -1 or -2 as law_base::init.
    int init(double a, double b, double c, double lower, double upper);
};

/// A force curve through k points: the k abscissas (not decreasing), then the k
/// ordinates. The force at s follows the curve from 0 out to s and stays flat beyond
/// its ends; the energy is the area under it; the tangent is the slope of the piece
/// holding s (at a point, the piece beyond it, away from 0).
class law_scalar_nl : public law_scalar {
public:
    ORV_FEM_LAW_HANDLE(law_scalar_nl, core::law_scalar_nl)
    /// table: two columns, abscissas then ordinates; low and high: the strain limits
    /// that get_limits reports. -1 for fewer than one row, not two columns or
    /// decreasing abscissas; -2 for a value that is not finite.
    int init(const dense2D<double>& table, double low, double high);
};

/// A rod whose stress follows a curve of strain: E, area, alpha, a reserved value (3
/// rod values get it as 0), then the curve's abscissas and ordinates as law_scalar_nl.
class law_rod_nl : public law_rod {
public:
    ORV_FEM_LAW_HANDLE(law_rod_nl, core::law_rod_nl)
    /// The rod values and the two-column table: 0, -1 or -2 as law_scalar_nl::init.
    int init(double E, double area, double alpha, const dense2D<double>& table);
};

/// A perfectly plastic scalar law in traction (strain >= 0) and another in
/// compression (strain < 0), each with its own data and states.
class law_scalar_ep_perfect_unsym : public law_scalar {
public:
    ORV_FEM_LAW_HANDLE(law_scalar_ep_perfect_unsym, core::law_scalar_ep_perfect_unsym)
    /// The two sides (either may be an empty handle: that side carries nothing).
    /// -101 for an empty pair handle.
    error_type init(const law_scalar_ep_perfect& traction, const law_scalar_ep_perfect& compression);
    /// The laws of the two sides.
    law_scalar_ep_perfect traction_law() const;
    /// The law of the compression side.
    law_scalar_ep_perfect compression_law() const;
};

/// The same pair with piecewise-linear hardening on each side.
class law_scalar_ep_piecewise_linear_unsym : public law_scalar {
public:
    ORV_FEM_LAW_HANDLE(law_scalar_ep_piecewise_linear_unsym, core::law_scalar_ep_piecewise_linear_unsym)
    /// As law_scalar_ep_perfect_unsym::init.
    error_type init(const law_scalar_ep_piecewise_linear& traction, const law_scalar_ep_piecewise_linear& compression);
    /// The law of the traction side.
    law_scalar_ep_piecewise_linear traction_law() const;
    /// The law of the compression side.
    law_scalar_ep_piecewise_linear compression_law() const;
};

}  // namespace fem
}  // namespace orv
