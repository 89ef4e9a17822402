// Registry of the local bases of a context: cartesian, cylindrical and spherical.
#pragma once

#include <cstddef>

#include <orv/fem/base_class.h>
#include <orv/fem/error_type.h>

#include <orvmath1/matrix_fixed.h>
#include <orvmath1/symmetric_fixed.h>
#include <orvmath1/vector_fixed.h>

namespace orv {
namespace core {
class bases_mgr;
}
namespace fem {

class context;

/// Handle on the local bases of a context; copies share them. Get one with
/// context::the_bases_mgr(), or construct it from a context.
///
/// A local basis gives at every point three orthonormal directions, the columns of a
/// 3 x 3 matrix R; orthotropic laws are stated in such bases. A basis ID is its
/// position in the list, from 0. The create_* operations return 0xFFFFFFFF when the
/// basis cannot be made (memory, or an empty handle).
///
/// - cartesian: the same basis everywhere. The columns of R are made orthonormal by
///   Gram-Schmidt in order (the first keeps its direction, the second keeps its part
///   orthogonal to the first, ...).
/// - cylindrical about the line (origin, axis): e1 radial, e2 = axis x e1
///   circumferential, e3 the axis. On the axis itself, e1 is the coordinate direction
///   of the smallest component of the axis, made orthogonal to it.
/// - spherical about origin: e3 radial, e1 = axis x e3 along the parallel about the
///   axis, e2 = e3 x e1. At the centre or on the axis line a fallback keeps the
///   basis orthonormal.
/// An axis of length below 1e-12 is taken as (0, 0, 1); any other is normalised.
class bases_mgr : public base_class {
public:
    ORV_FEM_HANDLE(bases_mgr, core::bases_mgr)

    /// Empty handle.
    bases_mgr();
    /// Shares the registry of the context.
    explicit bases_mgr(context& ctx);
    /// Makes this handle share the registry of the context; -101 for an empty context.
    error_type create(context& ctx);

    /// Appends a cartesian basis whose columns are those of R; returns its ID.
    unsigned create_cartesian(const matrix_fixed<double, 3, 3>& R);
    /// Appends a cylindrical basis about the line (origin, axis); returns its ID.
    unsigned create_cylindrical(const vector_fixed<double, 3>& origin, const vector_fixed<double, 3>& axis);
    /// Appends a spherical basis about origin, parallels about axis; returns its ID.
    unsigned create_spherical(const vector_fixed<double, 3>& origin, const vector_fixed<double, 3>& axis);

    /// Number of bases (0 for an empty handle).
    std::size_t size() const;
    /// Removes all bases.
    void clear();

    /// The basis ID at a point, one vector per column of R. -101 when ID names no
    /// basis (R is then the identity).
    error_type get_basis(unsigned ID, const vector_fixed<double, 3>& point, matrix_fixed<double, 3, 3>& R) const;
    /// v replaced by its components in the basis, R' v. For all three conversions,
    /// -101 when ID names no basis (nothing changed).
    error_type to_local(unsigned ID, const vector_fixed<double, 3>& point, vector_fixed<double, 3>& v) const;
    /// S replaced by its components in the basis, R' S R.
    error_type to_local(unsigned ID, const vector_fixed<double, 3>& point, symmetric_fixed<double, 3>& S) const;
    /// v given in the basis replaced by its global components, R v.
    error_type from_local(unsigned ID, const vector_fixed<double, 3>& point, vector_fixed<double, 3>& v) const;
};

}  // namespace fem
}  // namespace orv
