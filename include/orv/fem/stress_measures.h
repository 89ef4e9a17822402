// Scalar measures of stress tensors, the stresses of an element, and the dot product
// of a DOF vector with one nodal direction.
#pragma once

#include <cstdint>

#include <orv/fem/FEM_matrix.h>
#include <orv/fem/context.h>
#include <orv/fem/error_type.h>

#include <orvmath1/dense1D.h>
#include <orvmath1/dense2D.h>
#include <orvmath1/symmetric_fixed.h>
#include <orvmath1/symmetric_full.h>

namespace orv {
namespace fem {

/// A single tensor is packed by rows of its lower triangle: s11, s12, s22, s13, s23, s33.
/// A batch is a dense2D with six rows and one column per tensor, in the strain order
/// s11, s22, s33, s12, s13, s23.
typedef symmetric_fixed<double, 3> stress_tensor;

/// Von Mises equivalent stress. With is_signed, the value takes the sign of the trace
/// (positive when the trace is zero).
double Von_Mises_stress(const stress_tensor& s, bool is_signed = false);
/// One value per column of `stresses`; rows other than six give error_data and leave
/// `out` alone; no column gives an empty `out`.
error_type Von_Mises_stresses(const dense2D<double>& stresses, dense1D<double>& out, bool is_signed = false);

/// Tresca stress: largest minus smallest principal stress, with the same sign rule.
double Tresca_stress(const stress_tensor& s, bool is_signed = false);
error_type Tresca_stresses(const dense2D<double>& stresses, dense1D<double>& out, bool is_signed = false);

/// I = (I1, I2, I3), the invariants of s; J = (J2, J3), those of its deviator.
void stress_invariants(const stress_tensor& s, vector_fixed<double, 3>& I, vector_fixed<double, 2>& J);
/// Batched form: I gets 3 rows and J 2 rows, one column per tensor of `stresses`.
error_type stress_invariants(const dense2D<double>& stresses, dense2D<double>& I, dense2D<double>& J);

/// Stresses of `element` of the model `model_ID` of the context's registry, from the
/// positions and the displacement column U (rows by DOF ID), in the output basis `basis`
/// of the model. `out` is cleared first. error_data when the model does not exist or
/// does not give stresses.
error_type Cauchy_stresses(const context& ctx, std::uint32_t model_ID, std::uint32_t element,
                           const dense2D<double>& pos, const FEM_matrix& U, unsigned basis, dense2D<double>& out);

/// Sum of the entries of `values` whose DOF ID (IDs[k], node * 9 + position) is at the
/// position `slot` of `field`: field_displacement takes positions 0..2, field_rotation
/// slot + 3, field_temperature position 6 (slot ignored). For a symmetric matrix its
/// diagonal is used. Any other field, or a slot past 2, matches no DOF and gives 0.
/// `values` and `IDs` are read up to the shorter of the two.
double unit_product(const dense1D<double>& values, const dense1D<unsigned int>& IDs, unsigned field, unsigned slot);
double unit_product(const symmetric_full<double>& values, const dense1D<unsigned int>& IDs, unsigned field,
                    unsigned slot);

}  // namespace fem
}  // namespace orv
