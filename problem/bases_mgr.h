// Local bases of a context: cartesian, cylindrical and spherical, and their registry.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "orvmath1/matrix_fixed.h"
#include "orvmath1/ref_counted.h"
#include "orvmath1/symmetric_fixed.h"
#include "orvmath1/vector_fixed.h"

namespace orv {
namespace core {

// Three orthonormal directions at any point. Only get_basis differs between the
// kinds; the transformations are written once on top of it. All operations read
// the basis and write only to their arguments, so that threads share a basis freely.
class basis_base : public ref_counted {
public:
    // The basis vectors at `point`, one per column of R.
    virtual void get_basis(const vector_fixed<double, 3>& point, matrix_fixed<double, 3, 3>& R) const = 0;
    // v replaced by its components in the basis at point: R' v.
    virtual void to_local(const vector_fixed<double, 3>& point, vector_fixed<double, 3>& v) const;
    // S replaced by R' S R.
    virtual void to_local(const vector_fixed<double, 3>& point, symmetric_fixed<double, 3>& S) const;
    // The inverse of to_local on a vector: R v.
    virtual void from_local(const vector_fixed<double, 3>& point, vector_fixed<double, 3>& v) const;
};

// The same basis everywhere; its columns are made orthonormal at creation by
// Gram-Schmidt, in order. A column that is zero, or that falls in the span of the
// ones before it, is replaced: the first by (1, 0, 0), the second by the unit
// direction least aligned with the first, the third by the cross product of the
// first two.
class cartesian_basis : public basis_base {
public:
    explicit cartesian_basis(const matrix_fixed<double, 3, 3>& R);
    void get_basis(const vector_fixed<double, 3>& point, matrix_fixed<double, 3, 3>& R) const override;
    const matrix_fixed<double, 3, 3>& matrix() const { return R_; }

private:
    matrix_fixed<double, 3, 3> R_;
};

// A basis given by an origin and an axis (normalised as for the cylindrical basis
// below): the common part of the cylindrical and the spherical bases.
class axial_basis : public basis_base {
public:
    axial_basis(const vector_fixed<double, 3>& origin, const vector_fixed<double, 3>& axis);
    const vector_fixed<double, 3>& origin() const { return origin_; }
    const vector_fixed<double, 3>& axis() const { return axis_; }

protected:
    vector_fixed<double, 3> origin_;
    vector_fixed<double, 3> axis_;
};

// e1 radial, e2 circumferential (axis x e1), e3 along the axis through origin.
// The axis is normalised unless its length is 0 or 1; a length below 1e-12 sets its
// third component to 1. On the axis, e1 takes the coordinate direction of the
// smallest component of the axis (the first on a tie), made orthogonal to the axis.
class cylindrical_basis : public axial_basis {
public:
    using axial_basis::axial_basis;
    void get_basis(const vector_fixed<double, 3>& point, matrix_fixed<double, 3, 3>& R) const override;
};

// e3 radial from origin, e1 along the parallel about the axis (axis x e3), e2 = e3 x
// e1. The axis is normalised as for the cylindrical basis. At the centre, e3 takes
// the coordinate direction of the smallest component of the axis; on the axis line
// itself (where axis x e3 vanishes), e1 takes the coordinate direction of the
// smallest component of e3, made orthogonal to e3, so that the basis stays
// orthonormal.
class spherical_basis : public axial_basis {
public:
    using axial_basis::axial_basis;
    void get_basis(const vector_fixed<double, 3>& point, matrix_fixed<double, 3, 3>& R) const override;
};

// Engine object of the registry of the local bases of a context. Owned by a context
// through a counted reference; laws hold it and a basis ID. A basis ID is its
// position in the list. Creation and clear() are not thread safe; lookups are.
class bases_mgr : public ref_counted {
public:
    static constexpr std::uint32_t no_basis = 0xFFFFFFFFu;

    bases_mgr() = default;
    ~bases_mgr() override = default;

    // Append a basis and return its ID; no_basis when memory fails.
    std::uint32_t create_cartesian(const matrix_fixed<double, 3, 3>& R);
    std::uint32_t create_cylindrical(const vector_fixed<double, 3>& origin, const vector_fixed<double, 3>& axis);
    std::uint32_t create_spherical(const vector_fixed<double, 3>& origin, const vector_fixed<double, 3>& axis);

    std::size_t size() const { return bases_.size(); }
    void clear() { bases_.clear(); }
    // The basis of an ID, or null.
    const basis_base* get(std::uint32_t ID) const { return ID < bases_.size() ? bases_[ID].get() : nullptr; }

private:
    std::uint32_t append(basis_base* b);

    std::vector<Ptr<basis_base>> bases_;
};

}  // namespace core
}  // namespace orv
