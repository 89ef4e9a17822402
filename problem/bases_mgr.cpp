// Local bases: the three kinds, their registry and its public handle.
#include "problem/bases_mgr.h"

#include <cmath>
#include <new>

#include <orv/fem/bases_mgr.h>
#include <orv/fem/context.h>

#include "frame/context_type.h"

namespace orv {
namespace core {

namespace {

typedef vector_fixed<double, 3> vec3;
typedef matrix_fixed<double, 3, 3> mat3;

// Normalised unless the squared length is exactly 0 or 1; returns the length, or
// the squared length when that was 0 or 1.
double normalize_soft(vec3& v) {
    const double n2 = v.dot(v);
    if (n2 == 0.0 || n2 == 1.0) return n2;
    const double n = std::sqrt(n2);
    v *= 1.0 / n;
    return n;
}

// Index of the component of smallest magnitude, the first on a tie.
std::size_t smallest_component(const vec3& v) {
    std::size_t k = 0;
    for (std::size_t i = 1; i < 3; ++i)
        if (std::fabs(v[i]) < std::fabs(v[k])) k = i;
    return k;
}

// v made orthogonal to the unit vector u and normalised.
void orthonormalize_against(vec3& v, const vec3& u) {
    v -= u * v.dot(u);
    normalize_soft(v);
}

vec3 column(const mat3& R, std::size_t j) { return vec3{R(0, j), R(1, j), R(2, j)}; }

void set_column(mat3& R, std::size_t j, const vec3& v) {
    for (std::size_t i = 0; i < 3; ++i) R(i, j) = v[i];
}

// The axis as stored by the cylindrical and spherical bases.
vec3 stored_axis(const vec3& axis) {
    vec3 a = axis;
    const double n = normalize_soft(a);
    if (n < 1e-12) a[2] = 1.0;
    return a;
}

}  // namespace

// --- basis_base ------------------------------------------------------------------

void basis_base::to_local(const vec3& point, vec3& v) const {
    mat3 R;
    get_basis(point, R);
    v = R.transpose_times(v);
}

void basis_base::to_local(const vec3& point, symmetric_fixed<double, 3>& S) const {
    mat3 R;
    get_basis(point, R);
    // T = S R, then R' T; the result is symmetric by construction.
    mat3 T;
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j) {
            double s = 0.0;
            for (std::size_t k = 0; k < 3; ++k) s += S(i, k) * R(k, j);
            T(i, j) = s;
        }
    symmetric_fixed<double, 3> L;
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j <= i; ++j) {
            double s = 0.0;
            for (std::size_t k = 0; k < 3; ++k) s += R(k, i) * T(k, j);
            L(i, j) = s;
        }
    S = L;
}

void basis_base::from_local(const vec3& point, vec3& v) const {
    mat3 R;
    get_basis(point, R);
    v = R * v;
}

// --- cartesian_basis -------------------------------------------------------------

cartesian_basis::cartesian_basis(const mat3& R) {
    vec3 e[3] = {column(R, 0), column(R, 1), column(R, 2)};
    // Gram-Schmidt in column order; a degenerate column is replaced as documented.
    const double scale = std::sqrt(e[0].dot(e[0]) + e[1].dot(e[1]) + e[2].dot(e[2]));
    const double tiny = 1e-12 * (scale > 0.0 ? scale : 1.0);
    if (e[0].norm() <= tiny) e[0] = vec3{1.0, 0.0, 0.0};
    normalize_soft(e[0]);
    e[1] -= e[0] * e[1].dot(e[0]);
    if (e[1].norm() <= tiny) {
        e[1] = vec3{0.0, 0.0, 0.0};
        e[1][smallest_component(e[0])] = 1.0;
        e[1] -= e[0] * e[1].dot(e[0]);
    }
    normalize_soft(e[1]);
    e[2] -= e[0] * e[2].dot(e[0]);
    e[2] -= e[1] * e[2].dot(e[1]);
    if (e[2].norm() <= tiny) e[2] = cross(e[0], e[1]);
    normalize_soft(e[2]);
    for (std::size_t j = 0; j < 3; ++j) set_column(R_, j, e[j]);
}

void cartesian_basis::get_basis(const vec3&, mat3& R) const { R = R_; }

// --- axial_basis -----------------------------------------------------------------

axial_basis::axial_basis(const vec3& origin, const vec3& axis) : origin_(origin), axis_(stored_axis(axis)) {}

// --- cylindrical_basis -----------------------------------------------------------

void cylindrical_basis::get_basis(const vec3& point, mat3& R) const {
    const vec3 p = point - origin_;
    // The radial direction: p without its component along the axis.
    const double h = -p.dot(axis_);
    vec3 e1 = h != 0.0 ? p + axis_ * h : p;
    const double n = normalize_soft(e1);
    if (n < 1e-12) {
        // On the axis: the coordinate direction of the smallest axis component.
        e1[smallest_component(axis_)] = 1.0;
        orthonormalize_against(e1, axis_);
    }
    set_column(R, 0, e1);
    set_column(R, 1, cross(axis_, e1));
    set_column(R, 2, axis_);
}

// --- spherical_basis -------------------------------------------------------------

void spherical_basis::get_basis(const vec3& point, mat3& R) const {
    vec3 e3 = point - origin_;
    if (normalize_soft(e3) < 1e-12) e3[smallest_component(axis_)] = 1.0;
    vec3 e1 = cross(axis_, e3);
    if (normalize_soft(e1) < 1e-12) {
        // On the axis line the parallel is undefined: any direction normal to e3.
        e1 = vec3{0.0, 0.0, 0.0};
        e1[smallest_component(e3)] = 1.0;
        orthonormalize_against(e1, e3);
    }
    set_column(R, 0, e1);
    set_column(R, 1, cross(e3, e1));
    set_column(R, 2, e3);
}

// --- bases_mgr -------------------------------------------------------------------

std::uint32_t bases_mgr::append(basis_base* b) {
    if (!b) return no_basis;
    Ptr<basis_base> owner(b);
    if (bases_.size() >= no_basis) return no_basis;
    try {
        bases_.push_back(owner);
    } catch (...) {
        return no_basis;
    }
    return static_cast<std::uint32_t>(bases_.size() - 1);
}

std::uint32_t bases_mgr::create_cartesian(const mat3& R) { return append(new (std::nothrow) cartesian_basis(R)); }

std::uint32_t bases_mgr::create_cylindrical(const vec3& origin, const vec3& axis) {
    return append(new (std::nothrow) cylindrical_basis(origin, axis));
}

std::uint32_t bases_mgr::create_spherical(const vec3& origin, const vec3& axis) {
    return append(new (std::nothrow) spherical_basis(origin, axis));
}

}  // namespace core

// --- public handle ----------------------------------------------------------------

namespace fem {

ORV_FEM_HANDLE_IMPL(bases_mgr, base_class, core::bases_mgr)

bases_mgr::bases_mgr() = default;

bases_mgr::bases_mgr(context& ctx) { create(ctx); }

error_type bases_mgr::create(context& ctx) {
    core::context_type* c = ctx.engine();
    set_w(c ? static_cast<ref_counted*>(c->bases()) : nullptr);
    return c ? no_error : error_data;
}

unsigned bases_mgr::create_cartesian(const matrix_fixed<double, 3, 3>& R) {
    core::bases_mgr* e = engine();
    return e ? e->create_cartesian(R) : core::bases_mgr::no_basis;
}

unsigned bases_mgr::create_cylindrical(const vector_fixed<double, 3>& origin, const vector_fixed<double, 3>& axis) {
    core::bases_mgr* e = engine();
    return e ? e->create_cylindrical(origin, axis) : core::bases_mgr::no_basis;
}

unsigned bases_mgr::create_spherical(const vector_fixed<double, 3>& origin, const vector_fixed<double, 3>& axis) {
    core::bases_mgr* e = engine();
    return e ? e->create_spherical(origin, axis) : core::bases_mgr::no_basis;
}

std::size_t bases_mgr::size() const {
    const core::bases_mgr* e = engine();
    return e ? e->size() : 0;
}

void bases_mgr::clear() {
    if (core::bases_mgr* e = engine()) e->clear();
}

namespace {
const core::basis_base* find_basis(const core::bases_mgr* e, unsigned ID) { return e ? e->get(ID) : nullptr; }
}  // namespace

error_type bases_mgr::get_basis(unsigned ID, const vector_fixed<double, 3>& point,
                                matrix_fixed<double, 3, 3>& R) const {
    const core::basis_base* b = find_basis(engine(), ID);
    if (!b) {
        R = matrix_fixed<double, 3, 3>{1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0};
        return error_data;
    }
    b->get_basis(point, R);
    return no_error;
}

error_type bases_mgr::to_local(unsigned ID, const vector_fixed<double, 3>& point, vector_fixed<double, 3>& v) const {
    const core::basis_base* b = find_basis(engine(), ID);
    if (!b) return error_data;
    b->to_local(point, v);
    return no_error;
}

error_type bases_mgr::to_local(unsigned ID, const vector_fixed<double, 3>& point, symmetric_fixed<double, 3>& S) const {
    const core::basis_base* b = find_basis(engine(), ID);
    if (!b) return error_data;
    b->to_local(point, S);
    return no_error;
}

error_type bases_mgr::from_local(unsigned ID, const vector_fixed<double, 3>& point, vector_fixed<double, 3>& v) const {
    const core::basis_base* b = find_basis(engine(), ID);
    if (!b) return error_data;
    b->from_local(point, v);
    return no_error;
}

bases_mgr context::the_bases_mgr() const {
    bases_mgr h;
    core::context_type* c = engine();
    if (c) h.set_w(static_cast<ref_counted*>(c->bases()));
    return h;
}

}  // namespace fem
}  // namespace orv
